// Commands that act as the phone's user.

#include "Categories/NSDictionary+VLLookup.h"
#include "Simulator/Phone/PhoneCommands.h"
#include "Simulator/Phone/PhoneValues.h"

namespace vorlane::phone {

namespace {

SimulatedUser::Answer answerFrom(const Value& value, const std::string& name) {
    using Answer = SimulatedUser::Answer;
    static const std::map<std::string, Answer> answers = {{"allow", Answer::Allow},
                                                          {"deny", Answer::Deny},
                                                          {"error", Answer::Error},
                                                          {"undetermined", Answer::Undetermined},
                                                          {"later", Answer::Later}};
    const auto found = answers.find(stringFrom(value, name));
    if (found == answers.end()) throw BadLine(name + " must be allow, deny, error, undetermined or later");
    return found->second;
}

void checkKind(const std::string& kind) {
    if (kind == "notifications" || kind == "locationAlways" || kind == "locationWhenInUse") return;
    throw BadLine("unknown kind of prompt " + kind);
}

Value user(Phone& phone, const Dictionary& line) {
    const auto& answers = dictionaryFrom(requiredField(line, "answers"), "answers");
    for (const auto& [kind, value] : answers) {
        checkKind(kind);
        answerFrom(value, kind);
    }
    for (const auto& [kind, value] : answers) {
        phone.device().simulatedUser().setAnswer(kind, answerFrom(value, kind));
    }
    return nullptr;
}

Value answer(Phone& phone, const Dictionary& line) {
    const auto& prompt = requiredField(line, "prompt");
    const auto with = answerFrom(requiredField(line, "with"), "with");
    auto& holder = phone.device().simulatedUser();
    const bool isOpen = prompt.is_string()
                            ? holder.answer(prompt.get<std::string>(), with)
                            : holder.answer(static_cast<std::uint64_t>(integerFrom(prompt, "prompt")), with);
    if (!isOpen) throw BadLine("no such prompt is open");
    return nullptr;
}

}  // namespace

Phone::Commands userCommands() { return {{"user", user}, {"answer", answer}}; }

}  // namespace vorlane::phone
