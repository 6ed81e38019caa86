// Kernel plumbing shared by every conversion family: the kernel signature,
// the four variants, the store policies that distinguish them, and the
// alignment tests with which the exports choose among them.
#pragma once

#include <cstdint>
#include <cstring>

#include "vector_sse2.h"
#include "zenk_transcoder.h"

namespace zenk {

using Request = ZenkConversionRequest;
using Kernel = void (*)(const Request*);

// A kernel's entry function: the walk, the format's per-unit and per-block
// calls and the arithmetic all inlined into one body. Only then do the
// running pointers and the call's constants live in registers for the whole
// picture; a call left out of line makes the line's state escape to memory,
// and every store of a block (a byte store may alias anything) then forces
// the pointers to be written back and read again.
#define ZENK_KERNEL_ENTRY [[gnu::flatten]]

// Variants: 0 aligned + ordinary stores, 1 aligned + non-temporal stores,
// 2 any alignment + ordinary stores, 3 any alignment + non-temporal stores.
enum Variant : int {
    kAlignedCached = 0,
    kAlignedStreaming = 1,
    kAnyCached = 2,
    kAnyStreaming = 3,
};

inline int VariantFor(bool aligned, const Request& r) {
    return (aligned ? kAlignedCached : kAnyCached) + (r.use_streaming_stores ? 1 : 0);
}

// The four kernels of one conversion, indexed by variant.
struct KernelQuad {
    Kernel variant[4];
};

// What distinguishes the four variants of a kernel. The arithmetic of a
// kernel is written once against this policy; loads, stores and the line
// walk (whole blocks only, or head pairs, body and tail) follow from it.
template <bool kAlignedPicture, bool kNonTemporal>
struct Access {
    static constexpr bool kAligned = kAlignedPicture;
    static constexpr bool kStreaming = kNonTemporal;

    // A 16-byte store to a 16-byte aligned destination.
    static inline void Store(void* p, Sse2::V v) {
        if constexpr (kNonTemporal)
            Sse2::Stream(p, v);
        else
            Sse2::Store(p, v);
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
    static inline void Store(void* p, Sse2::V v) { Sse2::StoreU(p, v); }
};

// A plane whose alignment no export tests: each 16-byte store is aligned
// where the address allows, unaligned elsewhere.
struct CheckedStore {
    static inline void Store(void* p, Sse2::V v) {
        if ((reinterpret_cast<uintptr_t>(p) & 15u) == 0)
            Sse2::Store(p, v);
        else
            Sse2::StoreU(p, v);
    }
};

using AlignedCached = Access<true, false>;
using AlignedStreaming = Access<true, true>;
using AnyCached = Access<false, false>;
using AnyStreaming = Access<false, true>;

// Builds the quad of a kernel written as `template <class A> void K(const Request*)`.
#define ZENK_KERNEL_QUAD(kernel_template, ...)                                            \
    ::zenk::KernelQuad {                                                                  \
        {                                                                                 \
            &kernel_template<__VA_ARGS__ __VA_OPT__(, )::zenk::AlignedCached>,            \
                &kernel_template<__VA_ARGS__ __VA_OPT__(, )::zenk::AlignedStreaming>,     \
                &kernel_template<__VA_ARGS__ __VA_OPT__(, )::zenk::AnyCached>,            \
                &kernel_template<__VA_ARGS__ __VA_OPT__(, )::zenk::AnyStreaming>          \
        }                                                                                 \
    }

// One pair-mode kernel serves all four variants of its column: the request
// chooses between its cached and its streaming instantiation.
template <Kernel kCached, Kernel kStreaming>
void StoresAsRequested(const Request* r) {
    if (r->use_streaming_stores)
        kStreaming(r);
    else
        kCached(r);
}

inline uint32_t AddressResidue16(const void* p) {
    return static_cast<uint32_t>(reinterpret_cast<uintptr_t>(p) & 15u);
}
inline bool Aligned16(const void* p) { return AddressResidue16(p) == 0; }

// Pitches and widths are tested as unsigned numbers: a negative pitch is a
// multiple of 48 only if its 32-bit pattern is.
inline bool MultipleOf(int32_t value, uint32_t unit) {
    return static_cast<uint32_t>(value) % unit == 0;
}

// Byte offset by a signed 32-bit amount; the running pointers of a kernel
// move by line skips that may be negative.
template <class T>
inline T* Advance(T* p, int32_t bytes) {
    return reinterpret_cast<T*>(reinterpret_cast<uintptr_t>(p) + static_cast<intptr_t>(bytes));
}

// One side of an export's alignment test: plane 16-aligned, pitch a
// multiple of `stride_unit` (0: pitch not tested), and the line length
// (`width`, or `src_width` where the export tests that) a multiple of
// `width_unit`.
struct SideTest {
    uint32_t stride_unit;
    uint32_t width_unit;
    bool uses_src_width;
};

struct AlignmentTest {
    bool tests_source;
    SideTest source;
    bool tests_destination;
    SideTest destination;
};

inline bool PassesSide(const uint8_t* plane, int32_t stride, int32_t line, const SideTest& t) {
    return Aligned16(plane) && (t.stride_unit == 0 || MultipleOf(stride, t.stride_unit)) &&
           MultipleOf(line, t.width_unit);
}

inline bool Passes(const AlignmentTest& t, const Request& r) {
    if (t.tests_source &&
        !PassesSide(r.src_plane, r.src_stride, t.source.uses_src_width ? r.src_width : r.width, t.source))
        return false;
    if (t.tests_destination &&
        !PassesSide(r.dst_plane, r.dst_stride, t.destination.uses_src_width ? r.src_width : r.width,
                    t.destination))
        return false;
    return true;
}

constexpr AlignmentTest DestinationTest(uint32_t stride_unit, uint32_t width_unit) {
    return {false, {0, 0, false}, true, {stride_unit, width_unit, false}};
}
constexpr AlignmentTest BothSidesTest(SideTest source, SideTest destination) {
    return {true, source, true, destination};
}

// The fixed masks of the five table exports, whichever side is the 16-bit or
// the 32-bit one.
inline constexpr AlignmentTest kTableExportTest = BothSidesTest({32, 4, false}, {16, 8, false});

}  // namespace zenk

namespace zenk {

// ---- Memory traffic of pictures larger than the cache -------------------------------

// A UHD picture does not fit the cache, and one thread's own loads (and the
// reads for ownership of its ordinary stores) do not keep enough lines in
// flight to use the memory's bandwidth. A kernel's block asks for its source
// and, unless it streams, its destination this far ahead: 16 cache lines. A
// prefetch past a plane's end never faults.
inline constexpr int32_t kPrefetchAhead = 1024;

template <class A>
inline void PrefetchAhead(const void* src, const void* dst) {
    Prefetch(Advance(static_cast<const uint8_t*>(src), kPrefetchAhead));
    if constexpr (!A::kStreaming) Prefetch(Advance(static_cast<const uint8_t*>(dst), kPrefetchAhead));
}

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

}  // namespace zenk
