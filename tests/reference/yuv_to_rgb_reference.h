// Scalar reference of the YUV-to-RGB conversions: the decoding of one pixel,
// which pixels of a line a kernel converts, and how far its pointers move.
#pragma once

#include <cstdint>

#include "zenk_transcoder.h"

namespace zenk::test {

enum class YuvLayout { kUyvy, kYuyv, kUvyy, kPlanar };

// The fourth byte of a BGR32 pixel; kNone for BGR24 (three bytes a pixel).
enum class FourthByte { kWordAlpha, kDwordAlpha, kAlphaPlane, kNone };

struct YuvDecoding {
    YuvLayout layout;
    FourthByte fourth;
};

// Frame kernels: src_height lines walked with the skips. An aligned kernel
// converts whole blocks of `aligned_block` pixels; the others (0) every pixel
// but a last odd one.
void ReferenceYuvToRgb(const ZenkConversionRequest& r, YuvDecoding d, int aligned_block, int32_t host_answer);

// Pair-mode kernels (vertical_mode 1 or 2): destination line n at
// dst_plane + n * (the bytes of a line's converted pixels + dst_skip), made
// from the n-th line of the reduced, field by field, source.
void ReferenceYuvToRgbPairModes(const ZenkConversionRequest& r, YuvDecoding d, int32_t host_answer);

}  // namespace zenk::test
