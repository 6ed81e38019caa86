// zenkconvert in a harness: each frame it converts must equal, byte for
// byte, what a host gets by calling the pair's export itself on the same
// frame; caps it cannot convert must fail negotiation with a message that
// names the reason.
#include <dlfcn.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <set>
#include <sstream>
#include <string>
#include <vector>

// After the standard headers: the check library defines a macro `fail`.
#include <gst/check/gstcheck.h>
#include <gst/check/gstharness.h>
#include <gst/video/video.h>

#include "zenk_transcoder.h"

namespace {

struct PairCase {
    const char* in;
    const char* out;
    const char* pair;  // the export: ZENK_SSE2_<pair>_EX
};

// Every pair of different formats the element offers, and the export a host
// calls for it. Equal caps pass through and are not listed.
const PairCase kPairs[] = {
    {"UYVY", "BGRA", "UYVY16I_BGR32I"},   {"UYVY", "BGRx", "UYVY16I_BGR32I"},   {"UYVY", "BGR", "UYVY16I_BGR24I"},
    {"UYVY", "YUY2", "UYVY16I_YUYV16I"},  {"UYVY", "NV16", "UYVY16I_Y8PUV8I"},  {"UYVY", "VUYA", "UYVY16I_V8U8Y8A8I"},
    {"YUY2", "BGRA", "YUYV16I_BGR32I"},   {"YUY2", "BGRx", "YUYV16I_BGR32I"},   {"YUY2", "BGR", "YUYV16I_BGR24I"},
    {"YUY2", "UYVY", "YUYV16I_UYVY16I"},  {"NV16", "BGRA", "Y8PUV8I_BGR32I"},   {"NV16", "BGRx", "Y8PUV8I_BGR32I"},
    {"NV16", "BGR", "Y8PUV8I_BGR24I"},    {"BGRA", "BGRx", "BGR32I_BGR32I"},    {"BGRA", "BGR", "BGR32I_BGR24I"},
    {"BGRA", "YUY2", "BGR32I_YUYV16I"},   {"BGRA", "UYVY", "BGR32I_UYVY16I"},   {"BGRA", "NV16", "BGR32I_Y8PUV8I"},
    {"BGRA", "GRAY8", "BGR32I_A8P"},      {"BGRx", "BGR", "BGR32I_BGR24I"},     {"BGRx", "YUY2", "BGR32I_YUYV16I"},
    {"BGRx", "UYVY", "BGR32I_UYVY16I"},   {"BGRx", "NV16", "BGR32I_Y8PUV8I"},   {"BGR", "BGRA", "BGR24I_BGR32I"},
    {"BGR", "BGRx", "BGR24I_BGR32I"},     {"BGR", "YUY2", "BGR24I_YUYV16I"},    {"BGR", "UYVY", "BGR24I_UYVY16I"},
    {"BGR", "NV16", "BGR24I_Y8PUV8I"},
};
const char* const kFormats[] = {"UYVY", "YUY2", "NV16", "VUYA", "BGRA", "BGRx", "BGR", "GRAY8"};

// What the request of a case holds besides the frames.
struct Expected {
    const char* pair;
    int32_t src_matrix, dst_matrix;
    bool full_range = false;
    uint8_t alpha = 255;
    bool clamp_luma = false;
    bool streaming = false;
};

struct Case {
    std::string in_caps, out_caps, properties;
    Expected expected;
    int threads = 1;
};

std::string Describe(const Case& c) {
    return c.in_caps + " ! zenkconvert " + c.properties + " n-threads=" + std::to_string(c.threads) + " ! " +
           c.out_caps;
}

ZenkConvertFunction Export(const char* pair) {
    static void* library = dlopen(ZENK_LIBRARY_PATH, RTLD_NOW | RTLD_LOCAL);
    fail_unless(library != nullptr, "cannot load %s", ZENK_LIBRARY_PATH);
    const std::string name = std::string("ZENK_SSE2_") + pair + "_EX";
    auto function = reinterpret_cast<ZenkConvertFunction>(dlsym(library, name.c_str()));
    fail_unless(function != nullptr, "the library has no %s", name.c_str());
    return function;
}

GstBuffer* RandomFrame(const GstVideoInfo& info, uint32_t seed) {
    GstBuffer* buffer = gst_buffer_new_allocate(nullptr, GST_VIDEO_INFO_SIZE(&info), nullptr);
    GstMapInfo map;
    gst_buffer_map(buffer, &map, GST_MAP_WRITE);
    for (gsize i = 0; i < map.size; ++i) {
        seed = seed * 1664525u + 1013904223u;
        map.data[i] = static_cast<uint8_t>(seed >> 24);
    }
    gst_buffer_unmap(buffer, &map);
    return buffer;
}

// Bytes of one line of plane 0 that the conversion reads or writes.
int32_t LineBytes(const GstVideoInfo& info) {
    return GST_VIDEO_INFO_COMP_PSTRIDE(&info, 0) * GST_VIDEO_INFO_WIDTH(&info);
}

// A harness around an element with `properties` ("matrix=bt601 range=full").
GstHarness* Harness(const std::string& properties) {
    GstHarness* h = gst_harness_new("zenkconvert");
    std::istringstream words(properties);
    for (std::string assignment; words >> assignment;) {
        const size_t eq = assignment.find('=');
        gst_util_set_object_arg(G_OBJECT(h->element), assignment.substr(0, eq).c_str(),
                                assignment.substr(eq + 1).c_str());
    }
    return h;
}

// Runs one frame through the element and through a direct call of the
// export, with the destination at the same 64-byte residue and pitches as
// the element's output, so that both take the same kernel.
void CheckCase(const Case& c) {
    const std::string what = Describe(c);
    GstHarness* h = Harness(c.properties);
    g_object_set(h->element, "n-threads", c.threads, nullptr);
    gst_harness_set_src_caps_str(h, c.in_caps.c_str());
    gst_harness_set_sink_caps_str(h, c.out_caps.c_str());

    GstVideoInfo in_info, out_info;
    GstCaps* in_caps = gst_caps_from_string(c.in_caps.c_str());
    fail_unless(gst_video_info_from_caps(&in_info, in_caps));
    gst_caps_unref(in_caps);
    GstBuffer* input = RandomFrame(in_info, 12345u + c.threads);
    fail_unless_equals_int(gst_harness_push(h, gst_buffer_ref(input)), GST_FLOW_OK);
    GstBuffer* output = gst_harness_pull(h);
    fail_unless(output != nullptr, "%s: no output", what.c_str());
    fail_unless(output != input, "%s: passed through", what.c_str());
    GstCaps* out_caps = gst_pad_get_current_caps(h->sinkpad);
    fail_unless(gst_video_info_from_caps(&out_info, out_caps));
    gst_caps_unref(out_caps);
    // A YUV output's caps carry the matrix and range it was converted with.
    if (GST_VIDEO_INFO_IS_YUV(&out_info)) {
        fail_unless_equals_int(out_info.colorimetry.matrix, c.expected.dst_matrix == 1 ? GST_VIDEO_COLOR_MATRIX_BT601
                                                                                          : GST_VIDEO_COLOR_MATRIX_BT709);
        fail_unless_equals_int(out_info.colorimetry.range, c.expected.full_range ? GST_VIDEO_COLOR_RANGE_0_255
                                                                                 : GST_VIDEO_COLOR_RANGE_16_235);
    }

    GstVideoFrame in_frame, out_frame;
    fail_unless(gst_video_frame_map(&in_frame, &in_info, input, GST_MAP_READ));
    fail_unless(gst_video_frame_map(&out_frame, &out_info, output, GST_MAP_READ));
    const auto* out0 = static_cast<const uint8_t*>(GST_VIDEO_FRAME_PLANE_DATA(&out_frame, 0));
    std::vector<uint8_t> storage(GST_VIDEO_INFO_SIZE(&out_info) + 128, 0);
    uint8_t* mine = storage.data() + ((reinterpret_cast<uintptr_t>(out0) - reinterpret_cast<uintptr_t>(storage.data())) & 63);

    const int32_t width = GST_VIDEO_INFO_WIDTH(&in_info), height = GST_VIDEO_INFO_HEIGHT(&in_info);
    ZenkConversionRequest r{};
    r.src_plane = static_cast<const uint8_t*>(GST_VIDEO_FRAME_PLANE_DATA(&in_frame, 0));
    r.src_width = width;
    r.src_height = height;
    r.src_stride = GST_VIDEO_FRAME_PLANE_STRIDE(&in_frame, 0);
    r.src_skip = r.src_stride - LineBytes(in_info);
    r.src_matrix = c.expected.src_matrix;
    r.dst_plane = mine;
    r.width = width;
    r.dst_height = height;
    r.dst_stride = GST_VIDEO_FRAME_PLANE_STRIDE(&out_frame, 0);
    r.dst_skip = r.dst_stride - LineBytes(out_info);
    r.dst_matrix = c.expected.dst_matrix;
    r.src_range = r.dst_range = r.full_range = c.expected.full_range;
    r.alpha_value = c.expected.alpha * 0x00010001u;
    r.clamp_luma = c.expected.clamp_luma;
    r.use_streaming_stores = c.expected.streaming;
    Export(c.expected.pair)(&r);

    for (guint p = 0; p < GST_VIDEO_FRAME_N_PLANES(&out_frame); ++p) {
        const auto* theirs = static_cast<const uint8_t*>(GST_VIDEO_FRAME_PLANE_DATA(&out_frame, p));
        const uint8_t* ours = mine + (theirs - out0);
        const int32_t stride = GST_VIDEO_FRAME_PLANE_STRIDE(&out_frame, p);
        for (int32_t y = 0; y < height; ++y)
            fail_unless(std::memcmp(theirs + y * stride, ours + y * stride, LineBytes(out_info)) == 0,
                        "%s: plane %u line %d differs from a direct call of ZENK_SSE2_%s_EX", what.c_str(), p, y,
                        c.expected.pair);
    }
    gst_video_frame_unmap(&in_frame);
    gst_video_frame_unmap(&out_frame);
    gst_buffer_unref(input);
    gst_buffer_unref(output);
    gst_harness_teardown(h);
}

std::string Caps(const char* format, int width, int height, const char* extra = "") {
    return std::string("video/x-raw,format=") + format + ",width=" + std::to_string(width) +
           ",height=" + std::to_string(height) + ",framerate=25/1" + extra;
}

}  // namespace

