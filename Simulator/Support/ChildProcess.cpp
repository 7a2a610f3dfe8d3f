#include "Simulator/Support/ChildProcess.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <stdexcept>
#include <string_view>
#include <utility>

namespace vorlane::support {

namespace {

using SteadyClock = std::chrono::steady_clock;

void closeDescriptor(int& descriptor) {
    if (descriptor >= 0) ::close(std::exchange(descriptor, -1));
}

/// Neither end is inherited by other programs that are started meanwhile.
std::array<int, 2> makePipe() {
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
    return ends;
}

/// A socket instead of a pipe, so that writing to a program that has ended fails without a signal.
std::array<int, 2> makeSocketPair() {
    std::array<int, 2> ends{};
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) != 0)
        throw std::runtime_error("no socket pair");
    return ends;
}

int statusOf(int status) { return WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status); }

/// Runs in the child process, where only async-signal-safe functions are allowed.
[[noreturn]] void becomeProgram(char* const* argv, char* const* environment, int input, int output) {
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    ::dup2(input, STDIN_FILENO);
    ::dup2(output, STDOUT_FILENO);
    ::execvpe(argv[0], argv, environment);
    ::_exit(127);
}

std::vector<std::string> environmentWith(const ChildProcess::Environment& changes) {
    std::vector<std::string> entries;
    for (char** entry = environ; *entry; ++entry) {
        const std::string_view view = *entry;
        if (!changes.contains(std::string(view.substr(0, view.find('='))))) entries.emplace_back(view);
    }
    for (const auto& [name, value] : changes) {
        if (!value.empty()) entries.emplace_back(name).append("=").append(value);
    }
    return entries;
}

std::vector<char*> pointersTo(const std::vector<std::string>& strings) {
    std::vector<char*> pointers;
    pointers.reserve(strings.size() + 1);
    for (const auto& string : strings) pointers.push_back(const_cast<char*>(string.c_str()));
    pointers.push_back(nullptr);
    return pointers;
}

}  // namespace

ChildProcess::ChildProcess(const std::vector<std::string>& arguments, const Environment& environment) {
    auto input = makeSocketPair();
    auto output = makePipe();
    const auto argv = pointersTo(arguments);
    const auto entries = environmentWith(environment);
    const auto envp = pointersTo(entries);
    process_ = ::fork();
    if (process_ == 0) becomeProgram(argv.data(), envp.data(), input[0], output[1]);
    closeDescriptor(input[0]);
    closeDescriptor(output[1]);
    input_ = input[1];
    output_ = output[0];
    if (process_ > 0) return;
    closeDescriptor(input_);
    closeDescriptor(output_);
    throw std::runtime_error("cannot start " + arguments.front());
}

ChildProcess::~ChildProcess() {
    kill(SIGKILL);
    wait();
    closeDescriptor(input_);
    closeDescriptor(output_);
}

bool ChildProcess::writeLine(const std::string& line) {
    const auto text = line + "\n";
    std::size_t done = 0;
    while (done < text.size()) {
        const auto count = ::send(input_, text.data() + done, text.size() - done, MSG_NOSIGNAL);
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) return false;
        done += static_cast<std::size_t>(count);
    }
    return true;
}

void ChildProcess::closeInput() { closeDescriptor(input_); }

std::optional<std::string> ChildProcess::readLine(std::chrono::milliseconds timeout) {
    const auto deadline = SteadyClock::now() + timeout;
    while (true) {
        if (const auto end = pending_.find('\n'); end != std::string::npos) {
            auto line = pending_.substr(0, end);
            pending_.erase(0, end + 1);
            return line;
        }
        if (!readMore(deadline)) return std::nullopt;
    }
}

std::string ChildProcess::readRest(std::chrono::milliseconds timeout) {
    while (readMore(SteadyClock::now() + timeout)) {
    }
    return std::exchange(pending_, {});
}

bool ChildProcess::readMore(SteadyClock::time_point deadline) {
    pollfd descriptor{output_, POLLIN, 0};
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - SteadyClock::now()).count();
    const int ready = ::poll(&descriptor, 1, static_cast<int>(std::max<long long>(left, 0)));
    if (ready < 0 && errno == EINTR) return true;
    if (ready == 0) throw std::runtime_error("no line in time");
    std::array<char, 65536> chunk{};
    const auto count = ::read(output_, chunk.data(), chunk.size());
    if (count < 0 && errno == EINTR) return true;
    if (count <= 0) return false;
    pending_.append(chunk.data(), static_cast<std::size_t>(count));
    return true;
}

int ChildProcess::wait() {
    if (hasEnded_) return 0;
    int status = 0;
    while (waitpid(process_, &status, 0) < 0 && errno == EINTR) {
    }
    hasEnded_ = true;
    return statusOf(status);
}

void ChildProcess::kill(int signal) {
    if (!hasEnded_) ::kill(process_, signal);
}

}  // namespace vorlane::support
