#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "Platform/CLBeaconRegion.h"
#include "Platform/CLLocationManager.h"
#include "Platform/MonitoredRegions.h"
#include "Public/VLValue.h"

namespace vorlane {

class DispatchQueue;
class SimulatedUser;

/// The simulated phone's location manager: asks the simulated user, reports what a test has set, delivers what a test
/// passes to it, and keeps the monitored regions in a file. A position causes no region event;
/// `SimulatedPhone::moveTo()` delivers both. Any thread.
class SimulatedLocationManager : public CLLocationManager,
                                 public std::enable_shared_from_this<SimulatedLocationManager> {
public:
    using Tell = std::function<void(const std::string& event, const Dictionary& fields)>;

    /// The capabilities of the phone.
    struct Capabilities {
        bool locationServicesEnabled = true;
        bool regionMonitoring = true;
        bool beaconMonitoring = true;
        bool ranging = true;
        double maximumRegionMonitoringDistance = 1'000'000;
        CLActivityType activityType = CLActivityType::Other;
    };

    /// An event of a region.
    enum class RegionEvent { Enter, Exit, Inside, Outside, Unknown, Failed };

    /// `regionsPath` is the file that holds the monitored regions.
    SimulatedLocationManager(std::shared_ptr<SimulatedUser> user, std::shared_ptr<DispatchQueue> mainQueue,
                             std::string regionsPath, Tell tell);

    bool locationServicesEnabled() const override { return capabilities().locationServicesEnabled; }
    CLAuthorizationStatus authorizationStatus() const override;
    bool isMonitoringAvailableForClass(CLRegionClass regionClass) const override;
    bool isRangingAvailable() const override { return capabilities().ranging; }
    void setDelegate(std::weak_ptr<CLLocationManagerDelegate> delegate) override;
    /// "Allow" sets the status 3 (always) or 4 (when in use), "deny" 2; any other answer changes nothing.
    void requestAlwaysAuthorization() override;
    void requestWhenInUseAuthorization() override;
    void setDesiredAccuracy(double metres) override;
    void setAllowsBackgroundLocationUpdates(bool allows) override;
    CLActivityType activityType() const override { return capabilities().activityType; }
    void startMonitoringSignificantLocationChanges() override;
    void stopMonitoringSignificantLocationChanges() override;
    /// The delegate receives a confirmation.
    void startMonitoringForRegion(const std::shared_ptr<CLRegion>& region) override;
    void stopMonitoringForRegion(const std::shared_ptr<CLRegion>& region) override;
    std::vector<std::shared_ptr<CLRegion>> monitoredRegions() const override;
    double maximumRegionMonitoringDistance() const override { return capabilities().maximumRegionMonitoringDistance; }
    void startRangingBeaconsInRegion(const std::shared_ptr<CLBeaconRegion>& region) override;
    void stopRangingBeaconsInRegion(const std::shared_ptr<CLBeaconRegion>& region) override;

    // For a test. The delegate is called on the main queue, after the call.

    Capabilities capabilities() const;
    void setCapabilities(const Capabilities& capabilities);
    /// Reports the status to the delegate, also if it is unchanged.
    void setAuthorizationStatus(CLAuthorizationStatus status);
    void deliverLocations(std::vector<CLLocation> locations);
    void deliverRegionEvent(RegionEvent event, std::shared_ptr<CLRegion> region);
    void deliverRanging(std::vector<CLBeacon> beacons, std::shared_ptr<CLBeaconRegion> region);

    /// Returns null if no region with the identifier is monitored.
    std::shared_ptr<CLRegion> monitoredRegion(const std::string& identifier) const;
    /// By identifier, ascending.
    std::vector<std::shared_ptr<CLBeaconRegion>> rangedRegions() const;
    bool isMonitoringSignificantLocationChanges() const;
    bool allowsBackgroundLocationUpdates() const;
    /// `nullopt` until it is set.
    std::optional<double> desiredAccuracy() const;

private:
    using Call = std::function<void(CLLocationManager& manager, CLLocationManagerDelegate& delegate)>;

    void request(const char* kind, CLAuthorizationStatus allowed);
    void deliver(Call call);
    void setSignificantLocationChanges(bool on);
    void tellOfRegion(const char* event, const char* action, const CLRegion& region) const;

    // Fixed at construction.
    const std::shared_ptr<SimulatedUser> user_;
    const std::shared_ptr<DispatchQueue> mainQueue_;
    const Tell tell_;

    mutable std::mutex mutex_;
    // Guarded by mutex_.
    Capabilities capabilities_;
    CLAuthorizationStatus authorizationStatus_ = CLAuthorizationStatus::NotDetermined;
    std::weak_ptr<CLLocationManagerDelegate> delegate_;
    MonitoredRegions monitoredRegions_;
    std::map<std::string, std::shared_ptr<CLBeaconRegion>> rangedRegions_;
    bool isMonitoringSignificantLocationChanges_ = false;
    bool allowsBackgroundLocationUpdates_ = false;
    std::optional<double> desiredAccuracy_;
};

}  // namespace vorlane
