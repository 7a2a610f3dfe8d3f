#pragma once

namespace vorlane::service {

class BeaconStore;
class EndpointRouter;

/// Adds the operator's endpoints for the content of beacons, and for the visits and summaries that phones reported. The
/// store must outlive the router.
void addAdminBeaconEndpoints(EndpointRouter& router, BeaconStore& store);

}  // namespace vorlane::service
