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
    // A block's bytes are the 32 of two registers, a and then b: lane j of
    // each to p + 32 j. With both lanes filled that is two whole-register
    // stores after two lane exchanges.
    template <class Store>
    ZENK_VECTOR_OP void PutPair(void* p, V a, V b) {
        auto* bytes = static_cast<uint8_t*>(p);
        if constexpr (kActive == 2 && !Store::kStreaming) {
            _mm256_storeu_si256(reinterpret_cast<V*>(bytes), _mm256_permute2x128_si256(a, b, 0x20));
            _mm256_storeu_si256(reinterpret_cast<V*>(bytes + 32), _mm256_permute2x128_si256(a, b, 0x31));
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
