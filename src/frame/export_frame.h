// The export frame: how an extended export turns a request into one kernel
// call, how a plain export builds its request, and how the composites add
// an alpha pass to a colour conversion. Each family's export file
// (exports_<family>.cpp) is a list of one-line exports built from these:
// each line names the kernel quad or table the export runs, and the quad's
// definition in the family's <family>_kernels.cpp names its templates.
#pragma once

#include "kernel/kernel.h"

// Defines an extended export, spelled out in full so that a search for the
// export's name finds its line. The public header gives it C linkage,
// default visibility and the cdecl convention.
#define ZENK_EXPORT_EX(name) extern "C" void ZENK_CALL name(const ZenkConversionRequest* request)

namespace zenk {

// Four-kernel exports: test, pick the variant, run it once.
inline void RunFourKernel(const AlignmentTest& test, const KernelQuad& kernels, const Request* r) {
    kernels.variant[VariantFor(Passes(test, *r), *r)](r);
}

// ---- Table exports ----------------------------------------------------------

// The five exports that know line-pair modes own a table of 20 entries:
// column (vertical_mode 0 to 4) times 4 plus variant. An empty entry is
// null; a host that asks for it gets no conversion.
struct KernelTable {
    Kernel entry[20];
};

// One pair-mode kernel serves all four variants of its column.
constexpr KernelTable MakeKernelTable(const KernelQuad& frame, Kernel column1, Kernel column2,
                                      Kernel column3 = nullptr) {
    return {{frame.variant[0], frame.variant[1], frame.variant[2], frame.variant[3],
             column1, column1, column1, column1,
             column2, column2, column2, column2,
             column3, column3, column3, column3,
             nullptr, nullptr, nullptr, nullptr}};
}

// Index into a KernelTable for this request.
int SelectKernelVariant(const Request& r);

void RunTableExport(const KernelTable& table, const Request* r);

// ---- Composites ---------------------------------------------------------------

using ExportFunction = void(ZENK_CALL*)(const ZenkConversionRequest*);

// Colour pass with the caller's request, then the destination alpha plane
// filled with the low byte of alpha_value over src_height lines of width.
void RunConstantAlphaComposite(ExportFunction colour, const Request* r);

// Colour pass (none where the destination is A8P), then the source alpha
// plane copied to the destination alpha plane, or to the destination plane
// itself where the destination is A8P.
enum class AlphaDestination { kAlphaPlane, kDestinationPlane };
void RunAlphaCopyComposite(ExportFunction colour, AlphaDestination where, const Request* r);

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
