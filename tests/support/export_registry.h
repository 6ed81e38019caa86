// Every export under test, with what a generic test needs to build a valid
// request for it and the scalar reference of what it writes. The families'
// test files register their exports; the envelope, guard-page, concurrency
// and fuzz checks then run over all of them alike.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "support/test_picture.h"

namespace zenk::test {

// One plane of an export's source or destination.
struct PlaneSpec {
    int bytes_per_pixel = 0;   // 0: the export has no such plane
    bool chroma_plane = false;  // Y8PUV8I: a second plane of as many lines follows the luma lines
    int read_past_line = 0;     // bytes the export may read past a line's end
    int line_alignment = 1;     // line starts must be multiples of this (any-alignment kernels)
};

struct ExportUnderTest {
    std::string name;
    ZenkConvertFunction convert = nullptr;
    PlaneSpec src, src_alpha, dst, dst_alpha;
    // Widths of the aligned kernels are multiples of this (16 or 32).
    int aligned_width_unit = 32;
    // False where a documented write reaches past the lines its destination
    // plane spans (a change of standard into Y8PUV8I writes packed UYVY
    // bytes, two a pixel); such exports skip the guard-page runs.
    bool lines_bound_writes = true;
    // The vertical_mode values of the export's line-pair kernels (1 and 2
    // reduce, 3 doubles); empty for exports without a kernel table.
    std::vector<int32_t> pair_modes;
    // The export-level reference: what the export writes for this request,
    // whichever kernel its own tests choose.
    std::function<void(const Request&)> reference;
};

std::vector<ExportUnderTest>& RegisteredExports();

struct Registration {
    explicit Registration(std::vector<ExportUnderTest> exports);
};

// How a generic request places its planes.
struct RequestStyle {
    bool aligned = false;           // every plane 16-aligned, pitches of whole blocks
    int32_t width = -1;             // -1: random
    int32_t height = -1;            // -1: random
    int bottom_up_percent = 30;
    int32_t residue = -1;           // destination residue modulo 16, -1: random allowed
    GuardPage guard_page = GuardPage::kNone;
    // Even widths only: a last odd pixel of a 4:2:2 line is not consumed, so
    // such lines drift from the pitch and their span is not the plane's.
    bool even_width = false;
    // One of the export's line-pair modes (scan_mode 1 or 2), with the
    // request filled as a host fills it: the source walked from line starts
    // with a skip of 0 (-1 bottom-up), the destination's skip the pitch less
    // the bytes of a line's pairs. Exports without pair modes stay in frame
    // mode.
    bool pair_mode = false;
};

// A random request for `e` within the documented envelope: frame line
// addressing, random flags, matrices, ranges and alpha values, planes at
// random allowed addresses with random pitches, top-down or bottom-up.
Request BuildGenericRequest(Rng& rng, Scene& scene, const ExportUnderTest& e, const RequestStyle& style);

}  // namespace zenk::test
