// YUV-to-RGB kernels: where every decoding export finds its kernels and the
// alignment test that chooses among them.
//
//   coefficients.*          the coefficient block and its four chroma sets
//   decode.h                the per-pixel arithmetic on 8 pixels, and packing
//   formats.h               the line format: source unpacking, destination
//                           packing, the planes it reads and writes
//   yuv_to_rgb_kernels.cpp  each export's kernels, built from the format
#pragma once

#include "kernel/kernel_table.h"

namespace zenk::yuv_to_rgb {

// The kernels of every decoding export, one set per instruction-set level.
struct Kernels {
    // Table exports: frame kernels in column 0; one pair-mode kernel serves
    // vertical_mode 1 and 2 alike (the reduction factor comes from the line
    // addressing, which reads the mode). Packed: every pixel gets the low
    // word of alpha_value. Planar: word alpha in the aligned cached kernel,
    // even/odd (dword) alpha in the others and in the pair-mode kernel.
    KernelTable uyvy_to_bgr32;
    KernelTable planar_to_bgr32;
    // YUYV16I to BGR32: the aligned cached kernel gives every pixel the low
    // word of alpha_value, the other three give even pixels the low word and
    // odd pixels the high word.
    KernelQuad yuyv_to_bgr32;
    // Packed 4:2:2 and planar to BGR24.
    KernelQuad uyvy_to_bgr24;
    KernelQuad yuyv_to_bgr24;
    KernelQuad uvyy_to_bgr24;
    KernelQuad planar_to_bgr24;
    // Sources with an alpha plane: its bytes become the fourth byte of every
    // pixel. The planar kernels write with ordinary stores in all four entries.
    KernelQuad yuyv_alpha_to_bgr32;
    KernelQuad uyvy_alpha_to_bgr32;
    KernelQuad planar_alpha_to_bgr32;
};

// Head pairs of the unaligned kernels: the pairs converted before the first
// 16-byte boundary of a destination line. 8-byte BGR32 pairs serve line
// starts on 8-byte boundaries; 6-byte BGR24 pairs serve even line starts,
// 2i bytes past a boundary taking kBgr24HeadPairs[i] pairs.
inline constexpr uint16_t kBgr24HeadPairs[8] = {0, 5, 2, 7, 4, 1, 6, 3};

// Alignment tests of the four-kernel exports.
inline constexpr AlignmentTest kPackedToBgr32Test = {{32, 4}, {16, 8}};
inline constexpr AlignmentTest kPlanarAlphaToBgr32Test = {{16, 16}, {}};
// BGR24 outputs test the first line's address and the width only. A pitch
// that puts a later line off a 16-byte boundary does not fault: every line
// walk writes a line whose body does not start on a boundary with unaligned
// stores (the same bytes).
inline constexpr AlignmentTest kToBgr24Test = {{0, 16}, {}};

}  // namespace zenk::yuv_to_rgb

ZENK_DECLARE_KERNEL_LEVELS(yuv_to_rgb)
