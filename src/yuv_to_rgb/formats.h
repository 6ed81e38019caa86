// Source unpacking and destination packing of the YUV-to-RGB kernels, and
// their line format for the walk (kernel/line_walk.h). A kernel is a source
// format, a destination format and an access policy; the arithmetic is
// Decode8.
#pragma once

#include "decode.h"
#include "kernel/line_walk.h"
#include "kernel/pixel_packing.h"
#include "yuv_to_rgb_kernels.h"

namespace zenk::ZENK_ISA::yuv_to_rgb {

// Head pairs of a destination line (kBgr24HeadPairs).
inline int32_t Bgr32HeadPairs(const uint8_t* line) {
    const uint32_t residue = AddressResidue16(line);
    return residue ? static_cast<int32_t>((16 - residue) >> 3) : 0;
}
inline int32_t Bgr24HeadPairs(const uint8_t* line) {
    return kBgr24HeadPairs[(reinterpret_cast<uintptr_t>(line) >> 1) & 7];
}


// ---- Sources ------------------------------------------------------------------------

// Running source pointers: the packed line or the luma plane, the chroma
// plane, the alpha plane.
struct SourceCursor {
    const uint8_t* pixels;
    const uint8_t* chroma;
    const uint8_t* alpha;
};

inline V Widen(V bytes) { return S::Lo8(bytes, S::Zero()); }

// Packed 4:2:2 words (kernel/pixel_packing.h) as YuvWords, without alpha.
inline YuvWords FromPacked(const Words422<S>& w) { return {w.chroma, w.luma, S::Zero()}; }

struct UyvyUnpack {
    static YuvWords Words(V v) { return FromPacked(UnpackUyvy<S>(v)); }
};
struct YuyvUnpack {
    static YuvWords Words(V v) { return FromPacked(UnpackYuyv<S>(v)); }
};
// Cb, Cr, Y0, Y1: the two middle bytes of each pair change places, which
// gives the UYVY16I order Cb, Y0, Cr, Y1.
struct UvyyUnpack {
    static YuvWords Words(V v) { return UyvyUnpack::Words(ExchangeMiddleBytes<S>(v)); }
};

// One plane of 2-byte pixels; a block is 16 bytes, a pair 4.
template <class Unpack>
struct PackedSource {
    static SourceCursor Start(const Request&, const uint8_t* line) { return {line, nullptr, nullptr}; }
    static YuvWords Block(SourceCursor& s) {
        const YuvWords w = Unpack::Words(S::LoadU(s.pixels));
        s.pixels += 16;
        return w;
    }
    static YuvWords Pair(SourceCursor& s) {
        const YuvWords w = Unpack::Words(S::Load32(s.pixels));
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
        const YuvWords w = {Widen(S::Load64(s.chroma)), Widen(S::Load64(s.pixels)), S::Zero()};
        s.pixels += 8;
        s.chroma += 8;
        return w;
    }
    static YuvWords Pair(SourceCursor& s) {
        const YuvWords w = {Widen(S::Load16(s.chroma)), Widen(S::Load16(s.pixels)), S::Zero()};
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
        w.alpha = Widen(S::Load64(s.alpha));
        s.alpha += 8;
        return w;
    }
    static YuvWords Pair(SourceCursor& s) {
        YuvWords w = Colour::Pair(s);
        w.alpha = Widen(S::Load16(s.alpha));
        s.alpha += 2;
        return w;
    }
    static void NextLine(SourceCursor& s, const Request& r) {
        Colour::NextLine(s, r);
        s.alpha = Advance(s.alpha, r.src_alpha_skip);
    }
};

// ---- Destinations -------------------------------------------------------------------

template <AlphaForm kForm>
struct Bgr32 {
    static constexpr AlphaForm kAlpha = kForm;
    static constexpr int kBlockShift = 3;  // blocks of 8 pixels

