// What the suite runs (conversions x picture sizes x implementations) and
// what it keeps of each benchmark for the report.
#pragma once

#include <string>
#include <vector>

#include "bench_cases.h"
#include "kernel/cpu.h"

namespace zenk_bench {

// Our four kernel variants (chosen by the export from the picture's
// alignment and use_streaming_stores), the peers, and the memory reference.
// kAligned runs the exports at the level the library chose at load (the
// processor's best); the capped levels, every instruction-set level but the
// widest (kLevel + the level's number), run them on the same aligned
// pictures in instances of the library loaded with ZENK_CPU capping them.
constexpr int kCappedLevels = zenk::kIsaLevelCount - 1;
enum class Impl { kAligned, kAlignedStreaming, kAny, kAnyStreaming, kLibyuv, kLibyuvSsse3, kSwscale, kMemory, kLevel,
                  kCount = kLevel + kCappedLevels };
constexpr int kImplCount = static_cast<int>(Impl::kCount);
constexpr Impl LevelImpl(int level) { return static_cast<Impl>(static_cast<int>(Impl::kLevel) + level); }
// The level an instance runs at (-1: the processor's best).
constexpr int CappedLevel(Impl impl) { return impl >= Impl::kLevel ? static_cast<int>(impl) - static_cast<int>(Impl::kLevel) : -1; }
// Our exports, at any level, as opposed to the peers and memcpy.
constexpr bool IsOurs(Impl impl) { return impl < Impl::kLibyuv || impl >= Impl::kLevel; }
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
    std::vector<double> times;  // every repetition's time per frame
    double Median() const;
    int repetitions = 0;
    double allocations = 0;  // heap allocations of one frame's conversion
};

// results[case][size][impl]
using Results = std::vector<std::vector<std::vector<Measurement>>>;

std::string BenchmarkName(const Case& c, const PictureSize& size, Impl impl);

void WriteReport(const std::string& path, const Results& results);

}  // namespace zenk_bench
