#include "Simulator/Service/LocalMessage.h"

#include <fmt/format.h>

#include "Categories/NSCharacterSet+VLURLEncoding.h"
#include "Categories/NSDictionary+VLLookup.h"
#include "Simulator/Service/MalformedRequest.h"
#include "Simulator/Service/RequestPayload.h"
#include "Simulator/Service/ServiceResponse.h"

namespace vorlane::service {
namespace {

void requireKnownKeys(const Dictionary& payload) {
    for (const auto& [key, value] : payload) {
        if (key != "pushtext" && key != "phash" && key != "sound" && key != "metadata")
            throw MalformedRequest(fmt::format("there is no \"{}\" here", key));
    }
}

/// Null counts as absent.
const Value* wishedValue(const Dictionary& payload, const std::string& key) {
    const auto* value = valueForKey(payload, key);
    return value && !value->is_null() ? value : nullptr;
}

std::optional<std::string> optionalText(const Dictionary& payload, const std::string& key) {
    return wishedValue(payload, key) ? std::optional(requiredText(payload, key)) : std::nullopt;
}

Dictionary metadataOf(const Dictionary& payload) {
    const auto* value = wishedValue(payload, "metadata");
    if (!value) return {};
    if (!value->is_object()) throw MalformedRequest("\"metadata\" is no object");
    // It would stand in the sound's place.
    if (value->contains("sound")) throw MalformedRequest("\"metadata\" has a \"sound\"");
    return value->get_ref<const Dictionary&>();
}

std::string encoded(const std::string& text) {
    return stringByAddingPercentEncoding(text, vl_URIComponentAllowedCharacterSet());
}

}  // namespace

LocalMessage LocalMessage::fromPayload(const Dictionary& payload) {
    requireKnownKeys(payload);
    return {requiredText(payload, "pushtext"), optionalText(payload, "phash"), optionalText(payload, "sound"),
            metadataOf(payload)};
}

Dictionary LocalMessage::asDictionary() const {
    Dictionary dictionary{{"pushtext", pushtext}, {"metadata", Value(metadata)}};
    dictionary["phash"] = phash ? Value(*phash) : Value();
    dictionary["sound"] = sound ? Value(*sound) : Value();
    return dictionary;
}

Dictionary LocalMessage::asTemplate(const std::string& appKey) const {
    Dictionary message{{"appkey", appKey}, {"pushtext", encoded(pushtext)}};
    if (phash) message["phash"] = *phash;
    auto content = metadata;
    if (sound) content["sound"] = *sound;
    if (!content.empty()) message["messagecontent"] = encoded(jsonText(Value(content)));
    return message;
}

}  // namespace vorlane::service
