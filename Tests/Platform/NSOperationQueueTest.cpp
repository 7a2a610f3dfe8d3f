#include "Platform/NSOperationQueue.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <mutex>
#include <thread>
#include <vector>

#include "Platform/DispatchSemaphore.h"
#include "Tests/Support/SimulatedPhoneTest.h"

namespace vorlane {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class NSOperationQueueTest : public SimulatedPhoneTest {
protected:
    void add(int number) {
        queue->addOperationWithBlock([ran = ran, number] { ran->add(number); });
    }

    std::vector<int> ranSoFar() {
        EXPECT_TRUE(phone().settle());
        return ran->numbers();
    }

    /// The operations that ran, in order.
    class Numbers {
    public:
        void add(int number) {
            const std::lock_guard lock(mutex_);
            numbers_.push_back(number);
        }
        std::vector<int> numbers() const {
            const std::lock_guard lock(mutex_);
            return numbers_;
        }

    private:
        mutable std::mutex mutex_;
        // Guarded by mutex_.
        std::vector<int> numbers_;
    };

    std::shared_ptr<Numbers> ran = std::make_shared<Numbers>();
    std::shared_ptr<DispatchQueue> underlying = phone().makeSerialQueue("operations");
    std::unique_ptr<NSOperationQueue> queue = std::make_unique<NSOperationQueue>(underlying);
};

TEST_F(NSOperationQueueTest, OperationsRunInOrder) {
    for (int i = 0; i < 5; ++i) add(i);
    EXPECT_THAT(ranSoFar(), ElementsAre(0, 1, 2, 3, 4));
    EXPECT_EQ(queue->operationCount(), 0U);
}

TEST_F(NSOperationQueueTest, OperationsRunOnTheUnderlyingQueue) {
    std::atomic<bool> isThere = false;
    queue->addOperationWithBlock([this, &isThere] { isThere = underlying->isCurrent(); });
    phone().settle();
    EXPECT_TRUE(isThere);
}

TEST_F(NSOperationQueueTest, SuspendedQueueKeepsOperationsAndIsIdle) {
    queue->setSuspended(true);
    add(1);
    add(2);
    EXPECT_THAT(ranSoFar(), IsEmpty());
    EXPECT_TRUE(queue->isSuspended());
    EXPECT_EQ(queue->operationCount(), 2U);
    queue->setSuspended(false);
    EXPECT_FALSE(queue->isSuspended());
    EXPECT_THAT(ranSoFar(), ElementsAre(1, 2));
}

TEST_F(NSOperationQueueTest, SuspendingKeepsTheNextOperation) {
    queue->addOperationWithBlock([this] {
        queue->setSuspended(true);
        ran->add(1);
    });
    add(2);
    EXPECT_THAT(ranSoFar(), ElementsAre(1));
    queue->setSuspended(false);
    EXPECT_THAT(ranSoFar(), ElementsAre(1, 2));
}

TEST_F(NSOperationQueueTest, RepeatedResumesRunEachOperationOnce) {
    queue->setSuspended(true);
    add(1);
    for (int i = 0; i < 3; ++i) {
        queue->setSuspended(false);
        queue->setSuspended(false);
        queue->setSuspended(true);
    }
    queue->setSuspended(false);
    add(2);
    EXPECT_THAT(ranSoFar(), ElementsAre(1, 2));
}

TEST_F(NSOperationQueueTest, OperationMayAddAnother) {
    queue->addOperationWithBlock([this] {
        ran->add(1);
        add(2);
    });
    EXPECT_THAT(ranSoFar(), ElementsAre(1, 2));
}

TEST_F(NSOperationQueueTest, EmptyOperationsAreIgnored) {
    queue->setSuspended(true);
    queue->addOperationWithBlock(nullptr);
    EXPECT_EQ(queue->operationCount(), 0U);
}

TEST_F(NSOperationQueueTest, DestroyedQueueDropsWaitingOperations) {
    const auto held = std::make_shared<int>(0);
    queue->setSuspended(true);
    queue->addOperationWithBlock([held, ran = ran] { ran->add(*held); });
    EXPECT_EQ(held.use_count(), 2);
    queue.reset();
    EXPECT_EQ(held.use_count(), 1);
    EXPECT_THAT(ranSoFar(), IsEmpty());
}

TEST_F(NSOperationQueueTest, ManyThreadsMayAddAndSuspend) {
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 4; ++thread) {
        threads.emplace_back([this] {
            for (int i = 0; i < 100; ++i) {
                add(i);
                queue->setSuspended(i % 2 == 0);
            }
        });
    }
    for (auto& thread : threads) thread.join();
    queue->setSuspended(false);
    EXPECT_EQ(ranSoFar().size(), 400U);
}

TEST_F(NSOperationQueueTest, OperationMayWaitForTheMainQueue) {
    const auto semaphore = phone().makeSemaphore();
    queue->addOperationWithBlock([semaphore, ran = ran] {
        onMainQueue([semaphore] { semaphore->signal(); });
        if (semaphore->wait()) ran->add(1);
    });
    add(2);
    EXPECT_THAT(ranSoFar(), ElementsAre(1, 2));
}

}  // namespace

}  // namespace vorlane
