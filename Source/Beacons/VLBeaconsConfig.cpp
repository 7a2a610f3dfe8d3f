#include "Beacons/VLBeaconsConfig.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "Beacons/VLBeaconContentData.h"
#include "Beacons/VLBeaconRule.h"
#include "Beacons/VLBeaconsSettings.h"
#include "Beacons/validIBeaconRule.h"
#include "Categories/CLBeaconRegion+VLRegionId.h"
#include "Categories/NSDictionary+VLLookup.h"
#include "Categories/NSNumber+VLLooseValue.h"
#include "Platform/CLBeaconRegion.h"

namespace vorlane {

namespace {

constexpr const char* kMessageType = "message";
constexpr const char* kDataType = "data";
constexpr const char* kBothTypes = "message;data";

double priorityOf(const Value& rule) {
    const auto priority = vl_looseNumber(valueForKey(rule.get_ref<const Dictionary&>(), "priority"));
    return priority.value_or(-std::numeric_limits<double>::infinity());
}

/// The region of all beacons with the UUID.
std::shared_ptr<CLBeaconRegion> wholeRegion(const Dictionary& rule) {
    return std::make_shared<CLBeaconRegion>(stringForKey(rule, VLBeaconsConfig::uuidKey()).value_or(""),
                                            vl_regionIdForBeaconRule(rule));
}

template <class MakeRegion>
VLBeaconsConfig::Regions regionsOf(const Array& rules, MakeRegion makeRegion) {
    VLBeaconsConfig::Regions regions;
    for (const auto& value : rules) {
        const auto& rule = value.get_ref<const Dictionary&>();
        if (validIBeaconRule(rule)) regions.push_back(makeRegion(rule));
    }
    return regions;
}

}  // namespace

VLBeaconsConfig::VLBeaconsConfig(std::weak_ptr<VLSettings> settings) : settings_(std::move(settings)) {}

VLBeaconsConfig::~VLBeaconsConfig() = default;

bool VLBeaconsConfig::isBeaconsFound(const Dictionary& config) {
    beaconsSettings()->setServerConfig(config);
    return !beaconMessageRules().empty() || !beaconDataRules().empty();
}

bool VLBeaconsConfig::isNotify() {
    constexpr const char* kAutoBeaconNotify = "auto_beacon_notify";
    const auto value = beaconsSettings()->serverConfigValue(kAutoBeaconNotify);
    return value && boolForKey({{kAutoBeaconNotify, *value}}, kAutoBeaconNotify).value_or(false);
}

const Array& VLBeaconsConfig::beaconMessageRules() {
    if (!beaconMessageRules_) setBeaconMessageRules(rulesOfType(kMessageType));
    return *beaconMessageRules_;
}

void VLBeaconsConfig::setBeaconMessageRules(const Array& rules) {
    if (beaconMessageRules_ == rules) return;
    auto sorted = rules;
    std::erase_if(sorted, [](const Value& rule) { return !rule.is_object(); });
    std::ranges::stable_sort(sorted, std::ranges::greater(), priorityOf);
    readMessageRules_.clear();
    for (const auto& rule : sorted) readMessageRules_.emplace_back(rule.get_ref<const Dictionary&>());
    beaconMessageRules_ = std::move(sorted);
}

const Array& VLBeaconsConfig::beaconDataRules() {
    if (!beaconDataRules_) beaconDataRules_ = rulesOfType(kDataType);
    return *beaconDataRules_;
}

/// The rules of the configuration with the type or with both types.
Array VLBeaconsConfig::rulesOfType(const char* type) {
    const auto configured = beaconsSettings()->serverConfigValue("beacon_data").value_or(Value());
    const auto* rules = configured.get_ptr<const Array*>();
    Array found;
    if (!rules) return found;
    for (const auto& rule : *rules) {
        const auto* fields = rule.get_ptr<const Dictionary*>();
        const auto ruleType = fields ? stringForKey(*fields, "type") : std::nullopt;
        if (ruleType == type || ruleType == kBothTypes) found.push_back(rule);
    }
    return found;
}

const VLBeaconsConfig::Regions& VLBeaconsConfig::messageBeaconRegions() {
    if (!messageBeaconRegions_) {
        messageBeaconRegions_ = regionsOf(beaconMessageRules(), [](const Dictionary& rule) {
            return stringForKey(rule, "type") == kBothTypes ? beaconRegionFromRule(rule) : wholeRegion(rule);
        });
    }
    return *messageBeaconRegions_;
}

const VLBeaconsConfig::Regions& VLBeaconsConfig::dataBeaconRegions() {
    if (!dataBeaconRegions_) dataBeaconRegions_ = regionsOf(beaconDataRules(), beaconRegionFromRule);
    return *dataBeaconRegions_;
}

std::shared_ptr<CLBeaconRegion> VLBeaconsConfig::beaconRegionFromRule(const Dictionary& rule) {
    // Intended: the minor is ignored.
    if (VLBeaconRule::isAny(rule, majorKey())) return wholeRegion(rule);
    const auto minor =
        VLBeaconRule::isAny(rule, minorKey()) ? std::nullopt : std::optional(VLBeaconRule::shortIn(rule, minorKey()));
    return std::make_shared<CLBeaconRegion>(stringForKey(rule, uuidKey()).value_or(""), vl_regionIdForBeaconRule(rule),
                                            VLBeaconRule::shortIn(rule, majorKey()), minor);
}

std::shared_ptr<VLBeaconContentData> VLBeaconsConfig::getBeaconContentData(const CLBeacon& beacon) {
    beaconsSettings()->setBeacon(beacon);
    auto data = std::make_shared<VLBeaconContentData>(beaconsSettings());
    beaconMessageRules();
    for (const auto& rule : readMessageRules_) {
        if (rule.appliesTo(beacon)) rule.overwrite(*data);
    }
    return data;
}

const std::shared_ptr<VLBeaconsSettings>& VLBeaconsConfig::beaconsSettings() {
    if (!beaconsSettings_) beaconsSettings_ = std::make_shared<VLBeaconsSettings>();
    return beaconsSettings_;
}

std::string VLBeaconsConfig::getRuleIdForIndex(const Dictionary& rule) { return vl_regionIdForBeaconRule(rule); }

}  // namespace vorlane
