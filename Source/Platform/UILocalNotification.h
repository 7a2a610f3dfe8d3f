#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "Public/VLExport.h"
#include "Public/VLValue.h"

namespace vorlane {

/// The sound name of the platform's own notification sound.
inline constexpr const char* UILocalNotificationDefaultSoundName = "UILocalNotificationDefaultSoundName";

/// A notification that the device shows by itself at a given time.
///
/// Each one made has an identity of its own, which its copies keep, so that a notification can be cancelled by any of
/// them whatever was changed since. What is read back from a dictionary is a notification of its own.
class VORLANE_EXPORT UILocalNotification {
public:
    UILocalNotification();

    /// Seconds since 1970; nothing means at once.
    std::optional<double> fireDate;
    /// The name of the zone that the fire date is meant in.
    std::optional<std::string> timeZone;
    std::optional<std::string> alertBody;
    std::optional<std::string> alertAction;
    std::optional<std::string> soundName;
    std::int64_t applicationIconBadgeNumber = 0;
    std::optional<Dictionary> userInfo;

    /// The fields under their own names, absent ones left out: the form in which launch options carry a notification.
    Dictionary toDictionary() const;
    /// A field that is missing or of another kind is absent.
    static UILocalNotification fromDictionary(const Dictionary& dictionary);

    std::string description() const;

    /// Whether both are the same notification, or copies of it.
    bool isSameAs(const UILocalNotification& other) const { return identity_ == other.identity_; }
    /// Whether all fields are equal; the identity does not count.
    bool operator==(const UILocalNotification& other) const;

private:
    /// Finds what is scheduled by its identity.
    friend class UIApplication;

    std::uint64_t identity_;
    // Made from a dictionary: it stands for another object with these fields, which may be gone with its process.
    bool isReadBack_ = false;
};

}  // namespace vorlane
