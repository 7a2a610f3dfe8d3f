#include "Platform/Linux/Application/ExitGate.h"

#include <gtest/gtest.h>

#include <atomic>

#include "Simulator/Support/ChildProcess.h"
#include "Tests/Platform/Linux/Curl/LoopbackServer.h"
#include "Tests/Platform/Linux/Curl/TestCertificates.h"

namespace vorlane {
namespace {

using Connection = LoopbackServer::Connection;

/// Runs a host that ends its process in one of several ways while requests are in flight.
class ExitGateTest : public testing::TestWithParam<const char*> {
protected:
    /// Makes the host exit after so many connections and returns its status: 0 unless it crashed or a handler ran too
    /// late.
    static int statusAfter(const char* way, const LoopbackServer& server, int count, int connections,
                           const std::map<std::string, std::string>& environment = {}) {
        support::ChildProcess host({VORLANE_HOST_PROGRAM, "leave", way, server.url(), std::to_string(count)},
                                   environment);
        server.waitForConnections(connections);
        host.writeLine("leave");
        return host.wait();
    }
};

INSTANTIATE_TEST_SUITE_P(Ways, ExitGateTest, testing::Values("return", "exit", "thread", "queue"),
                         [](const auto& way) { return std::string(way.param); });

TEST_P(ExitGateTest, AHostMayExitDuringRequests) {
    const LoopbackServer server([](Connection& connection) { connection.staySilent(); });
    EXPECT_EQ(statusAfter(GetParam(), server, 50, 6), 0);
}

TEST_P(ExitGateTest, AHostMayExitDuringSecureRequests) {
    const TestCertificates certificates;
    const auto context = certificates.serverContext();
    const LoopbackServer server([](Connection& connection) { connection.staySilent(); }, context.get());
    EXPECT_EQ(statusAfter(GetParam(), server, 50, 1, {{"SSL_CERT_FILE", certificates.authorityFile()}}), 0);
}

TEST_P(ExitGateTest, AHostMayExitAfterItsFirstRequest) {
    const LoopbackServer server([](Connection& connection) { connection.staySilent(); });
    for (int i = 0; i < 10; ++i) EXPECT_EQ(statusAfter(GetParam(), server, 1, 0), 0);
}

TEST_P(ExitGateTest, AHostMayExitWithoutRequests) {
    const LoopbackServer server([](Connection&) {});
    EXPECT_EQ(statusAfter(GetParam(), server, 0, 0), 0);
}

TEST_F(ExitGateTest, AHostMayExitInsideAHandler) {
    const LoopbackServer server(
        LoopbackServer::answering([](const auto&) { return LoopbackServer::answer(200, "x"); }));
    for (int i = 0; i < 10; ++i) {
        support::ChildProcess host({VORLANE_HOST_PROGRAM, "leave", "handler", server.url(), "10"});
        EXPECT_EQ(host.wait(), 0);
    }
}

TEST_F(ExitGateTest, AForkedChildExitsAtOnce) {
    const LoopbackServer server([](Connection& connection) { connection.staySilent(); });
    // In the child, the memory of the parent's threads looks leaked.
    EXPECT_EQ(statusAfter("fork", server, 50, 6, {{"ASAN_OPTIONS", "detect_leaks=0"}}), 0);
}

TEST_F(ExitGateTest, AThrowingHandlerDoesNotDelayTheExit) {
    const LoopbackServer server([](Connection& connection) { connection.staySilent(); });
    EXPECT_EQ(statusAfter("throw", server, 1, 1), 0);
}

TEST_F(ExitGateTest, NoHandlerRunsDuringStaticDestruction) {
    const LoopbackServer server(
        LoopbackServer::answering([](const auto&) { return LoopbackServer::answer(200, "x"); }));
    for (int i = 0; i < 20; ++i) {
        support::ChildProcess host({VORLANE_HOST_PROGRAM, "leave", "busy", server.url(), "20"});
        EXPECT_EQ(host.wait(), 0);
    }
}

}  // namespace
}  // namespace vorlane
