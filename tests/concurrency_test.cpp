// Several threads convert different pictures through every export at once,
// starting while the host settings cache is still empty, each through the
// library running at another instruction-set level. Each thread's output
// must equal the output of the same conversion run alone at the next level;
// under ThreadSanitizer this also proves the conversions share no
// unsynchronised state. On Windows the same runs against the DLL, each
// level in a DLL instance of its own.
#include <gtest/gtest.h>

#include <atomic>
#include <cstring>
#include <cstdlib>
#include <filesystem>
#include <thread>

#include "kernel/isa_levels.h"
#include "support/shared_library.h"
#include "zenk_transcoder.h"

namespace {

#if defined(_WIN32)
// The program sits beside the library and its settings library.
std::filesystem::path LibraryPath() {
    char self[MAX_PATH];
    const DWORD n = GetModuleFileNameA(nullptr, self, MAX_PATH);
    return std::filesystem::path(std::string(self, n)).parent_path() / "ZenkTranscoderLibrary.dll";
}
#else
std::filesystem::path LibraryPath() { return ZENK_LIBRARY_PATH; }
#endif

// Every extended export of the library, by the names of its .def file.
using Export = std::pair<std::string, ZenkConvertFunction>;
std::vector<Export> LoadExports(void* library) {
    std::vector<Export> exports;
    for (const std::string& name : DefNames("^\\s+(ZENK_SSE2_[A-Z0-9_]+_EX)\\s*$"))
        if (auto f = reinterpret_cast<ZenkConvertFunction>(Symbol(library, name.c_str()))) exports.push_back({name, f});
    return exports;
}

// Planes big enough for any format at this size: 4 bytes a pixel at most,
// a Y8PUV8I chroma plane after the luma lines, reads past a line's end.
// Source, source alpha, destination and destination alpha follow each
// other, each 16-aligned.
constexpr int kWidth = 64, kHeight = 8, kStride = 512, kPlaneBytes = 4 * kStride * kHeight;
struct alignas(16) Pictures {
    uint8_t plane[4][kPlaneBytes];
};

// Fills the thread's pictures (the destinations with 0xEE) and its request.
ZenkConversionRequest Request(Pictures& p, uint32_t seed) {
    for (int i = 0; i < kPlaneBytes; ++i) {
        p.plane[0][i] = static_cast<uint8_t>(i * 7 + seed);
        p.plane[1][i] = static_cast<uint8_t>(i * 13 + seed);
    }
    std::memset(p.plane[2], 0xEE, 2 * kPlaneBytes);
    // Zero skips keep every line inside the planes whatever the format; the
    // full-range coefficient setups ask the host option.
    return {.src_plane = p.plane[0], .src_width = kWidth, .src_height = kHeight, .src_stride = kStride,
            .src_matrix = static_cast<int32_t>(seed & 1), .src_alpha_plane = p.plane[1], .src_alpha_stride = kStride,
            .dst_plane = p.plane[2], .width = kWidth, .dst_height = kHeight, .dst_stride = kStride, .dst_matrix = 1,
            .dst_alpha_plane = p.plane[3], .dst_alpha_stride = kStride, .alpha_value = 0x00FF00FF, .full_range = 1,
            .use_streaming_stores = static_cast<uint8_t>(seed >> 1 & 1)};
}

// The library once per level: a copy under another name beside the library
// (where its settings library is found) loads as an instance of its own,
// which chooses its level from ZENK_CPU at load. A level the processor lacks
// runs the processor's best.
std::vector<void*> LoadAtEveryLevel() {
    const std::filesystem::path library = LibraryPath();
    std::vector<void*> instances;
#define ZENK_LEVEL_NAME_(enumerator, name, layer, header, flags) #name,
    for (const char* level : {ZENK_FOR_EACH_ISA_LEVEL(ZENK_LEVEL_NAME_)}) {
        const auto copy = library.parent_path() / ("concurrency-" + std::string(level) + library.extension().string());
        // Removed first: GCC 12's copy_file on Windows fails on an existing
        // file even when told to overwrite it.
        std::filesystem::remove(copy);
        std::filesystem::copy_file(library, copy);
        SetEnvironment("ZENK_CPU", level);
        instances.push_back(Load(copy.string()));
        if (instances.back() == nullptr) ADD_FAILURE() << LoadError();
    }
    SetEnvironment("ZENK_CPU", "");
    return instances;
}

TEST(Concurrency, EveryExportFromSeveralThreadsMatchesItsSingleThreadedResult) {
    const std::vector<void*> libraries = LoadAtEveryLevel();
    std::vector<std::vector<Export>> levels;
    for (void* library : libraries) {
        ASSERT_NE(library, nullptr);
        levels.push_back(LoadExports(library));
        ASSERT_GE(levels.back().size(), 14u);
        ASSERT_EQ(levels.back().size(), levels.front().size());
    }

    constexpr int kThreads = 4;
    std::vector<Pictures> pictures(kThreads);

    // All threads start together so that the first conversions race to fill
    // the host settings cache.
    std::atomic<int> ready{0};
    std::atomic<int> mismatches{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([&, t] {
            Pictures& p = pictures[t];
            ++ready;
            while (ready < kThreads) std::this_thread::yield();
            const std::vector<Export>& exports = levels[t % levels.size()];
            const std::vector<Export>& next_level = levels[(t + 1) % levels.size()];
            for (size_t i = 0; i < exports.size(); ++i) {
                const size_t k = (i + static_cast<size_t>(t) * 5) % exports.size();
                const ZenkConversionRequest r = Request(p, static_cast<uint32_t>(t));
                exports[k].second(&r);
                const std::vector<uint8_t> got(p.plane[2], p.plane[2] + 2 * kPlaneBytes);
                // The same conversion again at the next level, alone on this
                // thread's pictures, after the others may have changed
                // nothing it depends on.
                const ZenkConversionRequest again = Request(p, static_cast<uint32_t>(t));
                next_level[k].second(&again);
                if (!std::equal(got.begin(), got.end(), p.plane[2])) {
                    ++mismatches;
                    ADD_FAILURE() << exports[k].first << " on thread " << t << " differs between runs and levels";
                }
            }
        });
    }
    for (std::thread& th : threads) th.join();
    EXPECT_EQ(mismatches, 0);
    for (void* library : libraries) Unload(library);
}

}  // namespace
