#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <memory>

#include "Platform/Linux/Curl/CurlURLSession.h"
#include "Tests/Platform/Linux/Curl/LoopbackServer.h"
#include "Tests/Platform/Linux/Curl/SessionOutcome.h"

namespace vorlane {
namespace {

using Connection = LoopbackServer::Connection;

constexpr std::size_t kMebibyte = std::size_t{1} << 20;

std::int64_t codeOf(NSURLError code) { return static_cast<std::int64_t>(code); }

/// `count` zeros, compressed by gzip.
std::string packedZeros(std::size_t count) {
    const std::string command = "head -c " + std::to_string(count) + " /dev/zero | gzip -9";
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> pipe(popen(command.c_str(), "r"), &pclose);
    std::string packed;
    std::array<char, 65536> bytes{};
    while (const auto length = std::fread(bytes.data(), 1, bytes.size(), pipe.get()))
        packed.append(bytes.data(), length);
    return packed;
}

/// Faults of a server.
class CurlFaultTest : public testing::Test {
protected:
    /// The outcome of a GET whose connection the script continues after the request.
    SessionOutcome outcomeOf(const LoopbackServer::Script& treatment) {
        const LoopbackServer server([&treatment](Connection& connection) {
            if (connection.readRequest()) treatment(connection);
        });
        return fetch(session, requestOf(server.url("/path")));
    }

    SessionOutcome outcomeOf(const std::string& bytes) {
        return outcomeOf([&bytes](Connection& connection) { connection.write(bytes); });
    }

