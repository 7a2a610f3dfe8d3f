#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "Public/VLValue.h"

namespace vorlane {

/// A push notification for the simulated phone.
struct SimulatedPush {
    /// `nullopt`: a silent push.
    std::optional<std::string> alert = std::nullopt;
    std::optional<std::string> phash = std::nullopt;
    std::optional<std::string> sound = std::nullopt;
    std::optional<std::int64_t> badge = std::nullopt;
    /// Further keys of the payload.
    Dictionary data = {};

    /// The payload as the push transport delivers it.
    Dictionary userInfo() const;
    /// The launch options of an application that the user starts by opening the notification.
    Dictionary launchOptions() const;
};

}  // namespace vorlane
