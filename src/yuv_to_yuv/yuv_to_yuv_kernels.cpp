// The kernels of the YUV-to-YUV family.
#include "yuv_to_yuv_kernels.h"

#include "formats.h"
#include "kernel/vector.h"

namespace zenk::ZENK_ISA::yuv_to_yuv {
namespace {

// The widest vector layer of this level, for the change of matrix, the
// split and the widening; the repacking layer for the copies and reorders (on
// the AMD EPYC the split and the widening measured no faster with it).
using Vec = Widest;
using Bytes = Repacking;

using Copy = Reorder<Bytes, ByteMove::kCopy>;
using Exchange = Reorder<Bytes, ByteMove::kExchangeMiddleBytes>;
using Split = SplitToPlanar<Vec>;
template <YuvLayout kIn, YuvLayout kOut, LumaRule kLuma = LumaRule::kOwnPair>
using Matrix = MatrixChange<Vec, kIn, kOut, kLuma>;
constexpr YuvLayout kUyvy = YuvLayout::kUyvy, kYuyv = YuvLayout::kYuyv;

}  // namespace

// This level's kernels of every export of the family.
const Kernels kKernels = {
    .copy_packed = kFrameKernels<Copy>,
    .swap_word_bytes = kFrameKernels<Reorder<Bytes, ByteMove::kSwapWordBytes>>,
    // The exchange exists only as an aligned kernel. Unaligned requests with
    // these formats run the plain copy, so their bytes keep the source
    // order; hosts are given exactly that, and it is kept.
    .exchange_middle_bytes_or_copy = {{
        &FrameKernel<Exchange, AlignedCached>, &FrameKernel<Exchange, AlignedStreaming>,  // aligned: exchange
        &FrameKernel<Copy, AnyCached>, &FrameKernel<Copy, AnyStreaming>,                  // any other: copy
    }},
    // The split writes with ordinary stores whatever use_streaming_stores says.
    .split_to_planar = {{&FrameKernel<Split, AlignedCached>, &FrameKernel<Split, AlignedCached>,
                         &FrameKernel<Split, AnyCached>, &FrameKernel<Split, AnyCached>}},
    .widen_to_444 = kFrameKernels<WidenTo444<Vec>>,
    .matrix_uyvy_to_uyvy = kFrameKernels<Matrix<kUyvy, kUyvy>>,
    .matrix_yuyv_to_yuyv = kFrameKernels<Matrix<kYuyv, kYuyv>>,
    .matrix_uyvy_to_yuyv = kFrameKernels<Matrix<kUyvy, kYuyv>>,
    .matrix_yuyv_to_uyvy = kFrameKernels<Matrix<kYuyv, kUyvy>>,
    .matrix_shared_uyvy_order = kFrameKernels<Matrix<kUyvy, kUyvy, LumaRule::kCrossed>>,
};

}  // namespace zenk::ZENK_ISA::yuv_to_yuv
