#include "Beacons/VLBeaconsConfig.h"

#include <gtest/gtest.h>

#include "Beacons/validIBeaconRule.h"
#include "Categories/CLBeaconRegion+VLRegionId.h"
#include "Tests/Beacons/BeaconTest.h"

namespace vorlane {

namespace {

class VLBeaconsConfigTest : public BeaconTest {
protected:
    using Texts = std::vector<std::string>;

    /// The values of one field of all rules.
    static Texts fieldOf(const Array& rules, const char* key) {
        Texts texts;
        for (const auto& rule : rules) texts.push_back(rule[key].get<std::string>());
        return texts;
    }
    static Texts identifiers(const VLBeaconsConfig::Regions& regions) {
        Texts texts;
        for (const auto& region : regions) texts.push_back(region->identifier());
        return texts;
    }
    static Texts regionIds(const VLBeaconsConfig::Regions& regions) {
        Texts texts;
        for (const auto& region : regions) texts.push_back(vl_getRegionId(*region));
        return texts;
    }
    static std::string id(const std::string& rest) { return kUUID + rest; }

    /// The content data for a beacon under these rules.
    std::shared_ptr<VLBeaconContentData> dataOf(const Array& rules, const CLBeacon& ranged = beacon()) {
        current = config(rules);
        return current->getBeaconContentData(ranged);
    }
    bool applies(const Dictionary& fields, const CLBeacon& ranged = beacon()) {
        return dataOf({rule("message", fields)}, ranged)->alertRange().has_value();
    }