// 66 pixels: BGR, GRAY8 and NV16 lines are padded and no kernel takes its
// aligned path; 128 pixels: aligned paths. Three threads cut 20 lines into
// bands that start on 16-byte residues of every plane.
GST_START_TEST(every_pair_equals_a_direct_call) {
    for (const PairCase& pair : kPairs)
        for (auto [width, height] : {std::pair{66, 20}, std::pair{128, 16}})
            for (int threads : {1, 3})
                CheckCase({Caps(pair.in, width, height), std::string("video/x-raw,format=") + pair.out, "",
                           {pair.pair, 1, 1}, threads});
}
GST_END_TEST;

// Matrix, range and alpha from the caps and the properties.
GST_START_TEST(settings_reach_the_request) {
    const Case cases[] = {
        // Standard definition without colorimetry: BT.601; above 576 lines BT.709.
        {Caps("BGRA", 66, 20), "video/x-raw,format=UYVY", "", {"BGR32I_UYVY16I", 1, 1}},
        {Caps("BGRA", 66, 580), "video/x-raw,format=UYVY", "", {"BGR32I_UYVY16I", 0, 0}},
        // The caps' colorimetry decides over the size; a property that agrees with it changes nothing.
        {Caps("UYVY", 66, 20, ",colorimetry=bt709"), "video/x-raw,format=BGRA", "", {"UYVY16I_BGR32I", 0, 0}},
        {Caps("UYVY", 66, 20, ",colorimetry=bt709"), "video/x-raw,format=BGRA", "matrix=bt709",
         {"UYVY16I_BGR32I", 0, 0}},
        {Caps("BGRA", 66, 20), "video/x-raw,format=UYVY", "matrix=bt709", {"BGR32I_UYVY16I", 0, 0}},
        {Caps("BGRA", 66, 20), "video/x-raw,format=UYVY,colorimetry=bt709", "", {"BGR32I_UYVY16I", 0, 0}},
        // YUV to YUV between matrices: a matrix change.
        {Caps("UYVY", 66, 20, ",colorimetry=bt601"), "video/x-raw,format=UYVY,colorimetry=bt709", "",
         {"UYVY16I_UYVY16I", 1, 0}},
        {Caps("UYVY", 66, 20, ",colorimetry=bt709"), "video/x-raw,format=YUY2", "matrix=bt601",
         {"UYVY16I_YUYV16I", 0, 1}},
        // Full range from the caps (range 1, matrix BT.601) or the property.
        {Caps("UYVY", 66, 20, ",colorimetry=1:4:0:0"), "video/x-raw,format=BGRA", "", {"UYVY16I_BGR32I", 1, 1, true}},
        {Caps("BGR", 66, 20), "video/x-raw,format=UYVY", "range=full clamp-luma=true",
         {"BGR24I_UYVY16I", 1, 1, true, 255, true}},
        {Caps("UYVY", 66, 20), "video/x-raw,format=BGRA", "alpha=64 streaming-stores=true",
         {"UYVY16I_BGR32I", 1, 1, false, 64, false, true}},
        {Caps("BGR", 66, 20), "video/x-raw,format=BGRx", "alpha=0", {"BGR24I_BGR32I", 1, 1, false, 0}},
        {Caps("UYVY", 66, 20), "video/x-raw,format=VUYA", "alpha=7", {"UYVY16I_V8U8Y8A8I", 1, 1, false, 7}},
    };
    for (const Case& c : cases) CheckCase(c);
}
GST_END_TEST;

