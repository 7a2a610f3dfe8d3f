#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "Platform/CLRegion.h"
#include "Public/VLExport.h"

namespace vorlane {

/// The surroundings of beacons with one UUID, or also one major, or also one minor. Immutable but for how it is
/// watched; that is set before monitoring starts.
class VORLANE_EXPORT CLBeaconRegion : public CLRegion {
public:
    /// `initWithProximityUUID:identifier:` and its longer forms. `proximityUUID` must be a UUID and is kept in
    /// capitals; an absent major or minor stands for any.
    CLBeaconRegion(const std::string& proximityUUID, std::string identifier,
                   std::optional<std::uint16_t> major = std::nullopt,
                   std::optional<std::uint16_t> minor = std::nullopt);

    /// Whether the text is a UUID, in capitals or not.
    static bool isUUID(const std::string& text);

    const std::string& proximityUUID() const { return proximityUUID_; }
    std::optional<std::uint16_t> major() const { return major_; }
    std::optional<std::uint16_t> minor() const { return minor_; }

    /// Whether the manager also reports the state when the user switches the display on inside the region.
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
