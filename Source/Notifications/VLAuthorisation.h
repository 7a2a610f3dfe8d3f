#pragma once

#include <cstdint>

namespace vorlane {

/// The authorisation scale of VLUserNotificationSettings and the notification centres.
struct VLAuthorisation {
    enum : std::int64_t { prompted = -1, notDetermined = 0, denied = 1, authorised = 2, provisional = 3 };

    /// The bit of a request for notifications that are delivered quietly, without a prompt.
    static constexpr std::uint64_t kProvisionalOption = 64;
};

}  // namespace vorlane
