#pragma once

#include <functional>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "Platform/CLBeacon.h"
#include "Platform/CLLocation.h"

namespace vorlane {

class CLRegion;
class SimulatedLocationManager;

/// Moves the simulated phone between monitored regions: reports positions and beacons to the location manager, and an
/// entry or exit whenever the phone is on the other side of a region's border than before. Main thread only.
class RegionCrossings {
public:
    /// `settle` lets the library react; it is called after each step.
    RegionCrossings(std::shared_ptr<SimulatedLocationManager> locationManager, std::function<void()> settle);

    void moveTo(const CLLocation& location);
    /// `beacons` is everything that the phone receives from now on.
    void detectBeacons(std::vector<CLBeacon> beacons);

private:
    void cross(const std::shared_ptr<CLRegion>& region, bool isInside);
    void range(const std::vector<CLBeacon>& beacons);

    // Fixed at construction.
    const std::shared_ptr<SimulatedLocationManager> locationManager_;
    const std::function<void()> settle_;
    // The identifiers of the regions that the phone is in.
    std::set<std::string> inside_;
};

}  // namespace vorlane
