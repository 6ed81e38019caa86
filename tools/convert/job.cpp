#include "job.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <regex>

#include "colour.h"
#include "errors.h"
#include "line_pairs.h"
#include "output_file.h"
#include "png_io.h"
#include "test_card.h"

namespace zenk::tool {

namespace {

std::string SizeText(Size s) { return std::to_string(s.width) + "x" + std::to_string(s.height); }

void CheckFrameSize(Format f, Size s, const char* side) {
    if (NeedsEvenWidth(f) && s.width % 2 != 0)
        throw Error(kExitUsage, std::string(side) + " " + Token(f) + " pairs pixels for their chroma: the width must be even, not " +
                                        std::to_string(s.width));
    if (LayoutOf(f, s.width, s.height).total() > kMaxFrameBytes)
        throw Error(kExitUsage, "a " + SizeText(s) + " " + Token(f) + " frame is over the " +
                                        std::to_string(kMaxFrameBytes >> 20) + " MiB that zenk-convert handles");
}

// The conversion that shows a picture of `f` as a PNG: BGR32I, BGR24I and
// A8P are written as they are; anything else goes back to BGR first.
std::optional<Format> ViewFormat(Format f, const Library& library) {
    if (f == Format::BGR32I || f == Format::BGR24I || f == Format::A8P) return f;
    if (library.Has(f, Format::BGR32I)) return Format::BGR32I;
    if (library.Has(f, Format::BGR24I)) return Format::BGR24I;
    return std::nullopt;
}

// Frames done out of the total, or a running count when the total is not
// known (-1: frames from standard input).
class ProgressBar {
public:
    ProgressBar(bool enabled, int64_t total) : enabled_(enabled && total != 1), total_(total) {}
    ~ProgressBar() {
        if (enabled_ && drawn_) std::fputs("\r\033[K", stderr);
    }
    void Update(int64_t done) {
        if (!enabled_) return;
        const auto now = std::chrono::steady_clock::now();
        if (drawn_ && done != total_ && now - last_ < std::chrono::milliseconds(100)) return;
        last_ = now;
        drawn_ = true;
        if (total_ < 0) {
            std::fprintf(stderr, "\r%lld frames", static_cast<long long>(done));
            std::fflush(stderr);
            return;
        }
        constexpr int kWidth = 40;
        const int filled = static_cast<int>(done * kWidth / total_);
        std::fprintf(stderr, "\r[%s%s] %lld/%lld frames", std::string(static_cast<size_t>(filled), '#').c_str(),
                     std::string(static_cast<size_t>(kWidth - filled), ' ').c_str(), static_cast<long long>(done),
                     static_cast<long long>(total_));
        std::fflush(stderr);
    }

private:
    bool enabled_;
    int64_t total_;
    bool drawn_ = false;
    std::chrono::steady_clock::time_point last_{};
};

}  // namespace

Size ParseSize(const std::string& text) {
    static const std::regex pattern(R"(\s*(-?[0-9]+)\s*[xX]\s*(-?[0-9]+)\s*)");
    std::smatch m;
    if (!std::regex_match(text, m, pattern))
        throw Error(kExitUsage, "--size: expected WIDTHxHEIGHT such as 1920x1080, not '" + text + "'");
    auto side = [&](const std::string& digits, const char* what) {
        const bool negative = !digits.empty() && digits[0] == '-';
        const std::string body = negative ? digits.substr(1) : digits;
        const bool huge = body.size() > 9;
        const long long v = huge ? 0 : std::stoll(body);
        if (negative || huge || v < 1 || v > kMaxSide)
            throw Error(kExitUsage, std::string("--size: the ") + what + " must be from 1 to " +
                                            std::to_string(kMaxSide) + ", not " + digits);
        return static_cast<int32_t>(v);
    };
    return {side(m[1].str(), "width"), side(m[2].str(), "height")};
}

std::string SupportedDestinations(Format src, const Library& library) {
    std::string s;
    for (const Pair& p : AllPairs())
        if (p.src == src && library.Has(p.src, p.dst)) s += (s.empty() ? "" : ", ") + Token(p.dst);
    return s.empty() ? "nothing in this library" : s;
}


FrameRange ParseFrames(const std::string& text) {
    static const std::regex pattern(R"(\s*([0-9]*)\s*(:?)\s*([0-9]*)\s*)");
    std::smatch m;
    const bool shape = std::regex_match(text, m, pattern) && (m[1].length() > 0 || m[3].length() > 0) &&
                       (m[2].length() > 0 || m[3].length() == 0) && m[1].length() <= 12 && m[3].length() <= 12;
    FrameRange r;
    if (shape) {
        r.first = m[1].length() ? std::stoll(m[1].str()) : 1;
        r.last = m[3].length() ? std::stoll(m[3].str()) : (m[2].length() ? 0 : r.first);
    }
    if (!shape || r.first < 1 || (r.last != 0 && r.last < r.first) || (m[3].length() && r.last == 0))
        throw Error(kExitUsage, "--frames: expected FIRST:LAST counted from 1 (1:25, 100:, :50 or 7), not '" +
                                        text + "'");
    return r;
}

void ChooseMatrices(const Pair& pair, const MatrixChoice& c, int64_t yuv_lines, RequestOptions& o) {
    if (UsesOf(pair).matrices) {
        o.src_matrix = c.src.value_or(c.both.value_or(DefaultMatrix(yuv_lines)));
        o.dst_matrix = c.dst.value_or(c.both.value_or(o.src_matrix));
    } else {
        // One matrix, the YUV side's: the library reads dst_matrix in both
        // directions, and the request carries it in both.
        o.src_matrix = o.dst_matrix = c.both.value_or(DefaultMatrix(yuv_lines));
    }
}

std::string ColourText(const Pair& pair, const RequestOptions& o) {
    const PairUse use = UsesOf(pair);
    if (use.matrix) return MatrixName(o.dst_matrix) + (o.full_range ? ", full range" : ", studio range");
    if (use.matrices)
        return o.src_matrix == o.dst_matrix ? MatrixName(o.src_matrix)
                                            : MatrixName(o.src_matrix) + " -> " + MatrixName(o.dst_matrix);
    return {};
}

std::string Summary(const JobReport& r) {
    char rate[64];
    std::snprintf(rate, sizeof rate, " in %.2f s, %.1f frames/s", r.seconds,
                  r.seconds > 0 ? static_cast<double>(r.frames) / r.seconds : 0.0);
    return std::to_string(r.frames) + (r.frames == 1 ? " frame of " : " frames of ") + SizeText(r.size) + " " +
           Token(r.src) + " -> " + Token(r.dst) + (r.colour.empty() ? "" : " (" + r.colour + ")") + rate;
}

namespace {

// An OUTPUT naming one file a frame: ffmpeg's %d with an optional
// zero-padded width (out-%04d.png); %% is a percent sign.
struct NumberedName {
    std::string before, after;
    int width = 0;
    bool zeros = false;

