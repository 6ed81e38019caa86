// The streams of a line format: the planes it reads and writes, declared as
// data, and the one cursor that moves through them. A format says what a
// unit and a block of each plane span; the walk (line_walk.h) starts every
// stream at its line, moves it on after each unit and each block, and by its
// plane's skip to the next line. A format reaches its streams only through
// the accessors at the end of this file, at offsets within the unit or block
// in hand: it computes, and the walk moves.
#pragma once

#include <type_traits>
#include <utility>

#include "kernel.h"
#include "pixel_packing.h"

namespace zenk::ZENK_ISA {

// The planes of a request. A chroma plane is the interleaved (Cb, Cr) plane
// of a Y8PUV8I picture: its line starts stride times height bytes after its
// luma line (src_stride * src_height for a source, dst_stride * dst_height
// for a destination), and it moves with the luma plane by the same skip.
enum class Plane { kSource, kSourceChroma, kSourceAlpha, kDestination, kDestinationChroma, kDestinationAlpha };

constexpr bool IsSource(Plane p) { return p < Plane::kDestination; }

// One stream: a unit moves it kUnit bytes and a block kBlock bytes (a block
// of one 128-bit lane: lane j of a wider block starts j * kBlock bytes on).
// A stream that is not kPresent is neither started nor moved, so that a
// format can name a plane it has only in some of its forms.
template <Plane kPlane, int32_t kUnit, int32_t kBlock, bool kPresent = true>
struct Stream {
    static constexpr Plane kWhere = kPlane;
    static constexpr int32_t kUnitBytes = kUnit, kBlockBytes = kBlock;
    static constexpr bool kUsed = kPresent;
};

// A Y8PUV8I chroma line: stride times height bytes after its luma line,
// the product taken at the pointer's width.
inline uint8_t* ChromaLine(uint8_t* luma_line, int32_t stride, int32_t height) {
    const uintptr_t distance =
        static_cast<uintptr_t>(static_cast<intptr_t>(stride)) * static_cast<uintptr_t>(static_cast<intptr_t>(height));
    return reinterpret_cast<uint8_t*>(reinterpret_cast<uintptr_t>(luma_line) + distance);
}

// The first stream of plane p among S (-1: none).
template <class... S>
constexpr int FindStream(Plane p) {
    constexpr Plane kPlanes[] = {S::kWhere...};
    constexpr bool kUsed[] = {S::kUsed...};
    for (int i = 0; i < static_cast<int>(sizeof...(S)); ++i)
        if (kPlanes[i] == p && kUsed[i]) return i;
    return -1;
}

// The streams of a format and their running pointers, one a stream, in the
// order the format lists them. Every format writes the destination plane:
// the head rule measures its stream, and a pair mode's next line runs on
// from where it stops.
template <class... S>
struct Streams {
    static constexpr int kCount = sizeof...(S);
    static constexpr Plane kPlanes[kCount] = {S::kWhere...};
    static constexpr bool kUsed[kCount] = {S::kUsed...};
    static constexpr int32_t kUnitBytes[kCount] = {S::kUnitBytes...};
    static constexpr int32_t kBlockBytes[kCount] = {S::kBlockBytes...};

    // The stream of plane p (-1: none).
    static constexpr int Find(Plane p) { return FindStream<S...>(p); }
    static constexpr int kDestination = FindStream<S...>(Plane::kDestination);
    static_assert(kDestination >= 0, "every format writes the destination plane");

    // Every stream at the start of a line: the source and destination
    // planes at the lines given, their chroma planes stride times height on,
    // the alpha planes where the request puts them (no pair mode has any).
    Streams(const Request& r, const uint8_t* src_line, uint8_t* dst_line) {
        ForEach([&]<int i>() ZENK_INLINE_LAMBDA { at[i] = LineStart(kPlanes[i], r, const_cast<uint8_t*>(src_line), dst_line); });
    }

