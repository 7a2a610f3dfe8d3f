#include "Geo/VLGeoService.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <utility>

#include "Categories/NSDictionary+VLLookup.h"
#include "Categories/NSNumber+VLLooseValue.h"
#include "Core/Base/VLSettings.h"
#include "Geo/VLGeoRegionContent.h"
#include "Geo/VLGeoRegionFile.h"
#include "Geo/VLGeoRegionInfo.h"
#include "Geo/VLGeoRegionRecord.h"
#include "Network/VLURLBuilder.h"
#include "Network/VLURLSession.h"
#include "Platform/CLBeaconRegion.h"
#include "Platform/CLCircularRegion.h"
#include "Platform/CLLocationManager.h"
#include "Platform/Platform.h"
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

double now() { return Platform::current().clock().now(); }

double orDefault(double setting, double otherwise) { return setting == 0 ? otherwise : setting; }

bool contains(const VLGeoService::Descriptions& descriptions, const std::string& identifier) {
    return std::ranges::any_of(
        descriptions, [&](const Dictionary& description) { return stringForKey(description, "id") == identifier; });
}

/// Before they are stopped: a record means that its region is watched, also to the process after one that was killed.
void forgetStaleRecords(const VLGeoService::Descriptions& regions) {
    auto records = VLGeoRegionFile::getRegionsFromFile();
    if (!records) return;
    const auto dropped = std::erase_if(*records, [&](const Dictionary& record) {
        const auto identifier = stringForKey(record, Record::kIdentifierKey);
        return !identifier || !contains(regions, *identifier);
    });
    if (dropped > 0 && !VLGeoRegionFile::saveRegionsToFile(*records)) VLGeoRegionFile::deleteGeoRegionsFile();
}

}  // namespace

/// What entering and leaving differ in.
struct VLGeoService::Transition {
    const char* word;
    bool isInside;
    const char* timestampKey;
    const char* crossedText;
    const char* acceptedText;
    const char* flappingText;
};

VLGeoService::VLGeoService(std::shared_ptr<CLLocationManager> locationManager, std::shared_ptr<VLSettings> settings,
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
    if (const auto metres = vl_looseNumber(accuracy)) {
        settings_->setDesiredHorizontalAccuracy(accuracy->is_number() ? *accuracy : Value(*metres));
    }
}

void VLGeoService::takeOver(const Dictionary& config, const char* key, void (VLSettings::*setter)(double)) const {
    if (const auto number = vl_looseNumber(valueForKey(config, key))) ((*settings_).*setter)(*number);
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
    // Those whose accuracy is no number have no place in an order.
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
    const double age = now() - location.timestamp;
    if (age <= kFreshness) return true;
    logMessage(VLLogLevel::Debug, fmt::format("Location is not fresh, is {:.2f} limit is {:.2f}", age, kFreshness));
    return false;
}

void VLGeoService::logLocation(const CLLocation& location) const {
    logMessage(VLLogLevel::Debug, fmt::format("Activity:{}", activity()));
    logMessage(VLLogLevel::Debug, fmt::format("Age:{:.0f} seconds, ACCURACY {:f}", std::abs(now() - location.timestamp),
                                              location.horizontalAccuracy));
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
    const double neededDistance = orDefault(settings_->significantDistance(), kDefaultDistance);
    const double neededTime = orDefault(settings_->significantTime(), kDefaultTime);
    const double distance = distanceFromOldLocation(location, neededDistance);
    const double time = calculateTimeInSecondsBetweenTimeStamps(now(), settings_->fetchGeoRegionTimestamp());
    logMessage(VLLogLevel::Debug, fmt::format("SIGNIFICANT DISTANCE {:f}", distance));
    // Spelt so.
    logMessage(VLLogLevel::Debug, fmt::format("SIGNIGICANT TIME {:f}", time));
    if (time < neededTime && distance < neededDistance && !settings_->forceGeoConfigUpdate()) {
        return logMessage(VLLogLevel::Debug, "FETCH GEO REGIONS NOT CALLED");
    }
    if (std::exchange(geoFeedWithSessionCall_, true)) return;
    settings_->setForceGeoConfigUpdate(false);
    fetchGeoRegionsForLocation(location, true);
}

