#include "Tests/Platform/Linux/ChildProcess.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <stdexcept>

namespace vorlane {

namespace {

std::vector<std::string> environmentWith(const std::map<std::string, std::string>& changes) {
    std::vector<std::string> lines;
    for (char** entry = environ; *entry != nullptr; ++entry) {
        const std::string line = *entry;
        if (!changes.contains(line.substr(0, line.find('=')))) lines.push_back(line);
    }
    for (const auto& [name, value] : changes) {
        if (!value.empty()) lines.push_back(name + "=" + value);
    }
    return lines;
}

std::vector<char*> pointersTo(std::vector<std::string>& texts) {
    std::vector<char*> pointers;
    for (auto& text : texts) pointers.push_back(text.data());
    pointers.push_back(nullptr);
    return pointers;
}

}  // namespace

ChildProcess::ChildProcess(const std::vector<std::string>& arguments,
                           const std::map<std::string, std::string>& environment) {
    std::array<int, 2> input{};
    std::array<int, 2> output{};
    if (pipe2(input.data(), O_CLOEXEC) != 0 || pipe2(output.data(), O_CLOEXEC) != 0)
        throw std::runtime_error("no pipe");
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, input[0], STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&actions, output[1], STDOUT_FILENO);

    auto texts = arguments;
    auto changes = environment;
    // Spares the thread sanitizer the second that it would wait for at each exit.
    changes.try_emplace("TSAN_OPTIONS", "atexit_sleep_ms=0");
    auto lines = environmentWith(changes);
    const int error = posix_spawnp(&pid_, texts.front().c_str(), &actions, nullptr, pointersTo(texts).data(),
                                   pointersTo(lines).data());
    posix_spawn_file_actions_destroy(&actions);
    close(input[0]);
    close(output[1]);
    input_ = input[1];
    output_ = output[0];
    if (error != 0) throw std::runtime_error("cannot start " + arguments.front());
}

ChildProcess::~ChildProcess() {
    if (pid_ > 0) {
        kill(pid_, SIGKILL);
        wait();
    }
    close(input_);
    close(output_);
}

void ChildProcess::say(const std::string& line) const {
    const std::string text = line + "\n";
    if (write(input_, text.data(), text.size()) < 0) throw std::runtime_error("nobody listens");
}

std::string ChildProcess::readOutput() const {
    std::string text;
    std::array<char, 4096> bytes{};
    for (ssize_t count = 0; (count = read(output_, bytes.data(), bytes.size())) > 0;) {
        text.append(bytes.data(), static_cast<std::size_t>(count));
    }
    return text;
}

int ChildProcess::wait() {
    int status = 0;
    waitpid(pid_, &status, 0);
    pid_ = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

}  // namespace vorlane
