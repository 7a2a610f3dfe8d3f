#include "Tests/Service/ServiceProgram.h"

#include <stdexcept>

namespace vorlane::service {

namespace {

/// A shell command that joins the two streams and runs the program.
std::vector<std::string> commandWith(const std::vector<std::string>& arguments) {
    std::vector<std::string> command{"/bin/sh", "-c", R"(exec "$0" "$@" 2>&1)", VORLANE_SERVICE_PROGRAM};
    command.insert(command.end(), arguments.begin(), arguments.end());
    return command;
}

}  // namespace

ServiceProgram::ServiceProgram(const std::vector<std::string>& arguments) : process_(commandWith(arguments)) {}

std::string ServiceProgram::nextLine() { return process_.readLine().value_or(""); }

std::string ServiceProgram::restOfOutput() { return process_.readRest(); }

int ServiceProgram::portIn(const std::string& line) {
    const std::string start = "listening on http://127.0.0.1:";
    if (!line.starts_with(start)) throw std::runtime_error("not listening: " + line);
    return std::stoi(line.substr(start.size()));
}

void ServiceProgram::signal(int number) { process_.kill(number); }

int ServiceProgram::wait() { return process_.wait(); }

}  // namespace vorlane::service
