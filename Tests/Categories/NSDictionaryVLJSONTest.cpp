#include <gtest/gtest.h>

#include <cmath>

#include "Categories/NSDictionary+VLJSON.h"
#include "Public/VLErrorDomains.h"
#include "Tests/Support/SimulatedPhoneTest.h"

namespace vorlane {

namespace {

class NSDictionaryVLJSONTest : public SimulatedPhoneTest {
protected:
    /// Returns nested objects. Each level is moved, because a braced list would copy it.
    static Value nestedObjects(int levels) {
        Value value = 1;
        for (int i = 0; i < levels; ++i) {
            Dictionary outer;
            outer.emplace("a", std::move(value));
            value = std::move(outer);
        }
        return value;
    }

    static std::string nestedText(int levels) {
        std::string text;
        for (int i = 0; i < levels; ++i) text += R"({"a":)";
        return text + "1" + std::string(static_cast<std::size_t>(levels), '}');
    }

    void expectUnparsable(const std::string& text) {
        std::optional<NSError> error;
        EXPECT_EQ(vl_dictionaryWithJSON(text, error), std::nullopt) << text.substr(0, 40);
        ASSERT_TRUE(error) << text.substr(0, 40);
        EXPECT_EQ(error->domain(), NSCocoaErrorDomain);
        EXPECT_EQ(error->code(), 3840);
        EXPECT_FALSE(error->localizedDescription().empty());
    }
};

TEST_F(NSDictionaryVLJSONTest, ADictionaryBecomesCompactJSON) {
    EXPECT_EQ(vl_asJSON({}), "{}");
    EXPECT_EQ(vl_asJSON({{"b", Array{1, 2.5, nullptr, true}}, {"a", "\u00e9\"\n"}, {"c", Dictionary{{"d", -1}}}}),
              "{\"a\":\"\u00e9\\\"\\n\",\"b\":[1,2.5,null,true],\"c\":{\"d\":-1}}");
}

TEST_F(NSDictionaryVLJSONTest, ValuesUnknownToJSONAreLogged) {
    const Value unfit[] = {Value::binary({1}), Value(std::nan("")), Value(INFINITY), Value(Array{Value::binary({})}),
                           nestedObjects(600)};
    for (const auto& value : unfit) EXPECT_EQ(vl_asJSON({{"a", value}}), "");
    EXPECT_EQ(log().count("The dictionary is not a valid JSON object!", VLLogLevel::Error), 5);
}

TEST_F(NSDictionaryVLJSONTest, NestingIsLimitedTo512Levels) {
    Value deepest = nestedObjects(512);
    EXPECT_EQ(vl_asJSON(deepest.get_ref<const Dictionary&>()), nestedText(512));
    EXPECT_EQ(vl_description(deepest), nestedText(512));
    EXPECT_EQ(vl_description(std::optional<Dictionary>(deepest.get_ref<const Dictionary&>())), nestedText(512));
    EXPECT_TRUE(log().lines().empty());
    for (const int levels : {513, 100'000}) {
        Value value = nestedObjects(levels);
        EXPECT_EQ(vl_asJSON(value.get_ref<const Dictionary&>()), "");
        EXPECT_EQ(vl_description(value), "(nested too deep)");
        const std::optional<Dictionary> dictionary(std::move(value.get_ref<Dictionary&>()));
        EXPECT_EQ(vl_description(dictionary), "(nested too deep)");
    }
    EXPECT_EQ(log().count("The dictionary is not a valid JSON object!", VLLogLevel::Error), 2);
}

TEST_F(NSDictionaryVLJSONTest, InvalidUTF8IsLoggedWithTheDictionary) {
    const Dictionary dictionary{{"a", "\xff"}};
    EXPECT_EQ(vl_asJSON(dictionary), "");
    EXPECT_EQ(vl_asJSON({{"\xc0\x80", 1}}), "");
    const auto lines =
        log().linesContaining("Error converting dictionary to JSON string - NSData was not a valid UTF8 string");
    ASSERT_EQ(lines.size(), 2U);
    EXPECT_EQ(lines[0].level, VLLogLevel::Error);
    EXPECT_EQ(lines[0].payload, Value(dictionary));
}

TEST_F(NSDictionaryVLJSONTest, AJSONObjectBecomesADictionary) {
    std::optional<NSError> error;
    EXPECT_EQ(vl_dictionaryWithJSON(R"( {"a":[1,{"b":null}],"c":"\u00e9"} )", error),
              (Dictionary{{"a", Array{1, Dictionary{{"b", nullptr}}}}, {"c", "\u00e9"}}));
    EXPECT_FALSE(error);
    EXPECT_EQ(vl_dictionaryWithJSON("\xef\xbb\xbf{}", error), Dictionary());
    EXPECT_EQ(vl_dictionaryWithJSON(R"({"a":1,"a":2})", error), (Dictionary{{"a", 2}}));
    EXPECT_TRUE(vl_dictionaryWithJSON(nestedText(512), error));
}

TEST_F(NSDictionaryVLJSONTest, AMissingOrEmptyStringIsANetworkError) {
    for (const auto& text : {std::optional<std::string>(), std::optional<std::string>("")}) {
        std::optional<NSError> error;
        EXPECT_EQ(vl_dictionaryWithJSON(text, error), std::nullopt);
        ASSERT_TRUE(error);
        EXPECT_EQ(error->domain(), VLErrorDomainNetwork);
        EXPECT_EQ(error->code(), 0);
        EXPECT_EQ(error->localizedDescription(), "Cannot parse JSON object from nil or empty string");
    }
}

TEST_F(NSDictionaryVLJSONTest, AnyOtherStringIsAReadError) {
    for (const auto* text : {"[]", "1", "null", "\"a\"", "true", "{", "{\"a\"}", "{}x", "{'a':1}", "{\"a\":NaN}",
                             "{\"a\":\"\xff\"}", "\xff{}", " ", "}", "]"}) {
        expectUnparsable(text);
    }
    expectUnparsable(nestedText(513));
    expectUnparsable(nestedText(100'000));
    expectUnparsable(std::string("{}\0", 3));
    expectUnparsable(std::string("{\"a\":\"\0\"}", 9));
    expectUnparsable(std::string(40U * 1024U * 1024U, '['));
}

TEST_F(NSDictionaryVLJSONTest, BracketsInStringsDoNotNest) {
    std::optional<NSError> error;
    const std::string brackets(2000, '[');
    EXPECT_EQ(vl_dictionaryWithJSON("{\"a\":\"\\\"" + brackets + "\\\\\"}", error),
              (Dictionary{{"a", "\"" + brackets + "\\"}}));
}

TEST_F(NSDictionaryVLJSONTest, TheShortFormLogsTheError) {
    EXPECT_EQ(vl_dictionaryWithJSON(std::string(R"({"a":1})")), (Dictionary{{"a", 1}}));
    EXPECT_TRUE(log().lines().empty());
    EXPECT_EQ(vl_dictionaryWithJSON(std::string()), Dictionary());
    EXPECT_EQ(
        log().count("Error converting JSON string to dictionary: Error Domain=vorlane.sdk.network Code=0 \"Cannot "
                    "parse JSON object from nil or empty string\"",
                    VLLogLevel::Error),
        1);
}

TEST_F(NSDictionaryVLJSONTest, EveryValueHasADescription) {
    EXPECT_EQ(vl_description(Value("text")), "text");
    EXPECT_EQ(vl_description(Value(Dictionary{{"a", "text"}, {"b", Value::binary({1, 2})}})),
              R"({"a":"text","b":"{length = 2}"})");
    EXPECT_EQ(vl_description(Value::binary({1})), R"("{length = 1}")");
    EXPECT_EQ(vl_description(Value(Array{"\xff"})), "[\"\xef\xbf\xbd\"]");
    EXPECT_EQ(vl_description(Value(nullptr)), "null");
    EXPECT_EQ(vl_description(std::optional<Value>()), "(null)");
    EXPECT_EQ(vl_description(std::optional<std::string>()), "(null)");
    EXPECT_EQ(vl_description(std::optional<Dictionary>()), "(null)");
    EXPECT_EQ(vl_description(nestedObjects(600)), "(nested too deep)");
}

}  // namespace

}  // namespace vorlane
