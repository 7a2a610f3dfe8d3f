#pragma once

#include <map>
#include <memory>
#include <string>

#include "Platform/UIApplication.h"

namespace vorlane {

class CLBeaconRegion;
class CLLocationManager;
class VLBeaconRegionSession;
class VLBeaconRegionSessionData;
class VLBeaconRegionSessionsData;
class VLBeaconsConfig;
class VLNotificationHelper;
class VLPayloadBuilder;
class VLSettings;
class VLURLBuilder;
class VLURLSession;

/// The sessions of the beacon regions. A region's session is made at its first event and never removed. Main queue
/// only.
class VLBeaconRegionSessions : public std::enable_shared_from_this<VLBeaconRegionSessions> {
public:
    /// `initWithLocationManager:withSettings:withConfig:withNotificationHelper:urlBuilder:urlSession:payloadBuilder:`,
    /// with the application for its state and for background time.
    VLBeaconRegionSessions(std::weak_ptr<CLLocationManager> locationManager, std::weak_ptr<VLSettings> settings,
                           std::weak_ptr<VLBeaconsConfig> config,
                           std::shared_ptr<VLNotificationHelper> notificationHelper,
                           std::shared_ptr<VLURLBuilder> urlBuilder, std::shared_ptr<VLURLSession> urlSession,
                           std::shared_ptr<VLPayloadBuilder> payloadBuilder,
                           std::shared_ptr<UIApplication> application);
    ~VLBeaconRegionSessions();

    /// `getSessionWithRegion:` returns the session for the region's `vl_getRegionId`, and makes it if there is none.
    /// Returns null if the location manager, the settings or the rules are gone.
    std::shared_ptr<VLBeaconRegionSession> getSessionWithRegion(const std::shared_ptr<CLBeaconRegion>& region);
    /// `getBeaconRegionSessionData:`
    std::shared_ptr<VLBeaconRegionSessionData> getBeaconRegionSessionData(
        const std::shared_ptr<CLBeaconRegion>& region) const;

    /// `startBackgroundTaskExtensionTime:` begins a background task if the region's session is open and no such task is
    /// running. Only its expiry ends it.
    void startBackgroundTaskExtensionTime(const std::shared_ptr<CLBeaconRegion>& region);

private:
    std::shared_ptr<VLBeaconRegionSession> makeSession(const std::shared_ptr<CLBeaconRegion>& region) const;
    void backgroundTaskExpired();

    // Fixed at construction.
    const std::weak_ptr<CLLocationManager> locationManager_;
    const std::weak_ptr<VLSettings> settings_;
    const std::weak_ptr<VLBeaconsConfig> config_;
    const std::shared_ptr<VLNotificationHelper> notificationHelper_;
    const std::shared_ptr<VLURLBuilder> urlBuilder_;
    const std::shared_ptr<VLURLSession> urlSession_;
    const std::shared_ptr<VLPayloadBuilder> payloadBuilder_;
    const std::shared_ptr<UIApplication> application_;
    const std::shared_ptr<VLBeaconRegionSessionsData> regionSessionsData_;
    // Main queue only.
    std::map<std::string, std::shared_ptr<VLBeaconRegionSession>> beaconRegionSessions_;
    UIBackgroundTaskIdentifier rangingBabysitterTask_ = UIBackgroundTaskInvalid;
};

}  // namespace vorlane
