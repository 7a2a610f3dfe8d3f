#pragma once

#include <cstdint>
#include <set>
#include <string>
#include <vector>

#include "Platform/CLLocation.h"
#include "Public/VLValue.h"
#include "Simulator/Demo/Stage.h"

namespace vorlane::demo {

/// A beacon by the wayside.
struct WaysideBeacon {
    std::string uuid;
    std::uint16_t major;
    std::uint16_t minor;
    CLLocationCoordinate2D place;
};

/// A walk with the phone. The simulated phone computes nothing of where it is, so this plays what its hardware notices:
/// a position at each step, which watched regions it entered or left since the step before, and which beacons it hears.
class Walk {
public:
    /// Begins outside of everything.
    Walk(Stage& stage, std::vector<WaysideBeacon> beacons);

    /// Goes to a place, which takes some time, and tells in the transcript what the phone notices there.
    void step(const std::string& where, double seconds, CLLocationCoordinate2D place);

private:
    void cross(const Value& region, bool isInside);
    bool isIn(const Value& region, CLLocationCoordinate2D place) const;
    /// The beacons that are heard at the place and belong to the region, as a ranging result has them.
    Array heard(const Value& region, CLLocationCoordinate2D place) const;
    Value query(const std::string& what) const;

    Stage& stage_;
    const std::vector<WaysideBeacon> beacons_;
    /// The identifiers of the regions that the phone is in.
    std::set<std::string> inside_;
};

}  // namespace vorlane::demo
