// PNG inputs of every colour type and depth read as the 8-bit values the
// file holds: 16-bit samples by their high byte, low-depth grey stretched to
// 0-255, palettes looked up, tRNS made alpha, and no gamma applied. Each
// file is written here with libpng, read by the tool, and compared with
// the values that went in.
#include <png.h>

#include <cstdio>

#include "tool_runner.h"

namespace zenk::tool::test {
namespace {

constexpr int kWidth = 7, kHeight = 3;  // odd, so that packed rows end inside a byte

struct PngCase {
    const char* name;
    int colour_type, depth;
    bool transparent = false;  // a tRNS chunk: palette alphas, or one grey or RGB key colour
    bool interlaced = false;
};

const std::vector<PngCase> kPngCases = {
    {"palette", PNG_COLOR_TYPE_PALETTE, 8},
    {"palette, 4 bits", PNG_COLOR_TYPE_PALETTE, 4},
    {"palette + tRNS", PNG_COLOR_TYPE_PALETTE, 8, true},
    {"grey 1", PNG_COLOR_TYPE_GRAY, 1},
    {"grey 2", PNG_COLOR_TYPE_GRAY, 2},
    {"grey 4", PNG_COLOR_TYPE_GRAY, 4},
    {"grey 8", PNG_COLOR_TYPE_GRAY, 8},
    {"grey 8 + tRNS key", PNG_COLOR_TYPE_GRAY, 8, true},
    {"grey 16", PNG_COLOR_TYPE_GRAY, 16},
    {"grey + alpha 8", PNG_COLOR_TYPE_GRAY_ALPHA, 8},
    {"grey + alpha 16", PNG_COLOR_TYPE_GRAY_ALPHA, 16},
    {"RGB 8", PNG_COLOR_TYPE_RGB, 8},
    {"RGB 16", PNG_COLOR_TYPE_RGB, 16},
    {"RGB 16 + tRNS key, interlaced", PNG_COLOR_TYPE_RGB, 16, true, true},
    {"RGBA 8", PNG_COLOR_TYPE_RGB_ALPHA, 8},
    {"RGBA 16", PNG_COLOR_TYPE_RGB_ALPHA, 16, false, true},
};

int Channels(int type) {
    return type == PNG_COLOR_TYPE_GRAY_ALPHA ? 2 : type == PNG_COLOR_TYPE_RGB ? 3 : type == PNG_COLOR_TYPE_RGB_ALPHA ? 4 : 1;
}

// Sample c of pixel i, anywhere in the depth's range; 16-bit samples have
// low bytes unlike their high bytes, so rounding instead of keeping the
// high byte would show.
unsigned Sample(int i, int c, int depth) {
    const unsigned v = static_cast<unsigned>(i * 37 + c * 101 + 13) % 256;
    if (depth == 16) return (v << 8) | (255 - v);
    return v % (1u << depth);
}

// Palette entry k, and its alpha in a tRNS chunk.
png_color PaletteColour(int k) { return {png_byte(k), png_byte(255 - k), png_byte(k * 7)}; }
png_byte PaletteAlpha(int k) { return png_byte(k * 13); }

// What the tool must read, as BGRA, for one pixel.
Bytes Expected(const PngCase& c, int i) {
    auto eight = [&](unsigned s) { return static_cast<uint8_t>(c.depth == 16 ? s >> 8 : s * 255 / ((1u << c.depth) - 1)); };
    if (c.colour_type == PNG_COLOR_TYPE_PALETTE) {
        const int index = static_cast<int>(Sample(i, 0, c.depth));
        const png_color p = PaletteColour(index);
        return {p.blue, p.green, p.red, c.transparent ? PaletteAlpha(index) : uint8_t{255}};
    }
    const int n = Channels(c.colour_type);
    const bool grey = n <= 2;
    const uint8_t r = eight(Sample(i, 0, c.depth)), g = grey ? r : eight(Sample(i, 1, c.depth)),
                  b = grey ? r : eight(Sample(i, 2, c.depth));
    uint8_t a = 255;
    if (n == 2 || n == 4) a = eight(Sample(i, n - 1, c.depth));
    // The key colour is pixel 1's: that pixel, and any other of its colour, is transparent.
    bool key = c.transparent;
    for (int ch = 0; ch < n && key; ++ch) key = Sample(i, ch, c.depth) == Sample(1, ch, c.depth);
    if (key) a = 0;
    return {b, g, r, a};
}

// Writes the case's PNG, with a gamma chunk that a linear-light reader would
// apply, and returns the BGRA bytes the tool must read from it.
Bytes WriteCase(const PngCase& c, const std::string& path) {
    std::vector<png_color> palette;
    Bytes palette_alpha;
    for (int k = 0; k < 256; ++k) palette.push_back(PaletteColour(k)), palette_alpha.push_back(PaletteAlpha(k));
    std::FILE* file = std::fopen(path.c_str(), "wb");
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png_create_info_struct(png);
    if (setjmp(png_jmpbuf(png))) {  // the test ends here, the writer's memory left to the process
        ADD_FAILURE() << "libpng could not write " << c.name;
        return {};
    }
    png_init_io(png, file);
    png_set_IHDR(png, info, kWidth, kHeight, c.depth, c.colour_type,
                 c.interlaced ? PNG_INTERLACE_ADAM7 : PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT,
                 PNG_FILTER_TYPE_DEFAULT);
    png_set_gAMA(png, info, 1.0 / 2.2);
    const int n = Channels(c.colour_type);
    if (c.colour_type == PNG_COLOR_TYPE_PALETTE) {
        png_set_PLTE(png, info, palette.data(), 1 << c.depth);
        if (c.transparent) png_set_tRNS(png, info, palette_alpha.data(), 1 << c.depth, nullptr);
    } else if (c.transparent) {
        const png_uint_16 red = Sample(1, 0, c.depth), green = Sample(1, 1, c.depth), blue = Sample(1, 2, c.depth);
        png_color_16 key{0, red, green, blue, red};  // grey cases key on the first sample
        png_set_tRNS(png, info, nullptr, 0, &key);
    }
    png_write_info(png, info);
    if (c.depth < 8) png_set_packing(png);  // one sample a byte in the rows below
    // Every row alike: pixel i's samples, big-endian at 16 bits.
    Bytes row, expected;
    for (int i = 0; i < kWidth; ++i)
        for (int ch = 0; ch < n; ++ch) {
            const unsigned s = Sample(i, ch, c.depth);
            if (c.depth == 16) row.push_back(static_cast<uint8_t>(s >> 8));
            row.push_back(static_cast<uint8_t>(s));
        }
    std::vector<png_bytep> pointers(kHeight, row.data());
    png_write_image(png, pointers.data());
    png_write_end(png, nullptr);
    png_destroy_write_struct(&png, &info);
    std::fclose(file);
    for (int i = 0; i < kHeight * kWidth; ++i) expected = expected + Expected(c, i % kWidth);
    return expected;
}

TEST(ConvertPng, EveryColourTypeAndDepthReadsAsTheValuesItHolds) {
    Scratch dir;
    for (const PngCase& c : kPngCases) {
        SCOPED_TRACE(c.name);
        const Bytes expected = WriteCase(c, dir / "in.png");
        RunOk({"--to", "BGR32I", dir / "in.png", dir / "out.bgra"});
        EXPECT_EQ(ReadBytes(dir / "out.bgra"), expected);
    }
}

}  // namespace
}  // namespace zenk::tool::test
