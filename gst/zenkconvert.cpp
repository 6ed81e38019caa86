// zenkconvert: the library's conversions as a GStreamer video filter. It
// offers every pair of GStreamer formats the library converts, loads the
// library at run time and calls the pair's export as zenk-convert does, and
// can cut a frame into bands converted on several threads.
#include <gst/gst.h>
#include <gst/video/gstvideofilter.h>
#include <gst/video/video.h>

#include <algorithm>
#include <latch>
#include <optional>
#include <string>
#include <vector>

#include "convert_plan.h"
#include "errors.h"
#include "library.h"

namespace {

using zenk::gst::Band;
using zenk::gst::Picture;
using zenk::gst::RequestSettings;

GST_DEBUG_CATEGORY_STATIC(zenk_debug);
#define GST_CAT_DEFAULT zenk_debug

enum Matrix { kMatrixAuto, kMatrixBt601, kMatrixBt709 };
enum Range { kRangeAuto, kRangeStudio, kRangeFull };

enum Property {
    kPropMatrix = 1,
    kPropRange,
    kPropClampLuma,
    kPropStreamingStores,
    kPropAlpha,
    kPropThreads,
};

// The library, loaded once for the process on first use. A load failure is
// kept and reported by every element that starts.
struct LoadedLibrary {
    zenk::tool::Library* library = nullptr;
    std::string error;
};

const LoadedLibrary& SharedLibrary() {
    static const LoadedLibrary loaded = [] {
        LoadedLibrary l;
        try {
            l.library = new zenk::tool::Library();
            GST_INFO("conversion library: %s", l.library->path().c_str());
        } catch (const zenk::tool::ToolError& e) {
            l.error = e.what();
        }
        return l;
    }();
    return loaded;
}

}  // namespace

struct GstZenkConvert {
    GstVideoFilter parent;

    // Properties, under the object lock.
    Matrix matrix;
    Range range;
    gboolean clamp_luma;
    gboolean streaming_stores;
    guint alpha;
    guint n_threads;

    // Negotiated.
    ZenkConvertFunction function;
    zenk::tool::Format in_format, out_format;
    int32_t src_matrix, dst_matrix;
    bool full_range;
    GThreadPool* pool;
    guint pool_threads;
};

struct GstZenkConvertClass {
    GstVideoFilterClass parent_class;
};

G_DEFINE_TYPE(GstZenkConvert, gst_zenk_convert, GST_TYPE_VIDEO_FILTER)

