#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <memory>
#include <string>

#include "Beacons/VLBeaconRegionSessionsData.h"
#include "Beacons/VLBeaconsSettings.h"
#include "Tests/Beacons/BeaconTest.h"

namespace vorlane {

namespace {

/// Files that cannot be read for a while: longer ones than the library reads stand in their place.
class UnreadableBeaconFilesTest : public BeaconTest {
protected:
    static void hide(const std::string& path) {
        std::filesystem::rename(path, path + ".away");
        std::ofstream(path).put('x');
        std::filesystem::resize_file(path, (std::uintmax_t{64} << 20U) + 1);
    }
    static void show(const std::string& path) { std::filesystem::rename(path + ".away", path); }
};

TEST_F(UnreadableBeaconFilesTest, StoredRulesJoinNewOnes) {
    const auto path = VLBeaconsSettings::getFilePath();
    {
        VLBeaconsSettings before;
        before.setMessageCountRuleId("A");
        before.setMessageDisplayCount(1);
        before.setMessageCountRuleId("B");
        before.setMessageDisplayCount(1);
        before.setServerConfig({{"a", 1}});
    }
    hide(path);
    VLBeaconsSettings store;
    store.setMessageCountRuleId("B");
    store.setMessageDisplayCount(2);
    show(path);
    store.setMessageCountRuleId("C");
    store.setMessageDisplayCount(3);
    const auto expected = Dictionary{{"A", Dictionary{{"VL_MESSAGE_DISPLAY_COUNT", 1}}},
                                     {"B", Dictionary{{"VL_MESSAGE_DISPLAY_COUNT", 2}}},
                                     {"C", Dictionary{{"VL_MESSAGE_DISPLAY_COUNT", 3}}}};
    const VLBeaconsSettings after;
    EXPECT_EQ(after.allSettings().at("VL_BEACON_RULES_KEY"), Value(expected));
    EXPECT_EQ(after.serverConfig(), (Dictionary{{"a", 1}}));
    EXPECT_EQ(store.allSettings(), after.allSettings());
}

TEST_F(UnreadableBeaconFilesTest, StoredSessionsJoinNewOnes) {
    const auto path = VLBeaconRegionSessionsData::getFilePath();
    VLBeaconRegionSessionsData().setId("1", "A");
    hide(path);
    VLBeaconRegionSessionsData sessions;
    EXPECT_EQ(sessions.idWithRegionId("A"), std::nullopt);
    sessions.setId("2", "B");
    show(path);
    sessions.setId("3", "C");
    const VLBeaconRegionSessionsData after;
    EXPECT_EQ(after.idWithRegionId("A"), "1");
    EXPECT_EQ(after.idWithRegionId("B"), "2");
    EXPECT_EQ(after.idWithRegionId("C"), "3");
}

}  // namespace

}  // namespace vorlane
