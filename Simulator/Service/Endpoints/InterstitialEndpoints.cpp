#include "Simulator/Service/Endpoints/InterstitialEndpoints.h"

#include <algorithm>
#include <map>
#include <utility>

#include "Categories/NSDictionary+VLLookup.h"
#include "Simulator/Service/Http/EndpointCall.h"
#include "Simulator/Service/Http/EndpointRouter.h"
#include "Simulator/Service/Http/MalformedRequest.h"
#include "Simulator/Service/Http/RequestPayload.h"
#include "Simulator/Service/Pages/SamplePages.h"
#include "Simulator/Service/Store/Placement.h"
#include "Simulator/Service/Store/ServiceStore.h"

namespace vorlane::service {
namespace {

void requireInterstitialRequest(const Dictionary& payload) {
    if (!boolForKey(payload, "getContent").value_or(false)) throw MalformedRequest("\"getContent\" is not true");
    const auto* interstitial = dictionaryForKey(payload, "interstitial");
    if (!interstitial) throw MalformedRequest("\"interstitial\" is missing or not an object");
    requiredText(*interstitial, "timezone");
}

ServiceResponse interstitial(ServiceStore& store, EndpointCall& call) {
    call.appKey = call.parameters.at("appKey");
    call.trackingId = call.parameters.at("trackingId");
    requireInterstitialRequest(jsonPayload(call.request));
    store.noteUser(call.appKey, call.trackingId);
    const auto placement = placementInForce(store, call.appKey, call.parameters.at("placement"));
    // Without content the answer has no "message".
    if (!placement) return ServiceResponse::ok();
    return ServiceResponse::json(Value(Dictionary{{"message", Value(placement->message())}}));
}

}  // namespace

void addInterstitialEndpoints(EndpointRouter& router, ServiceStore& store) {
    // A tracking id may contain slashes, which are not encoded in the path; the name of a placement has none.
    router.add("interstitial", "POST", "/{appKey}/{trackingId*}/interstitial/{placement}",
               [&store](EndpointCall& call) { return interstitial(store, call); });
}

std::optional<Placement> placementInForce(ServiceStore& store, const std::string& appKey, const std::string& name) {
    auto own = store.placements().placement(appKey, name);
    if (own) return own->html ? std::move(own) : std::nullopt;
    const auto& samples = samplePages();
    const auto sample =
        std::find_if(samples.begin(), samples.end(), [&name](const Placement& page) { return page.name == name; });
    return sample == samples.end() ? std::nullopt : std::optional(*sample);
}

std::vector<Placement> placementsInForce(ServiceStore& store, const std::string& appKey) {
    std::map<std::string, Placement> placements;
    for (const auto& sample : samplePages()) placements[sample.name] = sample;
    for (auto& own : store.placements().placements(appKey)) placements[own.name] = std::move(own);
    std::vector<Placement> shown;
    for (auto& [name, placement] : placements) {
        if (placement.html) shown.push_back(std::move(placement));
    }
    return shown;
}

}  // namespace vorlane::service
