#include "conversion.h"

#include <algorithm>
#include <numeric>
#include <thread>
#include <vector>

#include "errors.h"

namespace zenk::tool {

namespace {

std::string PairName(const Pair& pair) {
    return std::string(Info(pair.src).token) + " -> " + std::string(Info(pair.dst).token);
}

}  // namespace

Size DestinationSize(const Pair& pair, const RequestOptions& options, Size source) {
    const int32_t mode = options.vertical_mode;
    if (std::find(pair.vertical_modes.begin(), pair.vertical_modes.end(), mode) == pair.vertical_modes.end()) {
        std::string modes;
        for (int m : pair.vertical_modes) modes += (modes.empty() ? "" : ", ") + std::to_string(m);
        throw ToolError(kExitUsage, PairName(pair) + " has no vertical mode " + std::to_string(mode) +
                                        " (it offers " + modes + ")");
    }
    if (options.scan_mode < 0 || options.scan_mode > 2)
        throw ToolError(kExitUsage, "--scan-mode must be 0 (frame), 1 or 2 (line pairs), not " +
                                        std::to_string(options.scan_mode));
    if (mode == 0) return source;
    if (options.scan_mode == 0)
        throw ToolError(kExitUsage, "--vertical-mode " + std::to_string(mode) +
                                        " converts line pairs: it needs --scan-mode 1 or 2");
    if (mode == 3) {
        // Each source pixel pair becomes two output pairs, each line two lines.
        if (source.width % 2 != 0)
            throw ToolError(kExitUsage, "--vertical-mode 3 doubles pixel pairs: the width must be even, not " +
                                            std::to_string(source.width));
        return {2 * source.width, 2 * source.height};
    }
    const int32_t k = mode == 1 ? 2 : 4;
    // Every destination line comes from one line of a pair of source lines
    // 2k apart in a stream, so the height is a whole number of such pairs.
    if (source.height % (2 * k) != 0)
        throw ToolError(kExitUsage, "--vertical-mode " + std::to_string(mode) + " needs a height that is a multiple of " +
                                        std::to_string(2 * k) + ", not " + std::to_string(source.height));
    if (IsYuv(pair.dst)) {
        // The reduced 4:2:2 line must still hold whole pixel pairs.
        if (source.width % (2 * k) != 0)
            throw ToolError(kExitUsage, "--vertical-mode " + std::to_string(mode) + " to " +
                                            std::string(Info(pair.dst).token) + " needs a width that is a multiple of " +
                                            std::to_string(2 * k) + ", not " + std::to_string(source.width));
        return {source.width / k, source.height / k};
    }
    return {source.width, source.height / k};
}

std::string SliceObstacle(const Pair& pair, const RequestOptions& options) {
    if (Info(pair.src).layout == Layout::Planar422)
        return "a " + std::string(Info(pair.src).token) +
               " source finds its chroma plane from its line count, so a slice would read another slice's chroma";
    if (options.vertical_mode != 0)
        return "the line-pair modes walk two field streams and count lines over the whole picture";
    return {};
}

ZenkConversionRequest MakeRequest(const Pair& pair, const RequestOptions& options, const Frame& src, Frame& dst,
                                  int32_t first, int32_t count) {
    ZenkConversionRequest r{};
    const FrameLayout& sl = src.layout();
    const FrameLayout& dl = dst.layout();
    const bool pair_mode = options.vertical_mode != 0;

    if (pair.src != Format::A8C) {
        r.src_plane = src.colour() + first * sl.colour_stride;
        r.src_stride = static_cast<int32_t>(sl.colour_stride);
    }
    r.src_width = src.width();
    r.src_height = pair_mode ? src.height() : count;
    // Tight lines: in frame mode a running pointer ends each line at the next
    // one, so every skip is 0. In the line-pair modes the destination is a
    // running pointer too, and its skip is the pitch less the bytes of a
    // line's converted pixels (0 again for whole pixel pairs). The source
    // moves its line starts instead: by the pair step that the line
    // addressing adds to its skip (0), or, when doubling, by its skip alone
    // (one pitch).
    r.src_skip = options.vertical_mode == 3 ? static_cast<int32_t>(sl.colour_stride) : 0;
    r.src_matrix = options.src_matrix;
    r.src_range = options.full_range ? 1 : 0;
    r.src_field_pair = options.field_pair ? 1 : 0;
    if (src.alpha()) {
        r.src_alpha_plane = src.alpha() + first * sl.alpha_stride;
        r.src_alpha_stride = static_cast<int32_t>(sl.alpha_stride);
    }

    r.dst_plane = dst.colour() + first * dl.colour_stride;
    // The kernels' line length is the smaller picture's width: the
    // destination's when a pair mode reduces, the source's otherwise.
    r.width = std::min(src.width(), dst.width());
    // A Y8PUV8I destination finds its chroma plane at dst_height lines past
    // the slice's first luma line: with the whole picture's height, each
    // slice lands on its own chroma lines.
    r.dst_height = pair_mode || Info(pair.dst).layout == Layout::Planar422 ? dst.height() : count;
    r.dst_stride = static_cast<int32_t>(dl.colour_stride);
    // Destination pixels a pair-mode line converts: the width's whole pairs,
    // each written twice when doubling.
    const int64_t line_pixels = int64_t{r.width & ~1} * (options.vertical_mode == 3 ? 2 : 1);
    const auto pitch_less_line = [&](int64_t stride) {
        return pair_mode && dst.width() > 0 ? static_cast<int32_t>(stride - line_pixels * stride / dst.width()) : 0;
    };
    r.dst_skip = pitch_less_line(dl.colour_stride);
    r.dst_matrix = options.dst_matrix;
    r.dst_range = options.full_range ? 1 : 0;
    r.dst_field_pair = options.field_pair ? 1 : 0;
    if (dst.alpha()) {
        r.dst_alpha_plane = dst.alpha() + first * dl.alpha_stride;
        r.dst_alpha_stride = static_cast<int32_t>(dl.alpha_stride);
        r.dst_alpha_skip = pitch_less_line(dl.alpha_stride);
    }

    r.alpha_value = options.alpha_value;
    r.full_range = options.full_range ? 1 : 0;
    r.use_streaming_stores = options.streaming ? 1 : 0;
    r.clamp_luma = options.clamp_luma ? 1 : 0;
    r.scan_mode = options.scan_mode;
    r.vertical_mode = options.vertical_mode;
    return r;
}

void Convert(ZenkConvertFunction function, const Pair& pair, const RequestOptions& options, const Frame& src,
             Frame& dst, int threads) {
    const int32_t height = src.height();
    if (threads <= 1 || height < 2 || !SliceObstacle(pair, options).empty()) {
        const ZenkConversionRequest r = MakeRequest(pair, options, src, dst, 0, height);
        function(&r);
        return;
    }
    // Slices start on lines whose planes keep the whole picture's 16-byte
    // residues: the library picks its kernel from the plane addresses, and
    // every slice must run the kernel the whole picture would.
    int64_t step = 1;
    for (int64_t stride : {src.layout().colour_stride, src.layout().alpha_stride, dst.layout().colour_stride,
                           dst.layout().alpha_stride})
        if (stride > 0) step = std::lcm(step, 16 / std::gcd(stride, int64_t{16}));
    const int64_t units = (height + step - 1) / step;
    const int64_t slices = std::min<int64_t>(threads, units);
    std::vector<std::thread> workers;
    workers.reserve(static_cast<size_t>(slices));
    int64_t next_unit = 0;
    for (int64_t i = 0; i < slices; ++i) {
        const int64_t end_unit = units * (i + 1) / slices;
        const auto first = static_cast<int32_t>(next_unit * step);
        const auto last = static_cast<int32_t>(std::min<int64_t>(end_unit * step, height));
        next_unit = end_unit;
        if (last <= first) continue;
        const ZenkConversionRequest r = MakeRequest(pair, options, src, dst, first, last - first);
        workers.emplace_back([function, r] { function(&r); });
    }
    for (std::thread& t : workers) t.join();
}

}  // namespace zenk::tool
