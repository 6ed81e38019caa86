// The encoding arithmetic, written once: how pixel pairs are arranged for
// the multiply-adds (per source format), how (Y0, Y1, Cb, Cr) of four pairs
// are computed, and how they are laid out and clamped per destination
// format. The kernels (rgb_to_yuv_kernels.cpp) only add the line walk.
//
// Written on the vector layer: S is Vec128 or a wider layer whose lanes each
// hold what a Vec128 register holds.
#pragma once

#include <cstring>
#include <type_traits>

#include "coefficients.h"
#include "kernel/line_walk.h"
#include "kernel/pixel_packing.h"

namespace zenk::ZENK_ISA::rgb_to_yuv {

// The coefficient block and its setup are the same at every level.
using namespace ::zenk::rgb_to_yuv;

// ---- Constants of one call -------------------------------------------------------------

// The call's coefficient vectors, in every lane. The coefficient block
// fills them (v: luma offset, two luma and four chroma weight vectors, of
// which the point-sampled chroma takes two, and the clamps).
template <class S>
struct Encoder {
    using V = typename S::V;
    enum Vector { kLumaOffset, kLumaA, kLumaB, kChromaA, kChromaB, kChromaC, kChromaD, kLumaMin, kLumaMax };
    const CallVectors<S, 9> v;

