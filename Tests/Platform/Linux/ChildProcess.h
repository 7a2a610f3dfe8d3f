#pragma once

#include <sys/types.h>

#include <map>
#include <string>
#include <vector>

namespace vorlane {

/// A program that a test starts. Its end kills what still runs.
class ChildProcess {
public:
    /// `environment` is added to the test's own; an empty value unsets.
    explicit ChildProcess(const std::vector<std::string>& arguments,
                          const std::map<std::string, std::string>& environment = {});
    ~ChildProcess();

    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    /// Gives it a line on its standard input.
    void say(const std::string& line) const;
    /// Everything it writes to its standard output, until it closes it.
    std::string readOutput() const;
    /// Waits for its end: its status, or the negative number of the signal that killed it.
    int wait();

private:
    pid_t pid_ = -1;
    int input_ = -1;
    int output_ = -1;
};

}  // namespace vorlane
