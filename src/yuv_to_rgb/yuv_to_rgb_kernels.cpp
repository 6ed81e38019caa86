// The kernels of the YUV-to-RGB family.
#include "yuv_to_rgb_kernels.h"

#include "formats.h"
#include "kernel/vector.h"

namespace zenk::ZENK_ISA::yuv_to_rgb {
namespace {

// The widest vector layer of this level.
using Vec = Widest;

// One pair-mode kernel serves all four variants of its column; its body
// stores bypass the cache when the host asks for streaming stores.
template <class Src, class Dst>
constexpr Kernel kPairMode =
    &StoresAsRequested<&PairModeKernel<Vec, Src, Dst, AnyCached>, &PairModeKernel<Vec, Src, Dst, AnyStreaming>>;

using Uyvy = PackedSource<UyvyUnpack>;
using Yuyv = PackedSource<YuyvUnpack>;
using Uvyy = PackedSource<UvyyUnpack>;
using WordAlpha = Bgr32<AlphaForm::kWord>;
using DwordAlpha = Bgr32<AlphaForm::kDword>;
using PlaneAlpha = Bgr32<AlphaForm::kPlane>;

// The aligned cached kernel keeps the word form of the constant alpha; the
// other three use the dword form.
template <class Src>
constexpr KernelQuad WordThenDwordAlpha() {
    return {{&FrameKernel<Vec, Src, WordAlpha, AlignedCached>, &FrameKernel<Vec, Src, DwordAlpha, AlignedStreaming>,
             &FrameKernel<Vec, Src, DwordAlpha, AnyCached>, &FrameKernel<Vec, Src, DwordAlpha, AnyStreaming>}};
}

}  // namespace

// This level's kernels of every decoding export.
const Kernels kKernels = {
    .uyvy_to_bgr32 = MakeKernelTable(ZENK_KERNEL_QUAD(FrameKernel, Vec, Uyvy, WordAlpha), kPairMode<Uyvy, WordAlpha>,
                                     kPairMode<Uyvy, WordAlpha>),
    .planar_to_bgr32 = MakeKernelTable(WordThenDwordAlpha<PlanarSource>(), kPairMode<PlanarSource, DwordAlpha>,
                                       kPairMode<PlanarSource, DwordAlpha>),
    .yuyv_to_bgr32 = WordThenDwordAlpha<Yuyv>(),
    .uyvy_to_bgr24 = ZENK_KERNEL_QUAD(FrameKernel, Vec, Uyvy, Bgr24),
    .yuyv_to_bgr24 = ZENK_KERNEL_QUAD(FrameKernel, Vec, Yuyv, Bgr24),
    .uvyy_to_bgr24 = ZENK_KERNEL_QUAD(FrameKernel, Vec, Uvyy, Bgr24),
    .planar_to_bgr24 = ZENK_KERNEL_QUAD(FrameKernel, Vec, PlanarSource, Bgr24),
    .yuyv_alpha_to_bgr32 = ZENK_KERNEL_QUAD(FrameKernel, Vec, WithAlphaPlane<Yuyv>, PlaneAlpha),
    .uyvy_alpha_to_bgr32 = ZENK_KERNEL_QUAD(FrameKernel, Vec, WithAlphaPlane<Uyvy>, PlaneAlpha),
    // Ordinary stores in every entry: use_streaming_stores chooses between
    // two identical kernels.
    .planar_alpha_to_bgr32 = {{&FrameKernel<Vec, WithAlphaPlane<PlanarSource>, PlaneAlpha, AlignedCached>,
                               &FrameKernel<Vec, WithAlphaPlane<PlanarSource>, PlaneAlpha, AlignedCached>,
                               &FrameKernel<Vec, WithAlphaPlane<PlanarSource>, PlaneAlpha, AnyCached>,
                               &FrameKernel<Vec, WithAlphaPlane<PlanarSource>, PlaneAlpha, AnyCached>}},
};

}  // namespace zenk::ZENK_ISA::yuv_to_rgb
