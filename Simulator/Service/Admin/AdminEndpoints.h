#pragma once

namespace vorlane::service {

class EndpointRouter;
class EngagementService;

/// Adds the operator's endpoints for the running service: its first page, its health, its recorded requests, its
/// faults, and its reset. The service must outlive the router.
void addAdminEndpoints(EndpointRouter& router, EngagementService& service);

}  // namespace vorlane::service
