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
#include "Geo/VLLocationHelper.h"
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
    auto& manager = *service->collaborators_.locationManager;
    manager.setDelegate(service);
    if (service->locationHelper_->isAppEnabledForBackgroundLocation())
        manager.setDesiredAccuracy(kCLLocationAccuracyBest);
    return service;
}

VLLocationService::VLLocationService(Collaborators collaborators)
    : collaborators_(std::move(collaborators)),
      locationHelper_(std::make_shared<VLLocationHelper>(collaborators_.mainBundle, collaborators_.locationManager)) {}

VLLocationService::~VLLocationService() = default;

void VLLocationService::startWithConfig() {
    assertMainQueue();
    const bool geo = isGeoEnabled();
    const bool beacon = serviceEnabled(VLCONFIGSERVICEBEACON);
    configureLocationUpdates(geo || beacon);
}

bool VLLocationService::serviceEnabled(const char* name) const {
    const auto service = configService();
    return service && service->serviceEnabled(name);
}

/// Intended: only this decision looks at the mode. If beacons switch tracking on, regions are fetched in the
/// unsupported mode too.
bool VLLocationService::isGeoEnabled() const {
    const auto service = configService();
    if (!service || !service->serviceEnabled(VLCONFIGSERVICEGEO)) return false;
    const auto config = service->serviceConfig(VLCONFIGSERVICEGEO);
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
        return collaborators_.geoService->stopSignificantLocationUpdates();
    }
    if (vl_isBackgroundLocationEnabledForApp(*collaborators_.mainBundle)) {
        collaborators_.locationManager->setAllowsBackgroundLocationUpdates(true);
    }
    collaborators_.geoService->startWithConfig(configService());
    onMainQueue([weakSelf = weak_from_this()] {
        if (const auto self = weakSelf.lock()) self->updateAfterConfiguration();
    });
}

void VLLocationService::updateAfterConfiguration() {
    const bool isInBackground = collaborators_.application->applicationState() == UIApplicationState::Background;
    const auto stored = settings();
    if (!isInBackground && stored) stored->setForceGeoConfigUpdate(true);
    configUpdateWithBeacons(!isInBackground || collaborators_.beacons->isConfigStale(), true, nullptr);
}

void VLLocationService::configUpdateWithBeacons(bool withBeacons, bool enableSignificantLocationUpdates,
                                                const CompletionHandler& completionHandler) {
    assertMainQueue();
    if (!isLocationTrackingEnabled_) return call(completionHandler, true);
    checkLocationRegionsAvailableForMonitoring([&](bool isGeoCapable, bool isRangingCapable) {
        if (!isGeoCapable && !isRangingCapable) return call(completionHandler, true);
        if (!locationHelper_->isAppEnabledForBackgroundLocation()) {
            // Intended: the handler is not called.
            return logMessage(VLLogLevel::Error, kNoUsageKeyText);
        }
        switchOn(isRangingCapable && withBeacons, isGeoCapable && enableSignificantLocationUpdates, completionHandler);
    });
}

void VLLocationService::switchOn(bool beacons, bool significantChanges, const CompletionHandler& completionHandler) {
    logMessage(VLLogLevel::Debug, "App has Location Updates switched ON");
    if (significantChanges) collaborators_.geoService->startSignificantLocationUpdates();
    if (beacons) return startBeaconUpdates(completionHandler);
    call(completionHandler, true);
}

void VLLocationService::checkLocationRegionsAvailableForMonitoring(const AvailabilityHandler& handler) {
    const bool isGeoCapable = serviceEnabled(VLCONFIGSERVICEGEO) && checkGeoRegionMonitoringCapability();
    const bool hasBeacons = serviceEnabled(VLCONFIGSERVICEBEACON) && checkBeaconMonitoringCapability();
    handler(isGeoCapable, hasBeacons && rangingCapable());
}

bool VLLocationService::checkGeoRegionMonitoringCapability() {
    if (canMonitorGeoRegions()) return true;
    const auto stored = settings();
    if (stored && stored->oldLocation()) stored->setOldLocation(std::nullopt);
    return false;
}

bool VLLocationService::canMonitorGeoRegions() const {
    const auto status = collaborators_.locationManager->authorizationStatus();
    return collaborators_.locationManager->locationServicesEnabled() && status != CLAuthorizationStatus::Denied &&
           status != CLAuthorizationStatus::Restricted && locationHelper_->isRegionMonitoringAvailable();
}

