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

using Uyvy = PackedSource<Packed::kUyvy>;
using Yuyv = PackedSource<Packed::kYuyv>;
using Uvyy = PackedSource<Packed::kUvyy>;
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
    .uyvy_to_bgr32 = MakeKernelTable(ZENK_KERNEL_QUAD(FrameKernel, Frame<Uyvy, WordAlpha>), kPairMode<Uyvy, WordAlpha>,
                                     kPairMode<Uyvy, WordAlpha>),
    .planar_to_bgr32 = MakeKernelTable(WordThenDwordAlpha<PlanarSource>(), kPairMode<PlanarSource, DwordAlpha>,
                                       kPairMode<PlanarSource, DwordAlpha>),
    .yuyv_to_bgr32 = WordThenDwordAlpha<Yuyv>(),
    .uyvy_to_bgr24 = ZENK_KERNEL_QUAD(FrameKernel, Frame<Uyvy, Bgr24>),
    .yuyv_to_bgr24 = ZENK_KERNEL_QUAD(FrameKernel, Frame<Yuyv, Bgr24>),
    .uvyy_to_bgr24 = ZENK_KERNEL_QUAD(FrameKernel, Frame<Uvyy, Bgr24>),
    .planar_to_bgr24 = ZENK_KERNEL_QUAD(FrameKernel, Frame<PlanarSource, Bgr24>),
    .yuyv_alpha_to_bgr32 = ZENK_KERNEL_QUAD(FrameKernel, Frame<WithAlphaPlane<Yuyv>, PlaneAlpha>),
    .uyvy_alpha_to_bgr32 = ZENK_KERNEL_QUAD(FrameKernel, Frame<WithAlphaPlane<Uyvy>, PlaneAlpha>),
    // Ordinary stores in every entry: use_streaming_stores chooses between
    // two identical kernels.
    .planar_alpha_to_bgr32 = {{&FrameKernel<Frame<WithAlphaPlane<PlanarSource>, PlaneAlpha>, AlignedCached>,
                               &FrameKernel<Frame<WithAlphaPlane<PlanarSource>, PlaneAlpha>, AlignedCached>,
                               &FrameKernel<Frame<WithAlphaPlane<PlanarSource>, PlaneAlpha>, AnyCached>,
                               &FrameKernel<Frame<WithAlphaPlane<PlanarSource>, PlaneAlpha>, AnyCached>}},
};

}  // namespace zenk::ZENK_ISA::yuv_to_rgb
