// The one line walk of every kernel. A line is cut into a head of single
// units (pixel pairs, pixels or bytes) up to the destination's first 16-byte
// boundary, a body of blocks, and a tail of the units left; an aligned kernel
// converts whole blocks only. Which pixels go through the head, the body and
// the tail is visible to hosts (the single-unit and block arithmetic of some
// formats differ), so every format states its rule as policy values:
//
//   kUnitPixels      pixels a single unit converts: 2 (a pair) or 1
//   kBlockUnits      units a block converts
//   kSinglesBelow    a line narrower than this many pixels goes unit by unit
//   kMisaligned      what an aligned kernel does with a line whose destination
//                    is off a 16-byte boundary (its export may not test the
//                    pitch, or the host may set a skip that moves a line)
//   kStreamEnds      whether a streaming kernel streams its head and tail too
//   kPrefetchEvery   blocks between two PrefetchAhead calls (0: none)
//
// names the vector layer it is written for (Vector: Sse2, or a wider layer
// whose lanes each hold an SSE2 block), and implements, on the running
// pointers of its line:
//
//   uint8_t* dst                 the destination the head rule measures
//   int32_t HeadUnits() const    units up to the first 16-byte boundary
//   template <class Store, class L> void Block()
//                                one block in each filled lane of L (Vector
//                                with some or all lanes filled); Store
//                                writes each 16-byte vector
//   void Single()                one unit
//   const void* Ahead() const    the source address to prefetch from
//   void NextLine(const Request&)  on to the next line by the skips (frames)
//
// A format is built either from the request alone, or, where it has
// per-call constants (coefficient vectors), as F(constants, request,
// source line, destination line) from a `Constants` type of its own that
// the kernel builds once; the pair-mode kernels need the second form.
#pragma once

#include "kernel.h"
#include "line_addressing.h"

