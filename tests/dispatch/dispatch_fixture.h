// The shapes the level-dispatch fixture shares between its base unit and
// its three level units (dispatch_fixture_level.cpp).
#pragma once

namespace zenk {
enum class IsaLevel : int { kSse2, kAvx2, kAvx512 };
IsaLevel ActiveIsaLevel();
struct Set {
    void (*kernel)(int*);
};
}  // namespace zenk

namespace zenk::sse2 { extern const Set kSet; void Kernel(int*); }
namespace zenk::avx2 { extern const Set kSet; void Kernel(int*); }
namespace zenk::avx512 { extern const Set kSet; void Kernel(int*); }
