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

/// The location manager over a back end that delivers positions and advertisements: finds out by itself what happens to
/// the monitored regions, and keeps them with their states across restarts, so that what happened while no process ran
/// is told by the first fix after it. Without a back end nobody can be asked and nothing is determined.
class LinuxLocationManager : public CLLocationManager,
                             public LocationBackEnd::Listener,
                             public std::enable_shared_from_this<LinuxLocationManager> {
public:
    /// How far the device moves, in metres, before a significant change is told.
    static constexpr double kSignificantDistance = 500;
    /// How often ranging is told, and silence looked for, in seconds.
    static constexpr TimeInterval kTick = 1;

    struct Parts {
        std::weak_ptr<DispatchQueue> mainQueue;
        std::shared_ptr<const Clock> clock;
        /// May be null.
        std::shared_ptr<LocationBackEnd> backEnd;
        /// The file of the monitored regions.
        std::string regionsPath;
    };

    /// Watches the regions of the file from now on.
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
    std::int64_t activityType() const override;
    void startMonitoringSignificantLocationChanges() override;
    void stopMonitoringSignificantLocationChanges() override;
    /// Confirmed to the delegate. A region of a kind that the back end cannot monitor is kept all the same, and told as
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
    void tell(const Call& call);
    void tellOf(const RegionMonitor::Changes& changes);
    void keep(const RegionMonitor::Changes& changes);
    void takePositions(const std::vector<CLLocation>& positions);
    std::vector<CLLocation> significantAmong(const std::vector<CLLocation>& positions);
    void takeAdvertisement(const CLBeacon& beacon);
    void updateNeeds();
    void waitForTick();
    void tick();

    // Fixed at construction.
    const Parts parts_;
    // Main queue only: what the back end was told last, and whether a tick is under way.
    LocationBackEnd::Needs needs_;
    bool isTickDue_ = false;

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
    // The position that was told last as a significant change.
    std::optional<CLLocationCoordinate2D> lastPlace_;
};

}  // namespace vorlane
