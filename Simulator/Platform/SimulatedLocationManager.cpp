#include "Simulator/Platform/SimulatedLocationManager.h"

#include <utility>

#include "Platform/DispatchQueue.h"
#include "Simulator/Platform/SimulatedUser.h"

namespace vorlane {

namespace {

using Answer = SimulatedUser::Answer;

constexpr const char* kErrorDomain = "kCLErrorDomain";
constexpr std::int64_t kRegionMonitoringFailure = 5;

}  // namespace

SimulatedLocationManager::SimulatedLocationManager(std::shared_ptr<SimulatedUser> user,
                                                   std::shared_ptr<DispatchQueue> mainQueue, std::string regionsPath,
                                                   Tell tell)
    : user_(std::move(user)),
      mainQueue_(std::move(mainQueue)),
      tell_(std::move(tell)),
      monitoredRegions_(std::move(regionsPath)) {}

CLAuthorizationStatus SimulatedLocationManager::authorizationStatus() const {
    const std::lock_guard lock(mutex_);
    return authorizationStatus_;
}

bool SimulatedLocationManager::isMonitoringAvailableForClass(CLRegionClass regionClass) const {
    const auto able = capabilities();
    return regionClass == CLRegionClass::CLBeaconRegion ? able.beaconMonitoring : able.regionMonitoring;
}

void SimulatedLocationManager::setDelegate(std::weak_ptr<CLLocationManagerDelegate> delegate) {
    const std::lock_guard lock(mutex_);
    delegate_ = std::move(delegate);
}

void SimulatedLocationManager::requestAlwaysAuthorization() {
    request("locationAlways", CLAuthorizationStatus::AuthorizedAlways);
}

void SimulatedLocationManager::requestWhenInUseAuthorization() {
    request("locationWhenInUse", CLAuthorizationStatus::AuthorizedWhenInUse);
}

void SimulatedLocationManager::request(const char* kind, CLAuthorizationStatus allowed) {
    // Prompts appear on the main thread only.
    mainQueue_->post([manager = shared_from_this(), kind, allowed] {
        if (manager->authorizationStatus() != CLAuthorizationStatus::NotDetermined) return;
        manager->user_->prompt(kind, 0, [weakSelf = manager->weak_from_this(), allowed](Answer answer) {
            const auto self = weakSelf.lock();
            if (!self) return;
            if (answer == Answer::Allow) self->setAuthorizationStatus(allowed);
            if (answer == Answer::Deny) self->setAuthorizationStatus(CLAuthorizationStatus::Denied);
        });
    });
}

void SimulatedLocationManager::setDesiredAccuracy(double metres) {
    {
        const std::lock_guard lock(mutex_);
        desiredAccuracy_ = metres;
    }
    tell_("desiredAccuracy", {{"value", metres}});
}

void SimulatedLocationManager::setAllowsBackgroundLocationUpdates(bool allows) {
    {
        const std::lock_guard lock(mutex_);
        allowsBackgroundLocationUpdates_ = allows;
    }
    tell_("allowsBackgroundLocationUpdates", {{"on", allows}});
}

void SimulatedLocationManager::startMonitoringSignificantLocationChanges() { setSignificantLocationChanges(true); }

void SimulatedLocationManager::stopMonitoringSignificantLocationChanges() { setSignificantLocationChanges(false); }

void SimulatedLocationManager::setSignificantLocationChanges(bool on) {
    {
        const std::lock_guard lock(mutex_);
        isMonitoringSignificantLocationChanges_ = on;
    }
    tell_("significantLocationChanges", {{"on", on}});
}

void SimulatedLocationManager::startMonitoringForRegion(const std::shared_ptr<CLRegion>& region) {
    {
        const std::lock_guard lock(mutex_);
        monitoredRegions_.add(region);
    }
    tellOfRegion("monitoring", "start", *region);
    deliver([region](auto& manager, auto& delegate) { delegate.didStartMonitoringForRegion(manager, region); });
}

void SimulatedLocationManager::stopMonitoringForRegion(const std::shared_ptr<CLRegion>& region) {
    {
        const std::lock_guard lock(mutex_);
        monitoredRegions_.remove(region->identifier());
    }
    tellOfRegion("monitoring", "stop", *region);
}

std::vector<std::shared_ptr<CLRegion>> SimulatedLocationManager::monitoredRegions() const {
    const std::lock_guard lock(mutex_);
    return monitoredRegions_.all();
}

void SimulatedLocationManager::startRangingBeaconsInRegion(const std::shared_ptr<CLBeaconRegion>& region) {
    {
        const std::lock_guard lock(mutex_);
        rangedRegions_[region->identifier()] = region;
    }
    tellOfRegion("ranging", "start", *region);
}

void SimulatedLocationManager::stopRangingBeaconsInRegion(const std::shared_ptr<CLBeaconRegion>& region) {
    {
        const std::lock_guard lock(mutex_);
        rangedRegions_.erase(region->identifier());
    }
    tellOfRegion("ranging", "stop", *region);
}

void SimulatedLocationManager::tellOfRegion(const char* event, const char* action, const CLRegion& region) const {
    tell_(event, {{"action", action}, {"region", region.toDictionary()}});
}

SimulatedLocationManager::Capabilities SimulatedLocationManager::capabilities() const {
    const std::lock_guard lock(mutex_);
    return capabilities_;
}

void SimulatedLocationManager::setCapabilities(const Capabilities& capabilities) {
    const std::lock_guard lock(mutex_);
    capabilities_ = capabilities;
}

void SimulatedLocationManager::setAuthorizationStatus(CLAuthorizationStatus status) {
    {
        const std::lock_guard lock(mutex_);
        authorizationStatus_ = status;
    }
    deliver([status](auto& manager, auto& delegate) { delegate.didChangeAuthorizationStatus(manager, status); });
}

void SimulatedLocationManager::deliverLocations(std::vector<CLLocation> locations) {
    deliver([locations = std::move(locations)](auto& manager, auto& delegate) {
        delegate.didUpdateLocations(manager, locations);
    });
}

void SimulatedLocationManager::deliverRegionEvent(RegionEvent event, std::shared_ptr<CLRegion> region) {
    deliver([event, region = std::move(region)](CLLocationManager& manager, CLLocationManagerDelegate& delegate) {
        switch (event) {
            case RegionEvent::Enter:
                return delegate.didEnterRegion(manager, region);
            case RegionEvent::Exit:
                return delegate.didExitRegion(manager, region);
            case RegionEvent::Inside:
                return delegate.didDetermineState(manager, CLRegionState::Inside, region);
            case RegionEvent::Outside:
                return delegate.didDetermineState(manager, CLRegionState::Outside, region);
            case RegionEvent::Unknown:
                return delegate.didDetermineState(manager, CLRegionState::Unknown, region);
            case RegionEvent::Failed:
                return delegate.monitoringDidFailForRegion(
                    manager, region,
                    NSError(kErrorDomain, kRegionMonitoringFailure,
                            {{NSLocalizedDescriptionKey, "The region cannot be monitored"}}));
        }
    });
}

void SimulatedLocationManager::deliverRanging(std::vector<CLBeacon> beacons, std::shared_ptr<CLBeaconRegion> region) {
    deliver([beacons = std::move(beacons), region = std::move(region)](auto& manager, auto& delegate) {
        delegate.didRangeBeacons(manager, beacons, region);
    });
}

void SimulatedLocationManager::deliver(Call call) {
    mainQueue_->post([self = shared_from_this(), call = std::move(call)] {
        std::shared_ptr<CLLocationManagerDelegate> delegate;
        {
            const std::lock_guard lock(self->mutex_);
            delegate = self->delegate_.lock();
        }
        if (delegate) call(*self, *delegate);
    });
}

std::shared_ptr<CLRegion> SimulatedLocationManager::monitoredRegion(const std::string& identifier) const {
    const std::lock_guard lock(mutex_);
    return monitoredRegions_.find(identifier);
}

std::vector<std::shared_ptr<CLBeaconRegion>> SimulatedLocationManager::rangedRegions() const {
    const std::lock_guard lock(mutex_);
    std::vector<std::shared_ptr<CLBeaconRegion>> list;
    for (const auto& [identifier, region] : rangedRegions_) list.push_back(region);
    return list;
}

bool SimulatedLocationManager::isMonitoringSignificantLocationChanges() const {
    const std::lock_guard lock(mutex_);
    return isMonitoringSignificantLocationChanges_;
}

bool SimulatedLocationManager::allowsBackgroundLocationUpdates() const {
    const std::lock_guard lock(mutex_);
    return allowsBackgroundLocationUpdates_;
}

std::optional<double> SimulatedLocationManager::desiredAccuracy() const {
    const std::lock_guard lock(mutex_);
    return desiredAccuracy_;
}

}  // namespace vorlane
