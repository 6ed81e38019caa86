// The export frame: how an extended export turns a request into one kernel
// call, how a plain export builds its request, and how the composites add
// an alpha pass to a colour conversion. Each family's export file
// (exports_<family>.cpp) is a list of one-line exports built from these:
// each line names the kernel quad or table the export runs, and the quad's
// definition in the family's <family>_kernels.cpp names its templates. The
// public header gives every export C linkage, default visibility and the
// cdecl convention; the definitions spell out their names, so that a search
// for an export's name finds its line.
#pragma once

#include "kernel/kernel_table.h"

namespace zenk {

// ---- Choosing a kernel ---------------------------------------------------------

// A family's kernel set at the level the library runs at (kernel/cpu.cpp).
template <class Kernels>
inline const Kernels& AtActiveLevel(const Kernels* const (&levels)[kIsaLevelCount]) {
    return *levels[static_cast<int>(ActiveIsaLevel())];
}

inline int VariantFor(bool aligned, const Request& r) {
    return (aligned ? kAlignedCached : kAnyCached) + (r.use_streaming_stores ? 1 : 0);
}

// Pitches and widths are tested as unsigned numbers: a negative pitch is a
// multiple of 48 only if its 32-bit pattern is.
inline bool MultipleOf(int32_t value, uint32_t unit) {
    return static_cast<uint32_t>(value) % unit == 0;
}

inline bool PassesSide(const uint8_t* plane, int32_t stride, int32_t line, const SideTest& t) {
    return reinterpret_cast<uintptr_t>(plane) % 16 == 0 &&
           (t.stride_unit == 0 || MultipleOf(stride, t.stride_unit)) && MultipleOf(line, t.width_unit);
}

inline bool Passes(const AlignmentTest& t, const Request& r) {
    return PassesSide(r.dst_plane, r.dst_stride, r.width, t.destination) &&
           (t.source.width_unit == 0 ||
            PassesSide(r.src_plane, r.src_stride, t.source_uses_src_width ? r.src_width : r.width, t.source));
}

// Four-kernel exports: test, pick the variant, run it once.
inline void RunFourKernel(const AlignmentTest& test, const KernelQuad& kernels, const Request* r) {
    kernels.variant[VariantFor(Passes(test, *r), *r)](r);
}

// ---- Table exports ----------------------------------------------------------

// Index into a KernelTable for this request.
int SelectKernelVariant(const Request& r);

void RunTableExport(const KernelTable& table, const Request* r);

// ---- Composites ---------------------------------------------------------------

using ExportFunction = void(ZENK_CALL*)(const ZenkConversionRequest*);

// Colour pass with the caller's request, then the destination alpha plane
// filled with the low byte of alpha_value over src_height lines of width.
void RunConstantAlphaComposite(ExportFunction colour, const Request* r);

// Colour pass, then the source alpha plane copied to the destination alpha
// plane.
void RunAlphaCopyComposite(ExportFunction colour, const Request* r);

// The source alpha plane copied to the destination plane (an A8P destination).
void CopySourceAlphaPlane(const Request* r);

// ---- Plain entry points --------------------------------------------------------

// Whether a plain entry point sets full_range from its range argument (only
// those that convert between YUV and RGB do).
enum class PlainFullRange { kNotSet, kFromRange };

// The request of a plain entry point: zeroed, half the source pitch as the
// destination pitch (rounding toward zero), no picture size. A plain call
// therefore converts nothing; hosts that call these by name rely on it.
Request MakePlainRequest(const uint8_t* src, uint8_t* dst, int32_t src_pitch, int32_t matrix,
                         int32_t range, PlainFullRange full_range, uint32_t alpha_value);

}  // namespace zenk

// Plain entry points with (source, destination, pitch, ignored, matrix, range).
#define ZENK_PLAIN_EXPORT(pair, full_range_rule)                                               \
    extern "C" void ZENK_CALL ZENK_SSE2_##pair(const uint8_t* src, uint8_t* dst, int32_t src_pitch, \
                                              int32_t, int32_t matrix, int32_t range) {         \
        const ZenkConversionRequest plain =                                                    \
            ::zenk::MakePlainRequest(src, dst, src_pitch, matrix, range, full_range_rule, 0);  \
        ZENK_SSE2_##pair##_EX(&plain);                                                         \
    }

// Plain entry points that also take a constant alpha (YUV to BGR32).
#define ZENK_PLAIN_EXPORT_WITH_ALPHA(pair, full_range_rule)                                    \
    extern "C" void ZENK_CALL ZENK_SSE2_##pair(const uint8_t* src, uint8_t* dst, int32_t src_pitch, \
                                              int32_t, int32_t matrix, int32_t range,          \
                                              uint32_t alpha_value) {                          \
        const ZenkConversionRequest plain = ::zenk::MakePlainRequest(                          \
            src, dst, src_pitch, matrix, range, full_range_rule, alpha_value);                 \
        ZENK_SSE2_##pair##_EX(&plain);                                                         \
    }
