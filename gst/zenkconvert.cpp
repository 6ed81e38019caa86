// zenkconvert: the library's conversions as a GStreamer video filter. It
// offers every pair of GStreamer formats the library converts, loads the
// library at run time and calls the pair's export as zenk-convert does, and
// can cut a frame into bands converted on several threads. A YUV output's
// caps name the matrix and range its bytes were made with; caps and
// properties that contradict each other are refused with the reason, posted
// on the bus when fixed caps arrive (caps_colour.h holds the rule).
#include <gst/gst.h>
#include <gst/video/gstvideofilter.h>
#include <gst/video/video.h>

#include <algorithm>
#include <latch>
#include <optional>
#include <string>
#include <vector>

#include "caps_colour.h"
#include "colour.h"
#include "errors.h"
#include "formats.h"
#include "library.h"
#include "request.h"

namespace {

using zenk::client::Format;
using zenk::client::NamedFormat;
using zenk::gst::Label;
using zenk::gst::MatrixSetting;
using zenk::gst::RangeSetting;
using zenk::gst::Verdict;

GST_DEBUG_CATEGORY_STATIC(zenk_debug);
#define GST_CAT_DEFAULT zenk_debug

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
    zenk::client::Library* library = nullptr;
    std::string error;
};

const LoadedLibrary& SharedLibrary() {
    static const LoadedLibrary loaded = [] {
        LoadedLibrary l;
        try {
            l.library = new zenk::client::Library();
            GST_INFO("conversion library: %s", l.library->path().c_str());
        } catch (const zenk::client::Error& e) {
            l.error = e.what();
        }
        return l;
    }();
    return loaded;
}

// The element's formats: GStreamer's names of the library's formats, in
// the order of preference of client/formats.h.
struct ElementFormat {
    GstVideoFormat gst;
    NamedFormat named;
};

const std::vector<ElementFormat>& ElementFormats() {
    static const std::vector<ElementFormat> formats = [] {
        std::vector<ElementFormat> v;
        for (const zenk::client::FormatName& n : zenk::client::GStreamerNames())
            v.push_back({gst_video_format_from_string(std::string(n.name).c_str()), n.format});
        return v;
    }();
    return formats;
}

std::optional<NamedFormat> Named(GstVideoFormat format) {
    for (const ElementFormat& f : ElementFormats())
        if (f.gst == format) return f.named;
    return std::nullopt;
}

// Whether the element converts `in` to `out`: the library has the pair and
// the result means what the output format says (a BGRx source has no alpha
// to give a BGRA or GRAY8 output).
bool Converts(GstVideoFormat in, GstVideoFormat out) {
    const std::optional<NamedFormat> src = Named(in), dst = Named(out);
    return src && dst && zenk::client::Converts(*src, dst->format);
}

bool NeedsEvenWidth(GstVideoFormat f) {
    const std::optional<NamedFormat> n = Named(f);
    return n && zenk::client::NeedsEvenWidth(n->format);
}

bool IsYuv(GstVideoFormat f) {
    const std::optional<NamedFormat> n = Named(f);
    return n && zenk::client::IsYuv(n->format);
}

const zenk::client::Pair& PairOf(GstVideoFormat in, GstVideoFormat out) {
    return *zenk::client::FindPair(Named(in)->format, Named(out)->format);
}

std::string FormatList(const std::vector<GstVideoFormat>& formats) {
    std::string s;
    for (GstVideoFormat f : formats) s += (s.empty() ? "" : ", ") + std::string(gst_video_format_to_string(f));
    return s;
}

std::vector<GstVideoFormat> AllElementFormats() {
    std::vector<GstVideoFormat> v;
    for (const ElementFormat& f : ElementFormats()) v.push_back(f.gst);
    return v;
}

std::vector<GstVideoFormat> OutputsOf(GstVideoFormat in) {
    std::vector<GstVideoFormat> v;
    for (const ElementFormat& f : ElementFormats())
        if (Converts(in, f.gst)) v.push_back(f.gst);
    return v;
}

}  // namespace

