// What the suite runs (conversions x picture sizes x implementations) and
// what it keeps of each benchmark for the report.
#pragma once

#include <string>
#include <vector>

#include "bench_cases.h"

namespace zenk_bench {

// Our four kernel variants (chosen by the export from the picture's
// alignment and use_streaming_stores), the peers, and the memory reference.
// kAligned runs the exports at the level the library chose at load (the
// processor's best); kLevelSse2 and kLevelAvx2 run them, on the same aligned
// pictures, in instances of the library loaded with ZENK_CPU capping them.
enum class Impl { kAligned, kAlignedStreaming, kAny, kAnyStreaming, kLevelSse2, kLevelAvx2, kLibyuv, kLibyuvSsse3, kSwscale, kMemory, kCount };
constexpr int kImplCount = static_cast<int>(Impl::kCount);
const char* ImplName(Impl impl);

// HD runs on one pair of pictures that stays in the cache; UHD runs on a
// ring of pictures larger than the last-level cache, as a host converting a
// stream of frames sees it.
struct PictureSize {
    int width, height;
    bool ring;
    const char* name;
};
constexpr PictureSize kSizes[] = {{1920, 1080, false, "1920x1080"}, {3840, 2160, true, "3840x2160"}};
constexpr int kSizeCount = 2;

struct Measurement {
    bool ran = false;
    double seconds = 0;      // best time per frame over the repetitions
    int repetitions = 0;
    double allocations = 0;  // heap allocations of one frame's conversion
};

// results[case][size][impl]
using Results = std::vector<std::vector<std::vector<Measurement>>>;

std::string BenchmarkName(const Case& c, const PictureSize& size, Impl impl);

void WriteReport(const std::string& path, const Results& results);

}  // namespace zenk_bench
