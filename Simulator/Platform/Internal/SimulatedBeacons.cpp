#include "Simulator/Platform/Internal/SimulatedBeacons.h"

#include <string_view>
#include <utility>

#include "Platform/CLBeaconRegion.h"
#include "Simulator/Platform/RecordedRequest.h"

namespace vorlane {

namespace {

constexpr std::string_view kBeaconContent = "/ibeacon";
constexpr std::string_view kBeaconVisit = "/session/beacon";

Value numberOrAny(const std::optional<std::uint16_t>& number) { return number ? Value(*number) : Value("*"); }

Value ruleOf(const SimulatedBeacon& beacon) {
    return Dictionary{{"type", beacon.reportsVisits ? "message;data" : "message"},
                      {"beacon_type", "ibeacon"},
                      {"uuid", beacon.uuid},
                      {"major", numberOrAny(beacon.major)},
                      {"minor", numberOrAny(beacon.minor)},
                      {"alert_range", "any"}};
}

/// In capitals, as a region and a request have it.
std::string canonicalUUID(const std::string& uuid) {
    return CLBeaconRegion::isUUID(uuid) ? CLBeaconRegion(uuid, "").proximityUUID() : uuid;
}

bool fits(const Value& reported, const char* key, const std::optional<std::uint16_t>& number) {
    return !number || reported.value(key, Value()) == Value(*number);
}

bool matches(const Value& reported, const SimulatedBeacon& beacon) {
    return reported.is_object() && reported.value("uuid", Value()) == Value(beacon.uuid) &&
           fits(reported, "major", beacon.major) && fits(reported, "minor", beacon.minor);
}

/// The number of fields that a beacon fixes.
int exactness(const SimulatedBeacon& beacon) { return (beacon.major ? 1 : 0) + (beacon.minor ? 1 : 0); }

}  // namespace

bool SimulatedBeacons::isFor(const NSURLRequest& request) {
    const auto path = request.URL.path();
    return request.HTTPMethod == "POST" &&
           (path.ends_with(kBeaconContent) || path.find(kBeaconVisit) != std::string::npos);
}

void SimulatedBeacons::add(SimulatedBeacon beacon) {
    beacon.uuid = canonicalUUID(beacon.uuid);
    if (!beacon.major) beacon.minor = std::nullopt;
    const std::lock_guard lock(mutex_);
    std::erase_if(beacons_, [&beacon](const SimulatedBeacon& known) {
        return known.uuid == beacon.uuid && known.major == beacon.major && known.minor == beacon.minor;
    });
    beacons_.push_back(std::move(beacon));
}

bool SimulatedBeacons::isEmpty() const {
    const std::lock_guard lock(mutex_);
    return beacons_.empty();
}

Value SimulatedBeacons::configuration() const {
    Array rules;
    const std::lock_guard lock(mutex_);
    for (const auto& beacon : beacons_) rules.push_back(ruleOf(beacon));
    return Dictionary{{"beacon_data", Value(std::move(rules))}, {"auto_beacon_notify", true}};
}

ScriptedAnswer SimulatedBeacons::answer(const RecordedRequest& request, const std::string& appKey) const {
    const auto payload = request.payload();
    const auto reported = payload.is_object() ? payload.value("ibeacons", Value()) : Value();
    const bool isWanted = payload.is_object() && payload.value("getContent", false);
    const auto message =
        isWanted && reported.is_array() && !reported.empty() ? messageFor(reported.front()) : std::nullopt;
    if (!message) return ScriptedAnswer::withJSON(Dictionary());
    return ScriptedAnswer::withJSON(Dictionary{{"message", Value(message->toDictionary(appKey))}});
}

/// The message of the most exact entry that has one.
std::optional<SimulatedMessage> SimulatedBeacons::messageFor(const Value& reported) const {
    const std::lock_guard lock(mutex_);
    const SimulatedBeacon* best = nullptr;
    for (const auto& beacon : beacons_) {
        if (!beacon.message || !matches(reported, beacon)) continue;
        if (!best || exactness(beacon) > exactness(*best)) best = &beacon;
    }
    return best ? best->message : std::nullopt;
}

}  // namespace vorlane
