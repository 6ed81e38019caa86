// Alpha plane copy and constant fill: 32-byte blocks of two 16-byte stores.
#include "rgb_alpha_kernels.h"

namespace zenk::rgb_alpha {
namespace {

struct CopySource {
    explicit CopySource(const Request& r) : src(r.src_plane) {}
    __m128i Vector(int offset) const { return LoadU(src + offset); }
    const uint8_t* Ahead() const { return src; }
    uint8_t Byte(int offset) const { return src[offset]; }
    void Step(int bytes) { src += bytes; }
    void EndLine(const Request& r) { src = Advance(src, r.src_skip); }
    const uint8_t* src;
};

// The fill value is the low byte of alpha_value: 0x1FF fills 0xFF and 0x100
// fills 0x00 (truncated, not saturated as the YUV decoders' alpha is).
struct FillSource {
    explicit FillSource(const Request& r)
        : value(static_cast<uint8_t>(r.alpha_value)), vector(_mm_set1_epi8(static_cast<char>(value))) {}
    __m128i Vector(int) const { return vector; }
    // Nothing to read: the prefetch of the value's own address is harmless.
    const uint8_t* Ahead() const { return &value; }
    uint8_t Byte(int) const { return value; }
    void Step(int) {}
    void EndLine(const Request&) {}
    uint8_t value;
    __m128i vector;
};

// Aligned kernels: width / 32 blocks. The others: bytes singly up to the
// destination's 16-byte boundary (the whole line when it is shorter than
// 16), blocks while 32 bytes remain, then the rest singly. An aligned
// kernel walks a line that starts off a boundary the same way, so that a
// pitch the export did not test never faults.
template <class Source, class A>
void PlaneKernel(const Request* r) {
    Source source(*r);
    uint8_t* dst = r->dst_plane;
    const int32_t width = A::kAligned ? r->width / 32 * 32 : r->width;
    if (r->src_plane != nullptr) Prefetch(r->src_plane);
    for (int32_t line = 0; line < r->src_height; ++line) {
        // Head and tail bytes (fewer than 32); a streaming kernel streams them.
        auto bytes = [&](int32_t count) {
            if constexpr (A::kStreaming) {
                uint8_t staged[32];
                for (int32_t i = 0; i < count; ++i) staged[i] = source.Byte(i);
                StreamBytes(dst, staged, count);
            } else {
                for (int32_t i = 0; i < count; ++i) dst[i] = source.Byte(i);
            }
            dst += count;
            source.Step(count);
        };
        int32_t head = 0;
        if (!A::kAligned || !Aligned16(dst)) {
            const uint32_t residue = AddressResidue16(dst);
            head = width < 16 ? width : (residue ? static_cast<int32_t>(16 - residue) : 0);
        }
        bytes(head);
        const int32_t blocks = (width - head) / 32;
        for (int32_t b = 0; b < blocks; ++b) {
            if (b % 2 == 0) PrefetchAhead<A>(source.Ahead(), dst);  // once per 64-byte line
            A::Store(dst, source.Vector(0));
            A::Store(dst + 16, source.Vector(16));
            dst += 32;
            source.Step(32);
        }
        bytes(width - head - 32 * blocks);
        dst = Advance(dst, r->dst_skip);
        source.EndLine(*r);
    }
    A::Finish();
}

}  // namespace

const KernelQuad kCopyAlphaPlane = ZENK_KERNEL_QUAD(PlaneKernel, CopySource);
const KernelQuad kFillAlphaPlane = ZENK_KERNEL_QUAD(PlaneKernel, FillSource);

}  // namespace zenk::rgb_alpha
