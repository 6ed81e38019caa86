#include "test_picture.h"

#include <cstdlib>
#include <sstream>

namespace zenk::test {

uint64_t TestSeed() {
    static const uint64_t seed = [] {
        const char* text = std::getenv("ZENK_TEST_SEED");
        const uint64_t s = (text != nullptr && *text != '\0') ? std::strtoull(text, nullptr, 0)
                                                              : (static_cast<uint64_t>(std::random_device{}()) << 32) ^
                                                                    std::random_device{}();
        std::printf("zenk tests: ZENK_TEST_SEED=%llu\n", static_cast<unsigned long long>(s));
        return s;
    }();
    return seed;
}

uint32_t Rng::AlphaValue() {
    static const uint32_t kSpecial[] = {0u, 1u, 0x80u, 0xFFu, 0x100u, 0x1FFu, 0x7FFFu, 0x8000u, 0xFFFFu,
                                        0x00FF00FFu, 0x12345u, 0xFFFFFFFFu, 0x80000080u, 0x00800080u};
    if (Chance(40)) return kSpecial[Uniform(0, static_cast<int32_t>(std::size(kSpecial)) - 1)];
    return Next();
}

namespace {
constexpr int64_t kGuard = 96;
}

GuardedPlane::GuardedPlane(Rng& rng, const PlaneShape& shape) : shape_(shape) {
    const int64_t pitch = shape.pitch;
    const int64_t total_lines = static_cast<int64_t>(shape.lines) + shape.extra_lines;
    // Room for the lines in either direction, for the drift of kernels that
    // consume fewer bytes than a line holds, and for guards on both sides.
    const int64_t below = shape.bottom_up ? pitch * (shape.lines + 1) : pitch;
    const int64_t above = pitch * (total_lines + 1) + shape.line_bytes;
    const size_t size = static_cast<size_t>(kGuard + below + above + kGuard + 128);
    bytes_.resize(size);
    for (uint8_t& b : bytes_) b = rng.Byte();
    size_t first = static_cast<size_t>(kGuard + below);
    first_ = (first & ~size_t{63}) + 64 + (shape.residue & 63u);
}

const uint8_t* Scene::Rebase(const uint8_t* p, Scene& other) const {
    if (p == nullptr) return nullptr;
    for (size_t i = 0; i < planes_.size(); ++i)
        if (planes_[i].Contains(p)) return other.planes_[i].At(planes_[i].OffsetOf(p));
    return p;  // not a picture pointer (or a pointer the conversion must not use)
}

Request Scene::Rebase(const Request& r, Scene& other) const {
    Request out = r;
    out.src_plane = Rebase(r.src_plane, other);
    out.src_alpha_plane = Rebase(r.src_alpha_plane, other);
    out.dst_plane = const_cast<uint8_t*>(Rebase(r.dst_plane, other));
    out.dst_alpha_plane = const_cast<uint8_t*>(Rebase(r.dst_alpha_plane, other));
    return out;
}

std::string Describe(const Request& r) {
    std::ostringstream s;
    auto residue = [](const void* p) { return static_cast<unsigned>(reinterpret_cast<uintptr_t>(p) & 15u); };
    s << "src@16+" << residue(r.src_plane) << " src_width=" << r.src_width << " src_height=" << r.src_height
      << " src_stride=" << r.src_stride << " src_skip=" << r.src_skip << " src_matrix=" << r.src_matrix
      << " src_field_pair=" << int(r.src_field_pair) << " src_alpha@16+" << residue(r.src_alpha_plane)
      << " src_alpha_stride=" << r.src_alpha_stride << " src_alpha_skip=" << r.src_alpha_skip
      << " | dst@16+" << residue(r.dst_plane) << " width=" << r.width << " dst_height=" << r.dst_height
      << " dst_stride=" << r.dst_stride << " dst_skip=" << r.dst_skip << " dst_matrix=" << r.dst_matrix
      << " dst_alpha@16+" << residue(r.dst_alpha_plane) << " dst_alpha_stride=" << r.dst_alpha_stride
      << " dst_alpha_skip=" << r.dst_alpha_skip << " | alpha_value=0x" << std::hex << r.alpha_value << std::dec
      << " full_range=" << int(r.full_range) << " streaming=" << int(r.use_streaming_stores)
      << " clamp_luma=" << int(r.clamp_luma) << " scan_mode=" << r.scan_mode
      << " vertical_mode=" << r.vertical_mode;
    return s.str();
}

::testing::AssertionResult SameBytes(const Scene& got, const Scene& want) {
    for (size_t i = 0; i < got.size(); ++i) {
        const auto& g = got.planes()[i].bytes();
        const auto& w = want.planes()[i].bytes();
        for (size_t j = 0; j < g.size(); ++j) {
            if (g[j] == w[j]) continue;
            const ptrdiff_t rel = static_cast<ptrdiff_t>(j) - static_cast<ptrdiff_t>(got.planes()[i].first_offset());
            return ::testing::AssertionFailure()
                   << "plane " << i << ": byte at first_line" << (rel >= 0 ? "+" : "") << rel << " is "
                   << int(g[j]) << ", expected " << int(w[j]);
        }
    }
    return ::testing::AssertionSuccess();
}

}  // namespace zenk::test
