// The shared library as a host loads it: start-up without a settings object,
// and every export of the .def resolving by its undecorated name.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <regex>
#include <string>

#include "zenk_transcoder.h"

namespace {

TEST(ModuleLoad, LoadsAndConvertsWithoutASettingsObject) {
    // The default settings library returns no object with this setting; an
    // ELF library cannot refuse the load, so it must load and convert.
    setenv("ZENK_HOST_SETTINGS", "none", 1);
    void* library = dlopen(ZENK_LIBRARY_PATH, RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(library, nullptr) << dlerror();
    auto fill = reinterpret_cast<ZenkConvertFunction>(dlsym(library, "ZENK_SSE2_A8C_A8P_EX"));
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

    std::ifstream def(ZENK_DEF_PATH);
    ASSERT_TRUE(def.good());
    const std::regex name("^\\s+(ZENK_SSE2_[A-Z0-9_]+)\\s*$");
    std::string line;
    int names = 0;
    while (std::getline(def, line)) {
        std::smatch m;
        if (!std::regex_match(line, m, name)) continue;
        ++names;
        EXPECT_NE(dlsym(library, m[1].str().c_str()), nullptr) << m[1];
    }
    EXPECT_GT(names, 0);
    dlclose(library);
}

}  // namespace
