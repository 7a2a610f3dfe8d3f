#include "Beacons/validIBeaconRule.h"

#include <fmt/format.h>

#include <optional>
#include <string>

#include "Categories/NSDictionary+VLJSON.h"
#include "Categories/NSDictionary+VLLookup.h"
#include "Platform/CLBeaconRegion.h"
#include "Public/VLLog.h"

namespace vorlane {

namespace {

bool isUUID(const Value* value) {
    const auto* string = value ? value->get_ptr<const std::string*>() : nullptr;
    return string && CLBeaconRegion::isUUID(*string);
}

}  // namespace

bool validIBeaconRule(const Dictionary& rule) {
    if (stringForKey(rule, "beacon_type") != "ibeacon") return false;
    const auto* uuid = valueForKey(rule, "uuid");
    if (isUUID(uuid)) return true;
    logMessage(VLLogLevel::Warn, fmt::format("{} seems to be an invalid UUID, beacon config ignored",
                                             vl_description(uuid ? std::optional(*uuid) : std::nullopt)));
    return false;
}

}  // namespace vorlane
