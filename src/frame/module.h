// The module's side of the host settings: the application object that
// obtains the settings object at load, and the cache behind QueryHostOption.
#pragma once

#include "kernel/host_option.h"
#include "zenk_host_settings.h"

namespace zenk {

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
