#include "Beacons/VLBeaconRule.h"

#include <fmt/format.h>

#include <charconv>
#include <system_error>

#include "Beacons/VLBeaconContentData.h"
#include "Beacons/VLBeaconsSettings.h"
#include "Categories/CLBeaconRegion+VLRegionId.h"
#include "Categories/NSDictionary+VLLookup.h"
#include "Categories/NSNumber+VLLooseValue.h"
#include "Categories/NSString+VLCaseInsensitive.h"

namespace vorlane {

namespace {

constexpr const char* kAny = "*";
constexpr double kSecondsPerHour = 60.0 * 60.0;

std::optional<std::string> looseStringIn(const Dictionary& rule, const char* key) {
    return vl_looseText(valueForKey(rule, key));
}

}  // namespace

VLBeaconRule::VLBeaconRule(const Dictionary& rule)
    : ruleId_(vl_regionIdForBeaconRule(rule)),
      uuid_(looseStringIn(rule, "uuid")),
      major_(patternIn(rule, "major")),
      minor_(patternIn(rule, "minor")),
      maxRange_(integerIn(rule, "max_range_m")),
      isDefaultShown_(boolForKey(rule, "show_default_if_no_network").value_or(true)),
      defaultMessage_(looseStringIn(rule, "default_message")),
      messageCount_(integerIn(rule, "message_count")),
      timePeriod_(vl_looseNumber(valueForKey(rule, "time_period"))),
      alertRange_(looseStringIn(rule, "alert_range")) {}

bool VLBeaconRule::appliesTo(const CLBeacon& beacon) const {
    return minor_.matches(beacon.minor) && major_.matches(beacon.major) && uuid_ &&
           vl_isEqualToStringCaseInsensitive(*uuid_, beacon.proximityUUID);
}

void VLBeaconRule::overwrite(VLBeaconContentData& data) const {
    if (maxRange_) data.setMaxRange(*maxRange_);
    // Intended: a rule without a default message clears that of an earlier rule.
    if (isDefaultShown_) data.setDefaultMessage(defaultMessage_);
    if (messageCount_) {
        data.setMaximumMessageCount(*messageCount_);
        data.settings()->setMessageCountRuleId(ruleId_);
    }
    if (timePeriod_) {
        data.setMaximumMessageTimePeriod(*timePeriod_ * kSecondsPerHour);
        data.settings()->setPeriodStartRuleId(ruleId_);
    }
    if (alertRange_) data.setAlertRange(alertRange_);
}

std::optional<std::int64_t> VLBeaconRule::integerIn(const Dictionary& rule, const char* key) {
    const auto* value = valueForKey(rule, key);
    const auto number = vl_looseNumber(value);
    if (!number) return std::nullopt;
    return integerValue(value->is_number() ? *value : Value(*number));
}

std::uint16_t VLBeaconRule::shortIn(const Dictionary& rule, const char* key) {
    return static_cast<std::uint16_t>(static_cast<std::uint64_t>(integerIn(rule, key).value_or(0)) & 0xFFFFU);
}

bool VLBeaconRule::isAny(const Dictionary& rule, const char* key) { return stringForKey(rule, key) == kAny; }

/// A beacon's number is compared as a decimal string, so "007" matches none.
VLBeaconRule::Pattern VLBeaconRule::patternIn(const Dictionary& rule, const char* key) {
    if (isAny(rule, key)) return {.isAny = true, .number = std::nullopt};
    const auto string = looseStringIn(rule, key).value_or("");
    std::uint16_t number = 0;
    const auto [stop, error] = std::from_chars(string.data(), string.data() + string.size(), number);
    if (error != std::errc() || string != fmt::format("{}", number)) return {};
    return {.isAny = false, .number = number};
}

}  // namespace vorlane
