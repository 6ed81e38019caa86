#include "counting_host_settings.h"

#include <atomic>

#include "zenk_host_settings.h"

namespace {

std::atomic<int> g_calls{0}, g_null{0};
std::atomic<int32_t> g_answer{1}, g_last_option{-1};

class CountingSettings final : public ZenkHostSettingsObject {
public:
    int32_t InterfaceVersion() override { return 1; }
    int32_t QueryOption(int32_t option) override {
        g_last_option = option;
        return g_answer;
    }
};

CountingSettings g_object;

}  // namespace

extern "C" ZENK_SETTINGS_API ZenkHostSettingsObject* ZENK_SETTINGS_CALL ZenkGetHostSettings(void) {
    ++g_calls;
    return g_null ? nullptr : &g_object;
}

extern "C" ZENK_SETTINGS_API void ZenkTestSettingsConfigure(int null_object, int32_t answer) {
    g_null = null_object;
    g_answer = answer;
}
extern "C" ZENK_SETTINGS_API int ZenkTestSettingsCalls() { return g_calls; }
extern "C" ZENK_SETTINGS_API int32_t ZenkTestSettingsLastOption() { return g_last_option; }
extern "C" ZENK_SETTINGS_API void ZenkTestSettingsResetCounts() {
    g_calls = 0;
    g_last_option = -1;
}