// The formats offered downstream for each input are exactly the table's.
GST_START_TEST(offers_exactly_the_pairs) {
    for (const char* in : kFormats) {
        std::set<std::string> expected{in};
        for (const PairCase& pair : kPairs)
            if (std::string(pair.in) == in) expected.insert(pair.out);
        GstHarness* h = gst_harness_new("zenkconvert");
        gst_harness_set_src_caps_str(h, Caps(in, 64, 16).c_str());
        GstCaps* offered = gst_pad_peer_query_caps(h->sinkpad, nullptr);
        std::set<std::string> formats;
        for (guint i = 0; i < gst_caps_get_size(offered); ++i) {
            const GValue* v = gst_structure_get_value(gst_caps_get_structure(offered, i), "format");
            if (G_VALUE_HOLDS_STRING(v)) formats.insert(g_value_get_string(v));
            else
                for (guint j = 0; j < gst_value_list_get_size(v); ++j)
                    formats.insert(g_value_get_string(gst_value_list_get_value(v, j)));
        }
        gst_caps_unref(offered);
        fail_unless(formats == expected, "%s: the element offers %u formats, the table %u", in,
                    static_cast<unsigned>(formats.size()), static_cast<unsigned>(expected.size()));
        gst_harness_teardown(h);
    }
}
GST_END_TEST;

