#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "Public/VLValue.h"

namespace vorlane::service {

/// A session request: a start, an end, or a change of the tracking id.
struct SessionReport {
    /// "start", "end" or "changeTrackingId".
    std::string kind;
    double time = 0;
    std::string appKey;
    std::string trackingId;
    std::string deviceId;
    std::optional<std::string> sid;
    /// In seconds.
    std::optional<std::int64_t> sessionLength;
    std::optional<std::int64_t> averageSessionLength;
    std::optional<std::string> phash;
    std::optional<std::string> prevTrackingId;
    std::optional<std::string> platform;
    /// The nested device fields; empty without any.
    Dictionary device;
    /// The whole payload as it was sent.
    Dictionary payload;
};

}  // namespace vorlane::service
