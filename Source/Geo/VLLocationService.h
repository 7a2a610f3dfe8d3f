#pragma once

#include <functional>
#include <memory>
#include <utility>
#include <vector>

#include "Platform/CLLocationManagerDelegate.h"
#include "Platform/UIApplication.h"

namespace vorlane {

class CLLocationManager;
class NSBundle;
class VLBeaconService;
class VLConfigService;
class VLGeoService;
class VLLocationHelper;
class VLSettings;

/// The delegate of the platform's location manager. Decides from the configuration, the device and the user's
/// permission whether location features run, and routes the events to the geo and beacon services. Main queue only.
class VLLocationService : public CLLocationManagerDelegate, public std::enable_shared_from_this<VLLocationService> {
public:
    /// Receives the result of the beacon service, or true if there was nothing to do.
    using CompletionHandler = std::function<void(bool success)>;
    /// Receives what the device, the configuration and the user allow.
    using AvailabilityHandler = std::function<void(bool isGeoCapable, bool isRangingCapable)>;

    struct Collaborators {
        std::weak_ptr<VLSettings> settings;
        std::weak_ptr<VLConfigService> configService;
        std::shared_ptr<VLBeaconService> beacons;
        std::shared_ptr<CLLocationManager> locationManager;
        std::shared_ptr<VLGeoService> geoService;
        std::shared_ptr<NSBundle> mainBundle;
        std::shared_ptr<UIApplication> application;
    };

    /// `initWithSettings:withConfigService:withBeaconsService:withLocationManager:geoService:`, with the platform's
    /// objects. The service makes itself the manager's delegate.
    static std::shared_ptr<VLLocationService> serviceWith(Collaborators collaborators);
    ~VLLocationService() override;

    /// Switches tracking on or off according to the configuration. Called when the configuration is available.
    void startWithConfig();
    /// `configureLocationUpdates:`
    void configureLocationUpdates(bool enabled);
    /// `configUpdateWithBeacons:enableSignificantLocationUpdates:withCompletionHandler:`. The handler may be empty. It
    /// is called before this returns, but never if the bundle lacks the usage key.
    void configUpdateWithBeacons(bool withBeacons, bool enableSignificantLocationUpdates,
                                 const CompletionHandler& completionHandler);
    /// `checkLocationRegionsAvailableForMonitoring:` calls the handler before it returns.
    void checkLocationRegionsAvailableForMonitoring(const AvailabilityHandler& handler);
    /// If it returns false, it also clears the position of the last fetch, so that the distance does not prevent the
    /// next one.
    bool checkGeoRegionMonitoringCapability();
    bool checkBeaconMonitoringCapability() const;
    bool rangingCapable() const;
    /// `startBeaconUpdates:`
    void startBeaconUpdates(const CompletionHandler& handler);

    /// The last decision of `configureLocationUpdates()`.
    bool isLocationTrackingEnabled() const { return isLocationTrackingEnabled_; }
    void setIsLocationTrackingEnabled(bool isEnabled) { isLocationTrackingEnabled_ = isEnabled; }

    /// Null once the settings are gone.
    std::shared_ptr<VLSettings> settings() const { return collaborators_.settings.lock(); }
    void setSettings(std::weak_ptr<VLSettings> settings) { collaborators_.settings = std::move(settings); }
    /// Null once the service is gone.
    std::shared_ptr<VLConfigService> configService() const { return collaborators_.configService.lock(); }
    void setConfigService(std::weak_ptr<VLConfigService> service) { collaborators_.configService = std::move(service); }

    // The setters require a non-null object. Setting the location manager changes no delegate.

    const std::shared_ptr<VLBeaconService>& beacons() const { return collaborators_.beacons; }
    void setBeacons(std::shared_ptr<VLBeaconService> beacons) { collaborators_.beacons = std::move(beacons); }
    const std::shared_ptr<VLGeoService>& geoService() const { return collaborators_.geoService; }
    void setGeoService(std::shared_ptr<VLGeoService> service) { collaborators_.geoService = std::move(service); }
    const std::shared_ptr<CLLocationManager>& locationManager() const { return collaborators_.locationManager; }
    void setLocationManager(std::shared_ptr<CLLocationManager> manager) {
        collaborators_.locationManager = std::move(manager);
    }
    const std::shared_ptr<VLLocationHelper>& locationHelper() const { return locationHelper_; }
    void setLocationHelper(std::shared_ptr<VLLocationHelper> helper) { locationHelper_ = std::move(helper); }

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

    bool serviceEnabled(const char* name) const;
    bool isGeoEnabled() const;
    bool canMonitorGeoRegions() const;
    void updateAfterConfiguration();
    void switchOn(bool beacons, bool significantChanges, const CompletionHandler& completionHandler);
    void beginEnterRegionTask();

    // Main queue only.
    Collaborators collaborators_;
    std::shared_ptr<VLLocationHelper> locationHelper_;
    bool isLocationTrackingEnabled_ = false;
    UIBackgroundTaskIdentifier enterRegionBgTask_ = UIBackgroundTaskInvalid;
};

}  // namespace vorlane
