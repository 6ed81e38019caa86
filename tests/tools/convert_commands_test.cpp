// Commands that succeed: what --list says, and the table of good commands,
// each checked against the files a plainer command writes.
#include <sys/stat.h>
#include <unistd.h>

#include <thread>
#include <sstream>

#include "tool_runner.h"

namespace zenk::tool::test {
namespace {

// A command that must succeed, the plainer commands that write what it must
// write, and the files it writes as "written=expected" pairs ("-" is
// standard output), byte for byte; what it says on standard error (or, with
// --version, output), nothing unless the row says.
const struct {
    const char* command;  // "@x" names the file x in the scratch directory
    std::vector<const char*> references;
    const char* same;
    const char* says = "";
    const char* never = "";   // must not be on standard error
    const char* input = "";   // a scratch file given as standard input
    bool terminal = false;    // standard error is a terminal
    const char* exists = "";  // files it writes besides
} kGoodCases[] = {
    // ffmpeg's and GStreamer's format names (each parsed as Client.EveryNameOfEachFamily
    // shows) on either side, the matrix's, and the extensions' formats.
    {"--from UYVY -s 16x2 --to BGRx @card.uyvy @out", {"--from UYVY16I --size 16x2 --to BGR32I @card.uyvy @ref"},
     "@out=@ref"},
    {"--from bgrx -s 16x2 --to nv16 @card.bgra @out", {"--from BGR32I --size 16x2 --to Y8PUV8I @card.bgra @ref"},
     "@out=@ref"},
    {"--matrix BT601 --from yuyv422 -s 16x2 --to bgr24 @card.uyvy @out",
     {"--matrix 601 --from YUYV16I --size 16x2 --to BGR24I @card.uyvy @ref"}, "@out=@ref"},
    {"-s 16x2 @card.uyvy @out.nv16", {"--from UYVY16I --size 16x2 --to Y8PUV8I @card.uyvy @ref"}, "@out.nv16=@ref"},
    // Standard input and output, and frames picked from a file or a stream.
    {"--to yuyv422 - @out", {"--to YUYV16I @card.png @ref"}, "@out=@ref", "", "", "card.png"},
    {"--from BGR32I -s 16x2 --to BGR24IA8P - -", {"-s 16x2 --to BGR24IA8P @three.bgra @ref"}, "-=@ref", "", "",
     "three.bgra"},
    {"--frames 2:3 -s 16x2 @three.bgra @out.bgr24", {"-s 16x2 @frames-2-3.bgra @ref.bgr24"}, "@out.bgr24=@ref.bgr24"},
    {"--frames 2: --from BGR32I -s 16x2 - @out.bgra", {}, "@out.bgra=@frames-2-3.bgra", "", "", "three.bgra"},
    {"--frames 2:3 -s 16x2 @three.bgra @f-%03d.png", {"-s 16x2 @frame-2.bgra @ref-2.png", "-s 16x2 @frame-3.bgra @ref-3.png"},
     "@f-002.png=@ref-2.png @f-003.png=@ref-3.png"},
    // PNG in and out: a PNG output shows the result as converted back with
    // the same options, an alpha plane in grey.
    {"--zoom 2 --test-card bars100 -s 8x1 @out.png", {"--test-card bars100 -s 16x2 @ref.png"}, "@out.png=@ref.png"},
    {"--to BGR32I @card.png @out", {}, "@out=@card.bgra"},
    {"--from BGR24I --to BGR24I @card.png @out", {"-s 16x2 --to BGR24I @card.bgra @ref"}, "@out=@ref"},
    {"--matrix 601 --to UYVY16I @card.png @out.png",
     {"--matrix 601 --to UYVY16I @card.png @view.uyvy", "--matrix 601 -s 16x2 --to BGR32I @view.uyvy @view.bgra",
      "-s 16x2 @view.bgra @ref.png"},
     "@out.png=@ref.png"},
    {"--to A8P @card.png @out.png", {"--to A8P @card.png @view.gray", "--from A8P -s 16x2 --to A8P @view.gray @ref.png"},
     "@out.png=@ref.png"},
    {"--alpha 9 -s 16x2 @card.uyvy @out.png", {}, ""},
    // The documented quirks and ignored options are named, unless quiet; a
    // matrix change into Y8PUV8I runs the kernel of UVYY16I (packed bytes).
    {"-s 8x2 --to UVYY16I @card8.uyvy @out", {}, "@out=@card8.uyvy",
     "warning: UYVY16I -> UVYY16I at a width of 8 (not a multiple of 16) copies"},
    {"--quiet -s 8x2 --to UVYY16I @card8.uyvy @out", {}, "@out=@card8.uyvy"},
    {"--src-matrix 601 --dst-matrix 709 -s 16x2 @card.uyvy @out.nv16",
     {"--src-matrix 601 --dst-matrix 709 -s 16x2 --to UVYY16I @card.uyvy @ref"}, "@out.nv16=@ref",
     "warning: a matrix change from UYVY16I to Y8PUV8I runs the library's UYVY16I-order kernel"},
    {"--alpha 9 --matrix 601 -s 16x2 @card.bgra @out.bgr24", {"-s 16x2 @card.bgra @ref.bgr24"}, "@out.bgr24=@ref.bgr24",
     "warning: --matrix, --alpha have no effect on BGR32I -> BGR24I"},
    // The matrix nobody names: BT.601 up to 576 lines, BT.709 above, by the
    // YUV picture's height (a proxy's reduced one), named in the summary.
    {"--stats --test-card bars75 -s 16x576 --to uyvy422 @sd.uyvy",
     {"--matrix 601 --test-card bars75 -s 16x576 --to UYVY16I @ref"}, "@sd.uyvy=@ref",
     "1 frame of 16x576 BGR32I -> UYVY16I (BT.601, studio range) in"},
    {"--stats --test-card bars75 -s 16x577 --to uyvy422 @hd.uyvy",
     {"--matrix 709 --test-card bars75 -s 16x577 --to UYVY16I @ref"}, "@hd.uyvy=@ref", "(BT.709, studio range)"},
    {"--stats --proxy 2 --test-card bars75 -s 16x1152 --to UYVY @out",
     {"--matrix 601 --proxy 2 --test-card bars75 -s 16x1152 --to UYVY @ref"}, "@out=@ref", "(BT.601, studio range)"},
    {"--stats --from UYVY -s 16x2 --to BGRA --full-range @card.uyvy @out",
     {"--matrix 601 --full-range --from UYVY -s 16x2 --to BGRA @card.uyvy @ref"}, "@out=@ref", "(BT.601, full range)"},
    {"--stats --dst-matrix 709 -s 16x2 --from UYVY --to YUY2 @card.uyvy @out",
     {"--src-matrix 601 --dst-matrix 709 -s 16x2 --from UYVY --to YUY2 @card.uyvy @ref"}, "@out=@ref",
     "(BT.601 -> BT.709)"},
    {"--stats --src-matrix 709 -s 16x2 --from UYVY --to YUY2 @card.uyvy @out",
     {"--matrix 709 -s 16x2 --from UYVY --to YUY2 @card.uyvy @ref"}, "@out=@ref", "(BT.709) in"},
    // The line-pair modes in users' words are the request's own fields.
    {"--proxy 2 --interlaced --test-card keyed-bars -s 16x8 --to UYVY @out",
     {"--vertical-mode 1 --scan-mode 1 --field-pair --test-card keyed-bars -s 16x8 --to UYVY @ref"}, "@out=@ref"},
    {"--proxy 4 --from UYVY -s 16x8 --to BGRA @card8x8.uyvy @out",
     {"--vertical-mode 2 --scan-mode 2 --from UYVY -s 16x8 --to BGRA @card8x8.uyvy @ref"}, "@out=@ref"},
    {"--double --test-card keyed-bars -s 8x2 --to NV16 @out",
     {"--vertical-mode 3 --scan-mode 1 --test-card keyed-bars -s 8x2 --to NV16 @ref"}, "@out=@ref"},
    // Flags the conversion does not read are named, each with why.
    {"--scan-mode 1 --field-pair --test-card bars75 -s 16x8 --to UYVY @out",
     {"--test-card bars75 -s 16x8 --to UYVY @ref"}, "@out=@ref",
     "warning: --scan-mode, --field-pair have no effect on BGR32I -> UYVY16I; --scan-mode acts in a line-pair mode "
     "only; only --proxy reduces the fields apart"},
    {"--interlaced --double --test-card bars75 -s 8x2 --to UYVY @out", {}, "",
     "warning: --interlaced has no effect on BGR32I -> UYVY16I"},
    {"--src-matrix 709 --test-card bars75 -s 16x2 --to UYVY @out", {"--test-card bars75 -s 16x2 --to UYVY @ref"},
     "@out=@ref", "warning: --src-matrix has no effect on BGR32I -> UYVY16I; it has one matrix: give --matrix"},
    {"--full-range -s 16x2 --from UYVY --to YUY2 @card.uyvy @out", {}, "",
     "warning: --full-range has no effect on UYVY16I -> YUYV16I"},
    {"--drop-partial --test-card bars75 -s 16x2 --to UYVY @out", {}, "",
     "warning: --drop-partial has no effect on BGR32I -> UYVY16I"},
    {"--src-matrix 601 --dst-matrix 709 -s 16x2 --to UVYY16IA8P @card.uyvy @out", {}, "",
     "warning: a matrix change from UYVY16I to UVYY16IA8P runs the library's UYVY16I-order kernel"},
    // Whole frames of an input that ends inside one, with --drop-partial.
    {"--drop-partial -s 16x2 @three-and-a-bit.bgra @out.bgr24", {"-s 16x2 @three.bgra @ref.bgr24"},
     "@out.bgr24=@ref.bgr24",
     "three-and-a-bit.bgra holds 397 bytes: 3 whole frames of 128 bytes, and 13 bytes left over"},
    {"--drop-partial --from BGRA -s 16x2 - @out.bgr24", {"-s 16x2 @three.bgra @ref.bgr24"}, "@out.bgr24=@ref.bgr24",
     "warning: standard input ended 13 bytes into frame 4; those bytes are not converted", "", "three-and-a-bit.bgra"},
    // Character devices are streams; -y is the default, -n writes what is new.
    {"--stats -s 16x2 --to BGRA @three.bgra /dev/null", {}, "", "3 frames of 16x2 BGR32I -> BGR32I in"},
    {"-n -s 16x2 @three.bgra /dev/null --to BGR24I", {}, ""},
    {"--test-card bars75 -s 16x2 --to UYVY /dev/stdout", {"--test-card bars75 -s 16x2 --to UYVY @ref"}, "-=@ref"},
    {"-y -s 16x2 @three.bgra @out.bgr24", {"-s 16x2 @three.bgra @ref.bgr24"}, "@out.bgr24=@ref.bgr24"},
    {"-n -s 16x2 @three.bgra @new-%d.bgr24", {"-s 16x2 @three.bgra @ref-%d.bgr24"},
     "@new-1.bgr24=@ref-1.bgr24 @new-3.bgr24=@ref-3.bgr24"},
    // What it says.
    {"-s 16x2 @three.bgra @out.bgr24", {}, "", "3 frames of 16x2 BGR32I -> BGR24I in", "", "", true},
    {"-q -s 16x2 @three.bgra @out.bgr24", {}, "", "3/3 frames", "frames of", "", true},
    {"-q --stats -s 16x2 @three.bgra @out.bgr24", {}, "", "zenk-convert: 3 frames of 16x2 BGR32I -> BGR24I in"},
    {"--version", {}, "", "zenk-convert 0.1.0\nlibrary 0.1.0, from "},
    {"--demo @demo --size 32x8", {}, "", "BGR24IA8P    bgr24    BGR32I             0         0", "", "", false,
     "@demo/card-bars100.png @demo/BGR24I.png @demo/BGR24IA8P.png"},
};

// The library has every pair of the tool's table under its export name, and
// --list shows each of them present: a wrong export name shows here rather
// than as pairs the other tests quietly skip. What it says changes a pair's
// result is checked on pairs of each kind, and --help and --list fit 80
// columns.
TEST(ConvertCommands, TheListShowsEveryPairPresent) {
    const ToolResult r = RunOk({"--list"});
    EXPECT_EQ(r.out.find("(absent)\n"), std::string::npos) << r.out;
    for (const Pair& p : AllPairs()) {
        EXPECT_TRUE(TheLibrary().Has(p.src, p.dst)) << ExportName(p.src, p.dst);
        const std::string head = "\n  " + Token(p.src) + std::string(10 - Token(p.src).size(), ' ') + " -> " +
                                 Token(p.dst) + " ";
        EXPECT_NE(r.out.find(head), std::string::npos) << head;
    }
    for (const char* row : {
             "  UYVY16I    -> BGR32I      matrix range clamp alpha threads proxy\n",
             "  UYVY16I    -> YUYV16I     matrices clamp threads\n",
             "  UYVY16I    -> V8U8Y8A8I   alpha threads\n",
             "  Y8PUV8I    -> BGR24I      matrix range clamp\n",
             "  UYVY16IA8P -> A8P         threads\n",
             "  BGR32I     -> UYVY16I     matrix range clamp threads proxy double\n",
             "  BGR24I     -> UYVY16IA8P  matrix range clamp alpha threads\n",
             "  BGR24IA8P  -> BGR32I      threads\n",
             "  BGR32I      bgra     BGRA,BGRx 4 bytes a pixel\n",
             "  A8P         gray     GRAY8     1 byte a pixel: an alpha plane\n",
         })
        EXPECT_NE(r.out.find(row), std::string::npos) << row;
    EXPECT_TRUE(FitsColumns(r.out, 80)) << r.out;
    const ToolResult help = RunOk({"--help"});
    EXPECT_TRUE(FitsColumns(help.out, 80)) << help.out;
    // The words, wherever the lines break.
    std::string words;
    std::istringstream split(help.out);
    for (std::string word; split >> word;) words += word + " ";
    for (const char* said : {"BT.601 up to 576 lines, BT.709 above", "--proxy 2|4", "--interlaced",
                             "--stats", " -n ", "--drop-partial", "makes white 255 Y=254, and 127 of the 256 grey",
                             "9 of the 18 Y, Cb and Cr values"})
        EXPECT_NE(words.find(said), std::string::npos) << said;
}

TEST(ConvertCommands, EachGoodCommandWritesWhatItsReferenceWrites) {
    Scratch dir;
    for (const char* card : {"bars75 -s 16x2 --to UYVY16I @card.uyvy", "bars75 -s 8x2 --to UYVY16I @card8.uyvy",
                             "ramp -s 16x8 --to UYVY16I @card8x8.uyvy", "keyed-bars -s 16x2 @card.png",
                             "keyed-bars -s 16x2 --to BGR32I @card.bgra", "ramp -s 16x2 --to BGR32I @frame-3.bgra"})
        RunOk(dir.Command(std::string("--test-card ") + card));
    const Bytes one = ReadBytes(dir / "card.bgra"), two(one.rbegin(), one.rend());
    const Bytes three = ReadBytes(dir / "frame-3.bgra");
    WriteBytes(dir / "frame-2.bgra", two);
    WriteBytes(dir / "frames-2-3.bgra", two + three);
    WriteBytes(dir / "three.bgra", one + two + three);
    WriteBytes(dir / "three-and-a-bit.bgra", one + two + three + Bytes(one.begin(), one.begin() + 13));
    for (const auto& c : kGoodCases) {
        SCOPED_TRACE(c.command);
        const ToolResult r = RunOk(dir.Command(c.command), c.terminal, *c.input ? dir / c.input : "");
        EXPECT_TRUE(*c.says ? (r.err + r.out).find(c.says) != std::string::npos : r.err.empty()) << r.err << r.out;
        if (*c.never) EXPECT_EQ(r.err.find(c.never), std::string::npos) << r.err;
        for (const char* reference : c.references) RunOk(dir.Command(reference));
        std::istringstream same(c.same);
        for (std::string pair; same >> pair;) {
            const size_t eq = pair.find('=');
            const std::string written = dir.Command(pair.substr(0, eq))[0], expected = dir.Command(pair.substr(eq + 1))[0];
            EXPECT_FALSE(ReadBytes(expected).empty()) << expected;
            EXPECT_EQ(written == "-" ? Bytes(r.out.begin(), r.out.end()) : ReadBytes(written), ReadBytes(expected))
                << written;
        }
        std::istringstream names(c.exists);
        for (std::string name; names >> name;) EXPECT_TRUE(std::filesystem::exists(dir.Command(name)[0])) << name;
    }
}

// A temporary file as a run killed outright leaves it, by `pid` on this host.
std::string TempName(pid_t pid) {
    char host[256] = "";
    gethostname(host, sizeof host - 1);
    return ".zenk-convert-" + std::to_string(pid) + "@" + host + "-AbC123";
}

// The output file: written through a link, an existing file's mode kept, a
// new one's from the umask, stale temporaries removed and live ones kept.
TEST(ConvertCommands, OutputFilesKeepTheirLinksAndModes) {
    Scratch dir;
    RunOk(dir.Command("--test-card ramp --size 16x2 --to BGR32I @in.bgra"));
    WriteBytes(dir / "target.bgr24", Bytes{1});
    symlink("target.bgr24", (dir / "link.bgr24").c_str());
    WriteBytes(dir / "kept.bgr24", Bytes{1});
    chmod((dir / "kept.bgr24").c_str(), 0604);
    WriteBytes(dir / TempName(999999999), Bytes{1});  // above any pid_max: no such process
    WriteBytes(dir / TempName(getpid()), Bytes{1});
    for (const char* out : {"@ref.bgr24", "@link.bgr24", "@kept.bgr24", "@new.bgr24"})
        RunOk(dir.Command(std::string("-s 16x2 @in.bgra ") + out));
    EXPECT_TRUE(std::filesystem::is_symlink(dir / "link.bgr24"));
    EXPECT_EQ(ReadBytes(dir / "target.bgr24"), ReadBytes(dir / "ref.bgr24"));
    EXPECT_EQ(std::filesystem::status(dir / "kept.bgr24").permissions(), std::filesystem::perms(0604));
    const mode_t mask = umask(0);
    umask(mask);
    EXPECT_EQ(std::filesystem::status(dir / "new.bgr24").permissions(), std::filesystem::perms(0666 & ~mask));
    std::vector<std::string> temps;
    for (const std::string& e : dir.Entries())
        if (e.rfind(".zenk-convert-", 0) == 0) temps.push_back(e);
    EXPECT_EQ(temps, std::vector<std::string>{TempName(getpid())});
}

// Pipes are streams: read as the frames come (an input such as bash's
// <(...) is a pipe under /dev/fd), written as they are converted, never
// replaced by a file.
TEST(ConvertCommands, PipesAreReadAndWrittenAsStreams) {
    Scratch dir;
    RunOk(dir.Command("--test-card keyed-bars --size 16x2 --to BGR32I @one.bgra"));
    RunOk(dir.Command("--from BGR32I -s 16x2 --to UYVY16I @one.bgra @ref.uyvy"));
    const Bytes one = ReadBytes(dir / "one.bgra"), expected = ReadBytes(dir / "ref.uyvy") + ReadBytes(dir / "ref.uyvy");
    ASSERT_EQ(mkfifo((dir / "in.fifo").c_str(), 0600), 0);
    ASSERT_EQ(mkfifo((dir / "out.fifo").c_str(), 0600), 0);
    // The other ends, each on a thread of its own: opening a pipe waits for
    // its other end.
    std::thread writer([&] { WriteBytes(dir / "in.fifo", one + one); });
    Bytes got;
    std::thread reader([&] { got = ReadBytes(dir / "out.fifo"); });
    const ToolResult r = RunOk(dir.Command("--stats --from BGRA -s 16x2 --to UYVY @in.fifo @out.fifo"));
    writer.join();
    reader.join();
    EXPECT_EQ(got, expected);
    EXPECT_NE(r.err.find("2 frames of 16x2"), std::string::npos) << r.err;
    struct stat st {};
    ASSERT_EQ(stat((dir / "out.fifo").c_str(), &st), 0);
    EXPECT_TRUE(S_ISFIFO(st.st_mode)) << "the pipe was replaced";
}

}  // namespace
}  // namespace zenk::tool::test
