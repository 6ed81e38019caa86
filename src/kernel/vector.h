// The vector layers of the level a translation unit is built for. Widest is
// Sse2, Avx2 in the units built with AVX2 flags, and Avx512 in those built
// with AVX-512 flags; a family may keep to 256-bit registers there where
// they measure faster (Avx2 under the wider encodings, with 32 registers).
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
using Widest256 = Avx2;
#elif defined(__AVX2__)
using Widest = Avx2;
using Widest256 = Avx2;
#else
using Widest = Sse2;
using Widest256 = Sse2;
#endif

}  // namespace zenk::ZENK_ISA
