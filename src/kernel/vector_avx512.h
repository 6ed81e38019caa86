// The 512-bit vector layer, for the kernels built with AVX-512 (F, BW, VL)
// flags only: four 128-bit lanes (vector_wide.h). Avx512Lanes<n> fills the
// first n.
#pragma once

#include <immintrin.h>

#include <array>

#include "vector_wide.h"

#if !defined(__AVX512F__) || !defined(__AVX512BW__) || !defined(__AVX512VL__)
#error "vector_avx512.h belongs to the translation units built with AVX-512 flags"
#endif

namespace zenk::ZENK_ISA {

struct Avx512Register {
    using V = __m512i;
    static constexpr int kLanes = 4;

#define ZENK_MM(op) _mm512_##op
#define ZENK_SI(op) _mm512_##op##si512
#include "vector_x86_lanewise.inc"
    ZENK_VECTOR_OP V Set64(uint64_t x) { return _mm512_set1_epi64(static_cast<long long>(x)); }
    ZENK_VECTOR_OP V Broadcast(__m128i lane) { return _mm512_broadcast_i32x4(lane); }
    ZENK_VECTOR_OP V Set64x2(uint64_t low, uint64_t high) { return Broadcast(Vec128::Set64x2(low, high)); }
    template <int n> ZENK_VECTOR_OP V ShlBytes(V v) { return _mm512_bslli_epi128(v, n); }
    template <int n> ZENK_VECTOR_OP V ShrBytes(V v) { return _mm512_bsrli_epi128(v, n); }
    template <int imm> ZENK_VECTOR_OP V Shuffle32(V v) { return _mm512_shuffle_epi32(v, static_cast<_MM_PERM_ENUM>(imm)); }
    ZENK_VECTOR_OP V KeepLow64(V v) { return _mm512_maskz_mov_epi64(0x55, v); }
    ZENK_VECTOR_OP V ShuffleBytes(V v, V pattern) { return _mm512_shuffle_epi8(v, pattern); }

    // ---- Lanes and whole registers.
    template <int j>
    ZENK_VECTOR_OP __m128i Lane(V v) {
        if constexpr (j == 0)
            return _mm512_castsi512_si128(v);
        else
            return _mm512_extracti32x4_epi32(v, j);
    }
    ZENK_VECTOR_OP V Cast(__m128i lane) { return _mm512_castsi128_si512(lane); }
    ZENK_VECTOR_OP V Zext(__m128i lane) { return _mm512_zextsi128_si512(lane); }
    template <int j>
    ZENK_VECTOR_OP V Insert(V v, __m128i lane) { return _mm512_inserti32x4(v, lane, j); }
    ZENK_VECTOR_OP V LoadWhole(const void* p) { return _mm512_loadu_si512(p); }
    ZENK_VECTOR_OP void StoreWhole(void* p, V v) { _mm512_storeu_si512(p, v); }
    ZENK_VECTOR_OP void StreamWhole(void* p, V v) { _mm512_stream_si512(static_cast<V*>(p), v); }
    ZENK_VECTOR_OP void Store64Packed(void* p, V v) {
        const V low_qwords = _mm512_permutexvar_epi64(_mm512_set_epi64(0, 0, 0, 0, 6, 4, 2, 0), v);
        _mm256_storeu_si256(static_cast<__m256i*>(p), _mm512_castsi512_si256(low_qwords));
    }
    ZENK_VECTOR_OP V Load64Packed(const void* p) {
        return _mm512_maskz_permutexvar_epi64(0x55, _mm512_set_epi64(0, 3, 0, 2, 0, 1, 0, 0),
                                              _mm512_zextsi256_si512(_mm256_loadu_si256(static_cast<const __m256i*>(p))));
    }

    // ---- Byte moves in memory order (kernel/pixel_packing.h): registers
    // that hold consecutive bytes, rearranged across lanes.
    //
    // The twelve low bytes (three dwords) of every lane of four registers,
    // joined into three registers in the same order; and back, each lane's
    // fourth dword then a don't-care (the BGR24 unpacking reads 12 bytes).
    template <int o>
    static constexpr auto kJoinIndex = [] {
        std::array<int32_t, 16> index{};
        for (int e = 0; e < 16; ++e) {
            const int g = 16 * o + e, m = g / 12, r = g % 12;
            index[e] = 4 * (r / 3) + r % 3 + (m == o ? 0 : 16);
        }
        return index;
    }();
    template <int m>
    static constexpr auto kSplitIndex = [] {
        std::array<int32_t, 16> index{};
        for (int p = 0; p < 16; ++p) index[p] = p % 4 == 3 ? 0 : 12 * m + 3 * (p / 4) + p % 4 - 16 * (12 * m / 16);
        return index;
    }();
    template <class Index>
    ZENK_VECTOR_OP V Indices(const Index& index) { return _mm512_loadu_si512(index.data()); }
    ZENK_VECTOR_OP void JoinTwelves(const V t[4], V out[3]) {
        out[0] = _mm512_permutex2var_epi32(t[0], Indices(kJoinIndex<0>), t[1]);
        out[1] = _mm512_permutex2var_epi32(t[1], Indices(kJoinIndex<1>), t[2]);
        out[2] = _mm512_permutex2var_epi32(t[2], Indices(kJoinIndex<2>), t[3]);
    }
    ZENK_VECTOR_OP void SplitTwelves(const V w[3], V t[4]) {
        t[0] = _mm512_permutexvar_epi32(Indices(kSplitIndex<0>), w[0]);
        t[1] = _mm512_permutex2var_epi32(w[0], Indices(kSplitIndex<1>), w[1]);
        t[2] = _mm512_permutex2var_epi32(w[1], Indices(kSplitIndex<2>), w[2]);
        t[3] = _mm512_permutexvar_epi32(Indices(kSplitIndex<3>), w[2]);
    }
    // Dword 4j + m of the four lanes' groups (register m's lane j, as the
    // lane-wise packs of four registers leave it) to dword 4m + j.
    ZENK_VECTOR_OP V DwordsToMemoryOrder(V v) {
        return _mm512_permutexvar_epi32(_mm512_setr_epi32(0, 4, 8, 12, 1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15), v);
    }
    // Sixteen bytes to the low bytes of sixteen dwords.
    ZENK_VECTOR_OP V WidenBytes(const void* p) { return _mm512_cvtepu8_epi32(Vec128::LoadU(p)); }

