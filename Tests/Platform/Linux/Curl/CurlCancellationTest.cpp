#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>

#include "Platform/Linux/Curl/CurlURLSession.h"
#include "Tests/Platform/Linux/Curl/LoopbackServer.h"
#include "Tests/Platform/Linux/Curl/SessionOutcome.h"

namespace vorlane {
namespace {

using Connection = LoopbackServer::Connection;
using SteadyClock = std::chrono::steady_clock;

constexpr std::int64_t kCancelled = static_cast<std::int64_t>(NSURLError::Cancelled);

SteadyClock::time_point in(std::chrono::milliseconds time) { return SteadyClock::now() + time; }

class CurlCancellationTest : public testing::Test {
protected:
    CurlURLSession session{NSURLSessionConfiguration{10}};
    LoopbackServer silent{[](Connection& connection) { connection.staySilent(); }};
    LoopbackServer server{LoopbackServer::answering([](const auto&) { return LoopbackServer::answer(200, "answer"); })};
};

TEST_F(CurlCancellationTest, CancelsARunningRequest) {
    PendingRequest request(session, requestOf(silent.url()));
    request.resume();
    silent.waitForConnections(1);
    request.cancel();
    const auto outcome = request.outcome();
    EXPECT_EQ(outcome.errorCode(), kCancelled);
    EXPECT_EQ(outcome.error->userInfo().at("NSErrorFailingURLStringKey"), silent.url());
}

TEST_F(CurlCancellationTest, CancelsAResumedRequest) {
    PendingRequest request(session, requestOf(silent.url()));
    request.resume();
    request.cancel();
    EXPECT_EQ(request.outcome().errorCode(), kCancelled);
}

TEST_F(CurlCancellationTest, CancelledSuspendedRequestIsNotSent) {
    PendingRequest request(session, requestOf(server.url()));
    request.cancel();
    EXPECT_EQ(request.outcome().errorCode(), kCancelled);
    request.resume();
    session.stop(in(std::chrono::seconds(10)));
    EXPECT_EQ(server.connectionCount(), 0);
}

TEST_F(CurlCancellationTest, CancelsARequestThatWaitsForAConnection) {
    std::vector<PendingRequest> requests;
    for (int i = 0; i < 50; ++i) requests.emplace_back(session, requestOf(silent.url())).resume();
    silent.waitForConnections(6);
    requests.back().cancel();
    EXPECT_EQ(requests.back().outcome().errorCode(), kCancelled);
}

TEST_F(CurlCancellationTest, CancelledRequestsFreeTheirConnections) {
    std::atomic<bool> isSilent = true;
    const LoopbackServer moody([&isSilent](Connection& connection) {
        while (connection.readRequest()) {
            if (isSilent) return connection.staySilent();
            connection.write(LoopbackServer::answer(200));
        }
    });
    std::vector<PendingRequest> requests;
    for (int i = 0; i < 12; ++i) requests.emplace_back(session, requestOf(moody.url())).resume();
    moody.waitForConnections(6);
    PendingRequest next(session, requestOf(moody.url()));
    next.resume();
    isSilent = false;
    for (auto& request : requests) request.cancel();
    EXPECT_EQ(next.outcome().status(), 200);
}

TEST_F(CurlCancellationTest, CancelAfterTheEndHasNoEffect) {
    PendingRequest request(session, requestOf(server.url()));
    request.resume();
    EXPECT_EQ(request.outcome().text(), "answer");
    request.cancel();
    EXPECT_EQ(fetch(session, requestOf(server.url())).text(), "answer");
}

TEST_F(CurlCancellationTest, ConcurrentCancelsEndARequestOnce) {
    for (int round = 0; round < 50; ++round) {
        std::atomic<int> ends = 0;
        const auto task = session.dataTaskWithRequest(requestOf(server.url()), [&ends](auto, auto, auto) { ++ends; });
        std::thread canceller([&task] { task->cancel(); });
        task->resume();
        task->cancel();
        canceller.join();
        EXPECT_EQ(fetch(session, requestOf(server.url())).text(), "answer");
        EXPECT_TRUE(session.waitUntilDelivered(in(std::chrono::seconds(10))));
        EXPECT_EQ(ends, 1);
    }
}

TEST_F(CurlCancellationTest, StopCancelsRequestsAndWaitsForHandlers) {
    std::atomic<int> cancelled = 0;
    for (int i = 0; i < 100; ++i) {
        session
            .dataTaskWithRequest(requestOf(silent.url()),
                                 [&cancelled](auto, auto, auto error) {
                                     if (error && error->code() == kCancelled) ++cancelled;
                                 })
            ->resume();
    }
    silent.waitForConnections(6);
    const auto start = SteadyClock::now();
    session.stop(in(std::chrono::seconds(2)));
    RecordProperty("milliseconds", static_cast<int>((SteadyClock::now() - start) / std::chrono::milliseconds(1)));
    EXPECT_LT(SteadyClock::now() - start, std::chrono::seconds(2));
    EXPECT_EQ(cancelled, 100);
}

TEST_F(CurlCancellationTest, StopWithoutRequestsReturnsAtOnce) {
    session.stop(in(std::chrono::milliseconds(0)));
    EXPECT_TRUE(session.hasDelivered());
}

TEST_F(CurlCancellationTest, RequestAfterStopIsCancelled) {
    EXPECT_EQ(fetch(session, requestOf(server.url())).text(), "answer");
    PendingRequest early(session, requestOf(server.url()));
    session.stop(in(std::chrono::seconds(2)));
    early.resume();
    EXPECT_EQ(early.outcome().errorCode(), kCancelled);
    EXPECT_EQ(fetch(session, requestOf(server.url())).errorCode(), kCancelled);
}

TEST_F(CurlCancellationTest, SecondStopHasNoEffect) {
    session.stop(in(std::chrono::seconds(2)));
    session.stop(in(std::chrono::seconds(2)));
    EXPECT_EQ(fetch(session, requestOf(server.url())).errorCode(), kCancelled);
}

TEST_F(CurlCancellationTest, NoHandlerRunsAfterClose) {
    std::atomic<bool> hasRun = false;
    const auto task =
        session.dataTaskWithRequest(requestOf(server.url()), [&hasRun](auto, auto, auto) { hasRun = true; });
    session.stop(in(std::chrono::seconds(2)));
    session.close(in(std::chrono::seconds(2)));
    task->resume();
    EXPECT_FALSE(hasRun);
}

TEST_F(CurlCancellationTest, DestroyedSessionCancelsItsRequests) {
    auto brief = std::make_unique<CurlURLSession>(NSURLSessionConfiguration{10});
    PendingRequest request(*brief, requestOf(silent.url()));
    request.resume();
    silent.waitForConnections(1);
    brief.reset();
    ASSERT_TRUE(request.hasEnded());
    EXPECT_EQ(request.outcome().errorCode(), kCancelled);
}

TEST_F(CurlCancellationTest, HandlerMayDestroyTheSession) {
    auto brief = std::make_shared<CurlURLSession>(NSURLSessionConfiguration{10});
    std::promise<void> done;
    CurlURLSession& running = *brief;
    running
        .dataTaskWithRequest(requestOf(server.url()),
                             [last = std::move(brief), &done](auto, auto, auto) mutable {
                                 last.reset();
                                 done.set_value();
                             })
        ->resume();
    done.get_future().get();
}

TEST_F(CurlCancellationTest, HandlerIsDestroyedAfterItsCall) {
    auto held = std::make_shared<int>(1);
    const std::weak_ptr<int> observed = held;
    std::promise<void> called;
    session.dataTaskWithRequest(requestOf(server.url()), [held, &called](auto, auto, auto) { called.set_value(); })
        ->resume();
    held.reset();
    called.get_future().get();
    EXPECT_TRUE(session.waitUntilDelivered(in(std::chrono::seconds(10))));
    EXPECT_TRUE(observed.expired());
}

}  // namespace
}  // namespace vorlane
