#include "Simulator/Platform/RecordingLogger.h"

#include <gtest/gtest.h>

namespace vorlane {

namespace {

TEST(RecordingLoggerTest, KeepsLinesWithLevelAndPayload) {
    RecordingLogger logger;
    logger.logMessage("one", std::nullopt, VLLogLevel::Info);
    logger.logMessage("two", Value(Dictionary{{"a", 1}}), VLLogLevel::Error);
    const auto lines = logger.lines();
    ASSERT_EQ(lines.size(), 2U);
    EXPECT_EQ(lines[0].message, "one");
    EXPECT_EQ(lines[0].level, VLLogLevel::Info);
    EXPECT_EQ(lines[0].payload, std::nullopt);
    EXPECT_EQ(lines[1].payload, Value(Dictionary{{"a", 1}}));
}

TEST(RecordingLoggerTest, CountsLinesByMessageAndLevel) {
    RecordingLogger logger;
    for (const auto* text : {"one", "one", "one more"}) logger.logMessage(text, std::nullopt, VLLogLevel::Info);
    logger.logMessage("one", std::nullopt, VLLogLevel::Debug);
    EXPECT_EQ(logger.count("one", VLLogLevel::Info), 2);
    EXPECT_EQ(logger.count("one", VLLogLevel::Debug), 1);
    EXPECT_EQ(logger.count("on", VLLogLevel::Info), 0);
}

TEST(RecordingLoggerTest, FindsLinesByAPart) {
    RecordingLogger logger;
    for (const auto* text : {"one", "two", "one more"}) logger.logMessage(text, std::nullopt, VLLogLevel::Info);
    const auto found = logger.linesContaining("one");
    ASSERT_EQ(found.size(), 2U);
    EXPECT_EQ(found[1].message, "one more");
    EXPECT_EQ(logger.linesContaining("").size(), 3U);
    logger.clear();
    EXPECT_TRUE(logger.lines().empty());
}

}  // namespace

}  // namespace vorlane
