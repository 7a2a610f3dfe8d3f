#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "Geo/VLLocationHelper.h"
#include "Platform/CLLocationManagerDelegate.h"
#include "Platform/UIApplication.h"

namespace vorlane {

class CLLocationManager;
class NSBundle;
class VLBeaconService;
class VLConfigService;
class VLGeoService;
class VLSettings;

/// The one delegate of the platform's location manager. Decides from the configuration, the device and the user's
/// permission whether location features run, and routes what happens to the geo and the beacon service. Main queue
/// only.
class VLLocationService : public CLLocationManagerDelegate, public std::enable_shared_from_this<VLLocationService> {
public:
    /// Whether it was done, as the beacon service tells; true when there was nothing to do.
    using CompletionHandler = std::function<void(bool success)>;
    /// What the device, the configuration and the user allow.
    using AvailabilityHandler = std::function<void(bool isGeoCapable, bool isRangingCapable)>;

    struct Collaborators {
        std::shared_ptr<VLSettings> settings;
        std::shared_ptr<VLConfigService> configService;
        std::shared_ptr<VLBeaconService> beacons;
        std::shared_ptr<CLLocationManager> locationManager;
        std::shared_ptr<VLGeoService> geoService;
        std::shared_ptr<NSBundle> mainBundle;
        std::shared_ptr<UIApplication> application;
    };

    /// `initWithSettings:withConfigService:withBeaconsService:withLocationManager:geoService:`, with the platform's
    /// objects. The service is the manager's delegate from then on.
    static std::shared_ptr<VLLocationService> serviceWith(Collaborators collaborators);
    ~VLLocationService() override;

    /// Switches tracking on or off, as the configuration says. Called once it is there.
    void startWithConfig();
    /// `configureLocationUpdates:`
    void configureLocationUpdates(bool enabled);
    /// `configUpdateWithBeacons:enableSignificantLocationUpdates:withCompletionHandler:`. The handler may be empty. It
    /// runs at once, or when the beacon service has answered; never where the bundle lacks the usage key.
    void configUpdateWithBeacons(bool withBeacons, bool enableSignificantLocationUpdates,
                                 const CompletionHandler& completionHandler);
    /// `checkLocationRegionsAvailableForMonitoring:` calls the handler at once.
    void checkLocationRegionsAvailableForMonitoring(const AvailabilityHandler& handler);
    /// Also forgets the last place that regions were fetched for when it says no, so that the next fetch is not held
    /// back by the distance.
    bool checkGeoRegionMonitoringCapability();
    bool checkBeaconMonitoringCapability() const;
    bool rangingCapable() const;
    /// `startBeaconUpdates:`
    void startBeaconUpdates(const CompletionHandler& handler);

    /// The last decision of `configureLocationUpdates()`.
    bool isLocationTrackingEnabled() const { return isLocationTrackingEnabled_; }

    void didUpdateLocations(CLLocationManager& manager, const std::vector<CLLocation>& locations) override;
    void didDetermineState(CLLocationManager& manager, CLRegionState state,
                           const std::shared_ptr<CLRegion>& region) override;
    void didStartMonitoringForRegion(CLLocationManager& manager, const std::shared_ptr<CLRegion>& region) override;
    void monitoringDidFailForRegion(CLLocationManager& manager, const std::shared_ptr<CLRegion>& region,
                                    const NSError& error) override;
    void didEnterRegion(CLLocationManager& manager, const std::shared_ptr<CLRegion>& region) override;
    void didExitRegion(CLLocationManager& manager, const std::shared_ptr<CLRegion>& region) override;
    void didRangeBeacons(CLLocationManager& manager, const std::vector<CLBeacon>& beacons,
                         const std::shared_ptr<CLBeaconRegion>& region) override;
    void didChangeAuthorizationStatus(CLLocationManager& manager, CLAuthorizationStatus status) override;

private:
    explicit VLLocationService(Collaborators collaborators);

    bool isGeoEnabled() const;
    bool canMonitorGeoRegions() const;
    void updateAfterConfiguration();
    void switchOn(bool beacons, bool significantChanges, const CompletionHandler& completionHandler);
    void beginEnterRegionTask();

    // Fixed at construction.
    const Collaborators with_;
    const VLLocationHelper locationHelper_;
    // Main queue only.
    bool isLocationTrackingEnabled_ = false;
    UIBackgroundTaskIdentifier enterRegionBgTask_ = UIBackgroundTaskInvalid;
};

}  // namespace vorlane
