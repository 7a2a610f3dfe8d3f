#pragma once

#include <map>
#include <memory>
#include <string>
#include <tuple>
#include <vector>

#include "Platform/CLBeacon.h"
#include "Platform/CLBeaconRegion.h"

namespace vorlane {

/// Tells for each region that is ranged which of its beacons were heard lately. Its owner guards it.
class BeaconRanger {
public:
    /// How long a beacon is told after it was heard, in seconds.
    static constexpr double kMemory = 5;

    struct Result {
        std::shared_ptr<CLBeaconRegion> region;
        /// The nearest first; those whose distance is not known last.
        std::vector<CLBeacon> beacons;
    };

    /// Ranges the region, in the place of one with its identifier.
    void start(const std::shared_ptr<CLBeaconRegion>& region);
    void stop(const std::string& identifier);
    bool isNeeded() const { return !regions_.empty(); }

    void advertisementArrived(const CLBeacon& beacon, double now);
    /// One result for each region, also without any beacon.
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
