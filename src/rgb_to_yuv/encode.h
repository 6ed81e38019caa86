// The encoding arithmetic, written once: how pixel pairs are arranged for
// the multiply-adds (per source format), how (Y0, Y1, Cb, Cr) of four pairs
// are computed, and how they are laid out and clamped per destination
// format. The kernels (frame_kernels.cpp, pair_mode_kernels.cpp) only add
// loads, stores and the line walk.
#pragma once

#include <cstring>
#include <type_traits>

#include "coefficients.h"
#include "frame/kernel.h"

namespace zenk::rgb_to_yuv {

// ---- Constants of one call -------------------------------------------------------------

// The kernel's private constant set: the coefficient block's vectors, filled
// once per call by SetupRgbToYuvCoefficients, and the fixed vectors of the
// arithmetic.
struct Encoder {
    __m128i luma_offset, luma_a, luma_b, chroma_a, chroma_b, chroma_c, chroma_d, luma_min, luma_max;
    __m128i round;           // four 32-bit lanes of 16384: half of the last unit
    __m128i chroma_offset;   // eight words of 128
    __m128i chroma_ceiling;  // eight words of 255

    explicit Encoder(const Request& r)
        : round(_mm_set1_epi32(1 << 14)), chroma_offset(_mm_set1_epi16(128)), chroma_ceiling(_mm_set1_epi16(255)) {
        RgbToYuvCoefficients block{static_cast<uint32_t>(r.dst_matrix),
                                   static_cast<uint32_t>(r.dst_range),
                                   8,
                                   1,
                                   r.clamp_luma,
                                   r.full_range,
                                   &luma_offset,
                                   &luma_a,
                                   &luma_b,
                                   &chroma_a,
                                   &chroma_b,
                                   &chroma_c,
                                   &chroma_d,
                                   &luma_min,
                                   &luma_max};
        SetupRgbToYuvCoefficients(&block);
    }
};

// ---- Pixel pairs arranged for the multiply-adds -------------------------------------------

// Four pixel pairs as two vectors of byte quads, one 32-bit lane a pair:
// `first` holds (B0, G0, R0, B1), `second` holds (R0, B1, G1, R1). Lanes of
// a single pair beyond the first are don't-cares.
struct Quads {
    __m128i first;
    __m128i second;
};

inline __m128i Mask64(uint64_t lane) { return _mm_set1_epi64x(static_cast<long long>(lane)); }

// Two BGRA pixels per 64-bit lane to their quads in the lane's low dword.
// The fourth byte of each pixel is dropped.
inline __m128i FirstQuads(__m128i px) {
    return _mm_or_si128(_mm_and_si128(px, Mask64(0x00FFFFFF)),
                        _mm_and_si128(_mm_srli_epi64(px, 8), Mask64(0xFF000000)));  // B1
}
inline __m128i SecondQuads(__m128i px) {
    return _mm_or_si128(_mm_and_si128(_mm_srli_epi64(px, 16), Mask64(0x000000FF)),   // R0
                        _mm_and_si128(_mm_srli_epi64(px, 24), Mask64(0xFFFFFF00)));  // B1, G1, R1
}

// Dwords 0 and 2 of `a`, then dwords 0 and 2 of `b`.
inline __m128i EvenDwords(__m128i a, __m128i b) {
    return _mm_unpacklo_epi64(_mm_shuffle_epi32(a, _MM_SHUFFLE(3, 1, 2, 0)),
                              _mm_shuffle_epi32(b, _MM_SHUFFLE(3, 1, 2, 0)));
}

// Four pairs of BGRA pixels, two pairs in each vector.
inline Quads QuadsFromBgr32(__m128i pairs01, __m128i pairs23) {
    return {EvenDwords(FirstQuads(pairs01), FirstQuads(pairs23)),
            EvenDwords(SecondQuads(pairs01), SecondQuads(pairs23))};
}

inline uint32_t Read32(const uint8_t* p) {
    uint32_t v;
    std::memcpy(&v, p, 4);
    return v;
}

// ---- Sources: where the pixels of a pair come from ------------------------------------------

// Frame modes and line doubling: every BGR32 pixel, a pair per 8 bytes.
struct Bgr32Pixels {
    static constexpr int kPairBytes = 8;
    static constexpr int kBlockBytes = 32;
    static Quads Block(const uint8_t* s) { return QuadsFromBgr32(LoadU(s), LoadU(s + 16)); }
    static Quads Pair(const uint8_t* s) { return QuadsFromBgr32(Load64(s), _mm_setzero_si128()); }
};

// Reduction by 2: pixels 0 and 2 of every four form the pair.
struct Bgr32EverySecond {
    static constexpr int kPairBytes = 16;
    static constexpr int kBlockBytes = 64;
    static __m128i Pixels02(const uint8_t* s) { return _mm_shuffle_epi32(LoadU(s), _MM_SHUFFLE(3, 1, 2, 0)); }
    static Quads Block(const uint8_t* s) {
        return QuadsFromBgr32(_mm_unpacklo_epi64(Pixels02(s), Pixels02(s + 16)),
                              _mm_unpacklo_epi64(Pixels02(s + 32), Pixels02(s + 48)));
    }
    static Quads Pair(const uint8_t* s) { return QuadsFromBgr32(Pixels02(s), _mm_setzero_si128()); }
};

// Reduction by 4: pixels 0 and 4 of every eight, from two 8-byte loads 16
// bytes apart.
struct Bgr32EveryFourth {
    static constexpr int kPairBytes = 32;
    static constexpr int kBlockBytes = 128;
    static __m128i Pixels04(const uint8_t* s) { return _mm_unpacklo_epi32(Load64(s), Load64(s + 16)); }
    static Quads Block(const uint8_t* s) {
        return QuadsFromBgr32(_mm_unpacklo_epi64(Pixels04(s), Pixels04(s + 32)),
                              _mm_unpacklo_epi64(Pixels04(s + 64), Pixels04(s + 96)));
    }
    static Quads Pair(const uint8_t* s) { return QuadsFromBgr32(Pixels04(s), _mm_setzero_si128()); }
};

// BGR24: overlapping 8-byte loads put each pair at the bottom of a 64-bit
// lane, (B0, G0, R0, B1, G1, R1, ...); its first quad is the lane's low
// dword, its second the low dword after a 16-bit shift. No load reaches
// past the group's 24 bytes.
struct Bgr24Pixels {
    static constexpr int kPairBytes = 6;
    static constexpr int kBlockBytes = 24;
    static Quads Block(const uint8_t* s) {
        const __m128i pairs01 = _mm_unpacklo_epi64(Load64(s), Load64(s + 6));
        const __m128i pairs23 = _mm_unpacklo_epi64(Load64(s + 12), _mm_srli_epi64(Load64(s + 16), 16));
        return {EvenDwords(pairs01, pairs23),
                EvenDwords(_mm_srli_epi64(pairs01, 16), _mm_srli_epi64(pairs23, 16))};
    }
    // A single pair (in every BGR24 kernel, packed or planar) takes its
    // second quad from the pair's bytes 8..11, not 2..5: R0 comes from the next pair's even pixel and G1, R1 from its odd
    // pixel, and the read reaches 6 bytes past the pair. Hosts depend on the
    // exact output of the head and tail pairs, so this is kept; a uniform
    // line encodes the same either way.
    static Quads Pair(const uint8_t* s) {
        return {_mm_cvtsi32_si128(static_cast<int>(Read32(s))), _mm_cvtsi32_si128(static_cast<int>(Read32(s + 8)))};
    }
};

// ---- The arithmetic -------------------------------------------------------------------------

// Eight words each: y = Y0..Y7 with the luma offset added, c = Cb0, Cr0,
// Cb1, Cr1, ... with 128 added and at most 255. Cb is the even pixel's and
// Cr the odd pixel's: chroma is point-sampled, not averaged.
struct Encoded {
    __m128i y;
    __m128i c;
};

inline __m128i Weigh(const Encoder& k, __m128i first, __m128i second, __m128i weights_a, __m128i weights_b) {
    const __m128i sum = _mm_add_epi32(_mm_madd_epi16(first, weights_a), _mm_madd_epi16(second, weights_b));
    return _mm_srai_epi32(_mm_add_epi32(sum, k.round), 15);
}

inline Encoded Encode(const Encoder& k, const Quads& q) {
    const __m128i zero = _mm_setzero_si128();
    const __m128i first01 = _mm_unpacklo_epi8(q.first, zero), first23 = _mm_unpackhi_epi8(q.first, zero);
    const __m128i second01 = _mm_unpacklo_epi8(q.second, zero), second23 = _mm_unpackhi_epi8(q.second, zero);
    __m128i y = _mm_packs_epi32(Weigh(k, first01, second01, k.luma_a, k.luma_b),
                                Weigh(k, first23, second23, k.luma_a, k.luma_b));
    // Byte-wise: the weights keep luma within 0..255, so nothing wraps.
    y = _mm_add_epi8(y, k.luma_offset);
    __m128i c = _mm_packs_epi32(Weigh(k, first01, second01, k.chroma_a, k.chroma_b),
                                Weigh(k, first23, second23, k.chroma_a, k.chroma_b));
    // The weights cannot take chroma below -128, so only the top is limited.
    c = _mm_min_epi16(_mm_add_epi16(c, k.chroma_offset), k.chroma_ceiling);
    return {y, c};
}

// Line doubling: each pixel repeated, the pair's chroma with both copies.
// Four source pairs become eight output pairs, returned as two sets of four.
inline void Double(const Encoded& e, Encoded& low, Encoded& high) {
    low = {_mm_unpacklo_epi16(e.y, e.y), _mm_unpacklo_epi32(e.c, e.c)};
    high = {_mm_unpackhi_epi16(e.y, e.y), _mm_unpackhi_epi32(e.c, e.c)};
}

// ---- Destinations -----------------------------------------------------------------------------

template <int kBytes>
inline void StoreLow(uint8_t* p, __m128i v) {
    if constexpr (kBytes == 8) {
        Store64(p, v);
    } else {
        static_assert(kBytes == 2 || kBytes == 4);
        const uint32_t bits = static_cast<uint32_t>(_mm_cvtsi128_si32(v));
        std::memcpy(p, &bits, kBytes);
    }
}

// Byte orders of the packed layouts. Interleave turns eight luma words and
// eight chroma words into 16 bytes of four pixel pairs.
struct UyvyOrder {  // Cb, Y0, Cr, Y1
    static __m128i Interleave(__m128i y, __m128i c) { return _mm_or_si128(_mm_slli_epi16(y, 8), c); }
};
struct YuyvOrder {  // Y0, Cb, Y1, Cr
    static __m128i Interleave(__m128i y, __m128i c) { return _mm_or_si128(y, _mm_slli_epi16(c, 8)); }
};
struct UvyyOrder {  // Cb, Cr, Y0, Y1
    static __m128i Interleave(__m128i y, __m128i c) {
        return _mm_packus_epi16(_mm_unpacklo_epi32(c, y), _mm_unpackhi_epi32(c, y));
    }
};

// Byte-wise clamp vectors of a layout: the layout's own interleave of
// (lumaMin, 0) and (lumaMax, 255), so luma bytes get the luma limits and
// chroma bytes 0..255.
struct ByteClamp {
    __m128i low, high;
    __m128i Apply(__m128i v) const { return _mm_min_epu8(_mm_max_epu8(v, low), high); }
};

template <class Order>
inline ByteClamp MakeByteClamp(const Encoder& k) {
    return {Order::Interleave(k.luma_min, _mm_setzero_si128()), Order::Interleave(k.luma_max, k.chroma_ceiling)};
}

// A packed 4:2:2 destination: four bytes a pair, one plane.
template <class Order>
struct PackedLayout {
    struct Cursor {
        uint8_t* dst;
        uint8_t* FirstByte() const { return dst; }
        void Skip(int32_t bytes) { dst = Advance(dst, bytes); }
    };
    static constexpr int kPairBytes = 4;
    // 16-byte stores need a 16-byte aligned destination after the head.
    static constexpr bool kAlignedBody = true;

