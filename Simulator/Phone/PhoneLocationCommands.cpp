// Commands for positions, regions and beacons.

#include "Categories/NSDictionary+VLLookup.h"
#include "Simulator/Phone/PhoneCommands.h"
#include "Simulator/Phone/PhoneLocation.h"
#include "Simulator/Phone/PhoneValues.h"

namespace vorlane::phone {

namespace {

using RegionEvent = SimulatedLocationManager::RegionEvent;

SimulatedLocationManager& manager(Phone& phone) { return phone.device().simulatedLocationManager(); }

/// The capabilities of the location manager and of the application object.
struct Abilities {
    SimulatedLocationManager::Capabilities location;
    TimeInterval backgroundTimeRemaining;
};

/// Stores one capability.
using Setter = void (*)(Abilities& abilities, const Value& value, const std::string& name);

const std::map<std::string, Setter>& setters() {
    using Name = const std::string&;
    static const std::map<std::string, Setter> table = {
        {"locationServicesEnabled",
         [](Abilities& a, const Value& v, Name n) { a.location.locationServicesEnabled = booleanFrom(v, n); }},
        {"regionMonitoring",
         [](Abilities& a, const Value& v, Name n) { a.location.regionMonitoring = booleanFrom(v, n); }},
        {"beaconMonitoring",
         [](Abilities& a, const Value& v, Name n) { a.location.beaconMonitoring = booleanFrom(v, n); }},
        {"ranging", [](Abilities& a, const Value& v, Name n) { a.location.ranging = booleanFrom(v, n); }},
        {"maximumRegionMonitoringDistance",
         [](Abilities& a, const Value& v, Name n) { a.location.maximumRegionMonitoringDistance = numberFrom(v, n); }},
        {"activityType", [](Abilities& a, const Value& v,
                            Name n) { a.location.activityType = static_cast<CLActivityType>(integerFrom(v, n)); }},
        {"backgroundTimeRemaining",
         [](Abilities& a, const Value& v, Name n) { a.backgroundTimeRemaining = numberFrom(v, n); }},
    };
    return table;
}

Value capabilities(Phone& phone, const Dictionary& line) {
    auto& application = phone.device().simulatedApplication();
    Abilities abilities{manager(phone).capabilities(), application.backgroundTimeRemaining()};
    for (const auto& [name, value] : dictionaryFrom(requiredField(line, "set"), "set")) {
        const auto setter = setters().find(name);
        if (setter == setters().end()) throw BadLine("capabilities has no " + name);
        setter->second(abilities, value, name);
    }
    manager(phone).setCapabilities(abilities.location);
    application.setBackgroundTimeRemaining(abilities.backgroundTimeRemaining);
    return nullptr;
}

Value locationAuthorisation(Phone& phone, const Dictionary& line) {
    const auto status = integerFrom(requiredField(line, "status"), "status");
    if (status < 0 || status > 4) throw BadLine("status must be 0 to 4");
    manager(phone).setAuthorizationStatus(static_cast<CLAuthorizationStatus>(status));
    return nullptr;
}

Value location(Phone& phone, const Dictionary& line) {
    std::vector<CLLocation> locations;
    for (const auto& value : arrayFrom(requiredField(line, "locations"), "locations")) {
        locations.push_back(locationFrom(value, phone.device().now()));
    }
    manager(phone).deliverLocations(std::move(locations));
    return nullptr;
}

RegionEvent regionEventFrom(const Value& value) {
    static const std::map<std::string, RegionEvent> events = {
        {"enter", RegionEvent::Enter},     {"exit", RegionEvent::Exit},       {"inside", RegionEvent::Inside},
        {"outside", RegionEvent::Outside}, {"unknown", RegionEvent::Unknown}, {"failed", RegionEvent::Failed}};
    const auto found = events.find(stringFrom(value, "event"));
    if (found == events.end()) throw BadLine("event must be enter, exit, inside, outside, unknown or failed");
    return found->second;
}

Value region(Phone& phone, const Dictionary& line) {
    const auto event = regionEventFrom(requiredField(line, "event"));
    if (const auto* given = valueForKey(line, "region")) {
        manager(phone).deliverRegionEvent(event, regionFrom(*given));
        return nullptr;
    }
    const auto identifier = stringFrom(requiredField(line, "identifier"), "identifier");
    auto monitored = manager(phone).monitoredRegion(identifier);
    if (!monitored) throw BadLine("no region " + identifier + " is monitored");
    manager(phone).deliverRegionEvent(event, std::move(monitored));
    return nullptr;
}

Value range(Phone& phone, const Dictionary& line) {
    auto ranged = std::dynamic_pointer_cast<CLBeaconRegion>(regionFrom(requiredField(line, "region")));
    if (!ranged) throw BadLine("only a beacon region is ranged");
    std::vector<CLBeacon> beacons;
    for (const auto& value : arrayFrom(requiredField(line, "beacons"), "beacons")) {
        beacons.push_back(beaconFrom(value));
    }
    manager(phone).deliverRanging(std::move(beacons), std::move(ranged));
    return nullptr;
}

}  // namespace

Phone::Commands locationCommands() {
    return {{"capabilities", capabilities},
            {"locationAuthorisation", locationAuthorisation},
            {"location", location},
            {"region", region},
            {"range", range}};
}

}  // namespace vorlane::phone