GST_START_TEST(equal_caps_pass_through) {
    GstHarness* h = gst_harness_new("zenkconvert");
    gst_harness_set_src_caps_str(h, Caps("UYVY", 64, 16, ",colorimetry=bt709").c_str());
    gst_harness_set_sink_caps_str(h, "video/x-raw,format=UYVY");
    GstVideoInfo info;
    gst_video_info_set_format(&info, GST_VIDEO_FORMAT_UYVY, 64, 16);
    GstBuffer* input = RandomFrame(info, 1);
    fail_unless_equals_int(gst_harness_push(h, gst_buffer_ref(input)), GST_FLOW_OK);
    GstBuffer* output = gst_harness_pull(h);
    fail_unless(output == input);
    gst_buffer_unref(output);
    gst_buffer_unref(input);
    gst_harness_teardown(h);
}
GST_END_TEST;

// Pushes one frame of `in_caps` into an element with `properties` whose
// downstream accepts `out_caps`: negotiation must fail, and the element
// must post an error that says `reason` (one each time the caps arrive).
void ExpectRefusal(const std::string& in_caps, const std::string& out_caps, const std::string& properties,
                   const std::string& reason) {
    const std::string what = in_caps + " ! zenkconvert " + properties + " ! " + out_caps;
    GstHarness* h = Harness(properties);
    GstBus* bus = gst_bus_new();
    gst_element_set_bus(h->element, bus);
    gst_harness_set_sink_caps_str(h, out_caps.c_str());
    gst_harness_set_src_caps_str(h, in_caps.c_str());
    GstVideoInfo info;
    GstCaps* caps = gst_caps_from_string(in_caps.c_str());
    // Caps GStreamer cannot describe as video (I420 is fine) get a frame of one byte.
    const bool video = gst_video_info_from_caps(&info, caps);
    gst_caps_unref(caps);
    GstBuffer* frame = video ? RandomFrame(info, 2) : gst_buffer_new_allocate(nullptr, 1, nullptr);
    fail_unless_equals_int(gst_harness_push(h, frame), GST_FLOW_NOT_NEGOTIATED);
    GstMessage* message = gst_bus_pop_filtered(bus, GST_MESSAGE_ERROR);
    fail_unless(message != nullptr, "%s: no error message", what.c_str());
    fail_unless(GST_MESSAGE_SRC(message) == GST_OBJECT(h->element), "%s: the error is not the element's", what.c_str());
    GError* error = nullptr;
    gst_message_parse_error(message, &error, nullptr);
    fail_unless(g_error_matches(error, GST_CORE_ERROR, GST_CORE_ERROR_NEGOTIATION));
    fail_unless(std::strstr(error->message, reason.c_str()) != nullptr, "%s: \"%s\" does not say \"%s\"", what.c_str(),
                error->message, reason.c_str());
    g_error_free(error);
    gst_message_unref(message);
    gst_element_set_bus(h->element, nullptr);
    gst_object_unref(bus);
    gst_harness_teardown(h);
}

