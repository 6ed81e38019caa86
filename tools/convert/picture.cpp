#include "picture.h"

#include <cstdlib>
#include <cstring>
#include <new>
#include <thread>
#include <vector>

namespace zenk::tool {

Frame::Block Frame::Allocate(int64_t bytes) {
    // A whole number of 64-byte units, at least one, so an empty plane still
    // has an address.
    const size_t size = static_cast<size_t>((bytes + 63) / 64 * 64 + 64);
    void* p = std::aligned_alloc(64, size);
    if (!p) throw std::bad_alloc();
    std::memset(p, 0, size);
    return Block(static_cast<uint8_t*>(p));
}

Frame::Frame(Format format, int32_t width, int32_t height)
    : format_(format), width_(width), height_(height), layout_(LayoutOf(format, width, height)) {
    colour_ = Allocate(layout_.colour_bytes);
    if (layout_.alpha_bytes) alpha_ = Allocate(layout_.alpha_bytes);
}

int64_t Frame::ReadRaw(std::FILE* file) {
    const auto colour = static_cast<size_t>(layout_.colour_bytes), alpha = static_cast<size_t>(layout_.alpha_bytes);
    size_t got = std::fread(colour_.get(), 1, colour, file);
    if (got == colour && alpha) got += std::fread(alpha_.get(), 1, alpha, file);
    return static_cast<int64_t>(got);
}

Picture Frame::View() const {
    return {format_,
            width_,
            height_,
            layout_.colour_bytes ? colour_.get() : nullptr,
            static_cast<int32_t>(layout_.colour_stride),
            alpha_.get(),
            static_cast<int32_t>(layout_.alpha_stride)};
}

bool Frame::WriteRaw(std::FILE* file) const {
    const auto colour = static_cast<size_t>(layout_.colour_bytes), alpha = static_cast<size_t>(layout_.alpha_bytes);
    return std::fwrite(colour_.get(), 1, colour, file) == colour &&
           (alpha == 0 || std::fwrite(alpha_.get(), 1, alpha, file) == alpha);
}

void Convert(ZenkConvertFunction function, const Pair& pair, const RequestOptions& options, const Frame& src,
             Frame& dst, int threads) {
    const Picture in = src.View(), out = dst.View();
    const std::vector<Band> bands = Bands(pair, options, in, out, threads);
    std::vector<std::thread> workers;
    workers.reserve(bands.size());
    for (const Band& band : bands) {
        const ZenkConversionRequest r = MakeRequest(pair, options, in, out, band.first, band.count);
        if (bands.size() == 1) {
            function(&r);
        } else {
            workers.emplace_back([function, r] { function(&r); });
        }
    }
    for (std::thread& t : workers) t.join();
}

}  // namespace zenk::tool
