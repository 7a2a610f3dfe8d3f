#pragma once

#include <cstdint>
#include <string>

namespace vorlane {

/// A time zone with its current offset.
struct NSTimeZone {
    /// The name ("Europe/Oslo"); empty if the system does not report one.
    std::string name;
    /// The current offset in seconds east of Greenwich, summer time included.
    std::int64_t secondsFromGMT = 0;
};

}  // namespace vorlane
