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

// ---- Sources ------------------------------------------------------------------------

// Running source pointers: the packed line or the luma plane, the chroma
// plane, the alpha plane.
struct SourceCursor {
    const uint8_t* pixels;
    const uint8_t* chroma;
    const uint8_t* alpha;
};

template <class S>
ZENK_ARITHMETIC typename S::V Widen(typename S::V bytes) { return S::Lo8(bytes, S::Zero()); }

// The source layouts: packed 4:2:2 (one plane of 2-byte pixels) in three
// byte orders, or Y8PUV8I, a luma plane and an interleaved chroma plane of
// one byte a pixel each, which share the skip.
enum class YuvLayout { kUyvy, kYuyv, kUvyy, kPlanar };

// Packed 4:2:2 words as YuvWords, without alpha.
template <YuvLayout kLayout, class S>
ZENK_ARITHMETIC YuvWords<S> Unpack(typename S::V v) {
    constexpr Packed kOrder = kLayout == YuvLayout::kYuyv   ? Packed::kYuyv
                              : kLayout == YuvLayout::kUvyy ? Packed::kUvyy
                                                            : Packed::kUyvy;
    const Words422<S> w = UnpackWords<kOrder, S>(v);
    return {w.chroma, w.luma, S::Zero()};
}

// A source of layout kLayout and, with kAlphaPlane, an alpha plane (any
// alignment, one byte a pixel). Read<S, 8>(s, calls) reads a block of eight
// pixels (each further lane of a wider layer the block `calls` blocks on: a
// destination block may take several), Read<S, 2>(s, 0) one pixel pair; both
// move the cursor on past what they read. Skip(s, blocks) moves it on by the
// blocks the other lanes read.
template <YuvLayout kLayout, bool kAlphaPlane = false>
struct Source {
    static constexpr bool kPlanar = kLayout == YuvLayout::kPlanar;
    static constexpr int32_t kPixelBytes = kPlanar ? 1 : 2;

    // The chroma plane of a Y8PUV8I picture lies src_stride * src_height
    // bytes after its luma plane. Every line, pair-mode lines included, finds
    // its chroma line at that distance from its luma line.
    static SourceCursor Start(const Request& r, const uint8_t* line) {
        const uintptr_t distance = static_cast<uintptr_t>(static_cast<intptr_t>(r.src_stride)) *
                                   static_cast<uintptr_t>(static_cast<intptr_t>(r.src_height));
        return {line, kPlanar ? reinterpret_cast<const uint8_t*>(reinterpret_cast<uintptr_t>(line) + distance) : nullptr,
                kAlphaPlane ? r.src_alpha_plane : nullptr};
    }
    template <class S, int32_t kPixels>
    static YuvWords<S> Read(SourceCursor& s, int32_t calls) {
        YuvWords<S> w;
        if constexpr (kPlanar)
            w = {Widen<S>(LoadLow<S, kPixels>(s.chroma, kPixels * calls)),
                 Widen<S>(LoadLow<S, kPixels>(s.pixels, kPixels * calls)), S::Zero()};
        else
            w = Unpack<kLayout, S>(LoadLow<S, 2 * kPixels>(s.pixels, 2 * kPixels * calls));
        if constexpr (kAlphaPlane) w.alpha = Widen<S>(LoadLow<S, kPixels>(s.alpha, kPixels * calls));
        Move<kPixels>(s, 1);
        return w;
    }
    static void Skip(SourceCursor& s, int32_t blocks) { Move<8>(s, blocks); }
    template <int32_t kPixels>
    static void Move(SourceCursor& s, int32_t count) {
        s.pixels += kPixels * kPixelBytes * count;
        if constexpr (kPlanar) s.chroma += kPixels * count;
        if constexpr (kAlphaPlane) s.alpha += kPixels * count;
    }
    static void NextLine(SourceCursor& s, const Request& r) {
        s.pixels = Advance(s.pixels, r.src_skip);
        if constexpr (kPlanar) s.chroma = Advance(s.chroma, r.src_skip);
        if constexpr (kAlphaPlane) s.alpha = Advance(s.alpha, r.src_alpha_skip);
    }
};

// ---- Destinations -------------------------------------------------------------------

// A destination's Block<S, Src, Store>(k, s, d) converts one block in each
// active lane of S; Pair<S, Src>(k, s, d) one pixel pair.

template <AlphaForm kForm>
struct Bgr32 {
    static constexpr AlphaForm kAlpha = kForm;
    static constexpr int kBlockShift = 3;  // blocks of 8 pixels

