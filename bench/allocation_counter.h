// Process-wide count of heap allocations (malloc, calloc, realloc, the
// aligned forms, and C++ new through them).
#pragma once

#include <atomic>

namespace zenk_bench {
extern std::atomic<unsigned long> g_allocations;
inline unsigned long Allocations() { return g_allocations.load(std::memory_order_relaxed); }
}  // namespace zenk_bench