double VLGeoService::distanceFromOldLocation(const CLLocation& location, double otherwise) const {
    const auto old = settings_->oldLocation();
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
            // In line with the callbacks of the location manager, so that no two of them interleave.
            onMainQueue([handler, answer = std::move(answer)] {
                if (handler) handler(answer);
            });
        });
}

void VLGeoService::handleGeoRegionsFetch(const CLLocation& location, const std::optional<Dictionary>& response,
                                         bool isRetry) {
    assertMainQueue();
    settings_->setOldLocation(
        Dictionary{{"Latitude", location.coordinate.latitude}, {"Longitude", location.coordinate.longitude}});
    if (response) {
        settings_->setFetchGeoRegionTimestamp(now());
        geoRegionsFromAPI_ = extractGeoRegionsFromJson(*response);
        // A copy, since whoever is told of a region may start another fetch.
        addRegions(Descriptions(geoRegionsFromAPI_));
    } else if (isRetry) {
        // Still under way.
        return fetchGeoRegionsForLocation(location, false);
    }
    geoFeedWithSessionCall_ = false;
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
    forgetStaleRecords(regions);
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
    // Whatever beacon regions take of the platform's room, meant so.
    return maxGeoRegionMonitoringSlots();
}

std::size_t VLGeoService::maxGeoRegionMonitoringSlots() { return kMonitoringSlots; }

void VLGeoService::monitorRegions(const Descriptions& regions, std::size_t slots) {
    const auto stored = VLGeoRegionFile::getRegionsFromFile().value_or(VLGeoRegionFile::Records());
    const auto count = std::min({slots, regions.size(), geoRegionsFromAPI_.size()});
    VLGeoRegionFile::Records records;
    for (std::size_t i = 0; i < count; ++i) {
        auto record = Record::recordOf(geoRegionsFromAPI_[i], now());
        const auto identifier = stringForKey(record, Record::kIdentifierKey);
        const auto retained = std::ranges::find_if(stored, [&](const Dictionary& candidate) {
            return identifier && stringForKey(candidate, Record::kIdentifierKey) == identifier;
        });
        if (retained != stored.end()) {
            // Also where the service tells it differently by now, meant so.
            for (const auto& [key, value] : *retained) record[key] = value;
        } else {
            addGeoRegion(record);
        }
        records.push_back(std::move(record));
    }
    // Regions are started before the file tells of them: one that it tells of is never started again, so a process that
    // ends in between must not have written it.
    if (!VLGeoRegionFile::saveRegionsToFile(records)) VLGeoRegionFile::deleteGeoRegionsFile();
    if (regions.size() > slots) {
        logMessage(VLLogLevel::Debug,
                   fmt::format("Could not add {} regions for monitoring due to all {} slots being in use",
                               regions.size() - slots, maxGeoRegionMonitoringSlots()));
    }
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
    auto records = VLGeoRegionFile::getRegionsFromFile();
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
    VLGeoRegionFile::saveRegionsToFile(*records);
}

/// Notes the transition in the record, unless the last one of its kind is too recent.
bool VLGeoService::accept(Dictionary& record, const CLRegion& region, const Transition& transition) const {
    const double time = now();
    const double limit = orDefault(settings_->geoRegionStateChangeTime(), kDefaultStateChangeTime);
    if (!(time - Record::numberIn(record, transition.timestampKey) > limit)) return false;
    record[Record::kIsInRegionKey] = transition.isInside;
    record[transition.timestampKey] = time;
    logMessage(VLLogLevel::Debug, fmt::format(fmt::runtime(transition.acceptedText), region.identifier()));
    return true;
}

}  // namespace vorlane