// Caps the element cannot convert fail negotiation with an error that says why.
GST_START_TEST(unconvertible_caps_are_refused) {
    struct Refusal {
        std::string in_caps, out_caps, reason;
    };
    const Refusal refusals[] = {
        {Caps("GRAY8", 64, 16), "video/x-raw,format=UYVY", "converts GRAY8 only to"},
        {Caps("BGRx", 64, 16), "video/x-raw,format=BGRA", "converts BGRx only to"},
        {Caps("NV16", 64, 16), "video/x-raw,format=UYVY", "converts NV16 only to"},
        {Caps("UYVY", 65, 16), "video/x-raw,format=BGRA", "even width for UYVY"},
        {Caps("BGRA", 65, 16), "video/x-raw,format=UYVY", "even width for UYVY"},
        {Caps("I420", 64, 16), "video/x-raw,format=BGRA", "does not convert I420; it converts UYVY, YUY2"},
    };
    for (const Refusal& r : refusals) ExpectRefusal(r.in_caps, r.out_caps, "", r.reason);
}
GST_END_TEST;

// 75% yellow (RGB 191, 191, 0) as code values. Studio range: the published
// 8-bit values (BT.601: EBU bars as in ITU-R BT.801; BT.709: SMPTE RP 219).
// Full range, from the definitions: Y = Kr R + Kg G + Kb B, Cb = 128 +
// (B - Y) / (2 (1 - Kb)), Cr = 128 + (R - Y) / (2 (1 - Kr)). Between the two
// matrices yellow differs by 6 in Y and Cr, between the ranges by 7 or more
// in Y and 11 in Cb, so a tolerance of 2 (the library's rounding, and a
// change of matrix that lands one low) cannot take one for another.
struct Yellow {
    int y, cb, cr;
};

Yellow YellowIn(GstVideoColorMatrix matrix, GstVideoColorRange range) {
    const bool bt601 = matrix == GST_VIDEO_COLOR_MATRIX_BT601;
    if (range == GST_VIDEO_COLOR_RANGE_0_255) return bt601 ? Yellow{169, 33, 144} : Yellow{177, 33, 137};
    return bt601 ? Yellow{162, 44, 142} : Yellow{168, 44, 136};
}

constexpr int kTolerance = 2;

// A frame of 75% yellow in `info`'s format: RGB 191, 191, 0, or `yuv`.
GstBuffer* YellowFrame(GstVideoInfo& info, Yellow yuv) {
    GstBuffer* buffer = gst_buffer_new_allocate(nullptr, GST_VIDEO_INFO_SIZE(&info), nullptr);
    GstVideoFrame frame;
    fail_unless(gst_video_frame_map(&frame, &info, buffer, GST_MAP_WRITE));
    const std::string format = gst_video_format_to_string(GST_VIDEO_INFO_FORMAT(&info));
    const uint8_t y = yuv.y, cb = yuv.cb, cr = yuv.cr;
    for (int line = 0; line < GST_VIDEO_INFO_HEIGHT(&info); ++line) {
        auto* p0 = static_cast<uint8_t*>(GST_VIDEO_FRAME_PLANE_DATA(&frame, 0)) +
                   line * GST_VIDEO_FRAME_PLANE_STRIDE(&frame, 0);
        for (int x = 0; x < GST_VIDEO_INFO_WIDTH(&info); ++x) {
            if (format == "BGRA" || format == "BGRx") {
                const uint8_t px[] = {0, 191, 191, 255};
                std::memcpy(p0 + 4 * x, px, 4);
            } else if (format == "BGR") {
                const uint8_t px[] = {0, 191, 191};
                std::memcpy(p0 + 3 * x, px, 3);
            } else if (format == "UYVY") {
                p0[2 * x] = x % 2 ? cr : cb;
                p0[2 * x + 1] = y;
            } else if (format == "YUY2") {
                p0[2 * x] = y;
                p0[2 * x + 1] = x % 2 ? cr : cb;
            } else if (format == "NV16") {
                auto* p1 = static_cast<uint8_t*>(GST_VIDEO_FRAME_PLANE_DATA(&frame, 1)) +
                           line * GST_VIDEO_FRAME_PLANE_STRIDE(&frame, 1);
                p0[x] = y;
                p1[x] = x % 2 ? cr : cb;
            } else {
                fail("no yellow for %s", format.c_str());
            }
        }
    }
    gst_video_frame_unmap(&frame);
    return buffer;
}

