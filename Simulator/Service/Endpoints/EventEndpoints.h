#pragma once

namespace vorlane::service {

class EndpointRouter;
class ServiceStore;

/// Adds registerEvent, which takes a form. The store must outlive the router.
void addEventEndpoints(EndpointRouter& router, ServiceStore& store);

}  // namespace vorlane::service
