#pragma once

#include <optional>
#include <string>

#include "Public/VLValue.h"

namespace vorlane::service {

/// A device's push token comes, or goes. A plain value.
struct DeviceRegistration {
    /// False when the token is given back.
    bool isRegistered = true;
    double time = 0;
    std::string appKey;
    std::string trackingId;
    std::string deviceId;
    /// Hexadecimal.
    std::string token;
    std::optional<std::string> platform;
    /// By platform name; nothing when none were sent, as it is when the token is given back.
    std::optional<Dictionary> notificationSettings;
};

}  // namespace vorlane::service
