#include "matrix_change.h"

namespace zenk::yuv_to_yuv {
namespace {

using ZENK_ISA::Vec128;

// One coefficient pair: the low word multiplies Cb - 128, the high word
// Cr - 128, so one multiply-add over interleaved (Cb, Cr) words gives a sum.
struct CoefficientPair {
    int16_t cb;
    int16_t cr;
};

// The rows of a change of standard that depend on chroma; 14 fractional
// bits (16384 = 1.0). Luma itself keeps the factor 1.0 and is only
// corrected by luma_correction.
struct MatrixChangeSet {
    CoefficientPair luma_correction;
    CoefficientPair cb;
    CoefficientPair cr;
};

// Derived from the YCbCr matrices with (Kr, Kb) = (0.299, 0.114) for BT.601
// and (0.2126, 0.0722) for BT.709: the target standard's matrix times the
// inverse of the source standard's. The Cb' and Cr' rows are that product's
// chroma rows rounded to 14 bits. The luma row's chroma entries are scaled
// by 219/224 before rounding, because the correction is added to luma code
// values (219 steps from black to white) but computed from chroma code
// values (224 steps across the chroma swing).
constexpr MatrixChangeSet kBt601ToBt709 = {
    {-1893, -3407},  // -0.11819 and -0.21269, times 219/224
    {16689, 1878},   //  1.01864,  0.11462
    {1230, 16799},   //  0.07505,  1.02533
};
constexpr MatrixChangeSet kBt709ToBt601 = {
    {1627, 3141},    //  0.10158 and  0.19608, times 219/224
    {16218, -1813},  //  0.98985, -0.11065
    {-1187, 16112},  // -0.07245,  0.98340
};

// Luma bounds: studio swing when clamping, else the whole byte.
constexpr int16_t kStudioLumaLow = 16, kStudioLumaHigh = 235;
constexpr int16_t kByteLow = 0, kByteHigh = 255;

constexpr uint32_t kBt601 = 1, kBt709 = 0;

Vector128 Repeat(CoefficientPair p) {
    return Vec128::Set32(static_cast<uint16_t>(p.cb) | static_cast<uint32_t>(static_cast<uint16_t>(p.cr)) << 16);
}

}  // namespace

void SetupYuvMatrixChangeCoefficients(YuvMatrixChangeCoefficients* block) {
    if (block->bitDepth == 8) {
        // Only the exact pair (BT.601, BT.709) goes that way; every other
        // pair, including selectors other than 0 and 1, goes to BT.601.
        const MatrixChangeSet& set =
            (block->srcMatrix == kBt601 && block->dstMatrix == kBt709) ? kBt601ToBt709 : kBt709ToBt601;
        Vec128::Store(block->lumaCorrection, Repeat(set.luma_correction));
        Vec128::Store(block->cbCoefficients, Repeat(set.cb));
        Vec128::Store(block->crCoefficients, Repeat(set.cr));
    }
    const bool studio = block->clampLuma != 0;
    Vec128::Store(block->clampLow, Vec128::Set16(studio ? kStudioLumaLow : kByteLow));
    Vec128::Store(block->clampHigh, Vec128::Set16(studio ? kStudioLumaHigh : kByteHigh));
}

}  // namespace zenk::yuv_to_yuv
