// What the exports and the kernels of every instruction-set level share:
// the request, the kernel signature, kernel quads and tables, the alignment
// tests that choose a variant, and the level the library runs at.
//
// Kernels are built once per level from the same sources, each level in its
// own translation units with its own compiler flags. ZENK_ISA names the
// level a unit is built for (sse2, avx2 or avx512; sse2 unless the build
// says otherwise), and every kernel header puts its code in the namespace
// zenk::ZENK_ISA. Each level's inline functions and template instances are
// then its own symbols: the linker can never hand the SSE2 path a copy
// compiled with AVX flags. This header holds only types and constants, the
// same in every unit.
#pragma once

#include <cstdint>

#include "zenk_transcoder.h"

#ifndef ZENK_ISA
#define ZENK_ISA sse2
#endif

// x86 builds carry kernels of every level; other processors run the SSE2
// kernels through SIMDe and have no wider level.
#if defined(__x86_64__) || defined(__i386__) || defined(_M_X64) || defined(_M_IX86)
#define ZENK_WIDER_LEVELS 1
#else
#define ZENK_WIDER_LEVELS 0
#endif

namespace zenk {

using Request = ZenkConversionRequest;
using Kernel = void (*)(const Request*);

// Variants: 0 aligned + ordinary stores, 1 aligned + non-temporal stores,
// 2 any alignment + ordinary stores, 3 any alignment + non-temporal stores.
enum Variant : int {
    kAlignedCached = 0,
    kAlignedStreaming = 1,
    kAnyCached = 2,
    kAnyStreaming = 3,
};

// The four kernels of one conversion, indexed by variant.
struct KernelQuad {
    Kernel variant[4];
};

// The five exports that know line-pair modes own a table of 20 entries:
// column (vertical_mode 0 to 4) times 4 plus variant. An empty entry is
// null; a host that asks for it gets no conversion.
struct KernelTable {
    Kernel entry[20];
};

// One pair-mode kernel serves all four variants of its column.
consteval KernelTable MakeKernelTable(const KernelQuad& frame, Kernel column1, Kernel column2,
                                      Kernel column3 = nullptr) {
    return {{frame.variant[0], frame.variant[1], frame.variant[2], frame.variant[3],
             column1, column1, column1, column1,
             column2, column2, column2, column2,
             column3, column3, column3, column3,
             nullptr, nullptr, nullptr, nullptr}};
}

// One side of an export's alignment test: plane 16-aligned, pitch a
// multiple of `stride_unit` (0: pitch not tested), and the line length a
// multiple of `width_unit`. The line length is `width`, or `src_width` for
// a source side that the export tests so; a source side of width_unit 0 is
// not tested at all.
struct SideTest {
    uint32_t stride_unit = 0, width_unit = 0;
};

struct AlignmentTest {
    SideTest destination;
    SideTest source;
    bool source_uses_src_width = false;
};

// The fixed masks of the five table exports, whichever side is the 16-bit or
// the 32-bit one.
inline constexpr AlignmentTest kTableExportTest = {{16, 8}, {32, 4}};

// ---- Instruction-set levels ---------------------------------------------------------------

// Every level writes the same bytes; a wider one writes them faster.
enum class IsaLevel : int { kSse2 = 0, kAvx2 = 1, kAvx512 = 2 };
inline constexpr int kIsaLevelCount = 3;

// The level the exports run at: the widest this processor and its operating
// system support, capped by ZENK_CPU (kernel/cpu.cpp). Chosen once, at load.
IsaLevel ActiveIsaLevel();

}  // namespace zenk

// Declares a family's kernel set at every level, zenk::<level>::<family>::
// kKernels, and zenk::<family>::kKernelsAt, the sets indexed by IsaLevel.
// Each level's <family>_kernels.cpp defines its set; where there are no
// wider levels, their entries are the SSE2 set.
#if ZENK_WIDER_LEVELS
#define ZENK_WIDER_KERNELS(family) &avx2::family::kKernels, &avx512::family::kKernels
#else
#define ZENK_WIDER_KERNELS(family) &sse2::family::kKernels, &sse2::family::kKernels
#endif
#define ZENK_DECLARE_KERNEL_LEVELS(family)                                                                   \
    namespace zenk::sse2::family { extern const ::zenk::family::Kernels kKernels; }                          \
    namespace zenk::avx2::family { extern const ::zenk::family::Kernels kKernels; }                          \
    namespace zenk::avx512::family { extern const ::zenk::family::Kernels kKernels; }                        \
    namespace zenk::family {                                                                                 \
    inline constexpr const Kernels* kKernelsAt[kIsaLevelCount] = {&sse2::family::kKernels, ZENK_WIDER_KERNELS(family)}; \
    }
