#include "Platform/CLBeaconRegion.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

namespace vorlane {

namespace {

/// Without the locale's help, which an application may have changed.
std::string inCapitals(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(), [](char letter) {
        return letter >= 'a' && letter <= 'z' ? static_cast<char>(letter - 32) : letter;
    });
    return text;
}

std::string textOf(std::optional<std::uint16_t> number) { return number ? fmt::format("{}", *number) : "(null)"; }

}  // namespace

CLBeaconRegion::CLBeaconRegion(const std::string& proximityUUID, std::string identifier,
                               std::optional<std::uint16_t> major, std::optional<std::uint16_t> minor)
    : CLRegion(std::move(identifier)), proximityUUID_(inCapitals(proximityUUID)), major_(major), minor_(minor) {}

std::string CLBeaconRegion::description() const {
    return fmt::format("CLBeaconRegion (identifier:'{}', uuid:{}, major:{}, minor:{})", identifier(), proximityUUID_,
                       textOf(major_), textOf(minor_));
}

Dictionary CLBeaconRegion::toDictionary() const {
    Dictionary dictionary{{"type", "beacon"}, {"identifier", identifier()}, {"uuid", proximityUUID_}};
    if (major_) dictionary["major"] = *major_;
    if (minor_) dictionary["minor"] = *minor_;
    if (notifyEntryStateOnDisplay_) dictionary["notifyEntryStateOnDisplay"] = true;
    return dictionary;
}

}  // namespace vorlane
