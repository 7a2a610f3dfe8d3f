#pragma once

#include <sys/types.h>

#include <chrono>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace vorlane::support {

/// A program under the control of this one: lines to its standard input, lines from its standard output; its standard
/// error is this program's. Killed with the object when it still runs. One thread.
class ChildProcess {
public:
    /// Environment variables to set; an empty value removes the variable.
    using Environment = std::map<std::string, std::string>;

    /// Starts `arguments[0]` with this program's environment and the changes of `environment`. A program that cannot
    /// be found ends at once with status 127. Throws std::runtime_error when no process can be made.
    explicit ChildProcess(const std::vector<std::string>& arguments, const Environment& environment = {});
    ~ChildProcess();
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    /// Returns whether the program took it.
    bool writeLine(const std::string& line);
    void closeInput();

    /// The next line without its end; nothing at the end of the output. Throws std::runtime_error when none comes in
    /// time.
    std::optional<std::string> readLine(std::chrono::milliseconds timeout = std::chrono::seconds(30));
    /// Returns the output up to its end. Throws std::runtime_error when the program writes nothing for `timeout`.
    std::string readRest(std::chrono::milliseconds timeout = std::chrono::seconds(30));

    /// Waits for the end: the exit status, or 128 and the number of the signal that ended it.
    int wait();
    void kill(int signal);

    pid_t identifier() const { return process_; }

private:
    bool readMore(std::chrono::steady_clock::time_point deadline);

    pid_t process_ = -1;
    int input_ = -1;
    int output_ = -1;
    std::string pending_;
    bool hasEnded_ = false;
};

}  // namespace vorlane::support
