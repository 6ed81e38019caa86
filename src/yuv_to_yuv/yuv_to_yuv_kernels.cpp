// The kernels of the YUV-to-YUV family.
#include "yuv_to_yuv_kernels.h"

#include "formats.h"

namespace zenk::yuv_to_yuv {
namespace {

using Copy = Reorder<Sse2, CopyRule<Sse2>>;
using Exchange = Reorder<Sse2, ExchangeMiddleBytesRule<Sse2>>;
using Split = SplitToPlanar<Sse2>;
template <template <class> class In, template <class> class Out, LumaRule kLuma>
using Matrix = MatrixChange<Sse2, In, Out, kLuma>;

}  // namespace

const KernelQuad kCopyPacked = ZENK_KERNEL_QUAD(FrameKernel, Copy);
const KernelQuad kSwapWordBytes = ZENK_KERNEL_QUAD(FrameKernel, Reorder<Sse2, SwapWordBytesRule<Sse2>>);
// The exchange exists only as an aligned kernel. Unaligned requests with
// these formats run the plain copy, so their bytes keep the source order;
// hosts are given exactly that, and it is kept.
const KernelQuad kExchangeMiddleBytesOrCopy = {{
    &FrameKernel<Exchange, AlignedCached>, &FrameKernel<Exchange, AlignedStreaming>,  // aligned: exchange
    &FrameKernel<Copy, AnyCached>, &FrameKernel<Copy, AnyStreaming>,                  // any other: copy
}};

const KernelQuad kMatrixUyvyToUyvy = ZENK_KERNEL_QUAD(FrameKernel, Matrix<UyvyWords, UyvyWords, LumaRule::kOwnPair>);
const KernelQuad kMatrixYuyvToYuyv = ZENK_KERNEL_QUAD(FrameKernel, Matrix<YuyvWords, YuyvWords, LumaRule::kOwnPair>);
const KernelQuad kMatrixUyvyToYuyv = ZENK_KERNEL_QUAD(FrameKernel, Matrix<UyvyWords, YuyvWords, LumaRule::kOwnPair>);
const KernelQuad kMatrixYuyvToUyvy = ZENK_KERNEL_QUAD(FrameKernel, Matrix<YuyvWords, UyvyWords, LumaRule::kOwnPair>);
const KernelQuad kMatrixSharedUyvyOrder =
    ZENK_KERNEL_QUAD(FrameKernel, Matrix<UyvyWords, UyvyWords, LumaRule::kCrossed>);

// The split writes with ordinary stores whatever use_streaming_stores says.
const KernelQuad kSplitToPlanar = {{&FrameKernel<Split, AlignedCached>, &FrameKernel<Split, AlignedCached>,
                                    &FrameKernel<Split, AnyCached>, &FrameKernel<Split, AnyCached>}};
const KernelQuad kWidenTo444 = ZENK_KERNEL_QUAD(FrameKernel, WidenTo444<Sse2>);

}  // namespace zenk::yuv_to_yuv
