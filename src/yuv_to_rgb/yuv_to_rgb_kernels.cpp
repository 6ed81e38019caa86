// The kernels of the YUV-to-RGB family.
#include "yuv_to_rgb_kernels.h"

#include <type_traits>

#include "formats.h"
#include "kernel/vector.h"

namespace zenk::ZENK_ISA::yuv_to_rgb {
namespace {

// The widest vector layer of this level; the repacking layer for the BGR24
// outputs, whose packing across lanes costs more than 512-bit registers gain
// (on the AMD EPYC, 1 to 14 % faster with 256-bit ones at the AVX-512 level).
using Vec = Widest;

template <YuvLayout kLayout, AlphaForm kForm>
using Frame = Decoder<std::conditional_t<kForm == AlphaForm::kNone, Repacking, Vec>, kLayout, kForm, 16>;
template <YuvLayout kLayout, AlphaForm kForm>
constexpr Kernel kPairMode = kPairModeKernel<Decoder<Vec, kLayout, kForm, 8>>;

constexpr YuvLayout kUyvy = YuvLayout::kUyvy, kYuyv = YuvLayout::kYuyv, kUvyy = YuvLayout::kUvyy,
                    kPlanar = YuvLayout::kPlanar;
constexpr AlphaForm kWordAlpha = AlphaForm::kWord, kDwordAlpha = AlphaForm::kDword, kPlaneAlpha = AlphaForm::kPlane,
                    kBgr24 = AlphaForm::kNone;

// The aligned cached kernel keeps the word form of the constant alpha; the
// other three use the dword form.
template <YuvLayout kLayout>
constexpr KernelQuad WordThenDwordAlpha() {
    return {{&FrameKernel<Frame<kLayout, kWordAlpha>, AlignedCached>,
             &FrameKernel<Frame<kLayout, kDwordAlpha>, AlignedStreaming>,
             &FrameKernel<Frame<kLayout, kDwordAlpha>, AnyCached>, &FrameKernel<Frame<kLayout, kDwordAlpha>, AnyStreaming>}};
}

}  // namespace

// This level's kernels of every decoding export.
const Kernels kKernels = {
    .uyvy_to_bgr32 = MakeKernelTable(kFrameKernels<Frame<kUyvy, kWordAlpha>>, kPairMode<kUyvy, kWordAlpha>,
                                     kPairMode<kUyvy, kWordAlpha>),
    .planar_to_bgr32 = MakeKernelTable(WordThenDwordAlpha<kPlanar>(), kPairMode<kPlanar, kDwordAlpha>,
                                       kPairMode<kPlanar, kDwordAlpha>),
    .yuyv_to_bgr32 = WordThenDwordAlpha<kYuyv>(),
    .uyvy_to_bgr24 = kFrameKernels<Frame<kUyvy, kBgr24>>,
    .yuyv_to_bgr24 = kFrameKernels<Frame<kYuyv, kBgr24>>,
    .uvyy_to_bgr24 = kFrameKernels<Frame<kUvyy, kBgr24>>,
    .planar_to_bgr24 = kFrameKernels<Frame<kPlanar, kBgr24>>,
    .yuyv_alpha_to_bgr32 = kFrameKernels<Frame<kYuyv, kPlaneAlpha>>,
    .uyvy_alpha_to_bgr32 = kFrameKernels<Frame<kUyvy, kPlaneAlpha>>,
    // Ordinary stores in every entry: use_streaming_stores chooses between
    // two identical kernels.
    .planar_alpha_to_bgr32 = {{&FrameKernel<Frame<kPlanar, kPlaneAlpha>, AlignedCached>,
                               &FrameKernel<Frame<kPlanar, kPlaneAlpha>, AlignedCached>,
                               &FrameKernel<Frame<kPlanar, kPlaneAlpha>, AnyCached>,
                               &FrameKernel<Frame<kPlanar, kPlaneAlpha>, AnyCached>}},
};

}  // namespace zenk::ZENK_ISA::yuv_to_rgb
