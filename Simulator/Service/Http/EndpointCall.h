#pragma once

#include <map>
#include <string>

#include "Simulator/Service/Http/ServiceRequest.h"

namespace vorlane::service {

/// One request that an endpoint answers.
struct EndpointCall {
    const ServiceRequest& request;
    /// The parts of the path that match the names in the endpoint's pattern.
    std::map<std::string, std::string> parameters;
    // The user that the request concerns, as far as the endpoint can identify the user; recorded with the request.
    std::string appKey;
    std::string trackingId;

    /// Reads the user from "appKey" and "trackingId" in the path, which the endpoint's pattern must name.
    void readUser() {
        appKey = parameters.at("appKey");
        trackingId = parameters.at("trackingId");
    }
};

}  // namespace vorlane::service
