// One run of zenk-convert: what the command line asked for, checked against
// the formats, the loaded library and the files before anything is written.
#pragma once

#include <optional>
#include <string>

#include "conversion.h"
#include "formats.h"
#include "library.h"

namespace zenk::tool {

struct Job {
    std::string input;   // empty with a test card or an A8C source
    std::string output;
    std::optional<Format> from, to;
    std::optional<Size> size;
    std::string test_card;
    RequestOptions options;
    int threads = 1;
    bool progress = false;  // draw a progress bar on standard error
};

// Parses "WxH"; throws ToolError for anything but two whole numbers from 1
// to the largest side.
Size ParseSize(const std::string& text);

// Converts as the job says; throws ToolError with the exit status on failure,
// leaving any existing output file as it was.
void RunJob(const Job& job, const Library& library);

// The destinations the loaded library converts `src` to, for messages.
std::string SupportedDestinations(Format src, const Library& library);

// An output file that appears complete or not at all: written under a
// temporary name in the same directory and renamed over the output when done.
class AtomicOutput {
public:
    explicit AtomicOutput(const std::string& path);
    ~AtomicOutput();
    AtomicOutput(const AtomicOutput&) = delete;
    AtomicOutput& operator=(const AtomicOutput&) = delete;
    std::FILE* file() { return file_; }
    void Commit();

private:
    std::string path_, temp_;
    std::FILE* file_ = nullptr;
};

}  // namespace zenk::tool
