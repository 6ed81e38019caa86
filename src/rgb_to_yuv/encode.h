// The encoding arithmetic, written once: how pixel pairs are arranged for
// the multiply-adds (per source format), how (Y0, Y1, Cb, Cr) of four pairs
// are computed, and how they are laid out and clamped per destination
// format. The kernels (rgb_to_yuv_kernels.cpp) only add the line walk.
//
// Written on the vector layer: S is Sse2 or a wider layer whose lanes each
// hold what an Sse2 register holds.
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

// The kernel's private constant set, in every lane: the coefficient
// vectors and the fixed vectors of the arithmetic. The coefficient block
// fills the call's vectors (v: luma offset, two luma and four chroma weight
// vectors, of which the point-sampled chroma takes two, and the clamps).
template <class S>
struct Encoder {
    using V = typename S::V;
    V luma_offset, luma_a, luma_b, chroma_a, chroma_b, luma_min, luma_max;
    V round;           // four 32-bit lanes of 16384: half of the last unit
    V chroma_offset;   // eight words of 128
    V chroma_ceiling;  // eight words of 255

    explicit Encoder(const Request& r)
        : round(S::Set32(1 << 14)), chroma_offset(S::Set16(128)), chroma_ceiling(S::Set16(255)) {
        __m128i v[9];
        RgbToYuvCoefficients block{static_cast<uint32_t>(r.dst_matrix), static_cast<uint32_t>(r.dst_range), 8, 1,
                                   r.clamp_luma, r.full_range, &v[0], &v[1], &v[2], &v[3], &v[4], &v[5], &v[6], &v[7],
                                   &v[8]};
        SetupRgbToYuvCoefficients(&block);
        luma_offset = S::Broadcast(v[0]);
        luma_a = S::Broadcast(v[1]);
        luma_b = S::Broadcast(v[2]);
        chroma_a = S::Broadcast(v[3]);
        chroma_b = S::Broadcast(v[4]);
        luma_min = S::Broadcast(v[7]);
        luma_max = S::Broadcast(v[8]);
    }
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

// Block<S>(s) reads four pairs from s (each further lane of a wider layer
// the next kBlockBytes on); Pair<S>(s) one pair.

// Frame modes and line doubling: every BGR32 pixel, a pair per 8 bytes.
struct Bgr32Pixels {
    static constexpr int kPairBytes = 8;
    static constexpr int kBlockBytes = 32;
    template <class S>
    static Quads<S> Block(const uint8_t* s) {
        typename S::V pairs[2];
        S::template LoadBlock<2>(s, pairs);
        return QuadsFromBgr32<S>(pairs[0], pairs[1]);
    }
    template <class S>
    static Quads<S> Pair(const uint8_t* s) { return QuadsFromBgr32<S>(S::Load64(s, 0), S::Zero()); }
};

// Reduction by kFactor: pixels 0 and kFactor of every 2 kFactor form the
// pair; by 2 from one 16-byte load, by 4 from two 8-byte loads 16 bytes
// apart.
template <int kFactor>
struct Bgr32Reduced {
    static constexpr int kPairBytes = 8 * kFactor;
    static constexpr int kBlockBytes = 4 * kPairBytes;
    template <class S>
    static typename S::V PairAt(const uint8_t* s, int32_t step) {
        if constexpr (kFactor == 2)
            return S::template Shuffle32<Pick(0, 2, 1, 3)>(S::LoadU(s, step));
        else
            return S::Lo32(S::Load64(s, step), S::Load64(s + 16, step));
    }
    template <class S>
    static Quads<S> Block(const uint8_t* s) {
        const auto at = [s](int i) { return PairAt<S>(s + i * kPairBytes, kBlockBytes); };
        return QuadsFromBgr32<S>(S::Lo64(at(0), at(1)), S::Lo64(at(2), at(3)));
    }
    template <class S>
    static Quads<S> Pair(const uint8_t* s) { return QuadsFromBgr32<S>(PairAt<S>(s, 0), S::Zero()); }
};

// BGR24: overlapping 8-byte loads put each pair at the bottom of a 64-bit
// lane, (B0, G0, R0, B1, G1, R1, ...); its first quad is the lane's low
// dword, its second the low dword after a 16-bit shift. No load reaches
// past the group's 24 bytes.
struct Bgr24Pixels {
    static constexpr int kPairBytes = 6;
    static constexpr int kBlockBytes = 24;
    template <class S>
    static Quads<S> Block(const uint8_t* s) {
        constexpr int32_t step = kBlockBytes;
        const auto pairs01 = S::Lo64(S::Load64(s, step), S::Load64(s + 6, step));
        const auto pairs23 = S::Lo64(S::Load64(s + 12, step), S::template Shr64<16>(S::Load64(s + 16, step)));
        return {EvenDwords<S>(pairs01, pairs23),
                EvenDwords<S>(S::template Shr64<16>(pairs01), S::template Shr64<16>(pairs23))};
    }
    // A single pair (in every BGR24 kernel, packed or planar) takes its
    // second quad from the pair's bytes 8..11, not 2..5: R0 comes from the
    // next pair's even pixel and G1, R1 from its odd pixel, and the read
    // reaches 6 bytes past the pair. Hosts depend on the exact output of the
    // head and tail pairs, so this is kept; a uniform line encodes the same
    // either way.
    template <class S>
    static Quads<S> Pair(const uint8_t* s) {
        return {S::Load32(s, 0), S::Load32(s + 8, 0)};
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

template <class S, class K>
ZENK_ARITHMETIC typename S::V Weigh(const K& k, typename S::V first, typename S::V second, typename S::V weights_a,
                                    typename S::V weights_b) {
    const auto sum = S::Add32(S::MulAdd16(first, weights_a), S::MulAdd16(second, weights_b));
    return S::template Sar32<15>(S::Add32(sum, k.round));
}

template <class S, class K>
ZENK_ARITHMETIC Encoded<S> Encode(const K& k, const Quads<S>& q) {
    const auto zero = S::Zero();
    const auto first01 = S::Lo8(q.first, zero), first23 = S::Hi8(q.first, zero);
    const auto second01 = S::Lo8(q.second, zero), second23 = S::Hi8(q.second, zero);
    auto y = S::PackS32To16(Weigh<S>(k, first01, second01, k.luma_a, k.luma_b),
                            Weigh<S>(k, first23, second23, k.luma_a, k.luma_b));
    // Byte-wise: the weights keep luma within 0..255, so nothing wraps.
    y = S::Add8(y, k.luma_offset);
    auto c = S::PackS32To16(Weigh<S>(k, first01, second01, k.chroma_a, k.chroma_b),
                            Weigh<S>(k, first23, second23, k.chroma_a, k.chroma_b));
    // The weights cannot take chroma below -128, so only the top is limited.
    c = S::Min16(S::Add16(c, k.chroma_offset), k.chroma_ceiling);
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
template <Packed kOrder, class S>
ZENK_ARITHMETIC typename S::V Interleave(typename S::V y, typename S::V c) {
    if constexpr (kOrder == Packed::kUyvy)
        return S::Or(S::template Shl16<8>(y), c);
    else if constexpr (kOrder == Packed::kYuyv)
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

template <Packed kOrder, class S>
inline ByteClamp<S> MakeByteClamp(const Encoder<S>& k) {
    return {Interleave<kOrder, S>(k.luma_min, S::Zero()), Interleave<kOrder, S>(k.luma_max, k.chroma_ceiling)};
}

// A layout's Block<L, Store>(c, e, calls) writes one block of four pairs
// (each further lane of L the block `calls` blocks on: doubling writes two
// per source block) and moves the cursor on by one; Skip moves it on by the
// blocks the other lanes wrote. Pairs<L, n> writes n pairs.

// A packed 4:2:2 destination: four bytes a pair, one plane.
template <class S, Packed kOrder>
struct PackedLayout {
    struct Cursor {
        uint8_t* dst;
        void Skip(int32_t bytes) { dst = Advance(dst, bytes); }
    };
    static constexpr int kPairBytes = 4;
    // 16-byte stores need a 16-byte aligned destination after the head.
    static constexpr bool kAlignedBody = true;

    explicit PackedLayout(const Encoder<S>& k) : clamp(MakeByteClamp<kOrder, S>(k)) {}
    Cursor At(uint8_t* line, const Request&) const { return {line}; }
    template <class L>
    typename S::V Pack(const Encoded<L>& e) const { return clamp.Apply(Interleave<kOrder, L>(e.y, e.c)); }

    template <class L, class Store>
    void Block(Cursor& c, const Encoded<L>& e, int32_t calls) const {
        L::template Put<Store>(c.dst, Pack(e), 16 * calls);
        c.dst += 16;
    }
    static void SkipBlocks(Cursor& c, int32_t blocks) { c.dst += 16 * blocks; }
    template <class L, int kPairs>
    void Pairs(Cursor& c, const Encoded<L>& e) const {
        StoreLow<L, 4 * kPairs>(c.dst, Pack(e));
        c.dst += 4 * kPairs;
    }

    ByteClamp<S> clamp;
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
// of its line (a block is four pairs, so every lane of a wide block has the
// pattern of the first). A single pair writes its two luma and two chroma
// bytes at its own position in the lines, the values a block gives those
// pixels.
template <class S>
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

    explicit PlanarLayout(const Encoder<S>& k) {
        clamp[0] = MakeByteClamp<Packed::kUvyy, S>(k);
        // The same pattern two pixels on: for lines whose blocks start at a
        // pixel index of 2 modulo 4.
        clamp[1].low = SwapWordPairs(clamp[0].low);
        clamp[1].high = SwapWordPairs(clamp[0].high);
    }
    static typename S::V SwapWordPairs(typename S::V v) {
        return S::template ShuffleHi16<Pick(1, 0, 3, 2)>(S::template ShuffleLo16<Pick(1, 0, 3, 2)>(v));
    }
    Cursor At(uint8_t* line, const Request& r) const {
        return {line, Advance(line, static_cast<int32_t>(static_cast<int64_t>(r.dst_stride) * r.dst_height)), 0};
    }
    template <class L>
    typename S::V Luma(const Cursor& c, const Encoded<L>& e) const {
        return clamp[c.pairs & 1].Apply(L::PackS16ToU8(e.y, e.y));
    }
    template <class L>
    static typename S::V Chroma(const Encoded<L>& e) { return L::PackS16ToU8(e.c, e.c); }

    template <class L, class>
    void Block(Cursor& c, const Encoded<L>& e, int32_t calls) const {
        L::Put64(c.dst, Luma(c, e), 8 * calls);
        L::Put64(c.chroma, Chroma(e), 8 * calls);
        c.dst += 8;
        c.chroma += 8;
        c.pairs += 4;
    }
    static void SkipBlocks(Cursor& c, int32_t blocks) {
        c.dst += 8 * blocks;
        c.chroma += 8 * blocks;
        c.pairs += 4 * blocks;
    }
    template <class L, int kPairs>
    void Pairs(Cursor& c, const Encoded<L>& e) const {
        StoreLow<L, 2 * kPairs>(c.dst, Luma(c, e));
        StoreLow<L, 2 * kPairs>(c.chroma, Chroma(e));
        c.dst += 2 * kPairs;
        c.chroma += 2 * kPairs;
        c.pairs += kPairs;
    }

    ByteClamp<S> clamp[2];
};

// ---- One line -----------------------------------------------------------------------------------

// One line of the walk (kernel/line_walk.h) on the vector layer Vec: Source
// fixes how a pair and a block of four pairs are read, Layout how they are
// written; kDouble writes every source pixel twice (line doubling); kAlpha
// also copies each source pixel's fourth byte to the alpha line. A unit is a
// source pair: `width` counts the pixels of the narrower picture, so a line
// has width / 2 pairs whatever the mode. A line narrower than 16 pixels goes
// pair by pair.
template <class Vec, class Source, class Layout, bool kDouble, bool kAlpha>
struct LineWriter : Layout::Cursor {
    // Only BGR32 pixels carry a fourth byte.
    static_assert(!kAlpha || std::is_same_v<Source, Bgr32Pixels>);
    using Vector = Vec;
    static constexpr int32_t kUnitPixels = 2, kBlockUnits = 4, kSinglesBelow = 16, kPrefetchEvery = 0;
    static constexpr MisalignedLine kMisaligned = MisalignedLine::kBlocksUnaligned;
    static constexpr bool kStreamEnds = false;

    // The call's constants: the encoder and the layout built from it.
    struct Constants {
        explicit Constants(const Request& r) : k(r), layout(k) {}
        const Encoder<Vec> k;
        const Layout layout;
    };

    LineWriter(const Constants& c, const Request& r, const uint8_t* src_line, uint8_t* dst_line)
        : Layout::Cursor(c.layout.At(dst_line, r)), k(c.k), layout(c.layout), src(src_line), alpha(r.dst_alpha_plane) {}

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

    template <class Store, class L = Vec>
    ZENK_ARITHMETIC void Block() {
        constexpr int32_t kOthers = L::kActiveLanes - 1;
        const Encoded<L> e = Encode<L>(k, Source::template Block<L>(src));
        if constexpr (kDouble) {
            Encoded<L> low, high;
            Double<L>(e, low, high);
            layout.template Block<L, Store>(*this, low, 2);
            layout.template Block<L, Store>(*this, high, 2);
            Layout::SkipBlocks(*this, 2 * kOthers);
        } else {
            layout.template Block<L, Store>(*this, e, 1);
            Layout::SkipBlocks(*this, kOthers);
        }
        if constexpr (kAlpha) {
            typename L::V px[2];
            L::template LoadBlock<2>(src, px);
            const auto words = AlphaWords<L>(px[0], px[1]);
            L::Put64(alpha, L::PackS16ToU8(words, words), 8);
            alpha += 8 * L::kActiveLanes;
        }
        src += Source::kBlockBytes * L::kActiveLanes;
    }

    void Single() {
        using L = typename Vec::template WithLanes<1>;
        const Encoded<L> e = Encode<L>(k, Source::template Pair<L>(src));
        if constexpr (kDouble) {
            Encoded<L> low, high;
            Double<L>(e, low, high);
            layout.template Pairs<L, 2>(*this, low);
        } else {
            layout.template Pairs<L, 1>(*this, e);
        }
        if constexpr (kAlpha) {
            alpha[0] = src[3];
            alpha[1] = src[7];
            alpha += 2;
        }
        src += Source::kPairBytes;
    }

    const Encoder<Vec>& k;
    const Layout& layout;
    const uint8_t* src;
    uint8_t* alpha;
};

}  // namespace zenk::ZENK_ISA::rgb_to_yuv
