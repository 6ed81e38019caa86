// Module start-up and the host option query.
#include <atomic>

#include "module.h"

namespace zenk {
namespace {

// The only datum shared between conversions. Two threads that race on the
// first query both store the same pointer; the atomic makes that race
// well-defined.
std::atomic<ZenkHostSettingsObject*> g_settings_cache{nullptr};

CZenkTranscoderLibraryApp g_app;

}  // namespace

bool CZenkTranscoderLibraryApp::InitInstance() {
    if (!ModuleApplication::InitInstance()) return false;
    settings_ = ZenkGetHostSettings();
    return settings_ != nullptr;
}

CZenkTranscoderLibraryApp& TheApp() { return g_app; }

int32_t QueryHostOption() {
    ZenkHostSettingsObject* settings = g_settings_cache.load(std::memory_order_acquire);
    if (settings == nullptr) {
        settings = ZenkGetHostSettings();
        g_settings_cache.store(settings, std::memory_order_release);
        if (settings == nullptr) return 1;
    }
    return settings->QueryOption(ZENK_HOST_OPTION_FULL_SWING_CHROMA);
}

void ResetHostSettingsCache() { g_settings_cache.store(nullptr, std::memory_order_release); }

}  // namespace zenk
