#include "Platform/NSPropertyListSerialization.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <limits>
#include <utility>

#include "Platform/NSFileManager.h"
#include "Tests/Platform/CommaLocale.h"
#include "Tests/Support/TemporaryFolderTest.h"

namespace vorlane {

namespace {

class NSPropertyListSerializationTest : public TemporaryFolderTest {
protected:
    static std::optional<Value> read(const std::string& text) {
        return NSPropertyListSerialization::propertyListWithData(Data(text.begin(), text.end()));
    }

    static std::string xml(const std::string& content) {
        return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">" + content + "</plist>\n";
    }

    static std::optional<Value> roundTrip(const Value& value) {
        return NSPropertyListSerialization::propertyListWithData(
            NSPropertyListSerialization::dataWithPropertyList(value));
    }

    /// Runs the code with Python's own reader and writer of property lists, and returns what it prints.
    std::string python(const std::string& code) const {
        const auto command = "/usr/bin/python3 -c \"import plistlib, json\n" + code + "\" > " + path("out") + " 2>&1";
        EXPECT_EQ(std::system(command.c_str()), 0);
        const auto bytes = NSFileManager::contentsAtPath(path("out")).value_or(Data());
        return {bytes.begin(), bytes.end()};
    }
};

/// Moved level by level: a braced list would copy its contents each time.
Value nestedArrays(int levels) {
    Value nested = Array();
    for (int level = 1; level < levels; ++level) {
        Array outer;
        outer.push_back(std::move(nested));
        nested = std::move(outer);
    }
    return nested;
}

const Value kEverything = Dictionary{{"string", "caf\u00e9 <&> \"quoted\"\n\ttabbed"},
                                     {"empty", ""},
                                     {"integer", 42},
                                     {"negative", -5},
                                     {"least", std::numeric_limits<std::int64_t>::min()},
                                     {"most", std::numeric_limits<std::int64_t>::max()},
                                     {"real", 0.1},
                                     {"yes", true},
                                     {"no", false},
                                     {"data", Value::binary({0, 1, 0xFE, 0xFF})},
                                     {"no data", Value::binary({})},
                                     {"array", Array{1, "two", Array{}, Dictionary{}}},
                                     {"dictionary", Dictionary{{"key <&>", Dictionary{{"deep", -1}}}}}};

TEST_F(NSPropertyListSerializationTest, EveryKindComesBackUnchanged) { EXPECT_EQ(roundTrip(kEverything), kEverything); }

TEST_F(NSPropertyListSerializationTest, EveryKindMayBeTheRoot) {
    for (const Value& root : {Value("text"), Value(7), Value(true), Value(2.5), Value(Array{1}), Value::binary({1})}) {
        EXPECT_EQ(roundTrip(root), root);
    }
}

TEST_F(NSPropertyListSerializationTest, NullsAreDropped) {
    EXPECT_EQ(
        roundTrip(Dictionary{{"a", nullptr}, {"b", Array{nullptr, 1, nullptr}}, {"c", Dictionary{{"d", nullptr}}}}),
        Value(Dictionary{{"b", Array{1}}, {"c", Dictionary{}}}));
    EXPECT_TRUE(NSPropertyListSerialization::dataWithPropertyList(nullptr).empty());
}

TEST_F(NSPropertyListSerializationTest, LargeIntegersStayUnsigned) {
    const auto most = std::numeric_limits<std::uint64_t>::max();
    const Value numbers = Dictionary{{"most", most}, {"first", std::uint64_t{1} << 63U}, {"minus one", -1}};
    const auto back = roundTrip(numbers);
    EXPECT_EQ(back, numbers);
    EXPECT_EQ(back.value()["most"].type(), Value::value_t::number_unsigned);
    EXPECT_EQ(back.value()["minus one"].type(), Value::value_t::number_integer);
    ASSERT_TRUE(NSPropertyListSerialization::writeToFile(numbers.get_ref<const Dictionary&>(), path("list")));
    EXPECT_EQ(python("print(plistlib.load(open('" + path("list") + "', 'rb'))['most'])"), std::to_string(most) + "\n");
}

TEST_F(NSPropertyListSerializationTest, RealsComeBackToTheLastBit) {
    const Value reals = Array{0.1 + 0.2, 1e300,  -1e-300, std::numeric_limits<double>::denorm_min(),
                              2.0,       59.913, 1e15,    1700000000.123456};
    EXPECT_EQ(roundTrip(reals), reals);
    EXPECT_EQ(roundTrip(2.0).value().type(), Value::value_t::number_float);
}

TEST_F(NSPropertyListSerializationTest, LineEndsAndRareCharactersComeBack) {
    const Value text = "a\r\nb\x7f\u0085\U0001F600\u2028";
    EXPECT_EQ(roundTrip(text), text);
}

TEST_F(NSPropertyListSerializationTest, 1000EmptyArraysAreNoNesting) {
    const Value flat = Array(1000, Array());
    EXPECT_EQ(roundTrip(flat), flat);
    const Value deepest = nestedArrays(512);
    EXPECT_EQ(roundTrip(deepest), deepest);
}

TEST_F(NSPropertyListSerializationTest, InvalidUTF8IsRepairedWhenRead) {
    EXPECT_EQ(read(xml("<dict><key>k\xff</key><string>\xc3(</string></dict>")),
              Value(Dictionary{{"k\uFFFD", "\uFFFD("}}));
}

TEST_F(NSPropertyListSerializationTest, NonFiniteNumbersAreLeftOutWhenRead) {
    EXPECT_EQ(read(xml("<dict><key>a</key><real>nan</real><key>b</key><array><real>-inf</real><real>1</real></array>"
                       "</dict>")),
              Value(Dictionary{{"b", Array{1.0}}}));
    EXPECT_EQ(read(xml("<real>inf</real>")), std::nullopt);
}

TEST_F(NSPropertyListSerializationTest, NumbersDoNotDependOnTheLocale) {
    const CommaLocale locale(path("locales"));
    const Value reals = Array{0.5, -1234.25};
    const auto bytes = NSPropertyListSerialization::dataWithPropertyList(reals);
    EXPECT_NE(std::string(bytes.begin(), bytes.end()).find("<real>0.5</real>"), std::string::npos);
    EXPECT_EQ(NSPropertyListSerialization::propertyListWithData(bytes), reals);
    EXPECT_EQ(CommaLocale::decimalPoint(), ",");
}

TEST_F(NSPropertyListSerializationTest, NonFiniteNumbersAreDropped) {
    EXPECT_EQ(roundTrip(Array{1, std::nan(""), INFINITY, -INFINITY, 2}), Value(Array{1, 2}));
}

TEST_F(NSPropertyListSerializationTest, CharactersThatXMLCannotHoldAreReplaced) {
    const std::string mark = "\uFFFD";
    const std::pair<std::string, std::string> cases[] = {{std::string("a\0b", 3), "a" + mark + "b"},
                                                         {"a\x01", "a" + mark},
                                                         {"\x1b[0m", mark + "[0m"},
                                                         {"\xff", mark},
                                                         {"\xed\xa0\x80", mark + mark + mark},
                                                         {"\uFFFE", mark},
                                                         {"cut \xe2\x82", "cut " + mark + mark}};
    for (const auto& [text, expected] : cases) {
        EXPECT_EQ(roundTrip(Dictionary{{"k", text}}), Value(Dictionary{{"k", expected}}));
        EXPECT_EQ(roundTrip(Dictionary{{text, 1}}), Value(Dictionary{{expected, 1}}));
    }
}

TEST_F(NSPropertyListSerializationTest, OtherProgramsReadWhatIsWritten) {
    Value awkward = kEverything;
    awkward["control"] = std::string("\0\x01\x1b\xff", 4);
    awkward["carriage"] = "a\rb";
    awkward["unsigned"] = std::numeric_limits<std::uint64_t>::max();
    awkward[std::string("key\0\x1f", 5)] = 1;
    ASSERT_TRUE(NSPropertyListSerialization::writeToFile(awkward.get_ref<const Dictionary&>(), path("list")));
    const auto seen =
        python("p = plistlib.load(open('" + path("list") +
               "', 'rb'))\nprint(json.dumps([p['integer'], p['negative'], p['least'], p['real'], p['yes'], "
               "p['data'].hex(), p['array'], p['string']]))");
    EXPECT_EQ(Value::parse(seen, nullptr, false),
              Value(Array{42, -5, std::numeric_limits<std::int64_t>::min(), 0.1, true, "0001feff",
                          Array{1, "two", Array{}, Dictionary{}}, awkward["string"]}));
}

TEST_F(NSPropertyListSerializationTest, BothFormatsOfOtherProgramsAreRead) {
    for (const auto* format : {"FMT_XML", "FMT_BINARY"}) {
        python(
            "plistlib.dump({'s': 'caf\\u00e9', 'i': 7, 'n': -7, 'r': 2.5, 'b': True, 'd': bytes([1, 2]), 'a': [1, "
            "{'k': 'v'}]}, open('" +
            path("list") + "', 'wb'), fmt=plistlib." + format + ")");
        EXPECT_EQ(NSPropertyListSerialization::dictionaryWithContentsOfFile(path("list")),
                  (Dictionary{{"s", "caf\u00e9"},
                              {"i", 7},
                              {"n", -7},
                              {"r", 2.5},
                              {"b", true},
                              {"d", Value::binary({1, 2})},
                              {"a", Array{1, Dictionary{{"k", "v"}}}}}))
            << format;
    }
}

TEST_F(NSPropertyListSerializationTest, DateReadsAsSecondsSince1970) {
    EXPECT_EQ(read(xml("<date>2023-11-14T22:13:20Z</date>")), Value(1'700'000'000.0));
}

TEST_F(NSPropertyListSerializationTest, OtherBytesAreNoPropertyList) {
    for (const auto& text :
         {std::string(), std::string("garbage"), std::string("<plist>"), std::string("<html><body/></html>"),
          std::string("bplist00"), std::string("bplist00") + std::string(40, '\xff'), xml("<dict><key>a</key></dict"),
          xml("<unknown/>"), std::string("\0\0\0", 3), std::string("{\"a\":1}")}) {
        EXPECT_EQ(read(text), std::nullopt) << text;
    }
}

TEST_F(NSPropertyListSerializationTest, TruncatedListIsReadWholeOrNotAtAll) {
    const auto whole = NSPropertyListSerialization::dataWithPropertyList(kEverything);
    for (std::size_t length = 0; length < whole.size(); ++length) {
        const Data cut(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length));
        const auto found = NSPropertyListSerialization::propertyListWithData(cut);
        EXPECT_TRUE(!found || *found == kEverything) << length;
    }
}

TEST_F(NSPropertyListSerializationTest, BinaryListWithAChangedByteIsHarmless) {
    python("plistlib.dump({'s': 'text', 'a': [1, {'k': 2.5}], 'd': bytes(20)}, open('" + path("list") +
           "', 'wb'), fmt=plistlib.FMT_BINARY)");
    const auto whole = NSFileManager::contentsAtPath(path("list")).value();
    for (std::size_t place = 8; place < whole.size(); ++place) {
        for (const std::uint8_t byte : Data{0x00, 0x01, 0x7F, 0xA1, 0xD1, 0xFF}) {
            auto changed = whole;
            changed[place] = byte;
            NSPropertyListSerialization::propertyListWithData(changed);
        }
        NSPropertyListSerialization::propertyListWithData(
            Data(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(place)));
    }
}

TEST_F(NSPropertyListSerializationTest, ListsNestedTooDeepAreRefused) {
    const auto nested = [](int levels, const std::string& open, const std::string& close) {
        std::string text;
        for (int i = 0; i < levels; ++i) text += open;
        for (int i = 0; i < levels; ++i) text += close;
        return xml(text);
    };
    EXPECT_TRUE(read(nested(500, "<array>", "</array>")));
    EXPECT_EQ(read(nested(600, "<array>", "</array>")), std::nullopt);
    EXPECT_EQ(read(nested(100'000, "<array>", "</array>")), std::nullopt);
    EXPECT_EQ(read(nested(100'000, "<dict><key>a</key>", "</dict>")), std::nullopt);
}

TEST_F(NSPropertyListSerializationTest, TooDeepContainersAreNotWritten) {
    const Value root = Dictionary{{"deep", nestedArrays(2000)}, {"kept", 1}};
    const auto back = roundTrip(root);
    ASSERT_TRUE(back);
    EXPECT_EQ((*back)["kept"], Value(1));
}

TEST_F(NSPropertyListSerializationTest, FileWithAnotherRootIsNoDictionary) {
    const auto bytes = NSPropertyListSerialization::dataWithPropertyList(Array{1});
    ASSERT_TRUE(NSFileManager::writeToFile(bytes, path("list")));
    EXPECT_EQ(NSPropertyListSerialization::dictionaryWithContentsOfFile(path("list")), std::nullopt);
    EXPECT_EQ(NSPropertyListSerialization::dictionaryWithContentsOfFile(path("none")), std::nullopt);
}

}  // namespace

}  // namespace vorlane
