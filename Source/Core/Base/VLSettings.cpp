#include "Core/Base/VLSettings.h"

#include <fmt/format.h>

#include <utility>

#include "Categories/NSDate+VLTimestamp.h"
#include "Categories/NSDictionary+VLJSON.h"
#include "Categories/NSDictionary+VLLookup.h"
#include "Categories/NSTimeZone+VLOffset.h"
#include "Categories/NSUUID+VLString.h"
#include "Platform/NSFileManager.h"
#include "Platform/NSPropertyListSerialization.h"
#include "Platform/Platform.h"
#include "Platform/UIDevice.h"

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

/// 32 characters: a UUID without its dashes, its beginning replaced by the mark of an id that the library made.
std::string generatedTrackingId() {
    auto identifier = vl_newUUIDString();
    std::erase(identifier, '-');
    return identifier.replace(0, std::string(kGeneratedIdMark).size(), kGeneratedIdMark);
}

/// The value without its nulls, which a property list cannot hold, so that memory and file agree. Nothing for null
/// itself.
std::optional<Value> storable(std::optional<Value> value) {
    if (!value || value->is_null()) return std::nullopt;
    vl_removeNulls(*value);
    return value;
}

}  // namespace

VLSettings::VLSettings(std::shared_ptr<UIDevice> device)
    : device_(std::move(device)), settingsFilePath_(Platform::current().documentsFolder() + "/" + kFileName) {
    auto stored = NSPropertyListSerialization::dictionaryWithContentsOfFile(settingsFilePath_);
    if (stored) {
        settingsFileDictionary_ = std::move(*stored);
        return;
    }
    if (NSFileManager::fileExistsAtPath(settingsFilePath_)) {
        NSFileManager::moveItemAtPath(settingsFilePath_, settingsFilePath_ + ".corrupt");
    }
    writeSettingsToFile();
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
    const bool isHeldByFile = !stored || !stored->is_discarded();
    const std::lock_guard lock(mutex_);
    if (stored) {
        settingsFileDictionary_[key] = std::move(*stored);
    } else {
        settingsFileDictionary_.erase(key);
    }
    // What no property list holds is kept in memory alone, and the file stays as it was.
    if (isHeldByFile) writeSettingsToFile();
}

void VLSettings::writeSettingsToFile() const {
    const std::lock_guard lock(mutex_);
    NSPropertyListSerialization::writeToFile(settingsFileDictionary_, settingsFilePath_);
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

std::string VLSettings::lastMigrationVersion() const { return storedString(kLastMigrationVersion).value_or(""); }

void VLSettings::setLastMigrationVersion(const std::optional<std::string>& version) {
    storeString(version, kLastMigrationVersion);
}

// The getters that make what is absent read and store in two steps; of two first reads at once the last store wins.

std::string VLSettings::trackingId() {
    if (auto stored = storedString(kTrackingId)) return *stored;
    const auto generated = generatedTrackingId();
    storeString(generated, kTrackingId);
    return generated;
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
    storeString(generated, kDeviceId);
    return generated;
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
    storeString(time, kAppCleanInstallTime);
    return time;
}

std::string VLSettings::libInstallTime() {
    if (auto stored = storedString(kLibInstallTime)) return *stored;
    const auto time = vl_unixTimestampInMilliseconds(Platform::current().clock().now());
    storeString(time, kLibInstallTime);
    return time;
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
