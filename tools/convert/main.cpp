// zenk-convert: converts raw and PNG pictures between the library's pixel
// formats from a shell, makes test cards and runs the demonstration.
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>
#include <iostream>
#include <sstream>

#include "colour.h"
#include "demo.h"
#include "errors.h"
#include "formats.h"
#include "job.h"
#include "library.h"
#include "line_pairs.h"
#include "test_card.h"

namespace zenk::tool {
namespace {

// --help, --list and the manual page made from --help fit 80 columns.
constexpr size_t kScreenWidth = 80;
constexpr size_t kOptionColumn = 24;

constexpr const char* kDescription = R"(Convert pictures between the pixel formats of ZenkTranscoderLibrary.

Raw files hold whole frames back to back, each frame's planes in the library's
order with tight lines: the colour block (for Y8PUV8I the luma plane, then the
Cb,Cr plane), then the alpha plane of an IA8P format. Formats go by the
library's tokens, ffmpeg's names and GStreamer's (UYVY16I = uyvy422 = UYVY;
see --list). Files named .uyvy, .yuyv, .nv16, .bgra and .bgr24 need no --from
or --to. A PNG input reads as BGR32I (its alpha, or opaque) or BGR24I; a PNG
output shows the result, converted back to BGR with the same options when it
is YUV. "-" is standard input or output; pipes and character devices such as
/dev/null are read and written as streams. Chroma is point-sampled: a pixel
pair's Cb comes from its even pixel, its Cr from its odd pixel.)";

constexpr const char* kFooter = R"(The matrix a command does not name is BT.601 up to 576 lines and BT.709 above,
by the YUV picture's height; the summary line names the one used.

The library's arithmetic, which hosts rely on, stays exactly as it is. Full
range BT.601 (--full-range --matrix 601) makes white 255 Y=254, and 127 of the
256 grey levels (129 to 255) one low; BT.709, and studio range, keep every
grey. A change of matrix leaves values one low, never high, against encoding
the picture in the new matrix: on 75% bars, 9 of the 18 Y, Cb and Cr values of
the six colour bars, either way. A change of matrix into UVYY16I or Y8PUV8I
writes UYVY16I bytes. Warnings name these, and options a conversion does not
read.

Exit status: 0 done, 1 system failure, 2 bad command, 3 bad input, 4 output
not written (or kept by -n), 5 no library.
See --list for the pairs and names, docs/zenk-convert.md for the details.

Examples:
  zenk-convert -s 1920x1080 grab.uyvy grab.png
          look at a raw UYVY grab
  zenk-convert --to UYVY --matrix 601 graphic.png graphic.uyvy
          a PNG to raw UYVY in BT.601
  zenk-convert --test-card bars75 -s 720x576 --to uyvy422 sd.uyvy
          75% bars, raw, in BT.601 (576 lines)
  zenk-convert -s 1920x1080 clip.uyvy --frames 1:25 frame-%04d.png
          the first 25 frames as frame-0001.png to frame-0025.png
  zenk-convert -s 1920x1080 --proxy 4 --interlaced in.uyvy proxy.bgra
          a 1920x270 proxy of an interlaced clip, each field on its own
  zenk-convert --stats -s 1920x1080 --to BGRA clip.uyvy /dev/null
          time a conversion
  zenk-convert --demo demo-output
          the test card through every format and back)";

// Breaks `text` into lines of at most `width` columns at spaces.
std::string Wrap(const std::string& text, size_t width) {
    std::istringstream words(text);
    std::string out, line;
    for (std::string word; words >> word;) {
        if (!line.empty() && line.size() + 1 + word.size() > width) {
            out += line + "\n";
            line.clear();
        }
        line += (line.empty() ? "" : " ") + word;
    }
    return out + line;
}

// Option descriptions wrapped at the screen's edge.
// Option descriptions wrapped at the screen's edge, one blank line between
// groups.
class HelpFormatter : public CLI::Formatter {
public:
    std::string make_option_desc(const CLI::Option* opt) const override {
        return Wrap(opt->get_description(), kScreenWidth - get_column_width());
    }
    std::string make_group(std::string group, bool is_positional, std::vector<const CLI::Option*> opts) const override {
        // The first group follows the positionals; the others already
        // follow a blank line.
        const bool first = is_positional || group == "Options";
        std::string s = CLI::Formatter::make_group(std::move(group), is_positional, std::move(opts));
        return !first && s.rfind("\n", 0) == 0 ? s.substr(1) : s;
    }
};

