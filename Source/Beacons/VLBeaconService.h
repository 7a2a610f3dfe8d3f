#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
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

/// The entry to the beacon feature: keeps the monitored beacon regions equal to those of the rules, ranges a region's
/// beacons while the device is in it, and hands each event to the region's session. The location service calls it.
/// Main queue only.
class VLBeaconService {
public:
    /// What `getBeaconsConfig()` says of the configuration that it hands over.
    static constexpr std::int64_t kConfigDiffers = 0;
    static constexpr std::int64_t kConfigIsStored = 1;
    static constexpr std::int64_t kNoConfig = 2;

    /// The configuration as JSON text, nothing when there is none; and one of the numbers above.
    using ConfigHandler = std::function<void(std::optional<std::string> config, std::int64_t flag)>;

    /// `initWithLocationManager:withSettings:withConfigService:withBeaconsConfig:withBeaconRegionSessions:`
    VLBeaconService(std::shared_ptr<CLLocationManager> locationManager, std::shared_ptr<VLSettings> settings,
                    std::shared_ptr<VLConfigService> configService, std::shared_ptr<VLBeaconsConfig> config,
                    std::shared_ptr<VLBeaconRegionSessions> regionSessions);

    /// `getBeaconsConfig:` stores the remote configuration of the beacon feature and monitors the regions of its rules;
    /// without rules everything stays monitored as it is, and without a configuration nothing changes at all. The
    /// handler may be empty; it runs once, before this returns.
    void getBeaconsConfig(const ConfigHandler& handler);

    /// Whether the stored configuration is older than 3600000 seconds, or there is none.
    bool isConfigStale() const;

    /// `didDetermineState:forRegion:`; only "inside" leads to anything.
    void didDetermineState(CLRegionState state, const std::shared_ptr<CLBeaconRegion>& region);
    /// `didEnterRegion:`
    void didEnterRegion(const std::shared_ptr<CLBeaconRegion>& region);
    /// `rangingBeacons:forRegion:`
    void rangingBeacons(const std::vector<CLBeacon>& beacons, const std::shared_ptr<CLBeaconRegion>& region);
    /// `didExitRegion:`
    void didExitRegion(const std::shared_ptr<CLBeaconRegion>& region);

    /// Starts to monitor the regions of the rules that are not monitored yet, and stops to monitor the beacon regions
    /// that no rule gives any more. Regions of other kinds are left alone.
    void addBeaconRegions();

private:
    using Regions = std::vector<std::shared_ptr<CLBeaconRegion>>;

    Regions wantedRegions() const;
    void stopMonitoringStaleRegions(Regions& wanted);

    // Fixed at construction.
    const std::shared_ptr<CLLocationManager> locationManager_;
    const std::shared_ptr<VLSettings> settings_;
    const std::shared_ptr<VLConfigService> configService_;
    const std::shared_ptr<VLBeaconsConfig> config_;
    const std::shared_ptr<VLBeaconRegionSessions> regionSessions_;
};

}  // namespace vorlane
