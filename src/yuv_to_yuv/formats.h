// The formats of the YUV-to-YUV kernels, on the vector layer S: packed
// 4:2:2 copies, byte reorders and the change of colour standard (16-pixel
// groups, 32 bytes in and out), the split of UYVY16I into Y8PUV8I and its
// widening to V8U8Y8A8I. FrameKernel walks them (kernel/line_walk.h); a
// single unit is one 4-byte source pair.
#pragma once

#include "kernel/line_walk.h"
#include "kernel/pixel_packing.h"
#include "matrix_change.h"

namespace zenk::ZENK_ISA::yuv_to_yuv {

// A packed 4:2:2 source and a destination whose head counts units of
// kHeadUnitBytes bytes up to the 16-byte boundary. Units are 4-byte source
// pairs.
template <uint32_t kHeadUnitBytes, int32_t kBlockUnits, bool kStreamEnds = false, bool kCopies = false>
struct PackedSource {
    static constexpr LineRule kRule{.unit_pixels = 2, .block_units = kBlockUnits, .singles_below = 16,
                                    .stream_ends = kStreamEnds, .copies = kCopies};
    static int32_t HeadUnits(const uint8_t* dst) { return UnitsToBoundary(dst, kHeadUnitBytes); }
};

// A packed line to a packed line of the same size: units of one pair,
// blocks of kBlockPairs.
template <int32_t kBlockPairs>
using PackedToPacked = Streams<Stream<Plane::kSource, 4, 4 * kBlockPairs>, Stream<Plane::kDestination, 4, 4 * kBlockPairs>>;

// The byte moves within each 4-byte pair: none (a copy), the two bytes of
// every 16-bit word changing places (UYVY16I <-> YUYV16I), and the two
// middle bytes changing places (UVYY16I <-> UYVY16I, the same move both
// ways).
enum class ByteMove { kCopy, kSwapWordBytes, kExchangeMiddleBytes };

// A format that rearranges bytes, for a block and for a single pair alike.
// Streaming kernels keep their pairs out of the cache too.
template <class S, ByteMove kMove>
struct Reorder : PackedSource<4, 8, true, kMove == ByteMove::kCopy> {
    using Vector = S;
    using Planes = PackedToPacked<8>;
    explicit Reorder(const Request&) {}

