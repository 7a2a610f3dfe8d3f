#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "Public/VLExport.h"
#include "Public/VLTypes.h"

namespace vorlane {

/// The name of the platform's default notification sound.
inline constexpr const char* UILocalNotificationDefaultSoundName = "UILocalNotificationDefaultSoundName";

/// A notification that the device itself shows at a given time.
///
/// Each new notification has its own identity, which its copies keep: a scheduled notification can be cancelled by any
/// copy, even if its fields have changed since. `fromDictionary()` makes a new notification.
class VORLANE_EXPORT UILocalNotification {
public:
    UILocalNotification();
    // Defined in the source file, where `Dictionary` is a complete type.
    UILocalNotification(const UILocalNotification&);
    UILocalNotification(UILocalNotification&&) noexcept;
    UILocalNotification& operator=(const UILocalNotification&);
    UILocalNotification& operator=(UILocalNotification&&) noexcept;
    ~UILocalNotification();

    /// Seconds since 1970. A notification without a fire date is due immediately.
    std::optional<double> fireDate;
    /// The name of the time zone of the fire date.
    std::optional<std::string> timeZone;
    std::optional<std::string> alertBody;
    std::optional<std::string> alertAction;
    std::optional<std::string> soundName;
    std::int64_t applicationIconBadgeNumber = 0;
    std::optional<Dictionary> userInfo;

    /// The fields under their own names, without those that are absent. Launch options hold a notification in this
    /// form.
    Dictionary toDictionary() const;
    /// Reads a missing field, and one of the wrong type, as absent.
    static UILocalNotification fromDictionary(const Dictionary& dictionary);

    std::string description() const;

    /// Whether the two have the same identity.
    bool isSameAs(const UILocalNotification& other) const { return identity_ == other.identity_; }
    /// Whether all fields are equal. Does not compare identities.
    bool operator==(const UILocalNotification& other) const;

private:
    /// Finds scheduled notifications by identity.
    friend class ScheduledLocalNotifications;

    std::uint64_t identity_;
    // Made from a dictionary: it represents another object with these fields, possibly of an earlier process.
    bool isReadBack_ = false;
};

}  // namespace vorlane
