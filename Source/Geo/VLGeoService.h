#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "Geo/VLGeoRegionFile.h"
#include "Platform/CLLocation.h"
#include "Public/VLValue.h"

namespace vorlane {

class CLCircularRegion;
class CLLocationManager;
class CLRegion;
class VLConfigService;
class VLGeoRegionContent;
class VLSettings;
class VLURLBuilder;
class VLURLSession;

/// Monitors the geofences that the service chooses for the device's position, and requests content when the device
/// enters or leaves one. Called by the location service. Main queue only.
///
/// A description is one region in an answer of the service ("id", "latitude", "longitude", "radius", "name",
/// "plotwise_id"). A record is its entry in "VLGeoRegions.plist", with the times of the last enter and exit.
class VLGeoService : public std::enable_shared_from_this<VLGeoService> {
public:
    using Descriptions = std::vector<Dictionary>;
    /// Receives the answer, or `nullopt` on failure.
    using RegionsHandler = std::function<void(std::optional<Dictionary> response)>;

    /// `init:withSettings:withRegionContent:urlBuilder:urlSession:`
    VLGeoService(std::shared_ptr<CLLocationManager> locationManager, std::weak_ptr<VLSettings> settings,
                 std::shared_ptr<VLGeoRegionContent> geoRegionContent, std::shared_ptr<VLURLBuilder> urlBuilder,
                 std::shared_ptr<VLURLSession> urlSession);
    ~VLGeoService();

    /// `startWithConfig:` stores the configuration service and calls `setupGeoConfig()`.
    void startWithConfig(std::shared_ptr<VLConfigService> configService);
    /// Copies the thresholds of the geo configuration into the settings. An absent threshold is left unchanged.
    void setupGeoConfig();

    void startSignificantLocationUpdates();
    void stopSignificantLocationUpdates();

    /// `didUpdateLocations:` calls `updateConfig()` with the most accurate usable location.
    void didUpdateLocations(const std::vector<CLLocation>& locations);
    /// `updateConfig:` fetches the regions if the device has moved far enough, enough time has passed, or a fetch is
    /// forced. Does nothing while a fetch is in progress.
    void updateConfig(const CLLocation& location);

    /// `fetchGeoRegionsForLocation:withRetry:` with a retry repeats a failed fetch once, without delay.
    void fetchGeoRegionsForLocation(const CLLocation& location, bool withRetry);
    /// `geoRegionsForCurrentLocation:withCompletionHandler:` calls the handler on the main queue.
    void geoRegionsForCurrentLocation(const CLLocation& location, RegionsHandler completionHandler);
    /// `handleGeoRegionsFetch:withResponse:isRetry:`
    void handleGeoRegionsFetch(const CLLocation& location, const std::optional<Dictionary>& response, bool isRetry);
    /// `extractGeoRegionsFromJson:` returns the descriptions in their order, with "id" as a string. A description
    /// without a usable identifier, centre or radius is skipped.
    static Descriptions extractGeoRegionsFromJson(const Dictionary& response);

    /// `addRegions:` makes these the monitored geofences. An empty list changes nothing.
    void addRegions(const Descriptions& regions);
    /// `stopMonitoringStaleGeoRegions:` stops the geofences that are not in the list, and returns the number of slots
    /// to fill.
    std::size_t stopMonitoringStaleGeoRegions(const Descriptions& regions);
    /// `monitorRegions:withAvailableMonitoringSlots:` rebuilds the file from the last list extracted. Starts monitoring
    /// the regions that the file did not hold, and those that the location manager does not monitor.
    void monitorRegions(const Descriptions& regions, std::size_t slots);
    /// `addGeoRegion:` starts monitoring the region of a record.
    void addGeoRegion(const Dictionary& record);
    /// `dictionaryToRegion:` reduces the radius to the largest one that can be monitored.
    std::shared_ptr<CLCircularRegion> dictionaryToRegion(const Dictionary& record) const;
    static std::size_t maxGeoRegionMonitoringSlots();

    /// `didEnterRegion:` and `didExitRegion:` request the region's content, unless the last transition of the same kind
    /// is too recent. A region without a record is ignored.
    void didEnterRegion(const CLRegion& region);
    void didExitRegion(const CLRegion& region);

    /// `isUsableLocation:allowSignificant:`
    static bool isUsableLocation(const CLLocation& location, bool allowSignificant);
    /// `isFreshLocation:` is true for a location at most 5 seconds old.
    static bool isFreshLocation(const CLLocation& location);
    /// `sortLocationsByAccuracy:` sorts the most accurate location first.
    static std::vector<CLLocation> sortLocationsByAccuracy(std::vector<CLLocation> locations);
    /// `calculateDistanceInMetersBetweenCoord:coord:` is the great-circle distance on a sphere of radius 6371 km.
    static double calculateDistanceInMetersBetweenCoord(const CLLocationCoordinate2D& first,
                                                        const CLLocationCoordinate2D& second);
    /// `calculateTimeInSecondsBetweenTimeStamps:oldTimeStamp:` is new - old.
    static double calculateTimeInSecondsBetweenTimeStamps(double newTimeStamp, double oldTimeStamp);

    /// "geo_regions"
    static const char* geoRegionsConfigKey();
    /// The last list extracted.
    const Descriptions& geoRegionsFromAPI() const { return geoRegionsFromAPI_; }
    /// Whether a fetch is in progress.
    bool geoFeedWithSessionCall() const { return geoFeedWithSessionCall_; }

private:
    struct Transition;

    void logLocation(const CLLocation& location) const;
    const char* activity() const;
    static double distanceFromOldLocation(const VLSettings& settings, const CLLocation& location, double otherwise);
    void takeOver(const Dictionary& config, const char* key, void (VLSettings::*setter)(double)) const;
    void storeFetch(const CLLocation& location, bool isSuccessful) const;
    std::set<std::string> monitoredGeoRegions() const;
    void didCross(const CLRegion& region, const Transition& transition);
    bool accept(Dictionary& record, const CLRegion& region, const Transition& transition) const;

    // Fixed at construction.
    const std::shared_ptr<CLLocationManager> locationManager_;
    const std::weak_ptr<VLSettings> settings_;
    const std::shared_ptr<VLGeoRegionContent> geoRegionContent_;
    const std::shared_ptr<VLURLBuilder> urlBuilder_;
    const std::shared_ptr<VLURLSession> urlSession_;
    // Main queue only.
    std::shared_ptr<VLConfigService> configService_;
    std::optional<Dictionary> geoDataConfiguration_;
    Descriptions geoRegionsFromAPI_;
    VLGeoRegionFile regionFile_;
    bool geoFeedWithSessionCall_ = false;
    // Intended: logged, but never incremented.
    std::int64_t numNewLocationsRetried_ = 0;
};

}  // namespace vorlane
