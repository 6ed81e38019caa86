// The export frame: plain entry points, and worked examples of the pair
// modes' line addressing (which lines the walk then takes shows in
// PairModeLayout; kernel selection in the differential test's export cases).
#include <gtest/gtest.h>

#include <vector>

#include "kernel/line_addressing.h"
#include "support/counting_host_settings.h"
#include "support/host_option_fixture.h"
#include "support/test_picture.h"

namespace zenk {
namespace {

// The line walk of the SSE2 kernels; every level shares its line addressing.
using namespace sse2;

alignas(16) uint8_t g_aligned[64];

// ---- Plain entry points ------------------------------------------------------------------

// Plain calls set no picture size: every one of them leaves the destination
// untouched, whatever its pointers, pitch, matrix and range. Those between
// YUV and RGB take full_range from range 1 and so ask host option 128.
class PlainEntryPoints : public test::WithHostSettings<> {};

TEST_F(PlainEntryPoints, ConvertNothingAndAskTheHostForRangeOneOnly) {
    using Plain6 = void(ZENK_CALL*)(const uint8_t*, uint8_t*, int32_t, int32_t, int32_t, int32_t);
    using Plain7 = void(ZENK_CALL*)(const uint8_t*, uint8_t*, int32_t, int32_t, int32_t, int32_t, uint32_t);
    const std::pair<Plain6, bool> plain6[] = {
        {ZENK_SSE2_BGR32I_BGR32I, false},  {ZENK_SSE2_BGR32I_BGR24I, false},  {ZENK_SSE2_BGR24I_BGR32I, false},
        {ZENK_SSE2_BGR24I_BGR24I, false},  {ZENK_SSE2_BGR32I_YUYV16I, true},  {ZENK_SSE2_BGR32I_UYVY16I, true},
        {ZENK_SSE2_BGR32I_UVYY16I, true},  {ZENK_SSE2_BGR24I_YUYV16I, true},  {ZENK_SSE2_BGR24I_UYVY16I, true},
        {ZENK_SSE2_BGR24I_UVYY16I, true},  {ZENK_SSE2_UYVY16I_BGR24I, true},  {ZENK_SSE2_YUYV16I_BGR24I, true},
        {ZENK_SSE2_UYVY16I_UYVY16I, false}, {ZENK_SSE2_YUYV16I_YUYV16I, false}};
    const Plain7 plain7[] = {ZENK_SSE2_UYVY16I_BGR32I, ZENK_SSE2_YUYV16I_BGR32I};
    std::vector<uint8_t> src(64 * 16, 0x5A);
    std::vector<uint8_t> dst(64 * 16, 0xC3);
    for (int range : {0, 1, 2}) {
        for (auto [f, yuv_rgb] : plain6) {
            ZenkTestSettingsResetCounts();
            f(src.data(), dst.data(), 256, 64, 1, range);
            EXPECT_EQ(ZenkTestSettingsLastOption(), yuv_rgb && range == 1 ? 128 : -1) << range;
        }
        for (Plain7 f : plain7) {
            ZenkTestSettingsResetCounts();
            f(src.data(), dst.data(), 256, 64, 0, range, 0xFF);
            EXPECT_EQ(ZenkTestSettingsLastOption(), range == 1 ? 128 : -1) << range;
        }
    }
    ZENK_SSE2_BGR32I_A8P(src.data(), dst.data(), 256);
    for (uint8_t b : dst) ASSERT_EQ(b, 0xC3);
}

// ---- Line addressing -------------------------------------------------------------------

// A 1080-line picture reduced to 540 lines; every plane and skip set apart
// so that a field taken from the wrong one shows.
Request PairRequest(int scan_mode, int vertical_mode, uint8_t field_pair, int32_t skip) {
    return {.src_plane = g_aligned, .src_height = 1080, .src_stride = 1920, .src_skip = skip,
            .src_field_pair = field_pair, .src_alpha_plane = g_aligned + 32, .src_alpha_stride = 480,
            .src_alpha_skip = 11, .dst_plane = g_aligned + 16, .dst_height = 540, .dst_skip = 22,
            .dst_alpha_plane = g_aligned + 48, .dst_alpha_skip = 33, .scan_mode = scan_mode,
            .vertical_mode = vertical_mode};
}

TEST(ComputeLineAddresses, PairModesTable) {
    const struct {
        int scan_mode, vertical_mode;
        uint8_t field_pair;
        int32_t skip;
        ptrdiff_t second_line;
        int32_t advance;
        ptrdiff_t second_alpha_line;
        int32_t alpha_advance;
    } rows[] = {
        {1, 1, 0, 0, 3840, 7680, 960, 11 + 1920},          // every second line
        {1, 1, 1, 0, 1920, 7680, 480, 11 + 1920},          // fields: neighbouring lines
        {1, 1, 0, -3840, -3840, -3840 - 7680, -960, 11 - 1920},  // bottom-up: upward
        {2, 2, 0, 0, 4 * 1920, 8 * 1920, 4 * 480, 11 + 8 * 480}, // factor 4
        {2, 2, 1, 0, 1920, 8 * 1920, 480, 11 + 8 * 480},
    };
    for (const auto& row : rows) {
        const Request r = PairRequest(row.scan_mode, row.vertical_mode, row.field_pair, row.skip);
        const LineAddressSet set = PairModeLines(&r);
        SCOPED_TRACE(::testing::Message() << "vertical_mode " << row.vertical_mode << " field_pair "
                                          << int(row.field_pair) << " skip " << row.skip);
        EXPECT_EQ(set.src_line_a, r.src_plane);
        EXPECT_EQ(set.src_line_b - r.src_plane, row.second_line);
        EXPECT_EQ(set.src_advance, row.advance);
        EXPECT_EQ(set.src_alpha_line_b - r.src_alpha_plane, row.second_alpha_line);
        EXPECT_EQ(set.src_alpha_advance, row.alpha_advance);
        EXPECT_EQ(set.dst_line, r.dst_plane);
        EXPECT_EQ(set.dst_advance, 22);
        EXPECT_EQ(set.dst_alpha_line, r.dst_alpha_plane);
        EXPECT_EQ(set.dst_alpha_advance, 33);
        EXPECT_EQ(set.line_count, 540);
    }
}

}  // namespace
}  // namespace zenk
