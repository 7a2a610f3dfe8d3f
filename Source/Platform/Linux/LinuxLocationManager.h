#pragma once

#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "Platform/CLBeaconRegion.h"
#include "Platform/CLLocationManager.h"
#include "Platform/MonitoredRegions.h"

namespace vorlane {

class DispatchQueue;

/// The location manager of a process without a source of positions: nobody can be asked, nothing is determined. Keeps
/// the monitored regions across restarts.
class LinuxLocationManager : public CLLocationManager, public std::enable_shared_from_this<LinuxLocationManager> {
public:
    /// `regionsPath` is the file of the monitored regions.
    LinuxLocationManager(std::weak_ptr<DispatchQueue> mainQueue, std::string regionsPath);

    bool locationServicesEnabled() const override { return false; }
    CLAuthorizationStatus authorizationStatus() const override { return CLAuthorizationStatus::NotDetermined; }
    bool isMonitoringAvailableForClass(CLRegionClass /*regionClass*/) const override { return false; }
    bool isRangingAvailable() const override { return false; }
    void setDelegate(std::weak_ptr<CLLocationManagerDelegate> delegate) override;
    void requestAlwaysAuthorization() override {}
    void requestWhenInUseAuthorization() override {}
    void setDesiredAccuracy(double /*metres*/) override {}
    void setAllowsBackgroundLocationUpdates(bool /*allows*/) override {}
    std::int64_t activityType() const override { return 1; }
    void startMonitoringSignificantLocationChanges() override {}
    void stopMonitoringSignificantLocationChanges() override {}
    void startMonitoringForRegion(const std::shared_ptr<CLRegion>& region) override;
    void stopMonitoringForRegion(const std::shared_ptr<CLRegion>& region) override;
    std::vector<std::shared_ptr<CLRegion>> monitoredRegions() const override;
    double maximumRegionMonitoringDistance() const override;
    void startRangingBeaconsInRegion(const std::shared_ptr<CLBeaconRegion>& /*region*/) override {}
    void stopRangingBeaconsInRegion(const std::shared_ptr<CLBeaconRegion>& /*region*/) override {}

private:
    // Fixed at construction.
    const std::weak_ptr<DispatchQueue> mainQueue_;

    mutable std::mutex mutex_;
    // Guarded by mutex_.
    std::weak_ptr<CLLocationManagerDelegate> delegate_;
    MonitoredRegions monitoredRegions_;
};

}  // namespace vorlane
