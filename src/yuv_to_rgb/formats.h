// The line format of the YUV-to-RGB kernels for the walk
// (kernel/line_walk.h): a source layout, a destination (BGR32 with its form
// of alpha, or BGR24) and the arithmetic of decode.h between them.
#pragma once

#include "decode.h"
#include "kernel/line_walk.h"
#include "yuv_to_rgb_kernels.h"

namespace zenk::ZENK_ISA::yuv_to_rgb {

// One line on the vector layer Vec: pixel pairs, blocks of 8 pixels into
// BGR32 or of 16 into BGR24 (kForm kNone). The source is of layout kLayout,
// and carries an alpha plane (one byte a pixel) where kForm is kPlane.
// Aligned kernels convert whole blocks; a line shorter than kSinglesBelow
// pixels goes in pairs: 16 in the frame kernels, 8 in the pair-mode ones,
// whose lines are otherwise split like those of the unaligned kernels.
template <class Vec, YuvLayout kLayout, AlphaForm kForm, int32_t kSinglesBelow>
struct Decoder : DecodeConstants<Vec, kForm> {
    using DecodeConstants<Vec, kForm>::DecodeConstants;
    using Vector = Vec;
    using enum Plane;
    static constexpr bool kPlanar = kLayout == YuvLayout::kPlanar, kBgr24 = kForm == AlphaForm::kNone;
    static constexpr int32_t kPixelBytes = kPlanar ? 1 : 2, kBlockPixels = kBgr24 ? 16 : 8;
    static constexpr int32_t kDstPixelBytes = kBgr24 ? 3 : 4;
    using Planes = Streams<Stream<kSource, 2 * kPixelBytes, kBlockPixels * kPixelBytes>,
                           Stream<kSourceChroma, 2, kBlockPixels, kPlanar>,
                           Stream<kSourceAlpha, 2, kBlockPixels, kForm == AlphaForm::kPlane>,
                           Stream<kDestination, 2 * kDstPixelBytes, kBlockPixels * kDstPixelBytes>>;
    static constexpr LineRule kRule{.unit_pixels = 2, .block_units = kBlockPixels / 2, .singles_below = kSinglesBelow};

    // 8-byte BGR32 pairs serve line starts on 8-byte boundaries; 6-byte
    // BGR24 pairs take theirs from the table, for even line starts.
    static int32_t HeadUnits(const uint8_t* dst) {
        if constexpr (kBgr24)
            return kBgr24HeadPairs[(reinterpret_cast<uintptr_t>(dst) >> 1) & 7];
        else
            return UnitsToBoundary(dst, 8);
    }

    // kPixels source pixels (8, or a pair) from pixel `first` of the block
    // or unit, as the decoder's words.
    template <int32_t kPixels, class At>
    YuvWords<typename At::L> Read(const At& at, int32_t first) const {
        using L = typename At::L;
        const auto widen = [](typename L::V bytes) { return L::Lo8(bytes, L::Zero()); };
        YuvWords<L> w;
        if constexpr (kPlanar) {
            w = {widen(Load<kSourceChroma, kPixels>(at, first)), widen(Load<kSource, kPixels>(at, first)), L::Zero()};
        } else {
            const Words422<L> packed = UnpackWords<kLayout, L>(Load<kSource, 2 * kPixels>(at, 2 * first));
            w = {packed.chroma, packed.luma, L::Zero()};
        }
        if constexpr (kForm == AlphaForm::kPlane) w.alpha = widen(Load<kSourceAlpha, kPixels>(at, first));
        return w;
    }
    // The fourth bytes of eight pixels, as PackBgra takes them.
    template <class L>
    typename L::V Alpha(const YuvWords<L>& w) const {
        return kForm == AlphaForm::kPlane ? EvenFirst<L>(w.alpha) : this->alpha;
    }

    template <class At>
    void Block(const At& at) const {
        using V = typename At::V;
        if constexpr (kBgr24) {
            V px[4], out[3];
            PackBgra<typename At::L>(Decode8(*this, Read<8>(at, 0)), this->alpha, px);
            PackBgra<typename At::L>(Decode8(*this, Read<8>(at, 8)), this->alpha, px + 2);
            PackBgr24<typename At::L>(px, out);
            PutBlock<kDestination, 3>(at, out);
        } else {
            const auto w = Read<8>(at, 0);
            V px[2];
            PackBgra<typename At::L>(Decode8(*this, w), Alpha(w), px);
            PutBlock<kDestination, 2>(at, px);
        }
    }
    // A BGR24 pair is six bytes: a 4-byte store at its start and one two
    // bytes on, which overlap, so that nothing past the pair is touched.
    template <class At>
    void Single(const At& at) const {
        const auto w = Read<2>(at, 0);
        typename At::V px[2];
        PackBgra<typename At::L>(Decode8(*this, w), Alpha(w), px);
        if constexpr (kBgr24) {
            const auto six = PackFourBgr<typename At::L>(px[0]);
            Put<kDestination, 4>(at, 0, six);
            Put<kDestination, 4>(at, 2, At::L::template ShrBytes<2>(six));
        } else {
            Put<kDestination, 8>(at, 0, px[0]);
        }
    }
};

}  // namespace zenk::ZENK_ISA::yuv_to_rgb
