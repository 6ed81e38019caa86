// One run of zenk-convert: what the command line asked for, checked against
// the formats, the loaded library and the files before anything is written.
#pragma once

#include <cstdint>
#include <cstdio>
#include <optional>
#include <string>
#include <vector>

#include "formats.h"
#include "library.h"
#include "picture.h"
#include "request.h"

namespace zenk::tool {

using namespace client;

// Frames picked by --frames, counted from 1, both ends included; last 0:
// to the end of the input.
struct FrameRange {
    int64_t first = 1, last = 0;
};

// The matrices the command names; what it leaves open follows the default
// rule (client/colour.h) for the YUV picture's height.
struct MatrixChoice {
    std::optional<int32_t> both, src, dst;  // --matrix, --src-matrix, --dst-matrix
};

struct Job {
    std::string input;   // empty with a test card or an A8C source; "-" standard input
    std::string output;  // "-" standard output; a %d (%04d) numbers one file a frame
    std::optional<NamedFormat> from, to;
    std::optional<Size> size;
    std::string test_card;
    MatrixChoice matrix;
    RequestOptions options;  // everything but the matrices
    std::string line_pairs;  // how a line-pair mode was asked for ("--proxy 2"), empty in frame mode
    std::vector<std::string> options_given;  // the request flags on the command line, for warnings
    std::optional<FrameRange> frames;
    int threads = 1;
    int zoom = 1;               // a PNG output's pixels enlarged this many times
    bool replace = true;        // -y (the default); -n keeps an existing output
    bool drop_partial = false;  // convert the whole frames of an input that ends inside one
    bool progress = false;      // draw a progress bar on standard error
    bool quiet = false;         // no warnings or notes
};

// What a finished job did, for its summary line.
struct JobReport {
    int64_t frames = 0;
    Size size;
    Format src = Format::BGR32I, dst = Format::BGR32I;
    std::string colour;  // the matrix and range used ("BT.601, studio range"), empty without YUV
    double seconds = 0;
};

// Parses "WxH"; throws Error for anything but two whole numbers from 1 to
// the largest side.
Size ParseSize(const std::string& text);

// Parses --frames: "A:B", "A:" (to the end), ":B" (from the first) or "A".
FrameRange ParseFrames(const std::string& text);

// The request's matrices for a pair at the YUV picture's height: what the
// command names, else the default rule; a YUV to YUV pair's destination
// follows its source unless named.
void ChooseMatrices(const Pair& pair, const MatrixChoice& choice, int64_t yuv_lines, RequestOptions& options);

// The matrix and range a pair converts with, in words, or empty for a pair
// that uses neither.
std::string ColourText(const Pair& pair, const RequestOptions& options);

// Converts as the job says; throws Error with the exit status on failure,
// leaving any existing output file as it was.
JobReport RunJob(const Job& job, const Library& library);

// The summary line of a finished job: frames, size, formats, matrix, time, rate.
std::string Summary(const JobReport& report);

// The destinations the loaded library converts `src` to, for messages.
std::string SupportedDestinations(Format src, const Library& library);

}  // namespace zenk::tool
