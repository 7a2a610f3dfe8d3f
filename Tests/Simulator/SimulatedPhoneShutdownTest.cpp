#include <future>

#include "Platform/NSURLSession.h"
#include "Public/Vorlane.h"
#include "Tests/Support/SimulatedPhoneTest.h"

namespace vorlane {

namespace {

using SteadyClock = std::chrono::steady_clock;

class SimulatedPhoneShutdownTest : public SimulatedPhoneTest {
protected:
    using Outcome = std::optional<NSError>;

    void startRequest(const std::function<void(Outcome)>& handler) {
        phone()
            .makeURLSession({})
            ->dataTaskWithRequest({*NSURL::URLWithString("http://h/a")},
                                  [handler](auto, auto, Outcome error) { handler(error); })
            ->resume();
    }

    std::promise<void> gate;
};

TEST_F(SimulatedPhoneShutdownTest, CancelsOpenRequestsAndRunsTheirHandlers) {
    std::vector<std::int64_t> codes;
    for (int i = 0; i < 3; ++i) startRequest([&](Outcome error) { codes.push_back(error->code()); });
    Platform::shutdown();
    EXPECT_EQ(codes, std::vector<std::int64_t>(3, -999));
    EXPECT_EQ(session().openRequests(), 0U);
}

TEST_F(SimulatedPhoneShutdownTest, RunsQueuedTasksAndWhatTheyPost) {
    bool hasRun = false;
    const auto queue = phone().makeSerialQueue("worker");
    phone().mainQueue()->post([&] { queue->post([&] { phone().mainQueue()->post([&] { hasRun = true; }); }); });
    Platform::shutdown();
    EXPECT_TRUE(hasRun);
}

TEST_F(SimulatedPhoneShutdownTest, HandlersMayWaitForTheMainQueue) {
    bool wasServed = false;
    startRequest([&](const Outcome&) {
        std::promise<void> ran;
        phone().mainQueue()->post([&] { ran.set_value(); });
        wasServed = ran.get_future().wait_for(std::chrono::seconds(60)) == std::future_status::ready;
    });
    Platform::shutdown();
    EXPECT_TRUE(wasServed);
}

TEST_F(SimulatedPhoneShutdownTest, TasksPostedAfterwardsDoNotRun) {
    const auto queue = phone().makeSerialQueue("worker");
    queue->post([] {});
    queue->postAfter(0.001, [] {});
    phone().mainQueue()->postAfter(10, [] { FAIL() << "a timer"; });
    Platform::shutdown();
    queue->post([] { FAIL() << "a queue from before"; });
    phone().makeSerialQueue("late")->post([] { FAIL() << "a queue from afterwards"; });
    phone().mainQueue()->post([] { FAIL() << "the main queue"; });
    phone().advance(60);
    EXPECT_TRUE(phone().timers().empty());
    Vorlane::trackingId();
    Vorlane::registerEventWithType("a", "b");
    EXPECT_TRUE(phone().settle(0));
}

TEST_F(SimulatedPhoneShutdownTest, RequestsStartedAfterwardsAreCancelled) {
    Platform::shutdown();
    startRequest([](const Outcome&) { FAIL() << "a handler"; });
    EXPECT_EQ(session().openRequests(), 0U);
}

TEST_F(SimulatedPhoneShutdownTest, BlockedHandlersDelayItAtMost2Seconds) {
    startRequest([open = gate.get_future().share()](const Outcome&) { open.wait(); });
    const auto start = SteadyClock::now();
    Platform::shutdown();
    const auto length = SteadyClock::now() - start;
    gate.set_value();
    // Generous, because the machine may be busy; the network's timeout is far longer.
    EXPECT_LT(length, std::chrono::seconds(20));
}

TEST_F(SimulatedPhoneShutdownTest, AbandonsEndlessWork) {
    std::function<void()> again = [&] { phone().mainQueue()->post(again); };
    again();
    Platform::shutdown();
    EXPECT_TRUE(phone().settle(0));
}

TEST_F(SimulatedPhoneShutdownTest, ASecondShutdownHasNoEffect) {
    Platform::shutdown();
    Platform::shutdown();
    EXPECT_TRUE(phone().settle(0));
}

}  // namespace

}  // namespace vorlane