namespace zenk::ZENK_ISA {

enum class MisalignedLine {
    kBlocksUnaligned,  // whole blocks as ever, written with unaligned stores
    kAsAnyAlignment,   // the line of whole blocks walked head, body and tail
};

// Units up to the first 16-byte boundary of `p`, for units that write
// `unit_bytes` each (a divisor of 16); none where `p` is on one.
inline int32_t UnitsToBoundary(const void* p, uint32_t unit_bytes) {
    const uint32_t residue = AddressResidue16(p);
    return residue ? static_cast<int32_t>((16 - residue) / unit_bytes) : 0;
}

namespace line_walk {

// Head or tail units. A streaming kernel whose format streams its ends
// converts them into a buffer on the stack and streams that out
// (StreamBytes); a head or tail is under 64 bytes.
template <class F, class A>
ZENK_ARITHMETIC void Singles(F& f, int32_t count) {
    if constexpr (A::kStreaming && F::kStreamEnds) {
        if (count <= 0) return;
        alignas(16) uint8_t staged[64];
        uint8_t* const dst = f.dst;
        f.dst = staged;
        for (int32_t i = 0; i < count; ++i) f.Single();
        const int32_t bytes = static_cast<int32_t>(f.dst - staged);
        StreamBytes(dst, staged, bytes);
        f.dst = dst + bytes;
    } else {
        for (int32_t i = 0; i < count; ++i) f.Single();
    }
}

// Blocks go in groups of kPrefetchEvery SSE2 blocks (one where nothing is
// prefetched), the prefetch before each group's first block but the line's
// last group. That last prefetch costs more than it brings: on 3840x2160
// pictures from memory (AMD EPYC, the two builds alternating in one
// process), leaving out that one prefetch per line made the aligned
// kernels of the copies, byte reorders, repacks and alpha extraction 6 to
// 21 % faster at every level, and the any-alignment ones up to 5 %. A format is
// written for a vector layer F::Vector of one or more lanes: each block
// call converts as many SSE2 blocks at once as the layer has lanes, and the
// blocks left over go through the same code with fewer lanes filled, so
// that each block reads and writes exactly what it does in the SSE2 kernel.
template <class F, class A, class Store>
ZENK_ARITHMETIC void Blocks(F& f, int32_t count) {
    using W = typename F::Vector;
    constexpr int32_t kLanes = W::kLanes;
    constexpr int32_t kGroup = F::kPrefetchEvery > kLanes ? F::kPrefetchEvery / kLanes : 1;
    while (count >= kLanes) {
        if constexpr (F::kPrefetchEvery > 0)
            if (count >= 2 * kGroup * kLanes) PrefetchAhead<A>(f.Ahead(), f.dst);
        for (int32_t i = 0; i < kGroup && count >= kLanes; ++i, count -= kLanes) f.template Block<Store, W>();
    }
    if constexpr (kLanes > 1) {
        if (count == 1) f.template Block<Store, typename W::template WithLanes<1>>();
    }
    if constexpr (kLanes > 2) {
        if (count == 2) f.template Block<Store, typename W::template WithLanes<2>>();
        if (count == 3) f.template Block<Store, typename W::template WithLanes<3>>();
    }
}

}  // namespace line_walk

// One line of `width` pixels. A last pixel that does not fill a unit is
// neither converted nor consumed.
template <class F, class A>
inline void WalkLine(F& f, int32_t width) {
    constexpr int32_t kBlockPixels = F::kUnitPixels * F::kBlockUnits;
    int32_t head = 0, body, tail = 0;
    if (A::kAligned && (F::kMisaligned == MisalignedLine::kBlocksUnaligned || Aligned16(f.dst))) {
        body = width / kBlockPixels;
    } else {
        if constexpr (A::kAligned) width = width / kBlockPixels * kBlockPixels;
        const int32_t units = width / F::kUnitPixels;
        head = width < F::kSinglesBelow ? units : f.HeadUnits();
        body = (units - head) / F::kBlockUnits;
        tail = units - head - body * F::kBlockUnits;
    }
    line_walk::Singles<F, A>(f, head);
    // The head brings every supported line start to a boundary; a start it
    // cannot gets the same bytes through unaligned stores instead of a fault.
    if (Aligned16(f.dst))
        line_walk::Blocks<F, A, A>(f, body);
    else
        line_walk::Blocks<F, A, UnalignedStore>(f, body);
    line_walk::Singles<F, A>(f, tail);
}

// A picture of 1:1 lines: one running pointer per plane, moved on by the
// request's skips (F::NextLine).
template <class F, class A>
inline void WalkFrame(F& f, const Request& r) {
    Prefetch(r.src_plane);
    for (int32_t line = 0; line < r.src_height; ++line) {
        WalkLine<F, A>(f, r.width);
        f.NextLine(r);
    }
    A::Finish();
}

// The kernel of a 1:1 format F, walked with access policy A.
//
// A format built from the request is walked as a copy: its constructor may
// hand the object's address to setup code out of line (a coefficient block
// filled through pointers), and a state whose address has left the kernel
// stays in memory, its running pointers stored and reloaded around every
// block. The copy's address never leaves. Constants built apart from the
// line state (F::Constants) keep the state's address in the kernel by
// themselves.
template <class F, class A>
ZENK_KERNEL_ENTRY void FrameKernel(const Request* r) {
    if constexpr (requires { typename F::Constants; }) {
        const typename F::Constants k(*r);
        F f(k, *r, r->src_plane, r->dst_plane);
        WalkFrame<F, A>(f, *r);
    } else {
        const F built(*r);
        F f(built);
        WalkFrame<F, A>(f, *r);
    }
}

// The four variants of a 1:1 format's kernel.
template <class F>
inline constexpr KernelQuad kFrameKernels = {
    {&FrameKernel<F, AlignedCached>, &FrameKernel<F, AlignedStreaming>, &FrameKernel<F, AnyCached>, &FrameKernel<F, AnyStreaming>}};

// A pair-mode picture: the constants once, each line's state from its
// source line (WalkLinePairs) and the destination, which runs on from where
// the line's last unit left it.
template <class F, class A>
ZENK_KERNEL_ENTRY void PairModeKernel(const Request* r) {
    const typename F::Constants k(*r);
    Prefetch(r->src_plane);
    WalkLinePairs(PairModeLines(r), [&](const uint8_t* src_line, uint8_t*& dst) {
        F f(k, *r, src_line, dst);
        WalkLine<F, A>(f, r->width);
        dst = f.dst;
    });
    A::Finish();
}

// One pair-mode kernel serves all four variants of its column: the request
// chooses between its cached and its streaming walk.
template <class F>
inline constexpr Kernel kPairModeKernel =
    &StoresAsRequested<&PairModeKernel<F, AnyCached>, &PairModeKernel<F, AnyStreaming>>;

}  // namespace zenk::ZENK_ISA
