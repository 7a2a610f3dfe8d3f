#include <gtest/gtest.h>

#include <filesystem>

#include "Tests/Geo/GeoTest.h"

namespace vorlane {

namespace {

using Requests = std::vector<std::pair<Value, Value>>;

/// Handles enters and exits.
class VLGeoServiceTransitionTest : public GeoTest {
protected:
    VLGeoServiceTransitionTest() { fetch({described("1"), described("2")}); }

    void setClockTo(double seconds) { phone().setClock(start + seconds); }

    const double start = phone().now();
};

TEST_F(VLGeoServiceTransitionTest, FirstEnterRequestsContentAndIsStored) {
    enter("1");
    EXPECT_EQ(contentRequests(), (Requests{{"segment of 1", "enter"}}));
    auto entered = freshRecord("1");
    entered["in_region"] = true;
    entered["VLEnterRegionTimestamp"] = start;
    EXPECT_EQ(file(), Value(Array{entered, freshRecord("2")}));
    EXPECT_EQ(logged("************** ENTERED REGION  name of 1 *****************"), 1);
    EXPECT_EQ(logged("************** TIMER RESET INSIDE - ENTERED REGION  1 *****************"), 1);
    EXPECT_TRUE(log().linesContaining("Flapping").empty());
}

TEST_F(VLGeoServiceTransitionTest, FirstExitRequestsContentAndIsStored) {
    exit("2");
    EXPECT_EQ(contentRequests(), (Requests{{"segment of 2", "exit"}}));
    auto left = freshRecord("2");
    left["VLExitRegionTimestamp"] = start;
    EXPECT_EQ(file(), Value(Array{freshRecord("1"), left}));
    EXPECT_EQ(logged("************** EXITED REGION  name of 2 *****************"), 1);
    EXPECT_EQ(logged("************** TIMER RESET OUTSIDE - EXITED REGION  2 *****************"), 1);
}

TEST_F(VLGeoServiceTransitionTest, EnterWithinTheLimitIsIgnored) {
    enter("1");
    const auto before = file();
    for (const double later : {0.0, 299.0, 300.0}) {
        setClockTo(later);
        enter("1");
    }
    EXPECT_EQ(contentRequests().size(), 1U);
    EXPECT_EQ(file(), before);
    EXPECT_EQ(logged("Flapping for enter region:name of 1"), 3);
    EXPECT_EQ(logged("************** ENTERED REGION  name of 1 *****************"), 4);
    EXPECT_EQ(logged("************** TIMER RESET INSIDE - ENTERED REGION  1 *****************"), 1);
}

TEST_F(VLGeoServiceTransitionTest, EnterAfterTheLimitIsAccepted) {
    enter("1");
    setClockTo(300.25);
    enter("1");
    EXPECT_EQ(contentRequests().size(), 2U);
    EXPECT_EQ(file()[0]["VLEnterRegionTimestamp"], Value(start + 300.25));
    setClockTo(600.25);  // since the last accepted enter
    enter("1");
    EXPECT_EQ(contentRequests().size(), 2U);
    setClockTo(601);
    enter("1");
    EXPECT_EQ(contentRequests().size(), 3U);
}

TEST_F(VLGeoServiceTransitionTest, ExitIsComparedWithTheLastExitOnly) {
    enter("1");
    exit("1");
    EXPECT_EQ(contentRequests(), (Requests{{"segment of 1", "enter"}, {"segment of 1", "exit"}}));
    EXPECT_EQ(file()[0]["in_region"], Value(false));
    setClockTo(300);
    enter("1");
    exit("1");
    EXPECT_EQ(contentRequests().size(), 2U);
    EXPECT_EQ(logged("Flapping for exit region:name of 1"), 1);
    setClockTo(300.5);
    exit("1");
    EXPECT_EQ(contentRequests().size(), 3U);
    EXPECT_EQ(file()[0]["VLEnterRegionTimestamp"], Value(start));
    EXPECT_EQ(file()[0]["VLExitRegionTimestamp"], Value(start + 300.5));
}

TEST_F(VLGeoServiceTransitionTest, UsesTheLimitOfTheSettings) {
    settings->setGeoRegionStateChangeTime(10);
    enter("1");
    setClockTo(10);
    enter("1");
    EXPECT_EQ(contentRequests().size(), 1U);
    setClockTo(10.5);
    enter("1");
    EXPECT_EQ(contentRequests().size(), 2U);
}

TEST_F(VLGeoServiceTransitionTest, LimitOf1DayRejectsTheFirstTransition) {
    settings->setGeoRegionStateChangeTime(86400);
    enter("1");
    EXPECT_TRUE(contentRequests().empty());
    setClockTo(0.25);
    enter("1");
    EXPECT_EQ(contentRequests().size(), 1U);
    settings->setGeoRegionStateChangeTime(86399);
    exit("2");
    EXPECT_EQ(contentRequests().size(), 2U);
}

TEST_F(VLGeoServiceTransitionTest, ClockSetBackCountsAsFlapping) {
    enter("1");
    setClockTo(-100'000);
    enter("1");
    EXPECT_EQ(contentRequests().size(), 1U);
}

TEST_F(VLGeoServiceTransitionTest, RegionWithoutARecordIsIgnored) {
    const auto before = file();
    const auto lines = log().lines().size();
    enter("3");
    exit("3");
    EXPECT_TRUE(contentRequests().empty());
    EXPECT_EQ(file(), before);
    EXPECT_EQ(log().lines().size(), lines);
}

TEST_F(VLGeoServiceTransitionTest, CrossingsAreIgnoredWithoutAFile) {
    std::filesystem::remove(VLGeoRegionFile::path());
    geo = makeService();
    enter("1");
    exit("1");
    EXPECT_TRUE(contentRequests().empty());
    EXPECT_TRUE(file().is_null());
}

TEST_F(VLGeoServiceTransitionTest, RecordWithoutASegmentRequestsNothing) {
    auto record = freshRecord("1");
    record.erase("plotwise_id");
    record.erase("name");
    restartWithFile(Array{record});
    enter("1");
    EXPECT_TRUE(contentRequests().empty());
    EXPECT_EQ(file()[0]["VLEnterRegionTimestamp"], Value(start));
    EXPECT_EQ(logged("************** ENTERED REGION  (null) *****************"), 1);
    enter("1");
    EXPECT_EQ(logged("Flapping for enter region:(null)"), 1);
}

TEST_F(VLGeoServiceTransitionTest, HandlesEveryRecordOfTheIdentifier) {
    auto second = freshRecord("1");
    second["plotwise_id"] = 7;
    second["VLEnterRegionTimestamp"] = start - 1;
    auto third = freshRecord("1");
    third["plotwise_id"] = 8;
    restartWithFile(Array{freshRecord("1"), second, third});
    enter("1");
    EXPECT_EQ(contentRequests(), (Requests{{"segment of 1", "enter"}, {8, "enter"}}));
    EXPECT_EQ(logged("Flapping for enter region:name of 1"), 1);
}

TEST_F(VLGeoServiceTransitionTest, RecordWithoutTimestampsIsAccepted) {
    auto record = freshRecord("1");
    record["VLEnterRegionTimestamp"] = "never";
    record.erase("VLExitRegionTimestamp");
    restartWithFile(Array{5, record, "text"});
    enter("1");
    exit("1");
    EXPECT_EQ(contentRequests().size(), 2U);
    EXPECT_EQ(file().size(), 1U);
}

TEST_F(VLGeoServiceTransitionTest, TimesSurviveARestart) {
    enter("1");
    geo = makeService();
    setClockTo(300);
    enter("1");
    EXPECT_EQ(contentRequests().size(), 1U);
    geo = makeService();
    setClockTo(301);
    enter("1");
    EXPECT_EQ(contentRequests().size(), 2U);
}

TEST_F(VLGeoServiceTransitionTest, FailedContentIsNotRequestedAgainWithinTheLimit) {
    enter("1");
    session().fail(kContentPath);
    phone().settle();
    enter("1");
    EXPECT_EQ(contentRequests().size(), 1U);
}

}  // namespace

}  // namespace vorlane
