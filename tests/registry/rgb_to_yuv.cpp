// The RGB-to-YUV exports, their kernels and their references. Host option
// 128 is asked as the library asks it, so the harness's answer (or missing
// settings object) reaches kernel and reference alike.
#include "frame/module.h"
#include "reference/references.h"
#include "rgb_to_yuv/rgb_to_yuv_kernels.h"
#include "support/export_registry.h"

namespace zenk::test {
namespace {

using namespace rgb_to_yuv;
using Src = EncodeSource;
using Lay = YuvLayout;

enum class Alpha { kNone, kFromSource, kConstant, kCopy };

struct EncodeRow {
    const char* name;
    ZenkConvertFunction convert;
    KernelQuad Kernels::*quad;     // four-kernel exports
    KernelTable Kernels::*table;   // table exports: frame kernels, and vertical_mode 1 to 3
    Src source;
    Lay layout;
    Alpha alpha;
};

const EncodeRow kRows[] = {
    {"BGR32I_UYVY16I", ZENK_SSE2_BGR32I_UYVY16I_EX, nullptr, &Kernels::bgr32_to_uyvy, Src::kBgr32, Lay::kUyvy, Alpha::kNone},
    {"BGR32I_UVYY16I", ZENK_SSE2_BGR32I_UVYY16I_EX, nullptr, &Kernels::bgr32_to_uvyy, Src::kBgr32, Lay::kUvyy, Alpha::kNone},
    {"BGR32I_Y8PUV8I", ZENK_SSE2_BGR32I_Y8PUV8I_EX, nullptr, &Kernels::bgr32_to_y8uv, Src::kBgr32, Lay::kPlanar, Alpha::kNone},
    {"BGR32I_YUYV16I", ZENK_SSE2_BGR32I_YUYV16I_EX, &Kernels::bgr32_to_yuyv, nullptr, Src::kBgr32, Lay::kYuyv, Alpha::kNone},
    {"BGR24I_YUYV16I", ZENK_SSE2_BGR24I_YUYV16I_EX, &Kernels::bgr24_to_yuyv, nullptr, Src::kBgr24, Lay::kYuyv, Alpha::kNone},
    {"BGR24I_UYVY16I", ZENK_SSE2_BGR24I_UYVY16I_EX, &Kernels::bgr24_to_uyvy, nullptr, Src::kBgr24, Lay::kUyvy, Alpha::kNone},
    {"BGR24I_UVYY16I", ZENK_SSE2_BGR24I_UVYY16I_EX, &Kernels::bgr24_to_uvyy, nullptr, Src::kBgr24, Lay::kUvyy, Alpha::kNone},
    {"BGR24I_Y8PUV8I", ZENK_SSE2_BGR24I_Y8PUV8I_EX, &Kernels::bgr24_to_y8uv, nullptr, Src::kBgr24, Lay::kPlanar, Alpha::kNone},
    {"BGR32I_YUYV16IA8P", ZENK_SSE2_BGR32I_YUYV16IA8P_EX, &Kernels::bgr32_to_yuyv_alpha, nullptr, Src::kBgr32, Lay::kYuyv, Alpha::kFromSource},
    {"BGR32I_UYVY16IA8P", ZENK_SSE2_BGR32I_UYVY16IA8P_EX, &Kernels::bgr32_to_uyvy_alpha, nullptr, Src::kBgr32, Lay::kUyvy, Alpha::kFromSource},
    {"BGR32I_UVYY16IA8P", ZENK_SSE2_BGR32I_UVYY16IA8P_EX, &Kernels::bgr32_to_uvyy_alpha, nullptr, Src::kBgr32, Lay::kUvyy, Alpha::kFromSource},
    {"BGR32I_Y8PUV8IA8P", ZENK_SSE2_BGR32I_Y8PUV8IA8P_EX, &Kernels::bgr32_to_y8uv_alpha, nullptr, Src::kBgr32, Lay::kPlanar, Alpha::kFromSource},
    {"BGR24I_YUYV16IA8P", ZENK_SSE2_BGR24I_YUYV16IA8P_EX, nullptr, nullptr, Src::kBgr24, Lay::kYuyv, Alpha::kConstant},
    {"BGR24I_Y8PUV8IA8P", ZENK_SSE2_BGR24I_Y8PUV8IA8P_EX, nullptr, nullptr, Src::kBgr24, Lay::kPlanar, Alpha::kConstant},
    {"BGR24I_UYVY16IA8P", ZENK_SSE2_BGR24I_UYVY16IA8P_EX, nullptr, nullptr, Src::kBgr24, Lay::kUyvy, Alpha::kConstant},
    {"BGR24I_UVYY16IA8P", ZENK_SSE2_BGR24I_UVYY16IA8P_EX, nullptr, nullptr, Src::kBgr24, Lay::kUvyy, Alpha::kConstant},
    {"BGR24IA8P_YUYV16IA8P", ZENK_SSE2_BGR24IA8P_YUYV16IA8P_EX, nullptr, nullptr, Src::kBgr24, Lay::kYuyv, Alpha::kCopy},
    {"BGR24IA8P_Y8PUV8IA8P", ZENK_SSE2_BGR24IA8P_Y8PUV8IA8P_EX, nullptr, nullptr, Src::kBgr24, Lay::kPlanar, Alpha::kCopy},
    {"BGR24IA8P_UYVY16IA8P", ZENK_SSE2_BGR24IA8P_UYVY16IA8P_EX, nullptr, nullptr, Src::kBgr24, Lay::kUyvy, Alpha::kCopy},
    {"BGR24IA8P_UVYY16IA8P", ZENK_SSE2_BGR24IA8P_UVYY16IA8P_EX, nullptr, nullptr, Src::kBgr24, Lay::kUvyy, Alpha::kCopy},
};

// The alignment test of the exports, written out: BGR24 sources are read
// at any address, so only the destination is tested.
bool TakesAlignedKernel(const EncodeRow& c, const Request& r) {
    return PassesAlignment(r.dst_plane, r.dst_stride, r.width, 16, 8) &&
           (c.source == Src::kBgr24 || PassesAlignment(r.src_plane, r.src_stride, r.width, 32, 4));
}

// The column (table exports), the variant the alignment test picks, the
// colour conversion, then any alpha pass.
void ExportReference(const EncodeRow& c, const Request& r) {
    const int column = c.table == nullptr || r.vertical_mode < 0 || r.vertical_mode > 4 ? 0 : r.vertical_mode;
    if (column == 4) return;  // no kernel: nothing converted
    const bool aligned = column == 0 && TakesAlignedKernel(c, r);
    ReferenceEncode(r, {c.source, c.layout, c.alpha == Alpha::kFromSource, column, aligned}, QueryHostOption());
    if (c.alpha == Alpha::kConstant) ReferenceAlphaPass(r, RgbSource::kAlphaConstant);
    if (c.alpha == Alpha::kCopy) ReferenceAlphaPass(r, RgbSource::kAlphaPlane);
}

const Registration kRegistration = RegisterEach(kRows, [](const EncodeRow& c) {
    ExportUnderTest e = Named(c.name, c.convert);
    // A BGR24 single pair reads up to 6 bytes past its last pixel.
    e.src = c.source == Src::kBgr32 ? PlaneSpec{4} : PlaneSpec{3, false, 6};
    e.src_alpha = {c.alpha == Alpha::kCopy ? 1 : 0};
    e.dst = c.layout == Lay::kPlanar ? PlaneSpec{1, true} : PlaneSpec{2, false, 0, 4, true};
    e.dst_alpha = {c.alpha == Alpha::kNone ? 0 : 1};
    e.reference = [c](const Request& r) { ExportReference(c, r); };
    if (c.quad != nullptr || c.table != nullptr) {
        RequestStyle aligned{.block = 8, .drift_pitch = true, .source_anywhere = c.source == Src::kBgr24};
        AddVariants(e, "", c.quad ? AtLevels(kKernelsAt, c.quad) : AtLevels(kKernelsAt, c.table), aligned, [c](const Request& r, int variant) {
            ReferenceEncode(r, {c.source, c.layout, c.alpha == Alpha::kFromSource, 0, variant < 2},
                            QueryHostOption());
        });
    }
    if (c.table != nullptr)
        AddPairModes(e, AtLevels(kKernelsAt, c.table), {1, 2, 3}, [c](const Request& r, int32_t mode) {
            ReferenceEncode(r, {c.source, c.layout, false, mode, false}, QueryHostOption());
        });
    return e;
});

}  // namespace
}  // namespace zenk::test
