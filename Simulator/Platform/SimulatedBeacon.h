#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "Simulator/Platform/SimulatedMessage.h"

namespace vorlane {

/// A beacon, or a group of beacons, that the simulated phone's service knows.
struct SimulatedBeacon {
    /// A UUID, in either case.
    std::string uuid = {};
    /// `nullopt`: any major; the minor is then ignored.
    std::optional<std::uint16_t> major = std::nullopt;
    /// `nullopt`: any minor.
    std::optional<std::uint16_t> minor = std::nullopt;
    /// Shown near the beacon; `nullopt`: no message.
    std::optional<SimulatedMessage> message = std::nullopt;
    /// Whether the service wants to know when the phone enters and leaves the region.
    bool reportsVisits = false;
};

}  // namespace vorlane
