// The encoding arithmetic, written once: how pixel pairs are arranged for
// the multiply-adds (per source format), how (Y0, Y1, Cb, Cr) of four pairs
// are computed, and how they are laid out and clamped per destination
// format. The kernels (rgb_to_yuv_kernels.cpp) only add the line walk.
//
// Written on the vector layer's operations; S names the layer this family
// is built for.
#pragma once

#include <cstring>
#include <type_traits>

#include "coefficients.h"
#include "kernel/line_walk.h"
#include "kernel/pixel_packing.h"

namespace zenk::ZENK_ISA::rgb_to_yuv {

// The coefficient block and its setup are the same at every level.
using namespace ::zenk::rgb_to_yuv;

using S = Sse2;
using V = S::V;

// ---- Constants of one call -------------------------------------------------------------

// The kernel's private constant set: the coefficient block's vectors, filled
// once per call by SetupRgbToYuvCoefficients, and the fixed vectors of the
// arithmetic.
struct Encoder {
    V luma_offset, luma_a, luma_b, chroma_a, chroma_b, chroma_c, chroma_d, luma_min, luma_max;
    V round;           // four 32-bit lanes of 16384: half of the last unit
    V chroma_offset;   // eight words of 128
    V chroma_ceiling;  // eight words of 255

    explicit Encoder(const Request& r)
        : round(S::Set32(1 << 14)), chroma_offset(S::Set16(128)), chroma_ceiling(S::Set16(255)) {
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
    V first;
    V second;
};

inline V Mask64(uint64_t lane) { return S::Set64(lane); }

// Two BGRA pixels per 64-bit lane to their quads in the lane's low dword.
// The fourth byte of each pixel is dropped.
ZENK_ARITHMETIC V FirstQuads(V px) {
    return S::Or(S::And(px, Mask64(0x00FFFFFF)),
                        S::And(S::Shr64<8>(px), Mask64(0xFF000000)));  // B1
}
ZENK_ARITHMETIC V SecondQuads(V px) {
    return S::Or(S::And(S::Shr64<16>(px), Mask64(0x000000FF)),   // R0
                        S::And(S::Shr64<24>(px), Mask64(0xFFFFFF00)));  // B1, G1, R1
}

// Dwords 0 and 2 of `a`, then dwords 0 and 2 of `b`.
ZENK_ARITHMETIC V EvenDwords(V a, V b) {
    return S::Lo64(S::Shuffle32<Pick(0, 2, 1, 3)>(a),
                              S::Shuffle32<Pick(0, 2, 1, 3)>(b));
}

// Four pairs of BGRA pixels, two pairs in each vector.
ZENK_ARITHMETIC Quads QuadsFromBgr32(V pairs01, V pairs23) {
    return {EvenDwords(FirstQuads(pairs01), FirstQuads(pairs23)),
            EvenDwords(SecondQuads(pairs01), SecondQuads(pairs23))};
}

// ---- Sources: where the pixels of a pair come from ------------------------------------------

// Frame modes and line doubling: every BGR32 pixel, a pair per 8 bytes.
struct Bgr32Pixels {
    static constexpr int kPairBytes = 8;
    static constexpr int kBlockBytes = 32;
    static Quads Block(const uint8_t* s) { return QuadsFromBgr32(S::LoadU(s), S::LoadU(s + 16)); }
    static Quads Pair(const uint8_t* s) { return QuadsFromBgr32(S::Load64(s), S::Zero()); }
};

// Reduction by 2: pixels 0 and 2 of every four form the pair.
struct Bgr32EverySecond {
    static constexpr int kPairBytes = 16;
    static constexpr int kBlockBytes = 64;
    static V Pixels02(const uint8_t* s) { return S::Shuffle32<Pick(0, 2, 1, 3)>(S::LoadU(s)); }
    static Quads Block(const uint8_t* s) {
        return QuadsFromBgr32(S::Lo64(Pixels02(s), Pixels02(s + 16)),
                              S::Lo64(Pixels02(s + 32), Pixels02(s + 48)));
    }
    static Quads Pair(const uint8_t* s) { return QuadsFromBgr32(Pixels02(s), S::Zero()); }
};

// Reduction by 4: pixels 0 and 4 of every eight, from two 8-byte loads 16
// bytes apart.
struct Bgr32EveryFourth {
    static constexpr int kPairBytes = 32;
    static constexpr int kBlockBytes = 128;
    static V Pixels04(const uint8_t* s) { return S::Lo32(S::Load64(s), S::Load64(s + 16)); }
    static Quads Block(const uint8_t* s) {
        return QuadsFromBgr32(S::Lo64(Pixels04(s), Pixels04(s + 32)),
                              S::Lo64(Pixels04(s + 64), Pixels04(s + 96)));
    }
    static Quads Pair(const uint8_t* s) { return QuadsFromBgr32(Pixels04(s), S::Zero()); }
};

// BGR24: overlapping 8-byte loads put each pair at the bottom of a 64-bit
// lane, (B0, G0, R0, B1, G1, R1, ...); its first quad is the lane's low
// dword, its second the low dword after a 16-bit shift. No load reaches
// past the group's 24 bytes.
struct Bgr24Pixels {
    static constexpr int kPairBytes = 6;
    static constexpr int kBlockBytes = 24;
    static Quads Block(const uint8_t* s) {
        const V pairs01 = S::Lo64(S::Load64(s), S::Load64(s + 6));
        const V pairs23 = S::Lo64(S::Load64(s + 12), S::Shr64<16>(S::Load64(s + 16)));
        return {EvenDwords(pairs01, pairs23),
                EvenDwords(S::Shr64<16>(pairs01), S::Shr64<16>(pairs23))};
    }
    // A single pair (in every BGR24 kernel, packed or planar) takes its
    // second quad from the pair's bytes 8..11, not 2..5: R0 comes from the next pair's even pixel and G1, R1 from its odd
    // pixel, and the read reaches 6 bytes past the pair. Hosts depend on the
    // exact output of the head and tail pairs, so this is kept; a uniform
    // line encodes the same either way.
    static Quads Pair(const uint8_t* s) {
        return {S::Load32(s), S::Load32(s + 8)};
    }
};

// ---- The arithmetic -------------------------------------------------------------------------

// Eight words each: y = Y0..Y7 with the luma offset added, c = Cb0, Cr0,
// Cb1, Cr1, ... with 128 added and at most 255. Cb is the even pixel's and
// Cr the odd pixel's: chroma is point-sampled, not averaged.
struct Encoded {
    V y;
    V c;
};

ZENK_ARITHMETIC V Weigh(const Encoder& k, V first, V second, V weights_a, V weights_b) {
    const V sum = S::Add32(S::MulAdd16(first, weights_a), S::MulAdd16(second, weights_b));
    return S::Sar32<15>(S::Add32(sum, k.round));
}

ZENK_ARITHMETIC Encoded Encode(const Encoder& k, const Quads& q) {
    const V zero = S::Zero();
    const V first01 = S::Lo8(q.first, zero), first23 = S::Hi8(q.first, zero);
    const V second01 = S::Lo8(q.second, zero), second23 = S::Hi8(q.second, zero);
    V y = S::PackS32To16(Weigh(k, first01, second01, k.luma_a, k.luma_b),
                                Weigh(k, first23, second23, k.luma_a, k.luma_b));
    // Byte-wise: the weights keep luma within 0..255, so nothing wraps.
    y = S::Add8(y, k.luma_offset);
    V c = S::PackS32To16(Weigh(k, first01, second01, k.chroma_a, k.chroma_b),
                                Weigh(k, first23, second23, k.chroma_a, k.chroma_b));
    // The weights cannot take chroma below -128, so only the top is limited.
    c = S::Min16(S::Add16(c, k.chroma_offset), k.chroma_ceiling);
    return {y, c};
}

// Line doubling: each pixel repeated, the pair's chroma with both copies.
// Four source pairs become eight output pairs, returned as two sets of four.
inline void Double(const Encoded& e, Encoded& low, Encoded& high) {
    low = {S::Lo16(e.y, e.y), S::Lo32(e.c, e.c)};
    high = {S::Hi16(e.y, e.y), S::Hi32(e.c, e.c)};
}

// ---- Destinations -----------------------------------------------------------------------------

template <int kBytes>
inline void StoreLow(uint8_t* p, V v) {
    if constexpr (kBytes == 8) {
        S::Store64(p, v);
    } else {
        static_assert(kBytes == 2 || kBytes == 4);
        const uint32_t bits = static_cast<uint32_t>(S::Low32(v));
        std::memcpy(p, &bits, kBytes);
    }
}

// Byte orders of the packed layouts. Interleave turns eight luma words and
// eight chroma words into 16 bytes of four pixel pairs.
struct UyvyOrder {  // Cb, Y0, Cr, Y1
    static V Interleave(V y, V c) { return S::Or(S::Shl16<8>(y), c); }
};
struct YuyvOrder {  // Y0, Cb, Y1, Cr
    static V Interleave(V y, V c) { return S::Or(y, S::Shl16<8>(c)); }
};
struct UvyyOrder {  // Cb, Cr, Y0, Y1
    static V Interleave(V y, V c) {
        return S::PackS16ToU8(S::Lo32(c, y), S::Hi32(c, y));
    }
};

// Byte-wise clamp vectors of a layout: the layout's own interleave of
// (lumaMin, 0) and (lumaMax, 255), so luma bytes get the luma limits and
// chroma bytes 0..255.
struct ByteClamp {
    V low, high;
    V Apply(V v) const { return S::MinU8(S::MaxU8(v, low), high); }
};

template <class Order>
inline ByteClamp MakeByteClamp(const Encoder& k) {
    return {Order::Interleave(k.luma_min, S::Zero()), Order::Interleave(k.luma_max, k.chroma_ceiling)};
}

// A packed 4:2:2 destination: four bytes a pair, one plane.
template <class Order>
struct PackedLayout {
    struct Cursor {
        uint8_t* dst;
        void Skip(int32_t bytes) { dst = Advance(dst, bytes); }
    };
    static constexpr int kPairBytes = 4;
    // 16-byte stores need a 16-byte aligned destination after the head.
    static constexpr bool kAlignedBody = true;

