#include "Simulator/Service/Http/Fault.h"

#include <fmt/format.h>

#include <array>
#include <string_view>
#include <utility>

#include "Categories/NSDictionary+VLLookup.h"
#include "Simulator/Service/Http/MalformedRequest.h"
#include "Simulator/Service/Http/RequestPayload.h"

namespace vorlane::service {
namespace {

using namespace std::string_view_literals;

using Kind = Fault::Kind;

constexpr std::array<std::pair<std::string_view, Kind>, 6> kKinds = {{{"status", Kind::Status},
                                                                      {"delay", Kind::Delay},
                                                                      {"drop", Kind::Drop},
                                                                      {"truncate", Kind::Truncate},
                                                                      {"garbage", Kind::Garbage},
                                                                      {"body", Kind::Body}}};
constexpr double kLongestDelay = 600;
// Not HTTP, not JSON, and not UTF-8.
constexpr std::string_view kGarbage = "\x16\x03\x01\xff\xfe<\x00{]]garbage\r\n\r\n"sv;

Kind kindOf(const std::string& text) {
    for (const auto& [name, kind] : kKinds)
        if (name == text) return kind;
    throw MalformedRequest(fmt::format("there is no fault of kind \"{}\"", text));
}

std::string nameOf(Kind kind) {
    for (const auto& [name, candidate] : kKinds)
        if (candidate == kind) return std::string(name);
    return {};
}

/// Returns `nullopt` if the key is absent.
std::optional<std::int64_t> integerWithin(const Dictionary& dictionary, const std::string& key, std::int64_t least,
                                          std::int64_t most) {
    const auto* value = valueForKey(dictionary, key);
    if (!value) return std::nullopt;
    if (!value->is_number_integer() || integerValue(*value) < least || integerValue(*value) > most)
        throw MalformedRequest(fmt::format("\"{}\" is not an integer from {} to {}", key, least, most));
    return integerValue(*value);
}

double delayOf(const Dictionary& dictionary) {
    if (!valueForKey(dictionary, "seconds")) return 0;
    const auto seconds = numberForKey(dictionary, "seconds").value_or(-1);
    if (seconds >= 0 && seconds <= kLongestDelay) return seconds;
    throw MalformedRequest("\"seconds\" is not a number from 0 to 600");
}

std::optional<std::string> bodyOf(const Dictionary& dictionary) {
    if (valueForKey(dictionary, "bytes")) return hexadecimalBytes(dictionary, "bytes");
    const auto* body = valueForKey(dictionary, "body");
    if (!body) return std::nullopt;
    return body->is_string() ? body->get<std::string>() : jsonText(*body);
}

void checkCompleteness(const Fault& fault) {
    if (fault.kind == Kind::Status && !fault.status) throw MalformedRequest("a \"status\" fault needs a \"status\"");
    if (fault.kind == Kind::Body && !fault.body)
        throw MalformedRequest("a \"body\" fault needs a \"body\" or \"bytes\"");
    if (fault.kind == Kind::Delay && fault.seconds == 0) throw MalformedRequest("a \"delay\" fault needs \"seconds\"");
}

/// HTTP defines these answers to have no body.
bool isBodyless(int status) { return status == 204 || status == 304; }

}  // namespace

Fault Fault::fromDictionary(const Dictionary& dictionary) {
    Fault fault;
    fault.endpoint = requiredText(dictionary, "endpoint");
    fault.kind = kindOf(requiredText(dictionary, "kind"));
    if (const auto status = integerWithin(dictionary, "status", 200, 599)) fault.status = static_cast<int>(*status);
    fault.seconds = delayOf(dictionary);
    fault.body = bodyOf(dictionary);
    fault.contentType = stringForKey(dictionary, "contentType");
    fault.count = integerWithin(dictionary, "count", 1, 1'000'000'000);
    checkCompleteness(fault);
    return fault;
}

Dictionary Fault::asDictionary() const {
    Dictionary dictionary{{"id", id}, {"endpoint", endpoint}, {"kind", nameOf(kind)}, {"applied", applied}};
    if (status) dictionary["status"] = *status;
    if (seconds > 0) dictionary["seconds"] = seconds;
    if (body) dictionary["body"] = *body;
    if (contentType) dictionary["contentType"] = *contentType;
    if (count) dictionary["count"] = *count;
    return dictionary;
}

void Fault::spoil(ServiceResponse& response) const {
    if (kind == Kind::Drop) {
        response.delivery = ServiceResponse::Delivery::None;
        return;
    }
    if (status) response.status = *status;
    if (kind == Kind::Status) response.body = jsonText({{"error", "a scripted fault"}});
    if (kind == Kind::Garbage) response.body = kGarbage;
    if (kind == Kind::Garbage && !status) response.delivery = ServiceResponse::Delivery::Raw;
    if (kind == Kind::Truncate) response.delivery = ServiceResponse::Delivery::Truncated;
    if (body) response.body = *body;
    if (contentType) response.contentType = *contentType;
    if (isBodyless(response.status)) response.body.clear();
}

}  // namespace vorlane::service
