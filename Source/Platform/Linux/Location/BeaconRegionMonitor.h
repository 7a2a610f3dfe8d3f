#pragma once

#include <map>

#include "Platform/CLBeaconRegion.h"
#include "Platform/Linux/Location/RegionMonitor.h"

namespace vorlane {

/// Whether a beacon belongs to the region.
bool contains(const CLBeaconRegion& region, const CLBeacon& beacon);

/// Watches the surroundings of beacons: the first advertisement that is heard enters a region, and half a minute
/// without any leaves it.
class BeaconRegionMonitor : public RegionMonitor {
public:
    /// How long a region may be silent, in seconds, before it is left.
    static constexpr double kLongestSilence = 30;

    void watch(const std::shared_ptr<CLRegion>& region, CLRegionState state, double now) override;
    void forget(const std::string& identifier) override;
    bool isNeeded() const override { return !regions_.empty(); }
    Changes advertisementArrived(const CLBeacon& beacon, double now) override;
    Changes timePassed(double now) override;

    /// Whether time that passes may change anything.
    bool isInsideAny() const;

private:
    struct Watched {
        std::shared_ptr<CLBeaconRegion> region;
        CLRegionState state;
        double lastHeard;
    };

    std::map<std::string, Watched> regions_;
};

}  // namespace vorlane
