#include <gtest/gtest.h>

#include <map>

#include "Categories/NSDate+VLTimestamp.h"
#include "Categories/NSTimeZone+VLOffset.h"

namespace vorlane {

namespace {

TEST(NSDateVLTimestampTest, ATimeIsFormattedInWholeMilliseconds) {
    EXPECT_EQ(vl_unixTimestampInMilliseconds(1'600'000'000.4567), "1600000000457");
    EXPECT_EQ(vl_unixTimestampInMilliseconds(0.0), "0");
    EXPECT_EQ(vl_unixTimestampInMilliseconds(-1.5), "-1500");
    EXPECT_EQ(vl_unixTimestampInMilliseconds(std::nullopt), "0");
}

TEST(NSTimeZoneVLOffsetTest, TheOffsetIsSignedWholeMinutes) {
    const std::map<std::int64_t, std::string> minutes = {{0, "-0"},   {30, "-0"},    {59, "-0"},
                                                         {60, "+1"},  {3600, "+60"}, {19800, "+330"},
                                                         {-30, "-0"}, {-60, "-1"},   {-18000, "-300"}};
    for (const auto& [seconds, text] : minutes) {
        const NSTimeZone zone{"", seconds};
        EXPECT_EQ(vl_offsetAsSignedMinutes(zone), text);
        const std::string sign = text[0] == '+' ? "%2B" : "%2D";
        EXPECT_EQ(VL_GMTOffsetAsMinutes(zone), sign + text.substr(1));
    }
}

}  // namespace

}  // namespace vorlane
