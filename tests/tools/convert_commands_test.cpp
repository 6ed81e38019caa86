// Commands that succeed: what --list says, and the table of good commands,
// each checked against the files a plainer command writes.
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <functional>

#include "tool_runner.h"

namespace zenk::tool::test {
namespace {

// Commands that must succeed, each with the files it must write: byte for
// byte those of a reference command or a fixture ("-" is standard output),
// and what it says on
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
    {"raw frames through standard input and output", {"--from", "BGR32I", "-s", "16x2", "--to", "BGR24IA8P", "-", "-"},
     {{"-s", "16x2", "--to", "BGR24IA8P", "@three.bgra", "@ref"}}, {{"-", "@ref"}}, "", "", "three.bgra"},
    {"a PNG read as BGR32I keeps its alpha", {"--to", "BGR32I", "@card.png", "@out"}, {}, {{"@out", "@card.bgra"}}},
    {"a PNG read as BGR24I", {"--from", "BGR24I", "--to", "BGR24I", "@card.png", "@out"},
     {{"-s", "16x2", "--to", "BGR24I", "@card.bgra", "@ref"}}, {{"@out", "@ref"}}},
    // A PNG output shows the result as converted back with the same options.
    {"a PNG of a YUV result", {"--matrix", "601", "--to", "UYVY16I", "@card.png", "@out.png"},
     {{"--matrix", "601", "--to", "UYVY16I", "@card.png", "@view.uyvy"},
      {"--matrix", "601", "-s", "16x2", "--to", "BGR32I", "@view.uyvy", "@view.bgra"},
      {"-s", "16x2", "@view.bgra", "@ref.png"}},
     {{"@out.png", "@ref.png"}}},
    {"a PNG of an alpha plane is grey", {"--to", "A8P", "@card.png", "@out.png"},
     {{"--to", "A8P", "@card.png", "@view.gray"}, {"--from", "A8P", "-s", "16x2", "--to", "A8P", "@view.gray", "@ref.png"}},
     {{"@out.png", "@ref.png"}}},
    {"summary on a terminal", {"-s", "16x2", "@three.bgra", "@out.bgr24"}, {}, {},
     "3 frames of 16x2 BGR32I -> BGR24I in", "", "", true},
    {"no summary when quiet", {"-q", "-s", "16x2", "@three.bgra", "@out.bgr24"}, {}, {}, "3/3 frames", "frames of", "",
     true},
    {"version", {"--version"}, {}, {}, "zenk-convert 0.1.0\nlibrary 0.1.0, from "},
    {"the demonstration", {"--demo", "@demo", "--size", "32x8"}, {}, {},
     "BGR24IA8P    bgr24    BGR32I             0         0", "", "", false, {},
     [](const Scratch& dir) {
         for (const char* file : {"card-bars100.png", "BGR24I.png", "BGR24IA8P.png"})
             EXPECT_TRUE(std::filesystem::exists(dir / ("demo/" + std::string(file)))) << file;
     }},
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
    {"a new file's mode from the umask", {"-s", "16x2", "@card.bgra", "@new.bgr24"}, {}, {}, "", "", "", false, {},
     [](const Scratch& dir) {
         const mode_t mask = umask(0);
         umask(mask);
         EXPECT_EQ(ModeOf(dir / "new.bgr24"), 0666u & ~mask);
     }},
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

// --list marks exactly the pairs the library lacks; the RGB and alpha
// family's exports have always been there, so a wrong export name shows here
// rather than as pairs the other tests quietly skip.
TEST(ConvertCommands, TheListShowsWhatTheLibraryHas) {
    const std::vector<std::pair<Format, Format>> family = {
        {Format::BGR32I, Format::BGR32I},    {Format::BGR32I, Format::BGR24I},     {Format::BGR24I, Format::BGR32I},
        {Format::BGR24I, Format::BGR24I},    {Format::BGR32I, Format::BGR24IA8P},  {Format::A8P, Format::A8P},
        {Format::A8C, Format::A8P},          {Format::BGR32I, Format::A8P},        {Format::BGR24IA8P, Format::BGR32I},
        {Format::BGR24I, Format::BGR24IA8P}, {Format::BGR24IA8P, Format::BGR24IA8P}, {Format::BGR24IA8P, Format::A8P},
        {Format::UYVY16IA8P, Format::A8P},   {Format::YUYV16IA8P, Format::A8P}};
    for (const auto& [src, dst] : family) EXPECT_TRUE(TheLibrary().Has(src, dst)) << ExportName(src, dst);
    const ToolResult r = RunOk({"--list"});
    for (const Pair& p : AllPairs()) {
        const std::string head = Token(p.src) + std::string(12 - Token(p.src).size(), ' ') + "-> " + Token(p.dst) + " ";
        const size_t at = r.out.find("  " + head);
        ASSERT_NE(at, std::string::npos) << head;
        const std::string line = r.out.substr(at, r.out.find('\n', at) - at);
        EXPECT_EQ(line.find("(absent)") == std::string::npos, TheLibrary().Has(p.src, p.dst)) << line;
    }
}

TEST(ConvertCommands, EachGoodCommandWritesWhatItsReferenceWrites) {
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
            const Bytes got = written == "-" ? Bytes(r.out.begin(), r.out.end()) : ReadBytes(ArgPath(dir, written));
            EXPECT_EQ(got, ReadBytes(ArgPath(dir, expected))) << written;
        }
        if (c.check) c.check(dir);
    }
}

}  // namespace
}  // namespace zenk::tool::test
