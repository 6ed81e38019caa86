// The default host settings library: answers host options from the
// environment, so that an operator can set them without a host of their own.
#include "zenk_host_settings.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

class EnvironmentHostSettings final : public ZenkHostSettingsObject {
public:
    constexpr EnvironmentHostSettings() = default;

    int32_t InterfaceVersion() override { return 1; }

    // Read at each query, so a change of the environment takes effect at the
    // next conversion that asks.
    int32_t QueryOption(int32_t option) override {
        char name[40];
        std::snprintf(name, sizeof name, "ZENK_HOST_OPTION_%d", static_cast<int>(option));
        const char* text = std::getenv(name);
        if (text == nullptr || *text == '\0')
            return option == ZENK_HOST_OPTION_FULL_SWING_CHROMA ? 1 : 0;
        return static_cast<int32_t>(std::strtol(text, nullptr, 0));
    }
};

EnvironmentHostSettings g_settings;

}  // namespace

extern "C" ZenkHostSettingsObject* ZENK_SETTINGS_CALL ZenkGetHostSettings(void) {
    const char* mode = std::getenv("ZENK_HOST_SETTINGS");
    if (mode != nullptr && std::strcmp(mode, "none") == 0)
        return nullptr;
    return &g_settings;
}
