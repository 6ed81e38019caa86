#include "references.h"

#include <algorithm>
#include <cmath>

#include "support/test_picture.h"

namespace zenk::test {
namespace {

// ---- Coefficients from first principles ------------------------------------------------

struct Standard {
    double kr, kb;
};
constexpr Standard kBt601{0.299, 0.114}, kBt709{0.2126, 0.0722};

// (Y, Cb, Cr) with Y in 0..1 and chroma in -0.5..0.5, through RGB, into the
// other standard.
void Convert(const Standard& from, const Standard& to, const double in[3], double out[3]) {
    const double r = in[0] + 2 * (1 - from.kr) * in[2];
    const double b = in[0] + 2 * (1 - from.kb) * in[1];
    const double g = (in[0] - from.kr * r - from.kb * b) / (1 - from.kr - from.kb);
    out[0] = to.kr * r + (1 - to.kr - to.kb) * g + to.kb * b;
    out[1] = (b - out[0]) / (2 * (1 - to.kb));
    out[2] = (r - out[0]) / (2 * (1 - to.kr));
}

// A change-of-standard set in 1/16384: (dY, Cb', Cr') each from (Cb, Cr).
struct MatrixChangeModel {
    int luma_cb, luma_cr;  // luma correction, scaled by 219/224
    int cb_cb, cb_cr;      // new Cb
    int cr_cb, cr_cr;      // new Cr
};

MatrixChangeModel Derive(const Standard& from, const Standard& to) {
    int c[3][2];
    for (int column = 0; column < 2; ++column) {
        const double unit[3] = {0, column == 0 ? 1.0 : 0.0, column == 1 ? 1.0 : 0.0};
        double out[3];
        Convert(from, to, unit, out);
        // Luma codes span 219 steps, chroma codes 224.
        c[0][column] = static_cast<int>(std::lround(out[0] * 16384 * 219 / 224));
        c[1][column] = static_cast<int>(std::lround(out[1] * 16384));
        c[2][column] = static_cast<int>(std::lround(out[2] * 16384));
    }
    return {c[0][0], c[0][1], c[1][0], c[1][1], c[2][0], c[2][1]};
}

int16_t Wrap16(int v) { return static_cast<int16_t>(static_cast<uint16_t>(v)); }

// Rounding of a 16-bit value with 8 fractional bits: +128 if `add_half`,
// then -128 if negative, both wrapping at 16 bits, then >> 8.
int ReferenceRound(int16_t value, bool add_half) {
    int16_t v = Wrap16(value + (add_half ? 128 : 0));
    if (v < 0) v = Wrap16(v - 128);
    return v >> 8;
}

// A pair's values before rounding: clamped luma, and the three sums with 8
// fractional bits saturated to 16 bits.
struct Unrounded {
    int y0, y1;
    int16_t dy, cb, cr;
};

struct Arithmetic {
    MatrixChangeModel set;
    bool clamp;

    Arithmetic(int32_t src_matrix, int32_t dst_matrix, bool clamp_luma)
        : set(src_matrix == 1 && dst_matrix == 0 ? Derive(kBt601, kBt709) : Derive(kBt709, kBt601)),
          clamp(clamp_luma) {}

    static int16_t Sum(int a, int cb, int b, int cr) {
        const int32_t s = (a * cb + b * cr) >> 6;
        return static_cast<int16_t>(std::clamp(s, -32768, 32767));
    }

    Unrounded Products(const YuvPairValues& p) const {
        const int cb = p.cb - 128, cr = p.cr - 128;
        return {ClampLuma(p.y0, clamp), ClampLuma(p.y1, clamp), Sum(set.luma_cb, cb, set.luma_cr, cr),
                Sum(set.cb_cb, cb, set.cb_cr, cr), Sum(set.cr_cb, cb, set.cr_cr, cr)};
    }

    YuvPairValues Finish(const Unrounded& u, int dy, int cb, int cr) const {
        return {SaturateByte(ClampLuma(u.y0 + dy, clamp)), SaturateByte(ClampLuma(u.y1 + dy, clamp)),
                SaturateByte(cb + 128), SaturateByte(cr + 128)};
    }

    static int Own(int16_t v) { return ReferenceRound(v, v >= 0); }

    YuvPairValues Pair(const YuvPairValues& p) const {
        const Unrounded u = Products(p);
        return Finish(u, Own(u.dy), Own(u.cb), Own(u.cr));
    }

