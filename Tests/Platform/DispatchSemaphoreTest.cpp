#include "Platform/DispatchSemaphore.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <memory>
#include <thread>
#include <utility>

#include "Platform/DispatchQueue.h"
#include "Platform/Linux/LinuxPlatform.h"
#include "Simulator/Platform/SimulatedPhone.h"

namespace vorlane {

namespace {

using SteadyClock = std::chrono::steady_clock;

/// How a wait on a serial queue ended.
struct Outcome {
    std::atomic<bool> hasStarted = false;
    std::atomic<bool> hasEnded = false;
    std::atomic<bool> wasLetThrough = false;
};

std::shared_ptr<Outcome> waitOnQueue(Platform& platform, const std::shared_ptr<DispatchQueue>& queue) {
    const auto outcome = std::make_shared<Outcome>();
    queue->post([outcome, semaphore = platform.makeSemaphore()] {
        outcome->hasStarted = true;
        outcome->wasLetThrough = semaphore->wait();
        outcome->hasEnded = true;
    });
    while (!outcome->hasStarted) std::this_thread::yield();
    return outcome;
}

/// A wait without a signal does not delay a shutdown.
void expectAbandonedAtShutdown(std::shared_ptr<Platform> platform) {
    Platform::install(platform);
    const auto queue = platform->makeSerialQueue("waiting");
    const auto outcome = waitOnQueue(*platform, queue);
    const auto start = SteadyClock::now();
    Platform::shutdown();
    EXPECT_LT(SteadyClock::now() - start, std::chrono::seconds(2));
    EXPECT_TRUE(outcome->hasEnded);
    EXPECT_FALSE(outcome->wasLetThrough);
    EXPECT_FALSE(platform->makeSemaphore()->wait());
    Platform::install(nullptr);
}

TEST(DispatchSemaphoreTest, SignalEndsOneWait) {
    SimulatedPhone phone;
    const auto semaphore = phone.makeSemaphore();
    semaphore->signal();
    semaphore->signal();
    EXPECT_TRUE(semaphore->wait());
    EXPECT_TRUE(semaphore->wait());
}

TEST(DispatchSemaphoreTest, WaitBlocksUntilTheSignal) {
    DispatchSemaphore semaphore;
    std::atomic<bool> hasSignalled = false;
    std::thread other([&] {
        hasSignalled = true;
        semaphore.signal();
    });
    EXPECT_TRUE(semaphore.wait());
    EXPECT_TRUE(hasSignalled);
    other.join();
}

TEST(DispatchSemaphoreTest, AbandonEndsWaitsWithoutASignal) {
    DispatchSemaphore semaphore;
    semaphore.signal();
    semaphore.abandon();
    EXPECT_TRUE(semaphore.wait());
    EXPECT_FALSE(semaphore.wait());
}

TEST(DispatchSemaphoreTest, SimulatedPhonesShutdownAbandonsWaits) {
    expectAbandonedAtShutdown(std::make_shared<SimulatedPhone>());
}

TEST(DispatchSemaphoreTest, LinuxPlatformsShutdownAbandonsWaits) {
    expectAbandonedAtShutdown(std::make_shared<LinuxPlatform>());
}

TEST(DispatchSemaphoreTest, ShutdownAbandonsWaitsForAnIdleHostQueue) {
    class HeldQueue : public DispatchQueue {
    public:
        void post(std::function<void()> /*task*/) override {}
        void postAfter(TimeInterval /*delay*/, std::function<void()> /*task*/) override {}
    };
    LinuxPlatform::Options options;
    options.mainQueue = std::make_shared<HeldQueue>();
    expectAbandonedAtShutdown(std::make_shared<LinuxPlatform>(options));
}

TEST(DispatchSemaphoreTest, DestroyedPlatformAbandonsWaits) {
    for (const bool isSimulated : {true, false}) {
        std::shared_ptr<Platform> platform;
        if (isSimulated) {
            platform = std::make_shared<SimulatedPhone>();
        } else {
            platform = std::make_shared<LinuxPlatform>();
        }
        const auto queue = platform->makeSerialQueue("waiting");
        const auto outcome = waitOnQueue(*platform, queue);
        platform.reset();
        EXPECT_TRUE(outcome->hasEnded) << isSimulated;
    }
}

TEST(DispatchSemaphoreTest, EndlessWaitPreventsSettling) {
    auto phone = std::make_unique<SimulatedPhone>();
    const auto queue = phone->makeSerialQueue("waiting");
    const auto outcome = waitOnQueue(*phone, queue);
    EXPECT_FALSE(phone->settle(0.02));
    EXPECT_FALSE(outcome->hasEnded);
    // While the queue exists, so that its thread is joined.
    phone.reset();
}

}  // namespace

}  // namespace vorlane
