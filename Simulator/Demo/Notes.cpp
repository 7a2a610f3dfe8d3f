#include "Simulator/Demo/Notes.h"

#include <fmt/format.h>

#include <functional>
#include <map>
#include <vector>

#include "Categories/NSDictionary+VLJSON.h"
#include "Categories/NSDictionary+VLLookup.h"

namespace vorlane::demo {

namespace {

constexpr std::int64_t kInfo = 3;

std::string text(const Dictionary& dictionary, const std::string& key) {
    const auto* value = valueForKey(dictionary, key);
    return value ? vl_description(*value) : "(null)";
}

/// The first line, without runs of blanks.
std::string tidied(const std::string& message) {
    std::string result;
    for (const char character : message.substr(0, message.find('\n'))) {
        if (character != ' ' || !result.ends_with(' ')) result += character;
    }
    return result;
}

std::optional<std::string> noteOfLog(const Dictionary& event) {
    const auto level = integerForKey(event, "level").value_or(0);
    if (level > kInfo) return std::nullopt;
    return "  log: " + tidied(text(event, "message"));
}

/// The subjects of an inbox list, read ones in brackets.
std::string noteOfMessages(const Array& messages) {
    std::string note;
    for (const auto& message : messages) {
        const auto subject = message["subject"].dump();
        note += (note.empty() ? "" : " ") + (message["read"] == Value(1) ? "(" + subject + ")" : subject);
    }
    return note;
}

std::string noteOfValue(const Value& value) {
    const auto* list = value.get_ptr<const Array*>();
    if (list && !list->empty() && list->front().contains("messageId")) return noteOfMessages(*list);
    const auto* error = value.get_ptr<const Dictionary*>();
    if (error && error->contains("domain")) return "error: " + text(*error, "description");
    return value.is_null() ? "nothing" : value.dump();
}

std::string noteOfResult(const Dictionary& event) {
    std::string note = "  handler received";
    const auto* values = arrayForKey(event, "values");
    for (const auto& value : values ? *values : Array()) note += " " + noteOfValue(value) + ",";
    note.pop_back();
    return note;
}

std::string session(const Dictionary& payload) {
    auto note = fmt::format("user {}, length {} s, average {} s", text(payload, "tracking_id"),
                            text(payload, "session_length"), text(payload, "average_session_length"));
    if (const auto phash = stringForKey(payload, "phash"); phash && !phash->empty()) note += ", phash " + *phash;
    if (const auto before = stringForKey(payload, "prev_tracking_id")) note += ", before " + *before;
    return note;
}

std::string event(const Dictionary& payload) {
    return fmt::format("{}: {}", text(payload, "event_type"), text(payload, "event_label"));
}

std::string tags(const Dictionary& payload) {
    if (payload.contains("tags")) return "batch " + text(payload, "tags");
    return fmt::format("{} = {} ({})", text(payload, "name"), text(payload, "value"), text(payload, "type"));
}

std::string wholePayload(const Dictionary& payload) { return Value(payload).dump(); }

using Describe = std::function<std::string(const Dictionary& payload)>;

const std::map<std::string, Describe>& describers() {
    static const std::map<std::string, Describe> table = {
        {"sessionStart", session}, {"sessionEnd", session}, {"changeTrackingId", session},
        {"registerEvent", event},  {"updateTag", tags},     {"updateInboxMessage", wholePayload}};
    return table;
}

}  // namespace

std::optional<std::string> noteOfEvent(const Dictionary& event) {
    const auto kind = stringForKey(event, "event").value_or("");
    if (kind == "log") return noteOfLog(event);
    if (kind == "result") return noteOfResult(event);
    if (kind == "registerForRemoteNotifications") return "  asks the platform for a push token";
    if (kind == "minimumBackgroundFetchInterval")
        return "  asks for a background fetch every " + text(event, "seconds") + " s";
    return std::nullopt;
}

std::string noteOfRequest(const Dictionary& request) {
    const auto endpoint = text(request, "endpoint");
    auto note = fmt::format("{} {} -> {}", text(request, "method"), endpoint, text(request, "status"));
    const auto* payload = dictionaryForKey(request, "payload");
    const auto describe = describers().find(endpoint);
    if (payload && describe != describers().end()) {
        note += "  " + describe->second(*payload);
    } else {
        note += "  " + text(request, "path");
    }
    return note;
}

}  // namespace vorlane::demo
