// Every export under test, with what a generic test needs to build a valid
// request for it, the scalar reference of what it writes, and the kernels
// behind it, each with its own reference. The registrations in
// tests/registry/ fill it; the differential, envelope, guard-page,
// concurrency and fuzz checks run over all of it alike.
#pragma once

#include <array>
#include <functional>
#include <string>
#include <vector>

#include "kernel/cpu.h"
#include "support/test_picture.h"

namespace zenk::test {

// One plane of an export's source or destination.
struct PlaneSpec {
    int bytes_per_pixel = 0;   // 0: the export has no such plane
    bool chroma_plane = false;  // Y8PUV8I: a second plane of as many lines follows the luma lines
    int read_past_line = 0;     // bytes the export may read past a line's end
    int line_alignment = 1;     // line starts the head can bring to a 16-byte boundary
    bool anywhere = false;      // lines may also start off line_alignment (stored unaligned)
};

// Instruction-set levels the kernels are built for (src/kernel/isa_levels.h),
// narrowest first; the differential test runs every level the processor has
// and reports the others as skipped.
inline constexpr size_t kLevelCount = kIsaLevelCount;
inline constexpr auto kLevels = [] {
    std::array<IsaLevel, kLevelCount> levels{};
    for (size_t level = 0; level < kLevelCount; ++level) levels[level] = static_cast<IsaLevel>(level);
    return levels;
}();

using KernelFunction = void (*)(const Request*);
using LevelKernels = std::array<const KernelFunction*, kLevelCount>;  // one kernel group per level

// How a generic request places its planes.
inline constexpr int32_t kAnyPairMode = -1;
struct RequestStyle {
    bool aligned = false;           // every plane 16-aligned, pitches of whole blocks
    int32_t width = -1;             // -1: random
    int32_t height = -1;            // -1: random
    int bottom_up_percent = 30;
    int32_t residue = -1;           // destination residue modulo 16, -1: random allowed
    GuardPage guard_page = GuardPage::kNone;
    // Even widths only: a last odd pixel of a 4:2:2 line is not consumed, so
    // such lines drift from the pitch and their span is not the plane's.
    bool even_width = false;
    // 0: frame mode. Otherwise a line-pair mode (kAnyPairMode: one of the
    // export's), with the request filled as a host fills it: the source
    // walked from line starts, the destination's skip the pitch less the
    // bytes of a line's pairs. Exports without pair modes stay in frame mode.
    int32_t pair_mode = 0;
    // The destination lines of a reducing pair mode (-1: a few, at random).
    int32_t reduced_lines = -1;
    // Aligned kernels called directly: widths of whole blocks of this many
    // pixels, now and then with a remainder the kernel must leave alone
    // (0: the export's aligned_width_unit, no remainder).
    int32_t block = 0;
    // Aligned: destination pitches now and then take later lines off a
    // 16-byte boundary; the kernel stores them unaligned, the same bytes.
    bool drift_pitch = false;
    // Aligned: source planes at any address and pitch, as the exports that
    // test only their destination pass them on.
    bool source_anywhere = false;
};

// One kernel behind an export, called directly: a frame variant on aligned
// or any-alignment requests, or a line-pair kernel.
struct KernelUnderTest {
    std::string name;  // unique within its export, e.g. "v2" or "CopyPacked.v0" or "mode1"
    std::array<KernelFunction, kLevelCount> at_level{};
    RequestStyle style;
    std::function<void(const Request&)> reference;
};

struct ExportUnderTest {
    std::string name;
    ZenkConvertFunction convert = nullptr;
    PlaneSpec src, src_alpha, dst, dst_alpha;
    // Widths of the aligned kernels are multiples of this (16 or 32).
    int aligned_width_unit = 32;
    // False where a documented write reaches past the lines its destination
    // plane spans (a change of standard into Y8PUV8I writes packed UYVY
    // bytes, two a pixel); such exports skip the guard-page runs.
    bool lines_bound_writes = true;
    // The vertical_mode values of the export's line-pair kernels (1 and 2
    // reduce, 3 doubles); empty for exports without a kernel table.
    std::vector<int32_t> pair_modes;
    // The export-level reference: what the export writes for this request,
    // whichever kernel it chooses. References that depend on host option
    // 128 ask it as the library does.
    std::function<void(const Request&)> reference;
    // The kernels the export chooses among; none for the composites, and a
    // kernel shared by several exports is listed under one of them.
    std::vector<KernelUnderTest> kernels;
};

std::vector<ExportUnderTest>& RegisteredExports();

// Registers one export per row of a family's table: `make(row)` describes
// it, starting from Named(row.name, row.convert). A family keeps the
// Registration as a namespace-scope constant, so its exports are registered
// before main.
using Registration = bool;
template <class Rows, class Make>
Registration RegisterEach(const Rows& rows, Make make) {
    for (const auto& row : rows) RegisteredExports().push_back(make(row));
    return true;
}
ExportUnderTest Named(const char* pair, ZenkConvertFunction convert);  // "BGR32I_UYVY16I" -> ZENK_SSE2_..._EX

// The four variants of a kernel quad (`quads`: one per level, each the
// quad's four variants), named `prefix` "v0" to "v3" (the prefix "" for an
// export's only quad), variants 0 and 1 on aligned requests of `aligned`'s
// shape; `reference(r, variant)`.
void AddVariants(ExportUnderTest& e, const std::string& prefix, const LevelKernels& quads, RequestStyle aligned,
                 std::function<void(const Request&, int variant)> reference);

// A family's kernel quad, or a table's frame column (the line-pair kernels
// further on, four entries a column), at every level; `at` is the family's
// kKernelsAt.
inline const KernelFunction* Variants(const KernelQuad& q) { return q.variant; }
inline const KernelFunction* Variants(const KernelTable& t) { return t.entry; }
template <class Kernels, class Member>
LevelKernels AtLevels(const Kernels* const (&at)[kIsaLevelCount], Member Kernels::*m) {
    LevelKernels quads{};
    for (size_t level = 0; level < kLevelCount; ++level) quads[level] = Variants(at[level]->*m);
    return quads;
}

// One kernel per line-pair mode of a table (from AtLevels), each on requests
// in its mode; `reference(r, mode)`.
void AddPairModes(ExportUnderTest& e, const LevelKernels& table,
                  std::vector<int32_t> modes, std::function<void(const Request&, int32_t mode)> reference);

// A random request for `e` within the documented envelope: random flags,
// matrices, ranges, alpha values and unread fields; planes at random allowed
// addresses with random pitches, top-down or bottom-up, sources now and then
// filled with the values where rounding and saturation decide.
Request BuildGenericRequest(Rng& rng, Scene& scene, const ExportUnderTest& e, const RequestStyle& style);

}  // namespace zenk::test
