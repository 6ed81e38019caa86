// One frame in memory, laid out as the library reads and writes it: a colour
// block (for Y8PUV8I the luma plane with its chroma plane right after it)
// and, for IA8P formats, an alpha plane. Both start on 64-byte boundaries,
// so that pictures whose pitches allow it take the aligned kernels.
#pragma once

#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>

#include "formats.h"
#include "request.h"
#include "zenk_transcoder.h"

namespace zenk::tool {

using namespace client;

// Largest accepted picture side, and largest frame: the request's pitches
// and plane offsets are 32-bit numbers.
constexpr int64_t kMaxSide = 32768;
constexpr int64_t kMaxFrameBytes = int64_t{1} << 30;

class Frame {
public:
    Frame(Format format, int32_t width, int32_t height);

    Format format() const { return format_; }
    int32_t width() const { return width_; }
    int32_t height() const { return height_; }
    const FrameLayout& layout() const { return layout_; }
    uint8_t* colour() { return colour_.get(); }
    const uint8_t* colour() const { return colour_.get(); }
    uint8_t* alpha() { return alpha_.get(); }
    const uint8_t* alpha() const { return alpha_.get(); }

    // The frame's bytes as a raw file stores them: colour block, then alpha
    // plane. ReadRaw returns the bytes it read, layout().total() for a whole frame.
    int64_t ReadRaw(std::FILE* file);
    bool WriteRaw(std::FILE* file) const;

    // The planes as a request addresses them.
    Picture View() const;

private:
    struct FreeAligned {
        void operator()(uint8_t* p) const { std::free(p); }
    };
    using Block = std::unique_ptr<uint8_t, FreeAligned>;
    static Block Allocate(int64_t bytes);

    Format format_;
    int32_t width_, height_;
    FrameLayout layout_;
    Block colour_, alpha_;
};

// Converts `src` into `dst` with `function`, the pair's export, in up to
// `threads` bands on threads of their own.
void Convert(ZenkConvertFunction function, const Pair& pair, const RequestOptions& options, const Frame& src,
             Frame& dst, int threads);

}  // namespace zenk::tool
