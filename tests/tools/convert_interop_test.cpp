// Raw files interoperate: what the tool writes is what the library, called
// directly by a host, makes of the same input; slicing a frame across
// threads changes no byte; the raw layouts are the documented ones.
#include <cstdlib>
#include <memory>

#include "tool_runner.h"

namespace zenk::tool::test {
namespace {

// A picture as a host would hand it to the library: each plane on its own
// 64-byte boundary, lines back to back.
struct HostPicture {
    struct Free {
        void operator()(uint8_t* p) const { std::free(p); }
    };
    std::unique_ptr<uint8_t, Free> colour, alpha;
    size_t colour_bytes = 0, alpha_bytes = 0;
    int32_t pitch = 0, alpha_pitch = 0;

    HostPicture(Format f, int32_t w, int32_t h) {
        const FormatInfo& info = Info(f);
        pitch = info.layout == Layout::Planar422 ? w : info.colour_bytes_per_pixel * w;
        colour_bytes = static_cast<size_t>(pitch) * h * (info.layout == Layout::Planar422 ? 2 : 1);
        colour.reset(Allocate(colour_bytes));
        if (info.alpha_plane) {
            alpha_pitch = w;
            alpha_bytes = static_cast<size_t>(w) * h;
            alpha.reset(Allocate(alpha_bytes));
        }
    }
    // Zeroed, as the tool's own frames are: a conversion that leaves bytes
    // unwritten leaves them the same in both.
    static uint8_t* Allocate(size_t bytes) {
        const size_t size = (bytes / 64 + 1) * 64;
        auto* p = static_cast<uint8_t*>(std::aligned_alloc(64, size));
        std::fill(p, p + size, uint8_t{0});
        return p;
    }
    void Load(const uint8_t* bytes) {
        std::copy(bytes, bytes + colour_bytes, colour.get());
        if (alpha_bytes) std::copy(bytes + colour_bytes, bytes + colour_bytes + alpha_bytes, alpha.get());
    }
    void Store(Bytes& out) const {
        out.insert(out.end(), colour.get(), colour.get() + colour_bytes);
        if (alpha_bytes) out.insert(out.end(), alpha.get(), alpha.get() + alpha_bytes);
    }
};

struct Settings {
    int32_t width, height;
    int vertical_mode = 0, scan_mode = 0;
    bool field_pair = false;
    int32_t matrix = 1;  // BT.601, as the flags below ask
    uint32_t alpha_value = 77 | (77u << 16);
    std::vector<std::string> Flags() const {
        std::vector<std::string> f = {"--matrix", "601", "--alpha", "77", "--clamp-luma", "--size",
                                      std::to_string(width) + "x" + std::to_string(height)};
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
    const size_t frame = in.colour_bytes + in.alpha_bytes;
    const ZenkConvertFunction convert = TheLibrary().Find(src, dst);
    Bytes result;
    for (size_t at = 0; src == Format::A8C ? at == 0 : at < input.size(); at += frame ? frame : 1) {
        if (frame) in.Load(input.data() + at);
        ZenkConversionRequest r{};
        if (src != Format::A8C) r.src_plane = in.colour.get();
        r.src_width = s.width;
        r.src_height = s.height;
        r.src_stride = in.pitch;
        // Tight lines, so every skip is the pitch less a line's bytes: 0.
        // The line-pair modes advance source line starts instead: by the
        // pair step plus the skip (0), or when doubling by the skip alone (a
        // pitch).
        r.src_skip = s.vertical_mode == 3 ? in.pitch : 0;
        r.src_matrix = r.dst_matrix = s.matrix;
        r.src_field_pair = r.dst_field_pair = s.field_pair;
        r.src_alpha_plane = in.alpha.get();
        r.src_alpha_stride = in.alpha_pitch;
        r.dst_plane = out.colour.get();
        r.width = std::min(dw, s.width);
        r.dst_height = dh;
        r.dst_stride = out.pitch;
        r.dst_alpha_plane = out.alpha.get();
        r.dst_alpha_stride = out.alpha_pitch;
        r.alpha_value = s.alpha_value;
        r.clamp_luma = 1;
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

TEST(ConvertInterop, EveryResolvedPairWritesWhatTheLibraryMakesOfTheInput) {
    Scratch dir;
    int checked = 0;
    for (const Pair& p : AllPairs()) {
        if (!TheLibrary().Has(p.src, p.dst)) continue;
        for (int mode : p.vertical_modes) {
            Settings s{40, 8};
            s.vertical_mode = mode;
            s.scan_mode = mode == 0 ? 0 : mode == 2 ? 2 : 1;
            s.field_pair = mode == 2;
            const std::string source = MakeSource(dir, p.src, s.width, s.height);
            SCOPED_TRACE(Token(p.src) + " -> " + Token(p.dst) + ", vertical mode " + std::to_string(mode));
            RunOk(ToolArgs(p, s, source, dir / "out"));
            const Bytes expected = ConvertDirectly(p.src, p.dst, s, source.empty() ? Bytes{} : ReadBytes(source));
            EXPECT_EQ(ReadBytes(dir / "out"), expected);
            ++checked;
        }
    }
    EXPECT_GE(checked, 14);  // the RGB and alpha pairs at least
}

// Slices start on lines that keep the planes' 16-byte residues, so the
// library picks the same kernel for every slice as for the whole frame;
// the widths here make pitches that are not multiples of 16, and the alpha
// word sets its two halves apart, as kernels with different variants read it
// differently.
TEST(ConvertInterop, SlicingAcrossThreadsChangesNoByte) {
    Scratch dir;
    int sliced = 0;
    for (const Pair& p : AllPairs()) {
        if (!TheLibrary().Has(p.src, p.dst)) continue;
        for (const int32_t width : {22, 64}) {
            Settings s{width, 37};
            const std::string source = MakeSource(dir, p.src, s.width, s.height);
            SCOPED_TRACE(Token(p.src) + " -> " + Token(p.dst) + " at width " + std::to_string(width));
            std::vector<std::string> one = ToolArgs(p, s, source, dir / "one");
            std::vector<std::string> many = ToolArgs(p, s, source, dir / "many");
            for (auto* args : {&one, &many}) args->insert(args->begin(), {"--alpha-word", "255"});
            for (size_t i = 0; i < one.size(); ++i)
                if (one[i] == "--alpha") one[i + 1] = "0", one.erase(one.begin() + i, one.begin() + i + 2);
            for (size_t i = 0; i < many.size(); ++i)
                if (many[i] == "--alpha") many.erase(many.begin() + i, many.begin() + i + 2);
            many.insert(many.begin(), {"--threads", "5"});
            RunOk(one);
            const ToolResult threaded = RunOk(many);
            // A pair that cannot be cut says so and runs whole.
            const bool whole = Info(p.src).layout == Layout::Planar422;
            EXPECT_EQ(threaded.err.find("runs on one thread") != std::string::npos, whole) << threaded.err;
            const Bytes a = ReadBytes(dir / "one"), b = ReadBytes(dir / "many");
            EXPECT_FALSE(a.empty());
            EXPECT_EQ(a, b);
            ++sliced;
        }
    }
    EXPECT_GE(sliced, 2 * 14);
}

// The documented raw names: BGR32I is bgra (B, G, R, A in memory), BGR24I is
// bgr24, A8P is gray, a BGR24IA8P frame is bgr24 followed by a gray plane.
TEST(ConvertInterop, RawLayoutsAreTheDocumentedOnes) {
    Scratch dir;
    RunOk({"--test-card", "keyed-bars", "--size", "16x2", "--to", "BGR32I", dir / "bgra"});
    RunOk({"--test-card", "keyed-bars", "--size", "16x2", "--to", "BGR24IA8P", dir / "bgr24a"});
    RunOk({"--test-card", "keyed-bars", "--size", "16x2", "--to", "A8P", dir / "gray"});
    const Bytes bgra = ReadBytes(dir / "bgra"), bgr24a = ReadBytes(dir / "bgr24a"), gray = ReadBytes(dir / "gray");
    ASSERT_EQ(bgra.size(), 16u * 2 * 4);
    // Pixels 0-1 white, 2-3 yellow (B 0, G 255, R 255), 4-5 cyan (B 255, G 255, R 0).
    EXPECT_EQ(Bytes(bgra.begin(), bgra.begin() + 3), (Bytes{255, 255, 255}));
    EXPECT_EQ(Bytes(bgra.begin() + 8, bgra.begin() + 11), (Bytes{0, 255, 255}));
    EXPECT_EQ(Bytes(bgra.begin() + 16, bgra.begin() + 19), (Bytes{255, 255, 0}));
    EXPECT_EQ(bgra[3], 0);      // the alpha ramp starts transparent
    EXPECT_EQ(bgra[63], 255);   // and ends opaque
    ASSERT_EQ(bgr24a.size(), 16u * 2 * 3 + 16u * 2);
    ASSERT_EQ(gray.size(), 16u * 2);
    for (size_t p = 0; p < 32; ++p) {
        EXPECT_EQ(bgr24a[3 * p + 1], bgra[4 * p + 1]);
        EXPECT_EQ(bgr24a[96 + p], bgra[4 * p + 3]);
        EXPECT_EQ(gray[p], bgra[4 * p + 3]);
    }
}

TEST(ConvertInterop, TestCardsHaveTheirLevels) {
    Scratch dir;
    auto card = [&](const char* name) {
        RunOk({"--test-card", name, "--size", "16x1", "--to", "BGR24I", dir / name});
        return ReadBytes(dir / name);
    };
    const Bytes bars100 = card("bars100"), bars75 = card("bars75"), ramp = card("ramp");
    // Second bar: yellow.
    EXPECT_EQ(Bytes(bars100.begin() + 6, bars100.begin() + 9), (Bytes{0, 255, 255}));
    EXPECT_EQ(Bytes(bars75.begin() + 6, bars75.begin() + 9), (Bytes{0, 191, 191}));
    EXPECT_EQ(Bytes(bars75.begin(), bars75.begin() + 3), (Bytes{191, 191, 191}));
    EXPECT_EQ(Bytes(bars75.end() - 3, bars75.end()), (Bytes{0, 0, 0}));
    EXPECT_EQ(ramp[0], 0);
    EXPECT_EQ(ramp[45], 255);
    for (size_t p = 1; p < 16; ++p) EXPECT_GT(ramp[3 * p], ramp[3 * p - 3]);
}

TEST(ConvertInterop, APngReadsAsBgr32WithItsAlphaOrAsBgr24) {
    Scratch dir;
    RunOk({"--test-card", "keyed-bars", "--size", "24x3", dir / "card.png"});
    RunOk({"--test-card", "keyed-bars", "--size", "24x3", "--to", "BGR32I", dir / "card.bgra"});
    RunOk({dir / "card.png", "--to", "BGR32I", dir / "from-png.bgra"});
    RunOk({"--from", "BGR24I", dir / "card.png", "--to", "BGR24I", dir / "from-png.bgr"});
    const Bytes bgra = ReadBytes(dir / "card.bgra"), bgr = ReadBytes(dir / "from-png.bgr");
    EXPECT_EQ(ReadBytes(dir / "from-png.bgra"), bgra);
    ASSERT_EQ(bgr.size(), 24u * 3 * 3);
    for (size_t p = 0; p < 72; ++p)
        for (size_t c = 0; c < 3; ++c) ASSERT_EQ(bgr[3 * p + c], bgra[4 * p + c]);
}

TEST(ConvertInterop, AConstantAlphaSourceFillsThePlane) {
    Scratch dir;
    RunOk({"--from", "A8C", "--alpha", "77", "--size", "10x3", "--to", "A8P", dir / "alpha"});
    EXPECT_EQ(ReadBytes(dir / "alpha"), Bytes(30, 77));
}

// The progress bar is drawn only on a terminal.
TEST(ConvertInterop, TheProgressBarAppearsOnlyOnATerminal) {
    Scratch dir;
    const std::string source = MakeSource(dir, Format::BGR32I, 8, 2);
    const std::vector<std::string> args = {"--from", "BGR32I", "--size", "8x2", "--to", "BGR24I", source, dir / "out"};
    const ToolResult plain = RunTool(args);
    EXPECT_EQ(plain.code, 0);
    EXPECT_EQ(plain.err, "");
    const ToolResult terminal = RunTool(args, true);
    EXPECT_EQ(terminal.code, 0);
    EXPECT_NE(terminal.err.find("2/2 frames"), std::string::npos) << terminal.err;
    EXPECT_EQ(ReadBytes(dir / "out").size(), 2u * 8 * 2 * 3);
}

// "-" reads raw frames from standard input until it ends and writes them to
// standard output, the same bytes as with files.
TEST(ConvertInterop, StandardInputAndOutputCarryRawFrames) {
    Scratch dir;
    const std::string source = MakeSource(dir, Format::BGR32I, 12, 3);  // two frames
    const std::vector<std::string> flags = {"--from", "BGR32I", "--size", "12x3", "--to", "BGR24IA8P"};
    std::vector<std::string> files = flags, streams = flags;
    files.insert(files.end(), {source, dir / "out"});
    streams.insert(streams.end(), {"-", "-"});
    RunOk(files);
    const ToolResult piped = RunTool(streams, false, source);
    EXPECT_EQ(piped.code, 0) << piped.err;
    const Bytes expected = ReadBytes(dir / "out");
    EXPECT_EQ(expected.size(), 2u * 12 * 3 * 4);
    EXPECT_EQ(Bytes(piped.out.begin(), piped.out.end()), expected);
}

// A stream that ends inside a frame fails without touching the output.
TEST(ConvertInterop, AStreamEndingInsideAFrameLeavesTheOutput) {
    Scratch dir;
    const std::string source = MakeSource(dir, Format::BGR32I, 12, 3);
    Bytes bytes = ReadBytes(source);
    bytes.resize(bytes.size() - 5);
    WriteBytes(dir / "short", bytes);
    WriteBytes(dir / "out", Bytes{1, 2, 3});
    const ToolResult r = RunTool({"--from", "BGR32I", "--size", "12x3", "--to", "BGR24I", "-", dir / "out"}, false,
                                 dir / "short");
    EXPECT_EQ(r.code, 3);
    EXPECT_NE(r.err.find("standard input ended 139 bytes into frame 2; a 12x3 BGR32I frame is 144 bytes"),
              std::string::npos)
        << r.err;
    EXPECT_EQ(ReadBytes(dir / "out"), (Bytes{1, 2, 3}));
    EXPECT_EQ(dir.Entries().size(), 3u);  // the source, the short copy, the output
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
        const bool via_uyvy = f == Format::V8U8Y8A8I;
        if (!TheLibrary().Has(via_uyvy ? Format::UYVY16I : Format::BGR32I, f)) continue;
        if (via_uyvy && !TheLibrary().Has(Format::BGR32I, Format::UYVY16I)) continue;
        SCOPED_TRACE(Token(f));
        if (via_uyvy) {
            RunOk({"--test-card", "bars100", "--size", "16x1", "--to", "UYVY16I", dir / "uyvy"});
            RunOk({"--alpha", "9", "--from", "UYVY16I", "--size", "16x1", "--to", Token(f), dir / "uyvy", dir / "out"});
        } else {
            RunOk({"--test-card", "bars100", "--size", "16x1", "--to", Token(f), dir / "out"});
        }
        const Bytes frame = ReadBytes(dir / "out");
        ASSERT_EQ(static_cast<int64_t>(frame.size()), LayoutOf(f, kW, 1).total());
        for (const auto& [pair, luma] : {std::pair{0, 235}, std::pair{7, 16}}) {
            const Sample at = offsets(f, pair);
            EXPECT_EQ(frame[at.y0], luma) << "pair " << pair;
            EXPECT_EQ(frame[at.y1], luma) << "pair " << pair;
            EXPECT_EQ(frame[at.cb], 128) << "pair " << pair;
            EXPECT_EQ(frame[at.cr], 128) << "pair " << pair;
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
