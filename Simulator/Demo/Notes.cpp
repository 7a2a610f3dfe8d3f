#include "Simulator/Demo/Notes.h"

#include <fmt/format.h>

#include <functional>
#include <map>
#include <string_view>
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

/// The first line, with runs of blanks reduced to one.
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

/// The subjects of an inbox list; subjects of read messages stand in brackets.
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
    return value.dump();
}

std::string noteOfResult(const Dictionary& event) {
    std::string note = "  handler received";
    const auto* values = arrayForKey(event, "values");
    for (const auto& value : values ? *values : Array()) note += " " + noteOfValue(value) + ",";
    note.pop_back();
    return note;
}

std::string noteOfNotification(const std::string& kind, const Dictionary& event) {
    const auto* notification = dictionaryForKey(event, "notification");
    const auto* userInfo = notification ? dictionaryForKey(*notification, "userInfo") : nullptr;
    auto note = fmt::format("  notification {}: \"{}\"", kind, notification ? text(*notification, "alertBody") : "");
    if (const auto phash = userInfo ? stringForKey(*userInfo, "p") : std::nullopt) note += ", phash " + *phash;
    return note;
}

/// The title of an interstitial's page.
std::string titleOf(const Dictionary& event) {
    constexpr std::string_view kTag = "<title>";
    const auto html = text(event, "htmlContent");
    const auto begin = html.find(kTag);
    if (begin == std::string::npos) return "a page without a title";
    const auto title = html.substr(begin + kTag.size());
    return '"' + title.substr(0, title.find("</title>")) + '"';
}

/// "starts" or "stops", and the region.
std::string noteOfRegion(const Dictionary& event, const char* doing) {
    const auto* region = dictionaryForKey(event, "region");
    return fmt::format("  {}s {} {}", text(event, "action"), doing, region ? text(*region, "identifier") : "");
}

std::string session(const Dictionary& payload) {
    auto note = fmt::format("user {}, length {} s, average {} s", text(payload, "tracking_id"),
                            text(payload, "session_length"), text(payload, "average_session_length"));
    if (const auto phash = stringForKey(payload, "phash"); phash && !phash->empty()) note += ", phash " + *phash;
    if (const auto before = stringForKey(payload, "prev_tracking_id")) note += ", before " + *before;
    return note;
}

std::string registration(const Dictionary& payload) {
    const auto* settings = dictionaryForKey(payload, "notification_settings.v2");
    const auto* platform = settings ? dictionaryForKey(*settings, "ios") : nullptr;
    return fmt::format("{}, notifications {}", text(payload, "type"),
                       platform ? text(*platform, "authorisation") : "unknown");
}

std::string event(const Dictionary& payload) {
    return fmt::format("{}: {}", text(payload, "event_type"), text(payload, "event_label"));
}

std::string tags(const Dictionary& payload) {
    if (payload.contains("tags")) return "batch " + text(payload, "tags");
    return fmt::format("{} = {} ({})", text(payload, "name"), text(payload, "value"), text(payload, "type"));
}

std::string split(const Dictionary& payload) {
    return fmt::format("text {}, campaign {}", text(payload, "pushtext"), text(payload, "campaigntoken"));
}

/// Describes a request whose payload says little.
std::string subject(const std::string& endpoint, const std::string& path) {
    return endpoint == "interstitial" ? path.substr(path.rfind('/') + 1) : path;
}

std::string place(const Dictionary& query) {
    return fmt::format("near {}, {}, at most {}", text(query, "latitude"), text(query, "longitude"),
                       text(query, "max"));
}

std::string transition(const Dictionary& payload) {
    const auto* region = dictionaryForKey(payload, "geoRegion");
    return region ? text(*region, "status") + " " + text(*region, "segmentId") : "";
}

std::string beacon(const Dictionary& payload) {
    std::string note = boolForKey(payload, "getContent").value_or(false) ? "a message for" : "no message for";
    const auto* beacons = arrayForKey(payload, "ibeacons");
    for (const auto& each : beacons ? *beacons : Array()) {
        const auto* fields = each.get_ptr<const Dictionary*>();
        if (fields) note += fmt::format(" {}_{}", text(*fields, "major"), text(*fields, "minor"));
    }
    return note;
}

std::string visit(const Dictionary& payload) {
    return fmt::format("visit {} to {}_{}", text(payload, "sessionId").substr(0, 8), text(payload, "major"),
                       text(payload, "minor"));
}

std::string wholePayload(const Dictionary& payload) { return Value(payload).dump(); }

/// Describes the payload, or the query of a request without a payload.
using Describe = std::function<std::string(const Dictionary& fields)>;

const std::map<std::string, Describe>& describers() {
    static const std::map<std::string, Describe> table = {{"sessionStart", session},
                                                          {"sessionEnd", session},
                                                          {"changeTrackingId", session},
                                                          {"registerEvent", event},
                                                          {"deviceRegistration", registration},
                                                          {"updateTag", tags},
                                                          {"MDN", split},
                                                          {"updateInboxMessage", wholePayload},
                                                          {"geoRegions", place},
                                                          {"geoContent", transition},
                                                          {"beaconContent", beacon},
                                                          {"beaconEntry", visit},
                                                          {"beaconExit", visit}};
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
    if (kind == "scheduled" || kind == "cancelled" || kind == "fired") return noteOfNotification(kind, event);
    if (kind == "interstitial") return "  on screen: " + titleOf(event);
    if (kind == "prompt") return "  the system asks the user for " + text(event, "kind");
    if (kind == "openURL") return "  opens " + text(event, "url");
    if (kind == "monitoring") return noteOfRegion(event, "watching");
    if (kind == "ranging") return noteOfRegion(event, "ranging");
    return std::nullopt;
}

std::string noteOfRequest(const Dictionary& request) {
    const auto endpoint = text(request, "endpoint");
    auto note = fmt::format("{} {} -> {}", text(request, "method"), endpoint, text(request, "status"));
    const auto* payload = dictionaryForKey(request, "payload");
    const auto* fields = payload ? payload : dictionaryForKey(request, "query");
    const auto describe = describers().find(endpoint);
    if (fields && describe != describers().end()) {
        note += "  " + describe->second(*fields);
    } else {
        note += "  " + subject(endpoint, text(request, "path"));
    }
    return note;
}

}  // namespace vorlane::demo
