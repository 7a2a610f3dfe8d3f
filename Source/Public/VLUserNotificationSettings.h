#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "Public/VLExport.h"
#include "Public/VLTypes.h"

namespace vorlane {

/// What the user allows for notifications. A value.
///
/// | Scale | -1 | 0 | 1 | 2 | 3 |
/// |---|---|---|---|---|---|
/// | authorisation | prompted | not determined | denied | authorised | provisional |
/// | setting | unknown | not supported | disabled | enabled | |
/// | alert style | unknown | none | banner | alert | |
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

    /// `settingsFromDictionary:` reads the dictionary form. A missing or unknown string reads as the value 0 of the
    /// authorisation scale, or -1 of the other scales.
    static VLUserNotificationSettings settingsFromDictionary(const Dictionary& dictionary);
    /// The dictionary form that is stored and sent: nine keys with string values.
    Dictionary toDictionary() const;

    /// `isEqualToSettings:` returns false for `nullopt`.
    bool isEqualToSettings(const std::optional<VLUserNotificationSettings>& other) const;
    bool operator==(const VLUserNotificationSettings&) const = default;
    /// h = 1, then h = 31h + field for each field in order, modulo 2^64.
    std::uint64_t hash() const;

    /// Whether the user sees notifications: authorised or provisional, with the lock screen, the notification centre or
    /// alerts enabled.
    bool willNotificationsBeVisible() const;
    bool isProvisionallyAuthorised() const;

    static std::string authorisationStatusToString(std::int64_t status);
    static std::int64_t stringToAuthorisationStatus(const std::string& string);
    static std::string notificationSettingToString(std::int64_t setting);
    static std::int64_t stringToNotificationSetting(const std::string& string);
    static std::string alertStyleToString(std::int64_t style);
    static std::int64_t stringToAlertStyle(const std::string& string);
};

}  // namespace vorlane
