// Source unpacking, destination packing and the two line walks (frame and
// pair mode) of the YUV-to-RGB kernels. A kernel is a source format, a
// destination format and an access policy; the arithmetic is Decode8.
#include "yuv_to_rgb_kernels.h"

#include <cstring>

#include "decode.h"
#include "frame/line_addressing.h"

namespace zenk::yuv_to_rgb {
namespace {

// ---- Sources ------------------------------------------------------------------------

// Running source pointers: the packed line or the luma plane, the chroma
// plane, the alpha plane.
struct SourceCursor {
    const uint8_t* pixels;
    const uint8_t* chroma;
    const uint8_t* alpha;
};

inline __m128i Load32(const uint8_t* p) {
    int32_t v;
    std::memcpy(&v, p, 4);
    return _mm_cvtsi32_si128(v);
}

inline __m128i Load16(const uint8_t* p) {
    uint16_t v;
    std::memcpy(&v, p, 2);
    return _mm_cvtsi32_si128(v);
}

inline __m128i Widen(__m128i bytes) { return _mm_unpacklo_epi8(bytes, _mm_setzero_si128()); }

// Packed words: chroma in the low byte, luma in the high byte.
struct UyvyUnpack {
    static YuvWords Words(__m128i v) {
        return {_mm_and_si128(v, _mm_set1_epi16(0x00FF)), _mm_srli_epi16(v, 8), _mm_setzero_si128()};
    }
};

// Packed words: luma in the low byte, chroma in the high byte.
struct YuyvUnpack {
    static YuvWords Words(__m128i v) {
        return {_mm_srli_epi16(v, 8), _mm_and_si128(v, _mm_set1_epi16(0x00FF)), _mm_setzero_si128()};
    }
};

// Cb, Cr, Y0, Y1: the two middle bytes of each group change places, which
// gives the UYVY16I order Cb, Y0, Cr, Y1.
struct UvyyUnpack {
    static YuvWords Words(__m128i v) {
        const __m128i outer = _mm_and_si128(v, _mm_set1_epi32(static_cast<int>(0xFF0000FFu)));
        const __m128i cr = _mm_slli_epi32(_mm_and_si128(v, _mm_set1_epi32(0x0000FF00)), 8);
        const __m128i y0 = _mm_srli_epi32(_mm_and_si128(v, _mm_set1_epi32(0x00FF0000)), 8);
        return UyvyUnpack::Words(_mm_or_si128(outer, _mm_or_si128(cr, y0)));
    }
};

// One plane of 2-byte pixels; a block is 16 bytes, a pair 4.
template <class Unpack>
struct PackedSource {
    static SourceCursor Start(const Request&, const uint8_t* line) { return {line, nullptr, nullptr}; }
    static YuvWords Block(SourceCursor& s) {
        const YuvWords w = Unpack::Words(LoadU(s.pixels));
        s.pixels += 16;
        return w;
    }
    static YuvWords Pair(SourceCursor& s) {
        const YuvWords w = Unpack::Words(Load32(s.pixels));
        s.pixels += 4;
        return w;
    }
    static void NextLine(SourceCursor& s, const Request& r) { s.pixels = Advance(s.pixels, r.src_skip); }
};

// The chroma plane of a Y8PUV8I picture lies src_stride * src_height bytes
// after its luma plane. Every line, pair-mode lines included, finds its
// chroma line at that distance from its luma line.
inline const uint8_t* ChromaLine(const Request& r, const uint8_t* luma_line) {
    const uintptr_t distance = static_cast<uintptr_t>(static_cast<intptr_t>(r.src_stride)) *
                               static_cast<uintptr_t>(static_cast<intptr_t>(r.src_height));
    return reinterpret_cast<const uint8_t*>(reinterpret_cast<uintptr_t>(luma_line) + distance);
}

// Luma plane and interleaved chroma plane, one byte a pixel each; both
// planes share the skip.
struct PlanarSource {
    static SourceCursor Start(const Request& r, const uint8_t* line) { return {line, ChromaLine(r, line), nullptr}; }
    static YuvWords Block(SourceCursor& s) {
        const YuvWords w = {Widen(Load64(s.chroma)), Widen(Load64(s.pixels)), _mm_setzero_si128()};
        s.pixels += 8;
        s.chroma += 8;
        return w;
    }
    static YuvWords Pair(SourceCursor& s) {
        const YuvWords w = {Widen(Load16(s.chroma)), Widen(Load16(s.pixels)), _mm_setzero_si128()};
        s.pixels += 2;
        s.chroma += 2;
        return w;
    }
    static void NextLine(SourceCursor& s, const Request& r) {
        s.pixels = Advance(s.pixels, r.src_skip);
        s.chroma = Advance(s.chroma, r.src_skip);
    }
};

// A colour source plus its alpha plane (any alignment, one byte a pixel).
template <class Colour>
struct WithAlphaPlane {
    static SourceCursor Start(const Request& r, const uint8_t* line) {
        SourceCursor s = Colour::Start(r, line);
        s.alpha = r.src_alpha_plane;
        return s;
    }
    static YuvWords Block(SourceCursor& s) {
        YuvWords w = Colour::Block(s);
        w.alpha = Widen(Load64(s.alpha));
        s.alpha += 8;
        return w;
    }
    static YuvWords Pair(SourceCursor& s) {
        YuvWords w = Colour::Pair(s);
        w.alpha = Widen(Load16(s.alpha));
        s.alpha += 2;
        return w;
    }
    static void NextLine(SourceCursor& s, const Request& r) {
        Colour::NextLine(s, r);
        s.alpha = Advance(s.alpha, r.src_alpha_skip);
    }
};

// ---- Destinations -------------------------------------------------------------------

// Unaligned 16-byte stores, for a body that does not start on a 16-byte
// boundary.
struct UnalignedStores {
    static void Store(void* p, __m128i v) { StoreU(p, v); }
};

template <AlphaForm kForm>
struct Bgr32 {
    static constexpr AlphaForm kAlpha = kForm;
    static constexpr int kBlockShift = 3;  // blocks of 8 pixels

