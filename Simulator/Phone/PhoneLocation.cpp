#include "Simulator/Phone/PhoneLocation.h"

#include <memory>

#include "Categories/NSDictionary+VLLookup.h"
#include "Platform/CLBeaconRegion.h"
#include "Simulator/Phone/Phone.h"
#include "Simulator/Phone/PhoneValues.h"

namespace vorlane::phone {

namespace {

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
    const auto region = std::dynamic_pointer_cast<CLBeaconRegion>(
        CLRegion::fromDictionary({{"type", "beacon"},
                                  {"identifier", ""},
                                  {"uuid", requiredField(fields, "uuid")},
                                  {"major", requiredField(fields, "major")},
                                  {"minor", requiredField(fields, "minor")}}));
    if (!region || !region->major() || !region->minor())
        throw BadLine("a beacon needs a uuid, and a major and a minor from 0 to 65535");
    CLBeacon beacon{.proximityUUID = region->proximityUUID(), .major = *region->major(), .minor = *region->minor()};
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
