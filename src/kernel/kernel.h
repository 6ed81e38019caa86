// Kernel plumbing shared by every conversion family, built at each
// instruction-set level: the store policies that distinguish the four
// variants, the entry of a kernel, and the memory traffic of large pictures.
#pragma once

#include <cstdint>
#include <cstring>
#include <utility>

#include "kernel_table.h"
#include "vector_128.h"

namespace zenk::ZENK_ISA {

// A kernel's entry function: the walk, the format's per-unit and per-block
// calls and the arithmetic all inlined into one body. Only then do the
// running pointers and the call's constants live in registers for the whole
// picture; a call left out of line makes the line's state escape to memory,
// and every store of a block (a byte store may alias anything) then forces
// the pointers to be written back and read again.
#define ZENK_KERNEL_ENTRY [[gnu::flatten]]

// What distinguishes the four variants of a kernel. The arithmetic of a
// kernel is written once against this policy; loads, stores and the line
// walk (whole blocks only, or head pairs, body and tail) follow from it.
template <bool kAlignedPicture, bool kNonTemporal>
struct Access {
    static constexpr bool kAligned = kAlignedPicture;
    static constexpr bool kStreaming = kNonTemporal;

    // A 16-byte store to a 16-byte aligned destination.
    static inline void Store(void* p, Vec128::V v) {
        if constexpr (kNonTemporal)
            Vec128::Stream(p, v);
        else
            Vec128::Store(p, v);
    }

    // After the last store: the fence that publishes non-temporal stores.
    static inline void Finish() {
        if constexpr (kNonTemporal) StoreFence();
    }
};

// Blocks of a line that starts off a 16-byte boundary: the same bytes
// through unaligned ordinary stores, instead of a fault.
struct UnalignedStore {
    static constexpr bool kStreaming = false;
    static inline void Store(void* p, Vec128::V v) { Vec128::StoreU(p, v); }
};

// A plane whose alignment no export tests: each 16-byte store is aligned
// where the address allows, unaligned elsewhere.
struct CheckedStore {
    static constexpr bool kStreaming = false;
    static inline void Store(void* p, Vec128::V v) {
        if ((reinterpret_cast<uintptr_t>(p) & 15u) == 0)
            Vec128::Store(p, v);
        else
            Vec128::StoreU(p, v);
    }
};

using AlignedCached = Access<true, false>;
using AlignedStreaming = Access<true, true>;
using AnyCached = Access<false, false>;
using AnyStreaming = Access<false, true>;

// One pair-mode kernel serves all four variants of its column: the request
// chooses between its cached and its streaming instantiation.
template <Kernel kCached, Kernel kStreaming>
void StoresAsRequested(const Request* r) {
    if (r->use_streaming_stores)
        kStreaming(r);
    else
        kCached(r);
}

// The n vectors of a call's coefficient block, in every lane of the layer
// S: the block holds the selector words and flags given, then pointers to n
// vectors on the kernel's stack, which its family's setup routine writes
// (those it leaves alone stay zero). A family names them by their places in
// the block.
template <class S, size_t n>
struct CallVectors {
    typename S::V v[n];

    template <class Block, class... Selectors>
    explicit CallVectors(void (*setup)(Block*), Selectors... selectors) {
        Vector128 filled[n] = {};
        [&]<size_t... i>(std::index_sequence<i...>) {
            Block block{selectors..., &filled[i]...};
            setup(&block);
        }(std::make_index_sequence<n>{});
        for (size_t i = 0; i < n; ++i) v[i] = S::Broadcast(filled[i]);
    }
    const typename S::V& operator[](size_t i) const { return v[i]; }
};

inline uint32_t AddressResidue16(const void* p) {
    return static_cast<uint32_t>(reinterpret_cast<uintptr_t>(p) & 15u);
}
inline bool Aligned16(const void* p) { return AddressResidue16(p) == 0; }

// Byte offset by a signed 32-bit amount; the running pointers of a kernel
// move by line skips that may be negative.
template <class T>
inline T* Advance(T* p, int32_t bytes) {
    return reinterpret_cast<T*>(reinterpret_cast<uintptr_t>(p) + static_cast<intptr_t>(bytes));
}

// ---- Streamed line ends -------------------------------------------------------------

// The head or tail bytes of a streaming kernel's line. An ordinary store
// into a cache line that the blocks' non-temporal stores also fill evicts
// the half-filled line from the write-combining buffer, which costs more
// than the rest of the line's bytes; so the bytes go out as 4-byte
// non-temporal stores where the address allows, single bytes around them.
inline void StreamBytes(uint8_t* dst, const uint8_t* src, int32_t count) {
    int32_t i = 0;
    for (; i < count && (reinterpret_cast<uintptr_t>(dst + i) & 3) != 0; ++i) dst[i] = src[i];
    for (; i + 4 <= count; i += 4) {
        int32_t four;
        std::memcpy(&four, src + i, 4);
        Stream32(dst + i, four);
    }
    for (; i < count; ++i) dst[i] = src[i];
}

}  // namespace zenk::ZENK_ISA
