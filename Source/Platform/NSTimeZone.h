#pragma once

#include <cstdint>
#include <string>

namespace vorlane {

/// A time zone at this moment.
struct NSTimeZone {
    /// Its name ("Europe/Oslo"); may be empty when the system does not tell.
    std::string name;
    /// Seconds east of Greenwich now, summer time included.
    std::int64_t secondsFromGMT = 0;
};

}  // namespace vorlane
