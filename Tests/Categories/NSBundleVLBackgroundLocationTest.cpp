#include "Categories/NSBundle+VLBackgroundLocation.h"

#include <gtest/gtest.h>

#include "Platform/NSBundle.h"

namespace vorlane {

namespace {

bool isEnabledWith(const Value& modes) {
    return vl_isBackgroundLocationEnabledForApp(NSBundle({{"UIBackgroundModes", modes}}));
}

TEST(NSBundleVLBackgroundLocationTest, OnlyADeclaredLocationModeCounts) {
    EXPECT_TRUE(isEnabledWith(Array{"location"}));
    EXPECT_TRUE(isEnabledWith(Array{"fetch", 5, "location"}));
    EXPECT_FALSE(isEnabledWith(Array{"fetch", "Location", "locations"}));
    EXPECT_FALSE(isEnabledWith(Array{}));
    EXPECT_FALSE(isEnabledWith("location"));
    EXPECT_FALSE(isEnabledWith(Dictionary{{"location", true}}));
    EXPECT_FALSE(vl_isBackgroundLocationEnabledForApp(NSBundle({})));
}

}  // namespace

}  // namespace vorlane
