// The vector layers a family's kernels are written on, for the level a
// translation unit is built for (isa_levels.h).
//
// Widest: Vec128 at the baseline, Avx2 in the units built with AVX2 flags,
// Avx512 in those built with AVX-512 flags. Kernels whose blocks are mostly
// arithmetic take it.
//
// Repacking: the layer of the kernels whose blocks are mostly byte shuffles
// between loads and stores (the RGB repacks and alpha planes, the packed YUV
// copies and reorders, the decoders' BGR24 packing). At the AVX-512 level it
// is the 256-bit layer, built with the level's flags: with 512-bit registers
// these kernels ran slower than the AVX2 level's on the AMD EPYC, in the
// cache and from memory alike (BGR32I_BGR24I at 3840x2160: 2.89 against
// 2.23 ms; UYVY16I_BGR24I 2.62 against 2.45 ms).
#pragma once

#include "vector_128.h"
#include ZENK_ISA_HEADER
#if defined(__AVX512BW__)
#include "vector_avx2.h"
#endif

namespace zenk::ZENK_ISA {

using Widest = ZENK_ISA_LAYER;
#if defined(__AVX512BW__)
using Repacking = Avx2;
#else
using Repacking = Widest;
#endif

}  // namespace zenk::ZENK_ISA
