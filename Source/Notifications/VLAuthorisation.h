#pragma once

#include <cstdint>

namespace vorlane {

/// The authorisation scale of VLUserNotificationSettings and the notification centres.
struct VLAuthorisation {
    enum : std::int64_t { Prompted = -1, NotDetermined = 0, Denied = 1, Authorised = 2, Provisional = 3 };

    /// The bit of a request for notifications that are delivered quietly, without a prompt.
    static constexpr std::uint64_t kProvisionalOption = 64;
};

}  // namespace vorlane
