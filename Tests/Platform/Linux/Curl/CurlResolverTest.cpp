#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <iterator>
#include <string>
#include <thread>
#include <vector>

#include "Platform/Linux/Curl/CurlURLSession.h"
#include "Platform/Linux/LinuxPlatform.h"
#include "Tests/Platform/Linux/Curl/HeldNames.h"
#include "Tests/Platform/Linux/Curl/LoopbackServer.h"
#include "Tests/Platform/Linux/Curl/SessionOutcome.h"

namespace vorlane {
namespace {

using SteadyClock = std::chrono::steady_clock;

constexpr std::int64_t kCancelled = static_cast<std::int64_t>(NSURLError::Cancelled);
constexpr std::int64_t kTimedOut = static_cast<std::int64_t>(NSURLError::TimedOut);
constexpr std::int64_t kCannotFindHost = static_cast<std::int64_t>(NSURLError::CannotFindHost);
constexpr std::ptrdiff_t kMostLookUpThreads = 4;

std::ptrdiff_t threadCount() {
    return std::distance(std::filesystem::directory_iterator("/proc/self/task"), std::filesystem::directory_iterator());
}

std::string heldURL(int number, int port = 80) {
    return "http://n" + std::to_string(number) + ".held.test:" + std::to_string(port) + "/";
}

class CurlResolverTest : public testing::Test {
protected:
    static LoopbackServer::Script answering(const std::string& body) {
        return LoopbackServer::answering([body](const auto&) { return LoopbackServer::answer(200, body); });
    }

    HeldNames names;
    LoopbackServer server{answering("answer")};
};

TEST_F(CurlResolverTest, NameThatIsFoundLateIsFetched) {
    CurlURLSession session(NSURLSessionConfiguration{10});
    PendingRequest request(session, requestOf(heldURL(1, server.port())));
    request.resume();
    HeldNames::waitForLookUps(1);
    HeldNames::release();
    EXPECT_EQ(request.outcome().text(), "answer");
}

TEST_F(CurlResolverTest, RequestsToOneNameShareOneLookUp) {
    CurlURLSession session(NSURLSessionConfiguration{10});
    std::vector<PendingRequest> requests;
    for (int i = 0; i < 20; ++i) requests.emplace_back(session, requestOf(heldURL(1, server.port()))).resume();
    // By its end the network thread has come to all requests that were resumed before.
    EXPECT_EQ(fetch(session, requestOf(server.url())).text(), "answer");
    HeldNames::release();
    for (auto& request : requests) EXPECT_EQ(request.outcome().text(), "answer");
    EXPECT_EQ(HeldNames::lookUpCount(), 1U);
}

TEST_F(CurlResolverTest, FoundAddressIsKeptForLaterConnections) {
    const LoopbackServer closing([](LoopbackServer::Connection& connection) {
        if (connection.readRequest()) connection.write(LoopbackServer::answer(200, "x", "Connection: close\r\n"));
    });
    HeldNames::release();
    CurlURLSession session(NSURLSessionConfiguration{10});
    for (int i = 0; i < 3; ++i) EXPECT_EQ(fetch(session, requestOf(heldURL(1, closing.port()))).text(), "x");
    EXPECT_EQ(closing.connectionCount(), 3);
    EXPECT_EQ(HeldNames::lookUpCount(), 1U);
}

TEST_F(CurlResolverTest, UnknownNameFailsAndNamesTheHost) {
    CurlURLSession session(NSURLSessionConfiguration{10});
    const auto outcome = fetch(session, requestOf("http://a.missing.test/"));
    EXPECT_EQ(outcome.errorCode(), kCannotFindHost);
    EXPECT_EQ(outcome.error->localizedDescription(), "Could not resolve host: a.missing.test");
}

TEST_F(CurlResolverTest, RedirectToAnotherNameIsLookedUp) {
    const std::string target = heldURL(2, server.port());
    const LoopbackServer redirecting(LoopbackServer::answering(
        [target](const auto&) { return LoopbackServer::answer(302, "", "Location: " + target + "\r\n"); }));
    HeldNames::release();
    CurlURLSession session(NSURLSessionConfiguration{10});
    EXPECT_EQ(fetch(session, requestOf(heldURL(1, redirecting.port()))).text(), "answer");
    EXPECT_EQ(HeldNames::lookUpCount(), 2U);
}

TEST_F(CurlResolverTest, HeldNameTimesOutAndDelaysNoOther) {
    CurlURLSession session(NSURLSessionConfiguration{0.2});
    PendingRequest held(session, requestOf(heldURL(1)));
    held.resume();
    HeldNames::waitForLookUps(1);
    EXPECT_EQ(fetch(session, requestOf(server.url())).text(), "answer");
    EXPECT_EQ(held.outcome().errorCode(), kTimedOut);
}

TEST_F(CurlResolverTest, RequestIsCancelledDuringItsLookUp) {
    CurlURLSession session(NSURLSessionConfiguration{10});
    PendingRequest request(session, requestOf(heldURL(1)));
    request.resume();
    HeldNames::waitForLookUps(1);
    request.cancel();
    EXPECT_EQ(request.outcome().errorCode(), kCancelled);
}

TEST_F(CurlResolverTest, StoppedSessionsShareAFewThreads) {
    const auto before = threadCount();
    for (int round = 0; round < 5; ++round) {
        CurlURLSession session(NSURLSessionConfiguration{10});
        std::vector<PendingRequest> requests;
        for (int i = 0; i < 8; ++i) requests.emplace_back(session, requestOf(heldURL(round * 8 + i))).resume();
        HeldNames::waitForLookUps(1);
        session.stop(SteadyClock::now() + std::chrono::seconds(2));
        for (auto& request : requests) EXPECT_EQ(request.outcome().errorCode(), kCancelled);
    }
    // The kernel may list a joined thread for a moment.
    while (threadCount() > before + kMostLookUpThreads) std::this_thread::yield();
    HeldNames::release();
    while (threadCount() > before) std::this_thread::yield();
}

TEST_F(CurlResolverTest, ShutdownJoinsLookUpThreads) {
    const auto before = threadCount();
    const auto platform = std::make_shared<LinuxPlatform>();
    Platform::install(platform);
    const auto session = platform->makeURLSession({});
    const auto task =
        session->dataTaskWithRequest(requestOf(heldURL(1)), [](auto, auto, auto) { HeldNames::release(); });
    task->resume();
    HeldNames::waitForLookUps(1);
    Platform::shutdown();
    while (threadCount() > before) std::this_thread::yield();
    Platform::install(nullptr);
}

}  // namespace
}  // namespace vorlane
