#pragma once

#include <cstdint>

namespace vorlane {

/// What the user answered about notifications, as VLUserNotificationSettings and the notification centres number it.
struct VLAuthorisation {
    enum : std::int64_t { prompted = -1, notDetermined = 0, denied = 1, authorised = 2, provisional = 3 };

    /// The bit of a request that asks for notifications without asking the user.
    static constexpr std::uint64_t kProvisionalOption = 64;
};

}  // namespace vorlane