    explicit Encoder(const Request& r)
        : v(SetupRgbToYuvCoefficients, static_cast<uint32_t>(r.dst_matrix), static_cast<uint32_t>(r.dst_range), 8u,
            uint8_t{1}, r.clamp_luma, r.full_range) {}
};

// ---- Pixel pairs arranged for the multiply-adds -------------------------------------------

// Four pixel pairs as two vectors of byte quads, one 32-bit lane a pair:
// `first` holds (B0, G0, R0, B1), `second` holds (R0, B1, G1, R1). Lanes of
// a single pair beyond the first are don't-cares.
template <class S>
struct Quads {
    typename S::V first;
    typename S::V second;
};

// Two BGRA pixels per 64-bit lane to their quads in the lane's low dword.
// The fourth byte of each pixel is dropped.
template <class S>
ZENK_ARITHMETIC typename S::V FirstQuads(typename S::V px) {
    return S::Or(S::And(px, S::Set64(0x00FFFFFF)),
                 S::And(S::template Shr64<8>(px), S::Set64(0xFF000000)));  // B1
}
template <class S>
ZENK_ARITHMETIC typename S::V SecondQuads(typename S::V px) {
    return S::Or(S::And(S::template Shr64<16>(px), S::Set64(0x000000FF)),   // R0
                 S::And(S::template Shr64<24>(px), S::Set64(0xFFFFFF00)));  // B1, G1, R1
}

// Dwords 0 and 2 of `a`, then dwords 0 and 2 of `b`.
template <class S>
ZENK_ARITHMETIC typename S::V EvenDwords(typename S::V a, typename S::V b) {
    return S::Lo64(S::template Shuffle32<Pick(0, 2, 1, 3)>(a), S::template Shuffle32<Pick(0, 2, 1, 3)>(b));
}

// Four pairs of BGRA pixels, two pairs in each vector.
template <class S>
ZENK_ARITHMETIC Quads<S> QuadsFromBgr32(typename S::V pairs01, typename S::V pairs23) {
    return {EvenDwords<S>(FirstQuads<S>(pairs01), FirstQuads<S>(pairs23)),
            EvenDwords<S>(SecondQuads<S>(pairs01), SecondQuads<S>(pairs23))};
}

// ---- Sources: where the pixels of a pair come from ------------------------------------------

// A source's Block(at) reads four pairs of the source stream's block (each
// further lane of a wider layer the next block on), Pair(at) one pair.

// Frame modes and line doubling: every BGR32 pixel, a pair per 8 bytes.
struct Bgr32Pixels {
    static constexpr int kPairBytes = 8;
    template <class At>
    static Quads<typename At::L> Block(const At& at) {
        typename At::V pairs[2];
        LoadBlock<Plane::kSource, 2>(at, pairs);
        return QuadsFromBgr32<typename At::L>(pairs[0], pairs[1]);
    }
    template <class At>
    static Quads<typename At::L> Pair(const At& at) {
        return QuadsFromBgr32<typename At::L>(Load<Plane::kSource, 8>(at), At::L::Zero());
    }
};

// Reduction by kFactor: pixels 0 and kFactor of every 2 kFactor form the
// pair; by 2 from one 16-byte load, by 4 from two 8-byte loads 16 bytes
// apart.
template <int kFactor>
struct Bgr32Reduced {
    static constexpr int kPairBytes = 8 * kFactor;
    template <class At>
    static typename At::V PairAt(const At& at, int32_t offset) {
        using L = typename At::L;
        if constexpr (kFactor == 2)
            return L::template Shuffle32<Pick(0, 2, 1, 3)>(Load<Plane::kSource>(at, offset));
        else
            return L::Lo32(Load<Plane::kSource, 8>(at, offset), Load<Plane::kSource, 8>(at, offset + 16));
    }
    template <class At>
    static Quads<typename At::L> Block(const At& at) {
        const auto at_pair = [&](int i) { return PairAt(at, i * kPairBytes); };
        using L = typename At::L;
        return QuadsFromBgr32<L>(L::Lo64(at_pair(0), at_pair(1)), L::Lo64(at_pair(2), at_pair(3)));
    }
    template <class At>
    static Quads<typename At::L> Pair(const At& at) {
        return QuadsFromBgr32<typename At::L>(PairAt(at, 0), At::L::Zero());
    }
};

// BGR24: overlapping 8-byte loads put each pair at the bottom of a 64-bit
// lane, (B0, G0, R0, B1, G1, R1, ...); its first quad is the lane's low
// dword, its second the low dword after a 16-bit shift. No load reaches
// past the group's 24 bytes.
struct Bgr24Pixels {
    static constexpr int kPairBytes = 6;
    template <class At>
    static Quads<typename At::L> Block(const At& at) {
        using L = typename At::L;
        const auto pairs01 = L::Lo64(Load<Plane::kSource, 8>(at, 0), Load<Plane::kSource, 8>(at, 6));
        const auto pairs23 =
            L::Lo64(Load<Plane::kSource, 8>(at, 12), L::template Shr64<16>(Load<Plane::kSource, 8>(at, 16)));
        return {EvenDwords<L>(pairs01, pairs23),
                EvenDwords<L>(L::template Shr64<16>(pairs01), L::template Shr64<16>(pairs23))};
    }
    // A single pair (in every BGR24 kernel, packed or planar) takes its
    // second quad from the pair's bytes 8..11, not 2..5: R0 comes from the
    // next pair's even pixel and G1, R1 from its odd pixel, and the read
    // reaches 6 bytes past the pair. Hosts depend on the exact output of the
    // head and tail pairs, so this is kept; a uniform line encodes the same
    // either way.
    template <class At>
    static Quads<typename At::L> Pair(const At& at) {
        return {Load<Plane::kSource, 4>(at, 0), Load<Plane::kSource, 4>(at, 8)};
    }
};

// ---- The arithmetic -------------------------------------------------------------------------

// Eight words each: y = Y0..Y7 with the luma offset added, c = Cb0, Cr0,
// Cb1, Cr1, ... with 128 added and at most 255. Cb is the even pixel's and
// Cr the odd pixel's: chroma is point-sampled, not averaged.
template <class S>
struct Encoded {
    typename S::V y;
    typename S::V c;
};

template <class S>
ZENK_ARITHMETIC typename S::V Weigh(typename S::V first, typename S::V second, typename S::V weights_a,
                                    typename S::V weights_b) {
    const auto sum = S::Add32(S::MulAdd16(first, weights_a), S::MulAdd16(second, weights_b));
    return S::template Sar32<15>(S::Add32(sum, S::Set32(1 << 14)));  // half of the last unit
}

template <class S, class K>
ZENK_ARITHMETIC Encoded<S> Encode(const K& k, const Quads<S>& q) {
    const auto zero = S::Zero();
    const auto first01 = S::Lo8(q.first, zero), first23 = S::Hi8(q.first, zero);
    const auto second01 = S::Lo8(q.second, zero), second23 = S::Hi8(q.second, zero);
    auto y = S::PackS32To16(Weigh<S>(first01, second01, k.v[K::kLumaA], k.v[K::kLumaB]),
                            Weigh<S>(first23, second23, k.v[K::kLumaA], k.v[K::kLumaB]));
    // Byte-wise: the weights keep luma within 0..255, so nothing wraps.
    y = S::Add8(y, k.v[K::kLumaOffset]);
    auto c = S::PackS32To16(Weigh<S>(first01, second01, k.v[K::kChromaA], k.v[K::kChromaB]),
                            Weigh<S>(first23, second23, k.v[K::kChromaA], k.v[K::kChromaB]));
    // The weights cannot take chroma below -128, so only the top is limited.
    c = S::Min16(S::Add16(c, S::Set16(128)), S::Set16(255));
    return {y, c};
}

// Line doubling: each pixel repeated, the pair's chroma with both copies.
// Four source pairs become eight output pairs, returned as two sets of four.
template <class S>
inline void Double(const Encoded<S>& e, Encoded<S>& low, Encoded<S>& high) {
    low = {S::Lo16(e.y, e.y), S::Lo32(e.c, e.c)};
    high = {S::Hi16(e.y, e.y), S::Hi32(e.c, e.c)};
}

// ---- Destinations -----------------------------------------------------------------------------

// Interleave turns eight luma words and eight chroma words into 16 bytes of
// four pixel pairs in a packed byte order. The UYVY and YUYV orders OR the
// words together, which the encoder's words, all within 0..255, allow.
template <YuvLayout kOrder, class S>
ZENK_ARITHMETIC typename S::V Interleave(typename S::V y, typename S::V c) {
    if constexpr (kOrder == YuvLayout::kUyvy)
        return S::Or(S::template Shl16<8>(y), c);
    else if constexpr (kOrder == YuvLayout::kYuyv)
        return S::Or(y, S::template Shl16<8>(c));
    else
        return S::PackS16ToU8(S::Lo32(c, y), S::Hi32(c, y));
}

// Byte-wise clamp vectors of a layout: the layout's own interleave of
// (lumaMin, 0) and (lumaMax, 255), so luma bytes get the luma limits and
// chroma bytes 0..255.
template <class S>
struct ByteClamp {
    typename S::V low, high;
    typename S::V Apply(typename S::V v) const { return S::MinU8(S::MaxU8(v, low), high); }
};

template <YuvLayout kOrder, class S>
inline ByteClamp<S> MakeByteClamp(const Encoder<S>& k) {
    using K = Encoder<S>;
    return {Interleave<kOrder, S>(k.v[K::kLumaMin], S::Zero()), Interleave<kOrder, S>(k.v[K::kLumaMax], S::Set16(255))};
}

// A layout's Write<n>(at, e, pair, offset) writes n pixel pairs (four of a
// block, one or two of a unit; a doubled block writes two fours, the second
// 4 pairs on) `offset` pairs into the block or unit; `pair` is the index in
// its line of the first pair written.

// A packed 4:2:2 destination: four bytes a pair, one plane.
template <class S, YuvLayout kOrder>
struct PackedLayout {
    static constexpr int kPairBytes = 4;
    static constexpr bool kPlanar = false;

