#include "test_picture.h"

#include <cstdlib>
#include <sstream>

#if defined(_WIN32)
#include <windows.h>
#else
#include <sys/mman.h>
#include <unistd.h>
#endif

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

Rng::Rng(const uint8_t* script, size_t size) : script_(script), script_left_(size) {
    uint64_t h = 1469598103934665603ull;
    for (size_t i = 0; i < size; ++i) h = (h ^ script[i]) * 1099511628211ull;
    engine_.seed(h);
}

uint32_t Rng::AlphaValue() {
    static const uint32_t kSpecial[] = {0u, 1u, 0x80u, 0xFFu, 0x100u, 0x1FFu, 0x7FFFu, 0x8000u, 0xFFFFu,
                                        0x00FF00FFu, 0x12345u, 0xFFFFFFFFu, 0x80000080u, 0x00800080u};
    if (Chance(40)) return kSpecial[Uniform(0, static_cast<int32_t>(std::size(kSpecial)) - 1)];
    return static_cast<uint32_t>(Draw());
}

AlignedBytes::AlignedBytes(size_t n)
    : bytes_(new (std::align_val_t{64}) uint8_t[n + 64](),
             [](uint8_t* p) { ::operator delete[](p, std::align_val_t{64}); }),
      size_(n) {}

// The bytes get whole pages of their own, between two pages that neither
// reads nor writes: VirtualProtect on Windows does what mprotect does.
namespace {
#if defined(_WIN32)
size_t PageSize() {
    SYSTEM_INFO info;
    GetSystemInfo(&info);
    return info.dwPageSize;
}
uint8_t* MapPages(size_t bytes) {
    return static_cast<uint8_t*>(VirtualAlloc(nullptr, bytes, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE));
}
bool Forbid(uint8_t* page, size_t bytes) {
    DWORD before;
    return VirtualProtect(page, bytes, PAGE_NOACCESS, &before);
}
void UnmapPages(uint8_t* base, size_t) { VirtualFree(base, 0, MEM_RELEASE); }
#else
size_t PageSize() { return static_cast<size_t>(sysconf(_SC_PAGESIZE)); }
uint8_t* MapPages(size_t bytes) {
    void* m = mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    return m == MAP_FAILED ? nullptr : static_cast<uint8_t*>(m);
}
bool Forbid(uint8_t* page, size_t bytes) { return mprotect(page, bytes, PROT_NONE) == 0; }
void UnmapPages(uint8_t* base, size_t bytes) { munmap(base, bytes); }
#endif

constexpr int64_t kGuard = 96;

// The bytes a plane's lines span, as (low, high) relative to its first
// line: top-down lines go up in memory, bottom-up ones down, and the extra
// lines (a chroma plane) follow `lines` lines after the first.
std::pair<int64_t, int64_t> LineSpan(const PlaneShape& s) {
    const int64_t pitch = s.pitch, lines = s.lines, extra = s.extra_lines;
    if (lines + extra == 0) return {0, 0};
    if (!s.bottom_up) return {0, (lines + extra - 1) * pitch + s.line_bytes};
    return {lines == 0 ? 0 : -(lines - 1) * pitch, (extra ? lines * pitch : 0) + s.line_bytes};
}
}  // namespace

AlignedBytes AlignedBytes::BetweenGuardPages(size_t n) {
    const size_t page = PageSize();
    const size_t inner = (n + page - 1) / page * page;
    uint8_t* base = MapPages(inner + 2 * page);
    if (base == nullptr || !Forbid(base, page) || !Forbid(base + page + inner, page)) std::abort();
    AlignedBytes b;
    b.bytes_.reset(base + page, [=](uint8_t* p) { UnmapPages(p - page, inner + 2 * page); });
    b.size_ = inner;
    return b;
}

GuardedPlane::GuardedPlane(Rng& rng, const PlaneShape& plane_shape) : shape(plane_shape) {
    if (shape.guard_page != GuardPage::kNone) {
        const auto [low, high] = LineSpan(shape);
        bytes = AlignedBytes::BetweenGuardPages(static_cast<size_t>(high - low) + 64);
        // Before the start: the lowest byte of the span on the page boundary,
        // rounded up to the line alignment. After the end: the span's end on
        // the boundary, rounded down to the alignment.
        const size_t align = shape.alignment ? shape.alignment : 1;
        first = shape.guard_page == GuardPage::kBeforeStart ? (static_cast<size_t>(-low) + align - 1) / align * align
                                                            : (bytes.size() - static_cast<size_t>(high)) / align * align;
    } else {
        // Room for the lines in either direction, for the drift of kernels
        // that consume fewer bytes than a line holds, and for guards on both
        // sides.
        const int64_t pitch = shape.pitch, total_lines = int64_t{shape.lines} + shape.extra_lines;
        const int64_t below = shape.bottom_up ? pitch * (shape.lines + 1) : pitch;
        const int64_t above = pitch * (total_lines + 1) + shape.line_bytes;
        bytes = AlignedBytes(static_cast<size_t>(kGuard + below + above + kGuard + 128));
        first = (static_cast<size_t>(kGuard + below) & ~size_t{63}) + 64 + (shape.residue & 63u);
    }
    for (uint8_t& b : bytes) b = rng.Byte();
}

Request Rebase(const Request& r, const Scene& scene, Scene& clone) {
    auto move = [&](const uint8_t* p) {
        for (size_t i = 0; p != nullptr && i < scene.size(); ++i)
            if (p >= scene[i].bytes.begin() && p < scene[i].bytes.end())
                return clone[i].bytes.data() + (p - scene[i].bytes.data());
        return const_cast<uint8_t*>(p);  // not a picture pointer (or one the conversion must not use)
    };
    Request out = r;
    out.src_plane = move(r.src_plane);
    out.src_alpha_plane = move(r.src_alpha_plane);
    out.dst_plane = move(r.dst_plane);
    out.dst_alpha_plane = move(r.dst_alpha_plane);
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
        const AlignedBytes& g = got[i].bytes;
        const AlignedBytes& w = want[i].bytes;
        for (size_t j = 0; j < g.size(); ++j) {
            if (g[j] == w[j]) continue;
            const ptrdiff_t rel = static_cast<ptrdiff_t>(j) - static_cast<ptrdiff_t>(got[i].first);
            return ::testing::AssertionFailure()
                   << "plane " << i << ": byte at first_line" << (rel >= 0 ? "+" : "") << rel << " is "
                   << int(g[j]) << ", expected " << int(w[j]);
        }
    }
    return ::testing::AssertionSuccess();
}

}  // namespace zenk::test
