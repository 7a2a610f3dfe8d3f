#include "Platform/Linux/Location/LinuxLocationManager.h"

#include <gtest/gtest.h>

#include <thread>

#include "Platform/CLCircularRegion.h"
#include "Platform/Linux/LinuxPlatform.h"
#include "Platform/NSFileManager.h"
#include "Tests/Platform/Linux/Location/TestPlaces.h"
#include "Tests/Platform/Linux/Loop/ClockedQueue.h"
#include "Tests/Platform/RecordingLocationDelegate.h"
#include "Tests/Support/TemporaryFolderTest.h"

namespace vorlane {

namespace {

using Calls = std::vector<std::string>;

/// A back end in a test's hands.
class HandDrivenBackEnd : public LocationBackEnd {
public:
    void setListener(std::weak_ptr<Listener> newListener) override { listener = std::move(newListener); }
    void setNeeds(const Needs& newNeeds) override { needs.push_back(newNeeds); }
    bool locationServicesEnabled() const override { return true; }
    bool hasPositions() const override { return canLocate; }
    bool hasAdvertisements() const override { return canHear; }
    CLAuthorizationStatus authorizationStatus() const override { return status; }
    void requestAuthorization(CLAuthorizationStatus wanted) override {
        status = wanted;
        listener.lock()->authorizationStatusChanged();
    }

    std::weak_ptr<Listener> listener;
    std::vector<Needs> needs;
    bool canLocate = true;
    bool canHear = true;
    CLAuthorizationStatus status = CLAuthorizationStatus::NotDetermined;
};

class LinuxLocationManagerTest : public TemporaryFolderTest {
protected:
    LinuxLocationManagerTest() { start(); }

    /// A process: what an earlier one had in memory is gone.
    void start() {
        queue = std::make_shared<ClockedQueue>(clock);
        backEnd = std::make_shared<HandDrivenBackEnd>();
        manager = LinuxLocationManager::managerWith({queue, clock, backEnd, path("regions.plist")});
        delegate = std::make_shared<RecordingLocationDelegate>();
        manager->setDelegate(delegate);
        queue->advance(0);
    }

    /// What the delegate was told since the last time.
    Calls told() {
        queue->advance(0);
        auto calls = delegate->calls();
        delegate->clear();
        return calls;
    }

    static CLLocation fix(double metres, double accuracy = 10) {
        return {{kCentre.latitude + metres / kMetresInDegree, kCentre.longitude}, accuracy, 0};
    }
    Calls move(double metres, double accuracy = 10) {
        backEnd->listener.lock()->positionsArrived({fix(metres, accuracy)});
        return told();
    }
    Calls hear(const CLBeacon& beacon) {
        backEnd->listener.lock()->advertisementArrived(beacon);
        return told();
    }
    void monitor(const std::shared_ptr<CLRegion>& region) {
        manager->startMonitoringForRegion(region);
        EXPECT_EQ(told(), Calls{"started " + region->identifier()});
    }

