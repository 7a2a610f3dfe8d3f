#pragma once

#include <string>

#include "Public/VLValue.h"

namespace vorlane::service {

class EndpointRouter;
class ServiceStore;

/// Adds config, which returns the configuration document of an app. The store must outlive the router.
void addConfigEndpoints(EndpointRouter& router, ServiceStore& store);

/// Returns the effective document of an app: its own, or a document with every service switched off.
Dictionary configurationInForce(ServiceStore& store, const std::string& appKey);

}  // namespace vorlane::service
