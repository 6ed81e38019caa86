/*
 * ZenkTranscoderLibrary: pixel-format conversion between packed and planar
 * 4:2:2 YUV, BGR32/BGR24 and 8-bit alpha planes, for broadcast hosts.
 *
 * Every conversion is one call: the host fills a ZenkConversionRequest and
 * passes it to the export named after the source and destination formats
 * (ZENK_SSE2_<SOURCE>_<DESTINATION>_EX). The exports return nothing and
 * check nothing: a request that breaks the invariants below is the host's
 * fault. Misalignment never fails; it only selects a slower kernel.
 *
 * Conversions are reentrant: no heap, no locks, no state between calls
 * apart from a cached pointer to the host settings object. Any number of
 * threads may convert different pictures at once.
 *
 * Instruction-set levels (x86). The names say SSE2, and the bytes are the
 * SSE2 kernels'; on a processor with AVX2, or AVX-512 F, BW and VL, whose
 * operating system saves those registers, the exports run kernels of that
 * level, which write exactly the same bytes and touch no other byte, faster.
 * The level is chosen once, when the library is loaded. The environment
 * variable ZENK_CPU, read at load, caps it: "sse2", "avx2" or "avx512" runs
 * at most that level (a level the processor lacks runs the processor's
 * best); a missing or unknown value leaves the library at its best level.
 *
 * Streaming stores (use_streaming_stores). Non-temporal stores write the
 * destination past the cache, without reading it in first. Measured at
 * 3840x2160 on frames from memory (AMD EPYC, 2026-11-25):
 *  - Conversions that only move bytes (copies, the packed YUV reorders,
 *    the BGR32/BGR24 repacks, the alpha copies and fills) run 1.2 to 1.7 times as fast with them (the split of UYVY16I
 *    to Y8PUV8I alone at the same speed): set it when frames stream from
 *    memory to memory, as in playout.
 *  - Conversions with arithmetic (YUV to RGB, RGB to YUV, a change of
 *    matrix) run from 8 % slower to 11 % faster, since the arithmetic sets
 *    their pace. What they buy is the host's cache: after one frame, 16 to
 *    62 % of a 4 to 16 MiB working set of the host was still cached, against
 *    0 to 25 % with ordinary stores. Set it when the host's own data matter
 *    more than a few per cent of this call.
 *  - Leave it clear for pictures that fit in the cache or are read back soon
 *    (at 1920x1080 in the cache the byte movers lose a third to a half of
 *    their speed with it), and for planes off a 16-byte boundary with a BGR24 destination or a
 *    change of matrix (up to 1.55 times slower there).
 *
 * Other architectures (64-bit Arm Linux): the same exports, under the same
 * names, write the same bytes as on x86; the SSE2 kernels are compiled
 * through SIMDe. There, use_streaming_stores selects ordinary stores, still
 * followed by a memory fence at the end of the call.
 *
 * Module start-up. The library imports ZenkGetHostSettings (export 1 of the
 * ZenkHostSettings library, see zenk_host_settings.h) and asks it for the
 * host settings object when it is loaded.
 *  - Windows: a null settings object fails the load (DllMain returns FALSE),
 *    so LoadLibrary returns NULL.
 *  - Linux and other ELF systems: a shared object's constructor cannot
 *    refuse dlopen, so the library always loads. Without a settings object
 *    the host option that chooses the full-range chroma sets answers 1 (the
 *    full-swing sets), and the library asks the settings library again at
 *    each conversion that needs the option, until it gets an object.
 *
 * Invariants the caller keeps:
 *  - src_skip is src_stride minus the bytes a kernel reads from one source
 *    line (width times the bytes per pixel for packed formats); likewise
 *    dst_skip and the alpha skips (one byte per pixel). A negative skip
 *    walks the picture bottom-up.
 *  - A Y8PUV8I picture is one block: its interleaved chroma plane starts at
 *    plane + stride * height (src_height for a source, dst_height for a
 *    destination) and shares the luma plane's pitch and skip.
 *  - src_height is the line count of both pictures.
 *
 * Chroma siting of the 4:2:2 layouts: the encoders point-sample each pixel
 * pair's chroma, Cb from its even pixel and Cr from its odd pixel, with no
 * averaging; the decoders give both pixels of a pair the pair's chroma, with
 * no interpolation. A colour edge inside a pair comes back with a one-pixel
 * fringe (docs/zenk-convert.md, "Chroma siting", shows one).
 *
 * Line-pair modes (scan_mode 1 or 2 with vertical_mode 1 or 2, on the five
 * exports with a kernel table): dst_height destination lines, each made from
 * one source line. The destination is walked like any picture: dst_skip is
 * the pitch minus the bytes of the pixels a line converts (its whole pixel
 * pairs), negative for a bottom-up destination. The source is walked from
 * line starts: its second line is one pitch (src_field_pair set: the other
 * field) or 2 or 4 pitches on, and each line start then advances by 4 or 8
 * pitches plus src_skip, so src_skip is 0 for an ordinary source; its sign
 * alone makes the walk go upward. With src_height 0 nothing is read or
 * written, whatever dst_height says. vertical_mode 3 (line doubling, BGR32I
 * to YUV) writes each source line to two destination lines dst_stride
 * apart, and advances the source line start by src_skip.
 */
