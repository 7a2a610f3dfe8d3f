#include "Platform/Internal/SerialDispatchQueue.h"

#include <gtest/gtest.h>
#include <pthread.h>
#include <signal.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <filesystem>
#include <functional>
#include <future>
#include <limits>
#include <numeric>
#include <thread>
#include <utility>
#include <vector>

namespace vorlane {

namespace {

using SteadyClock = std::chrono::steady_clock;

SteadyClock::time_point inTime() { return SteadyClock::now() + std::chrono::seconds(10); }

TEST(SerialDispatchQueueTest, TasksRunInOrderOnOneNamedThread) {
    SerialDispatchQueue queue("a label longer than fifteen");
    std::vector<int> order;
    std::array<char, 16> name{};
    for (int i = 0; i < 100; ++i) queue.post([&order, i] { order.push_back(i); });
    queue.post([&name] { pthread_getname_np(pthread_self(), name.data(), name.size()); });
    ASSERT_TRUE(queue.waitUntilIdle(inTime()));
    std::vector<int> expected(100);
    std::iota(expected.begin(), expected.end(), 0);
    EXPECT_EQ(order, expected);
    EXPECT_STREQ(name.data(), "a label longer ");
}

TEST(SerialDispatchQueueTest, TaskMayPostAnother) {
    SerialDispatchQueue queue("queue");
    std::promise<void> done;
    queue.post([&] { queue.post([&] { done.set_value(); }); });
    EXPECT_EQ(done.get_future().wait_until(inTime()), std::future_status::ready);
}

TEST(SerialDispatchQueueTest, OnlyItsThreadIsCurrent) {
    SerialDispatchQueue queue("queue");
    bool isInside = false;
    EXPECT_FALSE(queue.isCurrent());
    queue.post([&] { isInside = queue.isCurrent(); });
    ASSERT_TRUE(queue.waitUntilIdle(inTime()));
    EXPECT_TRUE(isInside);
    EXPECT_FALSE(queue.isCurrent());
}

TEST(SerialDispatchQueueTest, DelayedTasksRunInDueOrder) {
    SerialDispatchQueue queue("queue");
    std::vector<int> order;
    std::promise<void> done;
    queue.postAfter(0.02, [&] {
        order.push_back(2);
        done.set_value();
    });
    queue.postAfter(0.01, [&] { order.push_back(1); });
    queue.post([&] { order.push_back(0); });
    ASSERT_EQ(done.get_future().wait_until(inTime()), std::future_status::ready);
    ASSERT_TRUE(queue.waitUntilIdle(inTime()));
    EXPECT_EQ(order, (std::vector<int>{0, 1, 2}));
}

TEST(SerialDispatchQueueTest, IsIdleOnceItsTasksHaveRun) {
    SerialDispatchQueue queue("queue");
    EXPECT_TRUE(queue.isIdle());
    std::promise<void> gate;
    auto opened = gate.get_future();
    queue.post([&opened] { opened.wait(); });
    EXPECT_FALSE(queue.isIdle());
    EXPECT_FALSE(queue.waitUntilIdle(SteadyClock::now()));
    gate.set_value();
    EXPECT_TRUE(queue.waitUntilIdle(inTime()));
    // A delayed task counts once it is due.
    queue.postAfter(3600, [] {});
    EXPECT_TRUE(queue.isIdle());
}

TEST(SerialDispatchQueueTest, StopRunsQueuedAndDropsDelayedTasks) {
    SerialDispatchQueue queue("queue");
    int runs = 0;
    for (int i = 0; i < 10; ++i) queue.post([&runs] { ++runs; });
    queue.postAfter(3600, [&runs] { runs = 1000; });
    queue.stop(inTime());
    EXPECT_EQ(runs, 10);
    queue.post([&runs] { ++runs; });
    EXPECT_TRUE(queue.isIdle());
    EXPECT_EQ(runs, 10);
}

TEST(SerialDispatchQueueTest, UnusedQueueStops) {
    SerialDispatchQueue queue("queue");
    queue.stop(inTime());
    queue.stop(inTime());
}

TEST(SerialDispatchQueueTest, TaskBeyondTheDeadlineIsTheLast) {
    const auto gate = std::make_shared<std::promise<void>>();
    const auto ended = std::make_shared<std::promise<void>>();
    const auto lateRuns = std::make_shared<std::atomic<int>>(0);
    std::promise<void> started;
    {
        SerialDispatchQueue queue("queue");
        queue.post([gate, ended, &started] {
            started.set_value();
            gate->get_future().wait();
            ended->set_value();
        });
        queue.post([lateRuns] { ++*lateRuns; });
        started.get_future().wait();
        queue.stop(SteadyClock::now());
    }
    gate->set_value();
    EXPECT_EQ(ended->get_future().wait_until(inTime()), std::future_status::ready);
    EXPECT_EQ(*lateRuns, 0);
}

TEST(SerialDispatchQueueTest, LastTaskMayDestroyTheQueue) {
    std::promise<void> done;
    auto queue = std::make_shared<SerialDispatchQueue>("queue");
    auto* const raw = queue.get();
    std::promise<void> gate;
    raw->post([&gate, &done, held = std::move(queue)]() mutable {
        gate.get_future().wait();
        held.reset();
        done.set_value();
    });
    gate.set_value();
    EXPECT_EQ(done.get_future().wait_until(inTime()), std::future_status::ready);
}

TEST(SerialDispatchQueueTest, HugeDelaysAreNeverDue) {
    SerialDispatchQueue queue("queue");
    int runs = 0;
    for (const double delay : {1e300, std::numeric_limits<double>::infinity(), 9.3e9}) {
        queue.postAfter(delay, [&runs] { runs += 100; });
    }
    for (const double delay : {0.0, -1.0, -1e300, std::numeric_limits<double>::quiet_NaN()}) {
        queue.postAfter(delay, [&runs] { ++runs; });
    }
    ASSERT_TRUE(queue.waitUntilIdle(inTime()));
    EXPECT_EQ(runs, 4);
}

TEST(SerialDispatchQueueTest, EmptyTasksAreIgnored) {
    SerialDispatchQueue queue("queue");
    queue.post(nullptr);
    queue.postAfter(0.001, nullptr);
    EXPECT_TRUE(queue.isIdle());
    queue.stop(inTime());
}

TEST(SerialDispatchQueueTest, SignalsAreLeftToTheHost) {
    SerialDispatchQueue queue("queue");
    sigset_t before;
    pthread_sigmask(SIG_SETMASK, nullptr, &before);
    sigset_t inside;
    sigemptyset(&inside);
    queue.post([&inside] { pthread_sigmask(SIG_SETMASK, nullptr, &inside); });
    ASSERT_TRUE(queue.waitUntilIdle(inTime()));
    sigset_t after;
    pthread_sigmask(SIG_SETMASK, nullptr, &after);
    for (const int signal : {SIGTERM, SIGINT, SIGUSR1, SIGPIPE}) {
        EXPECT_TRUE(sigismember(&inside, signal));
        EXPECT_EQ(sigismember(&after, signal), sigismember(&before, signal));
    }
}

TEST(SerialDispatchQueueTest, ReusedThreadIdIsNotCurrent) {
    SerialDispatchQueue queue("queue");
    queue.post([] {});
    queue.stop(inTime());
    // The system often reuses the id of an ended thread.
    for (int i = 0; i < 20; ++i) {
        bool isCurrent = true;
        std::thread([&] { isCurrent = queue.isCurrent(); }).join();
        EXPECT_FALSE(isCurrent);
    }
}

TEST(SerialDispatchQueueTest, SeveralThreadsMayStop) {
    for (int round = 0; round < 50; ++round) {
        SerialDispatchQueue queue("queue");
        std::atomic<int> runs = 0;
        for (int i = 0; i < 10; ++i) queue.post([&runs] { ++runs; });
        std::vector<std::thread> stoppers;
        for (int i = 0; i < 3; ++i) stoppers.emplace_back([&queue] { queue.stop(inTime()); });
        for (auto& stopper : stoppers) stopper.join();
        EXPECT_EQ(runs, 10);
    }
}

TEST(SerialDispatchQueueTest, NoTaskRunsAfterStop) {
    for (int round = 0; round < 50; ++round) {
        SerialDispatchQueue queue("queue");
        std::atomic<bool> isStopped = false;
        std::atomic<int> lateRuns = 0;
        std::promise<void> posting;
        std::thread poster([&] {
            for (int i = 0; i < 200; ++i) {
                queue.post([&] { lateRuns += isStopped ? 1 : 0; });
                if (i == 20) posting.set_value();
            }
        });
        posting.get_future().wait();
        queue.stop(inTime());
        isStopped = true;
        poster.join();
        EXPECT_EQ(lateRuns, 0);
    }
}

TEST(SerialDispatchQueueTest, TaskMayStopItsQueue) {
    SerialDispatchQueue queue("queue");
    int runs = 0;
    std::promise<void> gate;
    queue.post([&] {
        gate.get_future().wait();
        queue.stop(inTime());
        ++runs;
    });
    queue.post([&runs] { runs += 100; });
    gate.set_value();
    ASSERT_TRUE(queue.waitUntilIdle(inTime()));
    EXPECT_EQ(runs, 1);
}

TEST(SerialDispatchQueueTest, StopsDuringTheWaitForADelayedTask) {
    for (int round = 0; round < 50; ++round) {
        SerialDispatchQueue queue("queue");
        queue.postAfter(3600, [] { FAIL(); });
        // The deadline has passed: the delayed task is destroyed while the thread still waits for it.
        queue.stop(SteadyClock::now());
        EXPECT_TRUE(queue.isIdle());
    }
}

TEST(SerialDispatchQueueTest, TaskIsDestroyedBeforeTheQueueIsIdle) {
    SerialDispatchQueue queue("queue");
    auto held = std::make_shared<int>(1);
    const std::weak_ptr<int> seen = held;
    queue.post([held = std::move(held)] {});
    ASSERT_TRUE(queue.waitUntilIdle(inTime()));
    EXPECT_TRUE(seen.expired());
}

TEST(SerialDispatchQueueTest, DroppedTasksDestructorMayPost) {
    struct Asking {
        explicit Asking(SerialDispatchQueue& asked) : queue(asked) {}
        Asking(const Asking&) = delete;
        Asking& operator=(const Asking&) = delete;
        ~Asking() {
            queue.post([] {});
        }
        SerialDispatchQueue& queue;
    };
    SerialDispatchQueue queue("queue");
    queue.postAfter(3600, [asking = std::make_shared<Asking>(queue)] {});
    queue.stop(inTime());
    EXPECT_TRUE(queue.isIdle());
}

TEST(SerialDispatchQueueTest, ManyThreadsMayPost) {
    SerialDispatchQueue queue("queue");
    int runs = 0;
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&] {
            for (int task = 0; task < 250; ++task) queue.post([&runs] { ++runs; });
        });
    }
    for (auto& thread : threads) thread.join();
    ASSERT_TRUE(queue.waitUntilIdle(inTime()));
    EXPECT_EQ(runs, 1000);
}

