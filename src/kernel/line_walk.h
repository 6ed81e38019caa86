// The one line walk of every kernel, and the picture walks built on it. A
// line is cut into a head of single units (pixel pairs, pixels or bytes) up
// to the destination's first 16-byte boundary, a body of blocks, and a tail
// of the units left; an aligned kernel converts whole blocks only. Which
// pixels go through the head, the body and the tail is visible to hosts (the
// single-unit and block arithmetic of some formats differ), so every format
// states its rule (LineRule) and the walk keeps it exactly.
//
// A format is its arithmetic and nothing else (the LineFormat concept
// below): it declares its streams (streams.h), converts one block in the
// filled lanes of a layer and one unit, reading and writing through the
// streams at offsets within them, and is built once per call from the
// request, holding the call's constants. The walk owns every pointer.
#pragma once

#include <concepts>
#include <utility>

#include "line_addressing.h"
#include "streams.h"

namespace zenk::ZENK_ISA {

enum class MisalignedLine {
    kBlocksUnaligned,  // whole blocks as ever, written with unaligned stores
    kAsAnyAlignment,   // the line of whole blocks walked head, body and tail
};

// How a format's lines are cut.
struct LineRule {
    int32_t unit_pixels;    // pixels a single unit converts: 2 (a pair) or 1
    int32_t block_units;    // units a block converts
    int32_t singles_below;  // a line narrower than this many pixels goes unit by unit
    // What an aligned kernel does with a line whose destination is off a
    // 16-byte boundary (its export may not test the pitch, or the host may
    // set a skip that moves a line).
    MisalignedLine misaligned = MisalignedLine::kBlocksUnaligned;
    // Whether a streaming kernel streams its head and tail too.
    bool stream_ends = false;
    // Whether a block copies its source bytes as they are: with ordinary
    // stores, the walk then copies a line's body in one run (CopyRun), the
    // same bytes. A UYVY16I copy of 3840x2160 frames from memory took 1.29 ms
    // so against 1.87 ms in blocks (AMD EPYC, AVX-512).
    bool copies = false;
    // Whether a block writes one byte value everywhere (F::FillByte()): with
    // ordinary stores the walk fills a line's body in one run (FillRun).
    bool fills = false;
};

// Units up to the first 16-byte boundary of `p`, for units that write
// `unit_bytes` each (a divisor of 16); none where `p` is on one.
inline int32_t UnitsToBoundary(const void* p, uint32_t unit_bytes) {
    const uint32_t residue = AddressResidue16(p);
    return residue ? static_cast<int32_t>((16 - residue) / unit_bytes) : 0;
}

// The streams of format F at a block or unit, through layer L and store
// policy Store.
template <class F, class L, class Store>
using FormatAt = At<typename F::Planes, L, Store>;

// What the walk asks of a format F:
//   Vector          the vector layer it is written for (Vec128, or a wider
//                   layer whose lanes each hold a Vec128 block)
//   Planes          its Streams
//   kRule           its LineRule
//   HeadUnits(dst)  the head's units for a destination line starting at dst
//   F(request)      the call's constants
//   Block(at)       one block in each filled lane of at's layer
//   Single(at)      one unit, on a layer of one lane
template <class F>
concept LineFormat = requires(const F& f, const Request& r, const uint8_t* dst) {
    typename F::Planes;
    requires std::same_as<std::remove_cv_t<decltype(F::kRule)>, LineRule>;
    { F::HeadUnits(dst) } -> std::same_as<int32_t>;
    F(r);
    f.Block(std::declval<const FormatAt<F, typename F::Vector, UnalignedStore>&>());
    f.Single(std::declval<const FormatAt<F, typename F::Vector::template WithLanes<1>, UnalignedStore>&>());
};

namespace line_walk {

// `count` units from the line's unit `first`. A streaming kernel whose
// format streams its ends converts them into a buffer on the stack and
// streams that out (StreamBytes); a head or tail is under 64 bytes.
template <class F, class A>
ZENK_ARITHMETIC void Singles(const F& f, typename F::Planes& s, int32_t count, int32_t first) {
    using One = FormatAt<F, typename F::Vector::template WithLanes<1>, A>;
    constexpr bool kStaged = A::kStreaming && F::kRule.stream_ends;
    alignas(16) uint8_t staged[kStaged ? 64 : 1];
    uint8_t* const dst = s.Destination();
    if constexpr (kStaged) s.Destination() = staged;
    for (int32_t i = 0; i < count; ++i, s.NextUnit()) f.Single(One{s, first + i});
    if constexpr (kStaged) {
        const int32_t bytes = static_cast<int32_t>(s.Destination() - staged);
        StreamBytes(dst, staged, bytes);
        s.Destination() = dst + bytes;
    }
}

// One block in the first n lanes, then on past them.
template <class F, class Store, int n>
ZENK_ARITHMETIC void Block(const F& f, typename F::Planes& s, int32_t unit) {
    f.Block(FormatAt<F, typename F::Vector::template WithLanes<n>, Store>{s, unit});
    s.template NextBlock<n>();
}

// `count` blocks from the line's unit `first`. Each block call converts as
// many blocks at once as the layer has lanes; the blocks left over go
// through the same code with fewer lanes filled, so that each block reads
// and writes exactly what it does in the baseline kernel. Nothing is read
// ahead: the processor's own prefetchers follow a line's streams, and
// software read-ahead made every kernel that used it slower (3840x2160 from
// memory and 1920x1080 in the cache, AMD EPYC, in-process A/B: the BGR32 and
// BGR24 repacks 5 to 33 %, the 4:2:2 reorders and widening up to 50 %).
template <class F, class Store>
ZENK_ARITHMETIC void Blocks(const F& f, typename F::Planes& s, int32_t count, int32_t first) {
    constexpr int32_t kLanes = F::Vector::kLanes;
    int32_t unit = first;
    for (; count >= kLanes; count -= kLanes, unit += kLanes * F::kRule.block_units) Block<F, Store, kLanes>(f, s, unit);
    // The blocks left over, in as many lanes.
    [&]<int... n>(std::integer_sequence<int, n...>) ZENK_INLINE_LAMBDA {
        ((count == n + 1 ? Block<F, Store, n + 1>(f, s, unit) : void()), ...);
    }(std::make_integer_sequence<int, kLanes - 1>{});
}

}  // namespace line_walk

// One line of `width` pixels. A last pixel that does not fill a unit is
// neither converted nor consumed.
template <class F, class A>
ZENK_ARITHMETIC void WalkLine(const F& f, typename F::Planes& s, int32_t width) {
    constexpr LineRule kRule = F::kRule;
    constexpr int32_t kBlockPixels = kRule.unit_pixels * kRule.block_units;
    int32_t head = 0, body, tail = 0;
    if (A::kAligned && (kRule.misaligned == MisalignedLine::kBlocksUnaligned || Aligned16(s.Destination()))) {
        body = width / kBlockPixels;
    } else {
        if constexpr (A::kAligned) width = width / kBlockPixels * kBlockPixels;
        const int32_t units = width / kRule.unit_pixels;
        head = width < kRule.singles_below ? units : F::HeadUnits(s.Destination());
        body = (units - head) / kRule.block_units;
        tail = units - head - body * kRule.block_units;
    }
    line_walk::Singles<F, A>(f, s, head, 0);
    // The head brings every supported line start to a boundary; a start it
    // cannot gets the same bytes through unaligned stores instead of a fault.
    const int32_t body_units = body * kRule.block_units;
    if constexpr (kRule.copies && !A::kStreaming) {
        using P = typename F::Planes;
        static_assert(P::kCount == 2 && P::kBlockBytes[0] == P::kBlockBytes[1]);
        CopyRun(s.Destination(), s.at[P::Find(Plane::kSource)], size_t(body) * P::kBlockBytes[0]);
        s.NextBlocks(body);
    } else if constexpr (kRule.fills && !A::kStreaming) {
        using P = typename F::Planes;
        static_assert(P::kCount == 1);
        FillRun(s.Destination(), f.FillByte(), size_t(body) * P::kBlockBytes[0]);
        s.NextBlocks(body);
    } else if (Aligned16(s.Destination()))
        line_walk::Blocks<F, A>(f, s, body, head);
    else
        line_walk::Blocks<F, UnalignedStore>(f, s, body, head);
    line_walk::Singles<F, A>(f, s, tail, head + body_units);
}

// ---- Kernels -------------------------------------------------------------------------------

// The kernel of a 1:1 format F, walked with access policy A: one running
// pointer a plane, moved on by the request's skips.
template <LineFormat F, class A>
ZENK_KERNEL_ENTRY void FrameKernel(const Request* r) {
    const F f(*r);
    typename F::Planes s(*r, r->src_plane, r->dst_plane);
    int32_t width = r->width, lines = r->src_height;
    // A copy or a fill whose lines lie end to end (every skip 0, and whole
    // blocks a line where an aligned kernel drops the rest) is one long
    // line: the same bytes in one run, the string instruction's start-up
    // paid once instead of once a line.
    if constexpr ((F::kRule.copies || F::kRule.fills) && !A::kStreaming) {
        constexpr int32_t kUnit = F::kRule.unit_pixels, kBlockPixels = kUnit * F::kRule.block_units;
        const int64_t pixels = int64_t{width / kUnit} * kUnit * lines;
        if (lines > 1 && s.EndToEnd(*r) && (!A::kAligned || width % kBlockPixels == 0) && pixels <= INT32_MAX) {
            width = static_cast<int32_t>(pixels);
            lines = 1;
        }
    }
    for (int32_t line = 0; line < lines; ++line) {
        WalkLine<F, A>(f, s, width);
        s.NextLine(*r);
    }
    A::Finish();
}

// The four variants of a 1:1 format's kernel.
template <class F>
inline constexpr KernelQuad kFrameKernels = {
    {&FrameKernel<F, AlignedCached>, &FrameKernel<F, AlignedStreaming>, &FrameKernel<F, AnyCached>, &FrameKernel<F, AnyStreaming>}};

// A pair-mode picture: each line's streams from its source line
// (WalkLinePairs) and the destination, which runs on from where the line's
// last unit left it.
template <LineFormat F, class A>
ZENK_KERNEL_ENTRY void PairModeKernel(const Request* r) {
    const F f(*r);
    WalkLinePairs(PairModeLines(r), [&](const uint8_t* src_line, uint8_t*& dst) ZENK_INLINE_LAMBDA {
        typename F::Planes s(*r, src_line, dst);
        WalkLine<F, A>(f, s, r->width);
        dst = s.Destination();
    });
    A::Finish();
}

// Line doubling: every source line written to two destination lines.
//
// The line addressing gives the source lines (stream A, line_count lines,
// each advanced by src_advance) but no destination lines for this mode.
// The destination is taken as the host describes any picture: from
// dst_plane, one line every dst_stride bytes (a negative pitch walks it
// bottom-up), so source line n fills destination lines 2n and 2n + 1. A
// Y8PUV8I destination's chroma lines follow its luma lines in the same way,
// from dst_plane + dst_stride * dst_height.
template <LineFormat F, class A>
ZENK_KERNEL_ENTRY void DoublingKernel(const Request* r) {
    const F f(*r);
    const LineAddressSet set = PairModeLines(r);
    const uint8_t* src_line = set.src_line_a;
    uint8_t* dst_line = r->dst_plane;
    for (int32_t n = 0; n < set.line_count; ++n) {
        for (int copy = 0; copy < 2; ++copy) {
            typename F::Planes s(*r, src_line, dst_line);
            WalkLine<F, A>(f, s, r->width);
            dst_line = Advance(dst_line, r->dst_stride);
        }
        src_line = Advance(src_line, set.src_advance);
    }
    A::Finish();
}

// One pair-mode kernel serves all four variants of its column: the request
// chooses between its cached and its streaming walk.
template <class F>
inline constexpr Kernel kPairModeKernel =
    &StoresAsRequested<&PairModeKernel<F, AnyCached>, &PairModeKernel<F, AnyStreaming>>;
template <class F>
inline constexpr Kernel kDoublingKernel =
    &StoresAsRequested<&DoublingKernel<F, AnyCached>, &DoublingKernel<F, AnyStreaming>>;

}  // namespace zenk::ZENK_ISA
