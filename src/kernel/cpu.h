// The instruction-set level the exports run at: found once, when the
// library is loaded, from what the processor and the operating system
// support, and capped by the ZENK_CPU environment variable.
#pragma once

#include "kernel_table.h"

namespace zenk {

// The widest level this processor runs, each level's test passed along with
// every narrower level's (AVX2 needs the AVX and AVX2 instructions and an
// operating system that saves the 256-bit registers; AVX-512 needs AVX-512
// F, BW and VL and one that saves the 512-bit registers and the mask
// registers). On processors other than x86 the level is the baseline.
IsaLevel ProcessorIsaLevel();

// `setting` is ZENK_CPU's value: a level's name ("sse2", "avx2", "avx512")
// runs at most at that level; a missing or unknown value leaves `supported`
// as it is.
IsaLevel CapIsaLevel(IsaLevel supported, const char* setting);

// The level's name, as ZENK_CPU takes it.
const char* IsaLevelName(IsaLevel level);

}  // namespace zenk
