// What the wide vector layers share: a register of several 128-bit lanes in
// which lane j holds what the baseline kernel's register holds in its block j.
// The lane-wise arithmetic comes from the register (vector_x86_lanewise.inc),
// so it computes the baseline's bytes by construction; only the loads and stores
// here know about lanes. Lane j of a stream is `step` bytes past lane j - 1,
// where `step` is what the stream moves per block of the baseline.
//
// WideLanes<R, n> fills the first n lanes of register R (Avx2Register,
// Avx512Register): all of them in the body of a line, fewer for the blocks
// left over, so that a leftover block reads and writes exactly the
// baseline kernel's bytes. A register R gives, besides the arithmetic:
//   Lane<j>(v), Cast(lane), Zext(lane),
//   Insert<j>(v, lane)                           single lanes (Cast leaves
//                                                the other lanes undefined)
//   LoadWhole(p), StoreWhole(p, v)               the whole register
//   Load64Packed(p), Store64Packed(p, v)         every lane's low 8 bytes,
//                                                when the lanes lie 8 bytes
//                                                apart
//   FromMemoryOrder<k>, ToMemoryOrder<k>         k whole registers of a block
//                                                of k consecutive vectors to
//                                                and from lane order
#pragma once

#include <immintrin.h>

#include <utility>

#include "vector_128.h"

#ifndef __AVX2__
#error "vector_wide.h belongs to the translation units built with AVX2 or AVX-512 flags"
#endif

namespace zenk::ZENK_ISA {

template <class R, int kActive>
struct WideLanes : R {
    static_assert(kActive >= 1 && kActive <= R::kLanes);
    using V = typename R::V;
    static constexpr int kActiveLanes = kActive;
    template <int n>
    using WithLanes = WideLanes<R, n>;

    // each.operator()<j>() for every filled lane j, in lane order.
    template <class Each>
    ZENK_VECTOR_OP void ForLanes(Each each) {
        [&]<int... j>(std::integer_sequence<int, j...>) ZENK_INLINE_LAMBDA {
            (each.template operator()<j>(), ...);
        }(std::make_integer_sequence<int, kActive>{});
    }

    // ---- Loads: lane j from p + j * step; a lane not filled is zero.
    template <class Load>
    ZENK_VECTOR_OP V Gather(const void* p, int32_t step, Load load) {
        const auto* b = static_cast<const uint8_t*>(p);
        // Lanes not filled must be zero; a register whose lanes are all
        // loaded need not be cleared first.
        V v = kActive == R::kLanes ? R::Cast(load(b)) : R::Zext(load(b));
        ForLanes([&]<int j>() ZENK_INLINE_LAMBDA {
            if constexpr (j > 0) v = R::template Insert<j>(v, load(b + j * step));
        });
        return v;
    }
    ZENK_VECTOR_OP V LoadU(const void* p, int32_t step) {
        if constexpr (kActive == R::kLanes) {
            if (step == 16) return R::LoadWhole(p);
        }
        return Gather(p, step, [](const uint8_t* b) ZENK_INLINE_LAMBDA { return Vec128::LoadU(b); });
    }
    ZENK_VECTOR_OP V Load64(const void* p, int32_t step) {
        if constexpr (kActive == R::kLanes) {
            if (step == 8) return R::Load64Packed(p);
        }
        return Gather(p, step, [](const uint8_t* b) ZENK_INLINE_LAMBDA { return Vec128::Load64(b); });
    }
    ZENK_VECTOR_OP V Load32(const void* p, int32_t step) {
        return Gather(p, step, [](const uint8_t* b) ZENK_INLINE_LAMBDA { return Vec128::Load32(b); });
    }
    ZENK_VECTOR_OP V Load16(const void* p, int32_t step) {
        return Gather(p, step, [](const uint8_t* b) ZENK_INLINE_LAMBDA { return Vec128::Load16(b); });
    }

