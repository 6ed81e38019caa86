#include "formats.h"

#include <algorithm>
#include <cctype>

namespace zenk::client {

namespace {

const std::vector<FormatInfo> kFormats = {
    {Format::UYVY16I, "UYVY16I", Layout::Packed422, 2, false, "uyvy422"},
    {Format::YUYV16I, "YUYV16I", Layout::Packed422, 2, false, "yuyv422"},
    {Format::UVYY16I, "UVYY16I", Layout::Packed422, 2, false, ""},
    {Format::Y8PUV8I, "Y8PUV8I", Layout::Planar422, 2, false, "nv16"},
    {Format::V8U8Y8A8I, "V8U8Y8A8I", Layout::Packed444Alpha, 4, false, "vuya"},
    {Format::BGR32I, "BGR32I", Layout::Bgr32, 4, false, "bgra"},
    {Format::BGR24I, "BGR24I", Layout::Bgr24, 3, false, "bgr24"},
    {Format::A8P, "A8P", Layout::AlphaPlane, 1, false, "gray"},
    {Format::A8C, "A8C", Layout::Constant, 0, false, ""},
    {Format::BGR24IA8P, "BGR24IA8P", Layout::Bgr24, 3, true, "bgr24"},
    {Format::UYVY16IA8P, "UYVY16IA8P", Layout::Packed422, 2, true, "uyvy422"},
    {Format::YUYV16IA8P, "YUYV16IA8P", Layout::Packed422, 2, true, "yuyv422"},
    {Format::UVYY16IA8P, "UVYY16IA8P", Layout::Packed422, 2, true, ""},
    {Format::Y8PUV8IA8P, "Y8PUV8IA8P", Layout::Planar422, 2, true, "nv16"},
};

using F = Format;

// Every format pair the library's exports cover. The five pairs that own a
// kernel table also convert in the line-pair modes.
const std::vector<Pair> kPairs = [] {
    struct Row {
        F src;
        std::vector<F> dsts;
    };
    const std::vector<Row> rows = {
        {F::UYVY16I, {F::BGR32I, F::BGR24I, F::UYVY16I, F::YUYV16I, F::UVYY16I, F::Y8PUV8I, F::V8U8Y8A8I, F::BGR24IA8P,
                      F::UYVY16IA8P, F::YUYV16IA8P, F::UVYY16IA8P, F::Y8PUV8IA8P}},
        {F::YUYV16I, {F::BGR32I, F::BGR24I, F::YUYV16I, F::UYVY16I, F::BGR24IA8P, F::UYVY16IA8P, F::YUYV16IA8P}},
        {F::UVYY16I, {F::BGR24I, F::UYVY16I, F::BGR24IA8P, F::UYVY16IA8P}},
        {F::Y8PUV8I, {F::BGR32I, F::BGR24I, F::BGR24IA8P}},
        {F::UYVY16IA8P, {F::BGR32I, F::A8P, F::BGR24IA8P, F::UYVY16IA8P, F::YUYV16IA8P}},
        {F::YUYV16IA8P, {F::BGR32I, F::A8P, F::BGR24IA8P, F::UYVY16IA8P, F::YUYV16IA8P}},
        {F::Y8PUV8IA8P, {F::BGR32I}},
        {F::BGR32I, {F::BGR32I, F::BGR24I, F::YUYV16I, F::UYVY16I, F::UVYY16I, F::A8P, F::Y8PUV8I, F::BGR24IA8P,
                     F::YUYV16IA8P, F::UYVY16IA8P, F::UVYY16IA8P, F::Y8PUV8IA8P}},
        {F::BGR24I, {F::BGR24I, F::BGR32I, F::YUYV16I, F::UYVY16I, F::UVYY16I, F::Y8PUV8I, F::BGR24IA8P, F::YUYV16IA8P,
                     F::UYVY16IA8P, F::UVYY16IA8P, F::Y8PUV8IA8P}},
        {F::BGR24IA8P, {F::BGR32I, F::A8P, F::BGR24IA8P, F::YUYV16IA8P, F::UYVY16IA8P, F::UVYY16IA8P, F::Y8PUV8IA8P}},
        {F::A8P, {F::A8P}},
        {F::A8C, {F::A8P}},
    };
    const std::vector<std::pair<F, F>> tables = {{F::Y8PUV8I, F::BGR32I},
                                                 {F::UYVY16I, F::BGR32I},
                                                 {F::BGR32I, F::Y8PUV8I},
                                                 {F::BGR32I, F::UYVY16I},
                                                 {F::BGR32I, F::UVYY16I}};
    std::vector<Pair> pairs;
    for (const Row& row : rows)
        for (F dst : row.dsts) {
            const bool table = std::find(tables.begin(), tables.end(), std::pair{row.src, dst}) != tables.end();
            // Encoding from BGR32I also doubles the picture (mode 3).
            std::vector<int> modes{0};
            if (table) modes = row.src == F::BGR32I ? std::vector<int>{0, 1, 2, 3} : std::vector<int>{0, 1, 2};
            pairs.push_back({row.src, dst, modes});
        }
    return pairs;
}();

}  // namespace

const std::vector<FormatInfo>& AllFormats() { return kFormats; }

const FormatInfo& Info(Format f) { return kFormats[static_cast<size_t>(f)]; }

namespace {

bool SameIgnoringCase(std::string_view a, std::string_view b) {
    return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) {
               return std::tolower(static_cast<unsigned char>(x)) == std::tolower(static_cast<unsigned char>(y));
           });
}

