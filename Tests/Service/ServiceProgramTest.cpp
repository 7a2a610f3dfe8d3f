#include <gtest/gtest.h>

#include <csignal>
#include <fstream>
#include <string>

#include "Simulator/Service/ServiceOptions.h"
#include "Tests/Service/ServiceClient.h"
#include "Tests/Service/ServiceProgram.h"
#include "Tests/Support/TemporaryFolder.h"

namespace vorlane::service {
namespace {

TEST(ServiceProgramTest, PrintsItsOriginAndEndsWithASignal) {
    for (const int signal : {SIGTERM, SIGINT}) {
        ServiceProgram program({"--port", "0"});
        const ServiceClient client(ServiceProgram::portIn(program.nextLine()));
        EXPECT_EQ(client.get("/_admin/health").status, 200);
        program.signal(signal);
        EXPECT_EQ(program.wait(), 0);
        EXPECT_EQ(program.restOfOutput(), "");
    }
}

TEST(ServiceProgramTest, DatabasesSurviveARestart) {
    const TemporaryFolder folder;
    for (int run = 0; run < 2; ++run) {
        ServiceProgram program({"--database", folder.path("db")});
        const ServiceClient client(ServiceProgram::portIn(program.nextLine()));
        client.postJSON("/api/apps/K/tracking/T", {{"name", "t" + std::to_string(run)}, {"value", run}});
        EXPECT_EQ(client.get("/_admin/tags").json()["tags"].size(), static_cast<std::size_t>(run + 1));
        program.signal(SIGTERM);
        EXPECT_EQ(program.wait(), 0);
    }
}

TEST(ServiceProgramTest, StoredDataSurvivesAKill) {
    const TemporaryFolder folder;
    {
        ServiceProgram program({"--database", folder.path("db")});
        const ServiceClient client(ServiceProgram::portIn(program.nextLine()));
        EXPECT_EQ(client.postJSON("/api/apps/K/tracking/T", {{"name", "a"}, {"value", "1"}}).status, 200);
        program.signal(SIGKILL);
        EXPECT_EQ(program.wait(), 128 + SIGKILL);
    }
    ServiceProgram program({"--database", folder.path("db")});
    const ServiceClient client(ServiceProgram::portIn(program.nextLine()));
    EXPECT_EQ(client.get("/api/apps/K/tracking/T/tag/a").json(), Value({{"value", "1"}}));
}

TEST(ServiceProgramTest, RequestsMayBeLoggedToStandardOutput) {
    ServiceProgram program({"--log-requests", "-"});
    const ServiceClient client(ServiceProgram::portIn(program.nextLine()));
    client.get("/config/application/ios/K?trackingId=T");
    const auto line = Value::parse(program.nextLine(), nullptr, false);
    ASSERT_TRUE(line.is_object());
    EXPECT_EQ(Value::array({line}), client.get("/_admin/requests").json()["requests"]);
}

TEST(ServiceProgramTest, RequestsAreAppendedToALogFile) {
    const TemporaryFolder folder;
    std::ofstream(folder.path("log")) << "before\n";
    {
        ServiceProgram program({"--log-requests", folder.path("log")});
        const ServiceClient client(ServiceProgram::portIn(program.nextLine()));
        client.get("/config/application/ios/K");
        client.get("/other");
        program.signal(SIGTERM);
        EXPECT_EQ(program.wait(), 0);
    }
    std::ifstream log(folder.path("log"));
    std::string line;
    std::getline(log, line);
    EXPECT_EQ(line, "before");
    for (const char* endpoint : {"config", "unknown"}) {
        std::getline(log, line);
        EXPECT_EQ(Value::parse(line, nullptr, false)["endpoint"], endpoint);
    }
    EXPECT_FALSE(std::getline(log, line));
}

TEST(ServiceProgramTest, HelpPrintsOnlyTheUsage) {
    ServiceProgram program({"--help"});
    EXPECT_EQ(program.restOfOutput(), ServiceOptions::usage());
    EXPECT_EQ(program.wait(), 0);
}

TEST(ServiceProgramTest, InvalidCommandLinesAreErrors) {
    ServiceProgram program({"--prt", "1"});
    EXPECT_EQ(program.restOfOutput(), "vorlane-service: unknown option --prt\n");
    EXPECT_EQ(program.wait(), 1);
}

TEST(ServiceProgramTest, UnusableFilesAreErrors) {
    const TemporaryFolder folder;
    ServiceProgram database({"--database", folder.path("no/db")});
    EXPECT_EQ(database.restOfOutput(),
              "vorlane-service: cannot open the database " + folder.path("no/db") + ": unable to open database file\n");
    EXPECT_EQ(database.wait(), 1);
    ServiceProgram log({"--log-requests", folder.path("no/log")});
    EXPECT_EQ(log.restOfOutput(),
              "vorlane-service: cannot write " + folder.path("no/log") + ": No such file or directory\n");
    EXPECT_EQ(log.wait(), 1);
}

}  // namespace
}  // namespace vorlane::service
