// Turning a format pair, a host's options and two pictures into requests
// for the library, for the whole picture or for bands of lines converted on
// several threads.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "formats.h"
#include "zenk_transcoder.h"

namespace zenk::client {

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

// One picture's planes as the library addresses them: the colour block (for
// Y8PUV8I the luma plane, its chroma plane `stride` times `height` bytes
// after it) and an IA8P format's alpha plane. Lines may be padded: the
// requests skip what lies beyond a line's pixels.
struct Picture {
    Format format = Format::BGR32I;
    int32_t width = 0, height = 0;
    uint8_t* colour = nullptr;  // null for the constant A8C
    int32_t stride = 0;
    uint8_t* alpha = nullptr;
    int32_t alpha_stride = 0;
};

// The destination size of a pair at a source size: the source size in frame
// mode; in the line-pair modes the reduced or doubled size (RGB to YUV
// reduces or doubles both ways, YUV to RGB reduces only vertically). Throws
// Error when the options do not suit the pair or the size.
Size DestinationSize(const Pair& pair, const RequestOptions& options, Size source);

// Why this conversion runs as one call, or empty when it can be cut into bands.
std::string SliceObstacle(const Pair& pair, const RequestOptions& options);

// The request that converts lines [first, first + count) of `src` into `dst`
// (the whole picture in the line-pair modes).
ZenkConversionRequest MakeRequest(const Pair& pair, const RequestOptions& options, const Picture& src,
                                  const Picture& dst, int32_t first, int32_t count);

// Bands of lines [first, first + count) for up to `threads` threads. Every
// band starts on a line where each plane keeps the whole picture's 16-byte
// residue: the library picks its kernel from the plane addresses, so each
// band runs the kernel the whole picture would and the bytes equal those of
// one call. A conversion with a SliceObstacle is one band.
struct Band {
    int32_t first, count;
};
std::vector<Band> Bands(const Pair& pair, const RequestOptions& options, const Picture& src, const Picture& dst,
                        int threads);

}  // namespace zenk::client
