#include "Simulator/Platform/Internal/SimulatedGeofences.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <string_view>
#include <utility>
#include <vector>

#include "Simulator/Platform/RecordedRequest.h"

namespace vorlane {

namespace {

constexpr std::string_view kGeofences = "/geo/regions";
constexpr std::string_view kGeofenceContent = "/geo";

/// The number under the name in the query; 0 without one.
double queryNumber(const NSURL& url, std::string_view name) {
    const auto query = "&" + url.query().value_or("");
    const auto place = query.find("&" + std::string(name) + "=");
    if (place == std::string::npos) return 0;
    double number = 0;
    std::from_chars(query.data() + place + name.size() + 2, query.data() + query.size(), number);
    return number;
}

Value documentOf(const SimulatedGeofence& geofence) {
    return Dictionary{{"id", geofence.identifier},
                      {"latitude", geofence.center.latitude},
                      {"longitude", geofence.center.longitude},
                      {"radius", geofence.radius},
                      {"name", geofence.name},
                      {"plotwise_id", geofence.identifier}};
}

}  // namespace

bool SimulatedGeofences::isFor(const NSURLRequest& request) {
    const auto path = request.URL.path();
    return request.HTTPMethod == "POST" ? path.ends_with(kGeofenceContent) : path.ends_with(kGeofences);
}

void SimulatedGeofences::add(SimulatedGeofence geofence) {
    const std::lock_guard lock(mutex_);
    auto identifier = geofence.identifier;
    geofences_.insert_or_assign(std::move(identifier), std::move(geofence));
}

bool SimulatedGeofences::remove(const std::string& identifier) {
    const std::lock_guard lock(mutex_);
    return geofences_.erase(identifier) > 0;
}

bool SimulatedGeofences::isEmpty() const {
    const std::lock_guard lock(mutex_);
    return geofences_.empty();
}

ScriptedAnswer SimulatedGeofences::answer(const RecordedRequest& request, const std::string& appKey) const {
    if (request.request.HTTPMethod != "POST") return nearest(request.request.URL);
    const auto payload = request.payload();
    const auto message = payload.is_object() ? messageFor(payload.value("geoRegion", Value())) : std::nullopt;
    if (!message) return ScriptedAnswer::withJSON(Dictionary());
    return ScriptedAnswer::withJSON(Dictionary{{"message", Value(message->toDictionary(appKey))}});
}

ScriptedAnswer SimulatedGeofences::nearest(const NSURL& url) const {
    const CLLocationCoordinate2D place{queryNumber(url, "latitude"), queryNumber(url, "longitude")};
    const auto limit = static_cast<std::size_t>(std::clamp(queryNumber(url, "max"), 0.0, 1e6));
    std::vector<std::pair<double, Value>> byDistance;
    {
        const std::lock_guard lock(mutex_);
        for (const auto& [identifier, geofence] : geofences_)
            byDistance.emplace_back(CLDistanceBetween(place, geofence.center), documentOf(geofence));
    }
    std::ranges::stable_sort(byDistance, {}, &std::pair<double, Value>::first);
    Array documents;
    for (auto& [distance, document] : byDistance) {
        if (documents.size() < limit) documents.push_back(std::move(document));
    }
    return ScriptedAnswer::withJSON(Dictionary{{"geo_regions", Value(std::move(documents))}});
}

std::optional<SimulatedMessage> SimulatedGeofences::messageFor(const Value& crossing) const {
    if (!crossing.is_object()) return std::nullopt;
    const std::lock_guard lock(mutex_);
    for (const auto& [identifier, geofence] : geofences_) {
        if (crossing.value("segmentId", Value()) != Value(identifier)) continue;
        return crossing.value("status", Value()) == Value("enter") ? geofence.onEnter : geofence.onExit;
    }
    return std::nullopt;
}

}  // namespace vorlane
