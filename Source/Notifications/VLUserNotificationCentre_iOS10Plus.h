#pragma once

#include <memory>

#include "Notifications/VLUserNotificationCentre.h"
#include "Platform/UNUserNotificationCenter.h"

namespace vorlane {

class UIApplication;
class VLAuthorisationHelper;
class VLBackgroundRefreshHelper;
class VLSettings;

/// Platforms 10 and later, which have a notification centre. Any thread.
class VLUserNotificationCentre_iOS10Plus : public VLUserNotificationCentre,
                                           public std::enable_shared_from_this<VLUserNotificationCentre_iOS10Plus> {
public:
    /// `init:application:authorisationHelper:backgroundRefreshHelper:settings:`
    VLUserNotificationCentre_iOS10Plus(std::shared_ptr<UNUserNotificationCenter> userNotificationCentre,
                                       std::weak_ptr<UIApplication> application,
                                       std::shared_ptr<VLAuthorisationHelper> authorisationHelper,
                                       std::shared_ptr<VLBackgroundRefreshHelper> backgroundRefreshHelper,
                                       std::shared_ptr<VLSettings> settings);

    /// The handler runs on the queue of the platform's answer, after the basic category has been set.
    void requestNotificationAuthorisation(std::uint64_t options, AuthorisationHandler completionHandler) override;
    void getNotificationSettingsWithCompletionHandler(SettingsHandler completionHandler) override;
    bool isProvisionalAuthorisationSupported() const override;

    /// `UNAlertStyleToVLAlertStyle:` and `UNNotifSettingToVLNotifSetting:` return a value below 3 unchanged, and -1
    /// (unknown) for any other.
    static std::int64_t UNAlertStyleToVLAlertStyle(std::int64_t style);
    static std::int64_t UNNotifSettingToVLNotifSetting(std::int64_t setting);

private:
    std::int64_t statusOfAnswer(std::uint64_t options, bool isGranted, const std::optional<NSError>& error) const;
    void setBasicCategory(std::function<void()> then);
    VLUserNotificationSettings settingsFrom(const UNNotificationSettings& platformSettings) const;

    // Fixed at construction.
    const std::shared_ptr<UNUserNotificationCenter> userNotificationCentre_;
    const std::weak_ptr<UIApplication> application_;
    const std::shared_ptr<VLAuthorisationHelper> authorisationHelper_;
    const std::shared_ptr<VLBackgroundRefreshHelper> backgroundRefreshHelper_;
    const std::shared_ptr<VLSettings> settings_;
};

}  // namespace vorlane
