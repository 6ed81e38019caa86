// Kernel plumbing shared by every conversion family: the kernel signature,
// the four variants, the store and load policies that distinguish them, and
// the alignment tests with which the exports choose among them.
#pragma once

#include "frame/vector.h"

#include <cstdint>
#include <cstring>

#include "zenk_transcoder.h"

namespace zenk {

using Request = ZenkConversionRequest;
using Kernel = void (*)(const Request*);

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
    static inline void Store(void* p, __m128i v) {
        if constexpr (kNonTemporal)
            _mm_stream_si128(static_cast<__m128i*>(p), v);
        else
            _mm_store_si128(static_cast<__m128i*>(p), v);
    }

    // Non-temporal stores are weakly ordered; the fence makes the picture
    // visible to any thread the host signals after the call returns.
    static inline void Finish() {
        if constexpr (kNonTemporal) _mm_sfence();
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

// Unaligned loads cost nothing extra on aligned data and keep a kernel safe
// where its export tests only the destination.
inline __m128i LoadU(const void* p) { return _mm_loadu_si128(static_cast<const __m128i*>(p)); }
inline __m128i Load64(const void* p) { return _mm_loadl_epi64(static_cast<const __m128i*>(p)); }
inline void Store64(void* p, __m128i v) { _mm_storel_epi64(static_cast<__m128i*>(p), v); }
inline void StoreU(void* p, __m128i v) { _mm_storeu_si128(static_cast<__m128i*>(p), v); }

inline void Prefetch(const void* p) { _mm_prefetch(static_cast<const char*>(p), _MM_HINT_T0); }

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

// Four-kernel exports: test, pick the variant, run it once.
inline void RunFourKernel(const AlignmentTest& test, const KernelQuad& kernels, const Request* r) {
    kernels.variant[VariantFor(Passes(test, *r), *r)](r);
}

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
        _mm_stream_si32(reinterpret_cast<int*>(dst + i), four);
    }
    for (; i < count; ++i) dst[i] = src[i];
}

}  // namespace zenk
