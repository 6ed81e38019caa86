// zenk-convert in the line-pair modes: each output line is a reduced copy of
// one source line, and the lines land where a host expects them. Every
// source line is uniform and unlike the others, so an output line shows
// which source line made it; the tool's own frame-mode output of the same
// source gives each source line's converted bytes.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tool_runner.h"

namespace zenk::tool::test {
namespace {

struct PairModeRow {
    const char* what;
    int vertical_mode;
    bool field_pair;
    std::vector<int> source_lines;  // the source line of each output line
};

const PairModeRow kRows[] = {
    {"every second line", 1, false, {0, 2, 4, 6}},
    {"every second line of each field", 1, true, {0, 1, 4, 5}},
    {"every fourth line", 2, false, {0, 4}},
    {"every fourth line of each field", 2, true, {0, 1}},
};

TEST(ConvertPairModes, OutputLinesComeFromTheRightSourceLines) {
    constexpr int32_t kWidth = 32, kHeight = 8;
    Scratch dir;
    Bytes source;
    for (int32_t y = 0; y < kHeight; ++y)
        for (int32_t x = 0; x < kWidth; ++x)
            source.insert(source.end(), {uint8_t(10 + 25 * y), uint8_t(220 - 20 * y), uint8_t(60 + 9 * y), 255});
    WriteBytes(dir / "source.bgra", source);
    const std::string size = std::to_string(kWidth) + "x" + std::to_string(kHeight);
    for (const char* to : {"UYVY16I", "Y8PUV8I"}) {
        RunOk({"--from", "BGR32I", "--to", to, "--size", size, dir / "source.bgra", dir / "frame"});
        const Bytes frame = ReadBytes(dir / "frame");
        for (const PairModeRow& row : kRows) {
            SCOPED_TRACE(std::string(to) + ": " + row.what);
            std::vector<std::string> args = {"--from", "BGR32I", "--to", to, "--size", size, "--scan-mode", "1",
                                             "--vertical-mode", std::to_string(row.vertical_mode)};
            if (row.field_pair) args.push_back("--field-pair");
            args.insert(args.end(), {dir / "source.bgra", dir / "reduced"});
            RunOk(args);
            const Bytes reduced = ReadBytes(dir / "reduced");
            const int32_t k = row.vertical_mode == 1 ? 2 : 4;
            const size_t lines = row.source_lines.size();
            const bool planar = std::string(to) == "Y8PUV8I";
            // Packed: 2 bytes a pixel. Planar: a luma byte a pixel, then as
            // many chroma lines of one byte a pixel.
            const size_t frame_line = planar ? kWidth : 2 * kWidth, line = frame_line / k;
            ASSERT_EQ(reduced.size(), lines * line * (planar ? 2 : 1));
            for (size_t n = 0; n < lines; ++n) {
                const size_t from = static_cast<size_t>(row.source_lines[n]) * frame_line;
                const Bytes want(frame.begin() + from, frame.begin() + from + line);
                EXPECT_EQ(Bytes(reduced.begin() + n * line, reduced.begin() + (n + 1) * line), want) << "line " << n;
                if (!planar) continue;
                const size_t chroma_from = kHeight * frame_line + from, chroma_at = (lines + n) * line;
                EXPECT_EQ(Bytes(reduced.begin() + chroma_at, reduced.begin() + chroma_at + line),
                          Bytes(frame.begin() + chroma_from, frame.begin() + chroma_from + line))
                    << "chroma line " << n;
            }
        }
    }
}

}  // namespace
}  // namespace zenk::tool::test
