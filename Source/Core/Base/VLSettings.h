#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>

#include "Platform/Internal/PropertyListFile.h"
#include "Public/VLUserNotificationSettings.h"
#include "Public/VLValue.h"

namespace vorlane {

class UIDevice;

/// The one store of the library's state: identities, the notification hash, the push token, session counters,
/// geofencing values.
///
/// It keeps its values in memory and in "VLLibSettings.plist" in the documents folder, which is replaced whole on each
/// change. Any thread; each read, and each change together with the write of the file, is one step under the store's
/// lock. A stored value of the wrong kind reads as absent.
class VLSettings {
public:
    /// While one lives, the values that its thread sets are written to the file once, when the outermost one ends.
    using Step = PropertyListFile::Step;

    /// Reads the file. A missing or damaged one is written at once. One that cannot be read is left alone: the store
    /// works in memory, and before its first write that succeeds it adopts what the file holds, except for what was set
    /// meanwhile.
    explicit VLSettings(std::shared_ptr<UIDevice> device);

    /// `getSettingsValueForKey:`
    std::optional<Value> getSettingsValueForKey(const std::string& key) const;
    /// `getSettingsValueForKey:defaultValue:`
    Value getSettingsValueForKey(const std::string& key, Value defaultValue) const;
    /// `setSettingsValue:key:` replaces the entry, or removes it for `nullopt`, then writes the file. A value that the
    /// entry has already is not written again, unless the last write failed. A value that a property list cannot hold
    /// (a number that is not finite, for example) stays in memory, and the file as it is.
    void setSettingsValue(std::optional<Value> value, const std::string& key);
    /// Writes the file. After a failure the values stay in memory, and the next change writes them.
    void writeSettingsToFile();

    /// "" when absent.
    std::string lastMigrationVersion() const;
    void setLastMigrationVersion(const std::optional<std::string>& version);

    /// Never absent: made and stored on the first read, 32 characters that start with "@VL@".
    std::string trackingId();
    void setTrackingId(const std::optional<std::string>& trackingId);
    std::optional<std::string> prevTrackingId() const;
    void setPrevTrackingId(const std::optional<std::string>& trackingId);
    std::optional<std::string> appKey() const;
    void setAppKey(const std::optional<std::string>& appKey);
    /// Never absent: an upper-case UUID, made and stored on the first read.
    std::string deviceId();

    std::optional<std::string> phash() const;
    void setPhash(const std::optional<std::string>& phash);
    std::optional<Data> deviceToken() const;
    void setDeviceToken(const std::optional<Data>& token);
    std::optional<VLUserNotificationSettings> notificationSettings() const;
    void setNotificationSettings(const std::optional<VLUserNotificationSettings>& settings);

    /// The number of finished sessions, and their length in whole seconds.
    std::int64_t sessionCount() const;
    void setSessionCount(std::int64_t count);
    std::int64_t totalSessionLength() const;
    void setTotalSessionLength(std::int64_t seconds);

    /// Seconds since 1970.
    double lastPermissionInterstitial() const;
    void setLastPermissionInterstitial(double time);

    bool forceGeoConfigUpdate() const;
    void setForceGeoConfigUpdate(bool force);
    std::optional<Dictionary> oldLocation() const;
    void setOldLocation(const std::optional<Dictionary>& location);
    double significantDistance() const;
    void setSignificantDistance(double metres);
    double significantTime() const;
    void setSignificantTime(double seconds);
    double geoRegionStateChangeTime() const;
    void setGeoRegionStateChangeTime(double seconds);
    /// A number: the integer 66 when absent.
    Value desiredHorizontalAccuracy() const;
    void setDesiredHorizontalAccuracy(const Value& metres);
    double fetchGeoRegionTimestamp() const;
    void setFetchGeoRegionTimestamp(double time);

    /// Unix milliseconds in decimal: when the application was installed, and when the library first ran.
    std::string appCleanInstallTime();
    std::string libInstallTime();

    std::optional<std::string> containerName() const;
    void setContainerName(const std::optional<std::string>& name);
    std::optional<std::string> containerVersion() const;
    void setContainerVersion(const std::optional<std::string>& version);
    std::optional<std::string> containerVlSdkVersion() const;
    void setContainerVlSdkVersion(const std::optional<std::string>& version);

    /// In memory only: an upper-case UUID, made on the first read and after it was set to `nullopt`.
    std::string sessionId();
    void setSessionId(const std::optional<std::string>& sessionId);

    std::string deviceModel() const;
    /// "2.0.1", with the container's name and version appended by hyphens when there is a container.
    std::string libraryVersion() const;
    /// Whole minutes with a sign, "+330" or "-300". Intended: an offset of less than one minute east reads "-0".
    std::string timezoneOffSetFromGMT() const;
    /// "desired_horizontal_accuracy", the only key in snake case: it is the key of the server's geo configuration.
    static const char* desiredHorizontalAccuracyKey();

    /// The stored dictionary as compact JSON.
    std::string description() const;
    /// The whole stored dictionary.
    Dictionary dictionary() const;

private:
    std::optional<std::string> storedString(const char* key) const;
    double storedDouble(const char* key) const;
    std::int64_t storedInteger(const char* key) const;
    void storeString(const std::optional<std::string>& value, const char* key);
    void storeGenerated(const std::string& value, const char* key);
    void adopt(Dictionary stored);

    // Fixed at construction.
    const std::shared_ptr<UIDevice> device_;

    mutable std::recursive_mutex mutex_;
    // Guarded by mutex_.
    Dictionary settingsFileDictionary_;
    std::optional<std::string> sessionId_;
    // The keys that were set, and those whose values were generated, since the file was last written.
    std::set<std::string> setKeys_;
    std::set<std::string> generatedKeys_;
    bool isWritten_ = true;
    PropertyListFile file_;
};

}  // namespace vorlane
