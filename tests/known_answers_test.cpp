// Known answers: what the differential test cannot see because the scalar
// references could share the mistake. The published code values of 75%
// colour bars, black and white in each range, the documented arithmetic
// quirks with their worked numbers, head tables, where a pair mode's lines
// come from and land, when host option 128 is asked and how it is answered,
// and what the plain entry points do.

#include <algorithm>
#include <cstring>

#include "rgb_alpha/rgb_alpha_kernels.h"
#include "support/host_option_fixture.h"
#include "support/test_picture.h"
#include "yuv_to_rgb/yuv_to_rgb_kernels.h"

namespace zenk::test {
namespace {

using Bytes = std::vector<uint8_t>;

// One line through an export: a 16-aligned source (256-byte pitch) and a
// destination `dst_offset` bytes past a 16-byte boundary, filled with 0xEE,
// 256-byte pitch (a Y8PUV8I chroma line 256 bytes on).
struct Line {
    ZenkConvertFunction convert;
    Bytes src;
    int32_t width;
    int32_t src_matrix = 1, dst_matrix = 1;
    uint8_t full_range = 0, clamp = 0;
    uint32_t alpha = 0, dst_offset = 0;
    uint8_t streaming = 0;
};

Bytes Convert(const Line& l) {
    alignas(16) uint8_t src[512] = {};
    alignas(16) uint8_t dst[1024];
    std::memset(dst, 0xEE, sizeof dst);
    std::copy_n(l.src.begin(), std::min(l.src.size(), sizeof src), src);
    const Request r{.src_plane = src, .src_width = l.width, .src_height = 1, .src_stride = 256,
                    .src_matrix = l.src_matrix, .dst_plane = dst + l.dst_offset, .width = l.width,
                    .dst_height = 1, .dst_stride = 256, .dst_matrix = l.dst_matrix, .alpha_value = l.alpha,
                    .full_range = l.full_range, .use_streaming_stores = l.streaming, .clamp_luma = l.clamp};
    l.convert(&r);
    return {dst + l.dst_offset, dst + l.dst_offset + 512};
}

// `unit` `times` over, then `then`.
Bytes Repeat(const Bytes& unit, int times, Bytes then = {}) {
    for (int i = 0; i < times; ++i) then.insert(then.begin(), unit.begin(), unit.end());
    return then;
}

using KnownAnswers = WithHostSettings<>;

// ---- Colour bars, black and white ---------------------------------------------------------

// The published 8-bit studio-range code values of 75% bars (BT.601: EBU
// bars as in ITU-R BT.801; BT.709: SMPTE RP 219), from RGB 191 = 75% of 255.
struct Bar {
    const char* name;
    uint8_t bgr[3];
    uint8_t cb_y_cr[6];  // BT.601, then BT.709
};
const Bar kBars[] = {
    {"white", {191, 191, 191}, {128, 180, 128, 128, 180, 128}}, {"yellow", {0, 191, 191}, {44, 162, 142, 44, 168, 136}},
    {"cyan", {191, 191, 0}, {156, 131, 44, 147, 145, 44}}, {"green", {0, 191, 0}, {72, 112, 58, 63, 133, 52}},
    {"magenta", {191, 0, 191}, {184, 84, 198, 193, 63, 204}}, {"red", {0, 0, 191}, {100, 65, 212, 109, 51, 212}},
    {"blue", {191, 0, 0}, {212, 35, 114, 212, 28, 120}}, {"black", {0, 0, 0}, {128, 16, 128, 128, 16, 128}},
};

// Encoded within one code of the published values (BGR24 lines share the
// arithmetic, as the differential test holds them to the same reference);
// decoded within two of 191 and 0.
TEST_F(KnownAnswers, SeventyFivePercentBarsInBothMatrices) {
    for (const Bar& bar : kBars)
        for (int32_t matrix : {1, 0}) {
            SCOPED_TRACE(::testing::Message() << bar.name << (matrix == 1 ? " BT.601" : " BT.709"));
            const uint8_t* code = bar.cb_y_cr + (matrix == 1 ? 0 : 3);
            const auto uyvy = Convert(
                {ZENK_SSE2_BGR32I_UYVY16I_EX, Repeat({bar.bgr[0], bar.bgr[1], bar.bgr[2], 0}, 16), 16, 0, matrix});
            const auto bgra = Convert(
                {ZENK_SSE2_UYVY16I_BGR32I_EX, Repeat({code[0], code[1], code[2], code[1]}, 8), 16, 0, matrix, 0, 1});
            for (int i = 0; i < 3; ++i) {
                EXPECT_NEAR(uyvy[i], code[i], 1);
                EXPECT_NEAR(bgra[i], bar.bgr[i], 2);
            }
        }
}

// Studio luma runs 16..235, full-range luma 0..255; full-range BT.601 with
// full-swing chroma (option 128 nonzero) stops at 254.
TEST_F(KnownAnswers, EncodedBlackAndWhiteInEachRange) {
    const struct {
        int32_t matrix;
        uint8_t full_range;
        int32_t option;
        int black, white;
    } rows[] = {{1, 0, 1, 16, 235}, {0, 0, 1, 16, 235}, {1, 1, 1, 0, 254},
                        {1, 1, 0, 0, 255},  {0, 1, 1, 0, 255},  {1, 1, 7, 0, 254}};
    for (const auto& row : rows) {
        AnswerHostOption(row.option);
        for (uint8_t level : {0, 255}) {
            const auto out = Convert(
                {ZENK_SSE2_BGR32I_UYVY16I_EX, Bytes(64, level), 16, 0, row.matrix, row.full_range});
            EXPECT_EQ(out[1], level ? row.white : row.black)
                << row.matrix << " " << int(row.full_range) << " " << row.option;
            EXPECT_EQ(out[0], 128);
        }
    }
}

// ---- Decoding quirks ------------------------------------------------------------------------

// An even pixel keeps only the low byte of its offset luma: with the clamp
// off, luma 10 (Yd = -6) wraps to 250 and decodes to white while the odd
// pixel decodes to black; with the clamp on both are black.
TEST_F(KnownAnswers, EvenLumaBelowBlackWrapsToWhite) {
    for (uint8_t clamp : {0, 1}) {
        const auto out = Convert({ZENK_SSE2_UYVY16I_BGR32I_EX, Repeat({128, 10, 128, 10}, 8), 16, 0, 1, 0, clamp});
        for (int x = 0; x < 16; ++x)
            EXPECT_EQ(out[4 * x + 1], x % 2 == 0 && !clamp ? 255 : 0) << "x " << x << " clamp " << int(clamp);
    }
}

// The constant alpha of YUYV16I to BGR32I: the aligned cached kernel gives
// every pixel the low word saturated to a byte; the other three give even
// pixels the low word and odd pixels the high word.
TEST_F(KnownAnswers, ConstantAlphaWordAndDwordForms) {
    const struct {
        uint32_t alpha_value;
        int word, even, odd;
    } rows[] = {
        {0x000000FF, 255, 255, 0}, {0x12345, 255, 255, 1}, {0xFFFF, 0, 0, 0}, {0x7FFF0080, 0x80, 0x80, 255}};
    for (const auto& row : rows)
        for (uint32_t offset : {0u, 8u})
            for (uint8_t streaming : {0, 1}) {
                const auto out = Convert({.convert = ZENK_SSE2_YUYV16I_BGR32I_EX, .src = Bytes(64, 128), .width = 16,
                             .alpha = row.alpha_value, .dst_offset = offset, .streaming = streaming});
                const bool word = offset == 0 && streaming == 0;  // the aligned cached kernel
                SCOPED_TRACE(::testing::Message()
                             << std::hex << row.alpha_value << " +" << offset << " streaming " << int(streaming));
                EXPECT_EQ(out[3], word ? row.word : row.even);
                EXPECT_EQ(out[7], word ? row.word : row.odd);
            }
}

// The RGB repacking and alpha-plane family truncates the constant alpha to
// its low byte, unlike the saturation of the decoders.
TEST_F(KnownAnswers, RepackingTruncatesConstantAlpha) {
    for (auto [alpha, expected] : {std::pair{0x1FFu, 0xFF}, {0x100u, 0x00}, {300u, 44}}) {
        const auto bgra =
            Convert({.convert = ZENK_SSE2_BGR24I_BGR32I_EX, .src = Bytes(60, 7), .width = 20, .alpha = alpha});
        const auto plane = Convert({.convert = ZENK_SSE2_A8C_A8P_EX, .width = 20, .alpha = alpha});
        for (int x = 0; x < 20; ++x) {
            EXPECT_EQ(bgra[4 * x + 3], expected) << alpha;
            EXPECT_EQ(plane[x], expected) << alpha;
        }
    }
}

// ---- Encoding quirks ----------------------------------------------------------------------

// A BGR24 pair converted on its own encodes (B0, G0, R2) and (B1, G3, R3):
// it takes R0 from pixel 2 and G1, R1 from pixel 3. Here a width of 2 at a
// destination 4 bytes past a boundary is one single pair.
TEST_F(KnownAnswers, Bgr24SinglePairReadsTheNextPair) {
    const Bytes line = {10, 20, 30, 40, 50, 60, 70, 80, 200, 90, 100, 250};  // B, G, R
    for (int32_t matrix : {0, 1}) {
        const auto single = Convert({ZENK_SSE2_BGR24I_UYVY16I_EX, line, 2, 0, matrix, 0, 0, 0, 4});
        const auto even = Convert({ZENK_SSE2_BGR24I_UYVY16I_EX, Repeat({10, 20, 200}, 16), 16, 0, matrix});
        const auto odd = Convert({ZENK_SSE2_BGR24I_UYVY16I_EX, Repeat({40, 100, 250}, 16), 16, 0, matrix});
        // Cb and Y0 of the even pixel, Cr and Y1 of the odd one, then nothing.
        EXPECT_EQ(Bytes(single.begin(), single.begin() + 5), Bytes({even[0], even[1], odd[2], odd[3], 0xEE})) << matrix;
    }
}

// The planar luma clamp limits pixels 2 and 3 of every four only, by their
// index in the line, through blocks and single pairs alike.
TEST_F(KnownAnswers, PlanarLumaClampLimitsPixelsTwoAndThreeOfEveryFour) {
    for (uint32_t offset : {0u, 6u})
        for (uint8_t level : {0, 255}) {
            const auto out = Convert({ZENK_SSE2_BGR32I_Y8PUV8I_EX, Bytes(4 * 34, level), 34, 0, 0, 1, 1, 0, offset});
            for (int x = 0; x < 34; ++x) {
                const int expected = x % 4 >= 2 ? (level ? 235 : 16) : level;
                EXPECT_EQ(out[x], expected) << "x " << x << " +" << offset;
            }
        }
}

// ---- Change of standard -------------------------------------------------------------------

// One UYVY16I pair repeated, BT.601 to BT.709, through the pair path (width
// 2) and a group (width 16).
TEST(MatrixChange, WorkedPairs) {
    const struct {
        const char* what;
        uint8_t clamp;
        Bytes in, out;
    } rows[] = {
        // Cb' = 16689 * 127 / 64 saturates to 32767; +128 wraps it negative,
        // -128 wraps it back: 255. dY = -1893 * 127 / 64 = -3757 rounds to
        // -16; Cr' = 1230 * 127 / 64 = 2440 to 10.
        {"saturated Cb wraps back", 0, {255, 100, 128, 100}, {255, 84, 138, 84}},
        // Cb' saturates to -32768; -128 wraps it to 32640: 255.
        {"saturated negative Cb wraps to the top", 0, {0, 100, 0, 100}, {255, 141, 255, 141}},
        {"neutral chroma, clamp", 1, {128, 5, 128, 250}, {128, 16, 128, 235}},
        {"luma stops at 0", 0, {255, 3, 255, 3}, {255, 0, 255, 0}},
};
    for (const auto& row : rows)
        for (int32_t width : {2, 16}) {
            const auto out = Convert({ZENK_SSE2_UYVY16I_UYVY16I_EX, Repeat(row.in, 8), width, 1, 0, 0, row.clamp});
            EXPECT_EQ(Bytes(out.begin(), out.begin() + 2 * width), Repeat(row.out, width / 2))
                << row.what << ", width " << width;
            EXPECT_EQ(out[2 * width], 0xEE) << row.what;
        }
}

// A luma correction of 200/256 in pixels 8-15 of a group rounds up only when
// the correction of pixels 0-7 in the same lane is not negative.
TEST(MatrixChange, SecondHalfOfAGroupTakesTheFirstHalfsSign) {
    // Cb 168, Cr 102: dY = (-1893 * 40 - 3407 * -26) >> 6 = 200.
    const Bytes plus_200 = {168, 100, 102, 100};
    const struct {
        Bytes first_pair;
        uint8_t luma_8;
    } rows[] = {{{128, 100, 128, 100}, 101}, {{129, 100, 128, 100}, 100}, {plus_200, 101}};
    for (const auto& row : rows) {
        Bytes src = Repeat(row.first_pair, 1, Repeat({128, 100, 128, 100}, 7));
        std::memcpy(&src[16], plus_200.data(), 4);
        EXPECT_EQ(Convert({ZENK_SSE2_UYVY16I_UYVY16I_EX, src, 16, 1, 0})[17], row.luma_8);
    }
}

// The kernel shared by the UVYY16I and Y8PUV8I exports: pixels 0-7 take the
// luma correction of pixels 8-15 (none, for neutral chroma there), their
// chroma still changes, and the bytes stay in UYVY16I order. Into Y8PUV8I
// that means packed bytes at the luma plane, the chroma plane untouched.
TEST(MatrixChange, SharedKernelCrossesLumaAndWritesPackedBytes) {
    const auto src = Repeat({255, 100, 128, 5}, 4, Repeat({128, 120, 128, 250}, 4));
    const auto want = Repeat({255, 100, 138, 16}, 4, Repeat({128, 120, 128, 235}, 4));
    for (auto convert : {ZENK_SSE2_UYVY16I_UVYY16I_EX, ZENK_SSE2_UVYY16I_UYVY16I_EX, ZENK_SSE2_UYVY16I_Y8PUV8I_EX}) {
        const auto out = Convert({convert, src, 16, 1, 0, 0, 1});
        EXPECT_EQ(Bytes(out.begin(), out.begin() + 32), want);
        EXPECT_EQ(out[256], 0xEE);  // a Y8PUV8I chroma line
    }
}

// Same standard: an aligned picture regroups the UVYY16I bytes, any other
// is copied as it stands.
TEST(SameStandard, UvyyReorderOnlyWhenAligned) {
    const struct {
        ZenkConvertFunction convert;
        uint32_t offset;
        Bytes pair;
    } rows[] = {
        {ZENK_SSE2_UYVY16I_UVYY16I_EX, 0, {1, 3, 2, 4}}, {ZENK_SSE2_UVYY16I_UYVY16I_EX, 0, {1, 3, 2, 4}},
        {ZENK_SSE2_UYVY16I_UVYY16I_EX, 4, {1, 2, 3, 4}}, {ZENK_SSE2_UVYY16I_UYVY16I_EX, 8, {1, 2, 3, 4}}};
    for (const auto& row : rows) {
        const auto out = Convert({.convert = row.convert, .src = Repeat({1, 2, 3, 4}, 8), .width = 16,
                                  .src_matrix = 2, .dst_matrix = 2, .dst_offset = row.offset});
        EXPECT_EQ(Bytes(out.begin(), out.begin() + 32), Repeat(row.pair, 8)) << row.offset;
    }
}

// ---- Heads ----------------------------------------------------------------------------------

// The head of an any-alignment BGR24 line is the fewest pixels that bring its
// start to a 16-byte boundary. The walks store an unaligned body the same
// bytes, so only these tables show a head that falls short.
TEST(Heads, Bgr24HeadsReachTheFirstBoundary) {
    for (int residue = 0; residue < 16; ++residue) {
        const int pixels[] = {rgb_alpha::kBgr24HeadPixels[residue],
                              residue % 2 ? -1 : 2 * yuv_to_rgb::kBgr24HeadPairs[residue / 2]};
        for (int head : pixels) {
            if (head < 0) continue;  // decoded BGR24 lines start on even bytes
            EXPECT_EQ((residue + 3 * head) % 16, 0) << residue;
            for (int fewer = 0; fewer < head; ++fewer) EXPECT_NE((residue + 3 * fewer) % 16, 0) << residue;
        }
    }
}

// ---- Host option 128 --------------------------------------------------------------------------

// Asked by the YUV-to-RGB and RGB-to-YUV conversions for full range only,
// never by the others.
TEST_F(KnownAnswers, HostOptionAskedForFullRangeOnly) {
    for (auto convert : {ZENK_SSE2_UYVY16I_BGR32I_EX, ZENK_SSE2_BGR24I_Y8PUV8I_EX, ZENK_SSE2_UYVY16I_UYVY16I_EX})
        for (uint8_t full_range : {0, 1, 9}) {
            ZenkTestSettingsResetCounts();
            Convert({convert, Bytes(64, 90), 16, 1, 0, full_range});
            const bool asks = full_range != 0 && convert != ZENK_SSE2_UYVY16I_UYVY16I_EX;
            EXPECT_EQ(ZenkTestSettingsLastOption(), asks ? 128 : -1) << int(full_range);
        }
}

// ---- Pair-mode layout ------------------------------------------------------------------------

// Where the lines of a pair mode land, for a request filled the way a host
// fills any picture: the destination skip is the pitch minus the bytes a
// line's converted pixels take, so destination line n starts n pitches from
// the first (upward for a bottom-up picture), whatever the width. Each
// source line is uniform and different from every other, so a destination
// line shows which source line made it; its bytes are checked against the
// same export converting the whole source in frame mode.
const struct {
    ZenkConvertFunction convert;
    // Bytes a pixel (luma bytes for Y8PUV8I, whose chroma lines follow the
    // luma lines) of the source and the destination.
    int src_pixel_bytes, dst_pixel_bytes;
    bool dst_planar;
} kExports[] = {
    {ZENK_SSE2_UYVY16I_BGR32I_EX, 2, 4, false}, {ZENK_SSE2_Y8PUV8I_BGR32I_EX, 1, 4, false},
    {ZENK_SSE2_BGR32I_UYVY16I_EX, 4, 2, false}, {ZENK_SSE2_BGR32I_UVYY16I_EX, 4, 2, false},
    {ZENK_SSE2_BGR32I_Y8PUV8I_EX, 4, 1, true},
};

const struct {
    const char* what;
    int32_t vertical_mode;
    uint8_t field_pair;
    int32_t width;
    uint32_t dst_residue;  // first destination byte, modulo 16
    bool bottom_up;        // destination walked upward from its last line
    int32_t src_height;
    std::vector<int> source_lines;  // source line of each destination line; none: nothing written
    int32_t src_skip_lines = 0;     // src_skip in pitches; negative: the source walked upward from its last line
} kRows[] = {
    {"halve, lines one pitch apart", 1, 0, 16, 0, false, 16, {0, 2, 4, 6}},
    {"halve each field", 1, 1, 16, 0, false, 16, {0, 1, 4, 5}},
    {"quarter", 2, 0, 16, 0, false, 16, {0, 4, 8, 12}},
    {"quarter each field", 2, 1, 16, 0, false, 16, {0, 1, 8, 9}},
    {"bottom-up destination", 1, 0, 16, 0, true, 16, {0, 2, 4, 6}},
    {"head, body and tail pairs", 1, 0, 40, 8, false, 16, {0, 2, 4, 6}},
    {"odd width: the pointer stands after 12 pixels", 1, 0, 13, 8, false, 16, {0, 2, 4, 6}},
    {"odd width, bottom-up", 2, 1, 21, 8, true, 16, {0, 1, 8, 9}},
    {"src_height 0 with dst_height 4", 1, 0, 16, 0, false, 0, {}},
    // Upward, the second line above the first; the skip adds to the step.
    {"bottom-up source", 1, 0, 16, 0, false, 16, {15, 13, 10, 8}, -1},
    {"bottom-up source, quarter each field", 2, 1, 16, 0, false, 16, {15, 14, 6, 5}, -1},
};

constexpr int32_t kDstLines = 4, kSrcLines = 16;
constexpr int32_t kPitch = 256;  // wider than any destination line of the table

TEST(PairModeLayout, LinesLandOnePitchApartFromTheHostsSkip) {
    for (const auto& e : kExports)
        for (const auto& row : kRows) {
            SCOPED_TRACE(::testing::Message() << "export " << (&e - kExports) << ": " << row.what);
            // Source line y: (B, G, R, A), luma, or (Cb, Y, Cr, Y) by y,
            // with a Y8PUV8I source's (Cb, Cr) lines after its luma lines.
            const int32_t src_pitch = 4 * row.width * e.src_pixel_bytes;
            AlignedBytes src(static_cast<size_t>(2 * kSrcLines * src_pitch));
            for (int32_t y = 0; y < kSrcLines; ++y) {
                const uint8_t bgra[4] = {uint8_t(10 + 12 * y), uint8_t(200 - 9 * y), uint8_t(40 + 7 * y), 0xFF};
                const uint8_t uyvy[4] = {uint8_t(128 + 3 * y), uint8_t(30 + 12 * y), uint8_t(128 - 3 * y),
                                         uint8_t(30 + 12 * y)};
                uint8_t* line = src.data() + y * src_pitch;
                for (int32_t x = 0; x < src_pitch; ++x) {
                    line[x] = e.src_pixel_bytes == 4 ? bgra[x % 4] : e.src_pixel_bytes == 2 ? uyvy[x % 4] : uyvy[1];
                    if (e.src_pixel_bytes == 1) line[kSrcLines * src_pitch + x] = uyvy[x % 2 * 2];
                }
            }
            // What each source line converts to: the whole source in frame mode.
            const int32_t converted = (row.width & ~1) * e.dst_pixel_bytes;
            AlignedBytes frame(static_cast<size_t>(2 * kSrcLines * kPitch + 16));
            const Request whole{.src_plane = src.data(), .src_height = kSrcLines, .src_stride = src_pitch,
                                .src_skip = src_pitch - (row.width & ~1) * e.src_pixel_bytes,
                                .dst_plane = frame.data() + row.dst_residue, .width = row.width,
                                .dst_height = kSrcLines, .dst_stride = kPitch, .dst_skip = kPitch - converted,
                                .dst_matrix = 1, .alpha_value = 0x00FF00FF};  // 255 on either alpha form
            e.convert(&whole);

            // A source of no lines sits between pages the kernel cannot read.
            AlignedBytes no_source = AlignedBytes::BetweenGuardPages(4096);
            const int32_t step = row.bottom_up ? -kPitch : kPitch;
            AlignedBytes dst(static_cast<size_t>(4 * kDstLines * kPitch));
            std::memset(dst.data(), 0xA5, dst.size());
            const size_t first = static_cast<size_t>(kDstLines * kPitch) + row.dst_residue +
                                 (row.bottom_up ? static_cast<size_t>((kDstLines - 1) * kPitch) : 0);
            AlignedBytes want = dst;
            for (size_t n = 0; n < row.source_lines.size(); ++n) {
                const uint8_t* from = whole.dst_plane + row.source_lines[n] * kPitch;
                uint8_t* at = want.data() + first + static_cast<ptrdiff_t>(n) * step;
                std::memcpy(at, from, static_cast<size_t>(converted));
                if (e.dst_planar) std::memcpy(at + step * kDstLines, from + kSrcLines * kPitch, converted);
            }
            const int32_t last = row.src_skip_lines < 0 ? kSrcLines - 1 : 0;
            const Request pairs{.src_plane = row.src_height == 0 ? no_source.end() : src.data() + last * src_pitch,
                                .src_height = row.src_height, .src_stride = src_pitch,
                                .src_skip = row.src_skip_lines * src_pitch, .src_field_pair = row.field_pair,
                                .dst_plane = dst.data() + first, .width = row.width, .dst_height = kDstLines,
                                .dst_stride = step, .dst_skip = step - converted, .dst_matrix = 1,
                                .alpha_value = 0x00FF00FF, .scan_mode = row.vertical_mode,  // 1 or 2
                                .vertical_mode = row.vertical_mode};
            e.convert(&pairs);
            for (size_t i = 0; i < want.size(); ++i)
                ASSERT_EQ(dst[i], want[i]) << "destination byte " << static_cast<ptrdiff_t>(i - first)
                                           << " from the first line's start";
        }
}

// ---- Plain entry points --------------------------------------------------------------------

// Plain calls set no picture size: every one of them leaves the destination
// untouched, whatever its pointers, pitch, matrix and range. Those between
// YUV and RGB take full_range from range 1 and so ask host option 128.
using PlainEntryPoints = WithHostSettings<>;

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
    Bytes src(64 * 16, 0x5A), dst(64 * 16, 0xC3);
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

// ---- The host option query -------------------------------------------------------------------

// Module start-up and the query, against the counting settings library.
using HostOptionTest = WithHostSettings<>;

// Each query asks the object again; export 1 is asked once for it.
TEST_F(HostOptionTest, AnswersOption128UnchangedFromTheObjectFetchedOnce) {
    for (int32_t answer : {0, 1, 7, -1}) {
        ZenkTestSettingsConfigure(0, answer);
        EXPECT_EQ(QueryHostOption(), answer);
        EXPECT_EQ(ZenkTestSettingsLastOption(), 128);
    }
    EXPECT_EQ(ZenkTestSettingsCalls(), 1);
}

TEST_F(HostOptionTest, AnswersOneWithoutASettingsObjectAndAsksAgainNextTime) {
    ZenkTestSettingsConfigure(1, 0);
    EXPECT_EQ(QueryHostOption(), 1);
    EXPECT_EQ(QueryHostOption(), 1);
    EXPECT_EQ(ZenkTestSettingsCalls(), 2);
    // Once the host has an object, the next query uses it.
    ZenkTestSettingsConfigure(0, 0);
    EXPECT_EQ(QueryHostOption(), 0);
    EXPECT_EQ(ZenkTestSettingsCalls(), 3);
}

TEST_F(HostOptionTest, InitialisationFailsWithoutASettingsObject) {
    CZenkTranscoderLibraryApp app;
    ZenkTestSettingsConfigure(1, 0);
    EXPECT_FALSE(app.InitInstance());
    EXPECT_EQ(app.HostSettings(), nullptr);
    ZenkTestSettingsConfigure(0, 0);
    EXPECT_TRUE(app.InitInstance());
    EXPECT_NE(app.HostSettings(), nullptr);
}

}  // namespace
}  // namespace zenk::test
