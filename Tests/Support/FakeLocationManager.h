#pragma once

#include <atomic>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "Platform/CLLocationManager.h"
#include "Platform/CLRegion.h"

namespace vorlane {

/// A location manager without positions or regions. Records permission requests, and reports the status that a test has
/// set. Any thread.
class FakeLocationManager : public CLLocationManager {
public:
    void setStatus(CLAuthorizationStatus status) { status_ = status; }
    /// Called with each request, on the queue that makes it.
    void setRequestObserver(std::function<void(const std::string& kind)> observer) { observer_ = std::move(observer); }

    std::vector<std::string> requests() const {
        const std::lock_guard lock(mutex_);
        return requests_;
    }

    CLAuthorizationStatus authorizationStatus() const override { return status_; }
    void requestAlwaysAuthorization() override { record("locationAlways"); }
    void requestWhenInUseAuthorization() override { record("locationWhenInUse"); }

    bool locationServicesEnabled() const override { return true; }
    bool isMonitoringAvailableForClass(CLRegionClass /*regionClass*/) const override { return false; }
    bool isRangingAvailable() const override { return false; }
    void setDelegate(std::weak_ptr<CLLocationManagerDelegate> /*delegate*/) override {}
    void setDesiredAccuracy(double /*metres*/) override {}
    void setAllowsBackgroundLocationUpdates(bool /*allows*/) override {}
    CLActivityType activityType() const override { return CLActivityType::Other; }
    void startMonitoringSignificantLocationChanges() override {}
    void stopMonitoringSignificantLocationChanges() override {}
    void startMonitoringForRegion(const std::shared_ptr<CLRegion>& /*region*/) override {}
    void stopMonitoringForRegion(const std::shared_ptr<CLRegion>& /*region*/) override {}
    std::vector<std::shared_ptr<CLRegion>> monitoredRegions() const override { return {}; }
    double maximumRegionMonitoringDistance() const override { return 0; }
    void startRangingBeaconsInRegion(const std::shared_ptr<CLBeaconRegion>& /*region*/) override {}
    void stopRangingBeaconsInRegion(const std::shared_ptr<CLBeaconRegion>& /*region*/) override {}

private:
    void record(const std::string& kind) {
        {
            const std::lock_guard lock(mutex_);
            requests_.push_back(kind);
        }
        if (observer_) observer_(kind);
    }

    std::atomic<CLAuthorizationStatus> status_ = CLAuthorizationStatus::NotDetermined;
    // Set before the first request.
    std::function<void(const std::string&)> observer_;

    mutable std::mutex mutex_;
    // Guarded by mutex_.
    std::vector<std::string> requests_;
};

}  // namespace vorlane
