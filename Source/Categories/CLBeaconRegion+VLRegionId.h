#pragma once

#include <memory>
#include <string>
#include <vector>

#include "Public/VLValue.h"

namespace vorlane {

class CLBeaconRegion;

/// `vl_regionIdForBeaconRule:` returns the identifier of a rule's region: "uuid_major_minor" with the rule's values
/// unchanged, numbers in decimal, and "(null)" for an absent value.
std::string vl_regionIdForBeaconRule(const Dictionary& rule);

/// `vl_getRegionId` returns "uuid_major_minor" of the region, with "*" for an absent major or minor. Whatever belongs
/// to a region is stored under it.
std::string vl_getRegionId(const CLBeaconRegion& region);

/// `vl_findBeaconRegionWithin:` returns the first region with the same `vl_getRegionId`, or null.
std::shared_ptr<CLBeaconRegion> vl_findBeaconRegionWithin(const CLBeaconRegion& region,
                                                          const std::vector<std::shared_ptr<CLBeaconRegion>>& regions);

}  // namespace vorlane
