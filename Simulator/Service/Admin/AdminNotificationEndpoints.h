#pragma once

namespace vorlane::service {

class EndpointRouter;
class ServiceStore;

/// Adds the operator's endpoints for notifications: to list, set and remove campaigns, to list the requests and
/// cancellations of local notifications, and to compose and list pushes. The store must outlive the router.
void addAdminNotificationEndpoints(EndpointRouter& router, ServiceStore& store);

}  // namespace vorlane::service
