// zenkconvert against GStreamer's videoconvert in the same pipeline:
//   appsrc (one pre-rendered frame, pushed again and again) ! <converter> ! fakesink
// Frames per second are counted at the sink between the warm-up frames and
// the last one, so start-up and negotiation are left out; each case keeps
// the best of its repetitions, which alternate between the two converters. Prints a Markdown table of frames per second
// and of the ratio zenkconvert / videoconvert.
//   zenk_gst_bench [seconds per case, default 1.5]
// The build tree's plugin is found without GST_PLUGIN_PATH.
#include <gst/gst.h>
#include <gst/video/video.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <utility>
#include <vector>

namespace {

constexpr int kWarmUp = 5;
constexpr int kRepetitions = 3;

struct Counter {
    std::atomic<int> frames{0};
    std::atomic<gint64> first_us{0}, last_us{0};
};

void OnHandoff(GstElement*, GstBuffer*, GstPad*, gpointer data) {
    auto* c = static_cast<Counter*>(data);
    const int n = ++c->frames;
    const gint64 now = g_get_monotonic_time();
    if (n == kWarmUp) c->first_us = now;
    c->last_us = now;
}

// Frames per second of one run, or a negative number when it failed.
double RunOnce(const std::string& in_caps, const std::string& converter, const std::string& out_caps, int frames) {
    const std::string description = "appsrc name=src format=time block=true max-buffers=4 caps=\"" + in_caps +
                                    "\" ! " + converter + " ! " + out_caps +
                                    " ! fakesink name=sink sync=false signal-handoffs=true";
    GError* error = nullptr;
    GstElement* pipeline = gst_parse_launch(description.c_str(), &error);
    if (!pipeline) {
        std::fprintf(stderr, "%s: %s\n", description.c_str(), error ? error->message : "cannot build");
        g_clear_error(&error);
        return -1;
    }
    Counter counter;
    GstElement* sink = gst_bin_get_by_name(GST_BIN(pipeline), "sink");
    g_signal_connect(sink, "handoff", G_CALLBACK(OnHandoff), &counter);
    GstElement* src = gst_bin_get_by_name(GST_BIN(pipeline), "src");

    GstCaps* caps = gst_caps_from_string(in_caps.c_str());
    GstVideoInfo info;
    gst_video_info_from_caps(&info, caps);
    gst_caps_unref(caps);
    // A test card, so that the YUV input holds legal values.
    GstBuffer* frame = gst_buffer_new_allocate(nullptr, GST_VIDEO_INFO_SIZE(&info), nullptr);
    GstMapInfo map;
    gst_buffer_map(frame, &map, GST_MAP_WRITE);
    for (gsize i = 0; i < map.size; ++i) map.data[i] = static_cast<guint8>(64 + (i * 7 + i / 4096) % 128);
    gst_buffer_unmap(frame, &map);

    gst_element_set_state(pipeline, GST_STATE_PLAYING);
    const GstClockTime duration = gst_util_uint64_scale_int(GST_SECOND, 1, 25);
    for (int i = 0; i < frames; ++i) {
        GstBuffer* b = gst_buffer_copy(frame);  // shares the memory: no bytes are copied
        GST_BUFFER_PTS(b) = i * duration;
        GST_BUFFER_DURATION(b) = duration;
        GstFlowReturn ret;
        g_signal_emit_by_name(src, "push-buffer", b, &ret);
        gst_buffer_unref(b);
        if (ret != GST_FLOW_OK) break;
    }
    GstFlowReturn ret;
    g_signal_emit_by_name(src, "end-of-stream", &ret);
    GstBus* bus = gst_element_get_bus(pipeline);
    GstMessage* message =
        gst_bus_timed_pop_filtered(bus, GST_CLOCK_TIME_NONE, static_cast<GstMessageType>(GST_MESSAGE_EOS | GST_MESSAGE_ERROR));
    double fps = -1;
    if (GST_MESSAGE_TYPE(message) == GST_MESSAGE_ERROR) {
        GError* e = nullptr;
        gst_message_parse_error(message, &e, nullptr);
        std::fprintf(stderr, "%s: %s\n", description.c_str(), e->message);
        g_error_free(e);
    } else if (counter.frames > kWarmUp) {
        fps = (counter.frames - kWarmUp) * 1e6 / static_cast<double>(counter.last_us - counter.first_us);
    }
    gst_message_unref(message);
    gst_object_unref(bus);
    gst_element_set_state(pipeline, GST_STATE_NULL);
    gst_buffer_unref(frame);
    gst_object_unref(src);
    gst_object_unref(sink);
    gst_object_unref(pipeline);
    return fps;
}

// Both converters' best of a few runs, each about `seconds` long at its first
// run's rate. The two alternate, so that a burst of other work on the
// machine falls on both rather than on one.
std::pair<double, double> Best(const std::string& in_caps, const std::string& peer, const std::string& ours,
                               const std::string& out_caps, double seconds) {
    double best[2] = {0, 0};
    int frames[2] = {0, 0};
    const std::string converters[2] = {peer, ours};
    for (int c = 0; c < 2; ++c) {
        best[c] = RunOnce(in_caps, converters[c], out_caps, kWarmUp + 10);
        if (best[c] <= 0) return {best[0], best[1]};
        frames[c] = kWarmUp + std::max(10, static_cast<int>(best[c] * seconds));
    }
    for (int i = 0; i < kRepetitions; ++i)
        for (int c = 0; c < 2; ++c) best[c] = std::max(best[c], RunOnce(in_caps, converters[c], out_caps, frames[c]));
    return {best[0], best[1]};
}

}  // namespace

