#include "Beacons/validIBeaconRule.h"

#include <fmt/format.h>
#include <uuid/uuid.h>

#include <optional>
#include <string>

#include "Categories/NSDictionary+VLJSON.h"
#include "Categories/NSDictionary+VLLookup.h"
#include "Public/VLLog.h"

namespace vorlane {

namespace {

bool isUUID(const Value* value) {
    const auto* text = value ? value->get_ptr<const std::string*>() : nullptr;
    uuid_t uuid{};
    return text && text->find('\0') == std::string::npos && uuid_parse(text->c_str(), uuid) == 0;
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
