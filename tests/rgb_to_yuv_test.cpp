// Differential tests of the RGB-to-YUV exports: every kernel variant, every
// pair-mode kernel and every export against the scalar reference, on random
// requests with guard room around every plane, with host option 128
// answering 0 or 1 (or no settings object at all).
#include <gtest/gtest.h>

#include "frame/host_option.h"
#include "reference/rgb_alpha_reference.h"
#include "reference/rgb_to_yuv_reference.h"
#include "rgb_to_yuv/rgb_to_yuv_kernels.h"
#include "support/counting_host_settings.h"
#include "support/host_option_fixture.h"
#include "support/export_registry.h"
#include "support/test_picture.h"

namespace zenk::test {
namespace {

enum class Alpha { kNone, kFromSource, kConstant, kCopy };

struct EncodeCase {
    const char* name;
    ZenkConvertFunction convert;
    const KernelQuad* kernels;          // null for the composites
    const rgb_to_yuv::PairModeKernels* pair_modes;  // table exports only
    EncodeSource source;
    EncodeLayout layout;
    Alpha alpha;
};

void PrintTo(const EncodeCase& c, std::ostream* os) { *os << c.name; }

using Src = EncodeSource;
using Lay = EncodeLayout;
using namespace rgb_to_yuv;

const EncodeCase kCases[] = {
    {"BGR32I_UYVY16I", ZENK_SSE2_BGR32I_UYVY16I_EX, &kBgr32ToUyvy, &kBgr32ToUyvyPairModes, Src::kBgr32, Lay::kUyvy, Alpha::kNone},
    {"BGR32I_UVYY16I", ZENK_SSE2_BGR32I_UVYY16I_EX, &kBgr32ToUvyy, &kBgr32ToUvyyPairModes, Src::kBgr32, Lay::kUvyy, Alpha::kNone},
    {"BGR32I_Y8PUV8I", ZENK_SSE2_BGR32I_Y8PUV8I_EX, &kBgr32ToY8Uv, &kBgr32ToY8UvPairModes, Src::kBgr32, Lay::kY8Uv, Alpha::kNone},
    {"BGR32I_YUYV16I", ZENK_SSE2_BGR32I_YUYV16I_EX, &kBgr32ToYuyv, nullptr, Src::kBgr32, Lay::kYuyv, Alpha::kNone},
    {"BGR24I_YUYV16I", ZENK_SSE2_BGR24I_YUYV16I_EX, &kBgr24ToYuyv, nullptr, Src::kBgr24, Lay::kYuyv, Alpha::kNone},
    {"BGR24I_UYVY16I", ZENK_SSE2_BGR24I_UYVY16I_EX, &kBgr24ToUyvy, nullptr, Src::kBgr24, Lay::kUyvy, Alpha::kNone},
    {"BGR24I_UVYY16I", ZENK_SSE2_BGR24I_UVYY16I_EX, &kBgr24ToUvyy, nullptr, Src::kBgr24, Lay::kUvyy, Alpha::kNone},
    {"BGR24I_Y8PUV8I", ZENK_SSE2_BGR24I_Y8PUV8I_EX, &kBgr24ToY8Uv, nullptr, Src::kBgr24, Lay::kY8Uv, Alpha::kNone},
    {"BGR32I_YUYV16IA8P", ZENK_SSE2_BGR32I_YUYV16IA8P_EX, &kBgr32ToYuyvAlpha, nullptr, Src::kBgr32, Lay::kYuyv, Alpha::kFromSource},
    {"BGR32I_UYVY16IA8P", ZENK_SSE2_BGR32I_UYVY16IA8P_EX, &kBgr32ToUyvyAlpha, nullptr, Src::kBgr32, Lay::kUyvy, Alpha::kFromSource},
    {"BGR32I_UVYY16IA8P", ZENK_SSE2_BGR32I_UVYY16IA8P_EX, &kBgr32ToUvyyAlpha, nullptr, Src::kBgr32, Lay::kUvyy, Alpha::kFromSource},
    {"BGR32I_Y8PUV8IA8P", ZENK_SSE2_BGR32I_Y8PUV8IA8P_EX, &kBgr32ToY8UvAlpha, nullptr, Src::kBgr32, Lay::kY8Uv, Alpha::kFromSource},
    {"BGR24I_YUYV16IA8P", ZENK_SSE2_BGR24I_YUYV16IA8P_EX, nullptr, nullptr, Src::kBgr24, Lay::kYuyv, Alpha::kConstant},
    {"BGR24I_Y8PUV8IA8P", ZENK_SSE2_BGR24I_Y8PUV8IA8P_EX, nullptr, nullptr, Src::kBgr24, Lay::kY8Uv, Alpha::kConstant},
    {"BGR24I_UYVY16IA8P", ZENK_SSE2_BGR24I_UYVY16IA8P_EX, nullptr, nullptr, Src::kBgr24, Lay::kUyvy, Alpha::kConstant},
    {"BGR24I_UVYY16IA8P", ZENK_SSE2_BGR24I_UVYY16IA8P_EX, nullptr, nullptr, Src::kBgr24, Lay::kUvyy, Alpha::kConstant},
    {"BGR24IA8P_YUYV16IA8P", ZENK_SSE2_BGR24IA8P_YUYV16IA8P_EX, nullptr, nullptr, Src::kBgr24, Lay::kYuyv, Alpha::kCopy},
    {"BGR24IA8P_Y8PUV8IA8P", ZENK_SSE2_BGR24IA8P_Y8PUV8IA8P_EX, nullptr, nullptr, Src::kBgr24, Lay::kY8Uv, Alpha::kCopy},
    {"BGR24IA8P_UYVY16IA8P", ZENK_SSE2_BGR24IA8P_UYVY16IA8P_EX, nullptr, nullptr, Src::kBgr24, Lay::kUyvy, Alpha::kCopy},
    {"BGR24IA8P_UVYY16IA8P", ZENK_SSE2_BGR24IA8P_UVYY16IA8P_EX, nullptr, nullptr, Src::kBgr24, Lay::kUvyy, Alpha::kCopy},
};

bool Packed(const EncodeCase& c) { return c.layout != Lay::kY8Uv; }


int32_t RoundUp(int32_t v, int32_t unit) { return (v + unit - 1) / unit * unit; }

// A random request for kernel column `column` (0 frame, 1 halve, 2 quarter,
// 3 double). `aligned` shapes a frame request for the aligned kernels:
// 16-aligned planes, pitches of whole 64-byte units, width a multiple of 8
// (so that the skips keep the lines aligned, unless a pitch is made odd on
// purpose). Otherwise planes sit at any address; packed destination lines
// are mostly 4-byte aligned, as hosts keep them.
Built BuildRequest(Rng& rng, const EncodeCase& c, int column, bool aligned) {
    Built b;
    Request& r = b.request;
    const int32_t width = aligned ? 8 * rng.Uniform(0, 6)
                                  : (rng.Chance(85) ? rng.Uniform(0, 70) : rng.Uniform(71, 400));
    const int32_t height = rng.Uniform(0, 5);
    const int src_pixel = c.source == Src::kBgr32 ? 4 : 3;
    const int dst_pixel = Packed(c) ? 2 : 1;
    const int32_t pairs_width = width / 2 * 2;
    const int32_t src_pixels = column == 1 ? 2 * width : column == 2 ? 4 * width : width;
    const int32_t dst_pixels = column == 3 ? 2 * width : width;

    r.width = width;
    r.src_width = rng.Uniform(0, 70);
    r.src_height = height;
    r.dst_height = rng.Uniform(0, 8);
    r.src_matrix = rng.Uniform(-1, 3);
    r.dst_matrix = rng.Pick(std::vector<int32_t>{-1, 0, 1, 1, 2, 3, 1});
    r.src_range = rng.Uniform(0, 2);
    r.dst_range = rng.Uniform(0, 2);
    r.full_range = rng.Chance(50) ? 0 : static_cast<uint8_t>(rng.Uniform(1, 255));
    r.clamp_luma = rng.Chance(50) ? 0 : static_cast<uint8_t>(rng.Uniform(1, 255));
    r.use_streaming_stores = rng.Chance(50) ? 0 : static_cast<uint8_t>(rng.Uniform(1, 255));
    r.alpha_value = rng.AlphaValue();
    r.src_field_pair = rng.Chance(50) ? 0 : static_cast<uint8_t>(rng.Uniform(1, 255));
    r.vertical_mode = column;
    if (column == 0)
        r.scan_mode = rng.Uniform(-1, 3);
    else  // pair modes address lines only with scan_mode 1 or 2
        r.scan_mode = rng.Chance(90) ? rng.Uniform(1, 2) : rng.Pick(std::vector<int32_t>{0, 3, -1});

    // Shapes. `pitch_unit` keeps packed destination lines 4-byte aligned.
    auto shape = [&](int32_t line_bytes, int32_t lines, bool byte_aligned_ok) {
        PlaneShape s;
        s.line_bytes = line_bytes;
        s.lines = lines;
        s.bottom_up = rng.Chance(30);
        if (aligned) {
            s.pitch = RoundUp(line_bytes, 64) + 64 * rng.Uniform(0, 1);
            s.residue = 0;
            // A pitch that takes later lines off a 16-byte boundary: those
            // lines are stored unaligned, the same bytes.
            if (rng.Chance(20)) s.pitch += (byte_aligned_ok ? 1 : 4) * rng.Uniform(1, 3);
        } else {
            // Now and then a packed destination off a 4-byte boundary: its
            // head cannot reach a 16-byte boundary, its body is stored
            // unaligned.
            const int32_t unit = byte_aligned_ok || rng.Chance(10) ? 1 : 4;
            s.pitch = RoundUp(line_bytes, unit) + unit * rng.Uniform(0, 10);
            s.residue = static_cast<uint32_t>(rng.Uniform(0, 63)) / unit * unit;
        }
        return s;
    };

    // Source plane.
    PlaneShape src;
    if (column == 0 || column == 3) {
        src = shape(src_pixels * src_pixel, std::max(height, 1), true);
    } else {
        const int32_t k = column == 1 ? 2 : 4;
        src = shape(src_pixels * src_pixel, k * (r.dst_height + 1) + 1, true);
    }
    // Destination plane: luma lines, then (Y8PUV8I) the chroma lines at
    // dst_stride * dst_height.
    PlaneShape dst = shape(dst_pixels * dst_pixel, height, !Packed(c));
    if (column == 0) {
        if (!Packed(c)) {
            r.dst_height = rng.Uniform(0, height + 1);
            dst.extra_lines = r.dst_height + 1;
        }
    } else if (column == 3) {
        dst.lines = 2 * height;
        if (!Packed(c)) {
            // The chroma lines continue in the walk's direction.
            r.dst_height = 2 * height;
            dst.lines = 4 * height;
        }
    } else {
        dst.lines = r.dst_height;
        if (!Packed(c)) dst.extra_lines = r.dst_height;
    }
    const bool source_alpha = c.alpha == Alpha::kCopy;
    const bool destination_alpha = c.alpha != Alpha::kNone;
    b.scene.Add(rng, src);
    b.scene.Add(rng, dst);
    if (source_alpha) b.scene.Add(rng, shape(width, height, true));
    if (destination_alpha) b.scene.Add(rng, shape(width, height, true));

    GuardedPlane& s = b.scene[0];
    GuardedPlane& d = b.scene[1];
    r.src_plane = s.first_line();
    r.src_stride = s.stride();
    r.dst_plane = d.first_line();
    r.dst_stride = d.stride();
    const int32_t direction_src = src.bottom_up ? -1 : 1;
    const int32_t direction_dst = dst.bottom_up ? -1 : 1;
    switch (column) {
        case 0:
            // A last odd pixel is neither converted nor consumed: the host's
            // skips follow the pairs a line holds.
            r.src_skip = s.Skip(pairs_width * src_pixel);
            r.dst_skip = d.Skip(pairs_width * dst_pixel);
            break;
        case 1:
        case 2:
            // Source line starts: the advance adds strides to the skip,
            // whose sign gives the direction. The destination is filled as
            // a host fills any picture: its skip is the pitch minus the
            // bytes of the pairs a line holds.
            r.src_skip = src.bottom_up ? -rng.Uniform(1, 8) : rng.Uniform(0, 8);
            r.dst_skip = d.Skip(pairs_width * dst_pixel);
            break;
        case 3:
            r.src_skip = direction_src * (s.stride() + rng.Uniform(0, 8));
            r.dst_stride = direction_dst * d.stride();
            r.dst_skip = rng.Uniform(-64, 64);  // not read
            break;
    }
    size_t next = 2;
    if (source_alpha) {
        GuardedPlane& p = b.scene[next++];
        r.src_alpha_plane = p.first_line();
        r.src_alpha_stride = p.stride();
        r.src_alpha_skip = p.Skip(width);
    }
    if (destination_alpha) {
        GuardedPlane& p = b.scene[next++];
        r.dst_alpha_plane = p.first_line();
        r.dst_alpha_stride = p.stride();
        // The alpha planes of the composites take whole lines of width bytes.
        r.dst_alpha_skip = p.Skip(c.alpha == Alpha::kFromSource ? pairs_width : width);
    }
    return b;
}

// What host option 128 answers in one run; sometimes there is no settings
// object at all, which answers 1.
int32_t ChooseHostOption(Rng& rng) {
    ResetHostSettingsCache();
    if (rng.Chance(10)) {
        ZenkTestSettingsConfigure(1, 0);
        return 1;
    }
    const int32_t answer = rng.Chance(50) ? 0 : rng.Pick(std::vector<int32_t>{1, 1, 7, -1});
    ZenkTestSettingsConfigure(0, answer);
    return answer;
}

// The alignment tests of the exports, restated.
bool Aligned16(const void* p) { return reinterpret_cast<uintptr_t>(p) % 16 == 0; }
bool Multiple(int32_t v, uint32_t unit) { return static_cast<uint32_t>(v) % unit == 0; }
bool ExportTakesAlignedKernel(const EncodeCase& c, const Request& r) {
    const bool destination = Aligned16(r.dst_plane) && Multiple(r.dst_stride, 16) && Multiple(r.width, 8);
    if (c.source == Src::kBgr24) return destination;
    return destination && Aligned16(r.src_plane) && Multiple(r.src_stride, 32) && Multiple(r.width, 4);
}

void ExpectedAlphaPass(const EncodeCase& c, const Request& r) {
    Request alpha = r;
    alpha.src_plane = r.src_alpha_plane;
    alpha.src_skip = r.src_alpha_skip;
    alpha.dst_plane = r.dst_alpha_plane;
    alpha.dst_skip = r.dst_alpha_skip;
    ReferenceRgbConvert(alpha,
                        {c.alpha == Alpha::kCopy ? RgbSource::kAlphaPlane : RgbSource::kAlphaConstant,
                         RgbDestination::kAlphaPlane},
                        0);
}

// What an export does: its column (table exports), the variant its
// alignment test picks, the colour conversion, then any alpha pass.
void ExpectedExport(const EncodeCase& c, const Request& r, int32_t option) {
    const int column = c.pair_modes == nullptr || r.vertical_mode < 0 || r.vertical_mode > 4 ? 0 : r.vertical_mode;
    if (column == 4) return;  // no kernel: nothing converted
    const bool aligned = column == 0 && ExportTakesAlignedKernel(c, r);
    ReferenceEncode(r, {c.source, c.layout, c.alpha == Alpha::kFromSource, column, aligned}, option);
    if (c.alpha == Alpha::kConstant || c.alpha == Alpha::kCopy) ExpectedAlphaPass(c, r);
}

// The family's exports for the checks that run over every export. The
// reference reads the host option as the library answers it.
const Registration kRegistration([] {
    std::vector<ExportUnderTest> exports;
    for (const EncodeCase& c : kCases) {
        ExportUnderTest e;
        e.name = std::string("ZENK_SSE2_") + c.name + "_EX";
        e.convert = c.convert;
        // A BGR24 single pair reads up to 6 bytes past its last pixel.
        e.src = c.source == Src::kBgr32 ? PlaneSpec{4, false, 0, 1} : PlaneSpec{3, false, 6, 1};
        e.src_alpha = {c.alpha == Alpha::kCopy ? 1 : 0, false, 0, 1};
        e.dst = c.layout == Lay::kY8Uv ? PlaneSpec{1, true, 0, 1} : PlaneSpec{2, false, 0, 4};
        e.dst_alpha = {c.alpha == Alpha::kNone ? 0 : 1, false, 0, 1};
        if (c.pair_modes != nullptr) e.pair_modes = {1, 2, 3};
        e.reference = [c](const Request& r) { ExpectedExport(c, r, QueryHostOption()); };
        exports.push_back(e);
    }
    return exports;
}());

class RgbToYuvTest : public WithHostSettings<::testing::TestWithParam<EncodeCase>> {};
// The exports with kernels of their own (not the composites), and the
// table exports with pair modes.
class RgbToYuvKernelTest : public RgbToYuvTest {};
class RgbToYuvPairModeTest : public RgbToYuvTest {};

template <class Keep>
std::vector<EncodeCase> CasesWhere(Keep keep) {
    std::vector<EncodeCase> cases;
    for (const EncodeCase& c : kCases)
        if (keep(c)) cases.push_back(c);
    return cases;
}

TEST_P(RgbToYuvKernelTest, EveryVariantMatchesReference) {
    const EncodeCase& c = GetParam();
    Rng rng(std::hash<std::string>{}(c.name));
    for (int variant = 0; variant < 4; ++variant) {
        SCOPED_TRACE(::testing::Message() << c.name << " variant " << variant);
        const bool aligned = variant < 2;
        for (int iteration = 0; iteration < 300; ++iteration) {
            Built b = BuildRequest(rng, c, 0, aligned);
            const int32_t option = ChooseHostOption(rng);
            const Kernel kernel = c.kernels->variant[variant];
            ASSERT_TRUE(Differential(
                b.scene, b.request, [&](const Request& r) { kernel(&r); },
                [&](const Request& r) {
                    ReferenceEncode(r, {c.source, c.layout, c.alpha == Alpha::kFromSource, 0, aligned}, option);
                }));
        }
    }
}

TEST_P(RgbToYuvPairModeTest, EveryPairModeMatchesReference) {
    const EncodeCase& c = GetParam();
    Rng rng(std::hash<std::string>{}(c.name) + 2);
    const Kernel kernels[] = {c.pair_modes->halve, c.pair_modes->quarter, c.pair_modes->twice};
    for (int column = 1; column <= 3; ++column) {
        SCOPED_TRACE(::testing::Message() << c.name << " vertical_mode " << column);
        for (int iteration = 0; iteration < 500; ++iteration) {
            Built b = BuildRequest(rng, c, column, false);
            const int32_t option = ChooseHostOption(rng);
            ASSERT_TRUE(Differential(
                b.scene, b.request, [&](const Request& r) { kernels[column - 1](&r); },
                [&](const Request& r) { ReferenceEncode(r, {c.source, c.layout, false, column, false}, option); }));
        }
    }
}

TEST_P(RgbToYuvTest, ExportMatchesReference) {
    const EncodeCase& c = GetParam();
    Rng rng(std::hash<std::string>{}(c.name) + 1);
    for (int iteration = 0; iteration < 1500; ++iteration) {
        // Table exports: every column, 4 (empty) and out-of-range values
        // (column 0) included. The others never read vertical_mode.
        const int32_t mode = rng.Pick(std::vector<int32_t>{0, 0, 0, 1, 2, 3, 4, 5, 7, -1});
        const int column = c.pair_modes != nullptr && mode >= 1 && mode <= 3 ? mode : 0;
        Built b = BuildRequest(rng, c, column, column == 0 && rng.Chance(40));
        b.request.vertical_mode = mode;
        const int32_t option = ChooseHostOption(rng);
        ASSERT_TRUE(Differential(
            b.scene, b.request, [&](const Request& r) { c.convert(&r); },
            [&](const Request& r) { ExpectedExport(c, r, option); }))
            << c.name;
    }
}

const auto kName = [](const auto& info) { return std::string(info.param.name); };
INSTANTIATE_TEST_SUITE_P(AllExports, RgbToYuvTest, ::testing::ValuesIn(kCases), kName);
INSTANTIATE_TEST_SUITE_P(KernelExports, RgbToYuvKernelTest,
                         ::testing::ValuesIn(CasesWhere([](const EncodeCase& c) { return c.kernels != nullptr; })),
                         kName);
INSTANTIATE_TEST_SUITE_P(TableExports, RgbToYuvPairModeTest,
                         ::testing::ValuesIn(CasesWhere([](const EncodeCase& c) { return c.pair_modes != nullptr; })),
                         kName);

}  // namespace
}  // namespace zenk::test
