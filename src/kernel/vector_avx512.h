// The 512-bit vector layer, for the kernels built with AVX-512 (F, BW, VL)
// flags only: four 128-bit lanes, lane j holding what the SSE2 kernel's
// register holds in its block j, as in vector_avx2.h. Avx512Lanes<n> fills
// the first n lanes.
#pragma once

#include <immintrin.h>

#include "vector_avx2.h"

#if !defined(__AVX512F__) || !defined(__AVX512BW__) || !defined(__AVX512VL__)
#error "vector_avx512.h belongs to the translation units built with AVX-512 flags"
#endif

namespace zenk::ZENK_ISA {

template <int kActive>
struct Avx512Lanes {
    static_assert(kActive >= 1 && kActive <= 4);
    using V = __m512i;
    static constexpr int kLanes = 4;
    static constexpr int kActiveLanes = kActive;
    template <int n>
    using WithLanes = Avx512Lanes<n>;

    // ---- Loads: lane j from p + j * step; a lane not filled is zero.
    template <class Load>
    ZENK_VECTOR_OP V Gather(const void* p, int32_t step, Load load) {
        const auto* b = static_cast<const uint8_t*>(p);
        V v = _mm512_zextsi128_si512(load(b));
        if constexpr (kActive > 1) v = _mm512_inserti32x4(v, load(b + step), 1);
        if constexpr (kActive > 2) v = _mm512_inserti32x4(v, load(b + 2 * step), 2);
        if constexpr (kActive > 3) v = _mm512_inserti32x4(v, load(b + 3 * step), 3);
        return v;
    }
    ZENK_VECTOR_OP V LoadU(const void* p, int32_t step) {
        if constexpr (kActive == 4) {
            if (step == 16) return _mm512_loadu_si512(p);
        }
        return Gather(p, step, [](const uint8_t* b) { return Sse2::LoadU(b); });
    }
    ZENK_VECTOR_OP V Load64(const void* p, int32_t step) {
        if constexpr (kActive == 4) {
            // The four lanes' bytes in one load, then each to its lane.
            if (step == 8)
                return _mm512_maskz_permutexvar_epi64(0x55, _mm512_set_epi64(0, 3, 0, 2, 0, 1, 0, 0),
                                                      _mm512_zextsi256_si512(_mm256_loadu_si256(
                                                          static_cast<const __m256i*>(p))));
        }
        return Gather(p, step, [](const uint8_t* b) { return Sse2::Load64(b); });
    }
    ZENK_VECTOR_OP V Load32(const void* p, int32_t step) {
        return Gather(p, step, [](const uint8_t* b) { return Sse2::Load32(b); });
    }
    ZENK_VECTOR_OP V Load16(const void* p, int32_t step) {
        return Gather(p, step, [](const uint8_t* b) { return Sse2::Load16(b); });
    }

