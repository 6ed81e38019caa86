// The colour side of zenkconvert's negotiation: what a caps structure says
// about its picture's matrix and range, and the one rule that decides, from
// both sides' caps and the element's matrix and range properties, how a
// picture is converted, or why it cannot be. A YUV output's caps always name
// the matrix and range its bytes were made with; caps or properties that
// contradict each other, or name a matrix the library lacks, are refused
// with the reason.
#pragma once

#include <gst/gst.h>

#include <cstdint>
#include <optional>
#include <string>

#include "formats.h"

namespace zenk::gst {

enum class MatrixSetting { Auto, Bt601, Bt709 };
enum class RangeSetting { Auto, Studio, Full };

// What one side's caps say about its picture's colour.
struct Label {
    std::string format;  // GStreamer's name, for messages
    bool yuv = false;
    std::optional<int32_t> matrix;  // BT.601 or BT.709 (request words), when the caps name one
    std::string foreign_matrix;     // a matrix the library lacks, when the caps name one ("BT.2020")
    std::optional<bool> full_range;  // when the caps name a range
    int height = 0;                  // lines, 0 when the caps leave them open
    std::string colorimetry;         // as the caps write it
};

// The label of `format` (a GStreamer name) with the colorimetry `text`
// (null: none named) at `height` lines. An RGB format's colorimetry says
// nothing about a YUV matrix and is not read.
Label LabelOf(const std::string& format, const char* colorimetry, int height);

// What a conversion uses, or why there is none.
struct Verdict {
    int32_t src_matrix = 0, dst_matrix = 0;
    bool full_range = false;
    std::string refusal;  // empty when caps and properties agree
};

// The rule. Between RGB and YUV, the matrix and range are the properties',
// else the YUV caps', else BT.601 up to 576 lines and BT.709 above, and
// studio range; properties and caps that name different ones are refused.
// From YUV to YUV the source is as its caps say (or the default); the
// destination's matrix is the property's, else its caps', else the
// source's, a change of matrix when it differs; the range never changes.
// `pair` is the library's pair behind the two formats.
Verdict Resolve(const client::Pair& pair, const Label& in, const Label& out, MatrixSetting matrix, RangeSetting range);

// The colorimetry a YUV output made with a request matrix and range carries.
std::string ColorimetryString(int32_t matrix, bool full_range);

}  // namespace zenk::gst
