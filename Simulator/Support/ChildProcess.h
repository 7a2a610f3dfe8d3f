#pragma once

#include <sys/types.h>

#include <chrono>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace vorlane::support {

/// A child process: writes lines to its standard input and reads lines from its standard output; it shares this
/// program's standard error. Killed on destruction if it still runs. One thread.
class ChildProcess {
public:
    /// Environment variables to set; an empty value removes the variable.
    using Environment = std::map<std::string, std::string>;

    /// Starts `arguments[0]` with this program's environment and the changes of `environment`. A program that cannot be
    /// found ends with status 127. Throws std::runtime_error if no process can be created.
    explicit ChildProcess(const std::vector<std::string>& arguments, const Environment& environment = {});
    ~ChildProcess();
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    /// Returns false if the program no longer reads.
    bool writeLine(const std::string& line);
    void closeInput();

    /// Returns the next line without its end, or `nullopt` at the end of the output. Throws std::runtime_error after
    /// `timeout`.
    std::optional<std::string> readLine(std::chrono::milliseconds timeout = std::chrono::seconds(30));
    /// Returns the output up to its end. Throws std::runtime_error if the program writes nothing for `timeout`.
    std::string readRest(std::chrono::milliseconds timeout = std::chrono::seconds(30));

    /// Waits for the end. Returns the exit status, or 128 plus the number of the signal that ended it.
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
