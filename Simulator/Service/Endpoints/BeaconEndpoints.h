#pragma once

namespace vorlane::service {

class EndpointRouter;
class ServiceStore;

/// Adds beaconContent, which returns the message for a beacon, and the reports of visits to beacon regions:
/// beaconEntry, beaconExit, and beaconSession, a summary of the ranged beacons. The store must outlive the router.
void addBeaconEndpoints(EndpointRouter& router, ServiceStore& store);

}  // namespace vorlane::service