struct GstZenkConvert {
    GstVideoFilter parent;

    // Properties, under the object lock.
    MatrixSetting matrix;
    RangeSetting range;
    gboolean clamp_luma;
    gboolean streaming_stores;
    guint alpha;
    guint n_threads;

    // Negotiated.
    ZenkConvertFunction function;
    const zenk::client::Pair* pair;
    int32_t src_matrix, dst_matrix;
    bool full_range;
    // set_info posted the reason for refusing the caps now being set.
    bool refusal_posted;
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
        {static_cast<gint>(MatrixSetting::Auto),
         "From the YUV caps' colorimetry; without one BT.601 up to 576 lines, BT.709 above", "auto"},
        {static_cast<gint>(MatrixSetting::Bt601), "BT.601", "bt601"},
        {static_cast<gint>(MatrixSetting::Bt709), "BT.709", "bt709"},
        {0, nullptr, nullptr},
    };
    if (g_once_init_enter(&type)) g_once_init_leave(&type, g_enum_register_static("GstZenkConvertMatrix", values));
    return type;
}

GType RangeType() {
    static GType type = 0;
    static const GEnumValue values[] = {
        {static_cast<gint>(RangeSetting::Auto), "From the YUV caps' colorimetry; studio without one", "auto"},
        {static_cast<gint>(RangeSetting::Studio), "Studio swing: luma 16..235", "studio"},
        {static_cast<gint>(RangeSetting::Full), "Full swing: luma 0..255", "full"},
        {0, nullptr, nullptr},
    };
    if (g_once_init_enter(&type)) g_once_init_leave(&type, g_enum_register_static("GstZenkConvertRange", values));
    return type;
}

GstZenkConvert* Self(gpointer p) { return reinterpret_cast<GstZenkConvert*>(p); }

struct Settings {
    MatrixSetting matrix;
    RangeSetting range;
};

Settings ColourSettings(GstZenkConvert* self) {
    GST_OBJECT_LOCK(self);
    const Settings s{self->matrix, self->range};
    GST_OBJECT_UNLOCK(self);
    return s;
}

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
    SetFormats(gst_caps_get_structure(caps, 0), AllElementFormats());
    return caps;
}

// The values of a field that holds one value or a list of them.
std::vector<const GValue*> Values(const GstStructure* s, const char* field) {
    std::vector<const GValue*> values;
    const GValue* v = gst_structure_get_value(s, field);
    if (!v) return values;
    if (GST_VALUE_HOLDS_LIST(v)) {
        for (guint i = 0; i < gst_value_list_get_size(v); ++i) values.push_back(gst_value_list_get_value(v, i));
    } else {
        values.push_back(v);
    }
    return values;
}

// The element's formats a caps structure names (all of them when it names
// none), and those it names that the element does not read.
std::vector<GstVideoFormat> StructureFormats(const GstStructure* s, std::vector<std::string>* foreign = nullptr) {
    std::vector<GstVideoFormat> formats;
    if (!gst_structure_has_field(s, "format")) return AllElementFormats();
    for (const GValue* v : Values(s, "format")) {
        if (!G_VALUE_HOLDS_STRING(v)) continue;
        const GstVideoFormat f = gst_video_format_from_string(g_value_get_string(v));
        if (Named(f)) {
            formats.push_back(f);
        } else if (foreign) {
            foreign->push_back(g_value_get_string(v));
        }
    }
    return formats;
}

// The label of the YUV or RGB picture one format of a caps structure
// describes, with `colorimetry` one of the structure's colorimetry values
// (null: none named).
Label LabelFor(GstVideoFormat format, const char* colorimetry, int height) {
    return zenk::gst::LabelOf(gst_video_format_to_string(format), colorimetry, height);
}

