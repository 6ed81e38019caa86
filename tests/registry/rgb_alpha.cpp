// The RGB repacking and alpha plane exports, their kernels and their
// references.
#include "reference/references.h"
#include "rgb_alpha/rgb_alpha_kernels.h"
#include "support/export_registry.h"

namespace zenk::test {
namespace {

using S = RgbSource;
using D = RgbDestination;
using namespace rgb_alpha;

enum class Pass { kPlain, kConstantAlpha, kAlphaCopy, kAlphaOnly };

struct RgbRow {
    const char* name;
    ZenkConvertFunction convert;
    KernelQuad Kernels::*quad;  // null for the composites
    int block;                  // pixels of an aligned block
    bool source_anywhere;       // the export tests only its destination
    RgbConversion colour;       // the plain conversion, or the composite's colour pass
    Pass pass;
};

const RgbRow kRows[] = {
    {"BGR32I_BGR32I", ZENK_SSE2_BGR32I_BGR32I_EX, &Kernels::copy_bgr32, 16, false, {S::kBgr32, D::kBgr32}, Pass::kPlain},
    {"BGR32I_BGR24I", ZENK_SSE2_BGR32I_BGR24I_EX, &Kernels::bgr32_to_bgr24, 16, false, {S::kBgr32, D::kBgr24}, Pass::kPlain},
    {"BGR24I_BGR32I", ZENK_SSE2_BGR24I_BGR32I_EX, &Kernels::bgr24_to_bgr32, 16, true, {S::kBgr24ConstantAlpha, D::kBgr32}, Pass::kPlain},
    {"BGR24I_BGR24I", ZENK_SSE2_BGR24I_BGR24I_EX, &Kernels::copy_bgr24, 16, false, {S::kBgr24ConstantAlpha, D::kBgr24}, Pass::kPlain},
    {"BGR32I_BGR24IA8P", ZENK_SSE2_BGR32I_BGR24IA8P_EX, &Kernels::split_bgr32, 16, true, {S::kBgr32, D::kBgr24AlphaPlane}, Pass::kPlain},
    {"A8P_A8P", ZENK_SSE2_A8P_A8P_EX, &Kernels::copy_alpha_plane, 32, true, {S::kAlphaPlane, D::kAlphaPlane}, Pass::kPlain},
    {"A8C_A8P", ZENK_SSE2_A8C_A8P_EX, &Kernels::fill_alpha_plane, 32, true, {S::kAlphaConstant, D::kAlphaPlane}, Pass::kPlain},
    {"BGR32I_A8P", ZENK_SSE2_BGR32I_A8P_EX, &Kernels::extract_alpha, 16, true, {S::kBgr32, D::kAlphaPlane}, Pass::kPlain},
    {"BGR24IA8P_BGR32I", ZENK_SSE2_BGR24IA8P_BGR32I_EX, &Kernels::merge_alpha, 16, true, {S::kBgr24AlphaPlane, D::kBgr32}, Pass::kPlain},
    {"BGR24I_BGR24IA8P", ZENK_SSE2_BGR24I_BGR24IA8P_EX, nullptr, 16, false, {S::kBgr24ConstantAlpha, D::kBgr24}, Pass::kConstantAlpha},
    {"BGR24IA8P_BGR24IA8P", ZENK_SSE2_BGR24IA8P_BGR24IA8P_EX, nullptr, 16, false, {S::kBgr24ConstantAlpha, D::kBgr24}, Pass::kAlphaCopy},
    {"BGR24IA8P_A8P", ZENK_SSE2_BGR24IA8P_A8P_EX, nullptr, 32, false, {S::kBgr24ConstantAlpha}, Pass::kAlphaOnly},
    {"UYVY16IA8P_A8P", ZENK_SSE2_UYVY16IA8P_A8P_EX, nullptr, 32, false, {}, Pass::kAlphaOnly},
    {"YUYV16IA8P_A8P", ZENK_SSE2_YUYV16IA8P_A8P_EX, nullptr, 32, false, {}, Pass::kAlphaOnly},
};

int SourceBytes(const RgbRow& c) {
    if (c.pass == Pass::kAlphaOnly) return c.colour.source == S::kBgr24ConstantAlpha ? 3 : 2;
    return SourceBytesPerPixel(c.colour.source);
}

void ExportReference(const RgbRow& c, const Request& r) {
    if (c.pass != Pass::kAlphaOnly) ReferenceRgbConvert(r, c.colour, 0);
    if (c.pass == Pass::kConstantAlpha) ReferenceAlphaPass(r, S::kAlphaConstant);
    if (c.pass == Pass::kAlphaCopy) ReferenceAlphaPass(r, S::kAlphaPlane);
    // IA8P sources to A8P: the destination plane is the alpha plane itself.
    if (c.pass == Pass::kAlphaOnly) ReferenceAlphaPass(r, S::kAlphaPlane, true);
}

const Registration kRegistration = RegisterEach(kRows, [](const RgbRow& c) {
    ExportUnderTest e = Named(c.name, c.convert);
    e.src = {SourceBytes(c)};
    e.src_alpha = {c.colour.source == S::kBgr24AlphaPlane || c.pass == Pass::kAlphaCopy ||
                           c.pass == Pass::kAlphaOnly ? 1 : 0};
    const int dst_bytes = DestinationBytesPerPixel(c.colour.destination);
    e.dst = {c.pass == Pass::kAlphaOnly ? 1 : dst_bytes, false, 0, dst_bytes == 4 ? 4 : 1};
    e.dst_alpha = {c.colour.destination == D::kBgr24AlphaPlane || c.pass == Pass::kConstantAlpha ||
                           c.pass == Pass::kAlphaCopy ? 1 : 0};
    e.reference = [c](const Request& r) { ExportReference(c, r); };
    if (c.quad != nullptr) {
        const RequestStyle aligned{.block = c.block, .drift_pitch = true, .source_anywhere = c.source_anywhere};
        AddVariants(e, "", AtLevels(kKernelsAt, c.quad), aligned, [c](const Request& r, int variant) {
            ReferenceRgbConvert(r, c.colour, variant < 2 ? c.block : 0);
        });
    }
    return e;
});

}  // namespace
}  // namespace zenk::test
