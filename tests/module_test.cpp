// The shared library as a host loads it: start-up without a settings object,
// and every export of the .def resolving by its undecorated name.
#include <gtest/gtest.h>

#include "support/shared_library.h"
#include "zenk_transcoder.h"

namespace {

#if defined(_WIN32)
// Windows lets a library refuse its load: without a settings object it does.
TEST(ModuleLoad, FailsWithoutASettingsObject) {
    SetEnvironment("ZENK_HOST_SETTINGS", "none");
    void* library = Load(ZENK_LIBRARY_PATH);
    EXPECT_EQ(library, nullptr);
    if (library != nullptr) Unload(library);
    SetEnvironment("ZENK_HOST_SETTINGS", "");
}
#endif

TEST(ModuleLoad, LoadsConvertsAndResolvesEveryExportByName) {
#if !defined(_WIN32)
    // The default settings library returns no object with this setting; an
    // ELF library cannot refuse the load, so it must load and convert.
    SetEnvironment("ZENK_HOST_SETTINGS", "none");
#endif
    void* library = Load(ZENK_LIBRARY_PATH);
    ASSERT_NE(library, nullptr);
    auto fill = reinterpret_cast<ZenkConvertFunction>(Symbol(library, "ZENK_SSE2_A8C_A8P_EX"));
    ASSERT_NE(fill, nullptr);
    alignas(16) uint8_t plane[64] = {};
    const ZenkConversionRequest r{.src_height = 1, .dst_plane = plane, .width = 40, .alpha_value = 0x1FF};
    fill(&r);
    for (int i = 0; i < 64; ++i) EXPECT_EQ(plane[i], i < 40 ? 0xFF : 0) << i;

    const std::vector<std::string> names = DefNames("^\\s+(ZENK_SSE2_[A-Z0-9_]+)\\s*$");
    EXPECT_FALSE(names.empty());
    for (const std::string& name : names) EXPECT_NE(Symbol(library, name.c_str()), nullptr) << name;
    Unload(library);
}

}  // namespace
