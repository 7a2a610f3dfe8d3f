#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "Public/VLExport.h"
#include "Public/VLValue.h"

namespace vorlane {

/// What the user has allowed for notifications. A value.
///
/// Authorisation scale: -1 prompted, 0 not determined, 1 denied, 2 authorised, 3 provisional. Setting scale: -1
/// unknown, 0 not supported, 1 disabled, 2 enabled. Alert-style scale: -1 unknown, 0 none, 1 banner, 2 alert.
struct VORLANE_EXPORT VLUserNotificationSettings {
    std::int64_t authorisationStatus = 0;
    std::int64_t sound = 0;
    std::int64_t badge = 0;
    std::int64_t alertSetting = 0;
    std::int64_t silentPush = 0;
    std::int64_t notificationCentre = 0;
    std::int64_t lockScreen = 0;
    std::int64_t carPlay = 0;
    std::int64_t alertStyle = 0;

    /// `settingsWithAuthorisation:sound:badge:alert:silentPush:notificationCentre:lockScreen:carPlay:alertStyle:`
    static VLUserNotificationSettings settingsWithAuthorisation(
        std::int64_t authorisation, std::int64_t sound, std::int64_t badge, std::int64_t alert, std::int64_t silentPush,
        std::int64_t notificationCentre, std::int64_t lockScreen, std::int64_t carPlay, std::int64_t alertStyle);

    /// `settingsFromDictionary:` reads the dictionary form; a missing or unknown text reads as its scale's fallback.
    static VLUserNotificationSettings settingsFromDictionary(const Dictionary& dictionary);
    /// The nine-key form of texts that is stored and sent.
    Dictionary toDictionary() const;

    /// `isEqualToSettings:`; nothing never equals.
    bool isEqualToSettings(const std::optional<VLUserNotificationSettings>& other) const;
    bool operator==(const VLUserNotificationSettings&) const = default;
    /// h = 1, then h = 31h + field for each field in order, wrapping.
    std::uint64_t hash() const;

    /// Authorised or provisional, with the lock screen, the notification centre or alerts enabled.
    bool willNotificationsBeVisible() const;
    bool isProvisionallyAuthorised() const;

    static std::string authorisationStatusToString(std::int64_t status);
    static std::int64_t stringToAuthorisationStatus(const std::string& text);
    static std::string notificationSettingToString(std::int64_t setting);
    static std::int64_t stringToNotificationSetting(const std::string& text);
    static std::string alertStyleToString(std::int64_t style);
    static std::int64_t stringToAlertStyle(const std::string& text);
};

}  // namespace vorlane
