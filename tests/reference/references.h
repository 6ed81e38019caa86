// Scalar references of every conversion family: what each kernel writes,
// pixel by pixel, and how far its running pointers move.
#pragma once

#include <cstdint>

#include "zenk_transcoder.h"

namespace zenk::test {

// Where a 4:2:2 line keeps Y0, Y1, Cb and Cr of a pair, or a luma line with
// its chroma line a plane further on; the values of a pair, read from and
// written to a packed layout's four bytes.
enum class YuvLayout { kUyvy, kYuyv, kUvyy, kPlanar };
struct YuvPairValues {
    uint8_t y0, y1, cb, cr;
};
YuvPairValues ReadPair(YuvLayout packed, const uint8_t* bytes);
void WritePair(YuvLayout packed, uint8_t* bytes, const YuvPairValues& p);

// ---- RGB repacking and alpha planes ------------------------------------------------------

// Where a pixel's B, G, R and A come from, and where they go.
enum class RgbSource { kBgr32, kBgr24ConstantAlpha, kBgr24AlphaPlane, kAlphaPlane, kAlphaConstant };
enum class RgbDestination { kBgr32, kBgr24, kBgr24AlphaPlane, kAlphaPlane };

struct RgbConversion {
    RgbSource source;
    RgbDestination destination;
};

int SourceBytesPerPixel(RgbSource s);
int DestinationBytesPerPixel(RgbDestination d);

// Converts `src_height` lines. An aligned kernel converts whole blocks of
// `aligned_block` pixels only (0: every pixel of the line); the running
// pointers move by what was converted plus the line skips.
void ReferenceRgbConvert(const ZenkConversionRequest& r, RgbConversion c, int aligned_block);

// The alpha pass of a composite export: src_height lines of width bytes from
// the source alpha plane (kAlphaPlane) or of the constant (kAlphaConstant)
// into the destination alpha plane, or into the destination plane itself
// where the export's destination is A8P.
void ReferenceAlphaPass(const ZenkConversionRequest& r, RgbSource source, bool into_destination_plane = false);

// What a composite export does after its colour pass: nothing, the
// constant alpha into the destination alpha plane, or the source alpha
// plane copied there.
enum class AlphaPass { kNone, kConstant, kCopy };

// ---- RGB to YUV: which pixels each kernel reads for a pair, the pair arithmetic, the output
// layouts and clamps, and how the running pointers and line starts move ----------------------

enum class EncodeSource { kBgr32, kBgr24 };

struct EncodeKernel {
    EncodeSource source;
    YuvLayout layout;
    bool alpha_plane;    // BGR32 fourth bytes copied to dst_alpha_plane
    int vertical_mode;   // 0 frame, 1 halve, 2 quarter, 3 double
    bool aligned;        // frame mode: whole 8-pixel groups only, no single pairs
};

// What the kernel `k` does to the request's pictures.
void ReferenceEncode(const ZenkConversionRequest& r, const EncodeKernel& k, int32_t host_option);

// ---- YUV to RGB: the decoding of one pixel, which pixels of a line a kernel converts -------

// The fourth byte of a BGR32 pixel; kNone for BGR24 (three bytes a pixel).
enum class FourthByte { kWordAlpha, kDwordAlpha, kAlphaPlane, kNone };

struct YuvDecoding {
    YuvLayout layout;
    FourthByte fourth;
};

// Frame kernels: src_height lines walked with the skips. An aligned kernel
// converts whole blocks of `aligned_block` pixels; the others (0) every pixel
// but a last odd one.
void ReferenceYuvToRgb(const ZenkConversionRequest& r, YuvDecoding d, int aligned_block, int32_t host_answer);

// Pair-mode kernels (vertical_mode 1 or 2): destination line n at
// dst_plane + n * (the bytes of a line's converted pixels + dst_skip), made
// from the n-th line of the reduced, field by field, source.
void ReferenceYuvToRgbPairModes(const ZenkConversionRequest& r, YuvDecoding d, int32_t host_answer);

// ---- YUV to YUV: which pixel pairs a kernel converts and by which path (single pairs or
// 16-pixel groups, whose rounding differs), and what it writes ----------------------------

enum class YuvOperation {
    kCopy,          // bytes unchanged
    kReorder,       // read in one packed layout, written in another
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

// The colour exports: each chooses its kernel by standards and alignment,
// then runs that kernel.
enum class YuvExport {
    kUyvyToUyvy, kYuyvToYuyv, kUyvyToYuyv, kYuyvToUyvy, kUvyyToUyvy, kUyvyToUvyy, kUyvyToY8puv8, kUyvyToV8u8y8a8,
};
void ReferenceYuvExport(const ZenkConversionRequest& r, YuvExport e);

}  // namespace zenk::test
