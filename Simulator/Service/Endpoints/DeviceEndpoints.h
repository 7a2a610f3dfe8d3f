#pragma once

namespace vorlane::service {

class EndpointRouter;
class ServiceStore;

/// Adds deviceRegistration, which registers or removes a device's push token. The store must outlive the router.
void addDeviceEndpoints(EndpointRouter& router, ServiceStore& store);

}  // namespace vorlane::service
