// Processor detection and the level chosen at load. Built with the baseline
// flags only: it runs before anything wider may.
#include "cpu.h"

#include <cstdlib>
#include <cstring>

#if ZENK_WIDER_LEVELS
#include <cpuid.h>
#endif

namespace zenk {
namespace {

#if ZENK_WIDER_LEVELS
// The register state the operating system saves on a context switch (XCR0).
uint64_t SavedRegisterState() {
    uint32_t low, high;
    __asm__ volatile("xgetbv" : "=a"(low), "=d"(high) : "c"(0));
    return (static_cast<uint64_t>(high) << 32) | low;
}
#endif

// Zero until the dynamic initialisation at load: a call before it (from
// another library's constructor) runs SSE2.
const IsaLevel g_active_level = CapIsaLevel(ProcessorIsaLevel(), std::getenv("ZENK_CPU"));

}  // namespace

IsaLevel ProcessorIsaLevel() {
#if ZENK_WIDER_LEVELS
    unsigned eax, ebx, ecx, edx;
    if (!__get_cpuid(1, &eax, &ebx, &ecx, &edx)) return IsaLevel::kSse2;
    constexpr unsigned kOsxsave = 1u << 27, kAvx = 1u << 28;
    if ((ecx & (kOsxsave | kAvx)) != (kOsxsave | kAvx)) return IsaLevel::kSse2;
    const uint64_t state = SavedRegisterState();
    constexpr uint64_t kXmmYmm = 0x6, kZmmAndMasks = 0xE0;
    if ((state & kXmmYmm) != kXmmYmm) return IsaLevel::kSse2;
    if (!__get_cpuid_count(7, 0, &eax, &ebx, &ecx, &edx)) return IsaLevel::kSse2;
    constexpr unsigned kAvx2 = 1u << 5;
    constexpr unsigned kAvx512FBwVl = (1u << 16) | (1u << 30) | (1u << 31);
    if ((ebx & kAvx2) == 0) return IsaLevel::kSse2;
    if ((ebx & kAvx512FBwVl) == kAvx512FBwVl && (state & kZmmAndMasks) == kZmmAndMasks) return IsaLevel::kAvx512;
    return IsaLevel::kAvx2;
#else
    return IsaLevel::kSse2;
#endif
}

IsaLevel CapIsaLevel(IsaLevel supported, const char* setting) {
    if (setting == nullptr) return supported;
    for (int level = 0; level < kIsaLevelCount; ++level) {
        if (std::strcmp(setting, IsaLevelName(static_cast<IsaLevel>(level))) == 0)
            return level < static_cast<int>(supported) ? static_cast<IsaLevel>(level) : supported;
    }
    return supported;
}

const char* IsaLevelName(IsaLevel level) {
    static constexpr const char* kNames[kIsaLevelCount] = {"sse2", "avx2", "avx512"};
    return kNames[static_cast<int>(level)];
}

IsaLevel ActiveIsaLevel() { return g_active_level; }

}  // namespace zenk
