// Known answers of the YUV-to-YUV family: the coefficient sets and their
// choice, the rounding at the 16-bit edges, the group arithmetic's sign
// borrowing and crossed luma, and the byte layouts of the split and the
// widening.
#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <vector>

#include "reference/yuv_to_yuv_reference.h"
#include "yuv_to_yuv/formats.h"
#include "yuv_to_yuv/matrix_change.h"
#include "yuv_to_yuv/yuv_to_yuv_kernels.h"

namespace zenk::test {
namespace {

using yuv_to_yuv::SetupYuvMatrixChangeCoefficients;
using yuv_to_yuv::YuvMatrixChangeCoefficients;

constexpr int32_t kBt709 = 0, kBt601 = 1;

std::array<int16_t, 8> Words(__m128i v) {
    std::array<int16_t, 8> w;
    _mm_storeu_si128(reinterpret_cast<__m128i*>(w.data()), v);
    return w;
}

// ---- Coefficient setup -------------------------------------------------------------------------

// The five vectors after a setup over vectors that held 0x5A5A.
std::array<std::array<int16_t, 8>, 5> SetupVectors(uint32_t src_matrix, uint32_t dst_matrix, uint32_t depth,
                                                   uint8_t clamp) {
    __m128i v[5];
    for (__m128i& x : v) x = _mm_set1_epi16(0x5A5A);
    YuvMatrixChangeCoefficients block{};
    block.srcMatrix = src_matrix;
    block.dstMatrix = dst_matrix;
    block.bitDepth = depth;
    block.clampLuma = clamp;
    block.lumaCorrection = &v[0];
    block.cbCoefficients = &v[1];
    block.crCoefficients = &v[2];
    block.clampLow = &v[3];
    block.clampHigh = &v[4];
    SetupYuvMatrixChangeCoefficients(&block);
    std::array<std::array<int16_t, 8>, 5> out;
    for (int i = 0; i < 5; ++i) out[i] = Words(v[i]);
    return out;
}

TEST(YuvMatrixChangeSetup, OnlyTheExactPairGoesToBt709) {
    struct Row {
        uint32_t src_matrix, dst_matrix;
        bool to_709;
    };
    const Row rows[] = {{1, 0, true},  {0, 1, false}, {2, 1, false}, {1, 2, false},
                        {0, 2, false}, {1, 3, false}, {3, 0, false}, {0xFFFFFFFFu, 0, false}};
    // (dY, Cb', Cr') rows, each (Cb, Cr), in 1/16384.
    const int16_t to_709[6] = {-1893, -3407, 16689, 1878, 1230, 16799};
    const int16_t to_601[6] = {1627, 3141, 16218, -1813, -1187, 16112};
    for (const Row& row : rows) {
        const auto v = SetupVectors(row.src_matrix, row.dst_matrix, 8, 0);
        const int16_t* set = row.to_709 ? to_709 : to_601;
        for (int vector = 0; vector < 3; ++vector) {
            // Each vector repeats its (Cb, Cr) pair four times.
            const std::array<int16_t, 8> expected = {set[2 * vector], set[2 * vector + 1], set[2 * vector],
                                                     set[2 * vector + 1], set[2 * vector], set[2 * vector + 1],
                                                     set[2 * vector], set[2 * vector + 1]};
            EXPECT_EQ(v[vector], expected) << row.src_matrix << "->" << row.dst_matrix << " vector " << vector;
        }
    }
}

TEST(YuvMatrixChangeSetup, ClampBoundsAndOtherDepths) {
    struct Row {
        uint8_t clamp;
        uint32_t depth;
        int16_t low, high;
    };
    const Row rows[] = {{0, 8, 0, 255}, {1, 8, 16, 235}, {0x80, 8, 16, 235}, {1, 10, 16, 235}, {0, 16, 0, 255}};
    for (const Row& row : rows) {
        const auto v = SetupVectors(1, 0, row.depth, row.clamp);
        for (int lane = 0; lane < 8; ++lane) {
            EXPECT_EQ(v[3][lane], row.low);
            EXPECT_EQ(v[4][lane], row.high);
        }
        // Only depth 8 has coefficients; other depths leave them alone.
        for (int i = 0; i < 3; ++i)
            EXPECT_EQ(v[i][0] == 0x5A5A, row.depth != 8) << "depth " << row.depth << " vector " << i;
    }
}

// The reference derives its sets from Kr and Kb; they must be the shipped ones.
TEST(YuvMatrixChangeSetup, SetsFollowFromTheStandards) {
    const MatrixChangeModel to_709 = ReferenceMatrixChangeSet(kBt601, kBt709);
    const MatrixChangeModel to_601 = ReferenceMatrixChangeSet(kBt709, kBt601);
    EXPECT_EQ(
        (std::array<int, 6>{to_709.luma_cb, to_709.luma_cr, to_709.cb_cb, to_709.cb_cr, to_709.cr_cb, to_709.cr_cr}),
        (std::array<int, 6>{-1893, -3407, 16689, 1878, 1230, 16799}));
    EXPECT_EQ(
        (std::array<int, 6>{to_601.luma_cb, to_601.luma_cr, to_601.cb_cb, to_601.cb_cr, to_601.cr_cb, to_601.cr_cr}),
        (std::array<int, 6>{1627, 3141, 16218, -1813, -1187, 16112}));
}

TEST(YuvMatrixChangeRounding, BiasedTowardsMinusInfinityForNegatives) {
    struct Row {
        int16_t value;
        int rounded;
    };
    const Row rows[] = {{0, 0},       {127, 0},     {128, 1},     {200, 1},       {383, 1},      {384, 2},
                        {-1, -1},     {-127, -1},   {-128, -1},   {-129, -2},     {-384, -2},    {-385, -3},
                        {32639, 127}, {32640, 127}, {32767, 127}, {-32640, -128}, {-32641, 127}, {-32768, 127}};
    for (const Row& row : rows) EXPECT_EQ(ReferenceRound(row.value, row.value >= 0), row.rounded) << row.value;
    // A second-half value takes its +128 step from the first half's sign.
    EXPECT_EQ(ReferenceRound(200, false), 0);
    EXPECT_EQ(ReferenceRound(-100, true), 0);
    EXPECT_EQ(ReferenceRound(-100, false), -1);
}

// ---- One line through an export -------------------------------------------------------------------

// A line of `src` converted at a destination `dst_offset` bytes past a
// 16-byte boundary; the destination starts filled with 0xEE.
struct LineRun {
    std::vector<uint8_t> src;
    int32_t width;
    uint32_t dst_offset = 0;
    int32_t src_matrix = 0, dst_matrix = 0;
    uint8_t clamp = 0;
    uint32_t alpha = 0;
    int32_t dst_stride = 0;  // 0: 16-aligned line bytes
    int32_t dst_height = 1;
};

std::vector<uint8_t> RunLine(ZenkConvertFunction convert, const LineRun& run, size_t dst_bytes = 256) {
    alignas(16) uint8_t src[256] = {};
    alignas(16) uint8_t dst[512];
    std::memset(dst, 0xEE, sizeof dst);
    std::memcpy(src, run.src.data(), run.src.size());
    Request r{};
    r.src_plane = src;
    r.src_width = run.width;
    r.src_height = 1;
    r.src_stride = 256;
    r.src_matrix = run.src_matrix;
    r.dst_plane = dst + run.dst_offset;
    r.width = run.width;
    r.dst_height = run.dst_height;
    r.dst_stride = run.dst_stride ? run.dst_stride : 256;
    r.dst_matrix = run.dst_matrix;
    r.clamp_luma = run.clamp;
    r.alpha_value = run.alpha;
    convert(&r);
    return std::vector<uint8_t>(dst + run.dst_offset, dst + run.dst_offset + dst_bytes);
}

std::vector<uint8_t> Repeat(std::vector<uint8_t> pair, int times) {
    std::vector<uint8_t> out;
    for (int i = 0; i < times; ++i) out.insert(out.end(), pair.begin(), pair.end());
    return out;
}

// One pair repeated over a line: through the pair path (width 2) and
// through an aligned group (width 16, where both halves agree in sign).
TEST(YuvToYuvKnownAnswers, PairAnswers) {
    struct Row {
        const char* what;
        int32_t src_matrix, dst_matrix;
        uint8_t clamp;
        std::vector<uint8_t> in, out;  // UYVY16I bytes
    };
    const Row rows[] = {
        // Cb' = 16689 * 127 / 64 saturates to 32767 (1/256 steps); +128
        // wraps it negative, -128 wraps it back: stored 255. dY = -1893 *
        // 127 / 64 = -3757 rounds to -16; Cr' = 1230 * 127 / 64 = 2440 to 10.
        {"saturated Cb wraps back", 1, 0, 0, {255, 100, 128, 100}, {255, 84, 138, 84}},
        // Cb' = -2376576 / 64 saturates to -32768; -128 wraps to 32640: 255.
        {"saturated negative Cb wraps to the top", 1, 0, 0, {0, 100, 0, 100}, {255, 141, 255, 141}},
        {"neutral chroma, clamp", 1, 0, 1, {128, 5, 128, 250}, {128, 16, 128, 235}},
        {"neutral chroma, no clamp", 1, 0, 0, {128, 5, 128, 250}, {128, 5, 128, 250}},
        {"neutral chroma, to BT.601", 0, 1, 1, {128, 0, 128, 255}, {128, 16, 128, 235}},
        {"selectors 2 and 1", 2, 1, 0, {128, 0, 128, 255}, {128, 0, 128, 255}},
        {"luma stops at 0", 1, 0, 0, {255, 3, 255, 3}, {255, 0, 255, 0}},
    };
    for (const Row& row : rows)
        for (const int32_t width : {2, 16}) {
            LineRun run{Repeat(row.in, 8), width, 0, row.src_matrix, row.dst_matrix, row.clamp};
            const std::vector<uint8_t> out = RunLine(ZENK_SSE2_UYVY16I_UYVY16I_EX, run, 2 * width + 1);
            EXPECT_EQ(std::vector<uint8_t>(out.begin(), out.end() - 1), Repeat(row.out, width / 2))
                << row.what << ", width " << width;
            EXPECT_EQ(out.back(), 0xEE) << row.what;
        }
}

// A luma correction of 200/256 in pixels 8-15 of a group rounds up only when
// the correction of pixels 0-7 in the same lane is not negative; a pair on
// its own rounds it up.
TEST(YuvToYuvKnownAnswers, SecondHalfOfAGroupTakesTheFirstHalfsSign) {
    // Cb 168, Cr 102 under BT.601 -> BT.709: dY = (-1893*40 - 3407*-26) >> 6 = 200.
    const std::vector<uint8_t> plus_200 = {168, 100, 102, 100};
    struct Row {
        std::vector<uint8_t> first_pair;  // pixels 0-1; pixels 2-7 neutral
        uint8_t luma_8_9;
    };
    const Row rows[] = {
        {{128, 100, 128, 100}, 101},  // dY 0: not negative
        {{129, 100, 128, 100}, 100},  // dY = -1893 / 64 = -30: negative
        {plus_200, 101},              // dY 200
    };
    for (const Row& row : rows) {
        std::vector<uint8_t> src = row.first_pair;
        for (int pair = 1; pair < 8; ++pair) src.insert(src.end(), {128, 100, 128, 100});
        std::memcpy(&src[16], plus_200.data(), 4);
        for (auto convert : {ZENK_SSE2_UYVY16I_UYVY16I_EX, ZENK_SSE2_UYVY16I_YUYV16I_EX}) {
            LineRun run{src, 16};
            run.src_matrix = kBt601;
            run.dst_matrix = kBt709;
            const std::vector<uint8_t> out = RunLine(convert, run);
            const int luma = convert == ZENK_SSE2_UYVY16I_UYVY16I_EX ? 1 : 0;
            EXPECT_EQ(out[16 + luma], row.luma_8_9);
            EXPECT_EQ(out[18 + luma], row.luma_8_9);
            // The same pair alone, or in a first half, rounds by its own sign.
            EXPECT_EQ(RunLine(convert, {plus_200, 2, 0, kBt601, kBt709})[luma], 101);
            EXPECT_EQ(RunLine(convert, {Repeat(plus_200, 8), 16, 0, kBt601, kBt709})[luma], 101);
        }
    }
}

// The kernel shared by the UVYY16I and Y8PUV8I exports: pixels 0-7 take the
// correction of pixels 8-15, so neutral chroma there leaves their luma alone
// (apart from the clamp) whatever their own chroma; their chroma still
// changes, and the bytes stay in UYVY16I order.
TEST(YuvToYuvKnownAnswers, SharedKernelCrossesLuma) {
    std::vector<uint8_t> src = Repeat({255, 100, 128, 5}, 4);
    const std::vector<uint8_t> neutral = Repeat({128, 120, 128, 250}, 4);
    src.insert(src.end(), neutral.begin(), neutral.end());
    const std::vector<uint8_t> want_first = {255, 100, 138, 16};
    const std::vector<uint8_t> want_second = {128, 120, 128, 235};
    for (auto convert : {ZENK_SSE2_UYVY16I_UVYY16I_EX, ZENK_SSE2_UVYY16I_UYVY16I_EX, ZENK_SSE2_UYVY16I_Y8PUV8I_EX}) {
        LineRun run{src, 16, 0, kBt601, kBt709, 1};
        const std::vector<uint8_t> out = RunLine(convert, run);
        EXPECT_EQ(std::vector<uint8_t>(out.begin(), out.begin() + 16), Repeat(want_first, 4));
        EXPECT_EQ(std::vector<uint8_t>(out.begin() + 16, out.begin() + 32), Repeat(want_second, 4));
    }
    // The own-pair kernels correct the same luma: -16 in pixels 0-7.
    LineRun run{src, 16, 0, kBt601, kBt709, 1};
    EXPECT_EQ(RunLine(ZENK_SSE2_UYVY16I_UYVY16I_EX, run)[1], 84);
}

TEST(YuvToYuvKnownAnswers, SplitAndWidenOnePair) {
    const std::vector<uint8_t> pair = {10, 20, 30, 40};
    // Y8PUV8I: luma 20 40 at the plane, chroma 10 30 a stride * height later.
    for (const uint32_t offset : {0u, 3u}) {
        LineRun run{pair, 2, offset};
        run.dst_stride = 64;
        run.dst_height = 2;
        const std::vector<uint8_t> out = RunLine(ZENK_SSE2_UYVY16I_Y8PUV8I_EX, run);
        EXPECT_EQ((std::vector<uint8_t>{out[0], out[1], out[2]}), (std::vector<uint8_t>{20, 40, 0xEE}));
        EXPECT_EQ((std::vector<uint8_t>{out[128], out[129], out[130]}), (std::vector<uint8_t>{10, 30, 0xEE}));
    }
    // V8U8Y8A8I: Cr, Cb, Y, the low byte of alpha_value.
    for (const uint32_t alpha : {0xFFu, 0x1FFu}) {
        LineRun run{pair, 2, 4};
        run.alpha = alpha;
        const std::vector<uint8_t> out = RunLine(ZENK_SSE2_UYVY16I_V8U8Y8A8I_EX, run, 9);
        EXPECT_EQ(out, (std::vector<uint8_t>{30, 10, 20, 255, 30, 10, 40, 255, 0xEE}));
    }
}

// A change of standard into Y8PUV8I is not a split: packed UYVY16I bytes at
// the luma plane, the chroma plane left alone.
TEST(YuvToYuvKnownAnswers, MatrixChangeIntoPlanarWritesPackedBytes) {
    LineRun run{Repeat({128, 20, 128, 40}, 8), 16, 0, kBt601, kBt709};
    run.dst_stride = 64;
    run.dst_height = 2;
    const std::vector<uint8_t> out = RunLine(ZENK_SSE2_UYVY16I_Y8PUV8I_EX, run);
    EXPECT_EQ(std::vector<uint8_t>(out.begin(), out.begin() + 32), Repeat({128, 20, 128, 40}, 8));
    EXPECT_EQ(std::vector<uint8_t>(out.begin() + 32, out.begin() + 160), std::vector<uint8_t>(128, 0xEE));
}

// Same standard: the aligned path regroups, the unaligned path copies.
TEST(YuvToYuvKnownAnswers, UvyyReorderOnlyWhenAligned) {
    const std::vector<uint8_t> src = Repeat({1, 2, 3, 4}, 8);
    struct Row {
        ZenkConvertFunction convert;
        uint32_t offset;
        std::vector<uint8_t> pair;
    };
    const Row rows[] = {
        {ZENK_SSE2_UYVY16I_UVYY16I_EX, 0, {1, 3, 2, 4}},  {ZENK_SSE2_UVYY16I_UYVY16I_EX, 0, {1, 3, 2, 4}},
        {ZENK_SSE2_UYVY16I_UVYY16I_EX, 4, {1, 2, 3, 4}},  {ZENK_SSE2_UVYY16I_UYVY16I_EX, 8, {1, 2, 3, 4}},
        {ZENK_SSE2_UYVY16I_YUYV16I_EX, 4, {2, 1, 4, 3}},  {ZENK_SSE2_YUYV16I_UYVY16I_EX, 0, {2, 1, 4, 3}},
        {ZENK_SSE2_YUYV16I_YUYV16I_EX, 12, {1, 2, 3, 4}},
    };
    for (const Row& row : rows) {
        LineRun run{src, 16, row.offset, 2, 2};
        run.dst_stride = 32;
        const std::vector<uint8_t> out = RunLine(row.convert, run, 33);
        EXPECT_EQ(std::vector<uint8_t>(out.begin(), out.begin() + 32), Repeat(row.pair, 8)) << row.offset;
        EXPECT_EQ(out[32], 0xEE);
    }
}

}  // namespace
}  // namespace zenk::test
