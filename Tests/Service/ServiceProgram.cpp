#include "Tests/Service/ServiceProgram.h"

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <stdexcept>

namespace vorlane::service {

ServiceProgram::ServiceProgram(const std::vector<std::string>& arguments) {
    std::vector<std::string> all{VORLANE_SERVICE_PROGRAM};
    all.insert(all.end(), arguments.begin(), arguments.end());
    std::vector<char*> pointers;
    for (auto& argument : all) pointers.push_back(argument.data());
    pointers.push_back(nullptr);

    std::array<int, 2> ends{};
    if (pipe(ends.data()) != 0) throw std::runtime_error("no pipe");
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions, ends[1], STDERR_FILENO);
    posix_spawn_file_actions_addclose(&actions, ends[0]);
    posix_spawn_file_actions_addclose(&actions, ends[1]);
    const int failure = posix_spawn(&process_, pointers[0], &actions, nullptr, pointers.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    close(ends[1]);
    output_ = ends[0];
    if (failure != 0) throw std::runtime_error("cannot run the program");
}

ServiceProgram::~ServiceProgram() {
    if (process_ > 0) {
        signal(SIGKILL);
        wait();
    }
    close(output_);
}

std::string ServiceProgram::nextLine() {
    std::string line;
    char character = 0;
    while (read(output_, &character, 1) == 1 && character != '\n') line += character;
    return line;
}

std::string ServiceProgram::restOfOutput() {
    std::string output;
    char character = 0;
    while (read(output_, &character, 1) == 1) output += character;
    return output;
}

int ServiceProgram::portIn(const std::string& line) {
    const std::string start = "listening on http://127.0.0.1:";
    if (!line.starts_with(start)) throw std::runtime_error("not listening: " + line);
    return std::stoi(line.substr(start.size()));
}

void ServiceProgram::signal(int number) const { kill(process_, number); }

int ServiceProgram::wait() {
    int status = 0;
    waitpid(process_, &status, 0);
    process_ = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

}  // namespace vorlane::service
