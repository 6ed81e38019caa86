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
    // A block's bytes are the 32 of two registers, a and then b: lane j of
    // each to p + 32 j. With every lane filled that is two whole-register
    // stores after two lane interleaves.
    template <class Store>
    ZENK_VECTOR_OP void PutPair(void* p, V a, V b) {
        auto* bytes = static_cast<uint8_t*>(p);
        if constexpr (kActive == 4 && !Store::kStreaming) {
            const V low = _mm512_permutex2var_epi64(a, _mm512_set_epi64(11, 10, 3, 2, 9, 8, 1, 0), b);
            const V high = _mm512_permutex2var_epi64(a, _mm512_set_epi64(15, 14, 7, 6, 13, 12, 5, 4), b);
            _mm512_storeu_si512(bytes, low);
            _mm512_storeu_si512(bytes + 64, high);
        } else {
            Put<Store>(bytes, a, 32);
            Put<Store>(bytes + 16, b, 32);
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
