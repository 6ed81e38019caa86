// The one outside setting of the library: host option 128, which chooses
// between the full-swing and the studio chroma coefficient sets of the
// full-range conversions.
#pragma once

#include <cstdint>

#include "zenk_host_settings.h"

namespace zenk {

// Option 128 of the host settings object. Asks the settings library for the
// object on first use (and again while it has none); answers 1, the
// full-swing sets, while no object can be had.
int32_t QueryHostOption();

// The module's application object: built when the library is loaded, it
// obtains the host settings object at initialisation. A null object fails
// initialisation (and the load, where the platform allows a load to fail).
class ModuleApplication {
public:
    virtual bool InitInstance() { return true; }

protected:
    ~ModuleApplication() = default;
};

class CZenkTranscoderLibraryApp final : public ModuleApplication {
public:
    bool InitInstance() override;
    ZenkHostSettingsObject* HostSettings() const { return settings_; }

private:
    ZenkHostSettingsObject* settings_ = nullptr;
};

CZenkTranscoderLibraryApp& TheApp();

// Empties the option cache, as at load. For tests that swap settings.
void ResetHostSettingsCache();

}  // namespace zenk
