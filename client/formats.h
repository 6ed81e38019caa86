// The pixel formats and format pairs of the library as its hosts see them,
// independent of which of them the loaded library exports: the library is
// found and asked at run time, so one binary serves every build of it.
// Besides the library's own tokens, formats go by the names ffmpeg and
// GStreamer give the same layouts, so that zenk-convert and zenkconvert
// accept the names their users already type.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace zenk::client {

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
    std::string_view raw_name;   // ffmpeg's name of the colour block's raw layout, or empty
};

const std::vector<FormatInfo>& AllFormats();
const FormatInfo& Info(Format f);
std::string Token(Format f);
// The colour part of a format: an IA8P format without its alpha plane.
Format ColourPart(Format f);

// A format as a command line or caps name it. GStreamer's BGRx is BGR32I
// whose fourth byte holds no alpha.
struct NamedFormat {
    Format format;
    bool alpha_unused = false;
};

// Names by family: the library's tokens, ffmpeg's pixel formats (a raw name
// is the colour block's, so it names the format without an alpha plane),
// GStreamer's video formats. GRAY8 and gray are an alpha plane: a key
// signal, not a grey picture.
enum class NameFamily { Token, Ffmpeg, GStreamer };
struct FormatName {
    std::string_view name;
    NamedFormat format;
    NameFamily family;
};
const std::vector<FormatName>& AllFormatNames();
// GStreamer's names, in zenkconvert's order of preference.
std::vector<FormatName> GStreamerNames();

// Any name of any family, in any case.
std::optional<NamedFormat> ParseFormat(std::string_view name);
// Every accepted name, by family: "UYVY16I, ...; ffmpeg: uyvy422, ...;
// GStreamer: UYVY, ...".
std::string FormatNameList();

// The raw format a file name's extension names (.uyvy, .yuyv, .nv16, .bgra,
// .bgr24; any case), for commands without --from or --to.
std::optional<Format> FormatFromExtension(std::string_view path);
std::string ExtensionList();  // ".uyvy, .yuyv, ..., .png"

bool IsYuv(Format f);            // any of the 4:2:2 or 4:4:4 YUV layouts, with or without alpha plane
bool NeedsEvenWidth(Format f);   // pixel pairs share chroma
bool HasAlpha(Format f);         // carries per-pixel alpha (BGR32I's fourth byte, an alpha plane, A8P)

// Geometry of one frame in tight lines: the colour block first (for Y8PUV8I
// the luma plane then the chroma plane, as the library finds it), then the
// alpha plane of an IA8P format.
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

// What a YUV to YUV pair does when the two matrices differ. The library's
// exports into UVYY16I and Y8PUV8I, and from UVYY16I, run one shared kernel
// that writes UYVY16I byte order (packed bytes where Y8PUV8I's planes would
// be); UYVY16I to V8U8Y8A8I never changes the matrix.
enum class MatrixChange { NotYuvToYuv, Converts, WritesUyvyOrder, Never };
MatrixChange MatrixChangeOf(const Pair& pair);

// UYVY16I <-> UVYY16I without a change of matrix reorders only when the
// picture passes the library's alignment test, and otherwise copies the
// bytes as they are.
bool ReordersOnlyWhenAligned(const Pair& pair);

// What a pair's result depends on besides the source picture.
struct PairUse {
    bool matrix = false;    // one matrix, the YUV side's
    bool matrices = false;  // YUV to YUV: a change between the source's and the destination's
    bool range = false;     // full-range luma
    bool clamp = false;     // the luma clamp
    bool alpha = false;     // the constant alpha
    bool source_alpha = false;  // the source's alpha reaches the result
};
PairUse UsesOf(const Pair& pair);

// Whether a source named so converts to `dst` with every byte meaning what
// the names say: the pair exists and, from a BGRx source, takes no alpha.
bool Converts(const NamedFormat& src, Format dst);

}  // namespace zenk::client
