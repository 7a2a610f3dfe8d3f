#include "Beacons/VLBeaconsSettings.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <limits>
#include <thread>

#include "Tests/Beacons/BeaconTest.h"

namespace vorlane {

namespace {

constexpr const char* kFile = "VLLibBeaconsSettings.plist";

class VLBeaconsSettingsTest : public BeaconTest {
protected:
    VLBeaconsSettings store;

    static Dictionary empty() {
        return {{"VL_BEACON_RULES_KEY", Dictionary{}}, {"VL_COOLDOWN_TIME_KEY", Dictionary{}}};
    }
    static Value with(const Dictionary& further) {
        auto all = empty();
        for (const auto& [key, value] : further) all[key] = value;
        return Value(all);
    }
};

TEST_F(VLBeaconsSettingsTest, FirstUseIsEmptyAndWritesNoFile) {
    EXPECT_EQ(Value(store.allSettings()), Value(empty()));
    EXPECT_FALSE(store.serverConfig());
    EXPECT_FALSE(store.serverConfigValue("beacon_data"));
    EXPECT_FALSE(store.lastServerConfigUpdateTime());
    store.setBeacon(beacon());
    store.setPeriodStartRuleId("R");
    store.setMessageCountRuleId("R");
    EXPECT_FALSE(store.coolOffStart());
    EXPECT_FALSE(store.periodStart());
    EXPECT_EQ(store.messageDisplayCount(), 0);
    EXPECT_FALSE(NSFileManager::fileExistsAtPath(documentsPath(kFile)));
}

TEST_F(VLBeaconsSettingsTest, FileIsInTheDocumentsFolder) {
    EXPECT_EQ(VLBeaconsSettings::getFilePath(), documentsPath(kFile));
}

TEST_F(VLBeaconsSettingsTest, FirstSetterWritesEmptySections) {
    store.setBeacon(beacon());
    store.setCoolOffStart(1234.5);
    EXPECT_EQ(settingsFile(), with({{"VL_COOLDOWN_TIME_KEY", Dictionary{{std::string(kUUID) + "_1_2", 1234.5}}}}));
    std::filesystem::remove(documentsPath(kFile));
    VLBeaconsSettings second;
    second.setServerConfig({{"a", 1}});
    EXPECT_EQ(settingsFile(),
              with({{"VL_SERVER_CONFIG", Dictionary{{"a", 1}}}, {"VL_LAST_SERVER_CONFIG_UPDATE_TIME", phone().now()}}));
}

TEST_F(VLBeaconsSettingsTest, FileIsAPrivatePropertyList) {
    store.setMessageCountRuleId("R_*_*");
    store.setMessageDisplayCount(3);
    EXPECT_EQ(bytesOf(kFile),
              "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
              "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
              "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
              "<plist version=\"1.0\">\n<dict>\n\t<key>VL_BEACON_RULES_KEY</key>\n\t<dict>\n\t\t<key>R_*_*</key>\n"
              "\t\t<dict>\n\t\t\t<key>VL_MESSAGE_DISPLAY_COUNT</key>\n\t\t\t<integer>3</integer>\n\t\t</dict>\n"
              "\t</dict>\n\t<key>VL_COOLDOWN_TIME_KEY</key>\n\t<dict/>\n</dict>\n</plist>\n");
    const auto mode = std::filesystem::status(documentsPath(kFile)).permissions();
    EXPECT_EQ(mode, std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
}

TEST_F(VLBeaconsSettingsTest, ConfigurationIsStoredWithItsTime) {
    const Dictionary config{{"beacon_data", Array{Dictionary{{"uuid", kUUID}}}}, {"auto_beacon_notify", true}};
    store.setServerConfig(config);
    EXPECT_EQ(store.serverConfig(), config);
    EXPECT_EQ(store.serverConfigValue("auto_beacon_notify"), Value(true));
    EXPECT_FALSE(store.serverConfigValue("other"));
    EXPECT_EQ(store.lastServerConfigUpdateTime(), phone().now());
    phone().advance(10.25);
    store.setServerConfig({});
    EXPECT_EQ(store.serverConfig(), Dictionary());
    EXPECT_EQ(store.lastServerConfigUpdateTime(), phone().now());
    const VLBeaconsSettings again;
    EXPECT_EQ(again.serverConfig(), Dictionary());
    EXPECT_EQ(again.lastServerConfigUpdateTime(), phone().now());
}

TEST_F(VLBeaconsSettingsTest, NullsAreDropped) {
    store.setServerConfig({{"a", nullptr}, {"b", Array{1, nullptr, Dictionary{{"c", nullptr}, {"d", 2}}}}});
    const Dictionary kept{{"b", Array{1, Dictionary{{"d", 2}}}}};
    EXPECT_EQ(store.serverConfig(), kept);
    EXPECT_EQ(settingsFile()["VL_SERVER_CONFIG"], Value(kept));
}

TEST_F(VLBeaconsSettingsTest, DifferentBeaconsHaveSeparateCoolOffs) {
    const std::vector<CLBeacon> beacons{
        {kUUID, 1, 2}, {kUUID, 1, 3}, {kUUID, 2, 2}, {kOtherUUID, 1, 2}, {kUUID, 65535, 0}};
    for (std::size_t i = 0; i < beacons.size(); ++i) {
        store.setBeacon(beacons[i]);
        EXPECT_FALSE(store.coolOffStart());
        store.setCoolOffStart(1000.0 + static_cast<double>(i));
    }
    for (std::size_t i = 0; i < beacons.size(); ++i) {
        store.setBeacon(beacons[i]);
        EXPECT_EQ(store.coolOffStart(), 1000.0 + static_cast<double>(i));
    }
    EXPECT_EQ(settingsFile()["VL_COOLDOWN_TIME_KEY"].size(), 5U);
    EXPECT_EQ(settingsFile()["VL_COOLDOWN_TIME_KEY"][std::string(kUUID) + "_65535_0"], Value(1004.0));
}

TEST_F(VLBeaconsSettingsTest, CoolOffIgnoresTheProximity) {
    store.setBeacon(beacon(2, CLProximity::Near, 1));
    store.setCoolOffStart(5);
    store.setBeacon(beacon(2, CLProximity::Far, 30));
    EXPECT_EQ(store.coolOffStart(), 5);
}

TEST_F(VLBeaconsSettingsTest, MissingRuleEntryIsCreated) {
    store.setMessageCountRuleId("new");
    store.setMessageDisplayCount(3);
    EXPECT_EQ(store.messageDisplayCount(), 3);
    EXPECT_EQ(settingsFile()["VL_BEACON_RULES_KEY"],
              Value(Dictionary{{"new", Dictionary{{"VL_MESSAGE_DISPLAY_COUNT", 3}}}}));
    store.setPeriodStartRuleId("other");
    store.setPeriodStart(77.5);
    EXPECT_EQ(store.periodStart(), 77.5);
    EXPECT_EQ(settingsFile()["VL_BEACON_RULES_KEY"],
              Value(Dictionary{{"new", Dictionary{{"VL_MESSAGE_DISPLAY_COUNT", 3}}},
                               {"other", Dictionary{{"VL_PERIOD_START", 77.5}}}}));
}

TEST_F(VLBeaconsSettingsTest, CurrentRulesMayDiffer) {
    store.setMessageCountRuleId("A");
    store.setPeriodStartRuleId("A");
    store.setPeriodStart(1.5);
    store.setMessageDisplayCount(7);
    EXPECT_EQ(settingsFile()["VL_BEACON_RULES_KEY"]["A"],
              Value(Dictionary{{"VL_PERIOD_START", 1.5}, {"VL_MESSAGE_DISPLAY_COUNT", 7}}));
    store.setPeriodStartRuleId("B");
    EXPECT_FALSE(store.periodStart());
    EXPECT_EQ(store.messageDisplayCount(), 7);
}

TEST_F(VLBeaconsSettingsTest, SettersWithoutAKeyAreIgnored) {
    store.setPeriodStart(1);
    store.setMessageDisplayCount(2);
    store.setCoolOffStart(3);
    EXPECT_EQ(Value(store.allSettings()), Value(empty()));
    EXPECT_FALSE(NSFileManager::fileExistsAtPath(documentsPath(kFile)));
    EXPECT_FALSE(store.periodStart());
    EXPECT_EQ(store.messageDisplayCount(), 0);
    EXPECT_FALSE(store.coolOffStart());
    store.setPeriodStartRuleId("A");
    store.setPeriodStart(1);
    store.setPeriodStartRuleId(std::nullopt);
    store.setPeriodStart(2);
    EXPECT_EQ(settingsFile()["VL_BEACON_RULES_KEY"], Value(Dictionary{{"A", Dictionary{{"VL_PERIOD_START", 1.0}}}}));
}

TEST_F(VLBeaconsSettingsTest, CurrentBeaconAndRulesAreNotStored) {
    store.setBeacon(beacon());
    store.setPeriodStartRuleId("A");
    store.setMessageCountRuleId("B");
    EXPECT_EQ(store.beacon(), beacon());
    EXPECT_EQ(store.periodStartRuleId(), "A");
    EXPECT_EQ(store.messageCountRuleId(), "B");
    store.setCoolOffStart(1);
    const VLBeaconsSettings again;
    EXPECT_FALSE(again.beacon());
    EXPECT_FALSE(again.periodStartRuleId());
    EXPECT_FALSE(again.messageCountRuleId());
}

TEST_F(VLBeaconsSettingsTest, ValuesSurviveARestart) {
    store.setServerConfig({{"cooloff_period_minutes", 10}});
    store.setBeacon(beacon());
    store.setCoolOffStart(1'700'000'000.125);
    store.setPeriodStartRuleId("A");
    store.setPeriodStart(1'700'000'001.0 / 3.0);
    store.setMessageCountRuleId("A");
    store.setMessageDisplayCount(std::numeric_limits<std::int64_t>::max());
    VLBeaconsSettings again;
    EXPECT_EQ(Value(again.allSettings()), Value(store.allSettings()));
    again.setBeacon(beacon());
    again.setPeriodStartRuleId("A");
    again.setMessageCountRuleId("A");
    EXPECT_EQ(again.coolOffStart(), 1'700'000'000.125);
    EXPECT_EQ(again.periodStart(), 1'700'000'001.0 / 3.0);
    EXPECT_EQ(again.messageDisplayCount(), std::numeric_limits<std::int64_t>::max());
}

TEST_F(VLBeaconsSettingsTest, StoreReadsTheFileOnlyAtConstruction) {
    VLBeaconsSettings other;
    store.setServerConfig({{"a", 1}});
    EXPECT_FALSE(other.serverConfig());
    EXPECT_EQ(VLBeaconsSettings().serverConfig(), (Dictionary{{"a", 1}}));
    // Its own write replaces the whole file.
    other.setMessageCountRuleId("R");
    other.setMessageDisplayCount(1);
    EXPECT_FALSE(VLBeaconsSettings().serverConfig());
}

TEST_F(VLBeaconsSettingsTest, MalformedFileMeansAnEmptyStore) {
    for (const auto* bytes : {"", "no property list", "<plist><array/></plist>", "<plist><dict><key>a</key>"}) {
        writeBytes(kFile, bytes);
        VLBeaconsSettings broken;
        EXPECT_EQ(Value(broken.allSettings()), Value(empty())) << bytes;
        EXPECT_EQ(bytesOf(std::string(kFile) + ".corrupt"), bytes);
        broken.setMessageCountRuleId("R");
        broken.setMessageDisplayCount(1);
        EXPECT_EQ(settingsFile()["VL_BEACON_RULES_KEY"]["R"]["VL_MESSAGE_DISPLAY_COUNT"], Value(1)) << bytes;
    }
}

TEST_F(VLBeaconsSettingsTest, MistypedValuesCountAsAbsent) {
    for (const Value& wrong : {Value("text"), Value(true), Value(Array{1}), Value(Dictionary{{"a", 1}})}) {
        writeFile(kFile,
                  {{"VL_LAST_SERVER_CONFIG_UPDATE_TIME", wrong},
                   {"VL_BEACON_RULES_KEY",
                    Dictionary{{"R", Dictionary{{"VL_PERIOD_START", wrong}, {"VL_MESSAGE_DISPLAY_COUNT", wrong}}}}},
                   {"VL_COOLDOWN_TIME_KEY", Dictionary{{std::string(kUUID) + "_1_2", wrong}}}});
        VLBeaconsSettings hostile;
        hostile.setBeacon(beacon());
        hostile.setPeriodStartRuleId("R");
        hostile.setMessageCountRuleId("R");
        EXPECT_FALSE(hostile.lastServerConfigUpdateTime()) << wrong;
        EXPECT_FALSE(hostile.coolOffStart()) << wrong;
        EXPECT_FALSE(hostile.periodStart()) << wrong;
        EXPECT_EQ(hostile.messageDisplayCount(), 0) << wrong;
    }
}

TEST_F(VLBeaconsSettingsTest, MistypedSectionsAreReplaced) {
    for (const Value& wrong : {Value("text"), Value(1), Value(Array{1})}) {
        writeFile(kFile,
                  {{"VL_SERVER_CONFIG", wrong}, {"VL_BEACON_RULES_KEY", wrong}, {"VL_COOLDOWN_TIME_KEY", wrong}});
        VLBeaconsSettings hostile;
        EXPECT_FALSE(hostile.serverConfig()) << wrong;
        EXPECT_FALSE(hostile.serverConfigValue("a")) << wrong;
        hostile.setBeacon(beacon());
        hostile.setCoolOffStart(2);
        EXPECT_EQ(hostile.coolOffStart(), 2) << wrong;
        EXPECT_EQ(settingsFile()["VL_BEACON_RULES_KEY"], Value(Dictionary{})) << wrong;
        writeFile(kFile, {{"VL_BEACON_RULES_KEY", Dictionary{{"R", wrong}}}});
        VLBeaconsSettings rules;
        rules.setMessageCountRuleId("R");
        EXPECT_EQ(rules.messageDisplayCount(), 0) << wrong;
        rules.setMessageDisplayCount(4);
        EXPECT_EQ(rules.messageDisplayCount(), 4) << wrong;
    }
}

TEST_F(VLBeaconsSettingsTest, OtherKeysOfTheFileAreKept) {
    writeFile(kFile, {{"of a later version", "kept"}});
    VLBeaconsSettings again;
    again.setMessageCountRuleId("R");
    again.setMessageDisplayCount(1);
    EXPECT_EQ(settingsFile()["of a later version"], Value("kept"));
}

TEST_F(VLBeaconsSettingsTest, ValuesStayInEffectAfterAFailedWrite) {
    std::filesystem::create_directories(documentsPath(kFile) + "/in the way");
    store.setServerConfig({{"a", 1}});
    store.setMessageCountRuleId("R");
    store.setMessageDisplayCount(2);
    EXPECT_EQ(store.serverConfig(), (Dictionary{{"a", 1}}));
    EXPECT_EQ(store.messageDisplayCount(), 2);
    ASSERT_EQ(log().lines().size(), 1U);
    EXPECT_EQ(log().lines()[0].level, VLLogLevel::Warn);
}

TEST_F(VLBeaconsSettingsTest, ThreadsReadAndWriteAtOnce) {
    store.setMessageCountRuleId("R");
    std::thread other([this] {
        for (int i = 0; i < 50; ++i) store.setServerConfig({{"a", i}, {"b", i}});
    });
    for (int i = 0; i < 50; ++i) {
        store.setMessageDisplayCount(i);
        const auto config = store.serverConfig().value_or(Dictionary{{"a", 0}, {"b", 0}});
        EXPECT_EQ(config.at("a"), config.at("b"));
    }
    other.join();
    EXPECT_EQ(settingsFile()["VL_SERVER_CONFIG"], Value(Dictionary{{"a", 49}, {"b", 49}}));
    EXPECT_EQ(settingsFile()["VL_BEACON_RULES_KEY"]["R"]["VL_MESSAGE_DISPLAY_COUNT"], Value(49));
}

}  // namespace

}  // namespace vorlane