// Extensions of raw files whose layout is one format's alone.
const std::vector<std::pair<std::string_view, Format>> kExtensions = {
    {".uyvy", Format::UYVY16I}, {".yuyv", Format::YUYV16I}, {".nv16", Format::Y8PUV8I},
    {".bgra", Format::BGR32I},  {".bgr24", Format::BGR24I},
};

}  // namespace

namespace {

using N = NameFamily;

// GStreamer's names come in zenkconvert's order of preference: when
// downstream leaves the choice open, the first format the input converts to
// is taken after the input's own.
const std::vector<FormatName> kNames = [] {
    std::vector<FormatName> names;
    for (const FormatInfo& info : kFormats) names.push_back({info.token, {info.format}, N::Token});
    for (const FormatInfo& info : kFormats)
        if (!info.alpha_plane && !info.raw_name.empty()) names.push_back({info.raw_name, {info.format}, N::Ffmpeg});
    const std::vector<FormatName> gstreamer = {
        {"UYVY", {F::UYVY16I}, N::GStreamer}, {"YUY2", {F::YUYV16I}, N::GStreamer},
        {"NV16", {F::Y8PUV8I}, N::GStreamer}, {"VUYA", {F::V8U8Y8A8I}, N::GStreamer},
        {"BGRA", {F::BGR32I}, N::GStreamer},  {"BGRx", {F::BGR32I, true}, N::GStreamer},
        {"BGR", {F::BGR24I}, N::GStreamer},   {"GRAY8", {F::A8P}, N::GStreamer},
    };
    names.insert(names.end(), gstreamer.begin(), gstreamer.end());
    return names;
}();

}  // namespace

const std::vector<FormatName>& AllFormatNames() { return kNames; }

std::vector<FormatName> GStreamerNames() {
    std::vector<FormatName> names;
    for (const FormatName& n : kNames)
        if (n.family == N::GStreamer) names.push_back(n);
    return names;
}

std::optional<NamedFormat> ParseFormat(std::string_view name) {
    for (const FormatName& n : kNames)
        if (SameIgnoringCase(name, n.name)) return n.format;
    return std::nullopt;
}

std::string FormatNameList() {
    std::string s;
    NameFamily family = N::Token;
    for (const FormatName& n : kNames) {
        if (n.family != family) {
            family = n.family;
            s += family == N::Ffmpeg ? "; ffmpeg: " : "; GStreamer: ";
        } else if (!s.empty()) {
            s += ", ";
        }
        s += n.name;
    }
    return s;
}

std::optional<Format> FormatFromExtension(std::string_view path) {
    const size_t dot = path.rfind('.');
    if (dot == std::string_view::npos || path.find('/', dot) != std::string_view::npos) return std::nullopt;
    for (const auto& [extension, format] : kExtensions)
        if (SameIgnoringCase(path.substr(dot), extension)) return format;
    return std::nullopt;
}

std::string ExtensionList() {
    std::string s;
    for (const auto& e : kExtensions) s += std::string(e.first) + ", ";
    return s + ".png";
}

bool IsYuv(Format f) {
    const Layout l = Info(f).layout;
    return l == Layout::Packed422 || l == Layout::Planar422 || l == Layout::Packed444Alpha;
}

