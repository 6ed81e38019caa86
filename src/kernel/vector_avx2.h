// The 256-bit vector layer, for the kernels built with AVX2 flags only. A
// register holds two 128-bit lanes, and lane j holds what the SSE2 kernel's
// register holds in its block j: every arithmetic operation acts within a
// lane exactly as its Sse2 namesake, so the bytes are the SSE2 kernel's by
// construction. Only the loads and stores know about lanes: lane j of a
// stream is `step` bytes past lane j - 1, where `step` is what the stream
// moves per SSE2 block.
//
// Avx2Lanes<n> fills the first n lanes (n = 2 for a body of whole register
// pairs, 1 for a block left over), so that a leftover SSE2 block reads and
// writes exactly the SSE2 kernel's bytes.
#pragma once

#include <immintrin.h>

#include <utility>

#include "vector_sse2.h"

#ifndef __AVX2__
#error "vector_avx2.h belongs to the translation units built with AVX2 flags"
#endif

namespace zenk::ZENK_ISA {

template <int kActive>
struct Avx2Lanes {
    static_assert(kActive == 1 || kActive == 2);
    using V = __m256i;
    static constexpr int kLanes = 2;
    static constexpr int kActiveLanes = kActive;
    template <int n>
    using WithLanes = Avx2Lanes<n>;

    // ---- Loads: lane j from p + j * step; a lane not filled is zero.
    ZENK_VECTOR_OP V Lanes(__m128i lane0, __m128i lane1) {
        return _mm256_inserti128_si256(_mm256_castsi128_si256(lane0), lane1, 1);
    }
    template <class Load>
    ZENK_VECTOR_OP V Gather(const void* p, int32_t step, Load load) {
        const auto* b = static_cast<const uint8_t*>(p);
        if constexpr (kActive == 1)
            return _mm256_zextsi128_si256(load(b));
        else
            return Lanes(load(b), load(b + step));
    }
    ZENK_VECTOR_OP V LoadU(const void* p, int32_t step) {
        if constexpr (kActive == 2) {
            if (step == 16) return _mm256_loadu_si256(static_cast<const V*>(p));
        }
        return Gather(p, step, [](const uint8_t* b) { return Sse2::LoadU(b); });
    }
    ZENK_VECTOR_OP V Load64(const void* p, int32_t step) {
        if constexpr (kActive == 2) {
            // Both lanes' bytes in one load, then each to its lane.
            if (step == 8) return _mm256_permute4x64_epi64(_mm256_zextsi128_si256(Sse2::LoadU(p)), 0xD8);
        }
        return Gather(p, step, [](const uint8_t* b) { return Sse2::Load64(b); });
    }
    ZENK_VECTOR_OP V Load32(const void* p, int32_t step) {
        return Gather(p, step, [](const uint8_t* b) { return Sse2::Load32(b); });
    }
    ZENK_VECTOR_OP V Load16(const void* p, int32_t step) {
        return Gather(p, step, [](const uint8_t* b) { return Sse2::Load16(b); });
    }

