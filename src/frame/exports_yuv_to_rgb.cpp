// Exports of the YUV-to-RGB family. Kernels: the fields of yuv_to_rgb::Kernels,
// defined in src/yuv_to_rgb/yuv_to_rgb_kernels.cpp
#include "export_frame.h"
#include "yuv_to_rgb/yuv_to_rgb_kernels.h"

using namespace zenk;
using namespace zenk::yuv_to_rgb;

static const Kernels& Level() { return AtActiveLevel(kKernelsAt); }

// Table exports.
void ZENK_CALL ZENK_SSE2_UYVY16I_BGR32I_EX(const ZenkConversionRequest* request) { RunTableExport(Level().uyvy_to_bgr32, request); }
void ZENK_CALL ZENK_SSE2_Y8PUV8I_BGR32I_EX(const ZenkConversionRequest* request) { RunTableExport(Level().planar_to_bgr32, request); }

// Four-kernel exports.
void ZENK_CALL ZENK_SSE2_YUYV16I_BGR32I_EX(const ZenkConversionRequest* request) { RunFourKernel(kPackedToBgr32Test, Level().yuyv_to_bgr32, request); }
void ZENK_CALL ZENK_SSE2_UYVY16I_BGR24I_EX(const ZenkConversionRequest* request) { RunFourKernel(kToBgr24Test, Level().uyvy_to_bgr24, request); }
void ZENK_CALL ZENK_SSE2_YUYV16I_BGR24I_EX(const ZenkConversionRequest* request) { RunFourKernel(kToBgr24Test, Level().yuyv_to_bgr24, request); }
void ZENK_CALL ZENK_SSE2_UVYY16I_BGR24I_EX(const ZenkConversionRequest* request) { RunFourKernel(kToBgr24Test, Level().uvyy_to_bgr24, request); }
void ZENK_CALL ZENK_SSE2_Y8PUV8I_BGR24I_EX(const ZenkConversionRequest* request) { RunFourKernel(kToBgr24Test, Level().planar_to_bgr24, request); }
void ZENK_CALL ZENK_SSE2_Y8PUV8IA8P_BGR32I_EX(const ZenkConversionRequest* request) { RunFourKernel(kPlanarAlphaToBgr32Test, Level().planar_alpha_to_bgr32, request); }
void ZENK_CALL ZENK_SSE2_YUYV16IA8P_BGR32I_EX(const ZenkConversionRequest* request) { RunFourKernel(kPackedToBgr32Test, Level().yuyv_alpha_to_bgr32, request); }
void ZENK_CALL ZENK_SSE2_UYVY16IA8P_BGR32I_EX(const ZenkConversionRequest* request) { RunFourKernel(kPackedToBgr32Test, Level().uyvy_alpha_to_bgr32, request); }

// Composites: the colour pass, then the destination alpha plane.
void ZENK_CALL ZENK_SSE2_Y8PUV8I_BGR24IA8P_EX(const ZenkConversionRequest* request) { RunConstantAlphaComposite(ZENK_SSE2_Y8PUV8I_BGR24I_EX, request); }
void ZENK_CALL ZENK_SSE2_UVYY16I_BGR24IA8P_EX(const ZenkConversionRequest* request) { RunConstantAlphaComposite(ZENK_SSE2_UVYY16I_BGR24I_EX, request); }
void ZENK_CALL ZENK_SSE2_YUYV16I_BGR24IA8P_EX(const ZenkConversionRequest* request) { RunConstantAlphaComposite(ZENK_SSE2_YUYV16I_BGR24I_EX, request); }
void ZENK_CALL ZENK_SSE2_UYVY16I_BGR24IA8P_EX(const ZenkConversionRequest* request) { RunConstantAlphaComposite(ZENK_SSE2_UYVY16I_BGR24I_EX, request); }
void ZENK_CALL ZENK_SSE2_YUYV16IA8P_BGR24IA8P_EX(const ZenkConversionRequest* request) { RunAlphaCopyComposite(ZENK_SSE2_YUYV16I_BGR24I_EX, request); }
void ZENK_CALL ZENK_SSE2_UYVY16IA8P_BGR24IA8P_EX(const ZenkConversionRequest* request) { RunAlphaCopyComposite(ZENK_SSE2_UYVY16I_BGR24I_EX, request); }

// Plain entry points: full_range is set when the range argument is 1.
ZENK_PLAIN_EXPORT_WITH_ALPHA(UYVY16I_BGR32I, PlainFullRange::kFromRange)
ZENK_PLAIN_EXPORT_WITH_ALPHA(YUYV16I_BGR32I, PlainFullRange::kFromRange)
ZENK_PLAIN_EXPORT(UYVY16I_BGR24I, PlainFullRange::kFromRange)
ZENK_PLAIN_EXPORT(YUYV16I_BGR24I, PlainFullRange::kFromRange)
