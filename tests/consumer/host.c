/* A C host of the installed library: BGR24 with alpha to BGR32. */
#include <stdio.h>
#include <string.h>

#include "zenk_transcoder.h"

int main(void) {
    unsigned char bgr[3 * 24], alpha[24], out[4 * 24];
    ZenkConversionRequest r = {.src_plane = bgr, .src_height = 1, .src_alpha_plane = alpha,
                               .dst_plane = out, .width = 24};
    for (int i = 0; i < 3 * 24; ++i) bgr[i] = (unsigned char)(i * 7);
    for (int i = 0; i < 24; ++i) alpha[i] = (unsigned char)(255 - i);
    ZENK_SSE2_BGR24IA8P_BGR32I_EX(&r);
    for (int i = 0; i < 24; ++i)
        if (memcmp(out + 4 * i, bgr + 3 * i, 3) != 0 || out[4 * i + 3] != alpha[i]) {
            printf("pixel %d differs\n", i);
            return 1;
        }
    printf("C host: 24 pixels merged\n");
    return 0;
}