// A fixed caps structure's label: its format, colorimetry and height.
std::optional<Label> FixedLabel(const GstStructure* s) {
    const gchar* format = gst_structure_get_string(s, "format");
    gint height = 0;
    if (!format || !gst_structure_get_int(s, "height", &height)) return std::nullopt;
    const GValue* colorimetry = gst_structure_get_value(s, "colorimetry");
    if (colorimetry && !G_VALUE_HOLDS_STRING(colorimetry)) return std::nullopt;
    return LabelFor(gst_video_format_from_string(format), colorimetry ? g_value_get_string(colorimetry) : nullptr,
                    height);
}

// The verdict for converting the picture `in` describes to `out` in one of
// the colorimetries an output structure allows (null: any).
Verdict Judge(GstVideoFormat in_format, const Label& in, GstVideoFormat out_format, const char* out_colorimetry,
              const Settings& settings) {
    const Label out = LabelFor(out_format, out_colorimetry, in.height);
    return zenk::gst::Resolve(PairOf(in_format, out_format), in, out, settings.matrix, settings.range);
}

// Keeps, of each output structure, the formats and colorimetries that the
// input `in` converts to with the caps and properties agreeing; the others
// are logged with the reason. Output structures hold the input's size, so
// the default matrix goes by the input's height.
GstCaps* KeepAgreeing(GstZenkConvert* self, GstVideoFormat in_format, const Label& in, GstCaps* outputs) {
    const Settings settings = ColourSettings(self);
    GstCaps* kept = gst_caps_new_empty();
    for (guint i = 0; i < gst_caps_get_size(outputs); ++i) {
        const GstStructure* s = gst_caps_get_structure(outputs, i);
        std::vector<const GValue*> colorimetries = Values(s, "colorimetry");
        for (GstVideoFormat f : StructureFormats(s)) {
            if (!Converts(in_format, f)) {
                // Equal caps pass through untouched, in formats the library
                // does not convert to themselves too (NV16).
                const bool same_colorimetry =
                    colorimetries.empty() || in.colorimetry.empty() ||
                    std::any_of(colorimetries.begin(), colorimetries.end(), [&](const GValue* c) {
                        return G_VALUE_HOLDS_STRING(c) && in.colorimetry == g_value_get_string(c);
                    });
                if (f != in_format || !same_colorimetry) continue;
                GstStructure* same = gst_structure_copy(s);
                gst_structure_set(same, "format", G_TYPE_STRING, gst_video_format_to_string(f), nullptr);
                if (!in.colorimetry.empty())
                    gst_structure_set(same, "colorimetry", G_TYPE_STRING, in.colorimetry.c_str(), nullptr);
                kept = gst_caps_merge_structure(kept, same);
                continue;
            }
            GstStructure* one = gst_structure_copy(s);
            gst_structure_set(one, "format", G_TYPE_STRING, gst_video_format_to_string(f), nullptr);
            if (colorimetries.empty()) {
                const Verdict v = Judge(in_format, in, f, nullptr, settings);
                if (v.refusal.empty()) {
                    kept = gst_caps_merge_structure(kept, one);
                    continue;
                }
                GST_INFO_OBJECT(self, "no %s: %s", gst_video_format_to_string(f), v.refusal.c_str());
                gst_structure_free(one);
                continue;
            }
            GValue agreeing = G_VALUE_INIT;
            gst_value_list_init(&agreeing, colorimetries.size());
            for (const GValue* c : colorimetries) {
                if (!G_VALUE_HOLDS_STRING(c)) continue;
                const Verdict v = Judge(in_format, in, f, g_value_get_string(c), settings);
                if (v.refusal.empty()) {
                    GValue copy = G_VALUE_INIT;
                    g_value_init(&copy, G_TYPE_STRING);
                    g_value_set_string(&copy, g_value_get_string(c));
                    gst_value_list_append_and_take_value(&agreeing, &copy);
                } else {
                    GST_INFO_OBJECT(self, "no %s: %s", gst_video_format_to_string(f), v.refusal.c_str());
                }
            }
            if (gst_value_list_get_size(&agreeing) == 0) {
                g_value_unset(&agreeing);
                gst_structure_free(one);
                continue;
            }
            if (gst_value_list_get_size(&agreeing) == 1)
                gst_structure_set_value(one, "colorimetry", gst_value_list_get_value(&agreeing, 0));
            else
                gst_structure_set_value(one, "colorimetry", &agreeing);
            g_value_unset(&agreeing);
            kept = gst_caps_merge_structure(kept, one);
        }
    }
    gst_caps_unref(outputs);
    return gst_caps_simplify(kept);
}

