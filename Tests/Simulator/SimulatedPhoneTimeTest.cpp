#include <chrono>
#include <stdexcept>

#include "Tests/Support/SimulatedPhoneTest.h"

namespace vorlane {

namespace {

class SimulatedPhoneTimeTest : public SimulatedPhoneTest {
protected:
    void after(TimeInterval delay, std::function<void()> task) {
        phone().mainQueue()->postAfter(delay, std::move(task));
    }
    std::function<void()> noting(int number) {
        return [this, number] { seen.emplace_back(number, phone().now()); };
    }

    static constexpr double kStart = 1'700'000'000.0;
    std::vector<std::pair<int, double>> seen;
};

TEST_F(SimulatedPhoneTimeTest, ClockStandsStillUntilAdvanced) {
    EXPECT_EQ(phone().now(), kStart);
    phone().settle();
    EXPECT_EQ(phone().clock().now(), kStart);
    phone().advance(12.5);
    EXPECT_EQ(phone().now(), kStart + 12.5);
    EXPECT_EQ(Platform::current().clock().now(), kStart + 12.5);
}

TEST_F(SimulatedPhoneTimeTest, TimersFireAtTheirTimes) {
    after(30, noting(3));
    after(10, noting(1));
    after(20, noting(2));
    phone().advance(25);
    EXPECT_EQ(seen, (decltype(seen){{1, kStart + 10}, {2, kStart + 20}}));
    phone().advance(5);
    EXPECT_EQ(seen.back(), (std::pair{3, kStart + 30}));
}

TEST_F(SimulatedPhoneTimeTest, TimersSetByTimersFireInTheSameAdvance) {
    after(10, [this] { after(10, noting(2)); });
    after(15, noting(1));
    phone().advance(100);
    EXPECT_EQ(seen, (decltype(seen){{1, kStart + 15}, {2, kStart + 20}}));
    EXPECT_EQ(phone().now(), kStart + 100);
}

TEST_F(SimulatedPhoneTimeTest, SettlesAfterEachTimer) {
    const auto queue = phone().makeSerialQueue("worker");
    after(10, [&, this] { queue->post([this] { phone().mainQueue()->post(noting(1)); }); });
    after(20, noting(2));
    phone().advance(60);
    EXPECT_EQ(seen, (decltype(seen){{1, kStart + 10}, {2, kStart + 20}}));
}

TEST_F(SimulatedPhoneTimeTest, TimersAreReportedAsSecondsLeft) {
    after(90, noting(1));
    after(30, noting(2));
    EXPECT_EQ(phone().timers(), (std::vector<double>{30, 90}));
    phone().advance(20);
    EXPECT_EQ(phone().timers(), (std::vector<double>{10, 70}));
    phone().advance(10);
    EXPECT_EQ(phone().timers(), std::vector<double>{60});
}

TEST_F(SimulatedPhoneTimeTest, SettingTheClockRunsNoTask) {
    after(10, noting(1));
    phone().setClock(kStart - 5);
    EXPECT_EQ(phone().now(), kStart - 5);
    phone().setClock(kStart + 50);
    EXPECT_TRUE(seen.empty());
    phone().runMainQueue();
    EXPECT_EQ(seen, (decltype(seen){{1, kStart + 50}}));
}

TEST(RealClockPhoneTest, RealClockCannotBeMoved) {
    const auto systemTime = [] {
        return std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch()).count();
    };
    const double before = systemTime();
    SimulatedPhone phone({.virtualClock = std::nullopt});
    const double shown = phone.now();
    EXPECT_GE(shown, before - 1);
    EXPECT_LE(shown, systemTime() + 1);
    EXPECT_THROW(phone.advance(1), std::logic_error);
    EXPECT_THROW(phone.setClock(1), std::logic_error);
}

TEST(RealClockPhoneTest, WaitEndsWhenATimerIsDue) {
    SimulatedPhone phone({.virtualClock = std::nullopt});
    bool hasFired = false;
    phone.mainQueue()->postAfter(0.01, [&] { hasFired = true; });
    const double start = phone.now();
    phone.waitForMainQueue();
    phone.runMainQueue();
    EXPECT_TRUE(hasFired);
    EXPECT_GE(phone.now() - start, 0.0099);
}

TEST(RealClockPhoneTest, SettleDoesNotWaitForLaterTimers) {
    SimulatedPhone phone({.virtualClock = std::nullopt});
    phone.mainQueue()->postAfter(3600, [] { FAIL(); });
    EXPECT_TRUE(phone.settle());
    EXPECT_EQ(phone.timers().size(), 1U);
}

}  // namespace

}  // namespace vorlane
