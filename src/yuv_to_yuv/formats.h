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

// A packed 4:2:2 source, one destination plane. The head counts pairs of
// kHeadPairBytes destination bytes up to the 16-byte boundary. Every group
// asks for its lines ahead (PrefetchAhead): copies and byte reorders become
// as fast as memcpy; the arithmetic kernels do not notice.
//
// Blocks are written for a layer L with one or more lanes filled: lane j
// converts the block j blocks on.
template <uint32_t kHeadPairBytes>
struct PackedLine {
    static constexpr int32_t kUnitPixels = 2, kSinglesBelow = 16, kPrefetchEvery = 1;
    static constexpr MisalignedLine kMisaligned = MisalignedLine::kBlocksUnaligned;

    explicit PackedLine(const Request& r) : src(r.src_plane), dst(r.dst_plane) {}
    int32_t HeadUnits() const { return UnitsToBoundary(dst, kHeadPairBytes); }
    const void* Ahead() const { return src; }
    void NextLine(const Request& r) {
        src = Advance(src, r.src_skip);
        dst = Advance(dst, r.dst_skip);
    }

    const uint8_t* src;
    uint8_t* dst;
};

// The byte moves within each 4-byte pair: none (a copy), the two bytes of
// every 16-bit word changing places (UYVY16I <-> YUYV16I), and the two
// middle bytes changing places (UVYY16I <-> UYVY16I, the same move both
// ways).
enum class ByteMove { kCopy, kSwapWordBytes, kExchangeMiddleBytes };

// A format that rearranges bytes, for a block and for a single pair alike.
// Streaming kernels keep their pairs out of the cache too.
template <class S, ByteMove kMove>
struct Reorder : PackedLine<4> {
    using PackedLine::PackedLine;
    using Vector = S;
    static constexpr int32_t kBlockUnits = 8;
    static constexpr bool kStreamEnds = true;
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
    template <class Store, class L = S>
    void Block() {
        constexpr int32_t kBytes = 16 * L::kActiveLanes;
        L::template Put<Store>(dst, Move<L>(L::LoadU(src, 16)), 16);
        L::template Put<Store>(dst + kBytes, Move<L>(L::LoadU(src + kBytes, 16)), 16);
        src += 2 * kBytes;
        dst += 2 * kBytes;
    }
    void Single() {
        using L = typename S::template WithLanes<1>;
        L::Put32(dst, Move<L>(L::Load32(src, 0)), 0);
        src += 4;
        dst += 4;
    }
};

// ---- Change of standard ---------------------------------------------------------------

template <class S, Packed kIn, Packed kOut, LumaRule kLuma>
struct MatrixChange : PackedLine<4> {
    explicit MatrixChange(const Request& r) : PackedLine(r), m(r) {}
    using Vector = S;
    static constexpr int32_t kBlockUnits = 8;
    static constexpr bool kStreamEnds = false;
    template <class Store, class L = S>
    void Block() {
        typename L::V v[2];
        L::template LoadBlock<2>(src, v);
        auto a = UnpackWords<kIn, L>(v[0]), b = UnpackWords<kIn, L>(v[1]);
        ChangeMatrix<L, kLuma>(m, a, b);
        const typename L::V out[2] = {PackWords<kOut, L>(a), PackWords<kOut, L>(b)};
        L::template PutBlock<Store, 2>(dst, out);
        src += 32 * L::kActiveLanes;
        dst += 32 * L::kActiveLanes;
    }
    // One pair as both halves of a group: rounded by its own signs. Pairs
    // are written with ordinary stores in the streaming kernels too.
    void Single() {
        using L = typename S::template WithLanes<1>;
        auto a = UnpackWords<kIn, L>(L::Load32(src, 0)), b = a;
        ChangeMatrix<L, kLuma>(m, a, b);
        L::Put32(dst, PackWords<kOut, L>(a), 0);
        src += 4;
        dst += 4;
    }
    const MatrixConstants<S> m;
};

// ---- UYVY16I taken apart ---------------------------------------------------------------

