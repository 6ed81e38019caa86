// The formats of the RGB repacking and alpha plane kernels, on the vector
// layer S. Pixel formats convert blocks of 16 pixels and single pixels;
// the alpha plane formats blocks of 32 bytes and single bytes. FrameKernel
// walks them all.
//
// Blocks are written for a layer L with one or more lanes filled: lane j
// converts the block j blocks on.
#pragma once

#include <cstring>

#include "kernel/line_walk.h"
#include "kernel/pixel_packing.h"
#include "rgb_alpha_kernels.h"

namespace zenk::ZENK_ISA::rgb_alpha {

using namespace ::zenk::rgb_alpha;

// Units are pixels (or alpha bytes) of kDstBytes destination bytes, kBlock
// of them a block. A line
// an aligned kernel finds off its boundary goes head, body and tail, and
// streaming kernels stream their ends too.
template <int kDstBytes, int32_t kBlock, bool kCopies = false, bool kFills = false>
struct Pixels {
    static constexpr LineRule kRule{.unit_pixels = 1, .block_units = kBlock, .singles_below = 16,
                                    .misaligned = MisalignedLine::kAsAnyAlignment, .stream_ends = true,
                                    .copies = kCopies, .fills = kFills};
    // A 3-byte pixel does not divide 16, so its head comes from a table.
    static int32_t HeadUnits(const uint8_t* dst) {
        if constexpr (kDstBytes == 3)
            return kBgr24HeadPixels[AddressResidue16(dst)];
        else
            return UnitsToBoundary(dst, kDstBytes);
    }
};

// ---- Sixteen pixels a lane -----------------------------------------------------------
//
// Four vectors (B, G, R, A in each 32-bit lane): pixels 4i..4i+3 of each
// lane's block in vector i, or, where the layer moves bytes across lanes
// (AcrossLanes), consecutive pixels in consecutive registers. Loads, packing
// and stores of one block take the same order from the layer and the
// block's store policy.

// The fourth byte of each pixel, in pixel order.
template <class L, class Store>
inline typename L::V AlphaBytes(const typename L::V px[4]) {
    const auto bytes = L::PackS16ToU8(AlphaWords<L>(px[0], px[1]), AlphaWords<L>(px[2], px[3]));
    if constexpr (AcrossLanes<L, Store>)
        return L::DwordsToMemoryOrder(bytes);
    else
        return bytes;
}
// The block's alpha bytes into the pixels' fourth bytes.
template <class At>
inline void AddAlphaBytes(const At& at, typename At::V px[4]) {
    using L = typename At::L;
    if constexpr (AcrossLanes<L, typename At::Store>) {
        const uint8_t* const alpha = Ptr<Plane::kSourceAlpha>(at);
        for (int m = 0; m < 4; ++m) px[m] = L::Or(px[m], L::template Shl32<24>(L::WidenBytes(alpha + sizeof(px[0]) / 4 * m)));
    } else {
        const auto zero = L::Zero(), alpha = Load<Plane::kSourceAlpha>(at);
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
template <class S, int kBytes, int kVectors>
struct Copy : Pixels<kBytes, 16 * kVectors / kBytes, true> {
    using Vector = S;
    using Planes = Streams<Stream<Plane::kSource, kBytes, 16 * kVectors>, Stream<Plane::kDestination, kBytes, 16 * kVectors>>;
    explicit Copy(const Request&) {}
    template <class At>
    void Block(const At& at) const {
        for (int m = 0; m < kVectors; ++m) PutInOrder<Plane::kDestination>(at, m, LoadInOrder<Plane::kSource>(at, m));
    }
    template <class At>
    void Single(const At& at) const {
        std::memcpy(Ptr<Plane::kDestination>(at), Ptr<Plane::kSource>(at), kBytes);
    }
};

// BGR32I to BGR24I and, with kSplit, the alpha bytes to the alpha plane.
// The alpha plane's alignment is never tested, so its 16-byte stores are
// ordinary unaligned stores in every variant.
template <class S, bool kSplit>
struct Bgr32ToBgr24 : Pixels<3, 16> {
    using Vector = S;
    using Planes = Streams<Stream<Plane::kSource, 4, 64>, Stream<Plane::kDestination, 3, 48>,
                           Stream<Plane::kDestinationAlpha, 1, 16, kSplit>>;
    explicit Bgr32ToBgr24(const Request&) {}
    template <class At>
    void Block(const At& at) const {
        using L = typename At::L;
        typename L::V px[4], out[3];
        LoadVectors<Plane::kSource, 4>(at, px);
        PackBgr24<L, AcrossLanes<L, typename At::Store>>(px, out);
        StoreVectors<Plane::kDestination, 3>(at, out);
        if constexpr (kSplit) Put<Plane::kDestinationAlpha, 16, UnalignedStore>(at, 0, AlphaBytes<L, typename At::Store>(px));
    }
    template <class At>
    void Single(const At& at) const {
        const uint8_t* const src = Ptr<Plane::kSource>(at);
        std::memcpy(Ptr<Plane::kDestination>(at), src, 3);
        if constexpr (kSplit) *Ptr<Plane::kDestinationAlpha>(at) = src[3];
    }
};

// BGR24I to BGR32I, the fourth byte from the alpha plane (kAlphaPlane) or
// the low byte of alpha_value.
template <class S, bool kAlphaPlane>
struct Bgr24ToBgr32 : Pixels<4, 16> {
    using Vector = S;
    using Planes = Streams<Stream<Plane::kSource, 3, 48>, Stream<Plane::kSourceAlpha, 1, 16, kAlphaPlane>,
                           Stream<Plane::kDestination, 4, 64>>;
    explicit Bgr24ToBgr32(const Request& r) : alpha_byte(static_cast<uint8_t>(r.alpha_value)) {}
    template <class At>
    void Block(const At& at) const {
        using L = typename At::L;
        typename L::V bytes[3], px[4];
        LoadVectors<Plane::kSource, 3>(at, bytes);
        UnpackBgr24<L, AcrossLanes<L, typename At::Store>>(bytes, px);
        if constexpr (kAlphaPlane) {
            AddAlphaBytes(at, px);
        } else {
            const auto alpha_lanes = L::Set32(static_cast<uint32_t>(alpha_byte) << 24);
            for (auto& v : px) v = L::Or(v, alpha_lanes);
        }
        StoreVectors<Plane::kDestination, 4>(at, px);
    }
    template <class At>
    void Single(const At& at) const {
        const uint8_t* const src = Ptr<Plane::kSource>(at);
        uint32_t alpha = alpha_byte;
        if constexpr (kAlphaPlane) alpha = *Ptr<Plane::kSourceAlpha>(at);
        const uint32_t bgra = src[0] | static_cast<uint32_t>(src[1]) << 8 | static_cast<uint32_t>(src[2]) << 16 | alpha << 24;
        std::memcpy(Ptr<Plane::kDestination>(at), &bgra, 4);
    }
    const uint8_t alpha_byte;
};

// The fourth byte of every pixel, to the alpha plane.
template <class S>
struct ExtractAlpha : Pixels<1, 16> {
    using Vector = S;
    using Planes = Streams<Stream<Plane::kSource, 4, 64>, Stream<Plane::kDestination, 1, 16>>;
    explicit ExtractAlpha(const Request&) {}
    template <class At>
    void Block(const At& at) const {
        typename At::V px[4];
        LoadVectors<Plane::kSource, 4>(at, px);
        Put<Plane::kDestination>(at, 0, AlphaBytes<typename At::L, typename At::Store>(px));
    }
    template <class At>
    void Single(const At& at) const {
        *Ptr<Plane::kDestination>(at) = Ptr<Plane::kSource>(at)[3];
    }
};

// The fill value is the low byte of alpha_value: 0x1FF fills 0xFF and 0x100
// fills 0x00 (truncated, not saturated as the YUV decoders' alpha is).
// Nothing is read. With ordinary stores the walk fills a line's blocks in
// one run (FillRun), and a picture whose lines lie end to end at once: a
// 1920x1080 fill in the cache took 0.021 ms so against 0.036 ms in blocks
// (AMD EPYC, AVX-512).
template <class S>
struct FillAlphaPlane : Pixels<1, 32, false, true> {
    using Vector = S;
    using Planes = Streams<Stream<Plane::kDestination, 1, 32>>;
    explicit FillAlphaPlane(const Request& r) : alpha_byte(static_cast<uint8_t>(r.alpha_value)) {}
    template <class At>
    void Block(const At& at) const {
        const auto v = At::L::Set8(alpha_byte);
        PutInOrder<Plane::kDestination>(at, 0, v);
        PutInOrder<Plane::kDestination>(at, 1, v);
    }
    template <class At>
    void Single(const At& at) const {
        *Ptr<Plane::kDestination>(at) = alpha_byte;
    }
    uint8_t FillByte() const { return alpha_byte; }
    const uint8_t alpha_byte;
};

}  // namespace zenk::ZENK_ISA::rgb_alpha
