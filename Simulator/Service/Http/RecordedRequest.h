#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "Public/VLValue.h"
#include "Simulator/Service/Http/ServiceRequest.h"

namespace vorlane::service {

/// A request in the service's log.
struct RecordedRequest {
    /// 1 for the first request after the start of the service, then ascending.
    std::int64_t number = 0;
    /// The name of the endpoint; "unknown" if no endpoint matches.
    std::string endpoint;
    ServiceRequest request;
    // The user that the request concerns, as far as it could be read.
    std::string appKey;
    std::string trackingId;
    /// `nullopt` if no HTTP answer was sent.
    std::optional<int> status;
    /// The scripted fault that was applied, or null.
    Value fault;

    /// All fields as an object, with the payload decoded.
    Dictionary asDictionary() const;
};

}  // namespace vorlane::service
