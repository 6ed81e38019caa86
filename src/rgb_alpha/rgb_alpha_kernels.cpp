// The kernels of the RGB repacking and alpha plane family.
#include "rgb_alpha_kernels.h"

#include "formats.h"
#include "kernel/vector.h"

namespace zenk::ZENK_ISA::rgb_alpha {

// Every kernel of the family repacks bytes: the repacking layer.
using Vec = Repacking;

// This level's kernels of every export of the family.
const Kernels kKernels = {
    .copy_bgr32 = kFrameKernels<Copy<Vec, 4, 4>>,
    .bgr32_to_bgr24 = kFrameKernels<Bgr32ToBgr24<Vec, false>>,
    .bgr24_to_bgr32 = kFrameKernels<Bgr24ToBgr32<Vec, false>>,
    .copy_bgr24 = kFrameKernels<Copy<Vec, 3, 3>>,
    .split_bgr32 = kFrameKernels<Bgr32ToBgr24<Vec, true>>,
    .extract_alpha = kFrameKernels<ExtractAlpha<Vec>>,
    .merge_alpha = kFrameKernels<Bgr24ToBgr32<Vec, true>>,
    // Alpha planes: 32-byte blocks.
    .copy_alpha_plane = kFrameKernels<Copy<Vec, 1, 2>>,
    // The fill keeps 16-byte stores at every level: on the AMD EPYC the
    // wider ones measured a quarter slower filling a UHD plane, and no
    // faster in the cache (docs/performance.md).
    .fill_alpha_plane = kFrameKernels<FillAlphaPlane<Vec128>>,
};

}  // namespace zenk::ZENK_ISA::rgb_alpha
