// RGB-to-YUV kernels: where every encoding export finds its kernels and
// the alignment test that chooses among them.
//
//   coefficients.cpp       the weight sets and SetupRgbToYuvCoefficients
//   encode.h               the arithmetic, the source unpacking, the layouts
//   rgb_to_yuv_kernels.cpp 1:1 conversions (four variants each); reduction by
//                          2 and 4 and line doubling (BGR32 only)
#pragma once

#include "kernel/kernel_table.h"

namespace zenk::rgb_to_yuv {

// The kernels of every encoding export, one set per instruction-set level.
struct Kernels {
    // Table exports (BGR32I sources): frame kernels in column 0, then one
    // pair-mode kernel per vertical_mode 1 (halve), 2 (quarter) and 3
    // (double); vertical_mode 4 has none, such a request converts nothing.
    KernelTable bgr32_to_uyvy;
    KernelTable bgr32_to_uvyy;
    KernelTable bgr32_to_y8uv;
    KernelQuad bgr32_to_yuyv;
    // BGR32I sources whose fourth byte goes to an alpha plane in the same pass.
    KernelQuad bgr32_to_uyvy_alpha;
    KernelQuad bgr32_to_yuyv_alpha;
    KernelQuad bgr32_to_uvyy_alpha;
    KernelQuad bgr32_to_y8uv_alpha;
    // BGR24I sources, 1:1.
    KernelQuad bgr24_to_uyvy;
    KernelQuad bgr24_to_yuyv;
    KernelQuad bgr24_to_uvyy;
    KernelQuad bgr24_to_y8uv;
};

// BGR32I sources: source plane 16-aligned, pitch a multiple of 32, width a
// multiple of 4; destination 16-aligned, pitch a multiple of 16, width a
// multiple of 8 (the masks of the table exports).
inline constexpr AlignmentTest kBgr32Test = kTableExportTest;
// BGR24I sources are read with 8-byte loads at any address: only the
// destination is tested.
inline constexpr AlignmentTest kBgr24Test = {{16, 8}, {}};

}  // namespace zenk::rgb_to_yuv

ZENK_DECLARE_KERNEL_LEVELS(rgb_to_yuv)