/// Whether this process has the thread.
bool isThere(pid_t thread) { return std::filesystem::exists("/proc/self/task/" + std::to_string(thread)); }

void waitForTheEndOf(pid_t thread) {
    const auto deadline = inTime();
    while (isThere(thread) && SteadyClock::now() < deadline) std::this_thread::yield();
}

TEST(SerialDispatchQueueTest, IdleThreadEndsAndTheNextTaskStartsAnother) {
    SerialDispatchQueue queue("queue", std::chrono::milliseconds(1));
    for (int round = 0; round < 3; ++round) {
        std::atomic<pid_t> thread = 0;
        queue.post([&thread] { thread = gettid(); });
        ASSERT_TRUE(queue.waitUntilIdle(inTime()));
        ASSERT_NE(thread, 0);
        waitForTheEndOf(thread);
        EXPECT_FALSE(isThere(thread));
        EXPECT_FALSE(queue.isCurrent());
    }
}

TEST(SerialDispatchQueueTest, ThreadStaysForADelayedTask) {
    SerialDispatchQueue queue("queue", std::chrono::milliseconds(0));
    std::promise<void> ran;
    queue.postAfter(0.05, [&ran] { ran.set_value(); });
    EXPECT_EQ(ran.get_future().wait_until(inTime()), std::future_status::ready);
}

