#pragma once

#include <optional>
#include <string>
#include <vector>

namespace vorlane::service {

class EndpointRouter;
class ServiceStore;
struct Placement;

/// Adds interstitial, which returns the content of a placement. Its pattern also matches paths of other endpoints, so
/// it must be added last. The store must outlive the router.
void addInterstitialEndpoints(EndpointRouter& router, ServiceStore& store);

/// Returns the effective content of a placement: its own, or the sample page. `nullopt` without either, and for a
/// removed placement.
std::optional<Placement> placementInForce(ServiceStore& store, const std::string& appKey, const std::string& name);

/// Every placement of an app that has content, by name.
std::vector<Placement> placementsInForce(ServiceStore& store, const std::string& appKey);

}  // namespace vorlane::service
