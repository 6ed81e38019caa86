// zenk-convert: converts raw and PNG pictures between the library's pixel
// formats from a shell, makes test cards and runs the demonstration.
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <cstdio>
#include <iostream>

#include "conversion.h"
#include "demo.h"
#include "errors.h"
#include "formats.h"
#include "job.h"
#include "library.h"
#include "test_card.h"

namespace zenk::tool {
namespace {

constexpr const char* kDescription = R"(Convert pictures between the pixel formats of ZenkTranscoderLibrary.

Raw files hold whole frames one after another, each frame's planes in the
library's order with tight lines: the colour block (for Y8PUV8I the luma plane
then the Cb,Cr plane), then the alpha plane of an IA8P format. Common names:
UYVY16I = uyvy422, YUYV16I = yuyv422, Y8PUV8I = nv16, V8U8Y8A8I = vuya,
BGR32I = bgra, BGR24I = bgr24, A8P = gray; these names are accepted too, and
.uyvy, .yuyv, .nv16, .bgra and .bgr24 files need no --from or --to. A PNG input
reads as BGR32I (its alpha, or opaque) or BGR24I; a PNG output shows the
result, converted back to BGR with the same options when it is YUV. Chroma is
point-sampled: a pixel pair's Cb comes from its even pixel, its Cr from its
odd pixel, and decoding repeats each pair's chroma for both pixels. "-" is
standard input or output: raw frames, or a PNG on standard input without
--from.)";

constexpr const char* kExamples = R"(Examples:
  zenk-convert -s 1920x1080 grab.uyvy grab.png
                      look at a raw UYVY16I grab
  zenk-convert --to UYVY16I --matrix 601 graphic.png graphic.uyvy
                      a PNG to raw UYVY16I in BT.601
  zenk-convert --test-card bars75 -s 1920x1080 bars.nv16
                      a test card as raw Y8PUV8I (nv16)
  zenk-convert -s 1920x1080 clip.uyvy --frames 1:25 frame-%04d.png
                      the first 25 frames of a clip as frame-0001.png to frame-0025.png
  zenk-convert --demo demo-output
                      the demonstration: the test card through every format and back)";

void PrintList(const Library& library) {
    std::printf("Format pairs (source -> destination), from %s:\n", library.path().c_str());
    for (const Pair& p : AllPairs()) {
        const bool present = library.Has(p.src, p.dst);
        std::printf("  %-11s -> %-11s %-9s %s\n", std::string(Info(p.src).token).c_str(),
                    std::string(Info(p.dst).token).c_str(), present ? "" : "(absent)",
                    (PairOptions(p) + (SliceObstacle(p, RequestOptions{}).empty() ? ", --threads" : "")).c_str());
    }
    std::printf("\nRaw layouts:\n");
    for (const FormatInfo& f : AllFormats()) {
        const FrameLayout l = LayoutOf(f.format, 2, 1);
        std::printf("  %-11s %s%s%s\n", std::string(f.token).c_str(),
                    f.layout == Layout::Constant ? "no picture: the constant --alpha"
                                                 : (std::to_string(l.total() / 2) + (l.total() == 2 ? " byte" : " bytes") + " a pixel").c_str(),
                    f.raw_name.empty() ? "" : (", colour block as " + std::string(f.raw_name)).c_str(),
                    f.alpha_plane ? ", then an A8P plane" : "");
    }
    std::printf("\nTest cards (BGR32I, any size):\n");
    for (const TestCard& c : AllTestCards()) std::printf("  %-11s %s\n", c.name.c_str(), c.description.c_str());
}

