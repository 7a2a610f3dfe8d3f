#include "Simulator/Service/Store/Placement.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <string_view>

#include "Categories/NSDictionary+VLLookup.h"
#include "Simulator/Service/Http/EncodedText.h"
#include "Simulator/Service/Http/MalformedRequest.h"
#include "Simulator/Service/Http/RequestPayload.h"
#include "Simulator/Service/Http/ServiceResponse.h"

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

}  // namespace

bool Placement::isName(const std::string& name) {
    if (std::find(kNames.begin(), kNames.end(), name) != kNames.end()) return true;
    if (!name.starts_with(kNumbered) || name.size() != kNumbered.size() + 1) return false;
    const char last = name.back();
    return (last >= '1' && last <= '9') || (last >= 'A' && last <= 'Z');
}

Placement Placement::fromPayload(const std::string& name, const Dictionary& payload) {
    if (!isName(name)) throw MalformedRequest(fmt::format("there is no placement \"{}\"", name));
    requireKnownKeys(payload, {"html", "metadata", "phash"});
    return {name, requiredText(payload, "html"), optionalMetadata(payload, "html").value_or(Dictionary()),
            optionalText(payload, "phash")};
}

Dictionary Placement::message() const {
    auto content = metadata;
    content["html"] = encodedText(html.value_or(""));
    Dictionary message{{"messagecontent", encodedText(jsonText(Value(content)))}};
    if (phash) message["phash"] = *phash;
    return message;
}

}  // namespace vorlane::service
