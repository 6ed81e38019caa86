// Failures of a conversion a host asked for, each with whose fault it was,
// so that zenk-convert's scripts can tell a bad command from a bad file and
// zenkconvert can name a library that did not load. The numbers are
// zenk-convert's exit statuses.
#pragma once

#include <stdexcept>
#include <string>

namespace zenk::client {

enum ExitCode : int {
    kExitOk = 0,
    kExitFailure = 1,  // the system failed the host (threads, memory)
    kExitUsage = 2,    // the command asks for something impossible
    kExitInput = 3,    // the input cannot be read or does not hold what the command says
    kExitOutput = 4,   // the output cannot be written, or may not be replaced
    kExitLibrary = 5,  // the conversion library cannot be loaded
};

class Error : public std::runtime_error {
public:
    Error(ExitCode code, const std::string& message) : std::runtime_error(message), code_(code) {}
    ExitCode code() const { return code_; }

private:
    ExitCode code_;
};

}  // namespace zenk::client
