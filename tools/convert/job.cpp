#include "job.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

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

AtomicOutput::AtomicOutput(const std::string& path) : path_(path) {
    struct stat st {};
    if (stat(path.c_str(), &st) == 0 && S_ISDIR(st.st_mode))
        throw ToolError(kExitOutput, "cannot write " + path + ": it is a directory");
    // Renaming over a device or a pipe would replace it with a plain file.
    if (stat(path.c_str(), &st) == 0 && !S_ISREG(st.st_mode))
        throw ToolError(kExitOutput, "cannot write " + path + ": not a regular file");
    const size_t slash = path.rfind('/');
    const std::string dir = slash == std::string::npos ? "." : (slash == 0 ? "/" : path.substr(0, slash));
    const std::string base = slash == std::string::npos ? path : path.substr(slash + 1);
    std::string temp = dir + "/." + base + ".zenk-XXXXXX";
    const int fd = mkstemp(temp.data());
    if (fd < 0) throw ToolError(kExitOutput, "cannot write " + path + ": " + std::strerror(errno));
    temp_ = temp;
    WatchSignals(temp_);
    // mkstemp makes the file private; the output gets the usual permissions.
    const mode_t mask = umask(0);
    umask(mask);
    fchmod(fd, 0666 & ~mask);
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
    if (!flushed || !closed) throw ToolError(kExitOutput, "cannot write " + path_ + ": " + std::strerror(flush_errno));
    if (std::rename(temp_.c_str(), path_.c_str()) != 0)
        throw ToolError(kExitOutput, "cannot write " + path_ + ": " + std::strerror(errno));
    temp_.clear();
}

void RunJob(const Job& job, const Library& library) {
    // "-" is standard input or output: raw frames, as many as arrive.
    const bool stdin_in = job.input == "-", stdout_out = job.output == "-";
    const bool png_in = !job.input.empty() && IsPngPath(job.input);
    const bool png_out = IsPngPath(job.output);
    const std::string input_name = stdin_in ? "standard input" : job.input;

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
    } else {
        throw ToolError(kExitUsage, "--from FORMAT is needed for a raw input (formats: " + FormatTokenList() + ")");
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
    } else {
        throw ToolError(kExitUsage, "--to FORMAT is needed for a raw output (formats: " + FormatTokenList() + ")");
    }
    const Pair* pair = FindPair(src, dst);
    if (!pair)
        throw ToolError(kExitUsage, "unsupported pair " + Token(src) + " -> " + Token(dst) + "; " + Token(src) +
                                        " converts to: " + SupportedDestinations(src, library));

    // Sizes, against what the formats allow.
    Size size;
    if (png_in) {
        size = ReadPngSize(job.input);
        if (job.size && !(*job.size == size))
            throw ToolError(kExitUsage, "--size " + SizeText(*job.size) + " does not match " + job.input + ", which is " +
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

    // The input and its frame count.
    InputFile in;
    int64_t frames = 1;
    const int64_t frame_bytes = LayoutOf(src, size.width, size.height).total();
    if (stdin_in) {
        in.file = stdin;
        in.owned = false;
        frames = -1;
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
        frames = bytes / frame_bytes;
    }
    if (png_out && frames > 1)
        throw ToolError(kExitUsage, job.output + ": a PNG holds one frame, and " + job.input + " holds " +
                                        std::to_string(frames) + "; write a raw file");

    // Read a PNG before the output exists, so a corrupt one leaves nothing behind.
    std::optional<Frame> png_frame;
    if (png_in) png_frame.emplace(ReadPng(job.input, src));

    if (job.threads > 1) {
        const std::string obstacle = SliceObstacle(*pair, job.options);
        if (!obstacle.empty())
            std::fprintf(stderr, "zenk-convert: note: %s -> %s runs on one thread: %s\n", Token(src).c_str(),
                         Token(dst).c_str(), obstacle.c_str());
    }

    std::optional<AtomicOutput> atomic;
    if (!stdout_out) atomic.emplace(job.output);
    std::FILE* const out = stdout_out ? stdout : atomic->file();
    const std::string output_name = stdout_out ? "standard output" : job.output;
    ProgressBar bar(job.progress, frames);
    Frame source = !job.test_card.empty() ? MakeTestCard(job.test_card, size.width, size.height)
                   : png_frame            ? std::move(*png_frame)
                                          : Frame(src, size.width, size.height);
    Frame result(dst, dst_size.width, dst_size.height);
    for (int64_t i = 0; frames < 0 || i < frames; ++i) {
        if (in.file) {
            const int64_t got = source.ReadRaw(in.file);
            if (std::ferror(in.file))
                throw ToolError(kExitInput, "cannot read " + input_name + ": " + std::strerror(errno));
            if (frames < 0 && got == 0 && i > 0) break;  // the stream ended between frames
            if (got != frame_bytes)
                throw ToolError(kExitInput, input_name + " ended " + std::to_string(got) + " bytes into frame " +
                                                std::to_string(i + 1) + "; a " + SizeText(size) + " " + Token(src) +
                                                " frame is " + std::to_string(frame_bytes) + " bytes");
            if (png_out && i > 0)
                throw ToolError(kExitUsage, job.output + ": a PNG holds one frame, and " + input_name + " holds more");
        }
        Convert(convert, *pair, job.options, source, result, job.threads);
        if (png_out) {
            if (view_convert) {
                RequestOptions back = job.options;
                back.src_matrix = back.dst_matrix;  // the result is in the destination's matrix
                back.vertical_mode = 0;
                back.scan_mode = 0;
                Frame shown(*view, dst_size.width, dst_size.height);
                Convert(view_convert, *FindPair(dst, *view), back, result, shown, job.threads);
                WritePng(shown, out, output_name);
            } else {
                WritePng(result, out, output_name);
            }
        } else if (!result.WriteRaw(out)) {
            throw ToolError(kExitOutput, "cannot write " + output_name + ": " + std::strerror(errno));
        }
        bar.Update(i + 1);
    }
    if (atomic) {
        atomic->Commit();
    } else if (std::fflush(stdout) != 0) {
        throw ToolError(kExitOutput, std::string("cannot write standard output: ") + std::strerror(errno));
    }
}

}  // namespace zenk::tool
