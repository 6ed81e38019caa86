// Differential tests of the YUV-to-RGB exports: every kernel variant, every
// pair-mode kernel and every export against the scalar reference, on random
// requests with guard room around every plane, with the host option
// answering zero and nonzero.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <string>

#include "frame/export_frame.h"
#include "frame/host_option.h"
#include "reference/yuv_to_rgb_reference.h"
#include "support/counting_host_settings.h"
#include "support/test_picture.h"
#include "yuv_to_rgb/yuv_to_rgb_kernels.h"

namespace zenk::test {
namespace {


enum class Kind { kFourKernel, kTable, kConstantAlpha, kAlphaCopy };
enum class Output { kBgr32, kBgr24 };

struct YuvCase {
    const char* name;
    ZenkConvertFunction convert;
    Kind kind;
    YuvLayout layout;
    bool src_alpha;                  // IA8P source
    Output output;
    const KernelQuad* kernels;       // null for the composites
    Kernel pair_mode;                // table exports: the kernel of columns 1 and 2
    FourthByte fourth[4];            // per variant
    FourthByte pair_mode_fourth;
    // The export's alignment test, written out here: plane 16-aligned,
    // pitch and width multiples of these units (0: side not tested).
    struct Units {
        uint32_t src_stride, src_width, dst_stride, dst_width;
    } units;
};

constexpr FourthByte W = FourthByte::kWordAlpha, D = FourthByte::kDwordAlpha, P = FourthByte::kAlphaPlane,
                     N = FourthByte::kNone;
using L = YuvLayout;
using namespace yuv_to_rgb;

const YuvCase kCases[] = {
    {"UYVY16I_BGR32I", ZENK_SSE2_UYVY16I_BGR32I_EX, Kind::kTable, L::kUyvy, false, Output::kBgr32, &kUyvyToBgr32,
     kUyvyToBgr32Fields, {W, W, W, W}, W, {32, 4, 16, 8}},
    {"Y8PUV8I_BGR32I", ZENK_SSE2_Y8PUV8I_BGR32I_EX, Kind::kTable, L::kPlanar, false, Output::kBgr32, &kPlanarToBgr32,
     kPlanarToBgr32Fields, {W, D, D, D}, D, {32, 4, 16, 8}},
    {"YUYV16I_BGR32I", ZENK_SSE2_YUYV16I_BGR32I_EX, Kind::kFourKernel, L::kYuyv, false, Output::kBgr32, &kYuyvToBgr32,
     nullptr, {W, D, D, D}, N, {16, 8, 32, 4}},
    {"UYVY16I_BGR24I", ZENK_SSE2_UYVY16I_BGR24I_EX, Kind::kFourKernel, L::kUyvy, false, Output::kBgr24, &kUyvyToBgr24,
     nullptr, {N, N, N, N}, N, {0, 0, 1, 16}},
    {"YUYV16I_BGR24I", ZENK_SSE2_YUYV16I_BGR24I_EX, Kind::kFourKernel, L::kYuyv, false, Output::kBgr24, &kYuyvToBgr24,
     nullptr, {N, N, N, N}, N, {0, 0, 1, 16}},
    {"UVYY16I_BGR24I", ZENK_SSE2_UVYY16I_BGR24I_EX, Kind::kFourKernel, L::kUvyy, false, Output::kBgr24, &kUvyyToBgr24,
     nullptr, {N, N, N, N}, N, {0, 0, 1, 16}},
    {"Y8PUV8I_BGR24I", ZENK_SSE2_Y8PUV8I_BGR24I_EX, Kind::kFourKernel, L::kPlanar, false, Output::kBgr24,
     &kPlanarToBgr24, nullptr, {N, N, N, N}, N, {0, 0, 1, 16}},
    {"Y8PUV8IA8P_BGR32I", ZENK_SSE2_Y8PUV8IA8P_BGR32I_EX, Kind::kFourKernel, L::kPlanar, true, Output::kBgr32,
     &kPlanarAlphaToBgr32, nullptr, {P, P, P, P}, N, {0, 0, 16, 16}},
    {"YUYV16IA8P_BGR32I", ZENK_SSE2_YUYV16IA8P_BGR32I_EX, Kind::kFourKernel, L::kYuyv, true, Output::kBgr32,
     &kYuyvAlphaToBgr32, nullptr, {P, P, P, P}, N, {16, 8, 32, 4}},
    {"UYVY16IA8P_BGR32I", ZENK_SSE2_UYVY16IA8P_BGR32I_EX, Kind::kFourKernel, L::kUyvy, true, Output::kBgr32,
     &kUyvyAlphaToBgr32, nullptr, {P, P, P, P}, N, {16, 8, 32, 4}},
    {"Y8PUV8I_BGR24IA8P", ZENK_SSE2_Y8PUV8I_BGR24IA8P_EX, Kind::kConstantAlpha, L::kPlanar, false, Output::kBgr24,
     nullptr, nullptr, {N, N, N, N}, N, {0, 0, 1, 16}},
    {"UVYY16I_BGR24IA8P", ZENK_SSE2_UVYY16I_BGR24IA8P_EX, Kind::kConstantAlpha, L::kUvyy, false, Output::kBgr24,
     nullptr, nullptr, {N, N, N, N}, N, {0, 0, 1, 16}},
    {"YUYV16I_BGR24IA8P", ZENK_SSE2_YUYV16I_BGR24IA8P_EX, Kind::kConstantAlpha, L::kYuyv, false, Output::kBgr24,
     nullptr, nullptr, {N, N, N, N}, N, {0, 0, 1, 16}},
    {"UYVY16I_BGR24IA8P", ZENK_SSE2_UYVY16I_BGR24IA8P_EX, Kind::kConstantAlpha, L::kUyvy, false, Output::kBgr24,
     nullptr, nullptr, {N, N, N, N}, N, {0, 0, 1, 16}},
    {"YUYV16IA8P_BGR24IA8P", ZENK_SSE2_YUYV16IA8P_BGR24IA8P_EX, Kind::kAlphaCopy, L::kYuyv, true, Output::kBgr24,
     nullptr, nullptr, {N, N, N, N}, N, {0, 0, 1, 16}},
    {"UYVY16IA8P_BGR24IA8P", ZENK_SSE2_UYVY16IA8P_BGR24IA8P_EX, Kind::kAlphaCopy, L::kUyvy, true, Output::kBgr24,
     nullptr, nullptr, {N, N, N, N}, N, {0, 0, 1, 16}},
};

void PrintTo(const YuvCase& c, std::ostream* os) { *os << c.name; }

int BlockPixels(const YuvCase& c) { return c.output == Output::kBgr24 ? 16 : 8; }
int DstBytes(const YuvCase& c) { return c.output == Output::kBgr24 ? 3 : 4; }
int SrcBytes(const YuvCase& c) { return c.layout == L::kPlanar ? 1 : 2; }
bool DstAlphaPlane(const YuvCase& c) { return c.kind == Kind::kConstantAlpha || c.kind == Kind::kAlphaCopy; }

// ---- Reference of a whole export -------------------------------------------------------

// The alpha passes of the composites: src_height lines of width bytes.
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

// What the export does. When an export picks an aligned kernel the width is
// a whole number of its blocks, so every variant converts all pixels but a
// last odd one; only the alpha form depends on the variant.
bool ReferencePasses(const YuvCase::Units& u, const Request& r) {
    auto side = [](const void* plane, int32_t stride, int32_t width, uint32_t stride_unit, uint32_t width_unit) {
        return reinterpret_cast<uintptr_t>(plane) % 16 == 0 && static_cast<uint32_t>(stride) % stride_unit == 0 &&
               static_cast<uint32_t>(width) % width_unit == 0;
    };
    return (u.src_width == 0 || side(r.src_plane, r.src_stride, r.width, u.src_stride, u.src_width)) &&
           side(r.dst_plane, r.dst_stride, r.width, u.dst_stride, u.dst_width);
}

void ReferenceExport(const YuvCase& c, const Request& r, int32_t answer) {
    const bool aligned = ReferencePasses(c.units, r);
    const int variant = (aligned ? 0 : 2) + (r.use_streaming_stores ? 1 : 0);
    const YuvDecoding frame{c.layout, c.fourth[variant]};
    if (c.kind == Kind::kTable) {
        const int column = r.vertical_mode >= 0 && r.vertical_mode <= 4 ? r.vertical_mode : 0;
        if (column == 0) ReferenceYuvToRgb(r, frame, 0, answer);
        if (column == 1 || column == 2) ReferenceYuvToRgbPairModes(r, {c.layout, c.pair_mode_fourth}, answer);
        return;
    }
    ReferenceYuvToRgb(r, frame, 0, answer);
    if (c.kind == Kind::kConstantAlpha) ReferenceAlphaPass(r, false);
    if (c.kind == Kind::kAlphaCopy) ReferenceAlphaPass(r, true);
}

// ---- Random requests -----------------------------------------------------------------------

enum class Target { kAlignedKernel, kAnyKernel, kPairModeKernel, kExport };

struct Built {
    Scene scene;
    Request request{};
};

int32_t RoundUp(int32_t v, int32_t unit) { return (v + unit - 1) / unit * unit; }

// Picks everything that selects the decoding: matrix (1, 0, 2, -1, ...),
// full range, clamp; the host's answer is configured by the caller.
void RandomSelectors(Rng& rng, Request& r) {
    static const std::vector<int32_t> kMatrices = {1, 1, 0, 2, -1, 3, 0x7FFFFFFF};
    r.dst_matrix = rng.Pick(kMatrices);
    r.src_matrix = rng.Pick(kMatrices);
    r.dst_range = rng.Uniform(-1, 2);
    r.src_range = rng.Uniform(-1, 2);
    r.full_range = rng.Chance(50) ? 0 : static_cast<uint8_t>(rng.Uniform(1, 255));
    r.clamp_luma = rng.Chance(50) ? 0 : static_cast<uint8_t>(rng.Uniform(1, 255));
    r.alpha_value = rng.AlphaValue();
    r.use_streaming_stores = rng.Chance(50);
}

// A frame request. Aligned pictures meet every test of every export (16-byte
// aligned planes, pitches of whole 64 bytes, widths of whole 16 pixels), or,
// for a direct call of an aligned kernel, any width with the rest of a line
// left alone. Other pictures put destination lines where the head can bring
// them to a boundary: 8-byte aligned for BGR32, even for BGR24, and now and
// then anywhere.
Built BuildFrame(Rng& rng, const YuvCase& c, Target target) {
    Built b;
    Request& r = b.request;
    RandomSelectors(rng, r);
    const bool aligned = target == Target::kAlignedKernel || (target == Target::kExport && rng.Chance(40));
    const int block = BlockPixels(c);
    int32_t width;
    if (target == Target::kAlignedKernel)
        width = block * rng.Uniform(0, 5) + (rng.Chance(30) ? rng.Uniform(1, block - 1) : 0);
    else if (aligned)
        width = 16 * rng.Uniform(0, 4);
    else
        width = rng.Chance(85) ? rng.Uniform(0, 70) : rng.Uniform(71, 700);
    const int32_t height = rng.Uniform(0, 5);
    const int32_t count = target == Target::kAlignedKernel ? width / block * block : width & ~1;
    const bool anywhere = !aligned && rng.Chance(10);

    auto plane = [&](int32_t line_bytes, int32_t extra_lines, int32_t unit) -> GuardedPlane& {
        PlaneShape shape;
        shape.line_bytes = line_bytes;
        shape.lines = height;
        shape.extra_lines = extra_lines;
        shape.bottom_up = rng.Chance(30);
        if (aligned) {
            shape.pitch = RoundUp(line_bytes, 64) + 64 * rng.Uniform(0, 1);
            // A BGR24 pitch that is no multiple of 16 leaves later lines off a
            // boundary: the aligned kernels must still write the same bytes.
            if (target == Target::kAlignedKernel && unit == 2 && rng.Chance(25))
                shape.pitch = RoundUp(line_bytes, 2) + 2 * rng.Uniform(1, 20);
        } else {
            const int32_t u = anywhere ? 1 : unit;
            shape.pitch = RoundUp(line_bytes, u) + u * rng.Uniform(0, 8);
            shape.residue = static_cast<uint32_t>(rng.Uniform(0, 63)) / u * u;
        }
        return b.scene.Add(rng, shape);
    };
    const bool planar = c.layout == L::kPlanar;
    const int32_t dst_unit = c.output == Output::kBgr32 ? 8 : 2;
    plane(width * SrcBytes(c), planar ? height : 0, 1);
    if (c.src_alpha) plane(width, 0, 1);
    plane(width * DstBytes(c), 0, dst_unit);
    if (DstAlphaPlane(c)) plane(width, 0, 1);

    size_t i = 0;
    r.width = width;
    r.src_width = rng.Chance(80) ? width : rng.Uniform(0, 70);
    r.src_height = height;
    r.dst_height = rng.Uniform(0, 5);
    GuardedPlane& s = b.scene[i++];
    r.src_plane = s.first_line();
    r.src_stride = s.stride();
    r.src_skip = s.Skip(count * SrcBytes(c));
    if (c.src_alpha) {
        GuardedPlane& a = b.scene[i++];
        r.src_alpha_plane = a.first_line();
        r.src_alpha_stride = a.stride();
        // The alpha copy of a composite consumes the whole width.
        r.src_alpha_skip = a.Skip(DstAlphaPlane(c) ? width : count);
    }
    GuardedPlane& d = b.scene[i++];
    r.dst_plane = d.first_line();
    r.dst_stride = d.stride();
    r.dst_skip = d.Skip(count * DstBytes(c));
    if (DstAlphaPlane(c)) {
        GuardedPlane& a = b.scene[i++];
        r.dst_alpha_plane = a.first_line();
        r.dst_alpha_stride = a.stride();
        r.dst_alpha_skip = a.Skip(width);
    }
    // A frame kernel reads neither of these.
    r.scan_mode = rng.Uniform(0, 3);
    r.src_field_pair = rng.Byte();
    return b;
}

// A pair-mode request: vertical_mode 1 or 2, lines of the reduced picture
// dst_skip apart (8-byte aligned, now and then anywhere), a source with
// enough lines for the reduction, src_skip zero or small (negative for a
// bottom-up source).
Built BuildPairMode(Rng& rng, const YuvCase& c, int32_t vertical_mode) {
    Built b;
    Request& r = b.request;
    RandomSelectors(rng, r);
    r.vertical_mode = vertical_mode;
    static const std::vector<int32_t> kScanModes = {1, 1, 2, 2, 1, 2, 0, 3};
    r.scan_mode = rng.Pick(kScanModes);
    r.src_field_pair = rng.Chance(50) ? 0 : static_cast<uint8_t>(rng.Uniform(1, 255));
    const int32_t width = rng.Chance(85) ? rng.Uniform(0, 70) : rng.Uniform(71, 700);
    const int32_t dst_lines = rng.Uniform(0, 5);
    const int32_t k = vertical_mode == 1 ? 2 : 4;
    // Source lines used: up to 2k per pair of destination lines, plus the
    // second stream's offset, plus the drift of a nonzero skip.
    const int32_t src_lines = 2 * k * ((dst_lines + 1) / 2) + k + 2;
    const bool planar = c.layout == L::kPlanar;

    PlaneShape src_shape;
    src_shape.line_bytes = width * SrcBytes(c);
    src_shape.lines = src_lines;
    src_shape.extra_lines = planar ? src_lines : 0;
    src_shape.bottom_up = rng.Chance(30);
    src_shape.pitch = src_shape.line_bytes + 16 + rng.Uniform(0, 40);
    src_shape.residue = static_cast<uint32_t>(rng.Uniform(0, 63));
    GuardedPlane& s = b.scene.Add(rng, src_shape);

    const bool anywhere = rng.Chance(10);
    const int32_t unit = anywhere ? 1 : 8;
    PlaneShape dst_shape;
    dst_shape.line_bytes = width * DstBytes(c);
    dst_shape.lines = dst_lines;
    dst_shape.bottom_up = rng.Chance(30);
    dst_shape.pitch = RoundUp(dst_shape.line_bytes, unit) + unit * rng.Uniform(0, 4);
    dst_shape.residue = static_cast<uint32_t>(rng.Uniform(0, 63)) / unit * unit;
    b.scene.Add(rng, dst_shape);

    GuardedPlane& src = b.scene[0];
    GuardedPlane& dst = b.scene[1];
    (void)s;
    r.width = width;
    r.src_width = width;
    r.src_plane = src.first_line();
    r.src_stride = src.stride();
    // The chroma plane of Y8PUV8I lies src_stride * src_height after the luma.
    r.src_height = planar ? src_lines : rng.Uniform(0, 5);
    r.src_skip = src_shape.bottom_up ? -rng.Uniform(1, 6) : (rng.Chance(70) ? 0 : rng.Uniform(1, 6));
    r.dst_plane = dst.first_line();
    r.dst_stride = dst.stride();
    r.dst_height = dst_lines;
    r.dst_skip = dst.Skip(0);
    return b;
}

// Configures what option 128 answers for the next conversion.
int32_t RandomHostAnswer(Rng& rng) {
    static const std::vector<int32_t> kAnswers = {0, 1, 0, 1, 7, -1};
    const int32_t answer = rng.Pick(kAnswers);
    ZenkTestSettingsConfigure(0, answer);
    return answer;
}

std::vector<YuvCase> CasesWhere(bool (*keep)(const YuvCase&)) {
    std::vector<YuvCase> out;
    for (const YuvCase& c : kCases)
        if (keep(c)) out.push_back(c);
    return out;
}

class YuvToRgbTest : public ::testing::TestWithParam<YuvCase> {
protected:
    void SetUp() override { ResetHostSettingsCache(); }
    void TearDown() override {
        ZenkTestSettingsConfigure(0, 1);
        ResetHostSettingsCache();
    }
};

using YuvToRgbKernelTest = YuvToRgbTest;
using YuvToRgbPairModeTest = YuvToRgbTest;

TEST_P(YuvToRgbKernelTest, EveryVariantMatchesReference) {
    const YuvCase& c = GetParam();
    Rng rng(std::hash<std::string>{}(c.name));
    for (int variant = 0; variant < 4; ++variant) {
        SCOPED_TRACE(::testing::Message() << c.name << " variant " << variant);
        const Kernel kernel = c.kernels->variant[variant];
        const int block = variant < 2 ? BlockPixels(c) : 0;
        for (int iteration = 0; iteration < 400; ++iteration) {
            Built b = BuildFrame(rng, c, variant < 2 ? Target::kAlignedKernel : Target::kAnyKernel);
            const int32_t answer = RandomHostAnswer(rng);
            ASSERT_TRUE(Differential(
                b.scene, b.request, [&](const Request& r) { kernel(&r); },
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
                [&](const Request& r) { ReferenceYuvToRgbPairModes(r, {c.layout, c.pair_mode_fourth}, answer); }));
        }
    }
}

TEST_P(YuvToRgbTest, ExportMatchesReference) {
    const YuvCase& c = GetParam();
    Rng rng(std::hash<std::string>{}(c.name) + 1);
    static const std::vector<int32_t> kModes = {0, 0, 0, 1, 2, 3, 4, 7, -1};
    for (int iteration = 0; iteration < 2500; ++iteration) {
        const int32_t mode = rng.Pick(kModes);
        const bool pair_mode = c.kind == Kind::kTable && (mode == 1 || mode == 2);
        Built b = pair_mode ? BuildPairMode(rng, c, mode) : BuildFrame(rng, c, Target::kExport);
        b.request.vertical_mode = mode;
        const int32_t answer = RandomHostAnswer(rng);
        ASSERT_TRUE(Differential(
            b.scene, b.request, [&](const Request& r) { c.convert(&r); },
            [&](const Request& r) { ReferenceExport(c, r, answer); }))
            << c.name;
    }
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
