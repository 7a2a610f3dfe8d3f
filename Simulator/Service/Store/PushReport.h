#pragma once

#include <optional>
#include <string>

#include "Public/VLValue.h"

namespace vorlane::service {

/// A push that an operator composed.
struct PushReport {
    double time = 0;
    std::string appKey;
    std::string trackingId;
    std::string deviceId;
    std::string token;
    std::optional<std::string> phash;
    Dictionary payload;
};

}  // namespace vorlane::service
