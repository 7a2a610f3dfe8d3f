#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

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

/// Keeps the monitored geofences in step with the list that the service chooses for the device's position, and turns
/// entering and leaving them into content. Driven by the location service; main queue only.
///
/// A description is one region as the service sends it ("id", "latitude", "longitude", "radius", "name",
/// "plotwise_id"); a record is what "VLGeoRegions.plist" keeps of it, with its last enter and exit.
class VLGeoService : public std::enable_shared_from_this<VLGeoService> {
public:
    using Descriptions = std::vector<Dictionary>;
    /// The answer; nothing on failure.
    using RegionsHandler = std::function<void(std::optional<Dictionary> response)>;

    /// `init:withSettings:withRegionContent:urlBuilder:urlSession:`
    VLGeoService(std::shared_ptr<CLLocationManager> locationManager, std::shared_ptr<VLSettings> settings,
                 std::shared_ptr<VLGeoRegionContent> geoRegionContent, std::shared_ptr<VLURLBuilder> urlBuilder,
                 std::shared_ptr<VLURLSession> urlSession);
    ~VLGeoService();

    /// `startWithConfig:` keeps the configuration service and takes its geo configuration over.
    void startWithConfig(std::shared_ptr<VLConfigService> configService);
    /// Copies the thresholds of the geo configuration into the settings; what it does not tell stays as it was.
    void setupGeoConfig();

    void startSignificantLocationUpdates();
    void stopSignificantLocationUpdates();

    /// `didUpdateLocations:` takes the most accurate usable location, and no other.
    void didUpdateLocations(const std::vector<CLLocation>& locations);
    /// `updateConfig:` fetches the regions when the device has moved far enough, enough time has passed, or a fetch is
    /// forced; never while another fetch is under way.
    void updateConfig(const CLLocation& location);

    /// `fetchGeoRegionsForLocation:withRetry:`; with a retry, a fetch that fails is repeated once, at once.
    void fetchGeoRegionsForLocation(const CLLocation& location, bool withRetry);
    /// `geoRegionsForCurrentLocation:withCompletionHandler:`; the handler runs on the main queue.
    void geoRegionsForCurrentLocation(const CLLocation& location, RegionsHandler completionHandler);
    /// `handleGeoRegionsFetch:withResponse:isRetry:`
    void handleGeoRegionsFetch(const CLLocation& location, const std::optional<Dictionary>& response, bool isRetry);
    /// `extractGeoRegionsFromJson:` gives the descriptions in their order, "id" as a text. One without a usable
    /// identifier, centre on the globe or radius is passed over.
    static Descriptions extractGeoRegionsFromJson(const Dictionary& response);

    /// `addRegions:` makes these the monitored geofences; an empty list leaves everything as it is.
    void addRegions(const Descriptions& regions);
    /// `stopMonitoringStaleGeoRegions:` stops the geofences that are not in the list, and gives the number of slots to
    /// fill.
    std::size_t stopMonitoringStaleGeoRegions(const Descriptions& regions);
    /// `monitorRegions:withAvailableMonitoringSlots:` rebuilds the file from the last list extracted, and starts
    /// monitoring the regions that the file did not hold.
    void monitorRegions(const Descriptions& regions, std::size_t slots);
    /// `addGeoRegion:` starts monitoring the region of a record.
    void addGeoRegion(const Dictionary& record);
    /// `dictionaryToRegion:`; the radius is lowered to the largest one that can be monitored.
    std::shared_ptr<CLCircularRegion> dictionaryToRegion(const Dictionary& record) const;
    static std::size_t maxGeoRegionMonitoringSlots();

    /// `didEnterRegion:`, `didExitRegion:` ask for the region's content, unless the last one of the same kind is too
    /// recent. A region without a record is ignored.
    void didEnterRegion(const CLRegion& region);
    void didExitRegion(const CLRegion& region);

    /// `isUsableLocation:allowSignificant:`
    static bool isUsableLocation(const CLLocation& location, bool allowSignificant);
    /// `isFreshLocation:`: at most five seconds old.
    static bool isFreshLocation(const CLLocation& location);
    /// `sortLocationsByAccuracy:`, the best first.
    static std::vector<CLLocation> sortLocationsByAccuracy(std::vector<CLLocation> locations);
    /// `calculateDistanceInMetersBetweenCoord:coord:` along the great circle, on a globe of radius 6371 km.
    static double calculateDistanceInMetersBetweenCoord(const CLLocationCoordinate2D& first,
                                                        const CLLocationCoordinate2D& second);
    /// `calculateTimeInSecondsBetweenTimeStamps:oldTimeStamp:`
    static double calculateTimeInSecondsBetweenTimeStamps(double newTimeStamp, double oldTimeStamp);

    /// "geo_regions"
    static const char* geoRegionsConfigKey();
    /// The last list extracted.
    const Descriptions& geoRegionsFromAPI() const { return geoRegionsFromAPI_; }
    /// Whether a fetch is under way.
    bool geoFeedWithSessionCall() const { return geoFeedWithSessionCall_; }

private:
    struct Transition;

    void logLocation(const CLLocation& location) const;
    const char* activity() const;
    double distanceFromOldLocation(const CLLocation& location, double otherwise) const;
    void takeOver(const Dictionary& config, const char* key, void (VLSettings::*setter)(double)) const;
    void didCross(const CLRegion& region, const Transition& transition);
    bool accept(Dictionary& record, const CLRegion& region, const Transition& transition) const;

    // Fixed at construction.
    const std::shared_ptr<CLLocationManager> locationManager_;
    const std::shared_ptr<VLSettings> settings_;
    const std::shared_ptr<VLGeoRegionContent> geoRegionContent_;
    const std::shared_ptr<VLURLBuilder> urlBuilder_;
    const std::shared_ptr<VLURLSession> urlSession_;
    // Main queue only.
    std::shared_ptr<VLConfigService> configService_;
    std::optional<Dictionary> geoDataConfiguration_;
    Descriptions geoRegionsFromAPI_;
    bool geoFeedWithSessionCall_ = false;
    /// Nothing counts it up; it is logged all the same, and meant so.
    std::int64_t numNewLocationsRetried_ = 0;
};

}  // namespace vorlane
