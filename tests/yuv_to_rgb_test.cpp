// Differential tests of the YUV-to-RGB exports: every kernel variant, both
// pair modes and every export against the scalar reference, on random
// requests with guard room around every plane and the host option answering
// zero and nonzero.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <string>

#include "frame/export_frame.h"
#include "frame/host_option.h"
#include "reference/yuv_to_rgb_reference.h"
#include "support/counting_host_settings.h"
#include "support/host_option_fixture.h"
#include "support/export_registry.h"
#include "support/test_picture.h"
#include "yuv_to_rgb/yuv_to_rgb_kernels.h"

namespace zenk::test {
namespace {

enum class Kind { kFourKernel, kTable, kConstantAlpha, kAlphaCopy };

struct YuvCase {
    const char* name;
    ZenkConvertFunction convert;
    Kind kind;
    YuvLayout layout;
    bool src_alpha;            // IA8P source
    bool bgr24;
    const KernelQuad* kernels;  // null for the composites
    Kernel pair_mode;           // table exports: columns 1 and 2, alpha as variant 3
    FourthByte fourth[4];       // per variant
    // The export's test, written out: plane 16-aligned, pitch and width
    // multiples of these units (src_width 0: source not tested).
    uint32_t src_stride, src_width, dst_stride, dst_width;
};

constexpr FourthByte W = FourthByte::kWordAlpha, D = FourthByte::kDwordAlpha, P = FourthByte::kAlphaPlane,
                     N = FourthByte::kNone;
using L = YuvLayout;
using K = Kind;
using namespace yuv_to_rgb;

const YuvCase kCases[] = {
    {"UYVY16I_BGR32I", ZENK_SSE2_UYVY16I_BGR32I_EX, K::kTable, L::kUyvy, 0, 0, &kUyvyToBgr32, kUyvyToBgr32Fields, {W, W, W, W}, 32, 4, 16, 8},
    {"Y8PUV8I_BGR32I", ZENK_SSE2_Y8PUV8I_BGR32I_EX, K::kTable, L::kPlanar, 0, 0, &kPlanarToBgr32, kPlanarToBgr32Fields, {W, D, D, D}, 32, 4, 16, 8},
    {"YUYV16I_BGR32I", ZENK_SSE2_YUYV16I_BGR32I_EX, K::kFourKernel, L::kYuyv, 0, 0, &kYuyvToBgr32, nullptr, {W, D, D, D}, 16, 8, 32, 4},
    {"UYVY16I_BGR24I", ZENK_SSE2_UYVY16I_BGR24I_EX, K::kFourKernel, L::kUyvy, 0, 1, &kUyvyToBgr24, nullptr, {N, N, N, N}, 0, 0, 1, 16},
    {"YUYV16I_BGR24I", ZENK_SSE2_YUYV16I_BGR24I_EX, K::kFourKernel, L::kYuyv, 0, 1, &kYuyvToBgr24, nullptr, {N, N, N, N}, 0, 0, 1, 16},
    {"UVYY16I_BGR24I", ZENK_SSE2_UVYY16I_BGR24I_EX, K::kFourKernel, L::kUvyy, 0, 1, &kUvyyToBgr24, nullptr, {N, N, N, N}, 0, 0, 1, 16},
    {"Y8PUV8I_BGR24I", ZENK_SSE2_Y8PUV8I_BGR24I_EX, K::kFourKernel, L::kPlanar, 0, 1, &kPlanarToBgr24, nullptr, {N, N, N, N}, 0, 0, 1, 16},
    {"Y8PUV8IA8P_BGR32I", ZENK_SSE2_Y8PUV8IA8P_BGR32I_EX, K::kFourKernel, L::kPlanar, 1, 0, &kPlanarAlphaToBgr32, nullptr, {P, P, P, P}, 0, 0, 16, 16},
    {"YUYV16IA8P_BGR32I", ZENK_SSE2_YUYV16IA8P_BGR32I_EX, K::kFourKernel, L::kYuyv, 1, 0, &kYuyvAlphaToBgr32, nullptr, {P, P, P, P}, 16, 8, 32, 4},
    {"UYVY16IA8P_BGR32I", ZENK_SSE2_UYVY16IA8P_BGR32I_EX, K::kFourKernel, L::kUyvy, 1, 0, &kUyvyAlphaToBgr32, nullptr, {P, P, P, P}, 16, 8, 32, 4},
    {"Y8PUV8I_BGR24IA8P", ZENK_SSE2_Y8PUV8I_BGR24IA8P_EX, K::kConstantAlpha, L::kPlanar, 0, 1, nullptr, nullptr, {N, N, N, N}, 0, 0, 1, 16},
    {"UVYY16I_BGR24IA8P", ZENK_SSE2_UVYY16I_BGR24IA8P_EX, K::kConstantAlpha, L::kUvyy, 0, 1, nullptr, nullptr, {N, N, N, N}, 0, 0, 1, 16},
    {"YUYV16I_BGR24IA8P", ZENK_SSE2_YUYV16I_BGR24IA8P_EX, K::kConstantAlpha, L::kYuyv, 0, 1, nullptr, nullptr, {N, N, N, N}, 0, 0, 1, 16},
    {"UYVY16I_BGR24IA8P", ZENK_SSE2_UYVY16I_BGR24IA8P_EX, K::kConstantAlpha, L::kUyvy, 0, 1, nullptr, nullptr, {N, N, N, N}, 0, 0, 1, 16},
    {"YUYV16IA8P_BGR24IA8P", ZENK_SSE2_YUYV16IA8P_BGR24IA8P_EX, K::kAlphaCopy, L::kYuyv, 1, 1, nullptr, nullptr, {N, N, N, N}, 0, 0, 1, 16},
    {"UYVY16IA8P_BGR24IA8P", ZENK_SSE2_UYVY16IA8P_BGR24IA8P_EX, K::kAlphaCopy, L::kUyvy, 1, 1, nullptr, nullptr, {N, N, N, N}, 0, 0, 1, 16},
};

void PrintTo(const YuvCase& c, std::ostream* os) { *os << c.name; }

int SrcBytes(const YuvCase& c) { return c.layout == L::kPlanar ? 1 : 2; }
int DstBytes(const YuvCase& c) { return c.bgr24 ? 3 : 4; }
bool DstAlphaPlane(const YuvCase& c) { return c.kind == K::kConstantAlpha || c.kind == K::kAlphaCopy; }

// ---- Reference of a whole export -------------------------------------------------------

bool ReferencePasses(const YuvCase& c, const Request& r) {
    auto side = [&](const void* plane, int32_t stride, uint32_t stride_unit, uint32_t width_unit) {
        return reinterpret_cast<uintptr_t>(plane) % 16 == 0 && static_cast<uint32_t>(stride) % stride_unit == 0 &&
               static_cast<uint32_t>(r.width) % width_unit == 0;
    };
    return (c.src_width == 0 || side(r.src_plane, r.src_stride, c.src_stride, c.src_width)) &&
           side(r.dst_plane, r.dst_stride, c.dst_stride, c.dst_width);
}

// The alpha pass of a composite: src_height lines of width bytes.
void ReferenceAlphaPass(const Request& r, bool copy) {
    const uint8_t* src = r.src_alpha_plane;
    uint8_t* dst = r.dst_alpha_plane;
    const int32_t width = std::max(r.width, 0);
    for (int32_t line = 0; line < r.src_height; ++line) {
        for (int32_t x = 0; x < width; ++x) dst[x] = copy ? src[x] : static_cast<uint8_t>(r.alpha_value);
        if (copy) src = Step(src, int64_t{width} + r.src_alpha_skip);
        dst = Step(dst, int64_t{width} + r.dst_alpha_skip);
    }
}

// An export that picks an aligned kernel has a width of whole blocks, so
// every variant converts all pixels but a last odd one; only the alpha form
// depends on the variant.
void ReferenceExport(const YuvCase& c, const Request& r, int32_t answer) {
    const int variant = (ReferencePasses(c, r) ? 0 : 2) + (r.use_streaming_stores ? 1 : 0);
    const int column = c.kind == K::kTable && r.vertical_mode >= 0 && r.vertical_mode <= 4 ? r.vertical_mode : 0;
    if (column == 0) ReferenceYuvToRgb(r, {c.layout, c.fourth[variant]}, 0, answer);
    if (column == 1 || column == 2) ReferenceYuvToRgbPairModes(r, {c.layout, c.fourth[3]}, answer);
    if (DstAlphaPlane(c)) ReferenceAlphaPass(r, c.kind == K::kAlphaCopy);
}

// The family's exports for the checks that run over every export. The
// reference reads the host option as the library answers it. Unaligned
// BGR32 lines start on 8-byte boundaries and BGR24 lines on even bytes.
const Registration kRegistration([] {
    std::vector<ExportUnderTest> exports;
    for (const YuvCase& c : kCases) {
        ExportUnderTest e;
        e.name = std::string("ZENK_SSE2_") + c.name + "_EX";
        e.convert = c.convert;
        e.src = c.layout == L::kPlanar ? PlaneSpec{1, true, 0, 1} : PlaneSpec{2, false, 0, 1};
        e.src_alpha = {c.src_alpha ? 1 : 0, false, 0, 1};
        e.dst = {DstBytes(c), false, 0, c.bgr24 ? 2 : 8};
        e.dst_alpha = {DstAlphaPlane(c) ? 1 : 0, false, 0, 1};
        if (c.kind == K::kTable) e.pair_modes = {1, 2};
        e.reference = [c](const Request& r) { ReferenceExport(c, r, QueryHostOption()); };
        exports.push_back(e);
    }
    return exports;
}());

// ---- Random requests -----------------------------------------------------------------------



int32_t RoundUp(int32_t v, int32_t unit) { return (v + unit - 1) / unit * unit; }
int32_t RandomWidth(Rng& rng) { return rng.Chance(85) ? rng.Uniform(0, 70) : rng.Uniform(71, 700); }

// Everything that selects the decoding but the host's answer.
void RandomSelectors(Rng& rng, Request& r) {
    static const std::vector<int32_t> kMatrices = {1, 1, 0, 2, -1, 3, 0x7FFFFFFF};
    r.dst_matrix = rng.Pick(kMatrices);
    r.src_matrix = rng.Pick(kMatrices);
    r.dst_range = rng.Uniform(-1, 2);
    r.full_range = rng.Chance(50) ? 0 : static_cast<uint8_t>(rng.Uniform(1, 255));
    r.clamp_luma = rng.Chance(50) ? 0 : static_cast<uint8_t>(rng.Uniform(1, 255));
    r.alpha_value = rng.AlphaValue();
    r.use_streaming_stores = rng.Chance(50);
}

// A frame request. Aligned pictures pass every export's test (16-aligned
// planes, pitches of whole 64 bytes, widths of whole 16 pixels); a direct
// call of an aligned kernel also gets widths with a remainder, and BGR24
// pitches that put later lines off a boundary. Other pictures put
// destination lines where the head can bring them to a boundary (8-byte
// aligned for BGR32, even for BGR24) and now and then anywhere.
Built BuildFrame(Rng& rng, const YuvCase& c, Target target) {
    Built b;
    Request& r = b.request;
    RandomSelectors(rng, r);
    const bool aligned = target == Target::kAlignedKernel || (target == Target::kExport && rng.Chance(40));
    const int block = c.bgr24 ? 16 : 8;
    const int32_t width = target == Target::kAlignedKernel
                              ? block * rng.Uniform(0, 5) + (rng.Chance(30) ? rng.Uniform(1, block - 1) : 0)
                              : aligned ? 16 * rng.Uniform(0, 4) : RandomWidth(rng);
    const int32_t height = rng.Uniform(0, 5);
    const int32_t count = target == Target::kAlignedKernel ? width / block * block : width & ~1;
    const bool anywhere = !aligned && rng.Chance(10);
    struct Shape {
        int32_t line_bytes, extra, unit, consumed;
    };
    std::vector<Shape> shapes = {{width * SrcBytes(c), c.layout == L::kPlanar ? height : 0, 1, count * SrcBytes(c)}};
    if (c.src_alpha) shapes.push_back({width, 0, 1, DstAlphaPlane(c) ? width : count});
    shapes.push_back({width * DstBytes(c), 0, c.bgr24 ? 2 : 8, count * DstBytes(c)});
    if (DstAlphaPlane(c)) shapes.push_back({width, 0, 1, width});
    for (const Shape& s : shapes) {
        PlaneShape shape{s.line_bytes, height, 0, rng.Chance(30), 0, s.extra};
        if (aligned) {
            shape.pitch = RoundUp(s.line_bytes, 64) + 64 * rng.Uniform(0, 1);
            if (target == Target::kAlignedKernel && s.unit == 2 && rng.Chance(25))
                shape.pitch = RoundUp(s.line_bytes, 2) + 2 * rng.Uniform(1, 20);
        } else {
            const int32_t u = anywhere ? 1 : s.unit;
            shape.pitch = RoundUp(s.line_bytes, u) + u * rng.Uniform(0, 8);
            shape.residue = static_cast<uint32_t>(rng.Uniform(0, 63)) / u * u;
        }
        b.scene.Add(rng, shape);
    }
    // Planes are addressed once all are added: adding may move them.
    auto at = [&](size_t i, const uint8_t*& p, int32_t& stride, int32_t& skip) {
        p = b.scene[i].first_line();
        stride = b.scene[i].stride();
        skip = b.scene[i].Skip(shapes[i].consumed);
    };
    size_t i = 0;
    at(i++, r.src_plane, r.src_stride, r.src_skip);
    if (c.src_alpha) at(i++, r.src_alpha_plane, r.src_alpha_stride, r.src_alpha_skip);
    const uint8_t* dst = nullptr;
    at(i++, dst, r.dst_stride, r.dst_skip);
    r.dst_plane = const_cast<uint8_t*>(dst);
    if (DstAlphaPlane(c)) {
        at(i++, dst, r.dst_alpha_stride, r.dst_alpha_skip);
        r.dst_alpha_plane = const_cast<uint8_t*>(dst);
    }
    r.width = width;
    r.src_width = RandomWidth(rng);
    r.src_height = height;
    r.dst_height = rng.Uniform(0, 5);
    r.scan_mode = rng.Uniform(0, 3);  // a frame kernel reads neither
    r.src_field_pair = rng.Byte();
    return b;
}

// A pair-mode request: destination lines one pitch apart, dst_skip the
// pitch minus the bytes of a line's pairs (8-byte aligned, now and then
// anywhere), a source with lines enough for the reduction and
// src_skip zero or small (negative for a bottom-up source); scan_mode now
// and then 0 or 3, which converts nothing.
Built BuildPairMode(Rng& rng, const YuvCase& c, int32_t vertical_mode) {
    Built b;
    Request& r = b.request;
    RandomSelectors(rng, r);
    static const std::vector<int32_t> kScanModes = {1, 1, 2, 2, 1, 2, 0, 3};
    r.scan_mode = rng.Pick(kScanModes);
    r.vertical_mode = vertical_mode;
    r.src_field_pair = rng.Chance(50) ? 0 : static_cast<uint8_t>(rng.Uniform(1, 255));
    r.width = r.src_width = RandomWidth(rng);
    r.dst_height = rng.Uniform(0, 5);
    const int32_t k = vertical_mode == 1 ? 2 : 4;
    const int32_t src_lines = 2 * k * ((r.dst_height + 1) / 2) + k + 2;
    const bool planar = c.layout == L::kPlanar;
    const int32_t line_bytes = r.width * SrcBytes(c);
    const bool bottom_up = rng.Chance(30);
    b.scene.Add(rng, {line_bytes, src_lines, line_bytes + 16 + rng.Uniform(0, 40), bottom_up,
                      static_cast<uint32_t>(rng.Uniform(0, 63)), planar ? src_lines : 0});
    const int32_t unit = rng.Chance(10) ? 1 : 8;
    const int32_t dst_bytes = r.width * DstBytes(c);
    b.scene.Add(rng, {dst_bytes, r.dst_height, RoundUp(dst_bytes, unit) + unit * rng.Uniform(0, 4), rng.Chance(30),
                      static_cast<uint32_t>(rng.Uniform(0, 63)) / unit * unit, 0});
    r.src_plane = b.scene[0].first_line();
    r.src_stride = b.scene[0].stride();
    r.src_height = planar ? src_lines : rng.Uniform(0, 5);  // places the chroma plane
    r.src_skip = bottom_up ? -rng.Uniform(1, 6) : (rng.Chance(70) ? 0 : rng.Uniform(1, 6));
    r.dst_plane = b.scene[1].first_line();
    r.dst_stride = b.scene[1].stride();
    r.dst_skip = b.scene[1].Skip((r.width & ~1) * DstBytes(c));
    return b;
}

// What option 128 answers for the next conversion.
int32_t RandomHostAnswer(Rng& rng) {
    static const std::vector<int32_t> kAnswers = {0, 1, 0, 1, 7, -1};
    const int32_t answer = rng.Pick(kAnswers);
    ZenkTestSettingsConfigure(0, answer);
    return answer;
}

using YuvToRgbTest = WithHostSettings<::testing::TestWithParam<YuvCase>>;
using YuvToRgbKernelTest = YuvToRgbTest;
using YuvToRgbPairModeTest = YuvToRgbTest;

TEST_P(YuvToRgbKernelTest, EveryVariantMatchesReference) {
    const YuvCase& c = GetParam();
    Rng rng(std::hash<std::string>{}(c.name));
    for (int variant = 0; variant < 4; ++variant) {
        SCOPED_TRACE(::testing::Message() << c.name << " variant " << variant);
        const int block = variant >= 2 ? 0 : c.bgr24 ? 16 : 8;
        for (int iteration = 0; iteration < 400; ++iteration) {
            Built b = BuildFrame(rng, c, variant < 2 ? Target::kAlignedKernel : Target::kAnyKernel);
            const int32_t answer = RandomHostAnswer(rng);
            ASSERT_TRUE(Differential(
                b.scene, b.request, [&](const Request& r) { c.kernels->variant[variant](&r); },
                [&](const Request& r) { ReferenceYuvToRgb(r, {c.layout, c.fourth[variant]}, block, answer); }));
        }
    }
}

TEST_P(YuvToRgbPairModeTest, PairModeKernelMatchesReference) {
    const YuvCase& c = GetParam();
    Rng rng(std::hash<std::string>{}(c.name) + 2);
    for (int32_t mode : {1, 2}) {
        SCOPED_TRACE(::testing::Message() << c.name << " vertical_mode " << mode);
        for (int iteration = 0; iteration < 800; ++iteration) {
            Built b = BuildPairMode(rng, c, mode);
            const int32_t answer = RandomHostAnswer(rng);
            ASSERT_TRUE(Differential(
                b.scene, b.request, [&](const Request& r) { c.pair_mode(&r); },
                [&](const Request& r) { ReferenceYuvToRgbPairModes(r, {c.layout, c.fourth[3]}, answer); }));
        }
    }
}

TEST_P(YuvToRgbTest, ExportMatchesReference) {
    const YuvCase& c = GetParam();
    Rng rng(std::hash<std::string>{}(c.name) + 1);
    static const std::vector<int32_t> kModes = {0, 0, 0, 1, 2, 3, 4, 7, -1};
    for (int iteration = 0; iteration < 2500; ++iteration) {
        const int32_t mode = rng.Pick(kModes);
        Built b = c.kind == K::kTable && (mode == 1 || mode == 2) ? BuildPairMode(rng, c, mode)
                                                                  : BuildFrame(rng, c, Target::kExport);
        b.request.vertical_mode = mode;
        const int32_t answer = RandomHostAnswer(rng);
        ASSERT_TRUE(Differential(
            b.scene, b.request, [&](const Request& r) { c.convert(&r); },
            [&](const Request& r) { ReferenceExport(c, r, answer); }))
            << c.name;
    }
}

std::vector<YuvCase> CasesWhere(bool (*keep)(const YuvCase&)) {
    std::vector<YuvCase> out;
    std::copy_if(std::begin(kCases), std::end(kCases), std::back_inserter(out), keep);
    return out;
}

const auto kCaseName = [](const auto& info) { return std::string(info.param.name); };
INSTANTIATE_TEST_SUITE_P(AllExports, YuvToRgbTest, ::testing::ValuesIn(kCases), kCaseName);
INSTANTIATE_TEST_SUITE_P(AllKernels, YuvToRgbKernelTest,
                         ::testing::ValuesIn(CasesWhere([](const YuvCase& c) { return c.kernels != nullptr; })),
                         kCaseName);
INSTANTIATE_TEST_SUITE_P(TableExports, YuvToRgbPairModeTest,
                         ::testing::ValuesIn(CasesWhere([](const YuvCase& c) { return c.pair_mode != nullptr; })),
                         kCaseName);

}  // namespace
}  // namespace zenk::test