int main(int argc, char** argv) {
    const double seconds = argc > 1 ? std::atof(argv[1]) : 1.5;
    if (!g_getenv("GST_PLUGIN_PATH")) g_setenv("GST_PLUGIN_PATH", ZENK_GST_PLUGIN_DIR, TRUE);
    gst_init(&argc, &argv);
    GstElementFactory* factory = gst_element_factory_find("zenkconvert");
    if (!factory) {
        std::fprintf(stderr, "zenkconvert not found (GST_PLUGIN_PATH=%s)\n", g_getenv("GST_PLUGIN_PATH"));
        return 1;
    }
    gst_object_unref(factory);
    struct Size {
        int width, height;
    };
    struct Way {
        const char *in, *out;
    };
    std::printf("| size | conversion | threads | videoconvert (fps) | zenkconvert (fps) | zenkconvert / videoconvert |\n");
    std::printf("|---|---|---:|---:|---:|---:|\n");
    for (Size size : {Size{1920, 1080}, Size{3840, 2160}})
        for (Way way : {Way{"UYVY", "BGRA"}, Way{"BGRA", "UYVY"}})
            for (int threads : {1, 2}) {
                // BT.709 on the YUV side for both, so that neither converts
                // the BT.2020 that GStreamer assumes for UHD without colorimetry.
                auto caps = [&](const char* format, bool fixed_size) {
                    std::string c = std::string("video/x-raw,format=") + format;
                    if (fixed_size)
                        c += ",width=" + std::to_string(size.width) + ",height=" + std::to_string(size.height) +
                             ",framerate=25/1";
                    if (std::string(format) == "UYVY") c += ",colorimetry=bt709";
                    return c;
                };
                const std::string in = caps(way.in, true), out = caps(way.out, false);
                const std::string n = " n-threads=" + std::to_string(threads);
                const auto [peer, ours] = Best(in, "videoconvert" + n, "zenkconvert" + n, out, seconds);
                std::printf("| %dx%d | %s -> %s | %d | %.1f | %.1f | %.2fx |\n", size.width, size.height, way.in, way.out,
                            threads, peer, ours, peer > 0 ? ours / peer : 0.0);
                std::fflush(stdout);
            }
    return 0;
}
