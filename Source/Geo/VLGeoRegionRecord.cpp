#include "Geo/VLGeoRegionRecord.h"

#include <utility>

#include "Categories/NSDictionary+VLJSON.h"
#include "Categories/NSDictionary+VLLookup.h"
#include "Categories/NSNumber+VLLooseValue.h"
#include "Platform/CLLocation.h"
#include "Platform/PropertyList/PropertyListText.h"

namespace vorlane {

namespace {

constexpr double kOneDay = 86400.0;

}  // namespace

bool VLGeoRegionRecord::isUsable(const Dictionary& description) {
    const auto latitude = vl_looseNumber(valueForKey(description, "latitude"));
    const auto longitude = vl_looseNumber(valueForKey(description, "longitude"));
    const auto radius = vl_looseNumber(valueForKey(description, "radius"));
    if (!latitude || !longitude || !radius || *radius <= 0) return false;
    const auto identifier = stringForKey(description, "id");
    // The file and the platform must store the identifier unchanged.
    if (!identifier || identifier->empty() || PropertyListText::fitForXML(*identifier) != *identifier) return false;
    return CLLocationCoordinate2DIsValid({*latitude, *longitude});
}

Dictionary VLGeoRegionRecord::recordOf(const Dictionary& description, double now) {
    Dictionary record{{kIsInRegionKey, false}, {kEnterTimestampKey, now - kOneDay}, {kExitTimestampKey, now - kOneDay}};
    if (auto identifier = plainValue(description, "id")) record[kIdentifierKey] = std::move(*identifier);
    for (const auto* key : {"latitude", "longitude", "radius", "name", "plotwise_id"}) {
        if (auto value = plainValue(description, key)) record[key] = std::move(*value);
    }
    return record;
}

std::string VLGeoRegionRecord::nameOf(const Dictionary& record) {
    return vl_description(vl_looseText(valueForKey(record, "name")));
}

double VLGeoRegionRecord::numberIn(const Dictionary& record, const char* key) {
    return vl_looseNumber(valueForKey(record, key)).value_or(0);
}

std::optional<Value> VLGeoRegionRecord::plainValue(const Dictionary& dictionary, const char* key) {
    const auto* value = valueForKey(dictionary, key);
    return value && (value->is_string() || value->is_number()) ? std::optional(*value) : std::nullopt;
}

}  // namespace vorlane
