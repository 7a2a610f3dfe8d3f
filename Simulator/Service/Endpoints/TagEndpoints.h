#pragma once

namespace vorlane::service {

class EndpointRouter;
class ServiceStore;

/// Adds getTag, updateTag (one tag, or several under "tags") and deleteAllTags. The store must outlive the router.
void addTagEndpoints(EndpointRouter& router, ServiceStore& store);

}  // namespace vorlane::service
