// Round trips through the tool, family by family, with the error each family
// may show: none for the RGB and alpha repacking, a few code values where
// RGB is quantised to 8-bit YUV and back. Every format the loaded library can
// convert to and back is tested; the RGB and alpha ones must be among them.
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <functional>

#include "png_io.h"
#include "tool_runner.h"

namespace zenk::tool::test {
namespace {

constexpr int kWidth = 64, kHeight = 8;  // bars 8 pixels wide: edges fall between pixel pairs
const std::string kSize = "64x8";
const std::vector<std::string> kCards = {"bars100", "bars75", "ramp", "keyed-bars"};

struct Difference {
    int bgr = 0, alpha = 0;
};

// Largest difference between two pictures of `bpp_a` and `bpp_b` bytes a
// pixel, over B, G, R and (when both have it) alpha.
Difference Compare(const Bytes& a, int bpp_a, const Bytes& b, int bpp_b) {
    Difference d;
    const size_t pixels = a.size() / static_cast<size_t>(bpp_a);
    EXPECT_EQ(pixels, b.size() / static_cast<size_t>(bpp_b));
    for (size_t p = 0; p < pixels && p * bpp_b < b.size(); ++p) {
        for (int c = 0; c < 3; ++c) d.bgr = std::max(d.bgr, std::abs(a[p * bpp_a + c] - b[p * bpp_b + c]));
        if (bpp_a == 4 && bpp_b == 4) d.alpha = std::max(d.alpha, std::abs(a[p * bpp_a + 3] - b[p * bpp_b + 3]));
    }
    return d;
}

Format BackFormat(Format f) { return FindPair(f, Format::BGR32I) ? Format::BGR32I : Format::BGR24I; }

int Bpp(Format f) { return f == Format::BGR32I ? 4 : 3; }

// The interleaved format of an IA8P format's colour block.
Format ColourPart(Format f) {
    if (!Info(f).alpha_plane) return f;
    const std::string_view token = Info(f).token;
    return *ParseFormat(token.substr(0, token.size() - 3));
}

// The formats a BGR32I picture can be converted to and back from, in this library.
std::vector<Format> RoundTripFormats() {
    std::vector<Format> formats;
    for (const FormatInfo& info : AllFormats()) {
        const Format f = info.format;
        if (f == Format::BGR32I || !FindPair(Format::BGR32I, f) || !FindPair(f, BackFormat(f))) continue;
        if (TheLibrary().Has(Format::BGR32I, f) && TheLibrary().Has(f, BackFormat(f))) formats.push_back(f);
    }
    return formats;
}

struct OptionSet {
    const char* name;
    std::vector<std::string> flags;
    int yuv_bound;  // largest error of a YUV round trip in code values
};

const std::vector<OptionSet> kOptionSets = {
    {"BT.709 studio range", {}, 3},
    {"BT.601 studio range", {"--matrix", "601"}, 3},
    {"BT.709 full range", {"--full-range"}, 3},
    {"BT.601 full range, streaming stores", {"--matrix", "601", "--full-range", "--streaming"}, 3},
};

// The exports that the RGB and alpha family has always had; if these do not
// resolve, the tests below would be testing nothing.
TEST(ConvertRoundTrip, TheRgbAndAlphaPairsResolve) {
    const std::vector<std::pair<Format, Format>> pairs = {
        {Format::BGR32I, Format::BGR32I},         {Format::BGR32I, Format::BGR24I},
        {Format::BGR24I, Format::BGR32I},         {Format::BGR24I, Format::BGR24I},
        {Format::BGR32I, Format::BGR24IA8P},      {Format::A8P, Format::A8P},
        {Format::A8C, Format::A8P},               {Format::BGR32I, Format::A8P},
        {Format::BGR24IA8P, Format::BGR32I},      {Format::BGR24I, Format::BGR24IA8P},
        {Format::BGR24IA8P, Format::BGR24IA8P},   {Format::BGR24IA8P, Format::A8P},
        {Format::UYVY16IA8P, Format::A8P},        {Format::YUYV16IA8P, Format::A8P}};
    for (const auto& [src, dst] : pairs) EXPECT_TRUE(TheLibrary().Has(src, dst)) << ExportName(src, dst);
    const std::vector<Format> formats = RoundTripFormats();
    EXPECT_NE(std::find(formats.begin(), formats.end(), Format::BGR24I), formats.end());
    EXPECT_NE(std::find(formats.begin(), formats.end(), Format::BGR24IA8P), formats.end());
}

// --list marks exactly the pairs the library lacks.
TEST(ConvertRoundTrip, TheListShowsWhatTheLibraryHas) {
    const ToolResult r = RunOk({"--list"});
    for (const Pair& p : AllPairs()) {
        const std::string head = Token(p.src) + std::string(12 - Token(p.src).size(), ' ') + "-> " + Token(p.dst) + " ";
        const size_t at = r.out.find("  " + head);
        ASSERT_NE(at, std::string::npos) << head;
        const std::string line = r.out.substr(at, r.out.find('\n', at) - at);
        EXPECT_EQ(line.find("(absent)") == std::string::npos, TheLibrary().Has(p.src, p.dst)) << line;
    }
}

TEST(ConvertRoundTrip, EveryFormatComesBackWithinItsFamilyBound) {
    Scratch dir;
    int trips = 0;
    for (const std::string& card : kCards) {
        const std::string card_raw = dir / (card + ".bgra");
        RunOk({"--test-card", card, "--size", kSize, "--to", "BGR32I", card_raw});
        const Bytes original = ReadBytes(card_raw);
        ASSERT_EQ(original.size(), size_t{kWidth} * kHeight * 4);
        for (const Format f : RoundTripFormats())
            for (const OptionSet& o : kOptionSets) {
                SCOPED_TRACE(card + " through " + Token(f) + ", " + o.name);
                const Format back = BackFormat(f);
                std::vector<std::string> there = o.flags, home = o.flags;
                for (auto a : {"--from", "BGR32I", "--size", kSize.c_str(), "--to"}) there.push_back(a);
                there.insert(there.end(), {Token(f), card_raw, dir / "middle"});
                for (auto a : {"--from"}) home.push_back(a);
                home.insert(home.end(), {Token(f), "--size", kSize, "--to", Token(back), dir / "middle", dir / "back"});
                RunOk(there);
                RunOk(home);
                const Difference d = Compare(original, 4, ReadBytes(dir / "back"), Bpp(back));
                EXPECT_LE(d.bgr, IsYuv(f) ? o.yuv_bound : 0);
                // Alpha survives where the format keeps it; elsewhere the
                // default constant alpha makes the picture opaque.
                if (back == Format::BGR32I) {
                    if (Info(f).alpha_plane) {
                        EXPECT_EQ(d.alpha, 0);
                    } else {
                        const Bytes result = ReadBytes(dir / "back");
                        for (size_t p = 3; p < result.size(); p += 4) ASSERT_EQ(result[p], 255) << "pixel " << p / 4;
                    }
                }
                ++trips;
            }
    }
    EXPECT_GE(trips, 2 * static_cast<int>(kCards.size() * kOptionSets.size()));
}

// YUV to YUV: with one matrix a repacking changes no sample, so decoding the
// repacked picture gives exactly what decoding the original gives; with a
// change of matrix the picture decoded in the new matrix stays close to the
// card. (The width is a multiple of 16, where every repacking kernel keeps
// its byte order.)
TEST(ConvertRoundTrip, YuvRepackingKeepsEverySampleAndMatrixChangeStaysClose) {
    Scratch dir;
    RunOk({"--test-card", "bars75", "--size", kSize, "--to", "BGR32I", dir / "card"});
    const Bytes card = ReadBytes(dir / "card");
    const Library& lib = TheLibrary();
    int repacked = 0;
    for (const Pair& p : AllPairs()) {
        if (!IsYuv(p.src) || !IsYuv(p.dst) || !lib.Has(p.src, p.dst)) continue;
        const Format a = p.src, b = p.dst;
        if (!lib.Has(Format::BGR32I, a) || !FindPair(b, BackFormat(b)) || !lib.Has(b, BackFormat(b)) ||
            !lib.Has(a, BackFormat(a)))
            continue;
        SCOPED_TRACE(Token(a) + " -> " + Token(b));
        ++repacked;
        auto decode = [&](Format f, const std::string& in, const std::string& matrix, const std::string& out) {
            RunOk({"--matrix", matrix, "--from", Token(f), "--size", kSize, "--to", Token(BackFormat(f)), in, out});
            return ReadBytes(out);
        };
        RunOk({"--matrix", "601", "--test-card", "bars75", "--size", kSize, "--to", Token(a), dir / "a"});
        RunOk({"--matrix", "601", "--from", Token(a), "--size", kSize, "--to", Token(b), dir / "a", dir / "b"});
        const Difference same = Compare(decode(a, dir / "a", "601", dir / "a.bgr"), Bpp(BackFormat(a)),
                                        decode(b, dir / "b", "601", dir / "b.bgr"), Bpp(BackFormat(b)));
        EXPECT_EQ(same.bgr, 0);

        RunOk({"--src-matrix", "601", "--dst-matrix", "709", "--from", Token(a), "--size", kSize, "--to", Token(b),
               dir / "a", dir / "b709"});
        // Changing the matrix into or out of UVYY16I and into Y8PUV8I runs
        // the library's shared UYVY16I-order kernel, which keeps neither
        // layout; only the pairs that keep their byte order are checked.
        if (ColourPart(a) == Format::UVYY16I || ColourPart(b) == Format::UVYY16I || ColourPart(b) == Format::Y8PUV8I)
            continue;
        const Difference changed = Compare(card, 4, decode(b, dir / "b709", "709", dir / "b709.bgr"), Bpp(BackFormat(b)));
        EXPECT_LE(changed.bgr, 5);
    }
    if (repacked == 0) GTEST_SKIP() << "this library converts no YUV to YUV pair that can be decoded";
}

// A PNG output shows the result converted back to BGR with the same options:
// exactly what converting the raw result back gives.
TEST(ConvertRoundTrip, APngOutputShowsTheResultAsConvertedBack) {
    Scratch dir;
    RunOk({"--test-card", "keyed-bars", "--size", kSize, dir / "card.png"});
    int shown = 0;
    for (const Pair& p : AllPairs()) {
        if (p.src != Format::BGR32I || !TheLibrary().Has(p.src, p.dst)) continue;
        const Format f = p.dst;
        const bool direct = f == Format::BGR32I || f == Format::BGR24I || f == Format::A8P;
        const Format view = direct ? f : BackFormat(f);
        if (!direct && !(FindPair(f, view) && TheLibrary().Has(f, view))) continue;
        SCOPED_TRACE(Token(f));
        RunOk({"--matrix", "601", "--to", Token(f), dir / "card.png", dir / "shown.png"});
        RunOk({"--matrix", "601", "--to", Token(f), dir / "card.png", dir / "raw"});
        Bytes expected = ReadBytes(dir / "raw");
        if (!direct) {
            RunOk({"--matrix", "601", "--from", Token(f), "--size", kSize, "--to", Token(view), dir / "raw", dir / "view"});
            expected = ReadBytes(dir / "view");
        }
        if (view == Format::A8P) {
            // A grey PNG reads back as opaque grey BGR.
            const Frame got = ReadPng(dir / "shown.png", Format::BGR24I);
            for (size_t i = 0; i < expected.size(); ++i) ASSERT_EQ(got.colour()[3 * i], expected[i]) << i;
        } else {
            const Frame got = ReadPng(dir / "shown.png", view);
            ASSERT_EQ(static_cast<size_t>(got.layout().colour_bytes), expected.size());
            EXPECT_TRUE(std::equal(expected.begin(), expected.end(), got.colour()));
        }
        ++shown;
    }
    EXPECT_GE(shown, 4);  // BGR32I, BGR24I, A8P, BGR24IA8P at least
}

TEST(ConvertRoundTrip, TheDemoWritesPicturesAndItsTable) {
    Scratch dir;
    const ToolResult r = RunOk({"--demo", dir / "demo", "--size", "32x8"});
    EXPECT_TRUE(std::filesystem::exists(dir / "demo/card-bars100.png"));
    for (const Format f : RoundTripFormats()) {
        SCOPED_TRACE(Token(f));
        EXPECT_TRUE(std::filesystem::exists(dir / ("demo/" + Token(f) + ".png")));
        const size_t row = r.out.find("\n" + Token(f) + " ");
        ASSERT_NE(row, std::string::npos) << r.out;
        if (!IsYuv(f)) {
            // format, raw name, back via, then the largest error: 0.
            std::istringstream fields(r.out.substr(row + 1, r.out.find('\n', row + 1) - row - 1));
            std::string name, raw, via, error;
            fields >> name >> raw >> via >> error;
            EXPECT_EQ(error, "0") << r.out;
        }
    }
}

}  // namespace
}  // namespace zenk::tool::test

