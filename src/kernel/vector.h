// The widest vector layer of the level a translation unit is built for:
// Sse2, Avx2 in the units built with AVX2 flags, Avx512 in those built with
// AVX-512 flags. Every family measured faster with 512-bit registers than
// with 256-bit ones at the AVX-512 level (an AMD EPYC, docs/performance.md),
// so all of them take the widest.
#pragma once

#include "vector_sse2.h"

#if defined(__AVX512F__) && defined(__AVX512BW__) && defined(__AVX512VL__)
#include "vector_avx512.h"
#elif defined(__AVX2__)
#include "vector_avx2.h"
#endif

namespace zenk::ZENK_ISA {

#if defined(__AVX512F__) && defined(__AVX512BW__) && defined(__AVX512VL__)
using Widest = Avx512;
#elif defined(__AVX2__)
using Widest = Avx2;
#else
using Widest = Sse2;
#endif

}  // namespace zenk::ZENK_ISA
