// The line-pair modes as zenk-convert offers them. The five pairs that own a
// kernel table also convert line pairs: a proxy reduced by 2 or by 4 in
// height (into YUV, in width too), of a progressive source or of an
// interlaced one whose two fields are reduced each on its own; and, from
// BGR32I into YUV, the picture doubled both ways. Users ask in those words
// (--proxy, --interlaced, --double); hosts' engineers set the request's own
// fields (--vertical-mode, --scan-mode, --field-pair) to try what a host
// sends.
#pragma once

#include <optional>
#include <string>

#include "formats.h"
#include "request.h"

namespace zenk::tool {

using namespace client;

struct LinePairFlags {
    std::optional<int> proxy;  // 2 or 4
    bool interlaced = false;
    bool double_size = false;
    std::optional<int> vertical_mode, scan_mode;
    bool field_pair = false;
};

// Sets the request's mode fields from the flags, and returns how the mode
// was asked for, for messages ("--proxy 4", "--vertical-mode 2"; empty in
// frame mode). Throws Error for flags that contradict each other.
std::string ApplyLinePairFlags(const LinePairFlags& flags, RequestOptions& options);

// The destination size of a pair at a source size: the source size in frame
// mode; in the line-pair modes the reduced or doubled size (RGB to YUV
// reduces or doubles both ways, YUV to RGB reduces only vertically). Throws
// Error, naming the mode as `asked`, when the mode does not suit the pair
// or the size.
Size DestinationSize(const Pair& pair, const RequestOptions& options, Size source, const std::string& asked);

// The pairs that convert line pairs, for messages: "UYVY16I -> BGR32I, ...".
std::string LinePairPairs();

}  // namespace zenk::tool
