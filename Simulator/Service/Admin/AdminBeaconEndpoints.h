#pragma once

namespace vorlane::service {

class BeaconStore;
class EndpointRouter;

/// Adds the operator's endpoints for what is shown near the beacons of an app, and for the visits and summaries that
/// phones reported. The store has to outlive the router.
void addAdminBeaconEndpoints(EndpointRouter& router, BeaconStore& store);

}  // namespace vorlane::service
