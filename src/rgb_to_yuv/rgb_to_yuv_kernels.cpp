// The encoding kernels: 1:1 frames for every source, layout and variant, and
// the pair modes of the BGR32 table exports (vertical_mode 1 and 2 reduce the
// picture by 2 and by 4 in both directions, vertical_mode 3 doubles it). All
// walk their lines with WalkLine; a pair mode walks its lines as the
// unaligned frame kernels do.
#include "rgb_to_yuv_kernels.h"

#include "encode.h"
#include "kernel/vector.h"

namespace zenk::ZENK_ISA::rgb_to_yuv {

// The widest vector layer of this level.
using Vec = Widest;

// 1:1 frames: `width` is the pixels of a line. Reduction: destination line
// n from source stream A (n even) or B (n odd), `width` the destination's
// pixels per line.
template <class Source, class Layout, bool kAlpha = false>
using Frame = LineWriter<Vec, Source, Layout, false, kAlpha>;

// Doubling: `width` is the source's pixels per line; each source line is
// written to two consecutive destination lines.
//
// The line addressing gives the source lines (stream A, line_count lines,
// each advanced by src_advance) but no destination lines for this mode.
// The destination is taken as the host describes any picture: from
// dst_plane, one line every dst_stride bytes (a negative pitch walks it
// bottom-up), so source line n fills destination lines 2n and 2n + 1. A
// Y8PUV8I destination's chroma lines follow its luma lines in the same way,
// from dst_plane + dst_stride * dst_height.
template <class Layout, class A>
ZENK_KERNEL_ENTRY void DoubleKernel(const Request* r) {
    using Line = LineWriter<Vec, Bgr32Pixels, Layout, true, false>;
    const typename Line::Constants c(*r);
    Prefetch(r->src_plane);
    const LineAddressSet set = PairModeLines(r);
    const uint8_t* src_line = set.src_line_a;
    uint8_t* dst_line = r->dst_plane;
    for (int32_t n = 0; n < set.line_count; ++n) {
        for (int copy = 0; copy < 2; ++copy) {
            Line line(c, *r, src_line, dst_line);
            WalkLine<Line, A>(line, r->width);
            dst_line = Advance(dst_line, r->dst_stride);
        }
        src_line = Advance(src_line, set.src_advance);
    }
    A::Finish();
}

// Frame kernels, then halve, quarter and double.
template <class Layout>
consteval KernelTable Table() {
    return MakeKernelTable(kFrameKernels<Frame<Bgr32Pixels, Layout>>,
                           kPairModeKernel<Frame<Bgr32Reduced<2>, Layout>>, kPairModeKernel<Frame<Bgr32Reduced<4>, Layout>>,
                           &StoresAsRequested<&DoubleKernel<Layout, AnyCached>, &DoubleKernel<Layout, AnyStreaming>>);
}

using Uyvy = PackedLayout<Vec, Packed::kUyvy>;
using Yuyv = PackedLayout<Vec, Packed::kYuyv>;
using Uvyy = PackedLayout<Vec, Packed::kUvyy>;
using Planar = PlanarLayout<Vec>;

// This level's kernels of every encoding export. The planar lines are
// written with 8-byte stores in every variant, so the streaming variants
// store exactly as the cached ones. Every BGR24 variant, the aligned
// streaming one included, gives the full UVYY conversion (luma, chroma and
// clamps): a host that turns on streaming stores for an aligned picture gets
// the same picture as without.
const Kernels kKernels = {
    .bgr32_to_uyvy = Table<Uyvy>(),
    .bgr32_to_uvyy = Table<Uvyy>(),
    .bgr32_to_y8uv = Table<Planar>(),
    .bgr32_to_yuyv = kFrameKernels<Frame<Bgr32Pixels, Yuyv>>,
    .bgr32_to_uyvy_alpha = kFrameKernels<Frame<Bgr32Pixels, Uyvy, true>>,
    .bgr32_to_yuyv_alpha = kFrameKernels<Frame<Bgr32Pixels, Yuyv, true>>,
    .bgr32_to_uvyy_alpha = kFrameKernels<Frame<Bgr32Pixels, Uvyy, true>>,
    .bgr32_to_y8uv_alpha = kFrameKernels<Frame<Bgr32Pixels, Planar, true>>,
    .bgr24_to_uyvy = kFrameKernels<Frame<Bgr24Pixels, Uyvy>>,
    .bgr24_to_yuyv = kFrameKernels<Frame<Bgr24Pixels, Yuyv>>,
    .bgr24_to_uvyy = kFrameKernels<Frame<Bgr24Pixels, Uvyy>>,
    .bgr24_to_y8uv = kFrameKernels<Frame<Bgr24Pixels, Planar>>,
};

}  // namespace zenk::ZENK_ISA::rgb_to_yuv
