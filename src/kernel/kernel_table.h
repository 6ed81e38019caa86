// What the exports and the kernels of every instruction-set level share:
// the request, the kernel signature, kernel quads and tables, the alignment
// tests that choose a variant, and the level the library runs at.
//
// Kernels are built once per level (isa_levels.h) from the same sources,
// each level in its own translation units with its own compiler flags.
// ZENK_ISA names the level a unit is built for, and every kernel header puts
// its code in the namespace zenk::ZENK_ISA. Each level's inline functions
// and template instances are then its own symbols: the linker can never hand
// the baseline path a copy compiled with wider flags. This header holds only
// types and constants, the same in every unit.
#pragma once

#include <cstdint>

#include "isa_levels.h"
#include "zenk_transcoder.h"

// x86 builds carry kernels of every level; other processors run the
// baseline kernels through SIMDe and have no wider level.
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
#define ZENK_LEVEL_ENUMERATOR_(enumerator, name, layer, header, flags) enumerator,
enum class IsaLevel : int { ZENK_FOR_EACH_ISA_LEVEL(ZENK_LEVEL_ENUMERATOR_) };
#define ZENK_LEVEL_ONE_(...) +1
inline constexpr int kIsaLevelCount = 0 ZENK_FOR_EACH_ISA_LEVEL(ZENK_LEVEL_ONE_);

// The level the exports run at: the widest this processor and its operating
// system support, capped by ZENK_CPU (kernel/cpu.cpp). Chosen once, at load.
IsaLevel ActiveIsaLevel();

}  // namespace zenk

// Declares a family's kernel set at every level, zenk::<level>::<family>::
// kKernels, and zenk::<family>::kKernelsAt, the sets indexed by IsaLevel.
// Each level's <family>_kernels.cpp defines its set; where there are no
// wider levels, every entry is the baseline's set.
#define ZENK_DECLARE_LEVEL_SET_(family, enumerator, name, layer, header, flags) \
    namespace zenk::name::family { extern const ::zenk::family::Kernels kKernels; }
#if ZENK_WIDER_LEVELS
#define ZENK_LEVEL_SET_(family, enumerator, name, layer, header, flags) &::zenk::name::family::kKernels,
#else
#define ZENK_LEVEL_SET_(family, enumerator, name, layer, header, flags) &::zenk::ZENK_ISA::family::kKernels,
#endif
#define ZENK_DECLARE_KERNEL_LEVELS(family)                                                              \
    ZENK_FOR_EACH_ISA_LEVEL(ZENK_DECLARE_LEVEL_SET_, family)                                            \
    namespace zenk::family {                                                                            \
    inline constexpr const Kernels* kKernelsAt[kIsaLevelCount] = {ZENK_FOR_EACH_ISA_LEVEL(ZENK_LEVEL_SET_, family)}; \
    }
