// Counts heap allocations made anywhere in the process, so that each
// benchmark can report how many one frame's conversion makes. The benchmark
// program replaces the C library's allocator entry points with counting
// ones that forward to the C library's own implementation (glibc exports it
// under the __libc_ names); C++ new goes through malloc and is counted too.
#include <cerrno>
#include <cstddef>

#include "allocation_counter.h"

extern "C" {
void* __libc_malloc(size_t size);
void* __libc_calloc(size_t count, size_t size);
void* __libc_realloc(void* block, size_t size);
void __libc_free(void* block);
void* __libc_memalign(size_t alignment, size_t size);
}

namespace zenk_bench {
std::atomic<unsigned long> g_allocations{0};
}  // namespace zenk_bench

namespace {
inline void Count() { zenk_bench::g_allocations.fetch_add(1, std::memory_order_relaxed); }
}  // namespace

extern "C" {
void* malloc(size_t size) {
    Count();
    return __libc_malloc(size);
}
void* calloc(size_t count, size_t size) {
    Count();
    return __libc_calloc(count, size);
}
void* realloc(void* block, size_t size) {
    Count();
    return __libc_realloc(block, size);
}
void free(void* block) { __libc_free(block); }
void* memalign(size_t alignment, size_t size) {
    Count();
    return __libc_memalign(alignment, size);
}
void* aligned_alloc(size_t alignment, size_t size) {
    Count();
    return __libc_memalign(alignment, size);
}
int posix_memalign(void** out, size_t alignment, size_t size) {
    if (alignment % sizeof(void*) != 0 || (alignment & (alignment - 1)) != 0) return EINVAL;
    Count();
    void* block = __libc_memalign(alignment, size);
    if (block == nullptr && size != 0) return ENOMEM;
    *out = block;
    return 0;
}
}
