#include "Platform/Internal/ASCIICase.h"

#include <gtest/gtest.h>

namespace vorlane {

namespace {

TEST(ASCIICaseTest, OnlyASCIILettersHaveACase) {
    EXPECT_EQ(lowercased("@AZ[ `az{ Å 09"), "@az[ `az{ Å 09");
    EXPECT_EQ(capitalised("@AZ[ `az{ å 09"), "@AZ[ `AZ{ å 09");
}

TEST(ASCIICaseTest, ComparesWholeStrings) {
    EXPECT_TRUE(isEqualIgnoringCase("HTTPS", "https"));
    EXPECT_TRUE(isEqualIgnoringCase("", ""));
    EXPECT_FALSE(isEqualIgnoringCase("https", "http"));
    EXPECT_FALSE(isEqualIgnoringCase("[", "{"));
    EXPECT_FALSE(isEqualIgnoringCase("Å", "å"));
}

}  // namespace

}  // namespace vorlane