    // ---- Stores: lane j to p + j * step, through the 128-bit store policy
    // (aligned, non-temporal or unaligned) or as the low 8/4 bytes.
    ZENK_VECTOR_OP Vector128 Lane0(V v) { return R::template Lane<0>(v); }
    template <class Each>
    ZENK_VECTOR_OP void Scatter(void* p, V v, int32_t step, Each each) {
        auto* b = static_cast<uint8_t*>(p);
        ForLanes([&]<int j>() ZENK_INLINE_LAMBDA { each(b + j * step, R::template Lane<j>(v)); });
    }
    // A whole register of consecutive bytes goes out in one store; streamed,
    // where it lies on a register boundary, so that it fills the
    // write-combining buffers a cache line at a time.
    template <class Store>
    ZENK_VECTOR_OP void Put(void* p, V v, int32_t step) {
        if constexpr (kActive == R::kLanes) {
            if (step == 16) {
                if constexpr (!Store::kStreaming) return R::StoreWhole(p, v);
                if ((reinterpret_cast<uintptr_t>(p) & (sizeof(V) - 1)) == 0) return R::StreamWhole(p, v);
            }
        }
        Scatter(p, v, step, [](uint8_t* b, Vector128 lane) ZENK_INLINE_LAMBDA { Store::Store(b, lane); });
    }
    ZENK_VECTOR_OP void Put64(void* p, V v, int32_t step) {
        if constexpr (kActive == R::kLanes) {
            if (step == 8) return R::Store64Packed(p, v);
        }
        Scatter(p, v, step, [](uint8_t* b, Vector128 lane) ZENK_INLINE_LAMBDA { Vec128::Put64(b, lane); });
    }
    ZENK_VECTOR_OP void Put32(void* p, V v, int32_t step) {
        Scatter(p, v, step, [](uint8_t* b, Vector128 lane) ZENK_INLINE_LAMBDA { Vec128::Put32(b, lane); });
    }
    // Two streams written lane by lane in turn (x's lane j, then y's), for
    // planes that may overlap: the later store wins as in the baseline kernel.
    template <class Store>
    ZENK_VECTOR_OP void PutLanesInTurn(void* p, V x, void* q, V y, int32_t step) {
        ForLanes([&]<int j>() ZENK_INLINE_LAMBDA {
            Store::Store(static_cast<uint8_t*>(p) + j * step, R::template Lane<j>(x));
            Store::Store(static_cast<uint8_t*>(q) + j * step, R::template Lane<j>(y));
        });
    }

    // ---- A block of k consecutive vectors, 16 k bytes: in memory lane 0's
    // vectors 0..k-1, then lane 1's, and so on. With every lane filled the
    // block moves as k whole registers and an exchange of lanes; otherwise,
    // and for streaming stores, lane by lane.
    template <int k>
    ZENK_VECTOR_OP void LoadBlock(const void* p, V v[k]) {
        const auto* bytes = static_cast<const uint8_t*>(p);
        if constexpr (kActive == R::kLanes) {
            V w[k];
            for (int m = 0; m < k; ++m) w[m] = R::LoadWhole(bytes + sizeof(V) * m);
            R::template FromMemoryOrder<k>(w, v);
        } else {
            for (int i = 0; i < k; ++i) v[i] = LoadU(bytes + 16 * i, 16 * k);
        }
    }
    template <class Store, int k>
    ZENK_VECTOR_OP void PutBlock(void* p, const V v[k]) {
        auto* bytes = static_cast<uint8_t*>(p);
        // Streamed, only a block that lies on a register boundary goes in
        // memory order: 16-byte streaming stores of the other blocks measured
        // faster in lane order (3840x2160, AMD EPYC).
        if (kActive == R::kLanes && (!Store::kStreaming || (reinterpret_cast<uintptr_t>(p) & (sizeof(V) - 1)) == 0)) {
            V w[k];
            R::template ToMemoryOrder<k>(v, w);
            for (int m = 0; m < k; ++m) Put<Store>(bytes + sizeof(V) * m, w[m], 16);
        } else {
            for (int i = 0; i < k; ++i) Put<Store>(bytes + 16 * i, v[i], 16 * k);
        }
    }
};

}  // namespace zenk::ZENK_ISA
