// The pixel formats and format pairs that zenk-convert knows, independent of
// which of them the loaded library exports: the library is found and asked
// at run time, so one binary serves every build of it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace zenk::tool {

enum class Format {
    UYVY16I, YUYV16I, UVYY16I, Y8PUV8I, V8U8Y8A8I, BGR32I, BGR24I, A8P, A8C,
    BGR24IA8P, UYVY16IA8P, YUYV16IA8P, UVYY16IA8P, Y8PUV8IA8P,
};

// How a format's colour part is laid out; an IA8P format adds one alpha plane.
enum class Layout { Packed422, Planar422, Packed444Alpha, Bgr32, Bgr24, AlphaPlane, Constant };

struct FormatInfo {
    Format format;
    std::string_view token;
    Layout layout;
    int colour_bytes_per_pixel;  // bytes per pixel of the colour block (Y8PUV8I: luma + chroma)
    bool alpha_plane;            // IA8P: a separate A8P plane follows the colour block
    std::string_view raw_name;   // the usual name of the colour block's raw layout, or empty
};

const std::vector<FormatInfo>& AllFormats();
const FormatInfo& Info(Format f);
// A format token, or the raw name that tools such as ffmpeg give the same
// layout (uyvy422, yuyv422, nv16, vuya, bgra, bgr24, gray); case-insensitive.
std::optional<Format> ParseFormat(std::string_view token);
std::string FormatTokenList();  // "UYVY16I, YUYV16I, ..."

// The raw format a file name's extension names (.uyvy, .yuyv, .nv16, .bgra,
// .bgr24; any case), for commands without --from or --to.
std::optional<Format> FormatFromExtension(std::string_view path);
std::string ExtensionList();  // ".uyvy, .yuyv, ..., .png"

bool IsYuv(Format f);            // any of the 4:2:2 or 4:4:4 YUV layouts, with or without alpha plane
bool NeedsEvenWidth(Format f);   // pixel pairs share chroma
bool HasAlpha(Format f);         // carries per-pixel alpha (BGR32I's fourth byte, an alpha plane, A8P)

// Geometry of one frame as zenk-convert stores it: tight lines, the colour
// block first (for Y8PUV8I the luma plane then the chroma plane, as the
// library finds it), then the alpha plane of an IA8P format.
struct FrameLayout {
    int64_t colour_stride = 0;  // bytes per colour line
    int64_t colour_bytes = 0;   // whole colour block
    int64_t alpha_stride = 0;
    int64_t alpha_bytes = 0;
    int64_t total() const { return colour_bytes + alpha_bytes; }
};
FrameLayout LayoutOf(Format f, int64_t width, int64_t height);

// One format pair offered by the library, and what its export reads.
struct Pair {
    Format src;
    Format dst;
    std::vector<int> vertical_modes;  // {0} for frame-only pairs; table pairs add their line-pair modes
};

const std::vector<Pair>& AllPairs();
const Pair* FindPair(Format src, Format dst);
std::string ExportName(Format src, Format dst);  // ZENK_SSE2_<SRC>_<DST>_EX

// Whether the pair's result depends on the constant alpha (--alpha), and on
// the colour options (matrix, range, luma clamp).
bool UsesConstantAlpha(const Pair& pair);
bool UsesColourOptions(const Pair& pair);

// The request options that change a pair's result, for --list.
std::string PairOptions(const Pair& pair);

}  // namespace zenk::tool
