// RGB-to-YUV coefficient block: the 16-byte weight, offset and clamp vectors
// with which the encoding kernels turn 8-bit B, G, R into Y, Cb and Cr.
#pragma once

#include "kernel/vector_128.h"

#include <cstdint>

namespace zenk::rgb_to_yuv {

// Laid out by a kernel on its own stack; the selector fields and the target
// addresses are filled by the kernel, the vectors by the setup. Every target
// must be 16-byte aligned.
struct RgbToYuvCoefficients {
    uint32_t matrix;            // 1: BT.601, any other value: BT.709 (from dst_matrix)
    uint32_t range;             // carried from dst_range; the setup does not read it
    uint32_t bitDepth;          // bits per sample; only 8 selects a weight set
    uint8_t pointSampledChroma; // 1: two chroma vectors (Cb of the even pixel, Cr of the odd)
    uint8_t clampLuma;          // nonzero: luma limits 16..235
    uint8_t fullRange;          // nonzero: no luma offset, full-range weight sets
    Vector128* lumaOffset;
    Vector128* lumaWeightsA;
    Vector128* lumaWeightsB;
    Vector128* chromaWeightsA;
    Vector128* chromaWeightsB;
    Vector128* chromaWeightsC;    // per-pixel chroma layout only
    Vector128* chromaWeightsD;    // per-pixel chroma layout only
    Vector128* lumaMin;
    Vector128* lumaMax;
};

// Fills the target vectors from the selectors. With fullRange set it asks
// host option 128 whether the full-swing chroma set applies. With a bitDepth
// other than 8 no weight set is chosen: only the clamp vectors are written.
void SetupRgbToYuvCoefficients(RgbToYuvCoefficients* block);

}  // namespace zenk::rgb_to_yuv
