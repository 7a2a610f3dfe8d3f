#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "Categories/NSDictionary+VLJSON.h"
#include "Platform/Internal/DocumentLimits.h"

namespace vorlane {

namespace {

std::optional<Dictionary> parse(const std::string& text) {
    std::optional<NSError> error;
    auto dictionary = vl_dictionaryWithJSON(text, error);
    EXPECT_NE(dictionary.has_value(), error.has_value());
    return dictionary;
}

/// `{"list":[element,element,...]}`
std::string listOf(const std::string& element, std::size_t count) {
    std::string text = "{\"list\":[";
    for (std::size_t i = 0; i < count; ++i) text += (i == 0 ? "" : ",") + element;
    return text + "]}";
}

TEST(NSDictionaryVLJSONLimitsTest, ValuesAreCountedBeforeTheyAreBuilt) {
    // The dictionary, the list, and what is counted for the first value of each.
    constexpr std::size_t kMost = DocumentLimits::kMostValuesInJSON - 2;
    EXPECT_TRUE(parse(listOf("1", kMost)));
    EXPECT_FALSE(parse(listOf("1", kMost + 1)));
    EXPECT_FALSE(parse(listOf("[]", kMost / 2 + 1)));
    EXPECT_FALSE(parse(listOf("{}", 10'000'000)));
}

TEST(NSDictionaryVLJSONLimitsTest, PunctuationInStringsIsNoValue) {
    EXPECT_TRUE(parse("{\"text\":\"" + std::string(2 * DocumentLimits::kMostValuesInJSON, ',') + "[{\"}"));
}

TEST(NSDictionaryVLJSONLimitsTest, KeysAreValuesToo) {
    std::string text = "{";
    for (std::size_t i = 0; i <= DocumentLimits::kMostValuesInJSON; ++i) {
        text += (i == 0 ? "\"" : ",\"") + std::to_string(i) + "\":1";
    }
    EXPECT_FALSE(parse(text + "}"));
}

}  // namespace

}  // namespace vorlane
