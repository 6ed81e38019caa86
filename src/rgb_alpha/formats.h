// The formats of the RGB repacking and alpha plane kernels, on the vector
// layer S. Pixel formats convert blocks of 16 pixels and single pixels;
// the alpha plane formats blocks of 32 bytes and single bytes. FrameKernel
// walks them all.
#pragma once

#include "kernel/line_walk.h"
#include "kernel/pixel_packing.h"
#include "rgb_alpha_kernels.h"

namespace zenk::ZENK_ISA::rgb_alpha {

using namespace ::zenk::rgb_alpha;


// Every format of the family: the running pointers of one picture walk and
// the constant alpha, which sits in the fourth byte of a pixel.
//
// Blocks are written for a layer L with one or more lanes filled: lane j
// converts the block j blocks on. A copy moves the same bytes whatever the
// lane order, so copies move their blocks as whole registers instead.
template <class S>
struct Pixels {
    using V = typename S::V;
    using Vector = S;
    static constexpr MisalignedLine kMisaligned = MisalignedLine::kAsAnyAlignment;
    static constexpr bool kStreamEnds = true;
    static constexpr int32_t kSinglesBelow = 16;

    explicit Pixels(const Request& r)
        : src(r.src_plane), src_alpha(r.src_alpha_plane), dst(r.dst_plane), dst_alpha(r.dst_alpha_plane),
          alpha_byte(static_cast<uint8_t>(r.alpha_value)) {}
    const void* Ahead() const { return src; }
    void NextLine(const Request& r) {
        src = Advance(src, r.src_skip);
        src_alpha = Advance(src_alpha, r.src_alpha_skip);
        dst = Advance(dst, r.dst_skip);
        dst_alpha = Advance(dst_alpha, r.dst_alpha_skip);
    }

    // Sixteen pixels a lane, four vectors (B, G, R, A in each 32-bit lane):
    // pixels 4i..4i+3 of each lane's block in vector i, or, where the layer
    // moves bytes across lanes (AcrossLanes), consecutive pixels in
    // consecutive registers. Loads, packing and stores of one block take
    // the same order from the block's store policy.
    template <class L, class Store>
    static void LoadBgr32(const uint8_t* p, V px[4]) {
        LoadVectors<L, Store, 4>(p, px);
    }
    template <class L, class Store>
    static void LoadBgr24(const uint8_t* p, V px[4]) {
        V bytes[3];
        LoadVectors<L, Store, 3>(p, bytes);
        UnpackBgr24<L, AcrossLanes<L, Store>>(bytes, px);
    }
    template <class L, class Store>
    static void StoreBgr24(uint8_t* p, const V px[4]) {
        V out[3];
        PackBgr24<L, AcrossLanes<L, Store>>(px, out);
        StoreVectors<L, Store, 3>(p, out);
    }
    // A copy's block of `vectors` 16-byte vectors, as whole registers of L.
    template <class L, class Store>
    static void CopyVectors(const uint8_t* src, uint8_t* dst, int vectors) {
        constexpr int32_t kBytes = 16 * L::kActiveLanes;
        for (int i = 0; i < vectors; ++i) L::template Put<Store>(dst + kBytes * i, L::LoadU(src + kBytes * i, 16), 16);
    }
    // The fourth byte of each of 16 pixels a lane, in pixel order.
    template <class L, class Store>
    static V AlphaBytes(const V px[4]) {
        const V bytes = L::PackS16ToU8(AlphaWords<L>(px[0], px[1]), AlphaWords<L>(px[2], px[3]));
        if constexpr (AcrossLanes<L, Store>)
            return L::DwordsToMemoryOrder(bytes);
        else
            return bytes;
    }
    // Sixteen pixels a lane with the alpha bytes at p in their fourth bytes.
    template <class L, class Store>
    static void AddAlphaBytes(const uint8_t* p, V px[4]) {
        if constexpr (AcrossLanes<L, Store>) {
            for (int m = 0; m < 4; ++m) px[m] = L::Or(px[m], L::template Shl32<24>(L::WidenBytes(p + sizeof(V) / 4 * m)));
        } else {
            const auto zero = L::Zero(), alpha = L::LoadU(p, 16);
            const auto low = L::Lo8(zero, alpha), high = L::Hi8(zero, alpha);
            px[0] = L::Or(px[0], L::Lo16(zero, low));
            px[1] = L::Or(px[1], L::Hi16(zero, low));
            px[2] = L::Or(px[2], L::Lo16(zero, high));
            px[3] = L::Or(px[3], L::Hi16(zero, high));
        }
    }
    static uint32_t ReadBgr(const uint8_t* p) {
        return static_cast<uint32_t>(p[0]) | static_cast<uint32_t>(p[1]) << 8 | static_cast<uint32_t>(p[2]) << 16;
    }
    static void WriteBgr(uint8_t* d, const uint8_t* bgr) {
        d[0] = bgr[0];
        d[1] = bgr[1];
        d[2] = bgr[2];
    }
    static void WritePixel32(uint8_t* d, uint32_t bgra) { std::memcpy(d, &bgra, 4); }

