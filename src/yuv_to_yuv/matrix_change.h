// Change of colour standard between ITU-R BT.601 and BT.709 on 4:2:2 YUV:
// the coefficient block every matrix-change kernel fills on its stack, the
// routine that fills its vectors, and the per-pixel arithmetic, written once
// on SSE2 vectors of eight 16-bit lanes.
#pragma once

#include "frame/kernel.h"

namespace zenk::yuv_to_yuv {

// Filled by a kernel before its first line. The selector words and flags
// come from the request; the pointers name the kernel's own 16-byte aligned
// vectors, which SetupYuvMatrixChangeCoefficients writes.
struct YuvMatrixChangeCoefficients {
    uint32_t srcMatrix;       // 1 = BT.601, other values = BT.709
    uint32_t srcRange;        // carried along, not acted on
    uint32_t dstMatrix;       // 1 = BT.601, other values = BT.709
    uint32_t dstRange;        // carried along, not acted on
    uint32_t bitDepth;        // 8; the only depth with coefficients
    uint8_t orderFlag;        // always 1, not acted on
    uint8_t clampLuma;        // nonzero: luma held to 16..235, else 0..255
    uint8_t fullRangeLuma;    // carried along, not acted on
    __m128i* lumaCorrection;  // 4 x (Cb->dY, Cr->dY)
    __m128i* cbCoefficients;  // 4 x (Cb->Cb', Cr->Cb')
    __m128i* crCoefficients;  // 4 x (Cb->Cr', Cr->Cr')
    __m128i* clampLow;        // 8 x lower luma bound
    __m128i* clampHigh;       // 8 x upper luma bound
};

// Writes the three coefficient vectors (for bitDepth 8 only; any other depth
// leaves them as they were) and the two clamp vectors. Only srcMatrix 1 with
// dstMatrix 0 selects BT.601 -> BT.709; every other pair selects
// BT.709 -> BT.601.
void SetupYuvMatrixChangeCoefficients(YuvMatrixChangeCoefficients* block);

// The vectors of one call, on the kernel's stack, and the block that fills
// them from a request.
struct MatrixChangeVectors {
    explicit MatrixChangeVectors(const Request& r);
    __m128i luma_correction = _mm_setzero_si128();
    __m128i cb = _mm_setzero_si128();
    __m128i cr = _mm_setzero_si128();
    __m128i clamp_low = _mm_setzero_si128();
    __m128i clamp_high = _mm_setzero_si128();
};

// Eight pixels as 16-bit lanes: luma of pixel n in lane n, chroma of pair k
// as Cb in lane 2k and Cr in lane 2k + 1.
struct Lanes {
    __m128i luma;
    __m128i chroma;
};

// How the luma of a 16-pixel group takes its correction.
//  kOwnPair: pixels 0-7 take the correction of their own pairs, pixels 8-15
//    theirs.
//  kCrossed: the UYVY-order kernel shared by the UVYY16I and Y8PUV8I
//    exports. Pixels 0-7 take the fully rounded correction of the pair four
//    pairs later (pixels 8-15, same lane); pixels 8-15 take their own
//    correction rounded without the step that lowers negative values. The
//    correction of pixels 0-7 themselves is computed and not used.
enum class LumaRule { kOwnPair, kCrossed };

namespace detail {

inline __m128i Clamp(__m128i v, const MatrixChangeVectors& m) {
    return _mm_min_epi16(_mm_max_epi16(v, m.clamp_low), m.clamp_high);
}

// Four 32-bit sums with 14 fractional bits to 8 fractional bits.
inline __m128i Shift6(__m128i sums) { return _mm_srai_epi32(sums, 6); }

// The luma correction of four pairs, saturated to 16 bits and repeated for
// both pixels of each pair.
inline __m128i PerPixelCorrection(__m128i cbcr, const MatrixChangeVectors& m) {
    const __m128i pairs = Shift6(_mm_madd_epi16(cbcr, m.luma_correction));
    const __m128i words = _mm_packs_epi32(pairs, pairs);  // d0 d1 d2 d3 d0 d1 d2 d3
    return _mm_unpacklo_epi16(words, words);              // d0 d0 d1 d1 d2 d2 d3 d3
}

// New Cb and Cr of four pairs, saturated to 16 bits, interleaved again.
inline __m128i NewChroma(__m128i cbcr, const MatrixChangeVectors& m) {
    const __m128i cb = Shift6(_mm_madd_epi16(cbcr, m.cb));
    const __m128i cr = Shift6(_mm_madd_epi16(cbcr, m.cr));
    return _mm_packs_epi32(_mm_unpacklo_epi32(cb, cr), _mm_unpackhi_epi32(cb, cr));
}

// Rounding of values with 8 fractional bits, in two steps on 16-bit lanes
// that wrap: first +128 where the lane of `sign_of` is not negative, then
// -128 where the result is negative. A value rounded by its own sign passes
// itself as `sign_of`; the second half of a 16-pixel group passes the first
// half's value of the same lane, as the group arithmetic always has.
inline __m128i AddHalfBy(__m128i v, __m128i sign_of) {
    return _mm_add_epi16(v, _mm_andnot_si128(_mm_srai_epi16(sign_of, 15), _mm_set1_epi16(128)));
}
inline __m128i LowerNegative(__m128i v) {
    return _mm_add_epi16(v, _mm_and_si128(_mm_srai_epi16(v, 15), _mm_set1_epi16(-128)));
}

}  // namespace detail

// The matrix change of a 16-pixel group: `a` holds pixels 0-7 and `b`
// pixels 8-15 on entry, the converted pixels on exit (luma clamped, chroma
// with its offset of 128 restored; both still 16-bit lanes). A single pair
// is converted with a = b = that pair: the group arithmetic then rounds
// every value by its own sign, and the crossed luma rule gives the pair its
// own fully rounded correction.
template <LumaRule kLuma>
inline void ChangeMatrix(const MatrixChangeVectors& m, Lanes& a, Lanes& b) {
    using namespace detail;
    const __m128i offset = _mm_set1_epi16(128);
    const __m128i cbcr_a = _mm_sub_epi16(a.chroma, offset);
    const __m128i cbcr_b = _mm_sub_epi16(b.chroma, offset);
    const __m128i luma_a = Clamp(a.luma, m), luma_b = Clamp(b.luma, m);

    const __m128i dy_a = PerPixelCorrection(cbcr_a, m), dy_b = PerPixelCorrection(cbcr_b, m);
    const __m128i c_a = NewChroma(cbcr_a, m), c_b = NewChroma(cbcr_b, m);

    const __m128i dy_a1 = AddHalfBy(dy_a, dy_a), dy_b1 = AddHalfBy(dy_b, dy_a);
    const __m128i c_a1 = AddHalfBy(c_a, c_a), c_b1 = AddHalfBy(c_b, c_a);
    const __m128i dy_b2 = LowerNegative(dy_b1);

    if constexpr (kLuma == LumaRule::kOwnPair) {
        const __m128i dy_a2 = LowerNegative(dy_a1);
        a.luma = Clamp(_mm_add_epi16(luma_a, _mm_srai_epi16(dy_a2, 8)), m);
        b.luma = Clamp(_mm_add_epi16(luma_b, _mm_srai_epi16(dy_b2, 8)), m);
    } else {
        a.luma = Clamp(_mm_add_epi16(luma_a, _mm_srai_epi16(dy_b2, 8)), m);
        b.luma = Clamp(_mm_add_epi16(luma_b, _mm_srai_epi16(dy_b1, 8)), m);
    }
    a.chroma = _mm_add_epi16(_mm_srai_epi16(LowerNegative(c_a1), 8), offset);
    b.chroma = _mm_add_epi16(_mm_srai_epi16(LowerNegative(c_b1), 8), offset);
}

}  // namespace zenk::yuv_to_yuv
