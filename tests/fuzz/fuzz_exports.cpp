// libFuzzer target: the input chooses an export and every request field
// within the documented envelope (frame or line-pair mode, sizes, plane addresses, pitches,
// directions, flags, matrices, alpha, the host option's answer). The
// export's output must equal the scalar reference's, byte for byte, and
// nothing outside its planes may change.
#include <cstdio>
#include <cstdlib>

#include "frame/module.h"
#include "support/counting_host_settings.h"
#include "support/export_registry.h"

using namespace zenk::test;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const auto& exports = RegisteredExports();
    if (size < 2 || exports.empty()) return 0;
    const ExportUnderTest& e = exports[data[0] % exports.size()];
    Rng rng(data + 1, size - 1);
    ZenkTestSettingsConfigure(0, rng.Chance(50) ? 1 : 0);
    zenk::ResetHostSettingsCache();
    RequestStyle style;
    style.aligned = rng.Chance(30);
    style.pair_mode = rng.Chance(30) ? kAnyPairMode : 0;
    Scene scene;
    const Request r = BuildGenericRequest(rng, scene, e, style);
    const ::testing::AssertionResult same =
        Differential(scene, r, [&](const Request& q) { e.convert(&q); }, e.reference);
    if (!same) {
        std::fprintf(stderr, "%s differs from the reference: %s\n", e.name.c_str(), same.message());
        std::abort();
    }
    return 0;
}
