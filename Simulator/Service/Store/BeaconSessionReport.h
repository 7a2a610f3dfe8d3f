#pragma once

#include <cstdint>
#include <string>

#include "Simulator/Service/Endpoints/BeaconPattern.h"

namespace vorlane::service {

/// The start or the end of a visit to a beacon region.
struct BeaconSessionReport {
    bool isEnd = false;
    std::string appKey;
    std::string trackingId;
    std::string sessionId;
    /// "*" for a region without a major or minor.
    BeaconPattern region;
    /// The phone's time, in milliseconds since 1970.
    std::int64_t timestamp = 0;
};

}  // namespace vorlane::service
