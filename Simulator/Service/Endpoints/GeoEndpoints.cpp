#include "Simulator/Service/Endpoints/GeoEndpoints.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "Categories/NSDictionary+VLLookup.h"
#include "Simulator/Service/Admin/AdminQuery.h"
#include "Simulator/Service/Http/EndpointCall.h"
#include "Simulator/Service/Http/EndpointRouter.h"
#include "Simulator/Service/Http/MalformedRequest.h"
#include "Simulator/Service/Http/RequestPayload.h"
#include "Simulator/Service/Store/ServiceStore.h"

namespace vorlane::service {
namespace {

double degreesInQuery(const ServiceRequest& request, const std::string& name, double most) {
    const auto text = request.queryValue(name).value_or("");
    double degrees = 0;
    const auto* end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, degrees);
    const bool isWhole = result.ec == std::errc() && result.ptr == end;
    // Written so that NaN fails, too.
    if (isWhole && degrees >= -most && degrees <= most) return degrees;
    throw MalformedRequest(fmt::format("\"{}\" is not a number from {} to {}", name, -most, most));
}

/// Returns the nearest `count` regions, nearest first; equally near regions keep their order.
Array nearest(const std::vector<Region>& regions, double latitude, double longitude, std::size_t count) {
    std::vector<std::pair<double, const Region*>> byDistance;
    byDistance.reserve(regions.size());
    for (const auto& region : regions) byDistance.emplace_back(region.distanceTo(latitude, longitude), &region);
    std::stable_sort(byDistance.begin(), byDistance.end(),
                     [](const auto& left, const auto& right) { return left.first < right.first; });
    byDistance.resize(std::min(byDistance.size(), count));
    Array documents;
    documents.reserve(byDistance.size());
    for (const auto& [distance, region] : byDistance) documents.emplace_back(region->document);
    return documents;
}

ServiceResponse geoRegions(ServiceStore& store, EndpointCall& call) {
    call.readUser();
    const auto latitude = degreesInQuery(call.request, "latitude", 90);
    const auto longitude = degreesInQuery(call.request, "longitude", 180);
    const auto count = integerInQuery(call.request, "max");
    if (!count) throw MalformedRequest("\"max\" is missing");
    store.noteUser(call.appKey, call.trackingId);
    auto regions = nearest(store.geo().regions(call.appKey), latitude, longitude, static_cast<std::size_t>(*count));
    return ServiceResponse::json(Value(Dictionary{{"geo_regions", Value(std::move(regions))}}));
}

std::string transitionOf(const Dictionary& region) {
    auto status = requiredText(region, "status");
    if (status != "enter" && status != "exit") throw MalformedRequest("\"status\" is neither \"enter\" nor \"exit\"");
    return status;
}

ServiceResponse geoContent(ServiceStore& store, EndpointCall& call) {
    call.readUser();
    const auto payload = jsonPayload(call.request);
    const auto* region = dictionaryForKey(payload, "geoRegion");
    if (!region) throw MalformedRequest("\"geoRegion\" is missing or not an object");
    const auto segmentId = requiredTextOrNumber(*region, "segmentId");
    const auto transition = transitionOf(*region);
    store.noteUser(call.appKey, call.trackingId);
    const auto message = store.geo().content(call.appKey, segmentId, transition);
    // Without content the answer has no "message".
    if (!message || !boolForKey(payload, "getContent").value_or(false)) return ServiceResponse::ok();
    return ServiceResponse::json(Value(Dictionary{{"message", Value(message->asTemplate(call.appKey))}}));
}

}  // namespace

void addGeoEndpoints(EndpointRouter& router, ServiceStore& store) {
    // A tracking id may contain slashes, which are not encoded in the path.
    const std::string user = "/{appKey}/{trackingId*}";
    router.add("geoRegions", "GET", user + "/geo/regions",
               [&store](EndpointCall& call) { return geoRegions(store, call); });
    router.add("geoContent", "POST", user + "/geo", [&store](EndpointCall& call) { return geoContent(store, call); });
}

}  // namespace vorlane::service
