#pragma once

namespace vorlane::service {

class EndpointRouter;
class ServiceStore;

/// Adds MDN, which gives a local notification its phash and its text, and cancelPhash, which takes phashes back.
/// The store has to outlive the router.
void addNotificationEndpoints(EndpointRouter& router, ServiceStore& store);

}  // namespace vorlane::service
