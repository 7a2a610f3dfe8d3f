#include "Categories/NSNumber+VLLooseValue.h"

#include <gtest/gtest.h>

#include <limits>

namespace vorlane {

namespace {

std::optional<double> number(const Value& value) { return vl_looseNumber(&value); }
std::optional<std::string> text(const Value& value) { return vl_looseText(&value); }

TEST(NSNumberVLLooseValueTest, NumbersAndDecimalStringsAreNumbers) {
    EXPECT_EQ(number(5), 5);
    EXPECT_EQ(number(-2.5), -2.5);
    EXPECT_EQ(number(std::numeric_limits<std::uint64_t>::max()), 18446744073709551615.0);
    EXPECT_EQ(number("59.91"), 59.91);
    EXPECT_EQ(number("-1e3"), -1000);
    EXPECT_EQ(number("+7"), 7);
    EXPECT_EQ(number(".5"), 0.5);
}

TEST(NSNumberVLLooseValueTest, AnyOtherStringIsNoNumber) {
    for (const auto* given : {"", " ", "five", "5 m", " 5", "5 ", "5,5", "0x10", "+-5", "++5", "--5", "1e999", "nan",
                              "inf", "-infinity", "5\n"}) {
        EXPECT_EQ(number(given), std::nullopt) << given;
    }
    EXPECT_EQ(number(std::string("5\0", 2)), std::nullopt);
}

TEST(NSNumberVLLooseValueTest, OtherTypesAndInfinitiesAreNoNumbers) {
    for (const auto& given :
         {Value(), Value(true), Value(Array{5}), Value(Dictionary{}), Value::binary({5}),
          Value(std::numeric_limits<double>::quiet_NaN()), Value(std::numeric_limits<double>::infinity())}) {
        EXPECT_EQ(number(given), std::nullopt) << given.type_name();
    }
    EXPECT_EQ(vl_looseNumber(nullptr), std::nullopt);
}

TEST(NSNumberVLLooseValueTest, StringsAndNumbersAreStrings) {
    EXPECT_EQ(text("as it is"), "as it is");
    EXPECT_EQ(text(""), "");
    EXPECT_EQ(text(17), "17");
    EXPECT_EQ(text(-3), "-3");
    EXPECT_EQ(text(2.5), "2.5");
    for (const auto& given : {Value(), Value(true), Value(Array{}), Value(Dictionary{}), Value::binary({5})}) {
        EXPECT_EQ(text(given), std::nullopt) << given.type_name();
    }
    EXPECT_EQ(vl_looseText(nullptr), std::nullopt);
}

}  // namespace

}  // namespace vorlane
