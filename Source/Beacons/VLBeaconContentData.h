#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "Platform/CLBeacon.h"

namespace vorlane {

class VLBeaconsSettings;

/// The values that the rules define for one ranged beacon, and the limits derived from them. Main queue only.
///
/// Intended: the counters are stored under the current beacon and rules of the settings, which another beacon may have
/// changed meanwhile.
class VLBeaconContentData {
public:
    /// `beaconDataWithSettings:` takes the current beacon of the settings.
    explicit VLBeaconContentData(std::shared_ptr<VLBeaconsSettings> settings);

    /// `nullopt` if the settings had no current beacon.
    const std::optional<CLBeacon>& beacon() const { return beacon_; }
    const std::shared_ptr<VLBeaconsSettings>& settings() const { return settings_; }

    /// Metres. Not used by any decision.
    std::int64_t maxRange() const { return maxRange_; }
    void setMaxRange(std::int64_t metres) { maxRange_ = metres; }
    /// The text to show if the content request fails. `nullopt` shows none.
    const std::optional<std::string>& defaultMessage() const { return defaultMessage_; }
    void setDefaultMessage(std::optional<std::string> message) { defaultMessage_ = std::move(message); }
    /// A period admits one message more than this. 0 if no rule defines it.
    std::int64_t maximumMessageCount() const { return maximumMessageCount_; }
    void setMaximumMessageCount(std::int64_t count) { maximumMessageCount_ = count; }
    /// Seconds.
    double maximumMessageTimePeriod() const { return maximumMessageTimePeriod_; }
    void setMaximumMessageTimePeriod(double seconds) { maximumMessageTimePeriod_ = seconds; }
    /// "any", "immediate" or "near". With any other value, no beacon is within range.
    const std::optional<std::string>& alertRange() const { return alertRange_; }
    void setAlertRange(std::optional<std::string> range) { alertRange_ = std::move(range); }

    bool withinRange() const;

    /// The configuration's "cooloff_period_minutes" in seconds, or 0 if absent.
    std::int64_t coolOffPeriod();
    /// True also at the exact end of the period.
    bool isInCoolOff();
    void enableCoolOff();

    /// Starts a new period first if the last one is over.
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