    static __m128i AlphaWords(const DecodeConstants& k, const YuvWords& w) {
        return kForm == AlphaForm::kPlane ? EvenFirst(w.alpha) : k.alpha;
    }
    static int32_t HeadPairs(const uint8_t* d) { return Bgr32HeadPairs(d); }
    template <class Src, class Store>
    static void Block(const DecodeConstants& k, SourceCursor& s, uint8_t*& d) {
        const YuvWords w = Src::Block(s);
        __m128i px[2];
        PackBgra(Decode8(k, w), AlphaWords(k, w), px);
        Store::Store(d, px[0]);
        Store::Store(d + 16, px[1]);
        d += 32;
    }
    template <class Src>
    static void Pair(const DecodeConstants& k, SourceCursor& s, uint8_t*& d) {
        const YuvWords w = Src::Pair(s);
        __m128i px[2];
        PackBgra(Decode8(k, w), AlphaWords(k, w), px);
        Store64(d, px[0]);
        d += 8;
    }
};

struct Bgr24 {
    static constexpr AlphaForm kAlpha = AlphaForm::kNone;
    static constexpr int kBlockShift = 4;  // blocks of 16 pixels

    static int32_t HeadPairs(const uint8_t* d) { return Bgr24HeadPairs(d); }
    template <class Src, class Store>
    static void Block(const DecodeConstants& k, SourceCursor& s, uint8_t*& d) {
        __m128i px[4];
        PackBgra(Decode8(k, Src::Block(s)), k.alpha, px);
        PackBgra(Decode8(k, Src::Block(s)), k.alpha, px + 2);
        const __m128i t0 = PackFourBgr(px[0]), t1 = PackFourBgr(px[1]);
        const __m128i t2 = PackFourBgr(px[2]), t3 = PackFourBgr(px[3]);
        Store::Store(d, _mm_or_si128(t0, _mm_slli_si128(t1, 12)));
        Store::Store(d + 16, _mm_or_si128(_mm_srli_si128(t1, 4), _mm_slli_si128(t2, 8)));
        Store::Store(d + 32, _mm_or_si128(_mm_srli_si128(t2, 8), _mm_slli_si128(t3, 4)));
        d += 48;
    }
    // Two pixels are six bytes: a 4-byte store at d and one at d + 2, which
    // overlap by two bytes, so that nothing past the pair is touched.
    template <class Src>
    static void Pair(const DecodeConstants& k, SourceCursor& s, uint8_t*& d) {
        __m128i px[2];
        PackBgra(Decode8(k, Src::Pair(s)), k.alpha, px);
        const __m128i six = PackFourBgr(px[0]);
        const int32_t first = _mm_cvtsi128_si32(six), second = _mm_cvtsi128_si32(_mm_srli_si128(six, 2));
        std::memcpy(d, &first, 4);
        std::memcpy(d + 2, &second, 4);
        d += 6;
    }
};

// ---- Line walks -----------------------------------------------------------------------

// One line. Aligned kernels convert whole blocks and leave the rest of the
// line as it was. The others convert head pairs up to the destination's
// first 16-byte boundary, blocks, then tail pairs; a line shorter than
// kAllPairsBelow pixels goes in pairs. A last odd pixel is never converted.
template <class Src, class Dst, class A, int32_t kAllPairsBelow>
inline void ConvertLine(const DecodeConstants& k, SourceCursor& s, uint8_t*& d, int32_t width) {
    int32_t head = 0, body = width >> Dst::kBlockShift, tail = 0;
    if constexpr (!A::kAligned) {
        head = width < kAllPairsBelow ? width >> 1 : Dst::HeadPairs(d);
        body = (width - 2 * head) >> Dst::kBlockShift;
        tail = (width - 2 * head - (body << Dst::kBlockShift)) >> 1;
    }
    for (int32_t i = 0; i < head; ++i) Dst::template Pair<Src>(k, s, d);
    // The head brings every supported line start to a boundary; a start it
    // cannot (odd for BGR24, off 8 bytes for BGR32, or a later line of an
    // aligned picture whose pitch is not a multiple of 16) gets the same
    // bytes through unaligned stores instead of a fault.
    if (Aligned16(d)) {
        for (int32_t i = 0; i < body; ++i) Dst::template Block<Src, A>(k, s, d);
    } else {
        for (int32_t i = 0; i < body; ++i) Dst::template Block<Src, UnalignedStores>(k, s, d);
    }
    for (int32_t i = 0; i < tail; ++i) Dst::template Pair<Src>(k, s, d);
}

// Frame kernels walk the picture with one running pointer per plane and the
// request's skips.
template <class Src, class Dst, class A>
void FrameKernel(const Request* r) {
    const DecodeConstants k(*r, Dst::kAlpha);
    SourceCursor s = Src::Start(*r, r->src_plane);
    uint8_t* d = r->dst_plane;
    Prefetch(r->src_plane);
    for (int32_t line = 0; line < r->src_height; ++line) {
        ConvertLine<Src, Dst, A, 16>(k, s, d, r->width);
        Src::NextLine(s, *r);
        d = Advance(d, r->dst_skip);
    }
    A::Finish();
}

// Pair-mode kernels take their source line starts from the line addressing
// and run the destination on from the end of each line by dst_skip. Lines
// are split like those of the unaligned kernels, except that a line shorter
// than 8 pixels (not 16) goes in pairs.
template <class Src, class Dst, class A>
void PairModeWalk(const Request* r) {
    const DecodeConstants k(*r, Dst::kAlpha);
    const LineAddressSet lines = PairModeLines(r);
    Prefetch(r->src_plane);
    WalkLinePairs(lines, [&](const uint8_t* src_line, uint8_t*& dst) {
        SourceCursor s = Src::Start(*r, src_line);
        ConvertLine<Src, Dst, A, 8>(k, s, dst, r->width);
    });
    A::Finish();
}

// One pair-mode kernel serves all four variants of its column; its body
// stores bypass the cache when the host asks for streaming stores.
template <class Src, class Dst>
void PairModeKernel(const Request* r) {
    if (r->use_streaming_stores)
        PairModeWalk<Src, Dst, AnyStreaming>(r);
    else
        PairModeWalk<Src, Dst, AnyCached>(r);
}

using Uyvy = PackedSource<UyvyUnpack>;
using Yuyv = PackedSource<YuyvUnpack>;
using Uvyy = PackedSource<UvyyUnpack>;
using WordAlpha = Bgr32<AlphaForm::kWord>;
using DwordAlpha = Bgr32<AlphaForm::kDword>;
using PlaneAlpha = Bgr32<AlphaForm::kPlane>;

// The aligned cached kernel keeps the word form of the constant alpha; the
// other three use the dword form.
template <class Src>
constexpr KernelQuad WordThenDwordAlpha() {
    return {{&FrameKernel<Src, WordAlpha, AlignedCached>, &FrameKernel<Src, DwordAlpha, AlignedStreaming>,
             &FrameKernel<Src, DwordAlpha, AnyCached>, &FrameKernel<Src, DwordAlpha, AnyStreaming>}};
}

}  // namespace

const KernelQuad kUyvyToBgr32 = ZENK_KERNEL_QUAD(FrameKernel, Uyvy, WordAlpha);
const KernelQuad kYuyvToBgr32 = WordThenDwordAlpha<Yuyv>();
const Kernel kUyvyToBgr32Fields = &PairModeKernel<Uyvy, WordAlpha>;

const KernelQuad kUyvyToBgr24 = ZENK_KERNEL_QUAD(FrameKernel, Uyvy, Bgr24);
const KernelQuad kYuyvToBgr24 = ZENK_KERNEL_QUAD(FrameKernel, Yuyv, Bgr24);
const KernelQuad kUvyyToBgr24 = ZENK_KERNEL_QUAD(FrameKernel, Uvyy, Bgr24);
const KernelQuad kPlanarToBgr24 = ZENK_KERNEL_QUAD(FrameKernel, PlanarSource, Bgr24);

const KernelQuad kPlanarToBgr32 = WordThenDwordAlpha<PlanarSource>();
const Kernel kPlanarToBgr32Fields = &PairModeKernel<PlanarSource, DwordAlpha>;

const KernelQuad kYuyvAlphaToBgr32 = ZENK_KERNEL_QUAD(FrameKernel, WithAlphaPlane<Yuyv>, PlaneAlpha);
const KernelQuad kUyvyAlphaToBgr32 = ZENK_KERNEL_QUAD(FrameKernel, WithAlphaPlane<Uyvy>, PlaneAlpha);
// Ordinary stores in every entry: use_streaming_stores chooses between two
// identical kernels.
const KernelQuad kPlanarAlphaToBgr32 = {{&FrameKernel<WithAlphaPlane<PlanarSource>, PlaneAlpha, AlignedCached>,
                                         &FrameKernel<WithAlphaPlane<PlanarSource>, PlaneAlpha, AlignedCached>,
                                         &FrameKernel<WithAlphaPlane<PlanarSource>, PlaneAlpha, AnyCached>,
                                         &FrameKernel<WithAlphaPlane<PlanarSource>, PlaneAlpha, AnyCached>}};

}  // namespace zenk::yuv_to_rgb
