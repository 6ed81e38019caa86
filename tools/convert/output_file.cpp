#include "output_file.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <string_view>
#include <vector>

#include "errors.h"

namespace zenk::tool {

using client::Error;
using client::kExitOutput;

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
            throw Error(kExitOutput, "cannot write " + path + ": cannot read the link " + at);
        target.resize(static_cast<size_t>(n));
        at = target[0] == '/' ? target : DirectoryOf(at) + "/" + target;
    }
    throw Error(kExitOutput, "cannot write " + path + ": too many levels of symbolic links");
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

bool IsStreamPath(const std::string& path) {
    struct stat st {};
    return stat(path.c_str(), &st) == 0 && (S_ISCHR(st.st_mode) || S_ISFIFO(st.st_mode));
}

bool WouldReplace(const std::string& path) {
    struct stat st {};
    return stat(path.c_str(), &st) == 0 && !S_ISCHR(st.st_mode) && !S_ISFIFO(st.st_mode);
}

OutputFile::OutputFile(const std::string& path, bool replace) : shown_(path), replace_(replace) {
    // The system follows the links to a stream, /dev/stdout's among them,
    // which name no file in a directory.
    if (IsStreamPath(path)) {
        // Opened as it is: no temporary file, nothing truncated or renamed.
        const int fd = open(path.c_str(), O_WRONLY | O_CLOEXEC);
        file_ = fd < 0 ? nullptr : fdopen(fd, "wb");
        if (!file_) {
            if (fd >= 0) close(fd);
            throw Error(kExitOutput, "cannot write " + path + ": " + std::strerror(errno));
        }
        stream_ = true;
        return;
    }
    path_ = FollowLinks(path);
    struct stat st {};
    const bool exists = stat(path_.c_str(), &st) == 0;
    if (exists && S_ISDIR(st.st_mode)) throw Error(kExitOutput, "cannot write " + path + ": it is a directory");
    // Renaming over a block device or a socket would replace it with a plain file.
    if (exists && !S_ISREG(st.st_mode))
        throw Error(kExitOutput, "cannot write " + path + ": not a regular file, a character device or a pipe");
    if (exists && !replace) throw Error(kExitOutput, path + " exists, and -n keeps it");
    // A file marked read-only is kept, even from a user whom the system would let write it.
    if (exists && (access(path_.c_str(), W_OK) != 0 || (st.st_mode & 0222) == 0))
        throw Error(kExitOutput, "cannot write " + path + ": it is read-only; make it writable or remove it first");
    const std::string dir = DirectoryOf(path_);
    RemoveStaleTemporaries(dir);
    std::string temp = dir + "/" + std::string(kTempPrefix) + std::to_string(getpid()) + "@" + HostName() + "-XXXXXX";
    const int fd = mkstemp(temp.data());
    if (fd < 0) throw Error(kExitOutput, "cannot write " + path + ": " + std::strerror(errno));
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
        throw Error(kExitOutput, "cannot write " + path + ": " + std::strerror(errno));
    }
}

OutputFile::~OutputFile() {
    if (file_) std::fclose(file_);
    if (!temp_.empty()) {
        unlink(temp_.c_str());
        ForgetSignals();
    }
}

void OutputFile::Commit() {
    const bool flushed = std::fflush(file_) == 0 && (stream_ || fsync(fileno(file_)) == 0);
    const int flush_errno = errno;
    const bool closed = std::fclose(file_) == 0;
    file_ = nullptr;
    if (!flushed || !closed) throw Error(kExitOutput, "cannot write " + shown_ + ": " + std::strerror(flush_errno));
    if (stream_) return;
    // Without replacing, the file must still be absent when it is put in
    // place: another program may have made it meanwhile.
    int moved = replace_ ? std::rename(temp_.c_str(), path_.c_str())
                         : renameat2(AT_FDCWD, temp_.c_str(), AT_FDCWD, path_.c_str(), RENAME_NOREPLACE);
    // File systems that cannot rename without replacing can still link a
    // name that must not exist yet.
    if (moved != 0 && !replace_ && errno == EINVAL && (moved = link(temp_.c_str(), path_.c_str())) == 0)
        unlink(temp_.c_str());
    if (moved != 0 && errno == EEXIST) throw Error(kExitOutput, shown_ + " exists, and -n keeps it");
    if (moved != 0) throw Error(kExitOutput, "cannot write " + shown_ + ": " + std::strerror(errno));
    temp_.clear();
    ForgetSignals();
}

}  // namespace zenk::tool