    // ---- Stores: lane j to p + j * step.
    template <int j>
    ZENK_VECTOR_OP __m128i Lane(V v) {
        if constexpr (j == 0)
            return _mm512_castsi512_si128(v);
        else
            return _mm512_extracti32x4_epi32(v, j);
    }
    ZENK_VECTOR_OP __m128i Lane0(V v) { return Lane<0>(v); }
    template <class Each>
    ZENK_VECTOR_OP void Scatter(void* p, V v, int32_t step, Each each) {
        auto* b = static_cast<uint8_t*>(p);
        each(b, Lane<0>(v));
        if constexpr (kActive > 1) each(b + step, Lane<1>(v));
        if constexpr (kActive > 2) each(b + 2 * step, Lane<2>(v));
        if constexpr (kActive > 3) each(b + 3 * step, Lane<3>(v));
    }
    template <class Store>
    ZENK_VECTOR_OP void Put(void* p, V v, int32_t step) {
        if constexpr (kActive == 4 && !Store::kStreaming) {
            if (step == 16) {
                _mm512_storeu_si512(p, v);
                return;
            }
        }
        Scatter(p, v, step, [](uint8_t* b, __m128i lane) { Store::Store(b, lane); });
    }
    // A block of k consecutive vectors, 16 k bytes: in memory lane 0's
    // vectors 0..k-1, then lane 1's, and so on. With every lane filled, a
    // block of two, three or four vectors moves as whole registers after an
    // exchange of lanes (for four, a transpose of 4 x 4 lanes, its own
    // inverse); otherwise, and for streaming stores, lane by lane.
    ZENK_VECTOR_OP void Transpose4(const V in[4], V out[4]) {
        const V t0 = _mm512_shuffle_i64x2(in[0], in[1], 0x44), t1 = _mm512_shuffle_i64x2(in[0], in[1], 0xEE);
        const V t2 = _mm512_shuffle_i64x2(in[2], in[3], 0x44), t3 = _mm512_shuffle_i64x2(in[2], in[3], 0xEE);
        out[0] = _mm512_shuffle_i64x2(t0, t2, 0x88);
        out[1] = _mm512_shuffle_i64x2(t0, t2, 0xDD);
        out[2] = _mm512_shuffle_i64x2(t1, t3, 0x88);
        out[3] = _mm512_shuffle_i64x2(t1, t3, 0xDD);
    }
    // Three vectors (a BGR24 block): each 64-byte register of the block
    // takes its lanes from three vectors, two at once and the third under a
    // mask; and back.
    ZENK_VECTOR_OP V Merge3(V a, V b, V c, V two, V one) {
        return _mm512_mask_permutexvar_epi64(_mm512_permutex2var_epi64(a, two, b), 0x30, one, c);
    }
    ZENK_VECTOR_OP void ToMemoryOrder3(const V v[3], V w[3]) {
        w[0] = Merge3(v[0], v[1], v[2], _mm512_set_epi64(3, 2, 0, 0, 9, 8, 1, 0), _mm512_set_epi64(0, 0, 1, 0, 0, 0, 0, 0));
        w[1] = Merge3(v[1], v[2], v[0], _mm512_set_epi64(5, 4, 0, 0, 11, 10, 3, 2), _mm512_set_epi64(0, 0, 5, 4, 0, 0, 0, 0));
        w[2] = Merge3(v[2], v[0], v[1], _mm512_set_epi64(7, 6, 0, 0, 15, 14, 5, 4), _mm512_set_epi64(0, 0, 7, 6, 0, 0, 0, 0));
    }
    ZENK_VECTOR_OP void FromMemoryOrder3(const V w[3], V v[3]) {
        v[0] = _mm512_mask_permutexvar_epi64(_mm512_permutex2var_epi64(w[0], _mm512_set_epi64(0, 0, 13, 12, 7, 6, 1, 0), w[1]),
                                             0xC0, _mm512_set_epi64(3, 2, 0, 0, 0, 0, 0, 0), w[2]);
        v[1] = _mm512_mask_permutexvar_epi64(_mm512_permutex2var_epi64(w[0], _mm512_set_epi64(0, 0, 15, 14, 9, 8, 3, 2), w[1]),
                                             0xC0, _mm512_set_epi64(5, 4, 0, 0, 0, 0, 0, 0), w[2]);
        v[2] = _mm512_mask_permutexvar_epi64(_mm512_permutex2var_epi64(w[1], _mm512_set_epi64(15, 14, 9, 8, 3, 2, 0, 0), w[2]),
                                             0x03, _mm512_set_epi64(0, 0, 0, 0, 0, 0, 5, 4), w[0]);
    }
    template <int k>
    ZENK_VECTOR_OP void LoadBlock(const void* p, V v[k]) {
        const auto* bytes = static_cast<const uint8_t*>(p);
        if constexpr (kActive == 4 && k == 2) {
            const V x = _mm512_loadu_si512(bytes), y = _mm512_loadu_si512(bytes + 64);
            v[0] = _mm512_permutex2var_epi64(x, _mm512_set_epi64(13, 12, 9, 8, 5, 4, 1, 0), y);
            v[1] = _mm512_permutex2var_epi64(x, _mm512_set_epi64(15, 14, 11, 10, 7, 6, 3, 2), y);
        } else if constexpr (kActive == 4 && (k == 3 || k == 4)) {
            V w[k];
            for (int m = 0; m < k; ++m) w[m] = _mm512_loadu_si512(bytes + 64 * m);
            if constexpr (k == 3)
                FromMemoryOrder3(w, v);
            else
                Transpose4(w, v);
        } else {
            for (int i = 0; i < k; ++i) v[i] = LoadU(bytes + 16 * i, 16 * k);
        }
    }
    template <class Store, int k>
    ZENK_VECTOR_OP void PutBlock(void* p, const V v[k]) {
        auto* bytes = static_cast<uint8_t*>(p);
        if constexpr (kActive == 4 && k == 2 && !Store::kStreaming) {
            _mm512_storeu_si512(bytes, _mm512_permutex2var_epi64(v[0], _mm512_set_epi64(11, 10, 3, 2, 9, 8, 1, 0), v[1]));
            _mm512_storeu_si512(bytes + 64,
                                _mm512_permutex2var_epi64(v[0], _mm512_set_epi64(15, 14, 7, 6, 13, 12, 5, 4), v[1]));
        } else if constexpr (kActive == 4 && (k == 3 || k == 4) && !Store::kStreaming) {
            V w[k];
            if constexpr (k == 3)
                ToMemoryOrder3(v, w);
            else
                Transpose4(v, w);
            for (int m = 0; m < k; ++m) _mm512_storeu_si512(bytes + 64 * m, w[m]);
        } else {
            for (int i = 0; i < k; ++i) Put<Store>(bytes + 16 * i, v[i], 16 * k);
        }
    }