    explicit PackedLayout(const Encoder& k) : clamp(MakeByteClamp<Order>(k)) {}
    Cursor At(uint8_t* line, const Request&) const { return {line}; }
    V Pack(const Encoded& e) const { return clamp.Apply(Order::Interleave(e.y, e.c)); }

    template <class Store>
    void Block(Cursor& c, const Encoded& e) const {
        Store::Store(c.dst, Pack(e));
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
        uint8_t* dst;  // the luma line
        uint8_t* chroma;
        int32_t pairs;  // output pairs written to this line so far
        void Skip(int32_t bytes) {
            dst = Advance(dst, bytes);
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
    static V SwapWordPairs(V v) {
        return S::ShuffleHi16<Pick(1, 0, 3, 2)>(S::ShuffleLo16<Pick(1, 0, 3, 2)>(v));
    }
    Cursor At(uint8_t* line, const Request& r) const {
        return {line, Advance(line, static_cast<int32_t>(static_cast<int64_t>(r.dst_stride) * r.dst_height)), 0};
    }
    V Luma(const Cursor& c, const Encoded& e) const {
        return clamp[c.pairs & 1].Apply(S::PackS16ToU8(e.y, e.y));
    }
    static V Chroma(const Encoded& e) { return S::PackS16ToU8(e.c, e.c); }

    template <class>
    void Block(Cursor& c, const Encoded& e) const {
        S::Store64(c.dst, Luma(c, e));
        S::Store64(c.chroma, Chroma(e));
        c.dst += 8;
        c.chroma += 8;
        c.pairs += 4;
    }
    template <int kPairs>
    void Pairs(Cursor& c, const Encoded& e) const {
        StoreLow<2 * kPairs>(c.dst, Luma(c, e));
        StoreLow<2 * kPairs>(c.chroma, Chroma(e));
        c.dst += 2 * kPairs;
        c.chroma += 2 * kPairs;
        c.pairs += kPairs;
    }

    ByteClamp clamp[2];
};

// ---- One line -----------------------------------------------------------------------------------

// One line of the walk (kernel/line_walk.h): Source fixes how a pair and a
// block of four pairs are read, Layout how they are written; kDouble writes
// every source pixel twice (line doubling); kAlpha also copies each source
// pixel's fourth byte to the alpha line. A unit is a source pair: `width`
// counts the pixels of the narrower picture, so a line has width / 2 pairs
// whatever the mode. A line narrower than 16 pixels goes pair by pair.
template <class Source, class Layout, bool kDouble, bool kAlpha>
struct LineWriter : Layout::Cursor {
    // Only BGR32 pixels carry a fourth byte.
    static_assert(!kAlpha || std::is_same_v<Source, Bgr32Pixels>);
    static constexpr int32_t kUnitPixels = 2, kBlockUnits = 4, kSinglesBelow = 16, kPrefetchEvery = 0;
    static constexpr MisalignedLine kMisaligned = MisalignedLine::kBlocksUnaligned;
    static constexpr bool kStreamEnds = false;

    LineWriter(const Encoder& k, const Layout& layout, const uint8_t* src, typename Layout::Cursor dst, uint8_t* alpha)
        : Layout::Cursor(dst), k(k), layout(layout), src(src), alpha(alpha) {}

    // A doubled packed pair writes 8 bytes: only a line start on an 8-byte
    // boundary is brought to a 16-byte one.
    int32_t HeadUnits() const {
        if constexpr (kDouble && Layout::kAlignedBody) {
            const uint32_t d = AddressResidue16(this->dst);
            return d % 8 == 0 ? static_cast<int32_t>((16 - d) % 16 / 8) : 0;
        } else {
            return UnitsToBoundary(this->dst, 4);
        }
    }
    const void* Ahead() const { return src; }
    void NextLine(const Request& r) {
        src = Advance(src, r.src_skip);
        this->Skip(r.dst_skip);
        if constexpr (kAlpha) alpha = Advance(alpha, r.dst_alpha_skip);
    }

    template <class Store>
    ZENK_ARITHMETIC void Block() {
        const Encoded e = Encode(k, Source::Block(src));
        if constexpr (kDouble) {
            Encoded low, high;
            Double(e, low, high);
            layout.template Block<Store>(*this, low);
            layout.template Block<Store>(*this, high);
        } else {
            layout.template Block<Store>(*this, e);
        }
        if constexpr (kAlpha) {
            const V words = AlphaWords<S>(S::LoadU(src), S::LoadU(src + 16));
            S::Store64(alpha, S::PackS16ToU8(words, words));
            alpha += 8;
        }
        src += Source::kBlockBytes;
    }

    void Single() {
        const Encoded e = Encode(k, Source::Pair(src));
        if constexpr (kDouble) {
            Encoded low, high;
            Double(e, low, high);
            layout.template Pairs<2>(*this, low);
        } else {
            layout.template Pairs<1>(*this, e);
        }
        if constexpr (kAlpha) {
            alpha[0] = src[3];
            alpha[1] = src[7];
            alpha += 2;
        }
        src += Source::kPairBytes;
    }

    const Encoder& k;
    const Layout& layout;
    const uint8_t* src;
    uint8_t* alpha;
};

}  // namespace zenk::ZENK_ISA::rgb_to_yuv
