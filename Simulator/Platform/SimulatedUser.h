#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "Public/VLValue.h"

namespace vorlane {

/// Whoever holds the simulated phone: answers the system's prompts as a test says. Main thread only.
class SimulatedUser {
public:
    enum class Answer { allow, deny, error, undetermined, later };
    using Handler = std::function<void(Answer answer)>;
    /// A prompt that waits for its answer.
    struct Prompt {
        std::uint64_t number;
        std::string kind;
        std::uint64_t options;
        Handler handler;
    };

    /// `tell` is told of each prompt, as the phone's protocol has it.
    explicit SimulatedUser(std::function<void(const std::string& event, const Dictionary& fields)> tell);

    /// How prompts of that kind ("notifications", "locationAlways", "locationWhenInUse") are answered from now on:
    /// allowed until said otherwise; `later` leaves them open.
    void setAnswer(const std::string& kind, Answer answer) { answers_[kind] = answer; }

    /// Shows a prompt. The handler runs once, within this call unless it stays open, and never with `later`.
    void prompt(const std::string& kind, std::uint64_t options, Handler handler);

    /// The open prompts, oldest first.
    const std::vector<Prompt>& openPrompts() const { return openPrompts_; }
    /// Answers an open prompt, told by its number or (the oldest of them) by its kind. False when there is none.
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
