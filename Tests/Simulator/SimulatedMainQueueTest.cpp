#include "Simulator/Platform/Internal/SimulatedMainQueue.h"

#include <gtest/gtest.h>

#include <future>
#include <numeric>
#include <thread>

#include "Simulator/Platform/Internal/VirtualClock.h"

namespace vorlane {

namespace {

using SteadyClock = std::chrono::steady_clock;

/// A clock that stands still and counts how often it is read.
class CountingClock : public Clock {
public:
    double now() const override {
        ++readings;
        return 1000.0;
    }

    mutable std::atomic<int> readings = 0;
};

class SimulatedMainQueueTest : public ::testing::Test {
protected:
    std::function<void()> noting(int number) {
        return [this, number] { order.push_back(number); };
    }

    VirtualClock clock{1000.0};
    std::shared_ptr<ActivityCounter> activity = std::make_shared<ActivityCounter>(0);
    std::shared_ptr<SimulatedMainQueue> queue = std::make_shared<SimulatedMainQueue>(clock, activity);
    std::vector<int> order;
};

TEST_F(SimulatedMainQueueTest, TasksRunOnlyInRunDueTasks) {
    queue->post(noting(1));
    queue->post(noting(2));
    EXPECT_TRUE(order.empty());
    EXPECT_TRUE(queue->hasDueTask());
    queue->runDueTasks();
    EXPECT_EQ(order, (std::vector<int>{1, 2}));
    EXPECT_FALSE(queue->hasDueTask());
}

TEST_F(SimulatedMainQueueTest, PostedTasksRunInTheSameCallInOrder) {
    queue->post([this] {
        order.push_back(1);
        queue->post(noting(3));
    });
    queue->post(noting(2));
    queue->runDueTasks();
    EXPECT_EQ(order, (std::vector<int>{1, 2, 3}));
}

TEST_F(SimulatedMainQueueTest, DelayedTasksRunByDueTimeThenByPosting) {
    queue->postAfter(2, noting(3));
    queue->postAfter(1, noting(1));
    queue->postAfter(2, noting(4));
    queue->postAfter(1, noting(2));
    clock.setNow(1002.0);
    queue->runDueTasks();
    EXPECT_EQ(order, (std::vector<int>{1, 2, 3, 4}));
}

TEST_F(SimulatedMainQueueTest, DelayedTasksRunExactlyAtTheirTime) {
    queue->postAfter(5, noting(1));
    clock.setNow(1004.999);
    queue->runDueTasks();
    EXPECT_FALSE(queue->hasDueTask());
    EXPECT_TRUE(order.empty());
    clock.setNow(1005.0);
    EXPECT_TRUE(queue->hasDueTask());
    queue->runDueTasks();
    EXPECT_EQ(order, std::vector<int>{1});
}

TEST_F(SimulatedMainQueueTest, ADelayOf0OrLessIsNone) {
    queue->postAfter(0, noting(1));
    queue->postAfter(-5, noting(2));
    queue->runDueTasks();
    EXPECT_EQ(order, (std::vector<int>{1, 2}));
}

TEST_F(SimulatedMainQueueTest, ReportsDueTimesOfDelayedTasks) {
    EXPECT_EQ(queue->nextDueTime(), std::nullopt);
    EXPECT_TRUE(queue->dueTimes().empty());
    queue->postAfter(7, noting(1));
    queue->postAfter(3, noting(2));
    queue->post(noting(3));
    EXPECT_EQ(queue->nextDueTime(), 1003.0);
    EXPECT_EQ(queue->dueTimes(), (std::vector<double>{1003.0, 1007.0}));
}

TEST_F(SimulatedMainQueueTest, OnlyItsMainThreadIsCurrent) {
    EXPECT_TRUE(queue->isCurrent());
    EXPECT_FALSE(std::async(std::launch::async, [this] { return queue->isCurrent(); }).get());
}

TEST_F(SimulatedMainQueueTest, AnyThreadMayPost) {
    constexpr int kThreads = 4;
    constexpr int kTasks = 250;
    std::vector<std::thread> threads;
    for (int thread = 0; thread < kThreads; ++thread) {
        threads.emplace_back([this] {
            for (int task = 0; task < kTasks; ++task) queue->post([this] { order.push_back(0); });
        });
    }
    for (auto& thread : threads) thread.join();
    queue->runDueTasks();
    EXPECT_EQ(order.size(), static_cast<std::size_t>(kThreads * kTasks));
    EXPECT_EQ(*activity, static_cast<std::uint64_t>(kThreads * kTasks));
}

TEST_F(SimulatedMainQueueTest, PostsFromOtherThreadsWakeAWait) {
    const auto poster = std::async(std::launch::async, [this] { queue->post(noting(1)); });
    queue->wait({});
    EXPECT_TRUE(queue->hasDueTask());
}

TEST_F(SimulatedMainQueueTest, WaitReturnsImmediatelyForDueTasksAndPastDeadlines) {
    queue->wait({.deadline = SteadyClock::now()});
    EXPECT_FALSE(queue->hasDueTask());
    queue->post(noting(1));
    queue->wait({});
    EXPECT_TRUE(queue->hasDueTask());
}

TEST_F(SimulatedMainQueueTest, EndOfWorkElsewhereWakesAWait) {
    auto work = queue->beginWorkElsewhere();
    EXPECT_TRUE(queue->hasWorkElsewhere());
    auto ender = std::async(std::launch::async, [ended = std::move(work)]() mutable { ended = nullptr; });
    queue->wait({.isEnough = [this] { return !queue->hasWorkElsewhere(); }});
    EXPECT_FALSE(queue->hasWorkElsewhere());
    ender.get();
}

TEST_F(SimulatedMainQueueTest, WorkElsewhereCountsUntilItsLastToken) {
    auto first = queue->beginWorkElsewhere();
    auto second = queue->beginWorkElsewhere();
    const auto copy = second;
    first = nullptr;
    second = nullptr;
    EXPECT_TRUE(queue->hasWorkElsewhere());
}

TEST(SimulatedMainQueueWaitTest, AClockThatStandsStillIsNotPolled) {
    const CountingClock clock;
    const auto queue = std::make_shared<SimulatedMainQueue>(clock, std::make_shared<ActivityCounter>(0));
    queue->postAfter(1e-9, [] {});
    queue->wait({.deadline = SteadyClock::now() + std::chrono::milliseconds(50), .clockMoves = false});
    EXPECT_LT(clock.readings, 20);
}

TEST(SimulatedMainQueueWaitTest, AMovingClockIsReadWhenATaskIsDue) {
    const CountingClock clock;
    const auto queue = std::make_shared<SimulatedMainQueue>(clock, std::make_shared<ActivityCounter>(0));
    queue->postAfter(1e300, [] {});
    queue->wait({.deadline = SteadyClock::now() + std::chrono::milliseconds(50)});
    EXPECT_LT(clock.readings, 20);
}

TEST_F(SimulatedMainQueueTest, EndlessTasksAreAbandonedAtTheDeadline) {
    int runs = 0;
    std::function<void()> again = [&] {
        ++runs;
        queue->post(again);
    };
    queue->post(again);
    queue->runDueTasks(SteadyClock::now());
    EXPECT_EQ(runs, 1);
    EXPECT_TRUE(queue->hasDueTask());
}

TEST_F(SimulatedMainQueueTest, StopDropsCurrentAndLaterTasks) {
    auto held = std::make_shared<int>(1);
    const std::weak_ptr<int> watched = held;
    queue->post([held] {});
    queue->postAfter(1, [held] {});
    held = nullptr;
    queue->stop();
    EXPECT_TRUE(watched.expired());
    queue->post(noting(1));
    queue->postAfter(1, noting(2));
    clock.setNow(2000);
    queue->runDueTasks();
    EXPECT_TRUE(order.empty());
    EXPECT_FALSE(queue->hasDueTask());
    EXPECT_EQ(queue->nextDueTime(), std::nullopt);
}

TEST_F(SimulatedMainQueueTest, CapturesOfDroppedTasksMayPost) {
    struct PostsAtTheEnd {
        explicit PostsAtTheEnd(std::shared_ptr<SimulatedMainQueue> mainQueue) : queue(std::move(mainQueue)) {}
        PostsAtTheEnd(const PostsAtTheEnd&) = delete;
        PostsAtTheEnd& operator=(const PostsAtTheEnd&) = delete;
        std::shared_ptr<SimulatedMainQueue> queue;
        ~PostsAtTheEnd() {
            queue->post([] {});
        }
    };
    queue->post([held = std::shared_ptr<PostsAtTheEnd>(new PostsAtTheEnd{queue})] {});
    queue->stop();
    EXPECT_FALSE(queue->hasDueTask());
}

}  // namespace

}  // namespace vorlane
