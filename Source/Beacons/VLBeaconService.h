#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "Platform/CLBeacon.h"
#include "Platform/CLLocationManagerDelegate.h"

namespace vorlane {

class CLBeaconRegion;
class CLLocationManager;
class VLBeaconRegionSessions;
class VLBeaconsConfig;
class VLConfigService;
class VLSettings;

/// The entry point of the beacon feature. Monitors the beacon regions of the rules, ranges the beacons of a region
/// while the device is in it, and passes each event to the region's session. Called by the location service. Main queue
/// only.
class VLBeaconService {
public:
    /// The flags of `getBeaconsConfig()`.
    static constexpr std::int64_t kConfigDiffers = 0;
    static constexpr std::int64_t kConfigIsStored = 1;
    static constexpr std::int64_t kNoConfig = 2;

    /// Receives the configuration as JSON, or `nullopt` if there is none, and one of the flags above.
    using ConfigHandler = std::function<void(std::optional<std::string> config, std::int64_t flag)>;

    /// `initWithLocationManager:withSettings:withConfigService:withBeaconsConfig:withBeaconRegionSessions:`
    VLBeaconService(std::shared_ptr<CLLocationManager> locationManager, std::shared_ptr<VLSettings> settings,
                    std::shared_ptr<VLConfigService> configService, std::shared_ptr<VLBeaconsConfig> config,
                    std::shared_ptr<VLBeaconRegionSessions> regionSessions);

    /// `getBeaconsConfig:` stores the remote configuration of the beacon feature and monitors the regions of its rules.
    /// Without rules the monitored regions stay, and without a configuration nothing changes. The handler may be empty.
    /// It is called once, before this returns.
    void getBeaconsConfig(const ConfigHandler& handler);

    /// Whether the stored configuration is older than 3600000 seconds or absent.
    bool isConfigStale() const;

    /// `didDetermineState:forRegion:` ignores every state but `Inside`.
    void didDetermineState(CLRegionState state, const std::shared_ptr<CLBeaconRegion>& region);
    /// `didEnterRegion:`
    void didEnterRegion(const std::shared_ptr<CLBeaconRegion>& region);
    /// `rangingBeacons:forRegion:`
    void rangingBeacons(const std::vector<CLBeacon>& beacons, const std::shared_ptr<CLBeaconRegion>& region);
    /// `didExitRegion:`
    void didExitRegion(const std::shared_ptr<CLBeaconRegion>& region);

    /// Starts monitoring the regions of the rules that are not monitored yet, up to the platform's limit, and stops the
    /// beacon regions that no rule covers any more. An open visit in such a region ends. Regions of other kinds are
    /// left alone.
    ///
    /// A rule for messages and a rule for data can name different regions by one identifier, and the platform monitors
    /// one region per identifier. The region of the rule for data is monitored, because a visit under way there would
    /// lose its end if the other region replaced it.
    void addBeaconRegions();

private:
    using Regions = std::vector<std::shared_ptr<CLBeaconRegion>>;

    Regions wantedRegions() const;
    std::set<std::string> stopMonitoringStaleRegions(const Regions& wanted);
    void stopMonitoringStaleRegion(const std::shared_ptr<CLBeaconRegion>& region, bool isCovered);
    Regions withoutReplacedRegions(Regions regions) const;
    void startMonitoring(const Regions& regions, std::size_t slots);

    // Fixed at construction.
    const std::shared_ptr<CLLocationManager> locationManager_;
    const std::shared_ptr<VLSettings> settings_;
    const std::shared_ptr<VLConfigService> configService_;
    const std::shared_ptr<VLBeaconsConfig> config_;
    const std::shared_ptr<VLBeaconRegionSessions> regionSessions_;
};

}  // namespace vorlane
