// PNG files as zenk-convert's window on pictures: read as BGR32I (with the
// file's alpha, opaque when it has none) or BGR24I, written from BGR32I
// (with alpha), BGR24I or A8P (grey).
#pragma once

#include <cstdio>
#include <string>

#include "conversion.h"
#include "picture.h"

namespace zenk::tool {

bool IsPngPath(const std::string& path);

// The size of a PNG, checked against the limits of a frame. Throws ToolError
// (kExitInput) for a file that cannot be read or is not a PNG.
Size ReadPngSize(const std::string& path);

// Reads a PNG into a BGR32I or BGR24I frame of its size.
Frame ReadPng(const std::string& path, Format format);

// Writes a BGR32I, BGR24I or A8P frame to an open file.
void WritePng(const Frame& frame, std::FILE* file, const std::string& shown_path);

}  // namespace zenk::tool
