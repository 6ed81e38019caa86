// Where zenk-convert writes. An output file appears complete or not at all:
// it is written under a temporary name in the same directory and renamed
// over the output when done. A symbolic link is followed, and its target
// replaced; an existing file keeps its mode (and, where allowed, its owner);
// a file that is read-only, to this user or to everyone, is refused, and so
// is any existing file when the command says not to replace one (-n).
// Temporary files are named .zenk-convert-PID@HOST-XXXXXX, so that a later
// run removes those whose process is gone (killed outright, it could not
// remove its own). A character device or a FIFO (/dev/null, a pipe) has
// nothing to replace: it is written as a stream, as the frames come.
#pragma once

#include <cstdio>
#include <string>

namespace zenk::tool {

// Whether `path` names a character device or a FIFO, after following links.
bool IsStreamPath(const std::string& path);

// Whether `path` (after following links) names an existing file that an
// output would replace.
bool WouldReplace(const std::string& path);

class OutputFile {
public:
    // `replace` false: an existing file is refused (exit status 4).
    OutputFile(const std::string& path, bool replace);
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;
    std::FILE* file() { return file_; }
    // Puts the complete output in place (a stream: flushes it).
    void Commit();

private:
    std::string path_, temp_, shown_;  // the file replaced, the temporary, the name given
    std::FILE* file_ = nullptr;
    bool stream_ = false;
    bool replace_ = true;
};

}  // namespace zenk::tool
