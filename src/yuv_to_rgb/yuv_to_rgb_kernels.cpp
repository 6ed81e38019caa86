// The kernels of the YUV-to-RGB family.
#include "yuv_to_rgb_kernels.h"

#include "formats.h"

namespace zenk::yuv_to_rgb {
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

const KernelQuad kUyvyToBgr32 = ZENK_KERNEL_QUAD(FrameKernel, Uyvy, WordAlpha);
const KernelQuad kYuyvToBgr32 = WordThenDwordAlpha<Yuyv>();
const Kernel kUyvyToBgr32Fields = kPairMode<Uyvy, WordAlpha>;

const KernelQuad kUyvyToBgr24 = ZENK_KERNEL_QUAD(FrameKernel, Uyvy, Bgr24);
const KernelQuad kYuyvToBgr24 = ZENK_KERNEL_QUAD(FrameKernel, Yuyv, Bgr24);
const KernelQuad kUvyyToBgr24 = ZENK_KERNEL_QUAD(FrameKernel, Uvyy, Bgr24);
const KernelQuad kPlanarToBgr24 = ZENK_KERNEL_QUAD(FrameKernel, PlanarSource, Bgr24);

const KernelQuad kPlanarToBgr32 = WordThenDwordAlpha<PlanarSource>();
const Kernel kPlanarToBgr32Fields = kPairMode<PlanarSource, DwordAlpha>;

const KernelQuad kYuyvAlphaToBgr32 = ZENK_KERNEL_QUAD(FrameKernel, WithAlphaPlane<Yuyv>, PlaneAlpha);
const KernelQuad kUyvyAlphaToBgr32 = ZENK_KERNEL_QUAD(FrameKernel, WithAlphaPlane<Uyvy>, PlaneAlpha);
// Ordinary stores in every entry: use_streaming_stores chooses between two
// identical kernels.
const KernelQuad kPlanarAlphaToBgr32 = {{&FrameKernel<WithAlphaPlane<PlanarSource>, PlaneAlpha, AlignedCached>,
                                         &FrameKernel<WithAlphaPlane<PlanarSource>, PlaneAlpha, AlignedCached>,
                                         &FrameKernel<WithAlphaPlane<PlanarSource>, PlaneAlpha, AnyCached>,
                                         &FrameKernel<WithAlphaPlane<PlanarSource>, PlaneAlpha, AnyCached>}};

}  // namespace zenk::yuv_to_rgb
