// The export frame: kernel selection, table exports, plain entry points,
// and the line addressing of the pair modes.
#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "frame/export_frame.h"
#include "kernel/line_addressing.h"
#include "support/test_picture.h"

namespace zenk {
namespace {

alignas(16) uint8_t g_aligned[64];

// ---- SelectKernelVariant ------------------------------------------------------------------

TEST(SelectKernelVariant, TableOfRequests) {
    struct Row {
        int src_offset, src_stride, dst_offset, dst_stride, width;
        uint8_t streaming;
        int vertical_mode;
        int expected;
    };
    const Row rows[] = {
        {0, 64, 0, 32, 8, 0, 0, 0},     // both tests hold
        {0, 64, 0, 32, 8, 1, 0, 1},     // streaming
        {0, 64, 0, 32, 8, 0, 2, 8},     // column 2
        {0, 64, 0, 32, 8, 1, 3, 13},    // column 3, streaming
        {0, 64, 0, 32, 8, 0, 4, 16},    // column 4
        {0, 64, 0, 32, 8, 0, 7, 0},     // out of range: column 0
        {0, 64, 0, 32, 8, 1, -1, 1},    // negative: column 0
        {1, 64, 0, 32, 8, 0, 0, 2},     // source plane off by one
        {0, 48, 0, 32, 8, 0, 0, 2},     // source pitch not a multiple of 32
        {0, 64, 0, 24, 8, 0, 0, 2},     // destination pitch not a multiple of 16
        {0, 64, 0, 32, 4, 0, 0, 2},     // width a multiple of 4 but not of 8
        {0, 64, 8, 32, 8, 1, 1, 7},     // destination off by 8, column 1
    };
    for (const Row& row : rows) {
        Request r{};
        r.src_plane = g_aligned + row.src_offset;
        r.src_stride = row.src_stride;
        r.dst_plane = g_aligned + row.dst_offset;
        r.dst_stride = row.dst_stride;
        r.width = row.width;
        r.use_streaming_stores = row.streaming;
        r.vertical_mode = row.vertical_mode;
        EXPECT_EQ(SelectKernelVariant(r), row.expected)
            << "src+" << row.src_offset << " pitch " << row.src_stride << " dst+" << row.dst_offset << " pitch "
            << row.dst_stride << " width " << row.width << " mode " << row.vertical_mode;
    }
}

int g_calls[20];
template <int N>
void Spy(const Request*) {
    ++g_calls[N];
}

TEST(TableExport, CallsTheSelectedEntryOnceAndNothingForAnEmptyColumn) {
    const KernelQuad frame{{Spy<0>, Spy<1>, Spy<2>, Spy<3>}};
    const KernelTable table = MakeKernelTable(frame, Spy<4>, Spy<8>);
    for (int mode = 0; mode <= 4; ++mode) {
        std::memset(g_calls, 0, sizeof g_calls);
        Request r{};
        r.src_plane = g_aligned;
        r.dst_plane = g_aligned;
        r.use_streaming_stores = 1;
        r.vertical_mode = mode;
        RunTableExport(table, &r);
        int total = 0;
        for (int c : g_calls) total += c;
        // Columns 1 and 2 have one kernel for every variant; 3 and 4 none.
        const int expected_spy = mode == 0 ? 1 : mode == 1 ? 4 : mode == 2 ? 8 : -1;
        EXPECT_EQ(total, expected_spy < 0 ? 0 : 1) << "mode " << mode;
        if (expected_spy >= 0) {
            EXPECT_EQ(g_calls[expected_spy], 1) << "mode " << mode;
        }
    }
}

// ---- Plain entry points ------------------------------------------------------------------

TEST(PlainRequest, HalfPitchNoPictureSizeAndFullRangeOnlyWhereAsked) {
    const uint8_t* src = g_aligned;
    uint8_t* dst = g_aligned + 16;
    struct Row {
        int32_t pitch, range;
        PlainFullRange rule;
        int32_t dst_stride;
        uint8_t full_range;
    };
    const Row rows[] = {{1920, 1, PlainFullRange::kFromRange, 960, 1},
                        {-7, 1, PlainFullRange::kNotSet, -3, 0},
                        {7, 0, PlainFullRange::kFromRange, 3, 0},
                        {7, 2, PlainFullRange::kFromRange, 3, 0}};
    for (const Row& row : rows) {
        const Request r = MakePlainRequest(src, dst, row.pitch, 5, row.range, row.rule, 0x1234);
        EXPECT_EQ(r.src_plane, src);
        EXPECT_EQ(r.dst_plane, dst);
        EXPECT_EQ(r.src_stride, row.pitch);
        EXPECT_EQ(r.dst_stride, row.dst_stride);
        EXPECT_EQ(r.src_matrix, 5);
        EXPECT_EQ(r.dst_matrix, 5);
        EXPECT_EQ(r.src_range, row.range);
        EXPECT_EQ(r.dst_range, row.range);
        EXPECT_EQ(r.full_range, row.full_range);
        EXPECT_EQ(r.alpha_value, 0x1234u);
        EXPECT_EQ(r.width | r.src_width | r.src_height | r.dst_height | r.src_skip | r.dst_skip, 0);
    }
}

// Plain calls set no picture size: every one of them leaves the destination
// untouched, whatever its pointers, pitch, matrix and range.
TEST(PlainEntryPoints, LeaveTheDestinationUntouched) {
    using Plain6 = void(ZENK_CALL*)(const uint8_t*, uint8_t*, int32_t, int32_t, int32_t, int32_t);
    using Plain7 = void(ZENK_CALL*)(const uint8_t*, uint8_t*, int32_t, int32_t, int32_t, int32_t, uint32_t);
    const Plain6 plain6[] = {ZENK_SSE2_BGR32I_BGR32I, ZENK_SSE2_BGR32I_BGR24I, ZENK_SSE2_BGR24I_BGR32I,
                             ZENK_SSE2_BGR24I_BGR24I, ZENK_SSE2_BGR32I_YUYV16I, ZENK_SSE2_BGR32I_UYVY16I,
                             ZENK_SSE2_BGR32I_UVYY16I, ZENK_SSE2_BGR24I_YUYV16I, ZENK_SSE2_BGR24I_UYVY16I,
                             ZENK_SSE2_BGR24I_UVYY16I, ZENK_SSE2_UYVY16I_BGR24I, ZENK_SSE2_YUYV16I_BGR24I,
                             ZENK_SSE2_UYVY16I_UYVY16I, ZENK_SSE2_YUYV16I_YUYV16I};
    const Plain7 plain7[] = {ZENK_SSE2_UYVY16I_BGR32I, ZENK_SSE2_YUYV16I_BGR32I};
    std::vector<uint8_t> src(64 * 16, 0x5A);
    std::vector<uint8_t> dst(64 * 16, 0xC3);
    for (int range : {0, 1}) {
        for (Plain6 f : plain6) f(src.data(), dst.data(), 256, 64, 1, range);
        for (Plain7 f : plain7) f(src.data(), dst.data(), 256, 64, 0, range, 0xFF);
    }
    ZENK_SSE2_BGR32I_A8P(src.data(), dst.data(), 256);
    for (uint8_t b : dst) ASSERT_EQ(b, 0xC3);
}

// ---- Line addressing -------------------------------------------------------------------

Request PairRequest(int scan_mode, int vertical_mode, uint8_t field_pair, int32_t skip) {
    Request r{};
    r.src_plane = g_aligned;
    r.src_alpha_plane = g_aligned + 32;
    r.dst_plane = g_aligned + 16;
    r.dst_alpha_plane = g_aligned + 48;
    r.src_stride = 1920;
    r.src_alpha_stride = 480;
    r.src_skip = skip;
    r.src_alpha_skip = 11;
    r.dst_skip = 22;
    r.dst_alpha_skip = 33;
    r.src_height = 1080;
    r.dst_height = 540;
    r.scan_mode = scan_mode;
    r.vertical_mode = vertical_mode;
    r.src_field_pair = field_pair;
    return r;
}

ptrdiff_t From(const uint8_t* base, const uint8_t* p) { return p - base; }

TEST(ComputeLineAddresses, PairModesTable) {
    struct Row {
        int scan_mode, vertical_mode;
        uint8_t field_pair;
        int32_t skip;
        ptrdiff_t second_line;
        int32_t advance;
        ptrdiff_t second_alpha_line;
        int32_t alpha_advance;
    };
    const Row rows[] = {
        {1, 1, 0, 0, 3840, 7680, 960, 11 + 1920},          // every second line
        {1, 1, 1, 0, 1920, 7680, 480, 11 + 1920},          // fields: neighbouring lines
        {1, 1, 0, -3840, -3840, -3840 - 7680, -960, 11 - 1920},  // bottom-up: upward
        {2, 2, 0, 0, 4 * 1920, 8 * 1920, 4 * 480, 11 + 8 * 480}, // factor 4
        {2, 2, 1, 0, 1920, 8 * 1920, 480, 11 + 8 * 480},
    };
    for (const Row& row : rows) {
        const Request r = PairRequest(row.scan_mode, row.vertical_mode, row.field_pair, row.skip);
        const LineAddressSet set = PairModeLines(&r);
        SCOPED_TRACE(::testing::Message() << "vertical_mode " << row.vertical_mode << " field_pair "
                                          << int(row.field_pair) << " skip " << row.skip);
        EXPECT_EQ(set.src_line_a, r.src_plane);
        EXPECT_EQ(From(r.src_plane, set.src_line_b), row.second_line);
        EXPECT_EQ(set.src_advance, row.advance);
        EXPECT_EQ(From(r.src_alpha_plane, set.src_alpha_line_b), row.second_alpha_line);
        EXPECT_EQ(set.src_alpha_advance, row.alpha_advance);
        EXPECT_EQ(set.dst_line, r.dst_plane);
        EXPECT_EQ(set.dst_advance, 22);
        EXPECT_EQ(set.dst_alpha_line, r.dst_alpha_plane);
        EXPECT_EQ(set.dst_alpha_advance, 33);
        EXPECT_EQ(set.line_count, 540);
    }
}

LineAddressSet Sentinel() {
    LineAddressSet set;
    std::memset(&set, 0xA5, sizeof set);
    return set;
}

TEST(ComputeLineAddresses, FrameModeSetsStartsAndSkipsOnly) {
    const Request r = PairRequest(0, 1, 0, 44);
    LineAddressSet set = Sentinel();
    const LineAddressSet before = set;
    ComputeLineAddresses(&set, &r);
    EXPECT_EQ(set.src_line_a, r.src_plane);
    EXPECT_EQ(set.dst_line, r.dst_plane);
    EXPECT_EQ(set.src_alpha_line_a, r.src_alpha_plane);
    EXPECT_EQ(set.dst_alpha_line, r.dst_alpha_plane);
    EXPECT_EQ(set.src_advance, 44);
    EXPECT_EQ(set.dst_advance, 22);
    EXPECT_EQ(set.src_alpha_advance, 11);
    EXPECT_EQ(set.dst_alpha_advance, 33);
    EXPECT_EQ(set.src_line_b, before.src_line_b);
    EXPECT_EQ(set.src_alpha_line_b, before.src_alpha_line_b);
    EXPECT_EQ(set.line_count, before.line_count);
}

TEST(ComputeLineAddresses, OtherScanModesLeaveTheSetUntouched) {
    for (int scan_mode : {3, -1, 99}) {
        const Request r = PairRequest(scan_mode, 1, 0, 0);
        LineAddressSet set = Sentinel();
        const LineAddressSet before = set;
        ComputeLineAddresses(&set, &r);
        EXPECT_EQ(std::memcmp(&set, &before, sizeof set), 0) << scan_mode;
    }
}

TEST(ComputeLineAddresses, NonReducingModesCountSourceLinesAndLeaveTheDestination) {
    const Request r = PairRequest(1, 3, 1, 12);
    LineAddressSet set = Sentinel();
    const LineAddressSet before = set;
    ComputeLineAddresses(&set, &r);
    EXPECT_EQ(set.line_count, 1080);
    EXPECT_EQ(set.src_line_a, r.src_plane);
    EXPECT_EQ(set.src_alpha_line_a, r.src_alpha_plane);
    EXPECT_EQ(set.src_advance, 12);
    EXPECT_EQ(set.src_alpha_advance, 11);
    EXPECT_EQ(set.src_line_b, before.src_line_b);
    EXPECT_EQ(set.dst_line, before.dst_line);
    EXPECT_EQ(set.dst_advance, before.dst_advance);
}

// The walk of a pair mode: which source line feeds which destination line.
TEST(WalkLinePairs, SourceLinesOfEachMode) {
    struct Row {
        int vertical_mode;
        uint8_t field_pair;
        std::vector<int> lines;
    };
    const Row rows[] = {{1, 0, {0, 2, 4, 6, 8, 10}},
                        {1, 1, {0, 1, 4, 5, 8, 9}},
                        {2, 0, {0, 4, 8, 12, 16, 20}},
                        {2, 1, {0, 1, 8, 9, 16, 17}}};
    static uint8_t picture[64 * 32];
    for (const Row& row : rows) {
        Request r{};
        r.src_plane = picture;
        r.src_stride = 64;
        r.scan_mode = 1;
        r.vertical_mode = row.vertical_mode;
        r.src_field_pair = row.field_pair;
        r.src_height = 32;
        r.dst_height = 6;
        std::vector<int> seen;
        WalkLinePairs(PairModeLines(&r), [&](const uint8_t* src, uint8_t*) {
            seen.push_back(static_cast<int>((src - picture) / 64));
        });
        EXPECT_EQ(seen, row.lines) << "vertical_mode " << row.vertical_mode << " field_pair " << int(row.field_pair);
    }
}

}  // namespace
}  // namespace zenk
