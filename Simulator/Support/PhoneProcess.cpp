#include "Simulator/Support/PhoneProcess.h"

#include <algorithm>
#include <utility>

#include "Categories/NSDictionary+VLJSON.h"

namespace vorlane::support {

namespace {

std::vector<std::string> commandLine(const std::string& program, const std::vector<std::string>& options) {
    std::vector<std::string> arguments{program};
    arguments.insert(arguments.end(), options.begin(), options.end());
    return arguments;
}

Dictionary parsed(const std::string& line) {
    std::optional<NSError> error;
    auto dictionary = vl_dictionaryWithJSON(line, error);
    if (!dictionary) throw std::runtime_error("the phone wrote no JSON object: " + line);
    return std::move(*dictionary);
}

std::string printed(const Dictionary& line) {
    return Value(line).dump(-1, ' ', false, Value::error_handler_t::replace);
}

}  // namespace

PhoneProcess::PhoneProcess(const std::string& program, const std::vector<std::string>& options)
    : process_(commandLine(program, options)) {}

Dictionary PhoneProcess::answerTo(Dictionary line) {
    line.emplace("id", ++lastId_);
    return answerToText(printed(line));
}

Dictionary PhoneProcess::answerToText(const std::string& line) {
    process_.writeLine(line);
    return readAnswer();
}

Dictionary PhoneProcess::readAnswer() {
    while (const auto line = process_.readLine()) {
        auto message = parsed(*line);
        if (message.contains("reply")) return message;
        events_.push_back(std::move(message));
    }
    throw std::runtime_error("the phone ended without an answer");
}

Value PhoneProcess::perform(Dictionary line) {
    const auto asked = printed(line);
    auto answer = answerTo(std::move(line));
    const auto value = answer.find("value");
    if (value == answer.end()) throw std::runtime_error(asked + " was answered by " + printed(answer));
    return std::move(value->second);
}

Value PhoneProcess::call(const std::string& operation, Array arguments) {
    return perform({{"do", "call"}, {"op", operation}, {"args", std::move(arguments)}});
}

void PhoneProcess::settle() { perform({{"do", "settle"}}); }

std::vector<Dictionary> PhoneProcess::events(const std::string& kind) const {
    std::vector<Dictionary> found;
    std::copy_if(events_.begin(), events_.end(), std::back_inserter(found),
                 [&kind](const Dictionary& event) { return event.at("event") == Value(kind); });
    return found;
}

std::vector<Dictionary> PhoneProcess::takeEvents() { return std::exchange(events_, {}); }

int PhoneProcess::quit() {
    perform({{"do", "quit"}});
    return process_.wait();
}

int PhoneProcess::end() {
    process_.closeInput();
    while (const auto line = process_.readLine()) events_.push_back(parsed(*line));
    return process_.wait();
}

void PhoneProcess::kill(int signal) { process_.kill(signal); }

}  // namespace vorlane::support
