#include "Simulator/Platform/Internal/SimulatedSerialQueue.h"

#include <gtest/gtest.h>

#include <atomic>
#include <future>

#include "Simulator/Platform/Internal/VirtualClock.h"

namespace vorlane {

namespace {

using SteadyClock = std::chrono::steady_clock;

SteadyClock::time_point inTime() { return SteadyClock::now() + std::chrono::seconds(60); }

class SimulatedSerialQueueTest : public ::testing::Test {
protected:
    void waitForTheEndOfWork() {
        mainQueue->wait({.deadline = inTime(), .isEnough = [this] { return !mainQueue->hasWorkElsewhere(); }});
    }

    VirtualClock clock{1000.0};
    std::shared_ptr<ActivityCounter> activity = std::make_shared<ActivityCounter>(0);
    std::shared_ptr<SimulatedMainQueue> mainQueue = std::make_shared<SimulatedMainQueue>(clock, activity);
    SimulatedSerialQueue queue{"a queue", mainQueue, activity};
    std::promise<void> gate;
};

TEST_F(SimulatedSerialQueueTest, TasksCountFromPostingUntilTheirEnd) {
    queue.post([open = gate.get_future().share()] { open.wait(); });
    queue.post([] {});
    EXPECT_TRUE(mainQueue->hasWorkElsewhere());
    EXPECT_EQ(*activity, 2U);
    gate.set_value();
    waitForTheEndOfWork();
    EXPECT_FALSE(mainQueue->hasWorkElsewhere());
}

TEST_F(SimulatedSerialQueueTest, CapturesAreDestroyedBeforeTheWorkEnds) {
    auto held = std::make_shared<int>(1);
    const std::weak_ptr<int> watched = held;
    queue.post([held = std::move(held)] {});
    waitForTheEndOfWork();
    EXPECT_TRUE(watched.expired());
}

TEST_F(SimulatedSerialQueueTest, DelayedTasksCountOnlyWhileTheyRun) {
    bool wasWork = false;
    queue.postAfter(3600, [] {});
    EXPECT_FALSE(mainQueue->hasWorkElsewhere());
    EXPECT_EQ(*activity, 1U);
    std::promise<void> ran;
    queue.postAfter(0.001, [&] {
        wasWork = mainQueue->hasWorkElsewhere();
        ran.set_value();
    });
    ASSERT_EQ(ran.get_future().wait_until(inTime()), std::future_status::ready);
    EXPECT_TRUE(wasWork);
    waitForTheEndOfWork();
    EXPECT_FALSE(mainQueue->hasWorkElsewhere());
}

TEST_F(SimulatedSerialQueueTest, DelaysMayRunOnThePhonesClock) {
    const auto inPhoneTime = std::make_shared<SimulatedSerialQueue>("another queue", mainQueue, activity,
                                                                    SimulatedSerialQueue::Delays::PhoneTime);
    std::atomic<bool> hasRun = false;
    inPhoneTime->postAfter(60, [&hasRun] { hasRun = true; });
    clock.setNow(1059);
    mainQueue->runDueTasks();
    EXPECT_FALSE(mainQueue->hasWorkElsewhere());
    clock.setNow(1060);
    mainQueue->runDueTasks();
    waitForTheEndOfWork();
    EXPECT_TRUE(hasRun);
}

TEST_F(SimulatedSerialQueueTest, DroppedTasksDoNotCount) {
    std::promise<void> started;
    queue.post([&started, open = gate.get_future().share()] {
        started.set_value();
        open.wait();
    });
    queue.post([] { FAIL() << "dropped"; });
    ASSERT_EQ(started.get_future().wait_until(inTime()), std::future_status::ready);
    queue.stop(SteadyClock::now());
    queue.post([] { FAIL() << "stopped"; });
    EXPECT_TRUE(mainQueue->hasWorkElsewhere());
    gate.set_value();
    waitForTheEndOfWork();
    EXPECT_FALSE(mainQueue->hasWorkElsewhere());
}

TEST_F(SimulatedSerialQueueTest, EmptyTasksDoNotCount) {
    queue.post(nullptr);
    EXPECT_FALSE(mainQueue->hasWorkElsewhere());
    EXPECT_EQ(*activity, 0U);
}

}  // namespace

}  // namespace vorlane
