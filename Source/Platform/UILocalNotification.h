#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "Public/VLExport.h"
#include "Public/VLValue.h"

namespace vorlane {

/// A notification that the device shows by itself at a given time.
struct VORLANE_EXPORT UILocalNotification {
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

    bool operator==(const UILocalNotification&) const = default;
};

}  // namespace vorlane
