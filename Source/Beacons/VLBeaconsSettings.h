#pragma once

#include <cstdint>
#include <mutex>
#include <optional>
#include <string>

#include "Platform/CLBeacon.h"
#include "Platform/Internal/PropertyListFile.h"
#include "Public/VLValue.h"

namespace vorlane {

/// The beacon feature's persistent store: the last configuration received, when each beacon's cool-off began, and each
/// rule's period and count of messages.
///
/// It keeps its values in memory and in "VLLibBeaconsSettings.plist" in the documents folder, which each setter of a
/// stored value replaces whole. After a failure the values stay in memory, and the next change writes them. Several
/// stores share the file, and a store sees what another wrote only when it is made. Any thread; a stored value of the
/// wrong kind reads as absent.
///
/// The current beacon and the current rules are not stored: they choose which entry is read and written, and stay what
/// they are until they are set again.
class VLBeaconsSettings {
public:
    /// Reads the file; a missing or unreadable one yields an empty store. Writes nothing. What an unreadable file holds
    /// joins what was set meanwhile before the first write that succeeds.
    VLBeaconsSettings();

    /// The beacon whose cool-off is read and written.
    std::optional<CLBeacon> beacon() const;
    void setBeacon(const std::optional<CLBeacon>& beacon);
    /// The rule whose period is read and written, by its identifier.
    std::optional<std::string> periodStartRuleId() const;
    void setPeriodStartRuleId(const std::optional<std::string>& ruleId);
    /// The rule whose count of messages is read and written, by its identifier.
    std::optional<std::string> messageCountRuleId() const;
    void setMessageCountRuleId(const std::optional<std::string>& ruleId);

    std::optional<Dictionary> serverConfig() const;
    /// One value of the configuration, without a copy of the whole.
    std::optional<Value> serverConfigValue(const std::string& key) const;
    /// Stores the configuration, without its nulls, and the time.
    void setServerConfig(const Dictionary& config);
    /// Seconds since 1970, as all times here.
    std::optional<double> lastServerConfigUpdateTime() const;

    /// The setter does nothing without a current beacon.
    std::optional<double> coolOffStart() const;
    void setCoolOffStart(double time);
    /// The setters of the rules' values do nothing without the current rule.
    std::optional<double> periodStart() const;
    void setPeriodStart(double time);
    /// 0 when absent.
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
