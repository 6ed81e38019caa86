#include "colour.h"

namespace zenk::client {

int32_t DefaultMatrix(int64_t lines) { return lines > kStandardDefinitionLines ? kBt709 : kBt601; }

std::string MatrixName(int32_t matrix) { return matrix == kBt601 ? "BT.601" : "BT.709"; }

}  // namespace zenk::client
