#include "Notifications/VLAuthorisationHelper_iOS12Plus.h"

namespace vorlane {

std::int64_t VLAuthorisationHelper_iOS12Plus::UNAuthStatusToVLAuthStatus(std::int64_t status) const {
    return status >= 1 && status <= 3 ? status : 0;
}

std::uint64_t VLAuthorisationHelper_iOS12Plus::VLAuthOptionsToUNAuthOptions(std::uint64_t options) const {
    constexpr std::uint64_t kKnownOptions = 111;
    return options & kKnownOptions;
}

}  // namespace vorlane
