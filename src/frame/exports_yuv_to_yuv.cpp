// Exports of the YUV-to-YUV family. Kernels: the fields of yuv_to_yuv::Kernels,
// defined in src/yuv_to_yuv/yuv_to_yuv_kernels.cpp
// Each export compares the two colour standards first: the same standard
// reorders bytes, different standards change the matrix.
#include "export_frame.h"
#include "yuv_to_yuv/yuv_to_yuv_kernels.h"

using namespace zenk;
using namespace zenk::yuv_to_yuv;

namespace {

const Kernels& Level() { return AtActiveLevel(kKernelsAt); }

bool SameStandard(const Request& r) { return r.src_matrix == r.dst_matrix; }

}  // namespace

ZENK_EXPORT_EX(ZENK_SSE2_UYVY16I_UYVY16I_EX) {
    RunFourKernel(kPackedBothSides32, SameStandard(*request) ? Level().copy_packed : Level().matrix_uyvy_to_uyvy, request);
}

// A copy keeps every byte where it is, whatever the byte order, so the same
// standard is the UYVY16I copy.
ZENK_EXPORT_EX(ZENK_SSE2_YUYV16I_YUYV16I_EX) {
    if (SameStandard(*request))
        ZENK_SSE2_UYVY16I_UYVY16I_EX(request);
    else
        RunFourKernel(kPackedBothSides32, Level().matrix_yuyv_to_yuyv, request);
}

ZENK_EXPORT_EX(ZENK_SSE2_UYVY16I_YUYV16I_EX) {
    RunFourKernel(kPackedBothSides32, SameStandard(*request) ? Level().swap_word_bytes : Level().matrix_uyvy_to_yuyv, request);
}

// Swapping the bytes of every word works both ways; the same standard is
// handed to the UYVY16I -> YUYV16I export, which applies its own test.
ZENK_EXPORT_EX(ZENK_SSE2_YUYV16I_UYVY16I_EX) {
    if (SameStandard(*request))
        ZENK_SSE2_UYVY16I_YUYV16I_EX(request);
    else
        RunFourKernel(kPackedBothSides16, Level().matrix_yuyv_to_uyvy, request);
}

// A change of standard reads and writes UYVY16I byte positions here, in the
// kernel shared with the next two exports.
ZENK_EXPORT_EX(ZENK_SSE2_UVYY16I_UYVY16I_EX) {
    RunFourKernel(kDestination16, SameStandard(*request) ? Level().exchange_middle_bytes_or_copy : Level().matrix_shared_uyvy_order,
                  request);
}

ZENK_EXPORT_EX(ZENK_SSE2_UYVY16I_UVYY16I_EX) {
    RunFourKernel(kDestination16, SameStandard(*request) ? Level().exchange_middle_bytes_or_copy : Level().matrix_shared_uyvy_order,
                  request);
}

// A change of standard is not a split: it writes packed UYVY16I lines from
// dst_plane on and leaves the chroma plane as it was.
ZENK_EXPORT_EX(ZENK_SSE2_UYVY16I_Y8PUV8I_EX) {
    RunFourKernel(kDestination16, SameStandard(*request) ? Level().split_to_planar : Level().matrix_shared_uyvy_order, request);
}

// The widening never changes the standard.
ZENK_EXPORT_EX(ZENK_SSE2_UYVY16I_V8U8Y8A8I_EX) { RunFourKernel(kWidenDestination, Level().widen_to_444, request); }

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
