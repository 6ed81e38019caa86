#include "rgb_alpha_reference.h"

#include "support/test_picture.h"

namespace zenk::test {

int SourceBytesPerPixel(RgbSource s) {
    switch (s) {
        case RgbSource::kBgr32: return 4;
        case RgbSource::kBgr24ConstantAlpha:
        case RgbSource::kBgr24AlphaPlane: return 3;
        case RgbSource::kAlphaPlane: return 1;
        case RgbSource::kAlphaConstant: return 0;
    }
    return 0;
}

int DestinationBytesPerPixel(RgbDestination d) {
    switch (d) {
        case RgbDestination::kBgr32: return 4;
        case RgbDestination::kBgr24:
        case RgbDestination::kBgr24AlphaPlane: return 3;
        case RgbDestination::kAlphaPlane: return 1;
    }
    return 0;
}

void ReferenceRgbConvert(const ZenkConversionRequest& r, RgbConversion c, int aligned_block) {
    const uint8_t* src = r.src_plane;
    const uint8_t* src_alpha = r.src_alpha_plane;
    uint8_t* dst = r.dst_plane;
    uint8_t* dst_alpha = r.dst_alpha_plane;
    const int in = SourceBytesPerPixel(c.source), out = DestinationBytesPerPixel(c.destination);
    const int32_t count = aligned_block ? r.width / aligned_block * aligned_block : (r.width > 0 ? r.width : 0);
    for (int32_t line = 0; line < r.src_height; ++line) {
        for (int32_t x = 0; x < count; ++x) {
            uint8_t bgra[4] = {0, 0, 0, static_cast<uint8_t>(r.alpha_value)};
            switch (c.source) {
                case RgbSource::kBgr32: for (int i = 0; i < 4; ++i) bgra[i] = src[4 * x + i]; break;
                case RgbSource::kBgr24ConstantAlpha: for (int i = 0; i < 3; ++i) bgra[i] = src[3 * x + i]; break;
                case RgbSource::kBgr24AlphaPlane:
                    for (int i = 0; i < 3; ++i) bgra[i] = src[3 * x + i];
                    bgra[3] = src_alpha[x];
                    break;
                case RgbSource::kAlphaPlane: bgra[3] = src[x]; break;
                case RgbSource::kAlphaConstant: break;
            }
            switch (c.destination) {
                case RgbDestination::kBgr32: for (int i = 0; i < 4; ++i) dst[4 * x + i] = bgra[i]; break;
                case RgbDestination::kBgr24: for (int i = 0; i < 3; ++i) dst[3 * x + i] = bgra[i]; break;
                case RgbDestination::kBgr24AlphaPlane:
                    for (int i = 0; i < 3; ++i) dst[3 * x + i] = bgra[i];
                    dst_alpha[x] = bgra[3];
                    break;
                case RgbDestination::kAlphaPlane: dst[x] = bgra[3]; break;
            }
        }
        src = Step(src, int64_t{count} * in + r.src_skip);
        dst = Step(dst, int64_t{count} * out + r.dst_skip);
        if (c.source == RgbSource::kBgr24AlphaPlane) src_alpha = Step(src_alpha, int64_t{count} + r.src_alpha_skip);
        if (c.destination == RgbDestination::kBgr24AlphaPlane) dst_alpha = Step(dst_alpha, int64_t{count} + r.dst_alpha_skip);
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
