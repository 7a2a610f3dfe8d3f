#include "Notifications/VLAuthorisationHelper_iOS10To11.h"

namespace vorlane {

std::int64_t VLAuthorisationHelper_iOS10To11::UNAuthStatusToVLAuthStatus(std::int64_t status) const {
    return status == 1 || status == 2 ? status : 0;
}

std::uint64_t VLAuthorisationHelper_iOS10To11::VLAuthOptionsToUNAuthOptions(std::uint64_t options) const {
    constexpr std::uint64_t kKnownOptions = 15;
    return options & kKnownOptions;
}

}  // namespace vorlane