    explicit PackedLayout(const Encoder& k) : clamp(MakeByteClamp<Order>(k)) {}
    Cursor At(uint8_t* line, const Request&) const { return {line}; }
    __m128i Pack(const Encoded& e) const { return clamp.Apply(Order::Interleave(e.y, e.c)); }

    template <class Store>
    void Block(Cursor& c, const Encoded& e, const Store& store) const {
        store.Store(c.dst, Pack(e));
        c.dst += 16;
    }
    template <int kPairs>
    void Pairs(Cursor& c, const Encoded& e) const {
        StoreLow<4 * kPairs>(c.dst, Pack(e));
        c.dst += 4 * kPairs;
    }

    ByteClamp clamp;
};

// Planar Y8PUV8I: a luma plane and, dst_stride * dst_height bytes later, a
// plane of (Cb, Cr) pairs with the same pitch and skip. Lines are written
// with 8-byte stores, which need no alignment.
//
// The luma clamp takes the four-byte pattern of the UVYY layout, so with
// clamp_luma set only pixels whose index in the line is 2 or 3 modulo 4 are
// limited to 16..235; the others keep 0..255. Hosts rely on this exact
// output. The pattern follows the pixel's position in the line, whichever
// path (single pair or block) converts it, so the cursor counts the pairs
// of its line. A single pair writes its two luma and two chroma bytes at
// its own position in the lines, the values a block gives those pixels.
struct PlanarLayout {
    struct Cursor {
        uint8_t* luma;
        uint8_t* chroma;
        int32_t pairs;  // output pairs written to this line so far
        uint8_t* FirstByte() const { return luma; }
        void Skip(int32_t bytes) {
            luma = Advance(luma, bytes);
            chroma = Advance(chroma, bytes);
            pairs = 0;
        }
    };
    static constexpr int kPairBytes = 2;
    static constexpr bool kAlignedBody = false;

