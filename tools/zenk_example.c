/*
 * zenk-example: a small host of the library. It builds a BGR32 test picture
 * with a keyed alpha ramp, splits it into BGR24 colour and an alpha plane,
 * merges the two back into BGR32, and reports what each step did.
 */
#include <stdio.h>
#include <string.h>

#include "zenk_transcoder.h"

enum { kWidth = 64, kHeight = 8 };

static const unsigned char kBars[8][3] = {
    /* B, G, R of 100% colour bars: white, yellow, cyan, green, magenta, red, blue, black */
    {255, 255, 255}, {0, 255, 255}, {255, 255, 0}, {0, 255, 0},
    {255, 0, 255},   {0, 0, 255},   {255, 0, 0},   {0, 0, 0}};

int main(void) {
    static unsigned char bgr32[kWidth * kHeight * 4], back[kWidth * kHeight * 4];
    static unsigned char bgr24[kWidth * kHeight * 3], alpha[kWidth * kHeight];
    ZenkConversionRequest r;
    int x, y, differences = 0;

    for (y = 0; y < kHeight; ++y)
        for (x = 0; x < kWidth; ++x) {
            unsigned char* p = bgr32 + 4 * (y * kWidth + x);
            memcpy(p, kBars[x * 8 / kWidth], 3);
            p[3] = (unsigned char)(x * 255 / (kWidth - 1));
        }

    memset(&r, 0, sizeof r);
    r.src_plane = bgr32;
    r.src_height = kHeight;
    r.src_width = r.width = kWidth;
    r.src_stride = kWidth * 4;
    r.dst_plane = bgr24;
    r.dst_stride = kWidth * 3;
    r.dst_alpha_plane = alpha;
    r.dst_alpha_stride = kWidth;
    ZENK_SSE2_BGR32I_BGR24IA8P_EX(&r);
    printf("BGR32I %dx%d -> BGR24I + A8P: alpha ramp %u..%u, first bar B,G,R = %u,%u,%u\n", kWidth, kHeight,
           alpha[0], alpha[kWidth - 1], bgr24[0], bgr24[1], bgr24[2]);

    memset(&r, 0, sizeof r);
    r.src_plane = bgr24;
    r.src_height = kHeight;
    r.width = kWidth;
    r.src_stride = kWidth * 3;
    r.src_alpha_plane = alpha;
    r.src_alpha_stride = kWidth;
    r.dst_plane = back;
    r.dst_stride = kWidth * 4;
    ZENK_SSE2_BGR24IA8P_BGR32I_EX(&r);

    for (x = 0; x < kWidth * kHeight * 4; ++x) differences += bgr32[x] != back[x];
    printf("BGR24I + A8P -> BGR32I: %d of %d bytes differ from the original\n", differences, kWidth * kHeight * 4);
    return differences == 0 ? 0 : 1;
}
