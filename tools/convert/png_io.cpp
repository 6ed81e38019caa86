#include "png_io.h"

#include <png.h>

#include <cerrno>
#include <csetjmp>
#include <cstring>
#include <vector>

#include "errors.h"

namespace zenk::tool {

struct PngReadState {
    std::FILE* file = nullptr;
    bool owned = false;
    png_structp png = nullptr;
    png_infop info = nullptr;
    char why[256] = "";

    ~PngReadState() {
        if (png) png_destroy_read_struct(&png, info ? &info : nullptr, nullptr);
        if (file && owned) std::fclose(file);
    }
};

namespace {

extern "C" void OnPngError(png_structp png, png_const_charp message) {
    auto* state = static_cast<PngReadState*>(png_get_error_ptr(png));
    std::snprintf(state->why, sizeof state->why, "%s", message);
    png_longjmp(png, 1);
}

// Warnings (an sRGB profile libpng finds suspect, say) do not change the
// pixels: the tool reads code values, not colours.
extern "C" void OnPngWarning(png_structp, png_const_charp) {}

// libpng reports an error by a long jump back into the function that set it
// up, so the two functions below hold nothing with a destructor.
bool ReadHeader(PngReadState& s) {
    if (setjmp(png_jmpbuf(s.png))) return false;
    png_init_io(s.png, s.file);
    png_set_sig_bytes(s.png, 8);  // read and checked before
    png_read_info(s.png, s.info);
    return true;
}

bool ReadPixels(PngReadState& s, png_bytep* rows, size_t row_bytes) {
    if (setjmp(png_jmpbuf(s.png))) return false;
    const int type = png_get_color_type(s.png, s.info);
    png_set_expand(s.png);    // palette to RGB, 1/2/4-bit grey to 8 bits, tRNS to alpha
    png_set_strip_16(s.png);  // a 16-bit sample's high byte, the usual reduction to 8 bits
    png_set_gray_to_rgb(s.png);
    png_set_bgr(s.png);
    if (!(type & PNG_COLOR_MASK_ALPHA) && !png_get_valid(s.png, s.info, PNG_INFO_tRNS))
        png_set_filler(s.png, 0xFF, PNG_FILLER_AFTER);
    png_set_interlace_handling(s.png);
    png_read_update_info(s.png, s.info);
    if (png_get_rowbytes(s.png, s.info) != row_bytes) {
        std::snprintf(s.why, sizeof s.why, "unexpected sample layout");
        return false;
    }
    png_read_image(s.png, rows);
    png_read_end(s.png, nullptr);
    return true;
}

}  // namespace

bool IsPngPath(const std::string& path) {
    if (path.size() < 4) return false;
    std::string ext = path.substr(path.size() - 4);
    for (char& c : ext) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return ext == ".png";
}

PngReader::PngReader(const std::string& path)
    : state_(std::make_unique<PngReadState>()), name_(path == "-" ? "standard input" : path) {
    PngReadState& s = *state_;
    if (path == "-") {
        s.file = stdin;
    } else {
        s.file = std::fopen(path.c_str(), "rb");
        if (!s.file) throw Error(kExitInput, "cannot read " + path + ": " + std::strerror(errno));
        s.owned = true;
    }
    // Without the signature it is no PNG at all. Standard input is taken for
    // a PNG only because the command gave no --from: say what raw frames need.
    png_byte signature[8] = {};
    const size_t got = std::fread(signature, 1, sizeof signature, s.file);
    if (got != sizeof signature || png_sig_cmp(signature, 0, sizeof signature) != 0) {
        if (path == "-")
            throw Error(kExitUsage, "standard input is not a PNG; for raw frames give --from FORMAT and -s WIDTHxHEIGHT");
        throw Error(kExitInput, name_ + ": not a PNG (it does not start with the PNG signature)");
    }
    s.png = png_create_read_struct(PNG_LIBPNG_VER_STRING, &s, OnPngError, OnPngWarning);
    if (s.png) s.info = png_create_info_struct(s.png);
    if (!s.png || !s.info) throw std::bad_alloc();
    if (!ReadHeader(s))
        throw Error(kExitInput, name_ + ": corrupt PNG (" + (s.why[0] ? s.why : "unreadable") + ")");
    const png_uint_32 width = png_get_image_width(s.png, s.info), height = png_get_image_height(s.png, s.info);
    if (width == 0 || height == 0 || width > kMaxSide || height > kMaxSide)
        throw Error(kExitInput, name_ + ": a PNG of " + std::to_string(width) + "x" + std::to_string(height) +
                                        " is beyond the " + std::to_string(kMaxSide) +
                                        " pixels a side that zenk-convert accepts");
    size_ = {static_cast<int32_t>(width), static_cast<int32_t>(height)};
}

PngReader::~PngReader() = default;

Frame PngReader::Read(Format format) {
    // Always read with alpha: a BGR24I reading keeps the colours as they are
    // stored and drops only the alpha.
    Frame frame(Format::BGR32I, size_.width, size_.height);
    std::vector<png_bytep> rows(static_cast<size_t>(size_.height));
    for (int32_t y = 0; y < size_.height; ++y) rows[static_cast<size_t>(y)] = frame.colour() + y * frame.layout().colour_stride;
    if (!ReadPixels(*state_, rows.data(), static_cast<size_t>(frame.layout().colour_stride)))
        throw Error(kExitInput, name_ + ": corrupt PNG (" + state_->why + ")");
    if (format == Format::BGR32I) return frame;
    Frame bgr(Format::BGR24I, frame.width(), frame.height());
    const int64_t pixels = int64_t{frame.width()} * frame.height();
    for (int64_t p = 0; p < pixels; ++p) std::memcpy(bgr.colour() + 3 * p, frame.colour() + 4 * p, 3);
    return bgr;
}

Frame ReadPng(const std::string& path, Format format) { return PngReader(path).Read(format); }

void WritePng(const Frame& frame, std::FILE* file, const std::string& shown_path) {
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    image.width = static_cast<png_uint_32>(frame.width());
    image.height = static_cast<png_uint_32>(frame.height());
    switch (frame.format()) {
        case Format::BGR32I: image.format = PNG_FORMAT_BGRA; break;
        case Format::BGR24I: image.format = PNG_FORMAT_BGR; break;
        case Format::A8P: image.format = PNG_FORMAT_GRAY; break;
        default: throw Error(kExitUsage, "a PNG is written from BGR32I, BGR24I or A8P");
    }
    const bool written = png_image_write_to_stdio(&image, file, 0, frame.colour(),
                                                  static_cast<png_int_32>(frame.layout().colour_stride), nullptr);
    const std::string why = image.message[0] ? image.message : "write failed";
    png_image_free(&image);
    if (!written) throw Error(kExitOutput, "cannot write " + shown_path + ": " + why);
}

}  // namespace zenk::tool
