// One run of zenk-convert: what the command line asked for, checked against
// the formats, the loaded library and the files before anything is written.
#pragma once

#include <cstdint>
#include <cstdio>
#include <optional>
#include <string>
#include <vector>

#include "conversion.h"
#include "formats.h"
#include "library.h"

namespace zenk::tool {

// Frames picked by --frames, counted from 1, both ends included; last 0:
// to the end of the input.
struct FrameRange {
    int64_t first = 1, last = 0;
};

struct Job {
    std::string input;   // empty with a test card or an A8C source; "-" standard input
    std::string output;  // "-" standard output; a %d (%04d) numbers one file a frame
    std::optional<Format> from, to;
    std::optional<Size> size;
    std::string test_card;
    RequestOptions options;
    std::vector<std::string> options_given;  // the request flags on the command line, for warnings
    std::optional<FrameRange> frames;
    int threads = 1;
    int zoom = 1;           // a PNG output's pixels enlarged this many times
    bool progress = false;  // draw a progress bar on standard error
    bool quiet = false;     // no warnings or notes
};

// What a finished job did, for its summary line.
struct JobReport {
    int64_t frames = 0;
    Size size;
    Format src = Format::BGR32I, dst = Format::BGR32I;
    double seconds = 0;
};

// Parses "WxH"; throws ToolError for anything but two whole numbers from 1
// to the largest side.
Size ParseSize(const std::string& text);

// Parses --frames: "A:B", "A:" (to the end), ":B" (from the first) or "A".
FrameRange ParseFrames(const std::string& text);

// Converts as the job says; throws ToolError with the exit status on failure,
// leaving any existing output file as it was.
JobReport RunJob(const Job& job, const Library& library);

// The summary line of a finished job: frames, size, formats, time, rate.
std::string Summary(const JobReport& report);

// The destinations the loaded library converts `src` to, for messages.
std::string SupportedDestinations(Format src, const Library& library);

// An output file that appears complete or not at all: written under a
// temporary name in the same directory and renamed over the output when done.
// A symbolic link is followed, and its target replaced; an existing file
// keeps its mode (and, where allowed, its owner); a file that is read-only,
// to this user or to everyone, is refused. Temporary files are named
// .zenk-convert-PID@HOST-XXXXXX, so that a later run removes those whose
// process is gone (killed outright, it could not remove its own).
class AtomicOutput {
public:
    explicit AtomicOutput(const std::string& path);
    ~AtomicOutput();
    AtomicOutput(const AtomicOutput&) = delete;
    AtomicOutput& operator=(const AtomicOutput&) = delete;
    std::FILE* file() { return file_; }
    void Commit();

private:
    std::string path_, temp_, shown_;  // the file replaced, the temporary, the name given
    std::FILE* file_ = nullptr;
};

}  // namespace zenk::tool
