// Writes the run's ratio tables into a Markdown file, between two marker
// lines, so that the notes around them are kept from run to run.
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <sstream>
#include <string>

#include "bench_run.h"

#ifdef ZENK_BENCH_LIBYUV
#include <libyuv/version.h>
#endif
#ifdef ZENK_BENCH_SWSCALE
extern "C" {
#include <libswscale/swscale.h>
}
#endif

namespace zenk_bench {
namespace {

constexpr const char* kBegin = "<!-- zenk-bench:begin (written by bench/run.sh) -->";
constexpr const char* kEnd = "<!-- zenk-bench:end -->";

// Thresholds of the targets; see the notes in docs/performance.md.
constexpr double kMemorySpeed = 0.90;      // UHD, every conversion: at least 0.90 of memcpy's speed
constexpr double kGrowthTolerance = 1.10;  // per-pixel growth HD -> UHD: at most 10 % beyond memcpy's

// The first processor's model name, family and model from /proc/cpuinfo
// (virtual machines often give only a generic name).
std::string CpuName() {
    std::ifstream in("/proc/cpuinfo");
    std::string line, name = "unknown CPU", family, model;
    auto value = [&]() {
        const auto colon = line.find(':');
        const auto start = colon == std::string::npos ? std::string::npos : line.find_first_not_of(" \t", colon + 1);
        return start == std::string::npos ? std::string() : line.substr(start);
    };
    while (std::getline(in, line) && !line.empty()) {
        if (line.rfind("model name", 0) == 0)
            name = value();
        else if (line.rfind("cpu family", 0) == 0)
            family = value();
        else if (line.rfind("model", 0) == 0 && line.find(':') != std::string::npos &&
                 line.substr(0, line.find(':')).find_first_not_of(" \t", 5) == std::string::npos)
            model = value();
    }
    if (!family.empty() && !model.empty()) name += ", family " + family + " model " + model;
    return name;
}

std::string UtcNow() {
    std::time_t now = std::time(nullptr);
    char text[64];
    std::strftime(text, sizeof text, "%Y-%m-%d %H:%M UTC", std::gmtime(&now));
    return text;
}

std::string Fixed(double value, int decimals) {
    char text[64];
    std::snprintf(text, sizeof text, "%.*f", decimals, value);
    return text;
}

// What the wider levels must gain (colour kernels, over SSE2 at HD) and how
// close to memcpy the memory-bound kernels must come at UHD.
constexpr double kLevelGainTarget = 1.8;
constexpr double kLevelMemoryLimit = 1.1;

// The level the library chooses on this processor, by its own load-time
// check (src/kernel/cpu.cpp, built into the suite), capped by ZENK_CPU.
std::string BestLevel() {
    std::string level = zenk::IsaLevelName(zenk::ProcessorIsaLevel());
    if (const char* cap = std::getenv("ZENK_CPU")) level += std::string(", ZENK_CPU=") + cap;
    return level;
}

const Measurement& At(const Results& r, int ci, int si, Impl impl) { return r[ci][si][static_cast<int>(impl)]; }

// Speed ratio: the reference's time per frame over ours (above 1: we are faster).
std::string Ratio(const Measurement& ours, const Measurement& reference) {
    if (!ours.ran || !reference.ran) return "–";
    return Fixed(reference.seconds / ours.seconds, 2);
}

}  // namespace

double Measurement::Median() const {
    std::vector<double> sorted = times;
    std::sort(sorted.begin(), sorted.end());
    const size_t n = sorted.size();
    return n == 0 ? 0 : n % 2 ? sorted[n / 2] : (sorted[n / 2 - 1] + sorted[n / 2]) / 2;
}

namespace {

// The same ratio of the medians of the repetitions.
std::string MedianRatio(const Measurement& ours, const Measurement& reference) {
    if (!ours.ran || !reference.ran) return "–";
    return Fixed(reference.Median() / ours.Median(), 2);
}

bool IsRepackOrAlpha(const Case& c) { return std::string(c.family) == "RGB and alpha"; }

// Kernels bound by arithmetic: between YUV and RGB, and changes of standard.
// Same-standard YUV reorders move bytes like the repacking kernels.
bool IsColour(const Case& c) {
    return !IsRepackOrAlpha(c) && (std::string(c.family) != "YUV to YUV" || c.src_matrix != c.dst_matrix);
}

std::string Tables(const Results& results) {
    const auto& cases = Cases();
    std::ostringstream md;
    int repetitions = 0;
    for (const auto& per_case : results)
        for (const auto& per_size : per_case)
            for (const auto& m : per_size) repetitions = std::max(repetitions, m.repetitions);

    md << kBegin << "\n\n";
    md << "Measured " << UtcNow() << " on **" << CpuName() << "** (" << sysconf(_SC_NPROCESSORS_ONLN)
       << " logical CPUs, last-level cache " << sysconf(_SC_LEVEL3_CACHE_SIZE) / (1 << 20) << " MiB), single thread; "
       << "compiler " << __VERSION__;
#ifdef ZENK_BENCH_LIBYUV
    md << ", libyuv " << LIBYUV_VERSION;
#endif
#ifdef ZENK_BENCH_SWSCALE
    const unsigned v = swscale_version();
    md << ", libswscale " << (v >> 16) << "." << ((v >> 8) & 0xFF) << "." << (v & 0xFF);
#endif
    md << ". Each time is the benchmark thread's CPU time per frame (the machine may be shared; CPU time leaves "
          "out the time the thread waited for a core), the best of "
       << repetitions << " repetitions; every ratio compares two measurements of this run.\n\n";
    md << "Ratios are speed ratios, the reference's time per frame divided by ours: above 1.00 we are faster. "
          "`memcpy` copies as many bytes as the conversion reads and writes together (half each way; a fill is "
          "compared with `memset` of its bytes), so 0.80 against memcpy is a time within 1.25x of memcpy's.\n\n";

    int met = 0, missed = 0;
    auto mark = [&](bool ok) {
        (ok ? met : missed)++;
        return ok ? "met" : "**missed**";
    };

    for (int si = 0; si < kSizeCount; ++si) {
        const PictureSize& size = kSizes[si];
        md << "### " << size.name
           << (size.ring ? ": a ring of frames larger than the last-level cache (memory-bound)"
                         : ": one picture pair that stays in the cache (compute-bound)")
           << "\n\n";
        md << "Ours is the export on 16-byte aligned pictures with ordinary stores (kernel variant 0).\n\n";
        md << "| export | family | ours ms/frame | ours GB/s | vs libyuv | vs libyuv (medians) | vs libyuv SSSE3 | "
              "vs swscale | vs memcpy | target |\n|---|---|---:|---:|---:|---:|---:|---:|---:|---|\n";
        for (int ci = 0; ci < static_cast<int>(cases.size()); ++ci) {
            const Case& c = cases[ci];
            const Measurement& ours = At(results, ci, si, Impl::kAligned);
            if (!ours.ran) continue;
            const double bytes = static_cast<double>(SourceBytes(c, size.width, size.height) +
                                                     DestinationBytes(c, size.width, size.height));
            const Measurement& yuv = At(results, ci, si, Impl::kLibyuv);
            const Measurement& ssse3 = At(results, ci, si, Impl::kLibyuvSsse3);
            const Measurement& sws = At(results, ci, si, Impl::kSwscale);
            const Measurement& mem = At(results, ci, si, Impl::kMemory);
            std::string target;
            auto add = [&](const char* what, bool ok) {
                target += std::string(target.empty() ? "" : ", ") + what + " " + mark(ok);
            };
            if (yuv.ran) add("libyuv", yuv.Median() >= ours.Median());
            if (size.ring && mem.ran) add("memcpy", mem.seconds >= kMemorySpeed * ours.seconds);
            md << "| " << c.name << " | " << c.family << " | " << Fixed(ours.seconds * 1e3, 3) << " | "
               << Fixed(bytes / ours.seconds / 1e9, 2) << " | " << Ratio(ours, yuv) << " | " << MedianRatio(ours, yuv)
               << " | " << Ratio(ours, ssse3) << " | " << Ratio(ours, sws) << " | " << Ratio(ours, mem) << " | "
               << (target.empty() ? "–" : target) << " |\n";
        }
        md << "\n";
        md << "Target at " << size.name << ": where libyuv converts the pair, at least as fast as its best path, "
              "median against median of the repetitions";
        if (size.ring) md << "; every conversion at least " << Fixed(kMemorySpeed, 2) << " of memcpy's speed";
        md << ".\n\n";
    }

    // The capped levels' columns, narrowest first; the first is the baseline.
    std::string level_columns, level_rule;
    for (int level = 0; level < kCappedLevels; ++level) {
        level_columns += std::string("`") + zenk::IsaLevelName(static_cast<zenk::IsaLevel>(level)) + "`" +
                         (level + 2 < kCappedLevels ? ", " : level + 1 < kCappedLevels ? " and " : "");
        level_rule += "---:|";
    }
    const std::string baseline = zenk::IsaLevelName(zenk::IsaLevel{});
    md << "### Instruction-set levels\n\nThe exports on aligned pictures with ordinary stores at each level, "
          "time per frame in ms; `best` is the level the library chose at load on this processor (**"
       << BestLevel() << "**), " << level_columns << " instances of the library loaded with ZENK_CPU capping them. "
       << "Ratios are speed ratios as above.\n\n";
    md << "| export | family | size | ";
    for (int level = 0; level < kCappedLevels; ++level) md << zenk::IsaLevelName(static_cast<zenk::IsaLevel>(level)) << " | ";
    md << "best | best vs " << baseline << " | best vs libyuv | best vs libyuv SSSE3 | best vs memcpy | target |\n|---|---|---|"
       << level_rule << "---:|---:|---:|---:|---:|---|\n";
    for (int si = 0; si < kSizeCount; ++si) {
        for (int ci = 0; ci < static_cast<int>(cases.size()); ++ci) {
            const Case& c = cases[ci];
            const Measurement& best = At(results, ci, si, Impl::kAligned);
            const Measurement& sse2 = At(results, ci, si, LevelImpl(0));  // the baseline
            if (!best.ran || !sse2.ran) continue;
            const Measurement& yuv = At(results, ci, si, Impl::kLibyuv);
            const Measurement& mem = At(results, ci, si, Impl::kMemory);
            // Colour kernels at HD: at least 1.8x the SSE2 level; memory-bound
            // ones at UHD: within 1.1x of memcpy; both, where libyuv does
            // the same pair: at least as fast as its best path.
            const bool colour = IsColour(c);
            std::string target;
            auto add = [&](const char* what, bool ok) {
                target += std::string(target.empty() ? "" : ", ") + what + " " + mark(ok);
            };
            if (!kSizes[si].ring && colour) add("1.8x sse2", sse2.seconds >= kLevelGainTarget * best.seconds);
            if (kSizes[si].ring && !colour && mem.ran)
                add("memcpy", best.seconds <= kLevelMemoryLimit * mem.seconds);
            if (yuv.ran) add("libyuv", yuv.seconds >= best.seconds);
            md << "| " << c.name << " | " << c.family << " | " << kSizes[si].name << " | ";
            for (int level = 0; level < kCappedLevels; ++level) {
                const Measurement& m = At(results, ci, si, LevelImpl(level));
                md << (m.ran ? Fixed(m.seconds * 1e3, 3) : "–") << " | ";
            }
            md << Fixed(best.seconds * 1e3, 3) << " | " << Ratio(best, sse2) << " | " << Ratio(best, yuv) << " | "
               << Ratio(best, At(results, ci, si, Impl::kLibyuvSsse3)) << " | " << Ratio(best, mem) << " | "
               << (target.empty() ? "–" : target) << " |\n";
        }
    }
    md << "\nTargets: the colour kernels (YUV to RGB, RGB to YUV, change of standard) at least "
       << Fixed(kLevelGainTarget, 1) << "x the SSE2 level at 1920x1080; the kernels that move bytes (repacking, "
          "alpha, same-standard YUV reorders) within "
       << Fixed(kLevelMemoryLimit, 1) << "x of memcpy's time at 3840x2160; every pair libyuv converts at least "
          "as fast as libyuv's best path.\n\n";

    md << "### Kernel variants\n\nTime per frame in ms, and in brackets the speed ratio against memcpy of the same "
          "bytes. `any` runs every plane 4 bytes past a 16-byte boundary; `nt` sets use_streaming_stores.\n\n";
    md << "| export | size | aligned | aligned nt | any | any nt | nt beats ordinary |\n"
          "|---|---|---:|---:|---:|---:|---|\n";
    for (int ci = 0; ci < static_cast<int>(cases.size()); ++ci) {
        for (int si = 0; si < kSizeCount; ++si) {
            const Measurement& mem = At(results, ci, si, Impl::kMemory);
            if (!At(results, ci, si, Impl::kAligned).ran) continue;
            md << "| " << cases[ci].name << " | " << kSizes[si].name;
            for (Impl impl : {Impl::kAligned, Impl::kAlignedStreaming, Impl::kAny, Impl::kAnyStreaming}) {
                const Measurement& m = At(results, ci, si, impl);
                md << " | " << (m.ran ? Fixed(m.seconds * 1e3, 3) + " (" + Ratio(m, mem) + ")" : "–");
            }
            const Measurement& a = At(results, ci, si, Impl::kAligned);
            const Measurement& an = At(results, ci, si, Impl::kAlignedStreaming);
            const Measurement& u = At(results, ci, si, Impl::kAny);
            const Measurement& un = At(results, ci, si, Impl::kAnyStreaming);
            std::string verdict = "–";
            if (a.ran && an.ran && u.ran && un.ran) {
                const bool faster = an.seconds <= a.seconds && un.seconds <= u.seconds;
                // The target is for pictures from memory; in the cache the
                // figures are for information.
                verdict = kSizes[si].ring ? mark(faster) : faster ? "yes" : "no";
            }
            md << " | " << verdict << " |\n";
        }
    }
    md << "\nTarget: at 3840x2160 both non-temporal variants of every conversion at least as fast as their "
          "ordinary siblings. In the cache (1920x1080) non-temporal stores may lose, as they send the picture to "
          "memory.\n\n";

    md << "### Time per pixel from 1920x1080 to 3840x2160\n\n"
          "Growth is the UHD time per pixel over the HD one (aligned kernel); memcpy's growth is the cost of "
          "leaving the cache for the same bytes. Target: ours at most "
       << Fixed((kGrowthTolerance - 1) * 100, 0) << " % beyond memcpy's.\n\n";
    md << "| export | ns/pixel HD | ns/pixel UHD | growth | memcpy growth | target |\n|---|---:|---:|---:|---:|---|\n";
    for (int ci = 0; ci < static_cast<int>(cases.size()); ++ci) {
        const Measurement& hd = At(results, ci, 0, Impl::kAligned);
        const Measurement& uhd = At(results, ci, 1, Impl::kAligned);
        const Measurement& mhd = At(results, ci, 0, Impl::kMemory);
        const Measurement& muhd = At(results, ci, 1, Impl::kMemory);
        if (!hd.ran || !uhd.ran || !mhd.ran || !muhd.ran) continue;
        const double px_hd = double(kSizes[0].width) * kSizes[0].height, px_uhd = double(kSizes[1].width) * kSizes[1].height;
        const double growth = (uhd.seconds / px_uhd) / (hd.seconds / px_hd);
        const double memory_growth = (muhd.seconds / px_uhd) / (mhd.seconds / px_hd);
        md << "| " << cases[ci].name << " | " << Fixed(hd.seconds / px_hd * 1e9, 3) << " | "
           << Fixed(uhd.seconds / px_uhd * 1e9, 3) << " | " << Fixed(growth, 2) << " | " << Fixed(memory_growth, 2)
           << " | " << mark(growth <= kGrowthTolerance * memory_growth) << " |\n";
    }

    md << "\n### Heap allocations per frame\n\n";
    int ours_checked = 0;
    std::string ours_allocating, peers_allocating;
    for (int ci = 0; ci < static_cast<int>(cases.size()); ++ci) {
        for (int si = 0; si < kSizeCount; ++si) {
            for (int ii = 0; ii < kImplCount; ++ii) {
                const Measurement& m = results[ci][si][ii];
                if (!m.ran) continue;
                const Impl impl = static_cast<Impl>(ii);
                const bool ours = IsOurs(impl);
                if (ours) ++ours_checked;
                if (m.allocations > 0) {
                    std::string entry = std::string("- ") + cases[ci].name + " " + ImplName(impl) + " " +
                                        kSizes[si].name + ": " + Fixed(m.allocations, 0) + "\n";
                    (ours ? ours_allocating : peers_allocating) += entry;
                }
            }
        }
    }
    md << "Every heap allocation in the process is counted around one untimed frame of each benchmark.\n\n";
    md << "- Our exports: " << ours_checked << " benchmarks, "
       << (ours_allocating.empty() ? "none allocates" : "**some allocate**") << " ("
       << mark(ours_allocating.empty()) << ").\n";
    md << ours_allocating;
    if (!peers_allocating.empty()) md << "\nPeers that allocate per frame:\n\n" << peers_allocating;

    md << "\n**Targets in this run: " << met << " met, " << missed << " missed.**\n\n" << kEnd << "\n";
    return md.str();
}

}  // namespace

void WriteReport(const std::string& path, const Results& results) {
    std::string before, after;
    {
        std::ifstream in(path);
        std::stringstream whole;
        whole << in.rdbuf();
        const std::string text = whole.str();
        const auto begin = text.find(kBegin);
        const auto end = text.find(kEnd);
        if (begin != std::string::npos && end != std::string::npos && end > begin) {
            before = text.substr(0, begin);
            after = text.substr(end + std::string(kEnd).size());
            if (!after.empty() && after[0] == '\n') after.erase(0, 1);
        } else {
            before = text.empty() ? "# Performance\n\n" : text + "\n";
        }
    }
    std::ofstream out(path, std::ios::trunc);
    out << before << Tables(results) << after;
    std::fprintf(stderr, "report written to %s\n", path.c_str());
}

}  // namespace zenk_bench
