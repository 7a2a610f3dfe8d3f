#include "Simulator/Service/Placement.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <string_view>

#include "Categories/NSCharacterSet+VLURLEncoding.h"
#include "Categories/NSDictionary+VLLookup.h"
#include "Simulator/Service/MalformedRequest.h"
#include "Simulator/Service/RequestPayload.h"
#include "Simulator/Service/ServiceResponse.h"

namespace vorlane::service {
namespace {

constexpr std::array<std::string_view, 9> kNames = {"App Open",
                                                    "Feedback",
                                                    "Push Open",
                                                    "Store Launch",
                                                    "Notification Prompt",
                                                    "Notification Settings",
                                                    "Notification Provisional Upgrade",
                                                    "Location Prompt",
                                                    "Location Settings"};
constexpr std::string_view kNumbered = "Placement ";

void requireKnownKeys(const Dictionary& payload) {
    for (const auto& [key, value] : payload) {
        if (key != "html" && key != "metadata" && key != "phash")
            throw MalformedRequest(fmt::format("there is no \"{}\" here", key));
    }
}

/// Null counts as absent.
const Value* wishedValue(const Dictionary& payload, const std::string& key) {
    const auto* value = valueForKey(payload, key);
    return value && !value->is_null() ? value : nullptr;
}

Dictionary metadataOf(const Dictionary& payload) {
    const auto* value = wishedValue(payload, "metadata");
    if (!value) return {};
    if (!value->is_object()) throw MalformedRequest("\"metadata\" is no object");
    // It would stand in the page's place.
    if (value->contains("html")) throw MalformedRequest("\"metadata\" has an \"html\"");
    return value->get_ref<const Dictionary&>();
}

std::optional<std::string> phashOf(const Dictionary& payload) {
    return wishedValue(payload, "phash") ? std::optional(requiredText(payload, "phash")) : std::nullopt;
}

std::string encoded(const std::string& text) {
    return stringByAddingPercentEncoding(text, vl_URIComponentAllowedCharacterSet());
}

}  // namespace

bool Placement::isName(const std::string& name) {
    if (std::find(kNames.begin(), kNames.end(), name) != kNames.end()) return true;
    if (!name.starts_with(kNumbered) || name.size() != kNumbered.size() + 1) return false;
    const char last = name.back();
    return (last >= '1' && last <= '9') || (last >= 'A' && last <= 'Z');
}

Placement Placement::fromPayload(const std::string& name, const Dictionary& payload) {
    if (!isName(name)) throw MalformedRequest(fmt::format("there is no placement \"{}\"", name));
    requireKnownKeys(payload);
    return {name, requiredText(payload, "html"), metadataOf(payload), phashOf(payload)};
}

Dictionary Placement::message() const {
    auto content = metadata;
    content["html"] = encoded(html.value_or(""));
    Dictionary message{{"messagecontent", encoded(jsonText(Value(content)))}};
    if (phash) message["phash"] = *phash;
    return message;
}

}  // namespace vorlane::service
