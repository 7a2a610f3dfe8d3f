#pragma once

#include <map>

#include "Platform/CLBeaconRegion.h"
#include "Platform/Linux/Location/RegionMonitor.h"

namespace vorlane {

/// Whether a beacon belongs to the region.
bool contains(const CLBeaconRegion& region, const CLBeacon& beacon);

/// Watches beacon regions. The device enters a region at its first advertisement and leaves it after half a minute
/// without any.
class BeaconRegionMonitor : public RegionMonitor {
public:
    /// How long a region may be silent before the device has left it, in seconds.
    static constexpr double kLongestSilence = 30;

    void watch(const std::shared_ptr<CLRegion>& region, CLRegionState state, double now) override;
    void forget(const std::string& identifier) override;
    bool isNeeded() const override { return !regions_.empty(); }
    Changes advertisementArrived(const CLBeacon& beacon, double now) override;
    Changes timePassed(double now) override;

    /// Whether the device is in any region, so that passing time matters.
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
