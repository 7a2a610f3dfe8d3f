#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <mutex>

#include "Platform/Linux/Curl/CurlURLSession.h"
#include "Tests/Platform/Linux/Curl/LoopbackServer.h"
#include "Tests/Platform/Linux/Curl/SessionOutcome.h"
#include "Tests/Platform/Linux/Curl/TestCertificates.h"

namespace vorlane {
namespace {

using Request = LoopbackServer::Request;

std::string redirectTo(int status, const std::string& location) {
    return LoopbackServer::answer(status, "moved", "Location: " + location + "\r\n");
}

std::string described(const Request& request) {
    return request.method + " " + request.target + " " + request.body + " " +
           (request.headers.contains("content-type") ? request.headers.at("content-type") : "-");
}

class CurlRedirectTest : public testing::Test {
protected:
    /// Sends the request to a path that redirects with `status`; the target echoes the request it receives.
    std::string askedAfter(int status, const std::string& method) {
        const LoopbackServer server(LoopbackServer::answering([status](const Request& request) {
            return request.target == "/old" ? redirectTo(status, "/new")
                                            : LoopbackServer::answer(200, described(request));
        }));
        auto request = method == "GET" ? requestOf(server.url("/old")) : requestOf(server.url("/old"), method, "body");
        if (method != "GET") request.allHTTPHeaderFields["Content-Type"] = "text/x-test";
        return fetch(session, request).text();
    }

    CurlURLSession session{NSURLSessionConfiguration{10}};
};

TEST_F(CurlRedirectTest, FollowsARedirectedGET) {
    for (const int status : {301, 302, 303, 307, 308}) EXPECT_EQ(askedAfter(status, "GET"), "GET /new  -");
}

TEST_F(CurlRedirectTest, StatusDecidesWhetherAPOSTBecomesAGET) {
    for (const int status : {301, 302, 303}) EXPECT_EQ(askedAfter(status, "POST"), "GET /new  -");
    for (const int status : {307, 308}) EXPECT_EQ(askedAfter(status, "POST"), "POST /new body text/x-test");
}

TEST_F(CurlRedirectTest, OtherMethodsChangeFor303Only) {
    for (const int status : {301, 302, 307, 308}) EXPECT_EQ(askedAfter(status, "PUT"), "PUT /new body text/x-test");
    EXPECT_EQ(askedAfter(303, "PUT"), "GET /new  -");
}

TEST_F(CurlRedirectTest, Other3xxStatusesAreResponses) {
    const LoopbackServer server(LoopbackServer::answering(
        [](const Request& request) { return redirectTo(std::stoi(request.target.substr(1)), "/new"); }));
    for (const int status : {300, 305, 306}) {
        const auto outcome = fetch(session, requestOf(server.url("/" + std::to_string(status))));
        EXPECT_EQ(outcome.status(), status);
        EXPECT_EQ(outcome.text(), "moved");
    }
}

TEST_F(CurlRedirectTest, RedirectWithoutALocationIsAResponse) {
    const LoopbackServer server(
        LoopbackServer::answering([](const Request&) { return LoopbackServer::answer(302, "lost"); }));
    const auto outcome = fetch(session, requestOf(server.url()));
    EXPECT_EQ(outcome.status(), 302);
    EXPECT_EQ(outcome.text(), "lost");
}

TEST_F(CurlRedirectTest, RequestMayDeclineRedirects) {
    std::atomic<int> requests = 0;
    const LoopbackServer server(LoopbackServer::answering([&requests](const Request&) {
        ++requests;
        return redirectTo(302, "/new");
    }));
    auto request = requestOf(server.url("/old"));
    request.followsRedirects = false;
    const auto outcome = fetch(session, request);
    EXPECT_EQ(outcome.status(), 302);
    EXPECT_EQ(outcome.text(), "moved");
    EXPECT_EQ(outcome.response->URL().absoluteString(), server.url("/old"));
    EXPECT_EQ(requests, 1);
}

TEST_F(CurlRedirectTest, ResponseHasTheFinalURL) {
    const LoopbackServer server(LoopbackServer::answering([](const Request& request) {
        return request.target == "/a/old" ? redirectTo(302, "../b/new?x=1") : LoopbackServer::answer(200);
    }));
    const auto outcome = fetch(session, requestOf(server.url("/a/old")));
    EXPECT_EQ(outcome.response->URL().absoluteString(), server.url("/b/new?x=1"));
}

class CurlRedirectChainTest : public CurlRedirectTest {
protected:
    /// A request to /N is redirected N times.
    SessionOutcome fetchRedirected(int times) {
        return fetch(session, requestOf(server.url("/" + std::to_string(times))));
    }

