// UYVY16I taken apart: split into a luma plane and an interleaved chroma
// plane (Y8PUV8I), or widened to one V, U, Y, A pixel per picture pixel
// (V8U8Y8A8I). Same standard only; no arithmetic on the samples.
#include "line_walk.h"
#include "yuv_to_yuv_kernels.h"

namespace zenk::yuv_to_yuv {
namespace {

// Split: a group is 16 pixels, 32 source bytes to 16 luma and 16 chroma
// bytes. The chroma plane lies dst_stride * dst_height bytes after the luma
// plane (the product wraps at 32 bits, as the request's words do) and moves
// with it by dst_skip.
//
// The head counts pairs as if the destination were packed, (16 - luma
// address mod 16) / 4, yet a pair moves the luma pointer by two bytes; so
// the body starts on a 16-byte boundary only where the luma line already
// did. Both planes' group stores are therefore aligned stores where the
// address is on a boundary and ordinary unaligned stores elsewhere: the
// bytes are the same, and a chroma plane at any address (an odd
// dst_stride * dst_height) is written without a fault, in the aligned
// kernel too. Both variants write with ordinary stores.
struct SplitToPlanar {
    static constexpr bool kPlanar = true;
    static constexpr int32_t kGroupPixels = 16;
    static constexpr uint32_t kHeadPairBytes = 4;
    using State = NoState;
    static uint8_t* ChromaPlane(const Request& r) {
        const uint32_t offset = static_cast<uint32_t>(r.dst_stride) * static_cast<uint32_t>(r.dst_height);
        return Advance(r.dst_plane, static_cast<int32_t>(offset));
    }
    template <class>
    static void Group(Cursor& c, const State&) {
        const __m128i a = LoadU(c.src), b = LoadU(c.src + 16);
        const __m128i low_bytes = _mm_set1_epi16(0xFF);
        // Luma first, then chroma: where the two planes overlap (a
        // destination height of 0), chroma is what remains.
        StoreBody<AnyCached>(c.dst, _mm_packus_epi16(_mm_srli_epi16(a, 8), _mm_srli_epi16(b, 8)));
        StoreBody<AnyCached>(c.chroma, _mm_packus_epi16(_mm_and_si128(a, low_bytes), _mm_and_si128(b, low_bytes)));
        c.src += 32;
        c.dst += 16;
        c.chroma += 16;
    }
    template <class>
    static void Pair(Cursor& c, const State&) {
        const uint8_t cb = c.src[0], y0 = c.src[1], cr = c.src[2], y1 = c.src[3];
        c.dst[0] = y0;
        c.dst[1] = y1;
        c.chroma[0] = cb;
        c.chroma[1] = cr;
        c.src += 4;
        c.dst += 2;
        c.chroma += 2;
    }
};

// Widening: a group is 8 pixels, 16 source bytes to 32 destination bytes;
// pixel n becomes Cr, Cb of its pair, its own Y, and the low byte of
// alpha_value. A pair writes 8 bytes with one ordinary store.
struct AlphaWord {
    explicit AlphaWord(const Request& r)
        : alpha_high_byte(_mm_set1_epi16(static_cast<int16_t>(static_cast<uint16_t>((r.alpha_value & 0xFF) << 8)))) {}
    __m128i alpha_high_byte;
};

struct WidenTo444 : SinglePlane {
    static constexpr int32_t kGroupPixels = 8;
    static constexpr uint32_t kHeadPairBytes = 8;
    using State = AlphaWord;

    // Four pairs (Cb Y0 Cr Y1 in each 32-bit lane) to eight pixels.
    static void Widen(__m128i pairs, const State& k, __m128i& pixels0_3, __m128i& pixels4_7) {
        const __m128i chroma = _mm_and_si128(pairs, _mm_set1_epi32(0x00FF00FF));  // Cb, Cr words
        const __m128i vu = _mm_and_si128(_mm_or_si128(_mm_srli_epi32(chroma, 16), _mm_slli_epi32(chroma, 8)),
                                         _mm_set1_epi32(0xFFFF));                      // Cr | Cb << 8
        const __m128i vu_twice = _mm_or_si128(vu, _mm_slli_epi32(vu, 16));             // for both pixels
        const __m128i ya = _mm_or_si128(_mm_srli_epi16(pairs, 8), k.alpha_high_byte);  // Y | A << 8
        pixels0_3 = _mm_unpacklo_epi16(vu_twice, ya);
        pixels4_7 = _mm_unpackhi_epi16(vu_twice, ya);
    }
    template <class A>
    static void Group(Cursor& c, const State& k) {
        __m128i p0, p1;
        Widen(LoadU(c.src), k, p0, p1);
        StoreBody<A>(c.dst, p0);
        StoreBody<A>(c.dst + 16, p1);
        c.src += 16;
        c.dst += 32;
    }
    template <class>
    static void Pair(Cursor& c, const State& k) {
        __m128i p0, unused;
        Widen(LoadPair(c.src), k, p0, unused);
        Store64(c.dst, p0);
        c.src += 4;
        c.dst += 8;
    }
};

}  // namespace

// The split writes with ordinary stores whatever use_streaming_stores says.
const KernelQuad kSplitToPlanar = {{&WalkLines<SplitToPlanar, AlignedCached>, &WalkLines<SplitToPlanar, AlignedCached>,
                                    &WalkLines<SplitToPlanar, AnyCached>, &WalkLines<SplitToPlanar, AnyCached>}};
const KernelQuad kWidenTo444 = ZENK_KERNEL_QUAD(WalkLines, WidenTo444);

}  // namespace zenk::yuv_to_yuv
