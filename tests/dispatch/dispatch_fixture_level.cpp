// One level of the level-dispatch fixture: its kernel and its set, in the
// namespace zenk::ZENK_ISA, built with that level's flags.
#include <immintrin.h>

#include "dispatch_fixture.h"

namespace zenk::ZENK_ISA {

void Kernel(int* p) {
#if defined(__AVX512F__)
    const __m512i v = _mm512_loadu_si512(p);
    _mm512_storeu_si512(p, _mm512_add_epi32(v, v));
#elif defined(__AVX2__)
    const __m256i v = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p));
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), _mm256_add_epi32(v, v));
#else
    const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(p), _mm_add_epi32(v, v));
#endif
}

extern const Set kSet = {Kernel};

}  // namespace zenk::ZENK_ISA
