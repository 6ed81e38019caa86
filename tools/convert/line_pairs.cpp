#include "line_pairs.h"

#include <algorithm>

#include "errors.h"

namespace zenk::tool {

std::string ApplyLinePairFlags(const LinePairFlags& f, RequestOptions& o) {
    if (f.proxy && f.double_size) throw Error(kExitUsage, "give --proxy or --double, not both");
    const bool words = f.proxy || f.double_size;
    if (words && f.vertical_mode)
        throw Error(kExitUsage, std::string(f.proxy ? "--proxy" : "--double") +
                                    " sets the request's vertical mode: give it or --vertical-mode, not both");
    // Scan modes 1 and 2 address line pairs alike; 1 is what the words ask.
    o.scan_mode = f.scan_mode.value_or(words ? 1 : 0);
    o.field_pair = f.interlaced || f.field_pair;
    if (f.proxy) {
        o.vertical_mode = *f.proxy == 2 ? 1 : 2;
        return "--proxy " + std::to_string(*f.proxy);
    }
    if (f.double_size) {
        o.vertical_mode = 3;
        return "--double";
    }
    o.vertical_mode = f.vertical_mode.value_or(0);
    return o.vertical_mode ? "--vertical-mode " + std::to_string(o.vertical_mode) : std::string();
}

std::string LinePairPairs() {
    std::string s;
    for (const Pair& p : AllPairs())
        if (p.vertical_modes.size() > 1) s += (s.empty() ? "" : ", ") + Token(p.src) + " -> " + Token(p.dst);
    return s;
}

Size DestinationSize(const Pair& pair, const RequestOptions& options, Size source, const std::string& asked) {
    const int32_t mode = options.vertical_mode;
    const std::string name = Token(pair.src) + " -> " + Token(pair.dst);
    if (options.scan_mode < 0 || options.scan_mode > 2)
        throw Error(kExitUsage, "--scan-mode must be 0 (frame), 1 or 2 (line pairs), not " +
                                    std::to_string(options.scan_mode));
    if (mode == 0) return source;
    if (pair.vertical_modes.size() == 1)
        throw Error(kExitUsage, name + " converts whole frames only (" + asked + "); line pairs convert in " +
                                    LinePairPairs());
    if (std::find(pair.vertical_modes.begin(), pair.vertical_modes.end(), mode) == pair.vertical_modes.end())
        throw Error(kExitUsage, name + " has no vertical mode " + std::to_string(mode) + " (" + asked +
                                    "): it reduces (--proxy 2 or 4), and only BGR32I into YUV doubles");
    if (options.scan_mode == 0)
        throw Error(kExitUsage, asked + " converts line pairs: it needs --scan-mode 1 or 2 (or say --proxy or --double)");
    if (mode == 3) {
        // Each source pixel pair becomes two output pairs, each line two lines.
        if (source.width % 2 != 0)
            throw Error(kExitUsage, asked + " doubles pixel pairs: the width must be even, not " +
                                        std::to_string(source.width));
        return {2 * source.width, 2 * source.height};
    }
    const int32_t k = mode == 1 ? 2 : 4;
    // Every destination line comes from one line of a pair of source lines
    // 2k apart in a stream, so the height is a whole number of such pairs.
    if (source.height % (2 * k) != 0)
        throw Error(kExitUsage, asked + " needs a height that is a multiple of " + std::to_string(2 * k) + ", not " +
                                    std::to_string(source.height));
    if (IsYuv(pair.dst)) {
        // The reduced 4:2:2 line must still hold whole pixel pairs.
        if (source.width % (2 * k) != 0)
            throw Error(kExitUsage, asked + " to " + Token(pair.dst) + " needs a width that is a multiple of " +
                                        std::to_string(2 * k) + ", not " + std::to_string(source.width));
        return {source.width / k, source.height / k};
    }
    return {source.width, source.height / k};
}

}  // namespace zenk::tool