    static V AlphaWords(const DecodeConstants& k, const YuvWords& w) {
        return kForm == AlphaForm::kPlane ? EvenFirst(w.alpha) : k.alpha;
    }
    static int32_t HeadPairs(const uint8_t* d) { return Bgr32HeadPairs(d); }
    template <class Src, class Store>
    static void Block(const DecodeConstants& k, SourceCursor& s, uint8_t*& d) {
        const YuvWords w = Src::Block(s);
        V px[2];
        PackBgra(Decode8(k, w), AlphaWords(k, w), px);
        Store::Store(d, px[0]);
        Store::Store(d + 16, px[1]);
        d += 32;
    }
    template <class Src>
    static void Pair(const DecodeConstants& k, SourceCursor& s, uint8_t*& d) {
        const YuvWords w = Src::Pair(s);
        V px[2];
        PackBgra(Decode8(k, w), AlphaWords(k, w), px);
        S::Store64(d, px[0]);
        d += 8;
    }
};

struct Bgr24 {
    static constexpr AlphaForm kAlpha = AlphaForm::kNone;
    static constexpr int kBlockShift = 4;  // blocks of 16 pixels

    static int32_t HeadPairs(const uint8_t* d) { return Bgr24HeadPairs(d); }
    template <class Src, class Store>
    static void Block(const DecodeConstants& k, SourceCursor& s, uint8_t*& d) {
        V px[4];
        PackBgra(Decode8(k, Src::Block(s)), k.alpha, px);
        PackBgra(Decode8(k, Src::Block(s)), k.alpha, px + 2);
        V out[3];
        PackBgr24<S>(px, out);
        Store::Store(d, out[0]);
        Store::Store(d + 16, out[1]);
        Store::Store(d + 32, out[2]);
        d += 48;
    }
    // Two pixels are six bytes: a 4-byte store at d and one at d + 2, which
    // overlap by two bytes, so that nothing past the pair is touched.
    template <class Src>
    static void Pair(const DecodeConstants& k, SourceCursor& s, uint8_t*& d) {
        V px[2];
        PackBgra(Decode8(k, Src::Pair(s)), k.alpha, px);
        const V six = PackFourBgr<S>(px[0]);
        S::Store32(d, six);
        S::Store32(d + 2, S::ShrBytes<2>(six));
        d += 6;
    }
};

// ---- The line format ------------------------------------------------------------------

// One line: pairs of pixels, blocks of Dst's pixels. Aligned kernels convert
// whole blocks; a line shorter than kSinglesBelow pixels goes in pairs.
template <class Src, class Dst, int32_t kSinglesBelowPixels>
struct Line {
    static constexpr int32_t kUnitPixels = 2, kBlockUnits = (1 << Dst::kBlockShift) / 2;
    static constexpr int32_t kSinglesBelow = kSinglesBelowPixels, kPrefetchEvery = 0;
    static constexpr MisalignedLine kMisaligned = MisalignedLine::kBlocksUnaligned;
    static constexpr bool kStreamEnds = false;

    int32_t HeadUnits() const { return Dst::HeadPairs(dst); }
    const void* Ahead() const { return s.pixels; }
    template <class Store>
    void Block() {
        Dst::template Block<Src, Store>(k, s, dst);
    }
    void Single() { Dst::template Pair<Src>(k, s, dst); }
    void NextLine(const Request& r) {
        Src::NextLine(s, r);
        dst = Advance(dst, r.dst_skip);
    }

    const DecodeConstants& k;
    SourceCursor s;
    uint8_t* dst;
};

// Frame kernels walk the picture with one running pointer per plane and the
// request's skips.
template <class Src, class Dst, class A>
ZENK_KERNEL_ENTRY void FrameKernel(const Request* r) {
    const DecodeConstants k(*r, Dst::kAlpha);
    Line<Src, Dst, 16> line{k, Src::Start(*r, r->src_plane), r->dst_plane};
    WalkFrame<decltype(line), A>(line, *r);
}

// Pair-mode kernels take their source line starts from the line addressing
// and run the destination on from the end of each line by dst_skip. Lines
// are split like those of the unaligned kernels, except that a line shorter
// than 8 pixels (not 16) goes in pairs.
template <class Src, class Dst, class A>
ZENK_KERNEL_ENTRY void PairModeKernel(const Request* r) {
    const DecodeConstants k(*r, Dst::kAlpha);
    using L = Line<Src, Dst, 8>;
    WalkPairModeFrame<L, A>(*r, [&](const uint8_t* src_line, uint8_t* dst) {
        return L{k, Src::Start(*r, src_line), dst};
    });
}

}  // namespace zenk::ZENK_ISA::yuv_to_rgb
