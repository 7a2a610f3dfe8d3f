#include "Simulator/Service/Http/URLText.h"

#include <gtest/gtest.h>

namespace vorlane::service {
namespace {

using Fields = std::map<std::string, std::string>;
using Segments = std::vector<std::string>;

TEST(URLTextTest, DecodesEncodedBytes) {
    EXPECT_EQ(percentDecoded("a%20b%2fc%2Fd%C3%A9"), "a b/c/d\xC3\xA9");
    EXPECT_EQ(percentDecoded("%00"), std::string(1, '\0'));
    EXPECT_EQ(percentDecoded("%25%32%30"), "%20");
    EXPECT_EQ(percentDecoded("+"), "+");
}

TEST(URLTextTest, KeepsOtherPercentSigns) {
    for (const char* text : {"%", "%%", "%4", "a%", "%g0", "%0g", "%-1", "100%"}) EXPECT_EQ(percentDecoded(text), text);
    EXPECT_EQ(percentDecoded("%%41"), "%A");
}

TEST(URLTextTest, SeparatesFieldsBeforeDecoding) {
    EXPECT_EQ(formFields("a=1&b=x%26y%3Dz&c=a+b%2B&d%20=%C3%A9"),
              (Fields{{"a", "1"}, {"b", "x&y=z"}, {"c", "a b+"}, {"d ", "\xC3\xA9"}}));
}

TEST(URLTextTest, FieldsMayBeEmptyOrRepeated) {
    EXPECT_EQ(formFields(""), Fields());
    EXPECT_EQ(formFields("&&"), Fields());
    EXPECT_EQ(formFields("a&b=&=c"), (Fields{{"a", ""}, {"b", ""}, {"", "c"}}));
    EXPECT_EQ(formFields("a=1&a=2"), (Fields{{"a", "1"}}));
    EXPECT_EQ(formFields("a=1=2"), (Fields{{"a", "1=2"}}));
}

TEST(URLTextTest, SplitsPathsBeforeDecoding) {
    EXPECT_EQ(pathSegments("/a/b%2Fc/d"), (Segments{"a", "b/c", "d"}));
    EXPECT_EQ(pathSegments("/"), Segments{""});
    EXPECT_EQ(pathSegments(""), Segments{""});
    EXPECT_EQ(pathSegments("/a//b/"), (Segments{"a", "", "b", ""}));
}

}  // namespace
}  // namespace vorlane::service
