// The baseline vector layer, Vec128: the lane-wise operations the kernels
// are written in, on one 128-bit register. Every operation acts within a
// 128-bit lane, so a wider layer is several Vec128 lanes side by side and
// computes the same bytes; the order of the lanes matters only where bytes
// enter and leave registers (the loads and stores). README.md in this folder
// says what a layer provides.
//
// The layer is written with the SSE2 instruction set, the one every x86
// processor has. x86 compiles it natively. Other processors compile the same
// intrinsics through SIMDe, which gives each one its x86 result bit for bit
// (on NEON where it can, in portable C elsewhere), so a picture converts to
// the same bytes on every architecture. There, non-temporal stores are
// ordinary stores and the store fence a full memory fence. A native layer
// for another processor would define
// Vec128 and the memory-order helpers below in a header of its own, chosen
// here in place of this one.
//
// This is the only file that includes the baseline instruction set's
// header; the memory-order helpers (string copy, non-temporal 4-byte store,
// store fence) live here with it.
#pragma once

#if defined(__x86_64__) || defined(__i386__) || defined(_M_X64) || defined(_M_IX86)
#include <emmintrin.h>
#else
#define SIMDE_ENABLE_NATIVE_ALIASES
#include <simde/x86/sse2.h>
#endif

#include <cstdint>
#include <cstring>

#include "kernel_table.h"

namespace zenk {

// A 16-byte vector of the baseline layer: what the coefficient blocks point
// to, the same at every level.
using Vector128 = __m128i;

}  // namespace zenk

// Every operation is forced inline: a kernel is a few hundred of them, and
// the compiler's inlining budget must go to the arithmetic built on them.
#define ZENK_VECTOR_OP [[gnu::always_inline]] static inline
// The same for the per-pixel arithmetic of a block, so that a kernel's
// constants stay in registers across its line.
#define ZENK_ARITHMETIC [[gnu::always_inline]] inline
// The same for a lambda the layers and the walk call over a compile-time
// sequence of lanes or streams: GCC's flattening of a kernel leaves such a
// lambda out of line now and then, a call per block.
#define ZENK_INLINE_LAMBDA __attribute__((always_inline))

namespace zenk::ZENK_ISA {

struct Vec128 {
    using V = Vector128;
    // One 128-bit lane; the wider layers have the same operations over
    // several (vector_avx2.h), and the kernels are written for either.
    static constexpr int kLanes = 1;
    static constexpr int kActiveLanes = 1;
    template <int>
    using WithLanes = Vec128;

    // ---- Loads: 16 bytes at any address, the low 8/4/2 bytes (rest zero).
    // The kernels are written in lane-wise forms: a stream that moves `step`
    // bytes per block puts a wider layer's next lane there; one lane has no
    // next, and ignores it.
    ZENK_VECTOR_OP V LoadU(const void* p, int32_t = 0) { return _mm_loadu_si128(static_cast<const V*>(p)); }
    ZENK_VECTOR_OP V Load64(const void* p, int32_t = 0) { return _mm_loadl_epi64(static_cast<const V*>(p)); }
    ZENK_VECTOR_OP V Load32(const void* p, int32_t = 0) {
        int32_t v;
        std::memcpy(&v, p, 4);
        return _mm_cvtsi32_si128(v);
    }
    ZENK_VECTOR_OP V Load16(const void* p, int32_t = 0) {
        uint16_t v;
        std::memcpy(&v, p, 2);
        return _mm_cvtsi32_si128(v);
    }

