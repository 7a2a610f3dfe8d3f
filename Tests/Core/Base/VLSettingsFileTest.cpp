#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "Core/Base/VLSettings.h"
#include "Platform/NSFileManager.h"
#include "Platform/NSPropertyListSerialization.h"
#include "Tests/Platform/FailingSystemCalls.h"
#include "Tests/Support/SimulatedPhoneTest.h"

namespace vorlane {

namespace {

// Every key, as Python's plistlib writes it.
const std::string kXMLFile = R"plist(<?xml version="1.0" encoding="UTF-8"?>
<plist version="1.0">
<dict>
	<key>VLAppCleanInstallTime</key>
	<string>1600000000457</string>
	<key>VLAppKey</key>
	<string>a</string>
	<key>VLDeviceId</key>
	<string>D-1</string>
	<key>VLDeviceTokenData</key>
	<data>
	AKsQ
	</data>
	<key>VLFetchGeoRegionTimestamp</key>
	<real>5.5</real>
	<key>VLForceGeoConfigUpdate</key>
	<true/>
	<key>VLGeoRegionStateChangeTime</key>
	<real>4.5</real>
	<key>VLLastMigrationVersion</key>
	<string>1.9</string>
	<key>VLLastPermissionTime</key>
	<real>1.5</real>
	<key>VLLibInstallTime</key>
	<string>1700000000999</string>
	<key>VLNotificationSettings</key>
	<dict>
		<key>authorisation</key>
		<string>authorised</string>
		<key>sound</key>
		<string>enabled</string>
	</dict>
	<key>VLOldLocation</key>
	<dict>
		<key>latitude</key>
		<real>52.5</real>
	</dict>
	<key>VLPhash</key>
	<string>h</string>
	<key>VLPrevTrackingID</key>
	<string>p</string>
	<key>VLSessionCount</key>
	<integer>3</integer>
	<key>VLSignificantDistance</key>
	<integer>250</integer>
	<key>VLSignificantTime</key>
	<real>3.5</real>
	<key>VLTotalSessionLength</key>
	<integer>-4</integer>
	<key>VLTrackingID</key>
	<string>anna &amp; &lt;bén&gt;</string>
	<key>VL_CONTAINER_NAME_KEY</key>
	<string>N</string>
	<key>VL_CONTAINER_VERSION_KEY</key>
	<string>V</string>
	<key>VL_CONTAINER_VL_SDK_VERSION_KEY</key>
	<string>S</string>
	<key>desired_horizontal_accuracy</key>
	<integer>10</integer>
</dict>
</plist>
)plist";

// The same in binary, in hexadecimal.
const std::string kBinaryFile =
    "62706c6973743030df10170102030405060708090a0b0c0d0e0f101112131415161718191a1b1c1d1e1f202122272a2b2c2d2e2f3031"
    "3233345f1015564c417070436c65616e496e7374616c6c54696d6558564c4170704b65795a564c44657669636549645f1011564c4465"
    "76696365546f6b656e446174615f1019564c466574636847656f526567696f6e54696d657374616d705f1016564c466f72636547656f"
    "436f6e6669675570646174655f101a564c47656f526567696f6e53746174654368616e676554696d655f1016564c4c6173744d696772"
    "6174696f6e56657273696f6e5f1014564c4c6173745065726d697373696f6e54696d655f1010564c4c6962496e7374616c6c54696d65"
    "5f1016564c4e6f74696669636174696f6e53657474696e67735d564c4f6c644c6f636174696f6e57564c50686173685f1010564c5072"
    "6576547261636b696e6749445e564c53657373696f6e436f756e745f1015564c5369676e69666963616e7444697374616e63655f1011"
    "564c5369676e69666963616e7454696d655f1014564c546f74616c53657373696f6e4c656e6774685c564c547261636b696e6749445f"
    "1015564c5f434f4e5441494e45525f4e414d455f4b45595f1018564c5f434f4e5441494e45525f56455253494f4e5f4b45595f101f56"
    "4c5f434f4e5441494e45525f564c5f53444b5f56455253494f4e5f4b45595f101b646573697265645f686f72697a6f6e74616c5f6163"
    "6375726163795d31363030303030303030343537516153442d314300ab102340160000000000000923401200000000000053312e3923"
    "3ff80000000000005d31373030303030303030393939d2232425265d617574686f7269736174696f6e55736f756e645a617574686f72"
    "6973656457656e61626c6564d12829586c6174697475646523404a40000000000051685170100310fa23400c00000000000013ffffff"
    "fffffffffc6c0061006e006e0061002000260020003c006200e9006e003e514e51565153100a000800390051005a00650079009500ae"
    "00cb00e400fb010e01270135013d0150015f0177018b01a201af01c701e202040222023002320236023a02430244024d0251025a0268"
    "026d027b0281028c0294029702a002a902ab02ad02af02b102ba02c302dc02de02e002e2000000000000020100000000000000350000"
    "00000000000000000000000002e4";

Data bytesOf(const std::string& text) { return {text.begin(), text.end()}; }

Data bytesOfHexadecimal(const std::string& digits) {
    Data bytes;
    for (std::size_t i = 0; i < digits.size(); i += 2) {
        bytes.push_back(static_cast<std::uint8_t>(std::stoi(digits.substr(i, 2), nullptr, 16)));
    }
    return bytes;
}

/// Arrays in arrays, moved level by level.
Value nestedArrays(int levels) {
    Value nested = 1;
    for (int level = 0; level < levels; ++level) {
        Array outer;
        outer.push_back(std::move(nested));
        nested = std::move(outer);
    }
    return nested;
}

/// What the store writes to its file, and how it reads what it finds there.
class VLSettingsFileTest : public SimulatedPhoneTest {
protected:
    std::string path() const { return documentsPath("VLLibSettings.plist"); }
    std::unique_ptr<VLSettings> open() { return std::make_unique<VLSettings>(phone().device()); }
    Data bytes() const { return NSFileManager::contentsAtPath(path()).value(); }
    Dictionary file() { return NSPropertyListSerialization::dictionaryWithContentsOfFile(path()).value(); }
};

void expectEveryProperty(VLSettings& settings) {
    EXPECT_EQ(settings.lastMigrationVersion(), "1.9");
    EXPECT_EQ(settings.trackingId(), "anna & <b\u00e9n>");
    EXPECT_EQ(settings.prevTrackingId(), "p");
    EXPECT_EQ(settings.appKey(), "a");
    EXPECT_EQ(settings.deviceId(), "D-1");
    EXPECT_EQ(settings.phash(), "h");
    EXPECT_EQ(settings.deviceToken(), (Data{0, 0xAB, 0x10}));
    EXPECT_EQ(settings.notificationSettings(),
              VLUserNotificationSettings::settingsWithAuthorisation(2, 2, -1, -1, -1, -1, -1, -1, -1));
    EXPECT_TRUE(settings.forceGeoConfigUpdate());
    EXPECT_EQ(settings.sessionCount(), 3);
    EXPECT_EQ(settings.totalSessionLength(), -4);
    EXPECT_EQ(settings.lastPermissionInterstitial(), 1.5);
    EXPECT_EQ(settings.oldLocation(), (Dictionary{{"latitude", 52.5}}));
    EXPECT_EQ(settings.significantDistance(), 250);
    EXPECT_EQ(settings.significantTime(), 3.5);
    EXPECT_EQ(settings.geoRegionStateChangeTime(), 4.5);
    EXPECT_EQ(settings.desiredHorizontalAccuracy(), Value(10));
    EXPECT_EQ(settings.fetchGeoRegionTimestamp(), 5.5);
    EXPECT_EQ(settings.appCleanInstallTime(), "1600000000457");
    EXPECT_EQ(settings.libInstallTime(), "1700000000999");
    EXPECT_EQ(settings.containerName(), "N");
    EXPECT_EQ(settings.containerVersion(), "V");
    EXPECT_EQ(settings.containerVlSdkVersion(), "S");
}

TEST_F(VLSettingsFileTest, FileOfAnotherWriterStaysUntilAChange) {
    for (const auto& written : {bytesOf(kXMLFile), bytesOfHexadecimal(kBinaryFile)}) {
        ASSERT_TRUE(NSFileManager::writeToFile(written, path()));
        const auto settings = open();
        expectEveryProperty(*settings);
        EXPECT_EQ(bytes(), written);
        settings->setSessionCount(3);
        expectEveryProperty(*open());
        EXPECT_FALSE(NSFileManager::fileExistsAtPath(path() + ".corrupt"));
    }
}

TEST_F(VLSettingsFileTest, TruncatedBinaryFileReadsAsEmpty) {
    const auto whole = bytesOfHexadecimal(kBinaryFile);
    for (std::size_t length = 0; length < whole.size(); ++length) {
        const Data cut(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length));
        ASSERT_TRUE(NSFileManager::writeToFile(cut, path()));
        EXPECT_EQ(open()->dictionary(), Dictionary()) << length;
        EXPECT_EQ(NSFileManager::contentsAtPath(path() + ".corrupt"), cut) << length;
    }
}

