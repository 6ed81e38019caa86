// The timed conversions. Matrices are BT.601 on both sides (the standard
// libyuv's and swscale's defaults use) except where a case changes matrix.
#include "bench_cases.h"

#ifdef ZENK_BENCH_LIBYUV
#include <libyuv.h>
#endif
#ifdef ZENK_BENCH_SWSCALE
extern "C" {
#include <libavutil/pixfmt.h>
}
#define SWS(f) AV_PIX_FMT_##f
#else
#define SWS(f) -1
#endif

namespace zenk_bench {

int LineBytesPerPixel(Format format) {
    switch (format) {
        case Format::kUyvy:
        case Format::kYuyv:
        case Format::kUvyy: return 2;
        case Format::kY8Uv: return 1;
        case Format::kVuya:
        case Format::kBgr32: return 4;
        case Format::kBgr24: return 3;
        case Format::kA8: return 1;
        case Format::kConstant: return 0;
    }
    return 0;
}

int PlaneCount(Format format) { return format == Format::kY8Uv ? 2 : 1; }

int64_t SourceBytes(const Case& c, int64_t width, int64_t height) {
    return width * height * (LineBytesPerPixel(c.src) * PlaneCount(c.src) + (c.src_alpha ? 1 : 0));
}
int64_t DestinationBytes(const Case& c, int64_t width, int64_t height) {
    return width * height * (LineBytesPerPixel(c.dst) * PlaneCount(c.dst) + (c.dst_alpha ? 1 : 0));
}

namespace {

#ifdef ZENK_BENCH_LIBYUV
// Byte orders: libyuv's ARGB is B, G, R, A in memory (BGR32I), RGB24 is
// B, G, R (BGR24I), YUY2 is YUYV16I.
void LibyuvUyvyToArgb(const Frame& f) {
    libyuv::UYVYToARGB(f.src.plane, f.src.stride, f.dst.plane, f.dst.stride, f.width, f.height);
}
void LibyuvYuy2ToArgb(const Frame& f) {
    libyuv::YUY2ToARGB(f.src.plane, f.src.stride, f.dst.plane, f.dst.stride, f.width, f.height);
}
void LibyuvArgbToUyvy(const Frame& f) {
    libyuv::ARGBToUYVY(f.src.plane, f.src.stride, f.dst.plane, f.dst.stride, f.width, f.height);
}
void LibyuvArgbToYuy2(const Frame& f) {
    libyuv::ARGBToYUY2(f.src.plane, f.src.stride, f.dst.plane, f.dst.stride, f.width, f.height);
}
void LibyuvArgbCopy(const Frame& f) {
    libyuv::ARGBCopy(f.src.plane, f.src.stride, f.dst.plane, f.dst.stride, f.width, f.height);
}
void LibyuvArgbToRgb24(const Frame& f) {
    libyuv::ARGBToRGB24(f.src.plane, f.src.stride, f.dst.plane, f.dst.stride, f.width, f.height);
}
void LibyuvRgb24ToArgb(const Frame& f) {
    libyuv::RGB24ToARGB(f.src.plane, f.src.stride, f.dst.plane, f.dst.stride, f.width, f.height);
}
void LibyuvCopyBgr24(const Frame& f) {
    libyuv::CopyPlane(f.src.plane, f.src.stride, f.dst.plane, f.dst.stride, f.width * 3, f.height);
}
void LibyuvCopyPacked(const Frame& f) {
    libyuv::CopyPlane(f.src.plane, f.src.stride, f.dst.plane, f.dst.stride, f.width * 2, f.height);
}
// A 4:2:2 pixel pair is one 4-byte group, the unit libyuv's shuffle works on.
constexpr uint8_t kSwapWordBytes[16] = {1, 0, 3, 2, 5, 4, 7, 6, 9, 8, 11, 10, 13, 12, 15, 14};
constexpr uint8_t kUyvyToUvyy[16] = {0, 2, 1, 3, 4, 6, 5, 7, 8, 10, 9, 11, 12, 14, 13, 15};
void LibyuvSwapWordBytes(const Frame& f) {
    libyuv::ARGBShuffle(f.src.plane, f.src.stride, f.dst.plane, f.dst.stride, kSwapWordBytes, f.width / 2,
                        f.height);
}
void LibyuvUyvyToUvyy(const Frame& f) {
    libyuv::ARGBShuffle(f.src.plane, f.src.stride, f.dst.plane, f.dst.stride, kUyvyToUvyy, f.width / 2, f.height);
}
void LibyuvExtractAlpha(const Frame& f) {
    libyuv::ARGBExtractAlpha(f.src.plane, f.src.stride, f.dst.plane, f.dst.stride, f.width, f.height);
}
// libyuv has no single call for these two; it takes two passes.
void LibyuvSplit(const Frame& f) {
    libyuv::ARGBToRGB24(f.src.plane, f.src.stride, f.dst.plane, f.dst.stride, f.width, f.height);
    libyuv::ARGBExtractAlpha(f.src.plane, f.src.stride, f.dst.alpha, f.dst.alpha_stride, f.width, f.height);
}
void LibyuvMerge(const Frame& f) {
    libyuv::RGB24ToARGB(f.src.plane, f.src.stride, f.dst.plane, f.dst.stride, f.width, f.height);
    libyuv::ARGBCopyYToAlpha(f.src.alpha, f.src.alpha_stride, f.dst.plane, f.dst.stride, f.width, f.height);
}
void LibyuvCopyAlpha(const Frame& f) {
    libyuv::CopyPlane(f.src.plane, f.src.stride, f.dst.plane, f.dst.stride, f.width, f.height);
}
void LibyuvFillAlpha(const Frame& f) { libyuv::SetPlane(f.dst.plane, f.dst.stride, f.width, f.height, 0xFF); }
#define YUV2(fn, name) &Libyuv##fn, name
#else
#define YUV2(fn, name) nullptr, nullptr
#endif
#define NO_YUV nullptr, nullptr

using F = Format;
constexpr int k601 = 1, k709 = 0;

}  // namespace

const std::vector<Case>& Cases() {
    static const std::vector<Case> cases = {
        // YUV to RGB.
        {"UYVY16I_BGR32I", "YUV to RGB", F::kUyvy, false, F::kBgr32, false, ZENK_SSE2_UYVY16I_BGR32I_EX, k601, k601,
         YUV2(UyvyToArgb, "UYVYToARGB"), SWS(UYVY422), SWS(BGRA)},
        {"YUYV16I_BGR32I", "YUV to RGB", F::kYuyv, false, F::kBgr32, false, ZENK_SSE2_YUYV16I_BGR32I_EX, k601, k601,
         YUV2(Yuy2ToArgb, "YUY2ToARGB"), SWS(YUYV422), SWS(BGRA)},
        {"UYVY16I_BGR24I", "YUV to RGB", F::kUyvy, false, F::kBgr24, false, ZENK_SSE2_UYVY16I_BGR24I_EX, k601, k601,
         NO_YUV, SWS(UYVY422), SWS(BGR24)},
        {"Y8PUV8I_BGR32I", "YUV to RGB", F::kY8Uv, false, F::kBgr32, false, ZENK_SSE2_Y8PUV8I_BGR32I_EX, k601, k601,
         NO_YUV, SWS(NV16), SWS(BGRA)},
        {"Y8PUV8I_BGR24I", "YUV to RGB", F::kY8Uv, false, F::kBgr24, false, ZENK_SSE2_Y8PUV8I_BGR24I_EX, k601, k601,
         NO_YUV, SWS(NV16), SWS(BGR24)},
        {"UYVY16IA8P_BGR32I", "YUV to RGB", F::kUyvy, true, F::kBgr32, false, ZENK_SSE2_UYVY16IA8P_BGR32I_EX, k601,
         k601, NO_YUV, -1, -1},
        // RGB to YUV.
        {"BGR32I_UYVY16I", "RGB to YUV", F::kBgr32, false, F::kUyvy, false, ZENK_SSE2_BGR32I_UYVY16I_EX, k601, k601,
         YUV2(ArgbToUyvy, "ARGBToUYVY"), SWS(BGRA), SWS(UYVY422)},
        {"BGR32I_YUYV16I", "RGB to YUV", F::kBgr32, false, F::kYuyv, false, ZENK_SSE2_BGR32I_YUYV16I_EX, k601, k601,
         YUV2(ArgbToYuy2, "ARGBToYUY2"), SWS(BGRA), SWS(YUYV422)},
        {"BGR24I_UYVY16I", "RGB to YUV", F::kBgr24, false, F::kUyvy, false, ZENK_SSE2_BGR24I_UYVY16I_EX, k601, k601,
         NO_YUV, SWS(BGR24), SWS(UYVY422)},
        {"BGR32I_Y8PUV8I", "RGB to YUV", F::kBgr32, false, F::kY8Uv, false, ZENK_SSE2_BGR32I_Y8PUV8I_EX, k601, k601,
         NO_YUV, SWS(BGRA), SWS(NV16)},
        {"BGR32I_UYVY16IA8P", "RGB to YUV", F::kBgr32, false, F::kUyvy, true, ZENK_SSE2_BGR32I_UYVY16IA8P_EX, k601,
         k601, NO_YUV, -1, -1},
        // YUV to YUV.
        {"UYVY16I_UYVY16I", "YUV to YUV", F::kUyvy, false, F::kUyvy, false, ZENK_SSE2_UYVY16I_UYVY16I_EX, k601, k601,
         YUV2(CopyPacked, "CopyPlane"), SWS(UYVY422), SWS(UYVY422)},
        {"UYVY16I_UYVY16I_601to709", "YUV to YUV", F::kUyvy, false, F::kUyvy, false, ZENK_SSE2_UYVY16I_UYVY16I_EX,
         k601, k709, NO_YUV, -1, -1},
        {"UYVY16I_YUYV16I", "YUV to YUV", F::kUyvy, false, F::kYuyv, false, ZENK_SSE2_UYVY16I_YUYV16I_EX, k601, k601,
         YUV2(SwapWordBytes, "ARGBShuffle"), SWS(UYVY422), SWS(YUYV422)},
        {"UYVY16I_YUYV16I_601to709", "YUV to YUV", F::kUyvy, false, F::kYuyv, false, ZENK_SSE2_UYVY16I_YUYV16I_EX,
         k601, k709, NO_YUV, -1, -1},
        {"UYVY16I_UVYY16I", "YUV to YUV", F::kUyvy, false, F::kUvyy, false, ZENK_SSE2_UYVY16I_UVYY16I_EX, k601, k601,
         YUV2(UyvyToUvyy, "ARGBShuffle"), -1, -1},
        {"UYVY16I_Y8PUV8I", "YUV to YUV", F::kUyvy, false, F::kY8Uv, false, ZENK_SSE2_UYVY16I_Y8PUV8I_EX, k601, k601,
         NO_YUV, SWS(UYVY422), SWS(NV16)},
        {"UYVY16I_V8U8Y8A8I", "YUV to YUV", F::kUyvy, false, F::kVuya, false, ZENK_SSE2_UYVY16I_V8U8Y8A8I_EX, k601,
         k601, NO_YUV, -1, -1},  // swscale 5.1 has no V, U, Y, A byte order,
        // RGB and alpha.
        {"BGR32I_BGR32I", "RGB and alpha", F::kBgr32, false, F::kBgr32, false, ZENK_SSE2_BGR32I_BGR32I_EX, k601, k601,
         YUV2(ArgbCopy, "ARGBCopy"), SWS(BGRA), SWS(BGRA)},
        {"BGR32I_BGR24I", "RGB and alpha", F::kBgr32, false, F::kBgr24, false, ZENK_SSE2_BGR32I_BGR24I_EX, k601, k601,
         YUV2(ArgbToRgb24, "ARGBToRGB24"), SWS(BGRA), SWS(BGR24)},
        {"BGR24I_BGR32I", "RGB and alpha", F::kBgr24, false, F::kBgr32, false, ZENK_SSE2_BGR24I_BGR32I_EX, k601, k601,
         YUV2(Rgb24ToArgb, "RGB24ToARGB"), SWS(BGR24), SWS(BGRA)},
        {"BGR24I_BGR24I", "RGB and alpha", F::kBgr24, false, F::kBgr24, false, ZENK_SSE2_BGR24I_BGR24I_EX, k601, k601,
         YUV2(CopyBgr24, "CopyPlane"), SWS(BGR24), SWS(BGR24)},
        {"BGR32I_BGR24IA8P", "RGB and alpha", F::kBgr32, false, F::kBgr24, true, ZENK_SSE2_BGR32I_BGR24IA8P_EX, k601,
         k601, YUV2(Split, "ARGBToRGB24 + ARGBExtractAlpha"), -1, -1},
        {"BGR32I_A8P", "RGB and alpha", F::kBgr32, false, F::kA8, false, ZENK_SSE2_BGR32I_A8P_EX, k601, k601,
         YUV2(ExtractAlpha, "ARGBExtractAlpha"), -1, -1},
        {"BGR24IA8P_BGR32I", "RGB and alpha", F::kBgr24, true, F::kBgr32, false, ZENK_SSE2_BGR24IA8P_BGR32I_EX, k601,
         k601, YUV2(Merge, "RGB24ToARGB + ARGBCopyYToAlpha"), -1, -1},
        {"A8P_A8P", "RGB and alpha", F::kA8, false, F::kA8, false, ZENK_SSE2_A8P_A8P_EX, k601, k601,
         YUV2(CopyAlpha, "CopyPlane"), SWS(GRAY8), SWS(GRAY8)},
        {"A8C_A8P", "RGB and alpha", F::kConstant, false, F::kA8, false, ZENK_SSE2_A8C_A8P_EX, k601, k601,
         YUV2(FillAlpha, "SetPlane"), -1, -1},
    };
    return cases;
}

}  // namespace zenk_bench
