#pragma once

#include "Notifications/VLAuthorisationHelper.h"

namespace vorlane {

/// Platforms from 10 to below 12.
class VLAuthorisationHelper_iOS10To11 : public VLAuthorisationHelper {
public:
    /// Authorised and denied; anything else is not determined.
    std::int64_t UNAuthStatusToVLAuthStatus(std::int64_t status) const override;
    /// Badge, sound, alert and car play.
    std::uint64_t VLAuthOptionsToUNAuthOptions(std::uint64_t options) const override;
    bool isProvisionalAuthorisationSupported() const override { return false; }
};

}  // namespace vorlane
