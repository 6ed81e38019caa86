#include "tool_runner.h"

#include <fcntl.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fstream>
#include <iterator>
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
    std::vector<char*> argv{const_cast<char*>(ZENK_CONVERT_PATH)};
    for (const std::string& a : args) argv.push_back(const_cast<char*>(a.c_str()));
    argv.push_back(nullptr);
    int out_pipe[2], err_pipe[2];
    if (pipe(out_pipe) != 0) return {};
    if (terminal ? openpty(&err_pipe[0], &err_pipe[1], nullptr, nullptr, nullptr) != 0 : pipe(err_pipe) != 0) return {};
    const pid_t pid = fork();
    if (pid == 0) {
        dup2(open(input.empty() ? "/dev/null" : input.c_str(), O_RDONLY), STDIN_FILENO);
        dup2(out_pipe[1], STDOUT_FILENO);
        dup2(err_pipe[1], STDERR_FILENO);
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

ToolResult RunOk(const std::vector<std::string>& args, bool terminal, const std::string& input) {
    ToolResult r = RunTool(args, terminal, input);
    std::string command = "zenk-convert";
    for (const std::string& a : args) command += " " + a;
    EXPECT_EQ(r.code, 0) << command << "\n" << r.err;
    return r;
}

Scratch::Scratch() {
    std::string pattern = (std::filesystem::temp_directory_path() / "zenk-convert-test-XXXXXX").string();
    dir_ = mkdtemp(pattern.data());
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

bool FitsColumns(const std::string& text, size_t columns) {
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);)
        if (line.size() > columns) return false;
    return true;
}

}  // namespace zenk::tool::test
