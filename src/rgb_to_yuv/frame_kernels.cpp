// The 1:1 encoding kernels: one line walk for every source, layout and
// variant; the picture is walked with one running pointer per plane and the
// request's line skips.
#include "encode.h"
#include "rgb_to_yuv_kernels.h"

namespace zenk::rgb_to_yuv {
namespace {

template <class Source, class Layout, bool kAlpha, class A>
void FrameKernel(const Request* r) {
    const Encoder k(*r);
    const Layout layout(k);
    const VariantStore<A> store;
    Prefetch(r->src_plane);
    LineWriter<Source, Layout, false, kAlpha> line{k, layout, r->src_plane, layout.At(r->dst_plane, *r),
                                                   r->dst_alpha_plane};
    for (int32_t n = 0; n < r->src_height; ++n) {
        if constexpr (A::kAligned)
            line.Blocks(r->width, store);
        else
            line.HeadBodyTail(r->width, store);
        line.src = Advance(line.src, r->src_skip);
        line.dst.Skip(r->dst_skip);
        if constexpr (kAlpha) line.alpha = Advance(line.alpha, r->dst_alpha_skip);
    }
    A::Finish();
}

template <class Source, class Layout, class A>
void Colour(const Request* r) {
    FrameKernel<Source, Layout, false, A>(r);
}
template <class Source, class Layout, class A>
void ColourAndAlpha(const Request* r) {
    FrameKernel<Source, Layout, true, A>(r);
}

using Uyvy = PackedLayout<UyvyOrder>;
using Yuyv = PackedLayout<YuyvOrder>;
using Uvyy = PackedLayout<UvyyOrder>;

}  // namespace

const KernelQuad kBgr32ToUyvy = ZENK_KERNEL_QUAD(Colour, Bgr32Pixels, Uyvy);
const KernelQuad kBgr32ToYuyv = ZENK_KERNEL_QUAD(Colour, Bgr32Pixels, Yuyv);
const KernelQuad kBgr32ToUvyy = ZENK_KERNEL_QUAD(Colour, Bgr32Pixels, Uvyy);
// The planar lines are written with 8-byte stores in every variant, so the
// streaming variants store exactly as the cached ones.
const KernelQuad kBgr32ToY8Uv = ZENK_KERNEL_QUAD(Colour, Bgr32Pixels, PlanarLayout);

const KernelQuad kBgr32ToUyvyAlpha = ZENK_KERNEL_QUAD(ColourAndAlpha, Bgr32Pixels, Uyvy);
const KernelQuad kBgr32ToYuyvAlpha = ZENK_KERNEL_QUAD(ColourAndAlpha, Bgr32Pixels, Yuyv);
const KernelQuad kBgr32ToUvyyAlpha = ZENK_KERNEL_QUAD(ColourAndAlpha, Bgr32Pixels, Uvyy);
const KernelQuad kBgr32ToY8UvAlpha = ZENK_KERNEL_QUAD(ColourAndAlpha, Bgr32Pixels, PlanarLayout);

const KernelQuad kBgr24ToUyvy = ZENK_KERNEL_QUAD(Colour, Bgr24Pixels, Uyvy);
const KernelQuad kBgr24ToYuyv = ZENK_KERNEL_QUAD(Colour, Bgr24Pixels, Yuyv);
// Every variant, the aligned streaming one included, gives the full UVYY
// conversion (luma, chroma and clamps): a host that turns on streaming
// stores for an aligned picture gets the same picture as without.
const KernelQuad kBgr24ToUvyy = ZENK_KERNEL_QUAD(Colour, Bgr24Pixels, Uvyy);
const KernelQuad kBgr24ToY8Uv = ZENK_KERNEL_QUAD(Colour, Bgr24Pixels, PlanarLayout);

}  // namespace zenk::rgb_to_yuv
