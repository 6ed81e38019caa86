// The shared library as a host loads it (on Windows with the library's own
// directory searched for the settings library), the environment it reads at
// load, and the names of its .def file (ZENK_DEF_PATH).
#pragma once

#include <cstdlib>
#include <fstream>
#include <regex>
#include <string>
#include <vector>

#if defined(_WIN32)
#include <windows.h>
#else
#include <dlfcn.h>
#endif

#if defined(_WIN32)
inline void* Load(const std::string& path) {
    return LoadLibraryExA(path.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
}
inline void* Symbol(void* library, const char* name) {
    return reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(library), name));
}
inline void Unload(void* library) { FreeLibrary(static_cast<HMODULE>(library)); }
inline std::string LoadError() { return "LoadLibrary failed with error " + std::to_string(GetLastError()); }
inline void SetEnvironment(const char* name, const char* value) { _putenv_s(name, value); }  // "" removes it
#else
inline void* Load(const std::string& path) { return dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL); }
inline void* Symbol(void* library, const char* name) { return dlsym(library, name); }
inline void Unload(void* library) { dlclose(library); }
inline std::string LoadError() { return dlerror(); }
inline void SetEnvironment(const char* name, const char* value) {
    *value ? setenv(name, value, 1) : unsetenv(name);
}
#endif

// The names on the .def file's lines that match `pattern`, the name as its
// first group, in the file's order.
inline std::vector<std::string> DefNames(const char* pattern) {
    std::ifstream def(ZENK_DEF_PATH);
    const std::regex line_pattern(pattern);
    std::vector<std::string> names;
    std::smatch m;
    for (std::string line; std::getline(def, line);)
        if (std::regex_match(line, m, line_pattern)) names.push_back(m[1]);
    return names;
}
