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

/// Asks the user for permissions, either with the system prompt or first with a soft opt-in: an interstitial that
/// explains the request and has links to the prompt. Handles one request after another, on a queue that stays closed
/// until the remote configuration is available.
class VLPermissionService : public std::enable_shared_from_this<VLPermissionService> {
public:
    /// `init:locationManager:settings:interstitialService:remoteNotificationService:`. Without a location manager
    /// the user is never asked for the location.
    VLPermissionService(std::shared_ptr<VLUserNotificationCentre> vlUserNotificationCentre,
                        std::shared_ptr<CLLocationManager> locationManager, std::shared_ptr<VLSettings> settings,
                        std::shared_ptr<VLInterstitialService> interstitialService,
                        std::shared_ptr<VLRemoteNotificationService> remoteNotificationService);
    ~VLPermissionService();

    /// `startWithConfig:providesAppNotificationSettings:` reads the interval between soft opt-ins and opens the queue.
    /// If the configuration asks for provisional notifications and the platform supports them, they are requested
    /// first, and the queue opens with the answer. A later start does the same and never closes the queue. Any thread.
    void startWithConfig(const VLConfigService& config, bool providesAppNotificationSettings);

    /// `queueSoftOptInForPermission:interstitialViewController:`. An unknown permission is ignored. Any thread.
    void queueSoftOptInForPermission(VLPermissions permission, const std::shared_ptr<NSObject>& viewController);
    /// `queueSystemPromptForPermission:`. An unknown permission is ignored. Any thread.
    void queueSystemPromptForPermission(VLPermissions permission);

    /// `displayNotificationSoftOptInUsingViewController:` blocks until the main queue has reported the notification
    /// settings; must not be called on the main queue. Shows nothing if the platform is shut down in the meantime.
    void displayNotificationSoftOptInUsingViewController(const std::shared_ptr<NSObject>& viewController);
    /// `displayLocationSoftOptInUsingViewController:`
    void displayLocationSoftOptInUsingViewController(const std::shared_ptr<NSObject>& viewController);
    /// `displayLocationInUseSoftOptInUsingViewController:`
    void displayLocationInUseSoftOptInUsingViewController(const std::shared_ptr<NSObject>& viewController);

    /// `displayInterstitialPlacement:permission:viewController:` shows a soft opt-in, unless the last one was requested
    /// less than `requestTimeLimitSeconds()` ago. If the soft opt-in fails, the system prompt appears instead.
    void displayInterstitialPlacement(const std::string& placement, VLPermissions permission,
                                      const std::shared_ptr<NSObject>& viewController);

    /// `requestNotificationAuthorisationWithProvisionalAuth:completionHandler:` asks the user and registers the changed
    /// settings. The handler may be empty; it runs once, after the answer was handled, on any queue.
    void requestNotificationAuthorisationWithProvisionalAuth(bool isProvisional,
                                                             std::function<void()> completionHandler);

    /// The minimum time between two soft opt-ins: one day, unless the configuration sets another. Any thread.
    std::int64_t requestTimeLimitSeconds() const { return requestTimeLimitSeconds_; }
    bool providesAppNotificationSettings() const { return providesAppNotificationSettings_; }
    /// False before the start. Any thread.
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

    // Any thread.
    std::atomic<std::int64_t> requestTimeLimitSeconds_;
    std::atomic<bool> providesAppNotificationSettings_ = false;
};

}  // namespace vorlane
