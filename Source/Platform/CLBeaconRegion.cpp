#include "Platform/CLBeaconRegion.h"

#include <fmt/format.h>
#include <uuid/uuid.h>

#include <utility>

#include "Platform/Internal/ASCIICase.h"

namespace vorlane {

namespace {

std::string stringOrNull(std::optional<std::uint16_t> number) { return number ? fmt::format("{}", *number) : "(null)"; }

}  // namespace

CLBeaconRegion::CLBeaconRegion(const std::string& proximityUUID, std::string identifier,
                               std::optional<std::uint16_t> major, std::optional<std::uint16_t> minor)
    : CLRegion(std::move(identifier)), proximityUUID_(capitalised(proximityUUID)), major_(major), minor_(minor) {}

bool CLBeaconRegion::isUUID(const std::string& string) {
    uuid_t uuid{};
    return string.find('\0') == std::string::npos && uuid_parse(string.c_str(), uuid) == 0;
}

std::string CLBeaconRegion::description() const {
    return fmt::format("CLBeaconRegion (identifier:'{}', uuid:{}, major:{}, minor:{})", identifier(), proximityUUID_,
                       stringOrNull(major_), stringOrNull(minor_));
}

Dictionary CLBeaconRegion::toDictionary() const {
    Dictionary dictionary{{"type", "beacon"}, {"identifier", identifier()}, {"uuid", proximityUUID_}};
    if (major_) dictionary["major"] = *major_;
    if (minor_) dictionary["minor"] = *minor_;
    if (notifyEntryStateOnDisplay_) dictionary["notifyEntryStateOnDisplay"] = true;
    return dictionary;
}

}  // namespace vorlane
