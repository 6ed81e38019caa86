// Where the lines of a pair mode land, for a request filled the way a host
// fills any picture: the destination skip is the pitch minus the bytes a
// line's converted pixels take, so destination line n starts n pitches from
// the first (upward for a bottom-up picture), whatever the width. Each
// source line is uniform and different from every other, so a destination
// line shows which source line made it; its bytes are checked against the
// same export converting that source line alone in frame mode.
#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "support/test_picture.h"

namespace zenk::test {
namespace {

struct LayoutExport {
    const char* name;
    ZenkConvertFunction convert;
    int src_pixel_bytes;  // luma bytes for a Y8PUV8I source
    bool src_planar;
    int dst_pixel_bytes;  // luma bytes for a Y8PUV8I destination
    bool dst_planar;
};

const LayoutExport kExports[] = {
    {"UYVY16I_BGR32I", ZENK_SSE2_UYVY16I_BGR32I_EX, 2, false, 4, false},
    {"Y8PUV8I_BGR32I", ZENK_SSE2_Y8PUV8I_BGR32I_EX, 1, true, 4, false},
    {"BGR32I_UYVY16I", ZENK_SSE2_BGR32I_UYVY16I_EX, 4, false, 2, false},
    {"BGR32I_UVYY16I", ZENK_SSE2_BGR32I_UVYY16I_EX, 4, false, 2, false},
    {"BGR32I_Y8PUV8I", ZENK_SSE2_BGR32I_Y8PUV8I_EX, 4, false, 1, true},
};

struct LayoutRow {
    const char* what;
    int32_t vertical_mode;
    uint8_t field_pair;
    int32_t width;
    uint32_t dst_residue;  // first destination byte, modulo 16
    bool bottom_up;        // destination walked upward from its last line
    int32_t src_height;
    std::vector<int> source_lines;  // source line of each destination line; none: nothing written
};

const LayoutRow kRows[] = {
    {"halve, lines one pitch apart", 1, 0, 16, 0, false, 16, {0, 2, 4, 6}},
    {"halve each field", 1, 1, 16, 0, false, 16, {0, 1, 4, 5}},
    {"quarter", 2, 0, 16, 0, false, 16, {0, 4, 8, 12}},
    {"quarter each field", 2, 1, 16, 0, false, 16, {0, 1, 8, 9}},
    {"bottom-up destination", 1, 0, 16, 0, true, 16, {0, 2, 4, 6}},
    {"head, body and tail pairs", 1, 0, 40, 8, false, 16, {0, 2, 4, 6}},
    {"odd width: the pointer stands after 12 pixels", 1, 0, 13, 8, false, 16, {0, 2, 4, 6}},
    {"odd width, bottom-up", 2, 1, 21, 8, true, 16, {0, 1, 8, 9}},
    {"src_height 0 with dst_height 4", 1, 0, 16, 0, false, 0, {}},
};

constexpr int32_t kDstLines = 4;
constexpr int32_t kSrcLines = 16;
constexpr int32_t kPitch = 256;  // wider than any line of the table
constexpr uint8_t kUntouched = 0xA5;

// Source line `y`, uniform along the line and unlike every other line.
void FillSourceLine(const LayoutExport& e, uint8_t* luma, uint8_t* chroma, int32_t y, int32_t pixels) {
    for (int32_t x = 0; x < pixels; ++x) {
        if (e.src_pixel_bytes == 4) {  // B, G, R, A
            const uint8_t px[4] = {uint8_t(10 + 12 * y), uint8_t(200 - 9 * y), uint8_t(40 + 7 * y), 0xFF};
            std::memcpy(luma + 4 * x, px, 4);
        } else if (e.src_planar) {
            luma[x] = uint8_t(30 + 12 * y);
            chroma[x] = uint8_t(x % 2 == 0 ? 128 + 3 * y : 128 - 3 * y);
        } else {  // UYVY: Cb, Y0, Cr, Y1
            const uint8_t pair[4] = {uint8_t(128 + 3 * y), uint8_t(30 + 12 * y), uint8_t(128 - 3 * y),
                                     uint8_t(30 + 12 * y)};
            if (x % 2 == 0) std::memcpy(luma + 2 * x, pair, 4);
        }
    }
}

Request Selectors() {
    Request r{};
    r.dst_matrix = 1;
    r.alpha_value = 0x00FF00FF;  // 255 on either alpha form
    return r;
}

// What the export writes for source line `y` alone in frame mode: the bytes
// of the converted pixels of one destination line, luma then (Y8PUV8I)
// chroma.
std::vector<uint8_t> FrameLine(const LayoutExport& e, int32_t y, const LayoutRow& row) {
    const int32_t pixels = row.width;
    AlignedBytes src(static_cast<size_t>(2 * kPitch));
    FillSourceLine(e, src.data(), src.data() + kPitch, y, pixels);
    AlignedBytes dst(static_cast<size_t>(3 * kPitch));
    Request r = Selectors();
    r.src_plane = src.data();
    r.src_stride = kPitch;
    r.src_height = 1;
    r.width = pixels;
    r.dst_plane = dst.data() + 16 + row.dst_residue;
    r.dst_stride = kPitch;
    r.dst_height = 1;
    e.convert(&r);
    const size_t converted = static_cast<size_t>(pixels & ~1) * static_cast<size_t>(e.dst_pixel_bytes);
    std::vector<uint8_t> line(r.dst_plane, r.dst_plane + converted);
    if (e.dst_planar) line.insert(line.end(), r.dst_plane + kPitch, r.dst_plane + kPitch + converted);
    return line;
}

TEST(PairModeLayout, LinesLandOnePitchApartFromTheHostsSkip) {
    for (const LayoutExport& e : kExports) {
        for (const LayoutRow& row : kRows) {
            SCOPED_TRACE(::testing::Message() << e.name << ": " << row.what);
            const int32_t factor = row.vertical_mode == 1 ? 2 : 4;
            const int32_t src_pixels = factor * row.width;
            const int32_t src_pitch = src_pixels * e.src_pixel_bytes;
            AlignedBytes src_bytes(static_cast<size_t>(2 * kSrcLines * src_pitch));
            for (int32_t y = 0; y < kSrcLines; ++y) {
                FillSourceLine(e, src_bytes.data() + y * src_pitch,
                               src_bytes.data() + (kSrcLines + y) * src_pitch, y, src_pixels);
            }
            // A source of no lines is a page the kernel cannot read, where
            // the system offers one.
            AlignedBytes no_source = GuardPagesAvailable() ? AlignedBytes::BetweenGuardPages(4096) : AlignedBytes(64);

            const int32_t converted = (row.width & ~1) * e.dst_pixel_bytes;
            const int32_t step = row.bottom_up ? -kPitch : kPitch;
            AlignedBytes dst_bytes(static_cast<size_t>(4 * kDstLines * kPitch));
            std::memset(dst_bytes.data(), kUntouched, dst_bytes.size());
            const size_t first = static_cast<size_t>(kDstLines * kPitch) + row.dst_residue +
                                 (row.bottom_up ? static_cast<size_t>((kDstLines - 1) * kPitch) : 0);

            Request r = Selectors();
            r.scan_mode = 1;
            r.vertical_mode = row.vertical_mode;
            r.src_field_pair = row.field_pair;
            r.src_plane = row.src_height == 0 ? no_source.data() + no_source.size() : src_bytes.data();
            r.src_stride = src_pitch;
            r.src_height = row.src_height;
            r.src_skip = 0;
            r.width = row.width;
            r.dst_plane = dst_bytes.data() + first;
            r.dst_stride = step;
            r.dst_height = kDstLines;
            r.dst_skip = step - converted;

            // A Y8PUV8I source's chroma lies src_stride * src_height after
            // its luma; the fill put it there for 16 lines.
            ASSERT_TRUE(!e.src_planar || row.src_height == 0 || row.src_height == kSrcLines);

            AlignedBytes want = dst_bytes;
            const ptrdiff_t chroma = static_cast<ptrdiff_t>(step) * kDstLines;
            for (size_t n = 0; n < row.source_lines.size(); ++n) {
                const std::vector<uint8_t> line = FrameLine(e, row.source_lines[n], row);
                uint8_t* at = want.data() + first + static_cast<ptrdiff_t>(n) * step;
                std::memcpy(at, line.data(), static_cast<size_t>(converted));
                if (e.dst_planar) std::memcpy(at + chroma, line.data() + converted, static_cast<size_t>(converted));
            }
            e.convert(&r);
            for (size_t i = 0; i < want.size(); ++i) {
                ASSERT_EQ(dst_bytes[i], want[i]) << "destination byte " << static_cast<ptrdiff_t>(i - first)
                                                 << " from the first line's start";
            }
        }
    }
}

}  // namespace
}  // namespace zenk::test
