// Raw files interoperate: what the tool writes is what the library, called
// directly by a host, makes of the same input, in the raw layouts a host
// uses; slicing a frame across threads changes no byte; the test cards are
// the documented ones, and so are the numbers the documentation gives for
// the library's arithmetic.
#include <array>
#include <sstream>

#include "support/test_picture.h"
#include "tool_runner.h"

namespace zenk::tool::test {
namespace {

// A frame of `f` as a host hands it to the library, zeroed (as the tool's
// own frames are, so bytes a conversion leaves alone match), lines back to
// back: the colour block (a Y8PUV8I chroma plane after its luma lines),
// then an IA8P format's alpha plane.
struct HostPicture {
    int32_t pitch, alpha_pitch;
    zenk::test::AlignedBytes colour, alpha;
    HostPicture(Format f, int32_t w, int32_t h)
        : pitch(Info(f).layout == Layout::Planar422 ? w : Info(f).colour_bytes_per_pixel * w),
          alpha_pitch(Info(f).alpha_plane ? w : 0),
          colour(size_t(pitch) * h * (Info(f).layout == Layout::Planar422 ? 2 : 1)),
          alpha(size_t(alpha_pitch) * h) {}
};

struct Settings {
    int32_t width, height;
    int vertical_mode = 0, scan_mode = 0;
    bool field_pair = false;
    int32_t src_matrix = 1, dst_matrix = 1;  // 1 is BT.601, 0 BT.709
    bool full_range = false, streaming = false, clamp_luma = true;
    uint32_t alpha_value = 77 | (77u << 16);  // --alpha 77; any other value is given as --alpha-word
    int threads = 1;
    std::string Flags() const {
        auto name = [](int32_t m) { return m == 1 ? " 601" : " 709"; };
        std::ostringstream f;
        f << "--size " << width << "x" << height << " --threads " << threads;
        if (alpha_value == (77 | (77u << 16))) f << " --alpha 77";
        else f << " --alpha-word " << alpha_value;
        // Named always: the default depends on the height.
        if (src_matrix != dst_matrix) f << " --src-matrix" << name(src_matrix) << " --dst-matrix" << name(dst_matrix);
        else f << " --matrix" << name(src_matrix);
        f << (full_range ? " --full-range" : "") << (streaming ? " --streaming" : "")
          << (clamp_luma ? " --clamp-luma" : "") << (field_pair ? " --field-pair" : "");
        if (vertical_mode) f << " --vertical-mode " << vertical_mode << " --scan-mode " << scan_mode;
        return f.str();
    }
};

// Converts every frame of `input` by calling the export directly.
Bytes ConvertDirectly(Format src, Format dst, const Settings& s, const Bytes& input) {
    // Line-pair modes: 1 and 2 reduce (a YUV destination also horizontally),
    // 3 doubles both ways.
    const int k = s.vertical_mode == 1 ? 2 : s.vertical_mode == 2 ? 4 : 1;
    int32_t dw = IsYuv(dst) ? s.width / k : s.width, dh = s.height / k;
    if (s.vertical_mode == 3) dw = 2 * s.width, dh = 2 * s.height;
    HostPicture in(src, s.width, s.height), out(dst, dw, dh);
    const size_t frame = in.colour.size() + in.alpha.size();
    Bytes result;
    for (size_t at = 0; src == Format::A8C ? at == 0 : at < input.size(); at += frame ? frame : 1) {
        if (frame) {
            std::copy_n(input.data() + at, in.colour.size(), in.colour.data());
            std::copy_n(input.data() + at + in.colour.size(), in.alpha.size(), in.alpha.data());
        }
        // Tight lines, so every skip is the pitch less a line's bytes: 0.
        // The line-pair modes advance source line starts instead: by the
        // pair step plus the skip (0), or when doubling by the skip alone (a
        // pitch).
        const ZenkConversionRequest r{
            .src_plane = src == Format::A8C ? nullptr : in.colour.data(), .src_width = s.width,
            .src_height = s.height, .src_stride = in.pitch, .src_skip = s.vertical_mode == 3 ? in.pitch : 0,
            .src_matrix = s.src_matrix, .src_range = s.full_range, .src_field_pair = s.field_pair,
            .src_alpha_plane = in.alpha.size() ? in.alpha.data() : nullptr, .src_alpha_stride = in.alpha_pitch,
            .dst_plane = out.colour.data(), .width = std::min(dw, s.width), .dst_height = dh, .dst_stride = out.pitch,
            .dst_matrix = s.dst_matrix, .dst_range = s.full_range, .dst_field_pair = s.field_pair,
            .dst_alpha_plane = out.alpha.size() ? out.alpha.data() : nullptr, .dst_alpha_stride = out.alpha_pitch,
            .alpha_value = s.alpha_value, .full_range = s.full_range, .use_streaming_stores = s.streaming,
            .clamp_luma = s.clamp_luma, .scan_mode = s.scan_mode, .vertical_mode = s.vertical_mode};
        TheLibrary().Find(src, dst)(&r);
        result = result + Bytes(out.colour.begin(), out.colour.end()) + Bytes(out.alpha.begin(), out.alpha.end());
    }
    return result;
}

// A source file of format `f` holding two frames of noise: every byte
// pattern is a valid picture in these formats, and every line differs from
// the others, so a line-pair mode that picks the wrong lines shows. Empty
// for the constant A8C.
std::string MakeSource(const Scratch& dir, Format f, int32_t w, int32_t h) {
    if (f == Format::A8C) return "";
    const std::string path = dir / ("source-" + Token(f) + "-" + std::to_string(w) + "x" + std::to_string(h));
    Bytes noise(static_cast<size_t>(2 * LayoutOf(f, w, h).total()));
    uint32_t x = 0x12345678u ^ static_cast<uint32_t>(f);
    for (uint8_t& b : noise) b = static_cast<uint8_t>((x = x * 1664525u + 1013904223u) >> 24);
    WriteBytes(path, noise);
    return path;
}

// The colour options reach the library as a host sets them: BT.601 studio
// range with clamped luma in every line-pair mode (each field of a pair in
// mode 2), and in frame mode BT.709 full range with streaming stores, and a
// change of matrix.
//
// Slicing a frame across threads changes no byte: slices start on lines that
// keep the planes' 16-byte residues, so the library picks the same kernel for
// every slice as for the whole frame. The sliced widths make pitches that are
// not multiples of 16, and the alpha word sets its two halves apart, as
// kernels with different variants read it differently. A pair that cannot be
// cut says so and runs whole.
TEST(ConvertInterop, EveryResolvedPairWritesWhatTheLibraryMakesOfTheInput) {
    Scratch dir;
    for (const Pair& p : AllPairs()) {
        if (!TheLibrary().Has(p.src, p.dst)) continue;
        std::vector<Settings> runs = {
            {.width = 40, .height = 8, .src_matrix = 0, .dst_matrix = 0, .full_range = true, .streaming = true,
             .clamp_luma = false},
            {.width = 40, .height = 8, .dst_matrix = 0},
            {.width = 22, .height = 37, .alpha_value = 255, .threads = 5},
            {.width = 64, .height = 37, .alpha_value = 255, .threads = 5}};
        for (int mode : p.vertical_modes)
            runs.push_back({.width = 40, .height = 8, .vertical_mode = mode, .scan_mode = mode == 0 ? 0 : mode == 2 ? 2 : 1,
                            .field_pair = mode == 2});
        for (Settings s : runs) {
            // A pair with one matrix takes it from --matrix: the change of
            // matrix is the YUV to YUV pairs'.
            if (!UsesOf(p).matrices) s.src_matrix = s.dst_matrix;
            const std::string source = MakeSource(dir, p.src, s.width, s.height);
            const auto line = s.Flags() + " --from " + Token(p.src) + " --to " + Token(p.dst) + " " + source + " @out";
            SCOPED_TRACE(line);
            const ToolResult r = RunOk(dir.Command(line));
            const bool whole = s.threads > 1 && (s.vertical_mode != 0 || Info(p.src).layout == Layout::Planar422);
            EXPECT_EQ(r.err.find("runs on one thread") != std::string::npos, whole) << r.err;
            const Bytes expected = ConvertDirectly(p.src, p.dst, s, source.empty() ? Bytes{} : ReadBytes(source));
            EXPECT_EQ(ReadBytes(dir / "out"), expected);
        }
    }
}

// The test cards, as BGRA bytes at known places of a 16x1 card: 100% bars
// at 255 and 75% bars at 191 (white, yellow, cyan, green, magenta, red,
// blue, black; two pixels each), a grey ramp in steps of 17, and 100% bars
// whose alpha ramps the same way. A card in another format is the library's
// conversion of these bytes, which the test above holds the tool to, in the
// raw layouts a host hands the library (a YUV format's bytes, the default
// BT.709 and an IA8P frame's alpha plane after its colour block included).
TEST(ConvertInterop, TestCardsHaveTheirLevels) {
    const struct {
        const char* card;
        size_t pixel;
        Bytes bgra;
    } rows[] = {
        {"bars100", 2, {0, 255, 255, 255}},  {"bars75", 0, {191, 191, 191, 255}},     {"bars75", 4, {191, 191, 0, 255}},
        {"bars75", 10, {0, 0, 191, 255}},    {"bars75", 15, {0, 0, 0, 255}},          {"ramp", 0, {0, 0, 0, 255}},
        {"ramp", 7, {119, 119, 119, 255}},   {"ramp", 15, {255, 255, 255, 255}},      {"keyed-bars", 0, {255, 255, 255, 0}},
        {"keyed-bars", 4, {255, 255, 0, 68}}, {"keyed-bars", 15, {0, 0, 0, 255}},
    };
    Scratch dir;
    for (const auto& row : rows) {
        SCOPED_TRACE(::testing::Message() << row.card << " pixel " << row.pixel);
        RunOk({"--test-card", row.card, "--size", "16x1", "--to", "BGR32I", dir / "card"});
        const Bytes card = ReadBytes(dir / "card");
        ASSERT_EQ(card.size(), 64u);
        EXPECT_EQ(Bytes(card.begin() + 4 * row.pixel, card.begin() + 4 * row.pixel + 4), row.bgra);
    }
}

// ---- Documented numbers ---------------------------------------------------------------------

// The numbers docs/zenk-convert.md and --help give for the library's
// arithmetic, measured through the tool as a user would: the documentation
// is held to them, and a change to the library's arithmetic shows here.
//
// Full-range encoding of a 256-pixel grey ramp (every level once): BT.601
// with the full-swing chroma set (host option 128 answered 1, the default)
// scales luma by 255/256, so levels 129 to 255 come out one low and white
// is 254; BT.709, and BT.601 studio range, keep every level.
TEST(ConvertQuirks, FullRangeGreyLevels) {
    const struct {
        const char* flags;
        int low, other_wrong, white;
    } rows[] = {
        {"--full-range --matrix 601", 127, 0, 254}, {"--full-range --matrix 709", 0, 0, 255},
    };
    Scratch dir;
    RunOk(dir.Command("--test-card ramp -s 256x1 --to BGR32I @ramp.bgra"));
    const Bytes ramp = ReadBytes(dir / "ramp.bgra");
    for (int level = 0; level < 256; ++level) ASSERT_EQ(ramp[4 * level], level) << "the ramp holds every level once";
    for (const auto& row : rows) {
        SCOPED_TRACE(row.flags);
        RunOk(dir.Command(std::string(row.flags) + " -s 256x1 --from BGRA --to UYVY @ramp.bgra @out.uyvy"));
        const Bytes out = ReadBytes(dir / "out.uyvy");
        int low = 0, other = 0;
        for (int level = 0; level < 256; ++level) {
            const int y = out[2 * level + 1];
            if (y == level - 1) ++low;
            else if (y != level) ++other;
        }
        EXPECT_EQ(low, row.low);
        EXPECT_EQ(other, row.other_wrong);
        EXPECT_EQ(out[2 * 255 + 1], row.white);
    }
}

// A change of matrix on 75% bars against encoding the bars in the new
// matrix directly: of the 18 Y, Cb and Cr values of the six colour bars, 9
// come out one low and none high, either way.
TEST(ConvertQuirks, ChangeOfMatrixOnBars) {
    Scratch dir;
    RunOk(dir.Command("--matrix 601 --test-card bars75 -s 128x2 --to UYVY @601.uyvy"));
    RunOk(dir.Command("--matrix 709 --test-card bars75 -s 128x2 --to UYVY @709.uyvy"));
    for (auto [from, to] : {std::array<const char*, 2>{"601", "709"}, {"709", "601"}}) {
        SCOPED_TRACE(std::string(from) + " to " + to);
        RunOk(dir.Command(std::string("--src-matrix ") + from + " --dst-matrix " + to + " -s 128x2 --from UYVY --to UYVY @" +
                          from + ".uyvy @changed.uyvy"));
        const Bytes changed = ReadBytes(dir / "changed.uyvy"), direct = ReadBytes(dir / (std::string(to) + ".uyvy"));
        int low = 0, other = 0;
        // Bars 1 to 6 (yellow to blue), 16 pixels each: their first pair.
        for (int bar = 1; bar <= 6; ++bar)
            for (int byte = 0; byte < 3; ++byte) {
                const int at = bar * 32 + byte, d = changed[at] - direct[at];
                if (d == -1) ++low;
                else if (d != 0) ++other;
            }
        EXPECT_EQ(low, 9);
        EXPECT_EQ(other, 0);
    }
}

}  // namespace
}  // namespace zenk::tool::test
