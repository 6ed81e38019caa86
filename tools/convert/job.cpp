#include "job.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <chrono>
#include <cstring>
#include <regex>

#include "errors.h"
#include "png_io.h"
#include "test_card.h"

namespace zenk::tool {

namespace {

std::string Token(Format f) { return std::string(Info(f).token); }

std::string SizeText(Size s) { return std::to_string(s.width) + "x" + std::to_string(s.height); }

void CheckFrameSize(Format f, Size s, const char* side) {
    if (NeedsEvenWidth(f) && s.width % 2 != 0)
        throw ToolError(kExitUsage, std::string(side) + " " + Token(f) + " pairs pixels for their chroma: the width must be even, not " +
                                        std::to_string(s.width));
    if (LayoutOf(f, s.width, s.height).total() > kMaxFrameBytes)
        throw ToolError(kExitUsage, "a " + SizeText(s) + " " + Token(f) + " frame is over the " +
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

struct InputFile {
    std::FILE* file = nullptr;
    bool owned = true;
    ~InputFile() {
        if (file && owned) std::fclose(file);
    }
};

}  // namespace

Size ParseSize(const std::string& text) {
    static const std::regex pattern(R"(\s*(-?[0-9]+)\s*[xX]\s*(-?[0-9]+)\s*)");
    std::smatch m;
    if (!std::regex_match(text, m, pattern))
        throw ToolError(kExitUsage, "--size: expected WIDTHxHEIGHT such as 1920x1080, not '" + text + "'");
    auto side = [&](const std::string& digits, const char* what) {
        const bool negative = !digits.empty() && digits[0] == '-';
        const std::string body = negative ? digits.substr(1) : digits;
        const bool huge = body.size() > 9;
        const long long v = huge ? 0 : std::stoll(body);
        if (negative || huge || v < 1 || v > kMaxSide)
            throw ToolError(kExitUsage, std::string("--size: the ") + what + " must be from 1 to " +
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

namespace {

// The temporary file being written, for the signal handler: an interrupted
// run leaves neither a partial output nor a stray temporary file.
char g_temp_path[4096];

extern "C" void RemoveTempAndExit(int signal_number) {
    if (g_temp_path[0]) unlink(g_temp_path);
    _exit(128 + signal_number);
}

void WatchSignals(const std::string& temp) {
    if (temp.size() >= sizeof g_temp_path) return;
    std::memcpy(g_temp_path, temp.c_str(), temp.size() + 1);
    for (int s : {SIGINT, SIGTERM, SIGHUP, SIGPIPE}) std::signal(s, RemoveTempAndExit);
}

void ForgetSignals() {
    for (int s : {SIGINT, SIGTERM, SIGHUP, SIGPIPE}) std::signal(s, SIG_DFL);
    g_temp_path[0] = 0;
}

}  // namespace

namespace {

std::string DirectoryOf(const std::string& path) {
    const size_t slash = path.rfind('/');
    return slash == std::string::npos ? "." : (slash == 0 ? "/" : path.substr(0, slash));
}

// The file a path finally names, following symbolic links (a dangling one
// names the file to create).
std::string FollowLinks(const std::string& path) {
    std::string at = path;
    for (int hops = 0; hops < 40; ++hops) {
        struct stat st {};
        if (lstat(at.c_str(), &st) != 0 || !S_ISLNK(st.st_mode)) return at;
        std::string target(4096, '\0');
        const ssize_t n = readlink(at.c_str(), target.data(), target.size());
        if (n <= 0 || static_cast<size_t>(n) >= target.size())
            throw ToolError(kExitOutput, "cannot write " + path + ": cannot read the link " + at);
        target.resize(static_cast<size_t>(n));
        at = target[0] == '/' ? target : DirectoryOf(at) + "/" + target;
    }
    throw ToolError(kExitOutput, "cannot write " + path + ": too many levels of symbolic links");
}

std::string HostName() {
    char host[256] = "";
    gethostname(host, sizeof host - 1);
    for (char* c = host; *c; ++c)
        if (*c == '/') *c = '_';
    return host;
}

constexpr std::string_view kTempPrefix = ".zenk-convert-";

// Removes this host's temporary files in `dir` whose process is gone: left by
// a run that was killed outright. Each directory is looked at once a run.
void RemoveStaleTemporaries(const std::string& dir) {
    static std::vector<std::string> done;
    if (std::find(done.begin(), done.end(), dir) != done.end()) return;
    done.push_back(dir);
    DIR* d = opendir(dir.c_str());
    if (!d) return;
    const std::string host = HostName();
    while (const dirent* e = readdir(d)) {
        const std::string_view name = e->d_name;
        if (name.substr(0, kTempPrefix.size()) != kTempPrefix) continue;
        const std::string_view rest = name.substr(kTempPrefix.size());
        const size_t at = rest.find('@'), dash = rest.rfind('-');
        if (at == std::string_view::npos || dash == std::string_view::npos || dash < at || at == 0 || at > 9 ||
            rest.substr(at + 1, dash - at - 1) != host)
            continue;
        const std::string digits(rest.substr(0, at));
        if (digits.find_first_not_of("0123456789") != std::string::npos) continue;
        const auto pid = static_cast<pid_t>(std::stol(digits));
        // This run has no temporary file yet, so one with its own pid is an
        // earlier process's.
        if (pid == getpid() || (kill(pid, 0) != 0 && errno == ESRCH)) unlink((dir + "/" + std::string(name)).c_str());
    }
    closedir(d);
}

}  // namespace

AtomicOutput::AtomicOutput(const std::string& path) : path_(FollowLinks(path)), shown_(path) {
    struct stat st {};
    const bool exists = stat(path_.c_str(), &st) == 0;
    if (exists && S_ISDIR(st.st_mode)) throw ToolError(kExitOutput, "cannot write " + path + ": it is a directory");
    // Renaming over a device or a pipe would replace it with a plain file.
    if (exists && !S_ISREG(st.st_mode)) throw ToolError(kExitOutput, "cannot write " + path + ": not a regular file");
    // A file marked read-only is kept, even from a user whom the system would let write it.
    if (exists && (access(path_.c_str(), W_OK) != 0 || (st.st_mode & 0222) == 0))
        throw ToolError(kExitOutput, "cannot write " + path + ": it is read-only; make it writable or remove it first");
    const std::string dir = DirectoryOf(path_);
    RemoveStaleTemporaries(dir);
    std::string temp = dir + "/" + std::string(kTempPrefix) + std::to_string(getpid()) + "@" + HostName() + "-XXXXXX";
    const int fd = mkstemp(temp.data());
    if (fd < 0) throw ToolError(kExitOutput, "cannot write " + path + ": " + std::strerror(errno));
    temp_ = temp;
    WatchSignals(temp_);
    // mkstemp makes the file private; the output gets the replaced file's
    // owner and mode, or the usual permissions when it is new. Only root may
    // give a file away, so a failed chown leaves this user's file.
    if (exists) {
        if (fchown(fd, st.st_uid, st.st_gid) != 0 && fchown(fd, static_cast<uid_t>(-1), st.st_gid) != 0) {
        }
        fchmod(fd, st.st_mode & 07777);
    } else {
        const mode_t mask = umask(0);
        umask(mask);
        fchmod(fd, 0666 & ~mask);
    }
    file_ = fdopen(fd, "wb");
    if (!file_) {
        close(fd);
        unlink(temp_.c_str());
        throw ToolError(kExitOutput, "cannot write " + path + ": " + std::strerror(errno));
    }
}

AtomicOutput::~AtomicOutput() {
    if (file_) std::fclose(file_);
    if (!temp_.empty()) unlink(temp_.c_str());
    ForgetSignals();
}

void AtomicOutput::Commit() {
    const bool flushed = std::fflush(file_) == 0 && fsync(fileno(file_)) == 0;
    const int flush_errno = errno;
    const bool closed = std::fclose(file_) == 0;
    file_ = nullptr;
    if (!flushed || !closed) throw ToolError(kExitOutput, "cannot write " + shown_ + ": " + std::strerror(flush_errno));
    if (std::rename(temp_.c_str(), path_.c_str()) != 0)
        throw ToolError(kExitOutput, "cannot write " + shown_ + ": " + std::strerror(errno));
    temp_.clear();
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
        throw ToolError(kExitUsage, "--frames: expected FIRST:LAST counted from 1 (1:25, 100:, :50 or 7), not '" +
                                        text + "'");
    return r;
}

std::string Summary(const JobReport& r) {
    char rate[64];
    std::snprintf(rate, sizeof rate, " in %.2f s, %.1f frames/s", r.seconds,
                  r.seconds > 0 ? static_cast<double>(r.frames) / r.seconds : 0.0);
    return std::to_string(r.frames) + (r.frames == 1 ? " frame of " : " frames of ") + SizeText(r.size) + " " +
           Token(r.src) + " -> " + Token(r.dst) + rate;
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
            throw ToolError(kExitUsage, "OUTPUT " + output +
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
std::vector<std::string> Warnings(const Job& job, const Pair& pair, const Pair* view, Size size) {
    std::vector<std::string> w;
    const Format src = pair.src, dst = pair.dst;
    const bool same_matrix = job.options.src_matrix == job.options.dst_matrix;
    const bool uyvy_uvyy = (src == Format::UYVY16I && dst == Format::UVYY16I) ||
                           (src == Format::UVYY16I && dst == Format::UYVY16I);
    if (uyvy_uvyy && same_matrix && size.width % 16 != 0)
        w.push_back(Token(src) + " -> " + Token(dst) + " at a width of " + std::to_string(size.width) +
                    " (not a multiple of 16) copies the bytes unchanged: the output holds " + Token(src) + " order");
    if ((uyvy_uvyy || (src == Format::UYVY16I && dst == Format::Y8PUV8I)) && !same_matrix)
        w.push_back("a matrix change from " + Token(src) + " to " + Token(dst) +
                    " runs the library's UYVY16I-order kernel: the output holds packed UYVY16I bytes" +
                    (dst == Format::Y8PUV8I ? ", not planes" : ""));
    const bool alpha_read = UsesConstantAlpha(pair) || (view && UsesConstantAlpha(*view));
    const bool colour_read = UsesColourOptions(pair) || (view && UsesColourOptions(*view));
    std::string ignored;
    for (const std::string& flag : job.options_given) {
        const bool is_alpha = flag == "--alpha" || flag == "--alpha-word";
        if (is_alpha ? !alpha_read : !colour_read) ignored += (ignored.empty() ? "" : ", ") + flag;
    }
    if (!ignored.empty())
        w.push_back(ignored + (ignored.find(',') == std::string::npos ? " has" : " have") + " no effect on " +
                    Token(src) + " -> " + Token(dst));
    return w;
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
    Format src;
    if (!job.test_card.empty()) {
        if (job.from && *job.from != Format::BGR32I)
            throw ToolError(kExitUsage, "a test card is BGR32I, not " + Token(*job.from));
        RequireTestCard(job.test_card);
        src = Format::BGR32I;
    } else if (png_in) {
        src = job.from.value_or(Format::BGR32I);
        if (src != Format::BGR32I && src != Format::BGR24I)
            throw ToolError(kExitUsage, "a PNG reads as BGR32I or BGR24I, not " + Token(src));
    } else if (job.from) {
        src = *job.from;
    } else if (auto f = FormatFromExtension(job.input)) {
        src = *f;
    } else {
        throw ToolError(kExitUsage, "--from FORMAT is needed: the name " + job.input + " does not say (extensions: " +
                                        ExtensionList() + "; formats: " + FormatTokenList() + ")");
    }
    if (src == Format::A8C && !job.input.empty())
        throw ToolError(kExitUsage, "an A8C source is the constant --alpha: give only OUTPUT");
    if (src != Format::A8C && job.test_card.empty() && job.input.empty())
        throw ToolError(kExitUsage, "no INPUT given");

    // Destination format and the pair.
    Format dst;
    if (job.to) {
        dst = *job.to;
    } else if (png_out) {
        dst = library.Has(src, Format::BGR32I) ? Format::BGR32I
              : library.Has(src, Format::BGR24I) ? Format::BGR24I
                                                 : Format::BGR32I;
    } else if (auto f = stdout_out ? std::nullopt : FormatFromExtension(numbered ? numbered->after : job.output)) {
        dst = *f;
    } else {
        throw ToolError(kExitUsage, "--to FORMAT is needed: the name " + output_name + " does not say (extensions: " +
                                        ExtensionList() + "; formats: " + FormatTokenList() + ")");
    }
    const Pair* pair = FindPair(src, dst);
    if (!pair)
        throw ToolError(kExitUsage, "unsupported pair " + Token(src) + " -> " + Token(dst) + "; " + Token(src) +
                                        " converts to: " + SupportedDestinations(src, library));
    if (job.zoom != 1 && !png_out) throw ToolError(kExitUsage, "--zoom enlarges a PNG output's pixels: name a .png OUTPUT");

    // Sizes, against what the formats allow.
    Size size;
    std::optional<PngReader> png_reader;
    if (png_in) {
        png_reader.emplace(job.input);
        size = png_reader->size();
        if (job.size && !(*job.size == size))
            throw ToolError(kExitUsage, "--size " + SizeText(*job.size) + " does not match " + input_name + ", which is " +
                                            SizeText(size));
    } else if (job.size) {
        size = *job.size;
    } else {
        throw ToolError(kExitUsage, "--size WIDTHxHEIGHT is needed for a raw input or a test card");
    }
    CheckFrameSize(src, size, "source");
    const Size dst_size = DestinationSize(*pair, job.options, size);
    CheckFrameSize(dst, dst_size, "destination");
    if (dst_size.width == 0 || dst_size.height == 0)
        throw ToolError(kExitUsage, "the destination would be empty at " + SizeText(dst_size));
    if (job.zoom != 1 && (int64_t{dst_size.width} * job.zoom > kMaxSide || int64_t{dst_size.height} * job.zoom > kMaxSide ||
                          LayoutOf(Format::BGR32I, int64_t{dst_size.width} * job.zoom, int64_t{dst_size.height} * job.zoom)
                                  .total() > kMaxFrameBytes))
        throw ToolError(kExitUsage, "--zoom " + std::to_string(job.zoom) + " would make " + SizeText(dst_size) +
                                        " larger than zenk-convert handles");

    // Then against what the loaded library exports.
    const ZenkConvertFunction convert = library.Find(src, dst);
    if (!convert)
        throw ToolError(kExitUsage, "unsupported pair " + Token(src) + " -> " + Token(dst) + ": " +
                                        ExportName(src, dst) + " is not in " + library.path() + "; " + Token(src) +
                                        " converts to: " + SupportedDestinations(src, library));

    // How a PNG output is shown.
    std::optional<Format> view;
    ZenkConvertFunction view_convert = nullptr;
    if (png_out) {
        view = ViewFormat(dst, library);
        if (!view)
            throw ToolError(kExitUsage, Token(dst) + " cannot be written as PNG: the library has no " + Token(dst) +
                                            " -> BGR32I or BGR24I conversion; write a raw file");
        if (*view != dst) view_convert = library.Find(dst, *view);
    }

    // The input and the frames to convert: [first, last], counted from 1;
    // last 0 while a stream's length is not known.
    InputFile in;
    const int64_t frame_bytes = LayoutOf(src, size.width, size.height).total();
    int64_t available = 1;  // frames in the input, 0 for a stream
    if (stdin_in && !png_in) {
        in.file = stdin;
        in.owned = false;
        available = 0;
    } else if (!png_in && !job.input.empty()) {
        in.file = std::fopen(job.input.c_str(), "rb");
        if (!in.file) throw ToolError(kExitInput, "cannot read " + job.input + ": " + std::strerror(errno));
        struct stat st {};
        if (fstat(fileno(in.file), &st) != 0 || !S_ISREG(st.st_mode))
            throw ToolError(kExitInput, "cannot read " + job.input + ": not a regular file");
        const int64_t bytes = st.st_size;
        if (bytes == 0 || bytes % frame_bytes != 0)
            throw ToolError(kExitInput, job.input + " holds " + std::to_string(bytes) + " bytes; a " + SizeText(size) +
                                            " " + Token(src) + " frame is " + std::to_string(frame_bytes) +
                                            " bytes, so expected a multiple of " + std::to_string(frame_bytes));
        available = bytes / frame_bytes;
    }
    const FrameRange range = job.frames.value_or(FrameRange{});
    const int64_t first = range.first;
    const int64_t last = range.last ? range.last : available;
    const std::string frames_text = job.frames ? "--frames " + std::to_string(first) + ":" +
                                                     (range.last ? std::to_string(range.last) : std::string()) + ": "
                                               : std::string();
    if (available > 0 && last > available)
        throw ToolError(kExitUsage, frames_text + input_name + " holds " + std::to_string(available) +
                                        (available == 1 ? " frame" : " frames"));
    const int64_t count = last ? last - first + 1 : -1;
    if (png_out && !numbered && count > 1)
        throw ToolError(kExitUsage, output_name + ": a PNG holds one frame, and " + input_name + " holds " +
                                        (count < 0 ? std::string("more") : std::to_string(count)) +
                                        "; number the files (out-%04d.png) or pick one with --frames");
    if (in.file == stdin) {
        // Frames before the first are read and dropped.
        Frame skipped(src, size.width, size.height);
        for (int64_t n = 1; n < first; ++n)
            if (skipped.ReadRaw(stdin) != frame_bytes)
                throw ToolError(kExitUsage, frames_text + "standard input ended before frame " + std::to_string(n));
    } else if (in.file && first > 1 && fseeko(in.file, static_cast<off_t>((first - 1) * frame_bytes), SEEK_SET) != 0) {
        throw ToolError(kExitInput, "cannot read " + job.input + ": " + std::strerror(errno));
    }

    // Read a PNG before the output exists, so a corrupt one leaves nothing behind.
    std::optional<Frame> png_frame;
    if (png_in) png_frame.emplace(png_reader->Read(src));

    for (const std::string& w : Warnings(job, *pair, view_convert ? FindPair(dst, *view) : nullptr, size)) say("warning", w);
    if (job.threads > 1) {
        const std::string obstacle = SliceObstacle(*pair, job.options);
        if (!obstacle.empty())
            say("note", Token(src) + " -> " + Token(dst) + " runs on one thread: " + obstacle);
    }

    // One output file, standard output, or one file a frame.
    std::optional<AtomicOutput> atomic;
    if (!stdout_out && !numbered) atomic.emplace(job.output);
    ProgressBar bar(job.progress, count);
    Frame source = !job.test_card.empty() ? MakeTestCard(job.test_card, size.width, size.height)
                   : png_frame            ? std::move(*png_frame)
                                          : Frame(src, size.width, size.height);
    Frame result(dst, dst_size.width, dst_size.height);
    int64_t done = 0;
    for (int64_t n = first; last == 0 || n <= last; ++n) {
        if (in.file) {
            const int64_t got = source.ReadRaw(in.file);
            if (std::ferror(in.file))
                throw ToolError(kExitInput, "cannot read " + input_name + ": " + std::strerror(errno));
            if (last == 0 && got == 0 && n > first) break;  // the stream ended between frames
            if (got == 0 && range.last)
                throw ToolError(kExitUsage, frames_text + input_name + " ended after frame " + std::to_string(n - 1));
            if (got != frame_bytes)
                throw ToolError(kExitInput, input_name + " ended " + std::to_string(got) + " bytes into frame " +
                                                std::to_string(n) + "; a " + SizeText(size) + " " + Token(src) +
                                                " frame is " + std::to_string(frame_bytes) + " bytes");
            if (png_out && !numbered && n > first)
                throw ToolError(kExitUsage, output_name + ": a PNG holds one frame, and " + input_name +
                                                " holds more; number the files (out-%04d.png) or pick one with --frames");
        }
        std::optional<AtomicOutput> frame_file;
        if (numbered) frame_file.emplace(numbered->For(n));
        std::FILE* const out = stdout_out ? stdout : numbered ? frame_file->file() : atomic->file();
        const std::string out_name = numbered ? numbered->For(n) : output_name;
        Convert(convert, *pair, job.options, source, result, job.threads);
        if (png_out) {
            const Frame* picture = &result;
            std::optional<Frame> shown;
            if (view_convert) {
                RequestOptions back = job.options;
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
            throw ToolError(kExitOutput, "cannot write " + out_name + ": " + std::strerror(errno));
        }
        if (frame_file) frame_file->Commit();
        bar.Update(++done);
    }
    if (atomic) {
        atomic->Commit();
    } else if (stdout_out && std::fflush(stdout) != 0) {
        throw ToolError(kExitOutput, std::string("cannot write standard output: ") + std::strerror(errno));
    }
    return {done, size, src, dst,
            std::chrono::duration<double>(std::chrono::steady_clock::now() - started).count()};
}

}  // namespace zenk::tool
