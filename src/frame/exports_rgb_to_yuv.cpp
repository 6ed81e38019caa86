// Exports of the RGB-to-YUV family. Kernels: the fields of rgb_to_yuv::Kernels,
// defined in src/rgb_to_yuv/rgb_to_yuv_kernels.cpp
#include "export_frame.h"
#include "rgb_to_yuv/rgb_to_yuv_kernels.h"

using namespace zenk;
using namespace zenk::rgb_to_yuv;

static const Kernels& Level() { return AtActiveLevel(kKernelsAt); }

// Table exports.
void ZENK_CALL ZENK_SSE2_BGR32I_UYVY16I_EX(const ZenkConversionRequest* request) { RunTableExport(Level().bgr32_to_uyvy, request); }
void ZENK_CALL ZENK_SSE2_BGR32I_UVYY16I_EX(const ZenkConversionRequest* request) { RunTableExport(Level().bgr32_to_uvyy, request); }
void ZENK_CALL ZENK_SSE2_BGR32I_Y8PUV8I_EX(const ZenkConversionRequest* request) { RunTableExport(Level().bgr32_to_y8uv, request); }

// Four-kernel exports.
void ZENK_CALL ZENK_SSE2_BGR32I_YUYV16I_EX(const ZenkConversionRequest* request) { RunFourKernel(kBgr32Test, Level().bgr32_to_yuyv, request); }
void ZENK_CALL ZENK_SSE2_BGR24I_YUYV16I_EX(const ZenkConversionRequest* request) { RunFourKernel(kBgr24Test, Level().bgr24_to_yuyv, request); }
void ZENK_CALL ZENK_SSE2_BGR24I_UYVY16I_EX(const ZenkConversionRequest* request) { RunFourKernel(kBgr24Test, Level().bgr24_to_uyvy, request); }
void ZENK_CALL ZENK_SSE2_BGR24I_UVYY16I_EX(const ZenkConversionRequest* request) { RunFourKernel(kBgr24Test, Level().bgr24_to_uvyy, request); }
void ZENK_CALL ZENK_SSE2_BGR24I_Y8PUV8I_EX(const ZenkConversionRequest* request) { RunFourKernel(kBgr24Test, Level().bgr24_to_y8uv, request); }
// The alpha plane's alignment is not tested: it is written with 8-byte and
// single-byte stores.
void ZENK_CALL ZENK_SSE2_BGR32I_YUYV16IA8P_EX(const ZenkConversionRequest* request) { RunFourKernel(kBgr32Test, Level().bgr32_to_yuyv_alpha, request); }
void ZENK_CALL ZENK_SSE2_BGR32I_UYVY16IA8P_EX(const ZenkConversionRequest* request) { RunFourKernel(kBgr32Test, Level().bgr32_to_uyvy_alpha, request); }
void ZENK_CALL ZENK_SSE2_BGR32I_UVYY16IA8P_EX(const ZenkConversionRequest* request) { RunFourKernel(kBgr32Test, Level().bgr32_to_uvyy_alpha, request); }
void ZENK_CALL ZENK_SSE2_BGR32I_Y8PUV8IA8P_EX(const ZenkConversionRequest* request) { RunFourKernel(kBgr32Test, Level().bgr32_to_y8uv_alpha, request); }

// BGR24 colour with a constant alpha plane.
void ZENK_CALL ZENK_SSE2_BGR24I_YUYV16IA8P_EX(const ZenkConversionRequest* request) { RunConstantAlphaComposite(ZENK_SSE2_BGR24I_YUYV16I_EX, request); }
void ZENK_CALL ZENK_SSE2_BGR24I_Y8PUV8IA8P_EX(const ZenkConversionRequest* request) { RunConstantAlphaComposite(ZENK_SSE2_BGR24I_Y8PUV8I_EX, request); }
void ZENK_CALL ZENK_SSE2_BGR24I_UYVY16IA8P_EX(const ZenkConversionRequest* request) { RunConstantAlphaComposite(ZENK_SSE2_BGR24I_UYVY16I_EX, request); }
void ZENK_CALL ZENK_SSE2_BGR24I_UVYY16IA8P_EX(const ZenkConversionRequest* request) { RunConstantAlphaComposite(ZENK_SSE2_BGR24I_UVYY16I_EX, request); }

// BGR24 colour with the source's alpha plane copied.
void ZENK_CALL ZENK_SSE2_BGR24IA8P_YUYV16IA8P_EX(const ZenkConversionRequest* request) { RunAlphaCopyComposite(ZENK_SSE2_BGR24I_YUYV16I_EX, request); }
void ZENK_CALL ZENK_SSE2_BGR24IA8P_Y8PUV8IA8P_EX(const ZenkConversionRequest* request) { RunAlphaCopyComposite(ZENK_SSE2_BGR24I_Y8PUV8I_EX, request); }
void ZENK_CALL ZENK_SSE2_BGR24IA8P_UYVY16IA8P_EX(const ZenkConversionRequest* request) { RunAlphaCopyComposite(ZENK_SSE2_BGR24I_UYVY16I_EX, request); }
void ZENK_CALL ZENK_SSE2_BGR24IA8P_UVYY16IA8P_EX(const ZenkConversionRequest* request) { RunAlphaCopyComposite(ZENK_SSE2_BGR24I_UVYY16I_EX, request); }

// Plain entry points.
ZENK_PLAIN_EXPORT(BGR32I_YUYV16I, PlainFullRange::kFromRange)
ZENK_PLAIN_EXPORT(BGR32I_UYVY16I, PlainFullRange::kFromRange)
ZENK_PLAIN_EXPORT(BGR32I_UVYY16I, PlainFullRange::kFromRange)
ZENK_PLAIN_EXPORT(BGR24I_YUYV16I, PlainFullRange::kFromRange)
ZENK_PLAIN_EXPORT(BGR24I_UYVY16I, PlainFullRange::kFromRange)
ZENK_PLAIN_EXPORT(BGR24I_UVYY16I, PlainFullRange::kFromRange)
