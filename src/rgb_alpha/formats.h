// The formats of the RGB repacking and alpha plane kernels, on the vector
// layer S. Pixel formats convert blocks of 16 pixels and single pixels;
// the alpha plane formats blocks of 32 bytes and single bytes. FrameKernel
// walks them all.
//
// Blocks are written for a layer L with one or more lanes filled: lane j
// converts the block j blocks on.
#pragma once

#include "kernel/line_walk.h"
#include "kernel/pixel_packing.h"
#include "rgb_alpha_kernels.h"

namespace zenk::ZENK_ISA::rgb_alpha {

using namespace ::zenk::rgb_alpha;

// The running pointers of one picture walk and the constant alpha, which
// sits in the fourth byte of a pixel. Units are pixels (or alpha bytes) of
// kDstBytes destination bytes, kBlock of them a block; every kPrefetch
// blocks ask for their lines ahead.
template <int kDstBytes, int32_t kBlock, int32_t kPrefetch>
struct Planes {
    static constexpr MisalignedLine kMisaligned = MisalignedLine::kAsAnyAlignment;
    static constexpr bool kStreamEnds = true;
    static constexpr int32_t kUnitPixels = 1, kSinglesBelow = 16, kBlockUnits = kBlock, kPrefetchEvery = kPrefetch;

    explicit Planes(const Request& r)
        : src(r.src_plane), src_alpha(r.src_alpha_plane), dst(r.dst_plane), dst_alpha(r.dst_alpha_plane),
          alpha_byte(static_cast<uint8_t>(r.alpha_value)) {}
    // A 3-byte pixel does not divide 16, so its head comes from a table.
    int32_t HeadUnits() const {
        if constexpr (kDstBytes == 3)
            return kBgr24HeadPixels[AddressResidue16(dst)];
        else
            return UnitsToBoundary(dst, kDstBytes);
    }
    const void* Ahead() const { return src; }
    void NextLine(const Request& r) {
        src = Advance(src, r.src_skip);
        src_alpha = Advance(src_alpha, r.src_alpha_skip);
        dst = Advance(dst, r.dst_skip);
        dst_alpha = Advance(dst_alpha, r.dst_alpha_skip);
    }

