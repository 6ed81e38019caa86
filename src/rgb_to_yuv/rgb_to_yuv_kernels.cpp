// The encoding kernels: 1:1 frames for every source, layout and variant, and
// the pair modes of the BGR32 table exports (vertical_mode 1 and 2 reduce the
// picture by 2 and by 4 in both directions, vertical_mode 3 doubles it). A
// pair mode walks its lines as the unaligned frame kernels do.
#include "rgb_to_yuv_kernels.h"

#include "encode.h"
#include "kernel/vector.h"

namespace zenk::ZENK_ISA::rgb_to_yuv {

// The widest vector layer of this level.
using Vec = Widest;

// 1:1 frames: `width` is the pixels of a line. Reduction: destination line
// n from source stream A (n even) or B (n odd), `width` the destination's
// pixels per line. Doubling: `width` is the source's pixels per line, and
// each source line is written to two consecutive destination lines.
template <class Source, class Layout, bool kAlpha = false>
using Frame = Encoding<Vec, Source, Layout, false, kAlpha>;
template <class Layout>
using Doubled = Encoding<Vec, Bgr32Pixels, Layout, true, false>;

// Frame kernels, then halve, quarter and double.
template <class Layout>
consteval KernelTable Table() {
    return MakeKernelTable(kFrameKernels<Frame<Bgr32Pixels, Layout>>, kPairModeKernel<Frame<Bgr32Reduced<2>, Layout>>,
                           kPairModeKernel<Frame<Bgr32Reduced<4>, Layout>>, kDoublingKernel<Doubled<Layout>>);
}

using Uyvy = PackedLayout<Vec, YuvLayout::kUyvy>;
using Yuyv = PackedLayout<Vec, YuvLayout::kYuyv>;
using Uvyy = PackedLayout<Vec, YuvLayout::kUvyy>;
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
