#include "Simulator/Service/Endpoints/NotificationEndpoints.h"

#include <string>
#include <utility>

#include "Categories/NSCharacterSet+VLURLEncoding.h"
#include "Categories/NSDictionary+VLLookup.h"
#include "Categories/NSUUID+VLString.h"
#include "Simulator/Service/Http/EncodedText.h"
#include "Simulator/Service/Http/EndpointCall.h"
#include "Simulator/Service/Http/EndpointRouter.h"
#include "Simulator/Service/Http/MalformedRequest.h"
#include "Simulator/Service/Http/RequestPayload.h"
#include "Simulator/Service/Store/NotificationStore.h"
#include "Simulator/Service/Store/ServiceStore.h"
#include "Simulator/Service/Store/SplitReport.h"

namespace vorlane::service {
namespace {

/// Returns `nullopt` without a campaign.
std::optional<std::string> campaignTokenOf(const Dictionary& payload) {
    const auto* token = valueForKey(payload, "campaigntoken");
    if (!token) return std::nullopt;
    if (!token->is_string()) throw MalformedRequest("\"campaigntoken\" is not a string");
    return token->get<std::string>();
}

std::string decodedPushText(const Dictionary& payload) {
    const auto text = stringForKey(payload, "pushtext");
    if (!text) throw MalformedRequest("\"pushtext\" is missing or not a string");
    auto decoded = stringByRemovingPercentEncoding(*text);
    if (!decoded) throw MalformedRequest("\"pushtext\" is not percent-encoded");
    return std::move(*decoded);
}

SplitReport readSplit(EndpointCall& call) {
    const auto payload = jsonPayload(call.request);
    if (requiredText(payload, "responsetype") != "json") throw MalformedRequest("\"responsetype\" is not \"json\"");
    const auto openedPhash = stringForKey(payload, "phash");
    if (!openedPhash) throw MalformedRequest("\"phash\" is missing or not a string");
    SplitReport split;
    split.time = call.request.time;
    split.trackingId = call.trackingId = requiredText(payload, "trackingid");
    split.campaignToken = campaignTokenOf(payload);
    split.pushText = decodedPushText(payload);
    split.openedPhash = *openedPhash;
    return split;
}

void setUnlessNull(Dictionary& dictionary, const char* key, const Value& value) {
    if (!value.is_null()) dictionary[key] = value;
}

/// Returns what the app shows in place of its own text.
Dictionary answerOf(const Campaign& campaign, const Campaign::Split& choice, const SplitReport& split) {
    Dictionary answer{{"phash", *split.phash},
                      {"messagetext", encodedText(choice.messageText.value_or(split.pushText))}};
    setUnlessNull(answer, "campaignid", campaign.campaignId);
    setUnlessNull(answer, "templateid", campaign.templateId);
    setUnlessNull(answer, "splitid", choice.id);
    if (choice.sound) answer["messagecontent"] = encodedText(jsonText(Value(Dictionary{{"sound", *choice.sound}})));
    return answer;
}

ServiceResponse leaveOut(NotificationStore& store, const SplitReport& split) {
    store.addSplit(split);
    ServiceResponse response;
    response.status = 204;
    return response;
}

ServiceResponse split(NotificationStore& store, EndpointCall& call) {
    auto split = readSplit(call);
    const auto known = split.campaignToken ? store.campaign(*split.campaignToken) : std::nullopt;
    const auto campaign = known ? *known : Campaign::fromPayload("", {});
    if (campaign.filteredTrackingIds.contains(split.trackingId)) return leaveOut(store, split);
    // The texts take turns, so that all are shown equally often.
    const auto turn = known ? static_cast<std::size_t>(store.phashCount(known->token)) : 0;
    const auto& choice = campaign.splits[turn % campaign.splits.size()];
    split.phash = vl_newUUIDString();
    split.splitId = choice.id;
    store.addSplit(split);
    return ServiceResponse::json(Value(answerOf(campaign, choice, split)));
}

ServiceResponse cancelPhash(ServiceStore& store, EndpointCall& call) {
    call.appKey = call.parameters.at("appKey");
    call.trackingId = call.parameters.at("trackingId");
    const auto payload = jsonPayload(call.request);
    const auto* records = arrayForKey(payload, "cancellations");
    if (!records) throw MalformedRequest("\"cancellations\" is missing or not a list");
    for (const auto& record : *records) {
        if (!record.is_object()) throw MalformedRequest("an element of \"cancellations\" is not an object");
    }
    store.noteUser(call.appKey, call.trackingId);
    store.notifications().addCancellations(call.request.time, call.appKey, call.trackingId, *records);
    return ServiceResponse::ok();
}

}  // namespace

void addNotificationEndpoints(EndpointRouter& router, ServiceStore& store) {
    router.add("MDN", "POST", "/message/analytics",
               [&store](EndpointCall& call) { return split(store.notifications(), call); });
    // A tracking id may contain slashes, which are not encoded in the path.
    router.add("cancelPhash", "POST", "/{appKey}/{trackingId*}/phash/cancel",
               [&store](EndpointCall& call) { return cancelPhash(store, call); });
}

}  // namespace vorlane::service