namespace zenk::tool::test {
namespace {

// Commands that must succeed, each with the files it must write: byte for
// byte those of a reference command or a fixture, and what it says on
// standard error (nothing, unless the row says).
struct GoodCase {
    const char* name;
    std::vector<std::string> args;  // "@x" names the file x in the scratch directory
    std::vector<std::vector<std::string>> references;  // commands that write the expected files
    std::vector<std::pair<std::string, std::string>> same;  // (written, expected) files
    std::string says = {};     // a fragment of standard error (or, with --version, output)
    std::string never = {};    // a fragment that must not be on standard error
    std::string input = {};    // a scratch file given as standard input
    bool terminal = false;     // standard error is a terminal
    std::function<void(const Scratch&)> setup = {}, check = {};
};

std::string ArgPath(const Scratch& dir, const std::string& a) { return a[0] == '@' ? dir / a.substr(1) : a; }

std::vector<std::string> Expand(const Scratch& dir, const std::vector<std::string>& args) {
    std::vector<std::string> out;
    for (const std::string& a : args) out.push_back(ArgPath(dir, a));
    return out;
}

mode_t ModeOf(const std::string& path) {
    struct stat st {};
    return stat(path.c_str(), &st) == 0 ? st.st_mode & 07777 : 0;
}

// A temporary file as a run killed outright leaves it, by `pid` on this host.
std::string TempName(pid_t pid) {
    char host[256] = "";
    gethostname(host, sizeof host - 1);
    return ".zenk-convert-" + std::to_string(pid) + "@" + host + "-AbC123";
}

pid_t APidThatIsGone() {
    const pid_t pid = fork();
    if (pid == 0) _exit(0);
    waitpid(pid, nullptr, 0);
    return pid;
}

const std::vector<GoodCase> kGoodCases = {
    {"ffmpeg pixel format names", {"--from", "uyvy422", "-s", "16x2", "--to", "bgra", "@card.uyvy", "@out"},
     {{"--from", "UYVY16I", "--size", "16x2", "--to", "BGR32I", "@card.uyvy", "@ref"}}, {{"@out", "@ref"}}},
    {"gray is A8P, bgr24 is BGR24I", {"--from", "bgra", "-s", "16x2", "--to", "gray", "@card.bgra", "@out"},
     {{"--from", "BGR32I", "--size", "16x2", "--to", "A8P", "@card.bgra", "@ref"}}, {{"@out", "@ref"}}},
    {"bt601 is 601", {"--matrix", "BT601", "--from", "yuyv422", "-s", "16x2", "--to", "bgr24", "@card.uyvy", "@out"},
     {{"--matrix", "601", "--from", "YUYV16I", "--size", "16x2", "--to", "BGR24I", "@card.uyvy", "@ref"}},
     {{"@out", "@ref"}}},
    {"formats from the extensions", {"-s", "16x2", "@card.uyvy", "@out.nv16"},
     {{"--from", "UYVY16I", "--size", "16x2", "--to", "Y8PUV8I", "@card.uyvy", "@ref"}}, {{"@out.nv16", "@ref"}}},
    {"a PNG from standard input", {"--to", "yuyv422", "-", "@out"},
     {{"--to", "YUYV16I", "@card.png", "@ref"}}, {{"@out", "@ref"}}, "", "", "card.png"},
    {"frames picked from a file", {"--frames", "2:3", "-s", "16x2", "@three.bgra", "@out.bgr24"},
     {{"-s", "16x2", "@frames-2-3.bgra", "@ref.bgr24"}}, {{"@out.bgr24", "@ref.bgr24"}}},
    {"frames picked from a stream", {"--frames", "2:", "--from", "BGR32I", "-s", "16x2", "-", "@out.bgra"},
     {}, {{"@out.bgra", "@frames-2-3.bgra"}}, "", "", "three.bgra"},
    {"frames into numbered PNGs", {"--frames", "2:3", "-s", "16x2", "@three.bgra", "@f-%03d.png"},
     {{"-s", "16x2", "@frame-2.bgra", "@ref-2.png"}, {"-s", "16x2", "@frame-3.bgra", "@ref-3.png"}},
     {{"@f-002.png", "@ref-2.png"}, {"@f-003.png", "@ref-3.png"}}},
    {"zoomed PNG", {"--zoom", "2", "--test-card", "bars100", "-s", "8x1", "@out.png"},
     {{"--test-card", "bars100", "-s", "16x2", "@ref.png"}}, {{"@out.png", "@ref.png"}}},
    {"quirk: UYVY16I -> UVYY16I at a width of 8", {"-s", "8x2", "--to", "UVYY16I", "@card8.uyvy", "@out"},
     {}, {{"@out", "@card8.uyvy"}}, "warning: UYVY16I -> UVYY16I at a width of 8 (not a multiple of 16) copies"},
    {"quirk, quiet", {"--quiet", "-s", "8x2", "--to", "UVYY16I", "@card8.uyvy", "@out"}, {}, {{"@out", "@card8.uyvy"}}},
    {"quirk: a matrix change into Y8PUV8I",
     {"--src-matrix", "601", "--dst-matrix", "709", "-s", "16x2", "@card.uyvy", "@out.nv16"},
     // The same kernel as the matrix change into UVYY16I: packed UYVY16I bytes.
     {{"--src-matrix", "601", "--dst-matrix", "709", "-s", "16x2", "--to", "UVYY16I", "@card.uyvy", "@ref"}},
     {{"@out.nv16", "@ref"}}, "warning: a matrix change from UYVY16I to Y8PUV8I runs the library's UYVY16I-order kernel"},
    {"ignored options", {"--alpha", "9", "--matrix", "601", "-s", "16x2", "@card.bgra", "@out.bgr24"},
     {{"-s", "16x2", "@card.bgra", "@ref.bgr24"}}, {{"@out.bgr24", "@ref.bgr24"}},
     "warning: --matrix, --alpha have no effect on BGR32I -> BGR24I"},
    {"alpha used by a PNG's view", {"--alpha", "9", "-s", "16x2", "@card.uyvy", "@out.png"}, {}, {}},
    {"summary on a terminal", {"-s", "16x2", "@three.bgra", "@out.bgr24"}, {}, {},
     "3 frames of 16x2 BGR32I -> BGR24I in", "", "", true},
    {"no summary when quiet", {"-q", "-s", "16x2", "@three.bgra", "@out.bgr24"}, {}, {}, "3/3 frames", "frames of", "",
     true},
    {"version", {"--version"}, {}, {}, "zenk-convert 0.1.0\nlibrary 0.1.0, from "},
    {"through a symbolic link", {"-s", "16x2", "@card.bgra", "@link.bgr24"},
     {{"-s", "16x2", "@card.bgra", "@ref.bgr24"}}, {{"@target.bgr24", "@ref.bgr24"}}, "", "", "", false,
     [](const Scratch& dir) {
         WriteBytes(dir / "target.bgr24", Bytes{1});
         symlink("target.bgr24", (dir / "link.bgr24").c_str());
     },
     [](const Scratch& dir) { EXPECT_TRUE(std::filesystem::is_symlink(dir / "link.bgr24")); }},
    {"an existing file's mode kept", {"-s", "16x2", "@card.bgra", "@kept.bgr24"}, {}, {}, "", "", "", false,
     [](const Scratch& dir) {
         WriteBytes(dir / "kept.bgr24", Bytes{1});
         chmod((dir / "kept.bgr24").c_str(), 0604);
     },
     [](const Scratch& dir) { EXPECT_EQ(ModeOf(dir / "kept.bgr24"), 0604u); }},
    {"stale temporaries removed, live ones kept", {"-s", "16x2", "@card.bgra", "@out.bgr24"}, {}, {}, "", "", "", false,
     [](const Scratch& dir) {
         WriteBytes(dir / TempName(APidThatIsGone()), Bytes{1});
         WriteBytes(dir / TempName(getpid()), Bytes{1});
     },
     [](const Scratch& dir) {
         std::vector<std::string> temps;
         for (const std::string& e : dir.Entries())
             if (e.rfind(".zenk-convert-", 0) == 0) temps.push_back(e);
         EXPECT_EQ(temps, std::vector<std::string>{TempName(getpid())});
     }},
};

TEST(ConvertRoundTrip, EachGoodCommandWritesWhatItsReferenceWrites) {
    Scratch dir;
    RunOk({"--test-card", "bars75", "--size", "16x2", "--to", "UYVY16I", dir / "card.uyvy"});
    RunOk({"--test-card", "bars75", "--size", "8x2", "--to", "UYVY16I", dir / "card8.uyvy"});
    RunOk({"--test-card", "keyed-bars", "--size", "16x2", "--to", "BGR32I", dir / "card.bgra"});
    RunOk({"--test-card", "keyed-bars", "--size", "16x2", dir / "card.png"});
    RunOk({"--test-card", "ramp", "--size", "16x2", "--to", "BGR32I", dir / "frame-3.bgra"});
    const Bytes one = ReadBytes(dir / "card.bgra"), three = ReadBytes(dir / "frame-3.bgra");
    Bytes two = one;
    std::reverse(two.begin(), two.end());
    WriteBytes(dir / "frame-2.bgra", two);
    Bytes frames = one;
    frames.insert(frames.end(), two.begin(), two.end());
    frames.insert(frames.end(), three.begin(), three.end());
    WriteBytes(dir / "frames-2-3.bgra", Bytes(frames.begin() + static_cast<long>(one.size()), frames.end()));
    WriteBytes(dir / "three.bgra", frames);
    for (const GoodCase& c : kGoodCases) {
        SCOPED_TRACE(c.name);
        if (c.setup) c.setup(dir);
        const std::vector<std::string> args = Expand(dir, c.args);
        const ToolResult r = RunTool(args, c.terminal, c.input.empty() ? "" : dir / c.input);
        ExpectOk(r, args);
        if (c.says.empty()) {
            EXPECT_EQ(r.err, "");
        } else {
            EXPECT_NE((r.err + r.out).find(c.says), std::string::npos) << r.err << r.out;
        }
        if (!c.never.empty()) EXPECT_EQ(r.err.find(c.never), std::string::npos) << r.err;
        for (const auto& reference : c.references) RunOk(Expand(dir, reference));
        for (const auto& [written, expected] : c.same) {
            EXPECT_FALSE(ReadBytes(ArgPath(dir, expected)).empty()) << expected;
            EXPECT_EQ(ReadBytes(ArgPath(dir, written)), ReadBytes(ArgPath(dir, expected))) << written;
        }
        if (c.check) c.check(dir);
    }
}

}  // namespace
}  // namespace zenk::tool::test