    explicit PackedLayout(const Encoder<S>& k) : clamp(MakeByteClamp<kOrder, S>(k)) {}
    template <class L>
    typename S::V Pack(const Encoded<L>& e) const { return clamp.Apply(Interleave<kOrder, L>(e.y, e.c)); }

    template <int kPairs, class At>
    void Write(const At& at, const Encoded<typename At::L>& e, int32_t, int32_t offset) const {
        Put<Plane::kDestination, kPairBytes * kPairs>(at, kPairBytes * offset, Pack(e));
    }

    ByteClamp<S> clamp;
};

// Planar Y8PUV8I: a luma plane and its chroma plane, two bytes a pair each.
// Lines are written with 8-byte stores, which need no alignment.
//
// The luma clamp takes the four-byte pattern of the UVYY layout, so with
// clamp_luma set only pixels whose index in the line is 2 or 3 modulo 4 are
// limited to 16..235; the others keep 0..255. Hosts rely on this exact
// output. The pattern follows the pixel's position in the line, whichever
// path (single pair or block) converts it (a block is four pairs, so every
// lane of a wide block has the pattern of the first). A single pair writes
// its two luma and two chroma bytes at its own position in the lines, the
// values a block gives those pixels.
template <class S>
struct PlanarLayout {
    static constexpr int kPairBytes = 2;
    static constexpr bool kPlanar = true;

    explicit PlanarLayout(const Encoder<S>& k) {
        clamp[0] = MakeByteClamp<YuvLayout::kUvyy, S>(k);
        // The same pattern two pixels on: for blocks that start at a pixel
        // index of 2 modulo 4.
        clamp[1].low = SwapWordPairs(clamp[0].low);
        clamp[1].high = SwapWordPairs(clamp[0].high);
    }
    static typename S::V SwapWordPairs(typename S::V v) {
        return S::template ShuffleHi16<Pick(1, 0, 3, 2)>(S::template ShuffleLo16<Pick(1, 0, 3, 2)>(v));
    }
    template <class L>
    typename S::V Luma(int32_t pair, const Encoded<L>& e) const {
        return clamp[pair & 1].Apply(L::PackS16ToU8(e.y, e.y));
    }
    template <class L>
    static typename S::V Chroma(const Encoded<L>& e) { return L::PackS16ToU8(e.c, e.c); }

