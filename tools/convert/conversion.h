// Turning a format pair, the command's options and two frames into requests
// for the library, whole or in horizontal slices on several threads.
#pragma once

#include <cstdint>
#include <string>

#include "formats.h"
#include "picture.h"
#include "zenk_transcoder.h"

namespace zenk::tool {

struct RequestOptions {
    int32_t src_matrix = 0;  // 1 = BT.601, 0 = BT.709
    int32_t dst_matrix = 0;
    bool full_range = false;
    bool clamp_luma = false;
    // Constant alpha. Some BGR32I outputs read the low 16 bits for even
    // pixels and the high 16 bits for odd ones, so an 8-bit alpha is given
    // to the library in both halves; opaque by default.
    uint32_t alpha_value = 0x00FF00FFu;
    bool streaming = false;
    int32_t vertical_mode = 0;  // 0 = frame; line-pair modes: 1, 2 = reduce by 2, by 4; 3 = double
    int32_t scan_mode = 0;
    bool field_pair = false;
};

// The alpha word for an 8-bit constant alpha.
constexpr uint32_t AlphaWord(uint8_t alpha) { return alpha | (uint32_t{alpha} << 16); }

struct Size {
    int32_t width = 0, height = 0;
    bool operator==(const Size&) const = default;
};

// The destination size of a pair at a source size: the source size in frame
// mode; in the line-pair modes the reduced or doubled size (RGB to YUV
// reduces or doubles both ways, YUV to RGB reduces only vertically). Throws ToolError when the options do
// not suit the pair or the size.
Size DestinationSize(const Pair& pair, const RequestOptions& options, Size source);

// Why this conversion runs as one call, or empty when it can be sliced.
std::string SliceObstacle(const Pair& pair, const RequestOptions& options);

// The request that converts lines [first, first + count) of `src` into `dst`
// (the whole picture in the line-pair modes).
ZenkConversionRequest MakeRequest(const Pair& pair, const RequestOptions& options, const Frame& src, Frame& dst,
                                  int32_t first, int32_t count);

// Converts `src` into `dst` with up to `threads` slices.
void Convert(ZenkConvertFunction function, const Pair& pair, const RequestOptions& options, const Frame& src,
             Frame& dst, int threads);

}  // namespace zenk::tool
