#include "Simulator/Platform/Internal/SimulatedMailbox.h"

#include <charconv>
#include <string_view>
#include <utility>

#include "Simulator/Platform/Internal/PercentEncoding.h"
#include "Simulator/Platform/RecordedRequest.h"

namespace vorlane {

namespace {

constexpr double kLifetime = 30.0 * 24 * 60 * 60;
constexpr std::string_view kMailbox = "/rich/mailbox";
constexpr std::string_view kMessages = "/rich/mailbox/messages/";

/// The library decodes percent-encoding first, character references second.
std::string encodedPage(const std::string& html) {
    std::string escaped;
    for (const char character : html) {
        if (character == '&') {
            escaped += "&amp;";
        } else {
            escaped += character;
        }
    }
    return percentEncoded(escaped);
}

Value valueOrNull(const auto& field) { return field ? Value(*field) : Value(); }

Value documentOf(const SimulatedInboxMessage& message) {
    return Dictionary{{"id", message.messageId},
                      {"sline", message.subject},
                      {"content", encodedPage(message.htmlContent)},
                      {"blbl", valueOrNull(message.label)},
                      {"burl", valueOrNull(message.url)},
                      {"phash", valueOrNull(message.phash)},
                      {"read", message.isRead ? 1 : 0},
                      {"created", valueOrNull(message.created)},
                      {"end", valueOrNull(message.end)},
                      {"card_url", valueOrNull(message.cardImage)},
                      {"bg_color", valueOrNull(message.cardBackgroundColor)},
                      {"fg_color", valueOrNull(message.cardForegroundColor)},
                      {"meta_data", Value(message.metadata)}};
}

/// 0, which no message has, for anything but an id.
std::uint64_t idIn(std::string_view digits) {
    std::uint64_t messageId = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), messageId);
    return error == std::errc() && end == digits.data() + digits.size() ? messageId : 0;
}

bool isSet(const Value& payload, const char* key) { return payload.is_object() && payload.value(key, false); }

}  // namespace

bool SimulatedMailbox::isFor(const NSURLRequest& request) {
    const auto path = request.URL.path();
    return path.ends_with(kMailbox) || path.find(kMessages) != std::string::npos;
}

std::uint64_t SimulatedMailbox::add(SimulatedInboxMessage message, double now) {
    if (!message.created) message.created = now;
    if (!message.end) message.end = *message.created + kLifetime;
    const std::lock_guard lock(mutex_);
    if (message.messageId == 0) message.messageId = messages_.empty() ? 1 : messages_.rbegin()->first + 1;
    const auto messageId = message.messageId;
    messages_.insert_or_assign(messageId, std::move(message));
    return messageId;
}

bool SimulatedMailbox::remove(std::uint64_t messageId) {
    const std::lock_guard lock(mutex_);
    return messages_.erase(messageId) > 0;
}

std::vector<SimulatedInboxMessage> SimulatedMailbox::messages() const {
    const std::lock_guard lock(mutex_);
    std::vector<SimulatedInboxMessage> list;
    for (const auto& [messageId, message] : messages_) list.push_back(message);
    return list;
}

ScriptedAnswer SimulatedMailbox::answer(const RecordedRequest& request) {
    const auto path = request.request.URL.path();
    const auto place = path.find(kMessages);
    if (place == std::string::npos) return list(percentDecoded(path.substr(0, path.size() - kMailbox.size())));
    const auto messageId = idIn(std::string_view(path).substr(place + kMessages.size()));
    return request.request.HTTPMethod == "PUT" ? change(messageId, request.payload()) : message(messageId);
}

/// `user` is a path that ends with the tracking id.
ScriptedAnswer SimulatedMailbox::list(const std::string& user) const {
    Array entries;
    const std::lock_guard lock(mutex_);
    for (const auto& [messageId, message] : messages_) {
        if (message.trackingId && !user.ends_with("/" + *message.trackingId)) continue;
        entries.emplace_back(Dictionary{{"id", messageId}, {"read", message.isRead ? 1 : 0}});
    }
    return ScriptedAnswer::withJSON(
        Dictionary{{"synchronisation_complete", true}, {"notification", Value(std::move(entries))}});
}

ScriptedAnswer SimulatedMailbox::message(std::uint64_t messageId) const {
    const std::lock_guard lock(mutex_);
    const auto found = messages_.find(messageId);
    return found == messages_.end() ? ScriptedAnswer{.status = 404}
                                    : ScriptedAnswer::withJSON(documentOf(found->second));
}

ScriptedAnswer SimulatedMailbox::change(std::uint64_t messageId, const Value& payload) {
    const std::lock_guard lock(mutex_);
    const auto found = messages_.find(messageId);
    if (found == messages_.end()) return {.status = 404};
    if (isSet(payload, "read")) found->second.isRead = true;
    if (isSet(payload, "deleted")) messages_.erase(found);
    return ScriptedAnswer::withJSON(Dictionary());
}

}  // namespace vorlane
