// Exports of the YUV-to-YUV family. Kernels: the fields of yuv_to_yuv::Kernels,
// defined in src/yuv_to_yuv/yuv_to_yuv_kernels.cpp
// Each export compares the two colour standards first: the same standard
// reorders bytes, different standards change the matrix.
#include "export_frame.h"
#include "yuv_to_yuv/yuv_to_yuv_kernels.h"

using namespace zenk;
using namespace zenk::yuv_to_yuv;

static const Kernels& Level() { return AtActiveLevel(kKernelsAt); }

// The same standard on both sides reorders bytes (`same`), different
// standards change the matrix (`change`).
static void RunByStandard(const AlignmentTest& test, const KernelQuad& same, const KernelQuad& change, const Request* r) {
    RunFourKernel(test, r->src_matrix == r->dst_matrix ? same : change, r);
}

void ZENK_CALL ZENK_SSE2_UYVY16I_UYVY16I_EX(const ZenkConversionRequest* request) { RunByStandard(kPackedBothSides32, Level().copy_packed, Level().matrix_uyvy_to_uyvy, request); }
void ZENK_CALL ZENK_SSE2_UYVY16I_YUYV16I_EX(const ZenkConversionRequest* request) { RunByStandard(kPackedBothSides32, Level().swap_word_bytes, Level().matrix_uyvy_to_yuyv, request); }

// A copy keeps every byte where it is, whatever the byte order, so the same
// standard is the UYVY16I copy, with that export's test.
void ZENK_CALL ZENK_SSE2_YUYV16I_YUYV16I_EX(const ZenkConversionRequest* request) { RunByStandard(kPackedBothSides32, Level().copy_packed, Level().matrix_yuyv_to_yuyv, request); }

// Swapping the bytes of every word works both ways; the same standard takes
// the UYVY16I -> YUYV16I export's test, a change of standard this one's.
void ZENK_CALL ZENK_SSE2_YUYV16I_UYVY16I_EX(const ZenkConversionRequest* request) {
    if (request->src_matrix == request->dst_matrix)
        ZENK_SSE2_UYVY16I_YUYV16I_EX(request);
    else
        RunFourKernel(kPackedBothSides16, Level().matrix_yuyv_to_uyvy, request);
}

// A change of standard reads and writes UYVY16I byte positions in the next
// three exports, in the kernel they share. For the split it is not a split:
// it writes packed UYVY16I lines from dst_plane on and leaves the chroma
// plane as it was.
void ZENK_CALL ZENK_SSE2_UVYY16I_UYVY16I_EX(const ZenkConversionRequest* request) {
    RunByStandard(kDestination16, Level().exchange_middle_bytes_or_copy, Level().matrix_shared_uyvy_order, request);
}
void ZENK_CALL ZENK_SSE2_UYVY16I_UVYY16I_EX(const ZenkConversionRequest* request) {
    RunByStandard(kDestination16, Level().exchange_middle_bytes_or_copy, Level().matrix_shared_uyvy_order, request);
}
void ZENK_CALL ZENK_SSE2_UYVY16I_Y8PUV8I_EX(const ZenkConversionRequest* request) { RunByStandard(kDestination16, Level().split_to_planar, Level().matrix_shared_uyvy_order, request); }

// The widening never changes the standard.
void ZENK_CALL ZENK_SSE2_UYVY16I_V8U8Y8A8I_EX(const ZenkConversionRequest* request) { RunFourKernel(kWidenDestination, Level().widen_to_444, request); }

// Constant alpha: colour pass, then the alpha plane filled with alpha_value.
void ZENK_CALL ZENK_SSE2_UVYY16I_UYVY16IA8P_EX(const ZenkConversionRequest* request) { RunConstantAlphaComposite(ZENK_SSE2_UVYY16I_UYVY16I_EX, request); }
void ZENK_CALL ZENK_SSE2_YUYV16I_UYVY16IA8P_EX(const ZenkConversionRequest* request) { RunConstantAlphaComposite(ZENK_SSE2_YUYV16I_UYVY16I_EX, request); }
void ZENK_CALL ZENK_SSE2_UYVY16I_YUYV16IA8P_EX(const ZenkConversionRequest* request) { RunConstantAlphaComposite(ZENK_SSE2_UYVY16I_YUYV16I_EX, request); }
void ZENK_CALL ZENK_SSE2_UYVY16I_Y8PUV8IA8P_EX(const ZenkConversionRequest* request) { RunConstantAlphaComposite(ZENK_SSE2_UYVY16I_Y8PUV8I_EX, request); }
void ZENK_CALL ZENK_SSE2_UYVY16I_UYVY16IA8P_EX(const ZenkConversionRequest* request) { RunConstantAlphaComposite(ZENK_SSE2_UYVY16I_UYVY16I_EX, request); }
void ZENK_CALL ZENK_SSE2_UYVY16I_UVYY16IA8P_EX(const ZenkConversionRequest* request) { RunConstantAlphaComposite(ZENK_SSE2_UYVY16I_UVYY16I_EX, request); }
void ZENK_CALL ZENK_SSE2_YUYV16I_YUYV16IA8P_EX(const ZenkConversionRequest* request) { RunConstantAlphaComposite(ZENK_SSE2_YUYV16I_YUYV16I_EX, request); }

// Alpha copy: colour pass, then the source alpha plane copied.
void ZENK_CALL ZENK_SSE2_UYVY16IA8P_YUYV16IA8P_EX(const ZenkConversionRequest* request) { RunAlphaCopyComposite(ZENK_SSE2_UYVY16I_YUYV16I_EX, request); }
void ZENK_CALL ZENK_SSE2_UYVY16IA8P_UYVY16IA8P_EX(const ZenkConversionRequest* request) { RunAlphaCopyComposite(ZENK_SSE2_UYVY16I_UYVY16I_EX, request); }
void ZENK_CALL ZENK_SSE2_YUYV16IA8P_YUYV16IA8P_EX(const ZenkConversionRequest* request) { RunAlphaCopyComposite(ZENK_SSE2_YUYV16I_YUYV16I_EX, request); }
void ZENK_CALL ZENK_SSE2_YUYV16IA8P_UYVY16IA8P_EX(const ZenkConversionRequest* request) { RunAlphaCopyComposite(ZENK_SSE2_YUYV16I_UYVY16I_EX, request); }

// Plain entry points.
ZENK_PLAIN_EXPORT(UYVY16I_UYVY16I, PlainFullRange::kNotSet)
ZENK_PLAIN_EXPORT(YUYV16I_YUYV16I, PlainFullRange::kNotSet)
