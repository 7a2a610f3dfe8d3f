#pragma once

namespace vorlane::service {

class EndpointRouter;
class ServiceStore;

/// Adds the operator's endpoints for stored devices, sessions, events and tags, and for the configuration of apps. The
/// store must outlive the router.
void addAdminStoreEndpoints(EndpointRouter& router, ServiceStore& store);

}  // namespace vorlane::service
