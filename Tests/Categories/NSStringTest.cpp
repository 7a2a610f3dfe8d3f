#include <gtest/gtest.h>

#include "Categories/NSCharacterSet+VLURLEncoding.h"
#include "Categories/NSString+VLHash.h"
#include "Categories/NSString+VLLength.h"
#include "Categories/NSString+VLUTF8.h"
#include "Categories/NSUUID+VLString.h"

namespace vorlane {

namespace {

std::string membersOf(const NSCharacterSet& set) {
    std::string members;
    for (std::size_t i = 0; i < set.size(); ++i) {
        if (set[i]) members += static_cast<char>(i);
    }
    return members;
}

const std::string kDigits = "0123456789";
const std::string kUpper = "ABCDEFGHIJKLMNOPQRSTUVWXYZ";
const std::string kLower = "abcdefghijklmnopqrstuvwxyz";

TEST(NSCharacterSetTest, EachSetContainsExactlyItsCharacters) {
    EXPECT_EQ(membersOf(vl_URIComponentAllowedCharacterSet()), "!'()*-." + kDigits + kUpper + "_" + kLower + "~");
    EXPECT_EQ(membersOf(vl_formURLEncodingAllowedCharacterSet()), "*-." + kDigits + kUpper + "_" + kLower);
    EXPECT_EQ(membersOf(alphanumericCharacterSet()), kDigits + kUpper + kLower);
}

TEST(NSCharacterSetTest, TheSetsAreCreatedOnce) {
    EXPECT_EQ(&vl_URIComponentAllowedCharacterSet(), &vl_URIComponentAllowedCharacterSet());
    EXPECT_EQ(&vl_formURLEncodingAllowedCharacterSet(), &vl_formURLEncodingAllowedCharacterSet());
}

TEST(NSCharacterSetTest, EveryOtherByteIsPercentEncoded) {
    EXPECT_EQ(stringByAddingPercentEncoding(R"({"a":"b c"})", vl_formURLEncodingAllowedCharacterSet()),
              "%7B%22a%22%3A%22b%20c%22%7D");
    EXPECT_EQ(stringByAddingPercentEncoding(std::string("\0\xff~+%", 5), vl_formURLEncodingAllowedCharacterSet()),
              "%00%FF%7E%2B%25");
    EXPECT_EQ(stringByAddingPercentEncoding("+600", alphanumericCharacterSet()), "%2B600");
    EXPECT_EQ(stringByAddingPercentEncoding("", alphanumericCharacterSet()), "");
}

TEST(NSCharacterSetTest, RemovingTheEncodingRestoresTheString) {
    const std::string text = "caf\u00e9 & 100% \U0001F600";
    for (const auto* set : {&vl_URIComponentAllowedCharacterSet(), &alphanumericCharacterSet()}) {
        EXPECT_EQ(stringByRemovingPercentEncoding(stringByAddingPercentEncoding(text, *set)), text);
    }
    EXPECT_EQ(stringByRemovingPercentEncoding("a%2fB%2F+"), "a/B/+");
    EXPECT_EQ(stringByRemovingPercentEncoding(""), "");
}

TEST(NSCharacterSetTest, MalformedEncodingIsRefused) {
    for (const auto* text : {"%", "a%2", "%G0", "%0G", "%%", "100% sure", "%FF", "%C3%28"}) {
        EXPECT_EQ(stringByRemovingPercentEncoding(text), std::nullopt) << text;
    }
}

TEST(NSStringVLHashTest, TheDigestHas32LowerCaseDigits) {
    EXPECT_EQ(vl_md5(""), "d41d8cd98f00b204e9800998ecf8427e");
    EXPECT_EQ(vl_md5("The quick brown fox jumps over the lazy dog"), "9e107d9d372bb6826bd81d3542a419d6");
    EXPECT_EQ(vl_md5(std::string("\0", 1)), "93b885adfe0da089cdf634904fd59f71");
}

TEST(NSStringVLLengthTest, CharactersOutsideTheBasicPlaneCountTwice) {
    EXPECT_EQ(vl_length(""), 0U);
    EXPECT_EQ(vl_length("abc"), 3U);
    EXPECT_EQ(vl_length("\u00e9\u20ac"), 2U);
    EXPECT_EQ(vl_length("\U0001F600"), 2U);
}

TEST(NSStringVLUTF8Test, OnlyWellFormedBytesAreUTF8) {
    for (const auto* text : {"", "abc", "\u00e9", "\u20ac", "\U0001F600", "\U0010FFFF"}) EXPECT_TRUE(vl_isUTF8(text));
    for (const auto* text : {"\x80", "\xc3", "\xc0\x80", "\xe0\x80\x80", "\xed\xa0\x80", "\xf0\x80\x80\x80",
                             "\xf4\x90\x80\x80", "\xf5\x80\x80\x80", "\xe2\x82", "a\xff"}) {
        EXPECT_FALSE(vl_isUTF8(text));
    }
    EXPECT_EQ(vl_stringWithUTF8Data({'a', 0, 'b'}), std::string("a\0b", 3));
    EXPECT_EQ(vl_stringWithUTF8Data({0xff}), std::nullopt);
}

TEST(NSUUIDTest, AnIdentifierIsNewUpperCaseWithDashes) {
    const auto identifier = vl_newUUIDString();
    ASSERT_EQ(identifier.size(), 36U);
    for (const std::size_t place : {8U, 13U, 18U, 23U}) EXPECT_EQ(identifier[place], '-');
    EXPECT_EQ(identifier.find_first_not_of("0123456789ABCDEF-"), std::string::npos);
    EXPECT_NE(vl_newUUIDString(), identifier);
}

}  // namespace

}  // namespace vorlane
