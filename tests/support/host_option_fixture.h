// Tests whose conversions ask host option 128: each starts with an empty
// settings cache, as at load, and the counting settings library answering
// as the test says (1 unless told otherwise); the default is restored after.
#pragma once

#include <gtest/gtest.h>

#include "frame/module.h"
#include "support/counting_host_settings.h"

namespace zenk::test {

inline void AnswerHostOption(int32_t answer) {
    ZenkTestSettingsConfigure(0, answer);
    ResetHostSettingsCache();
}

template <class Base = ::testing::Test>
class WithHostSettings : public Base {
protected:
    void SetUp() override {
        AnswerHostOption(1);
        ZenkTestSettingsResetCounts();
    }
    void TearDown() override { AnswerHostOption(1); }
};

}  // namespace zenk::test
