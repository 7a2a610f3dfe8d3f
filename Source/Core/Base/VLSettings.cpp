#include "Core/Base/VLSettings.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <utility>

#include "Categories/NSDate+VLTimestamp.h"
#include "Categories/NSDictionary+VLJSON.h"
#include "Categories/NSDictionary+VLLookup.h"
#include "Categories/NSTimeZone+VLOffset.h"
#include "Categories/NSUUID+VLString.h"
#include "Platform/Internal/DocumentLimits.h"
#include "Platform/Internal/StorageFaults.h"
#include "Platform/Platform.h"
#include "Platform/UIDevice.h"
#include "Public/VLLog.h"

namespace vorlane {

namespace {

constexpr const char* kFileName = "VLLibSettings.plist";
constexpr const char* kLibraryVersion = "2.0.1";
constexpr const char* kGeneratedIdMark = "@VL@";
constexpr std::int64_t kDefaultHorizontalAccuracy = 66;

constexpr const char* kLastMigrationVersion = "VLLastMigrationVersion";
constexpr const char* kTrackingId = "VLTrackingID";
constexpr const char* kPrevTrackingId = "VLPrevTrackingID";
constexpr const char* kAppKey = "VLAppKey";
constexpr const char* kDeviceId = "VLDeviceId";
constexpr const char* kPhash = "VLPhash";
constexpr const char* kDeviceToken = "VLDeviceTokenData";
constexpr const char* kNotificationSettings = "VLNotificationSettings";
constexpr const char* kForceGeoConfigUpdate = "VLForceGeoConfigUpdate";
constexpr const char* kSessionCount = "VLSessionCount";
constexpr const char* kTotalSessionLength = "VLTotalSessionLength";
constexpr const char* kLastPermissionInterstitial = "VLLastPermissionTime";
constexpr const char* kOldLocation = "VLOldLocation";
constexpr const char* kSignificantDistance = "VLSignificantDistance";
constexpr const char* kSignificantTime = "VLSignificantTime";
constexpr const char* kGeoRegionStateChangeTime = "VLGeoRegionStateChangeTime";
constexpr const char* kFetchGeoRegionTimestamp = "VLFetchGeoRegionTimestamp";
constexpr const char* kAppCleanInstallTime = "VLAppCleanInstallTime";
constexpr const char* kLibInstallTime = "VLLibInstallTime";
constexpr const char* kContainerName = "VL_CONTAINER_NAME_KEY";
constexpr const char* kContainerVersion = "VL_CONTAINER_VERSION_KEY";
constexpr const char* kContainerVlSdkVersion = "VL_CONTAINER_VL_SDK_VERSION_KEY";

/// Returns 32 characters: a UUID without its dashes, with the mark of a generated id in the place of its beginning.
std::string generatedTrackingId() {
    auto identifier = vl_newUUIDString();
    std::erase(identifier, '-');
    return identifier.replace(0, std::string(kGeneratedIdMark).size(), kGeneratedIdMark);
}

/// Returns the value without its nulls, which a property list cannot hold, so that memory and file agree; `nullopt` for
/// null itself.
std::optional<Value> storable(std::optional<Value> value) {
    if (!value || value->is_null()) return std::nullopt;
    vl_removeNulls(*value);
    return value;
}

/// Whether a property list can hold all of the value, with that many more levels of arrays and dictionaries.
bool canBeStored(const Value& value, int levels) {
    if (value.is_number_float()) return std::isfinite(value.get<double>());
    if (!value.is_structured()) return !value.is_discarded();
    return levels > 0 && std::all_of(value.begin(), value.end(),
                                     [levels](const Value& element) { return canBeStored(element, levels - 1); });
}

/// Equal, and of one kind: 1, 1.0 and true differ in a property list.
bool isSame(const Value& value, const Value& other) {
    const auto kind = [](const Value& number) {
        return number.is_number_unsigned() ? Value::value_t::number_integer : number.type();
    };
    return kind(value) == kind(other) && !value.is_structured() && value == other;
}

VLLogLevel logLevelOf(StorageFaults::Level level) {
    switch (level) {
        case StorageFaults::Level::Error:
            return VLLogLevel::Error;
        case StorageFaults::Level::Warning:
            return VLLogLevel::Warn;
        default:
            return VLLogLevel::Info;
    }
}

}  // namespace

VLSettings::VLSettings(std::shared_ptr<UIDevice> device)
    : device_(std::move(device)), file_(Platform::current().documentsFolder() + "/" + kFileName) {
    // The settings are the first of the library's files, and the first that may use the log.
    StorageFaults::shared().setHandler(
        [](StorageFaults::Level level, const std::string& line) { logMessage(logLevelOf(level), line); });
    auto reading = file_.read();
    if (reading.status == PropertyListFile::Status::Contents) {
        settingsFileDictionary_ = std::move(reading.contents.get_ref<Dictionary&>());
    } else {
        writeSettingsToFile();
    }
}

std::optional<Value> VLSettings::getSettingsValueForKey(const std::string& key) const {
    const std::lock_guard lock(mutex_);
    const auto* value = valueForKey(settingsFileDictionary_, key);
    if (!value) return std::nullopt;
    return *value;
}

Value VLSettings::getSettingsValueForKey(const std::string& key, Value defaultValue) const {
    auto value = getSettingsValueForKey(key);
    return value ? std::move(*value) : std::move(defaultValue);
}

void VLSettings::setSettingsValue(std::optional<Value> value, const std::string& key) {
    auto stored = storable(std::move(value));
    const bool isHeldByFile = !stored || canBeStored(*stored, DocumentLimits::kDeepestNesting - 1);
    const std::lock_guard lock(mutex_);
    const auto entry = settingsFileDictionary_.find(key);
    const bool isPresent = entry != settingsFileDictionary_.end();
    if (isWritten_ && (stored ? isPresent && isSame(entry->second, *stored) : !isPresent)) return;
    if (!stored) {
        settingsFileDictionary_.erase(key);
    } else if (isPresent) {
        entry->second = std::move(*stored);
    } else {
        settingsFileDictionary_.emplace(key, std::move(*stored));
    }
    setKeys_.insert(key);
    // What no property list can hold stays in memory, and the file as it was.
    if (isHeldByFile) writeSettingsToFile();
}

void VLSettings::writeSettingsToFile() {
    const std::lock_guard lock(mutex_);
    isWritten_ = false;
    if (PropertyListFile::Step::postpone(file_, [this] { writeSettingsToFile(); })) return;
    if (auto stored = file_.readAgain()) adopt(std::move(stored->get_ref<Dictionary&>()));
    isWritten_ = file_.write(settingsFileDictionary_);
    if (!isWritten_) return;
    setKeys_.clear();
    generatedKeys_.clear();
}

/// The file could not be read at first: its values hold, except those that were set meanwhile. An identity that was
/// generated for want of the stored one gives way to it.
void VLSettings::adopt(Dictionary stored) {
    for (const auto& key : setKeys_) {
        if (auto entry = settingsFileDictionary_.extract(key)) {
            stored.insert_or_assign(key, std::move(entry.mapped()));
        } else {
            stored.erase(key);
        }
    }
    for (const auto& key : generatedKeys_) {
        if (auto entry = settingsFileDictionary_.extract(key)) stored.insert(std::move(entry));
    }
    settingsFileDictionary_ = std::move(stored);
}

std::optional<std::string> VLSettings::storedString(const char* key) const {
    const std::lock_guard lock(mutex_);
    return stringForKey(settingsFileDictionary_, key);
}

double VLSettings::storedDouble(const char* key) const {
    const std::lock_guard lock(mutex_);
    return numberForKey(settingsFileDictionary_, key).value_or(0.0);
}

std::int64_t VLSettings::storedInteger(const char* key) const {
    const std::lock_guard lock(mutex_);
    return integerForKey(settingsFileDictionary_, key).value_or(0);
}

void VLSettings::storeString(const std::optional<std::string>& value, const char* key) {
    setSettingsValue(value ? std::optional<Value>(*value) : std::nullopt, key);
}

/// Stores what was made because nothing was stored.
void VLSettings::storeGenerated(const std::string& value, const char* key) {
    const std::lock_guard lock(mutex_);
    settingsFileDictionary_[key] = value;
    generatedKeys_.insert(key);
    writeSettingsToFile();
}

std::string VLSettings::lastMigrationVersion() const { return storedString(kLastMigrationVersion).value_or(""); }

void VLSettings::setLastMigrationVersion(const std::optional<std::string>& version) {
    storeString(version, kLastMigrationVersion);
}

// The getters of generated values read and store in two steps; of two first reads at once, the last store wins.

std::string VLSettings::trackingId() {
    if (auto stored = storedString(kTrackingId)) return *stored;
    const auto generated = generatedTrackingId();
    storeGenerated(generated, kTrackingId);
    return storedString(kTrackingId).value_or(generated);
}

void VLSettings::setTrackingId(const std::optional<std::string>& trackingId) { storeString(trackingId, kTrackingId); }

std::optional<std::string> VLSettings::prevTrackingId() const { return storedString(kPrevTrackingId); }

void VLSettings::setPrevTrackingId(const std::optional<std::string>& trackingId) {
    storeString(trackingId, kPrevTrackingId);
}

std::optional<std::string> VLSettings::appKey() const { return storedString(kAppKey); }

void VLSettings::setAppKey(const std::optional<std::string>& appKey) { storeString(appKey, kAppKey); }

std::string VLSettings::deviceId() {
    if (auto stored = storedString(kDeviceId)) return *stored;
    const auto generated = vl_newUUIDString();
    storeGenerated(generated, kDeviceId);
    return storedString(kDeviceId).value_or(generated);
}

std::optional<std::string> VLSettings::phash() const { return storedString(kPhash); }

void VLSettings::setPhash(const std::optional<std::string>& phash) { storeString(phash, kPhash); }

std::optional<Data> VLSettings::deviceToken() const {
    const std::lock_guard lock(mutex_);
    return dataForKey(settingsFileDictionary_, kDeviceToken);
}

void VLSettings::setDeviceToken(const std::optional<Data>& token) {
    setSettingsValue(token ? std::optional<Value>(Value::binary(*token)) : std::nullopt, kDeviceToken);
}

std::optional<VLUserNotificationSettings> VLSettings::notificationSettings() const {
    const std::lock_guard lock(mutex_);
    const auto* stored = dictionaryForKey(settingsFileDictionary_, kNotificationSettings);
    if (!stored) return std::nullopt;
    return VLUserNotificationSettings::settingsFromDictionary(*stored);
}

void VLSettings::setNotificationSettings(const std::optional<VLUserNotificationSettings>& settings) {
    setSettingsValue(settings ? std::optional<Value>(settings->toDictionary()) : std::nullopt, kNotificationSettings);
}

std::int64_t VLSettings::sessionCount() const { return storedInteger(kSessionCount); }

void VLSettings::setSessionCount(std::int64_t count) { setSettingsValue(Value(count), kSessionCount); }

std::int64_t VLSettings::totalSessionLength() const { return storedInteger(kTotalSessionLength); }

void VLSettings::setTotalSessionLength(std::int64_t seconds) { setSettingsValue(Value(seconds), kTotalSessionLength); }

double VLSettings::lastPermissionInterstitial() const { return storedDouble(kLastPermissionInterstitial); }

void VLSettings::setLastPermissionInterstitial(double time) {
    setSettingsValue(Value(time), kLastPermissionInterstitial);
}

bool VLSettings::forceGeoConfigUpdate() const {
    const std::lock_guard lock(mutex_);
    return boolForKey(settingsFileDictionary_, kForceGeoConfigUpdate).value_or(false);
}

void VLSettings::setForceGeoConfigUpdate(bool force) { setSettingsValue(Value(force), kForceGeoConfigUpdate); }

std::optional<Dictionary> VLSettings::oldLocation() const {
    const std::lock_guard lock(mutex_);
    const auto* stored = dictionaryForKey(settingsFileDictionary_, kOldLocation);
    if (!stored) return std::nullopt;
    return *stored;
}

void VLSettings::setOldLocation(const std::optional<Dictionary>& location) {
    setSettingsValue(location ? std::optional<Value>(*location) : std::nullopt, kOldLocation);
}

double VLSettings::significantDistance() const { return storedDouble(kSignificantDistance); }

void VLSettings::setSignificantDistance(double metres) { setSettingsValue(Value(metres), kSignificantDistance); }

double VLSettings::significantTime() const { return storedDouble(kSignificantTime); }

void VLSettings::setSignificantTime(double seconds) { setSettingsValue(Value(seconds), kSignificantTime); }

double VLSettings::geoRegionStateChangeTime() const { return storedDouble(kGeoRegionStateChangeTime); }

void VLSettings::setGeoRegionStateChangeTime(double seconds) {
    setSettingsValue(Value(seconds), kGeoRegionStateChangeTime);
}

Value VLSettings::desiredHorizontalAccuracy() const {
    const auto stored = getSettingsValueForKey(desiredHorizontalAccuracyKey());
    return stored && stored->is_number() ? *stored : Value(kDefaultHorizontalAccuracy);
}

void VLSettings::setDesiredHorizontalAccuracy(const Value& metres) {
    setSettingsValue(metres, desiredHorizontalAccuracyKey());
}

double VLSettings::fetchGeoRegionTimestamp() const { return storedDouble(kFetchGeoRegionTimestamp); }

void VLSettings::setFetchGeoRegionTimestamp(double time) { setSettingsValue(Value(time), kFetchGeoRegionTimestamp); }

std::string VLSettings::appCleanInstallTime() {
    if (auto stored = storedString(kAppCleanInstallTime)) return *stored;
    const auto time = vl_unixTimestampInMilliseconds(Platform::current().documentsCreationDate());
    storeGenerated(time, kAppCleanInstallTime);
    return storedString(kAppCleanInstallTime).value_or(time);
}

std::string VLSettings::libInstallTime() {
    if (auto stored = storedString(kLibInstallTime)) return *stored;
    const auto time = vl_unixTimestampInMilliseconds(vl_now());
    storeGenerated(time, kLibInstallTime);
    return storedString(kLibInstallTime).value_or(time);
}

std::optional<std::string> VLSettings::containerName() const { return storedString(kContainerName); }

void VLSettings::setContainerName(const std::optional<std::string>& name) { storeString(name, kContainerName); }

std::optional<std::string> VLSettings::containerVersion() const { return storedString(kContainerVersion); }

void VLSettings::setContainerVersion(const std::optional<std::string>& version) {
    storeString(version, kContainerVersion);
}

std::optional<std::string> VLSettings::containerVlSdkVersion() const { return storedString(kContainerVlSdkVersion); }

void VLSettings::setContainerVlSdkVersion(const std::optional<std::string>& version) {
    storeString(version, kContainerVlSdkVersion);
}

std::string VLSettings::sessionId() {
    const std::lock_guard lock(mutex_);
    if (!sessionId_) sessionId_ = vl_newUUIDString();
    return *sessionId_;
}

void VLSettings::setSessionId(const std::optional<std::string>& sessionId) {
    const std::lock_guard lock(mutex_);
    sessionId_ = sessionId;
}

std::string VLSettings::deviceModel() const { return device_->machine(); }

std::string VLSettings::libraryVersion() const {
    const auto name = containerName();
    if (!name) return kLibraryVersion;
    return fmt::format("{}-{}-{}", kLibraryVersion, *name, vl_description(containerVersion()));
}

std::string VLSettings::timezoneOffSetFromGMT() const { return vl_offsetAsSignedMinutes(device_->localTimeZone()); }

const char* VLSettings::desiredHorizontalAccuracyKey() { return "desired_horizontal_accuracy"; }

std::string VLSettings::description() const { return vl_description(Value(dictionary())); }

Dictionary VLSettings::dictionary() const {
    const std::lock_guard lock(mutex_);
    return settingsFileDictionary_;
}

}  // namespace vorlane
