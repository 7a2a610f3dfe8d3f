#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "Platform/CLRegion.h"
#include "Public/VLExport.h"

namespace vorlane {

/// The area around the beacons with one UUID, optionally with one major and one minor. Immutable except for
/// `notifyEntryStateOnDisplay`, which is set before monitoring starts.
class VORLANE_EXPORT CLBeaconRegion : public CLRegion {
public:
    /// `initWithProximityUUID:identifier:` and its longer forms. `proximityUUID` must be a valid UUID and is stored in
    /// capitals. A `nullopt` major or minor matches any.
    CLBeaconRegion(const std::string& proximityUUID, std::string identifier,
                   std::optional<std::uint16_t> major = std::nullopt,
                   std::optional<std::uint16_t> minor = std::nullopt);

    /// Whether the string is a UUID, in either case.
    static bool isUUID(const std::string& string);

    const std::string& proximityUUID() const { return proximityUUID_; }
    std::optional<std::uint16_t> major() const { return major_; }
    std::optional<std::uint16_t> minor() const { return minor_; }

    /// Whether the manager also reports the state when the user turns the display on inside the region.
    bool notifyEntryStateOnDisplay() const { return notifyEntryStateOnDisplay_; }
    void setNotifyEntryStateOnDisplay(bool notify) { notifyEntryStateOnDisplay_ = notify; }

    std::string description() const override;
    Dictionary toDictionary() const override;

private:
    const std::string proximityUUID_;
    const std::optional<std::uint16_t> major_;
    const std::optional<std::uint16_t> minor_;
    bool notifyEntryStateOnDisplay_ = false;
};

}  // namespace vorlane
