// The colour matrices as the library's hosts name and choose them. A
// request says 1 for BT.601 and anything else (0 here) for BT.709; a YUV
// picture whose matrix nobody names is taken to be BT.601 up to 576 lines
// (standard definition) and BT.709 above, the rule GStreamer's caps follow.
// zenk-convert and zenkconvert both decide by this one rule.
#pragma once

#include <cstdint>
#include <string>

namespace zenk::client {

constexpr int32_t kBt601 = 1;
constexpr int32_t kBt709 = 0;

// Standard definition ends at 576 lines (625-line systems).
constexpr int64_t kStandardDefinitionLines = 576;

// The matrix of a YUV picture of `lines` lines that names none.
int32_t DefaultMatrix(int64_t lines);

// "BT.601" or "BT.709" for a request's matrix word.
std::string MatrixName(int32_t matrix);

// The rule in words, for help texts and messages.
constexpr const char* kDefaultMatrixRule = "BT.601 up to 576 lines, BT.709 above";

}  // namespace zenk::client
