#pragma once

#include <optional>
#include <string>

#include "Public/VLValue.h"

namespace vorlane::service {

/// One event of an app.
struct EventReport {
    double time = 0;
    std::string appKey;
    std::string trackingId;
    std::optional<std::string> deviceId;
    std::optional<std::string> sid;
    std::string type;
    /// A string, or an object of data.
    Value label;
    std::optional<std::string> phash;
    /// The whole payload as it was sent.
    Dictionary payload;
};

}  // namespace vorlane::service
