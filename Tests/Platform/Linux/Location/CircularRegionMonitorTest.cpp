#include "Platform/Linux/Location/CircularRegionMonitor.h"

#include <gtest/gtest.h>

#include <limits>

#include "Platform/CLBeaconRegion.h"
#include "Tests/Platform/Linux/Location/TestPlaces.h"

namespace vorlane {

namespace {

using State = CLRegionState;
using Changes = RegionMonitor::Changes;

/// A fix at this distance north of the centre.
CLLocation fix(double metres, double accuracy = 10) {
    return {{kCentre.latitude + metres / kMetresInDegree, kCentre.longitude}, accuracy, 0};
}

class CircularRegionMonitorTest : public ::testing::Test {
protected:
    Changes entered() const { return {{circle, State::Inside, true}}; }
    Changes left() const { return {{circle, State::Outside, true}}; }
    void watch(State state = State::Unknown) { monitor.watch(circle, state, 0); }

    std::shared_ptr<CLCircularRegion> circle = std::make_shared<CLCircularRegion>(kCentre, 100, "1");
    CircularRegionMonitor monitor;
};

TEST_F(CircularRegionMonitorTest, FirstFixDecidesTheStateWithoutACrossing) {
    watch();
    EXPECT_EQ(monitor.positionArrived(fix(50)), (Changes{{circle, State::Inside, false}}));
    EXPECT_EQ(monitor.positionArrived(fix(50)), Changes{});
    watch();
    EXPECT_EQ(monitor.positionArrived(fix(150)), (Changes{{circle, State::Outside, false}}));
    EXPECT_EQ(monitor.positionArrived(fix(150)), Changes{});
}

TEST_F(CircularRegionMonitorTest, FirstFixIsJudgedByTheRadiusAlone) {
    watch();
    EXPECT_EQ(monitor.positionArrived(fix(99.9, 5000)), (Changes{{circle, State::Inside, false}}));
    watch();
    EXPECT_EQ(monitor.positionArrived(fix(100.1, 5000)), (Changes{{circle, State::Outside, false}}));
}

TEST_F(CircularRegionMonitorTest, EntersAtAFixInsideByItsAccuracy) {
    watch(State::Outside);
    for (const double metres : {150.0, 100.0, 90.1}) EXPECT_EQ(monitor.positionArrived(fix(metres)), Changes{});
    EXPECT_EQ(monitor.positionArrived(fix(89.9)), entered());
    EXPECT_EQ(monitor.positionArrived(fix(0)), Changes{});
}

TEST_F(CircularRegionMonitorTest, LeavesAtAFixOutsideByItsAccuracy) {
    watch(State::Inside);
    for (const double metres : {0.0, 100.0, 109.9}) EXPECT_EQ(monitor.positionArrived(fix(metres)), Changes{});
    EXPECT_EQ(monitor.positionArrived(fix(110.1)), left());
    EXPECT_EQ(monitor.positionArrived(fix(5000)), Changes{});
}

TEST_F(CircularRegionMonitorTest, FixWithAccuracy0CountsAtTheBorder) {
    watch(State::Outside);
    EXPECT_EQ(monitor.positionArrived(fix(100.01, 0)), Changes{});
    EXPECT_EQ(monitor.positionArrived(fix(99.99, 0)), entered());
    EXPECT_EQ(monitor.positionArrived(fix(100.01, 0)), left());
}

TEST_F(CircularRegionMonitorTest, SmallCircleIsEnteredInItsInnerHalf) {
    watch(State::Outside);
    EXPECT_EQ(monitor.positionArrived(fix(50.1, 1000)), Changes{});
    EXPECT_EQ(monitor.positionArrived(fix(49.9, 1000)), entered());
    EXPECT_EQ(monitor.positionArrived(fix(1099, 1000)), Changes{});
    EXPECT_EQ(monitor.positionArrived(fix(1101, 1000)), left());
}

TEST_F(CircularRegionMonitorTest, WaveringFixesCrossTheBorderOnce) {
    watch(State::Outside);
    int crossings = 0;
    for (int i = 0; i < 100; ++i) {
        crossings += static_cast<int>(monitor.positionArrived(fix(i % 2 == 0 ? 84 : 105, 15)).size());
    }
    EXPECT_EQ(crossings, 1);
}

TEST_F(CircularRegionMonitorTest, InvalidFixIsIgnored) {
    constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    watch();
    for (const auto& place : {CLLocation{kCentre, -1, 0}, CLLocation{kCentre, kNaN, 0},
                              CLLocation{kCentre, kInfinity, 0}, CLLocation{{91, 0}, 5, 0}, CLLocation{{0, -181}, 5, 0},
                              CLLocation{{kNaN, 0}, 5, 0}, CLLocation{{0, kInfinity}, 5, 0}}) {
        EXPECT_EQ(monitor.positionArrived(place), Changes{});
    }
    EXPECT_EQ(monitor.positionArrived(fix(0)), (Changes{{circle, State::Inside, false}}));
}

TEST_F(CircularRegionMonitorTest, ReportsTheStateAtTheLastValidFix) {
    EXPECT_EQ(monitor.stateAtLastPosition(*circle), State::Unknown);
    monitor.positionArrived(fix(0, -1));
    EXPECT_EQ(monitor.stateAtLastPosition(*circle), State::Unknown);
    monitor.positionArrived(fix(99.9));
    EXPECT_EQ(monitor.stateAtLastPosition(*circle), State::Inside);
    monitor.positionArrived(fix(100.1, 5000));
    EXPECT_EQ(monitor.stateAtLastPosition(*circle), State::Outside);
    const CLBeaconRegion beacons("B9407F30-F5F8-466E-AFF9-25556B57FE6D", "1");
    EXPECT_EQ(monitor.stateAtLastPosition(beacons), State::Unknown);
}

TEST_F(CircularRegionMonitorTest, RegionsAreIndependent) {
    watch(State::Outside);
    const auto wide = std::make_shared<CLCircularRegion>(kCentre, 1000, "2");
    monitor.watch(wide, State::Outside, 0);
    EXPECT_EQ(monitor.positionArrived(fix(500)), (Changes{{wide, State::Inside, true}}));
    EXPECT_EQ(monitor.positionArrived(fix(50)), entered());
    EXPECT_EQ(monitor.positionArrived(fix(5000)),
              (Changes{{circle, State::Outside, true}, {wide, State::Outside, true}}));
}

TEST_F(CircularRegionMonitorTest, RegionReplacesOneWithItsIdentifier) {
    watch(State::Outside);
    const auto moved = std::make_shared<CLCircularRegion>(CLLocationCoordinate2D{0, 0}, 100, "1");
    monitor.watch(moved, State::Inside, 0);
    EXPECT_EQ(monitor.positionArrived(fix(0)), (Changes{{moved, State::Outside, true}}));
}

TEST_F(CircularRegionMonitorTest, ForgottenAndOtherRegionsAreNotWatched) {
    EXPECT_FALSE(monitor.isNeeded());
    watch(State::Outside);
    EXPECT_TRUE(monitor.isNeeded());
    monitor.forget("another");
    EXPECT_TRUE(monitor.isNeeded());
    monitor.forget("1");
    EXPECT_FALSE(monitor.isNeeded());
    monitor.watch(std::make_shared<CLBeaconRegion>("B9407F30-F5F8-466E-AFF9-25556B57FE6D", "1"), State::Outside, 0);
    EXPECT_FALSE(monitor.isNeeded());
    EXPECT_EQ(monitor.positionArrived(fix(0)), Changes{});
    EXPECT_EQ(monitor.timePassed(1000), Changes{});
}

TEST_F(CircularRegionMonitorTest, WatchesCirclesAtTheDateLineAndAPole) {
    const auto pacific = std::make_shared<CLCircularRegion>(CLLocationCoordinate2D{0, 179.999}, 1000, "1");
    monitor.watch(pacific, State::Outside, 0);
    EXPECT_EQ(monitor.positionArrived({{0, -179.999}, 5, 0}), (Changes{{pacific, State::Inside, true}}));
    monitor.forget("1");
    const auto pole = std::make_shared<CLCircularRegion>(CLLocationCoordinate2D{90, 0}, 1000, "pole");
    monitor.watch(pole, State::Outside, 0);
    EXPECT_EQ(monitor.positionArrived({{89.995, -120}, 5, 0}), (Changes{{pole, State::Inside, true}}));
}

TEST_F(CircularRegionMonitorTest, TrackOf10000FixesCrosses20RegionsOnce) {
    // 1 km apart, to the north.
    for (int i = 0; i < 20; ++i) {
        const CLLocationCoordinate2D centre{kCentre.latitude + 1000 * (i + 1) / kMetresInDegree, kCentre.longitude};
        monitor.watch(std::make_shared<CLCircularRegion>(centre, 100, std::to_string(i)), State::Unknown, 0);
    }
    int entries = 0;
    int exits = 0;
    for (int i = 0; i < 10'000; ++i) {
        for (const auto& change : monitor.positionArrived(fix(i * 2.5, 20))) {
            if (!change.isCrossing) continue;
            ++(change.state == State::Inside ? entries : exits);
        }
    }
    EXPECT_EQ(entries, 20);
    EXPECT_EQ(exits, 20);
}

}  // namespace

}  // namespace vorlane
