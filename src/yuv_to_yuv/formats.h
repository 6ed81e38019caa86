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

// A format that rearranges bytes: Rule::Vector turns source bytes into
// destination bytes within each 4-byte pair, for a block and for a single
// pair alike. Streaming kernels keep their pairs out of the cache too.
template <class S, class Rule>
struct Reorder : PackedLine<4> {
    using PackedLine::PackedLine;
    static constexpr int32_t kBlockUnits = 8;
    static constexpr bool kStreamEnds = true;
    template <class Store>
    void Block() {
        Store::Store(dst, Rule::Vector(S::LoadU(src)));
        Store::Store(dst + 16, Rule::Vector(S::LoadU(src + 16)));
        src += 32;
        dst += 32;
    }
    void Single() {
        S::Store32(dst, Rule::Vector(S::Load32(src)));
        src += 4;
        dst += 4;
    }
};

template <class S>
struct CopyRule {
    static typename S::V Vector(typename S::V v) { return v; }
};

// UYVY16I <-> YUYV16I: the two bytes of every 16-bit word change places.
template <class S>
struct SwapWordBytesRule {
    static typename S::V Vector(typename S::V v) { return S::Or(S::template Shl16<8>(v), S::template Shr16<8>(v)); }
};

// UVYY16I -> UYVY16I and UYVY16I -> UVYY16I are the same move.
template <class S>
struct ExchangeMiddleBytesRule {
    static typename S::V Vector(typename S::V v) { return ExchangeMiddleBytes<S>(v); }
};

// ---- Change of standard ---------------------------------------------------------------

template <class S>
struct UyvyWords {
    static Words422<S> Unpack(typename S::V v) { return UnpackUyvy<S>(v); }
    static typename S::V Pack(const Words422<S>& w) { return PackUyvy<S>(w); }
};
template <class S>
struct YuyvWords {
    static Words422<S> Unpack(typename S::V v) { return UnpackYuyv<S>(v); }
    static typename S::V Pack(const Words422<S>& w) { return PackYuyv<S>(w); }
};

template <class S, template <class> class In, template <class> class Out, LumaRule kLuma>
struct MatrixChange : PackedLine<4> {
    explicit MatrixChange(const Request& r) : PackedLine(r), m(r) {}
    static constexpr int32_t kBlockUnits = 8;
    static constexpr bool kStreamEnds = false;
    template <class Store>
    void Block() {
        auto a = In<S>::Unpack(S::LoadU(src)), b = In<S>::Unpack(S::LoadU(src + 16));
        ChangeMatrix<S, kLuma>(m, a, b);
        Store::Store(dst, Out<S>::Pack(a));
        Store::Store(dst + 16, Out<S>::Pack(b));
        src += 32;
        dst += 32;
    }
    // One pair as both halves of a group: rounded by its own signs. Pairs
    // are written with ordinary stores in the streaming kernels too.
    void Single() {
        auto a = In<S>::Unpack(S::Load32(src)), b = a;
        ChangeMatrix<S, kLuma>(m, a, b);
        S::Store32(dst, Out<S>::Pack(a));
        src += 4;
        dst += 4;
    }
    const MatrixChangeVectors m;
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
        : PackedLine(r),
          chroma(Advance(r.dst_plane,
                         static_cast<int32_t>(static_cast<uint32_t>(r.dst_stride) * static_cast<uint32_t>(r.dst_height)))) {}
    static constexpr int32_t kBlockUnits = 8;
    static constexpr bool kStreamEnds = false;
    void NextLine(const Request& r) {
        PackedLine::NextLine(r);
        chroma = Advance(chroma, r.dst_skip);
    }
    template <class>
    void Block() {
        const auto a = S::LoadU(src), b = S::LoadU(src + 16);
        const auto low_bytes = S::Set16(0xFF);
        // Luma first, then chroma: where the two planes overlap (a
        // destination height of 0), chroma is what remains.
        CheckedStore::Store(dst, S::PackS16ToU8(S::template Shr16<8>(a), S::template Shr16<8>(b)));
        CheckedStore::Store(chroma, S::PackS16ToU8(S::And(a, low_bytes), S::And(b, low_bytes)));
        src += 32;
        dst += 16;
        chroma += 16;
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
};

// Widening: a group is 8 pixels, 16 source bytes to 32 destination bytes;
// pixel n becomes Cr, Cb of its pair, its own Y, and the low byte of
// alpha_value. A pair writes 8 bytes with one ordinary store.
template <class S>
struct WidenTo444 : PackedLine<8> {
    using V = typename S::V;
    explicit WidenTo444(const Request& r)
        : PackedLine(r), alpha_high_byte(S::Set16(static_cast<uint16_t>((r.alpha_value & 0xFF) << 8))) {}
    static constexpr int32_t kBlockUnits = 4;
    static constexpr bool kStreamEnds = false;

    // Four pairs (Cb Y0 Cr Y1 in each 32-bit lane) to eight pixels.
    void Widen(V pairs, V& pixels0_3, V& pixels4_7) const {
        const V chroma = S::And(pairs, S::Set32(0x00FF00FF));  // Cb, Cr words
        const V vu = S::And(S::Or(S::template Shr32<16>(chroma), S::template Shl32<8>(chroma)),
                            S::Set32(0xFFFF));                               // Cr | Cb << 8
        const V vu_twice = S::Or(vu, S::template Shl32<16>(vu));           // for both pixels
        const V ya = S::Or(S::template Shr16<8>(pairs), alpha_high_byte);  // Y | A << 8
        pixels0_3 = S::Lo16(vu_twice, ya);
        pixels4_7 = S::Hi16(vu_twice, ya);
    }
    template <class Store>
    void Block() {
        V p0, p1;
        Widen(S::LoadU(src), p0, p1);
        Store::Store(dst, p0);
        Store::Store(dst + 16, p1);
        src += 16;
        dst += 32;
    }
    void Single() {
        V p0, unused;
        Widen(S::Load32(src), p0, unused);
        S::Store64(dst, p0);
        src += 4;
        dst += 8;
    }
    const V alpha_high_byte;
};

}  // namespace zenk::ZENK_ISA::yuv_to_yuv
