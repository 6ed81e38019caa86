// Running zenk-convert as a user would, and the files around it.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "formats.h"
#include "library.h"

namespace zenk::tool::test {

using namespace zenk::client;

using Bytes = std::vector<uint8_t>;
inline Bytes operator+(Bytes a, const Bytes& b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

struct ToolResult {
    int code = -1;
    std::string out, err;
};

// Runs the tool with `args`; with `terminal` its standard error is a
// pseudo-terminal (whose output lands in `err`); `input` names a file to
// give it as standard input (else it gets an empty one).
ToolResult RunTool(const std::vector<std::string>& args, bool terminal = false, const std::string& input = {});

// RunTool, failing the test with the tool's messages unless it exits with 0.
ToolResult RunOk(const std::vector<std::string>& args, bool terminal = false, const std::string& input = {});

// A fresh directory, removed with everything in it when the test ends.
class Scratch {
public:
    Scratch();
    ~Scratch();
    std::string operator/(const std::string& name) const { return (dir_ / name).string(); }
    std::vector<std::string> Entries() const;  // file names, sorted
    // A command line split at its spaces, each "@x" the file x in here.
    std::vector<std::string> Command(const std::string& line) const;

private:
    std::filesystem::path dir_;
};

Bytes ReadBytes(const std::string& path);
void WriteBytes(const std::string& path, const Bytes& bytes);

// The library the tool loads, opened by the tests themselves.
const Library& TheLibrary();

// Whether every line of `text` fits `columns` columns.
bool FitsColumns(const std::string& text, size_t columns);

}  // namespace zenk::tool::test
