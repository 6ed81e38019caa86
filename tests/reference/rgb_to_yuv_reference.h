// Scalar reference of the RGB-to-YUV encoders: which pixels each kernel
// reads for a pair, the pair arithmetic, the output layouts and clamps, and
// how the running pointers and line starts move.
#pragma once

#include <cstdint>

#include "zenk_transcoder.h"

namespace zenk::test {

enum class EncodeSource { kBgr32, kBgr24 };
enum class EncodeLayout { kUyvy, kYuyv, kUvyy, kY8Uv };

struct EncodeKernel {
    EncodeSource source;
    EncodeLayout layout;
    bool alpha_plane;    // BGR32 fourth bytes copied to dst_alpha_plane
    int vertical_mode;   // 0 frame, 1 halve, 2 quarter, 3 double
    bool aligned;        // frame mode: whole 8-pixel groups only, no single pairs
};

// What the kernel `k` does to the request's pictures.
void ReferenceEncode(const ZenkConversionRequest& r, const EncodeKernel& k, int32_t host_option);

}  // namespace zenk::test
