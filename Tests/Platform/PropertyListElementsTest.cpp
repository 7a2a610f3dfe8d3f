#include "Platform/PropertyList/PropertyListElements.h"

#include <gtest/gtest.h>

#include "Platform/NSPropertyListSerialization.h"

namespace vorlane {

namespace {

Data listOf(const std::vector<Dictionary>& dictionaries) {
    std::vector<std::string> elements;
    for (const auto& dictionary : dictionaries) elements.push_back(PropertyListElements::element(dictionary));
    const std::vector<std::string_view> views(elements.begin(), elements.end());
    return PropertyListElements::listOf("entries", views);
}

TEST(PropertyListElementsTest, TheBytesAreThoseOfTheWholeList) {
    const std::vector<Dictionary> dictionaries = {
        {{"name", "a"}, {"number", 7}},
        {},
        {{"<key> & \"quotes\"", "<plist></plist>"}, {"data", Value::binary({1, 2, 3})}},
        {{"list", Array{1.5, true, Value(Dictionary{{"list", Array()}})}}}};
    Array whole;
    for (const auto& dictionary : dictionaries) whole.emplace_back(dictionary);
    EXPECT_EQ(listOf(dictionaries), NSPropertyListSerialization::dataWithPropertyList(Dictionary{{"entries", whole}}));
}

TEST(PropertyListElementsTest, AListMayBeEmpty) {
    EXPECT_EQ(NSPropertyListSerialization::propertyListWithData(listOf({})), Value(Dictionary{{"entries", Array()}}));
}

TEST(PropertyListElementsTest, NestingBeyondTheReadersLimitIsLeftOut) {
    Value nested = 1;
    for (int level = 0; level < 600; ++level) nested = Array{nested};
    const auto list =
        NSPropertyListSerialization::propertyListWithData(listOf({{{"nested", nested}}, {{"name", "a"}}}));
    ASSERT_TRUE(list);
    EXPECT_EQ((*list)["entries"].size(), 2U);
    EXPECT_EQ((*list)["entries"][1], Value(Dictionary{{"name", "a"}}));
}

}  // namespace

}  // namespace vorlane
