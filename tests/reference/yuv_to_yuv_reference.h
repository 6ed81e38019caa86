// Scalar reference of the YUV-to-YUV conversions: which pixel pairs a kernel
// converts and by which path (single pairs or 16-pixel groups, whose
// rounding differs), what it writes, and how far its running pointers move.
#pragma once

#include <cstdint>

#include "zenk_transcoder.h"

namespace zenk::test {

enum class YuvLayout { kUyvy, kYuyv, kUvyy };

enum class YuvOperation {
    kCopy,          // bytes unchanged
    kReorder,       // read in one layout, written in another
    kMatrix,        // change of standard, each group's luma from its own pairs
    kSharedMatrix,  // change of standard, UYVY16I in and out, crossed luma
    kSplit,         // UYVY16I to a luma plane and a Cb, Cr plane
    kWiden,         // UYVY16I to Cr, Cb, Y, alpha per pixel
};

struct YuvKernelModel {
    YuvOperation operation;
    YuvLayout read_as = YuvLayout::kUyvy;
    YuvLayout written_as = YuvLayout::kUyvy;
};

// One kernel over src_height lines. An aligned kernel converts whole groups
// only (16 pixels; 8 for the widening); the others split every line into
// head pairs, groups and tail pairs by the destination address.
void ReferenceYuvKernel(const ZenkConversionRequest& r, const YuvKernelModel& k, bool aligned_kernel);

enum class YuvExport {
    kUyvyToUyvy,
    kYuyvToYuyv,
    kUyvyToYuyv,
    kYuyvToUyvy,
    kUvyyToUyvy,
    kUyvyToUvyy,
    kUyvyToY8puv8,
    kUyvyToV8u8y8a8,
};

// The colour export: its choice of kernel by standards and alignment, then
// that kernel.
void ReferenceYuvExport(const ZenkConversionRequest& r, YuvExport e);

}  // namespace zenk::test
