#include "Platform/Linux/Curl/CurlURLSession.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <atomic>
#include <filesystem>
#include <mutex>
#include <set>

#include "Tests/Platform/Linux/Curl/LoopbackServer.h"
#include "Tests/Platform/Linux/Curl/SessionOutcome.h"

namespace vorlane {
namespace {

using Connection = LoopbackServer::Connection;
using Request = LoopbackServer::Request;
using testing::ElementsAre;
using testing::Key;

std::string echoed(const Request& request) {
    return LoopbackServer::answer(200, request.method + " " + request.target + " " + request.body);
}

class CurlURLSessionTest : public testing::Test {
protected:
    SessionOutcome get(const LoopbackServer& server, std::string_view path = "/") {
        return fetch(session, requestOf(server.url(path)));
    }

    /// Sends the request and returns it as the server received it.
    Request seenByServer(NSURLRequest request) {
        Request seen;
        const LoopbackServer server(LoopbackServer::answering([&seen](const Request& received) {
            seen = received;
            return LoopbackServer::answer(200);
        }));
        request.URL = *NSURL::URLWithString(server.url(request.URL.absoluteString().substr(8)));
        EXPECT_EQ(fetch(session, std::move(request)).status(), 200);
        return seen;
    }

    CurlURLSession session{NSURLSessionConfiguration{10}};
};

TEST_F(CurlURLSessionTest, ResponseHasStatusURLAndBody) {
    const LoopbackServer server(LoopbackServer::answering(echoed));
    const auto outcome = get(server, "/path?q=1");
    EXPECT_EQ(outcome.errorCode(), 0);
    EXPECT_EQ(outcome.status(), 200);
    EXPECT_EQ(outcome.text(), "GET /path?q=1 ");
    EXPECT_EQ(outcome.response->URL().absoluteString(), server.url("/path?q=1"));
}

TEST_F(CurlURLSessionTest, ChildProgramsInheritNoConnection) {
    const LoopbackServer server(LoopbackServer::answering(echoed));
    get(server);
    int connections = 0;
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
        const int descriptor = std::stoi(entry.path().filename());
        sockaddr_in peer{};
        socklen_t length = sizeof peer;
        if (getpeername(descriptor, reinterpret_cast<sockaddr*>(&peer), &length) != 0) continue;
        if (peer.sin_family != AF_INET || ntohs(peer.sin_port) != server.port()) continue;
        ++connections;
        EXPECT_NE(fcntl(descriptor, F_GETFD) & FD_CLOEXEC, 0);
    }
    EXPECT_EQ(connections, 1);
}

TEST_F(CurlURLSessionTest, EmptyBodyIsNullopt) {
    const LoopbackServer server([](Connection& connection) {
        while (connection.readRequest()) connection.write("HTTP/1.1 204 No Content\r\n\r\n");
    });
    const auto outcome = get(server);
    EXPECT_EQ(outcome.status(), 204);
    EXPECT_EQ(outcome.data, std::nullopt);
    EXPECT_EQ(outcome.error, std::nullopt);
}

TEST_F(CurlURLSessionTest, ErrorStatusIsAResponse) {
    const LoopbackServer server(LoopbackServer::answering(
        [](const Request& request) { return LoopbackServer::answer(std::stoi(request.target.substr(1)), "sorry"); }));
    for (const int status : {400, 401, 404, 500, 503, 304 + 100}) {
        const auto outcome = get(server, "/" + std::to_string(status));
        EXPECT_EQ(outcome.status(), status);
        EXPECT_EQ(outcome.text(), "sorry");
        EXPECT_EQ(outcome.error, std::nullopt);
    }
}

TEST_F(CurlURLSessionTest, BodiesMayHoldAnyByte) {
    std::string bytes;
    for (int i = 0; i < 1024; ++i) bytes += static_cast<char>(i % 256);
    const LoopbackServer server(
        LoopbackServer::answering([](const Request& request) { return LoopbackServer::answer(200, request.body); }));
    EXPECT_EQ(fetch(session, requestOf(server.url(), "POST", bytes)).text(), bytes);
}

TEST_F(CurlURLSessionTest, GETSendsNoExtraHeaders) {
    const Request seen = seenByServer(requestOf("http://x/path"));
    EXPECT_EQ(seen.method, "GET");
    EXPECT_EQ(seen.target, "/path");
    EXPECT_EQ(seen.body, "");
    EXPECT_THAT(seen.headers, ElementsAre(Key("accept"), Key("accept-encoding"), Key("host"), Key("user-agent")));
    EXPECT_EQ(seen.headers.at("user-agent"), "Vorlane/2.0.1");
    EXPECT_EQ(seen.headers.at("accept"), "*/*");
    EXPECT_THAT(seen.headers.at("accept-encoding"), testing::HasSubstr("gzip"));
}

TEST_F(CurlURLSessionTest, POSTAddsNoContentTypeAndNoExpect) {
    // For a body of this length libcurl sends "Expect" by default.
    const std::string body(2 << 20, 'x');
    const Request seen = seenByServer(requestOf("http://x/", "POST", body));
    EXPECT_EQ(seen.method, "POST");
    EXPECT_EQ(seen.body, body);
    EXPECT_THAT(seen.headers, ElementsAre(Key("accept"), Key("accept-encoding"), Key("content-length"), Key("host"),
                                          Key("user-agent")));
}

TEST_F(CurlURLSessionTest, SendsTheGivenHeaders) {
    auto request = requestOf("http://x/", "POST", "{}");
    request.allHTTPHeaderFields = {{"Content-Type", "application/json"}, {"X-Empty", ""}, {"X-Text", "a b"}};
    const Request seen = seenByServer(request);
    EXPECT_EQ(seen.headers.at("content-type"), "application/json");
    EXPECT_EQ(seen.headers.at("x-empty"), "");
    EXPECT_EQ(seen.headers.at("x-text"), "a b");
    EXPECT_EQ(seen.headers.at("content-length"), "2");
}

TEST_F(CurlURLSessionTest, OmitsHeadersWithLineBreaks) {
    auto request = requestOf("http://x/");
    request.allHTTPHeaderFields = {{"X-Good", "1"}, {"X-Bad", "1\r\nX-Smuggled: 1"}, {"X-Worse\r\nX-Smuggled", "1"}};
    const Request seen = seenByServer(request);
    EXPECT_EQ(seen.headers.count("x-good"), 1U);
    EXPECT_EQ(seen.headers.count("x-bad"), 0U);
    EXPECT_EQ(seen.headers.count("x-smuggled"), 0U);
}

TEST_F(CurlURLSessionTest, SendsEveryMethod) {
    EXPECT_EQ(seenByServer(requestOf("http://x/", "DELETE")).method, "DELETE");
    EXPECT_EQ(seenByServer(requestOf("http://x/", "OPTIONS")).method, "OPTIONS");
    EXPECT_EQ(seenByServer(requestOf("http://x/", "HEAD")).method, "HEAD");
    const Request put = seenByServer(requestOf("http://x/", "PUT", "body"));
    EXPECT_EQ(put.method, "PUT");
    EXPECT_EQ(put.body, "body");
}

TEST_F(CurlURLSessionTest, POSTWithoutABodyHasLength0) {
    EXPECT_EQ(seenByServer(requestOf("http://x/", "POST")).headers.at("content-length"), "0");
    EXPECT_EQ(seenByServer(requestOf("http://x/", "POST", "")).headers.at("content-length"), "0");
    EXPECT_EQ(seenByServer(requestOf("http://x/", "PUT")).headers.at("content-length"), "0");
}

TEST_F(CurlURLSessionTest, ConnectionsAreReused) {
    const LoopbackServer server(LoopbackServer::answering(echoed));
    for (int i = 0; i < 20; ++i) EXPECT_EQ(get(server).status(), 200);
    EXPECT_EQ(server.connectionCount(), 1);
}

TEST_F(CurlURLSessionTest, UsesAtMost6ConnectionsPerHost) {
    const LoopbackServer server(LoopbackServer::answering(echoed));
    std::vector<PendingRequest> requests;
    for (int i = 0; i < 300; ++i)
        requests.emplace_back(session, requestOf(server.url("/" + std::to_string(i)))).resume();
    for (int i = 0; i < 300; ++i) {
        EXPECT_EQ(requests[static_cast<std::size_t>(i)].outcome().text(), "GET /" + std::to_string(i) + " ");
    }
    EXPECT_LE(server.mostConnections(), 6);
    EXPECT_LE(server.connectionCount(), 6);
}

TEST_F(CurlURLSessionTest, SilentHostDoesNotDelayOthers) {
    const LoopbackServer silent([](Connection& connection) { connection.staySilent(); });
    const LoopbackServer server(LoopbackServer::answering(echoed));
    std::vector<PendingRequest> requests;
    for (int i = 0; i < 300; ++i) requests.emplace_back(session, requestOf(silent.url())).resume();
    EXPECT_EQ(get(server).status(), 200);
}

TEST_F(CurlURLSessionTest, ReconnectsAfterTheServerCloses) {
    const LoopbackServer server([](Connection& connection) {
        if (connection.readRequest()) connection.write(LoopbackServer::answer(200));
    });
    for (int i = 0; i < 10; ++i) EXPECT_EQ(fetch(session, requestOf(server.url(), "POST", "x")).status(), 200);
}

TEST_F(CurlURLSessionTest, HandlersRunOnOneThread) {
    const LoopbackServer server(LoopbackServer::answering(echoed));
    std::atomic<int> running = 0;
    std::atomic<bool> haveOverlapped = false;
    std::mutex mutex;
    std::set<std::thread::id> threads;
    for (int i = 0; i < 100; ++i) {
        session
            .dataTaskWithRequest(requestOf(server.url()),
                                 [&](auto, auto, auto) {
                                     if (++running > 1) haveOverlapped = true;
                                     const std::lock_guard lock(mutex);
                                     threads.insert(std::this_thread::get_id());
                                     --running;
                                 })
            ->resume();
    }
    EXPECT_EQ(get(server).status(), 200);
    session.stop(std::chrono::steady_clock::now() + std::chrono::seconds(10));
    EXPECT_FALSE(haveOverlapped);
    EXPECT_EQ(threads.size(), 1U);
    EXPECT_EQ(threads.count(std::this_thread::get_id()), 0U);
}

TEST_F(CurlURLSessionTest, HandlerMayBeEmpty) {
    const LoopbackServer server(LoopbackServer::answering(echoed));
    session.dataTaskWithRequest(requestOf(server.url()), nullptr)->resume();
    EXPECT_EQ(get(server).status(), 200);
}

TEST_F(CurlURLSessionTest, SecondResumeHasNoEffect) {
    std::atomic<int> count = 0;
    const LoopbackServer server(LoopbackServer::answering([&count](const Request& request) {
        if (request.target == "/counted") ++count;
        return LoopbackServer::answer(200);
    }));
    PendingRequest request(session, requestOf(server.url("/counted")));
    request.resume();
    request.resume();
    EXPECT_EQ(request.outcome().status(), 200);
    request.resume();
    EXPECT_EQ(get(server).status(), 200);
    EXPECT_EQ(count, 1);
}

TEST_F(CurlURLSessionTest, HandlerMayStartARequest) {
    const LoopbackServer server(LoopbackServer::answering(echoed));
    std::promise<SessionOutcome> last;
    std::function<void(int)> start = [&](int left) {
        session
            .dataTaskWithRequest(requestOf(server.url()),
                                 [&, left](auto data, auto response, auto error) {
                                     if (left > 0) return start(left - 1);
                                     last.set_value({std::move(data), std::move(response), std::move(error), {}});
                                 })
            ->resume();
    };
    start(50);
    EXPECT_EQ(last.get_future().get().status(), 200);
}

TEST_F(CurlURLSessionTest, DecompressesResponses) {
    // "unpacked", compressed by gzip.
    constexpr unsigned char kPacked[] = {0x1f, 0x8b, 0x08, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x03,
                                         0x2b, 0xcd, 0x2b, 0x48, 0x4c, 0xce, 0x4e, 0x4d, 0x01, 0x00,
                                         0x96, 0x62, 0x2f, 0xca, 0x08, 0x00, 0x00, 0x00};
    const std::string packed(reinterpret_cast<const char*>(kPacked), sizeof kPacked);
    const LoopbackServer server(LoopbackServer::answering(
        [&packed](const Request&) { return LoopbackServer::answer(200, packed, "Content-Encoding: gzip\r\n"); }));
    const auto outcome = get(server);
    EXPECT_EQ(outcome.errorCode(), 0);
    EXPECT_EQ(outcome.text(), "unpacked");
}

TEST_F(CurlURLSessionTest, JoinsChunkedResponses) {
    const LoopbackServer server(LoopbackServer::answering([](const Request&) {
        return "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n3\r\nabc\r\n2\r\nde\r\n0\r\n\r\n";
    }));
    EXPECT_EQ(get(server).text(), "abcde");
}

}  // namespace
}  // namespace vorlane
