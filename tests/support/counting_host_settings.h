// A host settings library for tests: built as libZenkHostSettings.so in a
// directory of its own, it counts how often export 1 is called and answers
// as the test configures it.
#pragma once

#include <cstdint>

extern "C" {
// null_object: export 1 returns null. answer: what option queries answer.
void ZenkTestSettingsConfigure(int null_object, int32_t answer);
int ZenkTestSettingsCalls();
int32_t ZenkTestSettingsLastOption();
void ZenkTestSettingsResetCounts();
}
