// RGB repacking and alpha plane kernels: where every export of the family
// finds its four kernels and the alignment test that chooses among them.
//
//   formats.h    BGR32/BGR24 copies and repacking, the BGR32 split into BGR24 +
//                alpha plane, alpha extraction from BGR32 and the merge of BGR24
//                with an alpha plane (16-pixel blocks); alpha plane copy and
//                constant fill (32-byte blocks).
#pragma once

#include "kernel/kernel_table.h"

namespace zenk::rgb_alpha {

// The kernels of every export of the family, one set per instruction-set
// level.
struct Kernels {
    KernelQuad copy_bgr32;         // BGR32I -> BGR32I
    KernelQuad bgr32_to_bgr24;     // BGR32I -> BGR24I
    KernelQuad bgr24_to_bgr32;     // BGR24I -> BGR32I, alpha = low byte of alpha_value
    KernelQuad copy_bgr24;         // BGR24I -> BGR24I
    KernelQuad split_bgr32;        // BGR32I -> BGR24I + A8P
    KernelQuad extract_alpha;      // BGR32I -> A8P
    KernelQuad merge_alpha;        // BGR24I + A8P -> BGR32I
    KernelQuad copy_alpha_plane;   // A8P -> A8P
    KernelQuad fill_alpha_plane;   // A8C -> A8P
};

// Single 3-byte pixels that bring a BGR24I destination r bytes past a 16-byte
// boundary to the next one (3 is invertible modulo 16, so every residue
// reaches a boundary).
inline constexpr uint16_t kBgr24HeadPixels[16] = {0, 5, 10, 15, 4, 9, 14, 3, 8, 13, 2, 7, 12, 1, 6, 11};

inline constexpr AlignmentTest kCopyBgr32Test = {{64, 16}, {64, 16}, true};
inline constexpr AlignmentTest kToBgr24Test = {{0, 16}, {0, 16}, true};
inline constexpr AlignmentTest kToBgr32Test = {{16, 16}, {}};
// A BGR24I line of 16-pixel blocks is a multiple of 48 bytes. The export also
// tests a multiple of 16, which 48 already is.
inline constexpr AlignmentTest kSplitTest = {{48, 16}, {}};
inline constexpr AlignmentTest kAlphaPlaneTest = {{32, 32}, {}};
inline constexpr AlignmentTest kExtractAlphaTest = {{16, 16}, {}};

}  // namespace zenk::rgb_alpha

ZENK_DECLARE_KERNEL_LEVELS(rgb_alpha)
