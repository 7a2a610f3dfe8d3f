#pragma once

#include <memory>
#include <string>
#include <vector>

#include "Platform/CLBeacon.h"
#include "Platform/CLLocation.h"
#include "Platform/CLLocationManagerDelegate.h"
#include "Platform/CLRegion.h"

namespace vorlane {

/// Finds out from what a back end receives which of the watched regions the device is in. Each kind of region has a
/// monitor of its own, which ignores the others. Its owner guards it; times are in seconds since 1970.
class RegionMonitor {
public:
    /// A state that is now another one.
    struct Change {
        std::shared_ptr<CLRegion> region;
        CLRegionState state;
        /// The device entered or left the region; false when its state was not known before.
        bool isCrossing;

        bool operator==(const Change&) const = default;
    };
    using Changes = std::vector<Change>;

    virtual ~RegionMonitor() = default;

    /// Watches the region, in the place of one with its identifier, from the state that it was known to be in last.
    virtual void watch(const std::shared_ptr<CLRegion>& region, CLRegionState state, double now) = 0;
    virtual void forget(const std::string& identifier) = 0;
    /// Whether it watches any region.
    virtual bool isNeeded() const = 0;

    /// One fix of the position. One that is not valid is ignored.
    virtual Changes positionArrived(const CLLocation& /*position*/) { return {}; }
    virtual Changes advertisementArrived(const CLBeacon& /*beacon*/, double /*now*/) { return {}; }
    /// To be called about once a second.
    virtual Changes timePassed(double /*now*/) { return {}; }
};

}  // namespace vorlane
