// Exports of the RGB repacking and alpha plane family. Kernels: the fields of
// rgb_alpha::Kernels, defined in src/rgb_alpha/rgb_alpha_kernels.cpp
#include "export_frame.h"
#include "rgb_alpha/rgb_alpha_kernels.h"

using namespace zenk;
using namespace zenk::rgb_alpha;

static const Kernels& Level() { return AtActiveLevel(kKernelsAt); }

// Four-kernel exports.
void ZENK_CALL ZENK_SSE2_BGR32I_BGR32I_EX(const ZenkConversionRequest* request) { RunFourKernel(kCopyBgr32Test, Level().copy_bgr32, request); }
void ZENK_CALL ZENK_SSE2_BGR32I_BGR24I_EX(const ZenkConversionRequest* request) { RunFourKernel(kToBgr24Test, Level().bgr32_to_bgr24, request); }
void ZENK_CALL ZENK_SSE2_BGR24I_BGR32I_EX(const ZenkConversionRequest* request) { RunFourKernel(kToBgr32Test, Level().bgr24_to_bgr32, request); }
void ZENK_CALL ZENK_SSE2_BGR24I_BGR24I_EX(const ZenkConversionRequest* request) { RunFourKernel(kToBgr24Test, Level().copy_bgr24, request); }
void ZENK_CALL ZENK_SSE2_BGR32I_BGR24IA8P_EX(const ZenkConversionRequest* request) { RunFourKernel(kSplitTest, Level().split_bgr32, request); }
void ZENK_CALL ZENK_SSE2_A8P_A8P_EX(const ZenkConversionRequest* request) { RunFourKernel(kAlphaPlaneTest, Level().copy_alpha_plane, request); }
void ZENK_CALL ZENK_SSE2_A8C_A8P_EX(const ZenkConversionRequest* request) { RunFourKernel(kAlphaPlaneTest, Level().fill_alpha_plane, request); }
void ZENK_CALL ZENK_SSE2_BGR32I_A8P_EX(const ZenkConversionRequest* request) { RunFourKernel(kExtractAlphaTest, Level().extract_alpha, request); }
void ZENK_CALL ZENK_SSE2_BGR24IA8P_BGR32I_EX(const ZenkConversionRequest* request) { RunFourKernel(kExtractAlphaTest, Level().merge_alpha, request); }

// Composites.
void ZENK_CALL ZENK_SSE2_BGR24I_BGR24IA8P_EX(const ZenkConversionRequest* request) { RunConstantAlphaComposite(ZENK_SSE2_BGR24I_BGR24I_EX, request); }
void ZENK_CALL ZENK_SSE2_BGR24IA8P_BGR24IA8P_EX(const ZenkConversionRequest* request) { RunAlphaCopyComposite(ZENK_SSE2_BGR24I_BGR24I_EX, request); }
void ZENK_CALL ZENK_SSE2_BGR24IA8P_A8P_EX(const ZenkConversionRequest* request) { CopySourceAlphaPlane(request); }
void ZENK_CALL ZENK_SSE2_UYVY16IA8P_A8P_EX(const ZenkConversionRequest* request) { CopySourceAlphaPlane(request); }
void ZENK_CALL ZENK_SSE2_YUYV16IA8P_A8P_EX(const ZenkConversionRequest* request) { CopySourceAlphaPlane(request); }

// Plain entry points.
ZENK_PLAIN_EXPORT(BGR32I_BGR32I, PlainFullRange::kNotSet)
ZENK_PLAIN_EXPORT(BGR32I_BGR24I, PlainFullRange::kNotSet)
ZENK_PLAIN_EXPORT(BGR24I_BGR32I, PlainFullRange::kNotSet)
ZENK_PLAIN_EXPORT(BGR24I_BGR24I, PlainFullRange::kNotSet)

extern "C" void ZENK_CALL ZENK_SSE2_BGR32I_A8P(const uint8_t* src, uint8_t* dst, int32_t src_pitch) {
    const ZenkConversionRequest plain = MakePlainRequest(src, dst, src_pitch, 0, 0, PlainFullRange::kNotSet, 0);
    ZENK_SSE2_BGR32I_A8P_EX(&plain);
}