    template <class S, class K>
    static typename S::V AlphaWords(const K& k, const YuvWords<S>& w) {
        return kForm == AlphaForm::kPlane ? EvenFirst<S>(w.alpha) : k.alpha;
    }
    static int32_t HeadPairs(const uint8_t* d) { return UnitsToBoundary(d, 8); }
    template <class S, class Src, class Store, class K>
    static void Block(const K& k, SourceCursor& s, uint8_t*& d) {
        const YuvWords<S> w = Src::template Read<S, 8>(s, 1);
        typename S::V px[2];
        PackBgra<S>(Decode8<S>(k, w), AlphaWords<S>(k, w), px);
        S::template PutBlock<Store, 2>(d, px);
        d += 32 * S::kActiveLanes;
        Src::Skip(s, S::kActiveLanes - 1);
    }
    template <class S, class Src, class K>
    static void Pair(const K& k, SourceCursor& s, uint8_t*& d) {
        const YuvWords<S> w = Src::template Read<S, 2>(s, 0);
        typename S::V px[2];
        PackBgra<S>(Decode8<S>(k, w), AlphaWords<S>(k, w), px);
        S::Put64(d, px[0], 0);
        d += 8;
    }
};

struct Bgr24 {
    static constexpr AlphaForm kAlpha = AlphaForm::kNone;
    static constexpr int kBlockShift = 4;  // blocks of 16 pixels

    // Pairs of 6 bytes: from the table, for even line starts.
    static int32_t HeadPairs(const uint8_t* d) { return kBgr24HeadPairs[(reinterpret_cast<uintptr_t>(d) >> 1) & 7]; }
    template <class S, class Src, class Store, class K>
    static void Block(const K& k, SourceCursor& s, uint8_t*& d) {
        typename S::V px[4];
        PackBgra<S>(Decode8<S>(k, Src::template Read<S, 8>(s, 2)), k.alpha, px);
        PackBgra<S>(Decode8<S>(k, Src::template Read<S, 8>(s, 2)), k.alpha, px + 2);
        typename S::V out[3];
        PackBgr24<S>(px, out);
        S::template PutBlock<Store, 3>(d, out);
        d += 48 * S::kActiveLanes;
        Src::Skip(s, 2 * (S::kActiveLanes - 1));
    }
    // Two pixels are six bytes: a 4-byte store at d and one at d + 2, which
    // overlap by two bytes, so that nothing past the pair is touched.
    template <class S, class Src, class K>
    static void Pair(const K& k, SourceCursor& s, uint8_t*& d) {
        typename S::V px[2];
        PackBgra<S>(Decode8<S>(k, Src::template Read<S, 2>(s, 0)), k.alpha, px);
        const auto six = PackFourBgr<S>(px[0]);
        S::Put32(d, six, 0);
        S::Put32(d + 2, S::template ShrBytes<2>(six), 0);
        d += 6;
    }
};

// ---- The line format ------------------------------------------------------------------

// One line on the vector layer Vec: pairs of pixels, blocks of Dst's pixels.
// Aligned kernels convert whole blocks; a line shorter than kSinglesBelow
// pixels goes in pairs: 16 in the frame kernels, 8 in the pair-mode ones,
// whose lines are otherwise split like those of the unaligned kernels. A
// wider layer converts a block in each lane at once.
template <class Vec, class Src, class Dst, int32_t kSinglesBelowPixels>
struct Line {
    using Vector = Vec;
    using Constants = DecodeConstants<Vec, Dst::kAlpha>;
    static constexpr int32_t kUnitPixels = 2, kBlockUnits = (1 << Dst::kBlockShift) / 2;
    static constexpr int32_t kSinglesBelow = kSinglesBelowPixels, kPrefetchEvery = 0;
    static constexpr MisalignedLine kMisaligned = MisalignedLine::kBlocksUnaligned;
    static constexpr bool kStreamEnds = false;

    Line(const Constants& k, const Request& r, const uint8_t* src_line, uint8_t* dst_line)
        : k(k), s(Src::Start(r, src_line)), dst(dst_line) {}
    int32_t HeadUnits() const { return Dst::HeadPairs(dst); }
    const void* Ahead() const { return s.pixels; }
    template <class Store, class Lanes = Vec>
    void Block() {
        Dst::template Block<Lanes, Src, Store>(k, s, dst);
    }
    void Single() { Dst::template Pair<typename Vec::template WithLanes<1>, Src>(k, s, dst); }
    void NextLine(const Request& r) {
        Src::NextLine(s, r);
        dst = Advance(dst, r.dst_skip);
    }

    const Constants& k;
    SourceCursor s;
    uint8_t* dst;
};

}  // namespace zenk::ZENK_ISA::yuv_to_rgb
