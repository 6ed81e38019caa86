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

// What the processor reports (CPUID 1 ECX, CPUID 7.0 EBX) and what its
// operating system saves on a context switch (XCR0).
struct Processor {
    uint32_t leaf1_ecx = 0, leaf7_ebx = 0;
    uint64_t saved_state = 0;
};

Processor ReadProcessor() {
    Processor p;
#if ZENK_WIDER_LEVELS
    unsigned eax, ebx, ecx, edx;
    if (__get_cpuid(1, &eax, &ebx, &ecx, &edx)) p.leaf1_ecx = ecx;
    if (__get_cpuid_count(7, 0, &eax, &ebx, &ecx, &edx)) p.leaf7_ebx = ebx;
    if (p.leaf1_ecx & (1u << 27)) {  // OSXSAVE: XCR0 can be read
        uint32_t low, high;
        __asm__ volatile("xgetbv" : "=a"(low), "=d"(high) : "c"(0));
        p.saved_state = (static_cast<uint64_t>(high) << 32) | low;
    }
#endif
    return p;
}

// One test a level: whether this processor runs that level's kernels. The
// table below names one for every level of the list, so a level added
// without its test does not compile.
bool Runs_sse2(const Processor&) { return true; }
// AVX and AVX2, and an operating system that saves the 256-bit registers.
bool Runs_avx2(const Processor& p) {
    constexpr uint32_t kAvx = 1u << 28, kAvx2 = 1u << 5;
    constexpr uint64_t kXmmYmm = 0x6;
    return (p.leaf1_ecx & kAvx) && (p.leaf7_ebx & kAvx2) && (p.saved_state & kXmmYmm) == kXmmYmm;
}
// AVX-512 F, BW and VL, and one that saves the 512-bit and mask registers.
bool Runs_avx512(const Processor& p) {
    constexpr uint32_t kAvx512FBwVl = (1u << 16) | (1u << 30) | (1u << 31);
    constexpr uint64_t kZmmAndMasks = 0xE0;
    return Runs_avx2(p) && (p.leaf7_ebx & kAvx512FBwVl) == kAvx512FBwVl &&
           (p.saved_state & kZmmAndMasks) == kZmmAndMasks;
}

#define ZENK_LEVEL_TEST_(enumerator, name, layer, header, flags) &Runs_##name,
constexpr bool (*kRuns[kIsaLevelCount])(const Processor&) = {ZENK_FOR_EACH_ISA_LEVEL(ZENK_LEVEL_TEST_)};
#define ZENK_LEVEL_NAME_(enumerator, name, layer, header, flags) #name,
constexpr const char* kNames[kIsaLevelCount] = {ZENK_FOR_EACH_ISA_LEVEL(ZENK_LEVEL_NAME_)};

// Zero until the dynamic initialisation at load: a call before it (from
// another library's constructor) runs the baseline.
const IsaLevel g_active_level = CapIsaLevel(ProcessorIsaLevel(), std::getenv("ZENK_CPU"));

}  // namespace

IsaLevel ProcessorIsaLevel() {
    if (!ZENK_WIDER_LEVELS) return IsaLevel{};
    const Processor p = ReadProcessor();
    int level = 0;
    while (level + 1 < kIsaLevelCount && kRuns[level + 1](p)) ++level;
    return static_cast<IsaLevel>(level);
}

IsaLevel CapIsaLevel(IsaLevel supported, const char* setting) {
    if (setting == nullptr) return supported;
    for (int level = 0; level < kIsaLevelCount; ++level) {
        if (std::strcmp(setting, kNames[level]) == 0)
            return level < static_cast<int>(supported) ? static_cast<IsaLevel>(level) : supported;
    }
    return supported;
}

const char* IsaLevelName(IsaLevel level) { return kNames[static_cast<int>(level)]; }

IsaLevel ActiveIsaLevel() { return g_active_level; }

}  // namespace zenk
