// Scalar reference of the RGB-to-YUV encoders: which pixels each kernel
// reads for a pair, the pair arithmetic, the output layouts and clamps, and
// how the running pointers and line starts move.
#pragma once

#include <cstdint>

#include "zenk_transcoder.h"

namespace zenk::test {

enum class EncodeSource { kBgr32, kBgr24 };
enum class EncodeLayout { kUyvy, kYuyv, kUvyy, kY8Uv };

// The values of one pixel pair before layout: Y0, Y1 with the luma offset,
// Cb, Cr with 128 added and saturated (not yet clamped).
struct EncodedPair {
    int y0, y1, cb, cr;
};

// The weights of one set, 15 fractional bits.
struct ReferenceWeights {
    int kr, kg, kb, cb_b, cb_g, cb_r, cr_r, cr_g, cr_b, luma_offset;
};

// The set a request selects, given what host option 128 answers.
ReferenceWeights SelectWeights(const ZenkConversionRequest& r, int32_t host_option);

// The pair of pixels `even` and `odd` (B, G, R each): Cb from the even
// pixel, Cr from the odd one.
EncodedPair EncodePair(const ReferenceWeights& w, const uint8_t* even, const uint8_t* odd);

struct EncodeKernel {
    EncodeSource source;
    EncodeLayout layout;
    bool alpha_plane;    // BGR32 fourth bytes copied to dst_alpha_plane
    int vertical_mode;   // 0 frame, 1 halve, 2 quarter, 3 double
    bool aligned;        // frame mode: whole 8-pixel groups only, no single pairs
};

// What the kernel `k` does to the request's pictures.
void ReferenceEncode(const ZenkConversionRequest& r, const EncodeKernel& k, int32_t host_option);

}  // namespace zenk::test