    // ---- Stores: lane j to p + j * step, through the 128-bit store policy
    // (aligned, non-temporal or unaligned) or as the low 8/4 bytes.
    ZENK_VECTOR_OP __m128i Lane0(V v) { return _mm256_castsi256_si128(v); }
    ZENK_VECTOR_OP __m128i Lane1(V v) { return _mm256_extracti128_si256(v, 1); }
    template <class Store>
    ZENK_VECTOR_OP void Put(void* p, V v, int32_t step) {
        auto* b = static_cast<uint8_t*>(p);
        if constexpr (kActive == 2 && !Store::kStreaming) {
            if (step == 16) {
                _mm256_storeu_si256(static_cast<V*>(p), v);
                return;
            }
        }
        Store::Store(b, Lane0(v));
        if constexpr (kActive == 2) Store::Store(b + step, Lane1(v));
    }
    // A block of k consecutive vectors, 16 k bytes: in memory lane 0's
    // vectors 0..k-1, then lane 1's. With both lanes filled the block moves
    // as k whole registers, each put together from two lanes by one
    // exchange (register m holds the block's 16-byte pieces 2m and 2m + 1;
    // piece c is lane c / k of vector c % k). Otherwise, and for streaming
    // stores, lane by lane.
    template <int k, int m>
    ZENK_VECTOR_OP V Gathered(const V* v) {
        constexpr int a = 2 * m, b = 2 * m + 1;
        return _mm256_permute2x128_si256(v[a % k], v[b % k], (a / k) | (2 + b / k) << 4);
    }
    template <int k>
    ZENK_VECTOR_OP void LoadBlock(const void* p, V v[k]) {
        const auto* bytes = static_cast<const uint8_t*>(p);
        if constexpr (kActive == 2) {
            V w[k];
            for (int m = 0; m < k; ++m) w[m] = _mm256_loadu_si256(reinterpret_cast<const V*>(bytes + 32 * m));
            // Vector i is pieces i and k + i: the inverse of Gathered.
            [&]<int... i>(std::integer_sequence<int, i...>) {
                ((v[i] = _mm256_permute2x128_si256(w[i / 2], w[(k + i) / 2], (i % 2) | (2 + (k + i) % 2) << 4)), ...);
            }(std::make_integer_sequence<int, k>{});
        } else {
            for (int i = 0; i < k; ++i) v[i] = LoadU(bytes + 16 * i, 16 * k);
        }
    }
    template <class Store, int k>
    ZENK_VECTOR_OP void PutBlock(void* p, const V v[k]) {
        auto* bytes = static_cast<uint8_t*>(p);
        if constexpr (kActive == 2 && !Store::kStreaming) {
            [&]<int... m>(std::integer_sequence<int, m...>) {
                (_mm256_storeu_si256(reinterpret_cast<V*>(bytes + 32 * m), Gathered<k, m>(v)), ...);
            }(std::make_integer_sequence<int, k>{});
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
        Store::Store(a, Lane0(x));
        Store::Store(b, Lane0(y));
        if constexpr (kActive == 2) {
            Store::Store(a + step, Lane1(x));
            Store::Store(b + step, Lane1(y));
        }
    }
    ZENK_VECTOR_OP void Put64(void* p, V v, int32_t step) {
        auto* b = static_cast<uint8_t*>(p);
        Sse2::Store64(b, Lane0(v));
        if constexpr (kActive == 2) Sse2::Store64(b + step, Lane1(v));
    }
    ZENK_VECTOR_OP void Put32(void* p, V v, int32_t step) {
        auto* b = static_cast<uint8_t*>(p);
        Sse2::Store32(b, Lane0(v));
        if constexpr (kActive == 2) Sse2::Store32(b + step, Lane1(v));
    }

    // ---- Constants: a 128-bit pattern in every lane, or repeated elements.
    ZENK_VECTOR_OP V Broadcast(__m128i lane) { return _mm256_broadcastsi128_si256(lane); }
    ZENK_VECTOR_OP V Zero() { return _mm256_setzero_si256(); }
    ZENK_VECTOR_OP V Set8(uint8_t x) { return _mm256_set1_epi8(static_cast<char>(x)); }
    ZENK_VECTOR_OP V Set16(int32_t x) { return _mm256_set1_epi16(static_cast<int16_t>(x)); }
    ZENK_VECTOR_OP V Set32(uint32_t x) { return _mm256_set1_epi32(static_cast<int>(x)); }
    ZENK_VECTOR_OP V Set64(uint64_t x) { return _mm256_set1_epi64x(static_cast<long long>(x)); }
    ZENK_VECTOR_OP V Set64x2(uint64_t low, uint64_t high) { return Broadcast(Sse2::Set64x2(low, high)); }

    // ---- Bitwise.
    ZENK_VECTOR_OP V And(V a, V b) { return _mm256_and_si256(a, b); }
    ZENK_VECTOR_OP V AndNot(V not_a, V b) { return _mm256_andnot_si256(not_a, b); }
    ZENK_VECTOR_OP V Or(V a, V b) { return _mm256_or_si256(a, b); }

    // ---- Arithmetic.
    ZENK_VECTOR_OP V Add8(V a, V b) { return _mm256_add_epi8(a, b); }
    ZENK_VECTOR_OP V Add16(V a, V b) { return _mm256_add_epi16(a, b); }
    ZENK_VECTOR_OP V Sub16(V a, V b) { return _mm256_sub_epi16(a, b); }
    ZENK_VECTOR_OP V Add32(V a, V b) { return _mm256_add_epi32(a, b); }
    ZENK_VECTOR_OP V Min16(V a, V b) { return _mm256_min_epi16(a, b); }
    ZENK_VECTOR_OP V Max16(V a, V b) { return _mm256_max_epi16(a, b); }
    ZENK_VECTOR_OP V MinU8(V a, V b) { return _mm256_min_epu8(a, b); }
    ZENK_VECTOR_OP V MaxU8(V a, V b) { return _mm256_max_epu8(a, b); }
    ZENK_VECTOR_OP V MulAdd16(V a, V b) { return _mm256_madd_epi16(a, b); }

    // ---- Shifts.
    template <int n> ZENK_VECTOR_OP V Shl16(V v) { return _mm256_slli_epi16(v, n); }
    template <int n> ZENK_VECTOR_OP V Shr16(V v) { return _mm256_srli_epi16(v, n); }
    template <int n> ZENK_VECTOR_OP V Sar16(V v) { return _mm256_srai_epi16(v, n); }
    template <int n> ZENK_VECTOR_OP V Shl32(V v) { return _mm256_slli_epi32(v, n); }
    template <int n> ZENK_VECTOR_OP V Shr32(V v) { return _mm256_srli_epi32(v, n); }
    template <int n> ZENK_VECTOR_OP V Sar32(V v) { return _mm256_srai_epi32(v, n); }
    template <int n> ZENK_VECTOR_OP V Shl64(V v) { return _mm256_slli_epi64(v, n); }
    template <int n> ZENK_VECTOR_OP V Shr64(V v) { return _mm256_srli_epi64(v, n); }
    // Each lane shifted by bytes on its own.
    template <int n> ZENK_VECTOR_OP V ShlBytes(V v) { return _mm256_slli_si256(v, n); }
    template <int n> ZENK_VECTOR_OP V ShrBytes(V v) { return _mm256_srli_si256(v, n); }

    // ---- Packs and interleaves, within each lane.
    ZENK_VECTOR_OP V PackS32To16(V a, V b) { return _mm256_packs_epi32(a, b); }
    ZENK_VECTOR_OP V PackS16ToU8(V a, V b) { return _mm256_packus_epi16(a, b); }
    ZENK_VECTOR_OP V Lo8(V a, V b) { return _mm256_unpacklo_epi8(a, b); }
    ZENK_VECTOR_OP V Hi8(V a, V b) { return _mm256_unpackhi_epi8(a, b); }
    ZENK_VECTOR_OP V Lo16(V a, V b) { return _mm256_unpacklo_epi16(a, b); }
    ZENK_VECTOR_OP V Hi16(V a, V b) { return _mm256_unpackhi_epi16(a, b); }
    ZENK_VECTOR_OP V Lo32(V a, V b) { return _mm256_unpacklo_epi32(a, b); }
    ZENK_VECTOR_OP V Hi32(V a, V b) { return _mm256_unpackhi_epi32(a, b); }
    ZENK_VECTOR_OP V Lo64(V a, V b) { return _mm256_unpacklo_epi64(a, b); }

    // ---- Shuffles within each lane.
    template <int imm> ZENK_VECTOR_OP V Shuffle32(V v) { return _mm256_shuffle_epi32(v, imm); }
    template <int imm> ZENK_VECTOR_OP V ShuffleLo16(V v) { return _mm256_shufflelo_epi16(v, imm); }
    template <int imm> ZENK_VECTOR_OP V ShuffleHi16(V v) { return _mm256_shufflehi_epi16(v, imm); }
    // Bytes of each lane picked by the pattern's bytes (a set top bit picks
    // zero): one instruction for what SSE2 does with shifts and masks.
    ZENK_VECTOR_OP V ShuffleBytes(V v, V pattern) { return _mm256_shuffle_epi8(v, pattern); }
    ZENK_VECTOR_OP V KeepLow64(V v) { return _mm256_blend_epi32(_mm256_setzero_si256(), v, 0x33); }
};

using Avx2 = Avx2Lanes<2>;

}  // namespace zenk::ZENK_ISA
