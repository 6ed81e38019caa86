// The benchmark program: registers every conversion at every size for our
// kernel variants, libyuv (best path and its 128-bit SSSE3 path), swscale
// and memcpy of the same bytes, and with --report=<file> writes the ratio
// tables of the run into that Markdown file.
#include <dlfcn.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <map>
#include <string>

#include <benchmark/benchmark.h>

#include "allocation_counter.h"
#include "bench_run.h"

#ifdef ZENK_BENCH_LIBYUV
#include <libyuv/cpu_id.h>
#endif
#ifdef ZENK_BENCH_SWSCALE
extern "C" {
#include <libavutil/log.h>
#include <libswscale/swscale.h>
}
#endif

namespace zenk_bench {

const char* ImplName(Impl impl) {
    switch (impl) {
        case Impl::kAligned: return "zenk_aligned";
        case Impl::kAlignedStreaming: return "zenk_aligned_nt";
        case Impl::kAny: return "zenk_any";
        case Impl::kAnyStreaming: return "zenk_any_nt";
        case Impl::kLibyuv: return "libyuv";
        case Impl::kLibyuvSsse3: return "libyuv_ssse3";
        case Impl::kSwscale: return "swscale";
        case Impl::kMemory: return "memcpy";
        default: break;
    }
    // zenk_<level> for the capped levels.
    static const auto kLevelNames = [] {
        std::vector<std::string> names;
        for (int level = 0; level < kCappedLevels; ++level)
            names.push_back(std::string("zenk_") + zenk::IsaLevelName(static_cast<zenk::IsaLevel>(level)));
        return names;
    }();
    return CappedLevel(impl) >= 0 ? kLevelNames[CappedLevel(impl)].c_str() : "?";
}

std::string BenchmarkName(const Case& c, const PictureSize& size, Impl impl) {
    return std::string(c.name) + "/" + ImplName(impl) + "/" + size.name;
}

namespace {

constexpr size_t kPage = 4096;
constexpr size_t RoundUp(size_t n, size_t unit) { return (n + unit - 1) / unit * unit; }

// Big blocks straight from the kernel, filled with varied bytes so that no
// page is shared and every conversion sees ordinary picture data.
uint8_t* MapFilled(size_t bytes) {
    void* p = mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (p == MAP_FAILED) {
        std::perror("mmap");
        std::exit(1);
    }
    auto* words = static_cast<uint32_t*>(p);
    uint32_t x = 0x9E3779B9u;
    for (size_t i = 0; i < bytes / 4; ++i) {
        x = x * 1664525u + 1013904223u;
        words[i] = x;
    }
    return static_cast<uint8_t*>(p);
}

struct Arena {
    uint8_t* base = nullptr;
    size_t bytes = 0;
    size_t cursor = 0;  // the ring's next slot: the least recently touched bytes
};

// The ring of UHD frames: twice the last-level cache, at least 512 MiB.
Arena& RingArena() {
    static Arena arena = [] {
        long llc = sysconf(_SC_LEVEL3_CACHE_SIZE);
        if (llc <= 0) llc = sysconf(_SC_LEVEL2_CACHE_SIZE);
        size_t bytes = std::max<size_t>(size_t{512} << 20, 2 * static_cast<size_t>(std::max(llc, 0L)));
        bytes = std::min<size_t>(bytes, size_t{2} << 30);
        return Arena{MapFilled(bytes), bytes, 0};
    }();
    return arena;
}

// The HD pictures: one place, reused by every benchmark.
Arena& CachedArena() {
    static Arena arena{MapFilled(size_t{64} << 20), size_t{64} << 20, 0};
    return arena;
}

// Where the planes of one frame lie in a slot. The regions start at
// different offsets within a page so that source and destination lines do
// not alias in the cache; `misalign` moves every plane off its 16-byte
// boundary, which sends our exports to their any-alignment kernels.
struct SlotLayout {
    size_t src_plane = 0, src_alpha = 0, dst_plane = 0, dst_alpha = 0;
    size_t bytes = 0;
};

SlotLayout LayOut(size_t src_plane_bytes, size_t src_alpha_bytes, size_t dst_plane_bytes, size_t dst_alpha_bytes,
                  size_t misalign) {
    SlotLayout l;
    size_t at = 0;
    int region = 0;
    auto place = [&](size_t bytes) {
        size_t start = at + 256 * region++ + misalign;
        at = RoundUp(start + bytes, kPage);
        return start;
    };
    l.src_plane = place(src_plane_bytes);
    l.src_alpha = place(src_alpha_bytes);
    l.dst_plane = place(dst_plane_bytes);
    l.dst_alpha = place(dst_alpha_bytes);
    l.bytes = at;
    return l;
}

class FrameSource {
public:
    FrameSource(const PictureSize& size, const SlotLayout& layout, const Frame& shape)
        : arena_(size.ring ? RingArena() : CachedArena()), ring_(size.ring), layout_(layout), shape_(shape) {
        if (layout.bytes > arena_.bytes) {
            std::fprintf(stderr, "a frame does not fit the benchmark's memory\n");
            std::exit(1);
        }
    }