    LoopbackServer server{LoopbackServer::answering([](const Request& request) {
        const int left = std::stoi(request.target.substr(1));
        return left > 0 ? redirectTo(302, "/" + std::to_string(left - 1)) : LoopbackServer::answer(200, "arrived");
    })};
};

TEST_F(CurlRedirectChainTest, Follows20Redirects) { EXPECT_EQ(fetchRedirected(20).text(), "arrived"); }

TEST_F(CurlRedirectChainTest, Refuses21Redirects) {
    const auto outcome = fetchRedirected(21);
    EXPECT_EQ(outcome.errorCode(), static_cast<std::int64_t>(NSURLError::HttpTooManyRedirects));
    EXPECT_EQ(outcome.error->userInfo().at("NSErrorFailingURLStringKey"), server.url("/1"));
}

TEST_F(CurlRedirectChainTest, RedirectsAreCountedPerRequest) {
    for (int i = 0; i < 3; ++i) EXPECT_EQ(fetchRedirected(15).text(), "arrived");
}

class CurlRedirectAwayTest : public CurlRedirectTest {
protected:
    SessionOutcome fetchRedirectedTo(const std::string& location, bool isSecure = false) {
        const LoopbackServer server(
            LoopbackServer::answering([&location](const Request&) { return redirectTo(302, location); }),
            isSecure ? context.get() : nullptr);
        return fetch(session,
                     {*NSURL::URLWithString(server.url()), "GET", {{"Authorization", "secret"}, {"X-Open", "1"}}});
    }

    TestCertificates certificates;
    TestCertificates::Context context = certificates.serverContext();
    CurlURLSession session{NSURLSessionConfiguration{10}, {certificates.authorityFile(), {}}};
    LoopbackServer::Script tellsHeaders = LoopbackServer::answering([](const Request& request) {
        return LoopbackServer::answer(200, std::to_string(request.headers.count("authorization")) + " " +
                                               std::to_string(request.headers.count("x-open")));
    });
};

TEST_F(CurlRedirectAwayTest, FollowsHTTPToHTTPS) {
    const LoopbackServer target(tellsHeaders, context.get());
    EXPECT_EQ(fetchRedirectedTo(target.url()).status(), 200);
}

TEST_F(CurlRedirectAwayTest, FollowsHTTPSToHTTPS) {
    const LoopbackServer target(tellsHeaders, context.get());
    EXPECT_EQ(fetchRedirectedTo(target.url(), true).status(), 200);
}

TEST_F(CurlRedirectAwayTest, RefusesHTTPSToHTTP) {
    const LoopbackServer target(tellsHeaders);
    EXPECT_EQ(fetchRedirectedTo(target.url(), true).errorCode(), static_cast<std::int64_t>(NSURLError::UnsupportedURL));
    EXPECT_EQ(target.connectionCount(), 0);
}

TEST_F(CurlRedirectAwayTest, RefusesOtherSchemes) {
    for (const char* const place : {"ftp://127.0.0.1/", "file:///etc/passwd", "myapp://open"}) {
        EXPECT_EQ(fetchRedirectedTo(place).errorCode(), static_cast<std::int64_t>(NSURLError::UnsupportedURL)) << place;
    }
}

TEST_F(CurlRedirectAwayTest, CredentialsStayWithTheirHost) {
    const LoopbackServer target(tellsHeaders);
    EXPECT_EQ(fetchRedirectedTo(target.url()).text(), "0 1");
}

}  // namespace
}  // namespace vorlane
