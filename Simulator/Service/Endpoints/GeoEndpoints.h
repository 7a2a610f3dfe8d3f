#pragma once

namespace vorlane::service {

class EndpointRouter;
class ServiceStore;

/// Adds geoRegions, which gives the app's regions nearest to a place, and geoContent, which gives what is shown on
/// entering or leaving one. The store has to outlive the router.
void addGeoEndpoints(EndpointRouter& router, ServiceStore& store);

}  // namespace vorlane::service
