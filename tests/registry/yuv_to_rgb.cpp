// The YUV-to-RGB exports, their kernels and their references.
#include "frame/module.h"
#include "reference/references.h"
#include "support/export_registry.h"
#include "yuv_to_rgb/yuv_to_rgb_kernels.h"

namespace zenk::test {
namespace {

using namespace yuv_to_rgb;

enum class Kind { kFourKernel, kTable, kConstantAlpha, kAlphaCopy };

struct DecodeRow {
    const char* name;
    ZenkConvertFunction convert;
    Kind kind;
    YuvLayout layout;
    bool src_alpha;             // IA8P source
    bool bgr24;
    KernelQuad Kernels::*quad;     // four-kernel exports
    KernelTable Kernels::*table;   // table exports: frame kernels, and vertical_mode 1 and 2
    FourthByte fourth[4];       // per variant; the pair-mode kernel's is variant 3's
    // The export's test, written out: plane 16-aligned, pitch and width
    // multiples of these units (src_width 0: source not tested).
    uint32_t src_stride, src_width, dst_stride, dst_width;
};

constexpr FourthByte W = FourthByte::kWordAlpha, D = FourthByte::kDwordAlpha, P = FourthByte::kAlphaPlane,
                     N = FourthByte::kNone;
using L = YuvLayout;
using K = Kind;

const DecodeRow kRows[] = {
    {"UYVY16I_BGR32I", ZENK_SSE2_UYVY16I_BGR32I_EX, K::kTable, L::kUyvy, 0, 0, nullptr, &Kernels::uyvy_to_bgr32, {W, W, W, W}, 32, 4, 16, 8},
    {"Y8PUV8I_BGR32I", ZENK_SSE2_Y8PUV8I_BGR32I_EX, K::kTable, L::kPlanar, 0, 0, nullptr, &Kernels::planar_to_bgr32, {W, D, D, D}, 32, 4, 16, 8},
    {"YUYV16I_BGR32I", ZENK_SSE2_YUYV16I_BGR32I_EX, K::kFourKernel, L::kYuyv, 0, 0, &Kernels::yuyv_to_bgr32, nullptr, {W, D, D, D}, 16, 8, 32, 4},
    {"UYVY16I_BGR24I", ZENK_SSE2_UYVY16I_BGR24I_EX, K::kFourKernel, L::kUyvy, 0, 1, &Kernels::uyvy_to_bgr24, nullptr, {N, N, N, N}, 0, 0, 1, 16},
    {"YUYV16I_BGR24I", ZENK_SSE2_YUYV16I_BGR24I_EX, K::kFourKernel, L::kYuyv, 0, 1, &Kernels::yuyv_to_bgr24, nullptr, {N, N, N, N}, 0, 0, 1, 16},
    {"UVYY16I_BGR24I", ZENK_SSE2_UVYY16I_BGR24I_EX, K::kFourKernel, L::kUvyy, 0, 1, &Kernels::uvyy_to_bgr24, nullptr, {N, N, N, N}, 0, 0, 1, 16},
    {"Y8PUV8I_BGR24I", ZENK_SSE2_Y8PUV8I_BGR24I_EX, K::kFourKernel, L::kPlanar, 0, 1, &Kernels::planar_to_bgr24, nullptr, {N, N, N, N}, 0, 0, 1, 16},
    {"Y8PUV8IA8P_BGR32I", ZENK_SSE2_Y8PUV8IA8P_BGR32I_EX, K::kFourKernel, L::kPlanar, 1, 0, &Kernels::planar_alpha_to_bgr32, nullptr, {P, P, P, P}, 0, 0, 16, 16},
    {"YUYV16IA8P_BGR32I", ZENK_SSE2_YUYV16IA8P_BGR32I_EX, K::kFourKernel, L::kYuyv, 1, 0, &Kernels::yuyv_alpha_to_bgr32, nullptr, {P, P, P, P}, 16, 8, 32, 4},
    {"UYVY16IA8P_BGR32I", ZENK_SSE2_UYVY16IA8P_BGR32I_EX, K::kFourKernel, L::kUyvy, 1, 0, &Kernels::uyvy_alpha_to_bgr32, nullptr, {P, P, P, P}, 16, 8, 32, 4},
    {"Y8PUV8I_BGR24IA8P", ZENK_SSE2_Y8PUV8I_BGR24IA8P_EX, K::kConstantAlpha, L::kPlanar, 0, 1, nullptr, nullptr, {N, N, N, N}, 0, 0, 1, 16},
    {"UVYY16I_BGR24IA8P", ZENK_SSE2_UVYY16I_BGR24IA8P_EX, K::kConstantAlpha, L::kUvyy, 0, 1, nullptr, nullptr, {N, N, N, N}, 0, 0, 1, 16},
    {"YUYV16I_BGR24IA8P", ZENK_SSE2_YUYV16I_BGR24IA8P_EX, K::kConstantAlpha, L::kYuyv, 0, 1, nullptr, nullptr, {N, N, N, N}, 0, 0, 1, 16},
    {"UYVY16I_BGR24IA8P", ZENK_SSE2_UYVY16I_BGR24IA8P_EX, K::kConstantAlpha, L::kUyvy, 0, 1, nullptr, nullptr, {N, N, N, N}, 0, 0, 1, 16},
    {"YUYV16IA8P_BGR24IA8P", ZENK_SSE2_YUYV16IA8P_BGR24IA8P_EX, K::kAlphaCopy, L::kYuyv, 1, 1, nullptr, nullptr, {N, N, N, N}, 0, 0, 1, 16},
    {"UYVY16IA8P_BGR24IA8P", ZENK_SSE2_UYVY16IA8P_BGR24IA8P_EX, K::kAlphaCopy, L::kUyvy, 1, 1, nullptr, nullptr, {N, N, N, N}, 0, 0, 1, 16},
};

bool PassesTest(const DecodeRow& c, const Request& r) {
    return (c.src_width == 0 || PassesAlignment(r.src_plane, r.src_stride, r.width, c.src_stride, c.src_width)) &&
           PassesAlignment(r.dst_plane, r.dst_stride, r.width, c.dst_stride, c.dst_width);
}

// An export that picks an aligned kernel has a width of whole blocks, so
// every variant converts all pixels but a last odd one; only the alpha form
// depends on the variant.
void ExportReference(const DecodeRow& c, const Request& r) {
    const int variant = (PassesTest(c, r) ? 0 : 2) + (r.use_streaming_stores ? 1 : 0);
    const int column = c.kind == K::kTable && r.vertical_mode >= 0 && r.vertical_mode <= 4 ? r.vertical_mode : 0;
    if (column == 0) ReferenceYuvToRgb(r, {c.layout, c.fourth[variant]}, 0, QueryHostOption());
    if (column == 1 || column == 2) ReferenceYuvToRgbPairModes(r, {c.layout, c.fourth[3]}, QueryHostOption());
    if (c.kind == K::kConstantAlpha) ReferenceAlphaPass(r, RgbSource::kAlphaConstant);
    if (c.kind == K::kAlphaCopy) ReferenceAlphaPass(r, RgbSource::kAlphaPlane);
}

// Unaligned BGR32 lines start on 8-byte boundaries and BGR24 lines on even
// bytes, or anywhere, stored unaligned.
const Registration kRegistration = RegisterEach(kRows, [](const DecodeRow& c) {
    ExportUnderTest e = Named(c.name, c.convert);
    e.src = c.layout == L::kPlanar ? PlaneSpec{1, true} : PlaneSpec{2};
    e.src_alpha = {c.src_alpha ? 1 : 0};
    e.dst = {c.bgr24 ? 3 : 4, false, 0, c.bgr24 ? 2 : 8, true};
    e.dst_alpha = {c.kind == K::kConstantAlpha || c.kind == K::kAlphaCopy ? 1 : 0};
    e.reference = [c](const Request& r) { ExportReference(c, r); };
    if (c.quad != nullptr || c.table != nullptr) {
        // BGR24 lines whose pitch takes them off a boundary are stored
        // unaligned by every walk; BGR32 aligned kernels need whole 16s.
        const int block = c.bgr24 ? 16 : 8;
        const RequestStyle aligned{.block = block, .drift_pitch = c.bgr24, .source_anywhere = c.src_width == 0};
        AddVariants(e, "", c.quad ? AtLevels(kKernelsAt, c.quad) : AtLevels(kKernelsAt, c.table), aligned, [c, block](const Request& r, int variant) {
            ReferenceYuvToRgb(r, {c.layout, c.fourth[variant]}, variant < 2 ? block : 0, QueryHostOption());
        });
    }
    if (c.table != nullptr)
        AddPairModes(e, AtLevels(kKernelsAt, c.table), {1, 2}, [c](const Request& r, int32_t) {
            ReferenceYuvToRgbPairModes(r, {c.layout, c.fourth[3]}, QueryHostOption());
        });
    return e;
});

}  // namespace
}  // namespace zenk::test
