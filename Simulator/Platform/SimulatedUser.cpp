#include "Simulator/Platform/SimulatedUser.h"

#include <algorithm>
#include <utility>

namespace vorlane {

SimulatedUser::SimulatedUser(std::function<void(const std::string&, const Dictionary&)> tell)
    : tell_(std::move(tell)) {}

void SimulatedUser::prompt(const std::string& kind, std::uint64_t options, Handler handler) {
    const auto number = ++newestNumber_;
    tell_("prompt", {{"prompt", number}, {"kind", kind}, {"options", options}});
    const auto found = answers_.find(kind);
    const auto answer = found == answers_.end() ? Answer::Allow : found->second;
    if (answer == Answer::Later) {
        openPrompts_.push_back({number, kind, options, std::move(handler)});
    } else if (handler) {
        handler(answer);
    }
}

bool SimulatedUser::answer(std::uint64_t number, Answer answer) {
    return answerAt(std::ranges::find(openPrompts_, number, &Prompt::number), answer);
}

bool SimulatedUser::answer(const std::string& kind, Answer answer) {
    return answerAt(std::ranges::find(openPrompts_, kind, &Prompt::kind), answer);
}

bool SimulatedUser::answerAt(std::vector<Prompt>::iterator place, Answer answer) {
    if (place == openPrompts_.end()) return false;
    if (answer == Answer::Later) return true;
    const auto prompt = std::move(*place);
    openPrompts_.erase(place);
    if (prompt.handler) prompt.handler(answer);
    return true;
}

}  // namespace vorlane