    template <int kPairs, class At>
    void Write(const At& at, const Encoded<typename At::L>& e, int32_t pair, int32_t offset) const {
        Put<Plane::kDestination, kPairBytes * kPairs>(at, kPairBytes * offset, Luma(pair, e));
        Put<Plane::kDestinationChroma, kPairBytes * kPairs>(at, kPairBytes * offset, Chroma(e));
    }

    ByteClamp<S> clamp[2];
};

// ---- One line -----------------------------------------------------------------------------------

// The line format of the walk (kernel/line_walk.h) on the vector layer Vec:
// Source fixes how a pair and a block of four pairs are read, Layout how
// they are written; kDouble writes every source pixel twice (line
// doubling); kAlpha also copies each source pixel's fourth byte to the alpha
// line. A unit is a source pair: `width` counts the pixels of the narrower
// picture, so a line has width / 2 pairs whatever the mode. A line narrower
// than 16 pixels goes pair by pair.
template <class Vec, class Source, class Layout, bool kDouble, bool kAlpha>
struct Encoding {
    // Only BGR32 pixels carry a fourth byte.
    static_assert(!kAlpha || std::is_same_v<Source, Bgr32Pixels>);
    using Vector = Vec;
    using enum Plane;
    static constexpr int32_t kTwice = kDouble ? 2 : 1;  // output pairs a source pair
    static constexpr int32_t kOutPair = Layout::kPairBytes * kTwice;
    using Planes = Streams<Stream<kSource, Source::kPairBytes, 4 * Source::kPairBytes>,
                           Stream<kDestination, kOutPair, 4 * kOutPair>,
                           Stream<kDestinationChroma, kOutPair, 4 * kOutPair, Layout::kPlanar>,
                           Stream<kDestinationAlpha, 2, 8, kAlpha>>;
    static constexpr LineRule kRule{.unit_pixels = 2, .block_units = 4, .singles_below = 16};

    explicit Encoding(const Request& r) : k(r), layout(k) {}

    // A doubled packed pair writes 8 bytes: only a line start on an 8-byte
    // boundary is brought to a 16-byte one. Other heads count 4-byte pairs
    // (the planar luma line's too).
    static int32_t HeadUnits(const uint8_t* dst) {
        if constexpr (kDouble && !Layout::kPlanar) {
            const uint32_t d = AddressResidue16(dst);
            return d % 8 == 0 ? static_cast<int32_t>((16 - d) % 16 / 8) : 0;
        } else {
            return UnitsToBoundary(dst, 4);
        }
    }

    // The kPairs source pairs of a block (4) or a unit (1), encoded and
    // written, each twice where doubling.
    template <int kPairs, class At>
    ZENK_ARITHMETIC void Write(const At& at, const Quads<typename At::L>& q) const {
        using L = typename At::L;
        const Encoded<L> e = Encode<L>(k, q);
        const int32_t pair = kTwice * at.unit;
        if constexpr (kDouble) {
            Encoded<L> low, high;
            Double<L>(e, low, high);
            layout.template Write<kPairs == 4 ? 4 : 2>(at, low, pair, 0);
            if constexpr (kPairs == 4) layout.template Write<4>(at, high, pair + 4, 4);
        } else {
            layout.template Write<kPairs>(at, e, pair, 0);
        }
    }

    template <class At>
    ZENK_ARITHMETIC void Block(const At& at) const {
        using L = typename At::L;
        Write<4>(at, Source::Block(at));
        if constexpr (kAlpha) {
            typename L::V px[2];
            LoadBlock<kSource, 2>(at, px);
            const auto words = AlphaWords<L>(px[0], px[1]);
            Put<kDestinationAlpha, 8>(at, 0, L::PackS16ToU8(words, words));
        }
    }

    template <class At>
    void Single(const At& at) const {
        Write<1>(at, Source::Pair(at));
        if constexpr (kAlpha) {
            const uint8_t* const src = Ptr<kSource>(at);
            uint8_t* const alpha = Ptr<kDestinationAlpha>(at);
            alpha[0] = src[3];
            alpha[1] = src[7];
        }
    }

    const Encoder<Vec> k;
    const Layout layout;
};

}  // namespace zenk::ZENK_ISA::rgb_to_yuv
