#include "Platform/Linux/Location/LinuxLocationManager.h"

#include <gtest/gtest.h>

#include <thread>

#include "Platform/CLCircularRegion.h"
#include "Platform/Linux/LinuxPlatform.h"
#include "Platform/NSFileManager.h"
#include "Tests/Platform/Linux/Location/HandDrivenBackEnd.h"
#include "Tests/Platform/Linux/Location/TestPlaces.h"
#include "Tests/Platform/Linux/Loop/ClockedQueue.h"
#include "Tests/Platform/RecordingLocationDelegate.h"
#include "Tests/Support/TemporaryFolderTest.h"

namespace vorlane {

namespace {

using Calls = std::vector<std::string>;

class LinuxLocationManagerTest : public TemporaryFolderTest {
protected:
    LinuxLocationManagerTest() { start(); }

    /// Starts a process. Only the file remains of the previous one.
    void start() {
        queue = std::make_shared<ClockedQueue>(clock);
        backEnd = std::make_shared<HandDrivenBackEnd>();
        manager = LinuxLocationManager::managerWith({queue, clock, backEnd, path("regions.plist")});
        delegate = std::make_shared<RecordingLocationDelegate>();
        manager->setDelegate(delegate);
        queue->advance(0);
    }

    /// Returns the calls to the delegate since the last time.
    Calls delivered() {
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
        return delivered();
    }
    Calls hear(const CLBeacon& beacon) {
        backEnd->listener.lock()->advertisementArrived(beacon);
        return delivered();
    }
    void monitor(const std::shared_ptr<CLRegion>& region) {
        manager->startMonitoringForRegion(region);
        EXPECT_EQ(delivered(), Calls{"started " + region->identifier()});
    }