    std::string For(int64_t number) const {
        std::string digits = std::to_string(number);
        if (static_cast<int>(digits.size()) < width) digits.insert(0, static_cast<size_t>(width) - digits.size(), zeros ? '0' : ' ');
        return before + digits + after;
    }
};

std::optional<NumberedName> ParseNumberedName(const std::string& output) {
    if (output.find('%') == std::string::npos) return std::nullopt;
    NumberedName n;
    bool seen = false;
    for (size_t i = 0; i < output.size(); ++i) {
        std::string& part = seen ? n.after : n.before;
        if (output[i] != '%') {
            part += output[i];
            continue;
        }
        if (i + 1 < output.size() && output[i + 1] == '%') {
            part += '%';
            ++i;
            continue;
        }
        size_t j = i + 1;
        n.zeros = j < output.size() && output[j] == '0';
        while (j < output.size() && std::isdigit(static_cast<unsigned char>(output[j])) && j - i <= 2) ++j;
        if (seen || j >= output.size() || output[j] != 'd')
            throw Error(kExitUsage, "OUTPUT " + output +
                                            ": a numbered name holds one %d or %0Nd (out-%04d.png), and %% for a percent sign");
        if (j > i + 1) n.width = std::stoi(output.substr(i + 1, j - i - 1));
        seen = true;
        i = j;
    }
    if (!seen) return std::nullopt;  // only %% signs: one file
    return n;
}

// A PNG output's picture with every pixel repeated `zoom` times each way,
// for looking at single pixels.
Frame Enlarge(const Frame& f, int zoom) {
    Frame big(f.format(), f.width() * zoom, f.height() * zoom);
    const int bpp = static_cast<int>(f.layout().colour_stride / f.width());
    for (int32_t y = 0; y < f.height(); ++y) {
        const uint8_t* in = f.colour() + y * f.layout().colour_stride;
        uint8_t* out = big.colour() + int64_t{y} * zoom * big.layout().colour_stride;
        for (int32_t x = 0; x < f.width(); ++x)
            for (int k = 0; k < zoom; ++k) std::memcpy(out + (int64_t{x} * zoom + k) * bpp, in + int64_t{x} * bpp, static_cast<size_t>(bpp));
        for (int k = 1; k < zoom; ++k)
            std::memcpy(out + k * big.layout().colour_stride, out, static_cast<size_t>(big.layout().colour_stride));
    }
    return big;
}

// Warnings for what the library does that a user would not guess, and for
// options the conversion does not read: one line each, the exit status stays 0.
std::vector<std::string> Warnings(const Job& job, const RequestOptions& options, const Pair& pair, const Pair* view,
                                  Size size, bool raw_input) {
    std::vector<std::string> w;
    const std::string name = Token(pair.src) + " -> " + Token(pair.dst);
    const bool same_matrix = options.src_matrix == options.dst_matrix;
    if (ReordersOnlyWhenAligned(pair) && same_matrix && size.width % 16 != 0)
        w.push_back(name + " at a width of " + std::to_string(size.width) +
                    " (not a multiple of 16) copies the bytes unchanged: the output holds " + Token(pair.src) +
                    " order");
    if (MatrixChangeOf(pair) == MatrixChange::WritesUyvyOrder && !same_matrix)
        w.push_back("a matrix change from " + Token(pair.src) + " to " + Token(pair.dst) +
                    " runs the library's UYVY16I-order kernel: the output holds packed UYVY16I bytes" +
                    (Info(pair.dst).layout == Layout::Planar422 ? ", not planes" : ""));
    PairUse use = UsesOf(pair);
    if (view) {
        const PairUse shown = UsesOf(*view);
        use.matrix |= shown.matrix;
        use.range |= shown.range;
        use.clamp |= shown.clamp;
        use.alpha |= shown.alpha;
    }
    const bool reduces = options.vertical_mode == 1 || options.vertical_mode == 2;
    auto read = [&](const std::string& flag) {
        if (flag == "--matrix") return use.matrix || use.matrices;
        if (flag == "--src-matrix" || flag == "--dst-matrix") return use.matrices;
        if (flag == "--full-range") return use.range;
        if (flag == "--clamp-luma") return use.clamp;
        if (flag == "--alpha" || flag == "--alpha-word") return use.alpha;
        if (flag == "--scan-mode") return options.vertical_mode != 0;
        if (flag == "--field-pair" || flag == "--interlaced") return reduces;
        if (flag == "--drop-partial") return raw_input;
        return true;
    };
    std::string ignored;
    for (const std::string& flag : job.options_given)
        if (!read(flag)) ignored += (ignored.empty() ? "" : ", ") + flag;
    if (!ignored.empty()) {
        std::string why;
        if (!use.matrices && (ignored.find("--src-matrix") != std::string::npos ||
                              ignored.find("--dst-matrix") != std::string::npos))
            why += use.matrix ? "; it has one matrix: give --matrix" : "";
        if (ignored.find("--scan-mode") != std::string::npos) why += "; --scan-mode acts in a line-pair mode only";
        if (ignored.find("--field-pair") != std::string::npos || ignored.find("--interlaced") != std::string::npos)
            why += "; only --proxy reduces the fields apart";
        w.push_back(ignored + (ignored.find(',') == std::string::npos ? " has" : " have") + " no effect on " + name +
                    why);
    }
    return w;
}

// What a raw input is: a file of known size, or a stream (standard input,
// a pipe, a character device) read until it ends.
struct InputFile {
    std::FILE* file = nullptr;
    bool owned = true;
    bool stream = false;
    int64_t bytes = 0;  // a file's size
    ~InputFile() {
        if (file && owned) std::fclose(file);
    }
};

void OpenRaw(const std::string& path, InputFile& in) {
    if (path == "-") {
        in.file = stdin;
        in.owned = false;
        in.stream = true;
        return;
    }
    in.file = std::fopen(path.c_str(), "rb");
    if (!in.file) throw Error(kExitInput, "cannot read " + path + ": " + std::strerror(errno));
    struct stat st {};
    if (fstat(fileno(in.file), &st) != 0) throw Error(kExitInput, "cannot read " + path + ": " + std::strerror(errno));
    if (S_ISDIR(st.st_mode)) throw Error(kExitInput, "cannot read " + path + ": it is a directory");
    in.stream = S_ISFIFO(st.st_mode) || S_ISCHR(st.st_mode);
    if (!in.stream && !S_ISREG(st.st_mode))
        throw Error(kExitInput, "cannot read " + path + ": not a regular file, a character device or a pipe");
    in.bytes = st.st_size;
}

}  // namespace

JobReport RunJob(const Job& job, const Library& library) {
    const auto started = std::chrono::steady_clock::now();
    auto say = [&](const char* kind, const std::string& text) {
        if (!job.quiet) std::fprintf(stderr, "zenk-convert: %s: %s\n", kind, text.c_str());
    };
    // "-" is standard input or output. Raw frames come as many as arrive;
    // standard input without --from is a PNG.
    const bool stdin_in = job.input == "-", stdout_out = job.output == "-";
    const bool png_in = !job.input.empty() && (stdin_in ? !job.from : IsPngPath(job.input));
    const std::optional<NumberedName> numbered = stdout_out ? std::nullopt : ParseNumberedName(job.output);
    const std::string output_name = stdout_out ? "standard output" : job.output;
    const bool png_out = IsPngPath(numbered ? numbered->after : job.output);
    const std::string input_name = stdin_in            ? "standard input"
                                   : !job.input.empty() ? job.input
                                   : job.test_card.empty() ? "the constant alpha"
                                                           : "the test card";

    // Source format and size.
    NamedFormat src_named{Format::BGR32I};
    if (!job.test_card.empty()) {
        if (job.from && job.from->format != Format::BGR32I)
            throw Error(kExitUsage, "a test card is BGR32I, not " + Token(job.from->format));
        RequireTestCard(job.test_card);
    } else if (png_in) {
        src_named = job.from.value_or(NamedFormat{Format::BGR32I});
        if (src_named.format != Format::BGR32I && src_named.format != Format::BGR24I)
            throw Error(kExitUsage, "a PNG reads as BGR32I or BGR24I, not " + Token(src_named.format));
    } else if (job.from) {
        src_named = *job.from;
    } else if (auto f = FormatFromExtension(job.input)) {
        src_named = {*f};
    } else {
        throw Error(kExitUsage, "--from FORMAT is needed: the name " + job.input + " does not say (extensions: " +
                                    ExtensionList() + "; --list names the formats)");
    }
    const Format src = src_named.format;
    if (src == Format::A8C && !job.input.empty())
        throw Error(kExitUsage, "an A8C source is the constant --alpha: give only OUTPUT");
    if (src != Format::A8C && job.test_card.empty() && job.input.empty()) throw Error(kExitUsage, "no INPUT given");

    // Destination format and the pair.
    Format dst;
    if (job.to) {
        dst = job.to->format;
    } else if (png_out) {
        dst = library.Has(src, Format::BGR32I) ? Format::BGR32I
              : library.Has(src, Format::BGR24I) ? Format::BGR24I
                                                 : Format::BGR32I;
    } else if (auto f = stdout_out ? std::nullopt : FormatFromExtension(numbered ? numbered->after : job.output)) {
        dst = *f;
    } else {
        throw Error(kExitUsage, "--to FORMAT is needed: the name " + output_name + " does not say (extensions: " +
                                    ExtensionList() + "; --list names the formats)");
    }
    const Pair* pair = FindPair(src, dst);
    if (!pair)
        throw Error(kExitUsage, "unsupported pair " + Token(src) + " -> " + Token(dst) + "; " + Token(src) +
                                    " converts to: " + SupportedDestinations(src, library));
    if (!Converts(src_named, dst))
        throw Error(kExitUsage, "BGRx has no alpha for " + Token(src) + " -> " + Token(dst) +
                                    " to take: name the source BGRA if its fourth byte is alpha");
    if (job.zoom != 1 && !png_out) throw Error(kExitUsage, "--zoom enlarges a PNG output's pixels: name a .png OUTPUT");

    // Sizes, against what the formats allow.
    Size size;
    std::optional<PngReader> png_reader;
    if (png_in) {
        png_reader.emplace(job.input);
        size = png_reader->size();
        if (job.size && !(*job.size == size))
            throw Error(kExitUsage, "--size " + SizeText(*job.size) + " does not match " + input_name + ", which is " +
                                        SizeText(size));
    } else if (job.size) {
        size = *job.size;
    } else {
        throw Error(kExitUsage, "--size WIDTHxHEIGHT is needed for a raw input or a test card");
    }
    CheckFrameSize(src, size, "source");
    RequestOptions options = job.options;
    const Size dst_size = DestinationSize(*pair, options, size, job.line_pairs);
    CheckFrameSize(dst, dst_size, "destination");
    if (dst_size.width == 0 || dst_size.height == 0)
        throw Error(kExitUsage, "the destination would be empty at " + SizeText(dst_size));
    if (job.zoom != 1 && (int64_t{dst_size.width} * job.zoom > kMaxSide || int64_t{dst_size.height} * job.zoom > kMaxSide ||
                          LayoutOf(Format::BGR32I, int64_t{dst_size.width} * job.zoom, int64_t{dst_size.height} * job.zoom)
                                  .total() > kMaxFrameBytes))
        throw Error(kExitUsage, "--zoom " + std::to_string(job.zoom) + " would make " + SizeText(dst_size) +
                                    " larger than zenk-convert handles");
    // The default matrix goes by the YUV picture's height: the source's,
    // or a line-pair mode's reduced or doubled destination.
    ChooseMatrices(*pair, job.matrix, IsYuv(src) ? size.height : dst_size.height, options);

    // Then against what the loaded library exports.
    const ZenkConvertFunction convert = library.Find(src, dst);
    if (!convert)
        throw Error(kExitUsage, "unsupported pair " + Token(src) + " -> " + Token(dst) + ": " + ExportName(src, dst) +
                                    " is not in " + library.path() + "; " + Token(src) +
                                    " converts to: " + SupportedDestinations(src, library));

    // How a PNG output is shown.
    std::optional<Format> view;
    ZenkConvertFunction view_convert = nullptr;
    if (png_out) {
        view = ViewFormat(dst, library);
        if (!view)
            throw Error(kExitUsage, Token(dst) + " cannot be written as PNG: the library has no " + Token(dst) +
                                        " -> BGR32I or BGR24I conversion; write a raw file");
        if (*view != dst) view_convert = library.Find(dst, *view);
    }

    // The input and the frames to convert: [first, last], counted from 1;
    // last 0 while a stream's length is not known.
    InputFile in;
    const int64_t frame_bytes = LayoutOf(src, size.width, size.height).total();
    const std::string frame_text = "a " + SizeText(size) + " " + Token(src) + " frame is " + std::to_string(frame_bytes) +
                                   " bytes";
    int64_t available = 1;  // frames in the input, 0 for a stream
    if (!png_in && !job.input.empty()) {
        OpenRaw(job.input, in);
        available = 0;
    }
    if (in.file && !in.stream) {
        const int64_t whole = in.bytes / frame_bytes, over = in.bytes % frame_bytes;
        if (whole == 0 || (over != 0 && !job.drop_partial))
            throw Error(kExitInput, job.input + " holds " + std::to_string(in.bytes) + " bytes; " + frame_text +
                                        ", so expected a multiple of " + std::to_string(frame_bytes) +
                                        (whole > 0 ? " (--drop-partial converts the whole frames)" : ""));
        if (over != 0)
            say("warning", job.input + " holds " + std::to_string(in.bytes) + " bytes: " + std::to_string(whole) +
                               (whole == 1 ? " whole frame" : " whole frames") + " of " + std::to_string(frame_bytes) +
                               " bytes, and " + std::to_string(over) + " bytes left over, which are not converted");
        available = whole;
    }
    const FrameRange range = job.frames.value_or(FrameRange{});
    const int64_t first = range.first;
    const int64_t last = range.last ? range.last : available;
    const std::string frames_text = job.frames ? "--frames " + std::to_string(first) + ":" +
                                                     (range.last ? std::to_string(range.last) : std::string()) + ": "
                                               : std::string();
    if (available > 0 && last > available)
        throw Error(kExitUsage, frames_text + input_name + " holds " + std::to_string(available) +
                                    (available == 1 ? " frame" : " frames"));
    const int64_t count = last ? last - first + 1 : -1;
    if (png_out && !numbered && count > 1)
        throw Error(kExitUsage, output_name + ": a PNG holds one frame, and " + input_name + " holds " +
                                    (count < 0 ? std::string("more") : std::to_string(count)) +
                                    "; number the files (out-%04d.png) or pick one with --frames");
    // Without replacing, every numbered file must be new before the first is written.
    if (numbered && !job.replace && count > 0)
        for (int64_t n = first; n <= last; ++n)
            if (WouldReplace(numbered->For(n))) throw Error(kExitOutput, numbered->For(n) + " exists, and -n keeps it");
    if (in.stream) {
        // Frames before the first are read and dropped.
        Frame skipped(src, size.width, size.height);
        for (int64_t n = 1; n < first; ++n)
            if (skipped.ReadRaw(in.file) != frame_bytes)
                throw Error(kExitUsage, frames_text + input_name + " ended before frame " + std::to_string(n));
    } else if (in.file && first > 1 && fseeko(in.file, static_cast<off_t>((first - 1) * frame_bytes), SEEK_SET) != 0) {
        throw Error(kExitInput, "cannot read " + job.input + ": " + std::strerror(errno));
    }

    // Read a PNG before the output exists, so a corrupt one leaves nothing behind.
    std::optional<Frame> png_frame;
    if (png_in) png_frame.emplace(png_reader->Read(src));

    for (const std::string& w : Warnings(job, options, *pair, view_convert ? FindPair(dst, *view) : nullptr, size,
                                         in.file != nullptr))
        say("warning", w);
    if (job.threads > 1) {
        const std::string obstacle = SliceObstacle(*pair, options);
        if (!obstacle.empty()) say("note", Token(src) + " -> " + Token(dst) + " runs on one thread: " + obstacle);
    }

    // One output file, standard output, or one file a frame.
    std::optional<OutputFile> whole_output;
    if (!stdout_out && !numbered) whole_output.emplace(job.output, job.replace);
    ProgressBar bar(job.progress, count);
    Frame source = !job.test_card.empty() ? MakeTestCard(job.test_card, size.width, size.height)
                   : png_frame            ? std::move(*png_frame)
                                          : Frame(src, size.width, size.height);
    Frame result(dst, dst_size.width, dst_size.height);
    int64_t done = 0;
    for (int64_t n = first; last == 0 || n <= last; ++n) {
        if (in.file) {
            const int64_t got = source.ReadRaw(in.file);
            if (std::ferror(in.file)) throw Error(kExitInput, "cannot read " + input_name + ": " + std::strerror(errno));
            if (last == 0 && got == 0 && n > first) break;  // the stream ended between frames
            if (got == 0 && range.last)
                throw Error(kExitUsage, frames_text + input_name + " ended after frame " + std::to_string(n - 1));
            if (got != frame_bytes && job.drop_partial && n > first) {
                say("warning", input_name + " ended " + std::to_string(got) + " bytes into frame " + std::to_string(n) +
                                   "; those bytes are not converted");
                break;
            }
            if (got != frame_bytes)
                throw Error(kExitInput, input_name + " ended " + std::to_string(got) + " bytes into frame " +
                                            std::to_string(n) + "; " + frame_text +
                                            (n > first ? " (--drop-partial converts the whole frames)" : ""));
            if (png_out && !numbered && n > first)
                throw Error(kExitUsage, output_name + ": a PNG holds one frame, and " + input_name +
                                            " holds more; number the files (out-%04d.png) or pick one with --frames");
        }
        std::optional<OutputFile> frame_file;
        if (numbered) frame_file.emplace(numbered->For(n), job.replace);
        std::FILE* const out = stdout_out ? stdout : numbered ? frame_file->file() : whole_output->file();
        const std::string out_name = numbered ? numbered->For(n) : output_name;
        Convert(convert, *pair, options, source, result, job.threads);
        if (png_out) {
            const Frame* picture = &result;
            std::optional<Frame> shown;
            if (view_convert) {
                RequestOptions back = options;
                back.src_matrix = back.dst_matrix;  // the result is in the destination's matrix
                back.vertical_mode = 0;
                back.scan_mode = 0;
                shown.emplace(*view, dst_size.width, dst_size.height);
                Convert(view_convert, *FindPair(dst, *view), back, result, *shown, job.threads);
                picture = &*shown;
            }
            if (job.zoom > 1) {
                WritePng(Enlarge(*picture, job.zoom), out, out_name);
            } else {
                WritePng(*picture, out, out_name);
            }
        } else if (!result.WriteRaw(out)) {
            throw Error(kExitOutput, "cannot write " + out_name + ": " + std::strerror(errno));
        }
        if (frame_file) frame_file->Commit();
        bar.Update(++done);
    }
    if (whole_output) {
        whole_output->Commit();
    } else if (stdout_out && std::fflush(stdout) != 0) {
        throw Error(kExitOutput, std::string("cannot write standard output: ") + std::strerror(errno));
    }
    return {done, size, src, dst, ColourText(*pair, options),
            std::chrono::duration<double>(std::chrono::steady_clock::now() - started).count()};
}

}  // namespace zenk::tool
