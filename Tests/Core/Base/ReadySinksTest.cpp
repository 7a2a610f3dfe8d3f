#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "Public/VLConsoleLogger.h"
#include "Public/VLFileLogger.h"
#include "Public/VLLog.h"
#include "Tests/Support/SimulatedPhoneTest.h"
#include "Tests/Support/TemporaryFolder.h"

namespace vorlane {
namespace {

class ReadySinksTest : public SimulatedPhoneTest {
protected:
    static std::string contentOf(const std::filesystem::path& path) {
        std::ostringstream text;
        text << std::ifstream(path).rdbuf();
        return text.str();
    }

    const TemporaryFolder temporaryFolder;
    const std::filesystem::path folder = temporaryFolder.path();
};

TEST_F(ReadySinksTest, ConsoleLineHasTimeLevelAndPayload) {
    phone().setClock(1'769'860'800.25);
    VLConsoleLogger logger;
    logger.logMessage("a message", Value{{"key", 1}}, VLLogLevel::Warn);
    EXPECT_EQ(phone().console(), std::vector<std::string>{"2026-01-31T12:00:00.250Z WARN a message\n{\"key\":1}"});
}

TEST_F(ReadySinksTest, FileReceivesOneLinePerMessage) {
    phone().setClock(1'769'860'800);
    VLFileLogger logger((folder / "log").string());
    logger.logMessage("one", std::nullopt, VLLogLevel::Error);
    logger.logMessage("two", std::nullopt, VLLogLevel::Debug);
    EXPECT_EQ(contentOf(folder / "log"), "2026-01-31T12:00:00.000Z ERROR one\n2026-01-31T12:00:00.000Z DEBUG two\n");
}

TEST_F(ReadySinksTest, FullFileIsRenamed) {
    VLFileLogger logger((folder / "log").string(), {.longestSize = 50, .keptFiles = 1});
    for (const char* message : {"one", "two", "three"}) logger.logMessage(message, std::nullopt, VLLogLevel::Info);
    EXPECT_NE(contentOf(folder / "log").find("three"), std::string::npos);
    EXPECT_NE(contentOf(folder / "log.1").find("two"), std::string::npos);
    EXPECT_FALSE(std::filesystem::exists(folder / "log.2"));
}

TEST_F(ReadySinksTest, FailureIsReportedOnceUntilItEnds) {
    VLFileLogger logger((folder / "a/log").string(), {.longestSize = 50, .keptFiles = 1});
    for (int i = 0; i < 3; ++i) logger.logMessage("lost", std::nullopt, VLLogLevel::Info);
    const std::string report = "Cannot write log file " + (folder / "a/log").string() + ": No such file or directory";
    EXPECT_EQ(phone().console(), std::vector<std::string>{report});
    std::filesystem::create_directory(folder / "a");
    logger.logMessage("kept", std::nullopt, VLLogLevel::Info);
    EXPECT_NE(contentOf(folder / "a/log").find("kept"), std::string::npos);
    std::filesystem::remove_all(folder / "a");
    // The size is reached: the next line needs the folder again.
    logger.logMessage(std::string(100, 'x'), std::nullopt, VLLogLevel::Info);
    EXPECT_EQ(phone().console(), (std::vector<std::string>{report, report}));
}

TEST_F(ReadySinksTest, LogCallsThemOnItsQueue) {
    VLLog::sharedInstance().addLogger(std::make_shared<VLFileLogger>((folder / "log").string()));
    logMessage(VLLogLevel::Error, "through the log");
    phone().settle();
    EXPECT_NE(contentOf(folder / "log").find("ERROR through the log"), std::string::npos);
}

}  // namespace
}  // namespace vorlane