    template <class L>
    static typename L::V Move(typename L::V v) {
        if constexpr (kMove == ByteMove::kSwapWordBytes)
            return L::Or(L::template Shl16<8>(v), L::template Shr16<8>(v));
        else if constexpr (kMove == ByteMove::kExchangeMiddleBytes)
            return ExchangeMiddleBytes<L>(v);
        else
            return v;
    }
    // Every 4-byte pair is rearranged on its own, so the lanes take
    // consecutive 16 bytes whatever the block.
    template <class At>
    void Block(const At& at) const {
        for (int m = 0; m < 2; ++m)
            PutInOrder<Plane::kDestination>(at, m, Move<typename At::L>(LoadInOrder<Plane::kSource>(at, m)));
    }
    template <class At>
    void Single(const At& at) const {
        Put<Plane::kDestination, 4>(at, 0, Move<typename At::L>(Load<Plane::kSource, 4>(at)));
    }
};

// ---- Change of standard ---------------------------------------------------------------

template <class S, YuvLayout kIn, YuvLayout kOut, LumaRule kLuma>
struct MatrixChange : PackedSource<4, 8>, MatrixConstants<S> {
    using MatrixConstants<S>::MatrixConstants;
    using Vector = S;
    using Planes = PackedToPacked<8>;
    template <class At>
    void Block(const At& at) const {
        using L = typename At::L;
        typename L::V v[2];
        LoadBlock<Plane::kSource, 2>(at, v);
        auto a = UnpackWords<kIn, L>(v[0]), b = UnpackWords<kIn, L>(v[1]);
        ChangeMatrix<L, kLuma>(*this, a, b);
        const typename L::V out[2] = {PackWords<kOut, L>(a), PackWords<kOut, L>(b)};
        PutBlock<Plane::kDestination, 2>(at, out);
    }
    // One pair as both halves of a group: rounded by its own signs. Pairs
    // are written with ordinary stores in the streaming kernels too.
    template <class At>
    void Single(const At& at) const {
        using L = typename At::L;
        auto a = UnpackWords<kIn, L>(Load<Plane::kSource, 4>(at)), b = a;
        ChangeMatrix<L, kLuma>(*this, a, b);
        Put<Plane::kDestination, 4>(at, 0, PackWords<kOut, L>(a));
    }
};

// ---- UYVY16I taken apart ---------------------------------------------------------------

// Split: a group is 16 pixels, 32 source bytes to 16 luma and 16 chroma
// bytes, into the luma plane and its chroma plane.
//
// The head counts pairs as if the destination were packed, (16 - luma
// address mod 16) / 4, yet a pair moves the luma pointer by two bytes; so
// the body starts on a 16-byte boundary only where the luma line already
// did. Both planes' group stores are therefore checked stores (aligned on a
// boundary, unaligned elsewhere): the bytes are the same, and a chroma plane
// at any address (an odd dst_stride * dst_height) is written without a
// fault, in the aligned kernel too. Both variants write with ordinary stores.
template <class S>
struct SplitToPlanar : PackedSource<4, 8> {
    using Vector = S;
    using Planes = Streams<Stream<Plane::kSource, 4, 32>, Stream<Plane::kDestination, 2, 16>,
                           Stream<Plane::kDestinationChroma, 2, 16>>;
    // A block writes 16 bytes a lane to each plane. Planes at least a whole
    // block of the widest layer apart (64 bytes) take each plane's lanes in
    // one store; nearer planes (a destination height of 0 puts them on top
    // of each other) go lane by lane, luma before chroma.
    explicit SplitToPlanar(const Request& r) {
        const uint8_t* const luma = r.dst_plane;
        const auto distance = ChromaLine(r.dst_plane, r.dst_stride, r.dst_height) - luma;
        planes_apart = distance >= 64 || distance <= -64;
    }
    // Where the planes overlap, chroma is what remains, as in one block at a
    // time.
    template <class At>
    void Block(const At& at) const {
        using L = typename At::L;
        typename L::V v[2];
        LoadBlock<Plane::kSource, 2>(at, v);
        const auto a = v[0], b = v[1];
        const auto low_bytes = L::Set16(0xFF);
        const auto luma = L::PackS16ToU8(L::template Shr16<8>(a), L::template Shr16<8>(b));
        const auto cbcr = L::PackS16ToU8(L::And(a, low_bytes), L::And(b, low_bytes));
        if (planes_apart || L::kActiveLanes == 1) {
            Put<Plane::kDestination, 16, CheckedStore>(at, 0, luma);
            Put<Plane::kDestinationChroma, 16, CheckedStore>(at, 0, cbcr);
        } else if constexpr (L::kActiveLanes > 1) {
            L::template PutLanesInTurn<CheckedStore>(Ptr<Plane::kDestination>(at), luma,
                                                     Ptr<Plane::kDestinationChroma>(at), cbcr, 16);
        }
    }
    template <class At>
    void Single(const At& at) const {
        const uint8_t* const src = Ptr<Plane::kSource>(at);
        const uint8_t cb = src[0], y0 = src[1], cr = src[2], y1 = src[3];
        uint8_t* const luma = Ptr<Plane::kDestination>(at);
        uint8_t* const chroma = Ptr<Plane::kDestinationChroma>(at);
        luma[0] = y0;
        luma[1] = y1;
        chroma[0] = cb;
        chroma[1] = cr;
    }
    bool planes_apart;
};

// Widening: a group is 8 pixels, 16 source bytes to 32 destination bytes;
// pixel n becomes Cr, Cb of its pair, its own Y, and the low byte of
// alpha_value. A pair writes 8 bytes with one ordinary store.
template <class S>
struct WidenTo444 : PackedSource<8, 4> {
    using V = typename S::V;
    using Vector = S;
    using Planes = Streams<Stream<Plane::kSource, 4, 16>, Stream<Plane::kDestination, 8, 32>>;
    explicit WidenTo444(const Request& r)
        : alpha_high_byte(S::Set16(static_cast<uint16_t>((r.alpha_value & 0xFF) << 8))) {}

    // Four pairs (Cb Y0 Cr Y1 in each 32-bit lane) to eight pixels.
    template <class L>
    void Widen(V pairs, V& pixels0_3, V& pixels4_7) const {
        const V chroma = L::And(pairs, L::Set32(0x00FF00FF));  // Cb, Cr words
        const V vu = L::And(L::Or(L::template Shr32<16>(chroma), L::template Shl32<8>(chroma)),
                            L::Set32(0xFFFF));                               // Cr | Cb << 8
        const V vu_twice = L::Or(vu, L::template Shl32<16>(vu));           // for both pixels
        const V ya = L::Or(L::template Shr16<8>(pairs), alpha_high_byte);  // Y | A << 8
        pixels0_3 = L::Lo16(vu_twice, ya);
        pixels4_7 = L::Hi16(vu_twice, ya);
    }
    template <class At>
    void Block(const At& at) const {
        V p[2];
        Widen<typename At::L>(Load<Plane::kSource>(at), p[0], p[1]);
        PutBlock<Plane::kDestination, 2>(at, p);
    }
    template <class At>
    void Single(const At& at) const {
        V p0, unused;
        Widen<typename At::L>(Load<Plane::kSource, 4>(at), p0, unused);
        Put<Plane::kDestination, 8>(at, 0, p0);
    }
    const V alpha_high_byte;
};

}  // namespace zenk::ZENK_ISA::yuv_to_yuv
