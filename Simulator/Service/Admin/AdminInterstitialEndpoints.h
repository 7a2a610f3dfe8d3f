#pragma once

namespace vorlane::service {

class EndpointRouter;
class ServiceStore;

/// Adds the operator's endpoints for the content of placements: to list, set and remove it, to view a page, and to
/// restore the sample pages. The store must outlive the router.
void addAdminInterstitialEndpoints(EndpointRouter& router, ServiceStore& store);

}  // namespace vorlane::service
