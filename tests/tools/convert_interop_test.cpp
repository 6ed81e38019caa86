// Raw files interoperate: what the tool writes is what the library, called
// directly by a host, makes of the same input; slicing a frame across
// threads changes no byte; the raw layouts are the documented ones.
#include <numeric>

#include "tool_runner.h"

namespace zenk::tool::test {
namespace {

// A picture as a host would hand it to the library: each plane on its own
// 64-byte boundary, lines back to back.
struct HostPicture {
    // Zeroed, as the tool's own frames are: a conversion that leaves bytes
    // unwritten leaves them the same in both.
    struct Plane {
        Bytes storage;
        uint8_t* data = nullptr;
        size_t bytes = 0;
        int32_t pitch = 0;
        Plane(size_t n, int32_t line) : storage(n + 64), bytes(n), pitch(line) {
            data = storage.data() + (64 - reinterpret_cast<uintptr_t>(storage.data()) % 64) % 64;
        }
    };
    Plane colour, alpha;

    HostPicture(Format f, int32_t w, int32_t h)
        : colour(ColourBytes(f, w, h), Info(f).layout == Layout::Planar422 ? w : Info(f).colour_bytes_per_pixel * w),
          alpha(Info(f).alpha_plane ? size_t(w) * h : 0, Info(f).alpha_plane ? w : 0) {}
    static size_t ColourBytes(Format f, int32_t w, int32_t h) {
        const bool planar = Info(f).layout == Layout::Planar422;
        return size_t(planar ? w : Info(f).colour_bytes_per_pixel * w) * h * (planar ? 2 : 1);
    }
    void Load(const uint8_t* bytes) {
        std::copy(bytes, bytes + colour.bytes, colour.data);
        std::copy(bytes + colour.bytes, bytes + colour.bytes + alpha.bytes, alpha.data);
    }
    void Store(Bytes& out) const {
        out.insert(out.end(), colour.data, colour.data + colour.bytes);
        out.insert(out.end(), alpha.data, alpha.data + alpha.bytes);
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
    const ZenkConvertFunction convert = TheLibrary().Find(src, dst);
    Bytes result;
    for (size_t at = 0; src == Format::A8C ? at == 0 : at < input.size(); at += frame ? frame : 1) {
        if (frame) in.Load(input.data() + at);
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
        convert(&r);
        out.Store(result);
    }
    return result;
}

// A source file of format `f` holding two frames: two test cards made by the
// tool where the library can make `f`, otherwise noise (every byte pattern
// is a valid picture in these formats). Empty for the constant A8C.
std::string MakeSource(const Scratch& dir, Format f, int32_t w, int32_t h) {
    const std::string path = dir / ("source-" + Token(f) + "-" + std::to_string(w) + "x" + std::to_string(h));
    if (f == Format::A8C) return "";
    if (std::filesystem::exists(path)) return path;  // made earlier in this test
    if (f != Format::BGR32I && !TheLibrary().Has(Format::BGR32I, f)) {
        Bytes noise(static_cast<size_t>(2 * LayoutOf(f, w, h).total()));
        uint32_t x = 0x12345678u ^ static_cast<uint32_t>(f);
        for (uint8_t& b : noise) b = static_cast<uint8_t>((x = x * 1664525u + 1013904223u) >> 24);
        WriteBytes(path, noise);
        return path;
    }
    const std::string size = std::to_string(w) + "x" + std::to_string(h);
    Bytes frames;
    for (const char* card : {"keyed-bars", "bars75"}) {
        RunOk({"--matrix", "601", "--test-card", card, "--size", size, "--to", Token(f), path});
        const Bytes one = ReadBytes(path);
        frames.insert(frames.end(), one.begin(), one.end());
    }
    WriteBytes(path, frames);
    return path;
}

// The interleaved format of an IA8P format's colour block.
Format ColourOf(Format f) {
    if (!Info(f).alpha_plane) return f;
    const std::string_view token = Info(f).token;
    return *ParseFormat(token.substr(0, token.size() - 3));
}

std::vector<std::string> ToolArgs(const Pair& p, const Settings& s, const std::string& in, const std::string& out) {
    std::vector<std::string> args = s.Flags();
    args.insert(args.end(), {"--from", Token(p.src), "--to", Token(p.dst)});
    if (!in.empty()) args.push_back(in);
    args.push_back(out);
    return args;
}

// The colour options reach the library as a host sets them: BT.601 studio
// range with clamped luma in every line-pair mode, and in frame mode BT.709
// full range with streaming stores, and a change of matrix.
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
            const std::vector<std::string> args = ToolArgs(p, s, source, dir / "out");
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

// The test cards' levels and their BGRA order: 100% bars at 255, 75% bars
// at 191 ending in black, a rising ramp, and keyed bars whose alpha ramps
// from transparent to opaque.
TEST(ConvertInterop, TestCardsHaveTheirLevels) {
    Scratch dir;
    auto card = [&](const char* name) {
        RunOk({"--test-card", name, "--size", "16x1", "--to", "BGR32I", dir / name});
        return ReadBytes(dir / name);
    };
    const Bytes bars100 = card("bars100"), bars75 = card("bars75"), ramp = card("ramp"), keyed = card("keyed-bars");
    EXPECT_EQ(Bytes(bars100.begin() + 8, bars100.begin() + 12), (Bytes{0, 255, 255, 255}));  // yellow
    EXPECT_EQ(Bytes(bars75.begin(), bars75.begin() + 4), (Bytes{191, 191, 191, 255}));
    EXPECT_EQ(Bytes(bars75.begin() + 8, bars75.begin() + 11), (Bytes{0, 191, 191}));
    EXPECT_EQ(Bytes(bars75.end() - 4, bars75.end() - 1), (Bytes{0, 0, 0}));
    EXPECT_EQ(ramp[0], 0);
    EXPECT_EQ(ramp[60], 255);
    for (size_t p = 1; p < 16; ++p) EXPECT_GT(ramp[4 * p], ramp[4 * p - 4]);
    EXPECT_EQ(Bytes(keyed.begin() + 16, keyed.begin() + 19), (Bytes{255, 255, 0}));  // cyan
    EXPECT_EQ(keyed[3], 0);
    EXPECT_EQ(keyed[63], 255);
}

// The YUV raw layouts are the documented ones: studio-range white (Y 235)
// and black (Y 16), both with Cb = Cr = 128, of the 100% bars land where
// uyvy422, yuyv422, nv16 and vuya put their samples; an IA8P frame carries
// its alpha plane after the colour block.
TEST(ConvertInterop, YuvRawLayoutsPutEverySampleInItsDocumentedPlace) {
    Scratch dir;
    constexpr int kW = 16;  // eight bars of one pixel pair each
    struct Sample {
        int y0, y1, cb, cr;  // byte offsets within the frame for pixel pair p, as functions of p below
    };
    auto offsets = [&](Format f, int p) -> Sample {
        switch (Info(f).layout) {
            case Layout::Planar422: return {2 * p, 2 * p + 1, kW + 2 * p, kW + 2 * p + 1};
            case Layout::Packed444Alpha: return {8 * p + 2, 8 * p + 6, 8 * p + 1, 8 * p};
            default: break;
        }
        switch (ColourOf(f)) {
            case Format::UYVY16I: return {4 * p + 1, 4 * p + 3, 4 * p, 4 * p + 2};
            case Format::YUYV16I: return {4 * p, 4 * p + 2, 4 * p + 1, 4 * p + 3};
            default: return {4 * p + 2, 4 * p + 3, 4 * p, 4 * p + 1};  // UVYY16I
        }
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
            const Sample at = offsets(f, pair);
            EXPECT_EQ((Bytes{frame[at.y0], frame[at.y1], frame[at.cb], frame[at.cr]}), (Bytes{luma, luma, 128, 128}))
                << "pair " << pair;
        }
        if (via_uyvy) EXPECT_EQ(frame[3], 9);                 // vuya's A
        if (Info(f).alpha_plane) EXPECT_EQ(frame.back(), 255);  // the opaque card's alpha plane
        // Yellow (pair 1) has a low Cb: the chroma samples are not swapped.
        EXPECT_LT(frame[offsets(f, 1).cb], 64);
        EXPECT_GT(frame[offsets(f, 1).cr], 128);
        ++checked;
    }
    if (checked == 0) GTEST_SKIP() << "this library writes no YUV format from BGR32I";
}

}  // namespace
}  // namespace zenk::tool::test