    std::shared_ptr<SetClock> clock = std::make_shared<SetClock>();
    std::shared_ptr<ClockedQueue> queue;
    std::shared_ptr<HandDrivenBackEnd> backEnd;
    std::shared_ptr<RecordingLocationDelegate> delegate;
    std::shared_ptr<LinuxLocationManager> manager;
    std::shared_ptr<CLCircularRegion> circle = std::make_shared<CLCircularRegion>(kCentre, 100, "circle");
    std::shared_ptr<CLBeaconRegion> shop = std::make_shared<CLBeaconRegion>(kUUID, "shop");
};

TEST_F(LinuxLocationManagerTest, CrossingsAreToldOnceTheFirstFixHasDecidedTheState) {
    monitor(circle);
    EXPECT_EQ(move(50), Calls{});
    EXPECT_EQ(move(200), (Calls{"exit circle", "state 2 circle"}));
    EXPECT_EQ(move(205), Calls{});
    EXPECT_EQ(move(20), (Calls{"enter circle", "state 1 circle"}));
}

TEST_F(LinuxLocationManagerTest, WhatIsToldIsNeverToldInsideACall) {
    manager->startMonitoringForRegion(circle);
    backEnd->listener.lock()->positionsArrived({fix(0), fix(500)});
    manager->requestAlwaysAuthorization();
    EXPECT_TRUE(delegate->calls().empty());
    EXPECT_EQ(told(), (Calls{"started circle", "exit circle", "state 2 circle", "status 3"}));
}

TEST_F(LinuxLocationManagerTest, TheStateOutlivesARestartSoThatWhatHappenedMeanwhileIsTold) {
    monitor(circle);
    move(50);
    start();
    ASSERT_EQ(manager->monitoredRegions().size(), 1U);
    EXPECT_EQ(move(50), Calls{});
    start();
    EXPECT_EQ(move(300), (Calls{"exit circle", "state 2 circle"}));
    start();
    EXPECT_EQ(move(300), Calls{});
    EXPECT_EQ(move(0), (Calls{"enter circle", "state 1 circle"}));
}

TEST_F(LinuxLocationManagerTest, ARestartBeforeTheFirstFixLeavesTheStateOpen) {
    monitor(circle);
    start();
    EXPECT_EQ(move(500), Calls{});
    EXPECT_EQ(move(0), (Calls{"enter circle", "state 1 circle"}));
}

TEST_F(LinuxLocationManagerTest, ARegionThatIsStoppedIsToldNoMoreAlsoAfterARestart) {
    monitor(circle);
    move(0);
    manager->stopMonitoringForRegion(circle);
    EXPECT_EQ(move(500), Calls{});
    start();
    EXPECT_TRUE(manager->monitoredRegions().empty());
    EXPECT_EQ(move(0), Calls{});
}

TEST_F(LinuxLocationManagerTest, StartingARegionAnewForgetsItsState) {
    monitor(circle);
    move(0);
    monitor(circle);
    EXPECT_EQ(move(500), Calls{});
}

TEST_F(LinuxLocationManagerTest, SignificantChangesAreToldFromTheFirstFixOn) {
    EXPECT_EQ(move(0), Calls{});
    manager->startMonitoringSignificantLocationChanges();
    EXPECT_EQ(move(0, 5), (Calls{"locations 59.91,10.75,5"}));
    EXPECT_EQ(move(499), Calls{});
    EXPECT_EQ(move(501).size(), 1U);
    EXPECT_EQ(move(900), Calls{});
    EXPECT_EQ(move(0, -1), Calls{});  // not valid
    EXPECT_EQ(move(0).size(), 1U);
    manager->stopMonitoringSignificantLocationChanges();
    EXPECT_EQ(move(5000), Calls{});
    manager->startMonitoringSignificantLocationChanges();
    EXPECT_EQ(move(5000).size(), 1U);
}

TEST_F(LinuxLocationManagerTest, BeaconRegionsAreEnteredHeardAndLeft) {
    monitor(shop);
    EXPECT_EQ(hear({kUUID, 1, 2, CLProximity::Near, 1.5}), (Calls{"enter shop", "state 1 shop"}));
    queue->advance(29);
    EXPECT_EQ(hear({kUUID, 1, 3, CLProximity::Near, 1.5}), Calls{});
    queue->advance(30);
    EXPECT_EQ(told(), Calls{});
    queue->advance(2);
    EXPECT_EQ(told(), (Calls{"exit shop", "state 2 shop"}));
    const auto delays = queue->delays.size();
    queue->advance(100);
    EXPECT_EQ(queue->delays.size(), delays);  // nothing ticks without need
}

TEST_F(LinuxLocationManagerTest, RangingIsToldOnceASecond) {
    manager->startRangingBeaconsInRegion(shop);
    told();
    hear({kUUID, 1, 2, CLProximity::Near, 1.5});
    hear({kUUID, 1, 3, CLProximity::Immediate, 0.5});
    queue->advance(1);
    EXPECT_EQ(told(), Calls{"ranged shop 1/3:1:0.5 1/2:2:1.5"});
    queue->advance(7);
    EXPECT_EQ(told().size(), 7U);
    queue->advance(1);
    EXPECT_EQ(told(), Calls{"ranged shop"});
    manager->stopRangingBeaconsInRegion(shop);
    queue->advance(5);
    EXPECT_EQ(told(), Calls{});
}

TEST_F(LinuxLocationManagerTest, TheBackEndIsToldWhatIsNeeded) {
    EXPECT_TRUE(backEnd->needs.empty());
    manager->setDesiredAccuracy(kCLLocationAccuracyBest);
    manager->setAllowsBackgroundLocationUpdates(true);
    monitor(circle);
    manager->startRangingBeaconsInRegion(shop);
    told();
    const LocationBackEnd::Needs all{true, true, -1, true};
    ASSERT_FALSE(backEnd->needs.empty());
    EXPECT_EQ(backEnd->needs.back(), all);
    const auto count = backEnd->needs.size();
    manager->startMonitoringSignificantLocationChanges();
    told();
    EXPECT_EQ(backEnd->needs.size(), count);  // nothing new
    manager->stopMonitoringForRegion(circle);
    manager->stopRangingBeaconsInRegion(shop);
    told();
    EXPECT_EQ(backEnd->needs.back(), (LocationBackEnd::Needs{true, false, -1, true}));
    manager->stopMonitoringSignificantLocationChanges();
    told();
    EXPECT_EQ(backEnd->needs.back(), (LocationBackEnd::Needs{false, false, -1, true}));
}

TEST_F(LinuxLocationManagerTest, AfterARestartTheBackEndIsToldWhatTheKeptRegionsNeed) {
    monitor(circle);
    start();
    EXPECT_EQ(backEnd->needs, (std::vector<LocationBackEnd::Needs>{{true, false, 0, false}}));
}

TEST_F(LinuxLocationManagerTest, WhatTheBackEndCanDoIsWhatTheDeviceCanDo) {
    EXPECT_TRUE(manager->locationServicesEnabled());
    EXPECT_TRUE(manager->isMonitoringAvailableForClass(CLRegionClass::CLRegion));
    EXPECT_TRUE(manager->isMonitoringAvailableForClass(CLRegionClass::CLBeaconRegion));
    EXPECT_TRUE(manager->isRangingAvailable());
    EXPECT_EQ(manager->maximumRegionMonitoringDistance(), 1'000'000);
    EXPECT_EQ(manager->activityType(), 1);
    backEnd->canHear = false;
    EXPECT_TRUE(manager->isMonitoringAvailableForClass(CLRegionClass::CLCircularRegion));
    EXPECT_FALSE(manager->isMonitoringAvailableForClass(CLRegionClass::CLBeaconRegion));
    EXPECT_FALSE(manager->isRangingAvailable());
    manager->startMonitoringForRegion(shop);
    EXPECT_EQ(told(), Calls{"failed shop kCLErrorDomain 5"});
    EXPECT_EQ(manager->monitoredRegions().size(), 1U);
    manager->requestWhenInUseAuthorization();
    EXPECT_EQ(manager->authorizationStatus(), CLAuthorizationStatus::AuthorizedWhenInUse);
    EXPECT_EQ(told(), Calls{"status 4"});
}

TEST_F(LinuxLocationManagerTest, WithoutABackEndNothingIsDetermined) {
    manager = LinuxLocationManager::managerWith({queue, clock, nullptr, path("others.plist")});
    manager->setDelegate(delegate);
    EXPECT_FALSE(manager->locationServicesEnabled());
    EXPECT_FALSE(manager->isMonitoringAvailableForClass(CLRegionClass::CLRegion));
    EXPECT_FALSE(manager->isMonitoringAvailableForClass(CLRegionClass::CLBeaconRegion));
    EXPECT_FALSE(manager->isRangingAvailable());
    EXPECT_EQ(manager->authorizationStatus(), CLAuthorizationStatus::NotDetermined);
    manager->requestAlwaysAuthorization();
    manager->setDesiredAccuracy(5);
    manager->startMonitoringSignificantLocationChanges();
    manager->startRangingBeaconsInRegion(shop);
    EXPECT_EQ(told(), Calls{});
    manager->startMonitoringForRegion(circle);
    EXPECT_EQ(told(), Calls{"failed circle kCLErrorDomain 5"});
    EXPECT_EQ(manager->monitoredRegions().size(), 1U);
}

TEST_F(LinuxLocationManagerTest, WhoeverIsGoneIsToldNothing) {
    monitor(circle);
    const auto listener = backEnd->listener.lock();
    delegate.reset();
    listener->positionsArrived({fix(0)});
    listener->positionsArrived({fix(500)});
    queue->advance(0);
    listener->positionsArrived({fix(0)});
    queue.reset();
    listener->positionsArrived({fix(0)});
    manager->stopMonitoringForRegion(circle);
    EXPECT_TRUE(manager->monitoredRegions().empty());
}

TEST_F(LinuxLocationManagerTest, AnyThreadMayDeliverAndMonitor) {
    LinuxPlatform platform;
    const auto running = LinuxLocationManager::managerWith({platform.mainQueue(), clock, backEnd, ""});
    running->setDelegate(delegate);
    std::thread delivering([&] {
        for (int i = 0; i < 200; ++i) running->positionsArrived({fix(i % 2 == 0 ? 0 : 500)});
    });
    std::thread monitoring([&] {
        for (int i = 0; i < 50; ++i) {
            running->startMonitoringForRegion(circle);
            running->stopMonitoringForRegion(circle);
        }
    });
    while (platform.poll() > 0) {
    }
    delivering.join();
    monitoring.join();
    while (platform.poll() > 0) {
    }
    EXPECT_TRUE(running->monitoredRegions().empty());
}

TEST_F(LinuxLocationManagerTest, ThePlatformsManagerKeepsItsRegionsInTheDocumentsFolder) {
    LinuxPlatform::Options options;
    options.documentsFolder = path("documents");
    {
        LinuxPlatform platform(options);
        EXPECT_EQ(platform.locationManager(), platform.locationManager());
        platform.locationManager()->startMonitoringForRegion(circle);
    }
    EXPECT_TRUE(NSFileManager::fileExistsAtPath(path("documents/VLMonitoredRegions.plist")));
    options.locationBackEnd = backEnd;
    LinuxPlatform platform(options);
    EXPECT_TRUE(platform.locationManager()->locationServicesEnabled());
    ASSERT_EQ(platform.locationManager()->monitoredRegions().size(), 1U);
    EXPECT_EQ(platform.locationManager()->monitoredRegions()[0]->toDictionary(), circle->toDictionary());
}

}  // namespace

}  // namespace vorlane
