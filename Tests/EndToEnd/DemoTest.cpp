#include <gtest/gtest.h>

#include <chrono>
#include <string>

#include "Simulator/Support/ChildProcess.h"

namespace vorlane {

namespace {

TEST(DemoTest, TheDayKeepsEveryPromise) {
    support::ChildProcess demo({VORLANE_DEMO, VORLANE_PHONE, VORLANE_SERVICE});
    std::string last;
    while (const auto line = demo.readLine(std::chrono::seconds(120))) last = *line;
    EXPECT_EQ(demo.wait(), 0) << last;
}

TEST(DemoTest, HelpPrintsOnlyTheUsage) {
    support::ChildProcess demo({VORLANE_DEMO, "--help"});
    EXPECT_TRUE(demo.readRest().starts_with("usage: vorlane-demo PHONE_PROGRAM SERVICE_PROGRAM\n"));
    EXPECT_EQ(demo.wait(), 0);
}

TEST(DemoTest, AMissingArgumentIsAnError) {
    support::ChildProcess demo({"/bin/sh", "-c", std::string("exec ") + VORLANE_DEMO + " one 2>&1"});
    EXPECT_TRUE(demo.readRest().starts_with("usage: vorlane-demo"));
    EXPECT_EQ(demo.wait(), 2);
}

}  // namespace

}  // namespace vorlane