    const uint8_t* src;
    const uint8_t* src_alpha;
    uint8_t* dst;
    uint8_t* dst_alpha;
    uint8_t alpha_byte;
};

// ---- Sixteen pixels a lane -----------------------------------------------------------
//
// Four vectors (B, G, R, A in each 32-bit lane): pixels 4i..4i+3 of each
// lane's block in vector i, or, where the layer moves bytes across lanes
// (AcrossLanes), consecutive pixels in consecutive registers. Loads, packing
// and stores of one block take the same order from the block's store policy.

template <class L, class Store>
inline void LoadBgr24(const uint8_t* p, typename L::V px[4]) {
    typename L::V bytes[3];
    LoadVectors<L, Store, 3>(p, bytes);
    UnpackBgr24<L, AcrossLanes<L, Store>>(bytes, px);
}
template <class L, class Store>
inline void StoreBgr24(uint8_t* p, const typename L::V px[4]) {
    typename L::V out[3];
    PackBgr24<L, AcrossLanes<L, Store>>(px, out);
    StoreVectors<L, Store, 3>(p, out);
}
// The fourth byte of each pixel, in pixel order.
template <class L, class Store>
inline typename L::V AlphaBytes(const typename L::V px[4]) {
    const auto bytes = L::PackS16ToU8(AlphaWords<L>(px[0], px[1]), AlphaWords<L>(px[2], px[3]));
    if constexpr (AcrossLanes<L, Store>)
        return L::DwordsToMemoryOrder(bytes);
    else
        return bytes;
}
// The alpha bytes at p into the pixels' fourth bytes.
template <class L, class Store>
inline void AddAlphaBytes(const uint8_t* p, typename L::V px[4]) {
    if constexpr (AcrossLanes<L, Store>) {
        for (int m = 0; m < 4; ++m) px[m] = L::Or(px[m], L::template Shl32<24>(L::WidenBytes(p + sizeof(px[0]) / 4 * m)));
    } else {
        const auto zero = L::Zero(), alpha = L::LoadU(p, 16);
        const auto low = L::Lo8(zero, alpha), high = L::Hi8(zero, alpha);
        px[0] = L::Or(px[0], L::Lo16(zero, low));
        px[1] = L::Or(px[1], L::Hi16(zero, low));
        px[2] = L::Or(px[2], L::Lo16(zero, high));
        px[3] = L::Or(px[3], L::Hi16(zero, high));
    }
}

// ---- Formats -------------------------------------------------------------------------

// A copy of units of kBytes, kVectors 16-byte vectors a block. It moves the
// same bytes whatever the lane order, so its blocks go as whole registers.
template <class S, int kBytes, int kVectors, int32_t kPrefetch>
struct Copy : Planes<kBytes, 16 * kVectors / kBytes, kPrefetch> {
    using Planes<kBytes, 16 * kVectors / kBytes, kPrefetch>::Planes;
    using Vector = S;
    template <class Store, class L = S>
    void Block() {
        constexpr int32_t kLaneBytes = 16 * L::kActiveLanes;
        for (int i = 0; i < kVectors; ++i)
            L::template Put<Store>(this->dst + kLaneBytes * i, L::LoadU(this->src + kLaneBytes * i, 16), 16);
        this->src += kVectors * kLaneBytes;
        this->dst += kVectors * kLaneBytes;
    }
    void Single() {
        std::memcpy(this->dst, this->src, kBytes);
        this->src += kBytes;
        this->dst += kBytes;
    }
};

// BGR32I to BGR24I and, with kSplit, the alpha bytes to the alpha plane.
// The alpha plane's alignment is never tested, so its 16-byte stores are
// ordinary unaligned stores in every variant.
template <class S, bool kSplit>
struct Bgr32ToBgr24 : Planes<3, 16, 1> {
    using Planes::Planes;
    using Vector = S;
    template <class Store, class L = S>
    void Block() {
        typename S::V px[4];
        LoadVectors<L, Store, 4>(src, px);
        StoreBgr24<L, Store>(dst, px);
        if constexpr (kSplit) {
            L::template Put<UnalignedStore>(dst_alpha, AlphaBytes<L, Store>(px), 16);
            dst_alpha += 16 * L::kActiveLanes;
        }
        src += 64 * L::kActiveLanes;
        dst += 48 * L::kActiveLanes;
    }
    void Single() {
        std::memcpy(dst, src, 3);
        if constexpr (kSplit) *dst_alpha++ = src[3];
        src += 4;
        dst += 3;
    }
};

// BGR24I to BGR32I, the fourth byte from the alpha plane (kAlphaPlane) or
// the low byte of alpha_value.
template <class S, bool kAlphaPlane>
struct Bgr24ToBgr32 : Planes<4, 16, 1> {
    using Planes::Planes;
    using Vector = S;
    template <class Store, class L = S>
    void Block() {
        typename S::V px[4];
        LoadBgr24<L, Store>(src, px);
        if constexpr (kAlphaPlane) {
            AddAlphaBytes<L, Store>(src_alpha, px);
            src_alpha += 16 * L::kActiveLanes;
        } else {
            const auto alpha_lanes = L::Set32(static_cast<uint32_t>(alpha_byte) << 24);
            for (auto& v : px) v = L::Or(v, alpha_lanes);
        }
        StoreVectors<L, Store, 4>(dst, px);
        src += 48 * L::kActiveLanes;
        dst += 64 * L::kActiveLanes;
    }
    void Single() {
        const uint32_t alpha = kAlphaPlane ? *src_alpha++ : alpha_byte;
        const uint32_t bgra = src[0] | static_cast<uint32_t>(src[1]) << 8 | static_cast<uint32_t>(src[2]) << 16 | alpha << 24;
        std::memcpy(dst, &bgra, 4);
        src += 3;
        dst += 4;
    }
};

// The extraction reads four bytes for each it writes, in one stream the
// processor's own prefetcher follows; asking for the lines ahead as well
// made it slower: 3840x2160 from memory on the AMD EPYC, the two builds
// alternating in one process, 13 to 20 % at every level.
template <class S>
struct ExtractAlpha : Planes<1, 16, 0> {
    using Planes::Planes;
    using Vector = S;
    template <class Store, class L = S>
    void Block() {
        typename S::V px[4];
        LoadVectors<L, Store, 4>(src, px);
        L::template Put<Store>(dst, AlphaBytes<L, Store>(px), 16);
        src += 64 * L::kActiveLanes;
        dst += 16 * L::kActiveLanes;
    }
    void Single() {
        *dst++ = src[3];
        src += 4;
    }
};

// The fill value is the low byte of alpha_value: 0x1FF fills 0xFF and 0x100
// fills 0x00 (truncated, not saturated as the YUV decoders' alpha is).
// Nothing is read; the prefetch of the value's own address is harmless. A
// block is 32 bytes and asks for its lines ahead once per 64-byte cache line.
template <class S>
struct FillAlphaPlane : Planes<1, 32, 2> {
    using Planes::Planes;
    using Vector = S;
    const void* Ahead() const { return &alpha_byte; }
    template <class Store, class L = S>
    void Block() {
        const auto v = L::Set8(alpha_byte);
        constexpr int32_t kBytes = 16 * L::kActiveLanes;
        L::template Put<Store>(dst, v, 16);
        L::template Put<Store>(dst + kBytes, v, 16);
        dst += 2 * kBytes;
    }
    void Single() { *dst++ = alpha_byte; }
};

}  // namespace zenk::ZENK_ISA::rgb_alpha
