#include <algorithm>

#include "Platform/CLRegion.h"
#include "Tests/Simulator/LaunchedPhoneTest.h"

namespace vorlane {

namespace {

constexpr CLLocationCoordinate2D kCafe{59.914, 10.75};
constexpr CLLocationCoordinate2D kStation{59.911, 10.75};
constexpr const char* kUUID = "2F234454-CF6D-4A0F-ADF2-F4911BA9FFA6";

class SimulatedPhonePlacesTest : public LaunchedPhoneTest {
protected:
    using Texts = std::vector<std::string>;

    SimulatedPhonePlacesTest() {
        phone().simulatedLocationManager().setAuthorizationStatus(CLAuthorizationStatus::AuthorizedAlways);
    }

    std::vector<std::string> monitored() {
        std::vector<std::string> identifiers;
        for (const auto& region : phone().simulatedLocationManager().monitoredRegions())
            identifiers.push_back(region->identifier());
        std::ranges::sort(identifiers);
        return identifiers;
    }

    static CLBeacon beacon(std::uint16_t minor) { return {kUUID, 1, minor, CLProximity::Near, 1.5}; }
};

TEST_F(SimulatedPhonePlacesTest, GeofencesShowTheirMessagesOnCrossing) {
    phone().addGeofence({.identifier = "cafe",
                         .center = kCafe,
                         .onEnter = SimulatedMessage{.text = "A coffee, 50% off?", .phash = "in"},
                         .onExit = SimulatedMessage{.text = "See you & à bientôt"}});
    launch();
    phone().moveTo(kStation);
    EXPECT_EQ(monitored(), Texts{"cafe"});
    EXPECT_EQ(shown(), Texts{});
    phone().moveTo(kCafe);
    EXPECT_EQ(shown(), Texts{"A coffee, 50% off?"});
    phone().moveTo(kCafe);
    phone().moveTo(kStation);
    EXPECT_EQ(shown(), (Texts{"A coffee, 50% off?", "See you & à bientôt"}));
}

TEST_F(SimulatedPhonePlacesTest, EveryFieldOfAMessageArrives) {
    phone().addGeofence(
        {.identifier = "cafe",
         .center = kCafe,
         .onEnter = SimulatedMessage{.text = "Hello", .phash = "P", .sound = "bell", .metadata = {{"table", 4}}}});
    launch();
    phone().moveTo(kStation);
    phone().moveTo(kCafe);
    const auto& delivered = phone().simulatedApplication().deliveredByHandle();
    ASSERT_EQ(delivered.size(), 1U);
    const auto userInfo = delivered.begin()->second.userInfo.value_or(Dictionary());
    EXPECT_EQ(Value(userInfo)["p"], Value("P"));
    EXPECT_EQ(Value(userInfo)["table"], Value(4));
    EXPECT_EQ(Value(userInfo)["sound"], Value("bell"));
}

TEST_F(SimulatedPhonePlacesTest, AGeofenceWithoutMessagesShowsNone) {
    phone().addGeofence({.identifier = "cafe", .center = kCafe});
    launch();
    phone().moveTo(kStation);
    phone().moveTo(kCafe);
    EXPECT_EQ(session().requests("/geo").size(), 2U);
    EXPECT_EQ(shown(), Texts{});
}

TEST_F(SimulatedPhonePlacesTest, TheNearestGeofencesAreMonitored) {
    for (int i = 10; i < 40; ++i)
        phone().addGeofence({.identifier = std::to_string(i), .center = {kCafe.latitude - 0.01 * i, kCafe.longitude}});
    launch();
    phone().moveTo(kCafe);
    const auto identifiers = monitored();
    ASSERT_EQ(identifiers.size(), 20U);
    EXPECT_EQ(identifiers.front(), "10");
    EXPECT_EQ(identifiers.back(), "29");
}

TEST_F(SimulatedPhonePlacesTest, ARemovedGeofenceIsNoLongerMonitored) {
    phone().addGeofence({.identifier = "cafe", .center = kCafe});
    phone().addGeofence({.identifier = "station", .center = kStation});
    launch();
    phone().moveTo(kCafe);
    EXPECT_EQ(monitored(), (Texts{"cafe", "station"}));
    EXPECT_TRUE(phone().removeGeofence("station"));
    EXPECT_FALSE(phone().removeGeofence("station"));
    phone().advance(86400);
    phone().moveTo({60.5, 10.75});
    EXPECT_EQ(monitored(), Texts{"cafe"});
}

TEST_F(SimulatedPhonePlacesTest, AnOpenConfigurationRequestIsAnswered) {
    launch();
    EXPECT_FALSE(session().lastRequest("/config/").answered);
    phone().addGeofence({.identifier = "cafe", .center = kCafe});
    phone().settle();
    phone().moveTo(kStation);
    EXPECT_EQ(monitored(), Texts{"cafe"});
}

TEST_F(SimulatedPhonePlacesTest, BeaconsShowTheirMessages) {
    phone().addBeacon({.uuid = kUUID, .message = SimulatedMessage{.text = "Here is the shop"}});
    launch();
    phone().detectBeacons({beacon(1)});
    EXPECT_EQ(shown(), Texts{"Here is the shop"});
    EXPECT_EQ(phone().simulatedLocationManager().rangedRegions().size(), 1U);
    phone().detectBeacons({});
    EXPECT_TRUE(phone().simulatedLocationManager().rangedRegions().empty());
}

TEST_F(SimulatedPhonePlacesTest, TheMostExactBeaconApplies) {
    phone().addBeacon({.uuid = kUUID, .message = SimulatedMessage{.text = "shop"}});
    phone().addBeacon({.uuid = kUUID, .major = 1, .minor = 2, .message = SimulatedMessage{.text = "till"}});
    phone().addBeacon({.uuid = kUUID, .major = 1, .message = SimulatedMessage{.text = "ground floor"}});
    launch();
    phone().detectBeacons({beacon(2)});
    ASSERT_FALSE(shown().empty());
    EXPECT_EQ(shown().front(), "till");
}

TEST_F(SimulatedPhonePlacesTest, BeaconUUIDsMayBeInLowerCase) {
    std::string lower = kUUID;
    std::ranges::transform(lower, lower.begin(), [](char letter) {
        return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
    });
    phone().addBeacon({.uuid = lower, .message = SimulatedMessage{.text = "Hello"}});
    launch();
    phone().detectBeacons({{lower, 1, 1, CLProximity::Near, 1.5}});
    EXPECT_EQ(shown(), Texts{"Hello"});
}

TEST_F(SimulatedPhonePlacesTest, UnknownBeaconsAreIgnored) {
    phone().addBeacon({.uuid = kUUID, .major = 2, .message = SimulatedMessage{.text = "Hello"}});
    launch();
    phone().detectBeacons({{"0A407F30-F5F8-466E-AFF9-25556B57FE6D", 2, 1, CLProximity::Near, 1.5}});
    EXPECT_EQ(shown(), Texts{});
    EXPECT_TRUE(session().requests("/ibeacon").empty());
}

TEST_F(SimulatedPhonePlacesTest, VisitsAreReportedIfRequested) {
    phone().addBeacon({.uuid = kUUID, .reportsVisits = true});
    launch();
    phone().detectBeacons({beacon(1)});
    ASSERT_EQ(session().requests("/session/beacon/region/entry").size(), 1U);
    EXPECT_TRUE(session().lastRequest("/session/beacon/region/entry").answered);
    phone().detectBeacons({});
    phone().advance(400);
    EXPECT_EQ(session().requests("/session/beacon/region/exit").size(), 1U);
}

}  // namespace

}  // namespace vorlane
