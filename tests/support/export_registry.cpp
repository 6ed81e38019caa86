#include "support/export_registry.h"

namespace zenk::test {

std::vector<ExportUnderTest>& RegisteredExports() {
    static std::vector<ExportUnderTest> exports;
    return exports;
}

Registration::Registration(std::vector<ExportUnderTest> exports) {
    for (ExportUnderTest& e : exports) RegisteredExports().push_back(std::move(e));
}

Request BuildGenericRequest(Rng& rng, Scene& scene, const ExportUnderTest& e, const RequestStyle& style) {
    Request r{};
    int32_t width = style.width >= 0 ? style.width
                          : style.aligned  ? e.aligned_width_unit * rng.Uniform(0, 4)
                          : rng.Chance(85) ? rng.Uniform(0, 70)
                                           : rng.Uniform(71, 600);
    const int32_t height = style.height >= 0 ? style.height : rng.Uniform(0, 5);
    if (style.even_width) width &= ~1;
    r.width = width;
    r.src_width = rng.Chance(90) ? width : rng.Uniform(0, 70);
    r.src_height = height;
    r.dst_height = height;
    r.alpha_value = rng.AlphaValue();
    r.use_streaming_stores = rng.Chance(50);
    r.full_range = rng.Chance(50);
    r.clamp_luma = rng.Chance(50);
    r.src_matrix = rng.Pick(std::vector<int32_t>{0, 1, 1, 0, 2, -1});
    r.dst_matrix = rng.Pick(std::vector<int32_t>{0, 1, 1, 0, 2, -1});
    r.src_range = rng.Uniform(0, 2);
    r.dst_range = rng.Uniform(0, 2);
    // A line-pair mode: `reduce` source pixels and lines make one
    // destination pixel and line (vertical_mode 1 and 2), or each source
    // pixel and line is written twice (vertical_mode 3).
    const int32_t mode = style.pair_mode && !e.pair_modes.empty() ? rng.Pick(e.pair_modes) : 0;
    const int32_t reduce = mode == 1 ? 2 : mode == 2 ? 4 : 1;
    const int32_t twice = mode == 3 ? 2 : 1;
    r.scan_mode = mode == 0 ? 0 : rng.Uniform(1, 2);
    r.vertical_mode = mode;
    r.src_field_pair = rng.Chance(50);
    if (reduce > 1) r.dst_height = rng.Uniform(0, 5);

    struct Binding {
        const PlaneSpec* plane;
        bool destination;
    };
    const Binding bindings[4] = {{&e.src, false}, {&e.src_alpha, false}, {&e.dst, true}, {&e.dst_alpha, true}};
    size_t index[4] = {};
    for (int i = 0; i < 4; ++i) {
        const PlaneSpec& p = *bindings[i].plane;
        if (p.bytes_per_pixel == 0) continue;
        PlaneShape shape;
        const bool source = !bindings[i].destination;
        shape.line_bytes = width * p.bytes_per_pixel * (source ? reduce : twice) + p.read_past_line;
        shape.lines = height;
        if (reduce > 1) shape.lines = source ? reduce * r.dst_height + 2 : r.dst_height;
        if (twice > 1 && !source) shape.lines = 2 * height;
        shape.extra_lines = p.chroma_plane ? shape.lines : 0;
        // Doubled Y8PUV8I lines: the chroma lines follow the luma lines in
        // the walk's direction, dst_stride * dst_height on.
        if (twice > 1 && !source && p.chroma_plane) {
            shape.lines *= 2;
            shape.extra_lines = 0;
        }
        shape.bottom_up = rng.Chance(style.bottom_up_percent);
        shape.guard_page = style.guard_page;
        shape.alignment = style.aligned ? 16 : p.line_alignment;
        const int32_t line_bytes = shape.line_bytes - p.read_past_line;
        if (style.aligned) {
            shape.pitch = (line_bytes + 191) / 192 * 192 + 192 * rng.Uniform(0, 1);
            shape.residue = 0;
        } else {
            const int32_t step = p.line_alignment;
            shape.pitch = line_bytes + step * rng.Uniform(0, 12);
            shape.pitch = (shape.pitch + step - 1) / step * step;
            if (shape.pitch == 0) shape.pitch = step;
            uint32_t residue = static_cast<uint32_t>(rng.Uniform(0, 63));
            if (bindings[i].destination && style.residue >= 0)
                residue = static_cast<uint32_t>(style.residue + 16 * rng.Uniform(0, 3));
            shape.residue = residue / static_cast<uint32_t>(step) * static_cast<uint32_t>(step);
        }
        index[i] = scene.size();
        scene.Add(rng, shape);
    }
    auto bind = [&](int i, auto& plane, int32_t& stride, int32_t& skip) {
        if (bindings[i].plane->bytes_per_pixel == 0) return;
        GuardedPlane& g = scene[index[i]];
        plane = g.first_line();
        stride = g.stride();
        skip = g.Skip(width * bindings[i].plane->bytes_per_pixel);
    };
    bind(0, r.src_plane, r.src_stride, r.src_skip);
    bind(1, r.src_alpha_plane, r.src_alpha_stride, r.src_alpha_skip);
    bind(2, r.dst_plane, r.dst_stride, r.dst_skip);
    bind(3, r.dst_alpha_plane, r.dst_alpha_stride, r.dst_alpha_skip);
    if (mode != 0) {
        // The pair modes have no alpha planes.
        GuardedPlane& src = scene[index[0]];
        GuardedPlane& dst = scene[index[2]];
        const int32_t pairs_bytes = (width & ~1) * e.dst.bytes_per_pixel;
        if (reduce > 1) {
            // The source's lines advance from their starts by whole strides
            // and the skip, whose sign alone gives the direction.
            r.src_skip = src.shape().bottom_up ? -1 : 0;
            r.dst_skip = dst.Skip(pairs_bytes);
        } else {
            // Doubling: a source line start advances by the skip; the two
            // copies of a line go dst_stride apart.
            r.src_skip = src.Skip(0);
            r.dst_stride = dst.Skip(0);
            r.dst_height = e.dst.chroma_plane ? 2 * height : height;
        }
        if (e.src.chroma_plane) r.src_height = src.shape().lines;
    }
    return r;
}

}  // namespace zenk::test
