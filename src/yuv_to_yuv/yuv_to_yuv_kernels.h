// YUV-to-YUV kernels: where every export of the family finds its kernels
// and the alignment tests that choose among them.
//
//   matrix_change.*    BT.601 <-> BT.709 coefficients and per-pixel arithmetic.
//   formats.h          packed 4:2:2 copies, byte reorders and matrix changes
//                      (16-pixel groups, 32 bytes in and out); UYVY16I split
//                      into Y8PUV8I, and widened to V8U8Y8A8I.
#pragma once

#include "kernel/kernel_table.h"

namespace zenk::yuv_to_yuv {

// The kernels of every export of the family, one set per instruction-set
// level.
struct Kernels {
    // Same standard.
    KernelQuad copy_packed;      // any packed 4:2:2 -> itself, bytes unchanged
    KernelQuad swap_word_bytes;  // UYVY16I <-> YUYV16I
    // UVYY16I -> UYVY16I and UYVY16I -> UVYY16I (the same exchange of the
    // middle bytes of every pair) when the picture passes the export's test;
    // the plain copy otherwise.
    KernelQuad exchange_middle_bytes_or_copy;
    KernelQuad split_to_planar;  // UYVY16I -> Y8PUV8I
    KernelQuad widen_to_444;     // UYVY16I -> V8U8Y8A8I (also for a change of standard)
    // Change of standard.
    KernelQuad matrix_uyvy_to_uyvy;
    KernelQuad matrix_yuyv_to_yuyv;
    KernelQuad matrix_uyvy_to_yuyv;
    KernelQuad matrix_yuyv_to_uyvy;
    // UYVY16I read and written, with the crossed luma rule; shared by the
    // UVYY16I -> UYVY16I, UYVY16I -> UVYY16I and UYVY16I -> Y8PUV8I exports.
    KernelQuad matrix_shared_uyvy_order;
};

inline constexpr AlignmentTest kPackedBothSides32 = {{32, 16}, {32, 16}, true};
inline constexpr AlignmentTest kPackedBothSides16 = {{16, 16}, {16, 16}, true};
inline constexpr AlignmentTest kDestination16 = {{16, 16}, {}};
inline constexpr AlignmentTest kWidenDestination = {{32, 8}, {}};

}  // namespace zenk::yuv_to_yuv

ZENK_DECLARE_KERNEL_LEVELS(yuv_to_yuv)