    std::shared_ptr<SetClock> clock = std::make_shared<SetClock>();
    std::shared_ptr<ClockedQueue> queue;
    std::shared_ptr<HandDrivenBackEnd> backEnd;
    std::shared_ptr<RecordingLocationDelegate> delegate;
    std::shared_ptr<LinuxLocationManager> manager;
    std::shared_ptr<CLCircularRegion> circle = std::make_shared<CLCircularRegion>(kCentre, 100, "circle");
    std::shared_ptr<CLBeaconRegion> shop = std::make_shared<CLBeaconRegion>(kUUID, "shop");
};

TEST_F(LinuxLocationManagerTest, ReportsCrossingsAfterTheFirstFix) {
    monitor(circle);
    EXPECT_EQ(move(50), Calls{});
    EXPECT_EQ(move(200), (Calls{"exit circle", "state 2 circle"}));
    EXPECT_EQ(move(205), Calls{});
    EXPECT_EQ(move(20), (Calls{"enter circle", "state 1 circle"}));
}

TEST_F(LinuxLocationManagerTest, CallsTheDelegateAfterTheCallHasReturned) {
    manager->startMonitoringForRegion(circle);
    backEnd->listener.lock()->positionsArrived({fix(0), fix(500)});
    manager->requestAlwaysAuthorization();
    EXPECT_TRUE(delegate->calls().empty());
    EXPECT_EQ(delivered(), (Calls{"started circle", "exit circle", "state 2 circle", "status 3"}));
}

TEST_F(LinuxLocationManagerTest, ReportsACrossingThatHappenedBetweenProcesses) {
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

TEST_F(LinuxLocationManagerTest, StateStaysUnknownAcrossARestartBeforeTheFirstFix) {
    monitor(circle);
    start();
    EXPECT_EQ(move(500), Calls{});
    EXPECT_EQ(move(0), (Calls{"enter circle", "state 1 circle"}));
}

TEST_F(LinuxLocationManagerTest, StoppedRegionStaysSilentAfterARestart) {
    monitor(circle);
    move(0);
    manager->stopMonitoringForRegion(circle);
    EXPECT_EQ(move(500), Calls{});
    start();
    EXPECT_TRUE(manager->monitoredRegions().empty());
    EXPECT_EQ(move(0), Calls{});
}

TEST_F(LinuxLocationManagerTest, MonitoringStartsInTheStateOfTheLastFix) {
    move(1000);
    monitor(circle);
    EXPECT_EQ(move(10), (Calls{"enter circle", "state 1 circle"}));
    manager->stopMonitoringForRegion(circle);
    monitor(circle);
    EXPECT_EQ(move(1000), (Calls{"exit circle", "state 2 circle"}));
}

TEST_F(LinuxLocationManagerTest, InvalidFixLeavesTheStateAtTheStartUnknown) {
    move(1000, -1);
    monitor(circle);
    EXPECT_EQ(move(10), Calls{});
}

TEST_F(LinuxLocationManagerTest, StoresTheStateAtTheStart) {
    move(1000);
    monitor(circle);
    start();
    EXPECT_EQ(move(10), (Calls{"enter circle", "state 1 circle"}));
}

TEST_F(LinuxLocationManagerTest, UnchangedRegionKeepsItsStateWhenStartedAgain) {
    monitor(circle);
    move(1000);
    start();
    monitor(circle);
    EXPECT_EQ(move(10), (Calls{"enter circle", "state 1 circle"}));
    EXPECT_EQ(move(105), Calls{});  // outside by less than the accuracy
    monitor(circle);
    EXPECT_EQ(move(200), (Calls{"exit circle", "state 2 circle"}));
}

TEST_F(LinuxLocationManagerTest, ChangedRegionStartsInTheStateOfTheLastFix) {
    monitor(circle);
    move(1000);
    monitor(std::make_shared<CLCircularRegion>(kCentre, 2000, "circle"));
    EXPECT_EQ(move(1000), Calls{});
    EXPECT_EQ(move(5000), (Calls{"exit circle", "state 2 circle"}));
}

TEST_F(LinuxLocationManagerTest, BeaconRegionStartedAgainIsEnteredOnce) {
    monitor(shop);
    EXPECT_EQ(hear({kUUID, 1, 2, CLProximity::Near, 1.5}).size(), 2U);
    monitor(shop);
    EXPECT_EQ(hear({kUUID, 1, 2, CLProximity::Near, 1.5}), Calls{});
}

TEST_F(LinuxLocationManagerTest, RangingResumesAfterALostTimer) {
    manager->startRangingBeaconsInRegion(shop);
    queue->dropNextTimer();
    queue->advance(3);
    EXPECT_EQ(delivered(), Calls{});
    hear({kUUID, 1, 2, CLProximity::Near, 1.5});
    queue->advance(1);
    EXPECT_EQ(delivered(), Calls{"ranged shop 1/2:2:1.5"});
    queue->advance(3);
    EXPECT_EQ(delivered().size(), 3U);
}

TEST_F(LinuxLocationManagerTest, ReportsSignificantChangesFromTheFirstFix) {
    EXPECT_EQ(move(0), Calls{});
    manager->startMonitoringSignificantLocationChanges();
    EXPECT_EQ(move(0, 5), (Calls{"locations 59.91,10.75,5"}));
    EXPECT_EQ(move(499), Calls{});
    EXPECT_EQ(move(501).size(), 1U);
    EXPECT_EQ(move(900), Calls{});
    EXPECT_EQ(move(0, -1), Calls{});  // invalid
    EXPECT_EQ(move(0).size(), 1U);
    manager->stopMonitoringSignificantLocationChanges();
    EXPECT_EQ(move(5000), Calls{});
    manager->startMonitoringSignificantLocationChanges();
    EXPECT_EQ(move(5000).size(), 1U);
}

TEST_F(LinuxLocationManagerTest, ReportsBeaconRegionEntryAndExit) {
    monitor(shop);
    EXPECT_EQ(hear({kUUID, 1, 2, CLProximity::Near, 1.5}), (Calls{"enter shop", "state 1 shop"}));
    queue->advance(29);
    EXPECT_EQ(hear({kUUID, 1, 3, CLProximity::Near, 1.5}), Calls{});
    queue->advance(30);
    EXPECT_EQ(delivered(), Calls{});
    queue->advance(2);
    EXPECT_EQ(delivered(), (Calls{"exit shop", "state 2 shop"}));
    const auto delays = queue->delays.size();
    queue->advance(100);
    EXPECT_EQ(queue->delays.size(), delays);  // no tick is scheduled
}

TEST_F(LinuxLocationManagerTest, ReportsRangingOncePerSecond) {
    manager->startRangingBeaconsInRegion(shop);
    delivered();
    hear({kUUID, 1, 2, CLProximity::Near, 1.5});
    hear({kUUID, 1, 3, CLProximity::Immediate, 0.5});
    queue->advance(1);
    EXPECT_EQ(delivered(), Calls{"ranged shop 1/3:1:0.5 1/2:2:1.5"});
    queue->advance(7);
    EXPECT_EQ(delivered().size(), 7U);
    queue->advance(1);
    EXPECT_EQ(delivered(), Calls{"ranged shop"});
    manager->stopRangingBeaconsInRegion(shop);
    queue->advance(5);
    EXPECT_EQ(delivered(), Calls{});
}

TEST_F(LinuxLocationManagerTest, PassesItsNeedsToTheBackEnd) {
    EXPECT_TRUE(backEnd->needs.empty());
    manager->setDesiredAccuracy(kCLLocationAccuracyBest);
    manager->setAllowsBackgroundLocationUpdates(true);
    monitor(circle);
    manager->startRangingBeaconsInRegion(shop);
    delivered();
    const LocationBackEnd::Needs all{true, true, -1, true};
    ASSERT_FALSE(backEnd->needs.empty());
    EXPECT_EQ(backEnd->needs.back(), all);
    const auto count = backEnd->needs.size();
    manager->startMonitoringSignificantLocationChanges();
    delivered();
    EXPECT_EQ(backEnd->needs.size(), count);  // unchanged
    manager->stopMonitoringForRegion(circle);
    manager->stopRangingBeaconsInRegion(shop);
    delivered();
    EXPECT_EQ(backEnd->needs.back(), (LocationBackEnd::Needs{true, false, -1, true}));
    manager->stopMonitoringSignificantLocationChanges();
    delivered();
    EXPECT_EQ(backEnd->needs.back(), (LocationBackEnd::Needs{false, false, -1, true}));
}

TEST_F(LinuxLocationManagerTest, PassesTheNeedsOfStoredRegionsAfterARestart) {
    monitor(circle);
    start();
    EXPECT_EQ(backEnd->needs, (std::vector<LocationBackEnd::Needs>{{true, false, 0, false}}));
}

TEST_F(LinuxLocationManagerTest, CapabilitiesAreThoseOfTheBackEnd) {
    EXPECT_TRUE(manager->locationServicesEnabled());
    EXPECT_TRUE(manager->isMonitoringAvailableForClass(CLRegionClass::CLRegion));
    EXPECT_TRUE(manager->isMonitoringAvailableForClass(CLRegionClass::CLBeaconRegion));
    EXPECT_TRUE(manager->isRangingAvailable());
    EXPECT_EQ(manager->maximumRegionMonitoringDistance(), 1'000'000);
    EXPECT_EQ(manager->activityType(), CLActivityType::Other);
    backEnd->canHear = false;
    EXPECT_TRUE(manager->isMonitoringAvailableForClass(CLRegionClass::CLCircularRegion));
    EXPECT_FALSE(manager->isMonitoringAvailableForClass(CLRegionClass::CLBeaconRegion));
    EXPECT_FALSE(manager->isRangingAvailable());
    manager->startMonitoringForRegion(shop);
    EXPECT_EQ(delivered(), Calls{"failed shop kCLErrorDomain 5"});
    EXPECT_EQ(manager->monitoredRegions().size(), 1U);
    manager->requestWhenInUseAuthorization();
    EXPECT_EQ(manager->authorizationStatus(), CLAuthorizationStatus::AuthorizedWhenInUse);
    EXPECT_EQ(delivered(), Calls{"status 4"});
}

TEST_F(LinuxLocationManagerTest, AuthorizationIsNotDeterminedWithoutABackEnd) {
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
    EXPECT_EQ(delivered(), Calls{});
    manager->startMonitoringForRegion(circle);
    EXPECT_EQ(delivered(), Calls{"failed circle kCLErrorDomain 5"});
    EXPECT_EQ(manager->monitoredRegions().size(), 1U);
}

TEST_F(LinuxLocationManagerTest, SurvivesTheEndOfDelegateAndQueue) {
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

TEST_F(LinuxLocationManagerTest, ThreadsDeliverAndMonitorAtOnce) {
    LinuxPlatform platform;
    const auto running =
        LinuxLocationManager::managerWith({platform.mainQueue(), clock, backEnd, path("others.plist")});
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

TEST_F(LinuxLocationManagerTest, PlatformStoresRegionsInTheDocumentsFolder) {
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
