#include <fmt/format.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include "Platform/NSPropertyListSerialization.h"

namespace vorlane {

namespace {

std::optional<Value> read(const std::string& text) {
    return NSPropertyListSerialization::propertyListWithData(Data(text.begin(), text.end()));
}

std::string xml(const std::string& content) { return "<plist version=\"1.0\">" + content + "</plist>"; }

std::string repeated(const std::string& text, int times) {
    std::string result;
    for (int i = 0; i < times; ++i) result += text;
    return result;
}

/// A binary list written object by object, sound or not; the first object is the root. Numbers take four bytes.
class BinaryList {
public:
    void add(const std::string& object) {
        offsets_.push_back(static_cast<std::uint32_t>(text_.size()));
        text_ += object;
    }

    /// An object at the place of the previous one.
    void addAgain() { offsets_.push_back(offsets_.back()); }

    void addArray(const std::vector<std::uint32_t>& members) { add(container(0xA0, members.size(), members)); }

    void addDictionary(const std::vector<std::uint32_t>& keysAndValues) {
        add(container(0xD0, keysAndValues.size() / 2, keysAndValues));
    }

    std::string text() const {
        auto result = text_;
        for (const auto offset : offsets_) result += number(offset, 4);
        return result + std::string("\0\0\0\0\0\0\4\4", 8) + number(offsets_.size(), 8) + number(0, 8) +
               number(text_.size(), 8);
    }

    static std::string number(std::uint64_t value, int width) {
        std::string result;
        for (int shift = 8 * (width - 1); shift >= 0; shift -= 8) result += static_cast<char>(value >> shift);
        return result;
    }

private:
    static std::string container(unsigned kind, std::size_t count, const std::vector<std::uint32_t>& members) {
        std::string result(1, static_cast<char>(kind | 0xFU));
        result += "\x12" + number(count, 4);
        for (const auto member : members) result += number(member, 4);
        return result;
    }

