#include "coefficients.h"

#include "kernel/host_option.h"

namespace zenk::rgb_to_yuv {
namespace {

using ZENK_ISA::Vec128;

// One weight set in 15-bit fixed point (32768 = 1.0).
struct WeightSet {
    int16_t kr, kg, kb;        // luma
    int16_t cb_b, cb_g, cb_r;  // Cb
    int16_t cr_r, cr_g, cr_b;  // Cr
};

// Where the numbers come from:
//  - Luma weights: BT.601 0.299, 0.587, 0.114; BT.709 0.2126, 0.7152, 0.0722.
//    Cb = 0.5 (B - Y) / (1 - Kb), Cr = 0.5 (R - Y) / (1 - Kr).
//  - Studio sets: luma scaled by 219/255 (0..255 becomes 0..219, plus the
//    offset 16), chroma by 224/255 (14392 = 0.5 * 224/255 * 32768, rounded).
//  - Full-swing chroma: 256/255 (16448 = 0.5 * 256/255 * 32768, rounded down).
//  - Full-range luma: the plain weights (sum 32768), except BT.601 with
//    full-swing chroma, whose weights are scaled by 255/256 (sum 32640) so
//    that its white is 254 while BT.709 reaches 255. The asymmetry is how
//    hosts expect the two matrices to encode and is kept as it is.
//  - Every Cb row sums to 0; the studio Cr rows sum to +1 (BT.601) and -1
//    (BT.709), which the rounding absorbs for every 8-bit input.
constexpr WeightSet kBt601Studio{8414, 16519, 3208, 14392, -9535, -4857, 14392, -12051, -2340};
constexpr WeightSet kBt601FullSwingChroma{9759, 19160, 3721, 16448, -10897, -5551, 16448, -13773, -2675};
constexpr WeightSet kBt601StudioChroma{9798, 19235, 3735, 14392, -9535, -4857, 14392, -12051, -2340};
constexpr WeightSet kBt709Studio{5983, 20127, 2032, 14392, -11094, -3298, 14392, -13073, -1320};
constexpr WeightSet kBt709FullSwingChroma{6966, 23436, 2366, 16448, -12679, -3769, 16448, -14940, -1508};
constexpr WeightSet kBt709StudioChroma{6966, 23436, 2366, 14392, -11094, -3298, 14392, -13073, -1320};

// BT.709 then BT.601: studio, full range with full-swing chroma, full range
// with studio chroma.
constexpr const WeightSet* kSets[2][3] = {{&kBt709Studio, &kBt709FullSwingChroma, &kBt709StudioChroma},
                                          {&kBt601Studio, &kBt601FullSwingChroma, &kBt601StudioChroma}};

// A word quad repeated twice, to be multiplied with a pixel pair arranged as
// (B0, G0, R0, B1) and (R0, B1, G1, R1).
void Quad(Vector128* target, int16_t a, int16_t b, int16_t c, int16_t d) {
    const auto word = [](int16_t w) { return static_cast<uint64_t>(static_cast<uint16_t>(w)); };
    *target = Vec128::Set64(word(a) | word(b) << 16 | word(c) << 32 | word(d) << 48);
}

}  // namespace

void SetupRgbToYuvCoefficients(RgbToYuvCoefficients* c) {
    if (c->bitDepth == 8) {
        int column = 0;
        if (c->fullRange == 0) {
            Vec128::Store(c->lumaOffset, Vec128::Set16(16));
        } else {
            Vec128::Store(c->lumaOffset, Vec128::Zero());
            column = QueryHostOption() != 0 ? 1 : 2;
        }
        const WeightSet& w = *kSets[c->matrix == 1 ? 1 : 0][column];
        Quad(c->lumaWeightsA, w.kb, w.kg, 0, w.kb);
        Quad(c->lumaWeightsB, w.kr, 0, w.kg, w.kr);
        if (c->pointSampledChroma) {  // Cb of pixel 0, Cr of pixel 1
            Quad(c->chromaWeightsA, w.cb_b, w.cb_g, 0, w.cr_b);
            Quad(c->chromaWeightsB, w.cb_r, 0, w.cr_g, w.cr_r);
        } else {  // per pixel
            Quad(c->chromaWeightsA, w.cb_b, w.cb_g, 0, w.cb_b);
            Quad(c->chromaWeightsB, w.cb_r, 0, w.cb_g, w.cb_r);
            Quad(c->chromaWeightsC, w.cr_b, w.cr_g, 0, w.cr_b);
            Quad(c->chromaWeightsD, w.cr_r, 0, w.cr_g, w.cr_r);
        }
    }
    // Chroma has no clamp of its own: the kernels only saturate it to 0..255.
    Vec128::Store(c->lumaMin, Vec128::Set16(c->clampLuma ? 16 : 0));
    Vec128::Store(c->lumaMax, Vec128::Set16(c->clampLuma ? 235 : 255));
}

}  // namespace zenk::rgb_to_yuv
