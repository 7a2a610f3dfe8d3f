#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "Public/VLValue.h"

namespace vorlane {

/// The simulated phone's user, who answers the system's prompts as a test says. Main thread only.
class SimulatedUser {
public:
    enum class Answer { Allow, Deny, Error, Undetermined, Later };
    using Handler = std::function<void(Answer answer)>;
    /// An open prompt.
    struct Prompt {
        std::uint64_t number;
        std::string kind;
        std::uint64_t options;
        Handler handler;
    };

    /// `tell` is called for each prompt, with the event's name and fields.
    explicit SimulatedUser(std::function<void(const std::string& event, const Dictionary& fields)> tell);

    /// Sets the answer to prompts of this kind ("notifications", "locationAlways", "locationWhenInUse"). By default
    /// they are allowed; `later` leaves them open.
    void setAnswer(const std::string& kind, Answer answer) { answers_[kind] = answer; }

    /// Shows a prompt. The handler runs once, during this call unless the prompt stays open, and never with `later`.
    void prompt(const std::string& kind, std::uint64_t options, Handler handler);

    /// The open prompts, oldest first.
    const std::vector<Prompt>& openPrompts() const { return openPrompts_; }
    /// Answers the open prompt with this number, or the oldest open prompt of this kind. Returns false if there is
    /// none.
    bool answer(std::uint64_t number, Answer answer);
    bool answer(const std::string& kind, Answer answer);

private:
    bool answerAt(std::vector<Prompt>::iterator place, Answer answer);

    // Fixed at construction.
    const std::function<void(const std::string&, const Dictionary&)> tell_;
    std::map<std::string, Answer> answers_;
    std::vector<Prompt> openPrompts_;
    std::uint64_t newestNumber_ = 0;
};

}  // namespace vorlane
