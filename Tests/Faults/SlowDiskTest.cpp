#include <gtest/gtest.h>

#include <chrono>
#include <fstream>
#include <map>
#include <string>

#include "Simulator/Support/ChildProcess.h"
#include "Tests/Support/TemporaryFolder.h"

namespace vorlane {

namespace {

/// Lives through the demo's day with a disk that takes 20 ms for each flush, and counts the flushes of the phone by
/// thread.
std::map<std::string, int> flushesOfADay() {
    const TemporaryFolder folder;
    support::ChildProcess demo({VORLANE_DEMO, VORLANE_PHONE, VORLANE_SERVICE},
                               {{"LD_PRELOAD", VORLANE_SLOW_DISK},
                                {"SLOW_DISK_PROGRAM", "vorlane-phone"},
                                {"SLOW_DISK_LOG", folder.path("flushes")}});
    std::string last;
    while (const auto line = demo.readLine(std::chrono::seconds(120))) last = *line;
    EXPECT_EQ(demo.wait(), 0) << last;
    std::map<std::string, int> counts;
    std::ifstream log(folder.path("flushes"));
    for (std::string thread; std::getline(log, thread);) ++counts[thread];
    return counts;
}

TEST(SlowDiskTest, TheMainThreadNeverFlushes) {
    const auto counts = flushesOfADay();
    EXPECT_FALSE(counts.contains("main")) << counts.at("main") << " flushes on the main thread";
    ASSERT_TRUE(counts.contains("vorlane.storage"));
    EXPECT_GT(counts.at("vorlane.storage"), 0);
}

}  // namespace

}  // namespace vorlane
