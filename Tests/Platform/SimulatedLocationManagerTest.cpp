#include "Simulator/Platform/SimulatedLocationManager.h"

#include <gtest/gtest.h>

#include "Platform/CLCircularRegion.h"
#include "Tests/Platform/RecordingLocationDelegate.h"
#include "Tests/Support/SimulatedPhoneTest.h"

namespace vorlane {

namespace {

using Event = std::pair<std::string, Value>;
using Answer = SimulatedUser::Answer;

const std::string kUUID = "B9407F30-F5F8-466E-AFF9-25556B57FE6D";

class SimulatedLocationManagerTest : public SimulatedPhoneTest {
protected:
    SimulatedLocationManagerTest() {
        phone().simulatedApplication().setEventObserver([this](const std::string& event, const Dictionary& fields) {
            if (event != "prompt") events.emplace_back(event, Value(fields));
        });
        manager.setDelegate(delegate);
    }

    SimulatedLocationManager& manager = phone().simulatedLocationManager();
    std::shared_ptr<RecordingLocationDelegate> delegate = std::make_shared<RecordingLocationDelegate>();
    std::vector<Event> events;
    std::shared_ptr<CLRegion> circle = std::make_shared<CLCircularRegion>(CLLocationCoordinate2D{1, 2}, 3, "circle");
    std::shared_ptr<CLBeaconRegion> shop = std::make_shared<CLBeaconRegion>(kUUID, "shop");
};

TEST_F(SimulatedLocationManagerTest, ThePhoneCanDoEverythingAndNothingIsDeterminedAtFirst) {
    EXPECT_TRUE(manager.locationServicesEnabled());
    for (const auto kind : {CLRegionClass::CLRegion, CLRegionClass::CLCircularRegion, CLRegionClass::CLBeaconRegion}) {
        EXPECT_TRUE(manager.isMonitoringAvailableForClass(kind));
    }
    EXPECT_TRUE(manager.isRangingAvailable());
    EXPECT_EQ(manager.maximumRegionMonitoringDistance(), 1'000'000);
    EXPECT_EQ(manager.activityType(), CLActivityType::Other);
    EXPECT_EQ(manager.authorizationStatus(), CLAuthorizationStatus::NotDetermined);
    EXPECT_EQ(manager.desiredAccuracy(), std::nullopt);
    EXPECT_EQ(phone().application()->backgroundTimeRemaining(), 180);
    EXPECT_EQ(phone().locationManager().get(), &manager);
}

TEST_F(SimulatedLocationManagerTest, CapabilitiesAreReportedAsTheyAreSet) {
    manager.setCapabilities({false, false, true, false, 500, CLActivityType::Fitness});
    EXPECT_FALSE(manager.locationServicesEnabled());
    EXPECT_FALSE(manager.isMonitoringAvailableForClass(CLRegionClass::CLRegion));
    EXPECT_FALSE(manager.isMonitoringAvailableForClass(CLRegionClass::CLCircularRegion));
    EXPECT_TRUE(manager.isMonitoringAvailableForClass(CLRegionClass::CLBeaconRegion));
    EXPECT_FALSE(manager.isRangingAvailable());
    EXPECT_EQ(manager.maximumRegionMonitoringDistance(), 500);
    EXPECT_EQ(manager.activityType(), CLActivityType::Fitness);
    manager.setCapabilities({.beaconMonitoring = false});
    EXPECT_FALSE(manager.isMonitoringAvailableForClass(CLRegionClass::CLBeaconRegion));
}

TEST_F(SimulatedLocationManagerTest, WhatTheUserAnswersIsTheStatusAndReachesTheDelegate) {
    manager.requestAlwaysAuthorization();
    EXPECT_EQ(manager.authorizationStatus(), CLAuthorizationStatus::NotDetermined);  // not within the call
    phone().settle();
    EXPECT_EQ(manager.authorizationStatus(), CLAuthorizationStatus::AuthorizedAlways);
    EXPECT_EQ(delegate->calls(), std::vector<std::string>{"status 3"});
    manager.setAuthorizationStatus(CLAuthorizationStatus::NotDetermined);
    manager.requestWhenInUseAuthorization();
    phone().settle();
    EXPECT_EQ(manager.authorizationStatus(), CLAuthorizationStatus::AuthorizedWhenInUse);
    EXPECT_EQ(delegate->calls(), (std::vector<std::string>{"status 3", "status 0", "status 4"}));
}

TEST_F(SimulatedLocationManagerTest, DenyingGivesStatus2AndOtherAnswersNothing) {
    auto& user = phone().simulatedUser();
    for (const auto answer : {Answer::Error, Answer::Undetermined}) {
        user.setAnswer("locationAlways", answer);
        manager.requestAlwaysAuthorization();
        phone().settle();
        EXPECT_EQ(manager.authorizationStatus(), CLAuthorizationStatus::NotDetermined);
        EXPECT_TRUE(delegate->calls().empty());
    }
    user.setAnswer("locationWhenInUse", Answer::Deny);
    manager.requestWhenInUseAuthorization();
    phone().settle();
    EXPECT_EQ(manager.authorizationStatus(), CLAuthorizationStatus::Denied);
    EXPECT_EQ(delegate->calls(), std::vector<std::string>{"status 2"});
}

TEST_F(SimulatedLocationManagerTest, OnceTheStatusIsDeterminedNobodyIsAskedAgain) {
    phone().simulatedUser().setAnswer("locationAlways", Answer::Later);
    manager.requestAlwaysAuthorization();
    phone().settle();
    ASSERT_EQ(phone().simulatedUser().openPrompts().size(), 1U);
    EXPECT_TRUE(phone().simulatedUser().answer("locationAlways", Answer::Deny));
    manager.requestAlwaysAuthorization();
    manager.requestWhenInUseAuthorization();
    phone().settle();
    EXPECT_TRUE(phone().simulatedUser().openPrompts().empty());
    EXPECT_EQ(manager.authorizationStatus(), CLAuthorizationStatus::Denied);
}

TEST_F(SimulatedLocationManagerTest, MonitoringIsToldAndConfirmed) {
    manager.startMonitoringForRegion(circle);
    manager.startMonitoringForRegion(shop);
    EXPECT_TRUE(delegate->calls().empty());
    phone().settle();
    EXPECT_EQ(delegate->calls(), (std::vector<std::string>{"started circle", "started shop"}));
    EXPECT_EQ(manager.monitoredRegions(), (std::vector<std::shared_ptr<CLRegion>>{circle, shop}));
    manager.stopMonitoringForRegion(circle);
    EXPECT_EQ(manager.monitoredRegion("circle"), nullptr);
    const auto event = [](const char* action, const CLRegion& region) {
        return Event{"monitoring", Dictionary{{"action", action}, {"region", region.toDictionary()}}};
    };
    EXPECT_EQ(events, (std::vector<Event>{event("start", *circle), event("start", *shop), event("stop", *circle)}));
}

TEST_F(SimulatedLocationManagerTest, RangingIsTold) {
    manager.startRangingBeaconsInRegion(shop);
    EXPECT_EQ(manager.rangedRegions(), (std::vector<std::shared_ptr<CLBeaconRegion>>{shop}));
    manager.stopRangingBeaconsInRegion(shop);
    EXPECT_TRUE(manager.rangedRegions().empty());
    const auto event = [this](const char* action) {
        return Event{"ranging", Dictionary{{"action", action}, {"region", shop->toDictionary()}}};
    };
    EXPECT_EQ(events, (std::vector<Event>{event("start"), event("stop")}));
}

TEST_F(SimulatedLocationManagerTest, WhatItIsToldIsPassedOn) {
    manager.setDesiredAccuracy(kCLLocationAccuracyBest);
    manager.setAllowsBackgroundLocationUpdates(true);
    manager.startMonitoringSignificantLocationChanges();
    EXPECT_TRUE(manager.isMonitoringSignificantLocationChanges());
    manager.stopMonitoringSignificantLocationChanges();
    EXPECT_EQ(manager.desiredAccuracy(), kCLLocationAccuracyBest);
    EXPECT_TRUE(manager.allowsBackgroundLocationUpdates());
    EXPECT_FALSE(manager.isMonitoringSignificantLocationChanges());
    EXPECT_EQ(events, (std::vector<Event>{{"desiredAccuracy", Dictionary{{"value", -1.0}}},
                                          {"allowsBackgroundLocationUpdates", Dictionary{{"on", true}}},
                                          {"significantLocationChanges", Dictionary{{"on", true}}},
                                          {"significantLocationChanges", Dictionary{{"on", false}}}}));
}

TEST_F(SimulatedLocationManagerTest, WhatHappensReachesTheDelegateOnTheMainQueue) {
    using RegionEvent = SimulatedLocationManager::RegionEvent;
    manager.deliverLocations({{{1, 2}, 3, 4}, {{5, 6}, 7, 8}});
    for (const auto event : {RegionEvent::Enter, RegionEvent::Exit, RegionEvent::Inside, RegionEvent::Outside,
                             RegionEvent::Unknown, RegionEvent::Failed}) {
        manager.deliverRegionEvent(event, circle);
    }
    manager.deliverRanging({{kUUID, 1, 2, CLProximity::Near, 1.5}}, shop);
    EXPECT_TRUE(delegate->calls().empty());
    phone().runMainQueue();
    EXPECT_EQ(delegate->calls(), (std::vector<std::string>{"locations 1,2,3 5,6,7", "enter circle", "exit circle",
                                                           "state 1 circle", "state 2 circle", "state 0 circle",
                                                           "failed circle kCLErrorDomain 5", "ranged shop 1/2:2:1.5"}));
}

TEST_F(SimulatedLocationManagerTest, ADelegateThatIsGoneIsToldNothing) {
    manager.deliverLocations({{{1, 2}, 3, 4}});
    delegate.reset();
    phone().settle();
    manager.setAuthorizationStatus(CLAuthorizationStatus::Denied);
    phone().settle();
    EXPECT_EQ(manager.authorizationStatus(), CLAuthorizationStatus::Denied);
}

TEST_F(SimulatedLocationManagerTest, TheNextPhoneOnTheSameFilesMonitorsTheSameRegions) {
    manager.startMonitoringForRegion(circle);
    manager.startMonitoringForRegion(shop);
    manager.startRangingBeaconsInRegion(shop);
    SimulatedPhone next({.documentsFolder = phone().documentsFolder()});
    const auto& restarted = next.simulatedLocationManager();
    ASSERT_TRUE(restarted.monitoredRegion("circle"));
    EXPECT_EQ(restarted.monitoredRegion("circle")->toDictionary(), circle->toDictionary());
    EXPECT_EQ(restarted.monitoredRegions().size(), 2U);
    EXPECT_TRUE(restarted.rangedRegions().empty());
    EXPECT_FALSE(restarted.isMonitoringSignificantLocationChanges());
}

}  // namespace

}  // namespace vorlane