    std::shared_ptr<VLBeaconsConfig> current;
};

TEST_F(VLBeaconsConfigTest, KeysHaveTheirNames) {
    EXPECT_STREQ(VLBeaconsConfig::ibeaconKey(), "beacon");
    EXPECT_STREQ(VLBeaconsConfig::uuidKey(), "uuid");
    EXPECT_STREQ(VLBeaconsConfig::majorKey(), "major");
    EXPECT_STREQ(VLBeaconsConfig::minorKey(), "minor");
}

TEST_F(VLBeaconsConfigTest, AnyRuleMeansBeaconsAreFound) {
    EXPECT_TRUE(VLBeaconsConfig(settings).isBeaconsFound(configured({rule("message")})));
    EXPECT_TRUE(VLBeaconsConfig(settings).isBeaconsFound(configured({rule("data")})));
    EXPECT_TRUE(VLBeaconsConfig(settings).isBeaconsFound(configured({rule("message;data")})));
    EXPECT_EQ(settingsFile()["VL_SERVER_CONFIG"], Value(configured({rule("message;data")})));
    EXPECT_FALSE(VLBeaconsConfig(settings).isBeaconsFound(configured({rule("another")})));
    EXPECT_FALSE(VLBeaconsConfig(settings).isBeaconsFound(configured({})));
    EXPECT_FALSE(VLBeaconsConfig(settings).isBeaconsFound({}));
    EXPECT_EQ(settingsFile()["VL_SERVER_CONFIG"], Value(Dictionary{}));
}

TEST_F(VLBeaconsConfigTest, NotifyFollowsTheConfiguration) {
    EXPECT_FALSE(VLBeaconsConfig(settings).isNotify());
    EXPECT_FALSE(configOf(settings, {})->isNotify());
    EXPECT_TRUE(configOf(settings, {{"auto_beacon_notify", true}})->isNotify());
    EXPECT_FALSE(configOf(settings, {{"auto_beacon_notify", false}})->isNotify());
    EXPECT_TRUE(configOf(settings, {{"auto_beacon_notify", 1}})->isNotify());
    EXPECT_FALSE(configOf(settings, {{"auto_beacon_notify", 0}})->isNotify());
    for (const Value& wrong : {Value(nullptr), Value("text"), Value(Array{true}), Value(Dictionary{})}) {
        EXPECT_FALSE(configOf(settings, {{"auto_beacon_notify", wrong}})->isNotify()) << wrong;
    }
}

TEST_F(VLBeaconsConfigTest, RulesAreSelectedByType) {
    const auto rules =
        config({rule("message", {{"name", "a"}}), rule("data", {{"name", "b"}}), rule("message;data", {{"name", "c"}}),
                rule("data;message", {{"name", "d"}}), rule("MESSAGE", {{"name", "e"}}), rule("", {{"name", "f"}}),
                rule("message", {{"name", "g"}})});
    EXPECT_EQ(fieldOf(rules->beaconMessageRules(), "name"), (Texts{"a", "c", "g"}));
    EXPECT_EQ(fieldOf(rules->beaconDataRules(), "name"), (Texts{"b", "c"}));
}

TEST_F(VLBeaconsConfigTest, MessageRulesAreSortedByPriority) {
    const auto rules =
        config({rule("message;data", {{"name", "five"}, {"priority", 5}}), rule("message;data", {{"name", "none"}}),
                rule("message;data", {{"name", "ten"}, {"priority", "10"}}),
                rule("message;data", {{"name", "five again"}, {"priority", 5.0}}),
                rule("message;data", {{"name", "no number"}, {"priority", "high"}}),
                rule("message;data", {{"name", "below"}, {"priority", -1}}),
                rule("message;data", {{"name", "between"}, {"priority", 7.5}})});
    EXPECT_EQ(fieldOf(rules->beaconMessageRules(), "name"),
              (Texts{"ten", "between", "five", "five again", "below", "none", "no number"}));
    EXPECT_EQ(fieldOf(rules->beaconDataRules(), "name"),
              (Texts{"five", "none", "ten", "five again", "no number", "below", "between"}));
}

TEST_F(VLBeaconsConfigTest, SetRulesAreSortedAndUsed) {
    const auto rules = config({rule("message", {{"alert_range", "near"}})});
    const Array others{rule("message", {{"name", "low"}, {"alert_range", "any"}, {"priority", 1}}), Value("no rule"),
                       rule("message", {{"name", "high"}, {"alert_range", "immediate"}, {"priority", 2}})};
    rules->setBeaconMessageRules(others);
    EXPECT_EQ(fieldOf(rules->beaconMessageRules(), "name"), (Texts{"high", "low"}));
    EXPECT_EQ(rules->getBeaconContentData(beacon())->alertRange(), "any");
    const auto sorted = rules->beaconMessageRules();
    rules->setBeaconMessageRules(sorted);
    EXPECT_EQ(rules->beaconMessageRules(), sorted);
}

TEST_F(VLBeaconsConfigTest, ListsAreBuiltOnce) {
    const auto first = config({rule("message;data")});
    EXPECT_EQ(regionIds(first->messageBeaconRegions()), Texts{id("_1_2")});
    EXPECT_EQ(regionIds(first->dataBeaconRegions()), Texts{id("_1_2")});
    EXPECT_TRUE(first->isBeaconsFound(configured({})));
    EXPECT_EQ(first->beaconMessageRules().size(), 1U);
    EXPECT_EQ(first->messageBeaconRegions().size(), 1U);
    VLBeaconsConfig second(settings);
    EXPECT_TRUE(second.beaconMessageRules().empty());
    EXPECT_TRUE(second.dataBeaconRegions().empty());
}

TEST_F(VLBeaconsConfigTest, StoredRulesApplyAfterARestart) {
    config({rule("message", {{"minor", 9}})});
    VLBeaconsConfig again(settings);
    EXPECT_EQ(identifiers(again.messageBeaconRegions()), Texts{id("_1_9")});
}

TEST_F(VLBeaconsConfigTest, MessageRuleCoversTheWholeUUID) {
    const auto rules = config({rule("message"), rule("message;data", {{"minor", 3}, {"priority", -1}})});
    const auto& regions = rules->messageBeaconRegions();
    EXPECT_EQ(identifiers(regions), (Texts{id("_1_3"), id("_1_2")}));
    EXPECT_EQ(regionIds(regions), (Texts{id("_1_3"), id("_*_*")}));
}

TEST_F(VLBeaconsConfigTest, MinorNeedsAMajor) {
    const auto regionOf = [](const Dictionary& fields) {
        return VLBeaconsConfig::beaconRegionFromRule(rule("data", fields).get_ref<const Dictionary&>());
    };
    EXPECT_EQ(vl_getRegionId(*regionOf({})), id("_1_2"));
    EXPECT_EQ(vl_getRegionId(*regionOf({{"minor", "*"}})), id("_1_*"));
    EXPECT_EQ(vl_getRegionId(*regionOf({{"major", "*"}, {"minor", "*"}})), id("_*_*"));
    EXPECT_EQ(vl_getRegionId(*regionOf({{"major", "*"}, {"minor", 7}})), id("_*_*"));
    EXPECT_EQ(regionOf({{"major", "*"}, {"minor", 7}})->identifier(), id("_*_7"));
    EXPECT_FALSE(regionOf({})->notifyEntryStateOnDisplay());
}

TEST_F(VLBeaconsConfigTest, RegionsUseTheLow16Bits) {
    const auto regionOf = [](const Value& major, const Value& minor) {
        const auto region = VLBeaconsConfig::beaconRegionFromRule(
            rule("data", {{"major", major}, {"minor", minor}}).get_ref<const Dictionary&>());
        return std::pair(vl_getRegionId(*region), region->identifier());
    };
    EXPECT_EQ(regionOf(65535, 65536), std::pair(id("_65535_0"), id("_65535_65536")));
    EXPECT_EQ(regionOf(65537, -1), std::pair(id("_1_65535"), id("_65537_-1")));
    EXPECT_EQ(regionOf("12", "7"), std::pair(id("_12_7"), id("_12_7")));
    EXPECT_EQ(regionOf(12.0, 7.9), std::pair(id("_12_7"), id("_12_7.9")));
    EXPECT_EQ(regionOf("x", Array{1}), std::pair(id("_0_0"), id("_x_[1]")));
    EXPECT_EQ(regionOf(nullptr, nullptr), std::pair(id("_0_0"), id("_(null)_(null)")));
    EXPECT_EQ(regionOf(1e300, 18446744073709551615U).first, id("_65535_65535"));
}

TEST_F(VLBeaconsConfigTest, RuleIdentifierUsesTheValuesUnchanged) {
    const auto idOf = [](const Dictionary& rule) { return VLBeaconsConfig::getRuleIdForIndex(rule); };
    EXPECT_EQ(idOf({{"uuid", "u"}, {"major", 1}, {"minor", 2}}), "u_1_2");
    EXPECT_EQ(idOf({{"uuid", "U"}, {"major", "*"}, {"minor", "*"}}), "U_*_*");
    EXPECT_EQ(idOf({{"uuid", "u"}, {"major", "007"}, {"minor", 2.5}}), "u_007_2.5");
    EXPECT_EQ(idOf({{"uuid", 7}, {"major", true}, {"minor", Dictionary{{"a", 1}}}}), "7_1_{\"a\":1}");
    EXPECT_EQ(idOf({}), "(null)_(null)_(null)");
}

TEST_F(VLBeaconsConfigTest, ValidRulesNeedTypeAndUUID) {
    const auto isValid = [](const Dictionary& fields) {
        return validIBeaconRule(rule("message", fields).get_ref<const Dictionary&>());
    };
    EXPECT_TRUE(isValid({}));
    EXPECT_TRUE(isValid({{"uuid", "b9407f30-f5f8-466e-aff9-25556b57fe6d"}}));
    for (const Value& other : {Value("eddystone"), Value("iBeacon"), Value(1), Value(nullptr)}) {
        EXPECT_FALSE(isValid({{"beacon_type", other}, {"uuid", "bad"}})) << other;
    }
    EXPECT_TRUE(log().lines().empty());
    const std::vector<std::pair<Value, std::string>> bad{{Value("not-a-uuid"), "not-a-uuid"},
                                                         {Value(""), ""},
                                                         {Value(12), "12"},
                                                         {Value(nullptr), "(null)"},
                                                         {Value(std::string(kUUID) + "0"), std::string(kUUID) + "0"},
                                                         {Value(Dictionary{}), "{}"}};
    for (const auto& [uuid, text] : bad) {
        EXPECT_FALSE(isValid({{"uuid", uuid}})) << uuid;
        EXPECT_EQ(log().count(text + " seems to be an invalid UUID, beacon config ignored", VLLogLevel::Warn), 1)
            << text;
    }
    EXPECT_FALSE(isValid({{"uuid", std::string(kUUID) + '\0'}}));
}

TEST_F(VLBeaconsConfigTest, InvalidRulesHaveNoRegion) {
    const auto rules = config({rule("message;data", {{"uuid", "bad"}}), rule("message", {{"beacon_type", "other"}}),
                               rule("data", {{"minor", 5}}), rule("data", {{"beacon_type", nullptr}})});
    EXPECT_TRUE(rules->messageBeaconRegions().empty());
    EXPECT_EQ(identifiers(rules->dataBeaconRegions()), Texts{id("_1_5")});
}

TEST_F(VLBeaconsConfigTest, ContentDataMakesItsBeaconCurrent) {
    const auto data = dataOf({rule("message", {{"max_range_m", 20},
                                               {"default_message", "Hi"},
                                               {"message_count", 2},
                                               {"time_period", 1.5},
                                               {"alert_range", "near"}})});
    EXPECT_EQ(current->beaconsSettings()->beacon(), beacon());
    EXPECT_EQ(data->settings(), current->beaconsSettings());
    EXPECT_EQ(data->beacon(), beacon());
    EXPECT_EQ(data->maxRange(), 20);
    EXPECT_EQ(data->defaultMessage(), "Hi");
    EXPECT_EQ(data->maximumMessageCount(), 2);
    EXPECT_EQ(data->maximumMessageTimePeriod(), 5400.0);
    EXPECT_EQ(data->alertRange(), "near");
    EXPECT_EQ(current->beaconsSettings()->messageCountRuleId(), id("_1_2"));
    EXPECT_EQ(current->beaconsSettings()->periodStartRuleId(), id("_1_2"));
}

TEST_F(VLBeaconsConfigTest, ContentDataWithoutARuleIsEmpty) {
    const auto data = dataOf({rule("data"), rule("message", {{"minor", 3}, {"message_count", 2}})});
    EXPECT_EQ(data->maxRange(), 0);
    EXPECT_FALSE(data->defaultMessage());
    EXPECT_EQ(data->maximumMessageCount(), 0);
    EXPECT_EQ(data->maximumMessageTimePeriod(), 0);
    EXPECT_FALSE(data->alertRange());
    EXPECT_FALSE(current->beaconsSettings()->messageCountRuleId());
    EXPECT_FALSE(current->beaconsSettings()->periodStartRuleId());
}

TEST_F(VLBeaconsConfigTest, RulesMatchUUIDsIgnoringCase) {
    EXPECT_TRUE(applies({{"uuid", "b9407f30-f5f8-466e-aff9-25556b57fe6d"}}));
    EXPECT_FALSE(applies({{"uuid", kOtherUUID}}));
    EXPECT_FALSE(applies({{"uuid", nullptr}}));
    EXPECT_FALSE(applies({{"uuid", Array{kUUID}}}));
    // "beacon_type" only matters for regions.
    EXPECT_TRUE(applies({{"beacon_type", nullptr}}));
}

TEST_F(VLBeaconsConfigTest, RulesMatchMajorAndMinorAsDecimalStrings) {
    EXPECT_TRUE(applies({{"major", "1"}, {"minor", "2"}}));
    EXPECT_TRUE(applies({{"major", 1.0}, {"minor", "*"}}));
    EXPECT_TRUE(applies({{"major", "*"}, {"minor", 2}}));
    EXPECT_FALSE(applies({{"major", "*"}, {"minor", 7}}));
    EXPECT_TRUE(applies({{"major", "*"}, {"minor", 7}}, beacon(7)));
    EXPECT_FALSE(applies({{"major", 2}}));
    EXPECT_FALSE(applies({{"minor", 3}}));
    EXPECT_TRUE(applies({{"minor", 65535}}, beacon(65535)));
    EXPECT_TRUE(applies({{"minor", 0}}, beacon(0)));
    // Only regions use the low 16 bits.
    EXPECT_FALSE(applies({{"minor", 65538}}));
    for (const Value& wrong : {Value("02"), Value("+2"), Value(" 2"), Value("2 "), Value("2x"), Value(""), Value("**"),
                               Value(2.5), Value(true), Value(nullptr), Value(Array{2}), Value(Dictionary{})}) {
        EXPECT_FALSE(applies({{"minor", wrong}})) << wrong;
        EXPECT_FALSE(applies({{"minor", wrong}}, beacon(0))) << wrong;
    }
}

TEST_F(VLBeaconsConfigTest, RuleOfLowestPriorityWins) {
    const auto data = dataOf({rule("message", {{"priority", 5}, {"alert_range", "near"}}),
                              rule("message", {{"priority", 10}, {"alert_range", "immediate"}})});
    EXPECT_EQ(data->alertRange(), "near");
}

TEST_F(VLBeaconsConfigTest, RuleOverwritesOnlyItsOwnValues) {
    const auto data = dataOf({rule("message", {{"priority", 3},
                                               {"max_range_m", 1},
                                               {"message_count", 1},
                                               {"time_period", 1},
                                               {"alert_range", "near"},
                                               {"default_message", "first"}}),
                              rule("message", {{"priority", 2},
                                               {"minor", "*"},
                                               {"message_count", 5},
                                               {"alert_range", nullptr},
                                               {"show_default_if_no_network", false}}),
                              rule("message", {{"priority", 1},
                                               {"major", "*"},
                                               {"max_range_m", 3},
                                               {"alert_range", nullptr},
                                               {"show_default_if_no_network", false}})});
    EXPECT_EQ(data->maxRange(), 3);
    EXPECT_EQ(data->maximumMessageCount(), 5);
    EXPECT_EQ(data->maximumMessageTimePeriod(), 3600);
    EXPECT_EQ(data->alertRange(), "near");
    EXPECT_EQ(data->defaultMessage(), "first");
    EXPECT_EQ(current->beaconsSettings()->messageCountRuleId(), id("_1_*"));
    EXPECT_EQ(current->beaconsSettings()->periodStartRuleId(), id("_1_2"));
}

TEST_F(VLBeaconsConfigTest, RuleWithoutADefaultMessageClearsIt) {
    EXPECT_FALSE(
        dataOf({rule("message", {{"priority", 2}, {"default_message", "first"}}), rule("message", {{"priority", 1}})})
            ->defaultMessage());
}

TEST_F(VLBeaconsConfigTest, OnlyFalseSuppressesTheDefaultMessage) {
    const auto messageWith = [this](const Value& show) {
        return dataOf({rule("message", {{"default_message", "Hi"}, {"show_default_if_no_network", show}})})
            ->defaultMessage();
    };
    EXPECT_FALSE(messageWith(false));
    EXPECT_FALSE(messageWith(0));
    for (const Value& other : {Value(true), Value(1), Value(nullptr), Value("false"), Value("0"), Value(Array{})}) {
        EXPECT_EQ(messageWith(other), "Hi") << other;
    }
}

TEST_F(VLBeaconsConfigTest, ReadsNumbersAsStringsAndStringsAsNumbers) {
    const auto data = dataOf({rule(
        "message", {{"max_range_m", "20"}, {"default_message", 5}, {"message_count", "2"}, {"time_period", "0.5"}})});
    EXPECT_EQ(data->maxRange(), 20);
    EXPECT_EQ(data->defaultMessage(), "5");
    EXPECT_EQ(data->maximumMessageCount(), 2);
    EXPECT_EQ(data->maximumMessageTimePeriod(), 1800);
}

TEST_F(VLBeaconsConfigTest, MistypedValuesCountAsAbsent) {
    for (const Value& wrong : {Value(nullptr), Value(true), Value("text"), Value(Array{1}), Value(Dictionary{})}) {
        const auto data =
            dataOf({rule("message", {{"max_range_m", wrong}, {"message_count", wrong}, {"time_period", wrong}})});
        EXPECT_EQ(data->maxRange(), 0) << wrong;
        EXPECT_EQ(data->maximumMessageCount(), 0) << wrong;
        EXPECT_EQ(data->maximumMessageTimePeriod(), 0) << wrong;
        EXPECT_FALSE(current->beaconsSettings()->messageCountRuleId()) << wrong;
        EXPECT_FALSE(current->beaconsSettings()->periodStartRuleId()) << wrong;
    }
    for (const Value& wrong : {Value(nullptr), Value(true), Value(Array{"any"}), Value(Dictionary{})}) {
        const auto data = dataOf({rule("message", {{"alert_range", wrong}, {"default_message", wrong}})});
        EXPECT_FALSE(data->alertRange()) << wrong;
        EXPECT_FALSE(data->defaultMessage()) << wrong;
    }
}

TEST_F(VLBeaconsConfigTest, MistypedRulesAreSkipped) {
    for (const Value& wrong :
         {Value(nullptr), Value(1), Value("text"), Value(true), Value(Dictionary{{"type", "data"}})}) {
        EXPECT_FALSE(VLBeaconsConfig(settings).isBeaconsFound({{"beacon_data", wrong}})) << wrong;
    }
    const auto rules = config({Value(1), Value("message"), Value(nullptr), Value(Array{rule("message")}),
                               rule("message", {{"type", Array{"message"}}}), rule("message", {{"type", nullptr}}),
                               Value(Dictionary{}), rule("message", {{"minor", 4}})});
    EXPECT_EQ(rules->beaconMessageRules().size(), 1U);
    EXPECT_EQ(identifiers(rules->messageBeaconRegions()), Texts{id("_1_4")});
}

TEST_F(VLBeaconsConfigTest, HugeNumbersAreClamped) {
    const auto data = dataOf({rule("message", {{"max_range_m", 1e300}, {"message_count", -1e300}})});
    EXPECT_EQ(data->maxRange(), std::numeric_limits<std::int64_t>::max());
    EXPECT_EQ(data->maximumMessageCount(), std::numeric_limits<std::int64_t>::min());
}

TEST_F(VLBeaconsConfigTest, RuleWithoutALimitUsesThePreviousRule) {
    const auto rules =
        config({rule("message", {{"message_count", 1}, {"time_period", 1}}), rule("message", {{"minor", 3}})});
    rules->getBeaconContentData(beacon(2));
    const auto data = rules->getBeaconContentData(beacon(3));
    EXPECT_EQ(data->maximumMessageCount(), 0);
    EXPECT_EQ(rules->beaconsSettings()->messageCountRuleId(), id("_1_2"));
    EXPECT_EQ(rules->beaconsSettings()->periodStartRuleId(), id("_1_2"));
}

}  // namespace

}  // namespace vorlane
