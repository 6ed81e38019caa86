// The YUV-to-YUV exports, their kernels and their references. An export
// chooses between a same-standard kernel and a change-of-standard kernel;
// each kernel is listed under one export that uses it.
#include "reference/references.h"
#include "support/export_registry.h"
#include "yuv_to_yuv/yuv_to_yuv_kernels.h"

namespace zenk::test {
namespace {

using L = YuvLayout;
using O = YuvOperation;
using E = YuvExport;
using A = AlphaPass;
namespace k = yuv_to_yuv;

struct KernelRow {
    const char* name;
    KernelQuad yuv_to_yuv::Kernels::*quad;
    YuvKernelModel aligned_model;  // variants 0 and 1
    YuvKernelModel any_model;      // variants 2 and 3
};

enum class Dst { kPacked, kPlanar, kWide };

struct ExportRow {
    const char* name;
    ZenkConvertFunction convert;
    E colour;
    Dst destination;
    AlphaPass alpha;
    std::vector<KernelRow> kernels;
};

const KernelRow kCopyPacked{"CopyPacked.", &k::Kernels::copy_packed, {O::kCopy}, {O::kCopy}};

const ExportRow kRows[] = {
    {"UYVY16I_UYVY16I", ZENK_SSE2_UYVY16I_UYVY16I_EX, E::kUyvyToUyvy, Dst::kPacked, A::kNone,
     {kCopyPacked, {"Matrix.", &k::Kernels::matrix_uyvy_to_uyvy, {O::kMatrix}, {O::kMatrix}}}},
    {"YUYV16I_YUYV16I", ZENK_SSE2_YUYV16I_YUYV16I_EX, E::kYuyvToYuyv, Dst::kPacked, A::kNone,
     {{"Matrix.", &k::Kernels::matrix_yuyv_to_yuyv, {O::kMatrix, L::kYuyv, L::kYuyv}, {O::kMatrix, L::kYuyv, L::kYuyv}}}},
    {"UYVY16I_YUYV16I", ZENK_SSE2_UYVY16I_YUYV16I_EX, E::kUyvyToYuyv, Dst::kPacked, A::kNone,
     {{"SwapWordBytes.", &k::Kernels::swap_word_bytes, {O::kReorder, L::kUyvy, L::kYuyv}, {O::kReorder, L::kYuyv, L::kUyvy}},
      {"Matrix.", &k::Kernels::matrix_uyvy_to_yuyv, {O::kMatrix, L::kUyvy, L::kYuyv}, {O::kMatrix, L::kUyvy, L::kYuyv}}}},
    {"YUYV16I_UYVY16I", ZENK_SSE2_YUYV16I_UYVY16I_EX, E::kYuyvToUyvy, Dst::kPacked, A::kNone,
     {{"Matrix.", &k::Kernels::matrix_yuyv_to_uyvy, {O::kMatrix, L::kYuyv, L::kUyvy}, {O::kMatrix, L::kYuyv, L::kUyvy}}}},
    {"UVYY16I_UYVY16I", ZENK_SSE2_UVYY16I_UYVY16I_EX, E::kUvyyToUyvy, Dst::kPacked, A::kNone, {}},
    {"UYVY16I_UVYY16I", ZENK_SSE2_UYVY16I_UVYY16I_EX, E::kUyvyToUvyy, Dst::kPacked, A::kNone,
     {{"ExchangeOrCopy.", &k::Kernels::exchange_middle_bytes_or_copy, {O::kReorder, L::kUvyy, L::kUyvy}, {O::kCopy}},
      {"SharedMatrix.", &k::Kernels::matrix_shared_uyvy_order, {O::kSharedMatrix}, {O::kSharedMatrix}}}},
    {"UYVY16I_Y8PUV8I", ZENK_SSE2_UYVY16I_Y8PUV8I_EX, E::kUyvyToY8puv8, Dst::kPlanar, A::kNone,
     {{"Split.", &k::Kernels::split_to_planar, {O::kSplit}, {O::kSplit}}}},
    {"UYVY16I_V8U8Y8A8I", ZENK_SSE2_UYVY16I_V8U8Y8A8I_EX, E::kUyvyToV8u8y8a8, Dst::kWide, A::kNone,
     {{"Widen.", &k::Kernels::widen_to_444, {O::kWiden}, {O::kWiden}}}},
    {"UVYY16I_UYVY16IA8P", ZENK_SSE2_UVYY16I_UYVY16IA8P_EX, E::kUvyyToUyvy, Dst::kPacked, A::kConstant, {}},
    {"YUYV16I_UYVY16IA8P", ZENK_SSE2_YUYV16I_UYVY16IA8P_EX, E::kYuyvToUyvy, Dst::kPacked, A::kConstant, {}},
    {"UYVY16I_YUYV16IA8P", ZENK_SSE2_UYVY16I_YUYV16IA8P_EX, E::kUyvyToYuyv, Dst::kPacked, A::kConstant, {}},
    {"UYVY16I_Y8PUV8IA8P", ZENK_SSE2_UYVY16I_Y8PUV8IA8P_EX, E::kUyvyToY8puv8, Dst::kPlanar, A::kConstant, {}},
    {"UYVY16I_UYVY16IA8P", ZENK_SSE2_UYVY16I_UYVY16IA8P_EX, E::kUyvyToUyvy, Dst::kPacked, A::kConstant, {}},
    {"UYVY16I_UVYY16IA8P", ZENK_SSE2_UYVY16I_UVYY16IA8P_EX, E::kUyvyToUvyy, Dst::kPacked, A::kConstant, {}},
    {"YUYV16I_YUYV16IA8P", ZENK_SSE2_YUYV16I_YUYV16IA8P_EX, E::kYuyvToYuyv, Dst::kPacked, A::kConstant, {}},
    {"UYVY16IA8P_YUYV16IA8P", ZENK_SSE2_UYVY16IA8P_YUYV16IA8P_EX, E::kUyvyToYuyv, Dst::kPacked, A::kCopy, {}},
    {"UYVY16IA8P_UYVY16IA8P", ZENK_SSE2_UYVY16IA8P_UYVY16IA8P_EX, E::kUyvyToUyvy, Dst::kPacked, A::kCopy, {}},
    {"YUYV16IA8P_YUYV16IA8P", ZENK_SSE2_YUYV16IA8P_YUYV16IA8P_EX, E::kYuyvToYuyv, Dst::kPacked, A::kCopy, {}},
    {"YUYV16IA8P_UYVY16IA8P", ZENK_SSE2_YUYV16IA8P_UYVY16IA8P_EX, E::kYuyvToUyvy, Dst::kPacked, A::kCopy, {}},
};

const Registration kRegistration = RegisterEach(kRows, [](const ExportRow& c) {
    ExportUnderTest e = Named(c.name, c.convert);
    e.src = {2};
    e.src_alpha = {c.alpha == AlphaPass::kCopy ? 1 : 0};
    // Packed and 4:4:4 lines start on 4-byte boundaries, or anywhere.
    e.dst = c.destination == Dst::kPlanar ? PlaneSpec{1, true}
                                          : PlaneSpec{c.destination == Dst::kWide ? 4 : 2, false, 0, 4, true};
    e.dst_alpha = {c.alpha == AlphaPass::kNone ? 0 : 1};
    e.lines_bound_writes = c.destination != Dst::kPlanar;
    e.reference = [c](const Request& r) {
        ReferenceYuvExport(r, c.colour);
        if (c.alpha != A::kNone)
            ReferenceAlphaPass(r, c.alpha == A::kConstant ? RgbSource::kAlphaConstant : RgbSource::kAlphaPlane);
    };
    // The aligned kernels take their source at any address, and the
    // split its planes at any pitch.
    const RequestStyle aligned{.block = c.destination == Dst::kWide ? 8 : 16,
                               .drift_pitch = c.destination == Dst::kPlanar, .source_anywhere = true};
    for (const KernelRow& kernel : c.kernels)
        AddVariants(e, kernel.name, AtLevels(k::kKernelsAt, kernel.quad), aligned, [kernel](const Request& r, int variant) {
            ReferenceYuvKernel(r, variant < 2 ? kernel.aligned_model : kernel.any_model, variant < 2);
        });
    return e;
});

}  // namespace
}  // namespace zenk::test
