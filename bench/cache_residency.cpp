// What streaming stores buy a host: how much of the host's own working set
// is still in the cache after one 3840x2160 conversion, with ordinary and
// with non-temporal stores. The host's data (a working set of a few MiB,
// read until it is cached) is timed being read again after the conversion;
// beside it the same read with nothing in between (all cached) and after a
// pass over a buffer four times the last-level cache (nothing cached).
//   cache_residency [working set MiB ...]      (default 4 8 16 24)
// Prints a markdown table: time to read the working set again in each case,
// and the share of it the conversion left cached.
#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "zenk_transcoder.h"

namespace {

constexpr int32_t kWidth = 3840, kHeight = 2160;

// One read of every cache line of `data`, timed.
double ReadSeconds(const std::vector<uint8_t>& data) {
    uint64_t sum = 0;
    const auto start = std::chrono::steady_clock::now();
    for (size_t i = 0; i < data.size(); i += 64) sum += data[i];
    const auto end = std::chrono::steady_clock::now();
    if (sum == 1) std::puts("");  // keeps the loop
    return std::chrono::duration<double>(end - start).count();
}

void Touch(std::vector<uint8_t>& data) {
    for (size_t i = 0; i < data.size(); i += 64) data[i] += 1;
}

struct Frames {
    std::vector<uint8_t> src, dst;
    Frames() : src(size_t{kWidth} * kHeight * 2, 0x80), dst(size_t{kWidth} * kHeight * 4 + 64) {}
    uint8_t* Destination() {
        // 64-byte aligned lines, as a host's frame buffers are.
        const auto p = reinterpret_cast<uintptr_t>(dst.data());
        return reinterpret_cast<uint8_t*>((p + 63) & ~uintptr_t{63});
    }
};

void Convert(Frames& f, bool streaming) {
    ZenkConversionRequest r{};
    r.src_plane = f.src.data();
    r.src_stride = kWidth * 2;
    r.src_height = kHeight;
    r.dst_plane = f.Destination();
    r.dst_stride = kWidth * 4;
    r.dst_height = kHeight;
    r.width = kWidth;
    r.src_matrix = r.dst_matrix = 1;
    r.alpha_value = 0xFF;
    r.use_streaming_stores = streaming ? 1 : 0;
    ZENK_SSE2_UYVY16I_BGR32I_EX(&r);
}

}  // namespace

int main(int argc, char** argv) {
    std::vector<int> sizes;
    for (int i = 1; i < argc; ++i) sizes.push_back(std::atoi(argv[i]));
    if (sizes.empty()) sizes = {4, 8, 16, 24};
    // Frames and a flush buffer far larger than the last-level cache.
    std::vector<Frames> frames(4);
    std::vector<uint8_t> flush(size_t{1} << 30);
    std::printf("| host working set | all cached | after ordinary stores | after streaming stores | nothing cached | "
                "left cached: ordinary | streaming |\n|---|---:|---:|---:|---:|---:|---:|\n");
    for (int mib : sizes) {
        std::vector<uint8_t> host(size_t(mib) << 20, 1);
        constexpr int kRuns = 15;
        std::vector<double> cached, ordinary, streamed, cold;
        for (int run = 0; run < kRuns; ++run) {
            Frames& f = frames[run % frames.size()];
            Touch(flush);
            Touch(host), Touch(host);
            cached.push_back(ReadSeconds(host));
            Touch(flush);
            Touch(host), Touch(host);
            Convert(f, false);
            ordinary.push_back(ReadSeconds(host));
            Touch(flush);
            Touch(host), Touch(host);
            Convert(f, true);
            streamed.push_back(ReadSeconds(host));
            Touch(host), Touch(host);
            Touch(flush);
            cold.push_back(ReadSeconds(host));
        }
        auto median = [](std::vector<double> v) {
            std::sort(v.begin(), v.end());
            return v[v.size() / 2];
        };
        const double c = median(cached), o = median(ordinary), s = median(streamed), n = median(cold);
        auto left = [&](double t) { return std::clamp((n - t) / (n - c), 0.0, 1.0) * 100; };
        std::printf("| %d MiB | %.3f ms | %.3f ms | %.3f ms | %.3f ms | %.0f %% | %.0f %% |\n", mib, c * 1e3, o * 1e3,
                    s * 1e3, n * 1e3, left(o), left(s));
    }
    return 0;
}
