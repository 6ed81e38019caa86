// A library in miniature, laid out as ZenkTranscoderLibrary lays out its
// levels, for the level-dispatch check (scripts/check-level-dispatch.sh) to
// be tried on. Built once sound (ZENK_FAULT 0) and once with each fault the
// check exists to find; the check must pass the first and name the rule
// each other one breaks.
#include "dispatch_fixture.h"

#include <immintrin.h>

namespace zenk {

volatile int g_level = 0;
__attribute__((noinline)) IsaLevel ActiveIsaLevel() { return static_cast<IsaLevel>(g_level); }

inline constexpr const Set* kSetAt[3] = {&sse2::kSet, &avx2::kSet, &avx512::kSet};
// The levels listed out of order: the AVX-512 set where the SSE2 one belongs.
inline constexpr const Set* kMisorderedSetAt[3] = {&avx512::kSet, &avx2::kSet, &sse2::kSet};

#if ZENK_FAULT == 4
// Wider code outside the level namespaces: it would run on any processor.
__attribute__((target("avx2"), noinline)) void Double(int* p) {
    const __m256i v = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p));
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), _mm256_add_epi32(v, v));
}
#endif

}  // namespace zenk

#if ZENK_FAULT == 5
// AVX-512 instructions in the AVX2 namespace, reached from its own set:
// an AVX2 processor would fault on them.
namespace zenk::avx2 {
__attribute__((target("avx512f"), noinline)) void Wider(int* p) {
    const __m512i v = _mm512_loadu_si512(p);
    _mm512_storeu_si512(p, _mm512_add_epi32(v, v));
}
}  // namespace zenk::avx2
extern "C" __declspec(dllexport) void* ZenkFixtureWider() { return reinterpret_cast<void*>(&zenk::avx2::Wider); }
#endif

extern "C" __declspec(dllexport) void ZenkFixtureExport(int* p) {
    using namespace zenk;
#if ZENK_FAULT == 1
    // A wider kernel called without the processor check.
    avx2::Kernel(p);
#elif ZENK_FAULT == 2
    // The level array indexed by something other than the checked level.
    kSetAt[p[0] & 1]->kernel(p);
#elif ZENK_FAULT == 3
    kMisorderedSetAt[static_cast<int>(ActiveIsaLevel())]->kernel(p);
#elif ZENK_FAULT == 4
    Double(p);
    kSetAt[static_cast<int>(ActiveIsaLevel())]->kernel(p);
#else
    kSetAt[static_cast<int>(ActiveIsaLevel())]->kernel(p);
#endif
}