// V8U8Y8A8I is 4:4:4 in memory, but a pair's chroma is repeated for both of
// its pixels: its source is always 4:2:2 of the same width.
bool NeedsEvenWidth(Format f) { return IsYuv(f); }

bool HasAlpha(Format f) {
    const FormatInfo& info = Info(f);
    return info.alpha_plane || info.layout == Layout::Bgr32 || info.layout == Layout::AlphaPlane ||
           info.layout == Layout::Constant;
}

FrameLayout LayoutOf(Format f, int64_t width, int64_t height) {
    const FormatInfo& info = Info(f);
    FrameLayout l;
    if (info.layout == Layout::Planar422) {
        l.colour_stride = width;  // one luma byte a pixel; the chroma plane has the same pitch
        l.colour_bytes = 2 * width * height;
    } else {
        l.colour_stride = info.colour_bytes_per_pixel * width;
        l.colour_bytes = l.colour_stride * height;
    }
    if (info.alpha_plane) {
        l.alpha_stride = width;
        l.alpha_bytes = width * height;
    }
    return l;
}

const std::vector<Pair>& AllPairs() { return kPairs; }

const Pair* FindPair(Format src, Format dst) {
    for (const Pair& p : kPairs)
        if (p.src == src && p.dst == dst) return &p;
    return nullptr;
}

std::string ExportName(Format src, Format dst) {
    return "ZENK_SSE2_" + std::string(Info(src).token) + "_" + std::string(Info(dst).token) + "_EX";
}

std::string Token(Format f) { return std::string(Info(f).token); }

Format ColourPart(Format f) {
    switch (f) {
        case F::BGR24IA8P: return F::BGR24I;
        case F::UYVY16IA8P: return F::UYVY16I;
        case F::YUYV16IA8P: return F::YUYV16I;
        case F::UVYY16IA8P: return F::UVYY16I;
        case F::Y8PUV8IA8P: return F::Y8PUV8I;
        default: return f;
    }
}

// An IA8P pair runs the export of its colour parts, then an alpha kernel, so
// its colour behaves as theirs.
MatrixChange MatrixChangeOf(const Pair& pair) {
    if (!IsYuv(pair.src) || !IsYuv(pair.dst)) return MatrixChange::NotYuvToYuv;
    const F src = ColourPart(pair.src), dst = ColourPart(pair.dst);
    if (dst == F::V8U8Y8A8I) return MatrixChange::Never;
    if ((src == F::UYVY16I && (dst == F::UVYY16I || dst == F::Y8PUV8I)) || (src == F::UVYY16I && dst == F::UYVY16I))
        return MatrixChange::WritesUyvyOrder;
    return MatrixChange::Converts;
}

bool ReordersOnlyWhenAligned(const Pair& pair) {
    const F src = ColourPart(pair.src), dst = ColourPart(pair.dst);
    return (src == F::UYVY16I && dst == F::UVYY16I) || (src == F::UVYY16I && dst == F::UYVY16I);
}

PairUse UsesOf(const Pair& pair) {
    PairUse use;
    const bool alpha_only = pair.dst == F::A8P || pair.src == F::A8C;
    const bool src_yuv = IsYuv(pair.src), dst_yuv = IsYuv(pair.dst);
    if (!alpha_only && src_yuv && dst_yuv) {
        // The repacking kernels read neither range flag; the luma clamp
        // belongs to the change of matrix.
        use.matrices = use.clamp = MatrixChangeOf(pair) != MatrixChange::Never;
    } else if (!alpha_only && (src_yuv || dst_yuv)) {
        use.matrix = use.range = use.clamp = true;
    }
    // A BGR32I picture made from one without alpha, a constant fill of a
    // destination alpha plane, the 4:4:4 alpha byte.
    use.alpha = (pair.dst == F::BGR32I && !HasAlpha(pair.src)) || pair.src == F::A8C || pair.dst == F::V8U8Y8A8I ||
                (Info(pair.dst).alpha_plane && !HasAlpha(pair.src));
    use.source_alpha = HasAlpha(pair.src) && HasAlpha(pair.dst) && !use.alpha;
    return use;
}

bool Converts(const NamedFormat& src, Format dst) {
    const Pair* pair = FindPair(src.format, dst);
    return pair && !(src.alpha_unused && UsesOf(*pair).source_alpha);
}

}  // namespace zenk::client
