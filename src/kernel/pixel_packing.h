// Byte layouts shared by several families, written once on the vector layer
// (S is a vector type such as Sse2; every operation stays within 128-bit
// blocks): BGR32 <-> BGR24 packing, the alpha byte of BGR32 pixels, the
// chroma and luma words of packed 4:2:2, and the exchange that turns UVYY16I
// byte order into UYVY16I and back.
#pragma once

#include "vector_sse2.h"

namespace zenk::ZENK_ISA {

// ---- BGR32 and BGR24 -------------------------------------------------------------------

// A layer with byte shuffles (AVX2 and wider) gathers the 3-byte pixels in
// one instruction; the SSE2 layer shifts and masks. The bytes are the same.
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

// Sixteen BGRA pixels (four a vector) to 48 BGR bytes in three vectors.
template <class S>
inline void PackBgr24(const typename S::V px[4], typename S::V out[3]) {
    const auto t0 = PackFourBgr<S>(px[0]), t1 = PackFourBgr<S>(px[1]);
    const auto t2 = PackFourBgr<S>(px[2]), t3 = PackFourBgr<S>(px[3]);
    out[0] = S::Or(t0, S::template ShlBytes<12>(t1));
    out[1] = S::Or(S::template ShrBytes<4>(t1), S::template ShlBytes<8>(t2));
    out[2] = S::Or(S::template ShrBytes<8>(t2), S::template ShlBytes<4>(t3));
}

// 48 BGR bytes in three vectors to sixteen pixels with a zero fourth byte.
template <class S>
inline void UnpackBgr24(typename S::V in0, typename S::V in1, typename S::V in2, typename S::V px[4]) {
    px[0] = UnpackFourBgr<S>(in0);
    px[1] = UnpackFourBgr<S>(S::Or(S::template ShrBytes<12>(in0), S::template ShlBytes<4>(in1)));
    px[2] = UnpackFourBgr<S>(S::Or(S::template ShrBytes<8>(in1), S::template ShlBytes<8>(in2)));
    px[3] = UnpackFourBgr<S>(S::template ShrBytes<4>(in2));
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

// UYVY16I: chroma in the low byte of each word, luma in the high byte.
template <class S>
inline Words422<S> UnpackUyvy(typename S::V v) {
    return {S::And(v, S::Set16(0x00FF)), S::template Shr16<8>(v)};
}

// YUYV16I: luma in the low byte, chroma in the high byte.
template <class S>
inline Words422<S> UnpackYuyv(typename S::V v) {
    return {S::template Shr16<8>(v), S::And(v, S::Set16(0x00FF))};
}

// Words back to bytes, each saturated to 0..255.
template <class S>
inline typename S::V PackUyvy(const Words422<S>& w) {
    return S::PackS16ToU8(S::Lo16(w.chroma, w.luma), S::Hi16(w.chroma, w.luma));
}
template <class S>
inline typename S::V PackYuyv(const Words422<S>& w) {
    return S::PackS16ToU8(S::Lo16(w.luma, w.chroma), S::Hi16(w.luma, w.chroma));
}

// Bytes 1 and 2 of every 4-byte pair change places: UVYY16I (Cb Cr Y0 Y1)
// to UYVY16I (Cb Y0 Cr Y1) and back.
template <class S>
inline typename S::V ExchangeMiddleBytes(typename S::V v) {
    const auto outer = S::And(v, S::Set32(0xFF0000FFu));
    const auto byte1_up = S::template Shl32<8>(S::And(v, S::Set32(0x0000FF00u)));
    const auto byte2_down = S::template Shr32<8>(S::And(v, S::Set32(0x00FF0000u)));
    return S::Or(outer, S::Or(byte1_up, byte2_down));
}

}  // namespace zenk::ZENK_ISA