// The first pixel pair of a frame as Y, Cb, Cr, or as B, G, R in the same fields.
Yellow FirstPixel(GstVideoInfo& info, GstBuffer* buffer) {
    GstVideoFrame frame;
    fail_unless(gst_video_frame_map(&frame, &info, buffer, GST_MAP_READ));
    const auto* p0 = static_cast<const uint8_t*>(GST_VIDEO_FRAME_PLANE_DATA(&frame, 0));
    const std::string format = gst_video_format_to_string(GST_VIDEO_INFO_FORMAT(&info));
    Yellow v{};
    if (format == "UYVY") v = {p0[1], p0[0], p0[2]};
    else if (format == "YUY2") v = {p0[0], p0[1], p0[3]};
    else if (format == "VUYA") v = {p0[2], p0[1], p0[0]};
    else if (format == "NV16") {
        const auto* p1 = static_cast<const uint8_t*>(GST_VIDEO_FRAME_PLANE_DATA(&frame, 1));
        v = {p0[0], p1[0], p1[1]};
    } else v = {p0[0], p0[1], p0[2]};  // B, G, R
    gst_video_frame_unmap(&frame);
    return v;
}

// The caps against the properties. A row's YUV input is 75% yellow in the
// matrix and range it names (or, naming none, the default: BT.601 up to 576
// lines, BT.709 above, studio range); its YUV output must name `matrix` and
// `range` in its caps and hold yellow in exactly those code values; an RGB
// output must come back as RGB 191, 191, 0, which it does only when the
// input was decoded with the matrix and range its caps name. A row with a
// refusal must fail negotiation with that reason.
struct ColourCase {
    std::string in_caps, out_caps, properties;
    const char* refusal;  // null: the caps and properties agree
    GstVideoColorMatrix in_matrix = GST_VIDEO_COLOR_MATRIX_UNKNOWN, matrix = GST_VIDEO_COLOR_MATRIX_UNKNOWN;
    GstVideoColorRange in_range = GST_VIDEO_COLOR_RANGE_16_235, range = GST_VIDEO_COLOR_RANGE_16_235;
};

constexpr GstVideoColorMatrix k601 = GST_VIDEO_COLOR_MATRIX_BT601, k709 = GST_VIDEO_COLOR_MATRIX_BT709;
constexpr GstVideoColorRange kStudio = GST_VIDEO_COLOR_RANGE_16_235, kFull = GST_VIDEO_COLOR_RANGE_0_255;
constexpr GstVideoColorMatrix kRgb = GST_VIDEO_COLOR_MATRIX_UNKNOWN;  // the side is RGB

std::string Out(const char* format, const char* colorimetry = nullptr) {
    return std::string("video/x-raw,format=") + format + (colorimetry ? std::string(",colorimetry=") + colorimetry : "");
}

std::string Sd(const char* format, const char* extra = "") { return Caps(format, 720, 576, extra); }
std::string Hd(const char* format, const char* extra = "") { return Caps(format, 1280, 720, extra); }