TEST_F(VLSettingsFileTest, FileHoldsTheKeysAsXML) {
    ASSERT_TRUE(NSFileManager::writeToFile(bytesOf(kXMLFile), path()));
    const auto settings = open();
    settings->setSessionCount(4);
    const auto written = bytes();
    const std::string text(written.begin(), written.end());
    for (const auto& entry : settings->dictionary()) {
        EXPECT_NE(text.find("<key>" + entry.first + "</key>"), std::string::npos) << entry.first;
    }
    EXPECT_NE(text.find("<key>VLSessionCount</key>\n\t<integer>4</integer>"), std::string::npos) << text;
    EXPECT_NE(text.find("<key>VLForceGeoConfigUpdate</key>\n\t<true/>"), std::string::npos) << text;
}

TEST_F(VLSettingsFileTest, FailedWriteIsMadeUpForByTheNextChange) {
    using Fail = void (*)(FailingSystemCalls&);
    const Fail fails[] = {[](FailingSystemCalls& calls) { calls.failWritesFrom(0); },
                          [](FailingSystemCalls& calls) { calls.failWritesFrom(100); },
                          [](FailingSystemCalls& calls) { calls.failRenames(); }};
    for (const auto fail : fails) {
        const auto settings = open();
        settings->setAppKey("before");
        const auto before = bytes();
        {
            FailingSystemCalls calls;
            fail(calls);
            settings->setAppKey("during");
            settings->setPhash("during");
        }
        EXPECT_EQ(settings->appKey(), "during");
        EXPECT_EQ(bytes(), before);
        EXPECT_EQ(open()->appKey(), "before");
        settings->setSessionCount(1);
        EXPECT_EQ(file(), (Dictionary{{"VLAppKey", "during"}, {"VLPhash", "during"}, {"VLSessionCount", 1}}));
        settings->setPhash(std::nullopt);
    }
}

