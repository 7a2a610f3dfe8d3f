#include "Simulator/Service/Store/Region.h"

#include <fmt/format.h>

#include <numbers>

#include "Categories/NSDictionary+VLLookup.h"
#include "Platform/CLLocation.h"
#include "Simulator/Service/Http/MalformedRequest.h"
#include "Simulator/Service/Http/RequestPayload.h"

namespace vorlane::service {
namespace {

// Half of the circumference of the globe: no circle is larger.
constexpr double kLargestRadius = 6'371'000 * std::numbers::pi;

double numberWithin(const Dictionary& payload, const std::string& key, double least, double most) {
    const auto number = numberForKey(payload, key);
    // Written so that NaN fails, too.
    if (number && *number >= least && *number <= most) return *number;
    throw MalformedRequest(fmt::format("\"{}\" is not a number from {} to {}", key, least, most));
}

void checkRadius(const Dictionary& payload) {
    const auto radius = numberForKey(payload, "radius").value_or(0);
    if (!(radius > 0 && radius <= kLargestRadius))
        throw MalformedRequest(fmt::format("\"radius\" is not a number above 0 and up to {:.0f}", kLargestRadius));
}

void checkDetails(const Dictionary& payload) {
    const auto* name = valueForKey(payload, "name");
    if (name && !name->is_string()) throw MalformedRequest("\"name\" is not a string");
    if (valueForKey(payload, "plotwise_id")) requiredTextOrNumber(payload, "plotwise_id");
}

}  // namespace

Region Region::fromPayload(const Dictionary& payload) {
    Region region;
    region.id = requiredTextOrNumber(payload, "id");
    region.latitude = numberWithin(payload, "latitude", -90, 90);
    region.longitude = numberWithin(payload, "longitude", -180, 180);
    checkRadius(payload);
    checkDetails(payload);
    region.document = payload;
    return region;
}

double Region::distanceTo(double otherLatitude, double otherLongitude) const {
    return CLDistanceBetween({latitude, longitude}, {otherLatitude, otherLongitude});
}

}  // namespace vorlane::service
