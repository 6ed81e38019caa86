// The one per-pixel arithmetic of the YUV-to-RGB kernels, on 8 pixels, and
// the packing of its results into BGR32 and BGR24 bytes. Every kernel, block
// or single pair, decodes through Decode8; kernels differ in how they fill
// YuvWords and where the packed bytes go.
#pragma once

#include "coefficients.h"
#include "frame/kernel.h"

namespace zenk::yuv_to_rgb {

// Eight pixels as the unpacking leaves them: chroma words Cb0, Cr0, Cb1, Cr1,
// ..., Cb3, Cr3 (pair k belongs to pixels 2k and 2k+1), luma words Y0..Y7,
// and, for sources with an alpha plane, alpha words A0..A7.
struct YuvWords {
    __m128i chroma;
    __m128i luma;
    __m128i alpha;
};

// B, G and R of eight pixels as words, saturated to signed 16 bits (the byte
// packing saturates them to 0..255), even pixels first: words 0..3 hold
// pixels 0, 2, 4, 6 and words 4..7 pixels 1, 3, 5, 7. A pair's chroma term
// then meets the luma terms of both its pixels where it lies, without being
// spread to pixel order first; PackBgra restores pixel order once for all
// four components.
struct BgrWords {
    __m128i b, g, r;
};

// Eight words from pixel order to the even-first order of BgrWords.
inline __m128i EvenFirst(__m128i words) {
    const __m128i pairs = _mm_shufflehi_epi16(_mm_shufflelo_epi16(words, _MM_SHUFFLE(3, 1, 2, 0)),
                                              _MM_SHUFFLE(3, 1, 2, 0));  // 0 2 1 3 4 6 5 7
    return _mm_shuffle_epi32(pairs, _MM_SHUFFLE(3, 1, 2, 0));           // 0 2 4 6 1 3 5 7
}

// How a BGR32 kernel fills the fourth byte.
enum class AlphaForm {
    kWord,    // every pixel: low word of alpha_value
    kDword,   // even pixels: low word, odd pixels: high word
    kPlane,   // the source's alpha plane
    kNone,    // BGR24: no fourth byte
};

// The per-call constants of a kernel, on its stack: the coefficient vectors
// filled by SetupYuvToRgbCoefficients and the constant alpha words.
struct DecodeConstants {
    __m128i luma_offset, luma_gain, blue, red, green, unused0, unused1, clamp_low, clamp_high;
    __m128i alpha;

    DecodeConstants(const Request& r, AlphaForm form) {
        YuvToRgbCoefficients block{};
        block.matrix = static_cast<uint32_t>(r.dst_matrix);
        block.range = static_cast<uint32_t>(r.dst_range);
        block.bitDepth = 8;
        block.orderFlag = 1;
        block.clampLuma = r.clamp_luma;
        block.fullRangeLuma = r.full_range;
        block.lumaOffset = &luma_offset;
        block.lumaGain = &luma_gain;
        block.blueCoef = &blue;
        block.redCoef = &red;
        block.greenCoef = &green;
        block.unused0 = &unused0;
        block.unused1 = &unused1;
        block.clampLow = &clamp_low;
        block.clampHigh = &clamp_high;
        SetupYuvToRgbCoefficients(&block);
        switch (form) {
            case AlphaForm::kWord: alpha = _mm_set1_epi16(static_cast<int16_t>(r.alpha_value)); break;
            case AlphaForm::kDword: alpha = EvenFirst(_mm_set1_epi32(static_cast<int>(r.alpha_value))); break;
            case AlphaForm::kPlane:
            case AlphaForm::kNone: alpha = _mm_setzero_si128(); break;
        }
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
inline BgrWords Decode8(const DecodeConstants& k, const YuvWords& w) {
    const __m128i chroma = _mm_slli_epi16(_mm_sub_epi16(w.chroma, _mm_set1_epi16(128)), 1);
    const __m128i yd =
        _mm_sub_epi16(_mm_min_epi16(_mm_max_epi16(w.luma, k.clamp_low), k.clamp_high), k.luma_offset);
    const __m128i half = _mm_set1_epi32(8192);
    // Luma terms of pixels 0, 2, 4, 6 and of pixels 1, 3, 5, 7: dword k of
    // each lies beside chroma pair k.
    const __m128i even = _mm_add_epi32(_mm_madd_epi16(_mm_and_si128(yd, _mm_set1_epi32(0xFF)), k.luma_gain), half);
    const __m128i odd = _mm_add_epi32(_mm_madd_epi16(_mm_srai_epi32(yd, 16), k.luma_gain), half);
    auto component = [&](__m128i coef) {
        const __m128i t = _mm_madd_epi16(chroma, coef);  // one term per chroma pair
        return _mm_packs_epi32(_mm_srai_epi32(_mm_add_epi32(t, even), 14), _mm_srai_epi32(_mm_add_epi32(t, odd), 14));
    };
    return {component(k.blue), component(k.green), component(k.red)};
}

// Eight BGRA pixels in two vectors (pixels 0..3, 4..7). The alpha words come
// in the even-first order of the colour (EvenFirst) and are saturated to
// 0..255 as signed words, like the colour.
inline void PackBgra(const BgrWords& c, __m128i alpha_words, __m128i out[2]) {
    const __m128i br = _mm_packus_epi16(c.b, c.r);             // B0 B2 .. B7, R0 R2 .. R7
    const __m128i ga = _mm_packus_epi16(c.g, alpha_words);     // G0 G2 .. G7, A0 A2 .. A7
    const __m128i bg = _mm_unpacklo_epi8(br, ga);              // B0 G0 B2 G2 ...
    const __m128i ra = _mm_unpackhi_epi8(br, ga);              // R0 A0 R2 A2 ...
    const __m128i even = _mm_unpacklo_epi16(bg, ra);           // pixels 0, 2, 4, 6
    const __m128i odd = _mm_unpackhi_epi16(bg, ra);            // pixels 1, 3, 5, 7
    out[0] = _mm_unpacklo_epi32(even, odd);
    out[1] = _mm_unpackhi_epi32(even, odd);
}

inline __m128i Lanes64(uint64_t mask) { return _mm_set1_epi64x(static_cast<long long>(mask)); }

// Four BGRA pixels to their twelve BGR bytes in bytes 0..11 (12..15 zero).
inline __m128i PackFourBgr(__m128i px) {
    const __m128i six_six = _mm_or_si128(_mm_and_si128(px, Lanes64(0xFFFFFFull)),
                                         _mm_srli_epi64(_mm_and_si128(px, Lanes64(0xFFFFFF00000000ull)), 8));
    return _mm_or_si128(_mm_move_epi64(six_six), _mm_slli_si128(_mm_srli_si128(six_six, 8), 6));
}

}  // namespace zenk::yuv_to_rgb