namespace {

GType MatrixType() {
    static GType type = 0;
    static const GEnumValue values[] = {
        {kMatrixAuto, "From the YUV side's caps colorimetry (BT.709 above 576 lines without one)", "auto"},
        {kMatrixBt601, "BT.601", "bt601"},
        {kMatrixBt709, "BT.709", "bt709"},
        {0, nullptr, nullptr},
    };
    if (g_once_init_enter(&type)) g_once_init_leave(&type, g_enum_register_static("GstZenkConvertMatrix", values));
    return type;
}

GType RangeType() {
    static GType type = 0;
    static const GEnumValue values[] = {
        {kRangeAuto, "From the YUV side's caps colorimetry (studio without one)", "auto"},
        {kRangeStudio, "Studio swing: luma 16..235", "studio"},
        {kRangeFull, "Full swing: luma 0..255", "full"},
        {0, nullptr, nullptr},
    };
    if (g_once_init_enter(&type)) g_once_init_leave(&type, g_enum_register_static("GstZenkConvertRange", values));
    return type;
}

GstZenkConvert* Self(gpointer p) { return reinterpret_cast<GstZenkConvert*>(p); }

// Sets a structure's format field to a list of formats.
void SetFormats(GstStructure* s, const std::vector<GstVideoFormat>& formats) {
    GValue list = G_VALUE_INIT;
    gst_value_list_init(&list, formats.size());
    for (GstVideoFormat f : formats) {
        GValue v = G_VALUE_INIT;
        g_value_init(&v, G_TYPE_STRING);
        g_value_set_string(&v, gst_video_format_to_string(f));
        gst_value_list_append_and_take_value(&list, &v);
    }
    gst_structure_take_value(s, "format", &list);
}

GstCaps* TemplateCaps() {
    // Pitches and plane offsets are 32-bit numbers in the request.
    GstCaps* caps = gst_caps_new_simple("video/x-raw", "width", GST_TYPE_INT_RANGE, 1, 32768, "height",
                                        GST_TYPE_INT_RANGE, 1, 32768, "framerate", GST_TYPE_FRACTION_RANGE, 0, 1,
                                        G_MAXINT, 1, nullptr);
    SetFormats(gst_caps_get_structure(caps, 0), zenk::gst::ElementFormats());
    return caps;
}

// The formats a caps structure names (all the element's when it names none).
std::vector<GstVideoFormat> StructureFormats(const GstStructure* s) {
    const GValue* v = gst_structure_get_value(s, "format");
    if (!v) return zenk::gst::ElementFormats();
    std::vector<GstVideoFormat> formats;
    auto add = [&](const GValue* item) {
        if (!G_VALUE_HOLDS_STRING(item)) return;
        const GstVideoFormat f = gst_video_format_from_string(g_value_get_string(item));
        if (zenk::gst::LibraryFormat(f)) formats.push_back(f);
    };
    if (GST_VALUE_HOLDS_LIST(v)) {
        for (guint i = 0; i < gst_value_list_get_size(v); ++i) add(gst_value_list_get_value(v, i));
    } else {
        add(v);
    }
    return formats;
}

// The other side of each structure: the same size and rate, every format
// the library converts to (or from) in any of its formats, the structure's
// own formats first so that equal caps, and passthrough, come first.
GstCaps* TransformCaps(GstBaseTransform* trans, GstPadDirection direction, GstCaps* caps, GstCaps* filter) {
    GstCaps* result = gst_caps_new_empty();
    for (guint i = 0; i < gst_caps_get_size(caps); ++i) {
        const GstStructure* s = gst_caps_get_structure(caps, i);
        gint width = 0;
        const bool odd_width = gst_structure_get_int(s, "width", &width) && width % 2 != 0;
        std::vector<GstVideoFormat> given;
        for (GstVideoFormat f : StructureFormats(s))
            if (!(odd_width && zenk::gst::NeedsEvenWidth(f))) given.push_back(f);
        std::vector<GstVideoFormat> other;
        auto add = [&](GstVideoFormat f) {
            if (std::find(other.begin(), other.end(), f) == other.end()) other.push_back(f);
        };
        for (GstVideoFormat g : given) add(g);
        for (GstVideoFormat g : given)
            for (GstVideoFormat f : zenk::gst::ElementFormats()) {
                const bool converts = direction == GST_PAD_SINK ? zenk::gst::Converts(g, f) : zenk::gst::Converts(f, g);
                if (converts && !(odd_width && zenk::gst::NeedsEvenWidth(f))) add(f);
            }
        if (given.empty()) continue;
        // The caps themselves come first, colorimetry and all: equal caps
        // pass through. Then every format, with any colorimetry.
        GstStructure* same = gst_structure_copy(s);
        SetFormats(same, given);
        result = gst_caps_merge_structure(result, same);
        GstStructure* t = gst_structure_copy(s);
        gst_structure_remove_fields(t, "colorimetry", "chroma-site", nullptr);
        SetFormats(t, other);
        result = gst_caps_merge_structure(result, t);
    }
    if (filter) {
        GstCaps* filtered = gst_caps_intersect_full(filter, result, GST_CAPS_INTERSECT_FIRST);
        gst_caps_unref(result);
        result = filtered;
    }
    GST_DEBUG_OBJECT(trans, "%s %" GST_PTR_FORMAT " -> %" GST_PTR_FORMAT,
                     direction == GST_PAD_SINK ? "sink" : "src", caps, result);
    return result;
}

// The matrix and range a YUV caps structure asks for, when it names them.
struct CapsColour {
    std::optional<int32_t> matrix;
    std::optional<bool> full_range;
};

CapsColour ColourOf(const GstStructure* s) {
    CapsColour c;
    const gchar* text = gst_structure_get_string(s, "colorimetry");
    GstVideoColorimetry colorimetry;
    if (text && gst_video_colorimetry_from_string(&colorimetry, text)) {
        c.matrix = zenk::gst::RequestMatrix(colorimetry.matrix);
        if (colorimetry.range != GST_VIDEO_COLOR_RANGE_UNKNOWN)
            c.full_range = colorimetry.range == GST_VIDEO_COLOR_RANGE_0_255;
    }
    return c;
}

GstCaps* FixateCaps(GstBaseTransform* trans, GstPadDirection direction, GstCaps* caps, GstCaps* othercaps) {
    GstZenkConvert* self = Self(trans);
    othercaps = gst_caps_make_writable(othercaps);
    const GstStructure* in = gst_caps_get_structure(caps, 0);
    // The input's own format when it is on offer.
    if (const gchar* format = gst_structure_get_string(in, "format")) {
        GstCaps* same = gst_caps_new_simple("video/x-raw", "format", G_TYPE_STRING, format, nullptr);
        GstCaps* kept = gst_caps_intersect_full(othercaps, same, GST_CAPS_INTERSECT_FIRST);
        gst_caps_unref(same);
        if (!gst_caps_is_empty(kept)) {
            gst_caps_unref(othercaps);
            othercaps = kept;
        } else {
            gst_caps_unref(kept);
        }
    }
    othercaps = gst_caps_truncate(othercaps);
    GstStructure* out = gst_caps_get_structure(othercaps, 0);
    gst_structure_fixate_field_string(out, "format", gst_structure_get_string(in, "format"));
    gint width = 0, height = 0;
    if (gst_structure_get_int(in, "width", &width)) gst_structure_fixate_field_nearest_int(out, "width", width);
    if (gst_structure_get_int(in, "height", &height)) gst_structure_fixate_field_nearest_int(out, "height", height);

    // A YUV output whose colorimetry is still open gets the matrix and range
    // it will be converted with.
    const GstVideoFormat out_format = gst_video_format_from_string(gst_structure_get_string(out, "format"));
    if (direction == GST_PAD_SINK && zenk::gst::IsYuv(out_format)) {
        const GValue* fixed = gst_structure_get_value(out, "colorimetry");
        if (!fixed || !G_VALUE_HOLDS_STRING(fixed)) {
            const bool in_yuv =
                zenk::gst::IsYuv(gst_video_format_from_string(gst_structure_get_string(in, "format")));
            const CapsColour in_colour = in_yuv ? ColourOf(in) : CapsColour{};
            GST_OBJECT_LOCK(self);
            const Matrix matrix = self->matrix;
            const Range range = self->range;
            GST_OBJECT_UNLOCK(self);
            const int32_t m = matrix == kMatrixBt601   ? 1
                              : matrix == kMatrixBt709 ? 0
                                                       : in_colour.matrix.value_or(zenk::gst::DefaultMatrix(height));
            const bool full = range == kRangeAuto ? in_colour.full_range.value_or(false) : range == kRangeFull;
            // The input's own colorimetry when it says the same, so that equal
            // caps can pass through.
            const gchar* in_text = gst_structure_get_string(in, "colorimetry");
            if (in_yuv && in_text && in_colour.matrix == m && in_colour.full_range == full)
                gst_structure_set(out, "colorimetry", G_TYPE_STRING, in_text, nullptr);
            else
                gst_structure_set(out, "colorimetry", G_TYPE_STRING, zenk::gst::ColorimetryString(m, full).c_str(),
                                  nullptr);
        }
    }
    othercaps = gst_caps_fixate(othercaps);
    GST_DEBUG_OBJECT(trans, "fixated to %" GST_PTR_FORMAT, othercaps);
    return othercaps;
}

gboolean SetInfo(GstVideoFilter* filter, GstCaps*, GstVideoInfo* in_info, GstCaps*, GstVideoInfo* out_info) {
    GstZenkConvert* self = Self(filter);
    const GstVideoFormat in = GST_VIDEO_INFO_FORMAT(in_info), out = GST_VIDEO_INFO_FORMAT(out_info);
    const LoadedLibrary& loaded = SharedLibrary();
    if (!loaded.library) {
        GST_ELEMENT_ERROR(self, LIBRARY, INIT, ("%s", loaded.error.c_str()), (nullptr));
        return FALSE;
    }
    if (!zenk::gst::Converts(in, out) || in_info->width != out_info->width || in_info->height != out_info->height) {
        GST_ELEMENT_ERROR(self, CORE, NEGOTIATION,
                          ("zenkconvert does not convert %s %dx%d to %s %dx%d", gst_video_format_to_string(in),
                           in_info->width, in_info->height, gst_video_format_to_string(out), out_info->width,
                           out_info->height),
                          (nullptr));
        return FALSE;
    }
    self->in_format = *zenk::gst::LibraryFormat(in);
    self->out_format = *zenk::gst::LibraryFormat(out);
    self->function = loaded.library->Find(self->in_format, self->out_format);
    if (!self->function) {
        GST_ELEMENT_ERROR(self, CORE, NEGOTIATION,
                          ("the conversion library %s has no export %s", loaded.library->path().c_str(),
                           zenk::tool::ExportName(self->in_format, self->out_format).c_str()),
                          (nullptr));
        return FALSE;
    }

    GST_OBJECT_LOCK(self);
    const Matrix matrix = self->matrix;
    const Range range = self->range;
    GST_OBJECT_UNLOCK(self);
    auto caps_matrix = [&](const GstVideoInfo* info) {
        const std::optional<int32_t> m = zenk::gst::RequestMatrix(info->colorimetry.matrix);
        if (!m) {
            gchar* text = gst_video_colorimetry_to_string(&info->colorimetry);
            GST_WARNING_OBJECT(self, "colorimetry %s has no matrix the library converts; taking %s", text,
                               zenk::gst::DefaultMatrix(info->height) == 1 ? "BT.601" : "BT.709");
            g_free(text);
        }
        return m.value_or(zenk::gst::DefaultMatrix(info->height));
    };
    const int32_t property_matrix = matrix == kMatrixBt601 ? 1 : 0;
    const bool in_yuv = zenk::gst::IsYuv(in), out_yuv = zenk::gst::IsYuv(out);
    if (in_yuv && out_yuv) {
        // The picture changes matrix when the two sides differ.
        self->src_matrix = caps_matrix(in_info);
        self->dst_matrix = matrix == kMatrixAuto ? caps_matrix(out_info) : property_matrix;
    } else if (in_yuv || out_yuv) {
        const int32_t m = matrix == kMatrixAuto ? caps_matrix(in_yuv ? in_info : out_info) : property_matrix;
        self->src_matrix = self->dst_matrix = m;
    } else {
        self->src_matrix = self->dst_matrix = 0;
    }
    const GstVideoInfo* yuv_info = in_yuv ? in_info : out_info;
    self->full_range = range == kRangeAuto ? (in_yuv || out_yuv) &&
                                                 yuv_info->colorimetry.range == GST_VIDEO_COLOR_RANGE_0_255
                                           : range == kRangeFull;
    GST_INFO_OBJECT(self, "%s, matrix %s -> %s, %s range", zenk::tool::ExportName(self->in_format, self->out_format).c_str(),
                    self->src_matrix == 1 ? "BT.601" : "BT.709", self->dst_matrix == 1 ? "BT.601" : "BT.709",
                    self->full_range ? "full" : "studio");
    return TRUE;
}

// A copy of `frame` in the default layout of its info, for pictures whose
// planes are not where the library looks for them.
bool StageFrame(GstVideoInfo* info, GstVideoFrame* staged, GstMapFlags flags) {
    GstBuffer* buffer = gst_buffer_new_allocate(nullptr, GST_VIDEO_INFO_SIZE(info), nullptr);
    const bool ok = buffer && gst_video_frame_map(staged, info, buffer, flags);
    if (buffer) gst_buffer_unref(buffer);  // the mapped frame keeps its own reference
    return ok;
}

struct BandJob {
    ZenkConvertFunction function;
    ZenkConversionRequest request;
    std::latch* done;
};

void RunBand(gpointer data, gpointer) {
    auto* job = static_cast<BandJob*>(data);
    job->function(&job->request);
    job->done->count_down();
}

GstFlowReturn TransformFrame(GstVideoFilter* filter, GstVideoFrame* in_frame, GstVideoFrame* out_frame) {
    GstZenkConvert* self = Self(filter);
    RequestSettings settings;
    settings.src_matrix = self->src_matrix;
    settings.dst_matrix = self->dst_matrix;
    settings.full_range = self->full_range;
    GST_OBJECT_LOCK(self);
    settings.clamp_luma = self->clamp_luma;
    settings.streaming_stores = self->streaming_stores;
    settings.alpha = static_cast<uint8_t>(self->alpha);
    guint threads = self->n_threads == 0 ? g_get_num_processors() : self->n_threads;
    GST_OBJECT_UNLOCK(self);

    GstVideoFrame staged_in, staged_out;
    bool in_staged = false, out_staged = false;
    std::optional<Picture> in = zenk::gst::PictureOf(*in_frame);
    if (!in) {
        if (!StageFrame(&in_frame->info, &staged_in, GST_MAP_READWRITE) ||
            !gst_video_frame_copy(&staged_in, in_frame))
            return GST_FLOW_ERROR;
        in_staged = true;
        in = zenk::gst::PictureOf(staged_in);
    }
    std::optional<Picture> out = zenk::gst::PictureOf(*out_frame);
    if (!out) {
        if (!StageFrame(&out_frame->info, &staged_out, GST_MAP_READWRITE)) return GST_FLOW_ERROR;
        out_staged = true;
        out = zenk::gst::PictureOf(staged_out);
    }

    // The kernel the library picks depends on these.
    GST_LOG_OBJECT(self, "planes at 16-byte residues %u -> %u, pitches %d -> %d",
                   static_cast<unsigned>(reinterpret_cast<uintptr_t>(in->data) % 16),
                   static_cast<unsigned>(reinterpret_cast<uintptr_t>(out->data) % 16), in->stride, out->stride);
    const std::vector<Band> bands = zenk::gst::Bands(self->in_format, *in, *out, static_cast<int>(threads));
    if (bands.size() > 1 && (!self->pool || self->pool_threads != bands.size() - 1)) {
        if (self->pool) g_thread_pool_free(self->pool, FALSE, TRUE);
        self->pool_threads = static_cast<guint>(bands.size() - 1);
        self->pool = g_thread_pool_new(RunBand, nullptr, static_cast<gint>(self->pool_threads), TRUE, nullptr);
    }
    std::vector<BandJob> jobs;
    jobs.reserve(bands.size());
    std::latch done(static_cast<std::ptrdiff_t>(bands.size()));
    for (const Band& band : bands)
        jobs.push_back({self->function,
                        zenk::gst::MakeRequest(self->in_format, *in, self->out_format, *out, settings, band.first,
                                               band.count),
                        &done});
    // The other bands go to the pool; this thread converts the first.
    for (size_t i = 1; i < jobs.size(); ++i) g_thread_pool_push(self->pool, &jobs[i], nullptr);
    RunBand(&jobs[0], nullptr);
    done.wait();

    if (in_staged) gst_video_frame_unmap(&staged_in);
    if (out_staged) {
        const bool copied = gst_video_frame_copy(out_frame, &staged_out);
        gst_video_frame_unmap(&staged_out);
        if (!copied) return GST_FLOW_ERROR;
    }
    return GST_FLOW_OK;
}

// Names the cause when caps that reached the element cannot be converted:
// without this, a pipeline only learns that the stream stopped.
gboolean SinkEvent(GstBaseTransform* trans, GstEvent* event) {
    GstCaps* caps = nullptr;
    if (GST_EVENT_TYPE(event) == GST_EVENT_CAPS) {
        gst_event_parse_caps(event, &caps);
        gst_caps_ref(caps);
    }
    const gboolean ok = GST_BASE_TRANSFORM_CLASS(gst_zenk_convert_parent_class)->sink_event(trans, event);
    if (caps && !ok) {
        GstVideoInfo info;
        std::string why;
        if (!gst_video_info_from_caps(&info, caps)) {
            gchar* text = gst_caps_to_string(caps);
            why = std::string("zenkconvert cannot read the input caps ") + text;
            g_free(text);
        } else {
            const GstVideoFormat f = GST_VIDEO_INFO_FORMAT(&info);
            const char* name = gst_video_format_to_string(f);
            if (!zenk::gst::LibraryFormat(f)) {
                why = std::string("zenkconvert does not read ") + name;
            } else if (zenk::gst::NeedsEvenWidth(f) && info.width % 2 != 0) {
                why = std::string("zenkconvert needs an even width for ") + name + " (pixel pairs share chroma), not " +
                      std::to_string(info.width);
            } else {
                std::string offered;
                for (GstVideoFormat o : zenk::gst::ElementFormats())
                    if (zenk::gst::Converts(f, o)) offered += std::string(offered.empty() ? "" : ", ") + gst_video_format_to_string(o);
                GstCaps* downstream = gst_pad_peer_query_caps(GST_BASE_TRANSFORM_SRC_PAD(trans), nullptr);
                gchar* text = downstream ? gst_caps_to_string(downstream) : g_strdup("nothing");
                why = std::string("zenkconvert converts ") + name + " only to " + offered + "; downstream accepts " +
                      text;
                g_free(text);
                if (downstream) gst_caps_unref(downstream);
            }
        }
        GST_ELEMENT_ERROR(trans, CORE, NEGOTIATION, ("%s", why.c_str()), ("not-negotiated"));
    }
    if (caps) gst_caps_unref(caps);
    return ok;
}

// Fixed 4:2:2 input caps of an odd width are let through to the caps event,
// which refuses them with its reason, rather than turned away unexplained.
gboolean AcceptCaps(GstBaseTransform* trans, GstPadDirection direction, GstCaps* caps) {
    if (GST_BASE_TRANSFORM_CLASS(gst_zenk_convert_parent_class)->accept_caps(trans, direction, caps)) return TRUE;
    GstVideoInfo info;
    return direction == GST_PAD_SINK && gst_caps_is_fixed(caps) && gst_video_info_from_caps(&info, caps) &&
           zenk::gst::NeedsEvenWidth(GST_VIDEO_INFO_FORMAT(&info)) && info.width % 2 != 0;
}

void SetProperty(GObject* object, guint id, const GValue* value, GParamSpec* pspec) {
    GstZenkConvert* self = Self(object);
    bool renegotiate = false;
    GST_OBJECT_LOCK(self);
    switch (id) {
        case kPropMatrix:
            self->matrix = static_cast<Matrix>(g_value_get_enum(value));
            renegotiate = true;
            break;
        case kPropRange:
            self->range = static_cast<Range>(g_value_get_enum(value));
            renegotiate = true;
            break;
        case kPropClampLuma: self->clamp_luma = g_value_get_boolean(value); break;
        case kPropStreamingStores: self->streaming_stores = g_value_get_boolean(value); break;
        case kPropAlpha: self->alpha = g_value_get_uint(value); break;
        case kPropThreads: self->n_threads = g_value_get_uint(value); break;
        default: G_OBJECT_WARN_INVALID_PROPERTY_ID(object, id, pspec); break;
    }
    GST_OBJECT_UNLOCK(self);
    // The matrix and range decide the output's colorimetry.
    if (renegotiate) gst_base_transform_reconfigure_src(GST_BASE_TRANSFORM(self));
}

void GetProperty(GObject* object, guint id, GValue* value, GParamSpec* pspec) {
    GstZenkConvert* self = Self(object);
    GST_OBJECT_LOCK(self);
    switch (id) {
        case kPropMatrix: g_value_set_enum(value, self->matrix); break;
        case kPropRange: g_value_set_enum(value, self->range); break;
        case kPropClampLuma: g_value_set_boolean(value, self->clamp_luma); break;
        case kPropStreamingStores: g_value_set_boolean(value, self->streaming_stores); break;
        case kPropAlpha: g_value_set_uint(value, self->alpha); break;
        case kPropThreads: g_value_set_uint(value, self->n_threads); break;
        default: G_OBJECT_WARN_INVALID_PROPERTY_ID(object, id, pspec); break;
    }
    GST_OBJECT_UNLOCK(self);
}

gboolean Stop(GstBaseTransform* trans) {
    GstZenkConvert* self = Self(trans);
    if (self->pool) g_thread_pool_free(self->pool, FALSE, TRUE);
    self->pool = nullptr;
    self->pool_threads = 0;
    return TRUE;
}

void Finalize(GObject* object) {
    Stop(GST_BASE_TRANSFORM(object));
    G_OBJECT_CLASS(gst_zenk_convert_parent_class)->finalize(object);
}

}  // namespace

