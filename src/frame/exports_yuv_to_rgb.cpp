// Exports of the YUV-to-RGB family. Kernels: src/yuv_to_rgb/yuv_to_rgb_kernels.cpp (quads)
#include "export_frame.h"
#include "yuv_to_rgb/yuv_to_rgb_kernels.h"

using namespace zenk;
using namespace zenk::yuv_to_rgb;

namespace {

// Columns 3 and 4 hold no kernel: a host that asks for them gets no
// conversion.
const KernelTable kUyvyToBgr32Table = MakeKernelTable(kUyvyToBgr32, kUyvyToBgr32Fields, kUyvyToBgr32Fields);
const KernelTable kPlanarToBgr32Table = MakeKernelTable(kPlanarToBgr32, kPlanarToBgr32Fields, kPlanarToBgr32Fields);

}  // namespace

// Table exports.
ZENK_EXPORT_EX(ZENK_SSE2_UYVY16I_BGR32I_EX) { RunTableExport(kUyvyToBgr32Table, request); }
ZENK_EXPORT_EX(ZENK_SSE2_Y8PUV8I_BGR32I_EX) { RunTableExport(kPlanarToBgr32Table, request); }

// Four-kernel exports.
ZENK_EXPORT_EX(ZENK_SSE2_YUYV16I_BGR32I_EX) { RunFourKernel(kPackedToBgr32Test, kYuyvToBgr32, request); }
ZENK_EXPORT_EX(ZENK_SSE2_UYVY16I_BGR24I_EX) { RunFourKernel(kToBgr24Test, kUyvyToBgr24, request); }
ZENK_EXPORT_EX(ZENK_SSE2_YUYV16I_BGR24I_EX) { RunFourKernel(kToBgr24Test, kYuyvToBgr24, request); }
ZENK_EXPORT_EX(ZENK_SSE2_UVYY16I_BGR24I_EX) { RunFourKernel(kToBgr24Test, kUvyyToBgr24, request); }
ZENK_EXPORT_EX(ZENK_SSE2_Y8PUV8I_BGR24I_EX) { RunFourKernel(kToBgr24Test, kPlanarToBgr24, request); }
ZENK_EXPORT_EX(ZENK_SSE2_Y8PUV8IA8P_BGR32I_EX) { RunFourKernel(kPlanarAlphaToBgr32Test, kPlanarAlphaToBgr32, request); }
ZENK_EXPORT_EX(ZENK_SSE2_YUYV16IA8P_BGR32I_EX) { RunFourKernel(kPackedToBgr32Test, kYuyvAlphaToBgr32, request); }
ZENK_EXPORT_EX(ZENK_SSE2_UYVY16IA8P_BGR32I_EX) { RunFourKernel(kPackedToBgr32Test, kUyvyAlphaToBgr32, request); }

// Composites: the colour pass, then the destination alpha plane.
ZENK_EXPORT_EX(ZENK_SSE2_Y8PUV8I_BGR24IA8P_EX) { RunConstantAlphaComposite(ZENK_SSE2_Y8PUV8I_BGR24I_EX, request); }
ZENK_EXPORT_EX(ZENK_SSE2_UVYY16I_BGR24IA8P_EX) { RunConstantAlphaComposite(ZENK_SSE2_UVYY16I_BGR24I_EX, request); }
ZENK_EXPORT_EX(ZENK_SSE2_YUYV16I_BGR24IA8P_EX) { RunConstantAlphaComposite(ZENK_SSE2_YUYV16I_BGR24I_EX, request); }
ZENK_EXPORT_EX(ZENK_SSE2_UYVY16I_BGR24IA8P_EX) { RunConstantAlphaComposite(ZENK_SSE2_UYVY16I_BGR24I_EX, request); }
ZENK_EXPORT_EX(ZENK_SSE2_YUYV16IA8P_BGR24IA8P_EX) {
    RunAlphaCopyComposite(ZENK_SSE2_YUYV16I_BGR24I_EX, AlphaDestination::kAlphaPlane, request);
}
ZENK_EXPORT_EX(ZENK_SSE2_UYVY16IA8P_BGR24IA8P_EX) {
    RunAlphaCopyComposite(ZENK_SSE2_UYVY16I_BGR24I_EX, AlphaDestination::kAlphaPlane, request);
}

// Plain entry points: full_range is set when the range argument is 1.
ZENK_PLAIN_EXPORT_WITH_ALPHA(UYVY16I_BGR32I, PlainFullRange::kFromRange)
ZENK_PLAIN_EXPORT_WITH_ALPHA(YUYV16I_BGR32I, PlainFullRange::kFromRange)
ZENK_PLAIN_EXPORT(UYVY16I_BGR24I, PlainFullRange::kFromRange)
ZENK_PLAIN_EXPORT(YUYV16I_BGR24I, PlainFullRange::kFromRange)
