#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "Public/VLValue.h"

namespace vorlane::service {

/// The beacons that a phone ranged during a visit.
struct BeaconSummary {
    double time = 0;
    std::string appKey;
    std::string trackingId;
    /// `nullopt` if no visit was open.
    std::optional<std::string> sessionId;
    /// As in BeaconSessionReport.
    std::int64_t timestamp = 0;
    /// Objects with "uuid", "major", "minor" and "proximity".
    Array beacons;
};

}  // namespace vorlane::service
