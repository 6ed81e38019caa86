// Raw files interoperate: what the tool writes is what the library, called
// directly by a host, makes of the same input; slicing a frame across
// threads changes no byte; the raw layouts and test cards are the documented
// ones.
#include <array>
#include <numeric>

#include "tool_runner.h"

namespace zenk::tool::test {
namespace {

// One plane as a host hands it to the library: zeroed (as the tool's own
// frames are, so bytes a conversion leaves alone match), on a 64-byte
// boundary, lines back to back.
struct HostPlane {
    Bytes storage;
    uint8_t* data;
    size_t bytes;
    int32_t pitch;
    HostPlane(size_t n, int32_t line) : storage(n + 64), bytes(n), pitch(line) {
        data = storage.data() + (64 - reinterpret_cast<uintptr_t>(storage.data()) % 64) % 64;
    }
};

// A frame of `f`: the colour block (a Y8PUV8I chroma plane after its luma
// lines), then an IA8P format's alpha plane.
struct HostPicture {
    HostPlane colour, alpha;
    HostPicture(Format f, int32_t w, int32_t h)
        : colour(size_t(Line(f, w)) * h * (Info(f).layout == Layout::Planar422 ? 2 : 1), Line(f, w)),
          alpha(Info(f).alpha_plane ? size_t(w) * h : 0, Info(f).alpha_plane ? w : 0) {}
    static int32_t Line(Format f, int32_t w) {
        return Info(f).layout == Layout::Planar422 ? w : Info(f).colour_bytes_per_pixel * w;
    }
};

struct Settings {
    int32_t width, height;
    int vertical_mode = 0, scan_mode = 0;
    bool field_pair = false;
    int32_t src_matrix = 1, dst_matrix = 1;  // 1 is BT.601, 0 BT.709
    bool full_range = false, streaming = false, clamp_luma = true;
    uint32_t alpha_value = 77 | (77u << 16);  // --alpha 77; any other value is given as --alpha-word
    int threads = 1;
    std::vector<std::string> Flags() const {
        auto name = [](int32_t m) { return m == 1 ? std::string("601") : std::string("709"); };
        std::vector<std::string> f = {"--size", std::to_string(width) + "x" + std::to_string(height), "--threads",
                                      std::to_string(threads)};
        if (alpha_value == (77 | (77u << 16))) f.insert(f.end(), {"--alpha", "77"});
        else f.insert(f.end(), {"--alpha-word", std::to_string(alpha_value)});
        if (src_matrix != dst_matrix) f.insert(f.end(), {"--src-matrix", name(src_matrix), "--dst-matrix", name(dst_matrix)});
        else if (src_matrix == 1) f.insert(f.end(), {"--matrix", "601"});  // BT.709 is the default
        if (full_range) f.push_back("--full-range");
        if (streaming) f.push_back("--streaming");
        if (clamp_luma) f.push_back("--clamp-luma");
        if (vertical_mode) f.insert(f.end(), {"--vertical-mode", std::to_string(vertical_mode)});
        if (scan_mode) f.insert(f.end(), {"--scan-mode", std::to_string(scan_mode)});
        if (field_pair) f.push_back("--field-pair");
        return f;
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
    const size_t frame = in.colour.bytes + in.alpha.bytes;
    Bytes result;
    for (size_t at = 0; src == Format::A8C ? at == 0 : at < input.size(); at += frame ? frame : 1) {
        if (frame) {
            std::copy_n(input.data() + at, in.colour.bytes, in.colour.data);
            std::copy_n(input.data() + at + in.colour.bytes, in.alpha.bytes, in.alpha.data);
        }
        ZenkConversionRequest r{};
        if (src != Format::A8C) r.src_plane = in.colour.data;
        r.src_width = s.width;
        r.src_height = s.height;
        r.src_stride = in.colour.pitch;
        // Tight lines, so every skip is the pitch less a line's bytes: 0.
        // The line-pair modes advance source line starts instead: by the
        // pair step plus the skip (0), or when doubling by the skip alone (a
        // pitch).
        r.src_skip = s.vertical_mode == 3 ? in.colour.pitch : 0;
        r.src_matrix = s.src_matrix;
        r.dst_matrix = s.dst_matrix;
        r.src_range = r.dst_range = r.full_range = s.full_range;
        r.use_streaming_stores = s.streaming;
        r.src_field_pair = r.dst_field_pair = s.field_pair;
        r.src_alpha_plane = in.alpha.bytes ? in.alpha.data : nullptr;
        r.src_alpha_stride = in.alpha.pitch;
        r.dst_plane = out.colour.data;
        r.width = std::min(dw, s.width);
        r.dst_height = dh;
        r.dst_stride = out.colour.pitch;
        r.dst_alpha_plane = out.alpha.bytes ? out.alpha.data : nullptr;
        r.dst_alpha_stride = out.alpha.pitch;
        r.alpha_value = s.alpha_value;
        r.clamp_luma = s.clamp_luma;
        r.scan_mode = s.scan_mode;
        r.vertical_mode = s.vertical_mode;
        TheLibrary().Find(src, dst)(&r);
        result.insert(result.end(), out.colour.data, out.colour.data + out.colour.bytes);
        result.insert(result.end(), out.alpha.data, out.alpha.data + out.alpha.bytes);
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
    int checked = 0;
    for (const Pair& p : AllPairs()) {
        if (!TheLibrary().Has(p.src, p.dst)) continue;
        std::vector<Settings> runs;
        for (int mode : p.vertical_modes) {
            Settings s{40, 8};
            s.vertical_mode = mode;
            s.scan_mode = mode == 0 ? 0 : mode == 2 ? 2 : 1;
            s.field_pair = mode == 2;
            runs.push_back(s);
        }
        Settings full{40, 8}, changed{40, 8};
        full.src_matrix = full.dst_matrix = 0;
        full.full_range = full.streaming = true;
        full.clamp_luma = false;
        changed.dst_matrix = 0;
        runs.insert(runs.end(), {full, changed});
        for (const int32_t width : {22, 64}) {
            Settings sliced{width, 37};
            sliced.threads = 5;
            sliced.alpha_value = 255;
            runs.push_back(sliced);
        }
        for (const Settings& s : runs) {
            const std::string source = MakeSource(dir, p.src, s.width, s.height);
            std::vector<std::string> args = s.Flags();
            args.insert(args.end(), {"--from", Token(p.src), "--to", Token(p.dst)});
            if (!source.empty()) args.push_back(source);
            args.push_back(dir / "out");
            SCOPED_TRACE(std::accumulate(args.begin(), args.end(), std::string(), [](auto a, auto b) { return a + " " + b; }));
            const ToolResult r = RunOk(args);
            const bool whole = s.threads > 1 && (s.vertical_mode != 0 || Info(p.src).layout == Layout::Planar422);
            EXPECT_EQ(r.err.find("runs on one thread") != std::string::npos, whole) << r.err;
            const Bytes expected = ConvertDirectly(p.src, p.dst, s, source.empty() ? Bytes{} : ReadBytes(source));
            EXPECT_EQ(ReadBytes(dir / "out"), expected);
            ++checked;
        }
    }
    EXPECT_GE(checked, 5 * 14);  // the RGB and alpha pairs at least
}

// The test cards, as BGRA: 100% bars at 255 and 75% bars at 191 (white,
// yellow, cyan, green, magenta, red, blue, black; two pixels each), a grey
// ramp in steps of 17, and 100% bars whose alpha ramps the same way.
TEST(ConvertInterop, TestCardsHaveTheirLevels) {
    struct Row {
        const char* card;
        size_t pixel;
        Bytes bgra;
    };
    const Row rows[] = {{"bars100", 2, {0, 255, 255, 255}},   {"bars75", 0, {191, 191, 191, 255}},
                        {"bars75", 4, {191, 191, 0, 255}},    {"bars75", 10, {0, 0, 191, 255}},
                        {"bars75", 15, {0, 0, 0, 255}},
                        {"ramp", 0, {0, 0, 0, 255}},          {"ramp", 7, {119, 119, 119, 255}},
                        {"ramp", 15, {255, 255, 255, 255}},   {"keyed-bars", 0, {255, 255, 255, 0}},
                        {"keyed-bars", 4, {255, 255, 0, 68}}, {"keyed-bars", 15, {0, 0, 0, 255}}};
    Scratch dir;
    for (const Row& row : rows) {
        RunOk({"--test-card", row.card, "--size", "16x1", "--to", "BGR32I", dir / "card"});
        const Bytes card = ReadBytes(dir / "card");
        ASSERT_EQ(card.size(), 64u);
        EXPECT_EQ(Bytes(card.begin() + 4 * row.pixel, card.begin() + 4 * row.pixel + 4), row.bgra)
            << row.card << " pixel " << row.pixel;
    }
}

// The YUV raw layouts are the documented ones: studio-range white (Y 235)
// and black (Y 16), both with Cb = Cr = 128, and yellow (low Cb, high Cr) of
// the 100% bars land where uyvy422, yuyv422, nv16 and vuya put their
// samples; an IA8P frame carries its alpha plane after the colour block.
TEST(ConvertInterop, YuvRawLayoutsPutEverySampleInItsDocumentedPlace) {
    Scratch dir;
    constexpr int kW = 16;  // eight bars of one pixel pair each
    // Byte offsets of Y0, Y1, Cb, Cr of pixel pair p within the frame.
    auto offsets = [&](Format f, int p) -> std::array<int, 4> {
        if (Info(f).layout == Layout::Planar422) return {2 * p, 2 * p + 1, kW + 2 * p, kW + 2 * p + 1};
        if (Info(f).layout == Layout::Packed444Alpha) return {8 * p + 2, 8 * p + 6, 8 * p + 1, 8 * p};
        const std::string token = Token(f);
        if (token.rfind("UYVY", 0) == 0) return {4 * p + 1, 4 * p + 3, 4 * p, 4 * p + 2};
        if (token.rfind("YUYV", 0) == 0) return {4 * p, 4 * p + 2, 4 * p + 1, 4 * p + 3};
        return {4 * p + 2, 4 * p + 3, 4 * p, 4 * p + 1};  // UVYY
    };
    int checked = 0;
    for (const FormatInfo& info : AllFormats()) {
        const Format f = info.format;
        if (!IsYuv(f)) continue;
        const bool via_uyvy = f == Format::V8U8Y8A8I;  // made from 4:2:2 only
        const Format made = via_uyvy ? Format::UYVY16I : f;
        if (!TheLibrary().Has(Format::BGR32I, made) || (via_uyvy && !TheLibrary().Has(made, f))) continue;
        SCOPED_TRACE(Token(f));
        RunOk({"--test-card", "bars100", "--size", "16x1", "--to", Token(made), dir / (via_uyvy ? "uyvy" : "out")});
        if (via_uyvy) RunOk({"--alpha", "9", "--from", "UYVY16I", "--size", "16x1", "--to", Token(f), dir / "uyvy", dir / "out"});
        const Bytes frame = ReadBytes(dir / "out");
        ASSERT_EQ(static_cast<int64_t>(frame.size()), LayoutOf(f, kW, 1).total());
        for (const auto& [pair, luma] : {std::pair<int, uint8_t>{0, 235}, {7, 16}}) {
            const auto at = offsets(f, pair);
            EXPECT_EQ((Bytes{frame[at[0]], frame[at[1]], frame[at[2]], frame[at[3]]}), (Bytes{luma, luma, 128, 128}))
                << "pair " << pair;
        }
        EXPECT_LT(frame[offsets(f, 1)[2]], 64);
        EXPECT_GT(frame[offsets(f, 1)[3]], 128);
        if (via_uyvy) EXPECT_EQ(frame[3], 9);                 // vuya's A
        if (Info(f).alpha_plane) EXPECT_EQ(frame.back(), 255);  // the opaque card's alpha plane
        ++checked;
    }
    if (checked == 0) GTEST_SKIP() << "this library writes no YUV format from BGR32I";
}

}  // namespace
}  // namespace zenk::tool::test
