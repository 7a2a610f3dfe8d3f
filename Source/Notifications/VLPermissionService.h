#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "Platform/NSError.h"
#include "Platform/NSOperationQueue.h"
#include "Public/VLPermissions.h"
#include "Public/VLUserNotificationSettings.h"

namespace vorlane {

class CLLocationManager;
class NSObject;
class VLConfigService;
class VLInterstitialService;
class VLRemoteNotificationService;
class VLSettings;
class VLUserNotificationCentre;

/// Asks the user for permissions, with the system's prompt or first with a soft opt-in: an interstitial that explains
/// the request, and whose links then lead to the prompt. One request after another, on a queue that stays closed until
/// the remote configuration is known.
class VLPermissionService : public std::enable_shared_from_this<VLPermissionService> {
public:
    /// `init:locationManager:settings:interstitialService:remoteNotificationService:`. Without a location manager
    /// nobody is asked for a location.
    VLPermissionService(std::shared_ptr<VLUserNotificationCentre> vlUserNotificationCentre,
                        std::shared_ptr<CLLocationManager> locationManager, std::shared_ptr<VLSettings> settings,
                        std::shared_ptr<VLInterstitialService> interstitialService,
                        std::shared_ptr<VLRemoteNotificationService> remoteNotificationService);
    ~VLPermissionService();

    /// `startWithConfig:providesAppNotificationSettings:` reads the interval between soft opt-ins, and opens the queue;
    /// where the configuration asks for provisional notifications and the platform has them, once that is answered. A
    /// later start does the same, and never closes the queue. Any thread.
    void startWithConfig(const VLConfigService& config, bool providesAppNotificationSettings);

    /// `queueSoftOptInForPermission:interstitialViewController:`. An unknown permission is ignored. Any thread.
    void queueSoftOptInForPermission(VLPermissions permission, const std::shared_ptr<NSObject>& viewController);
    /// `queueSystemPromptForPermission:`. An unknown permission is ignored. Any thread.
    void queueSystemPromptForPermission(VLPermissions permission);

    /// `displayNotificationSoftOptInUsingViewController:` waits for what the user allows, which the main queue tells;
    /// not to be called there. Nothing is shown when the platform is shut down meanwhile.
    void displayNotificationSoftOptInUsingViewController(const std::shared_ptr<NSObject>& viewController);
    /// `displayLocationSoftOptInUsingViewController:`
    void displayLocationSoftOptInUsingViewController(const std::shared_ptr<NSObject>& viewController);
    /// `displayLocationInUseSoftOptInUsingViewController:`
    void displayLocationInUseSoftOptInUsingViewController(const std::shared_ptr<NSObject>& viewController);

    /// `displayInterstitialPlacement:permission:viewController:` shows a soft opt-in, unless the last one was asked for
    /// less than `requestTimeLimitSeconds()` ago. One that fails gives way to the system's prompt.
    void displayInterstitialPlacement(const std::string& placement, VLPermissions permission,
                                      const std::shared_ptr<NSObject>& viewController);

    /// `requestNotificationAuthorisationWithProvisionalAuth:completionHandler:` asks the user, and registers what was
    /// allowed. The handler may be empty; it runs once, after that, on any queue.
    void requestNotificationAuthorisationWithProvisionalAuth(bool isProvisional,
                                                             std::function<void()> completionHandler);

    /// The least time between two soft opt-ins: one day, until the configuration says otherwise. Any thread.
    std::int64_t requestTimeLimitSeconds() const { return requestTimeLimitSeconds_; }
    bool providesAppNotificationSettings() const { return providesAppNotificationSettings_; }
    /// Closed until the start. Any thread.
    bool isQueueOpen() const { return !queue_.isSuspended(); }

private:
    void displaySoftOptIn(VLPermissions permission, const std::shared_ptr<NSObject>& viewController);
    void showSystemPrompt(VLPermissions permission);
    std::optional<VLUserNotificationSettings> currentNotificationSettings() const;
    void softOptInEnded(VLPermissions permission, const std::optional<NSError>& error);
    void notificationAuthorisationAnswered(std::int64_t status, const std::optional<NSError>& error,
                                           bool isProvisional);

    // Fixed at construction.
    const std::shared_ptr<VLUserNotificationCentre> vlUserNotificationCentre_;
    const std::shared_ptr<CLLocationManager> locationManager_;
    const std::shared_ptr<VLSettings> settings_;
    const std::shared_ptr<VLInterstitialService> interstitialService_;
    const std::shared_ptr<VLRemoteNotificationService> remoteNotificationService_;
    NSOperationQueue queue_;

    std::atomic<std::int64_t> requestTimeLimitSeconds_;
    std::atomic<bool> providesAppNotificationSettings_ = false;
};

}  // namespace vorlane
