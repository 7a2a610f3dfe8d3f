#pragma once

namespace vorlane::service {

class EndpointRouter;
class ServiceStore;

/// Adds the operator's endpoints for what is stored: devices, sessions, events, tags, and each app's configuration.
/// The store has to outlive the router.
void addAdminStoreEndpoints(EndpointRouter& router, ServiceStore& store);

}  // namespace vorlane::service
