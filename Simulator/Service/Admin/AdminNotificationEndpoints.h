#pragma once

namespace vorlane::service {

class EndpointRouter;
class ServiceStore;

/// Adds the operator's endpoints for notifications: to list, set and remove campaigns, to list what local notifications
/// asked for and took back, and to compose pushes and list them. The store has to outlive the router.
void addAdminNotificationEndpoints(EndpointRouter& router, ServiceStore& store);

}  // namespace vorlane::service
