#include "Simulator/Service/Store/MailboxMessage.h"

#include <fmt/format.h>

#include "Categories/NSDictionary+VLLookup.h"
#include "Simulator/Service/Http/MalformedRequest.h"
#include "Simulator/Service/Http/RequestPayload.h"

namespace vorlane::service {
namespace {

constexpr double kLifetime = 30.0 * 24 * 60 * 60;
// The end of the year 9999; a later time is a mistake.
constexpr double kLastMoment = 253'402'300'799.0;

std::optional<std::string> text(const Dictionary& payload, const std::string& key) {
    const auto* value = wishedValue(payload, key);
    if (!value) return std::nullopt;
    if (!value->is_string()) throw MalformedRequest(fmt::format("\"{}\" is not a string", key));
    return value->get<std::string>();
}

std::optional<std::uint64_t> idOf(const Dictionary& payload) {
    const auto* value = wishedValue(payload, "id");
    if (!value) return std::nullopt;
    if (!value->is_number_unsigned()) throw MalformedRequest("\"id\" is not an integer from 0");
    return value->get<std::uint64_t>();
}

double time(const Dictionary& payload, const std::string& key, double otherwise) {
    if (!wishedValue(payload, key)) return otherwise;
    const auto seconds = numberForKey(payload, key).value_or(-1);
    if (seconds >= 0 && seconds <= kLastMoment) return seconds;
    throw MalformedRequest(fmt::format("\"{}\" is not a number from 0 to {:.0f}", key, kLastMoment));
}

}  // namespace

MailboxMessage MailboxMessage::fromPayload(const Dictionary& payload, double now) {
    MailboxMessage message;
    message.id = idOf(payload);
    message.appKey = requiredText(payload, "appKey");
    message.subject = requiredText(payload, "subject");
    message.html = text(payload, "html").value_or("");
    message.label = text(payload, "label");
    message.link = text(payload, "link");
    message.phash = text(payload, "phash");
    message.backgroundColor = text(payload, "backgroundColor");
    message.foregroundColor = text(payload, "foregroundColor");
    message.cardUrl = text(payload, "cardUrl");
    if (wishedValue(payload, "image")) message.image = CardImage::fromBytes(hexadecimalBytes(payload, "image"));
    message.metadata = optionalMetadata(payload);
    message.created = time(payload, "created", now);
    message.end = time(payload, "end", message.created + kLifetime);
    return message;
}

}  // namespace vorlane::service
