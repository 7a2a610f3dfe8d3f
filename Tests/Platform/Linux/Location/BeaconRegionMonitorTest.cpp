#include "Platform/Linux/Location/BeaconRegionMonitor.h"

#include <gtest/gtest.h>

#include "Platform/CLCircularRegion.h"
#include "Platform/Linux/Location/BeaconRanger.h"
#include "Tests/Platform/Linux/Location/TestPlaces.h"

namespace vorlane {

namespace {

using State = CLRegionState;
using Changes = RegionMonitor::Changes;

const std::string kOtherUUID = "00000000-0000-0000-0000-000000000001";

CLBeacon beacon(std::uint16_t major, std::uint16_t minor, double accuracy = 1, const std::string& uuid = kUUID) {
    return {uuid, major, minor, CLProximity::Near, accuracy};
}

class BeaconRegionMonitorTest : public ::testing::Test {
protected:
    std::shared_ptr<CLBeaconRegion> any = std::make_shared<CLBeaconRegion>(kUUID, "any");
    std::shared_ptr<CLBeaconRegion> one = std::make_shared<CLBeaconRegion>(kUUID, "one", 1, 2);
    BeaconRegionMonitor monitor;
    BeaconRanger ranger;
};

TEST_F(BeaconRegionMonitorTest, MatchesBeaconsByUUIDMajorAndMinor) {
    const CLBeaconRegion major(kUUID, "major", 1);
    EXPECT_TRUE(contains(*any, beacon(5, 6)));
    EXPECT_TRUE(contains(major, beacon(1, 6)));
    EXPECT_FALSE(contains(major, beacon(2, 6)));
    EXPECT_TRUE(contains(*one, beacon(1, 2)));
    EXPECT_FALSE(contains(*one, beacon(1, 3)));
    EXPECT_FALSE(contains(*any, beacon(1, 2, 1, kOtherUUID)));
}

TEST_F(BeaconRegionMonitorTest, EntersAtTheFirstAdvertisement) {
    monitor.watch(any, State::Unknown, 0);
    monitor.watch(one, State::Outside, 0);
    EXPECT_FALSE(monitor.isInsideAny());
    EXPECT_EQ(monitor.advertisementArrived(beacon(7, 7), 1), (Changes{{any, State::Inside, true}}));
    EXPECT_EQ(monitor.advertisementArrived(beacon(1, 2), 2), (Changes{{one, State::Inside, true}}));
    EXPECT_EQ(monitor.advertisementArrived(beacon(1, 2), 3), Changes{});
    EXPECT_TRUE(monitor.isInsideAny());
}

TEST_F(BeaconRegionMonitorTest, LeavesAfter30SecondsOfSilence) {
    monitor.watch(any, State::Unknown, 0);
    monitor.advertisementArrived(beacon(1, 2), 10);
    EXPECT_EQ(monitor.timePassed(40), Changes{});
    EXPECT_EQ(monitor.timePassed(40.5), (Changes{{any, State::Outside, true}}));
    EXPECT_EQ(monitor.timePassed(1000), Changes{});
    EXPECT_EQ(monitor.advertisementArrived(beacon(1, 2), 1001), (Changes{{any, State::Inside, true}}));
}

TEST_F(BeaconRegionMonitorTest, StoredInsideIsLeft30SecondsAfterARestart) {
    monitor.watch(any, State::Inside, 100);
    EXPECT_EQ(monitor.timePassed(130), Changes{});
    EXPECT_EQ(monitor.timePassed(131), (Changes{{any, State::Outside, true}}));
}

TEST_F(BeaconRegionMonitorTest, ClockSetBackDoesNotProlongSilence) {
    monitor.watch(any, State::Inside, 100'000);
    EXPECT_EQ(monitor.timePassed(0), Changes{});
    EXPECT_EQ(monitor.timePassed(31), (Changes{{any, State::Outside, true}}));
}

TEST_F(BeaconRegionMonitorTest, ForgottenAndOtherRegionsAreNotWatched) {
    monitor.watch(any, State::Inside, 0);
    EXPECT_TRUE(monitor.isNeeded());
    monitor.forget("any");
    EXPECT_FALSE(monitor.isNeeded());
    monitor.watch(std::make_shared<CLCircularRegion>(CLLocationCoordinate2D{}, 1, "circle"), State::Inside, 0);
    EXPECT_FALSE(monitor.isNeeded());
    EXPECT_EQ(monitor.advertisementArrived(beacon(1, 2), 1), Changes{});
    EXPECT_EQ(monitor.positionArrived({}), Changes{});
}

TEST_F(BeaconRegionMonitorTest, RangingSortsBeaconsByDistance) {
    ranger.start(any);
    ranger.start(one);
    for (const auto& heard : {beacon(1, 1, 5), beacon(1, 2, -1), beacon(1, 3, 2), beacon(1, 4, 1, kOtherUUID)}) {
        ranger.advertisementArrived(heard, 10);
    }
    const auto results = ranger.results(11);
    ASSERT_EQ(results.size(), 2U);
    EXPECT_EQ(results[0].region, any);
    EXPECT_EQ(results[0].beacons, (std::vector<CLBeacon>{beacon(1, 3, 2), beacon(1, 1, 5), beacon(1, 2, -1)}));
    EXPECT_EQ(results[1].region, one);
    EXPECT_EQ(results[1].beacons, (std::vector<CLBeacon>{beacon(1, 2, -1)}));
}

TEST_F(BeaconRegionMonitorTest, RangingDropsSilentBeacons) {
    ranger.start(any);
    ranger.advertisementArrived(beacon(1, 1, 5), 10);
    ranger.advertisementArrived(beacon(1, 1, 4), 12);
    EXPECT_EQ(ranger.results(17)[0].beacons, (std::vector<CLBeacon>{beacon(1, 1, 4)}));
    EXPECT_TRUE(ranger.results(17.5)[0].beacons.empty());
}

TEST_F(BeaconRegionMonitorTest, BeaconsHeardBeforeRangingAreDropped) {
    ranger.advertisementArrived(beacon(1, 1), 10);
    ranger.start(any);
    EXPECT_TRUE(ranger.results(10)[0].beacons.empty());
    EXPECT_TRUE(ranger.isNeeded());
    ranger.stop("any");
    EXPECT_FALSE(ranger.isNeeded());
    EXPECT_TRUE(ranger.results(10).empty());
}

}  // namespace

}  // namespace vorlane
