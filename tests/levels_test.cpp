// Instruction-set levels: how ZENK_CPU caps the level the exports run at,
// and a write order that the differential test's random planes never meet.

#include <cstdlib>

#include "support/export_registry.h"
#include "yuv_to_yuv/yuv_to_yuv_kernels.h"

namespace zenk::test {
namespace {

constexpr IsaLevel kSse2 = IsaLevel::kSse2, kAvx2 = IsaLevel::kAvx2, kAvx512 = IsaLevel::kAvx512;

TEST(Levels, ZenkCpuCapsTheLevelAndUnknownValuesAreIgnored) {
    const struct {
        IsaLevel supported;
        const char* setting;
        IsaLevel runs;
    } rows[] = {
        {kAvx512, nullptr, kAvx512}, {kAvx512, "sse2", kSse2},   {kAvx512, "avx2", kAvx2},
        {kAvx512, "avx512", kAvx512}, {kAvx2, "avx512", kAvx2},  {kSse2, "avx2", kSse2},
        {kAvx512, "", kAvx512},      {kAvx512, "AVX2", kAvx512}, {kAvx2, "neon", kAvx2},
        {kAvx512, "avx2 ", kAvx512},
    };
    for (const auto& row : rows)
        EXPECT_EQ(CapIsaLevel(row.supported, row.setting), row.runs)
            << IsaLevelName(row.supported) << " with ZENK_CPU=" << (row.setting ? row.setting : "(unset)");
}

TEST(Levels, TheExportsRunTheCappedProcessorLevel) {
    EXPECT_EQ(ActiveIsaLevel(), CapIsaLevel(ProcessorIsaLevel(), std::getenv("ZENK_CPU")));
}

// The split of UYVY16I into Y8PUV8I writes a block's luma, then its chroma.
// With a destination height of 1 the chroma line starts one pitch after
// the luma line, inside it, and the later store wins: a wider level must
// keep that order block by block. Every level's bytes are compared with the
// SSE2 kernel's.
TEST(Levels, OverlappingSplitPlanesKeepTheBlockOrder) {
    const int32_t width = 64;
    std::vector<uint8_t> src(2 * width);
    for (size_t i = 0; i < src.size(); ++i) src[i] = static_cast<uint8_t>(i * 7 + 3);
    for (int32_t dst_stride : {0, 16, 32, 48, 56})
        for (int variant : {0, 2}) {
            std::vector<uint8_t> expected;
            for (size_t level = 0; level < kLevelCount; ++level) {
                if (kLevels[level] > ProcessorIsaLevel()) continue;
                alignas(64) uint8_t dst[256];
                std::fill(std::begin(dst), std::end(dst), 0xEE);
                const Request r{.src_plane = src.data(), .src_width = width, .src_height = 1, .src_stride = 2 * width,
                                .dst_plane = dst, .width = width, .dst_height = dst_stride == 0 ? 0 : 1,
                                .dst_stride = dst_stride, .dst_skip = dst_stride - width};
                yuv_to_yuv::kKernelsAt[level]->split_to_planar.variant[variant](&r);
                const std::vector<uint8_t> got(std::begin(dst), std::end(dst));
                if (expected.empty()) expected = got;  // SSE2's bytes
                EXPECT_EQ(got, expected) << IsaLevelName(kLevels[level]) << " pitch " << dst_stride << " variant " << variant;
            }
        }
}

}  // namespace
}  // namespace zenk::test
