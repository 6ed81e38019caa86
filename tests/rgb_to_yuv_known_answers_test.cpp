// Known answers of the RGB-to-YUV encoders: the coefficient block, black,
// white and grey in every weight set, 75% colour bars against their
// published code values, the clamps and the BGR24 single pair's neighbour
// dependence. (The alpha planes are covered by the differential tests.)
#include <gtest/gtest.h>

#include <array>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "frame/host_option.h"
#include "rgb_to_yuv/coefficients.h"
#include "support/counting_host_settings.h"
#include "support/host_option_fixture.h"
#include "zenk_transcoder.h"

namespace zenk::test {
namespace {

using rgb_to_yuv::RgbToYuvCoefficients;
using rgb_to_yuv::SetupRgbToYuvCoefficients;
using Request = ZenkConversionRequest;

struct Rgb {
    uint8_t r, g, b;
};

enum class Layout { kUyvy, kYuyv, kUvyy, kY8Uv };

struct Converter {
    const char* name;
    ZenkConvertFunction convert;
    int source_bytes;  // 4: BGR32I, 3: BGR24I
    Layout layout;
};

const Converter kConverters[] = {
    {"BGR32I_UYVY16I", ZENK_SSE2_BGR32I_UYVY16I_EX, 4, Layout::kUyvy},
    {"BGR32I_YUYV16I", ZENK_SSE2_BGR32I_YUYV16I_EX, 4, Layout::kYuyv},
    {"BGR32I_UVYY16I", ZENK_SSE2_BGR32I_UVYY16I_EX, 4, Layout::kUvyy},
    {"BGR32I_Y8PUV8I", ZENK_SSE2_BGR32I_Y8PUV8I_EX, 4, Layout::kY8Uv},
    {"BGR24I_UYVY16I", ZENK_SSE2_BGR24I_UYVY16I_EX, 3, Layout::kUyvy},
    {"BGR24I_YUYV16I", ZENK_SSE2_BGR24I_YUYV16I_EX, 3, Layout::kYuyv},
    {"BGR24I_UVYY16I", ZENK_SSE2_BGR24I_UVYY16I_EX, 3, Layout::kUvyy},
    {"BGR24I_Y8PUV8I", ZENK_SSE2_BGR24I_Y8PUV8I_EX, 3, Layout::kY8Uv},
};

// One encoded line: luma per pixel, chroma per pair.
struct Line {
    std::vector<int> y, cb, cr;
};

struct Options {
    int32_t matrix = 1;
    bool full_range = false;
    bool clamp_luma = false;
    uint8_t streaming = 0;
    size_t dst_offset = 0;  // destination bytes past a 16-byte boundary
};

// Converts one line of `pixels` (the line's width is pixels.size(); `extra`
// more pixels follow it in memory, readable but not part of the line).
Line Encode(const Converter& c, const std::vector<Rgb>& pixels, const Options& o, size_t extra = 0) {
    const int32_t width = static_cast<int32_t>(pixels.size() - extra);
    alignas(16) uint8_t src[4 * 80] = {};
    alignas(16) uint8_t dst[2 * 80 + 32];
    std::memset(dst, 0xEE, sizeof dst);
    for (size_t i = 0; i < pixels.size(); ++i) {
        uint8_t* p = src + c.source_bytes * i;
        p[0] = pixels[i].b;
        p[1] = pixels[i].g;
        p[2] = pixels[i].r;
        if (c.source_bytes == 4) p[3] = static_cast<uint8_t>(37 * i);  // never read into the colour
    }
    Request r{};
    r.src_plane = src;
    r.src_height = 1;
    r.src_stride = 320;
    r.dst_plane = dst + o.dst_offset;
    r.width = width;
    r.dst_height = 1;
    r.dst_stride = 80;  // Y8PUV8I: the chroma line follows at dst_plane + 80
    r.dst_matrix = o.matrix;
    r.full_range = o.full_range;
    r.clamp_luma = o.clamp_luma;
    r.use_streaming_stores = o.streaming;
    c.convert(&r);
    Line line;
    const uint8_t* out = dst + o.dst_offset;
    for (int32_t x = 0; x + 1 < width; x += 2) {
        const uint8_t* q = out + 2 * x;
        int y0 = 0, y1 = 0, cb = 0, cr = 0;
        switch (c.layout) {
            case Layout::kUyvy: cb = q[0]; y0 = q[1]; cr = q[2]; y1 = q[3]; break;
            case Layout::kYuyv: y0 = q[0]; cb = q[1]; y1 = q[2]; cr = q[3]; break;
            case Layout::kUvyy: cb = q[0]; cr = q[1]; y0 = q[2]; y1 = q[3]; break;
            case Layout::kY8Uv: y0 = out[x]; y1 = out[x + 1]; cb = out[80 + x]; cr = out[80 + x + 1]; break;
        }
        line.y.insert(line.y.end(), {y0, y1});
        line.cb.push_back(cb);
        line.cr.push_back(cr);
    }
    return line;
}

std::vector<Rgb> Uniform(Rgb colour, size_t n = 8) { return std::vector<Rgb>(n, colour); }

class RgbToYuvKnownAnswers : public WithHostSettings<> {
protected:
    static void HostOption(int32_t answer) { AnswerHostOption(answer); }
};

// ---- The coefficient block ---------------------------------------------------------------

struct alignas(16) Targets {
    __m128i offset, luma_a, luma_b, chroma_a, chroma_b, chroma_c, chroma_d, min, max;
};

std::array<int16_t, 8> Words(const __m128i& v) {
    std::array<int16_t, 8> w;
    std::memcpy(w.data(), &v, 16);
    return w;
}

RgbToYuvCoefficients Block(Targets& t, uint32_t matrix, uint8_t full_range, uint8_t point_sampled,
                           uint32_t bit_depth = 8, uint8_t clamp = 0) {
    std::memset(&t, 0x5A, sizeof t);
    return {matrix,        0,           bit_depth,   point_sampled, clamp,     full_range, &t.offset, &t.luma_a,
            &t.luma_b,     &t.chroma_a, &t.chroma_b, &t.chroma_c,   &t.chroma_d, &t.min,     &t.max};
}

bool Untouched(const __m128i& v) {
    for (int16_t w : Words(v))
        if (w != 0x5A5A) return false;
    return true;
}

// Every vector holds one word quad twice.
bool RepeatsQuad(const __m128i& v) {
    const auto w = Words(v);
    return std::equal(w.begin(), w.begin() + 4, w.begin() + 4);
}

TEST_F(RgbToYuvKnownAnswers, PerPixelAndPointSampledLayoutsAgreeInEveryWeightSet) {
    for (uint32_t matrix : {0u, 1u, 2u, 0xFFFFFFFFu}) {
        for (uint8_t full_range : {0, 1}) {
            for (int32_t answer : {0, 1}) {
                HostOption(answer);
                Targets point, per_pixel;
                RgbToYuvCoefficients a = Block(point, matrix, full_range, 1);
                RgbToYuvCoefficients b = Block(per_pixel, matrix, full_range, 0);
                SetupRgbToYuvCoefficients(&a);
                SetupRgbToYuvCoefficients(&b);
                SCOPED_TRACE(::testing::Message() << "matrix " << matrix << " full " << int(full_range) << " option "
                                                  << answer);
                // The point-sampled layout leaves its third and fourth vectors alone.
                EXPECT_TRUE(Untouched(point.chroma_c));
                EXPECT_TRUE(Untouched(point.chroma_d));
                for (const __m128i* v : {&point.luma_a, &point.luma_b, &point.chroma_a, &point.chroma_b,
                                         &per_pixel.chroma_a, &per_pixel.chroma_b, &per_pixel.chroma_c,
                                         &per_pixel.chroma_d})
                    EXPECT_TRUE(RepeatsQuad(*v));
                const auto la = Words(point.luma_a), lb = Words(point.luma_b);
                const auto pa = Words(point.chroma_a), pb = Words(point.chroma_b);
                const auto cba = Words(per_pixel.chroma_a), cbb = Words(per_pixel.chroma_b);
                const auto cra = Words(per_pixel.chroma_c), crb = Words(per_pixel.chroma_d);
                // Luma: (Kb, Kg, 0, Kb) and (Kr, 0, Kg, Kr).
                EXPECT_EQ(la[2], 0);
                EXPECT_EQ(la[3], la[0]);
                EXPECT_EQ(lb[1], 0);
                EXPECT_EQ(lb[2], la[1]);
                EXPECT_EQ(lb[3], lb[0]);
                // Per pixel: Cb (CbB, CbG, 0, CbB), (CbR, 0, CbG, CbR); Cr likewise.
                for (const auto* q : {&cba, &cra}) EXPECT_TRUE((*q)[2] == 0 && (*q)[3] == (*q)[0]);
                for (const auto* q : {&cbb, &crb}) EXPECT_TRUE((*q)[1] == 0 && (*q)[3] == (*q)[0]);
                EXPECT_EQ(cbb[2], cba[1]);
                EXPECT_EQ(crb[2], cra[1]);
                // Point-sampled: Cb's first half and Cr's second.
                EXPECT_EQ(pa, (std::array<int16_t, 8>{cba[0], cba[1], 0, cra[0], cba[0], cba[1], 0, cra[0]}));
                EXPECT_EQ(pb, (std::array<int16_t, 8>{cbb[0], 0, crb[2], crb[0], cbb[0], 0, crb[2], crb[0]}));
                // Colour differences: Cb sums to zero; Cr within one unit.
                EXPECT_EQ(cba[0] + cba[1] + cbb[0], 0);
                EXPECT_LE(std::abs(cra[0] + cra[1] + crb[0]), 1);
                EXPECT_EQ(Words(point.offset)[0], full_range ? 0 : 16);
            }
        }
    }
}

TEST_F(RgbToYuvKnownAnswers, HostOptionIsAskedOnlyForFullRange) {
    Targets t;
    for (uint8_t full_range : {0, 1, 9}) {
        ZenkTestSettingsResetCounts();
        RgbToYuvCoefficients c = Block(t, 1, full_range, 1);
        SetupRgbToYuvCoefficients(&c);
        EXPECT_EQ(ZenkTestSettingsLastOption(), full_range ? 128 : -1) << int(full_range);
    }
}

TEST_F(RgbToYuvKnownAnswers, ClampVectorsAndAnUnsupportedBitDepth) {
    struct Row {
        uint32_t bit_depth;
        uint8_t clamp;
        int16_t min, max;
    };
    const Row rows[] = {{8, 0, 0, 255}, {8, 1, 16, 235}, {8, 200, 16, 235}, {10, 1, 16, 235}, {0, 0, 0, 255}};
    for (const Row& row : rows) {
        Targets t;
        RgbToYuvCoefficients c = Block(t, 1, 0, 1, row.bit_depth, row.clamp);
        SetupRgbToYuvCoefficients(&c);
        EXPECT_EQ(Words(t.min), (std::array<int16_t, 8>{row.min, row.min, row.min, row.min, row.min, row.min,
                                                         row.min, row.min}));
        EXPECT_EQ(Words(t.max), (std::array<int16_t, 8>{row.max, row.max, row.max, row.max, row.max, row.max,
                                                         row.max, row.max}));
        // No weight set for other depths: the offset and weights stay as they were.
        EXPECT_EQ(Untouched(t.offset), row.bit_depth != 8) << row.bit_depth;
        EXPECT_EQ(Untouched(t.luma_a), row.bit_depth != 8) << row.bit_depth;
    }
}

// ---- Black, white and grey -------------------------------------------------------------------

TEST_F(RgbToYuvKnownAnswers, BlackWhiteAndGreyInEveryWeightSet) {
    struct Row {
        int32_t matrix;
        bool full_range;
        int32_t option;
        int black, white, grey;
    };
    // Studio luma 16..235 (grey 128 becomes 16 + 110); full-range BT.601
    // with full-swing chroma stops at 254, every other full set reaches 255.
    const Row rows[] = {
        {1, false, 1, 16, 235, 126}, {0, false, 1, 16, 235, 126}, {2, false, 0, 16, 235, 126},
        {-1, false, 0, 16, 235, 126}, {1, true, 1, 0, 254, 128},   {1, true, 0, 0, 255, 128},
        {0, true, 1, 0, 255, 128},   {0, true, 0, 0, 255, 128},   {2, true, 1, 0, 255, 128},
        {-1, true, 0, 0, 255, 128},  {1, true, 7, 0, 254, 128},
    };
    for (const Converter& c : kConverters) {
        for (const Row& row : rows) {
            HostOption(row.option);
            Options o;
            o.matrix = row.matrix;
            o.full_range = row.full_range;
            const Line black = Encode(c, Uniform({0, 0, 0}), o);
            const Line white = Encode(c, Uniform({255, 255, 255}), o);
            const Line grey = Encode(c, Uniform({128, 128, 128}), o);
            SCOPED_TRACE(::testing::Message() << c.name << " matrix " << row.matrix << " full " << row.full_range
                                              << " option " << row.option);
            for (int x = 0; x < 8; ++x) {
                EXPECT_EQ(black.y[x], row.black);
                EXPECT_EQ(white.y[x], row.white);
                EXPECT_EQ(grey.y[x], row.grey);
            }
            for (const Line* l : {&black, &white, &grey})
                for (int p = 0; p < 4; ++p) EXPECT_TRUE(l->cb[p] == 128 && l->cr[p] == 128);
        }
    }
}

// ---- 75% colour bars ---------------------------------------------------------------------------

// The published 8-bit studio-range code values of 75% bars (BT.601: EBU
// bars as in ITU-R BT.801; BT.709: SMPTE RP 219), from RGB 191 = 75% of
// 255. The fixed-point arithmetic lands within one code of each.
TEST_F(RgbToYuvKnownAnswers, SeventyFivePercentBarsMatchPublishedCodeValues) {
    struct Bar {
        const char* name;
        Rgb rgb;
        int y601, cb601, cr601, y709, cb709, cr709;
    };
    const Bar bars[] = {
        {"white", {191, 191, 191}, 180, 128, 128, 180, 128, 128},
        {"yellow", {191, 191, 0}, 162, 44, 142, 168, 44, 136},
        {"cyan", {0, 191, 191}, 131, 156, 44, 145, 147, 44},
        {"green", {0, 191, 0}, 112, 72, 58, 133, 63, 52},
        {"magenta", {191, 0, 191}, 84, 184, 198, 63, 193, 204},
        {"red", {191, 0, 0}, 65, 100, 212, 51, 109, 212},
        {"blue", {0, 0, 191}, 35, 212, 114, 28, 212, 120},
        {"black", {0, 0, 0}, 16, 128, 128, 16, 128, 128},
    };
    for (const Converter& c : kConverters) {
        for (const Bar& bar : bars) {
            for (int32_t matrix : {1, 0}) {
                Options o;
                o.matrix = matrix;
                const Line l = Encode(c, Uniform(bar.rgb), o);
                const bool bt601 = matrix == 1;
                SCOPED_TRACE(::testing::Message() << c.name << " " << bar.name << (bt601 ? " BT.601" : " BT.709"));
                EXPECT_NEAR(l.y[0], bt601 ? bar.y601 : bar.y709, 1);
                EXPECT_NEAR(l.cb[0], bt601 ? bar.cb601 : bar.cb709, 1);
                EXPECT_NEAR(l.cr[0], bt601 ? bar.cr601 : bar.cr709, 1);
            }
        }
    }
}

// ---- Point sampling and clamps ------------------------------------------------------------------

TEST_F(RgbToYuvKnownAnswers, ChromaIsPointSampledAndSaturatesWithFullSwing) {
    // Even pixel pure blue, odd pixel pure red: the pair carries the largest
    // Cb and the largest Cr at once (256 saturated to 255).
    std::vector<Rgb> pixels;
    for (int i = 0; i < 4; ++i) pixels.insert(pixels.end(), {{0, 0, 255}, {255, 0, 0}});
    HostOption(1);
    Options o;
    o.full_range = true;
    o.clamp_luma = true;  // a luma clamp leaves chroma alone
    for (const Converter& c : kConverters) {
        const Line l = Encode(c, pixels, o);
        for (int p = 0; p < 4; ++p) {
            EXPECT_EQ(l.cb[p], 255) << c.name;
            EXPECT_EQ(l.cr[p], 255) << c.name;
        }
    }
    // Reversed, both reach their minimum, 0.
    std::vector<Rgb> reversed;
    for (int i = 0; i < 4; ++i) reversed.insert(reversed.end(), {{255, 255, 0}, {0, 255, 255}});
    for (const Converter& c : kConverters) {
        const Line l = Encode(c, reversed, o);
        EXPECT_EQ(l.cb[0], 0) << c.name;
        EXPECT_EQ(l.cr[0], 0) << c.name;
    }
}

// The planar luma clamp limits pixels 2 and 3 of every four only, by their
// index in the line, whether a pixel comes through a block or a single pair.
TEST_F(RgbToYuvKnownAnswers, PlanarLumaClampLimitsPixelsTwoAndThreeOfEveryFour) {
    struct Row {
        int32_t matrix;
        int32_t option;
        int white;
    };
    const Row rows[] = {{1, 1, 254}, {1, 0, 255}, {0, 1, 255}};
    for (const Converter& c : kConverters) {
        if (c.layout != Layout::kY8Uv) continue;
        for (const Row& row : rows) {
            for (size_t offset : {0, 1, 4, 6, 12}) {
                for (size_t width : {8, 24, 34}) {
                    HostOption(row.option);
                    Options o;
                    o.matrix = row.matrix;
                    o.full_range = true;
                    o.clamp_luma = true;
                    o.dst_offset = offset;
                    // Two more pixels of the same colour: a BGR24 last single pair reads them.
                    const Line white = Encode(c, Uniform({255, 255, 255}, width + 2), o, 2);
                    const Line black = Encode(c, Uniform({0, 0, 0}, width + 2), o, 2);
                    for (size_t x = 0; x < width; ++x) {
                        const bool clamped = x % 4 >= 2;
                        EXPECT_EQ(white.y[x], clamped ? 235 : row.white) << c.name << " x " << x << " +" << offset;
                        EXPECT_EQ(black.y[x], clamped ? 16 : 0) << c.name << " x " << x << " +" << offset;
                    }
                }
            }
        }
    }
}

// ---- The BGR24 single pair -----------------------------------------------------------------------

// A BGR24 pair converted on its own takes R0 from pixel 2 and G1, R1 from
// pixel 3: (B0, G0, R2) and (B1, G3, R3) are what it encodes. The same
// pixels in a block encode as they are.
TEST_F(RgbToYuvKnownAnswers, Bgr24SinglePairDependsOnTheNextPair) {
    const Rgb p0{30, 20, 10}, p1{60, 50, 40}, p2{200, 80, 70}, p3{250, 100, 90};
    const std::vector<Rgb> line{p0, p1, p2, p3};
    const std::vector<Rgb> mixed{{p2.r, p0.g, p0.b}, {p3.r, p3.g, p1.b}};
    for (const Converter& c : kConverters) {
        if (c.source_bytes != 3) continue;
        for (int32_t matrix : {0, 1}) {
            Options o;
            o.matrix = matrix;
            o.dst_offset = 4;  // any alignment: a width of 2 is one single pair
            // Width 2, with pixels 2 and 3 readable after the line.
            const Line single = Encode(c, line, o, 2);
            // The mixed pixels as a uniform line through the aligned kernel's
            // blocks give the values the single pair must have.
            Options aligned = o;
            aligned.dst_offset = 0;
            const Line even = Encode(c, Uniform(mixed[0]), aligned), odd = Encode(c, Uniform(mixed[1]), aligned);
            EXPECT_EQ(single.y[0], even.y[0]) << c.name;
            EXPECT_EQ(single.cb[0], even.cb[0]) << c.name;
            EXPECT_EQ(single.y[1], odd.y[1]) << c.name;
            EXPECT_EQ(single.cr[0], odd.cr[0]) << c.name;
            // The block path does not look at the next pair.
            std::vector<Rgb> block{p0, p1, p0, p1, p0, p1, p0, p1};
            const Line body = Encode(c, block, aligned);
            const Line alone = Encode(c, {p0, p1, p0, p1}, o, 2);
            EXPECT_NE(single.y[0], body.y[0]) << c.name;
            EXPECT_EQ(alone.y[0], body.y[0]) << c.name;  // repeated pixels: both paths agree
            EXPECT_EQ(alone.cr[0], body.cr[0]) << c.name;
        }
    }
}

// ---- Plain entry points --------------------------------------------------------------------------

}  // namespace
}  // namespace zenk::test
