#include "Simulator/Platform/Internal/RegionCrossings.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "Platform/CLBeaconRegion.h"
#include "Platform/CLCircularRegion.h"
#include "Simulator/Platform/SimulatedLocationManager.h"

namespace vorlane {

namespace {

using RegionEvent = SimulatedLocationManager::RegionEvent;

std::string canonicalUUIDOf(const CLBeacon& beacon) {
    const auto& uuid = beacon.proximityUUID;
    return CLBeaconRegion::isUUID(uuid) ? CLBeaconRegion(uuid, "").proximityUUID() : uuid;
}

std::vector<CLBeacon> beaconsIn(const CLBeaconRegion& region, const std::vector<CLBeacon>& beacons) {
    std::vector<CLBeacon> found;
    std::ranges::copy_if(beacons, std::back_inserter(found), [&region](const CLBeacon& beacon) {
        return beacon.proximityUUID == region.proximityUUID() &&
               region.major().value_or(beacon.major) == beacon.major &&
               region.minor().value_or(beacon.minor) == beacon.minor;
    });
    return found;
}

}  // namespace

RegionCrossings::RegionCrossings(std::shared_ptr<SimulatedLocationManager> locationManager,
                                 std::function<void()> settle)
    : locationManager_(std::move(locationManager)), settle_(std::move(settle)) {}

void RegionCrossings::moveTo(const CLLocation& location) {
    locationManager_->deliverLocations({location});
    settle_();
    for (const auto& region : locationManager_->monitoredRegions()) {
        const auto circle = std::dynamic_pointer_cast<CLCircularRegion>(region);
        if (circle) cross(region, CLDistanceBetween(circle->center(), location.coordinate) <= circle->radius());
    }
}

void RegionCrossings::detectBeacons(std::vector<CLBeacon> beacons) {
    for (auto& beacon : beacons) beacon.proximityUUID = canonicalUUIDOf(beacon);
    for (const auto& region : locationManager_->monitoredRegions()) {
        const auto beaconRegion = std::dynamic_pointer_cast<CLBeaconRegion>(region);
        if (beaconRegion) cross(region, !beaconsIn(*beaconRegion, beacons).empty());
    }
    range(beacons);
}

void RegionCrossings::cross(const std::shared_ptr<CLRegion>& region, bool isInside) {
    if (inside_.contains(region->identifier()) == isInside) return;
    if (isInside) {
        inside_.insert(region->identifier());
    } else {
        inside_.erase(region->identifier());
    }
    locationManager_->deliverRegionEvent(isInside ? RegionEvent::Enter : RegionEvent::Exit, region);
    settle_();
}

void RegionCrossings::range(const std::vector<CLBeacon>& beacons) {
    for (const auto& region : locationManager_->rangedRegions()) {
        auto found = beaconsIn(*region, beacons);
        if (found.empty()) continue;
        locationManager_->deliverRanging(std::move(found), region);
        settle_();
    }
}

}  // namespace vorlane
