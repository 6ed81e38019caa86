// YUV-to-RGB kernels: where every decoding export finds its kernels and the
// alignment test that chooses among them.
//
//   coefficients.*        the coefficient block and its four chroma sets
//   decode.h              the per-pixel arithmetic on 8 pixels, and packing
//   yuv_to_rgb_kernels.cpp  source unpacking, destination packing, line walks
#pragma once

#include "kernel/kernel.h"

namespace zenk::yuv_to_rgb {

// Packed 4:2:2 to BGR32. The UYVY16I kernels give every pixel the low word of
// alpha_value; the YUYV16I aligned cached kernel does too, its other three
// give even pixels the low word and odd pixels the high word.
extern const KernelQuad kUyvyToBgr32;
extern const KernelQuad kYuyvToBgr32;
// Pair-mode kernel of UYVY16I to BGR32, for vertical_mode 1 and 2 alike: the
// reduction factor comes from the line addressing, which reads the mode.
extern const Kernel kUyvyToBgr32Fields;

// Packed 4:2:2 and planar to BGR24.
extern const KernelQuad kUyvyToBgr24;
extern const KernelQuad kYuyvToBgr24;
extern const KernelQuad kUvyyToBgr24;
extern const KernelQuad kPlanarToBgr24;

// Planar Y + interleaved UV to BGR32: word alpha in the aligned cached
// kernel, even/odd (dword) alpha in the others and in the pair-mode kernel.
extern const KernelQuad kPlanarToBgr32;
extern const Kernel kPlanarToBgr32Fields;

// Sources with an alpha plane: its bytes become the fourth byte of every
// pixel. The planar kernels write with ordinary stores in all four entries.
extern const KernelQuad kYuyvAlphaToBgr32;
extern const KernelQuad kUyvyAlphaToBgr32;
extern const KernelQuad kPlanarAlphaToBgr32;

// Head pairs of the unaligned kernels: the pairs converted before the first
// 16-byte boundary of a destination line. 8-byte BGR32 pairs serve line
// starts on 8-byte boundaries; 6-byte BGR24 pairs serve even line starts,
// 2i bytes past a boundary taking kBgr24HeadPairs[i] pairs.
inline constexpr uint16_t kBgr24HeadPairs[8] = {0, 5, 2, 7, 4, 1, 6, 3};

inline int32_t Bgr32HeadPairs(const uint8_t* line) {
    const uint32_t residue = AddressResidue16(line);
    return residue ? static_cast<int32_t>((16 - residue) >> 3) : 0;
}
inline int32_t Bgr24HeadPairs(const uint8_t* line) {
    return kBgr24HeadPairs[(reinterpret_cast<uintptr_t>(line) >> 1) & 7];
}

// Alignment tests of the four-kernel exports.
inline constexpr AlignmentTest kPackedToBgr32Test = BothSidesTest({16, 8, false}, {32, 4, false});
inline constexpr AlignmentTest kPlanarAlphaToBgr32Test = DestinationTest(16, 16);
// BGR24 outputs test the first line's address and the width only. A pitch
// that puts a later line off a 16-byte boundary does not fault: every line
// walk writes a line whose body does not start on a boundary with unaligned
// stores (the same bytes).
inline constexpr AlignmentTest kToBgr24Test = DestinationTest(0, 16);

}  // namespace zenk::yuv_to_rgb