const ColourCase kColourCases[] = {
    // RGB to YUV: the default by lines, downstream's colorimetry, the properties.
    {Sd("BGRA"), Out("UYVY"), "", nullptr, kRgb, k601},
    {Caps("BGRA", 720, 577), Out("UYVY"), "", nullptr, kRgb, k709},
    {Hd("BGRA"), Out("YUY2"), "", nullptr, kRgb, k709},
    {Sd("BGRA"), Out("UYVY", "bt709"), "", nullptr, kRgb, k709},
    {Hd("BGR"), Out("NV16", "bt601"), "", nullptr, kRgb, k601},
    {Sd("BGRA"), Out("UYVY"), "matrix=bt709", nullptr, kRgb, k709},
    {Hd("BGRA"), Out("UYVY", "bt601"), "matrix=bt601", nullptr, kRgb, k601},
    {Sd("BGRA"), Out("UYVY"), "range=full", nullptr, kRgb, k601, kStudio, kFull},
    {Sd("BGRx"), Out("UYVY", "1:3:5:1"), "", nullptr, kRgb, k709, kStudio, kFull},
    {Hd("BGRA"), Out("UYVY", "{ bt709, bt601 }"), "matrix=bt601", nullptr, kRgb, k601},
    {Sd("BGRA"), Out("UYVY", "{ 1:3:5:1, bt709 }"), "range=studio", nullptr, kRgb, k709},
    // ... and what contradicts them, or what the library does not make.
    {Sd("BGRA"), Out("UYVY", "bt709"), "matrix=bt601", "matrix=bt601 makes BT.601, but downstream asks for BT.709"},
    {Sd("BGRA"), Out("UYVY", "bt709"), "range=full", "range=full makes full range, but downstream asks for studio"},
    {Hd("BGRA"), Out("UYVY", "{ bt601, 1:4:5:4 }"), "matrix=bt709", "matrix=bt709 makes BT.709"},
    {Hd("BGRA"), Out("UYVY", "bt2020"), "", "downstream asks for BT.2020 (colorimetry=bt2020): zenkconvert makes"},
    {Hd("BGRA"), Out("YUY2", "smpte240m"), "", "downstream asks for SMPTE 240M"},
    // YUV to RGB: the input is decoded as its caps say.
    {Sd("UYVY"), Out("BGRA"), "", nullptr, k601, kRgb},
    {Hd("YUY2"), Out("BGRx"), "", nullptr, k709, kRgb},
    {Sd("UYVY", ",colorimetry=bt709"), Out("BGR"), "", nullptr, k709, kRgb},
    {Hd("NV16", ",colorimetry=bt601"), Out("BGRA"), "", nullptr, k601, kRgb},
    {Sd("UYVY", ",colorimetry=1:4:0:0"), Out("BGRA"), "", nullptr, k601, kRgb, kFull},
    {Sd("UYVY", ",colorimetry=bt709"), Out("BGRA"), "matrix=bt709 range=studio", nullptr, k709, kRgb},
    {Hd("UYVY"), Out("BGRA"), "matrix=bt601 range=full", nullptr, k601, kRgb, kFull},
    {Sd("UYVY", ",colorimetry=bt709"), Out("BGRA"), "matrix=bt601", "matrix=bt601, but the input caps name BT.709"},
    {Sd("UYVY", ",colorimetry=bt709"), Out("BGRA"), "range=full", "range=full, but the input caps name studio range"},
    {Hd("UYVY", ",colorimetry=bt2020"), Out("BGRA"), "", "the input caps name BT.2020"},
    // YUV to YUV: a change of matrix where the caps differ; the range stays.
    {Sd("UYVY", ",colorimetry=bt601"), Out("UYVY", "bt709"), "", nullptr, k601, k709},
    {Sd("UYVY"), Out("YUY2"), "matrix=bt709", nullptr, k601, k709},
    {Hd("YUY2"), Out("UYVY", "bt601"), "", nullptr, k709, k601},
    {Hd("UYVY", ",colorimetry=bt709"), Out("NV16"), "", nullptr, k709, k709},
    {Sd("UYVY"), Out("VUYA"), "", nullptr, k601, k601},
    {Sd("UYVY", ",colorimetry=1:4:0:0"), Out("YUY2"), "", nullptr, k601, k601, kFull, kFull},
    {Sd("UYVY"), Out("UYVY", "bt709"), "matrix=bt601", "matrix=bt601 makes BT.601, but downstream asks for BT.709"},
    {Sd("UYVY"), Out("VUYA", "bt709"), "", "UYVY to VUYA keeps the picture's matrix"},
    {Sd("UYVY"), Out("NV16"), "matrix=bt709", "by writing packed UYVY bytes, not NV16"},
    {Sd("UYVY"), Out("YUY2"), "range=full", "keeps the range from YUV to YUV: the input is studio range"},
    {Sd("UYVY"), Out("YUY2", "1:4:5:4"), "", "downstream asks for full range"},
};

