// The 256-bit vector layer, for the kernels built with AVX2 flags only: two
// 128-bit lanes (vector_wide.h). Avx2Lanes<n> fills the first n.
#pragma once

#include <immintrin.h>

#include <utility>

#include "vector_wide.h"

namespace zenk::ZENK_ISA {

struct Avx2Register {
    using V = __m256i;
    static constexpr int kLanes = 2;

#define ZENK_MM(op) _mm256_##op
#define ZENK_SI(op) _mm256_##op##si256
#include "vector_x86_lanewise.inc"
    ZENK_VECTOR_OP V Set64(uint64_t x) { return _mm256_set1_epi64x(static_cast<long long>(x)); }
    ZENK_VECTOR_OP V Broadcast(__m128i lane) { return _mm256_broadcastsi128_si256(lane); }
    ZENK_VECTOR_OP V Set64x2(uint64_t low, uint64_t high) { return Broadcast(Vec128::Set64x2(low, high)); }
    template <int n> ZENK_VECTOR_OP V ShlBytes(V v) { return _mm256_slli_si256(v, n); }
    template <int n> ZENK_VECTOR_OP V ShrBytes(V v) { return _mm256_srli_si256(v, n); }
    template <int imm> ZENK_VECTOR_OP V Shuffle32(V v) { return _mm256_shuffle_epi32(v, imm); }
    ZENK_VECTOR_OP V KeepLow64(V v) { return _mm256_blend_epi32(_mm256_setzero_si256(), v, 0x33); }
    // Bytes of each lane picked by the pattern's bytes (a set top bit picks
    // zero): one instruction for what SSE2 does with shifts and masks.
    ZENK_VECTOR_OP V ShuffleBytes(V v, V pattern) { return _mm256_shuffle_epi8(v, pattern); }

    // ---- Lanes and whole registers.
    template <int j>
    ZENK_VECTOR_OP __m128i Lane(V v) {
        if constexpr (j == 0)
            return _mm256_castsi256_si128(v);
        else
            return _mm256_extracti128_si256(v, j);
    }
    ZENK_VECTOR_OP V Cast(__m128i lane) { return _mm256_castsi128_si256(lane); }
    ZENK_VECTOR_OP V Zext(__m128i lane) { return _mm256_zextsi128_si256(lane); }
    template <int j>
    ZENK_VECTOR_OP V Insert(V v, __m128i lane) { return _mm256_inserti128_si256(v, lane, j); }
    ZENK_VECTOR_OP V LoadWhole(const void* p) { return _mm256_loadu_si256(static_cast<const V*>(p)); }
    ZENK_VECTOR_OP void StoreWhole(void* p, V v) { _mm256_storeu_si256(static_cast<V*>(p), v); }
    ZENK_VECTOR_OP void StreamWhole(void* p, V v) { _mm256_stream_si256(static_cast<V*>(p), v); }
    ZENK_VECTOR_OP V Load64Packed(const void* p) {
        return _mm256_permute4x64_epi64(Zext(Vec128::LoadU(p)), 0xD8);
    }
    ZENK_VECTOR_OP void Store64Packed(void* p, V v) {
        Vec128::StoreU(p, _mm256_castsi256_si128(_mm256_permute4x64_epi64(v, 0x08)));
    }
    // ---- Byte moves in memory order (kernel/pixel_packing.h), as in
    // vector_avx512.h: dword permutes place each register's useful dwords,
    // blends join two registers' worth.
    ZENK_VECTOR_OP V Permute(V v, int a, int b, int c, int d, int e, int f, int g, int h) {
        return _mm256_permutevar8x32_epi32(v, _mm256_setr_epi32(a, b, c, d, e, f, g, h));
    }
    ZENK_VECTOR_OP void JoinTwelves(const V t[4], V out[3]) {
        out[0] = _mm256_blend_epi32(Permute(t[0], 0, 1, 2, 4, 5, 6, 0, 0), Permute(t[1], 0, 0, 0, 0, 0, 0, 0, 1), 0xC0);
        out[1] = _mm256_blend_epi32(Permute(t[1], 2, 4, 5, 6, 0, 0, 0, 0), Permute(t[2], 0, 0, 0, 0, 0, 1, 2, 4), 0xF0);
        out[2] = _mm256_blend_epi32(Permute(t[2], 5, 6, 0, 0, 0, 0, 0, 0), Permute(t[3], 0, 0, 0, 1, 2, 4, 5, 6), 0xFC);
    }
    ZENK_VECTOR_OP void SplitTwelves(const V w[3], V t[4]) {
        t[0] = Permute(w[0], 0, 1, 2, 0, 3, 4, 5, 0);
        t[1] = _mm256_blend_epi32(Permute(w[0], 6, 7, 0, 0, 0, 0, 0, 0), Permute(w[1], 0, 0, 0, 0, 1, 2, 3, 0), 0x74);
        t[2] = _mm256_blend_epi32(Permute(w[1], 4, 5, 6, 0, 7, 0, 0, 0), Permute(w[2], 0, 0, 0, 0, 0, 0, 1, 0), 0x60);
        t[3] = Permute(w[2], 2, 3, 4, 0, 5, 6, 7, 0);
    }
    ZENK_VECTOR_OP V DwordsToMemoryOrder(V v) { return Permute(v, 0, 4, 1, 5, 2, 6, 3, 7); }
    // Eight bytes to the low bytes of eight dwords.
    ZENK_VECTOR_OP V WidenBytes(const void* p) { return _mm256_cvtepu8_epi32(Vec128::Load64(p)); }

    // Register m of a block holds its 16-byte pieces 2m and 2m + 1; piece c
    // is lane c / k of vector c % k, and vector i is pieces i and k + i. One
    // lane exchange each way.
    template <int k>
    ZENK_VECTOR_OP void ToMemoryOrder(const V v[k], V w[k]) {
        [&]<int... m>(std::integer_sequence<int, m...>) ZENK_INLINE_LAMBDA {
            ((w[m] = _mm256_permute2x128_si256(v[2 * m % k], v[(2 * m + 1) % k],
                                                (2 * m / k) | (2 + (2 * m + 1) / k) << 4)),
             ...);
        }(std::make_integer_sequence<int, k>{});
    }
    template <int k>
    ZENK_VECTOR_OP void FromMemoryOrder(const V w[k], V v[k]) {
        [&]<int... i>(std::integer_sequence<int, i...>) ZENK_INLINE_LAMBDA {
            ((v[i] = _mm256_permute2x128_si256(w[i / 2], w[(k + i) / 2], (i % 2) | (2 + (k + i) % 2) << 4)), ...);
        }(std::make_integer_sequence<int, k>{});
    }
};

template <int kActive>
using Avx2Lanes = WideLanes<Avx2Register, kActive>;
using Avx2 = Avx2Lanes<2>;

}  // namespace zenk::ZENK_ISA
