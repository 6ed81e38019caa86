// The kernels of the YUV-to-RGB family.
#include "yuv_to_rgb_kernels.h"

#include "formats.h"
#include "kernel/vector.h"

namespace zenk::ZENK_ISA::yuv_to_rgb {
namespace {

// The widest vector layer of this level.
using Vec = Widest;

template <class Src, class Dst>
using Frame = Line<Vec, Src, Dst, 16>;
template <class Src, class Dst>
constexpr Kernel kPairMode = kPairModeKernel<Line<Vec, Src, Dst, 8>>;

using Uyvy = Source<YuvLayout::kUyvy>;
using Yuyv = Source<YuvLayout::kYuyv>;
using Uvyy = Source<YuvLayout::kUvyy>;
using Planar = Source<YuvLayout::kPlanar>;
using WordAlpha = Bgr32<AlphaForm::kWord>;
using DwordAlpha = Bgr32<AlphaForm::kDword>;
using PlaneAlpha = Bgr32<AlphaForm::kPlane>;

// The aligned cached kernel keeps the word form of the constant alpha; the
// other three use the dword form.
template <class Src>
constexpr KernelQuad WordThenDwordAlpha() {
    return {{&FrameKernel<Frame<Src, WordAlpha>, AlignedCached>, &FrameKernel<Frame<Src, DwordAlpha>, AlignedStreaming>,
             &FrameKernel<Frame<Src, DwordAlpha>, AnyCached>, &FrameKernel<Frame<Src, DwordAlpha>, AnyStreaming>}};
}

}  // namespace

// This level's kernels of every decoding export.
const Kernels kKernels = {
    .uyvy_to_bgr32 = MakeKernelTable(kFrameKernels<Frame<Uyvy, WordAlpha>>, kPairMode<Uyvy, WordAlpha>,
                                     kPairMode<Uyvy, WordAlpha>),
    .planar_to_bgr32 = MakeKernelTable(WordThenDwordAlpha<Planar>(), kPairMode<Planar, DwordAlpha>,
                                       kPairMode<Planar, DwordAlpha>),
    .yuyv_to_bgr32 = WordThenDwordAlpha<Yuyv>(),
    .uyvy_to_bgr24 = kFrameKernels<Frame<Uyvy, Bgr24>>,
    .yuyv_to_bgr24 = kFrameKernels<Frame<Yuyv, Bgr24>>,
    .uvyy_to_bgr24 = kFrameKernels<Frame<Uvyy, Bgr24>>,
    .planar_to_bgr24 = kFrameKernels<Frame<Planar, Bgr24>>,
    .yuyv_alpha_to_bgr32 = kFrameKernels<Frame<Source<YuvLayout::kYuyv, true>, PlaneAlpha>>,
    .uyvy_alpha_to_bgr32 = kFrameKernels<Frame<Source<YuvLayout::kUyvy, true>, PlaneAlpha>>,
    // Ordinary stores in every entry: use_streaming_stores chooses between
    // two identical kernels.
    .planar_alpha_to_bgr32 = {{&FrameKernel<Frame<Source<YuvLayout::kPlanar, true>, PlaneAlpha>, AlignedCached>,
                               &FrameKernel<Frame<Source<YuvLayout::kPlanar, true>, PlaneAlpha>, AlignedCached>,
                               &FrameKernel<Frame<Source<YuvLayout::kPlanar, true>, PlaneAlpha>, AnyCached>,
                               &FrameKernel<Frame<Source<YuvLayout::kPlanar, true>, PlaneAlpha>, AnyCached>}},
};

}  // namespace zenk::ZENK_ISA::yuv_to_rgb
