// The pair-mode kernels of the BGR32 table exports: vertical_mode 1 and 2
// reduce the picture by 2 and by 4 in both directions, vertical_mode 3
// doubles it. Every line start comes from the line addressing; within a
// line the walk is the head, body and tail of the unaligned frame kernels.
// One kernel serves all four variants: each 16-byte store asks the request
// whether to bypass the cache (planar lines are written with 8-byte stores,
// which it does not affect). A request whose scan_mode gives no line count
// (0, or anything but 1 and 2) converts nothing.
#include "encode.h"
#include "frame/line_addressing.h"
#include "rgb_to_yuv_kernels.h"

namespace zenk::rgb_to_yuv {
namespace {

// Reduction: destination line n from source stream A (n even) or B (n odd);
// `width` is the destination's pixels per line. The destination pointer
// runs on from the end of each line's pairs by dst_skip.
template <class Source, class Layout>
void ReduceKernel(const Request* r) {
    const Encoder k(*r);
    const Layout layout(k);
    const RequestedStore store{r->use_streaming_stores != 0};
    Prefetch(r->src_plane);
    WalkLinePairs(PairModeLines(r), [&](const uint8_t* src_line, uint8_t*& dst) {
        LineWriter<Source, Layout, false, false> line{k, layout, src_line, layout.At(dst, *r), nullptr};
        line.HeadBodyTail(r->width, store);
        dst = line.dst.FirstByte();  // a Y8PUV8I chroma line keeps its distance from its luma line
    });
    if (store.streaming) _mm_sfence();
}

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
template <class Layout>
void DoubleKernel(const Request* r) {
    const Encoder k(*r);
    const Layout layout(k);
    const RequestedStore store{r->use_streaming_stores != 0};
    Prefetch(r->src_plane);
    const LineAddressSet set = PairModeLines(r);
    const uint8_t* src_line = set.src_line_a;
    uint8_t* dst_line = r->dst_plane;
    for (int32_t n = 0; n < set.line_count; ++n) {
        for (int copy = 0; copy < 2; ++copy) {
            LineWriter<Bgr32Pixels, Layout, true, false> line{k, layout, src_line, layout.At(dst_line, *r), nullptr};
            line.HeadBodyTail(r->width, store);
            dst_line = Advance(dst_line, r->dst_stride);
        }
        src_line = Advance(src_line, set.src_advance);
    }
    if (store.streaming) _mm_sfence();
}

template <class Layout>
constexpr PairModeKernels kPairModes{&ReduceKernel<Bgr32EverySecond, Layout>,
                                     &ReduceKernel<Bgr32EveryFourth, Layout>, &DoubleKernel<Layout>};

}  // namespace

const PairModeKernels kBgr32ToUyvyPairModes = kPairModes<PackedLayout<UyvyOrder>>;
const PairModeKernels kBgr32ToUvyyPairModes = kPairModes<PackedLayout<UvyyOrder>>;
const PairModeKernels kBgr32ToY8UvPairModes = kPairModes<PlanarLayout>;

}  // namespace zenk::rgb_to_yuv
