// Line addressing of the pair modes (reduction by 2 or 4, with or without
// regard to interlaced fields, and line doubling). The pair-mode kernels take
// every line start from here instead of walking the picture with skips.
#pragma once

#include "kernel.h"

namespace zenk {

// Thirteen words on 32-bit targets. Fields that a mode does not set keep
// whatever the kernel put there.
struct LineAddressSet {
    const uint8_t* src_line_a;        // first source line of the current pair
    const uint8_t* src_line_b;        // second source line of the pair
    uint8_t* dst_line;
    int32_t reserved0;                // never written
    const uint8_t* src_alpha_line_a;
    const uint8_t* src_alpha_line_b;
    uint8_t* dst_alpha_line;
    int32_t reserved1;                // never written
    int32_t src_advance;              // added to a source line start after its step
    int32_t dst_advance;
    int32_t src_alpha_advance;
    int32_t dst_alpha_advance;
    int32_t line_count;
};

void ComputeLineAddresses(LineAddressSet* set, const Request* r);

}  // namespace zenk

namespace zenk::ZENK_ISA {

// The set a pair-mode kernel starts from: zeroed, then filled. A mode that
// leaves line_count unset (scan_mode 0, or a scan_mode other than 1 and 2)
// therefore converts no line. Like every kernel, a pair-mode kernel returns
// at once when src_height is 0: it then reads and writes nothing, whatever
// dst_height says, so its set holds no line either.
inline LineAddressSet PairModeLines(const Request* r) {
    LineAddressSet set{};
    ComputeLineAddresses(&set, r);
    if (r->src_height == 0) set.line_count = 0;
    return set;
}

// Walks the destination lines of a pair mode: line n is made from stream A
// when n is even and from stream B when n is odd, and the stream just used
// advances by src_advance. The two source streams keep their line starts,
// apart from the pointers that walk within a line. The destination is one
// running pointer, as in the frame kernels: `convert_line(src_line, dst)`
// converts one line and leaves `dst` just past the bytes it wrote, and then
// dst_advance (the host's dst_skip: the pitch minus those bytes) takes it
// to the next line's start.
template <class ConvertLine>
inline void WalkLinePairs(const LineAddressSet& set, ConvertLine&& convert_line) {
    const uint8_t* stream[2] = {set.src_line_a, set.src_line_b};
    uint8_t* dst = set.dst_line;
    for (int32_t n = 0; n < set.line_count; ++n) {
        const int s = n & 1;
        convert_line(stream[s], dst);
        stream[s] = Advance(stream[s], set.src_advance);
        dst = Advance(dst, set.dst_advance);
    }
}

}  // namespace zenk::ZENK_ISA
