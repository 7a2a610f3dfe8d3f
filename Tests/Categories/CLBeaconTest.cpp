#include <gtest/gtest.h>

#include "Categories/CLBeacon+VLProximity.h"
#include "Categories/CLBeaconRegion+VLRegionId.h"
#include "Categories/NSString+VLCaseInsensitive.h"
#include "Platform/CLBeaconRegion.h"
#include "Tests/Support/SimulatedPhoneTest.h"

namespace vorlane {

namespace {

constexpr const char* kUUID = "B9407F30-F5F8-466E-AFF9-25556B57FE6D";

class CLBeaconTest : public SimulatedPhoneTest {
protected:
    static CLBeacon beacon(std::int64_t proximity) {
        return {kUUID, 1, 65535, static_cast<CLProximity>(proximity), 2.5};
    }
};

TEST_F(CLBeaconTest, EachProximityHasAWord) {
    EXPECT_STREQ(vl_proximity_unknown(), "unknown");
    EXPECT_STREQ(vl_proximity_immediate(), "immediate");
    EXPECT_STREQ(vl_proximity_near(), "near");
    EXPECT_STREQ(vl_proximity_far(), "far");
    EXPECT_STREQ(vl_getRangeStringForBeacon(beacon(0)), "unknown");
    EXPECT_STREQ(vl_getRangeStringForBeacon(beacon(1)), "immediate");
    EXPECT_STREQ(vl_getRangeStringForBeacon(beacon(2)), "near");
    EXPECT_STREQ(vl_getRangeStringForBeacon(beacon(3)), "far");
    EXPECT_TRUE(log().lines().empty());
}

TEST_F(CLBeaconTest, AnUnknownProximityIsLogged) {
    EXPECT_STREQ(vl_getRangeStringForBeacon(beacon(4)), "unknown");
    EXPECT_EQ(log().count("Unknown proximity value \"4\" for beacon: CLBeacon (uuid:B9407F30-F5F8-466E-AFF9-"
                          "25556B57FE6D, major:1, minor:65535, proximity:4, accuracy:2.50)",
                          VLLogLevel::Error),
              1);
    EXPECT_STREQ(vl_getRangeStringForBeacon(beacon(-1)), "unknown");
    EXPECT_EQ(log().linesContaining("Unknown proximity value \"-1\"").size(), 1U);
}

TEST_F(CLBeaconTest, TheKeyIsMajorAndMinor) { EXPECT_EQ(vl_majorMinorAsString(beacon(0)), "1_65535"); }

TEST_F(CLBeaconTest, BeaconsAreDescribedInSquareBrackets) {
    EXPECT_EQ(vl_description(std::vector<CLBeacon>{}), "[]");
    const auto one = vl_description(beacon(2));
    EXPECT_EQ(vl_description(std::vector{beacon(2), beacon(2)}), "[" + one + ", " + one + "]");
}

TEST_F(CLBeaconTest, ARegionIdNamesUUIDMajorAndMinor) {
    EXPECT_EQ(vl_getRegionId(CLBeaconRegion("b9407f30-f5f8-466e-aff9-25556b57fe6d", "R")), std::string(kUUID) + "_*_*");
    EXPECT_EQ(vl_getRegionId(CLBeaconRegion(kUUID, "R", 7)), std::string(kUUID) + "_7_*");
    EXPECT_EQ(vl_getRegionId(CLBeaconRegion(kUUID, "R", 7, 0)), std::string(kUUID) + "_7_0");
}

TEST_F(CLBeaconTest, ARegionIsFoundWhateverItsIdentifier) {
    const auto whole = std::make_shared<CLBeaconRegion>(kUUID, "same");
    const auto first = std::make_shared<CLBeaconRegion>(kUUID, "first", 1, 2);
    const auto second = std::make_shared<CLBeaconRegion>(kUUID, "second", 1, 2);
    EXPECT_EQ(vl_findBeaconRegionWithin(CLBeaconRegion(kUUID, "same", 1, 2), {whole, first, second}), first);
    EXPECT_EQ(vl_findBeaconRegionWithin(CLBeaconRegion(kUUID, "same", 1), {whole, first, second}), nullptr);
    EXPECT_EQ(vl_findBeaconRegionWithin(*whole, {}), nullptr);
}

TEST_F(CLBeaconTest, ARulesRegionIdContainsItsValues) {
    EXPECT_EQ(vl_regionIdForBeaconRule({{"uuid", "u"}, {"major", 1}, {"minor", "*"}}), "u_1_*");
    EXPECT_EQ(vl_regionIdForBeaconRule({{"uuid", nullptr}, {"minor", 1e22}}), "null_(null)_1e+22");
}

TEST(NSStringVLCaseInsensitiveTest, TheCaseOfASCIILettersIsIgnored) {
    EXPECT_TRUE(vl_isEqualToStringCaseInsensitive("", ""));
    EXPECT_TRUE(vl_isEqualToStringCaseInsensitive("aZ-09", "Az-09"));
    EXPECT_FALSE(vl_isEqualToStringCaseInsensitive("a", "ab"));
    EXPECT_FALSE(vl_isEqualToStringCaseInsensitive("a", "b"));
    // These characters differ by the same bit, but are no letters.
    EXPECT_FALSE(vl_isEqualToStringCaseInsensitive("@[", "`{"));
}

}  // namespace

}  // namespace vorlane
