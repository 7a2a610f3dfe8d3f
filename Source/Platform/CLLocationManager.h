#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "Platform/CLLocationManagerDelegate.h"
#include "Public/VLExport.h"

namespace vorlane {

/// `kCLLocationAccuracyBest`.
inline constexpr double kCLLocationAccuracyBest = -1.0;

/// The kinds of region that a device may be able to monitor.
enum class CLRegionClass { CLRegion, CLCircularRegion, CLBeaconRegion };

/// What the user is doing, as far as it changes how the position is determined. Other numbers are possible.
enum class CLActivityType : std::int64_t { Other = 1, AutomotiveNavigation = 2, Fitness = 3, OtherNavigation = 4 };

/// The platform's location manager: the device's position, the monitored regions, and the user's permission. Any thread
/// may call. The delegate is called on the main queue, never inside a call.
class VORLANE_EXPORT CLLocationManager {
public:
    virtual ~CLLocationManager();

    // The same for every manager of a device.
    virtual bool locationServicesEnabled() const = 0;
    virtual CLAuthorizationStatus authorizationStatus() const = 0;
    virtual bool isMonitoringAvailableForClass(CLRegionClass regionClass) const = 0;
    virtual bool isRangingAvailable() const = 0;

    /// Keeps a weak reference, which the manager never clears by itself.
    virtual void setDelegate(std::weak_ptr<CLLocationManagerDelegate> delegate) = 0;

    /// Prompts the user, unless the status is already determined. The delegate receives the answer as a changed status.
    virtual void requestAlwaysAuthorization() = 0;
    virtual void requestWhenInUseAuthorization() = 0;

    /// Metres, or `kCLLocationAccuracyBest`.
    virtual void setDesiredAccuracy(double metres) = 0;
    virtual void setAllowsBackgroundLocationUpdates(bool allows) = 0;
    virtual CLActivityType activityType() const = 0;

    virtual void startMonitoringSignificantLocationChanges() = 0;
    virtual void stopMonitoringSignificantLocationChanges() = 0;

    /// Monitors the region until it is stopped, also after a restart of the application. Replaces a monitored region
    /// with the same identifier.
    virtual void startMonitoringForRegion(const std::shared_ptr<CLRegion>& region) = 0;
    /// Stops monitoring the region with the same identifier.
    virtual void stopMonitoringForRegion(const std::shared_ptr<CLRegion>& region) = 0;
    /// In no particular order.
    virtual std::vector<std::shared_ptr<CLRegion>> monitoredRegions() const = 0;
    /// The largest radius that can be monitored, in metres.
    virtual double maximumRegionMonitoringDistance() const = 0;
    /// The most regions of one kind that the library monitors at once. 500 unless overridden.
    virtual std::size_t maximumMonitoredRegionCount() const;

    virtual void startRangingBeaconsInRegion(const std::shared_ptr<CLBeaconRegion>& region) = 0;
    virtual void stopRangingBeaconsInRegion(const std::shared_ptr<CLBeaconRegion>& region) = 0;
};

}  // namespace vorlane
