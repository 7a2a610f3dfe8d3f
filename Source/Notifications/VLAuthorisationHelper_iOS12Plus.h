#pragma once

#include "Notifications/VLAuthorisationHelper.h"

namespace vorlane {

/// Platforms 12 and later.
class VLAuthorisationHelper_iOS12Plus : public VLAuthorisationHelper {
public:
    /// Denied, authorised and provisional are kept; any other status is "not determined".
    std::int64_t UNAuthStatusToVLAuthStatus(std::int64_t status) const override;
    /// Keeps all options except critical alerts.
    std::uint64_t VLAuthOptionsToUNAuthOptions(std::uint64_t options) const override;
    bool isProvisionalAuthorisationSupported() const override { return true; }
};

}  // namespace vorlane
