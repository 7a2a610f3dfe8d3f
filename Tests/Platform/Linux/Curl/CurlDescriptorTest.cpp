#include <gtest/gtest.h>
#include <sys/resource.h>

#include <chrono>

#include "Platform/Linux/Curl/CurlURLSession.h"
#include "Tests/Platform/Linux/Curl/LoopbackServer.h"
#include "Tests/Platform/Linux/Curl/SessionOutcome.h"

namespace vorlane {
namespace {

/// Leaves the process no descriptor for a new file or socket while it exists.
class NoDescriptors {
public:
    NoDescriptors() {
        getrlimit(RLIMIT_NOFILE, &before_);
        rlimit none = before_;
        none.rlim_cur = 0;
        setrlimit(RLIMIT_NOFILE, &none);
    }
    ~NoDescriptors() { setrlimit(RLIMIT_NOFILE, &before_); }
    NoDescriptors(const NoDescriptors&) = delete;
    NoDescriptors& operator=(const NoDescriptors&) = delete;

private:
    rlimit before_{};
};

class CurlDescriptorTest : public testing::Test {
protected:
    LoopbackServer server{LoopbackServer::answering([](const auto&) { return LoopbackServer::answer(200, "answer"); })};
    CurlURLSession session{NSURLSessionConfiguration{10}};
};

TEST_F(CurlDescriptorTest, RequestsWithoutDescriptorsFail) {
    const NoDescriptors none;
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(fetch(session, requestOf(server.url())).errorCode(), static_cast<std::int64_t>(NSURLError::Unknown));
    }
}

TEST_F(CurlDescriptorTest, SessionRecoversWhenDescriptorsReturn) {
    {
        const NoDescriptors none;
        EXPECT_NE(fetch(session, requestOf(server.url())).errorCode(), 0);
    }
    PendingRequest request(session, requestOf(server.url()));
    request.resume();
    ASSERT_TRUE(request.endsWithin(std::chrono::seconds(5)));
    EXPECT_EQ(request.outcome().text(), "answer");
}

TEST_F(CurlDescriptorTest, SessionStopsWithoutDescriptors) {
    const NoDescriptors none;
    EXPECT_NE(fetch(session, requestOf(server.url())).errorCode(), 0);
    const auto start = std::chrono::steady_clock::now();
    session.stop(start + std::chrono::seconds(10));
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
}

}  // namespace
}  // namespace vorlane
