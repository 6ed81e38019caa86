// The conversion library as its hosts see it: loaded at run time, each
// format pair's export looked up by name, so that a pair the loaded library
// lacks is reported instead of failing to start or to build.
#pragma once

#include <string>

#include "formats.h"
#include "zenk_transcoder.h"

namespace zenk::client {

class Library {
public:
    // Loads `path`, or when it is empty the library beside the executable,
    // then the one its run path and the system's search find. Throws
    // Error when neither loads.
    explicit Library(const std::string& path = {});
    ~Library();
    Library(const Library&) = delete;
    Library& operator=(const Library&) = delete;

    // The pair's _EX export, or null when the loaded library lacks it.
    ZenkConvertFunction Find(Format src, Format dst) const;
    bool Has(Format src, Format dst) const { return Find(src, dst) != nullptr; }
    const std::string& path() const { return path_; }
    // The version in the loaded file's name (libZenkTranscoderLibrary.so.0.1.0,
    // after following links), or "unknown" for a file named without one.
    std::string version() const;

private:
    void* handle_ = nullptr;
    std::string path_;
};

}  // namespace zenk::client