    Frame Next() {
        size_t at = 0;
        if (ring_) {
            if (arena_.cursor + layout_.bytes > arena_.bytes) arena_.cursor = 0;
            at = arena_.cursor;
            arena_.cursor += layout_.bytes;
        }
        uint8_t* slot = arena_.base + at;
        Frame f = shape_;
        f.src.plane = slot + layout_.src_plane;
        f.src.alpha = slot + layout_.src_alpha;
        f.dst.plane = slot + layout_.dst_plane;
        f.dst.alpha = slot + layout_.dst_alpha;
        return f;
    }

private:
    Arena& arena_;
    bool ring_;
    SlotLayout layout_;
    Frame shape_;
};

ZenkConversionRequest RequestFor(const Case& c, const Frame& f, bool streaming) {
    ZenkConversionRequest r{};
    r.src_plane = c.src == Format::kConstant ? nullptr : f.src.plane;
    r.src_width = f.width;
    r.src_height = f.height;
    r.src_stride = f.src.stride;
    r.src_matrix = c.src_matrix;
    r.src_alpha_plane = c.src_alpha ? f.src.alpha : nullptr;
    r.src_alpha_stride = c.src_alpha ? f.src.alpha_stride : 0;
    r.dst_plane = f.dst.plane;
    r.width = f.width;
    r.dst_height = f.height;
    r.dst_stride = f.dst.stride;
    r.dst_matrix = c.dst_matrix;
    r.dst_alpha_plane = c.dst_alpha ? f.dst.alpha : nullptr;
    r.dst_alpha_stride = c.dst_alpha ? f.dst.alpha_stride : 0;
    r.alpha_value = 0xFF;
    r.use_streaming_stores = streaming ? 1 : 0;
    return r;
}

#ifdef ZENK_BENCH_SWSCALE
int SwscalePlanes(Format format, const Picture& p, int height, uint8_t* data[4], int stride[4]) {
    data[0] = p.plane;
    stride[0] = p.stride;
    if (format != Format::kY8Uv) return 1;
    data[1] = p.plane + static_cast<size_t>(p.stride) * height;
    stride[1] = p.stride;
    return 2;
}

bool SwscaleHas(const Case& c) {
    return c.swscale_src >= 0 && c.swscale_dst >= 0 &&
           sws_isSupportedInput(static_cast<AVPixelFormat>(c.swscale_src)) > 0 &&
           sws_isSupportedOutput(static_cast<AVPixelFormat>(c.swscale_dst)) > 0;
}
#endif

#ifdef ZENK_BENCH_LIBYUV
// libyuv reads its CPU flags at every call; a mask limits them until the
// next mask. kCpuInitialized keeps the mask from being replaced by a fresh
// detection.
void LibyuvPaths(Impl impl) {
    if (impl == Impl::kLibyuvSsse3)
        libyuv::MaskCpuFlags(libyuv::kCpuInitialized | libyuv::kCpuHasX86 | libyuv::kCpuHasSSE2 |
                             libyuv::kCpuHasSSSE3);
    else
        libyuv::MaskCpuFlags(-1);
}
#endif

Results g_results;

// ZENK_BENCH_BASELINE=<another build of the library>: every run of our
// exports is registered a second time, as base_<variant>, against that
// build. Two builds then compare in one process with their repetitions
// interleaved; separate processes on a shared machine differ by more than
// two builds of the same code do.
const char* BaselineLibrary() { return std::getenv("ZENK_BENCH_BASELINE"); }

// The export `e`, found by name, in an instance of `library` (nullptr: ours)
// loaded with ZENK_CPU=`level` (nullptr: the processor's best). A copy
// beside the library (where its settings library is found) loads as an
// instance of its own and chooses its level at load.
Export Instance(Export e, const char* library, const char* level) {
    Dl_info info{};
    if (dladdr(reinterpret_cast<void*>(e), &info) == 0 || info.dli_sname == nullptr) return nullptr;
    const std::string tag = std::string(library != nullptr ? "base-" : "") + (level != nullptr ? level : "best");
    static std::map<std::string, void*> instances;
    void*& instance = instances[tag];
    if (instance == nullptr) {
        const std::filesystem::path path(library != nullptr ? library : info.dli_fname);
        const std::filesystem::path copy = path.parent_path() / ("zenk-bench-" + tag + ".so");
        std::filesystem::copy_file(path, copy, std::filesystem::copy_options::overwrite_existing);
        if (level != nullptr) setenv("ZENK_CPU", level, 1);
        instance = dlopen(copy.c_str(), RTLD_NOW | RTLD_LOCAL);
        if (level != nullptr) unsetenv("ZENK_CPU");
        if (instance == nullptr) return nullptr;
    }
    return reinterpret_cast<Export>(dlsym(instance, info.dli_sname));
}

void RunBenchmark(benchmark::State& state, int case_index, int size_index, Impl impl, bool baseline) {
    const Case& c = Cases()[case_index];
    const PictureSize& size = kSizes[size_index];
    const int64_t w = size.width, h = size.height;
    const int64_t read = SourceBytes(c, w, h), written = DestinationBytes(c, w, h);

    Frame shape;
    shape.width = size.width;
    shape.height = size.height;
    shape.src.stride = static_cast<int32_t>(w * LineBytesPerPixel(c.src));
    shape.src.alpha_stride = size.width;
    shape.dst.stride = static_cast<int32_t>(w * LineBytesPerPixel(c.dst));
    shape.dst.alpha_stride = size.width;

    // The memory reference copies as many bytes as the conversion reads and
    // writes together (half each way), or fills what a fill writes.
    const bool memory = impl == Impl::kMemory;
    const size_t copy_bytes = static_cast<size_t>(read == 0 ? written : (read + written) / 2);
    const bool misaligned = impl == Impl::kAny || impl == Impl::kAnyStreaming;
    const SlotLayout layout =
        memory ? LayOut(copy_bytes, 0, copy_bytes, 0, 0)
               : LayOut(static_cast<size_t>(h * shape.src.stride * PlaneCount(c.src)), c.src_alpha ? w * h : 0,
                        static_cast<size_t>(h * shape.dst.stride * PlaneCount(c.dst)), c.dst_alpha ? w * h : 0,
                        misaligned ? 4 : 0);
    FrameSource frames(size, layout, shape);

#ifdef ZENK_BENCH_LIBYUV
    if (impl == Impl::kLibyuv || impl == Impl::kLibyuvSsse3) LibyuvPaths(impl);
#endif
#ifdef ZENK_BENCH_SWSCALE
    SwsContext* sws = nullptr;
    if (impl == Impl::kSwscale) {
        sws = sws_getContext(size.width, size.height, static_cast<AVPixelFormat>(c.swscale_src), size.width,
                             size.height, static_cast<AVPixelFormat>(c.swscale_dst), SWS_POINT, nullptr, nullptr,
                             nullptr);
        if (sws == nullptr) {
            state.SkipWithError("swscale has no such conversion");
            return;
        }
    }
#endif

    Export zenk = c.zenk;
    if (baseline || CappedLevel(impl) >= 0) {
        const char* level = CappedLevel(impl) >= 0 ? zenk::IsaLevelName(static_cast<zenk::IsaLevel>(CappedLevel(impl))) : nullptr;
        zenk = Instance(c.zenk, baseline ? BaselineLibrary() : nullptr, level);
        if (zenk == nullptr) {
            state.SkipWithError("the library could not be loaded at that level");
            return;
        }
    }

    // A capped level's instance converts as the aligned variant does.
    const Impl kind = CappedLevel(impl) >= 0 ? Impl::kAligned : impl;
    auto convert = [&](const Frame& f) {
        switch (kind) {
            case Impl::kAligned:
            case Impl::kAny:
            case Impl::kAlignedStreaming:
            case Impl::kAnyStreaming: {
                const bool streaming = impl == Impl::kAlignedStreaming || impl == Impl::kAnyStreaming;
                const ZenkConversionRequest r = RequestFor(c, f, streaming);
                zenk(&r);
                break;
            }
            case Impl::kLibyuv:
            case Impl::kLibyuvSsse3: c.libyuv(f); break;
            case Impl::kSwscale: {
#ifdef ZENK_BENCH_SWSCALE
                uint8_t* src[4] = {};
                uint8_t* dst[4] = {};
                int src_stride[4] = {}, dst_stride[4] = {};
                SwscalePlanes(c.src, f.src, f.height, src, src_stride);
                SwscalePlanes(c.dst, f.dst, f.height, dst, dst_stride);
                sws_scale(sws, src, src_stride, 0, f.height, dst, dst_stride);
#endif
                break;
            }
            case Impl::kMemory:
                if (read == 0)
                    std::memset(f.dst.plane, 0xFF, copy_bytes);
                else
                    std::memcpy(f.dst.plane, f.src.plane, copy_bytes);
                break;
            default: break;
        }
        benchmark::ClobberMemory();
    };

    // One untimed frame: warms the code and counts the heap allocations a
    // frame's conversion makes.
    const unsigned long before = Allocations();
    convert(frames.Next());
    const double allocations = static_cast<double>(Allocations() - before);

    for (auto _ : state) convert(frames.Next());

    state.SetBytesProcessed(state.iterations() * (read + written));
    state.counters["allocs"] = allocations;
    state.counters["ns/px"] = benchmark::Counter(static_cast<double>(w * h) * static_cast<double>(state.iterations()),
                                                 benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
#ifdef ZENK_BENCH_SWSCALE
    if (sws != nullptr) sws_freeContext(sws);
#endif
#ifdef ZENK_BENCH_LIBYUV
    libyuv::MaskCpuFlags(-1);
#endif
}

struct Registered {
    int case_index, size_index;
    Impl impl;
};
std::map<std::string, Registered> g_registered;

void Register(const std::string& name, int case_index, int size_index, Impl impl, bool baseline) {
    benchmark::RegisterBenchmark(name.c_str(), RunBenchmark, case_index, size_index, impl, baseline)
        ->Unit(benchmark::kMillisecond)
        ->ComputeStatistics("min", [](const std::vector<double>& v) { return *std::min_element(v.begin(), v.end()); });
}

void RegisterAll() {
    const auto& cases = Cases();
    g_results.assign(cases.size(), std::vector<std::vector<Measurement>>(
                                       kSizeCount, std::vector<Measurement>(kImplCount)));
    for (int ci = 0; ci < static_cast<int>(cases.size()); ++ci) {
        const Case& c = cases[ci];
        for (int si = 0; si < kSizeCount; ++si) {
            std::vector<Impl> impls = {Impl::kAligned, Impl::kAlignedStreaming, Impl::kAny, Impl::kAnyStreaming};
            for (int level = 0; level < kCappedLevels; ++level) impls.push_back(LevelImpl(level));
#ifdef ZENK_BENCH_LIBYUV
            if (c.libyuv != nullptr) {
                impls.push_back(Impl::kLibyuv);
                impls.push_back(Impl::kLibyuvSsse3);
            }
#endif
#ifdef ZENK_BENCH_SWSCALE
            if (SwscaleHas(c)) impls.push_back(Impl::kSwscale);
#endif
            impls.push_back(Impl::kMemory);
            for (Impl impl : impls) {
                const std::string name = BenchmarkName(c, kSizes[si], impl);
                g_registered[name] = {ci, si, impl};
                Register(name, ci, si, impl, false);
                // The report knows only this build's figures.
                if (BaselineLibrary() != nullptr && IsOurs(impl)) {
                    const std::string ours = std::string("/") + ImplName(impl) + "/";
                    std::string base = name;
                    base.replace(base.find(ours), ours.size(), "/base_" + std::string(ImplName(impl) + 5) + "/");
                    Register(base, ci, si, impl, true);
                }
            }
        }
    }
}

// Shows the usual console output and keeps, per benchmark, the best CPU
// time per frame over its repetitions.
class CollectingReporter : public benchmark::ConsoleReporter {
public:
    void ReportRuns(const std::vector<Run>& runs) override {
        for (const Run& run : runs) {
            if (run.run_type != Run::RT_Iteration || run.error_occurred || run.iterations == 0) continue;
            auto found = g_registered.find(run.run_name.function_name);
            if (found == g_registered.end()) continue;
            const Registered& r = found->second;
            Measurement& m = g_results[r.case_index][r.size_index][static_cast<int>(r.impl)];
            // The thread's CPU time: on a shared machine it leaves out the
            // time the benchmark waited for a core.
            const double seconds = run.cpu_accumulated_time / static_cast<double>(run.iterations);
            if (!m.ran || seconds < m.seconds) m.seconds = seconds;
            m.times.push_back(seconds);
            m.ran = true;
            ++m.repetitions;
            auto allocs = run.counters.find("allocs");
            if (allocs != run.counters.end()) m.allocations = std::max(m.allocations, allocs->second.value);
        }
        // With repetitions the console shows only their summaries.
        std::vector<Run> shown;
        for (const Run& run : runs)
            if (run.run_type == Run::RT_Aggregate || run.repetitions <= 1) shown.push_back(run);
        if (!shown.empty()) ConsoleReporter::ReportRuns(shown);
    }
};

}  // namespace
}  // namespace zenk_bench

int main(int argc, char** argv) {
    using namespace zenk_bench;
    std::string report;
    int kept = 1;
    for (int i = 1; i < argc; ++i) {
        if (std::strncmp(argv[i], "--report=", 9) == 0)
            report = argv[i] + 9;
        else
            argv[kept++] = argv[i];
    }
    argc = kept;
#ifdef ZENK_BENCH_SWSCALE
    av_log_set_level(AV_LOG_ERROR);
#endif
    RegisterAll();
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    CollectingReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
    if (!report.empty()) WriteReport(report, g_results);
    return 0;
}
