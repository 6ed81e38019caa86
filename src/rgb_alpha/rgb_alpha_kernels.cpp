// The kernels of the RGB repacking and alpha plane family.
#include "rgb_alpha_kernels.h"

#include "formats.h"

namespace zenk::rgb_alpha {

const KernelQuad kCopyBgr32 = ZENK_KERNEL_QUAD(FrameKernel, CopyBgr32<Sse2>);
const KernelQuad kBgr32ToBgr24 = ZENK_KERNEL_QUAD(FrameKernel, Bgr32ToBgr24<Sse2>);
const KernelQuad kBgr24ToBgr32 = ZENK_KERNEL_QUAD(FrameKernel, Bgr24ToBgr32<Sse2>);
const KernelQuad kCopyBgr24 = ZENK_KERNEL_QUAD(FrameKernel, CopyBgr24<Sse2>);
const KernelQuad kSplitBgr32 = ZENK_KERNEL_QUAD(FrameKernel, SplitBgr32<Sse2>);
const KernelQuad kExtractAlpha = ZENK_KERNEL_QUAD(FrameKernel, ExtractAlpha<Sse2>);
const KernelQuad kMergeAlpha = ZENK_KERNEL_QUAD(FrameKernel, MergeAlpha<Sse2>);
const KernelQuad kCopyAlphaPlane = ZENK_KERNEL_QUAD(FrameKernel, CopyAlphaPlane<Sse2>);
const KernelQuad kFillAlphaPlane = ZENK_KERNEL_QUAD(FrameKernel, FillAlphaPlane<Sse2>);

}  // namespace zenk::rgb_alpha
