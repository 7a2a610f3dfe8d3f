#pragma once

#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "Public/VLValue.h"
#include "Simulator/Support/ChildProcess.h"

namespace vorlane::support {

/// A running `vorlane-phone`. Reads the answer to each line, and collects the events in between.
class PhoneProcess {
public:
    /// Starts the program with these options.
    PhoneProcess(const std::string& program, const std::vector<std::string>& options);

    /// Sends a line and returns the answer: {"reply", "value"}, {"reply", "exception"} or {"reply", "error"}.
    Dictionary answerTo(Dictionary line);
    /// As `answerTo()`, for any string, JSON or not.
    Dictionary answerToText(const std::string& line);
    /// Sends a line without waiting for its answer.
    void send(const std::string& line) { process_.writeLine(line); }
    /// Returns the value of the answer. Throws std::runtime_error for an exception or an error.
    Value perform(Dictionary line);
    /// Calls a class operation by its labelled name.
    Value call(const std::string& operation, Array arguments = {});
    /// Waits until no request is in flight and every queue is idle.
    void settle();

    /// The events so far, oldest first: all, or of one kind.
    const std::vector<Dictionary>& events() const { return events_; }
    std::vector<Dictionary> events(const std::string& kind) const;
    /// Returns the events so far and removes them.
    std::vector<Dictionary> takeEvents();

    /// Sends "quit" and returns the exit status.
    int quit();
    /// Closes the phone's input and returns the exit status.
    int end();
    void kill(int signal);
    /// Waits for the end and returns the exit status.
    int wait() { return process_.wait(); }

private:
    Dictionary readAnswer();

    ChildProcess process_;
    std::vector<Dictionary> events_;
    std::int64_t lastId_ = 0;
};

}  // namespace vorlane::support
