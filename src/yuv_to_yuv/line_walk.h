// The one line walk of the YUV-to-YUV kernels. A format says how it converts
// a group of pixels, how it converts one pixel pair, how many pixels a group
// holds and how many destination bytes a head pair counts for; the walk
// does the rest: whole groups only for the aligned kernels; head pairs up to
// the destination's 16-byte boundary, groups, then tail pairs for the others.
#pragma once

#include <cstring>

#include "frame/kernel.h"

namespace zenk::yuv_to_yuv {

// The running pointers of one picture walk. `chroma` is the second plane of
// a Y8PUV8I destination; it moves with the luma pointer.
struct Cursor {
    const uint8_t* src;
    uint8_t* dst;
    uint8_t* chroma;
};

// Pairs and groups of one line of an unaligned kernel.
//  head: pairs up to the first 16-byte boundary of the destination address,
//        counted as (16 - address mod 16) / head_pair_bytes; the whole line
//        when it is shorter than 16 pixels.
//  body: groups of group_pixels pixels; tail: the pairs left. A last odd
//  pixel belongs to none of them.
struct LineSplit {
    int32_t head;
    int32_t body;
    int32_t tail;
};

inline LineSplit SplitLine(const void* head_address, int32_t width, uint32_t head_pair_bytes, int32_t group_pixels) {
    LineSplit s{};
    if (width < 16) {
        s.head = width / 2;
    } else {
        const uint32_t residue = AddressResidue16(head_address);
        s.head = residue ? static_cast<int32_t>((16 - residue) / head_pair_bytes) : 0;
    }
    s.body = (width - 2 * s.head) / group_pixels;
    s.tail = (width - 2 * s.head - group_pixels * s.body) / 2;
    return s;
}

// A 16-byte store of a group. Aligned kernels run on aligned lines only.
// In the other kernels the head brings a 4-byte aligned destination to a
// 16-byte boundary, but a destination off a 4-byte boundary (or the 8-byte
// pairs of the 4:4:4 widening, or the luma plane of the split, which the
// head moves by two bytes a pair) can leave the body off it; there the
// group is written with an ordinary unaligned store, the same bytes without
// a fault. SSE2 has no non-temporal 16-byte store to such an address.
template <class A>
inline void StoreBody(uint8_t* p, __m128i v) {
    if constexpr (A::kAligned) {
        A::Store(p, v);
    } else {
        if (Aligned16(p))
            A::Store(p, v);
        else
            StoreU(p, v);
    }
}

inline __m128i LoadPair(const uint8_t* p) {
    uint32_t word;
    std::memcpy(&word, p, 4);
    return _mm_cvtsi32_si128(static_cast<int>(word));
}

inline void StorePair(uint8_t* p, __m128i v) {
    const uint32_t word = static_cast<uint32_t>(_mm_cvtsi128_si32(v));
    std::memcpy(p, &word, 4);
}

// Every group asks for its lines ahead (PrefetchAhead): copies and byte
// reorders become as fast as memcpy; the arithmetic kernels do not notice.
template <class F, class A>
void WalkLines(const Request* r) {
    const typename F::State state(*r);
    Cursor c{r->src_plane, r->dst_plane, F::ChromaPlane(*r)};
    const int32_t width = r->width;
    Prefetch(c.src);
    for (int32_t line = 0; line < r->src_height; ++line) {
        if constexpr (A::kAligned) {
            for (int32_t i = width / F::kGroupPixels; i > 0; --i) {
                PrefetchAhead<A>(c.src, c.dst);
                F::template Group<A>(c, state);
            }
        } else {
            const LineSplit s = SplitLine(c.dst, width, F::kHeadPairBytes, F::kGroupPixels);
            for (int32_t i = 0; i < s.head; ++i) F::template Pair<A>(c, state);
            for (int32_t i = 0; i < s.body; ++i) {
                PrefetchAhead<A>(c.src, c.dst);
                F::template Group<A>(c, state);
            }
            for (int32_t i = 0; i < s.tail; ++i) F::template Pair<A>(c, state);
        }
        c.src = Advance(c.src, r->src_skip);
        c.dst = Advance(c.dst, r->dst_skip);
        if constexpr (F::kPlanar) c.chroma = Advance(c.chroma, r->dst_skip);
    }
    // As every streaming kernel of the library, end with a store fence: the
    // non-temporal stores are then visible to whichever thread the host
    // hands the picture to. It changes no byte.
    A::Finish();
}

// Formats of a single destination plane.
struct SinglePlane {
    static constexpr bool kPlanar = false;
    static uint8_t* ChromaPlane(const Request&) { return nullptr; }
};

// Formats without per-call constants.
struct NoState {
    explicit NoState(const Request&) {}
};

}  // namespace zenk::yuv_to_yuv
