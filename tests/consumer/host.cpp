// A C++ host of the installed library: alpha extraction from BGR32.
#include <array>
#include <cstdio>

#include "zenk_transcoder.h"

int main() {
    std::array<uint8_t, 4 * 40> bgra{};
    std::array<uint8_t, 40> alpha{};
    for (size_t i = 0; i < 40; ++i) bgra[4 * i + 3] = static_cast<uint8_t>(i * 5);
    ZenkConversionRequest r{};
    r.src_plane = bgra.data();
    r.dst_plane = alpha.data();
    r.width = 40;
    r.src_height = 1;
    ZENK_SSE2_BGR32I_A8P_EX(&r);
    for (size_t i = 0; i < 40; ++i)
        if (alpha[i] != i * 5) {
            std::printf("alpha %zu differs\n", i);
            return 1;
        }
    std::printf("C++ host: 40 alpha bytes extracted\n");
    return 0;
}
