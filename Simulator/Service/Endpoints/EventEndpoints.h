#pragma once

namespace vorlane::service {

class EndpointRouter;
class ServiceStore;

/// Adds registerEvent, a form.
/// The store has to outlive the router.
void addEventEndpoints(EndpointRouter& router, ServiceStore& store);

}  // namespace vorlane::service