    std::string text_ = "bplist00";
    std::vector<std::uint32_t> offsets_;
};

const std::string kTrue = "\x09";

TEST(HostilePropertyListTest, BinaryListIsReadByItsReferences) {
    BinaryList list;
    list.addDictionary({1, 2, 3, 3});
    list.add("\x51k");
    list.add("\x51l");
    list.addArray({4, 4});
    list.add(kTrue);
    EXPECT_EQ(read(list.text()), Value(Dictionary{{"k", Array{true, true}}, {"l", Array{true, true}}}));
}

TEST(HostilePropertyListTest, BinaryListsNestedTooDeepAreRefused) {
    const auto nested = [](std::uint32_t levels) {
        BinaryList list;
        for (std::uint32_t i = 0; i < levels; ++i) list.addArray({i + 1});
        list.add(kTrue);
        return read(list.text());
    };
    EXPECT_TRUE(nested(512));
    EXPECT_EQ(nested(513), std::nullopt);
    EXPECT_EQ(nested(100'000), std::nullopt);
}

TEST(HostilePropertyListTest, DepthCountsAlsoBehindASharedObject) {
    // The second way into the chain is longer by one than the first.
    BinaryList list;
    constexpr std::uint32_t kChain = 511;
    list.addArray({2, 1});
    list.addArray({2});
    for (std::uint32_t i = 0; i < kChain; ++i) list.addArray({i + 3});
    list.add(kTrue);
    EXPECT_EQ(read(list.text()), std::nullopt);
}

TEST(HostilePropertyListTest, ArrayInsideItselfIsRefused) {
    BinaryList itself;
    itself.addArray({0});
    EXPECT_EQ(read(itself.text()), std::nullopt);
    BinaryList throughAnother;
    throughAnother.addDictionary({1, 2});
    throughAnother.add("\x51k");
    throughAnother.addArray({0});
    EXPECT_EQ(read(throughAnother.text()), std::nullopt);
}

TEST(HostilePropertyListTest, SmallFileOfBillionsOfObjectsIsRefused) {
    BinaryList list;
    for (std::uint32_t i = 0; i < 60; ++i) list.addArray({i + 1, i + 1});
    list.add(kTrue);
    EXPECT_EQ(read(list.text()), std::nullopt);
}

TEST(HostilePropertyListTest, LongStringSharedByManyIsRefused) {
    BinaryList list;
    list.addArray(std::vector<std::uint32_t>(100'000, 1));
    list.add("\x5F\x12" + BinaryList::number(1'000'000, 4) + std::string(1'000'000, 'x'));
    EXPECT_EQ(read(list.text()), std::nullopt);
}

TEST(HostilePropertyListTest, ManyArraysOverTheSameBytesAreRefused) {
    constexpr std::uint32_t kArrays = 10'000;
    BinaryList list;
    std::vector<std::uint32_t> all(kArrays);
    for (std::uint32_t i = 0; i < kArrays; ++i) all[i] = i + 1;
    list.addArray(all);
    list.addArray(std::vector<std::uint32_t>(kArrays, kArrays + 1));
    for (std::uint32_t i = 1; i < kArrays; ++i) list.addAgain();
    list.add(kTrue);
    EXPECT_EQ(read(list.text()), std::nullopt);
}

TEST(HostilePropertyListTest, ReferencesToTheOutsideAreRefused) {
    const std::vector<std::string> objects = {
        "\xA1" + BinaryList::number(7, 4),                            // A member that does not exist
        "\xA1",                                                       // No room for its member
        "\xAF\x13" + BinaryList::number(std::uint64_t{1} << 62U, 8),  // More members than bytes
        "\xDF\x13" + BinaryList::number(std::uint64_t{1} << 63U, 8),  // Twice that overflows
        "\x6F\x13" + BinaryList::number(std::uint64_t{1} << 63U, 8),  // The same for text
        "\x5F\x12" + BinaryList::number(1000, 4),                     // A text longer than the file
        "\x5F\x14" + std::string(16, '\x01'),                         // A count of 16 bytes
        "\x5F\x51",                                                   // A count that is not a number
        "\xAF",                                                       // No count
        "\x13",                                                       // No room for the number
        "\x1F",                                                       // A number of 32768 bytes
        "\x70",                                                       // Not a kind of object
    };
    for (const auto& object : objects) {
        BinaryList list;
        list.add(object);
        EXPECT_EQ(read(list.text()), std::nullopt) << static_cast<int>(static_cast<unsigned char>(object[0]));
    }
}

TEST(HostilePropertyListTest, ImpossibleTrailersAreRefused) {
    BinaryList list;
    list.addArray({1});
    list.add(kTrue);
    const auto whole = list.text();
    ASSERT_TRUE(read(whole));
    const auto trailer = whole.size() - 32;
    const auto most = std::numeric_limits<std::uint64_t>::max();
    const std::vector<std::pair<std::size_t, std::string>> changes = {
        {6, std::string(1, '\0')},         {6, "\x05"},
        {7, std::string(1, '\0')},         {7, "\xFF"},
        {8, BinaryList::number(0, 8)},     {8, BinaryList::number(most, 8)},
        {8, BinaryList::number(9, 8)},     {16, BinaryList::number(2, 8)},
        {16, BinaryList::number(most, 8)}, {16, BinaryList::number(1, 3)},
        {24, BinaryList::number(0, 8)},    {24, BinaryList::number(7, 8)},
        {24, BinaryList::number(most, 8)}, {24, BinaryList::number(trailer + 1, 8)}};
    for (const auto& [place, bytes] : changes) {
        auto changed = whole;
        changed.replace(trailer + place, bytes.size(), bytes);
        EXPECT_EQ(read(changed), std::nullopt) << place;
    }
}

TEST(HostilePropertyListTest, ZeroInsideABinaryStringIsRefused) {
    for (const auto& text : {std::string("\x62\0k\0\0", 5), std::string("\x61\0\0", 3)}) {
        BinaryList list;
        list.addDictionary({1, 1});
        list.add(text);
        EXPECT_EQ(read(list.text()), std::nullopt);
    }
}

TEST(HostilePropertyListTest, ObjectsOfOtherKindsAreLeftOut) {
    BinaryList list;
    list.addArray({1, 2, 3});
    list.add("\x80\x05");
    list.add(kTrue);
    list.add("\x51x");
    EXPECT_EQ(read(list.text()), Value(Array{true, "x"}));
}

TEST(HostilePropertyListTest, TagsInCommentsDoNotHideTheDepth) {
    for (const std::string hidden : {"<!-- </array> -->", "<?x </array> ?>", "<?x \"?> </array> \"?>",
                                     "<!DOCTYPE x \"</array>\">", "<string><![CDATA[</array>]]></string>",
                                     "<string a=\"</array>\">x</string>", "<string>x<!--</array>--></string>"}) {
        EXPECT_EQ(read(xml(repeated("<array>" + hidden, 5000) + repeated("</array>", 5000))), std::nullopt) << hidden;
    }
}

TEST(HostilePropertyListTest, CommentsAreNoTags) {
    EXPECT_EQ(read("<?xml version=\"1.0\"?>\n<!DOCTYPE plist PUBLIC \"-//X//DTD PLIST 1.0//EN\" \"http://x/y.dtd\">\n" +
                   xml("<!-- " + repeated("<array>", 600) +
                       " --><array ><string>a<![CDATA[<array>]]></string><dict/>"
                       "<array/></array>")),
              Value(Array{"a<array>", Dictionary{}, Array{}}));
}

TEST(HostilePropertyListTest, MarkupLeftOpenIsRefused) {
    for (const std::string open : {"<", "<!", "<!--", "<!-- -", "<![CDATA[", "<?", "<?x", "<array", "</array",
                                   "<!DOCTYPE", "<!DOCTYPE x [", "<array a=\"", "<a<b>"}) {
        EXPECT_EQ(read("<plist version=\"1.0\"><array>" + open), std::nullopt) << open;
        EXPECT_EQ(read(open), std::nullopt) << open;
    }
    EXPECT_EQ(read(xml("</array></array>")), std::nullopt);
    EXPECT_EQ(read(xml(std::string("<dict\0></dict>", 14))), std::nullopt);
}

TEST(HostilePropertyListTest, StringOf3MillionEntitiesIsRead) {
    // A reader that moves the rest of the string for each of them takes hours.
    std::string text;
    for (int i = 0; i < 1000000; ++i) text += "&<>";
    const Value dictionary = {{text, text}};
    const auto bytes = NSPropertyListSerialization::dataWithPropertyList(dictionary);
    // Too long to be printed.
    EXPECT_TRUE(NSPropertyListSerialization::propertyListWithData(bytes) == dictionary);
}

TEST(HostilePropertyListTest, EntitiesMayStandAnywhereInALongString) {
    for (std::size_t before = 1000; before < 1050; ++before) {
        for (const std::string plain : {"", "\u00e9"}) {
            const auto end = repeated("x" + plain, 500);
            EXPECT_EQ(read(xml("<string>" + std::string(before, 'x') + plain + "&amp;&#233;" + end + "</string>")),
                      Value(std::string(before, 'x') + plain + "&\u00e9" + end));
        }
    }
    const std::string longText(3000, 'x');
    EXPECT_EQ(read(xml("<string>&lt;" + longText + "<!-- & -->" + longText + "<![CDATA[&amp;" + longText +
                       "]]>&gt;</string>")),
              Value("<" + longText + longText + "&amp;" + longText + ">"));
}

TEST(HostilePropertyListTest, EntityWithoutAnEndIsHarmless) {
    const std::string longText(3000, 'x');
    for (const auto& text : {"&" + longText, longText + "&amp", longText + "&" + longText + ";", longText + "&&&&"}) {
        read(xml("<string>" + text + "</string>"));
        read(xml("<dict><key>" + text + "</key><data>" + text + "</data></dict>"));
        EXPECT_EQ(read("&" + longText + xml("<true/>") + "&" + longText), read("&" + xml("<true/>") + "&"));
    }
}

TEST(HostilePropertyListTest, ImpossibleCharacterReferencesAreHarmless) {
    for (const std::string reference :
         {"&#0;", "&#x0;", "&#xFFFFFFFF;", "&#;", "&;", "&amp", "&unknown;", "&#xD800;"}) {
        const auto text = fmt::format("<key>{0}</key><string>{0}</string>", reference);
        read(xml(fmt::format("<dict>{}</dict>", text)));
        read(xml(fmt::format("<string>a{}b</string>", reference)));
    }
    EXPECT_EQ(read(xml("<string>&#233;&lt;&amp;&#x1F600;</string>")), Value("\u00e9<&\U0001F600"));
}

}  // namespace

}  // namespace vorlane
