// Known answers of the YUV-to-RGB family: numbers that a scalar reference
// could get wrong in the same way as the kernels (coefficient words, colour
// bars, studio black and white, the even-luma wrap, the alpha forms, the
// byte orders of the layouts, which source lines the pair modes read).
#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <vector>

#include "frame/host_option.h"
#include "support/counting_host_settings.h"
#include "support/host_option_fixture.h"
#include "yuv_to_rgb/coefficients.h"
#include "yuv_to_rgb/yuv_to_rgb_kernels.h"

namespace zenk::yuv_to_rgb {
namespace {

using YuvToRgbKnownAnswers = test::WithHostSettings<>;

// ---- The coefficient block -------------------------------------------------------------

struct Vectors {
    __m128i offset, gain, blue, red, green, unused0, unused1, low, high;
};

YuvToRgbCoefficients BlockFor(Vectors& v, uint32_t matrix, uint8_t full_range, uint8_t clamp) {
    return {matrix, 5, 8, 1, clamp, full_range, &v.offset, &v.gain, &v.blue, &v.red, &v.green, &v.unused0,
            &v.unused1, &v.low, &v.high};
}

// A one-plane picture of `height` lines, pitches as given, no skips.
ZenkConversionRequest Picture(const uint8_t* src, int32_t src_stride, uint8_t* dst, int32_t width, int32_t height) {
    ZenkConversionRequest r{};
    r.src_plane = src;
    r.src_stride = src_stride;
    r.src_height = height;
    r.dst_plane = dst;
    r.width = width;
    return r;
}

// Every 16-bit word of a vector, in memory order.
std::vector<uint16_t> Words(__m128i v) {
    uint16_t w[8];
    std::memcpy(w, &v, 16);
    return {w, w + 8};
}

std::vector<uint16_t> Repeat(uint16_t low, uint16_t high) {
    return {low, high, low, high, low, high, low, high};
}

TEST_F(YuvToRgbKnownAnswers, CoefficientWordsOfEveryChoice) {
    struct Set {
        uint16_t cb_to_b, cr_to_r, cb_to_g, cr_to_g;
    };
    // The words hosts have always been given.
    const Set bt601_studio = {0x408D, 0x3313, 0xF377, 0xE5FC}, bt709_studio = {0x4399, 0x395E, 0xF92D, 0xEEF2};
    const Set bt601_full = {0x387C, 0x2CB0, 0xF508, 0xE93D}, bt709_full = {0x3B26, 0x3232, 0xFA07, 0xF114};
    struct Row {
        uint32_t matrix;
        uint8_t full_range;
        int32_t host_answer;
        const Set* expected;
        uint16_t gain, offset;
    };
    const Row rows[] = {
        {1, 0, 1, &bt601_studio, 19073, 16},   {0, 0, 1, &bt709_studio, 19073, 16},
        {2, 0, 0, &bt709_studio, 19073, 16},   {0xFFFFFFFFu, 0, 1, &bt709_studio, 19073, 16},
        {1, 1, 1, &bt601_full, 16384, 0},      {0, 1, 1, &bt709_full, 16384, 0},
        {1, 1, 0, &bt601_studio, 16384, 0},    {0, 1, 0, &bt709_studio, 16384, 0},
        {2, 0x80, 7, &bt709_full, 16384, 0},   {1, 1, -1, &bt601_full, 16384, 0},
        {0xFFFFFFFFu, 1, 0, &bt709_studio, 16384, 0},
    };
    for (const Row& row : rows) {
        for (uint8_t clamp : {0, 1, 0xFF}) {
            SCOPED_TRACE(::testing::Message() << "matrix " << row.matrix << " full " << int(row.full_range)
                                              << " answer " << row.host_answer << " clamp " << int(clamp));
            ZenkTestSettingsConfigure(0, row.host_answer);
            ZenkTestSettingsResetCounts();
            Vectors v;
            YuvToRgbCoefficients b = BlockFor(v, row.matrix, row.full_range, clamp);
            SetupYuvToRgbCoefficients(&b);
            EXPECT_EQ(Words(v.offset), std::vector<uint16_t>(8, row.offset));
            EXPECT_EQ(Words(v.gain), Repeat(row.gain, 0));
            EXPECT_EQ(Words(v.blue), Repeat(row.expected->cb_to_b, 0));
            EXPECT_EQ(Words(v.red), Repeat(0, row.expected->cr_to_r));
            EXPECT_EQ(Words(v.green), Repeat(row.expected->cb_to_g, row.expected->cr_to_g));
            EXPECT_EQ(Words(v.low), std::vector<uint16_t>(8, clamp ? 16 : 0));
            EXPECT_EQ(Words(v.high), std::vector<uint16_t>(8, clamp ? 235 : 255));
            // The host is asked on the full-range branch only.
            EXPECT_EQ(ZenkTestSettingsLastOption(), row.full_range ? 128 : -1);
        }
    }
}

// ---- Decoding through the exports ----------------------------------------------------------

struct Pixel {
    int b, g, r, a;
};

// Decodes one line of 16 pixels, pair after pair (Y0, Y1, Cb, Cr), through
// the UYVY16I to BGR32I export on aligned buffers.
std::vector<Pixel> DecodeUyvy(const std::vector<std::array<int, 4>>& pairs, int32_t matrix, uint8_t full_range,
                              uint8_t clamp, uint32_t alpha = 0x00FF00FF) {
    alignas(16) uint8_t src[32] = {};
    alignas(16) uint8_t dst[64] = {};
    for (int p = 0; p < 8; ++p) {
        const auto& q = pairs[static_cast<size_t>(p) % pairs.size()];
        const uint8_t bytes[4] = {uint8_t(q[2]), uint8_t(q[0]), uint8_t(q[3]), uint8_t(q[1])};
        std::memcpy(src + 4 * p, bytes, 4);
    }
    ZenkConversionRequest r = Picture(src, 32, dst, 16, 1);
    r.dst_matrix = matrix;
    r.full_range = full_range;
    r.clamp_luma = clamp;
    r.alpha_value = alpha;
    ZENK_SSE2_UYVY16I_BGR32I_EX(&r);
    std::vector<Pixel> out;
    for (int x = 0; x < 16; ++x) out.push_back({dst[4 * x], dst[4 * x + 1], dst[4 * x + 2], dst[4 * x + 3]});
    return out;
}

TEST_F(YuvToRgbKnownAnswers, StudioBlackAndWhiteInEveryMatrixAndClamp) {
    for (int32_t matrix : {1, 0, 2, -1}) {
        for (uint8_t clamp : {0, 1}) {
            const std::vector<Pixel> px = DecodeUyvy({{16, 16, 128, 128}, {235, 235, 128, 128}}, matrix, 0, clamp);
            for (int x = 0; x < 16; ++x) {
                const int expected = x % 4 < 2 ? 0 : 255;
                EXPECT_EQ(px[x].b, expected) << matrix << " " << x;
                EXPECT_EQ(px[x].g, expected) << matrix << " " << x;
                EXPECT_EQ(px[x].r, expected) << matrix << " " << x;
                EXPECT_EQ(px[x].a, 255);
            }
        }
    }
}

// 75% colour bars: the published 8-bit code values of each standard decode
// to 191 (0.75 * 255) where a primary is on and 0 where it is off, within
// the rounding of the code values and of the fixed-point arithmetic.
TEST_F(YuvToRgbKnownAnswers, SeventyFivePercentBarsDecodeToTheirColours) {
    struct Bar {
        const char* name;
        int y, cb, cr;
        bool r, g, b;
    };
    const Bar bt601[] = {{"white", 180, 128, 128, 1, 1, 1}, {"yellow", 162, 44, 142, 1, 1, 0},
                         {"cyan", 131, 156, 44, 0, 1, 1},   {"green", 112, 72, 58, 0, 1, 0},
                         {"magenta", 84, 184, 198, 1, 0, 1}, {"red", 65, 100, 212, 1, 0, 0},
                         {"blue", 35, 212, 114, 0, 0, 1},   {"black", 16, 128, 128, 0, 0, 0}};
    const Bar bt709[] = {{"white", 180, 128, 128, 1, 1, 1}, {"yellow", 168, 44, 136, 1, 1, 0},
                         {"cyan", 145, 147, 44, 0, 1, 1},   {"green", 133, 63, 52, 0, 1, 0},
                         {"magenta", 63, 193, 204, 1, 0, 1}, {"red", 51, 109, 212, 1, 0, 0},
                         {"blue", 28, 212, 120, 0, 0, 1},   {"black", 16, 128, 128, 0, 0, 0}};
    auto check = [](const Bar* bars, int32_t matrix) {
        for (int i = 0; i < 8; ++i) {
            const Bar& bar = bars[i];
            const std::vector<Pixel> px = DecodeUyvy({{bar.y, bar.y, bar.cb, bar.cr}}, matrix, 0, 1);
            for (int x : {0, 1}) {
                EXPECT_NEAR(px[x].r, bar.r ? 191 : 0, 2) << bar.name << " matrix " << matrix;
                EXPECT_NEAR(px[x].g, bar.g ? 191 : 0, 2) << bar.name << " matrix " << matrix;
                EXPECT_NEAR(px[x].b, bar.b ? 191 : 0, 2) << bar.name << " matrix " << matrix;
            }
        }
    };
    check(bt601, 1);
    check(bt709, 0);
}

// An even pixel keeps only the low byte of its offset luma: with the clamp
// off, luma 10 (Yd = -6) wraps to 250 and decodes to 255 on the even pixel,
// while the odd pixel decodes to 0. With the clamp on both are black.
TEST_F(YuvToRgbKnownAnswers, EvenLumaBelowBlackWrapsToWhite) {
    std::vector<Pixel> px = DecodeUyvy({{10, 10, 128, 128}}, 1, 0, 0);
    for (int x = 0; x < 16; ++x) {
        const int expected = x % 2 == 0 ? 255 : 0;
        EXPECT_EQ(px[x].b, expected) << x;
        EXPECT_EQ(px[x].g, expected) << x;
        EXPECT_EQ(px[x].r, expected) << x;
    }
    px = DecodeUyvy({{10, 10, 128, 128}}, 1, 0, 1);
    for (int x = 0; x < 16; ++x) EXPECT_EQ(px[x].g, 0) << x;
}

// ---- Alpha -------------------------------------------------------------------------------

// The fourth byte of pixels 0 and 1 from each kernel, on an aligned picture.
TEST_F(YuvToRgbKnownAnswers, ConstantAlphaWordAndDwordForms) {
    enum Form { kWord, kDword };
    struct Row {
        const char* name;
        const KernelQuad* quad;
        Form forms[4];
    };
    const Row kernels[] = {{"UYVY16I", &kUyvyToBgr32, {kWord, kWord, kWord, kWord}},
                           {"YUYV16I", &kYuyvToBgr32, {kWord, kDword, kDword, kDword}},
                           {"Y8PUV8I", &kPlanarToBgr32, {kWord, kDword, kDword, kDword}}};
    struct Value {
        uint32_t alpha_value;
        int word, even, odd;  // word form: every pixel; dword form: even and odd pixels
    };
    const Value values[] = {{0x000000FF, 255, 255, 0},  {0x00FF00FF, 255, 255, 255}, {0x12345, 255, 255, 1},
                            {0xFFFF, 0, 0, 0},          {0x80, 0x80, 0x80, 0},      {300, 255, 255, 0},
                            {0x7FFF0080, 0x80, 0x80, 255}, {0x80000010, 0x10, 0x10, 0}};
    alignas(16) uint8_t src[64] = {};
    alignas(16) uint8_t dst[64];
    for (const Row& k : kernels) {
        for (int variant = 0; variant < 4; ++variant) {
            for (const Value& v : values) {
                std::memset(dst, 0xAA, sizeof dst);
                ZenkConversionRequest r = Picture(src, 32, dst, 16, 1);
                r.alpha_value = v.alpha_value;
                k.quad->variant[variant](&r);
                const bool word = k.forms[variant] == kWord;
                SCOPED_TRACE(::testing::Message() << k.name << " variant " << variant << " 0x" << std::hex
                                                  << v.alpha_value);
                EXPECT_EQ(dst[3], word ? v.word : v.even);
                EXPECT_EQ(dst[7], word ? v.word : v.odd);
            }
        }
    }
}

// The head is the fewest pairs that take a supported line start to a 16-byte
// boundary: every 8-byte aligned start for BGR32, every even one for BGR24.
TEST_F(YuvToRgbKnownAnswers, HeadPairsReachTheFirstBoundary) {
    alignas(16) static uint8_t line[32];
    for (int offset = 0; offset < 16; offset += 2) {
        const int head24 = Bgr24HeadPairs(line + offset);
        EXPECT_EQ((offset + 6 * head24) % 16, 0) << offset;
        for (int fewer = 0; fewer < head24; ++fewer) EXPECT_NE((offset + 6 * fewer) % 16, 0) << offset;
        if (offset % 8 == 0) {
            EXPECT_EQ(Bgr32HeadPairs(line + offset), offset ? 1 : 0) << offset;
        }
    }
}

// ---- Layouts ---------------------------------------------------------------------------------

// ---- Pair modes --------------------------------------------------------------------------------

// ---- Plain entry points --------------------------------------------------------------------------

// They set no picture size, so they convert nothing; they still set up the
// coefficients, and ask the host only when the range argument is 1.
TEST_F(YuvToRgbKnownAnswers, PlainEntryPointsConvertNothingAndTakeFullRangeFromRange) {
    alignas(16) uint8_t src[256];
    alignas(16) uint8_t dst[512];
    for (int i = 0; i < 256; ++i) src[i] = static_cast<uint8_t>(i);
    for (int32_t range : {0, 1, 2}) {
        for (int entry = 0; entry < 4; ++entry) {
            std::memset(dst, 0x5C, sizeof dst);
            ZenkTestSettingsResetCounts();
            switch (entry) {
                case 0: ZENK_SSE2_UYVY16I_BGR32I(src, dst, 64, 16, 1, range, 0xFF); break;
                case 1: ZENK_SSE2_YUYV16I_BGR32I(src, dst, 64, 16, 0, range, 0xFF); break;
                case 2: ZENK_SSE2_UYVY16I_BGR24I(src, dst, 64, 16, 1, range); break;
                case 3: ZENK_SSE2_YUYV16I_BGR24I(src, dst, 64, 16, 0, range); break;
            }
            for (uint8_t b : dst) ASSERT_EQ(b, 0x5C) << "entry " << entry;
            EXPECT_EQ(ZenkTestSettingsLastOption(), range == 1 ? 128 : -1) << "entry " << entry << " range " << range;
        }
    }
}

}  // namespace
}  // namespace zenk::yuv_to_rgb
