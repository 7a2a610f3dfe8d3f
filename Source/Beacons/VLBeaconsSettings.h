#pragma once

#include <cstdint>
#include <mutex>
#include <optional>
#include <string>

#include "Platform/CLBeacon.h"
#include "Platform/Internal/PropertyListFile.h"
#include "Public/VLValue.h"

namespace vorlane {

/// The persistent store of the beacon feature: the last configuration received, the start of each beacon's cool-off,
/// and the period and message count of each rule. Any thread.
///
/// The values are kept in memory and in "VLLibBeaconsSettings.plist" in the documents folder. Each setter of a stored
/// value replaces the file. If that fails, the values stay in memory, and the next change writes them. Several stores
/// may share the file; a store reads it only at construction. A stored value of the wrong type counts as absent.
///
/// The current beacon and the current rules are not stored. They select the entry that is read and written, and remain
/// until they are set again.
class VLBeaconsSettings {
public:
    /// Reads the file. A missing or unreadable file results in an empty store. The contents of an unreadable file join
    /// the values set meanwhile before the first write that succeeds.
    VLBeaconsSettings();

    /// Selects the cool-off that is read and written.
    std::optional<CLBeacon> beacon() const;
    void setBeacon(const std::optional<CLBeacon>& beacon);
    /// Selects the period that is read and written, by rule identifier.
    std::optional<std::string> periodStartRuleId() const;
    void setPeriodStartRuleId(const std::optional<std::string>& ruleId);
    /// Selects the message count that is read and written, by rule identifier.
    std::optional<std::string> messageCountRuleId() const;
    void setMessageCountRuleId(const std::optional<std::string>& ruleId);

    std::optional<Dictionary> serverConfig() const;
    /// One value of the configuration, without copying all of it.
    std::optional<Value> serverConfigValue(const std::string& key) const;
    /// Stores the configuration without its nulls, and the current time.
    void setServerConfig(const Dictionary& config);
    /// Seconds since 1970, like all times here.
    std::optional<double> lastServerConfigUpdateTime() const;

    /// The setter does nothing without a current beacon.
    std::optional<double> coolOffStart() const;
    void setCoolOffStart(double time);
    /// The setter does nothing without a current rule.
    std::optional<double> periodStart() const;
    void setPeriodStart(double time);
    /// 0 if absent. The setter does nothing without a current rule.
    std::int64_t messageDisplayCount() const;
    void setMessageDisplayCount(std::int64_t count);

    /// `writeSettingsFile`
    void writeSettingsFile();
    /// Everything that is stored.
    Dictionary allSettings() const;
    /// `getFilePath`
    static std::string getFilePath();

private:
    std::optional<std::string> coolOffKeyForBeacon() const;
    const Dictionary* storedRule(const std::optional<std::string>& ruleId) const;
    void storeInRule(const std::optional<std::string>& ruleId, const char* key, Value value);
    void adopt(Dictionary stored);

    mutable std::recursive_mutex mutex_;
    // Guarded by mutex_.
    std::optional<CLBeacon> beacon_;
    std::optional<std::string> periodStartRuleId_;
    std::optional<std::string> messageCountRuleId_;
    Dictionary allSettings_;
    PropertyListFile file_;
};

}  // namespace vorlane
