#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "Platform/CLLocationManager.h"
#include "Platform/Clock.h"
#include "Platform/Linux/Location/BeaconRanger.h"
#include "Platform/Linux/Location/BeaconRegionMonitor.h"
#include "Platform/Linux/Location/CircularRegionMonitor.h"
#include "Platform/LocationBackEnd.h"
#include "Platform/MonitoredRegions.h"

namespace vorlane {

class DispatchQueue;

/// The location manager on a back end that delivers positions and advertisements. It computes the crossings of the
/// monitored regions, and stores the regions with their states. After a restart, the first fix therefore reports a
/// crossing that happened while no process was running. Without a back end the authorization stays not determined.
///
/// Monitoring of a circle starts in the state of the last valid fix, or in an unknown state before the first one. A
/// region that is started again unchanged keeps its state.
class LinuxLocationManager : public CLLocationManager,
                             public LocationBackEnd::Listener,
                             public std::enable_shared_from_this<LinuxLocationManager> {
public:
    /// The distance of a significant change, in metres.
    static constexpr double kSignificantDistance = 500;
    /// The interval of ranging results and of checks for silent regions, in seconds.
    static constexpr TimeInterval kTick = 1;

    struct Parts {
        std::weak_ptr<DispatchQueue> mainQueue;
        std::shared_ptr<const Clock> clock;
        /// May be null.
        std::shared_ptr<LocationBackEnd> backEnd;
        /// The file of the monitored regions.
        std::string regionsPath;
    };

    /// Monitors the regions of the file.
    static std::shared_ptr<LinuxLocationManager> managerWith(Parts parts);

    bool locationServicesEnabled() const override;
    CLAuthorizationStatus authorizationStatus() const override;
    bool isMonitoringAvailableForClass(CLRegionClass regionClass) const override;
    bool isRangingAvailable() const override;
    void setDelegate(std::weak_ptr<CLLocationManagerDelegate> delegate) override;
    void requestAlwaysAuthorization() override;
    void requestWhenInUseAuthorization() override;
    void setDesiredAccuracy(double metres) override;
    void setAllowsBackgroundLocationUpdates(bool allows) override;
    CLActivityType activityType() const override;
    void startMonitoringSignificantLocationChanges() override;
    void stopMonitoringSignificantLocationChanges() override;
    /// Confirms to the delegate. A region of a kind that the back end cannot monitor is stored too, and reported as
    /// failed.
    void startMonitoringForRegion(const std::shared_ptr<CLRegion>& region) override;
    void stopMonitoringForRegion(const std::shared_ptr<CLRegion>& region) override;
    std::vector<std::shared_ptr<CLRegion>> monitoredRegions() const override;
    double maximumRegionMonitoringDistance() const override;
    void startRangingBeaconsInRegion(const std::shared_ptr<CLBeaconRegion>& region) override;
    void stopRangingBeaconsInRegion(const std::shared_ptr<CLBeaconRegion>& region) override;

    void positionsArrived(const std::vector<CLLocation>& positions) override;
    void advertisementArrived(const CLBeacon& beacon) override;
    void authorizationStatusChanged() override;

private:
    using Call = std::function<void(CLLocationManagerDelegate& delegate)>;

    explicit LinuxLocationManager(Parts parts);

    void start();
    void request(CLAuthorizationStatus wanted);
    void post(std::function<void(LinuxLocationManager& self)> task);
    CLRegionState stateAtStartOf(const CLRegion& region) const;
    void notify(const Call& call);
    void notifyOf(const RegionMonitor::Changes& changes);
    void store(const RegionMonitor::Changes& changes);
    void takePositions(const std::vector<CLLocation>& positions);
    std::vector<CLLocation> significantAmong(const std::vector<CLLocation>& positions);
    void takeAdvertisement(const CLBeacon& beacon);
    void updateNeeds();
    void scheduleTick();
    bool isTickScheduled() const;
    void tick();

    // Fixed at construction.
    const Parts parts_;
    // Main queue only: the needs last passed to the back end, and the time and the number of the scheduled tick.
    LocationBackEnd::Needs needs_;
    std::optional<double> tickTime_;
    std::uint64_t tickNumber_ = 0;

    mutable std::mutex mutex_;
    // Guarded by mutex_.
    std::weak_ptr<CLLocationManagerDelegate> delegate_;
    MonitoredRegions monitoredRegions_;
    CircularRegionMonitor circles_;
    BeaconRegionMonitor beacons_;
    BeaconRanger ranger_;
    double desiredAccuracy_ = 0;
    bool allowsBackgroundLocationUpdates_ = false;
    bool isMonitoringSignificantLocationChanges_ = false;
    // The position last reported as a significant change.
    std::optional<CLLocationCoordinate2D> lastPlace_;
};

}  // namespace vorlane