// What --list says about a pair: the words of its legend.
std::string PairWords(const Pair& p) {
    const PairUse use = UsesOf(p);
    std::string s;
    auto add = [&](bool on, const char* word) {
        if (on) s += (s.empty() ? "" : " ") + std::string(word);
    };
    add(use.matrix, "matrix");
    add(use.matrices, "matrices");
    add(use.range, "range");
    add(use.clamp, "clamp");
    add(use.alpha, "alpha");
    add(SliceObstacle(p, RequestOptions{}).empty(), "threads");
    const auto& modes = p.vertical_modes;
    add(std::find(modes.begin(), modes.end(), 1) != modes.end(), "proxy");
    add(std::find(modes.begin(), modes.end(), 3) != modes.end(), "double");
    return s;
}

void PrintList(const Library& library) {
    std::printf("Format pairs of the library loaded from\n  %s\n", library.path().c_str());
    std::printf("%s\n\n", Wrap("and what changes each result besides --streaming: matrix (--matrix), matrices "
                               "(--src-matrix, --dst-matrix: a change of matrix), range (--full-range), clamp "
                               "(--clamp-luma), alpha (--alpha), threads (--threads cuts each frame into bands), "
                               "proxy (--proxy 2 or 4, --interlaced), double (--double); (absent): not in this "
                               "library.",
                               kScreenWidth)
                              .c_str());
    for (const Pair& p : AllPairs())
        std::printf("  %-10s -> %-10s  %s%s\n", Token(p.src).c_str(), Token(p.dst).c_str(), PairWords(p).c_str(),
                    library.Has(p.src, p.dst) ? "" : " (absent)");

    std::printf("\n%s\n", Wrap("Formats, their names (in any case; ffmpeg's and GStreamer's name the colour block, "
                               "without an alpha plane) and raw layouts:",
                               kScreenWidth)
                              .c_str());
    std::printf("  %-11s %-8s %-9s %s\n", "token", "ffmpeg", "GStreamer", "layout");
    for (const FormatInfo& f : AllFormats()) {
        std::string gstreamer;
        for (const FormatName& n : GStreamerNames())
            if (n.format.format == f.format && !f.alpha_plane)
                gstreamer += (gstreamer.empty() ? "" : ",") + std::string(n.name);
        const FrameLayout l = LayoutOf(f.format, 2, 1);
        std::string layout = f.layout == Layout::Constant
                                 ? "no picture: the constant --alpha"
                                 : std::to_string(l.total() / 2) + (l.total() == 2 ? " byte" : " bytes") + " a pixel";
        if (f.alpha_plane) layout = Token(ColourPart(f.format)) + ", then an A8P plane";
        if (f.layout == Layout::AlphaPlane) layout += ": an alpha plane";
        std::printf("  %-11s %-8s %-9s %s\n", std::string(f.token).c_str(),
                    f.alpha_plane ? "" : std::string(f.raw_name).c_str(), gstreamer.c_str(), layout.c_str());
    }
    std::printf("  BGRx is BGR32I whose fourth byte holds no alpha.\n");
    std::printf("\nTest cards (BGR32I, any size):\n");
    for (const TestCard& c : AllTestCards()) std::printf("  %-11s %s\n", c.name.c_str(), c.description.c_str());
}

