#include <atomic>
#include <future>
#include <mutex>

#include "Platform/NSURLSession.h"
#include "Tests/Simulator/SilentServer.h"
#include "Tests/Support/SimulatedPhoneTest.h"

namespace vorlane {

namespace {

class SimulatedPhoneSettleTest : public SimulatedPhoneTest {
protected:
    std::shared_ptr<DispatchQueue> queue = phone().makeSerialQueue("one");
    std::shared_ptr<DispatchQueue> otherQueue = phone().makeSerialQueue("other");
};

TEST_F(SimulatedPhoneSettleTest, AnIdlePhoneIsSettled) {
    EXPECT_TRUE(phone().settle(0));
    EXPECT_TRUE(phone().settleQueues(0));
}

TEST_F(SimulatedPhoneSettleTest, WorkAcrossQueuesIsCompleted) {
    int hops = 0;
    std::function<void()> hop = [&] {
        if (++hops == 100) return;
        const auto next = hops % 3 == 0 ? phone().mainQueue() : hops % 3 == 1 ? queue : otherQueue;
        next->post(hop);
    };
    phone().mainQueue()->post(hop);
    EXPECT_TRUE(phone().settle());
    EXPECT_EQ(hops, 100);
}

TEST_F(SimulatedPhoneSettleTest, SerialQueuesMayWaitForTheMainQueue) {
    bool wasServed = false;
    queue->post([&] {
        std::promise<void> ran;
        phone().mainQueue()->post([&] { ran.set_value(); });
        wasServed = ran.get_future().wait_for(std::chrono::seconds(60)) == std::future_status::ready;
    });
    EXPECT_TRUE(phone().settle(60));
    EXPECT_TRUE(wasServed);
}

TEST_F(SimulatedPhoneSettleTest, ABlockedQueueIsNotSettled) {
    std::promise<void> gate;
    queue->post([open = gate.get_future().share()] { open.wait(); });
    EXPECT_FALSE(phone().settle(0.02));
    EXPECT_FALSE(phone().settleQueues(0.02));
    gate.set_value();
    EXPECT_TRUE(phone().settle());
}

TEST_F(SimulatedPhoneSettleTest, EndlessWorkFailsAfterTheTimeout) {
    bool goesOn = true;
    std::function<void()> again = [&] {
        if (goesOn) phone().mainQueue()->post(again);
    };
    again();
    EXPECT_FALSE(phone().settle(0.02));
    goesOn = false;
    EXPECT_TRUE(phone().settle());
}

TEST_F(SimulatedPhoneSettleTest, AnyNumberIsATimeout) {
    for (const double timeout : {-1.0, 0.0, 1e300}) EXPECT_TRUE(phone().settle(timeout));
}

TEST_F(SimulatedPhoneSettleTest, OpenScriptedRequestsDoNotCount) {
    const auto task = phone().makeURLSession({})->dataTaskWithRequest({*NSURL::URLWithString("http://h/a")}, nullptr);
    task->resume();
    EXPECT_TRUE(phone().settle());
    EXPECT_EQ(session().openRequests(), 1U);
}

TEST_F(SimulatedPhoneSettleTest, DestroyedQueuesDoNotCount) {
    queue->post([] {});
    queue = nullptr;
    EXPECT_TRUE(phone().settle());
}

class RealHTTPPhoneTest : public SimulatedPhoneTest {
protected:
    RealHTTPPhoneTest() : SimulatedPhoneTest({.realHTTP = true}) {}

    void startRequest() {
        urlSession = phone().makeURLSession({});
        urlSession
            ->dataTaskWithRequest(
                {*NSURL::URLWithString(server.origin())},
                [this](auto, auto, std::optional<NSError> error) { failure = error ? error->code() : kNoFailure; })
            ->resume();
    }

    SilentServer server;
    // Keeps the request from being cancelled.
    std::shared_ptr<NSURLSession> urlSession;
    static constexpr std::int64_t kNotEnded = 1, kNoFailure = 0;
    // Written on the session's queue.
    std::atomic<std::int64_t> failure = kNotEnded;
};

TEST_F(RealHTTPPhoneTest, SettleWaitsForRequestsInFlight) {
    startRequest();
    server.accept();
    EXPECT_FALSE(phone().settle(0.05));
    EXPECT_EQ(failure, kNotEnded);
    server.close();
    EXPECT_TRUE(phone().settle(60));
    EXPECT_EQ(failure, static_cast<std::int64_t>(NSURLError::NetworkConnectionLost));
}

TEST_F(RealHTTPPhoneTest, SettleQueuesDoesNotWaitForRequests) {
    startRequest();
    EXPECT_TRUE(phone().settleQueues());
    EXPECT_EQ(failure, kNotEnded);
}

TEST_F(RealHTTPPhoneTest, SuspendedTasksAreNotInFlight) {
    const auto task =
        phone().makeURLSession({})->dataTaskWithRequest({*NSURL::URLWithString(server.origin())}, nullptr);
    EXPECT_TRUE(phone().settle(0));
}

TEST_F(RealHTTPPhoneTest, ShutdownCancelsRequestsAndRunsTheirHandlers) {
    startRequest();
    Platform::shutdown();
    EXPECT_EQ(failure, static_cast<std::int64_t>(NSURLError::Cancelled));
}

}  // namespace

}  // namespace vorlane