// Split: a group is 16 pixels, 32 source bytes to 16 luma and 16 chroma
// bytes. The chroma plane lies dst_stride * dst_height bytes after the luma
// plane (the product wraps at 32 bits, as the request's words do) and moves
// with it by dst_skip.
//
// The head counts pairs as if the destination were packed, (16 - luma
// address mod 16) / 4, yet a pair moves the luma pointer by two bytes; so
// the body starts on a 16-byte boundary only where the luma line already
// did. Both planes' group stores are therefore checked stores (aligned on a
// boundary, unaligned elsewhere): the bytes are the same, and a chroma plane
// at any address (an odd dst_stride * dst_height) is written without a
// fault, in the aligned kernel too. Both variants write with ordinary stores.
template <class S>
struct SplitToPlanar : PackedLine<4> {
    explicit SplitToPlanar(const Request& r)
        : PackedLine(r), chroma(Advance(r.dst_plane, PlaneDistance(r))), planes_apart(PlanesApart(PlaneDistance(r))) {}
    static int32_t PlaneDistance(const Request& r) {
        return static_cast<int32_t>(static_cast<uint32_t>(r.dst_stride) * static_cast<uint32_t>(r.dst_height));
    }
    // A block writes 16 bytes a lane to each plane. Planes at least a whole
    // block of the widest layer apart (64 bytes) take each plane's lanes in
    // one store; nearer planes (a destination height of 0 puts them on top
    // of each other) go lane by lane, luma before chroma.
    static bool PlanesApart(int32_t distance) { return distance >= 64 || distance <= -64; }
    static constexpr int32_t kBlockUnits = 8;
    static constexpr bool kStreamEnds = false;
    void NextLine(const Request& r) {
        PackedLine::NextLine(r);
        chroma = Advance(chroma, r.dst_skip);
    }
    using Vector = S;
    // Where the planes overlap, chroma is what remains, as in one block at a
    // time.
    template <class, class L = S>
    void Block() {
        typename L::V v[2];
        L::template LoadBlock<2>(src, v);
        const auto a = v[0], b = v[1];
        const auto low_bytes = L::Set16(0xFF);
        const auto luma = L::PackS16ToU8(L::template Shr16<8>(a), L::template Shr16<8>(b));
        const auto cbcr = L::PackS16ToU8(L::And(a, low_bytes), L::And(b, low_bytes));
        if (planes_apart || L::kActiveLanes == 1) {
            L::template Put<CheckedStore>(dst, luma, 16);
            L::template Put<CheckedStore>(chroma, cbcr, 16);
        } else if constexpr (L::kActiveLanes > 1) {
            L::template PutLanesInTurn<CheckedStore>(dst, luma, chroma, cbcr, 16);
        }
        src += 32 * L::kActiveLanes;
        dst += 16 * L::kActiveLanes;
        chroma += 16 * L::kActiveLanes;
    }
    void Single() {
        const uint8_t cb = src[0], y0 = src[1], cr = src[2], y1 = src[3];
        dst[0] = y0;
        dst[1] = y1;
        chroma[0] = cb;
        chroma[1] = cr;
        src += 4;
        dst += 2;
        chroma += 2;
    }
    uint8_t* chroma;
    bool planes_apart;
};

// Widening: a group is 8 pixels, 16 source bytes to 32 destination bytes;
// pixel n becomes Cr, Cb of its pair, its own Y, and the low byte of
// alpha_value. A pair writes 8 bytes with one ordinary store.
template <class S>
struct WidenTo444 : PackedLine<8> {
    using V = typename S::V;
    using Vector = S;
    explicit WidenTo444(const Request& r)
        : PackedLine(r), alpha_high_byte(S::Set16(static_cast<uint16_t>((r.alpha_value & 0xFF) << 8))) {}
    static constexpr int32_t kBlockUnits = 4;
    static constexpr bool kStreamEnds = false;

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
    template <class Store, class L = S>
    void Block() {
        V p[2];
        Widen<L>(L::LoadU(src, 16), p[0], p[1]);
        L::template PutBlock<Store, 2>(dst, p);
        src += 16 * L::kActiveLanes;
        dst += 32 * L::kActiveLanes;
    }
    void Single() {
        using L = typename S::template WithLanes<1>;
        V p0, unused;
        Widen<L>(L::Load32(src, 0), p0, unused);
        L::Put64(dst, p0, 0);
        src += 4;
        dst += 8;
    }
    const V alpha_high_byte;
};

}  // namespace zenk::ZENK_ISA::yuv_to_yuv
