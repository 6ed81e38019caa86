// The numbers docs/zenk-convert.md and --help give for the library's
// arithmetic, measured through the tool as a user would: the documentation
// is held to them, and a change to the library's arithmetic shows here.
#include <array>

#include "tool_runner.h"

namespace zenk::tool::test {
namespace {

// Full-range encoding of a 256-pixel grey ramp (every level once): BT.601
// with the full-swing chroma set (host option 128 answered 1, the default)
// scales luma by 255/256, so levels 129 to 255 come out one low and white
// is 254; BT.709, and BT.601 studio range, keep every level.
TEST(ConvertQuirks, FullRangeGreyLevels) {
    const struct {
        const char* flags;
        int low, other_wrong, white;
    } rows[] = {
        {"--full-range --matrix 601", 127, 0, 254}, {"--full-range --matrix 709", 0, 0, 255},
    };
    Scratch dir;
    RunOk(dir.Command("--test-card ramp -s 256x1 --to BGR32I @ramp.bgra"));
    const Bytes ramp = ReadBytes(dir / "ramp.bgra");
    for (int level = 0; level < 256; ++level) ASSERT_EQ(ramp[4 * level], level) << "the ramp holds every level once";
    for (const auto& row : rows) {
        SCOPED_TRACE(row.flags);
        RunOk(dir.Command(std::string(row.flags) + " -s 256x1 --from BGRA --to UYVY @ramp.bgra @out.uyvy"));
        const Bytes out = ReadBytes(dir / "out.uyvy");
        int low = 0, other = 0;
        for (int level = 0; level < 256; ++level) {
            const int y = out[2 * level + 1];
            if (y == level - 1) ++low;
            else if (y != level) ++other;
        }
        EXPECT_EQ(low, row.low);
        EXPECT_EQ(other, row.other_wrong);
        EXPECT_EQ(out[2 * 255 + 1], row.white);
    }
}

// A change of matrix on 75% bars against encoding the bars in the new
// matrix directly: of the 18 Y, Cb and Cr values of the six colour bars, 9
// come out one low and none high, either way.
TEST(ConvertQuirks, ChangeOfMatrixOnBars) {
    Scratch dir;
    RunOk(dir.Command("--matrix 601 --test-card bars75 -s 128x2 --to UYVY @601.uyvy"));
    RunOk(dir.Command("--matrix 709 --test-card bars75 -s 128x2 --to UYVY @709.uyvy"));
    for (auto [from, to] : {std::array<const char*, 2>{"601", "709"}, {"709", "601"}}) {
        SCOPED_TRACE(std::string(from) + " to " + to);
        RunOk(dir.Command(std::string("--src-matrix ") + from + " --dst-matrix " + to + " -s 128x2 --from UYVY --to UYVY @" +
                          from + ".uyvy @changed.uyvy"));
        const Bytes changed = ReadBytes(dir / "changed.uyvy"), direct = ReadBytes(dir / (std::string(to) + ".uyvy"));
        int low = 0, other = 0;
        // Bars 1 to 6 (yellow to blue), 16 pixels each: their first pair.
        for (int bar = 1; bar <= 6; ++bar)
            for (int byte = 0; byte < 3; ++byte) {
                const int at = bar * 32 + byte, d = changed[at] - direct[at];
                if (d == -1) ++low;
                else if (d != 0) ++other;
            }
        EXPECT_EQ(low, 9);
        EXPECT_EQ(other, 0);
    }
}

}  // namespace
}  // namespace zenk::tool::test
