#include "Platform/Linux/Location/BeaconRanger.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "Platform/Linux/Location/BeaconRegionMonitor.h"

namespace vorlane {

namespace {

double distanceOf(const CLBeacon& beacon) {
    return beacon.accuracy >= 0 ? beacon.accuracy : std::numeric_limits<double>::infinity();
}

}  // namespace

void BeaconRanger::start(const std::shared_ptr<CLBeaconRegion>& region) { regions_[region->identifier()] = region; }

void BeaconRanger::stop(const std::string& identifier) {
    regions_.erase(identifier);
    if (regions_.empty()) heard_.clear();
}

void BeaconRanger::advertisementArrived(const CLBeacon& beacon, double now) {
    if (isNeeded()) heard_[{beacon.proximityUUID, beacon.major, beacon.minor}] = {beacon, now};
}

std::vector<BeaconRanger::Result> BeaconRanger::results(double now) {
    std::erase_if(heard_, [now](const auto& entry) { return std::abs(now - entry.second.time) > kMemory; });
    std::vector<Result> list;
    for (const auto& [identifier, region] : regions_) {
        Result result{region, {}};
        for (const auto& [key, heard] : heard_) {
            if (contains(*region, heard.beacon)) result.beacons.push_back(heard.beacon);
        }
        std::ranges::stable_sort(result.beacons, {}, distanceOf);
        list.push_back(std::move(result));
    }
    return list;
}

}  // namespace vorlane
