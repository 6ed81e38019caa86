// PNG files as zenk-convert's window on pictures: read as BGR32I (with the
// file's alpha, opaque when it has none) or BGR24I, written from BGR32I
// (with alpha), BGR24I or A8P (grey).
#pragma once

#include <cstdio>
#include <memory>
#include <string>

#include "picture.h"

namespace zenk::tool {

bool IsPngPath(const std::string& path);

struct PngReadState;

// A PNG being read: its header when opened, its pixels by Read. Every colour
// type and depth reads as the 8-bit values the file holds: palette entries,
// grey repeated into B, G and R, 1, 2 and 4-bit grey stretched to 0-255,
// 16-bit samples by their high byte; a transparent colour (tRNS) becomes
// alpha. Gamma and colour-profile chunks are not applied: the tool moves
// code values, not light. "-" reads standard input. Throws Error
// (kExitInput) for a file that cannot be read, is not a PNG or is too big,
// and (kExitUsage) for standard input that is not a PNG: the command left
// out --from.
class PngReader {
public:
    explicit PngReader(const std::string& path);
    ~PngReader();
    PngReader(const PngReader&) = delete;
    PngReader& operator=(const PngReader&) = delete;

    Size size() const { return size_; }
    // Reads the pixels into a BGR32I or BGR24I frame of the PNG's size; once.
    Frame Read(Format format);

private:
    std::unique_ptr<PngReadState> state_;
    std::string name_;
    Size size_;
};

// Reads a whole PNG file into a BGR32I or BGR24I frame.
Frame ReadPng(const std::string& path, Format format);

// Writes a BGR32I, BGR24I or A8P frame to an open file.
void WritePng(const Frame& frame, std::FILE* file, const std::string& shown_path);

}  // namespace zenk::tool
