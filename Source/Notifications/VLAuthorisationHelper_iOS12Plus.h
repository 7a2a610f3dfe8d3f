#pragma once

#include "Notifications/VLAuthorisationHelper.h"

namespace vorlane {

/// Platforms from 12 on.
class VLAuthorisationHelper_iOS12Plus : public VLAuthorisationHelper {
public:
    /// Denied, authorised and provisional; anything else is not determined.
    std::int64_t UNAuthStatusToVLAuthStatus(std::int64_t status) const override;
    /// All but critical alerts.
    std::uint64_t VLAuthOptionsToUNAuthOptions(std::uint64_t options) const override;
    bool isProvisionalAuthorisationSupported() const override { return true; }
};

}  // namespace vorlane