int Main(int argc, char** argv) {
    CLI::App app{kDescription, "zenk-convert"};
    app.formatter(std::make_shared<HelpFormatter>());
    app.get_formatter()->column_width(kOptionColumn);
    app.footer(kFooter);

    Job job;
    LinePairFlags line_pairs;
    std::vector<std::string> files;
    std::string from, to, size, matrix, src_matrix, dst_matrix, library_path, demo_dir, frames;
    int alpha = -1;
    uint32_t alpha_word = 0;
    bool list = false, version = false, stats = false, keep = false, overwrite = false;
    int proxy = 0, vertical_mode = 0, scan_mode = 0;

    app.add_option("FILES", files, "INPUT OUTPUT, or only OUTPUT with --test-card or an A8C source")->type_name("");
    app.add_option("--from", from, "source format (a PNG input reads as BGR32I, or BGR24I when given)")
        ->option_text("FORMAT");
    app.add_option("--to", to, "destination format (BGR32I for a PNG output)")->option_text("FORMAT");
    app.add_option("-s,--size", size, "picture size of a raw input or a test card")->option_text("WxH");
    app.add_option("--frames", frames, "frames A to B of the input, counted from 1 (5: to the end, :25 the first 25)")
        ->option_text("A:B");
    app.add_option("--test-card", job.test_card, "make the source: bars100, bars75, ramp or keyed-bars")
        ->option_text("NAME");
    app.add_option("--threads", job.threads, "convert each frame in bands on N threads (the same bytes)")
        ->option_text("N")
        ->check(CLI::Range(1, 256));

    const auto matrices = CLI::IsMember({"601", "709", "bt601", "bt709"}, CLI::ignore_case);
    const std::string colour = "Colour";
    app.add_option("--matrix", matrix,
                   std::string("the YUV side's matrix (also bt601, bt709); default: ") + kDefaultMatrixRule)
        ->option_text("601|709")
        ->check(matrices)
        ->group(colour);
    app.add_option("--src-matrix", src_matrix, "YUV to YUV: the source's matrix (default: --matrix, or the rule)")
        ->option_text("601|709")
        ->check(matrices)
        ->group(colour);
    app.add_option("--dst-matrix", dst_matrix,
                   "YUV to YUV: the destination's (default: --matrix, or the source's); the picture changes matrix "
                   "when they differ")
        ->option_text("601|709")
        ->check(matrices)
        ->group(colour);
    app.add_flag("--full-range", job.options.full_range, "full-swing luma 0-255, not studio 16-235")->group(colour);
    app.add_flag("--clamp-luma", job.options.clamp_luma, "clamp luma to 16-235")->group(colour);
    app.add_option("--alpha", alpha, "constant alpha 0-255 of outputs whose alpha is not in the source (255)")
        ->option_text("N")
        ->check(CLI::Range(0, 255))
        ->group(colour);
    app.add_option("--alpha-word", alpha_word, "the request's 32-bit alpha_value as it is, halves apart")
        ->option_text("W")
        ->excludes("--alpha")
        ->group(colour);

    const std::string proxies = "Proxies (the pairs --list marks proxy or double)";
    app.add_option("--proxy", proxy, "a proxy: every 2nd or 4th line (into YUV, every 2nd or 4th pixel too)")
        ->option_text("2|4")
        ->check(CLI::IsMember({2, 4}))
        ->group(proxies);
    app.add_flag("--interlaced", line_pairs.interlaced,
                 "with --proxy: the source is interlaced, each field reduced on its own")
        ->group(proxies);
    app.add_flag("--double", line_pairs.double_size, "BGR32I into YUV: every pixel and line twice")->group(proxies);

    const std::string fields = "Request fields (for hosts' engineers)";
    app.add_option("--vertical-mode", vertical_mode,
                   "0 frame; line pairs: 1, 2 reduce by 2, by 4 (as --proxy); 3 doubles (as --double)")
        ->option_text("N")
        ->check(CLI::Range(0, 4))
        ->group(fields);
    app.add_option("--scan-mode", scan_mode, "0 frame; 1 and 2 address line pairs alike")
        ->option_text("N")
        ->group(fields);
    app.add_flag("--field-pair", line_pairs.field_pair, "the field-pair flags (as --interlaced)")->group(fields);
    app.add_flag("--streaming", job.options.streaming, "write the output with non-temporal stores")->group(fields);

    const std::string file_group = "Input and output";
    app.add_flag("-y", overwrite, "replace an existing OUTPUT (the default)")->group(file_group);
    app.add_flag("-n", keep, "never replace an existing OUTPUT (exit status 4)")->group(file_group);
    app.add_flag("--drop-partial", job.drop_partial,
                 "convert the whole frames of an input that ends inside a frame, and warn about the bytes left over")
        ->group(file_group);
    app.add_option("--zoom", job.zoom, "repeat each pixel of a PNG output N times each way")
        ->option_text("N")
        ->check(CLI::Range(1, 64))
        ->group(file_group);
    app.add_option("--library", library_path, "the library to load (default: beside the tool, then its run path)")
        ->option_text("PATH")
        ->group(file_group);

    const std::string messages = "Messages";
    app.add_flag("-q,--quiet", job.quiet, "no warnings, notes or summary line")->group(messages);
    app.add_flag("--stats", stats, "print the summary line also when standard error is no terminal, for logs")
        ->group(messages);
    app.add_flag("--list", list, "every format pair and what changes it, the format names and layouts, the test cards")
        ->group(messages);
    app.add_flag("--version", version, "the versions of zenk-convert and of the library it loads")->group(messages);
    app.add_option("--demo", demo_dir, "the test card (bars100, 1920x1080) through every format and back, into DIR")
        ->option_text("DIR")
        ->group(messages);

    try {
        app.parse(argc, argv);
    } catch (const CLI::CallForHelp& e) {
        return app.exit(e);
    } catch (const CLI::ParseError& e) {
        std::fprintf(stderr, "zenk-convert: error: %s (see --help)\n", e.what());
        return kExitUsage;
    }

    if (version) std::printf("zenk-convert %s\n", ZENK_TOOL_VERSION);
    try {
        const Library library(library_path);
        if (version) {
            std::printf("library %s, from %s\n", library.version().c_str(), library.path().c_str());
            return kExitOk;
        }
        if (list) {
            PrintList(library);
            return kExitOk;
        }
        auto parse_format = [](const std::string& name, const char* flag) -> std::optional<NamedFormat> {
            if (name.empty()) return std::nullopt;
            if (auto f = ParseFormat(name)) return f;
            throw Error(kExitUsage, std::string(flag) + ": unknown format '" + name + "' (formats: " +
                                        FormatNameList() + ")");
        };
        auto matrix_code = [](const std::string& m) -> std::optional<int32_t> {
            if (m.empty()) return std::nullopt;
            return m.substr(m.size() - 3) == "601" ? kBt601 : kBt709;
        };
        job.matrix = {matrix_code(matrix), matrix_code(src_matrix), matrix_code(dst_matrix)};
        if (alpha >= 0) job.options.alpha_value = AlphaWord(static_cast<uint8_t>(alpha));
        if (app.count("--alpha-word")) job.options.alpha_value = alpha_word;
        if (app.count("--proxy")) line_pairs.proxy = proxy;
        if (app.count("--vertical-mode")) line_pairs.vertical_mode = vertical_mode;
        if (app.count("--scan-mode")) line_pairs.scan_mode = scan_mode;
        job.line_pairs = ApplyLinePairFlags(line_pairs, job.options);
        if (keep && overwrite) throw Error(kExitUsage, "-n keeps an existing OUTPUT and -y replaces it: give one");
        job.replace = !keep;

        if (!demo_dir.empty()) {
            if (!files.empty()) throw Error(kExitUsage, "--demo takes no INPUT or OUTPUT");
            DemoSettings demo;
            demo.directory = demo_dir;
            if (!job.test_card.empty()) demo.card = job.test_card;
            if (!size.empty()) demo.size = ParseSize(size);
            demo.options = job.options;
            demo.matrix = job.matrix;
            demo.threads = job.threads;
            return RunDemo(demo, library);
        }

        job.from = parse_format(from, "--from");
        job.to = parse_format(to, "--to");
        if (!size.empty()) job.size = ParseSize(size);
        if (!frames.empty()) job.frames = ParseFrames(frames);
        for (const char* flag : {"--matrix", "--src-matrix", "--dst-matrix", "--full-range", "--clamp-luma", "--alpha",
                                 "--alpha-word", "--scan-mode", "--field-pair", "--interlaced", "--drop-partial"})
            if (app.count(flag)) job.options_given.push_back(flag);
        const bool no_input = !job.test_card.empty() || (job.from && job.from->format == Format::A8C);
        if (files.empty()) throw Error(kExitUsage, "no OUTPUT given (see --help)");
        if (no_input && files.size() != 1)
            throw Error(kExitUsage, "give only OUTPUT: the source is " +
                                        (job.test_card.empty() ? std::string("the constant --alpha") : "the test card"));
        if (!no_input && files.size() != 2) throw Error(kExitUsage, "give INPUT and OUTPUT (see --help)");
        if (files.size() == 2) job.input = files[0];
        job.output = files.back();
        // A terminal gets a progress bar and a closing summary; a script
        // reading standard error gets neither, unless it asks with --stats.
        const bool terminal = isatty(STDERR_FILENO) != 0;
        job.progress = terminal;
        const JobReport report = RunJob(job, library);
        if ((terminal && !job.quiet) || stats) std::fprintf(stderr, "zenk-convert: %s\n", Summary(report).c_str());
        return kExitOk;
    } catch (const Error& e) {
        std::fprintf(stderr, "zenk-convert: error: %s\n", e.what());
        return e.code();
    } catch (const std::bad_alloc&) {
        std::fprintf(stderr, "zenk-convert: error: out of memory\n");
        return kExitFailure;
    } catch (const std::exception& e) {
        std::fprintf(stderr, "zenk-convert: error: %s\n", e.what());
        return kExitFailure;
    }
}

}  // namespace
}  // namespace zenk::tool

int main(int argc, char** argv) { return zenk::tool::Main(argc, argv); }