    // A block of two vectors: two-source permutes of 64-bit elements. Of
    // four: a transpose of 4 x 4 lanes, its own inverse. Of three (a BGR24
    // block): each register takes its lanes from the three vectors, two at
    // once and the third under a mask; and back.
    ZENK_VECTOR_OP void Transpose4(const V in[4], V out[4]) {
        const V t0 = _mm512_shuffle_i64x2(in[0], in[1], 0x44), t1 = _mm512_shuffle_i64x2(in[0], in[1], 0xEE);
        const V t2 = _mm512_shuffle_i64x2(in[2], in[3], 0x44), t3 = _mm512_shuffle_i64x2(in[2], in[3], 0xEE);
        out[0] = _mm512_shuffle_i64x2(t0, t2, 0x88);
        out[1] = _mm512_shuffle_i64x2(t0, t2, 0xDD);
        out[2] = _mm512_shuffle_i64x2(t1, t3, 0x88);
        out[3] = _mm512_shuffle_i64x2(t1, t3, 0xDD);
    }
    ZENK_VECTOR_OP V Merge3(V a, V b, V c, V two, V one) {
        return _mm512_mask_permutexvar_epi64(_mm512_permutex2var_epi64(a, two, b), 0x30, one, c);
    }
    template <int k>
    ZENK_VECTOR_OP void ToMemoryOrder(const V v[k], V w[k]) {
        static_assert(k >= 2 && k <= 4);
        if constexpr (k == 2) {
            w[0] = _mm512_permutex2var_epi64(v[0], _mm512_set_epi64(11, 10, 3, 2, 9, 8, 1, 0), v[1]);
            w[1] = _mm512_permutex2var_epi64(v[0], _mm512_set_epi64(15, 14, 7, 6, 13, 12, 5, 4), v[1]);
        } else if constexpr (k == 3) {
            w[0] = Merge3(v[0], v[1], v[2], _mm512_set_epi64(3, 2, 0, 0, 9, 8, 1, 0), _mm512_set_epi64(0, 0, 1, 0, 0, 0, 0, 0));
            w[1] = Merge3(v[1], v[2], v[0], _mm512_set_epi64(5, 4, 0, 0, 11, 10, 3, 2), _mm512_set_epi64(0, 0, 5, 4, 0, 0, 0, 0));
            w[2] = Merge3(v[2], v[0], v[1], _mm512_set_epi64(7, 6, 0, 0, 15, 14, 5, 4), _mm512_set_epi64(0, 0, 7, 6, 0, 0, 0, 0));
        } else {
            Transpose4(v, w);
        }
    }
    template <int k>
    ZENK_VECTOR_OP void FromMemoryOrder(const V w[k], V v[k]) {
        static_assert(k >= 2 && k <= 4);
        if constexpr (k == 2) {
            v[0] = _mm512_permutex2var_epi64(w[0], _mm512_set_epi64(13, 12, 9, 8, 5, 4, 1, 0), w[1]);
            v[1] = _mm512_permutex2var_epi64(w[0], _mm512_set_epi64(15, 14, 11, 10, 7, 6, 3, 2), w[1]);
        } else if constexpr (k == 3) {
            v[0] = _mm512_mask_permutexvar_epi64(_mm512_permutex2var_epi64(w[0], _mm512_set_epi64(0, 0, 13, 12, 7, 6, 1, 0), w[1]),
                                                 0xC0, _mm512_set_epi64(3, 2, 0, 0, 0, 0, 0, 0), w[2]);
            v[1] = _mm512_mask_permutexvar_epi64(_mm512_permutex2var_epi64(w[0], _mm512_set_epi64(0, 0, 15, 14, 9, 8, 3, 2), w[1]),
                                                 0xC0, _mm512_set_epi64(5, 4, 0, 0, 0, 0, 0, 0), w[2]);
            v[2] = _mm512_mask_permutexvar_epi64(_mm512_permutex2var_epi64(w[1], _mm512_set_epi64(15, 14, 9, 8, 3, 2, 0, 0), w[2]),
                                                 0x03, _mm512_set_epi64(0, 0, 0, 0, 0, 0, 5, 4), w[0]);
        } else {
            Transpose4(w, v);
        }
    }
};

template <int kActive>
using Avx512Lanes = WideLanes<Avx512Register, kActive>;
using Avx512 = Avx512Lanes<4>;

}  // namespace zenk::ZENK_ISA
