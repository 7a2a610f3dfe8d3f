#include "Platform/CLRegion.h"

#include <cmath>
#include <cstdint>
#include <limits>
#include <optional>

#include "Platform/CLBeaconRegion.h"
#include "Platform/CLCircularRegion.h"

namespace vorlane {

namespace {

const Value* fieldOf(const Dictionary& dictionary, const char* key) {
    const auto found = dictionary.find(key);
    return found == dictionary.end() ? nullptr : &found->second;
}

std::optional<std::string> stringIn(const Dictionary& dictionary, const char* key) {
    const auto* field = fieldOf(dictionary, key);
    return field && field->is_string() ? std::optional(field->get<std::string>()) : std::nullopt;
}

/// Returns `nullopt` for a number that is not finite.
std::optional<double> numberIn(const Dictionary& dictionary, const char* key) {
    const auto* field = fieldOf(dictionary, key);
    if (!field || !field->is_number() || !std::isfinite(field->get<double>())) return std::nullopt;
    return field->get<double>();
}

/// Reads an optional 16-bit integer. Returns false if the field is present and invalid.
bool readShort(const Dictionary& dictionary, const char* key, std::optional<std::uint16_t>& number) {
    if (!fieldOf(dictionary, key)) return true;
    const auto value = numberIn(dictionary, key);
    if (!value || *value < 0 || *value > std::numeric_limits<std::uint16_t>::max()) return false;
    number = static_cast<std::uint16_t>(*value);
    return *value == *number;
}

std::shared_ptr<CLRegion> circularRegion(const Dictionary& dictionary, const std::string& identifier) {
    const auto latitude = numberIn(dictionary, "latitude");
    const auto longitude = numberIn(dictionary, "longitude");
    const auto radius = numberIn(dictionary, "radius");
    if (!latitude || !longitude || !radius) return nullptr;
    const CLLocationCoordinate2D center{*latitude, *longitude};
    if (!CLLocationCoordinate2DIsValid(center) || *radius <= 0) return nullptr;
    return std::make_shared<CLCircularRegion>(center, *radius, identifier);
}

std::shared_ptr<CLRegion> beaconRegion(const Dictionary& dictionary, const std::string& identifier) {
    const auto uuid = stringIn(dictionary, "uuid");
    if (!uuid || !CLBeaconRegion::isUUID(*uuid)) return nullptr;
    std::optional<std::uint16_t> major;
    std::optional<std::uint16_t> minor;
    if (!readShort(dictionary, "major", major) || !readShort(dictionary, "minor", minor)) return nullptr;
    auto region = std::make_shared<CLBeaconRegion>(*uuid, identifier, major, minor);
    const auto* notify = fieldOf(dictionary, "notifyEntryStateOnDisplay");
    region->setNotifyEntryStateOnDisplay(notify && notify->is_boolean() && notify->get<bool>());
    return region;
}

}  // namespace

CLRegion::~CLRegion() = default;

std::shared_ptr<CLRegion> CLRegion::fromDictionary(const Dictionary& dictionary) {
    const auto type = stringIn(dictionary, "type");
    const auto identifier = stringIn(dictionary, "identifier");
    if (!type || !identifier) return nullptr;
    if (*type == "circular") return circularRegion(dictionary, *identifier);
    return *type == "beacon" ? beaconRegion(dictionary, *identifier) : nullptr;
}

}  // namespace vorlane