static void gst_zenk_convert_class_init(GstZenkConvertClass* klass) {
    GObjectClass* object_class = G_OBJECT_CLASS(klass);
    GstElementClass* element_class = GST_ELEMENT_CLASS(klass);
    GstBaseTransformClass* transform_class = GST_BASE_TRANSFORM_CLASS(klass);
    GstVideoFilterClass* filter_class = GST_VIDEO_FILTER_CLASS(klass);

    object_class->set_property = SetProperty;
    object_class->get_property = GetProperty;
    object_class->finalize = Finalize;
    const auto flags = static_cast<GParamFlags>(G_PARAM_READWRITE | G_PARAM_STATIC_STRINGS | GST_PARAM_MUTABLE_PLAYING);
    g_object_class_install_property(
        object_class, kPropMatrix,
        g_param_spec_enum("matrix", "Matrix",
                          "YUV colour matrix: of the YUV output, or of the YUV input when the output is RGB",
                          MatrixType(), kMatrixAuto, flags));
    g_object_class_install_property(
        object_class, kPropRange,
        g_param_spec_enum("range", "Range", "Luma swing of the YUV side", RangeType(), kRangeAuto, flags));
    g_object_class_install_property(
        object_class, kPropClampLuma,
        g_param_spec_boolean("clamp-luma", "Clamp luma", "Clamp luma to 16..235", FALSE, flags));
    g_object_class_install_property(
        object_class, kPropStreamingStores,
        g_param_spec_boolean("streaming-stores", "Streaming stores",
                             "Write the output with non-temporal stores, keeping it out of the cache", FALSE, flags));
    g_object_class_install_property(
        object_class, kPropAlpha,
        g_param_spec_uint("alpha", "Alpha",
                          "Constant alpha of an output with alpha (BGRA, VUYA) made from an input without", 0, 255,
                          255, flags));
    g_object_class_install_property(
        object_class, kPropThreads,
        g_param_spec_uint("n-threads", "Threads",
                          "Threads converting bands of each frame (0 = one per processor); the bytes are those of "
                          "one thread",
                          0, 64, 1, flags));

    GstCaps* caps = TemplateCaps();
    gst_element_class_add_pad_template(element_class, gst_pad_template_new("sink", GST_PAD_SINK, GST_PAD_ALWAYS, caps));
    gst_element_class_add_pad_template(element_class, gst_pad_template_new("src", GST_PAD_SRC, GST_PAD_ALWAYS, caps));
    gst_caps_unref(caps);
    gst_element_class_set_static_metadata(element_class, "Zenk colour space converter", "Filter/Converter/Video",
                                          "Bit-exact broadcast conversions between 4:2:2 YUV, BGRA/BGRx/BGR and alpha "
                                          "planes (ZenkTranscoderLibrary)",
                                          "ZenkTranscoderLibrary developers");

    transform_class->transform_caps = TransformCaps;
    transform_class->fixate_caps = FixateCaps;
    transform_class->sink_event = SinkEvent;
    transform_class->accept_caps = AcceptCaps;
    transform_class->stop = Stop;
    transform_class->passthrough_on_same_caps = TRUE;
    filter_class->set_info = SetInfo;
    filter_class->transform_frame = TransformFrame;

    gst_type_mark_as_plugin_api(MatrixType(), static_cast<GstPluginAPIFlags>(0));
    gst_type_mark_as_plugin_api(RangeType(), static_cast<GstPluginAPIFlags>(0));
}

static void gst_zenk_convert_init(GstZenkConvert* self) {
    self->matrix = kMatrixAuto;
    self->range = kRangeAuto;
    self->clamp_luma = FALSE;
    self->streaming_stores = FALSE;
    self->alpha = 255;
    self->n_threads = 1;
    self->function = nullptr;
    self->pool = nullptr;
    self->pool_threads = 0;
}

static gboolean plugin_init(GstPlugin* plugin) {
    GST_DEBUG_CATEGORY_INIT(zenk_debug, "zenkconvert", 0, "ZenkTranscoderLibrary conversions");
    return gst_element_register(plugin, "zenkconvert", GST_RANK_NONE, gst_zenk_convert_get_type());
}

#define PACKAGE "ZenkTranscoderLibrary"
GST_PLUGIN_DEFINE(GST_VERSION_MAJOR, GST_VERSION_MINOR, zenk, "ZenkTranscoderLibrary conversions as a video filter",
                  plugin_init, ZENK_VERSION, "Proprietary", PACKAGE, "ZenkTranscoderLibrary")
