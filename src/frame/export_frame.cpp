#include "export_frame.h"

namespace zenk {

int SelectKernelVariant(const Request& r) {
    const int column = (r.vertical_mode >= 0 && r.vertical_mode <= 4) ? r.vertical_mode : 0;
    return column * 4 + VariantFor(Passes(kTableExportTest, r), r);
}

void RunTableExport(const KernelTable& table, const Request* r) {
    const Kernel kernel = table.entry[SelectKernelVariant(*r)];
    // A column without a kernel is a host error; converting nothing is the
    // only answer an export that returns nothing can give.
    if (kernel != nullptr) kernel(r);
}

namespace {

// The request of an alpha pass: the source alpha plane as its source and,
// unless the destination is itself an alpha plane, the destination alpha
// plane as its destination.
Request AlphaPass(const Request& r, bool to_alpha_plane) {
    Request alpha = r;
    alpha.src_plane = r.src_alpha_plane;
    alpha.src_stride = r.src_alpha_stride;
    alpha.src_skip = r.src_alpha_skip;
    if (to_alpha_plane) {
        alpha.dst_plane = r.dst_alpha_plane;
        alpha.dst_stride = r.dst_alpha_stride;
        alpha.dst_skip = r.dst_alpha_skip;
    }
    return alpha;
}

}  // namespace

// The fill reads nothing from its source.
void RunConstantAlphaComposite(ExportFunction colour, const Request* r) {
    colour(r);
    const Request alpha = AlphaPass(*r, true);
    ZENK_SSE2_A8C_A8P_EX(&alpha);
}

void RunAlphaCopyComposite(ExportFunction colour, const Request* r) {
    colour(r);
    const Request alpha = AlphaPass(*r, true);
    ZENK_SSE2_A8P_A8P_EX(&alpha);
}

void CopySourceAlphaPlane(const Request* r) {
    const Request alpha = AlphaPass(*r, false);
    ZENK_SSE2_A8P_A8P_EX(&alpha);
}

Request MakePlainRequest(const uint8_t* src, uint8_t* dst, int32_t src_pitch, int32_t matrix,
                         int32_t range, PlainFullRange full_range, uint32_t alpha_value) {
    Request r{};
    r.src_plane = src;
    r.dst_plane = dst;
    r.src_stride = src_pitch;
    r.dst_stride = src_pitch / 2;
    r.src_matrix = r.dst_matrix = matrix;
    r.src_range = r.dst_range = range;
    r.alpha_value = alpha_value;
    if (full_range == PlainFullRange::kFromRange) r.full_range = range == 1 ? 1 : 0;
    return r;
}

}  // namespace zenk
