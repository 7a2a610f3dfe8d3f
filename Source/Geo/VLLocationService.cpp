#include "Geo/VLLocationService.h"

#include <fmt/format.h>

#include <cmath>
#include <optional>
#include <utility>

#include "Beacons/VLBeaconService.h"
#include "Categories/NSBundle+VLBackgroundLocation.h"
#include "Categories/NSDictionary+VLJSON.h"
#include "Categories/NSDictionary+VLLookup.h"
#include "Categories/NSNumber+VLLooseValue.h"
#include "Core/Base/VLSettings.h"
#include "Geo/VLGeoService.h"
#include "Platform/CLBeaconRegion.h"
#include "Platform/CLLocationManager.h"
#include "Platform/NSBundle.h"
#include "Platform/Platform.h"
#include "Public/VLConstants.h"
#include "Public/VLLog.h"
#include "Tracking/VLConfigService.h"

namespace vorlane {

namespace {

constexpr const char* kMode1Text =
    "Found geo config set to Mode 1, but this mode is no longer supported as of"
    "                            Vorlane SDK 2.0.0! To fix this issue, contact Vorlane Support to set"
    "                            your geo config to Mode 2. SDK geo features are disabled for now.";
constexpr const char* kNoUsageKeyText =
    "Location monitoring features are disabled because the"
    "                            NSLocationAlwaysUsageDescription key is missing from your Info.plist.";
constexpr const char* kNoBackgroundModeText =
    "Beacon ranging is disabled because the UIBackgroundModes \"location\" entry is missing"
    "                    from your Info.plist.";
constexpr double kUnsupportedGeoMode = 1;

std::shared_ptr<CLBeaconRegion> asBeaconRegion(const std::shared_ptr<CLRegion>& region) {
    return std::dynamic_pointer_cast<CLBeaconRegion>(region);
}

void call(const VLLocationService::CompletionHandler& handler, bool success) {
    if (handler) handler(success);
}

}  // namespace

std::shared_ptr<VLLocationService> VLLocationService::serviceWith(Collaborators collaborators) {
    const std::shared_ptr<VLLocationService> service(new VLLocationService(std::move(collaborators)));
    auto& manager = *service->with_.locationManager;
    manager.setDelegate(service);
    if (service->locationHelper_.isAppEnabledForBackgroundLocation())
        manager.setDesiredAccuracy(kCLLocationAccuracyBest);
    return service;
}

VLLocationService::VLLocationService(Collaborators collaborators)
    : with_(std::move(collaborators)), locationHelper_(with_.mainBundle, with_.locationManager) {}

VLLocationService::~VLLocationService() = default;

void VLLocationService::startWithConfig() {
    assertMainQueue();
    const bool geo = isGeoEnabled();
    const bool beacon = with_.configService->serviceEnabled(VLCONFIGSERVICEBEACON);
    configureLocationUpdates(geo || beacon);
}

/// The mode counts here alone: once beacons switch tracking on, regions are fetched in the unsupported mode too, meant
/// so.
bool VLLocationService::isGeoEnabled() const {
    if (!with_.configService->serviceEnabled(VLCONFIGSERVICEGEO)) return false;
    const auto config = with_.configService->serviceConfig(VLCONFIGSERVICEGEO);
    const auto mode = config ? vl_looseNumber(valueForKey(*config, "geo_mode")) : std::nullopt;
    if (!mode || std::trunc(*mode) != kUnsupportedGeoMode) return true;
    logMessage(VLLogLevel::Error, kMode1Text);
    return false;
}

void VLLocationService::configureLocationUpdates(bool enabled) {
    assertMainQueue();
    isLocationTrackingEnabled_ = enabled;
    if (!enabled) {
        logMessage(VLLogLevel::Debug, "App has Location Updates switched OFF");
        return with_.geoService->stopSignificantLocationUpdates();
    }
    if (vl_isBackgroundLocationEnabledForApp(*with_.mainBundle)) {
        with_.locationManager->setAllowsBackgroundLocationUpdates(true);
    }
    with_.geoService->startWithConfig(with_.configService);
    onMainQueue([weakSelf = weak_from_this()] {
        if (const auto self = weakSelf.lock()) self->updateAfterConfiguration();
    });
}

void VLLocationService::updateAfterConfiguration() {
    const bool isInBackground = with_.application->applicationState() == UIApplicationState::background;
    if (!isInBackground) with_.settings->setForceGeoConfigUpdate(true);
    configUpdateWithBeacons(!isInBackground || with_.beacons->isConfigStale(), true, nullptr);
}

void VLLocationService::configUpdateWithBeacons(bool withBeacons, bool enableSignificantLocationUpdates,
                                                const CompletionHandler& completionHandler) {
    assertMainQueue();
    if (!isLocationTrackingEnabled_) return call(completionHandler, true);
    checkLocationRegionsAvailableForMonitoring([&](bool isGeoCapable, bool isRangingCapable) {
        if (!isGeoCapable && !isRangingCapable) return call(completionHandler, true);
        if (!locationHelper_.isAppEnabledForBackgroundLocation()) {
            // Without calling the handler, meant so.
            return logMessage(VLLogLevel::Error, kNoUsageKeyText);
        }
        switchOn(isRangingCapable && withBeacons, isGeoCapable && enableSignificantLocationUpdates, completionHandler);
    });
}

void VLLocationService::switchOn(bool beacons, bool significantChanges, const CompletionHandler& completionHandler) {
    logMessage(VLLogLevel::Debug, "App has Location Updates switched ON");
    if (significantChanges) with_.geoService->startSignificantLocationUpdates();
    if (beacons) return startBeaconUpdates(completionHandler);
    call(completionHandler, true);
}

void VLLocationService::checkLocationRegionsAvailableForMonitoring(const AvailabilityHandler& handler) {
    const bool isGeoCapable =
        with_.configService->serviceEnabled(VLCONFIGSERVICEGEO) && checkGeoRegionMonitoringCapability();
    const bool hasBeacons =
        with_.configService->serviceEnabled(VLCONFIGSERVICEBEACON) && checkBeaconMonitoringCapability();
    handler(isGeoCapable, hasBeacons && rangingCapable());
}

bool VLLocationService::checkGeoRegionMonitoringCapability() {
    if (canMonitorGeoRegions()) return true;
    if (with_.settings->oldLocation()) with_.settings->setOldLocation(std::nullopt);
    return false;
}

bool VLLocationService::canMonitorGeoRegions() const {
    const auto status = with_.locationManager->authorizationStatus();
    return with_.locationManager->locationServicesEnabled() && status != CLAuthorizationStatus::Denied &&
           status != CLAuthorizationStatus::Restricted && locationHelper_.isRegionMonitoringAvailable();
}

bool VLLocationService::checkBeaconMonitoringCapability() const {
    if (with_.locationManager->isMonitoringAvailableForClass(CLRegionClass::CLBeaconRegion)) return true;
    logMessage(VLLogLevel::Info, "CLBeaconRegion monitoring is not available for this device.");
    return false;
}

bool VLLocationService::rangingCapable() const {
    if (!with_.locationManager->isRangingAvailable()) {
        logMessage(VLLogLevel::Info, "Beacon ranging is not supported on this device.");
        return false;
    }
    if (vl_isBackgroundLocationEnabledForApp(*with_.mainBundle)) return true;
    logMessage(VLLogLevel::Error, kNoBackgroundModeText);
    return false;
}

void VLLocationService::startBeaconUpdates(const CompletionHandler& handler) {
    with_.beacons->getBeaconsConfig(
        [handler](const std::optional<std::string>& /*config*/, auto flag) { call(handler, flag != 0); });
}

void VLLocationService::didUpdateLocations(CLLocationManager& /*manager*/, const std::vector<CLLocation>& locations) {
    with_.geoService->didUpdateLocations(locations);
}

void VLLocationService::didDetermineState(CLLocationManager& /*manager*/, CLRegionState state,
                                          const std::shared_ptr<CLRegion>& region) {
    const auto* const text = state == CLRegionState::Inside    ? "## Inside of Region - {}"
                             : state == CLRegionState::Outside ? "## Outside of Region - {}"
                                                               : "## Unknown state Region - {}";
    logMessage(VLLogLevel::Debug, fmt::format(fmt::runtime(text), region->identifier()));
    if (const auto beaconRegion = asBeaconRegion(region)) with_.beacons->didDetermineState(state, beaconRegion);
}

void VLLocationService::didStartMonitoringForRegion(CLLocationManager& /*manager*/,
                                                    const std::shared_ptr<CLRegion>& region) {
    logMessage(VLLogLevel::Info, fmt::format("Started monitoring region: {}", region->identifier()));
}

void VLLocationService::monitoringDidFailForRegion(CLLocationManager& /*manager*/,
                                                   const std::shared_ptr<CLRegion>& region, const NSError& error) {
    logMessage(VLLogLevel::Warn, fmt::format("Error occurred: {}\nwhen monitoring region: {}", error.description(),
                                             region->description()));
}

void VLLocationService::didEnterRegion(CLLocationManager& /*manager*/, const std::shared_ptr<CLRegion>& region) {
    beginEnterRegionTask();
    if (const auto beaconRegion = asBeaconRegion(region)) {
        logMessage(VLLogLevel::Debug,
                   fmt::format("************** INSIDE BEACON DELEGATE- ENTERED REGION {} *****************",
                               region->identifier()));
        return with_.beacons->didEnterRegion(beaconRegion);
    }
    logMessage(VLLogLevel::Debug, fmt::format("************** INSIDE GEOFENCE - ENTERED REGION {} *****************",
                                              region->identifier()));
    with_.geoService->didEnterRegion(*region);
}

/// Ended by its expiry alone, meant so: what the region leads to takes as long as the network does.
void VLLocationService::beginEnterRegionTask() {
    const auto task = std::make_shared<UIBackgroundTaskIdentifier>(UIBackgroundTaskInvalid);
    *task = with_.application->beginBackgroundTaskWithExpirationHandler([weakSelf = weak_from_this(), task] {
        const auto self = weakSelf.lock();
        if (!self) return;
        self->with_.application->endBackgroundTask(*task);
        self->enterRegionBgTask_ = UIBackgroundTaskInvalid;
    });
    enterRegionBgTask_ = *task;
}

void VLLocationService::didExitRegion(CLLocationManager& /*manager*/, const std::shared_ptr<CLRegion>& region) {
    if (const auto beaconRegion = asBeaconRegion(region)) {
        logMessage(VLLogLevel::Debug,
                   fmt::format("************** OUTSIDE BEACON DELEGATE - EXITED REGION {} *****************",
                               region->identifier()));
        return with_.beacons->didExitRegion(beaconRegion);
    }
    logMessage(VLLogLevel::Debug, fmt::format("************** OUTSIDE GEOFENCE - EXITED REGION  {} *****************",
                                              region->identifier()));
    with_.geoService->didExitRegion(*region);
}

void VLLocationService::didRangeBeacons(CLLocationManager& /*manager*/, const std::vector<CLBeacon>& beacons,
                                        const std::shared_ptr<CLBeaconRegion>& region) {
    const Value remaining = with_.application->backgroundTimeRemaining();
    logMessage(VLLogLevel::Debug,
               fmt::format("Inside Ranging.  Time remaining:{}", vl_description(stringValue(remaining))));
    with_.beacons->rangingBeacons(beacons, region);
}

void VLLocationService::didChangeAuthorizationStatus(CLLocationManager& /*manager*/, CLAuthorizationStatus status) {
    if (status == CLAuthorizationStatus::AuthorizedAlways || status == CLAuthorizationStatus::AuthorizedWhenInUse) {
        configureLocationUpdates(true);
    }
}

}  // namespace vorlane
