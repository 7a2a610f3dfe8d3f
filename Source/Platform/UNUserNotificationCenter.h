#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "Platform/NSError.h"
#include "Public/VLExport.h"

namespace vorlane {

/// The error domain of the notification centre, and its code for an application that may not show notifications.
inline constexpr const char* UNErrorDomain = "UNErrorDomain";
inline constexpr std::int64_t UNErrorCodeNotificationsNotAllowed = 1;

/// What the user allows, in the platform's numbers. Authorisation: 0 not determined, 1 denied, 2 authorised, 3
/// provisional. Settings: 0 not supported, 1 disabled, 2 enabled. Alert style: 0 none, 1 banner, 2 alert.
struct UNNotificationSettings {
    std::int64_t authorizationStatus = 0;
    std::int64_t soundSetting = 0;
    std::int64_t badgeSetting = 0;
    std::int64_t alertSetting = 0;
    std::int64_t notificationCenterSetting = 0;
    std::int64_t lockScreenSetting = 0;
    std::int64_t carPlaySetting = 0;
    std::int64_t alertStyle = 0;

    bool operator==(const UNNotificationSettings&) const = default;
};

/// A group of notifications with the same actions. Actions are not supported.
struct UNNotificationCategory {
    std::string identifier;

    bool operator==(const UNNotificationCategory&) const = default;
};

/// The platform's notification centre: asks the user for permission and reports the settings. Any thread. A handler
/// runs once, on a queue of the centre's choice, never inside the call.
class VORLANE_EXPORT UNUserNotificationCenter {
public:
    using Categories = std::vector<UNNotificationCategory>;
    using AuthorizationHandler = std::function<void(bool granted, std::optional<NSError> error)>;
    using SettingsHandler = std::function<void(const UNNotificationSettings& settings)>;
    using CategoriesHandler = std::function<void(const Categories& categories)>;

    virtual ~UNUserNotificationCenter();

    /// `requestAuthorizationWithOptions:completionHandler:`. Options, as bits: 1 badge, 2 sound, 4 alert, 8 car play,
    /// 16 critical alerts, 32 a link to the application's settings screen, 64 provisional.
    virtual void requestAuthorizationWithOptions(std::uint64_t options, AuthorizationHandler completionHandler) = 0;
    virtual void getNotificationSettingsWithCompletionHandler(SettingsHandler completionHandler) = 0;
    virtual void getNotificationCategoriesWithCompletionHandler(CategoriesHandler completionHandler) = 0;
    virtual void setNotificationCategories(const Categories& categories) = 0;
};

}  // namespace vorlane
