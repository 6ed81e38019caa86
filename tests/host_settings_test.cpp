// Module start-up and the host option query, against a counting settings
// library that the tests configure.
#include <gtest/gtest.h>

#include "frame/module.h"
#include "support/counting_host_settings.h"
#include "support/host_option_fixture.h"

namespace zenk {
namespace {

using HostOptionTest = test::WithHostSettings<>;

// Each query asks the object again; export 1 is asked once for it.
TEST_F(HostOptionTest, AnswersOption128UnchangedFromTheObjectFetchedOnce) {
    for (int32_t answer : {0, 1, 7, -1}) {
        ZenkTestSettingsConfigure(0, answer);
        EXPECT_EQ(QueryHostOption(), answer);
        EXPECT_EQ(ZenkTestSettingsLastOption(), 128);
    }
    EXPECT_EQ(ZenkTestSettingsCalls(), 1);
}

TEST_F(HostOptionTest, AnswersOneWithoutASettingsObjectAndAsksAgainNextTime) {
    ZenkTestSettingsConfigure(1, 0);
    EXPECT_EQ(QueryHostOption(), 1);
    EXPECT_EQ(QueryHostOption(), 1);
    EXPECT_EQ(ZenkTestSettingsCalls(), 2);
    // Once the host has an object, the next query uses it.
    ZenkTestSettingsConfigure(0, 0);
    EXPECT_EQ(QueryHostOption(), 0);
    EXPECT_EQ(ZenkTestSettingsCalls(), 3);
}

TEST_F(HostOptionTest, InitialisationFailsWithoutASettingsObject) {
    CZenkTranscoderLibraryApp app;
    ZenkTestSettingsConfigure(1, 0);
    EXPECT_FALSE(app.InitInstance());
    EXPECT_EQ(app.HostSettings(), nullptr);
    ZenkTestSettingsConfigure(0, 0);
    EXPECT_TRUE(app.InitInstance());
    EXPECT_NE(app.HostSettings(), nullptr);
}

}  // namespace
}  // namespace zenk
