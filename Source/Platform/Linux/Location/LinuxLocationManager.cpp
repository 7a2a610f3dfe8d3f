#include "Platform/Linux/Location/LinuxLocationManager.h"

#include <cmath>
#include <utility>

#include "Platform/DispatchQueue.h"
#include "Platform/Internal/CallOutScope.h"
#include "Platform/Internal/PropertyListFile.h"
#include "Platform/NSError.h"

namespace vorlane {

namespace {

constexpr double kLargestRadius = 1'000'000;
constexpr const char* kErrorDomain = "kCLErrorDomain";
constexpr std::int64_t kRegionMonitoringFailure = 5;

NSError monitoringFailure() {
    return NSError(kErrorDomain, kRegionMonitoringFailure,
                   {{NSLocalizedDescriptionKey, "The device cannot monitor this kind of region"}});
}

}  // namespace

std::shared_ptr<LinuxLocationManager> LinuxLocationManager::managerWith(Parts parts) {
    const std::shared_ptr<LinuxLocationManager> manager(new LinuxLocationManager(std::move(parts)));
    manager->start();
    return manager;
}

LinuxLocationManager::LinuxLocationManager(Parts parts)
    : parts_(std::move(parts)), monitoredRegions_(parts_.regionsPath) {}

void LinuxLocationManager::start() {
    for (const auto& region : monitoredRegions_.all()) {
        const auto state = monitoredRegions_.stateOf(region->identifier());
        circles_.watch(region, state, parts_.clock->now());
        beacons_.watch(region, state, parts_.clock->now());
    }
    if (!parts_.backEnd) return;
    // The manager is made inside of locks, and the back end is the host's.
    CallOutScope::callAfterwards([backEnd = parts_.backEnd, weakSelf = weak_from_this()] {
        backEnd->setListener(weakSelf);
        if (const auto self = weakSelf.lock()) self->post([](LinuxLocationManager& manager) { manager.updateNeeds(); });
    });
}

bool LinuxLocationManager::locationServicesEnabled() const {
    return parts_.backEnd && parts_.backEnd->locationServicesEnabled();
}

CLAuthorizationStatus LinuxLocationManager::authorizationStatus() const {
    return parts_.backEnd ? parts_.backEnd->authorizationStatus() : CLAuthorizationStatus::NotDetermined;
}

bool LinuxLocationManager::isMonitoringAvailableForClass(CLRegionClass regionClass) const {
    if (regionClass == CLRegionClass::CLBeaconRegion) return isRangingAvailable();
    return parts_.backEnd && parts_.backEnd->hasPositions();
}

bool LinuxLocationManager::isRangingAvailable() const { return parts_.backEnd && parts_.backEnd->hasAdvertisements(); }

void LinuxLocationManager::setDelegate(std::weak_ptr<CLLocationManagerDelegate> delegate) {
    const std::lock_guard lock(mutex_);
    delegate_ = std::move(delegate);
}

void LinuxLocationManager::requestAlwaysAuthorization() { request(CLAuthorizationStatus::AuthorizedAlways); }

void LinuxLocationManager::requestWhenInUseAuthorization() { request(CLAuthorizationStatus::AuthorizedWhenInUse); }

void LinuxLocationManager::request(CLAuthorizationStatus wanted) {
    if (parts_.backEnd) parts_.backEnd->requestAuthorization(wanted);
}

void LinuxLocationManager::setDesiredAccuracy(double metres) {
    {
        const std::lock_guard lock(mutex_);
        desiredAccuracy_ = metres;
    }
    post([](LinuxLocationManager& self) { self.updateNeeds(); });
}

void LinuxLocationManager::setAllowsBackgroundLocationUpdates(bool allows) {
    {
        const std::lock_guard lock(mutex_);
        allowsBackgroundLocationUpdates_ = allows;
    }
    post([](LinuxLocationManager& self) { self.updateNeeds(); });
}

CLActivityType LinuxLocationManager::activityType() const { return CLActivityType::Other; }

void LinuxLocationManager::startMonitoringSignificantLocationChanges() {
    {
        const std::lock_guard lock(mutex_);
        if (!std::exchange(isMonitoringSignificantLocationChanges_, true)) lastPlace_.reset();
    }
    post([](LinuxLocationManager& self) { self.updateNeeds(); });
}

void LinuxLocationManager::stopMonitoringSignificantLocationChanges() {
    {
        const std::lock_guard lock(mutex_);
        isMonitoringSignificantLocationChanges_ = false;
    }
    post([](LinuxLocationManager& self) { self.updateNeeds(); });
}

void LinuxLocationManager::startMonitoringForRegion(const std::shared_ptr<CLRegion>& region) {
    {
        const std::lock_guard lock(mutex_);
        const auto state = stateAtStartOf(*region);
        monitoredRegions_.add(region, state);
        circles_.watch(region, state, parts_.clock->now());
        beacons_.watch(region, state, parts_.clock->now());
    }
    post([region](LinuxLocationManager& self) {
        self.updateNeeds();
        const bool isBeaconRegion = std::dynamic_pointer_cast<CLBeaconRegion>(region) != nullptr;
        const auto kind = isBeaconRegion ? CLRegionClass::CLBeaconRegion : CLRegionClass::CLRegion;
        const bool isAvailable = self.isMonitoringAvailableForClass(kind);
        self.notify([&](CLLocationManagerDelegate& delegate) {
            if (isAvailable) return delegate.didStartMonitoringForRegion(self, region);
            delegate.monitoringDidFailForRegion(self, region, monitoringFailure());
        });
    });
}

/// With the lock held.
CLRegionState LinuxLocationManager::stateAtStartOf(const CLRegion& region) const {
    const auto monitored = monitoredRegions_.find(region.identifier());
    const bool isSame = monitored && monitored->toDictionary() == region.toDictionary();
    const auto state = isSame ? monitoredRegions_.stateOf(region.identifier()) : CLRegionState::Unknown;
    return state == CLRegionState::Unknown ? circles_.stateAtLastPosition(region) : state;
}

void LinuxLocationManager::stopMonitoringForRegion(const std::shared_ptr<CLRegion>& region) {
    {
        const std::lock_guard lock(mutex_);
        monitoredRegions_.remove(region->identifier());
        circles_.forget(region->identifier());
        beacons_.forget(region->identifier());
    }
    post([](LinuxLocationManager& self) { self.updateNeeds(); });
}

std::vector<std::shared_ptr<CLRegion>> LinuxLocationManager::monitoredRegions() const {
    const std::lock_guard lock(mutex_);
    return monitoredRegions_.all();
}

double LinuxLocationManager::maximumRegionMonitoringDistance() const { return kLargestRadius; }

void LinuxLocationManager::startRangingBeaconsInRegion(const std::shared_ptr<CLBeaconRegion>& region) {
    {
        const std::lock_guard lock(mutex_);
        ranger_.start(region);
    }
    post([](LinuxLocationManager& self) {
        self.updateNeeds();
        self.scheduleTick();
    });
}

void LinuxLocationManager::stopRangingBeaconsInRegion(const std::shared_ptr<CLBeaconRegion>& region) {
    {
        const std::lock_guard lock(mutex_);
        ranger_.stop(region->identifier());
    }
    post([](LinuxLocationManager& self) { self.updateNeeds(); });
}

void LinuxLocationManager::positionsArrived(const std::vector<CLLocation>& positions) {
    post([positions](LinuxLocationManager& self) { self.takePositions(positions); });
}

void LinuxLocationManager::takePositions(const std::vector<CLLocation>& positions) {
    RegionMonitor::Changes changes;
    std::vector<CLLocation> significant;
    {
        const PropertyListFile::Step step;
        const std::lock_guard lock(mutex_);
        significant = significantAmong(positions);
        for (const auto& position : positions) {
            const auto more = circles_.positionArrived(position);
            changes.insert(changes.end(), more.begin(), more.end());
        }
        store(changes);
    }
    if (!significant.empty()) {
        notify([&](CLLocationManagerDelegate& delegate) { delegate.didUpdateLocations(*this, significant); });
    }
    notifyOf(changes);
    scheduleTick();
}

/// With the lock held.
std::vector<CLLocation> LinuxLocationManager::significantAmong(const std::vector<CLLocation>& positions) {
    std::vector<CLLocation> significant;
    if (!isMonitoringSignificantLocationChanges_) return significant;
    for (const auto& position : positions) {
        if (!(position.horizontalAccuracy >= 0) || !CLLocationCoordinate2DIsValid(position.coordinate)) continue;
        if (lastPlace_ && CLDistanceBetween(*lastPlace_, position.coordinate) < kSignificantDistance) continue;
        lastPlace_ = position.coordinate;
        significant.push_back(position);
    }
    return significant;
}

/// With the lock held, before the delegate is notified: after a kill the next process reports no crossing twice.
void LinuxLocationManager::store(const RegionMonitor::Changes& changes) {
    for (const auto& change : changes) monitoredRegions_.setState(change.region->identifier(), change.state);
}

void LinuxLocationManager::notifyOf(const RegionMonitor::Changes& changes) {
    for (const auto& change : changes) {
        if (!change.isCrossing) continue;
        notify([&](CLLocationManagerDelegate& delegate) {
            if (change.state == CLRegionState::Inside) delegate.didEnterRegion(*this, change.region);
            if (change.state == CLRegionState::Outside) delegate.didExitRegion(*this, change.region);
            delegate.didDetermineState(*this, change.state, change.region);
        });
    }
}

void LinuxLocationManager::advertisementArrived(const CLBeacon& beacon) {
    post([beacon](LinuxLocationManager& self) { self.takeAdvertisement(beacon); });
}

void LinuxLocationManager::takeAdvertisement(const CLBeacon& beacon) {
    RegionMonitor::Changes changes;
    {
        const PropertyListFile::Step step;
        const std::lock_guard lock(mutex_);
        ranger_.advertisementArrived(beacon, parts_.clock->now());
        changes = beacons_.advertisementArrived(beacon, parts_.clock->now());
        store(changes);
    }
    scheduleTick();
    notifyOf(changes);
}

void LinuxLocationManager::authorizationStatusChanged() {
    post([](LinuxLocationManager& self) {
        const auto status = self.authorizationStatus();
        self.notify([&](CLLocationManagerDelegate& delegate) { delegate.didChangeAuthorizationStatus(self, status); });
    });
}

void LinuxLocationManager::updateNeeds() {
    LocationBackEnd::Needs needs;
    {
        const std::lock_guard lock(mutex_);
        needs.positions = isMonitoringSignificantLocationChanges_ || circles_.isNeeded();
        needs.advertisements = beacons_.isNeeded() || ranger_.isNeeded();
        needs.desiredAccuracy = desiredAccuracy_;
        needs.inBackground = allowsBackgroundLocationUpdates_;
    }
    scheduleTick();
    if (!parts_.backEnd || std::exchange(needs_, needs) == needs) return;
    parts_.backEnd->setNeeds(needs);
}

void LinuxLocationManager::scheduleTick() {
    {
        const std::lock_guard lock(mutex_);
        if (!ranger_.isNeeded() && !beacons_.isInsideAny()) return;
    }
    const auto queue = parts_.mainQueue.lock();
    if (!queue || !parts_.backEnd || isTickScheduled()) return;
    tickTime_ = parts_.clock->now() + kTick;
    queue->postAfter(kTick, [weakSelf = weak_from_this(), number = ++tickNumber_] {
        const auto self = weakSelf.lock();
        if (self && self->tickNumber_ == number) self->tick();
    });
}

/// False also for an overdue tick: a queue without a free file descriptor drops its timers.
bool LinuxLocationManager::isTickScheduled() const {
    return tickTime_ && std::abs(*tickTime_ - parts_.clock->now()) <= 1.5 * kTick;
}

void LinuxLocationManager::tick() {
    RegionMonitor::Changes changes;
    std::vector<BeaconRanger::Result> results;
    {
        const PropertyListFile::Step step;
        const std::lock_guard lock(mutex_);
        results = ranger_.results(parts_.clock->now());
        changes = beacons_.timePassed(parts_.clock->now());
        store(changes);
    }
    tickTime_.reset();
    scheduleTick();
    for (const auto& result : results) {
        notify([&](CLLocationManagerDelegate& delegate) {
            delegate.didRangeBeacons(*this, result.beacons, result.region);
        });
    }
    notifyOf(changes);
}

void LinuxLocationManager::post(std::function<void(LinuxLocationManager& self)> task) {
    const auto queue = parts_.mainQueue.lock();
    if (!queue) return;
    queue->post([weakSelf = weak_from_this(), task = std::move(task)] {
        if (const auto self = weakSelf.lock()) task(*self);
    });
}

/// On the main queue, with no lock held.
void LinuxLocationManager::notify(const Call& call) {
    std::shared_ptr<CLLocationManagerDelegate> delegate;
    {
        const std::lock_guard lock(mutex_);
        delegate = delegate_.lock();
    }
    if (delegate) call(*delegate);
}

}  // namespace vorlane