    explicit PlanarLayout(const Encoder& k) {
        clamp[0] = MakeByteClamp<UvyyOrder>(k);
        // The same pattern two pixels on: for lines whose blocks start at a
        // pixel index of 2 modulo 4.
        clamp[1].low = SwapWordPairs(clamp[0].low);
        clamp[1].high = SwapWordPairs(clamp[0].high);
    }
    static __m128i SwapWordPairs(__m128i v) {
        return _mm_shufflehi_epi16(_mm_shufflelo_epi16(v, _MM_SHUFFLE(2, 3, 0, 1)), _MM_SHUFFLE(2, 3, 0, 1));
    }
    Cursor At(uint8_t* line, const Request& r) const {
        return {line, Advance(line, static_cast<int32_t>(static_cast<int64_t>(r.dst_stride) * r.dst_height)), 0};
    }
    __m128i Luma(const Cursor& c, const Encoded& e) const {
        return clamp[c.pairs & 1].Apply(_mm_packus_epi16(e.y, e.y));
    }
    static __m128i Chroma(const Encoded& e) { return _mm_packus_epi16(e.c, e.c); }

    template <class Store>
    void Block(Cursor& c, const Encoded& e, const Store&) const {
        Store64(c.luma, Luma(c, e));
        Store64(c.chroma, Chroma(e));
        c.luma += 8;
        c.chroma += 8;
        c.pairs += 4;
    }
    template <int kPairs>
    void Pairs(Cursor& c, const Encoded& e) const {
        StoreLow<2 * kPairs>(c.luma, Luma(c, e));
        StoreLow<2 * kPairs>(c.chroma, Chroma(e));
        c.luma += 2 * kPairs;
        c.chroma += 2 * kPairs;
        c.pairs += kPairs;
    }

