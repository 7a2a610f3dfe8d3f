#pragma once

#include <optional>
#include <string>

#include "Public/VLValue.h"

namespace vorlane {

/// The local notification that the service has for a geofence or a beacon.
struct SimulatedMessage {
    std::string text = {};
    std::optional<std::string> phash = std::nullopt;
    /// The name of a sound resource, without its extension; `nullopt`: the default sound.
    std::optional<std::string> sound = std::nullopt;
    /// Added to the notification's user info.
    Dictionary metadata = {};

    /// The message as the service sends it to the application with this key.
    Dictionary toDictionary(const std::string& appKey) const;
};

}  // namespace vorlane
