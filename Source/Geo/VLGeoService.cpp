#include "Geo/VLGeoService.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <utility>

#include "Categories/NSDate+VLTimestamp.h"
#include "Categories/NSDictionary+VLLookup.h"
#include "Categories/NSNumber+VLLooseValue.h"
#include "Core/Base/VLSettings.h"
#include "Geo/VLGeoRegionContent.h"
#include "Geo/VLGeoRegionInfo.h"
#include "Geo/VLGeoRegionRecord.h"
#include "Network/VLURLBuilder.h"
#include "Network/VLURLSession.h"
#include "Platform/CLBeaconRegion.h"
#include "Platform/CLCircularRegion.h"
#include "Platform/CLLocationManager.h"
#include "Platform/Internal/PropertyListFile.h"
#include "Public/VLConstants.h"
#include "Public/VLLog.h"
#include "Tracking/VLConfigService.h"

namespace vorlane {

namespace {

constexpr double kDefaultDistance = 1000.0;
constexpr double kDefaultTime = 3600.0;
constexpr double kDefaultStateChangeTime = 300.0;
constexpr double kFreshness = 5.0;
constexpr std::size_t kMonitoringSlots = 20;

using Record = VLGeoRegionRecord;

double orDefault(double setting, double otherwise) { return setting == 0 ? otherwise : setting; }

bool contains(const VLGeoService::Descriptions& descriptions, const std::string& identifier) {
    return std::ranges::any_of(
        descriptions, [&](const Dictionary& description) { return stringForKey(description, "id") == identifier; });
}

/// The first record with the identifier, or null.
const Dictionary* findRecord(const std::optional<VLGeoRegionFile::Records>& records, const std::string& identifier) {
    if (!records) return nullptr;
    const auto found = std::ranges::find_if(
        *records, [&](const Dictionary& record) { return stringForKey(record, Record::kIdentifierKey) == identifier; });
    return found == records->end() ? nullptr : &*found;
}

}  // namespace

/// The differences between an enter and an exit.
struct VLGeoService::Transition {
    const char* word;
    bool isInside;
    const char* timestampKey;
    const char* crossedText;
    const char* acceptedText;
    const char* flappingText;
};

VLGeoService::VLGeoService(std::shared_ptr<CLLocationManager> locationManager, std::weak_ptr<VLSettings> settings,
                           std::shared_ptr<VLGeoRegionContent> geoRegionContent,
                           std::shared_ptr<VLURLBuilder> urlBuilder, std::shared_ptr<VLURLSession> urlSession)
    : locationManager_(std::move(locationManager)),
      settings_(std::move(settings)),
      geoRegionContent_(std::move(geoRegionContent)),
      urlBuilder_(std::move(urlBuilder)),
      urlSession_(std::move(urlSession)) {}

VLGeoService::~VLGeoService() = default;

void VLGeoService::startWithConfig(std::shared_ptr<VLConfigService> configService) {
    assertMainQueue();
    configService_ = std::move(configService);
    setupGeoConfig();
}

void VLGeoService::setupGeoConfig() {
    geoDataConfiguration_ = configService_ ? configService_->serviceConfig(VLCONFIGSERVICEGEO) : std::nullopt;
    if (!geoDataConfiguration_) return logMessage(VLLogLevel::Debug, "NO GEO CONFIG DATA RETURNED IN THE RESPONSE");
    takeOver(*geoDataConfiguration_, "significant_distance_m", &VLSettings::setSignificantDistance);
    takeOver(*geoDataConfiguration_, "significant_timeperiod_s", &VLSettings::setSignificantTime);
    takeOver(*geoDataConfiguration_, "polling_geostatechangeignore_timeperiod_s",
             &VLSettings::setGeoRegionStateChangeTime);
    const auto* accuracy = valueForKey(*geoDataConfiguration_, VLSettings::desiredHorizontalAccuracyKey());
    const auto metres = vl_looseNumber(accuracy);
    const auto settings = settings_.lock();
    if (!metres || !settings) return;
    settings->setDesiredHorizontalAccuracy(accuracy->is_number() ? *accuracy : Value(*metres));
}

void VLGeoService::takeOver(const Dictionary& config, const char* key, void (VLSettings::*setter)(double)) const {
    const auto number = vl_looseNumber(valueForKey(config, key));
    const auto settings = settings_.lock();
    if (number && settings) ((*settings).*setter)(*number);
}

void VLGeoService::startSignificantLocationUpdates() { locationManager_->startMonitoringSignificantLocationChanges(); }

void VLGeoService::stopSignificantLocationUpdates() { locationManager_->stopMonitoringSignificantLocationChanges(); }

void VLGeoService::didUpdateLocations(const std::vector<CLLocation>& locations) {
    assertMainQueue();
    for (const auto& location : sortLocationsByAccuracy(locations)) {
        if (!isUsableLocation(location, true)) continue;
        logLocation(location);
        return updateConfig(location);
    }
}

std::vector<CLLocation> VLGeoService::sortLocationsByAccuracy(std::vector<CLLocation> locations) {
    // NaN cannot be ordered, so it goes to the end.
    const auto end = std::stable_partition(locations.begin(), locations.end(), [](const CLLocation& location) {
        return !std::isnan(location.horizontalAccuracy);
    });
    std::ranges::stable_sort(locations.begin(), end, {}, &CLLocation::horizontalAccuracy);
    return locations;
}

bool VLGeoService::isUsableLocation(const CLLocation& location, bool allowSignificant) {
    if (!(location.horizontalAccuracy >= 0) || !CLLocationCoordinate2DIsValid(location.coordinate)) return false;
    return allowSignificant || isFreshLocation(location);
}

bool VLGeoService::isFreshLocation(const CLLocation& location) {
    const double age = vl_now() - location.timestamp;
    if (age <= kFreshness) return true;
    logMessage(VLLogLevel::Debug, fmt::format("Location is not fresh, is {:.2f} limit is {:.2f}", age, kFreshness));
    return false;
}

void VLGeoService::logLocation(const CLLocation& location) const {
    logMessage(VLLogLevel::Debug, fmt::format("Activity:{}", activity()));
    logMessage(VLLogLevel::Debug, fmt::format("Age:{:.0f} seconds, ACCURACY {:f}",
                                              std::abs(vl_now() - location.timestamp), location.horizontalAccuracy));
    logMessage(VLLogLevel::Debug, fmt::format("LATITUDE {:+.6f}, LONGITUDE {:+.6f}", location.coordinate.latitude,
                                              location.coordinate.longitude));
    logMessage(VLLogLevel::Debug, fmt::format("Attempt:{}", numNewLocationsRetried_));
}

const char* VLGeoService::activity() const {
    switch (locationManager_->activityType()) {
        case CLActivityType::AutomotiveNavigation:
            return "Automotive";
        case CLActivityType::Fitness:
            return "Pedestrian";
        case CLActivityType::OtherNavigation:
            return "Boat/Train/Plane???";
        default:
            return "Other/Unknown?";
    }
}

void VLGeoService::updateConfig(const CLLocation& location) {
    const auto settings = settings_.lock();
    if (!settings) return;
    const double neededDistance = orDefault(settings->significantDistance(), kDefaultDistance);
    const double neededTime = orDefault(settings->significantTime(), kDefaultTime);
    const double distance = distanceFromOldLocation(*settings, location, neededDistance);
    const double time = calculateTimeInSecondsBetweenTimeStamps(vl_now(), settings->fetchGeoRegionTimestamp());
    logMessage(VLLogLevel::Debug, fmt::format("SIGNIFICANT DISTANCE {:f}", distance));
    // Intended: the misspelling is part of the text.
    logMessage(VLLogLevel::Debug, fmt::format("SIGNIGICANT TIME {:f}", time));
    if (time < neededTime && distance < neededDistance && !settings->forceGeoConfigUpdate()) {
        return logMessage(VLLogLevel::Debug, "FETCH GEO REGIONS NOT CALLED");
    }
    if (std::exchange(geoFeedWithSessionCall_, true)) return;
    settings->setForceGeoConfigUpdate(false);
    fetchGeoRegionsForLocation(location, true);
}

double VLGeoService::distanceFromOldLocation(const VLSettings& settings, const CLLocation& location, double otherwise) {
    const auto old = settings.oldLocation();
    const auto latitude = old ? numberForKey(*old, "Latitude") : std::nullopt;
    const auto longitude = old ? numberForKey(*old, "Longitude") : std::nullopt;
    if (!latitude || !longitude) return otherwise;
    return calculateDistanceInMetersBetweenCoord(location.coordinate, {*latitude, *longitude});
}

double VLGeoService::calculateDistanceInMetersBetweenCoord(const CLLocationCoordinate2D& first,
                                                           const CLLocationCoordinate2D& second) {
    return CLDistanceBetween(first, second);
}

double VLGeoService::calculateTimeInSecondsBetweenTimeStamps(double newTimeStamp, double oldTimeStamp) {
    return newTimeStamp - oldTimeStamp;
}

void VLGeoService::fetchGeoRegionsForLocation(const CLLocation& location, bool withRetry) {
    logMessage(VLLogLevel::Debug, fmt::format("************** FETCH GEO REGIONS - {:d} *****************", withRetry));
    geoRegionsForCurrentLocation(
        location, [weakSelf = weak_from_this(), location, withRetry](const std::optional<Dictionary>& response) {
            if (const auto self = weakSelf.lock()) self->handleGeoRegionsFetch(location, response, withRetry);
        });
}

void VLGeoService::geoRegionsForCurrentLocation(const CLLocation& location, RegionsHandler completionHandler) {
    const auto url = urlBuilder_->geoRegionsURLWithLocation(location.coordinate.latitude, location.coordinate.longitude,
                                                            static_cast<std::int64_t>(maxGeoRegionMonitoringSlots()));
    urlSession_->GETJSON(
        url, [handler = std::move(completionHandler)](std::optional<Dictionary> answer, std::int64_t /*status*/,
                                                      const std::optional<NSError>& /*error*/) {
            // Serialised with the callbacks of the location manager.
            onMainQueue([handler, answer = std::move(answer)] {
                if (handler) handler(answer);
            });
        });
}

void VLGeoService::handleGeoRegionsFetch(const CLLocation& location, const std::optional<Dictionary>& response,
                                         bool isRetry) {
    assertMainQueue();
    {
        const PropertyListFile::Step step;
        if (response) {
            geoRegionsFromAPI_ = extractGeoRegionsFromJson(*response);
            // A copy, because the location manager may be the host's and start another fetch.
            addRegions(Descriptions(geoRegionsFromAPI_));
        }
        // Stored after the regions: a process killed in between fetches again.
        storeFetch(location, response.has_value());
    }
    // The retry ends the fetch.
    if (!response && isRetry) return fetchGeoRegionsForLocation(location, false);
    geoFeedWithSessionCall_ = false;
}

void VLGeoService::storeFetch(const CLLocation& location, bool isSuccessful) const {
    const auto settings = settings_.lock();
    if (!settings) return;
    settings->setOldLocation(
        Dictionary{{"Latitude", location.coordinate.latitude}, {"Longitude", location.coordinate.longitude}});
    if (isSuccessful) settings->setFetchGeoRegionTimestamp(vl_now());
}

VLGeoService::Descriptions VLGeoService::extractGeoRegionsFromJson(const Dictionary& response) {
    Descriptions descriptions;
    const auto* list = arrayForKey(response, geoRegionsConfigKey());
    if (!list) return descriptions;
    for (const auto& element : *list) {
        const auto* given = element.get_ptr<const Dictionary*>();
        if (!given) continue;
        auto description = *given;
        const auto id = description.find("id");
        if (id != description.end() && id->second.is_number()) id->second = stringValue(id->second).value();
        if (Record::isUsable(description)) descriptions.push_back(std::move(description));
    }
    return descriptions;
}

const char* VLGeoService::geoRegionsConfigKey() { return VLCONFIGSERVICEGEO; }

void VLGeoService::addRegions(const Descriptions& regions) {
    if (regions.empty()) return;
    const PropertyListFile::Step step;
    const auto slots = stopMonitoringStaleGeoRegions(regions);
    monitorRegions(regions, slots);
}

std::size_t VLGeoService::stopMonitoringStaleGeoRegions(const Descriptions& regions) {
    const auto monitored = locationManager_->monitoredRegions();
    std::size_t kept = 0;
    std::size_t stopped = 0;
    for (const auto& region : monitored) {
        if (std::dynamic_pointer_cast<CLBeaconRegion>(region)) continue;
        if (contains(regions, region->identifier())) {
            logMessage(VLLogLevel::Debug, fmt::format("Continuing to monitor region: {}", region->description()));
            ++kept;
        } else {
            locationManager_->stopMonitoringForRegion(region);
            logMessage(VLLogLevel::Debug, fmt::format("Stopped monitoring region: {}", region->description()));
            ++stopped;
        }
    }
    logMessage(VLLogLevel::Debug,
               fmt::format("Currently monitoring {} beacon regions", monitored.size() - kept - stopped));
    logMessage(VLLogLevel::Debug, fmt::format("Set to clear {} of {} geo regions", stopped, stopped + kept));
    // Intended: slots that beacon regions use are not subtracted.
    return maxGeoRegionMonitoringSlots();
}

std::size_t VLGeoService::maxGeoRegionMonitoringSlots() { return kMonitoringSlots; }

void VLGeoService::monitorRegions(const Descriptions& regions, std::size_t slots) {
    const auto stored = regionFile_.getRegionsFromFile();
    const auto monitored = monitoredGeoRegions();
    const auto count = std::min({slots, regions.size(), geoRegionsFromAPI_.size()});
    VLGeoRegionFile::Records records;
    for (std::size_t i = 0; i < count; ++i) {
        auto record = Record::recordOf(geoRegionsFromAPI_[i], vl_now());
        const auto identifier = stringForKey(record, Record::kIdentifierKey).value_or("");
        const auto* retained = findRecord(stored, identifier);
        // Intended: the stored record wins where the description differs.
        if (retained) {
            for (const auto& [key, value] : *retained) record[key] = value;
        }
        // The manager may have lost a region that has a record.
        if (!retained || !monitored.contains(identifier)) addGeoRegion(record);
        records.push_back(std::move(record));
    }
    regionFile_.saveRegionsToFile(std::move(records));
    if (regions.size() > slots) {
        logMessage(VLLogLevel::Debug,
                   fmt::format("Could not add {} regions for monitoring due to all {} slots being in use",
                               regions.size() - slots, maxGeoRegionMonitoringSlots()));
    }
}

/// The identifiers of the monitored regions that are not beacon regions.
std::set<std::string> VLGeoService::monitoredGeoRegions() const {
    std::set<std::string> identifiers;
    for (const auto& region : locationManager_->monitoredRegions()) {
        if (!std::dynamic_pointer_cast<CLBeaconRegion>(region)) identifiers.insert(region->identifier());
    }
    return identifiers;
}

void VLGeoService::addGeoRegion(const Dictionary& record) {
    locationManager_->startMonitoringForRegion(dictionaryToRegion(record));
}

std::shared_ptr<CLCircularRegion> VLGeoService::dictionaryToRegion(const Dictionary& record) const {
    VLGeoRegionInfo info;
    info.identifier = vl_looseText(valueForKey(record, Record::kIdentifierKey)).value_or("");
    info.center = {Record::numberIn(record, "latitude"), Record::numberIn(record, "longitude")};
    info.radius = std::min(Record::numberIn(record, "radius"), locationManager_->maximumRegionMonitoringDistance());
    return info.toCLRegion();
}

void VLGeoService::didEnterRegion(const CLRegion& region) {
    didCross(region, {.word = "enter",
                      .isInside = true,
                      .timestampKey = Record::kEnterTimestampKey,
                      .crossedText = "************** ENTERED REGION  {} *****************",
                      .acceptedText = "************** TIMER RESET INSIDE - ENTERED REGION  {} *****************",
                      .flappingText = "Flapping for enter region:{}"});
}

void VLGeoService::didExitRegion(const CLRegion& region) {
    didCross(region, {.word = "exit",
                      .isInside = false,
                      .timestampKey = Record::kExitTimestampKey,
                      .crossedText = "************** EXITED REGION  {} *****************",
                      .acceptedText = "************** TIMER RESET OUTSIDE - EXITED REGION  {} *****************",
                      .flappingText = "Flapping for exit region:{}"});
}

void VLGeoService::didCross(const CLRegion& region, const Transition& transition) {
    assertMainQueue();
    auto records = regionFile_.getRegionsFromFile();
    if (!records) return;
    for (auto& record : *records) {
        if (stringForKey(record, Record::kIdentifierKey) != region.identifier()) continue;
        logMessage(VLLogLevel::Debug, fmt::format(fmt::runtime(transition.crossedText), Record::nameOf(record)));
        if (accept(record, region, transition)) {
            geoRegionContent_->displayNotificationForPlotwiseId(Record::plainValue(record, "plotwise_id"),
                                                                transition.word);
        } else {
            logMessage(VLLogLevel::Debug, fmt::format(fmt::runtime(transition.flappingText), Record::nameOf(record)));
        }
    }
    regionFile_.saveRegionsToFile(std::move(*records));
}

/// Records the transition, unless the last one of its kind is too recent.
bool VLGeoService::accept(Dictionary& record, const CLRegion& region, const Transition& transition) const {
    const double time = vl_now();
    const auto settings = settings_.lock();
    const double limit = orDefault(settings ? settings->geoRegionStateChangeTime() : 0, kDefaultStateChangeTime);
    if (!(time - Record::numberIn(record, transition.timestampKey) > limit)) return false;
    record[Record::kIsInRegionKey] = transition.isInside;
    record[transition.timestampKey] = time;
    logMessage(VLLogLevel::Debug, fmt::format(fmt::runtime(transition.acceptedText), region.identifier()));
    return true;
}

}  // namespace vorlane
