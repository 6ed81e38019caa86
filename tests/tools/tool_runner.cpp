#include "tool_runner.h"

#include <fcntl.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fstream>
#include <iterator>
#include <random>
#include <sstream>

namespace zenk::tool::test {

namespace {

std::string Slurp(int fd) {
    std::string s;
    char buffer[4096];
    for (;;) {
        const ssize_t n = read(fd, buffer, sizeof buffer);
        if (n <= 0) break;  // a pseudo-terminal reports EIO once the child is gone
        s.append(buffer, static_cast<size_t>(n));
    }
    return s;
}

}  // namespace

ToolResult RunTool(const std::vector<std::string>& args, bool terminal, const std::string& input) {
    std::vector<std::string> argv_strings{ZENK_CONVERT_PATH};
    argv_strings.insert(argv_strings.end(), args.begin(), args.end());
    std::vector<char*> argv;
    for (std::string& s : argv_strings) argv.push_back(s.data());
    argv.push_back(nullptr);

    int out_pipe[2], err_pipe[2] = {-1, -1}, pty_master = -1;
    if (pipe(out_pipe) != 0) return {};
    if (terminal) {
        if (openpty(&pty_master, &err_pipe[1], nullptr, nullptr, nullptr) != 0) return {};
        err_pipe[0] = pty_master;
    } else if (pipe(err_pipe) != 0) {
        return {};
    }
    const pid_t pid = fork();
    if (pid == 0) {
        const int in = open(input.empty() ? "/dev/null" : input.c_str(), O_RDONLY);
        dup2(in, STDIN_FILENO);
        dup2(out_pipe[1], STDOUT_FILENO);
        dup2(err_pipe[1], STDERR_FILENO);
        close(out_pipe[0]);
        close(err_pipe[0]);
        execv(argv[0], argv.data());
        _exit(127);
    }
    close(out_pipe[1]);
    close(err_pipe[1]);
    // Standard output is small in every test; read standard error first.
    ToolResult r;
    r.err = Slurp(err_pipe[0]);
    r.out = Slurp(out_pipe[0]);
    close(out_pipe[0]);
    close(err_pipe[0]);
    int status = 0;
    waitpid(pid, &status, 0);
    r.code = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    return r;
}

void ExpectOk(const ToolResult& r, const std::vector<std::string>& args) {
    std::string command = "zenk-convert";
    for (const std::string& a : args) command += " " + a;
    EXPECT_EQ(r.code, 0) << command << "\n" << r.err;
}

ToolResult RunOk(const std::vector<std::string>& args) {
    ToolResult r = RunTool(args);
    ExpectOk(r, args);
    return r;
}

Scratch::Scratch() {
    std::random_device rd;
    dir_ = std::filesystem::temp_directory_path() /
           ("zenk-convert-test-" + std::to_string(getpid()) + "-" + std::to_string(rd()));
    std::filesystem::create_directories(dir_);
}

Scratch::~Scratch() {
    std::error_code ec;
    std::filesystem::remove_all(dir_, ec);
}

std::vector<std::string> Scratch::Entries() const {
    std::vector<std::string> names;
    for (const auto& e : std::filesystem::directory_iterator(dir_)) names.push_back(e.path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
}

std::vector<std::string> Scratch::Command(const std::string& line) const {
    std::vector<std::string> args;
    std::istringstream words(line);
    for (std::string w; words >> w;) args.push_back(w[0] == '@' ? *this / w.substr(1) : w);
    return args;
}

Bytes ReadBytes(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return Bytes(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

void WriteBytes(const std::string& path, const Bytes& bytes) {
    std::ofstream out(path, std::ios::binary);
    out.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
}

const Library& TheLibrary() {
    static const Library library(ZENK_LIBRARY_PATH);
    return library;
}

std::string Token(Format f) { return std::string(Info(f).token); }

}  // namespace zenk::tool::test
