// Byte layouts shared by several families, written once on the vector layer
// (S is a vector type such as Vec128; every operation stays within 128-bit
// blocks): BGR32 <-> BGR24 packing, the alpha byte of BGR32 pixels, the
// chroma and luma words of packed 4:2:2, and the exchange that turns UVYY16I
// byte order into UYVY16I and back.
#pragma once

#include "vector_128.h"

namespace zenk::ZENK_ISA {

// ---- BGR32 and BGR24 -------------------------------------------------------------------

// A layer with byte shuffles (AVX2 and wider) gathers the 3-byte pixels in
// one instruction; the baseline layer shifts and masks. The bytes are the same.
template <class S>
concept HasByteShuffle = requires(typename S::V v) { S::ShuffleBytes(v, v); };

// Four BGRA pixels to their twelve BGR bytes in bytes 0..11 (12..15 zero).
template <class S>
inline typename S::V PackFourBgr(typename S::V px) {
    if constexpr (HasByteShuffle<S>) {
        return S::ShuffleBytes(px, S::Set64x2(0x0908060504020100ull, 0x808080800E0D0C0Aull));
    } else {
        const auto even = S::And(px, S::Set64(0xFFFFFFull));
        const auto odd = S::And(S::template Shr64<8>(px), S::Set64(0xFFFFFF000000ull));
        const auto six_six = S::Or(even, odd);  // six bytes at the bottom of each 64-bit half
        return S::Or(S::KeepLow64(six_six), S::template ShlBytes<6>(S::template ShrBytes<8>(six_six)));
    }
}

// Twelve BGR bytes (bytes 0..11) to four pixels with a zero fourth byte.
template <class S>
inline typename S::V UnpackFourBgr(typename S::V bytes) {
    if constexpr (HasByteShuffle<S>) {
        return S::ShuffleBytes(bytes, S::Set64x2(0x8005040380020100ull, 0x800B0A0980080706ull));
    } else {
        const auto six_six = S::Or(S::And(bytes, S::Set64x2(0xFFFFFFFFFFFFull, 0)),
                                   S::And(S::template ShlBytes<2>(bytes), S::Set64x2(0, 0xFFFFFFFFFFFFull)));
        return S::Or(S::And(six_six, S::Set64(0xFFFFFFull)),
                     S::And(S::template Shl64<8>(six_six), S::Set64(0xFFFFFF00000000ull)));
    }
}

// ---- Whole registers in memory order ----------------------------------------------------
//
// Repacking BGR32, BGR24 and alpha bytes computes nothing, so its blocks
// need not follow the lane model: with every lane filled and ordinary
// stores, a block can be loaded as whole registers of consecutive bytes,
// rearranged across lanes and stored the same way. It reads and writes the
// same bytes with fewer instructions. A layer of one lane is in memory order
// already; a wider one takes this path where it has the cross-lane moves
// (JoinTwelves, SplitTwelves, DwordsToMemoryOrder, WidenBytes: AVX2 and
// AVX-512).
template <class L, class Store>
concept AcrossLanes = L::kLanes > 1 && L::kActiveLanes == L::kLanes && !Store::kStreaming &&
                      requires(const typename L::V* in, typename L::V* out) { L::JoinTwelves(in, out); };

// Sixteen BGRA pixels (four a vector) to 48 BGR bytes in three vectors, in
// lane order or (kAcross) in memory order.
template <class S, bool kAcross = false>
inline void PackBgr24(const typename S::V px[4], typename S::V out[3]) {
    const typename S::V t[4] = {PackFourBgr<S>(px[0]), PackFourBgr<S>(px[1]), PackFourBgr<S>(px[2]),
                                PackFourBgr<S>(px[3])};
    if constexpr (kAcross) {
        S::JoinTwelves(t, out);
    } else {
        out[0] = S::Or(t[0], S::template ShlBytes<12>(t[1]));
        out[1] = S::Or(S::template ShrBytes<4>(t[1]), S::template ShlBytes<8>(t[2]));
        out[2] = S::Or(S::template ShrBytes<8>(t[2]), S::template ShlBytes<4>(t[3]));
    }
}

// 48 BGR bytes in three vectors to sixteen pixels with a zero fourth byte.
template <class S, bool kAcross = false>
inline void UnpackBgr24(const typename S::V in[3], typename S::V px[4]) {
    typename S::V t[4];
    if constexpr (kAcross) {
        S::SplitTwelves(in, t);
    } else {
        t[0] = in[0];
        t[1] = S::Or(S::template ShrBytes<12>(in[0]), S::template ShlBytes<4>(in[1]));
        t[2] = S::Or(S::template ShrBytes<8>(in[1]), S::template ShlBytes<8>(in[2]));
        t[3] = S::template ShrBytes<4>(in[2]);
    }
    for (int i = 0; i < 4; ++i) px[i] = UnpackFourBgr<S>(t[i]);
}

// The fourth byte of eight BGRA pixels (four a vector) as words, pixel order.
template <class S>
inline typename S::V AlphaWords(typename S::V px0123, typename S::V px4567) {
    return S::PackS32To16(S::template Shr32<24>(px0123), S::template Shr32<24>(px4567));
}

// ---- Packed 4:2:2 -------------------------------------------------------------------------

// Eight pixels of a packed 4:2:2 line as words: chroma Cb0, Cr0, Cb1, Cr1,
// ... (pair k belongs to pixels 2k and 2k + 1) and luma Y0..Y7.
template <class S>
struct Words422 {
    typename S::V chroma;
    typename S::V luma;
};

// Bytes 1 and 2 of every 4-byte pair change places: UVYY16I (Cb Cr Y0 Y1)
// to UYVY16I (Cb Y0 Cr Y1) and back.
template <class S>
inline typename S::V ExchangeMiddleBytes(typename S::V v) {
    const auto outer = S::And(v, S::Set32(0xFF0000FFu));
    const auto byte1_up = S::template Shl32<8>(S::And(v, S::Set32(0x0000FF00u)));
    const auto byte2_down = S::template Shr32<8>(S::And(v, S::Set32(0x00FF0000u)));
    return S::Or(outer, S::Or(byte1_up, byte2_down));
}

// The 4:2:2 YUV layouts. The packed byte orders: UYVY16I (Cb, Y0, Cr, Y1)
// has chroma in the low byte of each word and luma in the high byte,
// YUYV16I (Y0, Cb, Y1, Cr) the other way round, and UVYY16I (Cb, Cr, Y0,
// Y1) is UYVY16I with the two middle bytes of each pair exchanged. Y8PUV8I
// is planar: a luma plane and an interleaved chroma plane of one byte a
// pixel each, which share the skip.
enum class YuvLayout { kUyvy, kYuyv, kUvyy, kPlanar };

template <YuvLayout kOrder, class S>
    requires(kOrder != YuvLayout::kPlanar)
inline Words422<S> UnpackWords(typename S::V v) {
    if constexpr (kOrder == YuvLayout::kUvyy) v = ExchangeMiddleBytes<S>(v);
    const auto low = S::And(v, S::Set16(0x00FF)), high = S::template Shr16<8>(v);
    return kOrder == YuvLayout::kYuyv ? Words422<S>{high, low} : Words422<S>{low, high};
}

// Words back to bytes, each saturated to 0..255.
template <YuvLayout kOrder, class S>
    requires(kOrder != YuvLayout::kPlanar)
inline typename S::V PackWords(const Words422<S>& w) {
    const auto low = kOrder == YuvLayout::kYuyv ? w.luma : w.chroma, high = kOrder == YuvLayout::kYuyv ? w.chroma : w.luma;
    const auto v = S::PackS16ToU8(S::Lo16(low, high), S::Hi16(low, high));
    if constexpr (kOrder == YuvLayout::kUvyy)
        return ExchangeMiddleBytes<S>(v);
    else
        return v;
}

}  // namespace zenk::ZENK_ISA
