#include "demo.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "colour.h"
#include "errors.h"
#include "job.h"
#include "output_file.h"
#include "png_io.h"
#include "test_card.h"

namespace zenk::tool {

namespace {

using Clock = std::chrono::steady_clock;

void SavePng(const Frame& frame, const std::string& path) {
    OutputFile out(path, true);
    WritePng(frame, out.file(), path);
    out.Commit();
}

// Milliseconds per call of `run`: the median over up to 50 calls or a
// quarter second, after one call that brings the pictures into memory; the
// median keeps a busy machine's stalls out of the figure.
template <class Run>
double TimePerFrame(Run run) {
    run();
    std::vector<double> times;
    const auto start = Clock::now();
    do {
        const auto t0 = Clock::now();
        run();
        times.push_back(std::chrono::duration<double, std::milli>(Clock::now() - t0).count());
    } while (times.size() < 50 && Clock::now() - start < std::chrono::milliseconds(250));
    std::nth_element(times.begin(), times.begin() + static_cast<long>(times.size() / 2), times.end());
    return times[times.size() / 2];
}

}  // namespace

int RunDemo(const DemoSettings& s, const Library& library) {
    RequireTestCard(s.card);
    if (s.options.vertical_mode != 0)
        throw Error(kExitUsage, "the demonstration converts whole frames, in no line-pair mode");
    // Every format of the round trips pairs pixels for its chroma.
    if (s.size.width % 2 != 0)
        throw Error(kExitUsage, "the demonstration goes through 4:2:2 formats: the width must be even, not " +
                                        std::to_string(s.size.width));
    if (LayoutOf(Format::BGR32I, s.size.width, s.size.height).total() > kMaxFrameBytes)
        throw Error(kExitUsage, "the demonstration's frames would be over the " +
                                        std::to_string(kMaxFrameBytes >> 20) + " MiB that zenk-convert handles");
    if (mkdir(s.directory.c_str(), 0777) != 0 && errno != EEXIST)
        throw Error(kExitOutput, "cannot make " + s.directory + ": " + std::strerror(errno));
    const Frame card = MakeTestCard(s.card, s.size.width, s.size.height);
    SavePng(card, s.directory + "/card-" + s.card + ".png");

    const int32_t matrix = s.matrix.both.value_or(DefaultMatrix(s.size.height));
    std::printf("Test card %s, %dx%d, %s%s%s, %d thread%s; library %s\n", s.card.c_str(), s.size.width,
                s.size.height, MatrixName(matrix).c_str(),
                s.options.full_range ? ", full range" : ", studio range", s.options.clamp_luma ? ", luma clamped" : "",
                s.threads, s.threads == 1 ? "" : "s", library.path().c_str());
    std::printf("err: largest difference in code values between the card and the picture after the round trip;\n"
                "ms: median time per frame of each way.\n\n");
    std::printf("%-12s %-8s %-10s %9s %9s %11s %11s  %s\n", "format", "raw", "back via", "err BGR", "err A",
                "there ms", "back ms", "picture");

    int rows = 0;
    for (const FormatInfo& info : AllFormats()) {
        const Format f = info.format;
        if (f == Format::BGR32I || !FindPair(Format::BGR32I, f)) continue;
        const Format back = FindPair(f, Format::BGR32I) ? Format::BGR32I : Format::BGR24I;
        if (!FindPair(f, back)) continue;  // no way back to look at
        const std::string raw = info.raw_name.empty() ? "-" : std::string(info.raw_name);
        const ZenkConvertFunction there_fn = library.Find(Format::BGR32I, f);
        const ZenkConvertFunction back_fn = library.Find(f, back);
        if (!there_fn || !back_fn) {
            std::printf("%-12s %-8s %-10s   not in this library (%s)\n", Token(f).c_str(), raw.c_str(), Token(back).c_str(),
                        (!there_fn ? ExportName(Format::BGR32I, f) : ExportName(f, back)).c_str());
            continue;
        }
        ++rows;
        Frame middle(f, s.size.width, s.size.height);
        Frame result(back, s.size.width, s.size.height);
        const Pair& there_pair = *FindPair(Format::BGR32I, f);
        const Pair& back_pair = *FindPair(f, back);
        RequestOptions there_options = s.options;
        there_options.src_matrix = there_options.dst_matrix = matrix;
        const RequestOptions back_options = there_options;
        const double there_ms =
            TimePerFrame([&] { Convert(there_fn, there_pair, there_options, card, middle, s.threads); });
        const double back_ms =
            TimePerFrame([&] { Convert(back_fn, back_pair, back_options, middle, result, s.threads); });

        // Largest difference per sample; alpha only where the format keeps it.
        const int result_bpp = back == Format::BGR32I ? 4 : 3;
        const bool alpha_kept = Info(f).alpha_plane && back == Format::BGR32I;
        int err_bgr = 0, err_a = 0;
        const int64_t pixels = int64_t{s.size.width} * s.size.height;
        for (int64_t p = 0; p < pixels; ++p) {
            const uint8_t* a = card.colour() + 4 * p;
            const uint8_t* b = result.colour() + result_bpp * p;
            for (int c = 0; c < 3; ++c) err_bgr = std::max(err_bgr, std::abs(a[c] - b[c]));
            if (alpha_kept) err_a = std::max(err_a, std::abs(a[3] - b[3]));
        }
        const std::string png = s.directory + "/" + Token(f) + ".png";
        SavePng(result, png);
        std::printf("%-12s %-8s %-10s %9d %9s %11.3f %11.3f  %s\n", Token(f).c_str(), raw.c_str(), Token(back).c_str(),
                    err_bgr, alpha_kept ? std::to_string(err_a).c_str() : "-", there_ms, back_ms, png.c_str());
    }
    std::printf("\n%d round trip%s; pictures in %s/\n", rows, rows == 1 ? "" : "s", s.directory.c_str());
    return kExitOk;
}

}  // namespace zenk::tool
