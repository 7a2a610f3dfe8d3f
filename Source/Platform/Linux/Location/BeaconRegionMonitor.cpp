#include "Platform/Linux/Location/BeaconRegionMonitor.h"

#include <algorithm>
#include <utility>

namespace vorlane {

bool contains(const CLBeaconRegion& region, const CLBeacon& beacon) {
    return region.proximityUUID() == beacon.proximityUUID && region.major().value_or(beacon.major) == beacon.major &&
           region.minor().value_or(beacon.minor) == beacon.minor;
}

void BeaconRegionMonitor::watch(const std::shared_ptr<CLRegion>& region, CLRegionState state, double now) {
    forget(region->identifier());
    auto beacons = std::dynamic_pointer_cast<CLBeaconRegion>(region);
    if (beacons) regions_[region->identifier()] = {std::move(beacons), state, now};
}

void BeaconRegionMonitor::forget(const std::string& identifier) { regions_.erase(identifier); }

RegionMonitor::Changes BeaconRegionMonitor::advertisementArrived(const CLBeacon& beacon, double now) {
    Changes changes;
    for (auto& [identifier, watched] : regions_) {
        if (!contains(*watched.region, beacon)) continue;
        watched.lastHeard = now;
        if (std::exchange(watched.state, CLRegionState::Inside) == CLRegionState::Inside) continue;
        changes.push_back({watched.region, CLRegionState::Inside, true});
    }
    return changes;
}

RegionMonitor::Changes BeaconRegionMonitor::timePassed(double now) {
    Changes changes;
    for (auto& [identifier, watched] : regions_) {
        // A clock that is set back must not prolong the silence.
        watched.lastHeard = std::min(watched.lastHeard, now);
        if (watched.state != CLRegionState::Inside || now - watched.lastHeard <= kLongestSilence) continue;
        watched.state = CLRegionState::Outside;
        changes.push_back({watched.region, CLRegionState::Outside, true});
    }
    return changes;
}

bool BeaconRegionMonitor::isInsideAny() const {
    return std::ranges::any_of(regions_, [](const auto& entry) { return entry.second.state == CLRegionState::Inside; });
}

}  // namespace vorlane
