#include "Simulator/Service/Store/LocalMessage.h"

#include <fmt/format.h>

#include "Categories/NSDictionary+VLLookup.h"
#include "Simulator/Service/Http/EncodedText.h"
#include "Simulator/Service/Http/RequestPayload.h"
#include "Simulator/Service/Http/ServiceResponse.h"

namespace vorlane::service {

LocalMessage LocalMessage::fromPayload(const Dictionary& payload) {
    requireKnownKeys(payload, {"pushtext", "phash", "sound", "metadata"});
    return {requiredText(payload, "pushtext"), optionalText(payload, "phash"), optionalText(payload, "sound"),
            optionalMetadata(payload, "sound").value_or(Dictionary())};
}

Dictionary LocalMessage::asDictionary() const {
    Dictionary dictionary{{"pushtext", pushtext}, {"metadata", Value(metadata)}};
    dictionary["phash"] = phash ? Value(*phash) : Value();
    dictionary["sound"] = sound ? Value(*sound) : Value();
    return dictionary;
}

Dictionary LocalMessage::asTemplate(const std::string& appKey) const {
    Dictionary message{{"appkey", appKey}, {"pushtext", encodedText(pushtext)}};
    if (phash) message["phash"] = *phash;
    auto content = metadata;
    if (sound) content["sound"] = *sound;
    if (!content.empty()) message["messagecontent"] = encodedText(jsonText(Value(content)));
    return message;
}

}  // namespace vorlane::service