    ByteClamp clamp[2];
};

// ---- Alpha plane ----------------------------------------------------------------------------------

// The fourth byte of eight BGRA pixels, in pixel order in the low 8 bytes.
inline __m128i AlphaBytes(__m128i px0123, __m128i px4567) {
    const __m128i words = _mm_packs_epi32(_mm_srli_epi32(px0123, 24), _mm_srli_epi32(px4567, 24));
    return _mm_packus_epi16(words, words);
}

// ---- Stores of the 16-byte packed blocks ----------------------------------------------------

// Frame kernels: the variant's store.
template <class A>
struct VariantStore {
    static void Store(void* p, __m128i v) { A::Store(p, v); }
};

// Pair-mode kernels serve every variant and ask the request at each store.
struct RequestedStore {
    bool streaming;
    void Store(void* p, __m128i v) const {
        if (streaming)
            _mm_stream_si128(static_cast<__m128i*>(p), v);
        else
            _mm_store_si128(static_cast<__m128i*>(p), v);
    }
};

// Lines that the alignment test could not vouch for: the host may set a
// skip that takes a later line off a 16-byte boundary, and a packed
// destination off a 4-byte boundary never reaches one. Their blocks are
// stored unaligned (the same bytes, more slowly) instead of faulting.
struct UnalignedStore {
    static void Store(void* p, __m128i v) { StoreU(p, v); }
};

// ---- One line -----------------------------------------------------------------------------------

// Converts one line: Source fixes how a pair and a block of four pairs are
// read, Layout how they are written; kDouble writes every source pixel
// twice (line doubling); kAlpha also copies each source pixel's fourth byte
// to the alpha line. `width` counts the pixels of the narrower picture, so
// a line has width / 2 pairs whatever the mode.
template <class Source, class Layout, bool kDouble, bool kAlpha>
struct LineWriter {
    // Only BGR32 pixels carry a fourth byte.
    static_assert(!kAlpha || std::is_same_v<Source, Bgr32Pixels>);

