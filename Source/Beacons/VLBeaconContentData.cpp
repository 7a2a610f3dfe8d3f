#include "Beacons/VLBeaconContentData.h"

#include <fmt/format.h>

#include <limits>
#include <utility>

#include "Beacons/VLBeaconRule.h"
#include "Beacons/VLBeaconsSettings.h"
#include "Categories/CLBeacon+VLProximity.h"
#include "Categories/NSDate+VLTimestamp.h"
#include "Categories/NSDictionary+VLJSON.h"
#include "Public/VLLog.h"

namespace vorlane {

namespace {

constexpr const char* kCoolOffPeriodMinutes = "cooloff_period_minutes";
constexpr std::int64_t kSecondsPerMinute = 60;

std::int64_t secondsIn(std::int64_t minutes) {
    using Limits = std::numeric_limits<std::int64_t>;
    if (minutes > Limits::max() / kSecondsPerMinute) return Limits::max();
    if (minutes < Limits::min() / kSecondsPerMinute) return Limits::min();
    return minutes * kSecondsPerMinute;
}

std::string descriptionOf(const std::optional<CLBeacon>& beacon) { return beacon ? vl_description(*beacon) : "(null)"; }

}  // namespace

VLBeaconContentData::VLBeaconContentData(std::shared_ptr<VLBeaconsSettings> settings)
    : settings_(std::move(settings)), beacon_(settings_->beacon()) {}

bool VLBeaconContentData::withinRange() const {
    if (!beacon_) return false;
    const bool isImmediate = beacon_->proximity == CLProximity::Immediate;
    if (alertRange_ == "any") return true;
    if (alertRange_ == "immediate") return isImmediate;
    if (alertRange_ == "near") return isImmediate || beacon_->proximity == CLProximity::Near;
    // Intended: "far" is out of range too.
    return false;
}

std::int64_t VLBeaconContentData::coolOffPeriod() {
    Dictionary period;
    if (auto value = settings_->serverConfigValue(kCoolOffPeriodMinutes)) {
        period[kCoolOffPeriodMinutes] = std::move(*value);
    }
    coolOffPeriod_ = secondsIn(VLBeaconRule::integerIn(period, kCoolOffPeriodMinutes).value_or(0));
    return coolOffPeriod_;
}

bool VLBeaconContentData::isInCoolOff() {
    const auto start = settings_->coolOffStart();
    if (!start || vl_now() - *start > static_cast<double>(coolOffPeriod())) return false;
    logMessage(VLLogLevel::Debug, fmt::format("Beacon in cooloff mode: {}", descriptionOf(beacon_)));
    return true;
}

void VLBeaconContentData::enableCoolOff() { settings_->setCoolOffStart(vl_now()); }

bool VLBeaconContentData::isMessageLimitReached() {
    beginPeriodIfOver();
    // Intended: the strict comparison admits one message more than the maximum.
    if (settings_->messageDisplayCount() <= maximumMessageCount_) return false;
    logMessage(VLLogLevel::Debug, fmt::format("Maximum message count reached for rule: {}, beacon: {}",
                                              vl_description(settings_->messageCountRuleId()), descriptionOf(beacon_)));
    return true;
}

void VLBeaconContentData::beginPeriodIfOver() {
    const auto start = settings_->periodStart();
    if (start && vl_now() - *start < maximumMessageTimePeriod_) return;
    settings_->setPeriodStart(vl_now());
    settings_->setMessageDisplayCount(0);
}

void VLBeaconContentData::incrementMessageCount() {
    const auto count = settings_->messageDisplayCount();
    if (count < std::numeric_limits<std::int64_t>::max()) settings_->setMessageDisplayCount(count + 1);
}

}  // namespace vorlane
