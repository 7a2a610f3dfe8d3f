#pragma once

#include <memory>
#include <string>
#include <vector>

#include "Platform/CLBeacon.h"
#include "Platform/CLLocation.h"
#include "Platform/CLLocationManagerDelegate.h"
#include "Platform/CLRegion.h"

namespace vorlane {

/// Determines from the data of a back end which of the watched regions the device is in. Each kind of region has its
/// own monitor, which ignores the other kinds. Guarded by its owner. Times are in seconds since 1970.
class RegionMonitor {
public:
    /// A change of a region's state.
    struct Change {
        std::shared_ptr<CLRegion> region;
        CLRegionState state;
        /// Whether the device entered or left the region. False if its state was unknown before.
        bool isCrossing;

        bool operator==(const Change&) const = default;
    };
    using Changes = std::vector<Change>;

    virtual ~RegionMonitor() = default;

    /// Watches the region, starting from its last known state. Replaces a region with the same identifier.
    virtual void watch(const std::shared_ptr<CLRegion>& region, CLRegionState state, double now) = 0;
    virtual void forget(const std::string& identifier) = 0;
    /// Whether any region is watched.
    virtual bool isNeeded() const = 0;

    /// Handles one fix. An invalid fix is ignored.
    virtual Changes positionArrived(const CLLocation& /*position*/) { return {}; }
    virtual Changes advertisementArrived(const CLBeacon& /*beacon*/, double /*now*/) { return {}; }
    /// Called about once a second.
    virtual Changes timePassed(double /*now*/) { return {}; }
};

}  // namespace vorlane
