#pragma once

#include <optional>
#include <string>

#include "Platform/CLLocation.h"
#include "Simulator/Platform/SimulatedMessage.h"

namespace vorlane {

/// A geofence that the simulated phone's service knows.
struct SimulatedGeofence {
    /// Identifies the geofence; not empty.
    std::string identifier = {};
    CLLocationCoordinate2D center = {};
    /// In metres.
    double radius = 100;
    std::string name = {};
    /// Shown when the phone enters or leaves the circle; `nullopt`: no message.
    std::optional<SimulatedMessage> onEnter = std::nullopt;
    std::optional<SimulatedMessage> onExit = std::nullopt;
};

}  // namespace vorlane
