#include "Simulator/Service/Store/Campaign.h"

#include <fmt/format.h>

#include <algorithm>
#include <initializer_list>
#include <utility>

#include "Categories/NSDictionary+VLLookup.h"
#include "Simulator/Service/Http/MalformedRequest.h"
#include "Simulator/Service/Http/RequestPayload.h"

namespace vorlane::service {
namespace {

Value optionalIdentifier(const Dictionary& payload, const std::string& key) {
    const auto* value = wishedValue(payload, key);
    if (!value) return nullptr;
    if (!value->is_string() && !value->is_number())
        throw MalformedRequest(fmt::format("\"{}\" is neither a string nor a number", key));
    return *value;
}

const Array& optionalList(const Dictionary& payload, const std::string& key) {
    static const Array kNone;
    const auto* value = wishedValue(payload, key);
    if (!value) return kNone;
    if (!value->is_array()) throw MalformedRequest(fmt::format("\"{}\" is not a list", key));
    return value->get_ref<const Array&>();
}

Campaign::Split splitFrom(const Value& element) {
    if (!element.is_object()) throw MalformedRequest("an element of \"splits\" is not an object");
    const auto& payload = element.get_ref<const Dictionary&>();
    requireKnownKeys(payload, {"splitId", "messageText", "sound"});
    return {optionalIdentifier(payload, "splitId"), optionalText(payload, "messageText"),
            optionalText(payload, "sound")};
}

std::string trackingIdFrom(const Value& element) {
    if (!element.is_string()) throw MalformedRequest("an element of \"filteredTrackingIds\" is not a string");
    return element.get<std::string>();
}

Value textOrNull(const std::optional<std::string>& text) { return text ? Value(*text) : Value(); }

}  // namespace

Campaign Campaign::fromPayload(const std::string& token, const Dictionary& payload) {
    requireKnownKeys(payload, {"campaignId", "templateId", "splits", "filteredTrackingIds"});
    Campaign campaign;
    campaign.token = token;
    campaign.campaignId = optionalIdentifier(payload, "campaignId");
    campaign.templateId = optionalIdentifier(payload, "templateId");
    for (const auto& element : optionalList(payload, "splits")) campaign.splits.push_back(splitFrom(element));
    if (campaign.splits.empty()) campaign.splits.emplace_back();
    for (const auto& element : optionalList(payload, "filteredTrackingIds"))
        campaign.filteredTrackingIds.insert(trackingIdFrom(element));
    return campaign;
}

Dictionary Campaign::asDictionary() const {
    Array list;
    for (const auto& split : splits) {
        list.emplace_back(Dictionary{
            {"splitId", split.id}, {"messageText", textOrNull(split.messageText)}, {"sound", textOrNull(split.sound)}});
    }
    return {{"campaignId", campaignId},
            {"templateId", templateId},
            {"splits", Value(std::move(list))},
            {"filteredTrackingIds", Value(Array(filteredTrackingIds.begin(), filteredTrackingIds.end()))}};
}

}  // namespace vorlane::service
