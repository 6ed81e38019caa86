// The one outside setting the kernels read: host option 128, which chooses
// between the full-swing and the studio chroma coefficient sets of the
// full-range conversions. The module (src/frame/module.cpp) answers it from
// the host settings object; the coefficient setups only ask.
#pragma once

#include <cstdint>

namespace zenk {

// Option 128 of the host settings object. Asks the settings library for the
// object on first use (and again while it has none); answers 1, the
// full-swing sets, while no object can be had.
int32_t QueryHostOption();

}  // namespace zenk
