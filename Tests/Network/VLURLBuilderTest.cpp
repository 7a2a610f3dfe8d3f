#include "Network/VLURLBuilder.h"

#include <cstdint>
#include <limits>
#include <map>
#include <string>
#include <thread>
#include <vector>

#include "Core/Base/VLSettings.h"
#include "Public/VLURLsProduction.h"
#include "Tests/Network/NetworkTestSupport.h"
#include "Tests/Support/SimulatedPhoneTest.h"

namespace vorlane {
namespace {

/// A set of endpoints with one host for each role.
std::shared_ptr<VLURLsProduction> distinctURLs() {
    auto urls = std::make_shared<VLURLsProduction>();
    urls->setDeviceRegistrationUrl(urlOf("https://device.test/v1/device"));
    urls->setMdnUrl(urlOf("https://mdn.test/message/analytics"));
    urls->setGetTagUrl(urlOf("https://gettag.test"));
    urls->setSetTagUrl(urlOf("https://settag.test"));
    urls->setDeleteTagUrl(urlOf("https://deletetag.test"));
    urls->setGeoRegionsUrl(urlOf("https://georegions.test"));
    urls->setGeoContentUrl(urlOf("https://geocontent.test"));
    urls->setBeaconContentUrl(urlOf("https://beacon.test"));
    urls->setInterstitialUrl(urlOf("https://interstitial.test"));
    urls->setContentUrl(urlOf("https://content.test"));
    urls->setInboxUrl(urlOf("https://inbox.test"));
    urls->setConfigUrl(urlOf("https://config.test"));
    urls->setEventsUrl(urlOf("https://events.test"));
    urls->setSessionStartUrl(urlOf("https://start.test/0.8/session"));
    urls->setSessionEndUrl(urlOf("https://end.test/0.8/session/end"));
    urls->setChangeTrackingIdUrl(urlOf("https://change.test/0.8/session/tracking_id"));
    return urls;
}

class VLURLBuilderTest : public SimulatedPhoneTest {
protected:
    VLURLBuilderTest() {
        phone().simulatedDevice().setLocalTimeZone({"Australia/Brisbane", 36000});
        settings->setAppKey("K");
        settings->setTrackingId("T");
        settings->setSessionId("S");
    }

    /// The URL of every operation by the name of the operation.
    std::map<std::string, std::string> allURLs(const std::string& trackingId, const std::string& tagName,
                                               const std::string& stateHash, const std::string& placement) const {
        return {{"sessionStartURL", builder.sessionStartURL().absoluteString()},
                {"sessionEndURL", builder.sessionEndURL().absoluteString()},
                {"changeTrackingIdURL", builder.changeTrackingIdURL().absoluteString()},
                {"registerEventURL", builder.registerEventURL().absoluteString()},
                {"tagURL", builder.tagURLWithTagName(tagName).absoluteString()},
                {"updateTagURL", builder.updateTagURL().absoluteString()},
                {"deleteAllTagsURL", builder.deleteAllTagsURL().absoluteString()},
                {"inboxStateURL", builder.inboxStateURLWithTrackingId(trackingId, stateHash).absoluteString()},
                {"inboxMessageURL", builder.inboxMessageURLWithNotificationId(42, trackingId).absoluteString()},
                {"configURL", builder.configURL().absoluteString()},
                {"deviceRegistrationURL", builder.deviceRegistrationURL().absoluteString()},
                {"MDNURL", builder.MDNURL().absoluteString()},
                {"cancelPhashURL", builder.cancelPhashURL().absoluteString()},
                {"interstitialURL", builder.interstitialURLWithPlacement(placement).absoluteString()},
                {"geoRegionsURL", builder.geoRegionsURLWithLocation(51.5074, -0.1278, 20).absoluteString()},
                {"geoContentURL", builder.geoContentURL().absoluteString()},
                {"beaconSessionURL", builder.beaconSessionURL().absoluteString()},
                {"beaconEntryURL", builder.beaconEntryURL().absoluteString()},
                {"beaconExitURL", builder.beaconExitURL().absoluteString()},
                {"beaconContentURL", builder.beaconContentURL().absoluteString()}};
    }

    std::string inboxStateURL() const { return builder.inboxStateURLWithTrackingId("T", "h").absoluteString(); }

    std::string geoRegionsQuery(double latitude, double longitude, std::int64_t maxGeoRegions) const {
        return builder.geoRegionsURLWithLocation(latitude, longitude, maxGeoRegions).query().value();
    }

