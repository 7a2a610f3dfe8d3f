#pragma once

namespace vorlane::service {

class EndpointRouter;
class ServiceStore;

/// Adds deviceRegistration, which takes a device's push token, or takes it back.
/// The store has to outlive the router.
void addDeviceEndpoints(EndpointRouter& router, ServiceStore& store);

}  // namespace vorlane::service
