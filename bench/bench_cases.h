// The conversions the suite times: for each, the export, the bytes it reads
// and writes, and the peers that do the same work.
#pragma once

#include <cstdint>
#include <vector>

#include "zenk_transcoder.h"

namespace zenk_bench {

enum class Format { kUyvy, kYuyv, kUvyy, kY8Uv, kVuya, kBgr32, kBgr24, kA8, kConstant };

// Bytes per pixel of one line of the format's first plane (a Y8PUV8I
// picture has a chroma plane of the same size after its luma plane).
int LineBytesPerPixel(Format format);
// Planes of that size in the picture's block: 2 for Y8PUV8I, else 1.
int PlaneCount(Format format);

struct Picture {
    uint8_t* plane = nullptr;
    int32_t stride = 0;
    uint8_t* alpha = nullptr;  // the A8P plane of an IA8P format
    int32_t alpha_stride = 0;
};

struct Frame {
    Picture src, dst;
    int32_t width = 0, height = 0;
};

using PeerConversion = void (*)(const Frame&);
using Export = void(ZENK_CALL*)(const ZenkConversionRequest*);

struct Case {
    const char* name;    // the export's format pair, and a note where the same export does other work
    const char* family;  // kernel family, for the report
    Format src;
    bool src_alpha;
    Format dst;
    bool dst_alpha;
    Export zenk;
    int32_t src_matrix, dst_matrix;
    PeerConversion libyuv;      // nullptr where libyuv has no equivalent
    const char* libyuv_name;
    int swscale_src, swscale_dst;  // AVPixelFormat values, -1 where swscale has no equivalent
};

const std::vector<Case>& Cases();

// Bytes one frame's conversion reads and writes.
int64_t SourceBytes(const Case& c, int64_t width, int64_t height);
int64_t DestinationBytes(const Case& c, int64_t width, int64_t height);

}  // namespace zenk_bench
