// The vector layers a family's kernels are written on, for the level a
// translation unit is built for (isa_levels.h).
//
// Widest: Vec128 at the baseline, Avx2 in the units built with AVX2 flags,
// Avx512 in those built with AVX-512 flags. The families with arithmetic
// (the decoders, the encoders, the change of matrix) take it.
//
// ByteMover: the layer of the kernels that only move bytes (the RGB repacks
// and alpha planes, the packed YUV copies and reorders). At the AVX-512
// level it is the 256-bit layer, built with the level's flags: a block of
// these loops is a load, a shuffle and a store a register, and with 512-bit
// registers they ran up to a fifth slower (BGR32I_BGR24I at 3840x2160 2.89
// against 2.23 ms) on the AMD EPYC, in cache and from memory alike.
#pragma once

#include "vector_128.h"
#include ZENK_ISA_HEADER
#if defined(__AVX512BW__)
#include "vector_avx2.h"
#endif

namespace zenk::ZENK_ISA {

using Widest = ZENK_ISA_LAYER;
#if defined(__AVX512BW__)
using ByteMover = Avx2;
#else
using ByteMover = Widest;
#endif

}  // namespace zenk::ZENK_ISA
