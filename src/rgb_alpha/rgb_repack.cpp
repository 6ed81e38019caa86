// Pixel-structured kernels of the RGB family. One line walk serves them all;
// a format says how it converts a block of 16 pixels, how it converts one
// pixel, and how many single pixels bring its destination to a 16-byte
// boundary.
#include "rgb_alpha_kernels.h"

#include <cstring>

namespace zenk::rgb_alpha {
namespace {

// The running pointers of one picture walk.
struct Cursor {
    const uint8_t* src;
    const uint8_t* src_alpha;
    uint8_t* dst;
    uint8_t* dst_alpha;
};

// Per-call constants: the constant alpha sits in the fourth byte of a pixel.
struct Constants {
    explicit Constants(const Request& r)
        : alpha_byte(static_cast<uint8_t>(r.alpha_value)),
          alpha_lanes(_mm_set1_epi32(static_cast<int>(static_cast<uint32_t>(alpha_byte) << 24))) {}
    uint8_t alpha_byte;
    __m128i alpha_lanes;
};

// ---- 16-pixel vector helpers ---------------------------------------------------

struct Pixels16 {
    __m128i v[4];  // four pixels a vector, B, G, R, A in each 32-bit lane
};

inline __m128i Mask64(uint64_t low_lane, uint64_t high_lane) {
    return _mm_set_epi64x(static_cast<long long>(high_lane), static_cast<long long>(low_lane));
}

// Four BGRA pixels to their twelve BGR bytes in bytes 0..11 (12..15 zero).
inline __m128i PackFourBgr(__m128i px) {
    const __m128i even = _mm_and_si128(px, Mask64(0xFFFFFFull, 0xFFFFFFull));
    const __m128i odd = _mm_and_si128(_mm_srli_epi64(px, 8), Mask64(0xFFFFFF000000ull, 0xFFFFFF000000ull));
    const __m128i six_six = _mm_or_si128(even, odd);  // six bytes at the bottom of each 64-bit half
    return _mm_or_si128(_mm_move_epi64(six_six), _mm_slli_si128(_mm_srli_si128(six_six, 8), 6));
}

// Twelve BGR bytes (bytes 0..11) to four pixels with a zero fourth byte.
inline __m128i UnpackFourBgr(__m128i bytes) {
    const __m128i six_six = _mm_or_si128(_mm_and_si128(bytes, Mask64(0xFFFFFFFFFFFFull, 0)),
                                         _mm_and_si128(_mm_slli_si128(bytes, 2), Mask64(0, 0xFFFFFFFFFFFFull)));
    return _mm_or_si128(_mm_and_si128(six_six, Mask64(0xFFFFFFull, 0xFFFFFFull)),
                        _mm_and_si128(_mm_slli_epi64(six_six, 8),
                                      Mask64(0xFFFFFF00000000ull, 0xFFFFFF00000000ull)));
}

inline void PackBgr24(const Pixels16& p, __m128i out[3]) {
    const __m128i t0 = PackFourBgr(p.v[0]), t1 = PackFourBgr(p.v[1]);
    const __m128i t2 = PackFourBgr(p.v[2]), t3 = PackFourBgr(p.v[3]);
    out[0] = _mm_or_si128(t0, _mm_slli_si128(t1, 12));
    out[1] = _mm_or_si128(_mm_srli_si128(t1, 4), _mm_slli_si128(t2, 8));
    out[2] = _mm_or_si128(_mm_srli_si128(t2, 8), _mm_slli_si128(t3, 4));
}

inline Pixels16 LoadBgr24(const uint8_t* src) {
    const __m128i in0 = LoadU(src), in1 = LoadU(src + 16), in2 = LoadU(src + 32);
    return {{UnpackFourBgr(in0),
             UnpackFourBgr(_mm_or_si128(_mm_srli_si128(in0, 12), _mm_slli_si128(in1, 4))),
             UnpackFourBgr(_mm_or_si128(_mm_srli_si128(in1, 8), _mm_slli_si128(in2, 8))),
             UnpackFourBgr(_mm_srli_si128(in2, 4))}};
}

inline Pixels16 LoadBgr32(const uint8_t* src) {
    return {{LoadU(src), LoadU(src + 16), LoadU(src + 32), LoadU(src + 48)}};
}

template <class A>
inline void StoreBgr32(uint8_t* dst, const Pixels16& p) {
    for (int i = 0; i < 4; ++i) A::Store(dst + 16 * i, p.v[i]);
}

template <class A>
inline void StoreBgr24(uint8_t* dst, const Pixels16& p) {
    __m128i out[3];
    PackBgr24(p, out);
    for (int i = 0; i < 3; ++i) A::Store(dst + 16 * i, out[i]);
}

// The fourth byte of each of 16 pixels, in pixel order.
inline __m128i AlphaBytes(const Pixels16& p) {
    const __m128i a01 = _mm_packs_epi32(_mm_srli_epi32(p.v[0], 24), _mm_srli_epi32(p.v[1], 24));
    const __m128i a23 = _mm_packs_epi32(_mm_srli_epi32(p.v[2], 24), _mm_srli_epi32(p.v[3], 24));
    return _mm_packus_epi16(a01, a23);
}

// 16 alpha bytes moved into the fourth byte of 16 pixel lanes.
inline void InsertAlphaBytes(Pixels16& p, __m128i alpha) {
    const __m128i zero = _mm_setzero_si128();
    const __m128i low = _mm_unpacklo_epi8(zero, alpha), high = _mm_unpackhi_epi8(zero, alpha);
    p.v[0] = _mm_or_si128(p.v[0], _mm_unpacklo_epi16(zero, low));
    p.v[1] = _mm_or_si128(p.v[1], _mm_unpackhi_epi16(zero, low));
    p.v[2] = _mm_or_si128(p.v[2], _mm_unpacklo_epi16(zero, high));
    p.v[3] = _mm_or_si128(p.v[3], _mm_unpackhi_epi16(zero, high));
}

// ---- Head rules ------------------------------------------------------------------

// Single pixels before the first 16-byte boundary of a 4-byte-pixel line.
inline int32_t HeadToBoundaryBgr32(const uint8_t* dst) {
    const uint32_t r = AddressResidue16(dst);
    return r ? static_cast<int32_t>((16 - r) / 4) : 0;
}

// A 3-byte pixel does not divide 16, so the head comes from a table.
inline int32_t HeadToBoundaryBgr24(const uint8_t* dst) { return kBgr24HeadPixels[AddressResidue16(dst)]; }

inline int32_t HeadToBoundaryBytes(const uint8_t* dst) {
    const uint32_t r = AddressResidue16(dst);
    return r ? static_cast<int32_t>(16 - r) : 0;
}

// ---- Formats ---------------------------------------------------------------------

// One BGR32 pixel, written as one 4-byte store.
inline void WritePixel32(uint8_t* dst, uint32_t bgra) { std::memcpy(dst, &bgra, 4); }

inline uint32_t ReadPixel32(const uint8_t* src) {
    uint32_t v;
    std::memcpy(&v, src, 4);
    return v;
}

inline uint32_t ReadBgr(const uint8_t* src) {
    return static_cast<uint32_t>(src[0]) | static_cast<uint32_t>(src[1]) << 8 | static_cast<uint32_t>(src[2]) << 16;
}

inline void WriteBgr(uint8_t* dst, const uint8_t* bgr) {
    dst[0] = bgr[0];
    dst[1] = bgr[1];
    dst[2] = bgr[2];
}

struct CopyBgr32Format {
    static int32_t Head(const Cursor& c) { return HeadToBoundaryBgr32(c.dst); }
    template <class A>
    static void Block(Cursor& c, const Constants&) {
        StoreBgr32<A>(c.dst, LoadBgr32(c.src));
        c.src += 64;
        c.dst += 64;
    }
    static void Pixel(Cursor& c, const Constants&) {
        WritePixel32(c.dst, ReadPixel32(c.src));
        c.src += 4;
        c.dst += 4;
    }
};

struct Bgr32ToBgr24Format {
    static int32_t Head(const Cursor& c) { return HeadToBoundaryBgr24(c.dst); }
    template <class A>
    static void Block(Cursor& c, const Constants&) {
        StoreBgr24<A>(c.dst, LoadBgr32(c.src));
        c.src += 64;
        c.dst += 48;
    }
    static void Pixel(Cursor& c, const Constants&) {
        WriteBgr(c.dst, c.src);
        c.src += 4;
        c.dst += 3;
    }
};

struct Bgr24ToBgr32Format {
    static int32_t Head(const Cursor& c) { return HeadToBoundaryBgr32(c.dst); }
    template <class A>
    static void Block(Cursor& c, const Constants& k) {
        Pixels16 p = LoadBgr24(c.src);
        for (__m128i& v : p.v) v = _mm_or_si128(v, k.alpha_lanes);
        StoreBgr32<A>(c.dst, p);
        c.src += 48;
        c.dst += 64;
    }
    static void Pixel(Cursor& c, const Constants& k) {
        WritePixel32(c.dst, ReadBgr(c.src) | static_cast<uint32_t>(k.alpha_byte) << 24);
        c.src += 3;
        c.dst += 4;
    }
};

struct CopyBgr24Format {
    static int32_t Head(const Cursor& c) { return HeadToBoundaryBgr24(c.dst); }
    template <class A>
    static void Block(Cursor& c, const Constants&) {
        for (int i = 0; i < 3; ++i) A::Store(c.dst + 16 * i, LoadU(c.src + 16 * i));
        c.src += 48;
        c.dst += 48;
    }
    static void Pixel(Cursor& c, const Constants&) {
        WriteBgr(c.dst, c.src);
        c.src += 3;
        c.dst += 3;
    }
};

// The alpha plane's alignment is never tested, so its 16-byte stores are
// ordinary unaligned stores in every variant.
struct SplitBgr32Format {
    static int32_t Head(const Cursor& c) { return HeadToBoundaryBgr24(c.dst); }
    template <class A>
    static void Block(Cursor& c, const Constants&) {
        const Pixels16 p = LoadBgr32(c.src);
        StoreBgr24<A>(c.dst, p);
        StoreU(c.dst_alpha, AlphaBytes(p));
        c.src += 64;
        c.dst += 48;
        c.dst_alpha += 16;
    }
    static void Pixel(Cursor& c, const Constants&) {
        WriteBgr(c.dst, c.src);
        *c.dst_alpha++ = c.src[3];
        c.src += 4;
        c.dst += 3;
    }
};

struct ExtractAlphaFormat {
    static int32_t Head(const Cursor& c) { return HeadToBoundaryBytes(c.dst); }
    template <class A>
    static void Block(Cursor& c, const Constants&) {
        A::Store(c.dst, AlphaBytes(LoadBgr32(c.src)));
        c.src += 64;
        c.dst += 16;
    }
    static void Pixel(Cursor& c, const Constants&) {
        *c.dst++ = c.src[3];
        c.src += 4;
    }
};

struct MergeAlphaFormat {
    static int32_t Head(const Cursor& c) { return HeadToBoundaryBgr32(c.dst); }
    template <class A>
    static void Block(Cursor& c, const Constants&) {
        Pixels16 p = LoadBgr24(c.src);
        InsertAlphaBytes(p, LoadU(c.src_alpha));
        StoreBgr32<A>(c.dst, p);
        c.src += 48;
        c.src_alpha += 16;
        c.dst += 64;
    }
    static void Pixel(Cursor& c, const Constants&) {
        WritePixel32(c.dst, ReadBgr(c.src) | static_cast<uint32_t>(*c.src_alpha++) << 24);
        c.src += 3;
        c.dst += 4;
    }
};

// ---- The line walk -------------------------------------------------------------------

// Head or tail pixels of a streaming kernel, converted into a buffer on the
// stack and streamed out (StreamBytes). Fewer than 16 pixels of at most 4
// bytes: 64 bytes.
template <class F>
inline void StreamPixels(Cursor& c, const Constants& k, int32_t count) {
    alignas(16) uint8_t staged[64];
    uint8_t* dst = c.dst;
    c.dst = staged;
    for (int32_t i = 0; i < count; ++i) F::Pixel(c, k);
    const int32_t bytes = static_cast<int32_t>(c.dst - staged);
    StreamBytes(dst, staged, bytes);
    c.dst = dst + bytes;
}

template <class F, class A>
inline void Pixels(Cursor& c, const Constants& k, int32_t count) {
    if constexpr (A::kStreaming) {
        if (count > 0) StreamPixels<F>(c, k, count);
    } else {
        for (int32_t i = 0; i < count; ++i) F::Pixel(c, k);
    }
}

// Aligned kernels convert whole blocks of 16 pixels. The others convert
// single pixels up to the destination's first 16-byte boundary, then blocks
// with aligned stores, then the remaining pixels singly; a line shorter than
// 16 pixels goes pixel by pixel.
//
// Some exports test only the first line's address, not the pitch, before
// they choose an aligned kernel. A later line that starts off a 16-byte
// boundary is then walked like a line of the other kernels (the same bytes,
// more slowly) instead of faulting: misalignment never fails a conversion.
//
// Every block asks for its lines ahead (PrefetchAhead): at 3840x2160 this
// takes BGR32 -> BGR24 from 0.75 to about 0.9 of memcpy's speed.

template <class F, class A>
void PixelKernel(const Request* r) {
    Cursor c{r->src_plane, r->src_alpha_plane, r->dst_plane, r->dst_alpha_plane};
    const Constants k(*r);
    const int32_t width = A::kAligned ? r->width / 16 * 16 : r->width;
    Prefetch(c.src);
    for (int32_t line = 0; line < r->src_height; ++line) {
        int32_t head = 0, body = width / 16, tail = 0;
        if (!A::kAligned || !Aligned16(c.dst)) {
            if (width < 16) {
                head = width;
                body = 0;
            } else {
                head = F::Head(c);
                body = (width - head) / 16;
                tail = width - head - 16 * body;
            }
        }
        Pixels<F, A>(c, k, head);
        for (int32_t i = 0; i < body; ++i) {
            PrefetchAhead<A>(c.src, c.dst);
            F::template Block<A>(c, k);
        }
        Pixels<F, A>(c, k, tail);
        c.src = Advance(c.src, r->src_skip);
        c.src_alpha = Advance(c.src_alpha, r->src_alpha_skip);
        c.dst = Advance(c.dst, r->dst_skip);
        c.dst_alpha = Advance(c.dst_alpha, r->dst_alpha_skip);
    }
    A::Finish();
}

}  // namespace

const KernelQuad kCopyBgr32 = ZENK_KERNEL_QUAD(PixelKernel, CopyBgr32Format);
const KernelQuad kBgr32ToBgr24 = ZENK_KERNEL_QUAD(PixelKernel, Bgr32ToBgr24Format);
const KernelQuad kBgr24ToBgr32 = ZENK_KERNEL_QUAD(PixelKernel, Bgr24ToBgr32Format);
const KernelQuad kCopyBgr24 = ZENK_KERNEL_QUAD(PixelKernel, CopyBgr24Format);
const KernelQuad kSplitBgr32 = ZENK_KERNEL_QUAD(PixelKernel, SplitBgr32Format);
const KernelQuad kExtractAlpha = ZENK_KERNEL_QUAD(PixelKernel, ExtractAlphaFormat);
const KernelQuad kMergeAlpha = ZENK_KERNEL_QUAD(PixelKernel, MergeAlphaFormat);

}  // namespace zenk::rgb_alpha
