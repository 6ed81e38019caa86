// The level this run must find. The differential test reports a level the
// processor lacks as not run, and passes: under Wine, or an emulator, a
// processor check that came out lower than the machine's would quietly
// leave the wider kernels untested. CI names the level it expects
// (ZENK_TEST_EXPECT_LEVEL: sse2, avx2 or avx512, from the machine's
// processor flags, or the emulator's level), and the check must find
// exactly that one.
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "kernel/cpu.h"

namespace zenk {
namespace {

TEST(Levels, TheProcessorCheckFindsTheLevelThisRunExpects) {
    const char* expected = std::getenv("ZENK_TEST_EXPECT_LEVEL");
    if (expected == nullptr || *expected == '\0') GTEST_SKIP() << "ZENK_TEST_EXPECT_LEVEL is not set";
    EXPECT_EQ(std::string(IsaLevelName(ProcessorIsaLevel())), expected);
}

}  // namespace
}  // namespace zenk
