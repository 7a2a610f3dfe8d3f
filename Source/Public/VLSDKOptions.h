#pragma once

#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "Public/VLExport.h"
#include "Public/VLLogger.h"

namespace vorlane {

class NSObject;

/// The application's choices at start-up. A value.
class VORLANE_EXPORT VLSDKOptions {
public:
    /// The options of a released application: logs at INFO.
    static VLSDKOptions defaultOptions();
    /// The options to develop with: logs at DEBUG.
    static VLSDKOptions developmentOptions();

    /// Nothing set, and no log at all.
    VLSDKOptions() = default;

    /// The application's project key, 32 characters. Nothing: the Info dictionary's "VL_App_Key" is taken.
    const std::optional<std::string>& appKey() const { return appKey_; }
    void setAppKey(std::optional<std::string> appKey) { appKey_ = std::move(appKey); }

    /// The view controller (a `UIViewController` that is a `VLInterstitialViewController`) of an interstitial that is
    /// shown each time the application comes to the foreground, unless a push notification with an alert arrived, or a
    /// local one was opened, since it last did. Null: none is.
    const std::shared_ptr<NSObject>& appOpenInterstitial() const { return appOpenInterstitial_; }
    void setAppOpenInterstitial(std::shared_ptr<NSObject> viewController) {
        appOpenInterstitial_ = std::move(viewController);
    }

    /// Whether the application has a notification settings screen of its own, which the system may then link to.
    bool providesAppNotificationSettings() const { return providesAppNotificationSettings_; }
    void setProvidesAppNotificationSettings(bool provides) { providesAppNotificationSettings_ = provides; }

    /// The log's threshold.
    VLLogLevel logLevel() const { return logLevel_; }
    void setLogLevel(VLLogLevel level) { logLevel_ = level; }

private:
    void setCommonOptions();

    std::optional<std::string> appKey_;
    std::shared_ptr<NSObject> appOpenInterstitial_;
    bool providesAppNotificationSettings_ = false;
    VLLogLevel logLevel_ = VLLogLevel::Off;
};

}  // namespace vorlane
