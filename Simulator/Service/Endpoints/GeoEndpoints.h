#pragma once

namespace vorlane::service {

class EndpointRouter;
class ServiceStore;

/// Adds geoRegions, which returns the app's regions nearest to a place, and geoContent, which returns the message for
/// entering or leaving a region. The store must outlive the router.
void addGeoEndpoints(EndpointRouter& router, ServiceStore& store);

}  // namespace vorlane::service
