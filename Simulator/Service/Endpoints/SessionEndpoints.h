#pragma once

namespace vorlane::service {

class EndpointRouter;
class ServiceStore;

/// Adds the requests that report sessions: sessionStart, sessionEnd, changeTrackingId. All forms.
/// The store has to outlive the router.
void addSessionEndpoints(EndpointRouter& router, ServiceStore& store);

}  // namespace vorlane::service
