#pragma once

#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "Public/VLExport.h"
#include "Public/VLLogger.h"

namespace vorlane {

class NSObject;

/// The options of start-up. A value.
class VORLANE_EXPORT VLSDKOptions {
public:
    /// The options of a released application: log level `Info`.
    static VLSDKOptions defaultOptions();
    /// The options for development: log level `Debug`.
    static VLSDKOptions developmentOptions();

    /// Every option unset, and log level `Off`.
    VLSDKOptions() = default;

    /// The application's project key of 32 characters. `nullopt` stands for "VL_App_Key" of the Info dictionary.
    const std::optional<std::string>& appKey() const { return appKey_; }
    void setAppKey(std::optional<std::string> appKey) { appKey_ = std::move(appKey); }

    /// The view controller of an interstitial that is shown each time the application comes to the foreground: both a
    /// `UIViewController` and a `VLInterstitialViewController`. Null stands for no interstitial. None is shown if a
    /// push notification with an alert has arrived, or a local notification was opened, since the last time.
    const std::shared_ptr<NSObject>& appOpenInterstitial() const { return appOpenInterstitial_; }
    void setAppOpenInterstitial(std::shared_ptr<NSObject> viewController) {
        appOpenInterstitial_ = std::move(viewController);
    }

    /// Whether the application has a notification settings screen of its own that the system may link to.
    bool providesAppNotificationSettings() const { return providesAppNotificationSettings_; }
    void setProvidesAppNotificationSettings(bool provides) { providesAppNotificationSettings_ = provides; }

    /// The threshold of the log.
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
