#include "line_addressing.h"

namespace zenk {
namespace {

using ZENK_ISA::Advance;

// Advances are 32-bit quantities that wrap like the host's own arithmetic.
int32_t Wrap32(int64_t value) { return static_cast<int32_t>(static_cast<uint32_t>(value)); }

}  // namespace

void ComputeLineAddresses(LineAddressSet* set, const Request* r) {
    if (r->scan_mode == 0) {
        set->src_line_a = r->src_plane;
        set->dst_line = r->dst_plane;
        set->src_alpha_line_a = r->src_alpha_plane;
        set->dst_alpha_line = r->dst_alpha_plane;
        set->src_advance = r->src_skip;
        set->dst_advance = r->dst_skip;
        set->src_alpha_advance = r->src_alpha_skip;
        set->dst_alpha_advance = r->dst_alpha_skip;
        return;
    }
    if (r->scan_mode != 1 && r->scan_mode != 2) return;

    set->src_line_a = r->src_plane;
    set->src_alpha_line_a = r->src_alpha_plane;
    if (r->vertical_mode != 1 && r->vertical_mode != 2) {
        set->line_count = r->src_height;
        set->src_advance = r->src_skip;
        set->src_alpha_advance = r->src_alpha_skip;
        return;
    }

    // The source's direction, alpha plane included, follows the sign of
    // src_skip alone: a bottom-up source takes its second line upward.
    const int64_t k = r->vertical_mode == 1 ? 2 : 4;
    const int64_t s = r->src_skip < 0 ? -1 : 1;
    const int64_t second = r->src_field_pair ? s : s * k;
    set->line_count = r->dst_height;
    set->src_line_b = Advance(r->src_plane, Wrap32(second * r->src_stride));
    set->src_alpha_line_b = Advance(r->src_alpha_plane, Wrap32(second * r->src_alpha_stride));
    set->src_advance = Wrap32(r->src_skip + s * 2 * k * r->src_stride);
    set->src_alpha_advance = Wrap32(r->src_alpha_skip + s * 2 * k * r->src_alpha_stride);
    set->dst_line = r->dst_plane;
    set->dst_alpha_line = r->dst_alpha_plane;
    set->dst_advance = r->dst_skip;
    set->dst_alpha_advance = r->dst_alpha_skip;
}

}  // namespace zenk
