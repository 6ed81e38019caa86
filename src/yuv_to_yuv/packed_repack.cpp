// Packed 4:2:2 to packed 4:2:2: copies, byte reorders and the change of
// colour standard. A group is 16 pixels, 32 bytes in and 32 bytes out; a
// pair is 4 bytes.
#include "line_walk.h"
#include "matrix_change.h"
#include "yuv_to_yuv_kernels.h"

namespace zenk::yuv_to_yuv {
namespace {

struct PackedGroup : SinglePlane {
    static constexpr int32_t kGroupPixels = 16;
    static constexpr uint32_t kHeadPairBytes = 4;
};

// A format that rearranges bytes: Vector turns 16 source bytes into 16
// destination bytes, Bytes does the same for one 4-byte pair.
template <class Rule>
struct Reorder : PackedGroup {
    using State = NoState;
    template <class A>
    static void Group(Cursor& c, const State&) {
        StoreBody<A>(c.dst, Rule::Vector(LoadU(c.src)));
        StoreBody<A>(c.dst + 16, Rule::Vector(LoadU(c.src + 16)));
        c.src += 32;
        c.dst += 32;
    }
    template <class A>
    static void Pair(Cursor& c, const State&) {
        Rule::template Bytes<A>(c.src, c.dst);
        c.src += 4;
        c.dst += 4;
    }
};

// One 4-byte pair. Streaming kernels keep their pairs out of the cache too:
// an ordinary store into a cache line that the groups' non-temporal stores
// also fill would evict the half-filled line from the write-combining
// buffer.
template <class A>
inline void WritePair(uint8_t* dst, uint32_t word) {
    if constexpr (A::kStreaming)
        _mm_stream_si32(reinterpret_cast<int*>(dst), static_cast<int>(word));
    else
        std::memcpy(dst, &word, 4);
}

inline uint32_t ReadPair(const uint8_t* src) {
    uint32_t word;
    std::memcpy(&word, src, 4);
    return word;
}

struct CopyRule {
    static __m128i Vector(__m128i v) { return v; }
    template <class A>
    static void Bytes(const uint8_t* src, uint8_t* dst) {
        WritePair<A>(dst, ReadPair(src));
    }
};

// UYVY16I <-> YUYV16I: the two bytes of every 16-bit word change places.
struct SwapWordBytesRule {
    static __m128i Vector(__m128i v) { return _mm_or_si128(_mm_slli_epi16(v, 8), _mm_srli_epi16(v, 8)); }
    template <class A>
    static void Bytes(const uint8_t* src, uint8_t* dst) {
        const uint32_t word = ReadPair(src);
        WritePair<A>(dst, ((word & 0x00FF00FFu) << 8) | ((word >> 8) & 0x00FF00FFu));
    }
};

// UVYY16I -> UYVY16I (Cb Cr Y0 Y1 to Cb Y0 Cr Y1) and UYVY16I -> UVYY16I
// (Cb Y0 Cr Y1 to Cb Cr Y0 Y1) are the same move: bytes 1 and 2 of every
// pair change places.
struct ExchangeMiddleBytesRule {
    static __m128i Vector(__m128i v) {
        const __m128i outer = _mm_and_si128(v, _mm_set1_epi32(static_cast<int>(0xFF0000FFu)));
        const __m128i byte1_up = _mm_slli_epi32(_mm_and_si128(v, _mm_set1_epi32(0x0000FF00)), 8);
        const __m128i byte2_down = _mm_srli_epi32(_mm_and_si128(v, _mm_set1_epi32(0x00FF0000)), 8);
        return _mm_or_si128(outer, _mm_or_si128(byte1_up, byte2_down));
    }
};

// ---- Change of standard ---------------------------------------------------------------

// Where chroma and luma sit in the 16-bit words of a packed 4:2:2 picture.
struct UyvyWords {  // chroma in the low byte, luma in the high byte
    static Lanes Unpack(__m128i v) { return {_mm_srli_epi16(v, 8), _mm_and_si128(v, _mm_set1_epi16(0xFF))}; }
    static __m128i Pack(const Lanes& l) {
        return _mm_packus_epi16(_mm_unpacklo_epi16(l.chroma, l.luma), _mm_unpackhi_epi16(l.chroma, l.luma));
    }
};
struct YuyvWords {  // luma in the low byte, chroma in the high byte
    static Lanes Unpack(__m128i v) { return {_mm_and_si128(v, _mm_set1_epi16(0xFF)), _mm_srli_epi16(v, 8)}; }
    static __m128i Pack(const Lanes& l) {
        return _mm_packus_epi16(_mm_unpacklo_epi16(l.luma, l.chroma), _mm_unpackhi_epi16(l.luma, l.chroma));
    }
};

template <class In, class Out, LumaRule kLuma>
struct MatrixChange : PackedGroup {
    using State = MatrixChangeVectors;
    template <class A>
    static void Group(Cursor& c, const State& m) {
        Lanes a = In::Unpack(LoadU(c.src)), b = In::Unpack(LoadU(c.src + 16));
        ChangeMatrix<kLuma>(m, a, b);
        StoreBody<A>(c.dst, Out::Pack(a));
        StoreBody<A>(c.dst + 16, Out::Pack(b));
        c.src += 32;
        c.dst += 32;
    }
    // One pair as both halves of a group: rounded by its own signs. Pairs
    // are written with ordinary stores in the streaming kernels too.
    template <class A>
    static void Pair(Cursor& c, const State& m) {
        Lanes a = In::Unpack(LoadPair(c.src)), b = a;
        ChangeMatrix<kLuma>(m, a, b);
        StorePair(c.dst, Out::Pack(a));
        c.src += 4;
        c.dst += 4;
    }
};

using Copy = Reorder<CopyRule>;
using Exchange = Reorder<ExchangeMiddleBytesRule>;

}  // namespace

const KernelQuad kCopyPacked = ZENK_KERNEL_QUAD(WalkLines, Copy);
const KernelQuad kSwapWordBytes = ZENK_KERNEL_QUAD(WalkLines, Reorder<SwapWordBytesRule>);
// The exchange exists only as an aligned kernel. Unaligned requests with
// these formats run the plain copy, so their bytes keep the source order;
// hosts are given exactly that, and it is kept.
const KernelQuad kExchangeMiddleBytesOrCopy = {{
    &WalkLines<Exchange, AlignedCached>, &WalkLines<Exchange, AlignedStreaming>,  // aligned: exchange
    &WalkLines<Copy, AnyCached>, &WalkLines<Copy, AnyStreaming>,                  // any other: copy
}};

const KernelQuad kMatrixUyvyToUyvy =
    ZENK_KERNEL_QUAD(WalkLines, MatrixChange<UyvyWords, UyvyWords, LumaRule::kOwnPair>);
const KernelQuad kMatrixYuyvToYuyv =
    ZENK_KERNEL_QUAD(WalkLines, MatrixChange<YuyvWords, YuyvWords, LumaRule::kOwnPair>);
const KernelQuad kMatrixUyvyToYuyv =
    ZENK_KERNEL_QUAD(WalkLines, MatrixChange<UyvyWords, YuyvWords, LumaRule::kOwnPair>);
const KernelQuad kMatrixYuyvToUyvy =
    ZENK_KERNEL_QUAD(WalkLines, MatrixChange<YuyvWords, UyvyWords, LumaRule::kOwnPair>);
const KernelQuad kMatrixSharedUyvyOrder =
    ZENK_KERNEL_QUAD(WalkLines, MatrixChange<UyvyWords, UyvyWords, LumaRule::kCrossed>);

}  // namespace zenk::yuv_to_yuv
