// The 128-bit integer vector layer every kernel is written in: SSE2. x86
// compiles it natively. Other processors compile the same intrinsics
// through SIMDe, which gives each one its x86 result bit for bit (on NEON
// where it can, in portable C elsewhere), so a picture converts to the same
// bytes on every architecture. There, non-temporal stores are ordinary
// stores, the store fence a full memory fence and prefetches
// __builtin_prefetch.
#pragma once

#if defined(__x86_64__) || defined(__i386__) || defined(_M_X64) || defined(_M_IX86)
#include <emmintrin.h>
#else
#define SIMDE_ENABLE_NATIVE_ALIASES
#include <simde/x86/sse2.h>
#endif
