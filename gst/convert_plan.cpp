#include "convert_plan.h"

#include <algorithm>
#include <numeric>

namespace zenk::gst {

namespace {

using tool::Format;

struct FormatRow {
    GstVideoFormat gst;
    Format zenk;
};

// Preference order: when downstream leaves the choice open, the first
// format the input converts to is taken after the input's own.
const std::vector<FormatRow> kFormats = {
    {GST_VIDEO_FORMAT_UYVY, Format::UYVY16I}, {GST_VIDEO_FORMAT_YUY2, Format::YUYV16I},
    {GST_VIDEO_FORMAT_NV16, Format::Y8PUV8I}, {GST_VIDEO_FORMAT_VUYA, Format::V8U8Y8A8I},
    {GST_VIDEO_FORMAT_BGRA, Format::BGR32I},  {GST_VIDEO_FORMAT_BGRx, Format::BGR32I},
    {GST_VIDEO_FORMAT_BGR, Format::BGR24I},   {GST_VIDEO_FORMAT_GRAY8, Format::A8P},
};

// Bytes of one line that the kernels walk over (the luma line of a planar
// picture).
int32_t LineBytes(Format format, int32_t width) {
    return static_cast<int32_t>(tool::LayoutOf(format, width, 1).colour_stride);
}

}  // namespace

const std::vector<GstVideoFormat>& ElementFormats() {
    static const std::vector<GstVideoFormat> formats = [] {
        std::vector<GstVideoFormat> v;
        for (const FormatRow& row : kFormats) v.push_back(row.gst);
        return v;
    }();
    return formats;
}

std::optional<Format> LibraryFormat(GstVideoFormat format) {
    for (const FormatRow& row : kFormats)
        if (row.gst == format) return row.zenk;
    return std::nullopt;
}

bool Converts(GstVideoFormat in, GstVideoFormat out) {
    const std::optional<Format> src = LibraryFormat(in), dst = LibraryFormat(out);
    if (!src || !dst || !tool::FindPair(*src, *dst)) return false;
    return !(in == GST_VIDEO_FORMAT_BGRx && (out == GST_VIDEO_FORMAT_BGRA || out == GST_VIDEO_FORMAT_GRAY8));
}

bool NeedsEvenWidth(GstVideoFormat format) {
    const std::optional<Format> f = LibraryFormat(format);
    return f && tool::NeedsEvenWidth(*f);
}

bool IsYuv(GstVideoFormat format) {
    const std::optional<Format> f = LibraryFormat(format);
    return f && tool::IsYuv(*f);
}

std::optional<int32_t> RequestMatrix(GstVideoColorMatrix matrix) {
    if (matrix == GST_VIDEO_COLOR_MATRIX_BT601) return 1;
    if (matrix == GST_VIDEO_COLOR_MATRIX_BT709) return 0;
    return std::nullopt;
}

int32_t DefaultMatrix(int height) { return height > 576 ? 0 : 1; }

std::string ColorimetryString(int32_t matrix, bool full_range) {
    GstVideoColorimetry c;
    gst_video_colorimetry_from_string(&c, matrix == 1 ? GST_VIDEO_COLORIMETRY_BT601 : GST_VIDEO_COLORIMETRY_BT709);
    c.range = full_range ? GST_VIDEO_COLOR_RANGE_0_255 : GST_VIDEO_COLOR_RANGE_16_235;
    gchar* s = gst_video_colorimetry_to_string(&c);
    std::string result = s ? s : "";
    g_free(s);
    return result;
}

std::optional<Picture> PictureOf(const GstVideoFrame& frame) {
    Picture p;
    p.data = static_cast<uint8_t*>(GST_VIDEO_FRAME_PLANE_DATA(&frame, 0));
    p.stride = GST_VIDEO_FRAME_PLANE_STRIDE(&frame, 0);
    p.width = GST_VIDEO_FRAME_WIDTH(&frame);
    p.height = GST_VIDEO_FRAME_HEIGHT(&frame);
    if (GST_VIDEO_FRAME_FORMAT(&frame) == GST_VIDEO_FORMAT_NV16) {
        const auto* chroma = static_cast<const uint8_t*>(GST_VIDEO_FRAME_PLANE_DATA(&frame, 1));
        if (GST_VIDEO_FRAME_PLANE_STRIDE(&frame, 1) != p.stride ||
            chroma != p.data + static_cast<ptrdiff_t>(p.stride) * p.height)
            return std::nullopt;
    }
    return p;
}

ZenkConversionRequest MakeRequest(Format in_format, const Picture& in, Format out_format, const Picture& out,
                                  const RequestSettings& settings, int32_t first, int32_t count) {
    ZenkConversionRequest r{};
    r.src_plane = in.data + static_cast<ptrdiff_t>(first) * in.stride;
    r.src_width = in.width;
    r.src_height = count;
    r.src_stride = in.stride;
    // Pitch minus the bytes a line takes: padded lines (BGR, GRAY8 and
    // NV16 at widths that are not a multiple of 4) skip their padding.
    r.src_skip = in.stride - LineBytes(in_format, in.width);
    r.src_matrix = settings.src_matrix;
    r.src_range = settings.full_range ? 1 : 0;

    r.dst_plane = out.data + static_cast<ptrdiff_t>(first) * out.stride;
    r.width = out.width;
    // An NV16 output finds its chroma plane dst_height lines past the band's
    // first luma line: with the whole picture's height each band lands on
    // its own chroma lines.
    r.dst_height = tool::Info(out_format).layout == tool::Layout::Planar422 ? out.height : count;
    r.dst_stride = out.stride;
    r.dst_skip = out.stride - LineBytes(out_format, out.width);
    r.dst_matrix = settings.dst_matrix;
    r.dst_range = settings.full_range ? 1 : 0;

    // Some BGR32I outputs read the low half of the word for even pixels and
    // the high half for odd ones.
    r.alpha_value = settings.alpha | (uint32_t{settings.alpha} << 16);
    r.full_range = settings.full_range ? 1 : 0;
    r.use_streaming_stores = settings.streaming_stores ? 1 : 0;
    r.clamp_luma = settings.clamp_luma ? 1 : 0;
    return r;
}

std::vector<Band> Bands(Format in_format, const Picture& in, const Picture& out, int threads) {
    const int32_t height = in.height;
    if (threads <= 1 || height < 2 || tool::Info(in_format).layout == tool::Layout::Planar422) return {{0, height}};
    int64_t step = 1;
    for (int64_t stride : {int64_t{in.stride}, int64_t{out.stride}})
        step = std::lcm(step, 16 / std::gcd(stride, int64_t{16}));
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

}  // namespace zenk::gst
