#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "Public/VLValue.h"
#include "Simulator/Service/Http/ServiceRequest.h"

namespace vorlane::service {

/// A request as the service remembers it. A plain value.
struct RecordedRequest {
    /// 1 for the first since the service started, and one more for each.
    std::int64_t number = 0;
    /// The operation whose endpoint was asked; "unknown" when there is no such endpoint.
    std::string endpoint;
    ServiceRequest request;
    // Whom it was about, as far as that could be read.
    std::string appKey;
    std::string trackingId;
    /// Nothing when no HTTP answer was given.
    std::optional<int> status;
    /// The scripted fault that happened to it; null when there was none.
    Value fault;

    /// All of it as an object, the payload decoded.
    Dictionary asDictionary() const;
};

}  // namespace vorlane::service
