#include "references.h"

#include <algorithm>

#include "support/test_picture.h"

namespace zenk::test {
namespace {

// The weights of one set, 15 fractional bits.
struct ReferenceWeights {
    int kr, kg, kb, cb_b, cb_g, cb_r, cr_r, cr_g, cr_b, luma_offset;
};

// The set a request selects, given what host option 128 answers.
ReferenceWeights SelectWeights(const ZenkConversionRequest& r, int32_t host_option) {
    //                                 Kr     Kg     Kb    CbB     CbG    CbR    CrR     CrG    CrB  offset
    static const ReferenceWeights k601[3] = {{8414, 16519, 3208, 14392, -9535, -4857, 14392, -12051, -2340, 16},
                                             {9759, 19160, 3721, 16448, -10897, -5551, 16448, -13773, -2675, 0},
                                             {9798, 19235, 3735, 14392, -9535, -4857, 14392, -12051, -2340, 0}};
    static const ReferenceWeights k709[3] = {{5983, 20127, 2032, 14392, -11094, -3298, 14392, -13073, -1320, 16},
                                             {6966, 23436, 2366, 16448, -12679, -3769, 16448, -14940, -1508, 0},
                                             {6966, 23436, 2366, 14392, -11094, -3298, 14392, -13073, -1320, 0}};
    const int set = r.full_range == 0 ? 0 : (host_option != 0 ? 1 : 2);
    return r.dst_matrix == 1 ? k601[set] : k709[set];
}

int Scale(int sum) { return (sum + 16384) >> 15; }

// The samples of one pair as the kernels arrange them: (B0, G0, R0, B1) and
// (R0, B1, G1, R1) may come from different pixels; the arithmetic takes them
// as given.
struct PairSamples {
    int b0, g0, r0, b1, g1, r1;
};

// One line of one picture.
struct LineJob {
    const uint8_t* src;
    uint8_t* dst;     // packed pixels, or luma
    uint8_t* chroma;  // Y8PUV8I only
    uint8_t* alpha;   // BGR32 with an alpha plane only
};

class Encoder {
public:
    Encoder(const ZenkConversionRequest& r, const EncodeKernel& k, int32_t host_option)
        : r_(r), k_(k), w_(SelectWeights(r, host_option)) {}

    int PairBytes() const { return k_.layout == YuvLayout::kPlanar ? 2 : 4; }
    int PixelBytes() const { return k_.source == EncodeSource::kBgr32 ? 4 : 3; }
    uint8_t* ChromaOf(uint8_t* luma) const {
        return k_.layout == YuvLayout::kPlanar ? Step(luma, int64_t{r_.dst_stride} * r_.dst_height) : nullptr;
    }

    // Output pair `index` of a line: Y0, Y1 with the luma offset, Cb, Cr with
    // 128 added and saturated; with `doubled`, output pairs 2 * index (Y0
    // twice) and 2 * index + 1 (Y1 twice), both with the pair's chroma.
    void Emit(const LineJob& job, int index, const PairSamples& p, bool doubled = false) const {
        const int y0 = Scale(w_.kb * p.b0 + w_.kg * p.g0 + w_.kr * p.r0) + w_.luma_offset;
        const int y1 = Scale(w_.kb * p.b1 + w_.kg * p.g1 + w_.kr * p.r1) + w_.luma_offset;
        const uint8_t cb = static_cast<uint8_t>(std::min(Scale(w_.cb_b * p.b0 + w_.cb_g * p.g0 + w_.cb_r * p.r0) + 128, 255));
        const uint8_t cr = static_cast<uint8_t>(std::min(Scale(w_.cr_b * p.b1 + w_.cr_g * p.g1 + w_.cr_r * p.r1) + 128, 255));
        if (doubled) {
            Write(job, 2 * index, y0, y0, cb, cr);
            Write(job, 2 * index + 1, y1, y1, cb, cr);
        } else {
            Write(job, index, y0, y1, cb, cr);
        }
        if (job.alpha != nullptr) {
            job.alpha[2 * index] = job.src[8 * index + 3];
            job.alpha[2 * index + 1] = job.src[8 * index + 7];
        }
    }

