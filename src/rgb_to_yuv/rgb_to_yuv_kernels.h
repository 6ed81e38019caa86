// RGB-to-YUV kernels: where every encoding export finds its kernels and
// the alignment test that chooses among them.
//
//   coefficients.cpp       the weight sets and SetupRgbToYuvCoefficients
//   encode.h               the arithmetic, the source unpacking, the layouts
//   rgb_to_yuv_kernels.cpp 1:1 conversions (four variants each); reduction by
//                          2 and 4 and line doubling (BGR32 only)
#pragma once

#include "kernel/kernel.h"

namespace zenk::rgb_to_yuv {

// BGR32I sources, 1:1.
extern const KernelQuad kBgr32ToUyvy;
extern const KernelQuad kBgr32ToYuyv;
extern const KernelQuad kBgr32ToUvyy;
extern const KernelQuad kBgr32ToY8Uv;
// BGR32I sources whose fourth byte goes to an alpha plane in the same pass.
extern const KernelQuad kBgr32ToUyvyAlpha;
extern const KernelQuad kBgr32ToYuyvAlpha;
extern const KernelQuad kBgr32ToUvyyAlpha;
extern const KernelQuad kBgr32ToY8UvAlpha;
// BGR24I sources, 1:1.
extern const KernelQuad kBgr24ToUyvy;
extern const KernelQuad kBgr24ToYuyv;
extern const KernelQuad kBgr24ToUvyy;
extern const KernelQuad kBgr24ToY8Uv;

// The pair-mode kernels of the table exports, one per vertical_mode 1, 2, 3.
struct PairModeKernels {
    Kernel halve;   // vertical_mode 1
    Kernel quarter; // vertical_mode 2
    Kernel twice;   // vertical_mode 3
};
extern const PairModeKernels kBgr32ToUyvyPairModes;
extern const PairModeKernels kBgr32ToUvyyPairModes;
extern const PairModeKernels kBgr32ToY8UvPairModes;

// BGR32I sources: source plane 16-aligned, pitch a multiple of 32, width a
// multiple of 4; destination 16-aligned, pitch a multiple of 16, width a
// multiple of 8 (the masks of the table exports).
inline constexpr AlignmentTest kBgr32Test = kTableExportTest;
// BGR24I sources are read with 8-byte loads at any address: only the
// destination is tested.
inline constexpr AlignmentTest kBgr24Test = DestinationTest(16, 8);

}  // namespace zenk::rgb_to_yuv