#ifndef ZENK_TRANSCODER_H
#define ZENK_TRANSCODER_H

#include <stddef.h>
#include <stdint.h>

#if defined(_WIN32)
#define ZENK_CALL __cdecl
#define ZENK_API
#elif defined(__GNUC__) && defined(__i386__)
#define ZENK_CALL __attribute__((cdecl))
#define ZENK_API __attribute__((visibility("default")))
#else
#define ZENK_CALL
#define ZENK_API __attribute__((visibility("default")))
#endif

#ifdef __cplusplus
extern "C" {
#endif

/*
 * The conversion request. On 32-bit x86 it is exactly the 104-byte record
 * of 26 little-endian 32-bit words that hosts fill (each field at 4 times
 * its word number).
 *
 * 64-bit targets (Windows x64, x86-64 and Arm Linux) use the natural layout
 * of the same declaration, 128 bytes: the four plane pointers are 8 bytes,
 * 8-aligned, and every other field keeps its 32-bit size (none is a `long`,
 * which 64-bit Windows keeps at 4 bytes and 64-bit Linux makes 8), so the
 * layout is the same on Windows and Linux. Byte offsets:
 *   src_plane 0, src_width 8, src_height 12, src_stride 16, src_skip 20,
 *   src_matrix 24, src_range 28, src_field_pair 32 (3 reserved bytes, then
 *   4 bytes of padding), src_alpha_plane 40, src_alpha_stride 48,
 *   src_alpha_skip 52; dst_plane 56, width 64, dst_height 68, dst_stride 72,
 *   dst_skip 76, dst_matrix 80, dst_range 84, dst_field_pair 88 (3 reserved
 *   bytes, 4 of padding), dst_alpha_plane 96, dst_alpha_stride 104,
 *   dst_alpha_skip 108; alpha_value 112, full_range 116,
 *   use_streaming_stores 117, clamp_luma 118, flags_reserved 119,
 *   scan_mode 120, vertical_mode 124.
 */
typedef struct ZenkConversionRequest {
    /* Source block (words 0 to 10). */
    const uint8_t* src_plane;       /* first byte of the first source line (luma plane of Y8PUV8I) */
    int32_t src_width;              /* source pixels per line; only some alignment tests read it */
    int32_t src_height;             /* lines to convert, for every kernel */
    int32_t src_stride;             /* source pitch in bytes */
    int32_t src_skip;               /* added to the running source pointer after each line */
    int32_t src_matrix;             /* 1 = BT.601, other values = BT.709 */
    int32_t src_range;              /* carried, not acted on */
    uint8_t src_field_pair;         /* nonzero: the two lines of a line pair are neighbours */
    uint8_t src_field_pair_reserved[3];
    const uint8_t* src_alpha_plane; /* source alpha plane (IA8P formats) */
    int32_t src_alpha_stride;
    int32_t src_alpha_skip;

    /* Destination block (words 11 to 21). */
    uint8_t* dst_plane;             /* first byte of the first destination line */
    int32_t width;                  /* pixels per line: the line length of every kernel */
    int32_t dst_height;             /* destination lines (Y8PUV8I chroma placement, pair modes) */
    int32_t dst_stride;
    int32_t dst_skip;
    int32_t dst_matrix;             /* 1 = BT.601, other values = BT.709; used by every coefficient set */
    int32_t dst_range;              /* carried, not acted on */
    uint8_t dst_field_pair;         /* carried, not acted on */
    uint8_t dst_field_pair_reserved[3];
    uint8_t* dst_alpha_plane;
    int32_t dst_alpha_stride;
    int32_t dst_alpha_skip;

    /* Trailing words (22 to 25). */
    uint32_t alpha_value;           /* constant alpha; see each export for how it is read */
    uint8_t full_range;             /* nonzero: full-swing luma, chroma set chosen by host option 128 */
    uint8_t use_streaming_stores;   /* nonzero: non-temporal 16-byte stores */
    uint8_t clamp_luma;             /* nonzero: luma clamped to 16..235 */
    uint8_t flags_reserved;
    int32_t scan_mode;              /* 0 = frame, 1 or 2 = line-pair addressing */
    int32_t vertical_mode;          /* kernel column of the table exports; 1 = reduce by 2, 2 = by 4, 3 = double */
} ZenkConversionRequest;

#if defined(__cplusplus)
#define ZENK_STATIC_ASSERT(cond, msg) static_assert(cond, msg)
#else
#define ZENK_STATIC_ASSERT(cond, msg) _Static_assert(cond, msg)
#endif

#if UINTPTR_MAX == 0xFFFFFFFFu
ZENK_STATIC_ASSERT(sizeof(ZenkConversionRequest) == 104, "the request is 26 words");
ZENK_STATIC_ASSERT(offsetof(ZenkConversionRequest, src_plane) == 4 * 0, "word 0");
ZENK_STATIC_ASSERT(offsetof(ZenkConversionRequest, src_width) == 4 * 1, "word 1");
ZENK_STATIC_ASSERT(offsetof(ZenkConversionRequest, src_height) == 4 * 2, "word 2");
ZENK_STATIC_ASSERT(offsetof(ZenkConversionRequest, src_stride) == 4 * 3, "word 3");
ZENK_STATIC_ASSERT(offsetof(ZenkConversionRequest, src_skip) == 4 * 4, "word 4");
ZENK_STATIC_ASSERT(offsetof(ZenkConversionRequest, src_matrix) == 4 * 5, "word 5");
ZENK_STATIC_ASSERT(offsetof(ZenkConversionRequest, src_range) == 4 * 6, "word 6");
ZENK_STATIC_ASSERT(offsetof(ZenkConversionRequest, src_field_pair) == 4 * 7, "word 7");
ZENK_STATIC_ASSERT(offsetof(ZenkConversionRequest, src_alpha_plane) == 4 * 8, "word 8");
ZENK_STATIC_ASSERT(offsetof(ZenkConversionRequest, src_alpha_stride) == 4 * 9, "word 9");
ZENK_STATIC_ASSERT(offsetof(ZenkConversionRequest, src_alpha_skip) == 4 * 10, "word 10");
ZENK_STATIC_ASSERT(offsetof(ZenkConversionRequest, dst_plane) == 4 * 11, "word 11");
ZENK_STATIC_ASSERT(offsetof(ZenkConversionRequest, width) == 4 * 12, "word 12");
ZENK_STATIC_ASSERT(offsetof(ZenkConversionRequest, dst_height) == 4 * 13, "word 13");
ZENK_STATIC_ASSERT(offsetof(ZenkConversionRequest, dst_stride) == 4 * 14, "word 14");
ZENK_STATIC_ASSERT(offsetof(ZenkConversionRequest, dst_skip) == 4 * 15, "word 15");
ZENK_STATIC_ASSERT(offsetof(ZenkConversionRequest, dst_matrix) == 4 * 16, "word 16");
ZENK_STATIC_ASSERT(offsetof(ZenkConversionRequest, dst_range) == 4 * 17, "word 17");
ZENK_STATIC_ASSERT(offsetof(ZenkConversionRequest, dst_field_pair) == 4 * 18, "word 18");
ZENK_STATIC_ASSERT(offsetof(ZenkConversionRequest, dst_alpha_plane) == 4 * 19, "word 19");
ZENK_STATIC_ASSERT(offsetof(ZenkConversionRequest, dst_alpha_stride) == 4 * 20, "word 20");
ZENK_STATIC_ASSERT(offsetof(ZenkConversionRequest, dst_alpha_skip) == 4 * 21, "word 21");
ZENK_STATIC_ASSERT(offsetof(ZenkConversionRequest, alpha_value) == 4 * 22, "word 22");
ZENK_STATIC_ASSERT(offsetof(ZenkConversionRequest, full_range) == 4 * 23, "word 23, byte 0");
ZENK_STATIC_ASSERT(offsetof(ZenkConversionRequest, use_streaming_stores) == 4 * 23 + 1, "word 23, byte 1");
ZENK_STATIC_ASSERT(offsetof(ZenkConversionRequest, clamp_luma) == 4 * 23 + 2, "word 23, byte 2");
ZENK_STATIC_ASSERT(offsetof(ZenkConversionRequest, scan_mode) == 4 * 24, "word 24");
ZENK_STATIC_ASSERT(offsetof(ZenkConversionRequest, vertical_mode) == 4 * 25, "word 25");
#elif UINTPTR_MAX == 0xFFFFFFFFFFFFFFFFu
ZENK_STATIC_ASSERT(sizeof(ZenkConversionRequest) == 128, "the 64-bit request is 128 bytes");
ZENK_STATIC_ASSERT(offsetof(ZenkConversionRequest, src_width) == 8, "64-bit layout");
ZENK_STATIC_ASSERT(offsetof(ZenkConversionRequest, src_skip) == 20, "64-bit layout");
ZENK_STATIC_ASSERT(offsetof(ZenkConversionRequest, src_field_pair) == 32, "64-bit layout");
ZENK_STATIC_ASSERT(offsetof(ZenkConversionRequest, src_alpha_plane) == 40, "64-bit layout");
ZENK_STATIC_ASSERT(offsetof(ZenkConversionRequest, src_alpha_skip) == 52, "64-bit layout");
ZENK_STATIC_ASSERT(offsetof(ZenkConversionRequest, dst_plane) == 56, "64-bit layout");
ZENK_STATIC_ASSERT(offsetof(ZenkConversionRequest, width) == 64, "64-bit layout");
ZENK_STATIC_ASSERT(offsetof(ZenkConversionRequest, dst_skip) == 76, "64-bit layout");
ZENK_STATIC_ASSERT(offsetof(ZenkConversionRequest, dst_field_pair) == 88, "64-bit layout");
ZENK_STATIC_ASSERT(offsetof(ZenkConversionRequest, dst_alpha_plane) == 96, "64-bit layout");
ZENK_STATIC_ASSERT(offsetof(ZenkConversionRequest, dst_alpha_skip) == 108, "64-bit layout");
ZENK_STATIC_ASSERT(offsetof(ZenkConversionRequest, alpha_value) == 112, "64-bit layout");
ZENK_STATIC_ASSERT(offsetof(ZenkConversionRequest, full_range) == 116, "64-bit layout");
ZENK_STATIC_ASSERT(offsetof(ZenkConversionRequest, clamp_luma) == 118, "64-bit layout");
ZENK_STATIC_ASSERT(offsetof(ZenkConversionRequest, scan_mode) == 120, "64-bit layout");
ZENK_STATIC_ASSERT(offsetof(ZenkConversionRequest, vertical_mode) == 124, "64-bit layout");
#endif

/* Pixel format tokens, for hosts and tools that name formats at run time.
 * The library itself has no format argument: the export fixes the formats. */
typedef enum ZenkPixelFormat {
    ZENK_FORMAT_UYVY16I,    /* per pair: Cb, Y0, Cr, Y1 */
    ZENK_FORMAT_YUYV16I,    /* per pair: Y0, Cb, Y1, Cr */
    ZENK_FORMAT_UVYY16I,    /* per pair: Cb, Cr, Y0, Y1 */
    ZENK_FORMAT_Y8PUV8I,    /* luma plane, then a plane of Cb, Cr pairs */
    ZENK_FORMAT_V8U8Y8A8I,  /* per pixel: Cr, Cb, Y, A */
    ZENK_FORMAT_BGR32I,     /* per pixel: B, G, R, A */
    ZENK_FORMAT_BGR24I,     /* per pixel: B, G, R */
    ZENK_FORMAT_A8P,        /* one alpha byte per pixel */
    ZENK_FORMAT_A8C         /* the constant alpha_value */
} ZenkPixelFormat;

typedef void(ZENK_CALL* ZenkConvertFunction)(const ZenkConversionRequest* request);

/*
 * Plain entry points: (source, destination, source pitch, ignored, matrix,
 * range[, alpha]). They build a request with no picture size and half the
 * source pitch as destination pitch, so they convert nothing; they exist
 * for hosts that call them by name. Use the _EX exports to convert.
 */

/* ---- RGB repacking and alpha planes ---- */
ZENK_API void ZENK_CALL ZENK_SSE2_BGR32I_BGR32I_EX(const ZenkConversionRequest* request);
ZENK_API void ZENK_CALL ZENK_SSE2_BGR32I_BGR24I_EX(const ZenkConversionRequest* request);
ZENK_API void ZENK_CALL ZENK_SSE2_BGR24I_BGR32I_EX(const ZenkConversionRequest* request);
ZENK_API void ZENK_CALL ZENK_SSE2_BGR24I_BGR24I_EX(const ZenkConversionRequest* request);
ZENK_API void ZENK_CALL ZENK_SSE2_BGR32I_BGR24IA8P_EX(const ZenkConversionRequest* request);
ZENK_API void ZENK_CALL ZENK_SSE2_A8P_A8P_EX(const ZenkConversionRequest* request);
ZENK_API void ZENK_CALL ZENK_SSE2_A8C_A8P_EX(const ZenkConversionRequest* request);
ZENK_API void ZENK_CALL ZENK_SSE2_BGR32I_A8P_EX(const ZenkConversionRequest* request);
ZENK_API void ZENK_CALL ZENK_SSE2_BGR24IA8P_BGR32I_EX(const ZenkConversionRequest* request);
ZENK_API void ZENK_CALL ZENK_SSE2_BGR24I_BGR24IA8P_EX(const ZenkConversionRequest* request);
ZENK_API void ZENK_CALL ZENK_SSE2_BGR24IA8P_BGR24IA8P_EX(const ZenkConversionRequest* request);
ZENK_API void ZENK_CALL ZENK_SSE2_BGR24IA8P_A8P_EX(const ZenkConversionRequest* request);
ZENK_API void ZENK_CALL ZENK_SSE2_UYVY16IA8P_A8P_EX(const ZenkConversionRequest* request);
ZENK_API void ZENK_CALL ZENK_SSE2_YUYV16IA8P_A8P_EX(const ZenkConversionRequest* request);
ZENK_API void ZENK_CALL ZENK_SSE2_BGR32I_BGR32I(const uint8_t* src, uint8_t* dst, int32_t src_pitch, int32_t ignored, int32_t matrix, int32_t range);
ZENK_API void ZENK_CALL ZENK_SSE2_BGR32I_BGR24I(const uint8_t* src, uint8_t* dst, int32_t src_pitch, int32_t ignored, int32_t matrix, int32_t range);
ZENK_API void ZENK_CALL ZENK_SSE2_BGR24I_BGR32I(const uint8_t* src, uint8_t* dst, int32_t src_pitch, int32_t ignored, int32_t matrix, int32_t range);
ZENK_API void ZENK_CALL ZENK_SSE2_BGR24I_BGR24I(const uint8_t* src, uint8_t* dst, int32_t src_pitch, int32_t ignored, int32_t matrix, int32_t range);
ZENK_API void ZENK_CALL ZENK_SSE2_BGR32I_A8P(const uint8_t* src, uint8_t* dst, int32_t src_pitch);

/* ---- YUV to RGB ---- */
ZENK_API void ZENK_CALL ZENK_SSE2_UYVY16I_BGR32I_EX(const ZenkConversionRequest* request);
ZENK_API void ZENK_CALL ZENK_SSE2_YUYV16I_BGR32I_EX(const ZenkConversionRequest* request);
ZENK_API void ZENK_CALL ZENK_SSE2_UYVY16I_BGR24I_EX(const ZenkConversionRequest* request);
ZENK_API void ZENK_CALL ZENK_SSE2_YUYV16I_BGR24I_EX(const ZenkConversionRequest* request);
ZENK_API void ZENK_CALL ZENK_SSE2_UVYY16I_BGR24I_EX(const ZenkConversionRequest* request);
ZENK_API void ZENK_CALL ZENK_SSE2_Y8PUV8I_BGR32I_EX(const ZenkConversionRequest* request);
ZENK_API void ZENK_CALL ZENK_SSE2_Y8PUV8I_BGR24I_EX(const ZenkConversionRequest* request);
ZENK_API void ZENK_CALL ZENK_SSE2_Y8PUV8IA8P_BGR32I_EX(const ZenkConversionRequest* request);
ZENK_API void ZENK_CALL ZENK_SSE2_YUYV16IA8P_BGR32I_EX(const ZenkConversionRequest* request);
ZENK_API void ZENK_CALL ZENK_SSE2_UYVY16IA8P_BGR32I_EX(const ZenkConversionRequest* request);
ZENK_API void ZENK_CALL ZENK_SSE2_Y8PUV8I_BGR24IA8P_EX(const ZenkConversionRequest* request);
ZENK_API void ZENK_CALL ZENK_SSE2_UVYY16I_BGR24IA8P_EX(const ZenkConversionRequest* request);
ZENK_API void ZENK_CALL ZENK_SSE2_YUYV16I_BGR24IA8P_EX(const ZenkConversionRequest* request);
ZENK_API void ZENK_CALL ZENK_SSE2_UYVY16I_BGR24IA8P_EX(const ZenkConversionRequest* request);
ZENK_API void ZENK_CALL ZENK_SSE2_YUYV16IA8P_BGR24IA8P_EX(const ZenkConversionRequest* request);
ZENK_API void ZENK_CALL ZENK_SSE2_UYVY16IA8P_BGR24IA8P_EX(const ZenkConversionRequest* request);
ZENK_API void ZENK_CALL ZENK_SSE2_UYVY16I_BGR32I(const uint8_t* src, uint8_t* dst, int32_t src_pitch, int32_t ignored, int32_t matrix, int32_t range, uint32_t alpha_value);
ZENK_API void ZENK_CALL ZENK_SSE2_YUYV16I_BGR32I(const uint8_t* src, uint8_t* dst, int32_t src_pitch, int32_t ignored, int32_t matrix, int32_t range, uint32_t alpha_value);
ZENK_API void ZENK_CALL ZENK_SSE2_UYVY16I_BGR24I(const uint8_t* src, uint8_t* dst, int32_t src_pitch, int32_t ignored, int32_t matrix, int32_t range);
ZENK_API void ZENK_CALL ZENK_SSE2_YUYV16I_BGR24I(const uint8_t* src, uint8_t* dst, int32_t src_pitch, int32_t ignored, int32_t matrix, int32_t range);

/* ---- RGB to YUV ---- */
ZENK_API void ZENK_CALL ZENK_SSE2_BGR32I_UYVY16I_EX(const ZenkConversionRequest* request);
ZENK_API void ZENK_CALL ZENK_SSE2_BGR32I_UVYY16I_EX(const ZenkConversionRequest* request);
ZENK_API void ZENK_CALL ZENK_SSE2_BGR32I_Y8PUV8I_EX(const ZenkConversionRequest* request);
ZENK_API void ZENK_CALL ZENK_SSE2_BGR32I_YUYV16I_EX(const ZenkConversionRequest* request);
ZENK_API void ZENK_CALL ZENK_SSE2_BGR24I_YUYV16I_EX(const ZenkConversionRequest* request);
ZENK_API void ZENK_CALL ZENK_SSE2_BGR24I_UYVY16I_EX(const ZenkConversionRequest* request);
ZENK_API void ZENK_CALL ZENK_SSE2_BGR24I_UVYY16I_EX(const ZenkConversionRequest* request);
ZENK_API void ZENK_CALL ZENK_SSE2_BGR24I_Y8PUV8I_EX(const ZenkConversionRequest* request);
ZENK_API void ZENK_CALL ZENK_SSE2_BGR32I_YUYV16IA8P_EX(const ZenkConversionRequest* request);
ZENK_API void ZENK_CALL ZENK_SSE2_BGR32I_UYVY16IA8P_EX(const ZenkConversionRequest* request);
ZENK_API void ZENK_CALL ZENK_SSE2_BGR32I_UVYY16IA8P_EX(const ZenkConversionRequest* request);
ZENK_API void ZENK_CALL ZENK_SSE2_BGR32I_Y8PUV8IA8P_EX(const ZenkConversionRequest* request);
ZENK_API void ZENK_CALL ZENK_SSE2_BGR24I_YUYV16IA8P_EX(const ZenkConversionRequest* request);
ZENK_API void ZENK_CALL ZENK_SSE2_BGR24I_Y8PUV8IA8P_EX(const ZenkConversionRequest* request);
ZENK_API void ZENK_CALL ZENK_SSE2_BGR24I_UYVY16IA8P_EX(const ZenkConversionRequest* request);
ZENK_API void ZENK_CALL ZENK_SSE2_BGR24I_UVYY16IA8P_EX(const ZenkConversionRequest* request);
ZENK_API void ZENK_CALL ZENK_SSE2_BGR24IA8P_YUYV16IA8P_EX(const ZenkConversionRequest* request);
ZENK_API void ZENK_CALL ZENK_SSE2_BGR24IA8P_Y8PUV8IA8P_EX(const ZenkConversionRequest* request);
ZENK_API void ZENK_CALL ZENK_SSE2_BGR24IA8P_UYVY16IA8P_EX(const ZenkConversionRequest* request);
ZENK_API void ZENK_CALL ZENK_SSE2_BGR24IA8P_UVYY16IA8P_EX(const ZenkConversionRequest* request);
ZENK_API void ZENK_CALL ZENK_SSE2_BGR32I_YUYV16I(const uint8_t* src, uint8_t* dst, int32_t src_pitch, int32_t ignored, int32_t matrix, int32_t range);
ZENK_API void ZENK_CALL ZENK_SSE2_BGR32I_UYVY16I(const uint8_t* src, uint8_t* dst, int32_t src_pitch, int32_t ignored, int32_t matrix, int32_t range);
ZENK_API void ZENK_CALL ZENK_SSE2_BGR32I_UVYY16I(const uint8_t* src, uint8_t* dst, int32_t src_pitch, int32_t ignored, int32_t matrix, int32_t range);
ZENK_API void ZENK_CALL ZENK_SSE2_BGR24I_YUYV16I(const uint8_t* src, uint8_t* dst, int32_t src_pitch, int32_t ignored, int32_t matrix, int32_t range);
ZENK_API void ZENK_CALL ZENK_SSE2_BGR24I_UYVY16I(const uint8_t* src, uint8_t* dst, int32_t src_pitch, int32_t ignored, int32_t matrix, int32_t range);
ZENK_API void ZENK_CALL ZENK_SSE2_BGR24I_UVYY16I(const uint8_t* src, uint8_t* dst, int32_t src_pitch, int32_t ignored, int32_t matrix, int32_t range);

/* ---- YUV to YUV ---- */
ZENK_API void ZENK_CALL ZENK_SSE2_UYVY16I_UYVY16I_EX(const ZenkConversionRequest* request);
ZENK_API void ZENK_CALL ZENK_SSE2_YUYV16I_YUYV16I_EX(const ZenkConversionRequest* request);
ZENK_API void ZENK_CALL ZENK_SSE2_UYVY16I_YUYV16I_EX(const ZenkConversionRequest* request);
ZENK_API void ZENK_CALL ZENK_SSE2_YUYV16I_UYVY16I_EX(const ZenkConversionRequest* request);
ZENK_API void ZENK_CALL ZENK_SSE2_UVYY16I_UYVY16I_EX(const ZenkConversionRequest* request);
ZENK_API void ZENK_CALL ZENK_SSE2_UYVY16I_UVYY16I_EX(const ZenkConversionRequest* request);
ZENK_API void ZENK_CALL ZENK_SSE2_UYVY16I_Y8PUV8I_EX(const ZenkConversionRequest* request);
ZENK_API void ZENK_CALL ZENK_SSE2_UYVY16I_V8U8Y8A8I_EX(const ZenkConversionRequest* request);
ZENK_API void ZENK_CALL ZENK_SSE2_UVYY16I_UYVY16IA8P_EX(const ZenkConversionRequest* request);
ZENK_API void ZENK_CALL ZENK_SSE2_YUYV16I_UYVY16IA8P_EX(const ZenkConversionRequest* request);
ZENK_API void ZENK_CALL ZENK_SSE2_UYVY16I_YUYV16IA8P_EX(const ZenkConversionRequest* request);
ZENK_API void ZENK_CALL ZENK_SSE2_UYVY16I_Y8PUV8IA8P_EX(const ZenkConversionRequest* request);
ZENK_API void ZENK_CALL ZENK_SSE2_UYVY16I_UYVY16IA8P_EX(const ZenkConversionRequest* request);
ZENK_API void ZENK_CALL ZENK_SSE2_UYVY16I_UVYY16IA8P_EX(const ZenkConversionRequest* request);
ZENK_API void ZENK_CALL ZENK_SSE2_YUYV16I_YUYV16IA8P_EX(const ZenkConversionRequest* request);
ZENK_API void ZENK_CALL ZENK_SSE2_UYVY16IA8P_YUYV16IA8P_EX(const ZenkConversionRequest* request);
ZENK_API void ZENK_CALL ZENK_SSE2_UYVY16IA8P_UYVY16IA8P_EX(const ZenkConversionRequest* request);
ZENK_API void ZENK_CALL ZENK_SSE2_YUYV16IA8P_YUYV16IA8P_EX(const ZenkConversionRequest* request);
ZENK_API void ZENK_CALL ZENK_SSE2_YUYV16IA8P_UYVY16IA8P_EX(const ZenkConversionRequest* request);
ZENK_API void ZENK_CALL ZENK_SSE2_UYVY16I_UYVY16I(const uint8_t* src, uint8_t* dst, int32_t src_pitch, int32_t ignored, int32_t matrix, int32_t range);
ZENK_API void ZENK_CALL ZENK_SSE2_YUYV16I_YUYV16I(const uint8_t* src, uint8_t* dst, int32_t src_pitch, int32_t ignored, int32_t matrix, int32_t range);

#ifdef __cplusplus
}
#endif

#endif /* ZENK_TRANSCODER_H */
