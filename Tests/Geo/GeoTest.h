#pragma once

#include <fmt/format.h>

#include <memory>
#include <string>
#include <vector>

#include "Geo/VLGeoRegionContent.h"
#include "Geo/VLGeoRegionFile.h"
#include "Geo/VLGeoService.h"
#include "Notifications/VLNotificationHelper.h"
#include "Platform/CLBeaconRegion.h"
#include "Platform/CLCircularRegion.h"
#include "Platform/NSFileManager.h"
#include "Platform/NSPropertyListSerialization.h"
#include "Tests/Support/ServicesTest.h"
#include "Tracking/VLConfigService.h"

namespace vorlane {

/// The geo service with its collaborators, on a phone in Oslo.
class GeoTest : public ServicesTest {
protected:
    explicit GeoTest(SimulatedPhone::Options options = {}) : ServicesTest(std::move(options)) {}

    static constexpr CLLocationCoordinate2D kOslo{59.91, 10.75};
    static constexpr const char* kRegionsPath = "/geo/regions";
    static constexpr const char* kContentPath = "/K/T/geo";

    SimulatedLocationManager& manager() { return phone().simulatedLocationManager(); }

    /// A current fix.
    CLLocation at(CLLocationCoordinate2D place, double accuracy = 10) { return {place, accuracy, phone().now()}; }

    /// The coordinate at this distance north of Oslo.
    static CLLocationCoordinate2D northOfOslo(double metres) {
        return {kOslo.latitude + metres / 6371000.0 * 180.0 / 3.14159265358979323846, kOslo.longitude};
    }

    /// A region description with a string or numeric id.
    static Dictionary described(const Value& id, double latitude = 59.9, double longitude = 10.7, double radius = 100) {
        const auto name = id.is_string() ? id.get<std::string>() : id.dump();
        return {{"id", id},         {"latitude", latitude},      {"longitude", longitude},
                {"radius", radius}, {"name", "name of " + name}, {"plotwise_id", "segment of " + name}};
    }

    static std::string answerWith(const std::vector<Dictionary>& regions) {
        return Value(Dictionary{{"geo_regions", Array(regions.begin(), regions.end())}}).dump();
    }

    /// Descriptions of the regions "1", "2", …
    static std::vector<Dictionary> describedRegions(int count) {
        std::vector<Dictionary> regions;
        for (int i = 1; i <= count; ++i) regions.push_back(described(std::to_string(i)));
        return regions;
    }

    /// Forces a fetch and answers it with these regions.
    void fetch(const std::vector<Dictionary>& regions) {
        settings->setForceGeoConfigUpdate(true);
        geo->updateConfig(at(kOslo));
        session().answer(kRegionsPath, 200, answerWith(regions));
        phone().settle();
    }

    /// The root of the file, or null if there is none.
    Value file() {
        const auto bytes = NSFileManager::contentsAtPath(documentsPath("VLGeoRegions.plist"));
        const auto root = bytes ? NSPropertyListSerialization::propertyListWithData(*bytes) : std::nullopt;
        return root.value_or(Value());
    }
    /// Writes the file and starts a new service.
    void restartWithFile(const Value& root) {
        NSFileManager::writeToFile(NSPropertyListSerialization::dataWithPropertyList(root),
                                   documentsPath("VLGeoRegions.plist"));
        geo = makeService();
    }

    /// The new record of a region made by `described()`.
    Value freshRecord(const std::string& identifier) {
        return Dictionary{{"identifier", identifier},
                          {"latitude", 59.9},
                          {"longitude", 10.7},
                          {"radius", 100.0},
                          {"name", "name of " + identifier},
                          {"in_region", false},
                          {"VLEnterRegionTimestamp", phone().now() - 86400},
                          {"VLExitRegionTimestamp", phone().now() - 86400},
                          {"plotwise_id", "segment of " + identifier}};
    }

    std::vector<std::string> monitoredIdentifiers() {
        std::vector<std::string> identifiers;
        for (const auto& region : manager().monitoredRegions()) identifiers.push_back(region->identifier());
        return identifiers;
    }

    void enter(const std::string& identifier) { geo->didEnterRegion(CLCircularRegion({}, 1, identifier)); }
    void exit(const std::string& identifier) { geo->didExitRegion(CLCircularRegion({}, 1, identifier)); }

    /// How often the line was logged at level Debug.
    int logged(const std::string& message) { return log().count(message, VLLogLevel::Debug); }

    std::size_t fetches() { return session().requests(kRegionsPath).size(); }
    /// The segment and the transition of each content request.
    std::vector<std::pair<Value, Value>> contentRequests() {
        std::vector<std::pair<Value, Value>> list;
        for (const auto& request : session().requests()) {
            const auto url = request.request.URL.absoluteString();
            if (!url.ends_with("/geo")) continue;
            const auto body = request.payload();
            list.emplace_back(body["geoRegion"]["segmentId"], body["geoRegion"]["status"]);
        }
        return list;
    }

    std::shared_ptr<VLConfigService> loadedConfig(const std::string& body) {
        auto service = std::make_shared<VLConfigService>(settings, urlBuilder, urlSession);
        service->loadConfigWithCompletion(nullptr);
        session().answer("/config/application/ios/", 200, body);
        phone().settle();
        return service;
    }

    std::shared_ptr<VLGeoService> makeService() {
        return std::make_shared<VLGeoService>(phone().locationManager(), settings, content, urlBuilder, urlSession);
    }

    std::shared_ptr<VLNotificationHelper> helper =
        std::make_shared<VLNotificationHelper>(phone().application(), phone().device(), phone().mainBundle());
    std::shared_ptr<VLGeoRegionContent> content = std::make_shared<VLGeoRegionContent>(
        settings, phone().application(), helper, urlBuilder, urlSession, payloadBuilder);
    std::shared_ptr<VLGeoService> geo = makeService();
};

}  // namespace vorlane
