// The instruction-set levels the kernels are built for, narrowest first: the
// one list that the level enum, the level names, the kernel tables, the
// processor check, the test and benchmark runs and the CMake build of each
// level's kernels all derive from. CMake reads each level's fields from its
// line, so keep one level a line.
//
//   X(enumerator, name, layer, header, flags)
//     name    the level's namespace (zenk::<name>), its ZENK_CPU value and
//             the suffix of its test runs
//     layer   the widest vector layer its kernels are written on, and the
//             header that defines it
//     flags   the compiler flags of its translation units (x86); the
//             baseline's are the build's own
//
// The first level is the baseline, which every processor runs; a processor
// without wider levels (Arm, through SIMDe) runs the baseline alone. Adding
// a level: a vector layer header (src/kernel/README.md says what it must
// provide), a line here, and its test in cpu.cpp (`Runs_<name>`).
#pragma once

// clang-format off
#define ZENK_BASELINE_ISA_LEVEL(X, ...) \
    X(__VA_ARGS__ __VA_OPT__(,) kSse2, sse2, Vec128, "vector_128.h", "")
#define ZENK_WIDER_ISA_LEVELS(X, ...) \
    X(__VA_ARGS__ __VA_OPT__(,) kAvx2, avx2, Avx2, "vector_avx2.h", "-mavx2") \
    X(__VA_ARGS__ __VA_OPT__(,) kAvx512, avx512, Avx512, "vector_avx512.h", "-mavx2 -mavx512f -mavx512bw -mavx512vl -Wno-uninitialized -Wno-maybe-uninitialized")
// clang-format on
// (GCC 12 takes the deliberately undefined register in its AVX-512 broadcast
// and shift intrinsics for an uninitialised variable.)

// Every level, narrowest first; X(args..., enumerator, name, layer, header,
// flags) for each.
#define ZENK_FOR_EACH_ISA_LEVEL(X, ...) ZENK_BASELINE_ISA_LEVEL(X, __VA_ARGS__) ZENK_WIDER_ISA_LEVELS(X, __VA_ARGS__)

// The level a translation unit is built for: CMake defines these three for
// the wider levels' units; every other unit is the baseline's.
#ifndef ZENK_ISA
#define ZENK_ISA_NAME_(enumerator, name, layer, header, flags) name
#define ZENK_ISA_LAYER_(enumerator, name, layer, header, flags) layer
#define ZENK_ISA_HEADER_(enumerator, name, layer, header, flags) header
#define ZENK_ISA ZENK_BASELINE_ISA_LEVEL(ZENK_ISA_NAME_)
#define ZENK_ISA_LAYER ZENK_BASELINE_ISA_LEVEL(ZENK_ISA_LAYER_)
#define ZENK_ISA_HEADER ZENK_BASELINE_ISA_LEVEL(ZENK_ISA_HEADER_)
#endif
