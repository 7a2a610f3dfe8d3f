#include "Simulator/Demo/Walk.h"

#include <fmt/format.h>

#include <utility>

namespace vorlane::demo {

namespace {

constexpr double kAccuracy = 5;
// The reach of a beacon, in metres.
constexpr double kHearing = 30;

/// 1 immediate, 2 near, 3 far.
int proximityAt(double metres) {
    if (metres < 1) return 1;
    return metres < 4 ? 2 : 3;
}

/// Whether the region has no such number or this one.
bool fits(const Value& region, const char* key, std::uint16_t number) {
    return !region.contains(key) || region.at(key) == Value(number);
}

}  // namespace

Walk::Walk(Stage& stage, std::vector<WaysideBeacon> beacons) : stage_(stage), beacons_(std::move(beacons)) {}

void Walk::step(const std::string& where, double seconds, CLLocationCoordinate2D place) {
    stage_.wait(seconds);
    const Value position =
        Dictionary{{"latitude", place.latitude}, {"longitude", place.longitude}, {"horizontalAccuracy", kAccuracy}};
    stage_.play(fmt::format("{} ({:.4f}, {:.4f})", where, place.latitude, place.longitude),
                {{"do", "location"}, {"locations", Value(Array{position})}});
    const auto watched = query("monitoredRegions");
    for (const auto& region : watched) cross(region, isIn(region, place));
    const auto ranged = query("rangedRegions");
    for (const auto& region : ranged) {
        const auto beacons = heard(region, place);
        stage_.play(fmt::format("hears {} beacon{}", beacons.size(), beacons.size() == 1 ? "" : "s"),
                    {{"do", "range"}, {"region", region}, {"beacons", Value(beacons)}});
    }
}

void Walk::cross(const Value& region, bool isInside) {
    const auto identifier = region.at("identifier").get<std::string>();
    if (inside_.contains(identifier) == isInside) return;
    if (isInside) {
        inside_.insert(identifier);
    } else {
        inside_.erase(identifier);
    }
    const std::string event = isInside ? "enter" : "exit";
    stage_.play(fmt::format("{}s {}", event, identifier),
                {{"do", "region"}, {"identifier", identifier}, {"event", event}});
}

bool Walk::isIn(const Value& region, CLLocationCoordinate2D place) const {
    if (region.at("type") != Value("circular")) return !heard(region, place).empty();
    const CLLocationCoordinate2D centre{region.at("latitude").get<double>(), region.at("longitude").get<double>()};
    return CLDistanceBetween(centre, place) <= region.at("radius").get<double>();
}

Array Walk::heard(const Value& region, CLLocationCoordinate2D place) const {
    Array list;
    for (const auto& beacon : beacons_) {
        const auto metres = CLDistanceBetween(beacon.place, place);
        const bool belongs = region.at("uuid") == Value(beacon.uuid) && fits(region, "major", beacon.major) &&
                             fits(region, "minor", beacon.minor);
        if (!belongs || metres > kHearing) continue;
        list.emplace_back(Dictionary{{"uuid", beacon.uuid},
                                     {"major", beacon.major},
                                     {"minor", beacon.minor},
                                     {"proximity", proximityAt(metres)},
                                     {"accuracy", metres}});
    }
    return list;
}

Value Walk::query(const std::string& what) const { return stage_.phone().perform({{"do", "query"}, {"what", what}}); }

}  // namespace vorlane::demo