// The other side of each structure: the same size and rate, every format
// the library converts to (or from) in any of its formats, the structure's
// own formats first so that equal caps, and passthrough, come first. At an
// odd width the 4:2:2 formats come last, after every other structure: an
// element that can choose takes another, and one that cannot gets them
// refused with the reason when its caps arrive fixed. A fixed input keeps
// only the outputs whose caps can say what their bytes are.
GstCaps* TransformCaps(GstBaseTransform* trans, GstPadDirection direction, GstCaps* caps, GstCaps* filter) {
    GstZenkConvert* self = Self(trans);
    GstCaps* result = gst_caps_new_empty();
    GstCaps* odd_last = gst_caps_new_empty();
    for (guint i = 0; i < gst_caps_get_size(caps); ++i) {
        const GstStructure* s = gst_caps_get_structure(caps, i);
        gint width = 0;
        const bool odd_width = gst_structure_get_int(s, "width", &width) && width % 2 != 0;
        std::vector<std::string> foreign;
        const std::vector<GstVideoFormat> given = StructureFormats(s, &foreign);
        if (given.empty()) {
            // Said where debugging shows it: a caps query cannot post a message.
            std::string names;
            for (const std::string& n : foreign) names += (names.empty() ? "" : ", ") + n;
            if (!names.empty())
                GST_INFO_OBJECT(self, "zenkconvert does not convert %s; it converts %s", names.c_str(),
                                FormatList(AllElementFormats()).c_str());
            continue;
        }
        std::vector<GstVideoFormat> other;
        auto add = [&](GstVideoFormat f) {
            if (std::find(other.begin(), other.end(), f) == other.end()) other.push_back(f);
        };
        for (GstVideoFormat g : given) add(g);
        for (GstVideoFormat g : given)
            for (const ElementFormat& e : ElementFormats())
                if (direction == GST_PAD_SINK ? Converts(g, e.gst) : Converts(e.gst, g)) add(e.gst);
        // The caps themselves come first, colorimetry and all: equal caps
        // pass through. Then every format, with any colorimetry.
        for (bool even_only : {false, true}) {
            auto pick = [&](const std::vector<GstVideoFormat>& formats) {
                std::vector<GstVideoFormat> v;
                for (GstVideoFormat f : formats)
                    if ((odd_width && NeedsEvenWidth(f)) == even_only) v.push_back(f);
                return v;
            };
            const std::vector<GstVideoFormat> same_formats = pick(given), other_formats = pick(other);
            GstCaps*& into = even_only ? odd_last : result;
            if (even_only && !other_formats.empty())
                GST_INFO_OBJECT(self, "%s pairs pixels for their chroma: the width must be even, not %d",
                                FormatList(other_formats).c_str(), width);
            if (!same_formats.empty()) {
                GstStructure* same = gst_structure_copy(s);
                SetFormats(same, same_formats);
                into = gst_caps_merge_structure(into, same);
            }
            if (!other_formats.empty()) {
                GstStructure* t = gst_structure_copy(s);
                gst_structure_remove_fields(t, "colorimetry", "chroma-site", nullptr);
                SetFormats(t, other_formats);
                into = gst_caps_merge_structure(into, t);
            }
        }
    }
    result = gst_caps_merge(result, odd_last);
    if (filter) {
        GstCaps* filtered = gst_caps_intersect_full(filter, result, GST_CAPS_INTERSECT_FIRST);
        gst_caps_unref(result);
        result = filtered;
    }
    if (direction == GST_PAD_SINK && gst_caps_is_fixed(caps)) {
        const GstStructure* in = gst_caps_get_structure(caps, 0);
        const std::optional<Label> label = FixedLabel(in);
        const GstVideoFormat in_format = gst_video_format_from_string(gst_structure_get_string(in, "format"));
        if (label && Named(in_format)) result = KeepAgreeing(self, in_format, *label, result);
    }
    GST_DEBUG_OBJECT(trans, "%s %" GST_PTR_FORMAT " -> %" GST_PTR_FORMAT,
                     direction == GST_PAD_SINK ? "sink" : "src", caps, result);
    return result;
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
    // it will be made with.
    const GstVideoFormat in_format = gst_video_format_from_string(gst_structure_get_string(in, "format"));
    const GstVideoFormat out_format = gst_video_format_from_string(gst_structure_get_string(out, "format"));
    const std::optional<Label> in_label = FixedLabel(in);
    if (direction == GST_PAD_SINK && IsYuv(out_format) && in_label && Converts(in_format, out_format)) {
        // Of the colorimetries downstream lists, the first that agrees.
        const Settings settings = ColourSettings(self);
        const std::vector<const GValue*> listed = Values(out, "colorimetry");
        if (listed.size() > 1)
            for (const GValue* c : listed)
                if (G_VALUE_HOLDS_STRING(c) &&
                    Judge(in_format, *in_label, out_format, g_value_get_string(c), settings).refusal.empty()) {
                    gst_structure_set(out, "colorimetry", G_TYPE_STRING, g_value_get_string(c), nullptr);
                    break;
                }
        if (!gst_structure_has_field(out, "colorimetry")) {
            const Verdict v = Judge(in_format, *in_label, out_format, nullptr, settings);
            // A refusal is for set_info to give, with the caps fixed.
            if (v.refusal.empty()) {
                // The input's own colorimetry when it says the same, so that
                // equal caps can pass through.
                const gchar* in_text = gst_structure_get_string(in, "colorimetry");
                if (in_label->yuv && in_text && in_label->matrix == v.dst_matrix &&
                    in_label->full_range == v.full_range)
                    gst_structure_set(out, "colorimetry", G_TYPE_STRING, in_text, nullptr);
                else
                    gst_structure_set(out, "colorimetry", G_TYPE_STRING,
                                      zenk::gst::ColorimetryString(v.dst_matrix, v.full_range).c_str(), nullptr);
            }
        }
    }
    othercaps = gst_caps_fixate(othercaps);
    GST_DEBUG_OBJECT(trans, "fixated to %" GST_PTR_FORMAT, othercaps);
    return othercaps;
}

