#pragma once

#include <memory>

#include "Platform/CLBeacon.h"
#include "Platform/CLLocation.h"
#include "Platform/CLRegion.h"
#include "Public/VLValue.h"

namespace vorlane::phone {

class Phone;

/// Reads {"type": "circular", "identifier", "latitude", "longitude", "radius"} or {"type": "beacon", "identifier",
/// "uuid", "major", "minor"}. Throws BadLine.
std::shared_ptr<CLRegion> regionFrom(const Value& value);

/// Reads {"uuid", "major", "minor", "proximity", "accuracy"}; the default proximity is unknown, the default accuracy
/// -1. Throws BadLine.
CLBeacon beaconFrom(const Value& value);

/// Reads {"latitude", "longitude", "horizontalAccuracy", "age"}; accuracy and age default to 0. Throws BadLine.
CLLocation locationFrom(const Value& value, double now);

/// The monitored and the ranged regions.
Value monitoredRegions(Phone& phone);
Value rangedRegions(Phone& phone);

}  // namespace vorlane::phone
