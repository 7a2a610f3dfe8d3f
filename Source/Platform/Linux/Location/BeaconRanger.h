#pragma once

#include <map>
#include <memory>
#include <string>
#include <tuple>
#include <vector>

#include "Platform/CLBeacon.h"
#include "Platform/CLBeaconRegion.h"

namespace vorlane {

/// Reports for each ranged region which of its beacons were heard recently. Guarded by its owner.
class BeaconRanger {
public:
    /// How long a beacon is reported after it was heard, in seconds.
    static constexpr double kMemory = 5;

    struct Result {
        std::shared_ptr<CLBeaconRegion> region;
        /// Sorted by distance. Beacons of unknown distance are last.
        std::vector<CLBeacon> beacons;
    };

    /// Ranges the region. Replaces a region with the same identifier.
    void start(const std::shared_ptr<CLBeaconRegion>& region);
    void stop(const std::string& identifier);
    bool isNeeded() const { return !regions_.empty(); }

    void advertisementArrived(const CLBeacon& beacon, double now);
    /// Returns one result for each region, including regions without beacons.
    std::vector<Result> results(double now);

private:
    struct Heard {
        CLBeacon beacon;
        double time;
    };
    using Key = std::tuple<std::string, std::uint16_t, std::uint16_t>;

    std::map<std::string, std::shared_ptr<CLBeaconRegion>> regions_;
    std::map<Key, Heard> heard_;
};

}  // namespace vorlane