    uint8_t*& Destination() { return at[kDestination]; }

    // On past one unit, past a block in each of `lanes` lanes, or past
    // `count` blocks.
    void NextUnit() {
        ForEach([&]<int i>() ZENK_INLINE_LAMBDA { at[i] += kUnitBytes[i]; });
    }
    template <int32_t lanes>
    void NextBlock() { NextBlocks(lanes); }
    void NextBlocks(int32_t count) {
        ForEach([&]<int i>() ZENK_INLINE_LAMBDA { at[i] += static_cast<intptr_t>(kBlockBytes[i]) * count; });
    }
    // On to the next line of a frame, by each plane's skip.
    void NextLine(const Request& r) {
        ForEach([&]<int i>() ZENK_INLINE_LAMBDA { at[i] = Advance(at[i], Skip(kPlanes[i], r)); });
    }

    // Whether every stream's next line starts where its line stops.
    bool EndToEnd(const Request& r) const {
        bool all = true;
        ForEach([&]<int i>() ZENK_INLINE_LAMBDA { all = all && Skip(kPlanes[i], r) == 0; });
        return all;
    }

    uint8_t* at[kCount];

private:
    // each.operator()<i>() for every stream present.
    template <class Each>
    ZENK_ARITHMETIC static void ForEach(Each each) {
        [&]<int... i>(std::integer_sequence<int, i...>) ZENK_INLINE_LAMBDA {
            ((kUsed[i] ? each.template operator()<i>() : void()), ...);
        }(std::make_integer_sequence<int, kCount>{});
    }
    ZENK_ARITHMETIC static uint8_t* LineStart(Plane p, const Request& r, uint8_t* src_line, uint8_t* dst_line) {
        switch (p) {
            case Plane::kSource: return src_line;
            case Plane::kSourceChroma: return ChromaLine(src_line, r.src_stride, r.src_height);
            case Plane::kSourceAlpha: return const_cast<uint8_t*>(r.src_alpha_plane);
            case Plane::kDestination: return dst_line;
            case Plane::kDestinationChroma: return ChromaLine(dst_line, r.dst_stride, r.dst_height);
            default: return r.dst_alpha_plane;
        }
    }
    // Each plane's skip, in the order of Plane.
    static constexpr int32_t Request::*kSkips[] = {&Request::src_skip, &Request::src_skip, &Request::src_alpha_skip,
                                                   &Request::dst_skip, &Request::dst_skip, &Request::dst_alpha_skip};
    ZENK_ARITHMETIC static int32_t Skip(Plane p, const Request& r) { return r.*kSkips[static_cast<int>(p)]; }
};

// The streams at one block or unit, as a format sees them: through the
// layer Lanes (the format's layer with some or all lanes filled; one lane
// for a unit), with 16-byte stores through the policy StorePolicy; `unit`
// is the index in its line of the first unit.
template <class Set, class Lanes, class StorePolicy>
struct At {
    using L = Lanes;
    using Store = StorePolicy;
    using V = typename L::V;
    template <Plane p>
    static constexpr int kIndex = Set::Find(p);
    // Lane j of plane p's block starts j * kStep<p> bytes on.
    template <Plane p>
    static constexpr int32_t kStep = Set::kBlockBytes[kIndex<p>];

