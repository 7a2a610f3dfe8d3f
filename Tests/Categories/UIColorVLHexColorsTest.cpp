#include <gtest/gtest.h>

#include "Categories/UIColor+VLHexColors.h"

namespace vorlane {

namespace {

constexpr UIColor kWhite{1, 1, 1, 1};

void expectParts(const std::string& text, std::uint32_t red, std::uint32_t green, std::uint32_t blue) {
    EXPECT_EQ(vl_colorWithHexString(text),
              (UIColor{static_cast<float>(red) / 255.0F, static_cast<float>(green) / 255.0F,
                       static_cast<float>(blue) / 255.0F, 1}))
        << text;
}

TEST(UIColorVLHexColorsTest, EveryFormOfWhiteIsAccepted) {
    for (const auto* text : {"fff", "#fff", "ffffff", "#ffffff", "FFF", "#FfFfFf"}) {
        EXPECT_EQ(vl_colorWithHexString(text), kWhite) << text;
    }
}

TEST(UIColorVLHexColorsTest, EachPairOfDigitsIsOneComponent) {
    expectParts("#1a2b3c", 0x1A, 0x2B, 0x3C);
    expectParts("1A2B3C", 0x1A, 0x2B, 0x3C);
    expectParts("#abc", 0xAA, 0xBB, 0xCC);
    expectParts("000000", 0, 0, 0);
}

TEST(UIColorVLHexColorsTest, ComponentsHaveSinglePrecision) {
    EXPECT_EQ(vl_colorWithHexString("#010203").red, 1.0F / 255.0F);
    EXPECT_EQ(colorWith8BitRed(51, 102, 204, 0.5F), (UIColor{51.0F / 255.0F, 102.0F / 255.0F, 204.0F / 255.0F, 0.5F}));
}

TEST(UIColorVLHexColorsTest, AlphaIsPassedThrough) {
    EXPECT_EQ(vl_colorWithHexString("fff", 0.25F), (UIColor{1, 1, 1, 0.25F}));
    EXPECT_EQ(vl_colorWithHexString("fff", 0).alpha, 0);
    EXPECT_EQ(vl_colorWithHexString("fff").alpha, 1);
}

TEST(UIColorVLHexColorsTest, OnlyLeadingDigitsOfAPairCount) {
    expectParts("gg0000", 0, 0, 0);
    expectParts("g10000", 0, 0, 0);
    expectParts("1g2x3#", 1, 2, 3);
    expectParts(" 1-1+1", 0, 0, 0);
    expectParts("0x0x0x", 0, 0, 0);
    expectParts("xyz", 0, 0, 0);
}

TEST(UIColorVLHexColorsTest, CharactersOutsideASCIIAreNoDigits) {
    expectParts("\u00e9\u00e9ff\u20ac1", 0, 0xFF, 0);
    expectParts("f\u00e9f\u00e9f\u00e9", 0xF, 0xF, 0xF);
    // A character outside the basic plane has two UTF-16 code units.
    expectParts("\U0001F600ff00", 0, 0xFF, 0);
    expectParts("\u00e9fa", 0, 0xFF, 0xAA);
}

TEST(UIColorVLHexColorsTest, OnlyThreeDigitsAreDoubled) {
    EXPECT_EQ(hexStringTransformFromThreeCharacters("#1aF"), "#11aaFF");
    EXPECT_EQ(hexStringTransformFromThreeCharacters("#112233"), "#112233");
    EXPECT_EQ(hexStringTransformFromThreeCharacters(""), "");
}

TEST(UIColorVLHexColorsTest, OnlyLeadingHexadecimalDigitsAreConverted) {
    EXPECT_EQ(hexValueToUnsigned("ff"), 255U);
    EXPECT_EQ(hexValueToUnsigned("1g"), 1U);
    EXPECT_EQ(hexValueToUnsigned("g1"), 0U);
    EXPECT_EQ(hexValueToUnsigned("0x1f"), 0U);
    EXPECT_EQ(hexValueToUnsigned("-1"), 0U);
    EXPECT_EQ(hexValueToUnsigned(""), 0U);
}

class UIColorVLHexColorsDeathTest : public testing::TestWithParam<const char*> {};

TEST_P(UIColorVLHexColorsDeathTest, AnyOtherLengthAborts) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_DEATH(vl_colorWithHexString(GetParam()), "7 == hexString.length \\|\\| 4 == hexString.length");
}

INSTANTIATE_TEST_SUITE_P(Lengths, UIColorVLHexColorsDeathTest,
                         testing::Values("", "#", "#12345", "12345", "1", "#12", "1234", "#1234567", "12345678",
                                         "\U0001F600\U0001F600"));

TEST(UIColorVLHexColorsDeathTest, TheMessageNamesTheSourceFile) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_DEATH(vl_colorWithHexString("#12345"), "UIColorVLHexColors");
}

}  // namespace

}  // namespace vorlane
