#include "Platform/Linux/Loop/LinuxMainQueue.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <future>
#include <limits>
#include <memory>
#include <thread>
#include <vector>

namespace vorlane {
namespace {

using testing::ElementsAre;

class LinuxMainQueueTest : public testing::Test {
protected:
    std::function<void()> record(int number) {
        return [this, number] { ran.push_back(number); };
    }

    LinuxMainQueue queue;
    std::vector<int> ran;
};

TEST_F(LinuxMainQueueTest, TasksRunInPostingOrder) {
    for (int i = 1; i <= 4; ++i) queue.post(record(i));
    EXPECT_THAT(ran, ElementsAre());
    EXPECT_EQ(queue.poll(), 4U);
    EXPECT_THAT(ran, ElementsAre(1, 2, 3, 4));
    EXPECT_EQ(queue.poll(), 0U);
}

TEST_F(LinuxMainQueueTest, TasksNeverRunInsidePost) {
    queue.post([this] {
        queue.post(record(2));
        ran.push_back(1);
    });
    while (queue.poll() > 0) {
    }
    EXPECT_THAT(ran, ElementsAre(1, 2));
}

TEST_F(LinuxMainQueueTest, PollDoesNotWaitForDelays) {
    queue.postAfter(60, record(1));
    EXPECT_EQ(queue.poll(), 0U);
}

TEST_F(LinuxMainQueueTest, DelaysUpTo0AreDueAtOnce) {
    for (const double delay : {0.0, -1.0, std::numeric_limits<double>::quiet_NaN()}) queue.postAfter(delay, record(1));
    EXPECT_EQ(queue.poll(), 3U);
}

TEST_F(LinuxMainQueueTest, HugeDelaysAreNeverDue) {
    queue.postAfter(std::numeric_limits<double>::infinity(), record(1));
    queue.postAfter(1e300, record(2));
    EXPECT_EQ(queue.poll(), 0U);
}

TEST_F(LinuxMainQueueTest, DelayedTasksRunInDueOrder) {
    queue.postAfter(0.02, [this] {
        ran.push_back(2);
        queue.stopRunning();
    });
    queue.postAfter(0.01, record(1));
    queue.run();
    EXPECT_THAT(ran, ElementsAre(1, 2));
}

TEST_F(LinuxMainQueueTest, RunWaitsForADelay) {
    const auto start = std::chrono::steady_clock::now();
    queue.postAfter(0.05, [this] { queue.stopRunning(); });
    queue.run();
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(50));
}

TEST_F(LinuxMainQueueTest, PollEndsAlthoughATaskReposts) {
    int count = 0;
    std::function<void()> again = [&] {
        ++count;
        queue.post(again);
    };
    queue.post(again);
    EXPECT_GT(queue.poll(), 0U);
    EXPECT_LE(count, 2);
    EXPECT_GT(queue.poll(), 0U);
}

TEST_F(LinuxMainQueueTest, RunsUntilStopped) {
    std::thread poster([this] {
        for (int i = 1; i <= 3; ++i) queue.post(record(i));
        queue.post([this] { queue.stopRunning(); });
    });
    queue.run();
    poster.join();
    EXPECT_THAT(ran, ElementsAre(1, 2, 3));
}

TEST_F(LinuxMainQueueTest, AnotherThreadStopsAWaitingRun) {
    std::thread stopper([this] { queue.stopRunning(); });
    queue.run();
    stopper.join();
}

TEST_F(LinuxMainQueueTest, EarlyStopEndsTheNextRunOnly) {
    queue.stopRunning();
    queue.run();
    queue.post([this] { queue.stopRunning(); });
    queue.post(record(1));
    queue.run();
    EXPECT_THAT(ran, ElementsAre());
    EXPECT_EQ(queue.poll(), 1U);
}

TEST_F(LinuxMainQueueTest, RunForEndsAtItsTime) {
    queue.post(record(1));
    queue.runFor(0.01);
    EXPECT_THAT(ran, ElementsAre(1));
    queue.postAfter(60, record(2));
    queue.runFor(0.01);
    EXPECT_THAT(ran, ElementsAre(1));
}

TEST_F(LinuxMainQueueTest, RunForIsStopped) {
    queue.post([this] { queue.stopRunning(); });
    queue.runFor(3600);
}

TEST_F(LinuxMainQueueTest, LastRunningThreadIsCurrent) {
    EXPECT_TRUE(queue.isCurrent());
    std::thread([this] {
        EXPECT_FALSE(queue.isCurrent());
        queue.poll();
        EXPECT_TRUE(queue.isCurrent());
    }).join();
    EXPECT_FALSE(queue.isCurrent());
    queue.poll();
    EXPECT_TRUE(queue.isCurrent());
}

TEST_F(LinuxMainQueueTest, NoTaskRunsAfterClose) {
    auto held = std::make_shared<int>(1);
    const std::weak_ptr<int> observed = held;
    queue.post([held] { FAIL(); });
    queue.postAfter(60, [held] { FAIL(); });
    held.reset();
    queue.close();
    EXPECT_TRUE(observed.expired());
    queue.post(record(1));
    queue.postAfter(0, record(2));
    EXPECT_EQ(queue.poll(), 0U);
    queue.run();
    queue.runFor(60);
    EXPECT_THAT(ran, ElementsAre());
}

TEST_F(LinuxMainQueueTest, CloseEndsARunOnAnotherThread) {
    std::thread runner([this] { queue.run(); });
    queue.close();
    runner.join();
}

TEST_F(LinuxMainQueueTest, CloseRacesWithTheTasksOfARun) {
    for (int round = 0; round < 20; ++round) {
        LinuxMainQueue racing;
        std::atomic<int> runs = 0;
        std::promise<void> started;
        racing.post([&started] { started.set_value(); });
        for (int i = 0; i < 500; ++i) racing.post([&runs] { ++runs; });
        std::thread runner([&racing] { racing.run(); });
        started.get_future().wait();
        racing.close();
        runner.join();
        const int runsAtClose = runs;
        EXPECT_EQ(racing.poll(), 0U);
        EXPECT_EQ(runs, runsAtClose);
    }
}

TEST_F(LinuxMainQueueTest, RunsUntilACondition) {
    bool isDone = false;
    queue.post(record(1));
    queue.postAfter(0.01, [&isDone] { isDone = true; });
    queue.postAfter(60, record(2));
    EXPECT_TRUE(queue.runUntil([&isDone] { return isDone; }, 60));
    EXPECT_THAT(ran, ElementsAre(1));
    EXPECT_FALSE(queue.runUntil([] { return false; }, 0.01));
}

TEST_F(LinuxMainQueueTest, RunUntilEndsAtItsDeadlineAlthoughTasksRepost) {
    std::function<void()> repost = [&] { queue.post(repost); };
    repost();
    EXPECT_FALSE(queue.runUntil([] { return false; }, 0.01));
    queue.close();
}

TEST_F(LinuxMainQueueTest, PostsFromManyThreadsAllRun) {
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([this] {
            for (int n = 0; n < 500; ++n) queue.post(record(n));
            for (int n = 0; n < 50; ++n) queue.postAfter(0, record(n));
        });
    }
    while (ran.size() < 2200) queue.poll();
    for (auto& thread : threads) thread.join();
    EXPECT_EQ(queue.poll(), 0U);
}

}  // namespace
}  // namespace vorlane