GST_START_TEST(caps_follow_the_bytes) {
    for (const ColourCase& c : kColourCases) {
        const std::string what = c.in_caps + " ! zenkconvert " + c.properties + " ! " + c.out_caps;
        if (c.refusal) {
            ExpectRefusal(c.in_caps, c.out_caps, c.properties, c.refusal);
            continue;
        }
        GstHarness* h = Harness(c.properties);
        gst_harness_set_sink_caps_str(h, c.out_caps.c_str());
        gst_harness_set_src_caps_str(h, c.in_caps.c_str());
        GstVideoInfo in_info, out_info;
        GstCaps* in_caps = gst_caps_from_string(c.in_caps.c_str());
        fail_unless(gst_video_info_from_caps(&in_info, in_caps));
        gst_caps_unref(in_caps);
        const GstFlowReturn pushed = gst_harness_push(h, YellowFrame(in_info, YellowIn(c.in_matrix, c.in_range)));
        fail_unless(pushed == GST_FLOW_OK, "%s: %s", what.c_str(), gst_flow_get_name(pushed));
        GstBuffer* output = gst_harness_pull(h);
        fail_unless(output != nullptr, "%s: no output", what.c_str());
        GstCaps* out_caps = gst_pad_get_current_caps(h->sinkpad);
        fail_unless(gst_video_info_from_caps(&out_info, out_caps));
        gchar* out_text = gst_caps_to_string(out_caps);
        gst_caps_unref(out_caps);
        const Yellow got = FirstPixel(out_info, output);
        if (c.matrix == kRgb) {
            fail_unless(std::abs(got.y - 0) <= kTolerance && std::abs(got.cb - 191) <= kTolerance &&
                            std::abs(got.cr - 191) <= kTolerance,
                        "%s: RGB %d, %d, %d for yellow 191, 191, 0", what.c_str(), got.cr, got.cb, got.y);
        } else {
            fail_unless(out_info.colorimetry.matrix == c.matrix && out_info.colorimetry.range == c.range,
                        "%s: the output caps %s name matrix %d range %d, not %d, %d", what.c_str(), out_text,
                        out_info.colorimetry.matrix, out_info.colorimetry.range, c.matrix, c.range);
            // The bytes are those of the matrix and range the caps name.
            const Yellow want = YellowIn(out_info.colorimetry.matrix, out_info.colorimetry.range);
            fail_unless(std::abs(got.y - want.y) <= kTolerance && std::abs(got.cb - want.cb) <= kTolerance &&
                            std::abs(got.cr - want.cr) <= kTolerance,
                        "%s: yellow Y %d Cb %d Cr %d under %s, whose values are %d, %d, %d", what.c_str(), got.y,
                        got.cb, got.cr, out_text, want.y, want.cb, want.cr);
        }
        g_free(out_text);
        gst_buffer_unref(output);
        gst_harness_teardown(h);
    }
}
GST_END_TEST;

// At an odd width the 4:2:2 formats come after every other: downstream's
// first choice, UYVY, would fail, and the element takes BGRx instead.
GST_START_TEST(odd_widths_steer_to_formats_they_fit) {
    GstHarness* h = gst_harness_new("zenkconvert");
    gst_harness_set_sink_caps_str(h, "video/x-raw,format={ UYVY, BGRx }");
    gst_harness_set_src_caps_str(h, Caps("BGRA", 65, 4).c_str());
    GstVideoInfo info;
    gst_video_info_set_format(&info, GST_VIDEO_FORMAT_BGRA, 65, 4);
    fail_unless_equals_int(gst_harness_push(h, RandomFrame(info, 3)), GST_FLOW_OK);
    GstBuffer* output = gst_harness_pull(h);
    GstCaps* caps = gst_pad_get_current_caps(h->sinkpad);
    fail_unless_equals_string(gst_structure_get_string(gst_caps_get_structure(caps, 0), "format"), "BGRx");
    gst_caps_unref(caps);
    gst_buffer_unref(output);
    gst_harness_teardown(h);
}
GST_END_TEST;

static Suite* zenkconvert_suite() {
    Suite* s = suite_create("zenkconvert");
    TCase* tc = tcase_create("general");
    tcase_set_timeout(tc, 120);
    suite_add_tcase(s, tc);
    tcase_add_test(tc, every_pair_equals_a_direct_call);
    tcase_add_test(tc, settings_reach_the_request);
    tcase_add_test(tc, offers_exactly_the_pairs);
    tcase_add_test(tc, equal_caps_pass_through);
    tcase_add_test(tc, unconvertible_caps_are_refused);
    tcase_add_test(tc, caps_follow_the_bytes);
    tcase_add_test(tc, odd_widths_steer_to_formats_they_fit);
    return s;
}

GST_CHECK_MAIN(zenkconvert)
