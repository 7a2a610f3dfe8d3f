#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Platform/Linux/Curl/CurlURLSession.h"
#include "Tests/Platform/Linux/Curl/HTTP2Script.h"
#include "Tests/Platform/Linux/Curl/LoopbackServer.h"
#include "Tests/Platform/Linux/Curl/SessionOutcome.h"
#include "Tests/Platform/Linux/Curl/TestCertificates.h"

namespace vorlane {
namespace {

constexpr long kDay = 24 * 60 * 60;

class CurlSecurityTest : public testing::Test {
protected:
    SessionOutcome outcomeWith(const TestCertificates::Subject& subject) {
        const auto context = certificates.serverContext(subject);
        const LoopbackServer server(answers, context.get());
        return fetch(session, requestOf(server.url()));
    }

    std::int64_t errorWith(const TestCertificates::Subject& subject) { return outcomeWith(subject).errorCode(); }

    TestCertificates certificates;
    CurlURLSession session{NSURLSessionConfiguration{10}, {certificates.authorityFile(), {}}};
    LoopbackServer::Script answers =
        LoopbackServer::answering([](const LoopbackServer::Request&) { return LoopbackServer::answer(200, "safe"); });
};

TEST_F(CurlSecurityTest, TrustsAValidCertificate) { EXPECT_EQ(outcomeWith({}).text(), "safe"); }

TEST_F(CurlSecurityTest, ReportsAnExpiredCertificate) {
    EXPECT_EQ(errorWith({.notBefore = -2 * kDay, .notAfter = -kDay}),
              static_cast<std::int64_t>(NSURLError::ServerCertificateHasBadDate));
}

TEST_F(CurlSecurityTest, ReportsACertificateNotYetValid) {
    EXPECT_EQ(errorWith({.notBefore = kDay, .notAfter = 2 * kDay}),
              static_cast<std::int64_t>(NSURLError::ServerCertificateNotYetValid));
}

TEST_F(CurlSecurityTest, RefusesACertificateForAnotherHost) {
    const auto outcome = outcomeWith({.address = "127.0.0.2"});
    EXPECT_EQ(outcome.errorCode(), static_cast<std::int64_t>(NSURLError::ServerCertificateUntrusted));
    EXPECT_THAT(outcome.error->localizedDescription(), testing::HasSubstr("127.0.0.1"));
}

TEST_F(CurlSecurityTest, RefusesASelfSignedCertificate) {
    EXPECT_EQ(errorWith({.isSignedByAuthority = false}),
              static_cast<std::int64_t>(NSURLError::ServerCertificateHasUnknownRoot));
}

TEST_F(CurlSecurityTest, RefusesAnUnknownAuthority) {
    const TestCertificates others;
    const auto context = others.serverContext();
    const LoopbackServer server(answers, context.get());
    EXPECT_EQ(fetch(session, requestOf(server.url())).errorCode(),
              static_cast<std::int64_t>(NSURLError::ServerCertificateHasUnknownRoot));
}

TEST_F(CurlSecurityTest, SystemAuthoritiesExcludeTheTestAuthority) {
    CurlURLSession plainSession{NSURLSessionConfiguration{10}};
    const auto context = certificates.serverContext();
    const LoopbackServer server(answers, context.get());
    EXPECT_EQ(fetch(plainSession, requestOf(server.url())).errorCode(),
              static_cast<std::int64_t>(NSURLError::ServerCertificateHasUnknownRoot));
}

TEST_F(CurlSecurityTest, MissingCertificateFileTrustsNobody) {
    CurlURLSession blindSession{NSURLSessionConfiguration{10}, {"/nowhere/authorities.pem", {}}};
    const auto context = certificates.serverContext();
    const LoopbackServer server(answers, context.get());
    EXPECT_EQ(fetch(blindSession, requestOf(server.url())).errorCode(),
              static_cast<std::int64_t>(NSURLError::SecureConnectionFailed));
}

TEST_F(CurlSecurityTest, PlainServerFailsTheHandshake) {
    const LoopbackServer server([](LoopbackServer::Connection& connection) {
        connection.readBytes(1);
        connection.write("HTTP/1.1 200 OK\r\n\r\n");
    });
    EXPECT_EQ(fetch(session, requestOf("https" + server.url().substr(4))).errorCode(),
              static_cast<std::int64_t>(NSURLError::SecureConnectionFailed));
}

TEST_F(CurlSecurityTest, RefusesOldTLSVersions) {
    const auto context = certificates.serverContext();
    SSL_CTX_set_security_level(context.get(), 0);
    SSL_CTX_set_min_proto_version(context.get(), TLS1_VERSION);
    SSL_CTX_set_max_proto_version(context.get(), TLS1_1_VERSION);
    const LoopbackServer server(answers, context.get());
    EXPECT_EQ(fetch(session, requestOf(server.url())).errorCode(),
              static_cast<std::int64_t>(NSURLError::SecureConnectionFailed));
}

TEST_F(CurlSecurityTest, ReusesTLSConnections) {
    const auto context = certificates.serverContext();
    const LoopbackServer server(answers, context.get());
    for (int i = 0; i < 10; ++i) EXPECT_EQ(fetch(session, requestOf(server.url())).text(), "safe");
    EXPECT_EQ(server.connectionCount(), 1);
}

TEST_F(CurlSecurityTest, HTTP2RequestsShareOneConnection) {
    const auto context = certificates.serverContext();
    offerHTTP2(context.get());
    const LoopbackServer server(http2Script("multiplexed"), context.get());
    std::vector<PendingRequest> requests;
    for (int i = 0; i < 50; ++i) requests.emplace_back(session, requestOf(server.url(), "POST", "x")).resume();
    for (auto& request : requests) EXPECT_EQ(request.outcome().text(), "multiplexed");
    EXPECT_EQ(server.connectionCount(), 1);
}

TEST_F(CurlSecurityTest, HTTP1OverTLSUses6Connections) {
    const auto context = certificates.serverContext();
    const LoopbackServer server(answers, context.get());
    std::vector<PendingRequest> requests;
    for (int i = 0; i < 200; ++i) requests.emplace_back(session, requestOf(server.url())).resume();
    for (auto& request : requests) EXPECT_EQ(request.outcome().text(), "safe");
    EXPECT_LE(server.connectionCount(), 6);
}

}  // namespace
}  // namespace vorlane
