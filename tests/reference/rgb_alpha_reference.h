// Scalar reference of the RGB repacking and alpha plane conversions: what a
// kernel writes, pixel by pixel, and how far its running pointers move.
#pragma once

#include "zenk_transcoder.h"

namespace zenk::test {

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
void ReferenceAlphaPass(const ZenkConversionRequest& r, AlphaPass pass);

}  // namespace zenk::test
