#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "Public/VLValue.h"
#include "Simulator/Service/Endpoints/BeaconPattern.h"

namespace vorlane::service {

/// A visit to a beacon region begins, or ends. A plain value.
struct BeaconSessionReport {
    bool isEnd = false;
    std::string appKey;
    std::string trackingId;
    std::string sessionId;
    /// "*" where the region has none.
    BeaconPattern region;
    /// When, by the phone's clock, in milliseconds since 1970.
    std::int64_t timestamp = 0;
};

/// What a phone ranged during a visit. A plain value.
struct BeaconSummary {
    double time = 0;
    std::string appKey;
    std::string trackingId;
    /// Nothing when the phone had no visit open.
    std::optional<std::string> sessionId;
    /// As in BeaconSessionReport.
    std::int64_t timestamp = 0;
    /// Objects with "uuid", "major", "minor" and "proximity".
    Array beacons;
};

}  // namespace vorlane::service
