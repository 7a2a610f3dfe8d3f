#pragma once

#include <memory>
#include <string>
#include <vector>

#include "Public/VLValue.h"

namespace vorlane {

class CLBeaconRegion;

/// `vl_regionIdForBeaconRule:` is the identifier of the region that a rule gives: "uuid_major_minor" of the rule's own
/// values as they stand, numbers in decimal, what is absent as "(null)".
std::string vl_regionIdForBeaconRule(const Dictionary& rule);

/// `vl_getRegionId`: "uuid_major_minor" of the region itself, with "*" for a major or minor that it leaves open. What
/// belongs to a region is found by it.
std::string vl_getRegionId(const CLBeaconRegion& region);

/// `vl_findBeaconRegionWithin:` gives the first of the regions that has the same `vl_getRegionId`; null when none has.
std::shared_ptr<CLBeaconRegion> vl_findBeaconRegionWithin(const CLBeaconRegion& region,
                                                          const std::vector<std::shared_ptr<CLBeaconRegion>>& regions);

}  // namespace vorlane
