#include "coefficients.h"

#include "kernel/host_option.h"

namespace zenk::yuv_to_rgb {
namespace {

using ZENK_ISA::Vec128;

// Four copies of the word pair (low, high), for a multiply-add of
// interleaved word pairs.
Vector128 Pairs(int16_t low, int16_t high) {
    return Vec128::Set32(static_cast<uint32_t>(static_cast<uint16_t>(low)) |
                         static_cast<uint32_t>(static_cast<uint16_t>(high)) << 16);
}

void WriteChroma(const YuvToRgbCoefficients& block, const ChromaSet& set) {
    *block.blueCoef = Pairs(set.cb_to_b, set.cr_to_b);
    *block.redCoef = Pairs(set.cb_to_r, set.cr_to_r);
    *block.greenCoef = Pairs(set.cb_to_g, set.cr_to_g);
}

}  // namespace

void SetupYuvToRgbCoefficients(YuvToRgbCoefficients* block) {
    if (block->bitDepth == 8) {
        const bool bt601 = block->matrix == 1;
        if (!block->fullRangeLuma) {
            *block->lumaOffset = Vec128::Set16(kStudioLumaOffset);
            *block->lumaGain = Pairs(kStudioLumaGain, 0);
            WriteChroma(*block, bt601 ? kBt601Studio : kBt709Studio);
        } else {
            *block->lumaOffset = Vec128::Zero();
            *block->lumaGain = Pairs(kFullRangeLumaGain, 0);
            // The host decides whether full-range material carries full-swing
            // chroma; it is asked at every full-range conversion.
            const bool full_swing = QueryHostOption() != 0;
            if (bt601)
                WriteChroma(*block, full_swing ? kBt601FullSwing : kBt601Studio);
            else
                WriteChroma(*block, full_swing ? kBt709FullSwing : kBt709Studio);
        }
    } else {
        // No kernel asks for another depth; zero gain and chroma decode every
        // pixel to black rather than to leftover stack contents. The offset
        // stays as the caller left it.
        *block->lumaGain = Vec128::Zero();
        *block->blueCoef = Vec128::Zero();
        *block->redCoef = Vec128::Zero();
        *block->greenCoef = Vec128::Zero();
    }
    if (block->clampLuma) {
        *block->clampLow = Vec128::Set16(16);
        *block->clampHigh = Vec128::Set16(235);
    } else {
        *block->clampLow = Vec128::Zero();
        *block->clampHigh = Vec128::Set16(255);
    }
}

}  // namespace zenk::yuv_to_rgb
