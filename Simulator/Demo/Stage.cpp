#include "Simulator/Demo/Stage.h"

#include <fmt/format.h>
#include <stdlib.h>

#include <cstdio>
#include <filesystem>
#include <stdexcept>
#include <utility>

#include "Categories/NSDictionary+VLLookup.h"
#include "Simulator/Demo/Notes.h"

namespace vorlane::demo {

namespace {

constexpr double kMorning = 1'700'000'000.0;
constexpr const char* kNowhere = "http://127.0.0.1:1";

std::string makeFolder() {
    auto path = (std::filesystem::temp_directory_path() / "vorlane-demo-XXXXXX").string();
    if (!mkdtemp(path.data())) throw std::runtime_error("cannot make a folder like " + path);
    return path;
}

std::string writeInfo(const std::string& folder) {
    const auto path = folder + "/Info.json";
    const Value info = Dictionary{{"CFBundleName", "Demo"},
                                  {"CFBundleShortVersionString", "1.0"},
                                  {"CFBundleVersion", "1"},
                                  {"VL_App_Key", Stage::appKey()},
                                  {"NSLocationAlwaysUsageDescription", "To find what is near"},
                                  {"UIBackgroundModes", Array{"location"}}};
    std::FILE* file = std::fopen(path.c_str(), "w");
    if (!file) throw std::runtime_error("cannot write " + path);
    const auto text = info.dump();
    std::fwrite(text.data(), 1, text.size(), file);
    std::fclose(file);
    return path;
}

}  // namespace

Stage::Stage(Programs programs)
    : programs_(std::move(programs)), dataFolder_(makeFolder()), service_(programs_.service), time_(kMorning) {}

Stage::~Stage() {
    phone_.reset();
    std::error_code ignored;
    std::filesystem::remove_all(dataFolder_, ignored);
}

const std::string& Stage::appKey() {
    static const std::string key = "demo-app-key-of-32-characters-00";
    return key;
}

void Stage::switchOn(Network network) {
    const auto origin = network == Network::Available ? service_.origin() : kNowhere;
    phone_ = std::make_unique<support::PhoneProcess>(
        programs_.phone,
        std::vector<std::string>{"--data-dir", dataFolder_ + "/phone", "--info", writeInfo(dataFolder_), "--service",
                                 origin, "--clock", fmt::format("virtual={:.0f}", time_)});
}

void Stage::switchOff() {
    const int status = phone_->quit();
    promise("the phone's process ends with status 0", status == 0);
    phone_.reset();
}

Array Stage::play(const std::string& what, Dictionary line) {
    phone_->perform(std::move(line));
    phone_->settle();
    Array handlerValues;
    std::vector<std::string> phone{what};
    for (auto& note : phoneNotes(handlerValues)) phone.push_back(std::move(note));
    transcript_.step(phone, serviceNotes());
    return handlerValues;
}

Array Stage::call(const std::string& what, const std::string& operation, Array arguments) {
    return play(what, {{"do", "call"}, {"op", operation}, {"args", std::move(arguments)}});
}

void Stage::wait(double seconds) {
    time_ += seconds;
    play(fmt::format("{:.1f} s pass", seconds), {{"do", "advance"}, {"seconds", seconds}});
}

std::vector<std::string> Stage::phoneNotes(Array& handlerValues) {
    std::vector<std::string> notes;
    for (const auto& event : phone_->takeEvents()) {
        if (const auto note = noteOfEvent(event)) notes.push_back(*note);
        const auto* values = arrayForKey(event, "values");
        if (values && event.at("event") == Value("result")) handlerValues = *values;
    }
    return notes;
}

std::vector<std::string> Stage::serviceNotes() {
    std::vector<std::string> notes;
    const auto requests = service_.requests();
    for (; requestsTold_ < requests.size(); ++requestsTold_) {
        notes.push_back(noteOfRequest(requests[requestsTold_].get_ref<const Dictionary&>()));
    }
    return notes;
}

Value Stage::lastPayload(const std::string& endpoint) const {
    const auto requests = service_.requests(endpoint);
    if (requests.empty()) return Value::object();
    const auto* payload = dictionaryForKey(requests.back().get_ref<const Dictionary&>(), "payload");
    return payload ? Value(*payload) : Value::object();
}

Value Stage::settings() { return phone_->perform({{"do", "query"}, {"what", "settings"}}); }

void Stage::promise(const std::string& text, bool isKept) { promises_.push_back({text, isKept}); }

}  // namespace vorlane::demo
