// The kernels of the RGB repacking and alpha plane family.
#include "rgb_alpha_kernels.h"

#include "formats.h"

namespace zenk::ZENK_ISA::rgb_alpha {

// This level's kernels of every export of the family.
const Kernels kKernels = {
    .copy_bgr32 = ZENK_KERNEL_QUAD(FrameKernel, CopyBgr32<Sse2>),
    .bgr32_to_bgr24 = ZENK_KERNEL_QUAD(FrameKernel, Bgr32ToBgr24<Sse2>),
    .bgr24_to_bgr32 = ZENK_KERNEL_QUAD(FrameKernel, Bgr24ToBgr32<Sse2>),
    .copy_bgr24 = ZENK_KERNEL_QUAD(FrameKernel, CopyBgr24<Sse2>),
    .split_bgr32 = ZENK_KERNEL_QUAD(FrameKernel, SplitBgr32<Sse2>),
    .extract_alpha = ZENK_KERNEL_QUAD(FrameKernel, ExtractAlpha<Sse2>),
    .merge_alpha = ZENK_KERNEL_QUAD(FrameKernel, MergeAlpha<Sse2>),
    .copy_alpha_plane = ZENK_KERNEL_QUAD(FrameKernel, CopyAlphaPlane<Sse2>),
    .fill_alpha_plane = ZENK_KERNEL_QUAD(FrameKernel, FillAlphaPlane<Sse2>),
};

}  // namespace zenk::ZENK_ISA::rgb_alpha
