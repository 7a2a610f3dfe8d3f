#include "Platform/NSTimer.h"

#include <gtest/gtest.h>

#include "Platform/DispatchGroup.h"
#include "Tests/Support/SimulatedPhoneTest.h"

namespace vorlane {

namespace {

class NSTimerTest : public SimulatedPhoneTest {};

TEST_F(NSTimerTest, FiresOnceWithoutAnOwner) {
    int fired = 0;
    phone().scheduledTimer(5, [&] { ++fired; });
    EXPECT_EQ(phone().timers(), std::vector<double>{5});
    phone().advance(4.9);
    EXPECT_EQ(fired, 0);
    phone().advance(100);
    EXPECT_EQ(fired, 1);
    EXPECT_TRUE(phone().timers().empty());
}

TEST_F(NSTimerTest, InvalidatedTimerDoesNotFire) {
    int fired = 0;
    const auto timer = phone().scheduledTimer(5, [&] { ++fired; });
    EXPECT_TRUE(timer->isValid());
    timer->invalidate();
    timer->invalidate();
    EXPECT_FALSE(timer->isValid());
    EXPECT_TRUE(phone().timers().empty());
    phone().advance(10);
    EXPECT_EQ(fired, 0);
}

TEST_F(NSTimerTest, FiredTimerIsNotValid) {
    const auto timer = phone().scheduledTimer(5, [] {});
    phone().advance(5);
    EXPECT_FALSE(timer->isValid());
    timer->invalidate();
}

TEST_F(NSTimerTest, PlatformTimerCanBeInvalidated) {
    int fired = 0;
    phone().Platform::scheduledTimer(5, [&] { ++fired; });
    phone().Platform::scheduledTimer(6, [&] { ++fired; })->invalidate();
    phone().advance(10);
    EXPECT_EQ(fired, 1);
}

TEST_F(NSTimerTest, TimerMayInvalidateItself) {
    std::shared_ptr<NSTimer> timer;
    int fired = 0;
    timer = phone().scheduledTimer(1, [&] {
        ++fired;
        timer->invalidate();
    });
    phone().advance(2);
    EXPECT_EQ(fired, 1);
}

class DispatchGroupTest : public SimulatedPhoneTest {
protected:
    int notices = 0;
    DispatchGroup group;
    void notify() {
        group.notify(phone().mainQueue(), [this] { ++notices; });
    }
};

TEST_F(DispatchGroupTest, EmptyGroupPostsItsNotification) {
    notify();
    EXPECT_EQ(notices, 0);
    phone().runMainQueue();
    EXPECT_EQ(notices, 1);
}

TEST_F(DispatchGroupTest, NotifiesOnceAfterTheLastLeave) {
    group.enter();
    group.enter();
    notify();
    group.leave();
    phone().runMainQueue();
    EXPECT_EQ(notices, 0);
    group.leave();
    phone().runMainQueue();
    EXPECT_EQ(notices, 1);
    group.enter();
    group.leave();
    phone().runMainQueue();
    EXPECT_EQ(notices, 1);
}

}  // namespace

}  // namespace vorlane