    const uint8_t* src;
    const uint8_t* src_alpha;
    uint8_t* dst;
    uint8_t* dst_alpha;
    uint8_t alpha_byte;
};

// Destination pixel sizes: the head rule and the block's units.
template <class S>
struct ToBgr32 : Pixels<S> {
    using Pixels<S>::Pixels;
    static constexpr int32_t kUnitPixels = 1, kBlockUnits = 16, kPrefetchEvery = 1;
    int32_t HeadUnits() const { return UnitsToBoundary(this->dst, 4); }
};
template <class S>
struct ToBgr24 : Pixels<S> {
    using Pixels<S>::Pixels;
    static constexpr int32_t kUnitPixels = 1, kBlockUnits = 16, kPrefetchEvery = 1;
    // A 3-byte pixel does not divide 16, so the head comes from a table.
    int32_t HeadUnits() const { return kBgr24HeadPixels[AddressResidue16(this->dst)]; }
};

template <class S>
struct CopyBgr32 : ToBgr32<S> {
    using ToBgr32<S>::ToBgr32;
    template <class Store, class L = S>
    void Block() {
        this->template CopyVectors<L, Store>(this->src, this->dst, 4);
        this->src += 64 * L::kActiveLanes;
        this->dst += 64 * L::kActiveLanes;
    }
    void Single() {
        std::memcpy(this->dst, this->src, 4);
        this->src += 4;
        this->dst += 4;
    }
};

template <class S>
struct Bgr32ToBgr24 : ToBgr24<S> {
    using ToBgr24<S>::ToBgr24;
    template <class Store, class L = S>
    void Block() {
        typename S::V px[4];
        this->template LoadBgr32<L, Store>(this->src, px);
        this->template StoreBgr24<L, Store>(this->dst, px);
        this->src += 64 * L::kActiveLanes;
        this->dst += 48 * L::kActiveLanes;
    }
    void Single() {
        this->WriteBgr(this->dst, this->src);
        this->src += 4;
        this->dst += 3;
    }
};

template <class S>
struct Bgr24ToBgr32 : ToBgr32<S> {
    using ToBgr32<S>::ToBgr32;
    template <class Store, class L = S>
    void Block() {
        typename S::V px[4];
        this->template LoadBgr24<L, Store>(this->src, px);
        const auto alpha_lanes = L::Set32(static_cast<uint32_t>(this->alpha_byte) << 24);
        for (auto& v : px) v = L::Or(v, alpha_lanes);
        StoreVectors<L, Store, 4>(this->dst, px);
        this->src += 48 * L::kActiveLanes;
        this->dst += 64 * L::kActiveLanes;
    }
    void Single() {
        this->WritePixel32(this->dst, this->ReadBgr(this->src) | static_cast<uint32_t>(this->alpha_byte) << 24);
        this->src += 3;
        this->dst += 4;
    }
};

template <class S>
struct CopyBgr24 : ToBgr24<S> {
    using ToBgr24<S>::ToBgr24;
    template <class Store, class L = S>
    void Block() {
        this->template CopyVectors<L, Store>(this->src, this->dst, 3);
        this->src += 48 * L::kActiveLanes;
        this->dst += 48 * L::kActiveLanes;
    }
    void Single() {
        this->WriteBgr(this->dst, this->src);
        this->src += 3;
        this->dst += 3;
    }
};

// The alpha plane's alignment is never tested, so its 16-byte stores are
// ordinary unaligned stores in every variant.
template <class S>
struct SplitBgr32 : ToBgr24<S> {
    using ToBgr24<S>::ToBgr24;
    template <class Store, class L = S>
    void Block() {
        typename S::V px[4];
        this->template LoadBgr32<L, Store>(this->src, px);
        this->template StoreBgr24<L, Store>(this->dst, px);
        L::template Put<UnalignedStore>(this->dst_alpha, this->template AlphaBytes<L, Store>(px), 16);
        this->src += 64 * L::kActiveLanes;
        this->dst += 48 * L::kActiveLanes;
        this->dst_alpha += 16 * L::kActiveLanes;
    }
    void Single() {
        this->WriteBgr(this->dst, this->src);
        *this->dst_alpha++ = this->src[3];
        this->src += 4;
        this->dst += 3;
    }
};

// The extraction reads four bytes for each it writes, in one stream the
// processor's own prefetcher follows; asking for the lines ahead as well
// made it slower: 3840x2160 from memory on the AMD EPYC, the two builds
// alternating in one process, 13 to 20 % at every level.
template <class S>
struct ExtractAlpha : Pixels<S> {
    using Pixels<S>::Pixels;
    static constexpr int32_t kUnitPixels = 1, kBlockUnits = 16, kPrefetchEvery = 0;
    int32_t HeadUnits() const { return UnitsToBoundary(this->dst, 1); }
    template <class Store, class L = S>
    void Block() {
        typename S::V px[4];
        this->template LoadBgr32<L, Store>(this->src, px);
        L::template Put<Store>(this->dst, this->template AlphaBytes<L, Store>(px), 16);
        this->src += 64 * L::kActiveLanes;
        this->dst += 16 * L::kActiveLanes;
    }
    void Single() {
        *this->dst++ = this->src[3];
        this->src += 4;
    }
};

template <class S>
struct MergeAlpha : ToBgr32<S> {
    using ToBgr32<S>::ToBgr32;
    template <class Store, class L = S>
    void Block() {
        typename S::V px[4];
        this->template LoadBgr24<L, Store>(this->src, px);
        this->template AddAlphaBytes<L, Store>(this->src_alpha, px);
        StoreVectors<L, Store, 4>(this->dst, px);
        this->src += 48 * L::kActiveLanes;
        this->src_alpha += 16 * L::kActiveLanes;
        this->dst += 64 * L::kActiveLanes;
    }
    void Single() {
        this->WritePixel32(this->dst, this->ReadBgr(this->src) | static_cast<uint32_t>(*this->src_alpha++) << 24);
        this->src += 3;
        this->dst += 4;
    }
};

// Alpha planes: blocks of 32 bytes (two 16-byte stores), single bytes
// before the destination's 16-byte boundary and after the last block. A
// block asks for its lines ahead once per 64-byte cache line.
template <class S>
struct AlphaPlane : Pixels<S> {
    using Pixels<S>::Pixels;
    static constexpr int32_t kUnitPixels = 1, kBlockUnits = 32, kPrefetchEvery = 2;
    int32_t HeadUnits() const { return UnitsToBoundary(this->dst, 1); }
};

template <class S>
struct CopyAlphaPlane : AlphaPlane<S> {
    using AlphaPlane<S>::AlphaPlane;
    template <class Store, class L = S>
    void Block() {
        this->template CopyVectors<L, Store>(this->src, this->dst, 2);
        this->src += 32 * L::kActiveLanes;
        this->dst += 32 * L::kActiveLanes;
    }
    void Single() { *this->dst++ = *this->src++; }
};

// The fill value is the low byte of alpha_value: 0x1FF fills 0xFF and 0x100
// fills 0x00 (truncated, not saturated as the YUV decoders' alpha is).
// Nothing is read; the prefetch of the value's own address is harmless.
template <class S>
struct FillAlphaPlane : AlphaPlane<S> {
    using AlphaPlane<S>::AlphaPlane;
    const void* Ahead() const { return &this->alpha_byte; }
    template <class Store, class L = S>
    void Block() {
        const auto v = L::Set8(this->alpha_byte);
        constexpr int32_t kBytes = 16 * L::kActiveLanes;
        L::template Put<Store>(this->dst, v, 16);
        L::template Put<Store>(this->dst + kBytes, v, 16);
        this->dst += 32 * L::kActiveLanes;
    }
    void Single() { *this->dst++ = this->alpha_byte; }
};

}  // namespace zenk::ZENK_ISA::rgb_alpha