    // Pairs k and k + 4 of a 16-pixel group share a lane: the second takes
    // its +128 step from the first's sign. With `crossed`, the first pair's
    // luma takes the second's correction and the second's luma skips the
    // -128 step.
    void Group(YuvPairValues p[8], bool crossed) const {
        for (int k = 0; k < 4; ++k) {
            const Unrounded a = Products(p[k]), b = Products(p[k + 4]);
            const int cb_a = Own(a.cb), cr_a = Own(a.cr);
            const int cb_b = ReferenceRound(b.cb, a.cb >= 0), cr_b = ReferenceRound(b.cr, a.cr >= 0);
            const int dy_b = ReferenceRound(b.dy, a.dy >= 0);
            int luma_a = Own(a.dy), luma_b = dy_b;
            if (crossed) {
                luma_a = dy_b;
                luma_b = Wrap16(b.dy + (a.dy >= 0 ? 128 : 0)) >> 8;
            }
            p[k] = Finish(a, luma_a, cb_a, cr_a);
            p[k + 4] = Finish(b, luma_b, cb_b, cr_b);
        }
    }
};

}  // namespace

// ---- Layouts ---------------------------------------------------------------------------------

// Where a layout keeps Y0, Y1, Cb and Cr of a pair.
const int kPlaces[3][4] = {{1, 3, 0, 2}, {0, 2, 1, 3}, {2, 3, 0, 1}};  // UYVY, YUYV, UVYY

YuvPairValues ReadPair(YuvLayout l, const uint8_t* b) {
    const int* at = kPlaces[static_cast<int>(l)];
    return {b[at[0]], b[at[1]], b[at[2]], b[at[3]]};
}

void WritePair(YuvLayout l, uint8_t* b, const YuvPairValues& p) {
    const int* at = kPlaces[static_cast<int>(l)];
    const uint8_t values[4] = {p.y0, p.y1, p.cb, p.cr};
    for (int i = 0; i < 4; ++i) b[at[i]] = values[i];
}

void ReferenceYuvKernel(const ZenkConversionRequest& r, const YuvKernelModel& k, bool aligned_kernel) {
    const Arithmetic math(r.src_matrix, r.dst_matrix, r.clamp_luma != 0);
    const int out_bytes = k.operation == YuvOperation::kSplit ? 2 : k.operation == YuvOperation::kWiden ? 8 : 4;
    const int group_pairs = k.operation == YuvOperation::kWiden ? 4 : 8;
    const int head_pair_bytes = k.operation == YuvOperation::kWiden ? 8 : 4;
    const uint8_t* src = r.src_plane;
    uint8_t* dst = r.dst_plane;
    uint8_t* chroma = Step(r.dst_plane, int64_t{r.dst_stride} * r.dst_height);
    const int32_t pairs_in_line = std::max(r.width, 0) / 2;

    for (int32_t line = 0; line < r.src_height; ++line) {
        // Which pairs go through groups: [group_begin, group_end).
        int32_t pairs = pairs_in_line, group_begin = 0, group_end = 0;
        if (aligned_kernel) {
            pairs = std::max(r.width, 0) / (2 * group_pairs) * group_pairs;
            group_end = pairs;
        } else if (r.width >= 16) {
            const uint32_t residue = static_cast<uint32_t>(reinterpret_cast<uintptr_t>(dst) & 15u);
            group_begin = residue ? static_cast<int32_t>(16 - residue) / head_pair_bytes : 0;
            group_end = group_begin + (pairs_in_line - group_begin) / group_pairs * group_pairs;
        }
        std::vector<YuvPairValues> values(static_cast<size_t>(pairs));
        for (int32_t i = 0; i < pairs; ++i) {
            const uint8_t* in = src + 4 * i;
            switch (k.operation) {
                case YuvOperation::kCopy:  // read and written as UYVY16I
                case YuvOperation::kReorder: WritePair(k.written_as, dst + 4 * i, ReadPair(k.read_as, in)); break;
                case YuvOperation::kSplit: {
                    const YuvPairValues p = ReadPair(YuvLayout::kUyvy, in);
                    dst[2 * i] = p.y0;
                    dst[2 * i + 1] = p.y1;
                    chroma[2 * i] = p.cb;
                    chroma[2 * i + 1] = p.cr;
                    break;
                }
                case YuvOperation::kWiden: {
                    const YuvPairValues p = ReadPair(YuvLayout::kUyvy, in);
                    const uint8_t alpha = static_cast<uint8_t>(r.alpha_value);
                    const uint8_t pixels[8] = {p.cr, p.cb, p.y0, alpha, p.cr, p.cb, p.y1, alpha};
                    for (int b = 0; b < 8; ++b) dst[8 * i + b] = pixels[b];
                    break;
                }
                case YuvOperation::kMatrix:
                case YuvOperation::kSharedMatrix: values[static_cast<size_t>(i)] = ReadPair(k.read_as, in); break;
            }
        }
        if (k.operation == YuvOperation::kMatrix || k.operation == YuvOperation::kSharedMatrix) {
            YuvPairValues* v = values.data();
            for (int32_t i = 0; i < pairs; ++i) {
                if (i < group_begin || i >= group_end) v[i] = math.Pair(v[i]);
                else if ((i - group_begin) % 8 == 0) math.Group(v + i, k.operation == YuvOperation::kSharedMatrix);
            }
            for (int32_t i = 0; i < pairs; ++i) WritePair(k.written_as, dst + 4 * i, v[i]);
        }
        src = Step(src, int64_t{4} * pairs + r.src_skip);
        dst = Step(dst, int64_t{out_bytes} * pairs + r.dst_skip);
        chroma = Step(chroma, int64_t{2} * pairs + r.dst_skip);
    }
}

void ReferenceYuvExport(const ZenkConversionRequest& r, YuvExport e) {
    using L = YuvLayout;
    using O = YuvOperation;
    // Per export: the kernel for the same standard (on an aligned and on any
    // other picture) and for a change of standard, and what the alignment
    // test asks for either: both planes 16-aligned with pitches in units of
    // 32 or 16 and widths of 16 (kBoth32, kBoth16), the destination alone
    // (kDestination16), or for the widening pitches of 32 and widths of 8.
    enum Test { kBoth32, kBoth16, kDestination16, kWide };
    struct Choice {
        YuvKernelModel same_aligned, same_any;
        Test same_test;
        YuvKernelModel change;
        Test change_test;
    };
    static const Choice kChoices[] = {
        // UYVY16I to UYVY16I, YUYV16I to YUYV16I
        {{O::kCopy}, {O::kCopy}, kBoth32, {O::kMatrix}, kBoth32},
        {{O::kCopy}, {O::kCopy}, kBoth32, {O::kMatrix, L::kYuyv, L::kYuyv}, kBoth32},
        // UYVY16I to YUYV16I and back: the same byte swap
        {{O::kReorder, L::kUyvy, L::kYuyv}, {O::kReorder, L::kUyvy, L::kYuyv}, kBoth32,
         {O::kMatrix, L::kUyvy, L::kYuyv}, kBoth32},
        {{O::kReorder, L::kUyvy, L::kYuyv}, {O::kReorder, L::kUyvy, L::kYuyv}, kBoth32,
         {O::kMatrix, L::kYuyv, L::kUyvy}, kBoth16},
        // UVYY16I to UYVY16I and back, UYVY16I to Y8PUV8I, UYVY16I to V8U8Y8A8I
        {{O::kReorder, L::kUvyy, L::kUyvy}, {O::kCopy}, kDestination16, {O::kSharedMatrix}, kDestination16},
        {{O::kReorder, L::kUyvy, L::kUvyy}, {O::kCopy}, kDestination16, {O::kSharedMatrix}, kDestination16},
        {{O::kSplit}, {O::kSplit}, kDestination16, {O::kSharedMatrix}, kDestination16},
        {{O::kWiden}, {O::kWiden}, kWide, {O::kWiden}, kWide},
    };
    auto passes = [&](Test t) {
        if (t == kWide) return PassesAlignment(r.dst_plane, r.dst_stride, r.width, 32, 8);
        const uint32_t unit = t == kBoth32 ? 32 : 16;
        return PassesAlignment(r.dst_plane, r.dst_stride, r.width, unit, 16) &&
               (t == kDestination16 || PassesAlignment(r.src_plane, r.src_stride, r.src_width, unit, 16));
    };
    const Choice& c = kChoices[static_cast<int>(e)];
    if (r.src_matrix != r.dst_matrix) return ReferenceYuvKernel(r, c.change, passes(c.change_test));
    const bool aligned = passes(c.same_test);
    ReferenceYuvKernel(r, aligned ? c.same_aligned : c.same_any, aligned);
}

}  // namespace zenk::test
