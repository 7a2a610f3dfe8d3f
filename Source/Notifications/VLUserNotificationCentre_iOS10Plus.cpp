#include "Notifications/VLUserNotificationCentre_iOS10Plus.h"

#include <fmt/format.h>

#include <utility>

#include "Notifications/VLAuthorisation.h"
#include "Notifications/VLAuthorisationHelper.h"
#include "Notifications/VLBackgroundRefreshHelper.h"
#include "Platform/Platform.h"
#include "Public/VLLog.h"

namespace vorlane {

namespace {

/// The highest value of both platform scales is 2.
std::int64_t knownOrUnknown(std::int64_t value) { return value < 3 ? value : -1; }

}  // namespace

VLUserNotificationCentre_iOS10Plus::VLUserNotificationCentre_iOS10Plus(
    std::shared_ptr<UNUserNotificationCenter> userNotificationCentre, std::weak_ptr<UIApplication> application,
    std::shared_ptr<VLAuthorisationHelper> authorisationHelper,
    std::shared_ptr<VLBackgroundRefreshHelper> backgroundRefreshHelper, std::shared_ptr<VLSettings> settings)
    : userNotificationCentre_(std::move(userNotificationCentre)),
      application_(std::move(application)),
      authorisationHelper_(std::move(authorisationHelper)),
      backgroundRefreshHelper_(std::move(backgroundRefreshHelper)),
      settings_(std::move(settings)) {}

void VLUserNotificationCentre_iOS10Plus::requestNotificationAuthorisation(std::uint64_t options,
                                                                          AuthorisationHandler completionHandler) {
    userNotificationCentre_->requestAuthorizationWithOptions(
        authorisationHelper_->VLAuthOptionsToUNAuthOptions(options),
        [self = shared_from_this(), options, handler = std::move(completionHandler)](
            bool isGranted, const std::optional<NSError>& error) {
            const auto status = self->statusOfAnswer(options, isGranted, error);
            self->setBasicCategory([handler, status, error] {
                if (handler) handler(status, error);
            });
        });
}

std::int64_t VLUserNotificationCentre_iOS10Plus::statusOfAnswer(std::uint64_t options, bool isGranted,
                                                                const std::optional<NSError>& error) const {
    if (isGranted && isProvisionalAuthorisationSupported() && (options & VLAuthorisation::kProvisionalOption) != 0) {
        logMessage(VLLogLevel::Info, "Provisional notification authorisation granted.");
        return VLAuthorisation::Provisional;
    }
    if (isGranted) {
        logMessage(VLLogLevel::Info, "Prominent notification authorisation granted.");
        return VLAuthorisation::Authorised;
    }
    if (error) {
        logMessage(VLLogLevel::Error,
                   fmt::format("Notification authorisation request failed with error: {}", error->description()));
        return VLAuthorisation::NotDetermined;
    }
    logMessage(VLLogLevel::Info, "Notification authorisation request DENIED by user");
    return VLAuthorisation::Denied;
}

/// Adds the library's category to those of the application.
void VLUserNotificationCentre_iOS10Plus::setBasicCategory(std::function<void()> then) {
    userNotificationCentre_->getNotificationCategoriesWithCompletionHandler(
        [self = shared_from_this(), then = std::move(then)](UNUserNotificationCenter::Categories categories) {
            std::erase(categories, UNNotificationCategory{VLBasicNotificationCategory});
            categories.push_back({VLBasicNotificationCategory});
            self->userNotificationCentre_->setNotificationCategories(categories);
            then();
        });
}

void VLUserNotificationCentre_iOS10Plus::getNotificationSettingsWithCompletionHandler(
    SettingsHandler completionHandler) {
    userNotificationCentre_->getNotificationSettingsWithCompletionHandler(
        [self = shared_from_this(),
         handler = std::move(completionHandler)](const UNNotificationSettings& platformSettings) {
            onMainQueue([self, handler, platformSettings] {
                if (handler) handler(self->settingsFrom(platformSettings));
            });
        });
}

VLUserNotificationSettings VLUserNotificationCentre_iOS10Plus::settingsFrom(
    const UNNotificationSettings& platformSettings) const {
    return VLUserNotificationSettings::settingsWithAuthorisation(
        authorisationHelper_->UNAuthStatusToVLAuthStatus(platformSettings.authorizationStatus),
        UNNotifSettingToVLNotifSetting(platformSettings.soundSetting),
        UNNotifSettingToVLNotifSetting(platformSettings.badgeSetting),
        UNNotifSettingToVLNotifSetting(platformSettings.alertSetting),
        backgroundRefreshHelper_->getUIKitBackgroundRefreshSetting(),
        UNNotifSettingToVLNotifSetting(platformSettings.notificationCenterSetting),
        UNNotifSettingToVLNotifSetting(platformSettings.lockScreenSetting),
        UNNotifSettingToVLNotifSetting(platformSettings.carPlaySetting),
        UNAlertStyleToVLAlertStyle(platformSettings.alertStyle));
}

bool VLUserNotificationCentre_iOS10Plus::isProvisionalAuthorisationSupported() const {
    return authorisationHelper_->isProvisionalAuthorisationSupported();
}

std::int64_t VLUserNotificationCentre_iOS10Plus::UNAlertStyleToVLAlertStyle(std::int64_t style) {
    return knownOrUnknown(style);
}

std::int64_t VLUserNotificationCentre_iOS10Plus::UNNotifSettingToVLNotifSetting(std::int64_t setting) {
    return knownOrUnknown(setting);
}

}  // namespace vorlane