    // Two streams written lane by lane in turn (x's lane j, then y's), for
    // planes that may overlap: the later store wins as in the SSE2 kernel.
    template <class Store>
    ZENK_VECTOR_OP void PutLanesInTurn(void* p, V x, void* q, V y, int32_t step) {
        auto* a = static_cast<uint8_t*>(p);
        auto* b = static_cast<uint8_t*>(q);
        Store::Store(a, Lane<0>(x));
        Store::Store(b, Lane<0>(y));
        if constexpr (kActive > 1) Store::Store(a + step, Lane<1>(x)), Store::Store(b + step, Lane<1>(y));
        if constexpr (kActive > 2) Store::Store(a + 2 * step, Lane<2>(x)), Store::Store(b + 2 * step, Lane<2>(y));
        if constexpr (kActive > 3) Store::Store(a + 3 * step, Lane<3>(x)), Store::Store(b + 3 * step, Lane<3>(y));
    }
    ZENK_VECTOR_OP void Put64(void* p, V v, int32_t step) {
        Scatter(p, v, step, [](uint8_t* b, __m128i lane) { Sse2::Store64(b, lane); });
    }
    ZENK_VECTOR_OP void Put32(void* p, V v, int32_t step) {
        Scatter(p, v, step, [](uint8_t* b, __m128i lane) { Sse2::Store32(b, lane); });
    }

    // ---- Constants.
    ZENK_VECTOR_OP V Broadcast(__m128i lane) { return _mm512_broadcast_i32x4(lane); }
    ZENK_VECTOR_OP V Zero() { return _mm512_setzero_si512(); }
    ZENK_VECTOR_OP V Set8(uint8_t x) { return _mm512_set1_epi8(static_cast<char>(x)); }
    ZENK_VECTOR_OP V Set16(int32_t x) { return _mm512_set1_epi16(static_cast<int16_t>(x)); }
    ZENK_VECTOR_OP V Set32(uint32_t x) { return _mm512_set1_epi32(static_cast<int>(x)); }
    ZENK_VECTOR_OP V Set64(uint64_t x) { return _mm512_set1_epi64(static_cast<long long>(x)); }
    ZENK_VECTOR_OP V Set64x2(uint64_t low, uint64_t high) { return Broadcast(Sse2::Set64x2(low, high)); }

    // ---- Bitwise.
    ZENK_VECTOR_OP V And(V a, V b) { return _mm512_and_si512(a, b); }
    ZENK_VECTOR_OP V AndNot(V not_a, V b) { return _mm512_andnot_si512(not_a, b); }
    ZENK_VECTOR_OP V Or(V a, V b) { return _mm512_or_si512(a, b); }

