// The widest vector layer of the level a translation unit is built for
// (isa_levels.h): Vec128 at the baseline, Avx2 in the units built with AVX2
// flags, Avx512 in those built with AVX-512 flags. Every family measured
// faster with 512-bit registers than with 256-bit ones at the AVX-512 level
// (an AMD EPYC, docs/performance.md), so all of them take the widest.
#pragma once

#include "vector_128.h"
#include ZENK_ISA_HEADER

namespace zenk::ZENK_ISA {

using Widest = ZENK_ISA_LAYER;

}  // namespace zenk::ZENK_ISA
