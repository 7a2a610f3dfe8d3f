#include "Beacons/VLBeaconsSettings.h"

#include <fmt/format.h>

#include <utility>

#include "Categories/NSDate+VLTimestamp.h"
#include "Categories/NSDictionary+VLLookup.h"
#include "Platform/Platform.h"

namespace vorlane {

namespace {

constexpr const char* kSettingsFileName = "VLLibBeaconsSettings.plist";

constexpr const char* kServerConfig = "VL_SERVER_CONFIG";
constexpr const char* kLastServerConfigUpdateTime = "VL_LAST_SERVER_CONFIG_UPDATE_TIME";
constexpr const char* kBeaconRules = "VL_BEACON_RULES_KEY";
constexpr const char* kCoolDownTimes = "VL_COOLDOWN_TIME_KEY";
constexpr const char* kPeriodStart = "VL_PERIOD_START";
constexpr const char* kMessageDisplayCount = "VL_MESSAGE_DISPLAY_COUNT";

/// Returns the dictionary under the key, and makes it if there is none.
Dictionary& sectionOf(Dictionary& dictionary, const std::string& key) {
    auto& section = dictionary[key];
    if (!section.is_object()) section = Value::object();
    return section.get_ref<Dictionary&>();
}

}  // namespace

VLBeaconsSettings::VLBeaconsSettings() : file_(getFilePath()) {
    auto reading = file_.read();
    if (reading.status == PropertyListFile::Status::Contents) {
        allSettings_ = std::move(reading.contents.get_ref<Dictionary&>());
    }
    sectionOf(allSettings_, kBeaconRules);
    sectionOf(allSettings_, kCoolDownTimes);
}

std::optional<CLBeacon> VLBeaconsSettings::beacon() const {
    const std::lock_guard lock(mutex_);
    return beacon_;
}

void VLBeaconsSettings::setBeacon(const std::optional<CLBeacon>& beacon) {
    const std::lock_guard lock(mutex_);
    beacon_ = beacon;
}

std::optional<std::string> VLBeaconsSettings::periodStartRuleId() const {
    const std::lock_guard lock(mutex_);
    return periodStartRuleId_;
}

void VLBeaconsSettings::setPeriodStartRuleId(const std::optional<std::string>& ruleId) {
    const std::lock_guard lock(mutex_);
    periodStartRuleId_ = ruleId;
}

std::optional<std::string> VLBeaconsSettings::messageCountRuleId() const {
    const std::lock_guard lock(mutex_);
    return messageCountRuleId_;
}

void VLBeaconsSettings::setMessageCountRuleId(const std::optional<std::string>& ruleId) {
    const std::lock_guard lock(mutex_);
    messageCountRuleId_ = ruleId;
}

std::optional<Dictionary> VLBeaconsSettings::serverConfig() const {
    const std::lock_guard lock(mutex_);
    const auto* config = dictionaryForKey(allSettings_, kServerConfig);
    return config ? std::optional(*config) : std::nullopt;
}

std::optional<Value> VLBeaconsSettings::serverConfigValue(const std::string& key) const {
    const std::lock_guard lock(mutex_);
    const auto* config = dictionaryForKey(allSettings_, kServerConfig);
    const auto* value = config ? valueForKey(*config, key) : nullptr;
    return value ? std::optional(*value) : std::nullopt;
}

void VLBeaconsSettings::setServerConfig(const Dictionary& config) {
    // A property list cannot store nulls.
    Value stored(config);
    vl_removeNulls(stored);
    const std::lock_guard lock(mutex_);
    allSettings_[kServerConfig] = std::move(stored);
    allSettings_[kLastServerConfigUpdateTime] = vl_now();
    writeSettingsFile();
}

std::optional<double> VLBeaconsSettings::lastServerConfigUpdateTime() const {
    const std::lock_guard lock(mutex_);
    return numberForKey(allSettings_, kLastServerConfigUpdateTime);
}

std::optional<double> VLBeaconsSettings::coolOffStart() const {
    const std::lock_guard lock(mutex_);
    const auto key = coolOffKeyForBeacon();
    const auto* times = dictionaryForKey(allSettings_, kCoolDownTimes);
    return key && times ? numberForKey(*times, *key) : std::nullopt;
}

void VLBeaconsSettings::setCoolOffStart(double time) {
    const std::lock_guard lock(mutex_);
    const auto key = coolOffKeyForBeacon();
    if (!key) return;
    sectionOf(allSettings_, kCoolDownTimes)[*key] = time;
    writeSettingsFile();
}

std::optional<double> VLBeaconsSettings::periodStart() const {
    const std::lock_guard lock(mutex_);
    const auto* rule = storedRule(periodStartRuleId_);
    return rule ? numberForKey(*rule, kPeriodStart) : std::nullopt;
}

void VLBeaconsSettings::setPeriodStart(double time) {
    const std::lock_guard lock(mutex_);
    storeInRule(periodStartRuleId_, kPeriodStart, time);
}

std::int64_t VLBeaconsSettings::messageDisplayCount() const {
    const std::lock_guard lock(mutex_);
    const auto* rule = storedRule(messageCountRuleId_);
    return rule ? integerForKey(*rule, kMessageDisplayCount).value_or(0) : 0;
}

void VLBeaconsSettings::setMessageDisplayCount(std::int64_t count) {
    const std::lock_guard lock(mutex_);
    storeInRule(messageCountRuleId_, kMessageDisplayCount, count);
}

void VLBeaconsSettings::writeSettingsFile() {
    if (PropertyListFile::Step::postpone(file_, [this] { writeSettingsFile(); })) return;
    const std::lock_guard lock(mutex_);
    if (auto stored = file_.readAgain()) adopt(std::move(stored->get_ref<Dictionary&>()));
    file_.write(allSettings_);
}

/// Adds what a file that could not be read at first holds, except for what was set meanwhile.
void VLBeaconsSettings::adopt(Dictionary stored) {
    for (const auto* key : {kBeaconRules, kCoolDownTimes}) {
        sectionOf(allSettings_, key).merge(sectionOf(stored, key));
    }
    allSettings_.merge(stored);
}

Dictionary VLBeaconsSettings::allSettings() const {
    const std::lock_guard lock(mutex_);
    return allSettings_;
}

std::string VLBeaconsSettings::getFilePath() { return Platform::current().documentsFolder() + "/" + kSettingsFileName; }

/// "uuid_major_minor" of the current beacon.
std::optional<std::string> VLBeaconsSettings::coolOffKeyForBeacon() const {
    if (!beacon_) return std::nullopt;
    return fmt::format("{}_{}_{}", beacon_->proximityUUID, beacon_->major, beacon_->minor);
}

const Dictionary* VLBeaconsSettings::storedRule(const std::optional<std::string>& ruleId) const {
    const auto* rules = ruleId ? dictionaryForKey(allSettings_, kBeaconRules) : nullptr;
    return rules ? dictionaryForKey(*rules, *ruleId) : nullptr;
}

void VLBeaconsSettings::storeInRule(const std::optional<std::string>& ruleId, const char* key, Value value) {
    if (!ruleId) return;
    sectionOf(sectionOf(allSettings_, kBeaconRules), *ruleId)[key] = std::move(value);
    writeSettingsFile();
}

}  // namespace vorlane
