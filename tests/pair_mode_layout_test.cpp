// Where the lines of a pair mode land, for a request filled the way a host
// fills any picture: the destination skip is the pitch minus the bytes a
// line's converted pixels take, so destination line n starts n pitches from
// the first (upward for a bottom-up picture), whatever the width. Each
// source line is uniform and different from every other, so a destination
// line shows which source line made it; its bytes are checked against the
// same export converting the whole source in frame mode.
#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "support/test_picture.h"

namespace zenk::test {
namespace {

const struct {
    ZenkConvertFunction convert;
    // Bytes a pixel (luma bytes for Y8PUV8I, whose chroma lines follow the
    // luma lines) of the source and the destination.
    int src_pixel_bytes, dst_pixel_bytes;
    bool dst_planar;
} kExports[] = {
    {ZENK_SSE2_UYVY16I_BGR32I_EX, 2, 4, false}, {ZENK_SSE2_Y8PUV8I_BGR32I_EX, 1, 4, false},
    {ZENK_SSE2_BGR32I_UYVY16I_EX, 4, 2, false}, {ZENK_SSE2_BGR32I_UVYY16I_EX, 4, 2, false},
    {ZENK_SSE2_BGR32I_Y8PUV8I_EX, 4, 1, true},
};

const struct {
    const char* what;
    int32_t vertical_mode;
    uint8_t field_pair;
    int32_t width;
    uint32_t dst_residue;  // first destination byte, modulo 16
    bool bottom_up;        // destination walked upward from its last line
    int32_t src_height;
    std::vector<int> source_lines;  // source line of each destination line; none: nothing written
    int32_t src_skip_lines = 0;     // src_skip in pitches; negative: the source walked upward from its last line
} kRows[] = {
    {"halve, lines one pitch apart", 1, 0, 16, 0, false, 16, {0, 2, 4, 6}},
    {"halve each field", 1, 1, 16, 0, false, 16, {0, 1, 4, 5}},
    {"quarter", 2, 0, 16, 0, false, 16, {0, 4, 8, 12}},
    {"quarter each field", 2, 1, 16, 0, false, 16, {0, 1, 8, 9}},
    {"bottom-up destination", 1, 0, 16, 0, true, 16, {0, 2, 4, 6}},
    {"head, body and tail pairs", 1, 0, 40, 8, false, 16, {0, 2, 4, 6}},
    {"odd width: the pointer stands after 12 pixels", 1, 0, 13, 8, false, 16, {0, 2, 4, 6}},
    {"odd width, bottom-up", 2, 1, 21, 8, true, 16, {0, 1, 8, 9}},
    {"src_height 0 with dst_height 4", 1, 0, 16, 0, false, 0, {}},
    // Upward, the second line above the first; the skip adds to the step.
    {"bottom-up source", 1, 0, 16, 0, false, 16, {15, 13, 10, 8}, -1},
    {"bottom-up source, quarter each field", 2, 1, 16, 0, false, 16, {15, 14, 6, 5}, -1},
};

constexpr int32_t kDstLines = 4, kSrcLines = 16;
constexpr int32_t kPitch = 256;  // wider than any destination line of the table

TEST(PairModeLayout, LinesLandOnePitchApartFromTheHostsSkip) {
    for (const auto& e : kExports)
        for (const auto& row : kRows) {
            SCOPED_TRACE(::testing::Message() << "export " << (&e - kExports) << ": " << row.what);
            // Source line y: (B, G, R, A), luma, or (Cb, Y, Cr, Y) by y,
            // with a Y8PUV8I source's (Cb, Cr) lines after its luma lines.
            const int32_t src_pitch = 4 * row.width * e.src_pixel_bytes;
            AlignedBytes src(static_cast<size_t>(2 * kSrcLines * src_pitch));
            for (int32_t y = 0; y < kSrcLines; ++y) {
                const uint8_t bgra[4] = {uint8_t(10 + 12 * y), uint8_t(200 - 9 * y), uint8_t(40 + 7 * y), 0xFF};
                const uint8_t uyvy[4] = {uint8_t(128 + 3 * y), uint8_t(30 + 12 * y), uint8_t(128 - 3 * y),
                                         uint8_t(30 + 12 * y)};
                uint8_t* line = src.data() + y * src_pitch;
                for (int32_t x = 0; x < src_pitch; ++x) {
                    line[x] = e.src_pixel_bytes == 4 ? bgra[x % 4] : e.src_pixel_bytes == 2 ? uyvy[x % 4] : uyvy[1];
                    if (e.src_pixel_bytes == 1) line[kSrcLines * src_pitch + x] = uyvy[x % 2 * 2];
                }
            }
            // What each source line converts to: the whole source in frame mode.
            const int32_t converted = (row.width & ~1) * e.dst_pixel_bytes;
            AlignedBytes frame(static_cast<size_t>(2 * kSrcLines * kPitch + 16));
            const Request whole{.src_plane = src.data(), .src_height = kSrcLines, .src_stride = src_pitch,
                                .src_skip = src_pitch - (row.width & ~1) * e.src_pixel_bytes,
                                .dst_plane = frame.data() + row.dst_residue, .width = row.width,
                                .dst_height = kSrcLines, .dst_stride = kPitch, .dst_skip = kPitch - converted,
                                .dst_matrix = 1, .alpha_value = 0x00FF00FF};  // 255 on either alpha form
            e.convert(&whole);

            // A source of no lines sits between pages the kernel cannot read.
            AlignedBytes no_source = AlignedBytes::BetweenGuardPages(4096);
            const int32_t step = row.bottom_up ? -kPitch : kPitch;
            AlignedBytes dst(static_cast<size_t>(4 * kDstLines * kPitch));
            std::memset(dst.data(), 0xA5, dst.size());
            const size_t first = static_cast<size_t>(kDstLines * kPitch) + row.dst_residue +
                                 (row.bottom_up ? static_cast<size_t>((kDstLines - 1) * kPitch) : 0);
            AlignedBytes want = dst;
            for (size_t n = 0; n < row.source_lines.size(); ++n) {
                const uint8_t* from = whole.dst_plane + row.source_lines[n] * kPitch;
                uint8_t* at = want.data() + first + static_cast<ptrdiff_t>(n) * step;
                std::memcpy(at, from, static_cast<size_t>(converted));
                if (e.dst_planar) std::memcpy(at + step * kDstLines, from + kSrcLines * kPitch, converted);
            }
            const int32_t last = row.src_skip_lines < 0 ? kSrcLines - 1 : 0;
            const Request pairs{.src_plane = row.src_height == 0 ? no_source.end() : src.data() + last * src_pitch,
                                .src_height = row.src_height, .src_stride = src_pitch, .src_skip = row.src_skip_lines * src_pitch,
                                .src_field_pair = row.field_pair, .dst_plane = dst.data() + first, .width = row.width,
                                .dst_height = kDstLines, .dst_stride = step, .dst_skip = step - converted,
                                .dst_matrix = 1, .alpha_value = 0x00FF00FF,
                                .scan_mode = row.vertical_mode, .vertical_mode = row.vertical_mode};  // scan_mode 1 or 2
            e.convert(&pairs);
            for (size_t i = 0; i < want.size(); ++i)
                ASSERT_EQ(dst[i], want[i]) << "destination byte " << static_cast<ptrdiff_t>(i - first)
                                           << " from the first line's start";
        }
}

}  // namespace
}  // namespace zenk::test
