#pragma once

#include <string>

#include "Public/VLValue.h"

namespace vorlane::service {

class EndpointRouter;
class ServiceStore;

/// Adds config, which gives an app its configuration document. The store has to outlive the router.
void addConfigEndpoints(EndpointRouter& router, ServiceStore& store);

/// The document in force for an app: its own, or else one that has every service switched off.
Dictionary configurationInForce(ServiceStore& store, const std::string& appKey);

}  // namespace vorlane::service
