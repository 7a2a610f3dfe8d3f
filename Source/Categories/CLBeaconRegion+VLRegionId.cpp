#include "Categories/CLBeaconRegion+VLRegionId.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdint>
#include <optional>

#include "Categories/NSDictionary+VLJSON.h"
#include "Categories/NSDictionary+VLLookup.h"
#include "Platform/CLBeaconRegion.h"

namespace vorlane {

namespace {

std::string stringOf(const Value* value) {
    if (!value) return "(null)";
    auto number = stringValue(*value);
    return number ? std::move(*number) : vl_description(*value);
}

std::string numberOrAsterisk(std::optional<std::uint16_t> number) { return number ? fmt::format("{}", *number) : "*"; }

}  // namespace

std::string vl_regionIdForBeaconRule(const Dictionary& rule) {
    return fmt::format("{}_{}_{}", stringOf(valueForKey(rule, "uuid")), stringOf(valueForKey(rule, "major")),
                       stringOf(valueForKey(rule, "minor")));
}

std::string vl_getRegionId(const CLBeaconRegion& region) {
    return fmt::format("{}_{}_{}", region.proximityUUID(), numberOrAsterisk(region.major()),
                       numberOrAsterisk(region.minor()));
}

std::shared_ptr<CLBeaconRegion> vl_findBeaconRegionWithin(const CLBeaconRegion& region,
                                                          const std::vector<std::shared_ptr<CLBeaconRegion>>& regions) {
    const auto found = std::ranges::find_if(regions, [regionId = vl_getRegionId(region)](const auto& candidate) {
        return vl_getRegionId(*candidate) == regionId;
    });
    return found == regions.end() ? nullptr : *found;
}

}  // namespace vorlane
