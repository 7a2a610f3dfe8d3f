#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "Platform/CLLocationManagerDelegate.h"
#include "Public/VLExport.h"

namespace vorlane {

/// `kCLLocationAccuracyBest`.
inline constexpr double kCLLocationAccuracyBest = -1.0;

/// The kinds of region that a device may be able to watch.
enum class CLRegionClass { CLRegion, CLCircularRegion, CLBeaconRegion };

/// The platform's location manager: the device's position, the regions that it watches, and the user's permission. Any
/// thread may call; the delegate is called on the main queue, never inside a call.
class VORLANE_EXPORT CLLocationManager {
public:
    virtual ~CLLocationManager();

    // The same for every manager of a device.
    virtual bool locationServicesEnabled() const = 0;
    virtual CLAuthorizationStatus authorizationStatus() const = 0;
    virtual bool isMonitoringAvailableForClass(CLRegionClass regionClass) const = 0;
    virtual bool isRangingAvailable() const = 0;

    /// Held weakly; nothing removes it.
    virtual void setDelegate(std::weak_ptr<CLLocationManagerDelegate> delegate) = 0;

    /// Prompts the user, unless the status is already determined. The answer reaches the delegate as a changed status.
    virtual void requestAlwaysAuthorization() = 0;
    virtual void requestWhenInUseAuthorization() = 0;

    /// Metres; `kCLLocationAccuracyBest` for the best there is.
    virtual void setDesiredAccuracy(double metres) = 0;
    virtual void setAllowsBackgroundLocationUpdates(bool allows) = 0;
    /// 1 other, 2 automotive navigation, 3 fitness, 4 other navigation.
    virtual std::int64_t activityType() const = 0;

    virtual void startMonitoringSignificantLocationChanges() = 0;
    virtual void stopMonitoringSignificantLocationChanges() = 0;

    /// Watches the region, also after a restart of the application, until told to stop. One with an identifier that is
    /// watched already takes the other's place.
    virtual void startMonitoringForRegion(const std::shared_ptr<CLRegion>& region) = 0;
    /// Stops watching the region with that one's identifier.
    virtual void stopMonitoringForRegion(const std::shared_ptr<CLRegion>& region) = 0;
    /// In no particular order.
    virtual std::vector<std::shared_ptr<CLRegion>> monitoredRegions() const = 0;
    /// The largest radius that can be watched, in metres.
    virtual double maximumRegionMonitoringDistance() const = 0;

    virtual void startRangingBeaconsInRegion(const std::shared_ptr<CLBeaconRegion>& region) = 0;
    virtual void stopRangingBeaconsInRegion(const std::shared_ptr<CLBeaconRegion>& region) = 0;
};

}  // namespace vorlane
