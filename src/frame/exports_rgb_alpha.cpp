// Exports of the RGB repacking and alpha plane family. Kernels:
// src/rgb_alpha/rgb_alpha_kernels.cpp (quads)
#include "export_frame.h"
#include "rgb_alpha/rgb_alpha_kernels.h"

using namespace zenk;
using namespace zenk::rgb_alpha;

// Four-kernel exports.
ZENK_EXPORT_EX(ZENK_SSE2_BGR32I_BGR32I_EX) { RunFourKernel(kCopyBgr32Test, kCopyBgr32, request); }
ZENK_EXPORT_EX(ZENK_SSE2_BGR32I_BGR24I_EX) { RunFourKernel(kToBgr24Test, kBgr32ToBgr24, request); }
ZENK_EXPORT_EX(ZENK_SSE2_BGR24I_BGR32I_EX) { RunFourKernel(kToBgr32Test, kBgr24ToBgr32, request); }
ZENK_EXPORT_EX(ZENK_SSE2_BGR24I_BGR24I_EX) { RunFourKernel(kToBgr24Test, kCopyBgr24, request); }
ZENK_EXPORT_EX(ZENK_SSE2_BGR32I_BGR24IA8P_EX) { RunFourKernel(kSplitTest, kSplitBgr32, request); }
ZENK_EXPORT_EX(ZENK_SSE2_A8P_A8P_EX) { RunFourKernel(kAlphaPlaneTest, kCopyAlphaPlane, request); }
ZENK_EXPORT_EX(ZENK_SSE2_A8C_A8P_EX) { RunFourKernel(kAlphaPlaneTest, kFillAlphaPlane, request); }
ZENK_EXPORT_EX(ZENK_SSE2_BGR32I_A8P_EX) { RunFourKernel(kExtractAlphaTest, kExtractAlpha, request); }
ZENK_EXPORT_EX(ZENK_SSE2_BGR24IA8P_BGR32I_EX) { RunFourKernel(kExtractAlphaTest, kMergeAlpha, request); }

// Composites.
ZENK_EXPORT_EX(ZENK_SSE2_BGR24I_BGR24IA8P_EX) { RunConstantAlphaComposite(ZENK_SSE2_BGR24I_BGR24I_EX, request); }
ZENK_EXPORT_EX(ZENK_SSE2_BGR24IA8P_BGR24IA8P_EX) {
    RunAlphaCopyComposite(ZENK_SSE2_BGR24I_BGR24I_EX, AlphaDestination::kAlphaPlane, request);
}
ZENK_EXPORT_EX(ZENK_SSE2_BGR24IA8P_A8P_EX) { RunAlphaCopyComposite(nullptr, AlphaDestination::kDestinationPlane, request); }
ZENK_EXPORT_EX(ZENK_SSE2_UYVY16IA8P_A8P_EX) { RunAlphaCopyComposite(nullptr, AlphaDestination::kDestinationPlane, request); }
ZENK_EXPORT_EX(ZENK_SSE2_YUYV16IA8P_A8P_EX) { RunAlphaCopyComposite(nullptr, AlphaDestination::kDestinationPlane, request); }

// Plain entry points.
ZENK_PLAIN_EXPORT(BGR32I_BGR32I, PlainFullRange::kNotSet)
ZENK_PLAIN_EXPORT(BGR32I_BGR24I, PlainFullRange::kNotSet)
ZENK_PLAIN_EXPORT(BGR24I_BGR32I, PlainFullRange::kNotSet)
ZENK_PLAIN_EXPORT(BGR24I_BGR24I, PlainFullRange::kNotSet)

extern "C" void ZENK_CALL ZENK_SSE2_BGR32I_A8P(const uint8_t* src, uint8_t* dst, int32_t src_pitch) {
    const ZenkConversionRequest plain = MakePlainRequest(src, dst, src_pitch, 0, 0, PlainFullRange::kNotSet, 0);
    ZENK_SSE2_BGR32I_A8P_EX(&plain);
}
