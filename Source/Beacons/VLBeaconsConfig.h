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

/// The rules of the beacon feature's configuration: which regions they ask to monitor, and what they say of a ranged
/// beacon. Each list is made of the stored configuration on first use and then kept, so a new configuration takes
/// effect with a new object. Main queue only.
class VLBeaconsConfig {
public:
    using Regions = std::vector<std::shared_ptr<CLBeaconRegion>>;

    /// `initWithSettings:`
    explicit VLBeaconsConfig(std::weak_ptr<VLSettings> settings);
    ~VLBeaconsConfig();

    /// `isBeaconsFound:` stores the configuration, and tells whether there is any rule.
    bool isBeaconsFound(const Dictionary& config);
    /// Whether messages may be shown at all: "auto_beacon_notify", which is false when absent.
    bool isNotify();

    /// The rules for messages, those of the highest "priority" first, one without any last. Equal ones stay in the
    /// order of the configuration.
    const Array& beaconMessageRules();
    /// `setBeaconMessageRules:` sorts rules that differ from the ones that there are. What is no dictionary is dropped.
    void setBeaconMessageRules(const Array& rules);
    /// The rules for data collection, in the order of the configuration.
    const Array& beaconDataRules();

    /// Regions of the usable rules for messages; of one that is for messages alone, all that has its UUID.
    const Regions& messageBeaconRegions();
    /// Regions of the usable rules for data collection.
    const Regions& dataBeaconRegions();
    /// `beaconRegionFromRule:` of a rule with a usable UUID. Its identifier is the rule's.
    static std::shared_ptr<CLBeaconRegion> beaconRegionFromRule(const Dictionary& rule);

    /// `getBeaconContentData:` makes the beacon the current one of the settings and lets every rule that applies to it
    /// overwrite what the ones before it said. The rule of the lowest priority has the last word; meant so.
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
