// The demonstration: a test card through every format the loaded library can
// convert to and back, with the pictures written as PNGs and a table of each
// round trip's largest error and its time per frame.
#pragma once

#include <string>

#include "job.h"
#include "library.h"

namespace zenk::tool {

struct DemoSettings {
    std::string directory;
    std::string card = "bars100";
    Size size{1920, 1080};
    RequestOptions options;  // everything but the matrices
    MatrixChoice matrix;
    int threads = 1;
};

// Returns the exit status.
int RunDemo(const DemoSettings& settings, const Library& library);

}  // namespace zenk::tool
