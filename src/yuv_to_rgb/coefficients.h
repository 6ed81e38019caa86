// The decoding coefficients shared by every YUV-to-RGB kernel: a small block
// that a kernel keeps on its stack, with selectors it copies from the request
// and pointers to its own 16-byte vectors, which the setup routine fills.
#pragma once

#include "kernel/vector_128.h"

#include <cstdint>

namespace zenk::yuv_to_rgb {

// Fixed point: luma gain with 14 fractional bits (16384 = 1.0), chroma
// coefficients with 13 (8192 = 1.0). The kernels double every chroma
// difference, so luma and chroma terms meet at 14 fractional bits.
struct YuvToRgbCoefficients {
    uint32_t matrix;        // 1: BT.601; any other value: BT.709
    uint32_t range;         // carried along; the setup does not read it
    uint32_t bitDepth;      // always 8
    uint8_t orderFlag;      // always 1; both settings give the same vectors
    uint8_t clampLuma;      // nonzero: source luma clamped to 16..235, else 0..255
    uint8_t fullRangeLuma;  // nonzero: luma taken as it stands, host option picks the chroma set
    Vector128* lumaOffset;    // 8 words subtracted from the clamped luma
    Vector128* lumaGain;      // 4 pairs (gain, 0)
    Vector128* blueCoef;      // 4 pairs (Cb->B, Cr->B)
    Vector128* redCoef;       // 4 pairs (Cb->R, Cr->R)
    Vector128* greenCoef;     // 4 pairs (Cb->G, Cr->G)
    Vector128* unused0;       // not written by the setup
    Vector128* unused1;
    Vector128* clampLow;      // 8 words
    Vector128* clampHigh;     // 8 words
};

// Fills the seven vectors of `block` from its selectors. On the full-range
// branch it asks the host option (128) once: nonzero picks the full-swing
// chroma set, zero keeps the studio set.
void SetupYuvToRgbCoefficients(YuvToRgbCoefficients* block);

// One chroma set: signed words at 13 fractional bits.
struct ChromaSet {
    int16_t cb_to_b, cr_to_b;
    int16_t cb_to_r, cr_to_r;
    int16_t cb_to_g, cr_to_g;
};

// Studio sets: BT.601 and BT.709 coefficients for 16..240 chroma giving
// 0..255 RGB (the full-range coefficient times 255/224). Full-swing sets: the
// full-range coefficients (BT.601: 1.772, 1.402, 0.344136, 0.714136; BT.709:
// 1.8556, 1.5748, 0.187324, 0.468124) times 255/256, i.e. the studio
// coefficient times 224/256. The integers are the values hosts depend on;
// they are used as they stand, not re-derived.
inline constexpr ChromaSet kBt601Studio = {16525, 0, 0, 13075, -3209, -6660};
inline constexpr ChromaSet kBt709Studio = {17305, 0, 0, 14686, -1747, -4366};
inline constexpr ChromaSet kBt601FullSwing = {14460, 0, 0, 11440, -2808, -5827};
inline constexpr ChromaSet kBt709FullSwing = {15142, 0, 0, 12850, -1529, -3820};

// The studio expansion 255/219 (1.16438) would be 19077 at 14 fractional
// bits; hosts depend on 19073 (1.16412). Full range keeps luma as it is.
inline constexpr int16_t kStudioLumaGain = 19073;
inline constexpr int16_t kFullRangeLumaGain = 16384;
inline constexpr int16_t kStudioLumaOffset = 16;

}  // namespace zenk::yuv_to_rgb