TEST_F(VLSettingsFileTest, FailedWritesAreReportedOnceAndTheRecoveryToo) {
    const auto settings = open();
    {
        FailingSystemCalls calls;
        calls.failWritesFrom(0);
        settings->setAppKey("a");
        settings->setAppKey("b");
    }
    ASSERT_EQ(log().lines().size(), 1U);
    EXPECT_EQ(log().lines()[0].level, VLLogLevel::Warn);
    EXPECT_NE(log().lines()[0].message.find("VLLibSettings.plist"), std::string::npos);
    settings->setAppKey("b");
    ASSERT_EQ(log().lines().size(), 2U) << "the failed write is tried again, though nothing changes";
    EXPECT_EQ(log().lines()[1].level, VLLogLevel::Info);
    EXPECT_EQ(open()->appKey(), "b");
}

TEST_F(VLSettingsFileTest, UnchangedValueIsNotWrittenAgain) {
    const auto settings = open();
    settings->setAppKey("a");
    settings->setSessionCount(1);
    std::filesystem::remove(path());
    settings->setAppKey("a");
    settings->setSessionCount(1);
    settings->setPhash(std::nullopt);
    EXPECT_FALSE(NSFileManager::fileExistsAtPath(path()));
    settings->setSettingsValue(Value(true), "VLSessionCount");
    EXPECT_TRUE(NSFileManager::fileExistsAtPath(path())) << "a number and a boolean differ";
}

TEST_F(VLSettingsFileTest, OneStepWritesTheFileOnce) {
    const auto settings = open();
    const auto before = bytes();
    {
        const VLSettings::Step step;
        settings->setSessionCount(1);
        settings->setTotalSessionLength(5);
        EXPECT_EQ(bytes(), before);
        EXPECT_EQ(settings->sessionCount(), 1);
    }
    EXPECT_EQ(file(), (Dictionary{{"VLSessionCount", 1}, {"VLTotalSessionLength", 5}}));
}