    // Frame mode: one line, returns the pairs converted. The unaligned walk
    // takes singly the head pairs up to the first 16-byte boundary of the
    // first destination byte and the tail pairs after the 8-pixel groups
    // (lines narrower than 16 pixels all singly); a BGR24 single pair takes
    // R0 from the next even pixel and G1, R1 from the next odd pixel.
    int32_t FrameLine(const LineJob& job) const {
        const int32_t width = r_.width;
        const int n = PixelBytes();
        int32_t pairs = width > 1 ? width / 2 : 0, head = 0, tail = pairs;
        if (k_.aligned) {
            pairs = tail = width > 0 ? width / 8 * 4 : 0;
        } else {
            const int d = static_cast<int>(reinterpret_cast<uintptr_t>(job.dst) % 16);
            head = width < 16 ? pairs : d == 0 ? 0 : (16 - d) / 4;
            tail = head + (width - 2 * head) / 8 * 4;
        }
        for (int32_t i = 0; i < pairs; ++i) {
            const uint8_t* p0 = job.src + n * 2 * i;
            PairSamples s{p0[0], p0[1], p0[2], p0[n], p0[n + 1], p0[n + 2]};
            if ((i < head || i >= tail) && k_.source == EncodeSource::kBgr24) {
                s.r0 = p0[8];
                s.g1 = p0[10];
                s.r1 = p0[11];
            }
            Emit(job, i, s);
        }
        return pairs;
    }

    // The pair modes: output pair i from source pixels 2 * step * i and
    // 2 * step * i + step when reducing by `step` (2 or 4); from pixels 2i
    // and 2i + 1 written twice when doubling (`step` 1).
    void PairModeLine(const LineJob& job, int step) const {
        for (int32_t i = 0; i < std::max(r_.width, 0) / 2; ++i) {
            const uint8_t* p0 = job.src + 4 * 2 * step * i;
            const uint8_t* p1 = p0 + 4 * step;
            Emit(job, i, {p0[0], p0[1], p0[2], p1[0], p1[1], p1[2]}, step == 1);
        }
    }

private:
    void Write(const LineJob& job, int index, int y_first, int y_second, uint8_t cb, uint8_t cr) const {
        const auto y0 = static_cast<uint8_t>(ClampLuma(y_first, r_.clamp_luma)),
                   y1 = static_cast<uint8_t>(ClampLuma(y_second, r_.clamp_luma));
        if (k_.layout != YuvLayout::kPlanar) return WritePair(k_.layout, job.dst + 4 * index, {y0, y1, cb, cr});
        // Only luma of pixels 2 and 3 modulo 4 is clamped.
        const bool clamped = index % 2 == 1;
        job.dst[2 * index] = clamped ? y0 : static_cast<uint8_t>(y_first);
        job.dst[2 * index + 1] = clamped ? y1 : static_cast<uint8_t>(y_second);
        job.chroma[2 * index] = cb;
        job.chroma[2 * index + 1] = cr;
    }

    const ZenkConversionRequest& r_;
    const EncodeKernel& k_;
    ReferenceWeights w_;
};

}  // namespace

void ReferenceEncode(const ZenkConversionRequest& r, const EncodeKernel& k, int32_t host_option) {
    const Encoder enc(r, k, host_option);
    if (k.vertical_mode == 0) {
        LineJob job{r.src_plane, r.dst_plane, enc.ChromaOf(r.dst_plane), k.alpha_plane ? r.dst_alpha_plane : nullptr};
        for (int32_t line = 0; line < r.src_height; ++line) {
            const int32_t pairs = enc.FrameLine(job);
            job.src = Step(job.src, int64_t{pairs} * 2 * enc.PixelBytes() + r.src_skip);
            job.dst = Step(job.dst, int64_t{pairs} * enc.PairBytes() + r.dst_skip);
            if (job.chroma) job.chroma = Step(job.chroma, int64_t{pairs} * 2 + r.dst_skip);
            if (job.alpha) job.alpha = Step(job.alpha, int64_t{pairs} * 2 + r.dst_alpha_skip);
        }
        return;
    }
    // The pair modes address lines only for scan_mode 1 and 2, and convert
    // nothing when the source has no lines, whatever dst_height says.
    if (r.scan_mode != 1 && r.scan_mode != 2) return;
    if (r.src_height == 0) return;
    if (k.vertical_mode == 3) {
        // Source line n (stepping by src_skip) to destination lines 2n and
        // 2n + 1 (stepping by dst_stride).
        for (int32_t n = 0; n < r.src_height; ++n) {
            const uint8_t* src = Step(r.src_plane, int64_t{n} * r.src_skip);
            for (int copy = 0; copy < 2; ++copy) {
                uint8_t* dst = Step(r.dst_plane, (2 * int64_t{n} + copy) * r.dst_stride);
                enc.PairModeLine({src, dst, enc.ChromaOf(dst), nullptr}, 1);
            }
        }
        return;
    }
    // Reduction. The destination runs on from the end of each line's pairs
    // by dst_skip.
    const int64_t line_bytes = int64_t{std::max(r.width, 0) / 2} * enc.PairBytes();
    const int step = k.vertical_mode == 1 ? 2 : 4;
    for (int32_t n = 0; n < r.dst_height; ++n) {
        uint8_t* dst = Step(r.dst_plane, n * (line_bytes + r.dst_skip));
        enc.PairModeLine({ReducedSourceLine(r, step, n), dst, enc.ChromaOf(dst), nullptr}, step);
    }
}

}  // namespace zenk::test
