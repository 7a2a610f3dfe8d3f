#pragma once

namespace vorlane::service {

class EndpointRouter;
class GeoStore;

/// Adds the operator's endpoints for the geofences of an app and what is shown on entering and leaving them. The store
/// has to outlive the router.
void addAdminGeoEndpoints(EndpointRouter& router, GeoStore& store);

}  // namespace vorlane::service
