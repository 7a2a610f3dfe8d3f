#pragma once

#include <optional>
#include <string>
#include <vector>

namespace vorlane::service {

class EndpointRouter;
class ServiceStore;
struct Placement;

/// Adds interstitial, which gives an app the content of one of its placements. Its path fits much that is meant for
/// others, so it goes last. The store has to outlive the router.
void addInterstitialEndpoints(EndpointRouter& router, ServiceStore& store);

/// What a placement shows in an app: what was set for it, or else the sample page. Nothing when there is neither, and
/// when it was removed.
std::optional<Placement> placementInForce(ServiceStore& store, const std::string& appKey, const std::string& name);

/// Every placement of an app that shows something, by name.
std::vector<Placement> placementsInForce(ServiceStore& store, const std::string& appKey);

}  // namespace vorlane::service
