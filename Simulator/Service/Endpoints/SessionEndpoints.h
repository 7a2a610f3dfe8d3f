#pragma once

namespace vorlane::service {

class EndpointRouter;
class ServiceStore;

/// Adds the session reports, which take forms: sessionStart, sessionEnd and changeTrackingId. The store must outlive
/// the router.
void addSessionEndpoints(EndpointRouter& router, ServiceStore& store);

}  // namespace vorlane::service
