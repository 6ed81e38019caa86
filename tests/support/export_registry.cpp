#include "support/export_registry.h"

namespace zenk::test {

std::vector<ExportUnderTest>& RegisteredExports() {
    static std::vector<ExportUnderTest> exports;
    return exports;
}

ExportUnderTest Named(const char* pair, ZenkConvertFunction convert) {
    return {.name = std::string("ZENK_SSE2_") + pair + "_EX", .convert = convert};
}

void AddVariants(ExportUnderTest& e, const std::string& prefix, const LevelKernels& quads, RequestStyle aligned,
                 std::function<void(const Request&, int variant)> reference) {
    aligned.aligned = true;
    for (int variant = 0; variant < 4; ++variant) {
        KernelUnderTest k{prefix + "v" + std::to_string(variant), {}, variant < 2 ? aligned : RequestStyle{},
                          [reference, variant](const Request& r) { reference(r, variant); }};
        for (size_t level = 0; level < kLevelCount; ++level) k.at_level[level] = quads[level][variant];
        e.kernels.push_back(std::move(k));
    }
}

void AddPairModes(ExportUnderTest& e, const LevelKernels& table,
                  std::vector<int32_t> modes, std::function<void(const Request&, int32_t mode)> reference) {
    e.pair_modes = modes;
    for (int32_t mode : modes) {
        KernelUnderTest k{"mode" + std::to_string(mode), {}, {.pair_mode = mode},
                          [reference, mode](const Request& r) { reference(r, mode); }};
        for (size_t level = 0; level < kLevelCount; ++level) k.at_level[level] = table[level][4 * mode];
        e.kernels.push_back(std::move(k));
    }
}

namespace {

// Source bytes where rounding, the clamps, 16-bit saturation and its
// wrap-around decide a result.
void FillWithEdgeValues(Rng& rng, GuardedPlane& plane) {
    static const std::vector<uint8_t> kEdges = {0,   1,   2,   5,   15,  16,  17,  126, 127, 128,
                                                129, 130, 234, 235, 236, 250, 253, 254, 255};
    const int percent = rng.Uniform(30, 95);
    for (uint8_t& b : plane.bytes) b = rng.Chance(percent) ? rng.Pick(kEdges) : rng.Byte();
}

uint8_t Flag(Rng& rng) { return rng.Chance(50) ? 0 : static_cast<uint8_t>(rng.Uniform(1, 255)); }

}  // namespace

Request BuildGenericRequest(Rng& rng, Scene& scene, const ExportUnderTest& e, const RequestStyle& style) {
    // Without guard pages the planes have room for the odd requests hosts
    // make: chroma planes anywhere, skips that drift, lines off alignment.
    const bool loose = style.guard_page == GuardPage::kNone;
    const int32_t block = style.block > 0 ? style.block : e.aligned_width_unit;
    int32_t width = style.width >= 0 ? style.width
                    : style.aligned  ? block * rng.Uniform(0, 4) +
                                          (style.block > 0 && rng.Chance(30) ? rng.Uniform(1, block - 1) : 0)
                    : rng.Chance(85) ? rng.Uniform(0, 70)
                                     : rng.Uniform(71, 600);
    const int32_t height = style.height >= 0 ? style.height : rng.Uniform(0, 5);
    if (style.even_width) width &= ~1;
    // What an aligned kernel consumes of a line: whole blocks.
    const int32_t consumed = style.aligned && style.block > 0 ? width / block * block : width;
    static const std::vector<int32_t> kMatrices = {0, 1, 1, 0, 2, -1, 3};
    Request r{.src_width = rng.Chance(90) ? width : rng.Uniform(0, 70), .src_height = height,
              .src_matrix = rng.Pick(kMatrices), .src_range = rng.Uniform(-1, 2), .src_field_pair = Flag(rng),
              .width = width, .dst_matrix = rng.Pick(kMatrices), .dst_range = rng.Uniform(-1, 2),
              .alpha_value = rng.AlphaValue(), .full_range = Flag(rng), .use_streaming_stores = Flag(rng),
              .clamp_luma = Flag(rng)};
    // A line-pair mode: `reduce` source pixels and lines make one
    // destination pixel and line (vertical_mode 1 and 2), or each source
    // pixel and line is written twice (vertical_mode 3).
    const int32_t mode = e.pair_modes.empty() || style.pair_mode == 0 ? 0
                         : style.pair_mode == kAnyPairMode          ? rng.Pick(e.pair_modes)
                                                                    : style.pair_mode;
    const int32_t reduce = mode == 1 ? 2 : mode == 2 ? 4 : 1;
    const int32_t twice = mode == 3 ? 2 : 1;
    if (mode == 0) {
        // Frame mode: scan_mode is not read, and a vertical_mode that names
        // no pair mode of the export selects its frame kernels or nothing.
        r.scan_mode = rng.Uniform(-1, 3);
        std::vector<int32_t> others;
        for (int32_t m : {0, 0, 0, 0, 1, 2, 3, 4, 5, 7, -1})
            if (std::find(e.pair_modes.begin(), e.pair_modes.end(), m) == e.pair_modes.end()) others.push_back(m);
        r.vertical_mode = rng.Pick(others);
        // Y8PUV8I chroma lines dst_stride * dst_height on, wherever the
        // host puts them; other destinations do not read dst_height.
        r.dst_height = !loose ? height : e.dst.chroma_plane ? rng.Uniform(0, height + 1) : rng.Uniform(0, 8);
    } else {
        // Pair modes address lines only for scan_mode 1 and 2.
        r.scan_mode = loose && rng.Chance(10) ? rng.Pick(std::vector<int32_t>{0, 3, -1}) : rng.Uniform(1, 2);
        r.vertical_mode = mode;
        r.dst_height = reduce == 1 ? height : style.reduced_lines >= 0 ? style.reduced_lines : rng.Uniform(0, 5);
    }

    const PlaneSpec* const planes[4] = {&e.src, &e.src_alpha, &e.dst, &e.dst_alpha};  // sources first
    // As a host fills a request most often: every pitch the line's bytes,
    // rounded up to the alignment, so that lines lie end to end where they can.
    const bool natural = rng.Chance(25);
    size_t index[4] = {};
    for (int i = 0; i < 4; ++i) {
        const PlaneSpec& p = *planes[i];
        if (p.bytes_per_pixel == 0) continue;
        PlaneShape shape;
        const bool source = i < 2;
        shape.line_bytes = width * p.bytes_per_pixel * (source ? reduce : twice) + p.read_past_line;
        shape.lines = height;
        if (reduce > 1) shape.lines = source ? reduce * r.dst_height + 2 : r.dst_height;
        if (twice > 1 && !source) shape.lines = 2 * height;
        // Y8PUV8I: the chroma lines; a frame destination's start dst_height
        // lines on, and room for a change of standard's packed lines.
        shape.extra_lines = !p.chroma_plane ? 0 : mode == 0 && !source ? std::max(r.dst_height, height) : shape.lines;
        // Doubled Y8PUV8I lines: the chroma lines follow the luma lines in
        // the walk's direction, dst_stride * dst_height on.
        if (twice > 1 && !source && p.chroma_plane) {
            shape.lines *= 2;
            shape.extra_lines = 0;
        }
        shape.bottom_up = rng.Chance(style.bottom_up_percent);
        shape.guard_page = style.guard_page;
        const bool aligned = style.aligned && !(source && style.source_anywhere);
        const int32_t line_bytes = shape.line_bytes - p.read_past_line;
        if (aligned) {
            shape.alignment = 16;
            shape.pitch = natural ? (line_bytes + 15) / 16 * 16 : (line_bytes + 191) / 192 * 192 + 192 * rng.Uniform(0, 1);
            shape.residue = 0;
            if (style.drift_pitch && !source && loose && rng.Chance(25))
                shape.pitch += p.line_alignment * rng.Uniform(1, 3);
        } else {
            const int32_t step = loose && p.anywhere && style.residue < 0 && rng.Chance(10) ? 1 : p.line_alignment;
            shape.alignment = static_cast<uint32_t>(step);
            shape.pitch = line_bytes + (natural ? 0 : step * rng.Uniform(0, 12));
            shape.pitch = (shape.pitch + step - 1) / step * step;
            if (shape.pitch == 0) shape.pitch = step;
            uint32_t residue = static_cast<uint32_t>(rng.Uniform(0, 63));
            if (!source && style.residue >= 0)
                residue = static_cast<uint32_t>(style.residue + 16 * rng.Uniform(0, 3));
            shape.residue = residue / static_cast<uint32_t>(step) * static_cast<uint32_t>(step);
        }
        index[i] = scene.size();
        scene.emplace_back(rng, shape);
    }
    // Planes are addressed once all are added: adding may move them.
    const bool edges = rng.Chance(50);
    // Now and then every line starts where the one before stopped (skip 0,
    // whatever the pitch): lines end to end, the case where a copy or a fill
    // may run over the whole picture at once.
    const bool end_to_end = rng.Chance(15);
    auto bind = [&](int i, auto& plane, int32_t& stride, int32_t& skip) {
        if (planes[i]->bytes_per_pixel == 0) return;
        GuardedPlane& g = scene[index[i]];
        if (edges && i < 2) FillWithEdgeValues(rng, g);
        plane = g.first_line();
        stride = g.shape.pitch;
        skip = end_to_end && !g.shape.bottom_up ? 0 : g.Skip(consumed * planes[i]->bytes_per_pixel);
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
        const int32_t direction = src.shape.bottom_up ? -1 : 1;
        const int32_t extra = loose ? rng.Uniform(0, 8) : 0;
        if (reduce > 1) {
            // The source's lines advance from their starts by whole strides
            // and the skip, whose sign gives the direction.
            r.src_skip = src.shape.bottom_up ? -1 - extra : extra;
            r.dst_skip = dst.Skip(pairs_bytes);
        } else {
            // Doubling: a source line start advances by the skip; the two
            // copies of a line go dst_stride apart; dst_skip is not read.
            r.src_skip = src.Skip(0) + direction * extra;
            r.dst_stride = dst.Skip(0);
            r.dst_height = e.dst.chroma_plane ? 2 * height : height;
            if (loose) r.dst_skip = rng.Uniform(-64, 64);
        }
        if (e.src.chroma_plane) r.src_height = src.shape.lines;
    }
    return r;
}

}  // namespace zenk::test
