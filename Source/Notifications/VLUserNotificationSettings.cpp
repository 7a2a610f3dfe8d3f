#include "Public/VLUserNotificationSettings.h"

#include "Categories/NSDictionary+VLLookup.h"

namespace vorlane {

namespace {

constexpr std::int64_t kAuthorised = 2;
constexpr std::int64_t kProvisional = 3;
constexpr std::int64_t kSettingEnabled = 2;

/// The string under the key; empty, which is on no scale, if it is missing.
std::string nameForKey(const Dictionary& dictionary, const char* key) {
    return stringForKey(dictionary, key).value_or(std::string());
}

}  // namespace

VLUserNotificationSettings VLUserNotificationSettings::settingsWithAuthorisation(
    std::int64_t authorisation, std::int64_t sound, std::int64_t badge, std::int64_t alert, std::int64_t silentPush,
    std::int64_t notificationCentre, std::int64_t lockScreen, std::int64_t carPlay, std::int64_t alertStyle) {
    return {authorisation, sound, badge, alert, silentPush, notificationCentre, lockScreen, carPlay, alertStyle};
}

VLUserNotificationSettings VLUserNotificationSettings::settingsFromDictionary(const Dictionary& dictionary) {
    const auto setting = [&dictionary](const char* key) {
        return stringToNotificationSetting(nameForKey(dictionary, key));
    };
    return {stringToAuthorisationStatus(nameForKey(dictionary, "authorisation")),
            setting("sound"),
            setting("badge"),
            setting("alert"),
            setting("silent_push"),
            setting("notification_centre"),
            setting("lock_screen"),
            setting("carplay"),
            stringToAlertStyle(nameForKey(dictionary, "alert_style"))};
}

Dictionary VLUserNotificationSettings::toDictionary() const {
    return {{"authorisation", authorisationStatusToString(authorisationStatus)},
            {"sound", notificationSettingToString(sound)},
            {"badge", notificationSettingToString(badge)},
            {"alert", notificationSettingToString(alertSetting)},
            {"silent_push", notificationSettingToString(silentPush)},
            {"notification_centre", notificationSettingToString(notificationCentre)},
            {"lock_screen", notificationSettingToString(lockScreen)},
            {"carplay", notificationSettingToString(carPlay)},
            {"alert_style", alertStyleToString(alertStyle)}};
}

bool VLUserNotificationSettings::isEqualToSettings(const std::optional<VLUserNotificationSettings>& other) const {
    return other && *this == *other;
}

std::uint64_t VLUserNotificationSettings::hash() const {
    std::uint64_t hash = 1;
    for (const auto field : {authorisationStatus, sound, badge, alertSetting, silentPush, notificationCentre,
                             lockScreen, carPlay, alertStyle}) {
        hash = 31 * hash + static_cast<std::uint64_t>(field);
    }
    return hash;
}

bool VLUserNotificationSettings::willNotificationsBeVisible() const {
    const bool isAllowed = authorisationStatus == kAuthorised || authorisationStatus == kProvisional;
    return isAllowed &&
           (lockScreen == kSettingEnabled || notificationCentre == kSettingEnabled || alertSetting == kSettingEnabled);
}

bool VLUserNotificationSettings::isProvisionallyAuthorised() const { return authorisationStatus == kProvisional; }

std::string VLUserNotificationSettings::authorisationStatusToString(std::int64_t status) {
    switch (status) {
        case -1:
            return "prompted";
        case 1:
            return "denied";
        case kAuthorised:
            return "authorised";
        case kProvisional:
            return "provisional";
        default:
            return "not_determined";
    }
}

std::int64_t VLUserNotificationSettings::stringToAuthorisationStatus(const std::string& text) {
    if (text == "authorised") return kAuthorised;
    if (text == "provisional") return kProvisional;
    if (text == "denied") return 1;
    if (text == "prompted") return -1;
    return 0;
}

std::string VLUserNotificationSettings::notificationSettingToString(std::int64_t setting) {
    switch (setting) {
        case 0:
            return "not_supported";
        case 1:
            return "disabled";
        case kSettingEnabled:
            return "enabled";
        default:
            return "unknown";
    }
}

std::int64_t VLUserNotificationSettings::stringToNotificationSetting(const std::string& text) {
    if (text == "enabled") return kSettingEnabled;
    if (text == "disabled") return 1;
    if (text == "not_supported") return 0;
    return -1;
}

std::string VLUserNotificationSettings::alertStyleToString(std::int64_t style) {
    switch (style) {
        case 0:
            return "none";
        case 1:
            return "banner";
        case 2:
            return "alert";
        default:
            return "unknown";
    }
}

std::int64_t VLUserNotificationSettings::stringToAlertStyle(const std::string& text) {
    if (text == "banner") return 1;
    if (text == "none") return 0;
    if (text == "alert") return 2;
    return -1;
}

}  // namespace vorlane
