// Exports of the YUV-to-YUV family. Kernels: src/yuv_to_yuv/yuv_to_yuv_kernels.cpp (quads)
// Each export compares the two colour standards first: the same standard
// reorders bytes, different standards change the matrix.
#include "export_frame.h"
#include "yuv_to_yuv/yuv_to_yuv_kernels.h"

using namespace zenk;
using namespace zenk::yuv_to_yuv;

ZENK_EXPORT_EX(ZENK_SSE2_UYVY16I_UYVY16I_EX) {
    RunFourKernel(kPackedBothSides32, SameStandard(*request) ? kCopyPacked : kMatrixUyvyToUyvy, request);
}

// A copy keeps every byte where it is, whatever the byte order, so the same
// standard is the UYVY16I copy.
ZENK_EXPORT_EX(ZENK_SSE2_YUYV16I_YUYV16I_EX) {
    if (SameStandard(*request))
        ZENK_SSE2_UYVY16I_UYVY16I_EX(request);
    else
        RunFourKernel(kPackedBothSides32, kMatrixYuyvToYuyv, request);
}

ZENK_EXPORT_EX(ZENK_SSE2_UYVY16I_YUYV16I_EX) {
    RunFourKernel(kPackedBothSides32, SameStandard(*request) ? kSwapWordBytes : kMatrixUyvyToYuyv, request);
}

// Swapping the bytes of every word works both ways; the same standard is
// handed to the UYVY16I -> YUYV16I export, which applies its own test.
ZENK_EXPORT_EX(ZENK_SSE2_YUYV16I_UYVY16I_EX) {
    if (SameStandard(*request))
        ZENK_SSE2_UYVY16I_YUYV16I_EX(request);
    else
        RunFourKernel(kPackedBothSides16, kMatrixYuyvToUyvy, request);
}

// A change of standard reads and writes UYVY16I byte positions here, in the
// kernel shared with the next two exports.
ZENK_EXPORT_EX(ZENK_SSE2_UVYY16I_UYVY16I_EX) {
    RunFourKernel(kDestination16, SameStandard(*request) ? kExchangeMiddleBytesOrCopy : kMatrixSharedUyvyOrder,
                  request);
}

ZENK_EXPORT_EX(ZENK_SSE2_UYVY16I_UVYY16I_EX) {
    RunFourKernel(kDestination16, SameStandard(*request) ? kExchangeMiddleBytesOrCopy : kMatrixSharedUyvyOrder,
                  request);
}

// A change of standard is not a split: it writes packed UYVY16I lines from
// dst_plane on and leaves the chroma plane as it was.
ZENK_EXPORT_EX(ZENK_SSE2_UYVY16I_Y8PUV8I_EX) {
    RunFourKernel(kDestination16, SameStandard(*request) ? kSplitToPlanar : kMatrixSharedUyvyOrder, request);
}

// The widening never changes the standard.
ZENK_EXPORT_EX(ZENK_SSE2_UYVY16I_V8U8Y8A8I_EX) { RunFourKernel(kWidenDestination, kWidenTo444, request); }

// Constant alpha: colour pass, then the alpha plane filled with alpha_value.
ZENK_EXPORT_EX(ZENK_SSE2_UVYY16I_UYVY16IA8P_EX) { RunConstantAlphaComposite(ZENK_SSE2_UVYY16I_UYVY16I_EX, request); }
ZENK_EXPORT_EX(ZENK_SSE2_YUYV16I_UYVY16IA8P_EX) { RunConstantAlphaComposite(ZENK_SSE2_YUYV16I_UYVY16I_EX, request); }
ZENK_EXPORT_EX(ZENK_SSE2_UYVY16I_YUYV16IA8P_EX) { RunConstantAlphaComposite(ZENK_SSE2_UYVY16I_YUYV16I_EX, request); }
ZENK_EXPORT_EX(ZENK_SSE2_UYVY16I_Y8PUV8IA8P_EX) { RunConstantAlphaComposite(ZENK_SSE2_UYVY16I_Y8PUV8I_EX, request); }
ZENK_EXPORT_EX(ZENK_SSE2_UYVY16I_UYVY16IA8P_EX) { RunConstantAlphaComposite(ZENK_SSE2_UYVY16I_UYVY16I_EX, request); }
ZENK_EXPORT_EX(ZENK_SSE2_UYVY16I_UVYY16IA8P_EX) { RunConstantAlphaComposite(ZENK_SSE2_UYVY16I_UVYY16I_EX, request); }
ZENK_EXPORT_EX(ZENK_SSE2_YUYV16I_YUYV16IA8P_EX) { RunConstantAlphaComposite(ZENK_SSE2_YUYV16I_YUYV16I_EX, request); }

// Alpha copy: colour pass, then the source alpha plane copied.
ZENK_EXPORT_EX(ZENK_SSE2_UYVY16IA8P_YUYV16IA8P_EX) {
    RunAlphaCopyComposite(ZENK_SSE2_UYVY16I_YUYV16I_EX, AlphaDestination::kAlphaPlane, request);
}
ZENK_EXPORT_EX(ZENK_SSE2_UYVY16IA8P_UYVY16IA8P_EX) {
    RunAlphaCopyComposite(ZENK_SSE2_UYVY16I_UYVY16I_EX, AlphaDestination::kAlphaPlane, request);
}
ZENK_EXPORT_EX(ZENK_SSE2_YUYV16IA8P_YUYV16IA8P_EX) {
    RunAlphaCopyComposite(ZENK_SSE2_YUYV16I_YUYV16I_EX, AlphaDestination::kAlphaPlane, request);
}
ZENK_EXPORT_EX(ZENK_SSE2_YUYV16IA8P_UYVY16IA8P_EX) {
    RunAlphaCopyComposite(ZENK_SSE2_YUYV16I_UYVY16I_EX, AlphaDestination::kAlphaPlane, request);
}

// Plain entry points.
ZENK_PLAIN_EXPORT(UYVY16I_UYVY16I, PlainFullRange::kNotSet)
ZENK_PLAIN_EXPORT(YUYV16I_YUYV16I, PlainFullRange::kNotSet)