    // ---- Stores: aligned, any address, non-temporal (aligned), low 8/4
    // bytes. Put stores through a store policy (kernel.h).
    ZENK_VECTOR_OP void Store(void* p, V v) { _mm_store_si128(static_cast<V*>(p), v); }
    ZENK_VECTOR_OP void StoreU(void* p, V v) { _mm_storeu_si128(static_cast<V*>(p), v); }
    ZENK_VECTOR_OP void Stream(void* p, V v) { _mm_stream_si128(static_cast<V*>(p), v); }
    template <class Store>
    ZENK_VECTOR_OP void Put(void* p, V v, int32_t) { Store::Store(p, v); }
    ZENK_VECTOR_OP void Put64(void* p, V v, int32_t = 0) { _mm_storel_epi64(static_cast<V*>(p), v); }
    ZENK_VECTOR_OP void Put32(void* p, V v, int32_t = 0) {
        const int32_t bits = _mm_cvtsi128_si32(v);
        std::memcpy(p, &bits, 4);
    }
    ZENK_VECTOR_OP int32_t Low32(V v) { return _mm_cvtsi128_si32(v); }
    // A block of k consecutive vectors: v[i] from or to p + 16 i.
    template <int k>
    ZENK_VECTOR_OP void LoadBlock(const void* p, V v[k]) {
        for (int i = 0; i < k; ++i) v[i] = LoadU(static_cast<const uint8_t*>(p) + 16 * i);
    }
    template <class Store, int k>
    ZENK_VECTOR_OP void PutBlock(void* p, const V v[k]) {
        for (int i = 0; i < k; ++i) Store::Store(static_cast<uint8_t*>(p) + 16 * i, v[i]);
    }
    ZENK_VECTOR_OP V Broadcast(V lane) { return lane; }
    ZENK_VECTOR_OP V Lane0(V v) { return v; }

    // ---- The lane-wise operations (vector_x86_lanewise.inc), and the rest
    // that differ in name from width to width.
#define ZENK_MM(op) _mm_##op
#define ZENK_SI(op) _mm_##op##si128
#include "vector_x86_lanewise.inc"
    ZENK_VECTOR_OP V Set64(uint64_t x) { return _mm_set1_epi64x(static_cast<long long>(x)); }
    // Low and high 64-bit halves of a 128-bit block.
    ZENK_VECTOR_OP V Set64x2(uint64_t low, uint64_t high) {
        return _mm_set_epi64x(static_cast<long long>(high), static_cast<long long>(low));
    }
    // Whole 128-bit block shifted by bytes, zeros shifted in.
    template <int n> ZENK_VECTOR_OP V ShlBytes(V v) { return _mm_slli_si128(v, n); }
    template <int n> ZENK_VECTOR_OP V ShrBytes(V v) { return _mm_srli_si128(v, n); }

    // Dwords of a block; the low 64 bits with the high ones cleared.
    template <int imm> ZENK_VECTOR_OP V Shuffle32(V v) { return _mm_shuffle_epi32(v, imm); }
    ZENK_VECTOR_OP V KeepLow64(V v) { return _mm_move_epi64(v); }
};

// Shuffle selector: element 0 from a, 1 from b, 2 from c, 3 from d.
constexpr int Pick(int a, int b, int c, int d) { return d << 6 | c << 4 | b << 2 | a; }

// ---- Memory order ------------------------------------------------------------------------


// A 4-byte non-temporal store; any address.
inline void Stream32(void* p, int32_t bits) { _mm_stream_si32(static_cast<int*>(p), bits); }

// `count` bytes copied as they are, in one run: the processor's string copy
// on x86, which moves long runs faster than vector loads and ordinary stores
// do (it writes whole cache lines without reading them first); memcpy
// elsewhere.
inline void CopyRun(uint8_t* dst, const uint8_t* src, size_t count) {
#if (defined(__x86_64__) || defined(__i386__)) && defined(__GNUC__)
    __asm__ volatile("rep movsb" : "+D"(dst), "+S"(src), "+c"(count) : : "memory");
#else
    std::memcpy(dst, src, count);
#endif
}

// `count` bytes of `value`, in one run: the processor's string store on x86
// (whole cache lines without reading them first), memset elsewhere.
inline void FillRun(uint8_t* dst, uint8_t value, size_t count) {
#if (defined(__x86_64__) || defined(__i386__)) && defined(__GNUC__)
    __asm__ volatile("rep stosb" : "+D"(dst), "+c"(count) : "a"(value) : "memory");
#else
    std::memset(dst, value, count);
#endif
}

// Non-temporal stores are weakly ordered; the fence makes them visible to
// any thread the host signals after the call returns.
inline void StoreFence() { _mm_sfence(); }

}  // namespace zenk::ZENK_ISA
