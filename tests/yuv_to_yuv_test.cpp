// Differential tests of the YUV-to-YUV exports: every kernel variant and
// every export against the scalar reference, on random requests with guard
// room around every plane.
#include <gtest/gtest.h>

#include <algorithm>

#include "reference/rgb_alpha_reference.h"
#include "reference/yuv_to_yuv_reference.h"
#include "support/export_registry.h"
#include "support/test_picture.h"
#include "yuv_to_yuv/yuv_to_yuv_kernels.h"

namespace zenk::test {
namespace {

using L = YuvLayout;
using O = YuvOperation;

// The destination picture's shape.
enum class Destination {
    kPacked,  // 2 bytes a pixel
    kPlanar,  // Y8PUV8I: 1 luma byte a pixel, chroma plane dst_stride * dst_height later
    kWide,    // V8U8Y8A8I: 4 bytes a pixel
};

int BytesPerPixel(Destination d) { return d == Destination::kPacked ? 2 : d == Destination::kPlanar ? 1 : 4; }

// ---- Random requests ---------------------------------------------------------------------------

enum class AlphaPass { kNone, kConstant, kCopy };


// Source samples: plain random bytes, or bytes drawn mostly from the values
// where rounding, the clamps, the 16-bit saturation and its wrap-around
// decide the result.
void FillSource(Rng& rng, GuardedPlane& p) {
    static const std::vector<uint8_t> kEdges = {0,   1,   2,   5,   15,  16,  17,  126, 127, 128,
                                                129, 130, 234, 235, 236, 250, 253, 254, 255};
    if (rng.Chance(50)) return;  // the plane's random bytes
    const int edge_percent = rng.Uniform(30, 95);
    p.FillLines([&](int32_t, int32_t) { return rng.Chance(edge_percent) ? rng.Pick(kEdges) : rng.Byte(); });
}

int32_t RandomWidth(Rng& rng) {
    if (rng.Chance(35)) return std::max(0, 16 * rng.Uniform(1, 4) + rng.Uniform(-3, 3));  // around group edges
    return rng.Chance(85) ? rng.Uniform(0, 70) : rng.Uniform(71, 400);
}

// A request whose planes sit at random allowed addresses. Aligned-kernel
// requests meet the aligned kernels' preconditions (16-aligned destination
// and pitch, whole groups); export requests pass the exports' tests about
// half the time, with pitches that are multiples of 16 and sometimes of 32.
Built BuildRequest(Rng& rng, Destination dst, AlphaPass alpha, Target target, int32_t group) {
    Built b;
    const bool aligned = target == Target::kAlignedKernel || (target == Target::kExport && rng.Chance(45));
    const int32_t width = aligned ? group * rng.Uniform(0, 5) : RandomWidth(rng);
    const int32_t height = rng.Uniform(0, 5);
    Request& r = b.request;
    r.width = width;
    r.src_height = height;
    r.dst_height = dst == Destination::kPlanar ? (rng.Chance(10) ? 0 : height + rng.Uniform(0, 2)) : rng.Uniform(0, 8);
    const bool bottom_up = rng.Chance(30);

    auto aligned_pitch = [&](int32_t line_bytes) { return (line_bytes + 15) / 16 * 16 + 16 * rng.Uniform(0, 3); };
    // Source: 2 bytes a pixel at any address.
    PlaneShape src;
    src.line_bytes = 2 * width;
    src.lines = height;
    src.bottom_up = bottom_up;
    if (aligned && target == Target::kExport) {
        src.pitch = aligned_pitch(src.line_bytes);
    } else {
        src.pitch = src.line_bytes + rng.Uniform(0, 40);
        src.residue = static_cast<uint32_t>(rng.Uniform(0, 63));
    }
    // Destination: packed and 4:4:4 lines start on 4-byte boundaries (a few
    // requests try any address), planar lines anywhere.
    PlaneShape out;
    out.line_bytes = BytesPerPixel(dst) * width;
    out.lines = height;
    out.bottom_up = rng.Chance(80) ? bottom_up : !bottom_up;
    // A change of standard into Y8PUV8I writes 2 bytes a pixel from the
    // luma plane on: room for it, and for the chroma plane, after the lines.
    if (dst == Destination::kPlanar) out.extra_lines = std::max(r.dst_height, height);
    if (aligned) {
        out.pitch = aligned_pitch(out.line_bytes);
        // The split takes its planes at any address, in its aligned kernel
        // too: later luma lines and the chroma plane off 16-byte boundaries.
        if (dst == Destination::kPlanar && target == Target::kAlignedKernel && rng.Chance(30))
            out.pitch = out.line_bytes + rng.Uniform(1, 20);
    } else {
        const bool word_aligned = dst != Destination::kPlanar && rng.Chance(85);
        const int32_t step = word_aligned ? 4 : 1;
        out.pitch = out.line_bytes + step * rng.Uniform(0, 12);
        if (word_aligned) out.pitch = (out.pitch + 3) / 4 * 4;
        out.residue = static_cast<uint32_t>(rng.Uniform(0, 63)) / step * step;
    }
    auto alpha_shape = [&](bool is_destination) {
        PlaneShape a;
        a.line_bytes = width;
        a.lines = height;
        a.bottom_up = rng.Chance(30);
        const bool aligned_alpha = is_destination && rng.Chance(40);
        a.pitch = aligned_alpha ? (width + 31) / 32 * 32 + 32 * rng.Uniform(0, 1) : width + rng.Uniform(0, 40);
        a.residue = aligned_alpha ? 0 : static_cast<uint32_t>(rng.Uniform(0, 63));
        return a;
    };
    // Planes are added first and addressed afterwards: adding may move them.
    b.scene.Add(rng, src);
    b.scene.Add(rng, out);
    if (alpha == AlphaPass::kCopy) b.scene.Add(rng, alpha_shape(false));
    if (alpha != AlphaPass::kNone) b.scene.Add(rng, alpha_shape(true));
    FillSource(rng, b.scene[0]);

    GuardedPlane& s = b.scene[0];
    r.src_plane = s.first_line();
    r.src_stride = s.stride();
    r.src_skip = s.Skip(2 * width);
    r.src_width = rng.Chance(80) ? width : RandomWidth(rng);
    GuardedPlane& d = b.scene[1];
    r.dst_plane = d.first_line();
    r.dst_stride = d.stride();
    r.dst_skip = d.Skip(BytesPerPixel(dst) * width);
    size_t next = 2;
    if (alpha == AlphaPass::kCopy) {
        GuardedPlane& p = b.scene[next++];
        r.src_alpha_plane = p.first_line();
        r.src_alpha_stride = p.stride();
        r.src_alpha_skip = p.Skip(width);
    }
    if (alpha != AlphaPass::kNone) {
        GuardedPlane& p = b.scene[next++];
        r.dst_alpha_plane = p.first_line();
        r.dst_alpha_stride = p.stride();
        r.dst_alpha_skip = p.Skip(width);
    }

    // Standards: equal a third of the time; selectors beyond 0 and 1 too.
    static const std::vector<int32_t> kMatrices = {0, 1, 0, 1, 2, -1, 3, 7};
    r.src_matrix = rng.Pick(kMatrices);
    r.dst_matrix = rng.Chance(35) ? r.src_matrix : rng.Pick(kMatrices);
    r.src_range = rng.Uniform(-1, 2);
    r.dst_range = rng.Uniform(-1, 2);
    r.clamp_luma = rng.Chance(50) ? 0 : static_cast<uint8_t>(rng.Uniform(1, 255));
    r.full_range = rng.Byte();
    r.use_streaming_stores = rng.Chance(50) ? 0 : rng.Byte() | 1;
    r.alpha_value = rng.AlphaValue();
    // Fields this family never reads: any value must do.
    r.scan_mode = rng.Uniform(0, 3);
    r.vertical_mode = rng.Uniform(0, 7);
    r.src_field_pair = rng.Byte();
    return b;
}

// ---- Every kernel variant ----------------------------------------------------------------------

struct KernelCase {
    const char* name;
    const KernelQuad* kernels;
    YuvKernelModel aligned_model;  // variants 0 and 1
    YuvKernelModel any_model;      // variants 2 and 3
    Destination destination;
    int32_t group;                 // pixels of an aligned kernel's group
};

void PrintTo(const KernelCase& c, std::ostream* os) { *os << c.name; }

namespace k = yuv_to_yuv;
constexpr Destination kPacked = Destination::kPacked;

const KernelCase kKernelCases[] = {
    {"CopyPacked", &k::kCopyPacked, {O::kCopy}, {O::kCopy}, kPacked, 16},
    {"SwapWordBytes", &k::kSwapWordBytes, {O::kReorder, L::kUyvy, L::kYuyv}, {O::kReorder, L::kYuyv, L::kUyvy},
     kPacked, 16},
    {"ExchangeMiddleBytesOrCopy", &k::kExchangeMiddleBytesOrCopy, {O::kReorder, L::kUvyy, L::kUyvy}, {O::kCopy},
     kPacked, 16},
    {"MatrixUyvyToUyvy", &k::kMatrixUyvyToUyvy, {O::kMatrix, L::kUyvy, L::kUyvy}, {O::kMatrix, L::kUyvy, L::kUyvy},
     kPacked, 16},
    {"MatrixYuyvToYuyv", &k::kMatrixYuyvToYuyv, {O::kMatrix, L::kYuyv, L::kYuyv}, {O::kMatrix, L::kYuyv, L::kYuyv},
     kPacked, 16},
    {"MatrixUyvyToYuyv", &k::kMatrixUyvyToYuyv, {O::kMatrix, L::kUyvy, L::kYuyv}, {O::kMatrix, L::kUyvy, L::kYuyv},
     kPacked, 16},
    {"MatrixYuyvToUyvy", &k::kMatrixYuyvToUyvy, {O::kMatrix, L::kYuyv, L::kUyvy}, {O::kMatrix, L::kYuyv, L::kUyvy},
     kPacked, 16},
    {"MatrixSharedUyvyOrder", &k::kMatrixSharedUyvyOrder, {O::kSharedMatrix}, {O::kSharedMatrix}, kPacked, 16},
    {"SplitToPlanar", &k::kSplitToPlanar, {O::kSplit}, {O::kSplit}, Destination::kPlanar, 16},
    {"WidenTo444", &k::kWidenTo444, {O::kWiden}, {O::kWiden}, Destination::kWide, 8},
};

class YuvToYuvKernelTest : public ::testing::TestWithParam<KernelCase> {};

TEST_P(YuvToYuvKernelTest, EveryVariantMatchesReference) {
    const KernelCase& c = GetParam();
    Rng rng(std::hash<std::string>{}(c.name));
    for (int variant = 0; variant < 4; ++variant) {
        SCOPED_TRACE(::testing::Message() << c.name << " variant " << variant);
        const bool aligned = variant < 2;
        for (int iteration = 0; iteration < 400; ++iteration) {
            Built b = BuildRequest(rng, c.destination, AlphaPass::kNone,
                                   aligned ? Target::kAlignedKernel : Target::kAnyKernel, c.group);
            const Kernel kernel = c.kernels->variant[variant];
            ASSERT_TRUE(Differential(
                b.scene, b.request, [&](const Request& r) { kernel(&r); },
                [&](const Request& r) { ReferenceYuvKernel(r, aligned ? c.aligned_model : c.any_model, aligned); }));
        }
    }
}

INSTANTIATE_TEST_SUITE_P(AllKernels, YuvToYuvKernelTest, ::testing::ValuesIn(kKernelCases),
                         [](const auto& info) { return std::string(info.param.name); });

// ---- Every export ----------------------------------------------------------------------------------

struct ExportCase {
    const char* name;
    ZenkConvertFunction convert;
    YuvExport colour;
    Destination destination;
    AlphaPass alpha;
};

void PrintTo(const ExportCase& c, std::ostream* os) { *os << c.name; }

using E = YuvExport;
using D = Destination;
using A = AlphaPass;

const ExportCase kExportCases[] = {
    {"UYVY16I_UYVY16I", ZENK_SSE2_UYVY16I_UYVY16I_EX, E::kUyvyToUyvy, D::kPacked, A::kNone},
    {"YUYV16I_YUYV16I", ZENK_SSE2_YUYV16I_YUYV16I_EX, E::kYuyvToYuyv, D::kPacked, A::kNone},
    {"UYVY16I_YUYV16I", ZENK_SSE2_UYVY16I_YUYV16I_EX, E::kUyvyToYuyv, D::kPacked, A::kNone},
    {"YUYV16I_UYVY16I", ZENK_SSE2_YUYV16I_UYVY16I_EX, E::kYuyvToUyvy, D::kPacked, A::kNone},
    {"UVYY16I_UYVY16I", ZENK_SSE2_UVYY16I_UYVY16I_EX, E::kUvyyToUyvy, D::kPacked, A::kNone},
    {"UYVY16I_UVYY16I", ZENK_SSE2_UYVY16I_UVYY16I_EX, E::kUyvyToUvyy, D::kPacked, A::kNone},
    {"UYVY16I_Y8PUV8I", ZENK_SSE2_UYVY16I_Y8PUV8I_EX, E::kUyvyToY8puv8, D::kPlanar, A::kNone},
    {"UYVY16I_V8U8Y8A8I", ZENK_SSE2_UYVY16I_V8U8Y8A8I_EX, E::kUyvyToV8u8y8a8, D::kWide, A::kNone},
    {"UVYY16I_UYVY16IA8P", ZENK_SSE2_UVYY16I_UYVY16IA8P_EX, E::kUvyyToUyvy, D::kPacked, A::kConstant},
    {"YUYV16I_UYVY16IA8P", ZENK_SSE2_YUYV16I_UYVY16IA8P_EX, E::kYuyvToUyvy, D::kPacked, A::kConstant},
    {"UYVY16I_YUYV16IA8P", ZENK_SSE2_UYVY16I_YUYV16IA8P_EX, E::kUyvyToYuyv, D::kPacked, A::kConstant},
    {"UYVY16I_Y8PUV8IA8P", ZENK_SSE2_UYVY16I_Y8PUV8IA8P_EX, E::kUyvyToY8puv8, D::kPlanar, A::kConstant},
    {"UYVY16I_UYVY16IA8P", ZENK_SSE2_UYVY16I_UYVY16IA8P_EX, E::kUyvyToUyvy, D::kPacked, A::kConstant},
    {"UYVY16I_UVYY16IA8P", ZENK_SSE2_UYVY16I_UVYY16IA8P_EX, E::kUyvyToUvyy, D::kPacked, A::kConstant},
    {"YUYV16I_YUYV16IA8P", ZENK_SSE2_YUYV16I_YUYV16IA8P_EX, E::kYuyvToYuyv, D::kPacked, A::kConstant},
    {"UYVY16IA8P_YUYV16IA8P", ZENK_SSE2_UYVY16IA8P_YUYV16IA8P_EX, E::kUyvyToYuyv, D::kPacked, A::kCopy},
    {"UYVY16IA8P_UYVY16IA8P", ZENK_SSE2_UYVY16IA8P_UYVY16IA8P_EX, E::kUyvyToUyvy, D::kPacked, A::kCopy},
    {"YUYV16IA8P_YUYV16IA8P", ZENK_SSE2_YUYV16IA8P_YUYV16IA8P_EX, E::kYuyvToYuyv, D::kPacked, A::kCopy},
    {"YUYV16IA8P_UYVY16IA8P", ZENK_SSE2_YUYV16IA8P_UYVY16IA8P_EX, E::kYuyvToUyvy, D::kPacked, A::kCopy},
};

// The colour pass, then the alpha pass of a composite: src_height lines of
// width bytes into the destination alpha plane.
void ReferenceExport(const Request& r, const ExportCase& c) {
    ReferenceYuvExport(r, c.colour);
    if (c.alpha == AlphaPass::kNone) return;
    Request alpha = r;
    alpha.src_plane = r.src_alpha_plane;
    alpha.src_skip = r.src_alpha_skip;
    alpha.dst_plane = r.dst_alpha_plane;
    alpha.dst_skip = r.dst_alpha_skip;
    const RgbSource source = c.alpha == AlphaPass::kCopy ? RgbSource::kAlphaPlane : RgbSource::kAlphaConstant;
    ReferenceRgbConvert(alpha, {source, RgbDestination::kAlphaPlane}, 0);
}

// The family's exports for the checks that run over every export.
const Registration kRegistration([] {
    std::vector<ExportUnderTest> exports;
    for (const ExportCase& c : kExportCases) {
        ExportUnderTest e;
        e.name = std::string("ZENK_SSE2_") + c.name + "_EX";
        e.convert = c.convert;
        e.src = {2, false, 0, 1};
        e.src_alpha = {c.alpha == AlphaPass::kCopy ? 1 : 0, false, 0, 1};
        e.dst = c.destination == Destination::kPlanar ? PlaneSpec{1, true, 0, 1}
                                                       : PlaneSpec{BytesPerPixel(c.destination), false, 0, 4};
        e.dst_alpha = {c.alpha == AlphaPass::kNone ? 0 : 1, false, 0, 1};
        e.lines_bound_writes = c.destination != Destination::kPlanar;
        e.reference = [c](const Request& r) { ReferenceExport(r, c); };
        exports.push_back(e);
    }
    return exports;
}());

class YuvToYuvExportTest : public ::testing::TestWithParam<ExportCase> {};

TEST_P(YuvToYuvExportTest, MatchesReference) {
    const ExportCase& c = GetParam();
    Rng rng(std::hash<std::string>{}(c.name) + 1);
    const int32_t group = c.destination == Destination::kWide ? 8 : 16;
    for (int iteration = 0; iteration < 2500; ++iteration) {
        Built b = BuildRequest(rng, c.destination, c.alpha, Target::kExport, group);
        ASSERT_TRUE(Differential(
            b.scene, b.request, [&](const Request& r) { c.convert(&r); },
            [&](const Request& r) { ReferenceExport(r, c); }))
            << c.name;
    }
}

INSTANTIATE_TEST_SUITE_P(AllExports, YuvToYuvExportTest, ::testing::ValuesIn(kExportCases),
                         [](const auto& info) { return std::string(info.param.name); });

}  // namespace
}  // namespace zenk::test
