#include "library.h"

#include <dlfcn.h>
#include <link.h>
#include <unistd.h>

#include <climits>

#include "errors.h"

#ifndef ZENK_LIBRARY_FILE_NAME
#error "ZENK_LIBRARY_FILE_NAME names the library's file (its SONAME)"
#endif

namespace zenk::tool {

namespace {

std::string ExecutableDirectory() {
    char buffer[PATH_MAX];
    const ssize_t n = readlink("/proc/self/exe", buffer, sizeof buffer - 1);
    if (n <= 0) return {};
    std::string path(buffer, static_cast<size_t>(n));
    const size_t slash = path.rfind('/');
    return slash == std::string::npos ? std::string() : path.substr(0, slash);
}

}  // namespace

Library::Library(const std::string& path) {
    std::string tried;
    auto attempt = [&](const std::string& candidate) {
        handle_ = dlopen(candidate.c_str(), RTLD_NOW | RTLD_LOCAL);
        if (handle_) {
            // Report the file the loader chose, not the name it was asked for.
            link_map* map = nullptr;
            path_ = dlinfo(handle_, RTLD_DI_LINKMAP, &map) == 0 && map && map->l_name && *map->l_name ? map->l_name
                                                                                                        : candidate;
        } else {
            const char* why = dlerror();
            tried += std::string(tried.empty() ? "" : "; ") + (why ? why : candidate);
        }
        return handle_ != nullptr;
    };
    if (!path.empty()) {
        if (!attempt(path)) throw ToolError(kExitLibrary, "cannot load the conversion library: " + tried);
        return;
    }
    // An installed or copied tool keeps the library beside it; in a build
    // tree the run path names the library's directory.
    const std::string dir = ExecutableDirectory();
    if (!dir.empty() && access((dir + "/" ZENK_LIBRARY_FILE_NAME).c_str(), F_OK) == 0 &&
        attempt(dir + "/" ZENK_LIBRARY_FILE_NAME))
        return;
    if (!attempt(ZENK_LIBRARY_FILE_NAME))
        throw ToolError(kExitLibrary, "cannot load the conversion library: " + tried);
}

Library::~Library() {
    if (handle_) dlclose(handle_);
}

ZenkConvertFunction Library::Find(Format src, Format dst) const {
    if (!FindPair(src, dst)) return nullptr;
    void* symbol = dlsym(handle_, ExportName(src, dst).c_str());
    return reinterpret_cast<ZenkConvertFunction>(symbol);
}

}  // namespace zenk::tool
