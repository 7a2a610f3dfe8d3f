#include "Beacons/VLBeaconService.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <utility>

#include "Beacons/VLBeaconRegionSession.h"
#include "Beacons/VLBeaconRegionSessionData.h"
#include "Beacons/VLBeaconRegionSessions.h"
#include "Beacons/VLBeaconsConfig.h"
#include "Beacons/VLBeaconsSettings.h"
#include "Categories/CLBeacon+VLProximity.h"
#include "Categories/CLBeaconRegion+VLRegionId.h"
#include "Categories/NSDate+VLTimestamp.h"
#include "Categories/NSDictionary+VLJSON.h"
#include "Platform/CLBeaconRegion.h"
#include "Platform/CLLocationManager.h"
#include "Platform/Internal/PropertyListFile.h"
#include "Public/VLConstants.h"
#include "Public/VLLog.h"
#include "Tracking/VLConfigService.h"

namespace vorlane {

namespace {

/// Seconds. Intended: more than 41 days, not an hour.
constexpr double kConfigLifetime = 3600000.0;

}  // namespace

VLBeaconService::VLBeaconService(std::shared_ptr<CLLocationManager> locationManager,
                                 std::shared_ptr<VLSettings> settings, std::shared_ptr<VLConfigService> configService,
                                 std::shared_ptr<VLBeaconsConfig> config,
                                 std::shared_ptr<VLBeaconRegionSessions> regionSessions)
    : locationManager_(std::move(locationManager)),
      settings_(std::move(settings)),
      configService_(std::move(configService)),
      config_(std::move(config)),
      regionSessions_(std::move(regionSessions)) {}

void VLBeaconService::getBeaconsConfig(const ConfigHandler& handler) {
    assertMainQueue();
    const auto config = configService_->serviceConfig(VLCONFIGSERVICEBEACON);
    if (config && config_->isBeaconsFound(*config)) addBeaconRegions();
    if (!handler) return;
    if (!config) return handler(std::nullopt, kNoConfig);
    // Intended: always equal, because it was just stored.
    const bool isStored = config == config_->beaconsSettings()->serverConfig();
    handler(vl_asJSON(*config), isStored ? kConfigIsStored : kConfigDiffers);
}

bool VLBeaconService::isConfigStale() const {
    const auto time = config_->beaconsSettings()->lastServerConfigUpdateTime();
    return !time || *time < vl_now() - kConfigLifetime;
}

void VLBeaconService::didDetermineState(CLRegionState state, const std::shared_ptr<CLBeaconRegion>& region) {
    assertMainQueue();
    if (state == CLRegionState::Inside) regionSessions_->startBackgroundTaskExtensionTime(region);
}

void VLBeaconService::didEnterRegion(const std::shared_ptr<CLBeaconRegion>& region) {
    assertMainQueue();
    logMessage(VLLogLevel::Debug, fmt::format("DidEnterRegion called for region:{}", region->description()));
    if (const auto session = regionSessions_->getSessionWithRegion(region)) session->didEnter();
    locationManager_->startRangingBeaconsInRegion(region);
}

void VLBeaconService::rangingBeacons(const std::vector<CLBeacon>& beacons,
                                     const std::shared_ptr<CLBeaconRegion>& region) {
    assertMainQueue();
    logMessage(VLLogLevel::Debug, fmt::format("Beacons Found: {}", vl_description(beacons)));
    if (const auto session = regionSessions_->getSessionWithRegion(region)) session->rangingBeacons(beacons, nullptr);
}

void VLBeaconService::didExitRegion(const std::shared_ptr<CLBeaconRegion>& region) {
    assertMainQueue();
    logMessage(VLLogLevel::Debug, fmt::format("DidExitRegion called for region:{}", region->description()));
    locationManager_->stopRangingBeaconsInRegion(region);
    if (const auto session = regionSessions_->getSessionWithRegion(region)) session->didExit();
}

void VLBeaconService::addBeaconRegions() {
    assertMainQueue();
    const PropertyListFile::Step step;
    const auto wanted = wantedRegions();
    const auto monitored = stopMonitoringStaleRegions(wanted);
    auto missing = withoutReplacedRegions(wanted);
    std::erase_if(missing, [&](const auto& region) { return monitored.contains(vl_getRegionId(*region)); });
    const auto limit = locationManager_->maximumMonitoredRegionCount();
    startMonitoring(missing, limit - std::min(limit, monitored.size()));
}

/// The regions of the rules, each `vl_getRegionId` once.
VLBeaconService::Regions VLBeaconService::wantedRegions() const {
    Regions wanted;
    std::set<std::string> regionIds;
    for (const auto* regions : {&config_->messageBeaconRegions(), &config_->dataBeaconRegions()}) {
        for (const auto& region : *regions) {
            if (regionIds.insert(vl_getRegionId(*region)).second) wanted.push_back(region);
        }
    }
    return wanted;
}

/// Returns the `vl_getRegionId` of each wanted region that is monitored.
std::set<std::string> VLBeaconService::stopMonitoringStaleRegions(const Regions& wanted) {
    std::set<std::string> wantedIds;
    for (const auto& region : wanted) wantedIds.insert(vl_getRegionId(*region));
    std::set<std::string> monitoredIds;
    for (const auto& monitored : locationManager_->monitoredRegions()) {
        const auto region = std::dynamic_pointer_cast<CLBeaconRegion>(monitored);
        if (!region) continue;
        const auto regionId = vl_getRegionId(*region);
        const bool isWanted = wantedIds.contains(regionId);
        if (isWanted && monitoredIds.insert(regionId).second) {
            logMessage(VLLogLevel::Debug,
                       fmt::format("Skipped adding beacon region to monitoring since it's already being monitored:{}",
                                   region->description()));
        } else {
            stopMonitoringStaleRegion(region, isWanted);
        }
    }
    return monitoredIds;
}

/// A covered region is monitored under another identifier too, so that a visit there goes on.
void VLBeaconService::stopMonitoringStaleRegion(const std::shared_ptr<CLBeaconRegion>& region, bool isCovered) {
    locationManager_->stopMonitoringForRegion(region);
    logMessage(VLLogLevel::Debug,
               fmt::format("Stopped monitoring beacon region since it is no longer exists within the beacon rules:{}",
                           region->description()));
    if (isCovered || !regionSessions_->getBeaconRegionSessionData(region)->id()) return;
    locationManager_->stopRangingBeaconsInRegion(region);
    if (const auto session = regionSessions_->getSessionWithRegion(region)) session->didExit();
}

/// Drops the regions that another region with the same identifier would replace: of such regions the one of a rule for
/// data stays, otherwise the last one.
VLBeaconService::Regions VLBeaconService::withoutReplacedRegions(Regions regions) const {
    std::map<std::string, std::string> regionIds;
    for (const auto* list : {&config_->messageBeaconRegions(), &config_->dataBeaconRegions()}) {
        for (const auto& region : *list) regionIds[region->identifier()] = vl_getRegionId(*region);
    }
    std::erase_if(regions,
                  [&](const auto& region) { return regionIds.at(region->identifier()) != vl_getRegionId(*region); });
    return regions;
}

void VLBeaconService::startMonitoring(const Regions& regions, std::size_t slots) {
    const auto count = std::min(slots, regions.size());
    for (std::size_t i = 0; i < count; ++i) {
        regions[i]->setNotifyEntryStateOnDisplay(true);
        locationManager_->startMonitoringForRegion(regions[i]);
        logMessage(VLLogLevel::Debug,
                   fmt::format("Attempting to monitor new beacon region:{}", regions[i]->description()));
    }
    if (count == regions.size()) return;
    logMessage(VLLogLevel::Warn,
               fmt::format("Could not add {} beacon regions for monitoring due to the platform's limit of {} regions",
                           regions.size() - count, locationManager_->maximumMonitoredRegionCount()));
}

}  // namespace vorlane
