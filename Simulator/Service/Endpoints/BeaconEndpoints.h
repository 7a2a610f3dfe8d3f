#pragma once

namespace vorlane::service {

class EndpointRouter;
class ServiceStore;

/// Adds beaconContent, which gives what is shown near a beacon, and the reports of visits to beacon regions:
/// beaconEntry, beaconExit, and beaconSession, a summary of what was ranged. The store has to outlive the router.
void addBeaconEndpoints(EndpointRouter& router, ServiceStore& store);

}  // namespace vorlane::service
