#pragma once

#include <map>
#include <string>

#include "Simulator/Service/Http/ServiceRequest.h"

namespace vorlane::service {

/// One request on its way through an endpoint.
struct EndpointCall {
    const ServiceRequest& request;
    /// What stood in the path where the endpoint's pattern has names.
    std::map<std::string, std::string> parameters;
    // Whom the request is about, told by the endpoint as far as it finds out; kept with the record of the request.
    std::string appKey;
    std::string trackingId;

    /// Takes the user from the path's "appKey" and "trackingId", which the endpoint's pattern names.
    void readUser() {
        appKey = parameters.at("appKey");
        trackingId = parameters.at("trackingId");
    }
};

}  // namespace vorlane::service
