#pragma once

#include <memory>

#include "Platform/CLBeacon.h"
#include "Platform/CLLocation.h"
#include "Platform/CLRegion.h"
#include "Public/VLValue.h"

namespace vorlane::phone {

class Phone;

/// The region of {"type": "circular", "identifier", "latitude", "longitude", "radius"} or {"type": "beacon",
/// "identifier", "uuid", "major", "minor"}. Throws BadLine.
std::shared_ptr<CLRegion> regionFrom(const Value& value);

/// The beacon of {"uuid", "major", "minor", "proximity", "accuracy"}; without a proximity it is unknown, without an
/// accuracy -1. Throws BadLine.
CLBeacon beaconFrom(const Value& value);

/// The location of {"latitude", "longitude", "horizontalAccuracy", "age"}; without an accuracy or an age they are 0.
/// Throws BadLine.
CLLocation locationFrom(const Value& value, double now);

/// The regions that are monitored, or ranged, as values.
Value monitoredRegions(Phone& phone);
Value rangedRegions(Phone& phone);

}  // namespace vorlane::phone
