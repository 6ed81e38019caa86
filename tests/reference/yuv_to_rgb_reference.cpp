#include "references.h"

#include <algorithm>

#include "support/test_picture.h"

namespace zenk::test {
namespace {

// The numbers a conversion decodes with, for the request's selectors and
// what the host answers to option 128: the chroma set as (Cb->B, Cr->R,
// Cb->G, Cr->G) at 13 fractional bits.
struct DecodingNumbers {
    int32_t offset, gain;
    const int32_t* set;
    bool clamp;

    DecodingNumbers(const ZenkConversionRequest& r, int32_t host_answer) {
        static const int32_t kSets[4][4] = {
            {16525, 13075, -3209, -6660},  // BT.601 studio
            {17305, 14686, -1747, -4366},  // BT.709 studio
            {14460, 11440, -2808, -5827},  // BT.601 full swing
            {15142, 12850, -1529, -3820},  // BT.709 full swing
        };
        const bool full_swing = r.full_range && host_answer != 0;
        set = kSets[(r.dst_matrix == 1 ? 0 : 1) + (full_swing ? 2 : 0)];
        offset = r.full_range ? 0 : 16;
        gain = r.full_range ? 16384 : 19073;
        clamp = r.clamp_luma != 0;
    }
};

// Floor division by 2^14 of a possibly negative sum.
int64_t Shift14(int64_t v) { return v >= 0 ? v / 16384 : -((-v + 16383) / 16384); }

// B, G, R of one pixel; `odd` is the pixel's position in its pair.
void ReferenceDecodePixel(const DecodingNumbers& n, int y, int cb, int cr, bool odd, uint8_t bgr[3]) {
    int32_t yd = ClampLuma(y, n.clamp) - n.offset;
    if (!odd) yd &= 0xFF;  // even pixels keep the low byte of their Yd only
    const int64_t luma = int64_t{yd} * n.gain + 8192;
    const int64_t c_b = 2 * (cb - 128), c_r = 2 * (cr - 128);
    bgr[0] = SaturateByte(Shift14(c_b * n.set[0] + luma));
    bgr[1] = SaturateByte(Shift14(c_b * n.set[2] + c_r * n.set[3] + luma));
    bgr[2] = SaturateByte(Shift14(c_r * n.set[1] + luma));
}

struct LineSources {
    const uint8_t* pixels;  // packed line or luma line
    const uint8_t* chroma;
    const uint8_t* alpha;
};

uint8_t AlphaWord(uint32_t alpha_value, bool high) {
    const int16_t word = static_cast<int16_t>(high ? alpha_value >> 16 : alpha_value & 0xFFFF);
    return static_cast<uint8_t>(std::clamp<int>(word, 0, 255));
}

void ConvertLine(const ZenkConversionRequest& r, YuvDecoding d, const DecodingNumbers& n, LineSources s,
                 uint8_t* dst, int32_t count) {
    const int bytes = d.fourth == FourthByte::kNone ? 3 : 4;
    for (int32_t x = 0; x < count; ++x) {
        const int32_t pair = x / 2;
        const bool odd = x % 2 != 0;
        const YuvPairValues p = d.layout != YuvLayout::kPlanar ? ReadPair(d.layout, s.pixels + 4 * pair)
                                : YuvPairValues{s.pixels[x], s.pixels[x], s.chroma[2 * pair], s.chroma[2 * pair + 1]};
        const int y = odd ? p.y1 : p.y0, cb = p.cb, cr = p.cr;
        uint8_t* px = dst + bytes * x;
        ReferenceDecodePixel(n, y, cb, cr, odd, px);
        switch (d.fourth) {
            case FourthByte::kWordAlpha: px[3] = AlphaWord(r.alpha_value, false); break;
            case FourthByte::kDwordAlpha: px[3] = AlphaWord(r.alpha_value, odd); break;
            case FourthByte::kAlphaPlane: px[3] = s.alpha[x]; break;
            case FourthByte::kNone: break;
        }
    }
}

int64_t ChromaDistance(const ZenkConversionRequest& r) { return int64_t{r.src_stride} * r.src_height; }

}  // namespace

void ReferenceYuvToRgb(const ZenkConversionRequest& r, YuvDecoding d, int aligned_block, int32_t host_answer) {
    const DecodingNumbers n(r, host_answer);
    const int32_t width = std::max(r.width, 0);
    const int32_t count = aligned_block ? width / aligned_block * aligned_block : width & ~1;
    const bool planar = d.layout == YuvLayout::kPlanar;
    LineSources s{r.src_plane, planar ? Step(r.src_plane, ChromaDistance(r)) : nullptr, r.src_alpha_plane};
    uint8_t* dst = r.dst_plane;
    const int out = d.fourth == FourthByte::kNone ? 3 : 4;
    for (int32_t line = 0; line < r.src_height; ++line) {
        ConvertLine(r, d, n, s, dst, count);
        s.pixels = Step(s.pixels, int64_t{count} * (planar ? 1 : 2) + r.src_skip);
        if (planar) s.chroma = Step(s.chroma, int64_t{count} + r.src_skip);
        if (d.fourth == FourthByte::kAlphaPlane) s.alpha = Step(s.alpha, int64_t{count} + r.src_alpha_skip);
        dst = Step(dst, int64_t{count} * out + r.dst_skip);
    }
}

void ReferenceYuvToRgbPairModes(const ZenkConversionRequest& r, YuvDecoding d, int32_t host_answer) {
    const DecodingNumbers n(r, host_answer);
    if (r.scan_mode != 1 && r.scan_mode != 2) return;  // no line count: nothing converted
    if (r.src_height == 0) return;                       // no source lines: nothing read or written
    const int32_t count = std::max(r.width, 0) & ~1;
    // The destination runs on from the end of each line's pixels by dst_skip.
    const int64_t line_bytes = int64_t{count} * (d.fourth == FourthByte::kNone ? 3 : 4);
    for (int32_t line = 0; line < r.dst_height; ++line) {
        const uint8_t* src = ReducedSourceLine(r, r.vertical_mode == 1 ? 2 : 4, line);
        const LineSources s{src, Step(src, ChromaDistance(r)), nullptr};
        ConvertLine(r, d, n, s, Step(r.dst_plane, line * (line_bytes + r.dst_skip)), count);
    }
}

}  // namespace zenk::test
