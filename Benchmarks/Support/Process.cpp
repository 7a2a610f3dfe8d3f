#include "Benchmarks/Support/Process.h"

#include <malloc.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <stdexcept>

namespace vorlane::benchmarks {

namespace {

/// Returns the first number in the line of /proc/self/status that starts with `name`.
std::int64_t statusNumber(const std::string& name) {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.starts_with(name)) return std::stoll(line.substr(name.size()));
    }
    return 0;
}

/// Returns pointers to the strings, and a null pointer at the end.
std::vector<char*> pointersTo(const std::vector<std::string>& strings) {
    std::vector<char*> pointers;
    pointers.reserve(strings.size() + 1);
    for (const auto& string : strings) pointers.push_back(const_cast<char*>(string.c_str()));
    pointers.push_back(nullptr);
    return pointers;
}

std::string readToTheEnd(int file) {
    std::string output;
    std::array<char, 256> chunk{};
    for (ssize_t count = 0; (count = read(file, chunk.data(), chunk.size())) > 0;) {
        output.append(chunk.data(), static_cast<std::size_t>(count));
    }
    return output;
}

double seconds(const timeval& time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
}

}  // namespace

double figureOf(const std::string& program, const std::vector<std::string>& arguments,
                const std::vector<std::string>& environment) {
    std::array<int, 2> ends{};
    if (pipe(ends.data()) != 0) throw std::runtime_error("pipe");
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
    posix_spawn_file_actions_addclose(&actions, ends[0]);
    auto argv = pointersTo(arguments);
    argv.insert(argv.begin(), const_cast<char*>(program.c_str()));
    auto envp = pointersTo(environment);
    for (char** entry = environ; *entry; ++entry) envp.insert(envp.begin(), *entry);
    pid_t child = 0;
    const int failure = posix_spawn(&child, program.c_str(), &actions, nullptr, argv.data(), envp.data());
    posix_spawn_file_actions_destroy(&actions);
    close(ends[1]);
    const auto output = failure == 0 ? readToTheEnd(ends[0]) : "";
    close(ends[0]);
    int status = 1;
    if (failure == 0) waitpid(child, &status, 0);
    if (status != 0 || output.empty()) throw std::runtime_error(program + " failed");
    return std::stod(output);
}

std::string thisProgram() { return std::filesystem::read_symlink("/proc/self/exe"); }

double monotonicTime() {
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

double secondsOf(const std::function<void()>& work) {
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

double processorTime() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

double threadTime() {
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}

std::int64_t residentMemory() { return statusNumber("VmRSS:") * 1024; }

std::int64_t ownMemory() { return statusNumber("RssAnon:") * 1024; }

std::int64_t startPeakMemory() {
    // Memory that was freed before would be reused first.
    malloc_trim(0);
    std::ofstream("/proc/self/clear_refs") << "5";
    return residentMemory();
}

std::int64_t peakMemory() { return statusNumber("VmHWM:") * 1024; }

std::int64_t threadCount() { return statusNumber("Threads:"); }

}  // namespace vorlane::benchmarks
