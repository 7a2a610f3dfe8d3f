#include <gtest/gtest.h>

#include <deque>
#include <string>

#include "Platform/Linux/Curl/CurlMultiLoop.h"
#include "Platform/Linux/Curl/CurlURLSession.h"
#include "Tests/Platform/Linux/Curl/LoopbackServer.h"
#include "Tests/Platform/Linux/Curl/SessionOutcome.h"

namespace vorlane {
namespace {

constexpr std::size_t kPiece = std::size_t{8} << 20;
constexpr std::size_t kPiecesWithinTheLimit = CurlMultiLoop::kMostHeldBytes / kPiece;

class CurlBurstTest : public testing::Test {
protected:
    PendingRequest& resumePiece() {
        requests.emplace_back(session, requestOf(silent.url(), "POST", std::string(kPiece, 'x'))).resume();
        return requests.back();
    }

    CurlURLSession session{NSURLSessionConfiguration{60}};
    LoopbackServer silent{[](LoopbackServer::Connection& connection) { connection.staySilent(); }};
    std::deque<PendingRequest> requests;
};

TEST_F(CurlBurstTest, RequestBeyondTheByteLimitFailsAtOnce) {
    for (std::size_t i = 0; i < kPiecesWithinTheLimit; ++i) EXPECT_FALSE(resumePiece().hasEnded());
    // The allowance for each task puts the sum just above the limit.
    const auto outcome = resumePiece().outcome();
    EXPECT_EQ(outcome.errorCode(), static_cast<std::int64_t>(NSURLError::Unknown));
    EXPECT_EQ(outcome.error->localizedDescription(), "Too many requests are waiting");
}

TEST_F(CurlBurstTest, EndedRequestsFreeTheirBytes) {
    for (std::size_t i = 0; i <= kPiecesWithinTheLimit; ++i) resumePiece();
    for (auto& request : requests) request.cancel();
    for (auto& request : requests) EXPECT_NE(request.outcome().errorCode(), 0);
    requests.clear();
    const LoopbackServer server(
        LoopbackServer::answering([](const auto&) { return LoopbackServer::answer(200, "answer"); }));
    EXPECT_EQ(fetch(session, requestOf(server.url())).text(), "answer");
}

TEST_F(CurlBurstTest, SingleRequestMayExceedTheLimit) {
    const LoopbackServer server([](LoopbackServer::Connection& connection) {
        if (connection.readRequest()) connection.write(LoopbackServer::answer(200, "taken"));
    });
    const std::string body(CurlMultiLoop::kMostHeldBytes + 1, 'x');
    EXPECT_EQ(fetch(session, requestOf(server.url(), "POST", body)).text(), "taken");
}

}  // namespace
}  // namespace vorlane
