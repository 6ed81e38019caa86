// The widest vector layer of the level a translation unit is built for:
// Sse2, or Avx2 in the units built with AVX2 flags (the AVX-512 level too:
// 256-bit registers, with its wider encodings and 32 of them). Kernels
// written on a layer template take this one.
#pragma once

#include "vector_sse2.h"

#if defined(__AVX2__)
#include "vector_avx2.h"
#endif

namespace zenk::ZENK_ISA {

#if defined(__AVX2__)
using Widest = Avx2;
#else
using Widest = Sse2;
#endif

}  // namespace zenk::ZENK_ISA
