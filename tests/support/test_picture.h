// Test harness shared by every conversion family: seeded randomness, plane
// buffers with guard room on both sides, scenes of planes that can be cloned
// so a kernel and the scalar reference run on identical copies, and the
// byte-for-byte comparison of whole buffers (guards included).
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "zenk_transcoder.h"

namespace zenk::test {

using Request = ZenkConversionRequest;

// The seed of this run: ZENK_TEST_SEED if set, else a fresh one. Printed on
// every failure so that a run can be repeated.
uint64_t TestSeed();

class Rng {
public:
    explicit Rng(uint64_t salt) : engine_(TestSeed() ^ (salt * 0x9E3779B97F4A7C15ull)) {}
    // Choices drawn from `script` first (a fuzzer's input), then from a
    // generator seeded by it; picture bytes always come from the generator.
    Rng(const uint8_t* script, size_t size);
    // Uniform in [lo, hi].
    int32_t Uniform(int32_t lo, int32_t hi) {
        return lo + static_cast<int32_t>(Draw() % static_cast<uint64_t>(static_cast<int64_t>(hi) - lo + 1));
    }
    bool Chance(int percent) { return Uniform(0, 99) < percent; }
    uint8_t Byte() { return static_cast<uint8_t>(engine_()); }
    template <class T>
    const T& Pick(const std::vector<T>& v) { return v[static_cast<size_t>(Uniform(0, static_cast<int32_t>(v.size()) - 1))]; }
    // An alpha word with the interesting cases over-represented: values above
    // 255, a set high word, the extremes.
    uint32_t AlphaValue();

private:
    uint64_t Draw() {
        if (script_left_ == 0) return engine_();
        uint64_t v = 0;
        for (int i = 0; i < 4 && script_left_ > 0; ++i, --script_left_) v = v << 8 | *script_++;
        return v;
    }
    std::mt19937_64 engine_;
    const uint8_t* script_ = nullptr;
    size_t script_left_ = 0;
};

// The memory of one plane: `lines` lines of `line_bytes` at `pitch` apart,
// walked top-down or bottom-up from `first_line()`, with `extra_lines` more
// lines after them (the chroma plane of Y8PUV8I), and generous room on
// both sides that must come out of a conversion unchanged. The first line's
// address is `residue` bytes past a 64-byte boundary.
// Where an inaccessible page sits: none (guard room of ordinary memory on
// both sides), right after the last byte the plane's lines span, or right
// before the first. A kernel that reads or writes past its lines faults.
enum class GuardPage { kNone, kAfterEnd, kBeforeStart };

struct PlaneShape {
    int32_t line_bytes = 0, lines = 0, extra_lines = 0;
    int32_t pitch = 0;  // positive; the direction is bottom_up
    bool bottom_up = false;
    uint32_t residue = 0;
    GuardPage guard_page = GuardPage::kNone;
    uint32_t alignment = 1;  // with a guard page: line starts are multiples of this
};

// Bytes whose first element sits on a 64-byte boundary, in copies too, so
// that a clone keeps every address residue of the original.
class AlignedBytes {
public:
    explicit AlignedBytes(size_t n = 0);  // zeroed, and 64 zero bytes after them
    // Bytes between two inaccessible pages (mprotect, or VirtualProtect on
    // Windows): data() is page-aligned and data() + size() is the start of a
    // page.
    static AlignedBytes BetweenGuardPages(size_t n);
    AlignedBytes(const AlignedBytes& o) : AlignedBytes(o.size_) { std::copy_n(o.data(), size_, data()); }
    AlignedBytes(AlignedBytes&&) noexcept = default;
    AlignedBytes& operator=(AlignedBytes&&) noexcept = default;
    uint8_t* data() const { return bytes_.get(); }
    size_t size() const { return size_; }
    uint8_t& operator[](size_t i) const { return data()[i]; }
    uint8_t* begin() const { return data(); }
    uint8_t* end() const { return data() + size_; }

private:
    std::shared_ptr<uint8_t> bytes_;  // released by whatever allocated it
    size_t size_ = 0;
};

// A plane's bytes, guard room included, and where its first line starts.
struct GuardedPlane {
    GuardedPlane(Rng& rng, const PlaneShape& shape);
    uint8_t* first_line() const { return bytes.data() + first; }
    // The skip that follows `consumed` bytes a line.
    int32_t Skip(int32_t consumed) const { return (shape.bottom_up ? -shape.pitch : shape.pitch) - consumed; }

    PlaneShape shape;
    AlignedBytes bytes;
    size_t first = 0;
};

// The planes of one conversion, in any order; a copy is a clone at the same
// address residues.
using Scene = std::vector<GuardedPlane>;

// The same request with its plane pointers moved from `scene` into `clone`.
Request Rebase(const Request& r, const Scene& scene, Scene& clone);

std::string Describe(const Request& r);

// Every byte of every plane buffer, guard room included, equal; otherwise
// the first difference, named by plane and by its offset from the first line.
::testing::AssertionResult SameBytes(const Scene& got, const Scene& want);

// Runs `reference` on a clone of `scene` and `convert` on `scene` with the
// same request, and compares the two.
template <class Convert, class Reference>
::testing::AssertionResult Differential(Scene& scene, const Request& r, Convert&& convert, Reference&& reference) {
    Scene expected = scene;
    const Request rebased = Rebase(r, scene, expected);
    reference(rebased);
    convert(r);
    ::testing::AssertionResult same = SameBytes(scene, expected);
    if (!same) same << "\n  request: " << Describe(r) << "\n  seed: ZENK_TEST_SEED=" << TestSeed();
    return same;
}

// The exports' alignment test of one plane, written out: 16-aligned, with a
// pitch and a width in whole units.
inline bool PassesAlignment(const void* plane, int32_t stride, int32_t width, uint32_t stride_unit, uint32_t width_unit) {
    return reinterpret_cast<uintptr_t>(plane) % 16 == 0 && static_cast<uint32_t>(stride) % stride_unit == 0 &&
           static_cast<uint32_t>(width) % width_unit == 0;
}

// Luma limited to 16..235 with the clamp on, else to 0..255; a value
// saturated to a byte.
inline int ClampLuma(int64_t y, bool clamp) {
    return static_cast<int>(std::clamp<int64_t>(y, clamp ? 16 : 0, clamp ? 235 : 255));
}
inline uint8_t SaturateByte(int64_t v) { return static_cast<uint8_t>(std::clamp<int64_t>(v, 0, 255)); }

// Running pointers of a scalar reference, moved by signed byte counts.
template <class T>
inline T* Step(T* p, int64_t bytes) {
    return reinterpret_cast<T*>(reinterpret_cast<uintptr_t>(p) + static_cast<intptr_t>(bytes));
}

// Source line n of a reducing line-pair mode (by k = 2 or 4): destination
// lines take their source lines from two streams in turn, the second one
// pitch (a field pair) or k pitches after the first, and each stream
// advances by 2k pitches plus src_skip, whose sign alone gives the direction.
inline const uint8_t* ReducedSourceLine(const Request& r, int64_t k, int32_t n) {
    const int64_t sign = r.src_skip < 0 ? -1 : 1, second = sign * (r.src_field_pair ? 1 : k) * r.src_stride;
    return Step(r.src_plane, (n % 2 ? second : 0) + (n / 2) * (r.src_skip + sign * 2 * k * r.src_stride));
}

}  // namespace zenk::test
