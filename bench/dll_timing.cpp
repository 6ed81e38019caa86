// Times exports of a built library as a host calls them, loaded at run time
// from a path: the same source builds as a Linux program (dlopen) and as a
// Windows one (LoadLibrary, run under Wine), so that bench/wine-speed.sh can
// set the 64-bit DLL under wine64 against the Linux library on the same
// machine, alternating the two. The level is the library's choice at load,
// capped by ZENK_CPU as for any host.
//   dll_timing LIBRARY [SECONDS_PER_EXPORT]
// prints one line per export: "<pair> <level> <best ms per frame>".
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "zenk_transcoder.h"

#if defined(_WIN32)
#include <windows.h>
static void* Load(const char* path) { return LoadLibraryExA(path, nullptr, LOAD_WITH_ALTERED_SEARCH_PATH); }
static void* Symbol(void* library, const char* name) {
    return reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(library), name));
}
#else
#include <dlfcn.h>
static void* Load(const char* path) { return dlopen(path, RTLD_NOW | RTLD_LOCAL); }
static void* Symbol(void* library, const char* name) { return dlsym(library, name); }
#endif

namespace {

constexpr int32_t kWidth = 1920, kHeight = 1080;

// A conversion as a host asks for it: 16-byte aligned planes with the
// natural pitches (the aligned kernels), ordinary stores, BT.601 on both
// sides unless the row changes standard.
struct Row {
    const char* pair;       // the export's format pair
    const char* note;       // what the row shows, where the pair alone does not say
    int src_bytes, dst_bytes;  // bytes per pixel of the first plane
    bool src_chroma_plane, dst_chroma_plane;  // Y8PUV8I: a plane of the same size follows
    int32_t src_matrix;
};

constexpr Row kRows[] = {
    {"UYVY16I_BGR32I", "", 2, 4, false, false, 1},
    {"UYVY16I_BGR24I", "", 2, 3, false, false, 1},
    {"Y8PUV8I_BGR32I", "", 1, 4, true, false, 1},
    {"BGR32I_UYVY16I", "", 4, 2, false, false, 1},
    {"BGR24I_UYVY16I", "", 3, 2, false, false, 1},
    {"BGR32I_Y8PUV8I", "", 4, 1, false, true, 1},
    {"UYVY16I_UYVY16I", "_601to709", 2, 2, false, false, 0},
    {"UYVY16I_YUYV16I", "", 2, 2, false, false, 1},
    {"BGR32I_BGR24I", "", 4, 3, false, false, 1},
    {"A8P_A8P", "", 1, 1, false, false, 1},
};

uint8_t* Plane(std::vector<uint8_t>& storage, size_t bytes) {
    storage.assign(bytes + 64, 0);
    uint8_t* p = storage.data();
    return p + (64 - reinterpret_cast<uintptr_t>(p) % 64) % 64;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        std::fprintf(stderr, "usage: %s LIBRARY [SECONDS_PER_EXPORT]\n", argv[0]);
        return 2;
    }
    void* library = Load(argv[1]);
    if (library == nullptr) {
        std::fprintf(stderr, "cannot load %s\n", argv[1]);
        return 1;
    }
    const double seconds = argc > 2 ? std::atof(argv[2]) : 0.3;
    const char* level = std::getenv("ZENK_CPU");
    for (const Row& row : kRows) {
        const std::string name = std::string("ZENK_SSE2_") + row.pair + "_EX";
        auto convert = reinterpret_cast<ZenkConvertFunction>(Symbol(library, name.c_str()));
        if (convert == nullptr) {
            std::fprintf(stderr, "%s not found\n", name.c_str());
            return 1;
        }
        std::vector<uint8_t> src_storage, dst_storage;
        const int32_t src_stride = kWidth * row.src_bytes, dst_stride = kWidth * row.dst_bytes;
        uint8_t* src = Plane(src_storage, size_t(src_stride) * kHeight * (row.src_chroma_plane ? 2 : 1));
        uint8_t* dst = Plane(dst_storage, size_t(dst_stride) * kHeight * (row.dst_chroma_plane ? 2 : 1));
        for (size_t i = 0; i < src_storage.size(); ++i) src_storage[i] = static_cast<uint8_t>(i * 131 + 7);
        ZenkConversionRequest r{};
        r.src_plane = src;
        r.src_width = kWidth;
        r.src_height = kHeight;
        r.src_stride = src_stride;
        r.src_matrix = row.src_matrix;
        r.dst_plane = dst;
        r.width = kWidth;
        r.dst_height = kHeight;
        r.dst_stride = dst_stride;
        r.dst_matrix = 1;
        r.alpha_value = 0xFF;
        convert(&r);  // warm the caches and the pages
        // The best of short batches: a burst of other work on a shared
        // machine spoils a batch, not the figure.
        double best = 1e30;
        const auto end = std::chrono::steady_clock::now() + std::chrono::duration<double>(seconds);
        do {
            const auto t0 = std::chrono::steady_clock::now();
            for (int i = 0; i < 4; ++i) convert(&r);
            const std::chrono::duration<double, std::milli> t = std::chrono::steady_clock::now() - t0;
            best = std::min(best, t.count() / 4);
        } while (std::chrono::steady_clock::now() < end);
        std::printf("%s%s %s %.4f\n", row.pair, row.note, level ? level : "best", best);
    }
    return 0;
}
