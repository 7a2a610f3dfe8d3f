#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "Platform/CLBeacon.h"

namespace vorlane {

class VLBeaconsSettings;

/// The settings that the rules give for one ranged beacon, and the limits that follow from them. What the limits count
/// is kept by the settings under their current beacon and rules, which another beacon may have changed by the time of a
/// question; meant so. Main queue only.
class VLBeaconContentData {
public:
    /// `beaconDataWithSettings:` is for the current beacon of the settings.
    explicit VLBeaconContentData(std::shared_ptr<VLBeaconsSettings> settings);

    /// Nothing when the settings had no current beacon.
    const std::optional<CLBeacon>& beacon() const { return beacon_; }
    const std::shared_ptr<VLBeaconsSettings>& settings() const { return settings_; }

    /// Metres. No decision looks at it.
    std::int64_t maxRange() const { return maxRange_; }
    void setMaxRange(std::int64_t metres) { maxRange_ = metres; }
    /// The text to show when the content request fails; nothing shows none.
    const std::optional<std::string>& defaultMessage() const { return defaultMessage_; }
    void setDefaultMessage(std::optional<std::string> message) { defaultMessage_ = std::move(message); }
    /// Most messages in a period, less one; 0 when no rule tells.
    std::int64_t maximumMessageCount() const { return maximumMessageCount_; }
    void setMaximumMessageCount(std::int64_t count) { maximumMessageCount_ = count; }
    /// Seconds.
    double maximumMessageTimePeriod() const { return maximumMessageTimePeriod_; }
    void setMaximumMessageTimePeriod(double seconds) { maximumMessageTimePeriod_ = seconds; }
    /// "any", "immediate" or "near"; anything else is never reached.
    const std::optional<std::string>& alertRange() const { return alertRange_; }
    void setAlertRange(std::optional<std::string> range) { alertRange_ = std::move(range); }

    bool withinRange() const;

    /// The configuration's "cooloff_period_minutes" in seconds; 0 when it has none.
    std::int64_t coolOffPeriod();
    /// Also at the very end of the period.
    bool isInCoolOff();
    void enableCoolOff();

    /// Begins a new period first when the last one is over. A period admits one message more than the maximum.
    bool isMessageLimitReached();
    void incrementMessageCount();

private:
    void beginPeriodIfOver();

    // Fixed at construction.
    const std::shared_ptr<VLBeaconsSettings> settings_;
    const std::optional<CLBeacon> beacon_;

    std::int64_t maxRange_ = 0;
    std::optional<std::string> defaultMessage_;
    std::int64_t maximumMessageCount_ = 0;
    double maximumMessageTimePeriod_ = 0;
    std::int64_t coolOffPeriod_ = 0;
    std::optional<std::string> alertRange_;
};

}  // namespace vorlane
