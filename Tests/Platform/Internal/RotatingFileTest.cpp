#include "Platform/Internal/RotatingFile.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "Tests/Platform/FailingSystemCalls.h"
#include "Tests/Support/TemporaryFolderTest.h"

namespace vorlane {
namespace {

class RotatingFileTest : public TemporaryFolderTest {
protected:
    RotatingFileTest() : file(logPath, 10, 2) {}

    std::string content(const std::string& suffix = "") const {
        std::ostringstream text;
        text << std::ifstream(logPath + suffix).rdbuf();
        return text.str();
    }

    const std::string logPath = path("log");
    RotatingFile file;
};

TEST_F(RotatingFileTest, AppendsUpToTheSize) {
    EXPECT_EQ(file.append("12345"), 0);
    EXPECT_EQ(file.append("67890"), 0);
    EXPECT_EQ(content(), "1234567890");
}

TEST_F(RotatingFileTest, KeepsTheNewestFullFiles) {
    for (const char* line : {"aaaaaaaa", "bbbbbbbb", "cccccccc", "dddddddd"}) EXPECT_EQ(file.append(line), 0);
    EXPECT_EQ(content(), "dddddddd");
    EXPECT_EQ(content(".1"), "cccccccc");
    EXPECT_EQ(content(".2"), "bbbbbbbb");
    EXPECT_FALSE(std::filesystem::exists(logPath + ".3"));
}

TEST_F(RotatingFileTest, KeepsNoFullFileWhenAskedForNone) {
    RotatingFile single(logPath, 10, 0);
    EXPECT_EQ(single.append("aaaaaaaa"), 0);
    EXPECT_EQ(single.append("bbbbbbbb"), 0);
    EXPECT_EQ(content(), "bbbbbbbb");
    EXPECT_FALSE(std::filesystem::exists(logPath + ".1"));
}

TEST_F(RotatingFileTest, LongLineGetsItsOwnFile) {
    EXPECT_EQ(file.append("short"), 0);
    EXPECT_EQ(file.append(std::string(100, 'x')), 0);
    EXPECT_EQ(content(), std::string(100, 'x'));
    EXPECT_EQ(content(".1"), "short");
}

TEST_F(RotatingFileTest, ContinuesAnEarlierFileWithMode0600) {
    std::ofstream(logPath) << "123456";
    chmod(logPath.c_str(), 0644);
    EXPECT_EQ(file.append("7"), 0);
    struct stat status {};
    ASSERT_EQ(stat(logPath.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0600U);
    EXPECT_EQ(file.append("89012"), 0);
    EXPECT_EQ(content(".1"), "1234567");
}

TEST_F(RotatingFileTest, ReportsAMissingFolderAndRetries) {
    RotatingFile nested(path("a/log"), 10, 2);
    EXPECT_EQ(nested.append("x"), ENOENT);
    std::filesystem::create_directory(path("a"));
    EXPECT_EQ(nested.append("x"), 0);
}

TEST_F(RotatingFileTest, FollowsNoLinkAndOpensRegularFilesOnly) {
    std::filesystem::create_symlink(path("target"), logPath);
    EXPECT_EQ(file.append("x"), ELOOP);
    EXPECT_FALSE(std::filesystem::exists(path("target")));
    std::filesystem::remove(logPath);
    ASSERT_EQ(mkfifo(logPath.c_str(), 0600), 0);
    EXPECT_NE(file.append("x"), 0);
    std::filesystem::remove(logPath);
    EXPECT_EQ(file.append("x"), 0);
}

TEST_F(RotatingFileTest, WritesInPiecesAndReportsAFullDisk) {
    FailingSystemCalls calls;
    calls.writeInPieces(2);
    EXPECT_EQ(file.append("1234567"), 0);
    EXPECT_EQ(content(), "1234567");
    calls.failWritesFrom(0);
    EXPECT_EQ(file.append("8"), ENOSPC);
}

}  // namespace
}  // namespace vorlane
