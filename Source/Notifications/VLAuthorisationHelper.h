#pragma once

#include <cstdint>

namespace vorlane {

/// The differences between the platform generations that have the notification centre. Stateless; any thread.
class VLAuthorisationHelper {
public:
    virtual ~VLAuthorisationHelper() = default;

    /// `UNAuthStatusToVLAuthStatus:` turns the platform's status into the authorisation scale.
    virtual std::int64_t UNAuthStatusToVLAuthStatus(std::int64_t status) const = 0;
    /// `VLAuthOptionsToUNAuthOptions:` removes the options that the platform does not know.
    virtual std::uint64_t VLAuthOptionsToUNAuthOptions(std::uint64_t options) const = 0;
    virtual bool isProvisionalAuthorisationSupported() const = 0;
};

}  // namespace vorlane
