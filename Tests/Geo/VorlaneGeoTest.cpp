#include <gtest/gtest.h>

#include "Platform/CLCircularRegion.h"
#include "Platform/NSPropertyListSerialization.h"
#include "Public/Vorlane.h"
#include "Tests/Support/SimulatedPhoneTest.h"

namespace vorlane {

namespace {

using RegionEvent = SimulatedLocationManager::RegionEvent;
using Status = CLAuthorizationStatus;

const std::string kKey = "0123456789abcdef0123456789abcdef";
const std::string kConfig =
    R"({"services":{"geo_regions":true},"configs":{"geo_regions":{"significant_distance_m":500,)"
    R"("polling_geostatechangeignore_timeperiod_s":60}}})";
const std::string kRegions =
    R"({"geo_regions":[{"id":17,"latitude":59.91,"longitude":10.75,"radius":100,"name":"Harbour","plotwise_id":"S"}]})";
const std::string kMessage =
    R"({"message":{"appkey":")" + kKey + R"(","pushtext":"Welcome","phash":"P","messagecontent":"%7B%22a%22%3A1%7D"}})";

/// The library from start-up to the notification of a geofence, through its public interface.
class VorlaneGeoTest : public SimulatedPhoneTest {
protected:
    VorlaneGeoTest()
        : SimulatedPhoneTest({.infoDictionary = {{"NSLocationAlwaysUsageDescription", "to show what is near"},
                                                 {"UIBackgroundModes", Array{"location"}}}}) {
        session().alwaysAnswer("/geo/regions", 200, kRegions);
        session().alwaysAnswer("/geo", 200, kMessage);
        session().alwaysAnswer("/geo/regions", 200, kRegions);
        session().alwaysAnswer("/config/application/ios/", 200, kConfig);
    }

    void launch() {
        auto options = VLSDKOptions::developmentOptions();
        options.setAppKey(kKey);
        Vorlane::initialiseSDKWithApplication(phone().application(), std::nullopt, options);
        phone().settle();
    }
    void stand(double latitude, double longitude) {
        manager().deliverLocations({{{latitude, longitude}, 10, phone().now()}});
        phone().settle();
    }
    void happens(RegionEvent event) {
        ASSERT_TRUE(manager().monitoredRegion("17"));
        manager().deliverRegionEvent(event, manager().monitoredRegion("17"));
        phone().settle();
    }
    SimulatedLocationManager& manager() { return phone().simulatedLocationManager(); }
    std::size_t shown() { return phone().simulatedApplication().deliveredByHandle().size(); }
    std::size_t fetches() { return session().requests("/geo/regions").size(); }
};

TEST_F(VorlaneGeoTest, ReturnsThePlatformsAuthorisationStatus) {
    for (const auto status : {0, 1, 2, 3, 4}) {
        manager().setAuthorizationStatus(static_cast<Status>(status));
        EXPECT_EQ(Vorlane::locationAuthorisationStatus(), status);
    }
}

TEST_F(VorlaneGeoTest, EnteringAGeofenceShowsItsMessage) {
    launch();
    stand(59.9, 10.7);
    happens(RegionEvent::Enter);
    ASSERT_EQ(shown(), 1U);
    const auto& notification = phone().simulatedApplication().deliveredByHandle().begin()->second;
    EXPECT_EQ(notification.alertBody, "Welcome");
    EXPECT_EQ(notification.userInfo, (Dictionary{{"a", 1}, {"p", "P"}}));
}

TEST_F(VorlaneGeoTest, FlappingRegionShowsItsMessageOnce) {
    launch();
    stand(59.9, 10.7);
    for (int i = 0; i < 10; ++i) {
        happens(RegionEvent::Enter);
        phone().advance(6);
    }
    EXPECT_EQ(shown(), 1U);
    phone().advance(1);
    happens(RegionEvent::Enter);
    EXPECT_EQ(shown(), 2U);
}

TEST_F(VorlaneGeoTest, LocationStaysOffWithoutAConfiguration) {
    session().alwaysFail("/config/application/ios/");
    launch();
    EXPECT_FALSE(manager().isMonitoringSignificantLocationChanges());
    phone().simulatedApplication().willEnterForeground();
    phone().settle();
    EXPECT_FALSE(manager().isMonitoringSignificantLocationChanges());
}

TEST_F(VorlaneGeoTest, CachedConfigurationStartsLocation) {
    launch();
    manager().stopMonitoringSignificantLocationChanges();
    session().alwaysFail("/config/application/ios/");
    launch();
    EXPECT_TRUE(manager().isMonitoringSignificantLocationChanges());
}

TEST_F(VorlaneGeoTest, ForegroundLeavesSignificantChangesUnchanged) {
    launch();
    manager().stopMonitoringSignificantLocationChanges();
    log().clear();
    phone().simulatedApplication().didEnterBackground();
    phone().simulatedApplication().willEnterForeground();
    phone().settle();
    EXPECT_FALSE(manager().isMonitoringSignificantLocationChanges());
    EXPECT_EQ(log().count("App has Location Updates switched ON", VLLogLevel::Debug), 1);
}

TEST_F(VorlaneGeoTest, BackgroundClearsAForcedFetch) {
    launch();
    stand(59.9, 10.7);
    EXPECT_EQ(fetches(), 1U);
    launch();  // in the foreground, which forces a fetch
    stand(59.9, 10.7);
    EXPECT_EQ(fetches(), 2U);
    launch();
    phone().simulatedApplication().didEnterBackground();
    stand(59.9, 10.7);
    EXPECT_EQ(fetches(), 2U);
}

TEST_F(VorlaneGeoTest, DeniedPermissionClearsTheLastPosition) {
    launch();
    stand(59.9, 10.7);
    manager().setAuthorizationStatus(Status::Denied);
    phone().simulatedApplication().willEnterForeground();
    phone().settle();
    manager().setAuthorizationStatus(Status::AuthorizedAlways);
    phone().simulatedApplication().didEnterBackground();
    phone().settle();
    stand(59.9, 10.7);
    EXPECT_EQ(fetches(), 2U);
}

TEST_F(VorlaneGeoTest, WalkOf10000PositionsFetchesAtTheConfiguredDistance) {
    launch();
    VLLog::sharedInstance().setLogLevel(VLLogLevel::Error);
    constexpr double kMetresInDegree = 6371000.0 * 3.14159265358979323846 / 180;
    for (int i = 0; i < 10'000; ++i) {
        manager().deliverLocations({{{59.9 + i * 1.0001 / kMetresInDegree, 10.7}, 10, phone().now()}});
        if (i % 10 == 0) phone().settle();
    }
    phone().settle();
    EXPECT_EQ(fetches(), 20U);
    EXPECT_EQ(manager().monitoredRegions().size(), 1U);
}

TEST_F(VorlaneGeoTest, ForegroundUpdatesBeaconRegions) {
    session().alwaysAnswer("/config/application/ios/", 200,
                           R"({"services":{"geo_regions":true,"beacon":true},"configs":{"geo_regions":{},"beacon":{
                               "beacon_data":[{"type":"data","beacon_type":"ibeacon",
                                               "uuid":"B9407F30-F5F8-466E-AFF9-25556B57FE6D","major":1,"minor":2}]}}})");
    launch();
    ASSERT_EQ(manager().monitoredRegions().size(), 1U);
    const auto beacons = manager().monitoredRegions().front();
    phone().simulatedApplication().didEnterBackground();
    manager().stopMonitoringForRegion(beacons);
    manager().stopMonitoringSignificantLocationChanges();
    phone().simulatedApplication().willEnterForeground();
    phone().settle();
    EXPECT_TRUE(manager().monitoredRegion(beacons->identifier()));
    EXPECT_FALSE(manager().isMonitoringSignificantLocationChanges());
}

TEST_F(VorlaneGeoTest, TerminationClearsAForcedFetch) {
    const auto forced = [this] {
        const auto stored =
            NSPropertyListSerialization::dictionaryWithContentsOfFile(documentsPath("VLLibSettings.plist"));
        return stored.value_or(Dictionary())["VLForceGeoConfigUpdate"];
    };
    auto& application = phone().simulatedApplication();
    for (const auto state : {UIApplicationState::Active, UIApplicationState::Background}) {
        application.setApplicationState(UIApplicationState::Inactive);
        launch();
        ASSERT_EQ(forced(), Value(true));
        application.setApplicationState(state);
        application.willTerminate();
        EXPECT_EQ(forced(), Value(false));
    }
}

}  // namespace

}  // namespace vorlane
