#include "Platform/PropertyList/XMLPropertyListReader.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>

#include "Platform/Internal/DocumentLimits.h"
#include "Platform/NSPropertyListSerialization.h"

namespace vorlane {

namespace {

std::string document(const std::string& content) { return "<plist version=\"1.0\">" + content + "</plist>"; }

std::optional<Value> read(const std::string& content) { return XMLPropertyListReader::read(document(content)); }

void expectMalformed(std::initializer_list<const char*> contents) {
    for (const auto* content : contents) {
        EXPECT_EQ(read(content), std::nullopt) << content;
        EXPECT_EQ(read(std::string("<array>") + content + "</array>"), std::nullopt) << content;
    }
}

TEST(XMLPropertyListReaderTest, RealIsReadWholeOrNotAtAll) {
    EXPECT_EQ(read("<real>51.00999999</real>"), Value(51.00999999));
    EXPECT_EQ(read("<real> -1.5e3\n</real>"), Value(-1500.0));
    EXPECT_EQ(read("<real>+2</real>"), Value(2.0));
    expectMalformed({"<real>51.00999999=999998</real>", "<real></real>", "<real/>", "<real>1,5</real>",
                     "<real>1.5x</real>", "<real>1 5</real>", "<real>+-1</real>", "<real>0x10</real>",
                     "<real>1e999</real>"});
}

TEST(XMLPropertyListReaderTest, IntegerIsReadWholeOrNotAtAll) {
    EXPECT_EQ(read("<integer>42</integer>"), Value(42));
    EXPECT_EQ(read("<integer>+7</integer>"), Value(7));
    EXPECT_EQ(read("<integer>-9223372036854775808</integer>"), Value(std::numeric_limits<std::int64_t>::min()));
    EXPECT_EQ(read("<integer>18446744073709551615</integer>"), Value(std::numeric_limits<std::uint64_t>::max()));
    expectMalformed({"<integer>4=2</integer>", "<integer/>", "<integer>18446744073709551616</integer>",
                     "<integer>-9223372036854775809</integer>", "<integer>1.0</integer>", "<integer>0x10</integer>",
                     "<integer>--1</integer>"});
}

TEST(XMLPropertyListReaderTest, DateIsReadWholeOrNotAtAll) {
    EXPECT_EQ(read("<date>1970-01-01T00:00:00Z</date>"), Value(0.0));
    EXPECT_EQ(read("<date>2024-02-29T23:59:59Z</date>"), Value(1709251199.0));
    EXPECT_EQ(read("<date>1969-12-31T23:59:59Z</date>"), Value(-1.0));
    expectMalformed({"<date>2023-02-29T00:00:00Z</date>", "<date>2023-13-01T00:00:00Z</date>",
                     "<date>2023-00-01T00:00:00Z</date>", "<date>2023-11-14T24:00:00Z</date>",
                     "<date>2023-11-14T00:60:00Z</date>", "<date>2023-11-14T00:00:60Z</date>",
                     "<date>2023-11-14T00:00:00</date>", "<date>2023-11-14 00:00:00Z</date>", "<date/>",
                     "<date>2023-1-14T00:00:00Z</date>", "<date>2023-11-14T00:00:00Z.</date>"});
}

TEST(XMLPropertyListReaderTest, BooleanHasNoText) {
    EXPECT_EQ(read("<true/>"), Value(true));
    EXPECT_EQ(read("<false></false>"), Value(false));
    expectMalformed({"<true>false</true>", "<false>0</false>", "<TRUE/>", "<true", "<true/"});
}

TEST(XMLPropertyListReaderTest, DataIsReadWholeOrNotAtAll) {
    EXPECT_EQ(read("<data>\n\tAKsQ\n\t</data>"), Value(Value::binary({0, 0xAB, 0x10})));
    EXPECT_EQ(read("<data>/w==</data>"), Value(Value::binary({0xFF})));
    EXPECT_EQ(read("<data>//8=</data>"), Value(Value::binary({0xFF, 0xFF})));
    EXPECT_EQ(read("<data/>"), Value(Value::binary({})));
    expectMalformed(
        {"<data>AKs</data>", "<data>AKs=Q</data>", "<data>A===</data>", "<data>AKs*</data>", "<data>AKsQ====</data>"});
}

TEST(XMLPropertyListReaderTest, KeysAndValuesAlternate) {
    EXPECT_EQ(read("<dict><key>a</key><true/><key>b</key><array/></dict>"),
              Value(Dictionary{{"a", true}, {"b", Array{}}}));
    EXPECT_EQ(read("<dict><key>a</key><true/><key>a</key><false/></dict>"), Value(Dictionary{{"a", false}}));
    EXPECT_EQ(read("<dict><key>b</key><true/><key>a</key><false/></dict>"),
              Value(Dictionary{{"a", false}, {"b", true}}));
    expectMalformed({"<dict><true/></dict>", "<dict><key>a</key></dict>",
                     "<dict><key>a</key><key>b</key><true/></dict>", "<dict><array/></dict>",
                     "<dict><dict></dict></dict>", "<key>a</key>", "<dict>text</dict>"});
}

TEST(XMLPropertyListReaderTest, DocumentHasOneRoot) {
    EXPECT_EQ(read("<true/><false/>"), std::nullopt);
    EXPECT_EQ(read("<array/><array></array>"), std::nullopt);
    EXPECT_EQ(read(""), std::nullopt);
    EXPECT_EQ(XMLPropertyListReader::read(document("<true/>") + "x"), std::nullopt);
    EXPECT_EQ(XMLPropertyListReader::read(document("<true/>") + document("<true/>")), std::nullopt);
    EXPECT_EQ(XMLPropertyListReader::read("<dict/>"), std::nullopt);
    EXPECT_EQ(XMLPropertyListReader::read("\xEF\xBB\xBF" + document("<true/>") + " <!-- end -->\n"), Value(true));
}

TEST(XMLPropertyListReaderTest, UnknownEntitiesAreMalformed) {
    EXPECT_EQ(read("<string>&amp;&lt;&gt;&quot;&apos;&#65;&#x1F600;</string>"), Value("&<>\"'A\U0001F600"));
    expectMalformed({"<string>&unknown;</string>", "<string>&amp</string>", "<string>&;</string>",
                     "<string>&#0;</string>", "<string>&#xD800;</string>", "<string>&#x110000;</string>",
                     "<string>&#+65;</string>", "<string>&#;</string>"});
}

TEST(XMLPropertyListReaderTest, ElementsEndWhereTheyBegin) {
    expectMalformed({"<string>a</integer>", "<array></dict>", "<string>a<b/></string>", "<unknown>1</unknown>",
                     "<string>a", "<array>", "</array>"});
}

TEST(XMLPropertyListReaderTest, ValuesBeyondTheLimitAreUnreadable) {
    const auto arrayOf = [](std::size_t count) {
        std::string content = "<array>";
        for (std::size_t i = 0; i < count; ++i) content += "<true/>";
        return content + "</array>";
    };
    EXPECT_TRUE(read(arrayOf(DocumentLimits::kMostValuesInPropertyList - 1)));
    EXPECT_EQ(read(arrayOf(DocumentLimits::kMostValuesInPropertyList)), std::nullopt);
}

TEST(XMLPropertyListReaderTest, WrittenCarriageReturnsAreReferences) {
    const auto bytes = NSPropertyListSerialization::dataWithPropertyList(Value("a\r\nb"));
    const std::string text(bytes.begin(), bytes.end());
    EXPECT_NE(text.find("<string>a&#13;\nb</string>"), std::string::npos) << text;
}

TEST(XMLPropertyListReaderTest, DataOfEveryLengthComesBack) {
    Data bytes;
    for (int length = 0; length < 20; ++length) {
        EXPECT_EQ(NSPropertyListSerialization::propertyListWithData(
                      NSPropertyListSerialization::dataWithPropertyList(Value::binary(bytes))),
                  Value(Value::binary(bytes)));
        bytes.push_back(static_cast<std::uint8_t>(37 * length + 200));
    }
}

}  // namespace

}  // namespace vorlane