    CurlURLSession session{NSURLSessionConfiguration{10}};
    CurlURLSession hastySession{NSURLSessionConfiguration{0.2}};
};

TEST_F(CurlFaultTest, RefusedConnectionFails) {
    std::string url;
    {
        const LoopbackServer server([](Connection&) {});
        url = server.url("/path?q=1");
    }
    const auto outcome = fetch(session, requestOf(url));
    EXPECT_EQ(outcome.errorCode(), codeOf(NSURLError::CannotConnectToHost));
    EXPECT_EQ(outcome.data, std::nullopt);
    EXPECT_EQ(outcome.response, nullptr);
    EXPECT_EQ(outcome.error->userInfo().at("NSErrorFailingURLStringKey"), url);
    EXPECT_THAT(outcome.error->localizedDescription(), testing::HasSubstr("127.0.0.1"));
}

TEST_F(CurlFaultTest, UnknownHostIsNotFound) {
    EXPECT_EQ(fetch(session, requestOf("http://nobody..knows/")).errorCode(), codeOf(NSURLError::CannotFindHost));
}

TEST_F(CurlFaultTest, OtherSchemesAreUnsupported) {
    const auto outcome = fetch(session, requestOf("ftp://127.0.0.1/"));
    EXPECT_EQ(outcome.errorCode(), codeOf(NSURLError::UnsupportedURL));
    EXPECT_EQ(fetch(session, requestOf("file:///etc/passwd")).errorCode(), codeOf(NSURLError::UnsupportedURL));
}

TEST_F(CurlFaultTest, ResetBeforeTheResponseLosesTheConnection) {
    const auto outcome = outcomeOf([](Connection& connection) { connection.reset(); });
    EXPECT_EQ(outcome.errorCode(), codeOf(NSURLError::NetworkConnectionLost));
}

TEST_F(CurlFaultTest, EndBeforeTheResponseLosesTheConnection) {
    EXPECT_EQ(outcomeOf(std::string()).errorCode(), codeOf(NSURLError::NetworkConnectionLost));
}

TEST_F(CurlFaultTest, ResetInTheBodyLosesTheConnection) {
    const auto outcome = outcomeOf([](Connection& connection) {
        connection.write("HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\nhalf");
        connection.reset();
    });
    EXPECT_EQ(outcome.errorCode(), codeOf(NSURLError::NetworkConnectionLost));
    EXPECT_EQ(outcome.data, std::nullopt);
}

TEST_F(CurlFaultTest, ShortBodyLosesTheConnection) {
    EXPECT_EQ(outcomeOf("HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\nhalf").errorCode(),
              codeOf(NSURLError::NetworkConnectionLost));
    EXPECT_EQ(outcomeOf("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n64\r\nhalf").errorCode(),
              codeOf(NSURLError::NetworkConnectionLost));
}

TEST_F(CurlFaultTest, ResponseThatIsNotHTTPIsBad) {
    EXPECT_EQ(outcomeOf("220 mail.example ESMTP ready\r\n").errorCode(), codeOf(NSURLError::BadServerResponse));
    EXPECT_EQ(outcomeOf(std::string(100, '\0')).errorCode(), codeOf(NSURLError::BadServerResponse));
    EXPECT_EQ(outcomeOf("HTTP/9.7 200 OK\r\n\r\n").errorCode(), codeOf(NSURLError::BadServerResponse));
}

TEST_F(CurlFaultTest, SilentServerTimesOut) {
    const LoopbackServer server([](Connection& connection) { connection.staySilent(); });
    const auto start = std::chrono::steady_clock::now();
    const auto outcome = fetch(hastySession, requestOf(server.url()));
    EXPECT_EQ(outcome.errorCode(), codeOf(NSURLError::TimedOut));
    EXPECT_EQ(outcome.error->localizedDescription(), "The request timed out");
    EXPECT_EQ(outcome.error->userInfo().at("NSErrorFailingURLStringKey"), server.url());
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(200));
}

TEST_F(CurlFaultTest, StalledResponseTimesOut) {
    const LoopbackServer server([](Connection& connection) {
        connection.readRequest();
        connection.write("HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\nhalf");
        connection.staySilent();
    });
    EXPECT_EQ(fetch(hastySession, requestOf(server.url())).errorCode(), codeOf(NSURLError::TimedOut));
}

TEST_F(CurlFaultTest, StalledHandshakeTimesOut) {
    const LoopbackServer server([](Connection& connection) { connection.staySilent(); });
    const std::string url = "https" + server.url().substr(4);
    EXPECT_EQ(fetch(hastySession, requestOf(url)).errorCode(), codeOf(NSURLError::TimedOut));
}

TEST_F(CurlFaultTest, RequestsWaitingForAConnectionTimeOut) {
    const LoopbackServer server([](Connection& connection) { connection.staySilent(); });
    std::vector<PendingRequest> requests;
    for (int i = 0; i < 100; ++i) requests.emplace_back(hastySession, requestOf(server.url())).resume();
    for (auto& request : requests) EXPECT_EQ(request.outcome().errorCode(), codeOf(NSURLError::TimedOut));
}

TEST_F(CurlFaultTest, SlowResponseDoesNotTimeOut) {
    const LoopbackServer server([](Connection& connection) {
        connection.readRequest();
        connection.write("HTTP/1.1 200 OK\r\nContent-Length: 8\r\n\r\n");
        for (int i = 0; i < 8; ++i) {
            connection.pause(50);
            connection.write("x");
        }
    });
    EXPECT_EQ(fetch(hastySession, requestOf(server.url())).text(), "xxxxxxxx");
}

TEST_F(CurlFaultTest, SlowUploadDoesNotTimeOut) {
    const LoopbackServer server([](Connection& connection) {
        for (int i = 0; i < 8; ++i) {
            connection.pause(50);
            if (!connection.readBytes(4 * kMebibyte)) return;
        }
        connection.write(LoopbackServer::answer(200, "taken"));
        connection.staySilent();
    });
    const std::string body(32 * kMebibyte, 'x');
    EXPECT_EQ(fetch(hastySession, requestOf(server.url(), "POST", body)).text(), "taken");
}

TEST_F(CurlFaultTest, AcceptsAResponseOf32MiB) {
    const auto outcome = outcomeOf([](Connection& connection) {
        connection.write(LoopbackServer::answer(200, std::string(32 * kMebibyte, 'x')));
    });
    EXPECT_EQ(outcome.errorCode(), 0);
    EXPECT_EQ(outcome.data.value_or(Data()).size(), 32 * kMebibyte);
}

TEST_F(CurlFaultTest, RefusesAnAnnouncedLengthAboveTheLimit) {
    const auto outcome = outcomeOf("HTTP/1.1 200 OK\r\nContent-Length: 41943040\r\n\r\n");
    EXPECT_EQ(outcome.errorCode(), codeOf(NSURLError::DataLengthExceedsMaximum));
}

TEST_F(CurlFaultTest, AbortsAResponseAboveTheLimit) {
    const auto outcome = outcomeOf([](Connection& connection) {
        connection.write("HTTP/1.1 200 OK\r\n\r\n");
        const std::string piece(kMebibyte, 'x');
        for (int i = 0; i < 40 && connection.write(piece); ++i) {
        }
    });
    EXPECT_EQ(outcome.errorCode(), codeOf(NSURLError::DataLengthExceedsMaximum));
    EXPECT_EQ(outcome.data, std::nullopt);
}

TEST_F(CurlFaultTest, AbortsACompressedResponseAboveTheLimit) {
    const std::string packed = packedZeros(40 * kMebibyte);
    ASSERT_LT(packed.size(), kMebibyte);
    const auto outcome = outcomeOf(LoopbackServer::answer(200, packed, "Content-Encoding: gzip\r\n"));
    EXPECT_EQ(outcome.errorCode(), codeOf(NSURLError::DataLengthExceedsMaximum));
}

TEST_F(CurlFaultTest, AbortsEndlessHeaders) {
    const auto outcome = outcomeOf([](Connection& connection) {
        connection.write("HTTP/1.1 200 OK\r\n");
        const std::string line = "X-Filler: " + std::string(1000, 'x') + "\r\n";
        while (connection.write(line)) {
        }
    });
    EXPECT_EQ(outcome.errorCode(), codeOf(NSURLError::DataLengthExceedsMaximum));
}

TEST_F(CurlFaultTest, UndecodableResponseFails) {
    EXPECT_EQ(outcomeOf(LoopbackServer::answer(200, "this is not gzip", "Content-Encoding: gzip\r\n")).errorCode(),
              codeOf(NSURLError::CannotDecodeContentData));
    EXPECT_EQ(outcomeOf(LoopbackServer::answer(200, "text", "Content-Encoding: unheard-of\r\n")).errorCode(),
              codeOf(NSURLError::CannotDecodeContentData));
}

TEST_F(CurlFaultTest, SessionIsUsableAfterAFailure) {
    EXPECT_NE(outcomeOf(std::string()).errorCode(), 0);
    EXPECT_EQ(outcomeOf(LoopbackServer::answer(200, "fine")).text(), "fine");
}

}  // namespace
}  // namespace vorlane
