// Differential tests of the RGB repacking and alpha plane exports: every
// kernel variant and every export against the scalar reference, on random
// requests with guard room around every plane.
#include <gtest/gtest.h>

#include "reference/rgb_alpha_reference.h"
#include "rgb_alpha/rgb_alpha_kernels.h"
#include "support/export_registry.h"
#include "support/test_picture.h"

namespace zenk::test {
namespace {

using Reference = void (*)(const Request&, int aligned_block);

struct RgbCase {
    const char* name;
    ZenkConvertFunction convert;
    const KernelQuad* kernels;  // null for the composites
    int block;                  // pixels of an aligned block
    int src_bytes;              // bytes a pixel of the source plane (0: no source plane)
    bool src_alpha;
    int dst_bytes;
    bool dst_alpha;
    Reference reference;
};

template <RgbSource S, RgbDestination D>
void Plain(const Request& r, int block) {
    ReferenceRgbConvert(r, {S, D}, block);
}

// The alpha pass of a composite: src_height lines of width bytes.
void AlphaPass(const Request& r, RgbSource source) {
    Request alpha = r;
    alpha.src_plane = r.src_alpha_plane;
    alpha.src_skip = r.src_alpha_skip;
    alpha.dst_plane = r.dst_alpha_plane;
    alpha.dst_skip = r.dst_alpha_skip;
    ReferenceRgbConvert(alpha, {source, RgbDestination::kAlphaPlane}, 0);
}

void Bgr24WithConstantAlpha(const Request& r, int) {
    ReferenceRgbConvert(r, {RgbSource::kBgr24ConstantAlpha, RgbDestination::kBgr24}, 0);
    AlphaPass(r, RgbSource::kAlphaConstant);
}
void Bgr24WithAlphaCopy(const Request& r, int) {
    ReferenceRgbConvert(r, {RgbSource::kBgr24ConstantAlpha, RgbDestination::kBgr24}, 0);
    AlphaPass(r, RgbSource::kAlphaPlane);
}
// IA8P sources to A8P: the destination plane is the alpha plane itself.
void AlphaOnly(const Request& r, int) {
    Request alpha = r;
    alpha.src_plane = r.src_alpha_plane;
    alpha.src_skip = r.src_alpha_skip;
    ReferenceRgbConvert(alpha, {RgbSource::kAlphaPlane, RgbDestination::kAlphaPlane}, 0);
}

using S = RgbSource;
using D = RgbDestination;
using namespace rgb_alpha;

const RgbCase kCases[] = {
    {"BGR32I_BGR32I", ZENK_SSE2_BGR32I_BGR32I_EX, &kCopyBgr32, 16, 4, false, 4, false, Plain<S::kBgr32, D::kBgr32>},
    {"BGR32I_BGR24I", ZENK_SSE2_BGR32I_BGR24I_EX, &kBgr32ToBgr24, 16, 4, false, 3, false, Plain<S::kBgr32, D::kBgr24>},
    {"BGR24I_BGR32I", ZENK_SSE2_BGR24I_BGR32I_EX, &kBgr24ToBgr32, 16, 3, false, 4, false,
     Plain<S::kBgr24ConstantAlpha, D::kBgr32>},
    {"BGR24I_BGR24I", ZENK_SSE2_BGR24I_BGR24I_EX, &kCopyBgr24, 16, 3, false, 3, false,
     Plain<S::kBgr24ConstantAlpha, D::kBgr24>},
    {"BGR32I_BGR24IA8P", ZENK_SSE2_BGR32I_BGR24IA8P_EX, &kSplitBgr32, 16, 4, false, 3, true,
     Plain<S::kBgr32, D::kBgr24AlphaPlane>},
    {"A8P_A8P", ZENK_SSE2_A8P_A8P_EX, &kCopyAlphaPlane, 32, 1, false, 1, false, Plain<S::kAlphaPlane, D::kAlphaPlane>},
    {"A8C_A8P", ZENK_SSE2_A8C_A8P_EX, &kFillAlphaPlane, 32, 0, false, 1, false,
     Plain<S::kAlphaConstant, D::kAlphaPlane>},
    {"BGR32I_A8P", ZENK_SSE2_BGR32I_A8P_EX, &kExtractAlpha, 16, 4, false, 1, false, Plain<S::kBgr32, D::kAlphaPlane>},
    {"BGR24IA8P_BGR32I", ZENK_SSE2_BGR24IA8P_BGR32I_EX, &kMergeAlpha, 16, 3, true, 4, false,
     Plain<S::kBgr24AlphaPlane, D::kBgr32>},
    {"BGR24I_BGR24IA8P", ZENK_SSE2_BGR24I_BGR24IA8P_EX, nullptr, 16, 3, false, 3, true, Bgr24WithConstantAlpha},
    {"BGR24IA8P_BGR24IA8P", ZENK_SSE2_BGR24IA8P_BGR24IA8P_EX, nullptr, 16, 3, true, 3, true, Bgr24WithAlphaCopy},
    {"BGR24IA8P_A8P", ZENK_SSE2_BGR24IA8P_A8P_EX, nullptr, 32, 3, true, 1, false, AlphaOnly},
    {"UYVY16IA8P_A8P", ZENK_SSE2_UYVY16IA8P_A8P_EX, nullptr, 32, 2, true, 1, false, AlphaOnly},
    {"YUYV16IA8P_A8P", ZENK_SSE2_YUYV16IA8P_A8P_EX, nullptr, 32, 2, true, 1, false, AlphaOnly},
};

void PrintTo(const RgbCase& c, std::ostream* os) { *os << c.name; }

// The family's exports for the checks that run over every export.
const Registration kRegistration([] {
    std::vector<ExportUnderTest> exports;
    for (const RgbCase& c : kCases) {
        ExportUnderTest e;
        e.name = std::string("ZENK_SSE2_") + c.name + "_EX";
        e.convert = c.convert;
        e.src = {c.src_bytes, false, 0, 1};
        e.src_alpha = {c.src_alpha ? 1 : 0, false, 0, 1};
        e.dst = {c.dst_bytes, false, 0, c.dst_bytes == 4 ? 4 : 1};
        e.dst_alpha = {c.dst_alpha ? 1 : 0, false, 0, 1};
        e.aligned_width_unit = 32;
        e.reference = [reference = c.reference](const Request& r) { reference(r, 0); };
        exports.push_back(e);
    }
    return exports;
}());



// A random request for `c`. Aligned-kernel requests meet the aligned
// kernels' preconditions (16-aligned planes and lines, whole blocks);
// the others put every plane at any allowed address.
Built BuildRequest(Rng& rng, const RgbCase& c, Target target) {
    Built b;
    const bool aligned = target == Target::kAlignedKernel || (target == Target::kExport && rng.Chance(40));
    const int32_t width = aligned ? c.block * rng.Uniform(0, 5)
                                  : (rng.Chance(85) ? rng.Uniform(0, 70) : rng.Uniform(71, 700));
    const int32_t height = rng.Uniform(0, 5);
    // BGR32 lines must start on 4-byte boundaries for the head to reach a
    // 16-byte boundary; 1- and 3-byte pixels may start anywhere.
    auto plane = [&](int bytes, bool is_destination) -> GuardedPlane& {
        PlaneShape shape;
        shape.line_bytes = width * bytes;
        shape.lines = height;
        shape.bottom_up = rng.Chance(30);
        if (aligned) {
            shape.pitch = (shape.line_bytes + 191) / 192 * 192 + 192 * rng.Uniform(0, 1);
            shape.residue = 0;
            // A pitch that leaves later lines off a 16-byte boundary: the
            // aligned kernels must walk such lines the slow way, not fault.
            if (is_destination && rng.Chance(25)) shape.pitch += (bytes == 4 ? 4 : 1) * rng.Uniform(1, 3);
        } else {
            shape.pitch = shape.line_bytes + rng.Uniform(0, 40) * (is_destination && bytes == 4 ? 4 : 1);
            const uint32_t step = is_destination && bytes == 4 ? 4 : 1;
            shape.residue = static_cast<uint32_t>(rng.Uniform(0, 63)) / step * step;
        }
        return b.scene.Add(rng, shape);
    };
    Request& r = b.request;
    r.width = width;
    r.src_height = height;
    r.src_width = rng.Chance(80) ? width : rng.Uniform(0, 70);
    r.dst_height = rng.Uniform(0, 8);
    r.alpha_value = rng.AlphaValue();
    r.use_streaming_stores = rng.Chance(50);
    // Fields this family never reads: any value must do.
    r.src_matrix = rng.Uniform(-1, 3);
    r.dst_matrix = rng.Uniform(-1, 3);
    r.full_range = rng.Byte();
    r.clamp_luma = rng.Byte();
    r.scan_mode = rng.Uniform(0, 3);
    r.vertical_mode = rng.Uniform(0, 7);
    // Planes are added first and addressed afterwards: adding may move them.
    if (c.src_bytes) plane(c.src_bytes, false);
    if (c.src_alpha) plane(1, false);
    plane(c.dst_bytes, true);
    if (c.dst_alpha) plane(1, true);
    size_t i = 0;
    if (c.src_bytes) {
        GuardedPlane& p = b.scene[i++];
        r.src_plane = p.first_line();
        r.src_stride = p.stride();
        r.src_skip = p.Skip(width * c.src_bytes);
    }
    if (c.src_alpha) {
        GuardedPlane& p = b.scene[i++];
        r.src_alpha_plane = p.first_line();
        r.src_alpha_stride = p.stride();
        r.src_alpha_skip = p.Skip(width);
    }
    GuardedPlane& d = b.scene[i++];
    r.dst_plane = d.first_line();
    r.dst_stride = d.stride();
    r.dst_skip = d.Skip(width * c.dst_bytes);
    if (c.dst_alpha) {
        GuardedPlane& p = b.scene[i++];
        r.dst_alpha_plane = p.first_line();
        r.dst_alpha_stride = p.stride();
        r.dst_alpha_skip = p.Skip(width);
    }
    return b;
}

class RgbAlphaTest : public ::testing::TestWithParam<RgbCase> {};

TEST_P(RgbAlphaTest, EveryVariantMatchesReference) {
    const RgbCase& c = GetParam();
    if (c.kernels == nullptr) GTEST_SKIP() << "a composite: tested through its export";
    Rng rng(std::hash<std::string>{}(c.name));
    for (int variant = 0; variant < 4; ++variant) {
        SCOPED_TRACE(::testing::Message() << c.name << " variant " << variant);
        for (int iteration = 0; iteration < 500; ++iteration) {
            Built b = BuildRequest(rng, c, variant < 2 ? Target::kAlignedKernel : Target::kAnyKernel);
            const Kernel kernel = c.kernels->variant[variant];
            const int block = variant < 2 ? c.block : 0;
            ASSERT_TRUE(Differential(
                b.scene, b.request, [&](const Request& r) { kernel(&r); },
                [&](const Request& r) { c.reference(r, block); }));
        }
    }
}

TEST_P(RgbAlphaTest, ExportMatchesReference) {
    const RgbCase& c = GetParam();
    Rng rng(std::hash<std::string>{}(c.name) + 1);
    for (int iteration = 0; iteration < 2000; ++iteration) {
        Built b = BuildRequest(rng, c, Target::kExport);
        ASSERT_TRUE(Differential(
            b.scene, b.request, [&](const Request& r) { c.convert(&r); },
            [&](const Request& r) { c.reference(r, 0); }))
            << c.name;
    }
}

INSTANTIATE_TEST_SUITE_P(AllExports, RgbAlphaTest, ::testing::ValuesIn(kCases),
                         [](const auto& info) { return std::string(info.param.name); });

// ---- Known answers -----------------------------------------------------------------------

// The constant alpha is truncated to its low byte in this family, unlike the
// saturation of the YUV decoders.
TEST(RgbAlphaKnownAnswers, ConstantAlphaIsTruncatedToLowByte) {
    struct Row {
        uint32_t alpha_value;
        uint8_t expected;
    };
    const Row rows[] = {{0x1FF, 0xFF}, {0x100, 0x00}, {300, 44}, {0xFFFFFF80u, 0x80}, {0x00FF00FF, 0xFF}};
    for (const Row& row : rows) {
        uint8_t bgr[3 * 20] = {};
        alignas(16) uint8_t bgra[4 * 20] = {};
        alignas(16) uint8_t fill[40] = {};
        Request r{};
        r.width = 20;
        r.src_height = 1;
        r.alpha_value = row.alpha_value;
        r.src_plane = bgr;
        r.dst_plane = bgra;
        ZENK_SSE2_BGR24I_BGR32I_EX(&r);
        r.src_plane = nullptr;
        r.dst_plane = fill;
        ZENK_SSE2_A8C_A8P_EX(&r);
        for (int x = 0; x < 20; ++x) {
            EXPECT_EQ(bgra[4 * x + 3], row.expected) << std::hex << row.alpha_value;
            EXPECT_EQ(fill[x], row.expected) << std::hex << row.alpha_value;
        }
    }
}

TEST(RgbAlphaKnownAnswers, Bgr24HeadReachesTheFirstBoundary) {
    for (int residue = 0; residue < 16; ++residue) {
        const int head = rgb_alpha::kBgr24HeadPixels[residue];
        EXPECT_EQ((residue + 3 * head) % 16, 0) << residue;
        for (int fewer = 0; fewer < head; ++fewer) EXPECT_NE((residue + 3 * fewer) % 16, 0) << residue;
    }
}

TEST(RgbAlphaKnownAnswers, SplitTakesAlignedKernelsOnlyForPitchesOfWhole48ByteBlocks) {
    struct Row {
        int32_t dst_stride;
        bool aligned;
    };
    // 64 is a multiple of 16 but not of 48; -48 is not a multiple of 48 as an
    // unsigned 32-bit number.
    const Row rows[] = {{48, true}, {96, true}, {192, true}, {64, false}, {16, false}, {-48, false}, {0, true}};
    alignas(16) uint8_t dst[16] = {};
    for (const Row& row : rows) {
        Request r{};
        r.dst_plane = dst;
        r.width = 32;
        r.dst_stride = row.dst_stride;
        EXPECT_EQ(Passes(rgb_alpha::kSplitTest, r), row.aligned) << row.dst_stride;
    }
}

}  // namespace
}  // namespace zenk::test
