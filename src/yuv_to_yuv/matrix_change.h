// Change of colour standard between ITU-R BT.601 and BT.709 on 4:2:2 YUV:
// the coefficient block every matrix-change kernel fills on its stack, the
// routine that fills its vectors, and the per-pixel arithmetic, written once
// on the vector layer.
#pragma once

#include "kernel/kernel.h"
#include "kernel/pixel_packing.h"

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
    Vector128* lumaCorrection;  // 4 x (Cb->dY, Cr->dY)
    Vector128* cbCoefficients;  // 4 x (Cb->Cb', Cr->Cb')
    Vector128* crCoefficients;  // 4 x (Cb->Cr', Cr->Cr')
    Vector128* clampLow;        // 8 x lower luma bound
    Vector128* clampHigh;       // 8 x upper luma bound
};

// Writes the three coefficient vectors (for bitDepth 8 only; any other depth
// leaves them as they were) and the two clamp vectors. Only srcMatrix 1 with
// dstMatrix 0 selects BT.601 -> BT.709; every other pair selects
// BT.709 -> BT.601.
void SetupYuvMatrixChangeCoefficients(YuvMatrixChangeCoefficients* block);

}  // namespace zenk::yuv_to_yuv

namespace zenk::ZENK_ISA::yuv_to_yuv {

// The coefficient block and its setup are the same at every level.
using namespace ::zenk::yuv_to_yuv;

// How the luma of a 16-pixel group takes its correction.
//  kOwnPair: pixels 0-7 take the correction of their own pairs, pixels 8-15
//    theirs.
//  kCrossed: the UYVY-order kernel shared by the UVYY16I and Y8PUV8I
//    exports. Pixels 0-7 take the fully rounded correction of the pair four
//    pairs later (pixels 8-15, same lane); pixels 8-15 take their own
//    correction rounded without the step that lowers negative values. The
//    correction of pixels 0-7 themselves is computed and not used.
enum class LumaRule { kOwnPair, kCrossed };

// The vectors of one call in every lane of the layer S, filled through the
// coefficient block.
template <class S>
struct MatrixConstants {
    enum Vector { kLumaCorrection, kCb, kCr, kClampLow, kClampHigh };
    explicit MatrixConstants(const Request& r)
        : v(SetupYuvMatrixChangeCoefficients, static_cast<uint32_t>(r.src_matrix), static_cast<uint32_t>(r.src_range),
            static_cast<uint32_t>(r.dst_matrix), static_cast<uint32_t>(r.dst_range), 8u, uint8_t{1}, r.clamp_luma,
            r.full_range) {}
    const CallVectors<S, 5> v;
};

// The arithmetic on the vector layer S; M is the call's MatrixConstants.
template <class S>
struct MatrixArithmetic {
    using V = typename S::V;

    template <class M>
    static V Clamp(V v, const M& m) { return S::Min16(S::Max16(v, m.v[M::kClampLow]), m.v[M::kClampHigh]); }

    // Four 32-bit sums with 14 fractional bits to 8 fractional bits.
    static V Shift6(V sums) { return S::template Sar32<6>(sums); }

    // The luma correction of four pairs, saturated to 16 bits and repeated
    // for both pixels of each pair.
    template <class M>
    static V PerPixelCorrection(V cbcr, const M& m) {
        const V pairs = Shift6(S::MulAdd16(cbcr, m.v[M::kLumaCorrection]));
        const V words = S::PackS32To16(pairs, pairs);  // d0 d1 d2 d3 d0 d1 d2 d3
        return S::Lo16(words, words);                  // d0 d0 d1 d1 d2 d2 d3 d3
    }

    // New Cb and Cr of four pairs, saturated to 16 bits, interleaved again.
    template <class M>
    static V NewChroma(V cbcr, const M& m) {
        const V cb = Shift6(S::MulAdd16(cbcr, m.v[M::kCb]));
        const V cr = Shift6(S::MulAdd16(cbcr, m.v[M::kCr]));
        return S::PackS32To16(S::Lo32(cb, cr), S::Hi32(cb, cr));
    }

    // Rounding of values with 8 fractional bits, in two steps on 16-bit
    // lanes that wrap: first +128 where the lane of `sign_of` is not
    // negative, then -128 where the result is negative. A value rounded by
    // its own sign passes itself as `sign_of`; the second half of a 16-pixel
    // group passes the first half's value of the same lane, as the group
    // arithmetic always has.
    static V AddHalfBy(V v, V sign_of) {
        return S::Add16(v, S::AndNot(S::template Sar16<15>(sign_of), S::Set16(128)));
    }
    static V LowerNegative(V v) { return S::Add16(v, S::And(S::template Sar16<15>(v), S::Set16(-128))); }
};

// The matrix change of a 16-pixel group: `a` holds pixels 0-7 and `b`
// pixels 8-15 on entry, the converted pixels on exit (luma clamped, chroma
// with its offset of 128 restored; both still 16-bit lanes). A single pair
// is converted with a = b = that pair: the group arithmetic then rounds
// every value by its own sign, and the crossed luma rule gives the pair its
// own fully rounded correction.
template <class S, LumaRule kLuma, class K>
inline void ChangeMatrix(const K& m, Words422<S>& a, Words422<S>& b) {
    using M = MatrixArithmetic<S>;
    const auto offset = S::Set16(128);
    const auto cbcr_a = S::Sub16(a.chroma, offset);
    const auto cbcr_b = S::Sub16(b.chroma, offset);
    const auto luma_a = M::Clamp(a.luma, m), luma_b = M::Clamp(b.luma, m);

    const auto dy_a = M::PerPixelCorrection(cbcr_a, m), dy_b = M::PerPixelCorrection(cbcr_b, m);
    const auto c_a = M::NewChroma(cbcr_a, m), c_b = M::NewChroma(cbcr_b, m);

    const auto dy_a1 = M::AddHalfBy(dy_a, dy_a), dy_b1 = M::AddHalfBy(dy_b, dy_a);
    const auto c_a1 = M::AddHalfBy(c_a, c_a), c_b1 = M::AddHalfBy(c_b, c_a);
    const auto dy_b2 = M::LowerNegative(dy_b1);

    if constexpr (kLuma == LumaRule::kOwnPair) {
        const auto dy_a2 = M::LowerNegative(dy_a1);
        a.luma = M::Clamp(S::Add16(luma_a, S::template Sar16<8>(dy_a2)), m);
        b.luma = M::Clamp(S::Add16(luma_b, S::template Sar16<8>(dy_b2)), m);
    } else {
        a.luma = M::Clamp(S::Add16(luma_a, S::template Sar16<8>(dy_b2)), m);
        b.luma = M::Clamp(S::Add16(luma_b, S::template Sar16<8>(dy_b1)), m);
    }
    a.chroma = S::Add16(S::template Sar16<8>(M::LowerNegative(c_a1)), offset);
    b.chroma = S::Add16(S::template Sar16<8>(M::LowerNegative(c_b1)), offset);
}

}  // namespace zenk::ZENK_ISA::yuv_to_yuv
