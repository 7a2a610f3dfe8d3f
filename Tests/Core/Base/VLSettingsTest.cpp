#include "Core/Base/VLSettings.h"

#include <gtest/gtest.h>

#include <chrono>

#include <functional>
#include <limits>
#include <map>
#include <thread>

#include "Platform/Internal/StorageFlusher.h"
#include "Platform/NSFileManager.h"
#include "Platform/NSPropertyListSerialization.h"
#include "Tests/Support/SimulatedPhoneTest.h"

namespace vorlane {

namespace {

class VLSettingsTest : public SimulatedPhoneTest {
protected:
    std::string path() const { return documentsPath("VLLibSettings.plist"); }

    std::unique_ptr<VLSettings> open() { return std::make_unique<VLSettings>(phone().device()); }

    Dictionary file() { return NSPropertyListSerialization::dictionaryWithContentsOfFile(path()).value(); }

    void writeFile(const Data& bytes) { ASSERT_TRUE(NSFileManager::writeToFile(bytes, path())); }
    void writeFile(const std::string& text) { writeFile(Data(text.begin(), text.end())); }

    void setZone(std::int64_t seconds) { phone().simulatedDevice().setLocalTimeZone({"", seconds}); }
};

TEST_F(VLSettingsTest, FirstStartWritesAnEmptyDictionary) {
    EXPECT_FALSE(NSFileManager::fileExistsAtPath(path()));
    open();
    EXPECT_EQ(file(), Dictionary());
}

TEST_F(VLSettingsTest, FirstReadOfTheTrackingIdStoresOne) {
    const auto settings = open();
    const auto trackingId = settings->trackingId();
    EXPECT_EQ(trackingId.size(), 32U);
    EXPECT_TRUE(trackingId.starts_with("@VL@"));
    EXPECT_EQ(trackingId.find_first_not_of("0123456789ABCDEF", 4), std::string::npos);
    EXPECT_EQ(file(), (Dictionary{{"VLTrackingID", trackingId}}));
    EXPECT_EQ(settings->trackingId(), trackingId);
}

TEST_F(VLSettingsTest, SetTrackingIdHasNoMark) {
    open()->setTrackingId("anna");
    EXPECT_EQ(open()->trackingId(), "anna");
}

TEST_F(VLSettingsTest, DeviceIdLastsAsLongAsTheFile) {
    const auto deviceId = open()->deviceId();
    EXPECT_EQ(deviceId.size(), 36U);
    EXPECT_EQ(deviceId[8], '-');
    EXPECT_EQ(deviceId.find_first_not_of("0123456789ABCDEF-"), std::string::npos);
    EXPECT_EQ(open()->deviceId(), deviceId);
    ASSERT_TRUE(NSFileManager::moveItemAtPath(path(), path() + ".away"));
    EXPECT_NE(open()->deviceId(), deviceId);
}

TEST_F(VLSettingsTest, SessionIdLivesInMemoryOnly) {
    const auto settings = open();
    const auto first = settings->sessionId();
    EXPECT_EQ(first.size(), 36U);
    EXPECT_EQ(settings->sessionId(), first);
    settings->setSessionId(std::nullopt);
    EXPECT_NE(settings->sessionId(), first);
    settings->setSessionId("own");
    EXPECT_EQ(settings->sessionId(), "own");
    EXPECT_EQ(file(), Dictionary());
}

TEST_F(VLSettingsTest, SettingNulloptRemovesTheKey) {
    const auto settings = open();
    settings->setSettingsValue(Value("v"), "k");
    EXPECT_EQ(file(), (Dictionary{{"k", "v"}}));
    settings->setSettingsValue(std::nullopt, "k");
    EXPECT_EQ(file(), Dictionary());
}

TEST_F(VLSettingsTest, NullIsDroppedInMemoryAndInTheFile) {
    const auto settings = open();
    settings->setSettingsValue(Value("v"), "k");
    settings->setSettingsValue(Value(nullptr), "k");
    settings->setSettingsValue(Value(Dictionary{{"a", nullptr}, {"b", Array{1, nullptr}}}), "d");
    const Dictionary expected{{"d", Dictionary{{"b", Array{1}}}}};
    EXPECT_EQ(settings->dictionary(), expected);
    EXPECT_EQ(file(), expected);
}

TEST_F(VLSettingsTest, AbsentValueReadsAsItsDefault) {
    const auto settings = open();
    settings->setSettingsValue(Value(7), "k");
    EXPECT_EQ(settings->getSettingsValueForKey("k"), Value(7));
    EXPECT_EQ(settings->getSettingsValueForKey("none"), std::nullopt);
    EXPECT_EQ(settings->getSettingsValueForKey("k", Value(1)), Value(7));
    EXPECT_EQ(settings->getSettingsValueForKey("none", Value(1)), Value(1));
}

TEST_F(VLSettingsTest, EveryPropertyIsOneKeyOfTheFile) {
    const VLUserNotificationSettings allowed{2, 2, 1, 2, 0, 2, 1, -1, 1};
    const auto settings = open();
    settings->setLastMigrationVersion("1.9");
    settings->setTrackingId("t");
    settings->setPrevTrackingId("p");
    settings->setAppKey("a");
    settings->setPhash("h");
    settings->setDeviceToken(Data{0, 0xAB, 0x10});
    settings->setNotificationSettings(allowed);
    settings->setForceGeoConfigUpdate(true);
    settings->setSessionCount(3);
    settings->setTotalSessionLength(-4);
    settings->setLastPermissionInterstitial(1.5);
    settings->setOldLocation(Dictionary{{"latitude", 52.5}});
    settings->setSignificantDistance(2.5);
    settings->setSignificantTime(3.5);
    settings->setGeoRegionStateChangeTime(4.5);
    settings->setDesiredHorizontalAccuracy(10);
    settings->setFetchGeoRegionTimestamp(5.5);
    settings->setContainerName("N");
    settings->setContainerVersion("V");
    settings->setContainerVlSdkVersion("S");
    const Dictionary expected{{"VLLastMigrationVersion", "1.9"},
                              {"VLTrackingID", "t"},
                              {"VLPrevTrackingID", "p"},
                              {"VLAppKey", "a"},
                              {"VLPhash", "h"},
                              {"VLDeviceTokenData", Value::binary({0, 0xAB, 0x10})},
                              {"VLNotificationSettings", allowed.toDictionary()},
                              {"VLForceGeoConfigUpdate", true},
                              {"VLSessionCount", 3},
                              {"VLTotalSessionLength", -4},
                              {"VLLastPermissionTime", 1.5},
                              {"VLOldLocation", Dictionary{{"latitude", 52.5}}},
                              {"VLSignificantDistance", 2.5},
                              {"VLSignificantTime", 3.5},
                              {"VLGeoRegionStateChangeTime", 4.5},
                              {"desired_horizontal_accuracy", 10},
                              {"VLFetchGeoRegionTimestamp", 5.5},
                              {"VL_CONTAINER_NAME_KEY", "N"},
                              {"VL_CONTAINER_VERSION_KEY", "V"},
                              {"VL_CONTAINER_VL_SDK_VERSION_KEY", "S"}};
    EXPECT_EQ(file(), expected);

    const auto reopened = open();
    EXPECT_EQ(reopened->lastMigrationVersion(), "1.9");
    EXPECT_EQ(reopened->prevTrackingId(), "p");
    EXPECT_EQ(reopened->appKey(), "a");
    EXPECT_EQ(reopened->phash(), "h");
    EXPECT_EQ(reopened->deviceToken(), (Data{0, 0xAB, 0x10}));
    EXPECT_EQ(reopened->notificationSettings(), allowed);
    EXPECT_TRUE(reopened->forceGeoConfigUpdate());
    EXPECT_EQ(reopened->sessionCount(), 3);
    EXPECT_EQ(reopened->totalSessionLength(), -4);
    EXPECT_EQ(reopened->lastPermissionInterstitial(), 1.5);
    EXPECT_EQ(reopened->oldLocation(), (Dictionary{{"latitude", 52.5}}));
    EXPECT_EQ(reopened->significantDistance(), 2.5);
    EXPECT_EQ(reopened->significantTime(), 3.5);
    EXPECT_EQ(reopened->geoRegionStateChangeTime(), 4.5);
    EXPECT_EQ(reopened->desiredHorizontalAccuracy(), Value(10));
    EXPECT_EQ(reopened->fetchGeoRegionTimestamp(), 5.5);
    EXPECT_EQ(reopened->containerName(), "N");
    EXPECT_EQ(reopened->containerVersion(), "V");
    EXPECT_EQ(reopened->containerVlSdkVersion(), "S");
}

TEST_F(VLSettingsTest, FreshStoreReadsAsAbsent) {
    const auto settings = open();
    EXPECT_EQ(settings->lastMigrationVersion(), "");
    EXPECT_EQ(settings->prevTrackingId(), std::nullopt);
    EXPECT_EQ(settings->appKey(), std::nullopt);
    EXPECT_EQ(settings->phash(), std::nullopt);
    EXPECT_EQ(settings->deviceToken(), std::nullopt);
    EXPECT_EQ(settings->notificationSettings(), std::nullopt);
    EXPECT_FALSE(settings->forceGeoConfigUpdate());
    EXPECT_EQ(settings->sessionCount(), 0);
    EXPECT_EQ(settings->totalSessionLength(), 0);
    EXPECT_EQ(settings->lastPermissionInterstitial(), 0.0);
    EXPECT_EQ(settings->oldLocation(), std::nullopt);
    EXPECT_EQ(settings->significantDistance(), 0.0);
    EXPECT_EQ(settings->significantTime(), 0.0);
    EXPECT_EQ(settings->geoRegionStateChangeTime(), 0.0);
    EXPECT_EQ(settings->fetchGeoRegionTimestamp(), 0.0);
    EXPECT_EQ(settings->containerName(), std::nullopt);
    EXPECT_EQ(settings->description(), "{}");
}

TEST_F(VLSettingsTest, AccuracyReads66UntilItIsSet) {
    const auto settings = open();
    EXPECT_EQ(settings->desiredHorizontalAccuracy(), Value(66));
    EXPECT_STREQ(VLSettings::desiredHorizontalAccuracyKey(), "desired_horizontal_accuracy");
    settings->setDesiredHorizontalAccuracy(12.5);
    EXPECT_EQ(settings->desiredHorizontalAccuracy(), Value(12.5));
}

TEST_F(VLSettingsTest, TimeZoneIsWholeMinutesWithASign) {
    const auto settings = open();
    const std::map<std::int64_t, std::string> expected = {{0, "-0"},   {3600, "+60"}, {-18000, "-300"}, {30, "-0"},
                                                          {59, "-0"},  {60, "+1"},    {19800, "+330"},  {-59, "-0"},
                                                          {-60, "-1"}, {1800, "+30"}, {36000, "+600"},  {-3599, "-59"}};
    for (const auto& [seconds, text] : expected) {
        setZone(seconds);
        EXPECT_EQ(settings->timezoneOffSetFromGMT(), text) << seconds;
    }
}

TEST_F(VLSettingsTest, VersionNamesTheContainer) {
    const auto settings = open();
    EXPECT_EQ(settings->libraryVersion(), "2.0.1");
    settings->setContainerName("N");
    EXPECT_EQ(settings->libraryVersion(), "2.0.1-N-(null)");
    settings->setContainerVersion("V");
    settings->setContainerVlSdkVersion("S");
    EXPECT_EQ(settings->libraryVersion(), "2.0.1-N-V");
}

TEST_F(VLSettingsTest, InstallTimesAreStoredOnTheFirstRead) {
    phone().setDocumentsCreationDate(1'600'000'000.4567);
    phone().setClock(1'700'000'000.9994);
    const auto settings = open();
    EXPECT_EQ(settings->appCleanInstallTime(), "1600000000457");
    EXPECT_EQ(settings->libInstallTime(), "1700000000999");
    phone().setDocumentsCreationDate(1.0);
    phone().setClock(2.0);
    EXPECT_EQ(open()->appCleanInstallTime(), "1600000000457");
    EXPECT_EQ(open()->libInstallTime(), "1700000000999");
    EXPECT_EQ(file(), (Dictionary{{"VLAppCleanInstallTime", "1600000000457"}, {"VLLibInstallTime", "1700000000999"}}));
}

TEST_F(VLSettingsTest, UnknownInstallDateFormatsAsNil) {
    phone().setDocumentsCreationDate(std::nullopt);
    EXPECT_EQ(open()->appCleanInstallTime(), "0");
}

TEST_F(VLSettingsTest, DeviceModelIsThatOfTheDevice) { EXPECT_EQ(open()->deviceModel(), phone().device()->machine()); }

TEST_F(VLSettingsTest, DescriptionIsThatOfTheDictionary) {
    const auto settings = open();
    settings->setAppKey("a");
    settings->setDeviceToken(Data{1, 2, 3});
    EXPECT_EQ(settings->description(), R"({"VLAppKey":"a","VLDeviceTokenData":"{length = 3}"})");
}

TEST_F(VLSettingsTest, TruncatedFileIsKeptAside) {
    // Without a flushed generation to fall back to, however slow the test is.
    Platform::current().storage().stop(std::chrono::steady_clock::now() + std::chrono::seconds(10));
    {
        const auto settings = open();
        settings->setAppKey("a");
        settings->setDeviceToken(Data(20, 7));
        settings->setSessionCount(3);
    }
    const auto whole = NSFileManager::contentsAtPath(path()).value();
    const auto full = file();
    for (std::size_t length = 0; length < whole.size(); ++length) {
        const Data cut(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length));
        writeFile(cut);
        const auto settings = open();
        // Only the line end after the last tag may be missing.
        if (settings->dictionary() == full) continue;
        EXPECT_EQ(settings->dictionary(), Dictionary()) << length;
        EXPECT_EQ(NSFileManager::contentsAtPath(path() + ".corrupt"), cut) << length;
        settings->setPhash("works");
        EXPECT_EQ(open()->phash(), "works") << length;
    }
}

TEST_F(VLSettingsTest, FileWithAnotherRootIsKeptAside) {
    for (const std::string text : {"garbage", "<plist version=\"1.0\"><array/></plist>", "bplist00", "{}"}) {
        writeFile(text);
        EXPECT_EQ(open()->dictionary(), Dictionary()) << text;
        EXPECT_EQ(NSFileManager::contentsAtPath(path() + ".corrupt"), Data(text.begin(), text.end()));
        EXPECT_EQ(file(), Dictionary());
    }
}

TEST_F(VLSettingsTest, ValuesOfOtherKindsReadAsAbsent) {
    const Value kinds[] = {Value("text"),
                           Value(7),
                           Value(2.5),
                           Value(true),
                           Value::binary({1, 2}),
                           Value(Array{1}),
                           Value(Dictionary{{"a", 1}})};
    const char* keys[] = {"VLLastMigrationVersion",
                          "VLTrackingID",
                          "VLPrevTrackingID",
                          "VLAppKey",
                          "VLDeviceId",
                          "VLPhash",
                          "VLDeviceTokenData",
                          "VLNotificationSettings",
                          "VLForceGeoConfigUpdate",
                          "VLSessionCount",
                          "VLTotalSessionLength",
                          "VLLastPermissionTime",
                          "VLOldLocation",
                          "VLSignificantDistance",
                          "VLSignificantTime",
                          "VLGeoRegionStateChangeTime",
                          "desired_horizontal_accuracy",
                          "VLFetchGeoRegionTimestamp",
                          "VLAppCleanInstallTime",
                          "VLLibInstallTime",
                          "VL_CONTAINER_NAME_KEY",
                          "VL_CONTAINER_VERSION_KEY",
                          "VL_CONTAINER_VL_SDK_VERSION_KEY"};
    for (const auto& kind : kinds) {
        Dictionary stored;
        for (const auto* key : keys) stored[key] = kind;
        ASSERT_TRUE(NSPropertyListSerialization::writeToFile(stored, path()));
        const auto settings = open();
        const bool isText = kind.is_string();
        const bool isNumber = kind.is_number();
        EXPECT_EQ(settings->lastMigrationVersion(), isText ? "text" : "");
        EXPECT_EQ(settings->prevTrackingId().has_value(), isText);
        EXPECT_EQ(settings->appKey().has_value(), isText);
        EXPECT_EQ(settings->phash().has_value(), isText);
        EXPECT_EQ(settings->containerName().has_value(), isText);
        EXPECT_EQ(settings->containerVersion().has_value(), isText);
        EXPECT_EQ(settings->containerVlSdkVersion().has_value(), isText);
        EXPECT_EQ(settings->trackingId() == "text", isText);
        EXPECT_EQ(settings->deviceId() == "text", isText);
        EXPECT_EQ(settings->appCleanInstallTime() == "text", isText);
        EXPECT_EQ(settings->libInstallTime() == "text", isText);
        EXPECT_EQ(settings->deviceToken().has_value(), kind.is_binary());
        EXPECT_EQ(settings->notificationSettings().has_value(), kind.is_object());
        EXPECT_EQ(settings->oldLocation().has_value(), kind.is_object());
        EXPECT_EQ(settings->forceGeoConfigUpdate(), isNumber || kind.is_boolean());
        EXPECT_EQ(settings->sessionCount() != 0, isNumber);
        EXPECT_EQ(settings->totalSessionLength() != 0, isNumber);
        EXPECT_EQ(settings->lastPermissionInterstitial() != 0, isNumber);
        EXPECT_EQ(settings->significantDistance() != 0, isNumber);
        EXPECT_EQ(settings->significantTime() != 0, isNumber);
        EXPECT_EQ(settings->geoRegionStateChangeTime() != 0, isNumber);
        EXPECT_EQ(settings->fetchGeoRegionTimestamp() != 0, isNumber);
        EXPECT_EQ(settings->desiredHorizontalAccuracy() == Value(66), !isNumber);
    }
}

TEST_F(VLSettingsTest, NumbersBeyondTheRangeAreClamped) {
    ASSERT_TRUE(NSPropertyListSerialization::writeToFile({{"VLSessionCount", 1e300}, {"VLTotalSessionLength", -1e300}},
                                                         path()));
    EXPECT_EQ(open()->sessionCount(), std::numeric_limits<std::int64_t>::max());
    EXPECT_EQ(open()->totalSessionLength(), std::numeric_limits<std::int64_t>::min());
}

TEST_F(VLSettingsTest, UnstorableCharactersLeaveTheFileReadable) {
    const auto settings = open();
    settings->setTrackingId(std::string("a\0b\x01\xff\xef\xbf\xbf<&>\"", 12));
    settings->setAppKey("kept");
    EXPECT_EQ(open()->appKey(), "kept");
    EXPECT_TRUE(open()->trackingId().starts_with("a"));
}

TEST_F(VLSettingsTest, MissingFolderIsMadePrivate) {
    const auto folder = phone().documentsFolder();
    ASSERT_TRUE(NSFileManager::moveItemAtPath(folder, folder + ".away"));
    open()->setAppKey("a");
    EXPECT_EQ(open()->appKey(), "a");
    ASSERT_TRUE(NSFileManager::moveItemAtPath(folder + ".away", folder + "/away"));
}

TEST_F(VLSettingsTest, FileInPlaceOfTheFolderLeavesValuesInMemory) {
    const auto folder = phone().documentsFolder();
    ASSERT_TRUE(NSFileManager::moveItemAtPath(folder, folder + ".away"));
    ASSERT_TRUE(NSFileManager::writeToFile(Data{1}, folder));
    const auto settings = open();
    settings->setAppKey("a");
    EXPECT_EQ(settings->appKey(), "a");
    EXPECT_EQ(NSFileManager::contentsAtPath(folder), Data{1});
    // Moved back, so that the folder goes with the phone.
    ASSERT_TRUE(NSFileManager::moveItemAtPath(folder, folder + ".file"));
    ASSERT_TRUE(NSFileManager::moveItemAtPath(folder + ".away", folder));
    ASSERT_TRUE(NSFileManager::moveItemAtPath(folder + ".file", folder + "/file"));
}

TEST_F(VLSettingsTest, FolderInPlaceOfTheFileIsMovedAside) {
    ASSERT_TRUE(NSFileManager::createDirectoryAtPath(path() + "/occupied"));
    const auto settings = open();
    settings->setAppKey("a");
    EXPECT_EQ(open()->appKey(), "a");
    EXPECT_TRUE(NSFileManager::fileExistsAtPath(path() + ".corrupt/occupied"));
}

TEST_F(VLSettingsTest, ManyThreadsLeaveEveryValueInTheFile) {
    const auto settings = open();
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 4; ++thread) {
        threads.emplace_back([&settings, thread] {
            for (int i = 0; i < 25; ++i) {
                settings->setSettingsValue(Value(i), "key" + std::to_string(thread));
                settings->getSettingsValueForKey("key" + std::to_string((thread + 1) % 4));
                settings->sessionId();
            }
        });
    }
    for (auto& thread : threads) thread.join();
    EXPECT_EQ(file(), (Dictionary{{"key0", 24}, {"key1", 24}, {"key2", 24}, {"key3", 24}}));
}

}  // namespace

}  // namespace vorlane
