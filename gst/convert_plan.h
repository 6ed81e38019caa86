// What zenkconvert knows apart from GStreamer's object system: which
// GStreamer formats stand for which library formats, which pairs the element
// offers, the colour matrix a caps structure implies, and how one frame (or
// one band of it) becomes a conversion request.
#pragma once

#include <gst/video/video.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "formats.h"
#include "zenk_transcoder.h"

namespace zenk::gst {

// The GStreamer formats the element reads or writes, in its preference order.
const std::vector<GstVideoFormat>& ElementFormats();

// The library format behind a GStreamer format. GRAY8 is an alpha plane
// (a key signal), not a grey picture; BGRx is BGR32I whose fourth byte is
// not alpha.
std::optional<tool::Format> LibraryFormat(GstVideoFormat format);

// Whether the element converts `in` to `out`: the library has the pair and
// the result means what the output format says (a BGRx source has no alpha
// to give a BGRA or GRAY8 output).
bool Converts(GstVideoFormat in, GstVideoFormat out);

// 4:2:2 formats: pixel pairs share chroma, so a picture has an even width.
bool NeedsEvenWidth(GstVideoFormat format);
bool IsYuv(GstVideoFormat format);

// Caps' colour matrix as the request spells it (1 = BT.601, 0 = BT.709),
// or nothing when the caps name no matrix the library has.
std::optional<int32_t> RequestMatrix(GstVideoColorMatrix matrix);
// What a YUV picture without a usable matrix in its caps is taken to be:
// BT.709 above standard definition, BT.601 up to 576 lines.
int32_t DefaultMatrix(int height);
// The colorimetry string a YUV output carries for a request matrix and range.
std::string ColorimetryString(int32_t matrix, bool full_range);

// The request settings that do not come from the frames.
struct RequestSettings {
    int32_t src_matrix = 0;
    int32_t dst_matrix = 0;
    bool full_range = false;
    bool clamp_luma = false;
    bool streaming_stores = false;
    uint8_t alpha = 255;
};

// One plane as the library addresses it: a 4:2:2 planar picture is one
// block whose chroma plane follows the luma plane at stride times height.
struct Picture {
    uint8_t* data = nullptr;
    int32_t stride = 0;
    int32_t width = 0;
    int32_t height = 0;
};

// The frame's picture, or nothing when its planes are not laid out as the
// library reads them (an NV16 chroma plane elsewhere than right after luma).
std::optional<Picture> PictureOf(const GstVideoFrame& frame);

// The request that converts lines [first, first + count) of `in` into `out`.
ZenkConversionRequest MakeRequest(tool::Format in_format, const Picture& in, tool::Format out_format,
                                  const Picture& out, const RequestSettings& settings, int32_t first, int32_t count);

// Bands of lines [first, first + count) for up to `threads` threads. Every
// band starts on a line where each plane keeps the whole picture's 16-byte
// residue, so each band runs the kernel the whole picture would and the
// bytes equal those of one call. A 4:2:2 planar source finds its chroma
// plane from the line count, so it always converts in one band.
struct Band {
    int32_t first, count;
};
std::vector<Band> Bands(tool::Format in_format, const Picture& in, const Picture& out, int threads);

}  // namespace zenk::gst
