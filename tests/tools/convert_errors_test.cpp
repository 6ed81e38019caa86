// Bad commands and bad files: each gives one clear line on standard error,
// its own exit status, and leaves an existing output file exactly as it was
// with no temporary file left beside it.
#include <sys/stat.h>

#include <sstream>

#include "tool_runner.h"

namespace zenk::tool::test {
namespace {

constexpr int kUsage = 2, kInput = 3, kOutput = 4, kLibrary = 5;

const struct {
    int code;
    const char* command;  // "@x" names the file x in the scratch directory
    const char* message;  // parts separated by '|', each in the one line
    const char* input = "";  // a scratch file given as standard input
} kBadCases[] = {
    // Formats, pairs and sizes.
    {kUsage, "--from BGR32I --size 8x4 --to RGB565 @good.bgra @out",
     "unknown format 'RGB565' (formats: UYVY16I, YUYV16I, UVYY16I, Y8PUV8I, V8U8Y8A8I, BGR32I, BGR24I, A8P, A8C, "
     "BGR24IA8P, UYVY16IA8P, YUYV16IA8P, UVYY16IA8P, Y8PUV8IA8P; ffmpeg: uyvy422, yuyv422, nv16, vuya, bgra, bgr24, "
     "gray; GStreamer: UYVY, YUY2, NV16, VUYA, BGRA, BGRx, BGR, GRAY8)"},
    {kUsage, "--from BGRx --size 8x4 --to GRAY8 @good.bgra @out", "BGRx has no alpha for BGR32I -> A8P"},
    {kUsage, "--from BGRx --size 8x4 --to BGRA @good.bgra @out", "BGRx has no alpha for BGR32I -> BGR32I"},
    {kUsage, "--from bgrx --size 8x4 --to UYVY16IA8P @good.bgra @out", "BGRx has no alpha for BGR32I -> UYVY16IA8P"},
    {kUsage, "--from YUY2 --size 8x4 --to GRAY8 @good.bgra @out", "unsupported pair YUYV16I -> A8P"},
    {kUsage, "--from NV12 --size 8x4 --to BGR24I @good.bgra @out", "unknown format 'NV12'"},
    {kUsage, "--from BGR24IA8P --size 8x4 --to UVYY16I @good.bgra @out",
     "unsupported pair BGR24IA8P -> UVYY16I|BGR24IA8P converts to:|BGR32I|A8P"},
    {kUsage, "--from A8P --size 8x4 --to BGR32I @good.bgra @out", "unsupported pair A8P -> BGR32I|A8P converts to: A8P"},
    {kInput, "--from BGR32I --size 8x4 --to BGR24I @short.bgra @out", "holds 100 bytes|8x4 BGR32I frame is 128 bytes"},
    {kInput, "--from BGR32I --size 8x3 --to BGR24I @two.bgra @out", "holds 256 bytes|frame is 96 bytes|multiple of 96"},
    {kUsage, "--from BGR32I --size 8by4 --to BGR24I @good.bgra @out", "--size: expected WIDTHxHEIGHT|'8by4'"},
    {kUsage, "--from BGR32I --size 0x4 --to BGR24I @good.bgra @out", "the width must be from 1 to 32768, not 0"},
    {kUsage, "--from BGR32I --size 8x-4 --to BGR24I @good.bgra @out", "the height must be from 1 to 32768, not -4"},
    {kUsage, "--from BGR32I --size 99999999999x4 --to BGR24I @good.bgra @out", "the width must be from 1 to 32768"},
    {kUsage, "--from BGR32I --size 32768x32768 --to BGR24I @good.bgra @out", "32768x32768 BGR32I frame is over the 1024 MiB"},
    {kUsage, "--test-card bars100 --size 63x4 --to UYVY16I @out", "UYVY16I pairs pixels|width must be even, not 63"},
    {kUsage, "--from YUYV16IA8P --size 5x4 --to A8P @good.bgra @out", "YUYV16IA8P pairs pixels|not 5"},
    // Files that cannot be read or written.
    {kInput, "--from BGR32I --size 8x4 --to BGR24I @nothing.bgra @out", "cannot read|nothing.bgra|No such file"},
    {kInput, "--from BGR32I --size 8x4 --to BGR24I @adir @out", "cannot read|adir: it is a directory"},
    {kInput, "--from BGR32I --size 8x4 --to BGR24I @broken.bgra @out",
     "holds 251 bytes|multiple of 128 (--drop-partial converts the whole frames)"},
    {kInput, "--drop-partial --from BGR32I --size 8x4 --to BGR24I @short.bgra @out", "holds 100 bytes|multiple of 128"},
    {kOutput, "--from BGR32I --size 8x4 --to BGR24I @good.bgra @no/such/out", "cannot write|No such file"},
    {kOutput, "--from BGR32I --size 8x4 --to BGR24I @good.bgra @adir", "cannot write|is a directory"},
    {kOutput, "--size 8x4 --to BGR24I @good.bgra @locked", "cannot write|locked: it is read-only"},
    {kOutput, "--size 8x4 --to BGR24I @good.bgra @link-to-locked", "link-to-locked: it is read-only"},
    // -n keeps what exists, checked before anything is written: a numbered
    // output's second file keeps the first from being written.
    {kOutput, "-n --size 8x4 --to BGR24I @good.bgra @out", "out exists, and -n keeps it"},
    {kOutput, "-n --size 8x4 --to BGR24I @two.bgra @f-%d.bgr24", "f-2.bgr24 exists, and -n keeps it"},
    {kUsage, "-n -y --size 8x4 --to BGR24I @good.bgra @new", "-n keeps an existing OUTPUT and -y replaces it"},
    // PNG files.
    {kInput, "--to BGR24I @corrupt.png @out", "corrupt.png: corrupt"},
    {kInput, "--to BGR24I @truncated.png @new.bgr", "truncated.png: corrupt"},
    {kInput, "--to BGR24I @notpng.png @out", "notpng.png: not a PNG"},
    {kUsage, "--to BGR24I - @out", "standard input is not a PNG; for raw frames give --from FORMAT and -s WIDTHxHEIGHT",
     "good.bgra"},
    {kUsage, "-s 8x4 --to BGR24I - @out", "standard input is not a PNG|--from FORMAT", "good.bgra"},
    {kUsage, "--from UYVY16I --to BGR24I @good.png @out", "a PNG reads as BGR32I or BGR24I"},
    {kUsage, "--size 16x4 --to BGR24I @good.png @out", "--size 16x4 does not match|8x4"},
    {kUsage, "--from BGR32I --size 8x4 @two.bgra @out.png", "a PNG holds one frame|holds 2|out-%04d.png"},
    {kUsage, "--zoom 2 --size 8x4 --to BGR24I @good.bgra @out", "--zoom enlarges a PNG output"},
    // What a raw file's name leaves unsaid.
    {kUsage, "--from BGR32I --to BGR24I @good.bgra @out", "--size WIDTHxHEIGHT is needed"},
    {kUsage, "--size 8x4 --to BGR24I @good.raw @out",
     "--from FORMAT is needed|good.raw does not say|.uyvy, .yuyv, .nv16, .bgra, .bgr24, .png"},
    {kUsage, "--from BGR32I --size 8x4 @good.bgra @out", "--to FORMAT is needed|.bgr24"},
    {kUsage, "--size 8x4 @good.bgra -", "--to FORMAT is needed: the name standard output"},
    // Frames and numbered names.
    {kUsage, "--frames 2:1 --size 8x4 --to BGR24I @two.bgra @out", "--frames: expected FIRST:LAST counted from 1|'2:1'"},
    {kUsage, "--frames 0:1 --size 8x4 --to BGR24I @two.bgra @out", "--frames: expected|'0:1'"},
    {kUsage, "--frames 2:3 --size 8x4 --to BGR24I @two.bgra @out", "--frames 2:3: |two.bgra holds 2 frames"},
    {kUsage, "--frames 2:3 --from BGR32I --size 8x4 --to BGR24I - @out",
     "--frames 2:3: standard input ended after frame 2", "two.bgra"},
    {kInput, "--from BGR32I --size 8x4 --to BGR24I - @out",
     "standard input ended 123 bytes into frame 2; a 8x4 BGR32I frame is 128 bytes", "broken.bgra"},
    {kUsage, "--frames 2 --to BGR24I @good.png @out", "good.png holds 1 frame"},
    {kUsage, "--size 8x4 @two.bgra @f-%d-%d.png", "a numbered name holds one %d"},
    {kUsage, "--size 8x4 @two.bgra @f-%s.png", "a numbered name holds one %d"},
    // Options out of range or out of place.
    {kUsage, "--matrix bt2020 --size 8x4 --to BGR24I @good.bgra @out", "--matrix|bt2020"},
    {kUsage, "--test-card smpte --size 8x4 --to BGR24I @out", "unknown test card 'smpte'|bars75"},
    {kUsage, "--vertical-mode 1 --scan-mode 1 --from BGR32I --size 8x4 --to BGR24I @good.bgra @out",
     "BGR32I -> BGR24I converts whole frames only (--vertical-mode 1)|UYVY16I -> BGR32I, Y8PUV8I -> BGR32I"},
    {kUsage, "--proxy 2 --from BGR32I --size 8x4 --to BGR24I @good.bgra @out", "converts whole frames only (--proxy 2)"},
    {kUsage, "--double --from UYVY --size 8x4 --to BGRA @good.bgra @out", "has no vertical mode 3 (--double)"},
    {kUsage, "--proxy 4 --test-card bars100 --size 16x12 --to UYVY @out",
     "--proxy 4 needs a height that is a multiple of 8, not 12"},
    {kUsage, "--proxy 2 --test-card bars100 --size 18x8 --to UYVY @out",
     "--proxy 2 to UYVY16I needs a width that is a multiple of 4, not 18"},
    {kUsage, "--proxy 3 --test-card bars100 --size 16x8 --to UYVY @out", "--proxy"},
    {kUsage, "--proxy 2 --double --test-card bars100 --size 16x8 --to UYVY @out", "give --proxy or --double, not both"},
    {kUsage, "--proxy 2 --vertical-mode 1 --test-card bars100 --size 16x8 --to UYVY @out",
     "--proxy sets the request's vertical mode: give it or --vertical-mode, not both"},
    {kUsage, "--vertical-mode 1 --test-card bars100 --size 16x8 --to UYVY16I @out",
     "--vertical-mode 1 converts line pairs: it needs --scan-mode 1 or 2 (or say --proxy or --double)"},
    {kUsage, "--threads 0 --from BGR32I --size 8x4 --to BGR24I @good.bgra @out", "--threads"},
    {kUsage, "--alpha 300 --from A8C --size 8x4 --to A8P @out", "--alpha"},
    {kUsage, "--from A8C --size 8x4 --to A8P @good.bgra @out", "give only OUTPUT: the source is the constant --alpha"},
    {kUsage, "--demo @demo --size 31x2", "the width must be even, not 31"},
    {kUsage, "--demo @demo --proxy 2", "the demonstration converts whole frames, in no line-pair mode"},
    {kLibrary, "--library @missing.so --list", "cannot load the conversion library"},
};

// Files every case can use: a valid 8x4 BGR32I frame (128 bytes), a short
// one, two frames and two less 5 bytes, a good PNG, a corrupt and a
// truncated PNG, text named .png, a directory, a read-only output and a
// link to it, and the second file of a numbered output.
void MakeFixtures(const Scratch& dir) {
    RunOk(dir.Command("--test-card bars100 --size 8x4 --to BGR32I @good.bgra"));
    RunOk(dir.Command("--test-card bars100 --size 8x4 @good.png"));
    const Bytes frame = ReadBytes(dir / "good.bgra"), two = frame + frame;
    ASSERT_EQ(frame.size(), 128u);
    WriteBytes(dir / "short.bgra", Bytes(frame.begin(), frame.begin() + 100));
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
    WriteBytes(dir / "f-2.bgr24", Bytes{'k', 'e', 'e', 'p'});
}

TEST(ConvertErrors, EachBadInputFailsCleanlyAndKeepsTheOutput) {
    Scratch dir;
    MakeFixtures(dir);
    const Bytes precious = {'k', 'e', 'e', 'p'};
    for (const auto& c : kBadCases) {
        SCOPED_TRACE(c.command);
        for (const char* kept : {"out", "out.png"}) WriteBytes(dir / kept, precious);
        const std::vector<std::string> before = dir.Entries();
        const ToolResult r = RunTool(dir.Command(c.command), false, *c.input ? dir / c.input : "");
        EXPECT_EQ(r.code, c.code) << r.err;
        EXPECT_EQ(r.err.rfind("zenk-convert: error: ", 0), 0u) << r.err;
        EXPECT_EQ(std::count(r.err.begin(), r.err.end(), '\n'), 1) << "one line: " << r.err;
        std::istringstream parts(c.message);
        for (std::string part; std::getline(parts, part, '|');) EXPECT_NE(r.err.find(part), std::string::npos) << r.err;
        EXPECT_TRUE(r.out.empty()) << r.out;
        for (const char* f : {"out", "out.png", "locked", "f-2.bgr24"}) EXPECT_EQ(ReadBytes(dir / f), precious) << f;
        EXPECT_EQ(dir.Entries(), before) << "no temporary file left behind";
    }
}

}  // namespace
}  // namespace zenk::tool::test