bool VLLocationService::checkBeaconMonitoringCapability() const {
    if (collaborators_.locationManager->isMonitoringAvailableForClass(CLRegionClass::CLBeaconRegion)) return true;
    logMessage(VLLogLevel::Info, "CLBeaconRegion monitoring is not available for this device.");
    return false;
}

bool VLLocationService::rangingCapable() const {
    if (!collaborators_.locationManager->isRangingAvailable()) {
        logMessage(VLLogLevel::Info, "Beacon ranging is not supported on this device.");
        return false;
    }
    if (vl_isBackgroundLocationEnabledForApp(*collaborators_.mainBundle)) return true;
    logMessage(VLLogLevel::Error, kNoBackgroundModeText);
    return false;
}

void VLLocationService::startBeaconUpdates(const CompletionHandler& handler) {
    collaborators_.beacons->getBeaconsConfig(
        [handler](const std::optional<std::string>& /*config*/, auto flag) { call(handler, flag != 0); });
}

void VLLocationService::didUpdateLocations(CLLocationManager& /*manager*/, const std::vector<CLLocation>& locations) {
    collaborators_.geoService->didUpdateLocations(locations);
}

void VLLocationService::didDetermineState(CLLocationManager& /*manager*/, CLRegionState state,
                                          const std::shared_ptr<CLRegion>& region) {
    const auto* const format = state == CLRegionState::Inside    ? "## Inside of Region - {}"
                               : state == CLRegionState::Outside ? "## Outside of Region - {}"
                                                                 : "## Unknown state Region - {}";
    logMessage(VLLogLevel::Debug, fmt::format(fmt::runtime(format), region->identifier()));
    if (const auto beaconRegion = asBeaconRegion(region))
        collaborators_.beacons->didDetermineState(state, beaconRegion);
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
        return collaborators_.beacons->didEnterRegion(beaconRegion);
    }
    logMessage(VLLogLevel::Debug, fmt::format("************** INSIDE GEOFENCE - ENTERED REGION {} *****************",
                                              region->identifier()));
    collaborators_.geoService->didEnterRegion(*region);
}

/// Intended: only the expiry ends the task, because the requests that follow take an unknown time.
void VLLocationService::beginEnterRegionTask() {
    const auto task = std::make_shared<UIBackgroundTaskIdentifier>(UIBackgroundTaskInvalid);
    *task = collaborators_.application->beginBackgroundTaskWithExpirationHandler([weakSelf = weak_from_this(), task] {
        const auto self = weakSelf.lock();
        if (!self) return;
        self->collaborators_.application->endBackgroundTask(*task);
        self->enterRegionBgTask_ = UIBackgroundTaskInvalid;
    });
    enterRegionBgTask_ = *task;
}

void VLLocationService::didExitRegion(CLLocationManager& /*manager*/, const std::shared_ptr<CLRegion>& region) {
    if (const auto beaconRegion = asBeaconRegion(region)) {
        logMessage(VLLogLevel::Debug,
                   fmt::format("************** OUTSIDE BEACON DELEGATE - EXITED REGION {} *****************",
                               region->identifier()));
        return collaborators_.beacons->didExitRegion(beaconRegion);
    }
    logMessage(VLLogLevel::Debug, fmt::format("************** OUTSIDE GEOFENCE - EXITED REGION  {} *****************",
                                              region->identifier()));
    collaborators_.geoService->didExitRegion(*region);
}

void VLLocationService::didRangeBeacons(CLLocationManager& /*manager*/, const std::vector<CLBeacon>& beacons,
                                        const std::shared_ptr<CLBeaconRegion>& region) {
    const Value remaining = collaborators_.application->backgroundTimeRemaining();
    logMessage(VLLogLevel::Debug,
               fmt::format("Inside Ranging.  Time remaining:{}", vl_description(stringValue(remaining))));
    collaborators_.beacons->rangingBeacons(beacons, region);
}

void VLLocationService::didChangeAuthorizationStatus(CLLocationManager& /*manager*/, CLAuthorizationStatus status) {
    if (status == CLAuthorizationStatus::AuthorizedAlways || status == CLAuthorizationStatus::AuthorizedWhenInUse) {
        configureLocationUpdates(true);
    }
}

}  // namespace vorlane
