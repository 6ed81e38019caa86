// The shared library as a host loads it: start-up without a settings object,
// and every export of the .def resolving by its undecorated name.
#include <gtest/gtest.h>

#include <cstdlib>

#include "support/def_names.h"
#include "zenk_transcoder.h"

#if defined(_WIN32)
#include <windows.h>
#else
#include <dlfcn.h>
#endif

namespace {

#if defined(_WIN32)
// The library's own directory is searched for the settings library.
void* Load() { return LoadLibraryExA(ZENK_LIBRARY_PATH, nullptr, LOAD_WITH_ALTERED_SEARCH_PATH); }
void* Symbol(void* library, const char* name) {
    return reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(library), name));
}
void Unload(void* library) { FreeLibrary(static_cast<HMODULE>(library)); }
void SetSettingsMode(const char* mode) { _putenv_s("ZENK_HOST_SETTINGS", mode); }
#else
void* Load() { return dlopen(ZENK_LIBRARY_PATH, RTLD_NOW | RTLD_LOCAL); }
void* Symbol(void* library, const char* name) { return dlsym(library, name); }
void Unload(void* library) { dlclose(library); }
void SetSettingsMode(const char* mode) { setenv("ZENK_HOST_SETTINGS", mode, 1); }
#endif

#if defined(_WIN32)
// Windows lets a library refuse its load: without a settings object it does.
TEST(ModuleLoad, FailsWithoutASettingsObject) {
    SetSettingsMode("none");
    void* library = Load();
    EXPECT_EQ(library, nullptr);
    if (library != nullptr) Unload(library);
    SetSettingsMode("");
}
#endif

TEST(ModuleLoad, LoadsConvertsAndResolvesEveryExportByName) {
#if !defined(_WIN32)
    // The default settings library returns no object with this setting; an
    // ELF library cannot refuse the load, so it must load and convert.
    SetSettingsMode("none");
#endif
    void* library = Load();
    ASSERT_NE(library, nullptr);
    auto fill = reinterpret_cast<ZenkConvertFunction>(Symbol(library, "ZENK_SSE2_A8C_A8P_EX"));
    ASSERT_NE(fill, nullptr);
    alignas(16) uint8_t plane[64] = {};
    ZenkConversionRequest r{};
    r.dst_plane = plane;
    r.width = 40;
    r.src_height = 1;
    r.alpha_value = 0x1FF;
    fill(&r);
    for (int i = 0; i < 40; ++i) EXPECT_EQ(plane[i], 0xFF);
    for (int i = 40; i < 64; ++i) EXPECT_EQ(plane[i], 0);

    const std::vector<std::string> names = DefNames("^\\s+(ZENK_SSE2_[A-Z0-9_]+)\\s*$");
    EXPECT_FALSE(names.empty());
    for (const std::string& name : names) EXPECT_NE(Symbol(library, name.c_str()), nullptr) << name;
    Unload(library);
}

}  // namespace
