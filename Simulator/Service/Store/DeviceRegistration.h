#pragma once

#include <optional>
#include <string>

#include "Public/VLValue.h"

namespace vorlane::service {

/// The registration or removal of a device's push token.
struct DeviceRegistration {
    /// False: the token is removed.
    bool isRegistered = true;
    double time = 0;
    std::string appKey;
    std::string trackingId;
    std::string deviceId;
    /// Hexadecimal.
    std::string token;
    std::optional<std::string> platform;
    /// By platform name; `nullopt` if none were sent, as with a removal.
    std::optional<Dictionary> notificationSettings;
};

}  // namespace vorlane::service
