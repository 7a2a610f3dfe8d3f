#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "Platform/CLBeacon.h"
#include "Platform/CLLocation.h"
#include "Platform/NSError.h"
#include "Public/VLExport.h"

namespace vorlane {

class CLBeaconRegion;
class CLLocationManager;
class CLRegion;

/// Whether the device is in a region.
enum class CLRegionState : std::int64_t { Unknown = 0, Inside = 1, Outside = 2 };

/// The user's permission for location, with the platform's own numbers.
enum class CLAuthorizationStatus : std::int32_t {
    NotDetermined = 0,
    Restricted = 1,
    Denied = 2,
    AuthorizedAlways = 3,
    AuthorizedWhenInUse = 4
};

/// Receives the events of a location manager. Every operation is called on the main queue.
class VORLANE_EXPORT CLLocationManagerDelegate {
public:
    virtual ~CLLocationManagerDelegate();

    virtual void didUpdateLocations(CLLocationManager& manager, const std::vector<CLLocation>& locations) = 0;
    virtual void didDetermineState(CLLocationManager& manager, CLRegionState state,
                                   const std::shared_ptr<CLRegion>& region) = 0;
    virtual void didStartMonitoringForRegion(CLLocationManager& manager, const std::shared_ptr<CLRegion>& region) = 0;
    virtual void monitoringDidFailForRegion(CLLocationManager& manager, const std::shared_ptr<CLRegion>& region,
                                            const NSError& error) = 0;
    virtual void didEnterRegion(CLLocationManager& manager, const std::shared_ptr<CLRegion>& region) = 0;
    virtual void didExitRegion(CLLocationManager& manager, const std::shared_ptr<CLRegion>& region) = 0;
    virtual void didRangeBeacons(CLLocationManager& manager, const std::vector<CLBeacon>& beacons,
                                 const std::shared_ptr<CLBeaconRegion>& region) = 0;
    virtual void didChangeAuthorizationStatus(CLLocationManager& manager, CLAuthorizationStatus status) = 0;
};

}  // namespace vorlane
