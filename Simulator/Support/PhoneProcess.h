#pragma once

#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "Public/VLValue.h"
#include "Simulator/Support/ChildProcess.h"

namespace vorlane::support {

/// A running `vorlane-phone`. Each line that goes in is answered; what happens beside the answers is kept as events.
class PhoneProcess {
public:
    /// Starts the program with these options.
    PhoneProcess(const std::string& program, const std::vector<std::string>& options);

    /// What the phone answered: {"reply", "value"}, {"reply", "exception"} or {"reply", "error"}.
    Dictionary answerTo(Dictionary line);
    /// The same for a line as it stands, JSON or not.
    Dictionary answerToText(const std::string& line);
    /// Sends a line and does not wait for its answer.
    void send(const std::string& line) { process_.writeLine(line); }
    /// The value of the answer. Throws std::runtime_error when it is an exception or an error.
    Value perform(Dictionary line);
    /// A class operation by its labelled name.
    Value call(const std::string& operation, Array arguments = {});
    /// Waits until nothing is under way.
    void settle();

    /// Every event so far, oldest first; those of one kind.
    const std::vector<Dictionary>& events() const { return events_; }
    std::vector<Dictionary> events(const std::string& kind) const;
    /// Forgets the events so far, and gives them.
    std::vector<Dictionary> takeEvents();

    /// Ends the phone as its user would, and gives its exit status.
    int quit();
    /// Ends its input instead.
    int end();
    void kill(int signal);
    /// Its exit status.
    int wait() { return process_.wait(); }

private:
    Dictionary readAnswer();

    ChildProcess process_;
    std::vector<Dictionary> events_;
    std::int64_t lastId_ = 0;
};

}  // namespace vorlane::support
