#include "caps_colour.h"

#include <gst/video/video.h>

#include "colour.h"

namespace zenk::gst {

namespace {

using client::kBt601;
using client::kBt709;
using client::MatrixName;

std::string ForeignName(GstVideoColorMatrix m) {
    switch (m) {
        case GST_VIDEO_COLOR_MATRIX_BT2020: return "BT.2020";
        case GST_VIDEO_COLOR_MATRIX_SMPTE240M: return "SMPTE 240M";
        case GST_VIDEO_COLOR_MATRIX_FCC: return "FCC";
        case GST_VIDEO_COLOR_MATRIX_RGB: return "RGB (no matrix)";
        default: return "matrix " + std::to_string(static_cast<int>(m));
    }
}

std::string RangeName(bool full) { return full ? "full range" : "studio range"; }

std::string Caps(const Label& l) { return "colorimetry=" + l.colorimetry; }

std::optional<int32_t> SettingMatrix(MatrixSetting s) {
    if (s == MatrixSetting::Bt601) return kBt601;
    if (s == MatrixSetting::Bt709) return kBt709;
    return std::nullopt;
}

std::optional<bool> SettingRange(RangeSetting s) {
    if (s == RangeSetting::Auto) return std::nullopt;
    return s == RangeSetting::Full;
}

std::string MatrixProperty(int32_t m) { return m == kBt601 ? "matrix=bt601" : "matrix=bt709"; }
std::string RangeProperty(bool full) { return full ? "range=full" : "range=studio"; }

}  // namespace

Label LabelOf(const std::string& format, const char* colorimetry, int height) {
    Label l;
    l.format = format;
    const std::optional<client::NamedFormat> named = client::ParseFormat(format);
    l.yuv = named && client::IsYuv(named->format);
    l.height = height;
    if (!l.yuv || !colorimetry) return l;
    l.colorimetry = colorimetry;
    GstVideoColorimetry c;
    if (!gst_video_colorimetry_from_string(&c, colorimetry)) return l;
    if (c.matrix == GST_VIDEO_COLOR_MATRIX_BT601) {
        l.matrix = kBt601;
    } else if (c.matrix == GST_VIDEO_COLOR_MATRIX_BT709) {
        l.matrix = kBt709;
    } else if (c.matrix != GST_VIDEO_COLOR_MATRIX_UNKNOWN) {
        l.foreign_matrix = ForeignName(c.matrix);
    }
    if (c.range != GST_VIDEO_COLOR_RANGE_UNKNOWN) l.full_range = c.range == GST_VIDEO_COLOR_RANGE_0_255;
    return l;
}

Verdict Resolve(const client::Pair& pair, const Label& in, const Label& out, MatrixSetting matrix_setting,
                RangeSetting range_setting) {
    Verdict v;
    if (in.yuv && !in.foreign_matrix.empty()) {
        v.refusal = "the input caps name " + in.foreign_matrix + " (" + Caps(in) +
                    "): zenkconvert converts BT.601 and BT.709 YUV only";
        return v;
    }
    if (out.yuv && !out.foreign_matrix.empty()) {
        v.refusal = "downstream asks for " + out.foreign_matrix + " (" + Caps(out) +
                    "): zenkconvert makes BT.601 and BT.709 YUV only";
        return v;
    }
    const std::optional<int32_t> matrix = SettingMatrix(matrix_setting);
    const std::optional<bool> range = SettingRange(range_setting);
    if (in.yuv && out.yuv) {
        v.src_matrix = in.matrix.value_or(client::DefaultMatrix(in.height));
        if (matrix && out.matrix && *out.matrix != *matrix) {
            v.refusal = MatrixProperty(*matrix) + " makes " + MatrixName(*matrix) + ", but downstream asks for " +
                        MatrixName(*out.matrix) + " (" + Caps(out) + ")";
            return v;
        }
        v.dst_matrix = matrix.value_or(out.matrix.value_or(v.src_matrix));
        if (v.src_matrix != v.dst_matrix) {
            const std::string change = "the input is " + MatrixName(v.src_matrix) + " and " +
                                       (matrix ? MatrixProperty(*matrix) : "downstream (" + Caps(out) + ")") +
                                       " asks for " + MatrixName(v.dst_matrix);
            switch (client::MatrixChangeOf(pair)) {
                case client::MatrixChange::Never:
                    v.refusal = in.format + " to " + out.format + " keeps the picture's matrix: " + change;
                    return v;
                case client::MatrixChange::WritesUyvyOrder:
                    v.refusal = "the library changes the matrix into " + out.format +
                                " by writing packed UYVY bytes, not " + out.format + ": " + change +
                                "; change the matrix in UYVY first";
                    return v;
                default: break;
            }
        }
        // The repacking kernels move code values: the range stays the input's.
        v.full_range = in.full_range.value_or(false);
        if (range && *range != v.full_range) {
            v.refusal = "zenkconvert keeps the range from YUV to YUV: the input is " + RangeName(v.full_range) +
                        ", and " + RangeProperty(*range) + " asks for " + RangeName(*range);
            return v;
        }
        if (out.full_range && *out.full_range != v.full_range) {
            v.refusal = "zenkconvert keeps the range from YUV to YUV: the input is " + RangeName(v.full_range) +
                        ", and downstream asks for " + RangeName(*out.full_range) + " (" + Caps(out) + ")";
            return v;
        }
        return v;
    }
    if (in.yuv) {
        if (matrix && in.matrix && *in.matrix != *matrix) {
            v.refusal = MatrixProperty(*matrix) + ", but the input caps name " + MatrixName(*in.matrix) + " (" +
                        Caps(in) + "): zenkconvert decodes a picture with the matrix it was made with";
            return v;
        }
        if (range && in.full_range && *in.full_range != *range) {
            v.refusal = RangeProperty(*range) + ", but the input caps name " + RangeName(*in.full_range) + " (" +
                        Caps(in) + ")";
            return v;
        }
        v.src_matrix = v.dst_matrix = matrix.value_or(in.matrix.value_or(client::DefaultMatrix(in.height)));
        v.full_range = range.value_or(in.full_range.value_or(false));
        return v;
    }
    if (out.yuv) {
        if (matrix && out.matrix && *out.matrix != *matrix) {
            v.refusal = MatrixProperty(*matrix) + " makes " + MatrixName(*matrix) + ", but downstream asks for " +
                        MatrixName(*out.matrix) + " (" + Caps(out) + ")";
            return v;
        }
        if (range && out.full_range && *out.full_range != *range) {
            v.refusal = RangeProperty(*range) + " makes " + RangeName(*range) + ", but downstream asks for " +
                        RangeName(*out.full_range) + " (" + Caps(out) + ")";
            return v;
        }
        v.src_matrix = v.dst_matrix = matrix.value_or(out.matrix.value_or(client::DefaultMatrix(out.height)));
        v.full_range = range.value_or(out.full_range.value_or(false));
    }
    return v;
}

std::string ColorimetryString(int32_t matrix, bool full_range) {
    GstVideoColorimetry c;
    gst_video_colorimetry_from_string(&c, matrix == kBt601 ? GST_VIDEO_COLORIMETRY_BT601 : GST_VIDEO_COLORIMETRY_BT709);
    c.range = full_range ? GST_VIDEO_COLOR_RANGE_0_255 : GST_VIDEO_COLOR_RANGE_16_235;
    gchar* s = gst_video_colorimetry_to_string(&c);
    std::string result = s ? s : "";
    g_free(s);
    return result;
}

}  // namespace zenk::gst
