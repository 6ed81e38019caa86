#include "request.h"

#include <algorithm>
#include <numeric>

namespace zenk::client {

namespace {

// Bytes of one line's pixels in the colour block (a planar picture's luma line).
int64_t LineBytes(Format format, int32_t width) { return LayoutOf(format, width, 1).colour_stride; }

}  // namespace

std::string SliceObstacle(const Pair& pair, const RequestOptions& options) {
    if (Info(pair.src).layout == Layout::Planar422)
        return "a " + Token(pair.src) +
               " source finds its chroma plane from its line count, so a band would read another band's chroma";
    if (options.vertical_mode != 0)
        return "the line-pair modes walk two field streams and count lines over the whole picture";
    return {};
}

ZenkConversionRequest MakeRequest(const Pair& pair, const RequestOptions& options, const Picture& src,
                                  const Picture& dst, int32_t first, int32_t count) {
    ZenkConversionRequest r{};
    const bool pair_mode = options.vertical_mode != 0;
    const bool doubling = options.vertical_mode == 3;

    if (src.colour) {
        r.src_plane = src.colour + static_cast<ptrdiff_t>(first) * src.stride;
        r.src_stride = src.stride;
    }
    r.src_width = src.width;
    r.src_height = pair_mode ? src.height : count;
    // In frame mode a running pointer ends each line's pixels, and the skip
    // takes it over the padding to the next line. In the line-pair modes the
    // source moves its line starts instead: by the pair step that the line
    // addressing adds to the skip (0), or, when doubling, by the skip alone
    // (one pitch).
    r.src_skip = doubling ? src.stride
                 : pair_mode ? 0
                             : static_cast<int32_t>(src.stride - (src.colour ? LineBytes(src.format, src.width) : 0));
    r.src_matrix = options.src_matrix;
    r.src_range = options.full_range ? 1 : 0;
    r.src_field_pair = options.field_pair ? 1 : 0;
    if (src.alpha) {
        r.src_alpha_plane = src.alpha + static_cast<ptrdiff_t>(first) * src.alpha_stride;
        r.src_alpha_stride = src.alpha_stride;
        r.src_alpha_skip = pair_mode ? 0 : src.alpha_stride - src.width;
    }

    r.dst_plane = dst.colour + static_cast<ptrdiff_t>(first) * dst.stride;
    // The kernels' line length is the smaller picture's width: the
    // destination's when a pair mode reduces, the source's otherwise.
    r.width = std::min(src.width, dst.width);
    // A Y8PUV8I destination finds its chroma plane at dst_height lines past
    // the band's first luma line: with the whole picture's height, each band
    // lands on its own chroma lines.
    r.dst_height = pair_mode || Info(pair.dst).layout == Layout::Planar422 ? dst.height : count;
    r.dst_stride = dst.stride;
    // The destination is a running pointer in every mode: its skip is the
    // pitch less the bytes of the pixels a line converts (in the pair modes
    // the width's whole pairs, each written twice when doubling).
    const int64_t line_pixels = pair_mode ? int64_t{r.width & ~1} * (doubling ? 2 : 1) : dst.width;
    const int64_t dst_line_bytes = LineBytes(dst.format, dst.width);
    const auto pitch_less_line = [&](int64_t stride, int64_t line_bytes) {
        return dst.width > 0 ? static_cast<int32_t>(stride - line_pixels * line_bytes / dst.width) : 0;
    };
    r.dst_skip = pitch_less_line(dst.stride, dst_line_bytes);
    r.dst_matrix = options.dst_matrix;
    r.dst_range = options.full_range ? 1 : 0;
    r.dst_field_pair = options.field_pair ? 1 : 0;
    if (dst.alpha) {
        r.dst_alpha_plane = dst.alpha + static_cast<ptrdiff_t>(first) * dst.alpha_stride;
        r.dst_alpha_stride = dst.alpha_stride;
        r.dst_alpha_skip = pitch_less_line(dst.alpha_stride, dst.width);
    }

    r.alpha_value = options.alpha_value;
    r.full_range = options.full_range ? 1 : 0;
    r.use_streaming_stores = options.streaming ? 1 : 0;
    r.clamp_luma = options.clamp_luma ? 1 : 0;
    r.scan_mode = options.scan_mode;
    r.vertical_mode = options.vertical_mode;
    return r;
}

std::vector<Band> Bands(const Pair& pair, const RequestOptions& options, const Picture& src, const Picture& dst,
                        int threads) {
    const int32_t height = src.height;
    if (threads <= 1 || height < 2 || !SliceObstacle(pair, options).empty()) return {{0, height}};
    // A band must start on a line where every plane is at the whole
    // picture's 16-byte residue: a multiple of the line step at which each
    // pitch comes back to it.
    int64_t step = 1;
    for (int64_t stride : {int64_t{src.stride}, int64_t{src.alpha_stride}, int64_t{dst.stride}, int64_t{dst.alpha_stride}})
        if (stride > 0) step = std::lcm(step, 16 / std::gcd(stride, int64_t{16}));
    const int64_t units = (height + step - 1) / step;
    const int64_t bands = std::min<int64_t>(threads, units);
    std::vector<Band> result;
    for (int64_t i = 0; i < bands; ++i) {
        const int64_t first = units * i / bands * step;
        const int64_t last = std::min<int64_t>(units * (i + 1) / bands * step, height);
        if (last > first) result.push_back({static_cast<int32_t>(first), static_cast<int32_t>(last - first)});
    }
    return result;
}

}  // namespace zenk::client
