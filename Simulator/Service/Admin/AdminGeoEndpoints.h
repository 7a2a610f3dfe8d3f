#pragma once

namespace vorlane::service {

class EndpointRouter;
class GeoStore;

/// Adds the operator's endpoints for geofences and their content. The store must outlive the router.
void addAdminGeoEndpoints(EndpointRouter& router, GeoStore& store);

}  // namespace vorlane::service
