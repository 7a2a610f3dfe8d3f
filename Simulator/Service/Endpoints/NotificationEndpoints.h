#pragma once

namespace vorlane::service {

class EndpointRouter;
class ServiceStore;

/// Adds MDN, which returns the phash and the text of a local notification, and cancelPhash, which takes phashes back.
/// The store must outlive the router.
void addNotificationEndpoints(EndpointRouter& router, ServiceStore& store);

}  // namespace vorlane::service
