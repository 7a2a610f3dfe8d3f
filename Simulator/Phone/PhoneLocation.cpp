#include "Simulator/Phone/PhoneLocation.h"

#include <algorithm>
#include <limits>

#include "Categories/NSDictionary+VLLookup.h"
#include "Simulator/Phone/Phone.h"
#include "Simulator/Phone/PhoneValues.h"

namespace vorlane::phone {

namespace {

std::uint16_t shortFrom(const Value& value, const std::string& name) {
    const auto number = integerFrom(value, name);
    if (number < 0 || number > std::numeric_limits<std::uint16_t>::max()) throw BadLine(name + " must be 0 to 65535");
    return static_cast<std::uint16_t>(number);
}

double numberOrDefault(const Dictionary& fields, const std::string& name, double otherwise) {
    const auto* value = valueForKey(fields, name);
    return value ? numberFrom(*value, name) : otherwise;
}

Value listOf(const auto& regions) {
    Array list;
    for (const auto& region : regions) list.emplace_back(region->toDictionary());
    return list;
}

}  // namespace

std::shared_ptr<CLRegion> regionFrom(const Value& value) {
    auto region = CLRegion::fromDictionary(dictionaryFrom(value, "region"));
    if (!region) throw BadLine("region must be a circular or a beacon region with all its fields");
    return region;
}

CLBeacon beaconFrom(const Value& value) {
    const auto& fields = dictionaryFrom(value, "beacon");
    CLBeacon beacon;
    beacon.proximityUUID = stringFrom(requiredField(fields, "uuid"), "uuid");
    std::ranges::transform(beacon.proximityUUID, beacon.proximityUUID.begin(), [](char letter) {
        return letter >= 'a' && letter <= 'z' ? static_cast<char>(letter - 32) : letter;
    });
    beacon.major = shortFrom(requiredField(fields, "major"), "major");
    beacon.minor = shortFrom(requiredField(fields, "minor"), "minor");
    if (const auto* proximity = valueForKey(fields, "proximity")) {
        beacon.proximity = static_cast<CLProximity>(integerFrom(*proximity, "proximity"));
    }
    beacon.accuracy = numberOrDefault(fields, "accuracy", beacon.accuracy);
    return beacon;
}

CLLocation locationFrom(const Value& value, double now) {
    const auto& fields = dictionaryFrom(value, "location");
    return {{numberFrom(requiredField(fields, "latitude"), "latitude"),
             numberFrom(requiredField(fields, "longitude"), "longitude")},
            numberOrDefault(fields, "horizontalAccuracy", 0),
            now - numberOrDefault(fields, "age", 0)};
}

Value monitoredRegions(Phone& phone) { return listOf(phone.device().simulatedLocationManager().monitoredRegions()); }

Value rangedRegions(Phone& phone) { return listOf(phone.device().simulatedLocationManager().rangedRegions()); }

}  // namespace vorlane::phone
