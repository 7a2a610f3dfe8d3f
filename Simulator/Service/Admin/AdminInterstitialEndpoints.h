#pragma once

namespace vorlane::service {

class EndpointRouter;
class ServiceStore;

/// Adds the operator's endpoints for what the placements of an app show: to list, set and remove them, to look at a
/// page, and to go back to the sample pages. The store has to outlive the router.
void addAdminInterstitialEndpoints(EndpointRouter& router, ServiceStore& store);

}  // namespace vorlane::service
