#include <atomic>

#include "Tests/Support/SimulatedPhoneTest.h"

namespace vorlane {

namespace {

using SimulatedPhoneQueueTest = SimulatedPhoneTest;

TEST_F(SimulatedPhoneQueueTest, ADelayPassesOnTheVirtualClock) {
    const auto queue = phone().makeSerialQueue("test");
    std::atomic<int> runs = 0;
    std::atomic<bool> isOnQueue = false;
    queue->postAfter(300, [&] {
        ++runs;
        isOnQueue = queue->isCurrent();
    });
    EXPECT_TRUE(phone().settle());
    phone().advance(299);
    EXPECT_EQ(runs, 0);
    phone().advance(1);
    EXPECT_EQ(runs, 1);
    EXPECT_TRUE(isOnQueue);
}

TEST_F(SimulatedPhoneQueueTest, ADelayedTaskIsNoTimerOfTheApplication) {
    phone().makeSerialQueue("test")->postAfter(300, [] {});
    EXPECT_TRUE(phone().timers().empty());
}

TEST_F(SimulatedPhoneQueueTest, ADelayDoesNotOutliveItsQueue) {
    bool hasRun = false;
    phone().makeSerialQueue("test")->postAfter(300, [&] { hasRun = true; });
    phone().advance(300);
    EXPECT_FALSE(hasRun);
}

TEST_F(SimulatedPhoneQueueTest, NoDelayIsNone) {
    const auto queue = phone().makeSerialQueue("test");
    std::atomic<int> runs = 0;
    queue->postAfter(0, [&] { ++runs; });
    queue->postAfter(-1, [&] { ++runs; });
    phone().settle();
    EXPECT_EQ(runs, 2);
}

}  // namespace

}  // namespace vorlane
