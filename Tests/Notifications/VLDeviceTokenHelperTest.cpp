#include "Public/VLDeviceTokenHelper.h"

#include <gtest/gtest.h>

namespace vorlane {

namespace {

Data bytesOf(const std::string& text) { return VLDeviceTokenHelper::hexStringToData(text); }

TEST(VLDeviceTokenHelperTest, PairsOfDigitsAreBytesInEitherCase) {
    EXPECT_EQ(bytesOf("0A1b"), (Data{0x0A, 0x1B}));
    EXPECT_EQ(bytesOf("00FFff"), (Data{0x00, 0xFF, 0xFF}));
}

TEST(VLDeviceTokenHelperTest, ASingleCharacterIsIgnored) {
    EXPECT_EQ(bytesOf(""), Data());
    EXPECT_EQ(bytesOf("F"), Data());
    EXPECT_EQ(bytesOf("012"), Data{0x01});
}

TEST(VLDeviceTokenHelperTest, NonDigitsAreSkipped) {
    EXPECT_EQ(bytesOf("g0a1"), Data{0x0A});
    EXPECT_EQ(bytesOf("<00ab 10cd>"), (Data{0x00, 0xAB, 0x10, 0xCD}));
    EXPECT_EQ(bytesOf("zzzz"), Data());
    EXPECT_EQ(bytesOf("\xC3\xA9"
                      "0f"),
              Data{0x0F});
}

TEST(VLDeviceTokenHelperTest, ANonDigitEndsItsPair) {
    EXPECT_EQ(bytesOf("az"), Data{0x0A});
    EXPECT_EQ(bytesOf("a 0b"), (Data{0x0A, 0x0B}));
    EXPECT_EQ(bytesOf("0x1f"), (Data{0x00, 0x1F}));
}

}  // namespace

}  // namespace vorlane