gboolean SetInfo(GstVideoFilter* filter, GstCaps* incaps, GstVideoInfo* in_info, GstCaps* outcaps,
                 GstVideoInfo* out_info) {
    GstZenkConvert* self = Self(filter);
    const GstVideoFormat in = GST_VIDEO_INFO_FORMAT(in_info), out = GST_VIDEO_INFO_FORMAT(out_info);
    const LoadedLibrary& loaded = SharedLibrary();
    auto refuse = [&](const std::string& why) {
        GST_ELEMENT_ERROR(self, CORE, NEGOTIATION, ("%s", why.c_str()), ("not-negotiated"));
        self->refusal_posted = true;
        return FALSE;
    };
    // Equal caps pass through: nothing is converted.
    if (gst_caps_is_equal(incaps, outcaps)) return TRUE;
    if (!loaded.library) {
        GST_ELEMENT_ERROR(self, LIBRARY, INIT, ("%s", loaded.error.c_str()), (nullptr));
        self->refusal_posted = true;
        return FALSE;
    }
    for (GstVideoFormat f : {in, out})
        if (NeedsEvenWidth(f) && in_info->width % 2 != 0)
            return refuse(std::string("zenkconvert needs an even width for ") + gst_video_format_to_string(f) +
                          " (pixel pairs share chroma), not " + std::to_string(in_info->width));
    if (!Converts(in, out) || in_info->width != out_info->width || in_info->height != out_info->height) {
        char what[160];
        std::snprintf(what, sizeof what, "zenkconvert does not convert %s %dx%d to %s %dx%d",
                      gst_video_format_to_string(in), in_info->width, in_info->height, gst_video_format_to_string(out),
                      out_info->width, out_info->height);
        return refuse(what);
    }
    const std::optional<Label> in_label = FixedLabel(gst_caps_get_structure(incaps, 0));
    const std::optional<Label> out_label = FixedLabel(gst_caps_get_structure(outcaps, 0));
    if (!in_label || !out_label) return refuse("zenkconvert cannot read the caps' colorimetry");
    const Settings settings = ColourSettings(self);
    const Verdict v = zenk::gst::Resolve(PairOf(in, out), *in_label, *out_label, settings.matrix, settings.range);
    if (!v.refusal.empty()) return refuse(v.refusal);
    self->pair = &PairOf(in, out);
    self->function = loaded.library->Find(self->pair->src, self->pair->dst);
    if (!self->function)
        return refuse("the conversion library " + loaded.library->path() + " has no export " +
                      zenk::client::ExportName(self->pair->src, self->pair->dst));
    self->src_matrix = v.src_matrix;
    self->dst_matrix = v.dst_matrix;
    self->full_range = v.full_range;
    GST_INFO_OBJECT(self, "%s, matrix %s -> %s, %s range",
                    zenk::client::ExportName(self->pair->src, self->pair->dst).c_str(),
                    zenk::client::MatrixName(v.src_matrix).c_str(), zenk::client::MatrixName(v.dst_matrix).c_str(),
                    v.full_range ? "full" : "studio");
    return TRUE;
}

