// zenk-convert reports every failure as one line and an exit status that says
// whose fault it was, so that scripts can tell a bad command from a bad file.
#pragma once

#include <stdexcept>
#include <string>

namespace zenk::tool {

enum ExitCode : int {
    kExitOk = 0,
    kExitFailure = 1,  // the system failed the tool (threads, memory)
    kExitUsage = 2,    // the command line asks for something impossible
    kExitInput = 3,    // the input cannot be read or does not hold what the command says
    kExitOutput = 4,   // the output cannot be written
    kExitLibrary = 5,  // the conversion library cannot be loaded
};

class ToolError : public std::runtime_error {
public:
    ToolError(ExitCode code, const std::string& message) : std::runtime_error(message), code_(code) {}
    ExitCode code() const { return code_; }

private:
    ExitCode code_;
};

}  // namespace zenk::tool
