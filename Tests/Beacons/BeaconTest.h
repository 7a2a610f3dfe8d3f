#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "Beacons/VLBeaconContentData.h"
#include "Beacons/VLBeaconData.h"
#include "Beacons/VLBeaconMessage.h"
#include "Beacons/VLBeaconRegionSession.h"
#include "Beacons/VLBeaconRegionSessions.h"
#include "Beacons/VLBeaconsConfig.h"
#include "Beacons/VLBeaconsSettings.h"
#include "Notifications/VLNotificationHelper.h"
#include "Platform/CLBeaconRegion.h"
#include "Platform/NSFileManager.h"
#include "Platform/NSPropertyListSerialization.h"
#include "Tests/Support/ServicesTest.h"

namespace vorlane {

/// The parts of the beacon feature, with beacons of one UUID.
class BeaconTest : public ServicesTest {
protected:
    explicit BeaconTest(SimulatedPhone::Options options = {}) : ServicesTest(std::move(options)) {}

    static constexpr const char* kUUID = "B9407F30-F5F8-466E-AFF9-25556B57FE6D";
    static constexpr const char* kOtherUUID = "0A407F30-F5F8-466E-AFF9-25556B57FE6D";
    static constexpr const char* kContentPath = "/K/T/ibeacon";
    static constexpr const char* kEntryPath = "/K/T/session/beacon/region/entry";
    static constexpr const char* kExitPath = "/K/T/session/beacon/region/exit";
    static constexpr const char* kSummaryPath = "/K/T/session/beacon";

    static CLBeacon beacon(std::uint16_t minor = 2, CLProximity proximity = CLProximity::Near, double accuracy = 1.5) {
        return {kUUID, 1, minor, proximity, accuracy};
    }

    /// A rule for major 1 and minor 2. `further` replaces fields, and null removes them.
    static Value rule(const std::string& type, const Dictionary& further = {}) {
        Dictionary rule{{"type", type}, {"beacon_type", "ibeacon"}, {"uuid", kUUID}, {"major", 1},
                        {"minor", 2},   {"alert_range", "any"}};
        for (const auto& [key, value] : further) {
            rule[key] = value;
            if (value.is_null()) rule.erase(key);
        }
        return Value(std::move(rule));
    }
    static Dictionary configured(const Array& rules, const Dictionary& further = {}) {
        Dictionary configuration{{"beacon_data", Value(rules)}, {"auto_beacon_notify", true}};
        for (const auto& [key, value] : further) configuration[key] = value;
        return configuration;
    }
    static std::shared_ptr<VLBeaconsConfig> configOf(const std::shared_ptr<VLSettings>& settings,
                                                     const Dictionary& configuration) {
        auto config = std::make_shared<VLBeaconsConfig>(settings);
        config->isBeaconsFound(configuration);
        return config;
    }
    std::shared_ptr<VLBeaconsConfig> config(const Array& rules, const Dictionary& further = {}) {
        return configOf(settings, configured(rules, further));
    }

    SimulatedLocationManager& manager() { return phone().simulatedLocationManager(); }
    std::shared_ptr<VLBeaconRegionSessions> makeSessions(const std::shared_ptr<VLBeaconsConfig>& beaconsConfig) {
        return std::make_shared<VLBeaconRegionSessions>(phone().locationManager(), settings, beaconsConfig, helper,
                                                        urlBuilder, urlSession, payloadBuilder, phone().application());
    }
    static std::shared_ptr<CLBeaconRegion> region(std::optional<std::uint16_t> major = std::nullopt,
                                                  std::optional<std::uint16_t> minor = std::nullopt,
                                                  const std::string& identifier = "R") {
        return std::make_shared<CLBeaconRegion>(kUUID, identifier, major, minor);
    }

    /// The answer to a content request.
    static std::string message(const std::string& text = "Hello", const std::string& appKey = "K") {
        return Value(Dictionary{{"message", Dictionary{{"appkey", appKey}, {"pushtext", text}, {"phash", "P"}}}})
            .dump();
    }
    void answerContent(const std::string& text = "Hello") {
        session().answer(kContentPath, 200, message(text));
        phone().settle();
    }
    std::size_t contentRequests() { return session().requests(kContentPath).size(); }

    /// The texts of the notifications shown, in order.
    std::vector<std::string> shown() {
        std::vector<std::string> texts;
        phone().settle();
        for (const auto& [handle, notification] : phone().simulatedApplication().deliveredByHandle()) {
            texts.push_back(notification.alertBody.value_or("(null)"));
        }
        return texts;
    }

    /// The root of a property list in the documents folder, or null if there is none.
    Value file(const std::string& name) {
        const auto root = NSPropertyListSerialization::dictionaryWithContentsOfFile(documentsPath(name));
        return root ? Value(*root) : Value();
    }
    Value settingsFile() { return file("VLLibBeaconsSettings.plist"); }
    Value sessionsFile() { return file("VLBeaconRegionSessions.plist"); }
    void writeFile(const std::string& name, const Dictionary& root) {
        NSPropertyListSerialization::writeToFile(root, documentsPath(name));
    }
    void writeBytes(const std::string& name, const std::string& bytes) {
        NSFileManager::writeToFile(Data(bytes.begin(), bytes.end()), documentsPath(name));
    }
    std::string bytesOf(const std::string& name) {
        const auto bytes = NSFileManager::contentsAtPath(documentsPath(name));
        return bytes ? std::string(bytes->begin(), bytes->end()) : "(none)";
    }

    /// How often the line was logged at level Debug.
    int logged(const std::string& text) { return log().count(text, VLLogLevel::Debug); }
    int loggedPart(const std::string& part) { return static_cast<int>(log().linesContaining(part).size()); }

    std::shared_ptr<VLNotificationHelper> helper =
        std::make_shared<VLNotificationHelper>(phone().application(), phone().device(), phone().mainBundle());
};

}  // namespace vorlane
