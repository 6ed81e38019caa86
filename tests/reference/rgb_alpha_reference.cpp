#include "references.h"

#include <algorithm>
#include <array>

#include "support/test_picture.h"

namespace zenk::test {

// In the order of the enumerations.
int SourceBytesPerPixel(RgbSource s) { return std::array{4, 3, 3, 1, 0}[static_cast<size_t>(s)]; }
int DestinationBytesPerPixel(RgbDestination d) { return std::array{4, 3, 3, 1}[static_cast<size_t>(d)]; }

void ReferenceRgbConvert(const ZenkConversionRequest& r, RgbConversion c, int aligned_block) {
    const uint8_t* src = r.src_plane;
    const uint8_t* src_alpha = r.src_alpha_plane;
    uint8_t* dst = r.dst_plane;
    uint8_t* dst_alpha = r.dst_alpha_plane;
    const int in = SourceBytesPerPixel(c.source), out = DestinationBytesPerPixel(c.destination);
    const bool alpha_in = c.source == RgbSource::kBgr24AlphaPlane;
    const bool alpha_out = c.destination == RgbDestination::kBgr24AlphaPlane;
    const int32_t count = aligned_block ? r.width / aligned_block * aligned_block : (r.width > 0 ? r.width : 0);
    for (int32_t line = 0; line < r.src_height; ++line) {
        for (int32_t x = 0; x < count; ++x) {
            // B, G, R from a BGR source, A from its fourth byte, its alpha
            // plane, an alpha plane source or the constant.
            uint8_t bgra[4] = {0, 0, 0, static_cast<uint8_t>(r.alpha_value)};
            if (in >= 3) std::copy_n(src + in * x, in, bgra);
            if (in == 1) bgra[3] = src[x];
            if (alpha_in) bgra[3] = src_alpha[x];
            if (out >= 3) std::copy_n(bgra, out, dst + out * x);
            if (out == 1) dst[x] = bgra[3];
            if (alpha_out) dst_alpha[x] = bgra[3];
        }
        src = Step(src, int64_t{count} * in + r.src_skip);
        dst = Step(dst, int64_t{count} * out + r.dst_skip);
        if (alpha_in) src_alpha = Step(src_alpha, int64_t{count} + r.src_alpha_skip);
        if (alpha_out) dst_alpha = Step(dst_alpha, int64_t{count} + r.dst_alpha_skip);
    }
}

void ReferenceAlphaPass(const ZenkConversionRequest& r, RgbSource source, bool into_destination_plane) {
    ZenkConversionRequest alpha = r;
    alpha.src_plane = r.src_alpha_plane;
    alpha.src_skip = r.src_alpha_skip;
    if (!into_destination_plane) {
        alpha.dst_plane = r.dst_alpha_plane;
        alpha.dst_skip = r.dst_alpha_skip;
    }
    ReferenceRgbConvert(alpha, {source, RgbDestination::kAlphaPlane}, 0);
}

}  // namespace zenk::test
