// Exports of the RGB-to-YUV family. Kernels: src/rgb_to_yuv/rgb_to_yuv_kernels.cpp (quads)
#include "export_frame.h"
#include "rgb_to_yuv/rgb_to_yuv_kernels.h"

using namespace zenk;
using namespace zenk::rgb_to_yuv;

namespace {

constexpr KernelTable Table(const KernelQuad& frame, const PairModeKernels& modes) {
    return MakeKernelTable(frame, modes.halve, modes.quarter, modes.twice);
}

// vertical_mode 4 has no kernel in these tables: such a request converts
// nothing.
const KernelTable kUyvyTable = Table(kBgr32ToUyvy, kBgr32ToUyvyPairModes);
const KernelTable kUvyyTable = Table(kBgr32ToUvyy, kBgr32ToUvyyPairModes);
const KernelTable kY8UvTable = Table(kBgr32ToY8Uv, kBgr32ToY8UvPairModes);

}  // namespace

// Table exports.
ZENK_EXPORT_EX(ZENK_SSE2_BGR32I_UYVY16I_EX) { RunTableExport(kUyvyTable, request); }
ZENK_EXPORT_EX(ZENK_SSE2_BGR32I_UVYY16I_EX) { RunTableExport(kUvyyTable, request); }
ZENK_EXPORT_EX(ZENK_SSE2_BGR32I_Y8PUV8I_EX) { RunTableExport(kY8UvTable, request); }

// Four-kernel exports.
ZENK_EXPORT_EX(ZENK_SSE2_BGR32I_YUYV16I_EX) { RunFourKernel(kBgr32Test, kBgr32ToYuyv, request); }
ZENK_EXPORT_EX(ZENK_SSE2_BGR24I_YUYV16I_EX) { RunFourKernel(kBgr24Test, kBgr24ToYuyv, request); }
ZENK_EXPORT_EX(ZENK_SSE2_BGR24I_UYVY16I_EX) { RunFourKernel(kBgr24Test, kBgr24ToUyvy, request); }
ZENK_EXPORT_EX(ZENK_SSE2_BGR24I_UVYY16I_EX) { RunFourKernel(kBgr24Test, kBgr24ToUvyy, request); }
ZENK_EXPORT_EX(ZENK_SSE2_BGR24I_Y8PUV8I_EX) { RunFourKernel(kBgr24Test, kBgr24ToY8Uv, request); }
// The alpha plane's alignment is not tested: it is written with 8-byte and
// single-byte stores.
ZENK_EXPORT_EX(ZENK_SSE2_BGR32I_YUYV16IA8P_EX) { RunFourKernel(kBgr32Test, kBgr32ToYuyvAlpha, request); }
ZENK_EXPORT_EX(ZENK_SSE2_BGR32I_UYVY16IA8P_EX) { RunFourKernel(kBgr32Test, kBgr32ToUyvyAlpha, request); }
ZENK_EXPORT_EX(ZENK_SSE2_BGR32I_UVYY16IA8P_EX) { RunFourKernel(kBgr32Test, kBgr32ToUvyyAlpha, request); }
ZENK_EXPORT_EX(ZENK_SSE2_BGR32I_Y8PUV8IA8P_EX) { RunFourKernel(kBgr32Test, kBgr32ToY8UvAlpha, request); }

// BGR24 colour with a constant alpha plane.
ZENK_EXPORT_EX(ZENK_SSE2_BGR24I_YUYV16IA8P_EX) { RunConstantAlphaComposite(ZENK_SSE2_BGR24I_YUYV16I_EX, request); }
ZENK_EXPORT_EX(ZENK_SSE2_BGR24I_Y8PUV8IA8P_EX) { RunConstantAlphaComposite(ZENK_SSE2_BGR24I_Y8PUV8I_EX, request); }
ZENK_EXPORT_EX(ZENK_SSE2_BGR24I_UYVY16IA8P_EX) { RunConstantAlphaComposite(ZENK_SSE2_BGR24I_UYVY16I_EX, request); }
ZENK_EXPORT_EX(ZENK_SSE2_BGR24I_UVYY16IA8P_EX) { RunConstantAlphaComposite(ZENK_SSE2_BGR24I_UVYY16I_EX, request); }

// BGR24 colour with the source's alpha plane copied.
ZENK_EXPORT_EX(ZENK_SSE2_BGR24IA8P_YUYV16IA8P_EX) {
    RunAlphaCopyComposite(ZENK_SSE2_BGR24I_YUYV16I_EX, AlphaDestination::kAlphaPlane, request);
}
ZENK_EXPORT_EX(ZENK_SSE2_BGR24IA8P_Y8PUV8IA8P_EX) {
    RunAlphaCopyComposite(ZENK_SSE2_BGR24I_Y8PUV8I_EX, AlphaDestination::kAlphaPlane, request);
}
ZENK_EXPORT_EX(ZENK_SSE2_BGR24IA8P_UYVY16IA8P_EX) {
    RunAlphaCopyComposite(ZENK_SSE2_BGR24I_UYVY16I_EX, AlphaDestination::kAlphaPlane, request);
}
ZENK_EXPORT_EX(ZENK_SSE2_BGR24IA8P_UVYY16IA8P_EX) {
    RunAlphaCopyComposite(ZENK_SSE2_BGR24I_UVYY16I_EX, AlphaDestination::kAlphaPlane, request);
}

// Plain entry points.
ZENK_PLAIN_EXPORT(BGR32I_YUYV16I, PlainFullRange::kFromRange)
ZENK_PLAIN_EXPORT(BGR32I_UYVY16I, PlainFullRange::kFromRange)
ZENK_PLAIN_EXPORT(BGR32I_UVYY16I, PlainFullRange::kFromRange)
ZENK_PLAIN_EXPORT(BGR24I_YUYV16I, PlainFullRange::kFromRange)
ZENK_PLAIN_EXPORT(BGR24I_UYVY16I, PlainFullRange::kFromRange)
ZENK_PLAIN_EXPORT(BGR24I_UVYY16I, PlainFullRange::kFromRange)
