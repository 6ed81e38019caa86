// Bad commands and bad files: each gives one clear line on standard error,
// its own exit status, and leaves an existing output file exactly as it was
// with no temporary file left beside it.
#include <sys/stat.h>

#include "tool_runner.h"

namespace zenk::tool::test {
namespace {

constexpr int kUsage = 2, kInput = 3, kOutput = 4;

struct BadCase {
    const char* name;
    std::vector<std::string> args;  // "@x" names the file x in the scratch directory
    int code;
    std::vector<std::string> message;  // every part must appear in the one line
    std::string input = {};            // a scratch file given as standard input
};

// Files every case can use: a valid 8x4 BGR32I frame (128 bytes), a short
// one, a good PNG, a corrupt and a truncated PNG, a read-only output.
void MakeFixtures(const Scratch& dir) {
    RunOk({"--test-card", "bars100", "--size", "8x4", "--to", "BGR32I", dir / "good.bgra"});
    RunOk({"--test-card", "bars100", "--size", "8x4", dir / "good.png"});
    Bytes frame = ReadBytes(dir / "good.bgra");
    ASSERT_EQ(frame.size(), 128u);
    WriteBytes(dir / "short.bgra", Bytes(frame.begin(), frame.begin() + 100));
    Bytes two = frame;
    two.insert(two.end(), frame.begin(), frame.end());
    WriteBytes(dir / "two.bgra", two);
    WriteBytes(dir / "broken.bgra", Bytes(two.begin(), two.end() - 5));
    Bytes png = ReadBytes(dir / "good.png");
    Bytes corrupt(png.begin(), png.begin() + 8);  // the signature, then noise
    for (int i = 0; i < 200; ++i) corrupt.push_back(static_cast<uint8_t>(i * 37));
    WriteBytes(dir / "corrupt.png", corrupt);
    WriteBytes(dir / "truncated.png", Bytes(png.begin(), png.begin() + static_cast<long>(png.size() * 2 / 3)));
    WriteBytes(dir / "notpng.png", Bytes{'h', 'e', 'l', 'l', 'o'});
    std::filesystem::create_directory(dir / "adir");
    WriteBytes(dir / "locked", Bytes{'k', 'e', 'e', 'p'});
    chmod((dir / "locked").c_str(), 0444);
    symlink("locked", (dir / "link-to-locked").c_str());
}

const std::vector<BadCase> kBadCases = {
    {"unknown destination format", {"--from", "BGR32I", "--size", "8x4", "--to", "RGB565", "@good.bgra", "@out"},
     kUsage, {"unknown format 'RGB565'", "UYVY16I"}},
    {"unknown source format", {"--from", "NV12", "--size", "8x4", "--to", "BGR24I", "@good.bgra", "@out"},
     kUsage, {"unknown format 'NV12'"}},
    {"pair the library never offers", {"--from", "BGR24IA8P", "--size", "8x4", "--to", "UVYY16I", "@good.bgra", "@out"},
     kUsage, {"unsupported pair BGR24IA8P -> UVYY16I", "BGR24IA8P converts to:", "BGR32I", "A8P"}},
    {"A8P converts only to A8P", {"--from", "A8P", "--size", "8x4", "--to", "BGR32I", "@good.bgra", "@out"},
     kUsage, {"unsupported pair A8P -> BGR32I", "A8P converts to: A8P"}},
    {"file shorter than a frame", {"--from", "BGR32I", "--size", "8x4", "--to", "BGR24I", "@short.bgra", "@out"},
     kInput, {"holds 100 bytes", "8x4 BGR32I frame is 128 bytes"}},
    {"file not a whole number of frames", {"--from", "BGR32I", "--size", "8x3", "--to", "BGR24I", "@two.bgra", "@out"},
     kInput, {"holds 256 bytes", "frame is 96 bytes", "multiple of 96"}},
    {"size that is not WxH", {"--from", "BGR32I", "--size", "8by4", "--to", "BGR24I", "@good.bgra", "@out"},
     kUsage, {"--size: expected WIDTHxHEIGHT", "'8by4'"}},
    {"zero width", {"--from", "BGR32I", "--size", "0x4", "--to", "BGR24I", "@good.bgra", "@out"},
     kUsage, {"the width must be from 1 to 32768, not 0"}},
    {"negative height", {"--from", "BGR32I", "--size", "8x-4", "--to", "BGR24I", "@good.bgra", "@out"},
     kUsage, {"the height must be from 1 to 32768, not -4"}},
    {"absurd side", {"--from", "BGR32I", "--size", "99999999999x4", "--to", "BGR24I", "@good.bgra", "@out"},
     kUsage, {"the width must be from 1 to 32768"}},
    {"absurd frame", {"--from", "BGR32I", "--size", "32768x32768", "--to", "BGR24I", "@good.bgra", "@out"},
     kUsage, {"32768x32768 BGR32I frame is over the 1024 MiB"}},
    {"odd width into 4:2:2", {"--test-card", "bars100", "--size", "63x4", "--to", "UYVY16I", "@out"},
     kUsage, {"UYVY16I pairs pixels", "width must be even, not 63"}},
    {"odd width out of 4:2:2", {"--from", "YUYV16IA8P", "--size", "5x4", "--to", "A8P", "@good.bgra", "@out"},
     kUsage, {"YUYV16IA8P pairs pixels", "not 5"}},
    {"missing input", {"--from", "BGR32I", "--size", "8x4", "--to", "BGR24I", "@nothing.bgra", "@out"},
     kInput, {"cannot read", "nothing.bgra", "No such file"}},
    {"directory as input", {"--from", "BGR32I", "--size", "8x4", "--to", "BGR24I", "@adir", "@out"},
     kInput, {"cannot read", "not a regular file"}},
    {"output in a missing directory", {"--from", "BGR32I", "--size", "8x4", "--to", "BGR24I", "@good.bgra", "@no/such/out"},
     kOutput, {"cannot write", "No such file"}},
    {"directory as output", {"--from", "BGR32I", "--size", "8x4", "--to", "BGR24I", "@good.bgra", "@adir"},
     kOutput, {"cannot write", "is a directory"}},
    {"device as output", {"--from", "BGR32I", "--size", "8x4", "--to", "BGR24I", "@good.bgra", "/dev/null"},
     kOutput, {"cannot write /dev/null: not a regular file"}},
    {"corrupt PNG", {"--to", "BGR24I", "@corrupt.png", "@out"}, kInput, {"corrupt.png: corrupt"}},
    {"truncated PNG, to a new file", {"--to", "BGR24I", "@truncated.png", "@new.bgr"}, kInput, {"truncated.png: corrupt"}},
    {"text named .png", {"--to", "BGR24I", "@notpng.png", "@out"}, kInput, {"notpng.png: corrupt"}},
    {"PNG read as YUV", {"--from", "UYVY16I", "--to", "BGR24I", "@good.png", "@out"},
     kUsage, {"a PNG reads as BGR32I or BGR24I"}},
    {"size that contradicts the PNG", {"--size", "16x4", "--to", "BGR24I", "@good.png", "@out"},
     kUsage, {"--size 16x4 does not match", "8x4"}},
    {"many frames into one PNG", {"--from", "BGR32I", "--size", "8x4", "@two.bgra", "@out.png"},
     kUsage, {"a PNG holds one frame", "holds 2", "out-%04d.png"}},
    {"raw input without its size", {"--from", "BGR32I", "--to", "BGR24I", "@good.bgra", "@out"},
     kUsage, {"--size WIDTHxHEIGHT is needed"}},
    {"raw input named without its format", {"--size", "8x4", "--to", "BGR24I", "@good.raw", "@out"},
     kUsage, {"--from FORMAT is needed", "good.raw does not say", ".uyvy, .yuyv, .nv16, .bgra, .bgr24, .png"}},
    {"raw output named without its format", {"--from", "BGR32I", "--size", "8x4", "@good.bgra", "@out"},
     kUsage, {"--to FORMAT is needed", ".bgr24"}},
    {"raw standard output without its format", {"--size", "8x4", "@good.bgra", "-"},
     kUsage, {"--to FORMAT is needed: the name standard output"}},
    {"unknown matrix", {"--matrix", "bt2020", "--size", "8x4", "--to", "BGR24I", "@good.bgra", "@out"},
     kUsage, {"--matrix", "bt2020"}},
    {"read-only output", {"--size", "8x4", "--to", "BGR24I", "@good.bgra", "@locked"},
     kOutput, {"cannot write", "locked: it is read-only"}},
    {"link to a read-only output", {"--size", "8x4", "--to", "BGR24I", "@good.bgra", "@link-to-locked"},
     kOutput, {"link-to-locked: it is read-only"}},
    {"frames backwards", {"--frames", "2:1", "--size", "8x4", "--to", "BGR24I", "@two.bgra", "@out"},
     kUsage, {"--frames: expected FIRST:LAST counted from 1", "'2:1'"}},
    {"frame 0", {"--frames", "0:1", "--size", "8x4", "--to", "BGR24I", "@two.bgra", "@out"},
     kUsage, {"--frames: expected", "'0:1'"}},
    {"frames past the end", {"--frames", "2:3", "--size", "8x4", "--to", "BGR24I", "@two.bgra", "@out"},
     kUsage, {"--frames 2:3: ", "two.bgra holds 2 frames"}},
    {"frames past the end of a stream", {"--frames", "2:3", "--from", "BGR32I", "--size", "8x4", "--to", "BGR24I", "-",
                                         "@out"},
     kUsage, {"--frames 2:3: standard input ended after frame 2"}, "two.bgra"},
    {"stream ending inside a frame", {"--from", "BGR32I", "--size", "8x4", "--to", "BGR24I", "-", "@out"},
     kInput, {"standard input ended 123 bytes into frame 2; a 8x4 BGR32I frame is 128 bytes"}, "broken.bgra"},
    {"a second frame of a PNG", {"--frames", "2", "--to", "BGR24I", "@good.png", "@out"},
     kUsage, {"good.png holds 1 frame"}},
    {"numbered name with two numbers", {"--size", "8x4", "@two.bgra", "@f-%d-%d.png"},
     kUsage, {"a numbered name holds one %d"}},
    {"numbered name with a string", {"--size", "8x4", "@two.bgra", "@f-%s.png"},
     kUsage, {"a numbered name holds one %d"}},
    {"zoomed raw output", {"--zoom", "2", "--size", "8x4", "--to", "BGR24I", "@good.bgra", "@out"},
     kUsage, {"--zoom enlarges a PNG output"}},
    {"text on standard input read as PNG", {"--to", "BGR24I", "-", "@out"},
     kInput, {"standard input: corrupt or not a PNG"}, "notpng.png"},
    {"unknown test card", {"--test-card", "smpte", "--size", "8x4", "--to", "BGR24I", "@out"},
     kUsage, {"unknown test card 'smpte'", "bars75"}},
    {"vertical mode on a frame-only pair", {"--vertical-mode", "1", "--scan-mode", "1", "--from", "BGR32I", "--size",
                                            "8x4", "--to", "BGR24I", "@good.bgra", "@out"},
     kUsage, {"BGR32I -> BGR24I has no vertical mode 1", "offers 0"}},
    {"line pairs without line-pair addressing", {"--vertical-mode", "1", "--test-card", "bars100", "--size", "16x8",
                                                 "--to", "UYVY16I", "@out"},
     kUsage, {"needs --scan-mode 1 or 2"}},
    {"no thread", {"--threads", "0", "--from", "BGR32I", "--size", "8x4", "--to", "BGR24I", "@good.bgra", "@out"},
     kUsage, {"--threads"}},
    {"alpha beyond a byte", {"--alpha", "300", "--from", "A8C", "--size", "8x4", "--to", "A8P", "@out"},
     kUsage, {"--alpha"}},
    {"demonstration at an odd width", {"--demo", "@demo", "--size", "31x2"},
     kUsage, {"the width must be even, not 31"}},
    {"demonstration in a line-pair mode", {"--demo", "@demo", "--vertical-mode", "1", "--scan-mode", "1"},
     kUsage, {"--vertical-mode must be 0"}},
    {"A8C with an input file", {"--from", "A8C", "--size", "8x4", "--to", "A8P", "@good.bgra", "@out"},
     kUsage, {"give only OUTPUT: the source is the constant --alpha"}},
    {"library that cannot be loaded", {"--library", "@missing.so", "--list"}, 5, {"cannot load the conversion library"}},
};

TEST(ConvertErrors, EachBadInputFailsCleanlyAndKeepsTheOutput) {
    Scratch dir;
    MakeFixtures(dir);
    const Bytes precious = {'k', 'e', 'e', 'p'};
    for (const BadCase& c : kBadCases) {
        SCOPED_TRACE(c.name);
        WriteBytes(dir / "out", precious);
        WriteBytes(dir / "out.png", precious);
        const std::vector<std::string> before = dir.Entries();
        std::vector<std::string> args;
        for (const std::string& a : c.args) args.push_back(a[0] == '@' ? dir / a.substr(1) : a);

        const ToolResult r = RunTool(args, false, c.input.empty() ? "" : dir / c.input);
        EXPECT_EQ(r.code, c.code) << r.err;
        EXPECT_EQ(r.err.rfind("zenk-convert: error: ", 0), 0u) << r.err;
        EXPECT_EQ(std::count(r.err.begin(), r.err.end(), '\n'), 1) << "one line: " << r.err;
        for (const std::string& part : c.message) EXPECT_NE(r.err.find(part), std::string::npos) << r.err;
        EXPECT_TRUE(r.out.empty()) << r.out;
        EXPECT_EQ(ReadBytes(dir / "out"), precious);
        EXPECT_EQ(ReadBytes(dir / "out.png"), precious);
        EXPECT_EQ(ReadBytes(dir / "locked"), precious);
        EXPECT_EQ(dir.Entries(), before) << "no temporary file left behind";
    }
}

}  // namespace
}  // namespace zenk::tool::test