    const Encoder& k;
    const Layout& layout;
    const uint8_t* src;
    typename Layout::Cursor dst;
    uint8_t* alpha;

    template <class Store>
    void Block(const Store& store) {
        const Encoded e = Encode(k, Source::Block(src));
        if constexpr (kDouble) {
            Encoded low, high;
            Double(e, low, high);
            layout.Block(dst, low, store);
            layout.Block(dst, high, store);
        } else {
            layout.Block(dst, e, store);
        }
        if constexpr (kAlpha) {
            Store64(alpha, AlphaBytes(LoadU(src), LoadU(src + 16)));
            alpha += 8;
        }
        src += Source::kBlockBytes;
    }

    void Pair() {
        const Encoded e = Encode(k, Source::Pair(src));
        if constexpr (kDouble) {
            Encoded low, high;
            Double(e, low, high);
            layout.template Pairs<2>(dst, low);
        } else {
            layout.template Pairs<1>(dst, e);
        }
        if constexpr (kAlpha) {
            alpha[0] = src[3];
            alpha[1] = src[7];
            alpha += 2;
        }
        src += Source::kPairBytes;
    }

    // Aligned pictures: whole blocks of 8 pixels; a remainder stays untouched.
    template <class Store>
    void Blocks(int32_t width, const Store& store) {
        BlockRun(width / 8, store);
    }

    // Any alignment: single pairs up to the destination's first 16-byte
    // boundary, blocks, then the remaining whole pairs; a line narrower than
    // 16 pixels goes pair by pair. A last odd pixel is neither converted
    // nor consumed.
    template <class Store>
    void HeadBodyTail(int32_t width, const Store& store) {
        int32_t head = width / 2;
        if (width >= 16) {
            const uint32_t d = AddressResidue16(dst.FirstByte());
            if (!kDouble || !Layout::kAlignedBody)
                head = d == 0 ? 0 : static_cast<int32_t>((16 - d) / 4);
            else  // a doubled packed pair writes 8 bytes
                head = d % 8 == 0 ? static_cast<int32_t>((16 - d) % 16 / 8) : 0;
        }
        const int32_t body = (width - 2 * head) / 8;
        const int32_t tail = (width - 2 * (head + 4 * body)) / 2;
        for (int32_t i = 0; i < head; ++i) Pair();
        BlockRun(body, store);
        for (int32_t i = 0; i < tail; ++i) Pair();
    }

private:
    template <class Store>
    void BlockRun(int32_t blocks, const Store& store) {
        if (Layout::kAlignedBody && !Aligned16(dst.FirstByte())) {
            for (int32_t i = 0; i < blocks; ++i) Block(UnalignedStore{});
        } else {
            for (int32_t i = 0; i < blocks; ++i) Block(store);
        }
    }
};

}  // namespace zenk::rgb_to_yuv