TEST_F(VLSettingsFileTest, FirstStartWithAFullDiskWorksInMemory) {
    FailingSystemCalls calls;
    calls.failWritesFrom(0);
    const auto settings = open();
    EXPECT_FALSE(NSFileManager::fileExistsAtPath(path()));
    EXPECT_EQ(settings->deviceId(), settings->deviceId());
    EXPECT_EQ(settings->trackingId(), settings->trackingId());
}

TEST_F(VLSettingsFileTest, UnreadableFileKeepsItsIdentity) {
    std::string deviceId;
    std::string trackingId;
    {
        const auto settings = open();
        deviceId = settings->deviceId();
        trackingId = settings->trackingId();
        settings->setPhash("stored");
        settings->setAppKey("stored");
        settings->setContainerName("stored");
    }
    std::unique_ptr<VLSettings> settings;
    {
        FailingSystemCalls calls;
        calls.failOpening(EMFILE);
        settings = open();
        EXPECT_NE(settings->deviceId(), deviceId) << "made for want of the stored one";
        settings->setTrackingId("set meanwhile");
        settings->setPhash(std::nullopt);
    }
    settings->setSessionCount(1);
    const auto again = open();
    for (const auto* seen : {settings.get(), again.get()}) {
        EXPECT_EQ(seen->dictionary(), (Dictionary{{"VLDeviceId", deviceId},
                                                  {"VLTrackingID", "set meanwhile"},
                                                  {"VLAppKey", "stored"},
                                                  {"VL_CONTAINER_NAME_KEY", "stored"},
                                                  {"VLSessionCount", 1}}));
    }
    EXPECT_FALSE(NSFileManager::fileExistsAtPath(path() + ".corrupt"));
}

TEST_F(VLSettingsFileTest, DiscardedValueStaysInMemory) {
    const auto settings = open();
    settings->setAppKey("a");
    settings->setPhash("h");
    const auto before = bytes();
    settings->setSettingsValue(Value(Value::value_t::discarded), "VLPhash");
    EXPECT_EQ(bytes(), before);
    ASSERT_TRUE(settings->getSettingsValueForKey("VLPhash"));
    EXPECT_TRUE(settings->getSettingsValueForKey("VLPhash")->is_discarded());
    EXPECT_EQ(settings->phash(), std::nullopt);
    settings->setSessionCount(1);
    EXPECT_EQ(open()->appKey(), "a");
    EXPECT_EQ(open()->sessionCount(), 1);
}

TEST_F(VLSettingsFileTest, UnstorableValuesStayInMemory) {
    const Value values[] = {Value(std::numeric_limits<double>::infinity()), Value(Array{1, std::nan("")}),
                            nestedArrays(600)};
    const auto settings = open();
    settings->setPhash("h");
    for (const auto& value : values) {
        const auto before = bytes();
        settings->setSettingsValue(value, "VLPhash");
        EXPECT_EQ(bytes(), before);
        EXPECT_EQ(settings->phash(), std::nullopt);
        settings->setSessionCount(settings->sessionCount() + 1);
        EXPECT_EQ(open()->sessionCount(), settings->sessionCount()) << "no other value is harmed";
        settings->setPhash("h");
    }
    EXPECT_FALSE(NSFileManager::fileExistsAtPath(path() + ".corrupt"));
}

TEST_F(VLSettingsFileTest, LastOfConcurrentFirstReadsWins) {
    const auto settings = open();
    std::vector<std::string> seen(4);
    std::vector<std::thread> threads;
    for (auto& trackingId : seen) {
        threads.emplace_back([&settings, &trackingId] {
            trackingId = settings->trackingId();
            settings->deviceId();
            settings->libInstallTime();
            settings->appCleanInstallTime();
        });
    }
    for (auto& thread : threads) thread.join();
    for (const auto& trackingId : seen) EXPECT_EQ(trackingId.size(), 32U);
    EXPECT_NE(std::find(seen.begin(), seen.end(), settings->trackingId()), seen.end());
    EXPECT_EQ(file(), settings->dictionary());
    EXPECT_EQ(file().size(), 4U);
    EXPECT_EQ(open()->deviceId(), settings->deviceId());
}

}  // namespace

}  // namespace vorlane
