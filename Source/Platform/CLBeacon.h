#pragma once

#include <cstdint>
#include <string>

namespace vorlane {

/// How near a beacon is. Other numbers are possible.
enum class CLProximity : std::int64_t { Unknown = 0, Immediate = 1, Near = 2, Far = 3 };

/// One beacon in a ranging result.
struct CLBeacon {
    /// In capitals.
    std::string proximityUUID;
    std::uint16_t major = 0;
    std::uint16_t minor = 0;
    CLProximity proximity = CLProximity::Unknown;
    /// Estimated distance in metres, or -1 if unknown.
    double accuracy = -1;

    bool operator==(const CLBeacon&) const = default;
};

}  // namespace vorlane
