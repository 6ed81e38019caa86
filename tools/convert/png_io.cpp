#include "png_io.h"

#include <png.h>

#include <cstring>

#include "errors.h"

namespace zenk::tool {

namespace {

// A png_image that is always freed, whatever throws.
struct PngImage {
    png_image image{};
    PngImage() {
        image.version = PNG_IMAGE_VERSION;
    }
    ~PngImage() { png_image_free(&image); }
};

std::string Why(const png_image& image) {
    return image.message[0] ? image.message : "not a readable PNG";
}

void BeginRead(PngImage& png, const std::string& path) {
    std::FILE* probe = std::fopen(path.c_str(), "rb");
    if (!probe) throw ToolError(kExitInput, "cannot read " + path + ": " + std::strerror(errno));
    std::fclose(probe);
    if (!png_image_begin_read_from_file(&png.image, path.c_str()))
        throw ToolError(kExitInput, path + ": corrupt or unsupported PNG (" + Why(png.image) + ")");
    if (png.image.width == 0 || png.image.height == 0 || png.image.width > kMaxSide || png.image.height > kMaxSide)
        throw ToolError(kExitInput, path + ": a PNG of " + std::to_string(png.image.width) + "x" +
                                        std::to_string(png.image.height) + " is beyond the " +
                                        std::to_string(kMaxSide) + " pixels a side that zenk-convert accepts");
}

}  // namespace

bool IsPngPath(const std::string& path) {
    if (path.size() < 4) return false;
    std::string ext = path.substr(path.size() - 4);
    for (char& c : ext) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return ext == ".png";
}

Size ReadPngSize(const std::string& path) {
    PngImage png;
    BeginRead(png, path);
    return {static_cast<int32_t>(png.image.width), static_cast<int32_t>(png.image.height)};
}

Frame ReadPng(const std::string& path, Format format) {
    PngImage png;
    BeginRead(png, path);
    // Always read with alpha: asked for BGR without it, libpng would blend
    // the colours onto a background, and a BGR24I reading keeps the colours
    // as they are stored, dropping only the alpha.
    Frame frame(Format::BGR32I, static_cast<int32_t>(png.image.width), static_cast<int32_t>(png.image.height));
    png.image.format = PNG_FORMAT_BGRA;
    if (!png_image_finish_read(&png.image, nullptr, frame.colour(),
                               static_cast<png_int_32>(frame.layout().colour_stride), nullptr))
        throw ToolError(kExitInput, path + ": corrupt PNG (" + Why(png.image) + ")");
    if (format == Format::BGR32I) return frame;
    Frame bgr(Format::BGR24I, frame.width(), frame.height());
    const int64_t pixels = int64_t{frame.width()} * frame.height();
    for (int64_t p = 0; p < pixels; ++p) std::memcpy(bgr.colour() + 3 * p, frame.colour() + 4 * p, 3);
    return bgr;
}

void WritePng(const Frame& frame, std::FILE* file, const std::string& shown_path) {
    PngImage png;
    png.image.width = static_cast<png_uint_32>(frame.width());
    png.image.height = static_cast<png_uint_32>(frame.height());
    switch (frame.format()) {
        case Format::BGR32I: png.image.format = PNG_FORMAT_BGRA; break;
        case Format::BGR24I: png.image.format = PNG_FORMAT_BGR; break;
        case Format::A8P: png.image.format = PNG_FORMAT_GRAY; break;
        default: throw ToolError(kExitUsage, "a PNG is written from BGR32I, BGR24I or A8P");
    }
    if (!png_image_write_to_stdio(&png.image, file, 0, frame.colour(),
                                  static_cast<png_int_32>(frame.layout().colour_stride), nullptr))
        throw ToolError(kExitOutput, "cannot write " + shown_path + ": " + Why(png.image));
}

}  // namespace zenk::tool