TEST(SerialDispatchQueueTest, NoTaskIsLostWhileThreadsComeAndGo) {
    int runs = 0;
    {
        SerialDispatchQueue queue("queue", std::chrono::milliseconds(0));
        std::vector<std::thread> threads;
        for (int i = 0; i < 3; ++i) {
            threads.emplace_back([&] {
                for (int task = 0; task < 200; ++task) {
                    queue.post([&runs] { ++runs; });
                    if (task % 10 == 0) queue.waitUntilIdle(inTime());
                }
            });
        }
        for (auto& thread : threads) thread.join();
    }
    EXPECT_EQ(runs, 600);
}

/// Calls `end` when its thread ends.
struct ThreadEnd {
    ThreadEnd() = default;
    ThreadEnd(const ThreadEnd&) = delete;
    ThreadEnd& operator=(const ThreadEnd&) = delete;
    ~ThreadEnd() {
        if (end) end();
    }
    std::function<void()> end;
};

void atTheEndOfThisThread(std::function<void()> end) {
    thread_local ThreadEnd threadEnd;
    threadEnd.end = std::move(end);
}

TEST(SerialDispatchQueueTest, EndingThreadDelaysNoOther) {
    SerialDispatchQueue queue("queue", std::chrono::milliseconds(0));
    std::promise<void> ending;
    std::promise<void> ran;
    std::promise<void> ranLast;
    queue.post([&] {
        atTheEndOfThisThread([&] {
            ending.set_value();
            ran.get_future().wait();
            queue.post([&ranLast] { ranLast.set_value(); });
        });
    });
    ASSERT_EQ(ending.get_future().wait_until(inTime()), std::future_status::ready);
    queue.post([&ran] { ran.set_value(); });
    EXPECT_EQ(ranLast.get_future().wait_until(inTime()), std::future_status::ready);
}

TEST(SerialDispatchQueueTest, EndingThreadMayPost) {
    SerialDispatchQueue queue("queue", std::chrono::milliseconds(0));
    std::promise<void> ran;
    queue.post([&] { atTheEndOfThisThread([&] { queue.post([&ran] { ran.set_value(); }); }); });
    EXPECT_EQ(ran.get_future().wait_until(inTime()), std::future_status::ready);
}

TEST(SerialDispatchQueueTest, QueueWithoutAThreadStopsAtOnce) {
    SerialDispatchQueue queue("queue", std::chrono::milliseconds(0));
    std::atomic<pid_t> thread = 0;
    queue.post([&thread] { thread = gettid(); });
    ASSERT_TRUE(queue.waitUntilIdle(inTime()));
    waitForTheEndOf(thread);
    queue.stop(inTime());
    queue.post([&thread] { thread = 0; });
    EXPECT_TRUE(queue.isIdle());
    EXPECT_NE(thread, 0);
}

}  // namespace

}  // namespace vorlane
