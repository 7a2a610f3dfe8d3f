#include "Simulator/Service/Endpoints/BeaconEndpoints.h"

#include <charconv>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "Categories/NSDictionary+VLLookup.h"
#include "Simulator/Service/Endpoints/BeaconPattern.h"
#include "Simulator/Service/Http/EndpointCall.h"
#include "Simulator/Service/Http/EndpointRouter.h"
#include "Simulator/Service/Http/MalformedRequest.h"
#include "Simulator/Service/Http/RequestPayload.h"
#include "Simulator/Service/Store/BeaconSessionReport.h"
#include "Simulator/Service/Store/BeaconSummary.h"
#include "Simulator/Service/Store/ServiceStore.h"

namespace vorlane::service {
namespace {

const Array& requiredList(const Dictionary& payload, const std::string& key) {
    const auto* list = arrayForKey(payload, key);
    if (!list) throw MalformedRequest("\"" + key + "\" is missing or not a list");
    return *list;
}

BeaconPattern beaconOf(const Value& element) {
    if (!element.is_object()) throw MalformedRequest("a beacon is not an object");
    auto beacon = BeaconPattern::fromPayload(element.get_ref<const Dictionary&>());
    if (!beacon.isExact()) throw MalformedRequest("a beacon has no \"*\"");
    return beacon;
}

std::vector<BeaconPattern> beaconsOf(const Array& list) {
    std::vector<BeaconPattern> beacons;
    for (const auto& element : list) beacons.push_back(beaconOf(element));
    return beacons;
}

/// Returns the content of the first beacon that has content.
std::optional<LocalMessage> contentNear(const std::vector<BeaconPattern>& beacons, BeaconStore& store,
                                        const std::string& appKey) {
    for (const auto& beacon : beacons) {
        if (auto message = store.content(appKey, beacon)) return message;
    }
    return std::nullopt;
}

ServiceResponse beaconContent(ServiceStore& store, EndpointCall& call) {
    call.readUser();
    const auto payload = jsonPayload(call.request);
    const auto beacons = beaconsOf(requiredList(payload, "ibeacons"));
    const bool isWanted = boolForKey(payload, "getContent").value_or(false);
    store.noteUser(call.appKey, call.trackingId);
    const auto message = isWanted ? contentNear(beacons, store.beacons(), call.appKey) : std::nullopt;
    // Without content the answer has no "message".
    if (!message) return ServiceResponse::ok();
    return ServiceResponse::json(Value(Dictionary{{"message", Value(message->asTemplate(call.appKey))}}));
}

/// Milliseconds, as a string or a number.
std::int64_t timestampOf(const Dictionary& payload) {
    const auto text = requiredTextOrNumber(payload, "timestamp");
    std::int64_t milliseconds = 0;
    const auto* end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, milliseconds);
    if (result.ec == std::errc() && result.ptr == end && milliseconds >= 0) return milliseconds;
    throw MalformedRequest("\"timestamp\" is not a time in milliseconds");
}

ServiceResponse beaconVisit(bool isEnd, ServiceStore& store, EndpointCall& call) {
    call.readUser();
    const auto payload = jsonPayload(call.request);
    BeaconSessionReport report;
    report.isEnd = isEnd;
    report.appKey = call.appKey;
    report.trackingId = call.trackingId;
    report.sessionId = requiredText(payload, "sessionId");
    report.region = BeaconPattern::fromPayload(payload);
    report.timestamp = timestampOf(payload);
    store.noteUser(call.appKey, call.trackingId);
    store.beacons().addSession(report);
    return ServiceResponse::ok();
}

Array summarisedBeacons(const Dictionary& payload) {
    const auto& beacons = requiredList(payload, "beacons");
    for (const auto& element : beacons) {
        beaconOf(element);
        requiredText(element.get_ref<const Dictionary&>(), "proximity");
    }
    return beacons;
}

ServiceResponse beaconSession(ServiceStore& store, EndpointCall& call) {
    call.readUser();
    const auto payload = jsonPayload(call.request);
    BeaconSummary summary;
    summary.time = call.request.time;
    summary.appKey = call.appKey;
    summary.trackingId = call.trackingId;
    if (valueForKey(payload, "sessionId")) summary.sessionId = requiredText(payload, "sessionId");
    summary.timestamp = timestampOf(payload);
    summary.beacons = summarisedBeacons(payload);
    store.noteUser(call.appKey, call.trackingId);
    store.beacons().addSummary(summary);
    return ServiceResponse::ok();
}

}  // namespace

void addBeaconEndpoints(EndpointRouter& router, ServiceStore& store) {
    // A tracking id may contain slashes, which are not encoded in the path.
    const std::string user = "/{appKey}/{trackingId*}";
    const std::string visit = user + "/session/beacon";
    router.add("beaconContent", "POST", user + "/ibeacon",
               [&store](EndpointCall& call) { return beaconContent(store, call); });
    router.add("beaconEntry", "POST", visit + "/region/entry",
               [&store](EndpointCall& call) { return beaconVisit(false, store, call); });
    router.add("beaconExit", "POST", visit + "/region/exit",
               [&store](EndpointCall& call) { return beaconVisit(true, store, call); });
    router.add("beaconSession", "POST", visit, [&store](EndpointCall& call) { return beaconSession(store, call); });
}

}  // namespace vorlane::service
