#include "library.h"

#include <dlfcn.h>
#include <link.h>
#include <unistd.h>

#include <climits>
#include <cstdlib>
#include <cstddef>
#include <vector>

#include "errors.h"

#ifndef ZENK_LIBRARY_FILE_NAME
#error "ZENK_LIBRARY_FILE_NAME names the library's file (its SONAME)"
#endif

namespace zenk::client {

namespace {

std::string ExecutableDirectory() {
    char buffer[PATH_MAX];
    const ssize_t n = readlink("/proc/self/exe", buffer, sizeof buffer - 1);
    if (n <= 0) return {};
    std::string path(buffer, static_cast<size_t>(n));
    const size_t slash = path.rfind('/');
    return slash == std::string::npos ? std::string() : path.substr(0, slash);
}

// The directories the loader searches for the executable's own libraries:
// its run path, LD_LIBRARY_PATH and the system's. dlopen is asked for full
// paths in these, because a dlopen made through an interposed wrapper (as
// sanitizers install) would search the wrapper's run path instead.
std::vector<std::string> SearchDirectories() {
    std::vector<std::string> dirs;
    void* self = dlopen(nullptr, RTLD_LAZY);
    if (!self) return dirs;
    Dl_serinfo sizes;
    if (dlinfo(self, RTLD_DI_SERINFOSIZE, &sizes) == 0 && sizes.dls_size >= sizeof(Dl_serinfo)) {
        std::vector<std::max_align_t> storage(sizes.dls_size / sizeof(std::max_align_t) + 1);
        auto* info = reinterpret_cast<Dl_serinfo*>(storage.data());
        if (dlinfo(self, RTLD_DI_SERINFOSIZE, info) == 0 && dlinfo(self, RTLD_DI_SERINFO, info) == 0)
            for (unsigned i = 0; i < info->dls_cnt; ++i) dirs.emplace_back(info->dls_serpath[i].dls_name);
    }
    dlclose(self);
    return dirs;
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
        if (!attempt(path)) throw Error(kExitLibrary, "cannot load the conversion library: " + tried);
        return;
    }
    // A copied tool keeps the library beside it; in a build tree and once
    // installed the run path names the library's directory.
    std::vector<std::string> dirs = SearchDirectories();
    dirs.insert(dirs.begin(), ExecutableDirectory());
    for (const std::string& dir : dirs) {
        const std::string candidate = dir + "/" ZENK_LIBRARY_FILE_NAME;
        if (!dir.empty() && access(candidate.c_str(), F_OK) == 0 && attempt(candidate)) return;
    }
    if (!attempt(ZENK_LIBRARY_FILE_NAME))
        throw Error(kExitLibrary, "cannot load the conversion library: " + tried);
}

Library::~Library() {
    if (handle_) dlclose(handle_);
}

std::string Library::version() const {
    char real[PATH_MAX];
    const std::string file = realpath(path_.c_str(), real) ? real : path_;
    const size_t so = file.rfind(".so.");
    const std::string suffix = so == std::string::npos ? "" : file.substr(so + 4);
    const bool numeric = !suffix.empty() && suffix.find_first_not_of("0123456789.") == std::string::npos;
    return numeric ? suffix : "unknown";
}

ZenkConvertFunction Library::Find(Format src, Format dst) const {
    if (!FindPair(src, dst)) return nullptr;
    void* symbol = dlsym(handle_, ExportName(src, dst).c_str());
    return reinterpret_cast<ZenkConvertFunction>(symbol);
}

}  // namespace zenk::client
