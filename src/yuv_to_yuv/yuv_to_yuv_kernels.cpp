// The kernels of the YUV-to-YUV family.
#include "yuv_to_yuv_kernels.h"

#include "formats.h"

namespace zenk::ZENK_ISA::yuv_to_yuv {
namespace {

using Copy = Reorder<Sse2, CopyRule<Sse2>>;
using Exchange = Reorder<Sse2, ExchangeMiddleBytesRule<Sse2>>;
using Split = SplitToPlanar<Sse2>;
template <template <class> class In, template <class> class Out, LumaRule kLuma>
using Matrix = MatrixChange<Sse2, In, Out, kLuma>;

}  // namespace

// This level's kernels of every export of the family.
const Kernels kKernels = {
    .copy_packed = ZENK_KERNEL_QUAD(FrameKernel, Copy),
    .swap_word_bytes = ZENK_KERNEL_QUAD(FrameKernel, Reorder<Sse2, SwapWordBytesRule<Sse2>>),
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
    .widen_to_444 = ZENK_KERNEL_QUAD(FrameKernel, WidenTo444<Sse2>),
    .matrix_uyvy_to_uyvy = ZENK_KERNEL_QUAD(FrameKernel, Matrix<UyvyWords, UyvyWords, LumaRule::kOwnPair>),
    .matrix_yuyv_to_yuyv = ZENK_KERNEL_QUAD(FrameKernel, Matrix<YuyvWords, YuyvWords, LumaRule::kOwnPair>),
    .matrix_uyvy_to_yuyv = ZENK_KERNEL_QUAD(FrameKernel, Matrix<UyvyWords, YuyvWords, LumaRule::kOwnPair>),
    .matrix_yuyv_to_uyvy = ZENK_KERNEL_QUAD(FrameKernel, Matrix<YuyvWords, UyvyWords, LumaRule::kOwnPair>),
    .matrix_shared_uyvy_order = ZENK_KERNEL_QUAD(FrameKernel, Matrix<UyvyWords, UyvyWords, LumaRule::kCrossed>),
};

}  // namespace zenk::ZENK_ISA::yuv_to_yuv
