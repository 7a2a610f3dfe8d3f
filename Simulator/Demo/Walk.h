#pragma once

#include <cstdint>
#include <set>
#include <string>
#include <vector>

#include "Platform/CLLocation.h"
#include "Public/VLValue.h"
#include "Simulator/Demo/Stage.h"

namespace vorlane::demo {

/// A beacon beside the way.
struct WaysideBeacon {
    std::string uuid;
    std::uint16_t major;
    std::uint16_t minor;
    CLLocationCoordinate2D place;
};

/// A walk with the phone. The simulated phone computes no region events in this program, so this class plays what the
/// hardware reports: the position at each step, the monitored regions entered or left since the last step, and the
/// beacons in reach.
class Walk {
public:
    /// Starts outside every region.
    Walk(Stage& stage, std::vector<WaysideBeacon> beacons);

    /// Takes `seconds` to go to a place, and writes to the transcript what the phone reports there.
    void step(const std::string& where, double seconds, CLLocationCoordinate2D place);

private:
    void cross(const Value& region, bool isInside);
    bool isIn(const Value& region, CLLocationCoordinate2D place) const;
    /// The beacons in reach of the place that belong to the region, in the form of a ranging result.
    Array heard(const Value& region, CLLocationCoordinate2D place) const;
    Value query(const std::string& what) const;

    Stage& stage_;
    const std::vector<WaysideBeacon> beacons_;
    /// The identifiers of the regions that the phone is in.
    std::set<std::string> inside_;
};

}  // namespace vorlane::demo
