#pragma once

#include <fmt/format.h>

#include <string>
#include <vector>

#include "Platform/CLBeaconRegion.h"
#include "Platform/CLLocationManagerDelegate.h"

namespace vorlane {

/// A delegate that records its calls as short strings. Main queue only.
class RecordingLocationDelegate : public CLLocationManagerDelegate {
public:
    const std::vector<std::string>& calls() const { return calls_; }
    void clear() { calls_.clear(); }

    void didUpdateLocations(CLLocationManager& /*manager*/, const std::vector<CLLocation>& locations) override {
        std::string text = "locations";
        for (const auto& location : locations) {
            text += fmt::format(" {},{},{}", location.coordinate.latitude, location.coordinate.longitude,
                                location.horizontalAccuracy);
        }
        calls_.push_back(text);
    }
    void didDetermineState(CLLocationManager& /*manager*/, CLRegionState state,
                           const std::shared_ptr<CLRegion>& region) override {
        calls_.push_back(fmt::format("state {} {}", static_cast<int>(state), region->identifier()));
    }
    void didStartMonitoringForRegion(CLLocationManager& /*manager*/, const std::shared_ptr<CLRegion>& region) override {
        calls_.push_back("started " + region->identifier());
    }
    void monitoringDidFailForRegion(CLLocationManager& /*manager*/, const std::shared_ptr<CLRegion>& region,
                                    const NSError& error) override {
        calls_.push_back(fmt::format("failed {} {} {}", region->identifier(), error.domain(), error.code()));
    }
    void didEnterRegion(CLLocationManager& /*manager*/, const std::shared_ptr<CLRegion>& region) override {
        calls_.push_back("enter " + region->identifier());
    }
    void didExitRegion(CLLocationManager& /*manager*/, const std::shared_ptr<CLRegion>& region) override {
        calls_.push_back("exit " + region->identifier());
    }
    void didRangeBeacons(CLLocationManager& /*manager*/, const std::vector<CLBeacon>& beacons,
                         const std::shared_ptr<CLBeaconRegion>& region) override {
        std::string text = "ranged " + region->identifier();
        for (const auto& beacon : beacons) {
            text += fmt::format(" {}/{}:{}:{}", beacon.major, beacon.minor, static_cast<int>(beacon.proximity),
                                beacon.accuracy);
        }
        calls_.push_back(text);
    }
    void didChangeAuthorizationStatus(CLLocationManager& /*manager*/, CLAuthorizationStatus status) override {
        calls_.push_back(fmt::format("status {}", static_cast<int>(status)));
    }

private:
    std::vector<std::string> calls_;
};

}  // namespace vorlane
