#include "test_card.h"

#include <cstring>

#include "errors.h"

namespace zenk::tool {

namespace {

const std::vector<TestCard> kCards = {
    {"bars100", "100% bars: white, yellow, cyan, green, magenta, red, blue, black"},
    {"bars75", "75% bars (every bar at RGB 191), in the same order"},
    {"ramp", "grey from black at the left to white at the right"},
    {"keyed-bars", "100% bars with alpha from 0 at the left to 255 at the right"},
};

// B, G, R flags of the eight bars, left to right.
constexpr bool kBarColours[8][3] = {{1, 1, 1}, {0, 1, 1}, {1, 1, 0}, {0, 1, 0},
                                    {1, 0, 1}, {0, 0, 1}, {1, 0, 0}, {0, 0, 0}};

uint8_t Ramp(int64_t x, int64_t width) {
    return width <= 1 ? 0 : static_cast<uint8_t>((x * 255 * 2 + (width - 1)) / (2 * (width - 1)));
}

}  // namespace

const std::vector<TestCard>& AllTestCards() { return kCards; }

bool IsTestCard(const std::string& name) {
    for (const TestCard& c : kCards)
        if (c.name == name) return true;
    return false;
}

void RequireTestCard(const std::string& name) {
    if (IsTestCard(name)) return;
    std::string names;
    for (const TestCard& c : kCards) {
        if (!names.empty()) names += ", ";
        names += c.name;
    }
    throw Error(kExitUsage, "unknown test card '" + name + "' (cards: " + names + ")");
}

Frame MakeTestCard(const std::string& name, int32_t width, int32_t height) {
    RequireTestCard(name);
    Frame frame(Format::BGR32I, width, height);
    const uint8_t level = name == "bars75" ? 191 : 255;
    // Bars start where x * 8 / width changes, so an even width of a multiple
    // of 16 keeps every bar edge between two 4:2:2 pixel pairs.
    for (int32_t x = 0; x < width; ++x) {
        uint8_t bgra[4];
        if (name == "ramp") {
            bgra[0] = bgra[1] = bgra[2] = Ramp(x, width);
            bgra[3] = 255;
        } else {
            const bool* bar = kBarColours[int64_t{x} * 8 / width];
            for (int c = 0; c < 3; ++c) bgra[c] = bar[c] ? level : 0;
            bgra[3] = name == "keyed-bars" ? Ramp(x, width) : 255;
        }
        std::memcpy(frame.colour() + 4 * int64_t{x}, bgra, 4);
    }
    const int64_t line = frame.layout().colour_stride;
    for (int32_t y = 1; y < height; ++y) std::memcpy(frame.colour() + y * line, frame.colour(), static_cast<size_t>(line));
    return frame;
}

}  // namespace zenk::tool
