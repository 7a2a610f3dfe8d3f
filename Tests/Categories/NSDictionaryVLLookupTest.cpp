#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "Categories/NSDictionary+VLLookup.h"

namespace vorlane {

namespace {

const Dictionary kAllKinds{{"null", nullptr},
                           {"bool", true},
                           {"integer", -7},
                           {"unsigned", std::numeric_limits<std::uint64_t>::max()},
                           {"real", 2.75},
                           {"string", "text"},
                           {"data", Value::binary({1, 2})},
                           {"array", Array{1}},
                           {"dictionary", Dictionary{{"a", 1}}}};

TEST(NSDictionaryVLLookupTest, EachLookUpAcceptsOnlyItsType) {
    for (const auto& [key, value] : kAllKinds) {
        EXPECT_EQ(*valueForKey(kAllKinds, key), value);
        EXPECT_EQ(stringForKey(kAllKinds, key).has_value(), key == "string") << key;
        const bool isNumber = key == "integer" || key == "unsigned" || key == "real";
        EXPECT_EQ(numberForKey(kAllKinds, key).has_value(), isNumber) << key;
        EXPECT_EQ(integerForKey(kAllKinds, key).has_value(), isNumber) << key;
        EXPECT_EQ(boolForKey(kAllKinds, key).has_value(), isNumber || key == "bool") << key;
        EXPECT_EQ(dataForKey(kAllKinds, key).has_value(), key == "data") << key;
        EXPECT_EQ(dictionaryForKey(kAllKinds, key) != nullptr, key == "dictionary") << key;
        EXPECT_EQ(arrayForKey(kAllKinds, key) != nullptr, key == "array") << key;
    }
    EXPECT_EQ(valueForKey(kAllKinds, "none"), nullptr);
    EXPECT_EQ(stringForKey(kAllKinds, "none"), std::nullopt);
    EXPECT_EQ(boolForKey(kAllKinds, "none"), std::nullopt);
    EXPECT_EQ(dictionaryForKey(kAllKinds, "none"), nullptr);
}

TEST(NSDictionaryVLLookupTest, IntegersAreTruncatedAndClamped) {
    using Limits = std::numeric_limits<std::int64_t>;
    EXPECT_EQ(integerValue(2.99), 2);
    EXPECT_EQ(integerValue(-2.99), -2);
    EXPECT_EQ(integerValue(1e300), Limits::max());
    EXPECT_EQ(integerValue(-1e300), Limits::min());
    EXPECT_EQ(integerValue(9223372036854775808.0), Limits::max());
    EXPECT_EQ(integerValue(std::nan("")), 0);
    EXPECT_EQ(integerValue(std::numeric_limits<std::uint64_t>::max()), Limits::max());
    EXPECT_EQ(integerValue("7"), std::nullopt);
    EXPECT_EQ(integerValue(true), std::nullopt);
}

TEST(NSDictionaryVLLookupTest, ANumbersTextIsTheShortestThatReadsBackTheSame) {
    EXPECT_EQ(stringValue(42), "42");
    EXPECT_EQ(stringValue(-42), "-42");
    EXPECT_EQ(stringValue(4.5), "4.5");
    EXPECT_EQ(stringValue(0.1), "0.1");
    EXPECT_EQ(stringValue(5.0), "5");
    EXPECT_EQ(stringValue(1e22), "1e+22");
    EXPECT_EQ(stringValue(std::numeric_limits<std::uint64_t>::max()), "18446744073709551615");
    EXPECT_EQ(stringValue(true), "1");
    EXPECT_EQ(stringValue(false), "0");
    EXPECT_EQ(stringValue("42"), std::nullopt);
    EXPECT_EQ(stringValue(nullptr), std::nullopt);
}

TEST(NSDictionaryVLLookupTest, NullsAreRemovedAtEveryLevel) {
    Value value = Dictionary{{"a", nullptr}, {"b", Array{nullptr, 1, Array{nullptr}, Dictionary{{"c", nullptr}}}}};
    vl_removeNulls(value);
    EXPECT_EQ(value, Value(Dictionary{{"b", Array{1, Array{}, Dictionary{}}}}));
    Value null;
    vl_removeNulls(null);
    EXPECT_EQ(null, Value());
}

}  // namespace

}  // namespace vorlane
