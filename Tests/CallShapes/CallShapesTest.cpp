#include <gtest/gtest.h>

#include <limits>
#include <string_view>

#include "Public/VLValue.h"
#include "Public/Vorlane.h"
#include "Tests/CallShapes/AcceptedCalls.h"
#include "Tests/Support/SimulatedPhoneTest.h"

namespace vorlane {

namespace {

class CallShapesTest : public SimulatedPhoneTest {
protected:
    Value lastEvent() { return session().lastRequest("register_app_event").payload(); }
    Value lastLabel() { return lastEvent()["event_label"]; }
};

TEST_F(CallShapesTest, EveryAcceptedShapeRuns) {
    EXPECT_NO_THROW(callEveryShape(phone().application()));
    phone().settle();
    EXPECT_EQ(session().requests("register_app_event").size(), 25U);
}

TEST_F(CallShapesTest, NullptrMeansNullopt) {
    const char* none = nullptr;
    Vorlane::setPhash("stored");
    Vorlane::registerEventWithType("type", nullptr, nullptr);
    EXPECT_EQ(lastLabel(), Value(""));
    EXPECT_EQ(lastEvent()["phash"], Value("stored"));
    Vorlane::registerEventWithType(none, none, none);
    EXPECT_EQ(lastEvent()["event_type"], Value(""));
    EXPECT_EQ(lastEvent()["phash"], Value("stored"));
    Vorlane::setPhash(nullptr);
    EXPECT_EQ(Vorlane::phash(), std::nullopt);
}

TEST_F(CallShapesTest, EveryKindOfStringIsTakenAsItIs) {
    const std::string withZero("a\0b", 3);
    for (const auto& label : {std::string(), std::string("label"), withZero}) {
        Vorlane::registerEventWithType("type", label);
        EXPECT_EQ(lastLabel(), Value(label));
        Vorlane::registerEventWithType("type", std::string_view(label));
        EXPECT_EQ(lastLabel(), Value(label));
        Vorlane::registerEventWithType("type", std::optional<std::string>(label));
        EXPECT_EQ(lastLabel(), Value(label));
    }
    Vorlane::registerEventWithType("type", std::string_view("label").substr(1, 2));
    EXPECT_EQ(lastLabel(), Value("ab"));
}

TEST_F(CallShapesTest, BracesAreTheSameAsADictionary) {
    const Array list{1, "two"};
    const Dictionary dictionary{{"string", "coffee"},   {"integer", -2},     {"unsigned", 2U},
                                {"double", 2.5},        {"yes", true},       {"null", nullptr},
                                {"list", list},         {"value", Value(3)}, {"nested", Dictionary{{"milk", true}}},
                                {"empty", Dictionary()}};
    Vorlane::registerEventWithType("type", dictionary);
    const auto expected = lastLabel();
    Vorlane::registerEventWithType("type", {{"string", "coffee"},
                                            {"integer", -2},
                                            {"unsigned", 2U},
                                            {"double", 2.5},
                                            {"yes", true},
                                            {"null", nullptr},
                                            {"list", list},
                                            {"value", Value(3)},
                                            {"nested", {{"milk", true}}},
                                            {"empty", {}}});
    EXPECT_EQ(lastLabel(), expected);
    EXPECT_EQ(expected, Value(dictionary));
}

TEST_F(CallShapesTest, EmptyBracesAreAnEmptyDictionary) {
    Vorlane::registerEventWithType("type", {});
    EXPECT_EQ(lastLabel(), Value(Dictionary()));
}

TEST_F(CallShapesTest, TheFirstOfTwoEqualKeysCounts) {
    Vorlane::registerEventWithType("type", {{"key", 1}, {"key", 2}});
    EXPECT_EQ(lastLabel(), Value(Dictionary{{"key", 1}}));
}

TEST_F(CallShapesTest, NumbersKeepTheirKindAndRange) {
    Vorlane::registerEventWithType("type", {{"least", std::numeric_limits<std::int64_t>::min()},
                                            {"greatest", std::numeric_limits<std::uint64_t>::max()},
                                            {"short", static_cast<short>(-3)},
                                            {"half", 0.5F}});
    EXPECT_EQ(lastLabel().dump(),
              R"({"greatest":18446744073709551615,"half":0.5,"least":-9223372036854775808,"short":-3})");
}

TEST_F(CallShapesTest, LaunchOptionsMayBeWrittenInBraces) {
    auto options = VLSDKOptions::developmentOptions();
    options.setAppKey("0123456789abcdef0123456789abcdef");
    Vorlane::initialiseSDKWithApplication(
        phone().application(), {{UIApplicationLaunchOptionsRemoteNotificationKey, {{"p", "hash"}}}}, options);
    EXPECT_EQ(Vorlane::phash(), "hash");
    Vorlane::initialiseSDKWithApplication(phone().application(), {}, options);
    EXPECT_EQ(log().count("launchOptions: (null)", VLLogLevel::Info), 1);
}

TEST_F(CallShapesTest, OptionalDictionariesArePassedOn) {
    auto options = VLSDKOptions::developmentOptions();
    options.setAppKey("0123456789abcdef0123456789abcdef");
    const std::optional<Dictionary> some = Dictionary{{"source", "icon"}};
    Vorlane::initialiseSDKWithApplication(phone().application(), some, options);
    Vorlane::initialiseSDKWithApplication(phone().application(), *some, options);
    EXPECT_EQ(log().count(R"(launchOptions: {"source":"icon"})", VLLogLevel::Info), 2);
    Vorlane::initialiseSDKWithApplication(phone().application(), std::optional<Dictionary>(), options);
    Vorlane::initialiseSDKWithApplication(phone().application(), nullptr, options);
    EXPECT_EQ(log().count("launchOptions: (null)", VLLogLevel::Info), 2);
}

}  // namespace

}  // namespace vorlane