    std::shared_ptr<VLURLsProduction> urls = distinctURLs();
    std::shared_ptr<VLSettings> settings = std::make_shared<VLSettings>(phone().device());
    VLURLBuilder builder{urls, settings};
};

TEST_F(VLURLBuilderTest, EveryOperationReturnsItsURL) {
    const std::string deviceId = settings->deviceId();
    const std::map<std::string, std::string> expected = {
        {"sessionStartURL", "https://start.test/0.8/session"},
        {"sessionEndURL", "https://end.test/0.8/session/end"},
        {"changeTrackingIdURL", "https://change.test/0.8/session/tracking_id"},
        {"registerEventURL", "https://events.test/0.8/register_app_event?app_key=K"},
        {"tagURL", "https://gettag.test/api/apps/K/tracking/T/tag/colour"},
        {"updateTagURL", "https://settag.test/api/apps/K/tracking/T"},
        {"deleteAllTagsURL", "https://deletetag.test/api/apps/K/tracking/T/tag/*"},
        {"inboxStateURL",
         "https://inbox.test/K/T2/rich/mailbox?stateHash=d41d8cd9&timezone=%252B600&sid=S&platform=iOS"},
        {"inboxMessageURL", "https://inbox.test/K/T2/rich/mailbox/messages/42"},
        {"configURL",
         "https://config.test/config/application/ios/K?sdkVersion=2.0.1&trackingId=T&deviceId=" + deviceId},
        {"deviceRegistrationURL", "https://device.test/v1/device"},
        {"MDNURL", "https://mdn.test/message/analytics"},
        {"cancelPhashURL", "https://content.test/K/T/phash/cancel"},
        {"interstitialURL", "https://interstitial.test/K/T/interstitial/home"},
        {"geoRegionsURL", "https://georegions.test/K/T/geo/regions?latitude=51.5074&longitude=-0.1278&max=20"},
        {"geoContentURL", "https://geocontent.test/K/T/geo"},
        {"beaconSessionURL", "https://beacon.test/K/T/session/beacon"},
        {"beaconEntryURL", "https://beacon.test/K/T/session/beacon/region/entry"},
        {"beaconExitURL", "https://beacon.test/K/T/session/beacon/region/exit"},
        {"beaconContentURL", "https://beacon.test/K/T/ibeacon"}};
    EXPECT_EQ(allURLs("T2", "colour", "d41d8cd9", "home"), expected);
}

TEST_F(VLURLBuilderTest, PathsAndQueriesArePercentEncoded) {
    settings->setAppKey("a b?#%+&=:\xC3\xA4");
    settings->setTrackingId("@VL@;[x]'\"+=&");
    settings->setSessionId("s&i=d+#%/? ");
    const std::string deviceId = settings->deviceId();
    const std::string key = "a%20b%3F%23%25+&=:%C3%A4";
    const std::string user = key + "/@VL@;%5Bx%5D'%22+=&";
    const std::map<std::string, std::string> expected = {
        {"sessionStartURL", "https://start.test/0.8/session"},
        {"sessionEndURL", "https://end.test/0.8/session/end"},
        {"changeTrackingIdURL", "https://change.test/0.8/session/tracking_id"},
        {"registerEventURL", "https://events.test/0.8/register_app_event?app_key=a%20b?%23%25%2B%26%3D:%C3%A4"},
        {"tagURL",
         "https://gettag.test/api/apps/" + key + "/tracking/@VL@;%5Bx%5D'%22+=&/tag/a%20b/c%3Fd%252e%E2%82%AC"},
        {"updateTagURL", "https://settag.test/api/apps/" + key + "/tracking/@VL@;%5Bx%5D'%22+=&"},
        {"deleteAllTagsURL", "https://deletetag.test/api/apps/" + key + "/tracking/@VL@;%5Bx%5D'%22+=&/tag/*"},
        {"inboxStateURL", "https://inbox.test/" + key +
                              "/u%7Cv/rich/mailbox?stateHash=h%26x%3D1&timezone=%252B600&sid=s%26i%3Dd%2B%23%25/?%20"
                              "&platform=iOS"},
        {"inboxMessageURL", "https://inbox.test/" + key + "/u%7Cv/rich/mailbox/messages/42"},
        {"configURL", "https://config.test/config/application/ios/" + key +
                          "?sdkVersion=2.0.1&trackingId=@VL@;%5Bx%5D'%22%2B%3D%26&deviceId=" + deviceId},
        {"deviceRegistrationURL", "https://device.test/v1/device"},
        {"MDNURL", "https://mdn.test/message/analytics"},
        {"cancelPhashURL", "https://content.test/" + user + "/phash/cancel"},
        {"interstitialURL", "https://interstitial.test/" + user + "/interstitial/p%20%5E%60"},
        {"geoRegionsURL", "https://georegions.test/" + user + "/geo/regions?latitude=51.5074&longitude=-0.1278&max=20"},
        {"geoContentURL", "https://geocontent.test/" + user + "/geo"},
        {"beaconSessionURL", "https://beacon.test/" + user + "/session/beacon"},
        {"beaconEntryURL", "https://beacon.test/" + user + "/session/beacon/region/entry"},
        {"beaconExitURL", "https://beacon.test/" + user + "/session/beacon/region/exit"},
        {"beaconContentURL", "https://beacon.test/" + user + "/ibeacon"}};
    EXPECT_EQ(allURLs("u|v", "a b/c?d%2e\xE2\x82\xAC", "h&x=1", "p ^`"), expected);
}

TEST_F(VLURLBuilderTest, AMissingAppKeyIsWrittenAsNull) {
    settings->setAppKey(std::nullopt);
    EXPECT_EQ(builder.updateTagURL().absoluteString(), "https://settag.test/api/apps/(null)/tracking/T");
    EXPECT_EQ(builder.registerEventURL().absoluteString(), "https://events.test/0.8/register_app_event?app_key=(null)");
    EXPECT_EQ(builder.geoContentURL().absoluteString(), "https://geocontent.test/(null)/T/geo");
    EXPECT_EQ(builder.inboxMessageURLWithNotificationId(1, "T").absoluteString(),
              "https://inbox.test/(null)/T/rich/mailbox/messages/1");
    EXPECT_TRUE(builder.configURL().absoluteString().starts_with("https://config.test/config/application/ios/(null)?"));
}

TEST_F(VLURLBuilderTest, AnAppKeyIsNeverASchemeOrAHost) {
    settings->setAppKey("javascript:alert(1)");
    EXPECT_EQ(builder.geoContentURL().absoluteString(), "https://geocontent.test/javascript:alert(1)/T/geo");
    settings->setAppKey("//evil.test");
    EXPECT_EQ(builder.geoContentURL().host(), "geocontent.test");
    EXPECT_EQ(builder.geoContentURL().scheme(), "https");
}

TEST_F(VLURLBuilderTest, ASlashInATagNameStaysASeparator) {
    EXPECT_EQ(builder.tagURLWithTagName("a b/c").absoluteString(),
              "https://gettag.test/api/apps/K/tracking/T/tag/a%20b/c");
}

TEST_F(VLURLBuilderTest, DotDotInATrackingIdRemovesASegment) {
    settings->setTrackingId("../x");
    EXPECT_EQ(builder.updateTagURL().absoluteString(), "https://settag.test/api/apps/K/x");
    EXPECT_EQ(builder.deleteAllTagsURL().absoluteString(), "https://deletetag.test/api/apps/K/x/tag/*");
    EXPECT_EQ(builder.cancelPhashURL().absoluteString(), "https://content.test/x/phash/cancel");
    EXPECT_EQ(builder.inboxStateURLWithTrackingId("../x", "h").path(), "/x/rich/mailbox");
    EXPECT_NE(builder.configURL().query()->find("trackingId=../x"), std::string::npos);
}

TEST_F(VLURLBuilderTest, DotDotNeverLeavesTheHost) {
    settings->setTrackingId("../../../../../../evil.test/x");
    EXPECT_EQ(builder.updateTagURL().absoluteString(), "https://settag.test/evil.test/x");
    EXPECT_EQ(builder.tagURLWithTagName("../../../../../../../../a").absoluteString(), "https://gettag.test/a");
}

TEST_F(VLURLBuilderTest, DotDotInATagNameRemovesASegment) {
    EXPECT_EQ(builder.tagURLWithTagName("../a").absoluteString(), "https://gettag.test/api/apps/K/tracking/T/a");
}

TEST_F(VLURLBuilderTest, ARelativePathReplacesTheLastSegmentOfTheBasePath) {
    urls->setSetTagUrl(urlOf("https://settag.test/v1/"));
    EXPECT_EQ(builder.updateTagURL().absoluteString(), "https://settag.test/v1/api/apps/K/tracking/T");
    urls->setSetTagUrl(urlOf("https://settag.test/v1/tags"));
    EXPECT_EQ(builder.updateTagURL().absoluteString(), "https://settag.test/v1/api/apps/K/tracking/T");
    urls->setSetTagUrl(urlOf("http://127.0.0.1:8080/"));
    EXPECT_EQ(builder.updateTagURL().absoluteString(), "http://127.0.0.1:8080/api/apps/K/tracking/T");
}

TEST_F(VLURLBuilderTest, TheConfigurationURLIgnoresTheBasePath) {
    urls->setConfigUrl(urlOf("https://config.test/some/base/"));
    EXPECT_EQ(builder.configURL().path(), "/config/application/ios/K");
}

TEST_F(VLURLBuilderTest, TheConfigurationURLContainsTheContainersVersion) {
    settings->setContainerName("N");
    settings->setContainerVersion("1.0");
    EXPECT_EQ(builder.configURL().query(), "sdkVersion=2.0.1-N-1.0&trackingId=T&deviceId=" + settings->deviceId());
}

TEST_F(VLURLBuilderTest, ANotificationIdIsUnsigned) {
    EXPECT_EQ(builder.inboxMessageURLWithNotificationId(std::numeric_limits<std::uint64_t>::max(), "T").path(),
              "/K/T/rich/mailbox/messages/18446744073709551615");
    EXPECT_EQ(builder.inboxMessageURLWithNotificationId(0, "T").path(), "/K/T/rich/mailbox/messages/0");
}

TEST_F(VLURLBuilderTest, TheInboxTimeZoneIsEncodedTwice) {
    const std::vector<std::pair<std::int64_t, std::string>> zones = {
        {0, "%252D0"},     {30, "%252D0"},      {59, "%252D0"},       {60, "%252B1"},
        {1800, "%252B30"}, {36000, "%252B600"}, {-18000, "%252D300"}, {-12600, "%252D210"},
    };
    for (const auto& [seconds, text] : zones) {
        SCOPED_TRACE(seconds);
        phone().simulatedDevice().setLocalTimeZone({"", seconds});
        EXPECT_EQ(inboxStateURL(),
                  "https://inbox.test/K/T/rich/mailbox?stateHash=h&timezone=" + text + "&sid=S&platform=iOS");
    }
}

TEST_F(VLURLBuilderTest, CoordinatesAreTheShortestExactDecimals) {
    EXPECT_EQ(geoRegionsQuery(52.0, -0.0001, 100), "latitude=52&longitude=-0.0001&max=100");
    EXPECT_EQ(geoRegionsQuery(0.1 + 0.2, 180, 0), "latitude=0.30000000000000004&longitude=180&max=0");
    EXPECT_EQ(geoRegionsQuery(-90, 0, -1), "latitude=-90&longitude=0&max=-1");
    EXPECT_EQ(geoRegionsQuery(1e-7, 2.5, std::numeric_limits<std::int64_t>::min()),
              "latitude=1e-07&longitude=2.5&max=-9223372036854775808");
}

TEST_F(VLURLBuilderTest, EachCallReadsSettingsAndEndpoints) {
    builder.updateTagURL();
    settings->setAppKey("K2");
    settings->setTrackingId("T2");
    urls->setSetTagUrl(urlOf("https://other.test"));
    EXPECT_EQ(builder.updateTagURL().absoluteString(), "https://other.test/api/apps/K2/tracking/T2");
}

TEST_F(VLURLBuilderTest, TheEventURLKeepsTheFirstAppKeyAndBase) {
    const NSURL first = builder.registerEventURL();
    settings->setAppKey("K2");
    urls->setEventsUrl(urlOf("https://other.test"));
    EXPECT_EQ(builder.registerEventURL(), first);
    EXPECT_EQ(VLURLBuilder(urls, settings).registerEventURL().absoluteString(),
              "https://events.test/0.8/register_app_event?app_key=K");
}

TEST_F(VLURLBuilderTest, AnotherPlatformResetsTheEventURL) {
    builder.registerEventURL();
    settings->setAppKey("K2");
    Platform::install(std::make_shared<SimulatedPhone>());
    EXPECT_EQ(builder.registerEventURL().absoluteString(), "https://events.test/0.8/register_app_event?app_key=K2");
}

TEST_F(VLURLBuilderTest, ConcurrentThreadsReceiveOneEventURL) {
    std::vector<std::string> texts(8);
    std::vector<std::thread> threads;
    for (std::string& text : texts)
        threads.emplace_back([&] {
            for (int i = 0; i < 100; ++i) text = builder.registerEventURL().absoluteString();
        });
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(texts, std::vector<std::string>(8, "https://events.test/0.8/register_app_event?app_key=K"));
}

}  // namespace
}  // namespace vorlane