    // A copy of the running pointers: the walk's own never have their
    // address taken, so a store through a destination pointer (which may
    // alias anything) does not make the compiler write them back.
    Set streams;
    int32_t unit;
};

// ---- A format's view of its streams ----------------------------------------------------

// The running pointer of plane p: read-only for a source.
template <Plane p, class A>
inline auto Ptr(const A& a) {
    static_assert(A::template kIndex<p> >= 0, "the format declares no stream of this plane");
    uint8_t* const q = a.streams.at[A::template kIndex<p>];
    if constexpr (IsSource(p))
        return static_cast<const uint8_t*>(q);
    else
        return q;
}

// kBytes (16, 8, 4 or 2) at `offset` into the low bytes of every filled
// lane, the rest zero.
template <Plane p, int kBytes = 16, class A>
inline typename A::V Load(const A& a, int32_t offset = 0) {
    using L = typename A::L;
    const uint8_t* const q = Ptr<p>(a) + offset;
    constexpr int32_t kStep = A::template kStep<p>;
    if constexpr (kBytes == 16)
        return L::LoadU(q, kStep);
    else if constexpr (kBytes == 8)
        return L::Load64(q, kStep);
    else if constexpr (kBytes == 4)
        return L::Load32(q, kStep);
    else
        return L::Load16(q, kStep);
}

// The low kBytes of every filled lane to `offset`: 16 through the store
// policy (the block's own, or Store where a plane is stored otherwise), 8, 4
// or, for a unit, 2 as they are.
template <Plane p, int kBytes = 16, class Store = void, class A>
inline void Put(const A& a, int32_t offset, typename A::V v) {
    using L = typename A::L;
    uint8_t* const q = Ptr<p>(a) + offset;
    if constexpr (kBytes == 16)
        L::template Put<std::conditional_t<std::is_void_v<Store>, typename A::Store, Store>>(q, v, A::template kStep<p>);
    else if constexpr (kBytes == 8)
        L::Put64(q, v, A::template kStep<p>);
    else if constexpr (kBytes == 4)
        L::Put32(q, v, A::template kStep<p>);
    else {
        static_assert(kBytes == 2 && L::kActiveLanes == 1);
        const auto bits = static_cast<uint16_t>(Vec128::Low32(L::Lane0(v)));
        std::memcpy(q, &bits, 2);
    }
}

// A block of k consecutive 16-byte vectors a lane, vector i of every lane in
// v[i]: the plane's whole block.
template <Plane p, int k, class A>
inline void LoadBlock(const A& a, typename A::V v[k]) {
    static_assert(16 * k == A::template kStep<p>);
    A::L::template LoadBlock<k>(Ptr<p>(a), v);
}
template <Plane p, int k, class A>
inline void PutBlock(const A& a, const typename A::V v[k]) {
    static_assert(16 * k == A::template kStep<p>);
    A::L::template PutBlock<typename A::Store, k>(Ptr<p>(a), v);
}

// The same block for byte moves that need no lane order: in memory order
// (register m the m-th run of consecutive bytes) where the layer moves bytes
// across lanes (AcrossLanes, pixel_packing.h), else as above.
template <Plane p, int k, class A>
inline void LoadVectors(const A& a, typename A::V v[k]) {
    if constexpr (AcrossLanes<typename A::L, typename A::Store>)
        for (int m = 0; m < k; ++m) v[m] = A::L::LoadWhole(Ptr<p>(a) + sizeof(v[0]) * m);
    else
        LoadBlock<p, k>(a, v);
}
template <Plane p, int k, class A>
inline void StoreVectors(const A& a, const typename A::V v[k]) {
    if constexpr (AcrossLanes<typename A::L, typename A::Store>)
        for (int m = 0; m < k; ++m) A::L::StoreWhole(Ptr<p>(a) + sizeof(v[0]) * m, v[m]);
    else
        PutBlock<p, k>(a, v);
}

// Register m of the block's bytes in memory order, for formats that treat
// every byte (or every 4-byte pair) alike: the filled lanes take consecutive
// 16-byte pieces, register m the m-th run of them.
template <Plane p, class A>
inline typename A::V LoadInOrder(const A& a, int m) {
    return A::L::LoadU(Ptr<p>(a) + 16 * A::L::kActiveLanes * m, 16);
}
template <Plane p, class A>
inline void PutInOrder(const A& a, int m, typename A::V v) {
    A::L::template Put<typename A::Store>(Ptr<p>(a) + 16 * A::L::kActiveLanes * m, v, 16);
}

}  // namespace zenk::ZENK_ISA
