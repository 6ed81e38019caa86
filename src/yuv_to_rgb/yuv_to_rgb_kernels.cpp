// The kernels of the YUV-to-RGB family.
#include "yuv_to_rgb_kernels.h"

#include "formats.h"

namespace zenk::ZENK_ISA::yuv_to_rgb {
namespace {

// One pair-mode kernel serves all four variants of its column; its body
// stores bypass the cache when the host asks for streaming stores.
template <class Src, class Dst>
constexpr Kernel kPairMode =
    &StoresAsRequested<&PairModeKernel<Src, Dst, AnyCached>, &PairModeKernel<Src, Dst, AnyStreaming>>;

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
    return {{&FrameKernel<Src, WordAlpha, AlignedCached>, &FrameKernel<Src, DwordAlpha, AlignedStreaming>,
             &FrameKernel<Src, DwordAlpha, AnyCached>, &FrameKernel<Src, DwordAlpha, AnyStreaming>}};
}

}  // namespace

// This level's kernels of every decoding export.
const Kernels kKernels = {
    .uyvy_to_bgr32 = MakeKernelTable(ZENK_KERNEL_QUAD(FrameKernel, Uyvy, WordAlpha), kPairMode<Uyvy, WordAlpha>,
                                     kPairMode<Uyvy, WordAlpha>),
    .planar_to_bgr32 = MakeKernelTable(WordThenDwordAlpha<PlanarSource>(), kPairMode<PlanarSource, DwordAlpha>,
                                       kPairMode<PlanarSource, DwordAlpha>),
    .yuyv_to_bgr32 = WordThenDwordAlpha<Yuyv>(),
    .uyvy_to_bgr24 = ZENK_KERNEL_QUAD(FrameKernel, Uyvy, Bgr24),
    .yuyv_to_bgr24 = ZENK_KERNEL_QUAD(FrameKernel, Yuyv, Bgr24),
    .uvyy_to_bgr24 = ZENK_KERNEL_QUAD(FrameKernel, Uvyy, Bgr24),
    .planar_to_bgr24 = ZENK_KERNEL_QUAD(FrameKernel, PlanarSource, Bgr24),
    .yuyv_alpha_to_bgr32 = ZENK_KERNEL_QUAD(FrameKernel, WithAlphaPlane<Yuyv>, PlaneAlpha),
    .uyvy_alpha_to_bgr32 = ZENK_KERNEL_QUAD(FrameKernel, WithAlphaPlane<Uyvy>, PlaneAlpha),
    // Ordinary stores in every entry: use_streaming_stores chooses between
    // two identical kernels.
    .planar_alpha_to_bgr32 = {{&FrameKernel<WithAlphaPlane<PlanarSource>, PlaneAlpha, AlignedCached>,
                               &FrameKernel<WithAlphaPlane<PlanarSource>, PlaneAlpha, AlignedCached>,
                               &FrameKernel<WithAlphaPlane<PlanarSource>, PlaneAlpha, AnyCached>,
                               &FrameKernel<WithAlphaPlane<PlanarSource>, PlaneAlpha, AnyCached>}},
};

}  // namespace zenk::ZENK_ISA::yuv_to_rgb