// The frame's planes as the library addresses them, or nothing when they
// are not laid out as the library reads them (an NV16 chroma plane
// elsewhere than right after luma).
std::optional<zenk::client::Picture> PictureOf(const GstVideoFrame& frame, Format format) {
    zenk::client::Picture p;
    p.format = format;
    p.colour = static_cast<uint8_t*>(GST_VIDEO_FRAME_PLANE_DATA(&frame, 0));
    p.stride = GST_VIDEO_FRAME_PLANE_STRIDE(&frame, 0);
    p.width = GST_VIDEO_FRAME_WIDTH(&frame);
    p.height = GST_VIDEO_FRAME_HEIGHT(&frame);
    if (GST_VIDEO_FRAME_FORMAT(&frame) == GST_VIDEO_FORMAT_NV16) {
        const auto* chroma = static_cast<const uint8_t*>(GST_VIDEO_FRAME_PLANE_DATA(&frame, 1));
        if (GST_VIDEO_FRAME_PLANE_STRIDE(&frame, 1) != p.stride ||
            chroma != p.colour + static_cast<ptrdiff_t>(p.stride) * p.height)
            return std::nullopt;
    }
    return p;
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
    zenk::client::RequestOptions options;
    options.src_matrix = self->src_matrix;
    options.dst_matrix = self->dst_matrix;
    options.full_range = self->full_range;
    GST_OBJECT_LOCK(self);
    options.clamp_luma = self->clamp_luma;
    options.streaming = self->streaming_stores;
    options.alpha_value = zenk::client::AlphaWord(static_cast<uint8_t>(self->alpha));
    guint threads = self->n_threads == 0 ? g_get_num_processors() : self->n_threads;
    GST_OBJECT_UNLOCK(self);
    const zenk::client::Pair& pair = *self->pair;

    GstVideoFrame staged_in, staged_out;
    bool in_staged = false, out_staged = false;
    std::optional<zenk::client::Picture> in = PictureOf(*in_frame, pair.src);
    if (!in) {
        if (!StageFrame(&in_frame->info, &staged_in, GST_MAP_READWRITE) || !gst_video_frame_copy(&staged_in, in_frame))
            return GST_FLOW_ERROR;
        in_staged = true;
        in = PictureOf(staged_in, pair.src);
    }
    std::optional<zenk::client::Picture> out = PictureOf(*out_frame, pair.dst);
    if (!out) {
        if (!StageFrame(&out_frame->info, &staged_out, GST_MAP_READWRITE)) return GST_FLOW_ERROR;
        out_staged = true;
        out = PictureOf(staged_out, pair.dst);
    }

    // The kernel the library picks depends on these.
    GST_LOG_OBJECT(self, "planes at 16-byte residues %u -> %u, pitches %d -> %d",
                   static_cast<unsigned>(reinterpret_cast<uintptr_t>(in->colour) % 16),
                   static_cast<unsigned>(reinterpret_cast<uintptr_t>(out->colour) % 16), in->stride, out->stride);
    const std::vector<zenk::client::Band> bands =
        zenk::client::Bands(pair, options, *in, *out, static_cast<int>(threads));
    if (bands.size() > 1 && (!self->pool || self->pool_threads != bands.size() - 1)) {
        if (self->pool) g_thread_pool_free(self->pool, FALSE, TRUE);
        self->pool_threads = static_cast<guint>(bands.size() - 1);
        self->pool = g_thread_pool_new(RunBand, nullptr, static_cast<gint>(self->pool_threads), TRUE, nullptr);
    }
    std::vector<BandJob> jobs;
    jobs.reserve(bands.size());
    std::latch done(static_cast<std::ptrdiff_t>(bands.size()));
    for (const zenk::client::Band& band : bands)
        jobs.push_back({self->function, zenk::client::MakeRequest(pair, options, *in, *out, band.first, band.count),
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

// Why fixed input caps found no output downstream accepts: the formats the
// input converts to, and for each downstream structure that names one, why
// its colour or size cannot be had.
std::string WhyNoOutput(GstZenkConvert* self, GstVideoFormat in, const GstVideoInfo& info, const GstStructure* in_s,
                        GstCaps* downstream) {
    const std::vector<GstVideoFormat> offered = OutputsOf(in);
    const std::optional<Label> label = FixedLabel(in_s);
    const Settings settings = ColourSettings(self);
    std::vector<std::string> reasons;
    auto add = [&](const std::string& r) {
        if (std::find(reasons.begin(), reasons.end(), r) == reasons.end()) reasons.push_back(r);
    };
    for (guint i = 0; downstream && i < gst_caps_get_size(downstream); ++i) {
        const GstStructure* s = gst_caps_get_structure(downstream, i);
        for (GstVideoFormat f : StructureFormats(s)) {
            if (!Converts(in, f)) continue;
            if (NeedsEvenWidth(f) && info.width % 2 != 0) {
                add(std::string(gst_video_format_to_string(f)) + " needs an even width (pixel pairs share chroma), not " +
                    std::to_string(info.width));
                continue;
            }
            if (!label) continue;
            std::vector<const GValue*> colorimetries = Values(s, "colorimetry");
            if (colorimetries.empty()) colorimetries.push_back(nullptr);
            for (const GValue* c : colorimetries) {
                const char* text = c && G_VALUE_HOLDS_STRING(c) ? g_value_get_string(c) : nullptr;
                const Verdict v = Judge(in, *label, f, text, settings);
                if (!v.refusal.empty()) add(v.refusal);
            }
        }
    }
    if (!reasons.empty()) {
        std::string why;
        for (const std::string& r : reasons) why += (why.empty() ? "" : "; ") + r;
        return why;
    }
    gchar* text = downstream ? gst_caps_to_string(downstream) : g_strdup("nothing");
    const std::string why = std::string("zenkconvert converts ") + gst_video_format_to_string(in) + " only to " +
                            FormatList(offered) + "; downstream accepts " + text;
    g_free(text);
    return why;
}

// Names the cause when caps that reached the element cannot be converted:
// without this, a pipeline only learns that the stream stopped.
gboolean SinkEvent(GstBaseTransform* trans, GstEvent* event) {
    GstZenkConvert* self = Self(trans);
    GstCaps* caps = nullptr;
    if (GST_EVENT_TYPE(event) == GST_EVENT_CAPS) {
        gst_event_parse_caps(event, &caps);
        gst_caps_ref(caps);
        self->refusal_posted = false;
    }
    const gboolean ok = GST_BASE_TRANSFORM_CLASS(gst_zenk_convert_parent_class)->sink_event(trans, event);
    if (caps && !ok && !self->refusal_posted) {
        GstVideoInfo info;
        std::string why;
        if (!gst_video_info_from_caps(&info, caps)) {
            gchar* text = gst_caps_to_string(caps);
            why = std::string("zenkconvert cannot read the input caps ") + text;
            g_free(text);
        } else {
            const GstVideoFormat f = GST_VIDEO_INFO_FORMAT(&info);
            const char* name = gst_video_format_to_string(f);
            if (!Named(f)) {
                why = std::string("zenkconvert does not convert ") + name + "; it converts " +
                      FormatList(AllElementFormats());
            } else if (NeedsEvenWidth(f) && info.width % 2 != 0) {
                why = std::string("zenkconvert needs an even width for ") + name + " (pixel pairs share chroma), not " +
                      std::to_string(info.width);
            } else {
                GstCaps* downstream = gst_pad_peer_query_caps(GST_BASE_TRANSFORM_SRC_PAD(trans), nullptr);
                why = WhyNoOutput(self, f, info, gst_caps_get_structure(caps, 0), downstream);
                if (downstream) gst_caps_unref(downstream);
            }
        }
        GST_ELEMENT_ERROR(trans, CORE, NEGOTIATION, ("%s", why.c_str()), ("not-negotiated"));
    }
    if (caps) gst_caps_unref(caps);
    return ok;
}

// Fixed raw-video input caps are let through to the caps event, which
// refuses what the element cannot convert with its reason on the bus,
// rather than turned away unexplained.
gboolean AcceptCaps(GstBaseTransform* trans, GstPadDirection direction, GstCaps* caps) {
    if (GST_BASE_TRANSFORM_CLASS(gst_zenk_convert_parent_class)->accept_caps(trans, direction, caps)) return TRUE;
    if (direction != GST_PAD_SINK || !gst_caps_is_fixed(caps)) return FALSE;
    const GstCapsFeatures* features = gst_caps_get_features(caps, 0);
    return gst_structure_has_name(gst_caps_get_structure(caps, 0), "video/x-raw") &&
           (!features || gst_caps_features_is_equal(features, GST_CAPS_FEATURES_MEMORY_SYSTEM_MEMORY));
}

void SetProperty(GObject* object, guint id, const GValue* value, GParamSpec* pspec) {
    GstZenkConvert* self = Self(object);
    bool renegotiate = false;
    GST_OBJECT_LOCK(self);
    switch (id) {
        case kPropMatrix:
            self->matrix = static_cast<MatrixSetting>(g_value_get_enum(value));
            renegotiate = true;
            break;
        case kPropRange:
            self->range = static_cast<RangeSetting>(g_value_get_enum(value));
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
        case kPropMatrix: g_value_set_enum(value, static_cast<gint>(self->matrix)); break;
        case kPropRange: g_value_set_enum(value, static_cast<gint>(self->range)); break;
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
                          "Matrix of the YUV picture made (or read, when the output is RGB); caps that name "
                          "another are refused",
                          MatrixType(), static_cast<gint>(MatrixSetting::Auto), flags));
    g_object_class_install_property(
        object_class, kPropRange,
        g_param_spec_enum("range", "Range",
                          "Luma swing of the YUV side (YUV to YUV keeps the input's); caps that name another are "
                          "refused",
                          RangeType(), static_cast<gint>(RangeSetting::Auto), flags));
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
                                          "planes (ZenkTranscoderLibrary); a YUV output's caps name the BT.601 or "
                                          "BT.709 matrix and the range it was made with",
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
    self->matrix = MatrixSetting::Auto;
    self->range = RangeSetting::Auto;
    self->clamp_luma = FALSE;
    self->streaming_stores = FALSE;
    self->alpha = 255;
    self->n_threads = 1;
    self->function = nullptr;
    self->pair = nullptr;
    self->refusal_posted = false;
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
