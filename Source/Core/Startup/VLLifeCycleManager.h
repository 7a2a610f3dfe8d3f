#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Platform/NSNotificationCenter.h"
#include "Public/VLSDKOptions.h"
#include "Public/VLValue.h"

namespace vorlane {

class NSBundle;
class NSObject;
class UIApplication;
class VLConfigService;
class VLLocationService;
class VLPermissionService;
class VLSessionService;
class VLSettings;

/// Starts the library, and starts and ends sessions when the application's state changes. Called by the facade and by
/// the notification centre. Main queue only.
class VLLifeCycleManager : public std::enable_shared_from_this<VLLifeCycleManager> {
public:
    /// `initWithSettings:sessionService:locationService:permissionService:configService:`, with the platform's objects.
    /// The services are held weakly because the registry owns them.
    VLLifeCycleManager(std::weak_ptr<VLSettings> settings, std::weak_ptr<VLSessionService> sessionService,
                       std::weak_ptr<VLLocationService> locationService,
                       std::weak_ptr<VLPermissionService> permissionService,
                       std::weak_ptr<VLConfigService> configService,
                       std::shared_ptr<NSNotificationCenter> notificationCenter, std::shared_ptr<NSBundle> mainBundle);
    ~VLLifeCycleManager();

    /// `initialiseSDKWithApplication:launchOptions:sdkOptions:` starts the library. A second call starts it again and
    /// still observes each state once. Throws an `NSException` named "Missing / Invalid Project Key".
    void initialiseSDKWithApplication(const std::shared_ptr<UIApplication>& application,
                                      const std::optional<Dictionary>& launchOptions, const VLSDKOptions& options);

    void applicationDidBecomeActive();
    void applicationDidEnterBackground();
    void applicationWillTerminate();
    void applicationWillEnterForeground();

    bool isAppInForeground() const { return isAppInForeground_; }
    /// The options of the last start-up, even if its app key was refused.
    const VLSDKOptions& options() const { return options_; }

private:
    std::string checkedAppKey() const;
    void observeApplicationStates();
    void observe(const char* notificationName, void (VLLifeCycleManager::*operation)());
    void removeObservers();
    void storePhashOfLaunchNotification(const std::optional<Dictionary>& launchOptions);
    void registerWithPlatform();
    void loadConfig();
    void presentAppOpenInterstitial() const;
    void endSession();

    // Fixed at construction.
    const std::weak_ptr<VLSettings> settings_;
    const std::weak_ptr<VLSessionService> sessionService_;
    const std::weak_ptr<VLLocationService> locationService_;
    const std::weak_ptr<VLPermissionService> permissionService_;
    const std::weak_ptr<VLConfigService> configService_;
    const std::shared_ptr<NSNotificationCenter> notificationCenter_;
    const std::shared_ptr<NSBundle> mainBundle_;
    // Main queue only.
    bool isAppInForeground_ = false;
    VLSDKOptions options_;
    std::shared_ptr<NSObject> appOpenInterstitial_;
    std::weak_ptr<UIApplication> application_;
    std::vector<NSNotificationCenter::Token> observers_;
};

}  // namespace vorlane
