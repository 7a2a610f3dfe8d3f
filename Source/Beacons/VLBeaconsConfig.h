#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Platform/CLBeacon.h"
#include "Public/VLValue.h"

namespace vorlane {

class CLBeaconRegion;
class VLBeaconContentData;
class VLBeaconRule;
class VLBeaconsSettings;
class VLSettings;

/// The rules of the beacon configuration: the regions to monitor, and the values for a ranged beacon. Each list is
/// built from the stored configuration on first use and then kept. A new configuration takes effect with a new object.
/// Main queue only.
class VLBeaconsConfig {
public:
    using Regions = std::vector<std::shared_ptr<CLBeaconRegion>>;

    /// `initWithSettings:`
    explicit VLBeaconsConfig(std::weak_ptr<VLSettings> settings);
    ~VLBeaconsConfig();

    /// `isBeaconsFound:` stores the configuration, and returns whether there is any rule.
    bool isBeaconsFound(const Dictionary& config);
    /// Whether messages may be shown ("auto_beacon_notify"). False if absent.
    bool isNotify();

    /// The rules for messages, sorted by descending "priority". Rules without a priority are last. Rules of equal
    /// priority keep the order of the configuration.
    const Array& beaconMessageRules();
    /// `setBeaconMessageRules:` sorts the rules if they differ from the current ones. Elements that are not
    /// dictionaries are dropped.
    void setBeaconMessageRules(const Array& rules);
    /// The rules for data collection, in the order of the configuration.
    const Array& beaconDataRules();

    /// The regions of the valid rules for messages. A rule for messages only covers all beacons with its UUID.
    const Regions& messageBeaconRegions();
    /// The regions of the valid rules for data collection.
    const Regions& dataBeaconRegions();
    /// `beaconRegionFromRule:` takes a rule with a valid UUID. The region has the rule's identifier.
    static std::shared_ptr<CLBeaconRegion> beaconRegionFromRule(const Dictionary& rule);

    /// `getBeaconContentData:` makes the beacon the current one of the settings, and applies all matching rules.
    /// Intended: each rule overwrites earlier ones, so the lowest priority wins.
    std::shared_ptr<VLBeaconContentData> getBeaconContentData(const CLBeacon& beacon);

    /// Made on first use.
    const std::shared_ptr<VLBeaconsSettings>& beaconsSettings();

    /// `getRuleIdForIndex:` takes the rule, not an index.
    static std::string getRuleIdForIndex(const Dictionary& rule);
    static const char* ibeaconKey() { return "beacon"; }
    static const char* uuidKey() { return "uuid"; }
    static const char* majorKey() { return "major"; }
    static const char* minorKey() { return "minor"; }

private:
    Array rulesOfType(const char* type);

    // Fixed at construction.
    const std::weak_ptr<VLSettings> settings_;
    // Made on first use.
    std::shared_ptr<VLBeaconsSettings> beaconsSettings_;
    std::optional<Array> beaconMessageRules_;
    std::vector<VLBeaconRule> readMessageRules_;
    std::optional<Array> beaconDataRules_;
    std::optional<Regions> messageBeaconRegions_;
    std::optional<Regions> dataBeaconRegions_;
};

}  // namespace vorlane