    // ---- Arithmetic.
    ZENK_VECTOR_OP V Add8(V a, V b) { return _mm512_add_epi8(a, b); }
    ZENK_VECTOR_OP V Add16(V a, V b) { return _mm512_add_epi16(a, b); }
    ZENK_VECTOR_OP V Sub16(V a, V b) { return _mm512_sub_epi16(a, b); }
    ZENK_VECTOR_OP V Add32(V a, V b) { return _mm512_add_epi32(a, b); }
    ZENK_VECTOR_OP V Min16(V a, V b) { return _mm512_min_epi16(a, b); }
    ZENK_VECTOR_OP V Max16(V a, V b) { return _mm512_max_epi16(a, b); }
    ZENK_VECTOR_OP V MinU8(V a, V b) { return _mm512_min_epu8(a, b); }
    ZENK_VECTOR_OP V MaxU8(V a, V b) { return _mm512_max_epu8(a, b); }
    ZENK_VECTOR_OP V MulAdd16(V a, V b) { return _mm512_madd_epi16(a, b); }

    // ---- Shifts.
    template <int n> ZENK_VECTOR_OP V Shl16(V v) { return _mm512_slli_epi16(v, n); }
    template <int n> ZENK_VECTOR_OP V Shr16(V v) { return _mm512_srli_epi16(v, n); }
    template <int n> ZENK_VECTOR_OP V Sar16(V v) { return _mm512_srai_epi16(v, n); }
    template <int n> ZENK_VECTOR_OP V Shl32(V v) { return _mm512_slli_epi32(v, n); }
    template <int n> ZENK_VECTOR_OP V Shr32(V v) { return _mm512_srli_epi32(v, n); }
    template <int n> ZENK_VECTOR_OP V Sar32(V v) { return _mm512_srai_epi32(v, n); }
    template <int n> ZENK_VECTOR_OP V Shl64(V v) { return _mm512_slli_epi64(v, n); }
    template <int n> ZENK_VECTOR_OP V Shr64(V v) { return _mm512_srli_epi64(v, n); }
    template <int n> ZENK_VECTOR_OP V ShlBytes(V v) { return _mm512_bslli_epi128(v, n); }
    template <int n> ZENK_VECTOR_OP V ShrBytes(V v) { return _mm512_bsrli_epi128(v, n); }

    // ---- Packs and interleaves, within each lane.
    ZENK_VECTOR_OP V PackS32To16(V a, V b) { return _mm512_packs_epi32(a, b); }
    ZENK_VECTOR_OP V PackS16ToU8(V a, V b) { return _mm512_packus_epi16(a, b); }
    ZENK_VECTOR_OP V Lo8(V a, V b) { return _mm512_unpacklo_epi8(a, b); }
    ZENK_VECTOR_OP V Hi8(V a, V b) { return _mm512_unpackhi_epi8(a, b); }
    ZENK_VECTOR_OP V Lo16(V a, V b) { return _mm512_unpacklo_epi16(a, b); }
    ZENK_VECTOR_OP V Hi16(V a, V b) { return _mm512_unpackhi_epi16(a, b); }
    ZENK_VECTOR_OP V Lo32(V a, V b) { return _mm512_unpacklo_epi32(a, b); }
    ZENK_VECTOR_OP V Hi32(V a, V b) { return _mm512_unpackhi_epi32(a, b); }
    ZENK_VECTOR_OP V Lo64(V a, V b) { return _mm512_unpacklo_epi64(a, b); }

    // ---- Shuffles within each lane.
    template <int imm> ZENK_VECTOR_OP V Shuffle32(V v) { return _mm512_shuffle_epi32(v, static_cast<_MM_PERM_ENUM>(imm)); }
    template <int imm> ZENK_VECTOR_OP V ShuffleLo16(V v) { return _mm512_shufflelo_epi16(v, imm); }
    template <int imm> ZENK_VECTOR_OP V ShuffleHi16(V v) { return _mm512_shufflehi_epi16(v, imm); }
    ZENK_VECTOR_OP V ShuffleBytes(V v, V pattern) { return _mm512_shuffle_epi8(v, pattern); }
    ZENK_VECTOR_OP V KeepLow64(V v) { return _mm512_maskz_mov_epi64(0x55, v); }
};

using Avx512 = Avx512Lanes<4>;

}  // namespace zenk::ZENK_ISA