int Main(int argc, char** argv) {
    CLI::App app{kDescription, "zenk-convert"};
    app.get_formatter()->column_width(34);

    Job job;
    std::vector<std::string> files;
    std::string from, to, size, matrix, src_matrix, dst_matrix, library_path, demo_dir;
    int alpha = -1;
    uint32_t alpha_word = 0;
    std::string frames;
    bool list = false, version = false;

    app.add_option("FILES", files, "INPUT OUTPUT, or only OUTPUT with --test-card or an A8C source")
        ->type_name("");
    app.footer("Exit status: 0 done, 1 system failure, 2 bad command, 3 bad input, 4 output not written,\n"
               "5 no library.\n"
               "See --list for the format pairs and docs/zenk-convert.md for the details.\n\n" +
               std::string(kExamples));
    app.add_option("--from", from, "source format (a PNG input reads as BGR32I unless BGR24I is given)");
    app.add_option("--to", to, "destination format (a PNG output defaults to BGR32I)");
    app.add_option("-s,--size", size, "picture size WIDTHxHEIGHT of a raw input or a test card");
    app.add_option("--frames", frames, "convert frames FIRST:LAST of the input, counted from 1 (LAST included; 5: to the end)");
    app.add_option("--test-card", job.test_card, "make the source picture: bars100, bars75, ramp or keyed-bars");
    const auto matrices = CLI::IsMember({"601", "709", "bt601", "bt709"}, CLI::ignore_case);
    app.add_option("--matrix", matrix, "colour matrix of both sides: 601 or 709 (bt601, bt709; default 709)")
        ->check(matrices);
    app.add_option("--src-matrix", src_matrix, "source matrix of a YUV to YUV conversion: 601 or 709")
        ->check(matrices);
    app.add_option("--dst-matrix", dst_matrix, "destination matrix of a YUV to YUV conversion: 601 or 709")
        ->check(matrices);
    app.add_flag("--full-range", job.options.full_range, "full-swing luma (0-255) instead of studio range (16-235)");
    app.add_flag("--clamp-luma", job.options.clamp_luma, "clamp luma to 16-235");
    app.add_option("--alpha", alpha, "constant alpha 0-255 for outputs whose alpha is not in the source (default 255)")
        ->check(CLI::Range(0, 255));
    app.add_option("--alpha-word", alpha_word,
                   "the request's 32-bit alpha_value as it is, for hosts that set the two halves apart")
        ->excludes("--alpha");
    app.add_flag("--streaming", job.options.streaming, "write the destination with non-temporal stores");
    app.add_option("--vertical-mode", job.options.vertical_mode,
                   "0 frame; line pairs: 1, 2 reduce the height (and a YUV destination's width) by 2, by 4; 3 doubles both")
        ->check(CLI::Range(0, 4));
    app.add_option("--scan-mode", job.options.scan_mode, "0 frame, 1 or 2 line-pair addressing (with --vertical-mode)");
    app.add_flag("--field-pair", job.options.field_pair,
                 "the source is interlaced: reduce each field on its own (line-pair modes)");
    app.add_option("--threads", job.threads, "convert horizontal slices of each frame on N threads")
        ->check(CLI::Range(1, 256));
    app.add_option("--zoom", job.zoom, "repeat each pixel of a PNG output N times each way, to look at single pixels")
        ->check(CLI::Range(1, 64));
    app.add_flag("-q,--quiet", job.quiet, "no warnings, notes or summary line");
    app.add_option("--library", library_path, "the conversion library to load (default: beside the tool, then its run path)");
    app.add_flag("--list", list, "print every format pair with its options, the raw layouts and the test cards");
    app.add_flag("--version", version, "print the versions of zenk-convert and of the library it loads");
    app.add_option("--demo", demo_dir,
                   "run the demonstration into DIR: the test card (default bars100, 1920x1080) through every format and back");

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
        auto parse_format = [](const std::string& token, const char* flag) -> std::optional<Format> {
            if (token.empty()) return std::nullopt;
            if (auto f = ParseFormat(token)) return f;
            throw ToolError(kExitUsage, std::string(flag) + ": unknown format '" + token + "' (formats: " +
                                            FormatTokenList() + ")");
        };
        auto matrix_code = [](const std::string& m, int32_t fallback) {
            return m.empty() ? fallback : (m.substr(m.size() - 3) == "601" ? 1 : 0);
        };
        const int32_t both = matrix_code(matrix, 0);
        job.options.src_matrix = matrix_code(src_matrix, both);
        job.options.dst_matrix = matrix_code(dst_matrix, both);
        if (alpha >= 0) job.options.alpha_value = AlphaWord(static_cast<uint8_t>(alpha));
        if (app.count("--alpha-word")) job.options.alpha_value = alpha_word;

        if (!demo_dir.empty()) {
            if (!files.empty()) throw ToolError(kExitUsage, "--demo takes no INPUT or OUTPUT");
            DemoSettings demo;
            demo.directory = demo_dir;
            if (!job.test_card.empty()) demo.card = job.test_card;
            if (!size.empty()) demo.size = ParseSize(size);
            demo.options = job.options;
            demo.threads = job.threads;
            return RunDemo(demo, library);
        }

        job.from = parse_format(from, "--from");
        job.to = parse_format(to, "--to");
        if (!size.empty()) job.size = ParseSize(size);
        if (!frames.empty()) job.frames = ParseFrames(frames);
        for (const char* flag : {"--matrix", "--src-matrix", "--dst-matrix", "--full-range", "--clamp-luma", "--alpha",
                                 "--alpha-word"})
            if (app.count(flag)) job.options_given.push_back(flag);
        const bool no_input = !job.test_card.empty() || job.from == Format::A8C;
        if (files.empty()) throw ToolError(kExitUsage, "no OUTPUT given (see --help)");
        if (no_input && files.size() != 1)
            throw ToolError(kExitUsage, "give only OUTPUT: the source is " +
                                            (job.test_card.empty() ? std::string("the constant --alpha") : "the test card"));
        if (!no_input && files.size() != 2) throw ToolError(kExitUsage, "give INPUT and OUTPUT (see --help)");
        if (files.size() == 2) job.input = files[0];
        job.output = files.back();
        // A terminal gets a progress bar and a closing summary; a script
        // reading standard error gets neither.
        const bool terminal = isatty(STDERR_FILENO) != 0;
        job.progress = terminal;
        const JobReport report = RunJob(job, library);
        if (terminal && !job.quiet) std::fprintf(stderr, "zenk-convert: %s\n", Summary(report).c_str());
        return kExitOk;
    } catch (const ToolError& e) {
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
