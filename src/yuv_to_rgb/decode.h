// The one per-pixel arithmetic of the YUV-to-RGB kernels, on 8 pixels, and
// the packing of its results into BGR32 and BGR24 bytes. Every kernel, block
// or single pair, decodes through Decode8; kernels differ in how they fill
// YuvWords and where the packed bytes go.
#pragma once

#include "coefficients.h"
#include "kernel/kernel.h"

namespace zenk::ZENK_ISA::yuv_to_rgb {

// The coefficient block and its setup are the same at every level.
using namespace ::zenk::yuv_to_rgb;

// Written on the vector layer: S is Vec128 or a wider layer whose lanes each
// hold what a Vec128 register holds.

// Eight pixels as the unpacking leaves them: chroma words Cb0, Cr0, Cb1, Cr1,
// ..., Cb3, Cr3 (pair k belongs to pixels 2k and 2k+1), luma words Y0..Y7,
// and, for sources with an alpha plane, alpha words A0..A7.
template <class S>
struct YuvWords {
    typename S::V chroma;
    typename S::V luma;
    typename S::V alpha;
};

// B, G and R of eight pixels as words, saturated to signed 16 bits (the byte
// packing saturates them to 0..255), even pixels first: words 0..3 hold
// pixels 0, 2, 4, 6 and words 4..7 pixels 1, 3, 5, 7. A pair's chroma term
// then meets the luma terms of both its pixels where it lies, without being
// spread to pixel order first; PackBgra restores pixel order once for all
// four components.
template <class S>
struct BgrWords {
    typename S::V b, g, r;
};

// Eight words from pixel order to the even-first order of BgrWords.
template <class S>
ZENK_ARITHMETIC typename S::V EvenFirst(typename S::V words) {
    const auto pairs = S::template ShuffleHi16<Pick(0, 2, 1, 3)>(
        S::template ShuffleLo16<Pick(0, 2, 1, 3)>(words));  // 0 2 1 3 4 6 5 7
    return S::template Shuffle32<Pick(0, 2, 1, 3)>(pairs);  // 0 2 4 6 1 3 5 7
}

// How a BGR32 kernel fills the fourth byte.
enum class AlphaForm {
    kWord,    // every pixel: low word of alpha_value
    kDword,   // even pixels: low word, odd pixels: high word
    kPlane,   // the source's alpha plane
    kNone,    // BGR24: no fourth byte
};

// The per-call constants of a kernel, in every lane, and the constant alpha
// words of the form kForm. The coefficient block fills the call's vectors
// (v: offset, gain, blue, red, green, two the setup leaves alone, clamps).
template <class S, AlphaForm kForm>
struct DecodeConstants {
    using V = typename S::V;
    enum Vector { kLumaOffset, kLumaGain, kBlue, kRed, kGreen, kUnused0, kUnused1, kClampLow, kClampHigh };
    const CallVectors<S, 9> v;
    V alpha;

    explicit DecodeConstants(const Request& r)
        : v(SetupYuvToRgbCoefficients, static_cast<uint32_t>(r.dst_matrix), static_cast<uint32_t>(r.dst_range), 8u,
            uint8_t{1}, r.clamp_luma, r.full_range) {
        if constexpr (kForm == AlphaForm::kWord)
            alpha = S::Set16(static_cast<int16_t>(r.alpha_value));
        else if constexpr (kForm == AlphaForm::kDword)
            alpha = EvenFirst<S>(S::Set32(r.alpha_value));
        else
            alpha = S::Zero();
    }
};

// Decodes eight pixels. Per pixel with luma Y and its pair's (Cb, Cr):
//   Yd = min(max(Y, clampLow), clampHigh) - offset
//   cb = 2 (Cb - 128), cr = 2 (Cr - 128)
//   C  = (cb * coef_cb + cr * coef_cr + Yd' * gain + 8192) >> 14
// where Yd' of an even pixel is only the low 8 bits of its Yd (the dword
// mask 0x000000FF that isolates the even luma word is one byte narrower than
// the word; hosts depend on the wrap of negative Yd that this gives) and Yd'
// of an odd pixel is its full signed Yd. Chroma is repeated for both pixels
// of a pair.
template <class S, class K>
ZENK_ARITHMETIC BgrWords<S> Decode8(const K& k, const YuvWords<S>& w) {
    using V = typename S::V;
    const V chroma = S::template Shl16<1>(S::Sub16(w.chroma, S::Set16(128)));
    const V yd = S::Sub16(S::Min16(S::Max16(w.luma, k.v[K::kClampLow]), k.v[K::kClampHigh]), k.v[K::kLumaOffset]);
    const V half = S::Set32(8192);
    // Luma terms of pixels 0, 2, 4, 6 and of pixels 1, 3, 5, 7: dword k of
    // each lies beside chroma pair k.
    const V even = S::Add32(S::MulAdd16(S::And(yd, S::Set32(0xFF)), k.v[K::kLumaGain]), half);
    const V odd = S::Add32(S::MulAdd16(S::template Sar32<16>(yd), k.v[K::kLumaGain]), half);
    auto component = [&](V coef) {
        const V t = S::MulAdd16(chroma, coef);  // one term per chroma pair
        return S::PackS32To16(S::template Sar32<14>(S::Add32(t, even)), S::template Sar32<14>(S::Add32(t, odd)));
    };
    return {component(k.v[K::kBlue]), component(k.v[K::kGreen]), component(k.v[K::kRed])};
}

// Eight BGRA pixels in two vectors (pixels 0..3, 4..7). The alpha words come
// in the even-first order of the colour (EvenFirst) and are saturated to
// 0..255 as signed words, like the colour.
template <class S>
ZENK_ARITHMETIC void PackBgra(const BgrWords<S>& c, typename S::V alpha_words, typename S::V out[2]) {
    using V = typename S::V;
    const V br = S::PackS16ToU8(c.b, c.r);          // B0 B2 .. B7, R0 R2 .. R7
    const V ga = S::PackS16ToU8(c.g, alpha_words);  // G0 G2 .. G7, A0 A2 .. A7
    const V bg = S::Lo8(br, ga);                    // B0 G0 B2 G2 ...
    const V ra = S::Hi8(br, ga);                    // R0 A0 R2 A2 ...
    const V even = S::Lo16(bg, ra);                 // pixels 0, 2, 4, 6
    const V odd = S::Hi16(bg, ra);                  // pixels 1, 3, 5, 7
    out[0] = S::Lo32(even, odd);
    out[1] = S::Hi32(even, odd);
}

}  // namespace zenk::ZENK_ISA::yuv_to_rgb
