#pragma once

#include "Notifications/VLAuthorisationHelper.h"

namespace vorlane {

/// Platforms from 10 up to, but not including, 12.
class VLAuthorisationHelper_iOS10To11 : public VLAuthorisationHelper {
public:
    /// Denied and authorised are kept; any other status is "not determined".
    std::int64_t UNAuthStatusToVLAuthStatus(std::int64_t status) const override;
    /// Keeps badge, sound, alert and car play.
    std::uint64_t VLAuthOptionsToUNAuthOptions(std::uint64_t options) const override;
    bool isProvisionalAuthorisationSupported() const override { return false; }
};

}  // namespace vorlane
