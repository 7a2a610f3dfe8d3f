#include "Beacons/VLBeaconMessage.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "Platform/Platform.h"
#include "Tests/Beacons/BeaconTest.h"

namespace vorlane {

namespace {

using enum CLProximity;

class VLBeaconMessageTest : public BeaconTest {
protected:
    void use(const Array& rules, const Dictionary& further = {}) { useConfig(config(rules, further)); }
    void useConfig(const std::shared_ptr<VLBeaconsConfig>& config) {
        beaconsConfig = config;
        messages = makeMessage();
    }
    std::shared_ptr<VLBeaconMessage> makeMessage() {
        return std::make_shared<VLBeaconMessage>(beaconsConfig, settings, region(), helper, urlBuilder, urlSession,
                                                 payloadBuilder, phone().application());
    }

    void filter(const std::vector<CLBeacon>& beacons) {
        messages->filterBeaconsForContent(beacons, [this](bool requested) { answers.push_back(requested); });
    }
    /// The minor of the beacon in each content request.
    std::vector<int> requestedMinors() {
        std::vector<int> minors;
        for (const auto& request : session().requests(kContentPath)) {
            minors.push_back(request.payload()["ibeacons"][0]["minor"].get<int>());
        }
        return minors;
    }
    static std::vector<int> minorsOf(const std::vector<CLBeacon>& beacons) {
        std::vector<int> minors;
        for (const auto& beacon : beacons) minors.push_back(beacon.minor);
        return minors;
    }
    bool isContentAsked() { return session().lastRequest(kContentPath).payload()["getContent"].get<bool>(); }

    std::shared_ptr<VLBeaconsConfig> beaconsConfig;
    std::shared_ptr<VLBeaconMessage> messages;
    std::vector<bool> answers;
};

TEST_F(VLBeaconMessageTest, SendsBeaconStateAndDeviceData) {
    use({rule("message")});
    filter({beacon()});
    const auto request = session().lastRequest();
    EXPECT_EQ(request.request.HTTPMethod, "POST");
    EXPECT_TRUE(request.request.URL.absoluteString().ends_with(kContentPath)) << request.request.URL.absoluteString();
    EXPECT_TRUE(request.header("Content-Type").value_or("").starts_with("application/json"));
    EXPECT_EQ(request.payload(),
              Value(Dictionary{{"getContent", true},
                               {"ibeacons", Array{Dictionary{{"uuid", kUUID}, {"major", 1}, {"minor", 2}}}},
                               {"contentType", "local"},
                               {"deviceData", payloadBuilder->deviceData()}}));
    EXPECT_EQ(logged("Beacon Data content request"), 1);
    EXPECT_EQ(messages->beaconData()->beacon(), beacon());
}

TEST_F(VLBeaconMessageTest, ActiveApplicationAllowsInterstitials) {
    use({rule("message", {{"minor", "*"}})});
    const auto typeIn = [this](UIApplicationState state, std::uint16_t minor) {
        phone().application()->setApplicationState(state);
        filter({beacon(minor)});
        return session().lastRequest().payload()["contentType"].get<std::string>();
    };
    EXPECT_EQ(typeIn(UIApplicationState::Active, 1), "interstitial, local");
    EXPECT_EQ(typeIn(UIApplicationState::Inactive, 2), "local");
    EXPECT_EQ(typeIn(UIApplicationState::Background, 3), "local");
}

TEST_F(VLBeaconMessageTest, MessageIsShownAndCounted) {
    use({rule("message", {{"message_count", 2}, {"time_period", 1}})});
    filter({beacon()});
    EXPECT_TRUE(answers.empty());
    session().answer(
        kContentPath, 200,
        R"({"message":{"appkey":"K","pushtext":"Hi%20there","phash":"P","messagecontent":"{\"own\":[1,\"a\"]}"}})");
    EXPECT_TRUE(answers.empty());
    phone().settle();
    EXPECT_EQ(answers, std::vector{true});
    const auto& delivered = phone().simulatedApplication().deliveredByHandle();
    ASSERT_EQ(delivered.size(), 1U);
    const auto& notification = delivered.begin()->second;
    EXPECT_EQ(notification.alertBody, "Hi there");
    EXPECT_EQ(notification.fireDate, phone().now());
    EXPECT_EQ(notification.soundName, "UILocalNotificationDefaultSoundName");
    EXPECT_EQ(notification.userInfo, (Dictionary{{"own", Array{1, "a"}}, {"p", "P"}}));
    EXPECT_EQ(logged("Beacon Content available, displaying message"), 1);
    EXPECT_EQ(beaconsConfig->beaconsSettings()->messageDisplayCount(), 1);
}

TEST_F(VLBeaconMessageTest, FailureShowsTheDefaultMessage) {
    use({rule("message", {{"default_message", "Welcome"}, {"message_count", 2}, {"time_period", 1}})});
    filter({beacon()});
    session().fail(kContentPath);
    phone().settle();
    EXPECT_EQ(answers, std::vector{true});
    const auto& delivered = phone().simulatedApplication().deliveredByHandle();
    ASSERT_EQ(delivered.size(), 1U);
    EXPECT_EQ(delivered.begin()->second.alertBody, "Welcome");
    EXPECT_FALSE(delivered.begin()->second.soundName);
    EXPECT_EQ(delivered.begin()->second.userInfo, Dictionary());
    EXPECT_EQ(beaconsConfig->beaconsSettings()->messageDisplayCount(), 1);
    const auto lines = log().linesContaining("Error getting beacon content from server: ");
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_EQ(lines[0].level, VLLogLevel::Debug);
    EXPECT_NE(lines[0].message.find("Error Domain=NSURLErrorDomain Code=-1009"), std::string::npos) << lines[0].message;
    EXPECT_EQ(contentRequests(), 1U);
}

TEST_F(VLBeaconMessageTest, FailureWithoutADefaultMessageShowsNothing) {
    use({rule("message", {{"default_message", "no"}, {"show_default_if_no_network", false}})});
    filter({beacon()});
    session().answer(kContentPath, 500, message());
    EXPECT_TRUE(shown().empty());
    EXPECT_EQ(answers, std::vector{true});
    EXPECT_EQ(loggedPart("Error getting beacon content from server: "), 1);
    EXPECT_EQ(beaconsConfig->beaconsSettings()->messageDisplayCount(), 0);
}

TEST_F(VLBeaconMessageTest, MalformedAnswerCountsAsAFailure) {
    use({rule("message", {{"minor", "*"}, {"default_message", "Welcome"}})});
    std::uint16_t minor = 0;
    for (const auto* body : {"", "no JSON", "[]", "\"text\"", "{\"message\":"}) {
        filter({beacon(++minor)});
        session().answer(kContentPath, 200, body);
    }
    EXPECT_EQ(shown(), std::vector<std::string>(5, "Welcome"));
    EXPECT_EQ(answers, std::vector<bool>(5, true));
}

TEST_F(VLBeaconMessageTest, AnswerWithoutAMessageShowsNoDefault) {
    use({rule("message", {{"minor", "*"}, {"default_message", "Welcome"}})});
    std::uint16_t minor = 0;
    for (const auto& body : {std::string("{}"), std::string(R"({"message":null})"), std::string(R"({"message":"Hi"})"),
                             std::string(R"({"message":{"pushtext":"Hi"}})"), message("Hi", "another")}) {
        filter({beacon(++minor)});
        session().answer(kContentPath, 200, body);
    }
    EXPECT_TRUE(shown().empty());
    EXPECT_EQ(logged("Beacon Content not available and no default message"), 5);
    EXPECT_EQ(answers, std::vector<bool>(5, true));
}

TEST_F(VLBeaconMessageTest, DisabledMessagesAreRequestedButNotShown) {
    for (const Value& notify : {Value(false), Value(nullptr)}) {
        session().forgetRules();
        useConfig(configOf(
            settings,
            configured({rule("message", {{"message_count", 2}, {"time_period", 1}, {"default_message", "Welcome"}})},
                       {{"auto_beacon_notify", notify}})));
        filter({beacon()});
        EXPECT_FALSE(isContentAsked());
        session().answer(kContentPath, 200, message());
        phone().advance(1);
        filter({beacon()});
        session().fail(kContentPath);
        phone().advance(1);
    }
    EXPECT_TRUE(shown().empty());
    EXPECT_EQ(answers, std::vector<bool>(4, true));
    EXPECT_EQ(loggedPart("beacon content"), 0);
    EXPECT_EQ(loggedPart("Beacon Content"), 0);
    // No period starts.
    EXPECT_EQ(settingsFile()["VL_BEACON_RULES_KEY"], Value(Dictionary{}));
}

TEST_F(VLBeaconMessageTest, CountOf2ShowsThreeMessages) {
    use({rule("message", {{"message_count", 2}, {"time_period", 1}})});
    for (int i = 0; i < 4; ++i) {
        filter({beacon()});
        EXPECT_EQ(isContentAsked(), i < 3);
        answerContent("Message " + std::to_string(i));
        phone().advance(1);
    }
    EXPECT_EQ(shown(), (std::vector<std::string>{"Message 0", "Message 1", "Message 2"}));
    // Once for the request and once for the answer.
    EXPECT_EQ(loggedPart("Maximum message count reached for rule: " + std::string(kUUID) + "_1_2, beacon: CLBeacon"),
              2);
    phone().advance(3595);
    filter({beacon()});
    EXPECT_FALSE(isContentAsked());
    answerContent();
    phone().advance(1);
    filter({beacon()});
    EXPECT_TRUE(isContentAsked());
    answerContent("Again");
    EXPECT_EQ(shown().back(), "Again");
}

TEST_F(VLBeaconMessageTest, LimitReachedMeanwhileAppliesToTheAnswer) {
    use({rule("message", {{"minor", "*"}, {"message_count", 0}, {"time_period", 1}})});
    filter({beacon(1)});
    filter({beacon(2)});
    EXPECT_TRUE(isContentAsked());
    answerContent("first");
    answerContent("second");
    EXPECT_EQ(shown(), std::vector<std::string>{"first"});
}

TEST_F(VLBeaconMessageTest, ClosestBeaconsHaveTheLowestKnownAccuracy) {
    const auto closest = [](const std::vector<CLBeacon>& beacons) {
        return minorsOf(VLBeaconMessage::getClosestBeaconArray(beacons));
    };
    EXPECT_EQ(closest({}), std::vector<int>{});
    EXPECT_EQ(closest({beacon(1, Near, 2), beacon(2, Near, 1), beacon(3, Near, 1.5), beacon(4, Near, 1)}),
              (std::vector{2, 4}));
    EXPECT_EQ(closest({beacon(1, Immediate, -1), beacon(2, Far, 30)}), std::vector{2});
    EXPECT_EQ(closest({beacon(1, Immediate, -1)}), std::vector<int>{});
    // The proximity is ignored.
    EXPECT_EQ(closest({beacon(1, Unknown, 0.5), beacon(2, Near, 1)}), std::vector{1});
    EXPECT_EQ(closest({beacon(1, Far, 0.5), beacon(2, Near, 1)}), std::vector{1});
    EXPECT_EQ(closest({beacon(1, Near, 0), beacon(2, Near, std::nan("")), beacon(3, Near, 1e308)}), std::vector{1});
    EXPECT_EQ(closest({beacon(1, Near, std::nan(""))}), std::vector<int>{});
}

TEST_F(VLBeaconMessageTest, ClosestBeaconIsTriedFirst) {
    use({rule("message", {{"minor", "*"}})}, {{"cooloff_period_minutes", 10}});
    const std::vector ranged{beacon(1, Near, 3), beacon(2, Near, -1), beacon(3, Near, 1), beacon(4, Near, 2)};
    for (int i = 0; i < 5; ++i) filter(ranged);
    EXPECT_EQ(requestedMinors(), (std::vector{3, 1, 2, 4}));
    EXPECT_EQ(answers, std::vector{false});
    EXPECT_TRUE(messages->isBeaconsInCooloff());
    EXPECT_EQ(loggedPart("Beacon in cooloff mode: "), 1 + 2 + 3 + 4);
}

TEST_F(VLBeaconMessageTest, SingleBeaconOfUnknownAccuracyIsTried) {
    use({rule("message")});
    filter({beacon(2, Near, -1)});
    EXPECT_EQ(requestedMinors(), std::vector{2});
}

TEST_F(VLBeaconMessageTest, OnlyBeaconsWithinRangeAreRequested) {
    use({rule("message", {{"minor", "*"}, {"alert_range", "near"}})});
    filter({beacon(1, Far, 1), beacon(2, Unknown, 2), beacon(3, Near, 3), beacon(4, Immediate, 4)});
    EXPECT_EQ(requestedMinors(), std::vector{3});
    // A beacon out of range has no cool-off.
    EXPECT_EQ(settingsFile()["VL_COOLDOWN_TIME_KEY"].size(), 1U);
}

TEST_F(VLBeaconMessageTest, HandlerReceivesFalseWhenOutOfRange) {
    use({rule("message", {{"alert_range", "far"}})});
    for (const auto proximity : {Unknown, Immediate, Near, Far}) filter({beacon(2, proximity)});
    EXPECT_EQ(contentRequests(), 0U);
    EXPECT_EQ(answers, std::vector<bool>(4, false));
    EXPECT_FALSE(messages->isBeaconsInCooloff());
    EXPECT_EQ(settingsFile()["VL_COOLDOWN_TIME_KEY"], Value(Dictionary{}));
}

TEST_F(VLBeaconMessageTest, NoBeaconsSetTheCoolOffFlag) {
    use({rule("message")});
    filter({});
    EXPECT_EQ(answers, std::vector{false});
    EXPECT_TRUE(messages->isBeaconsInCooloff());
    messages->didExitRegion();
    EXPECT_FALSE(messages->isBeaconsInCooloff());
}

TEST_F(VLBeaconMessageTest, SecondRequestWaitsForTheCoolOff) {
    use({rule("message")}, {{"cooloff_period_minutes", 10}});
    filter({beacon()});
    EXPECT_FALSE(messages->isBeaconsInCooloff());
    phone().advance(600);
    filter({beacon()});
    EXPECT_EQ(contentRequests(), 1U);
    EXPECT_TRUE(messages->isBeaconsInCooloff());
    messages->didExitRegion();
    phone().advance(0.001);
    filter({beacon()});
    EXPECT_EQ(contentRequests(), 2U);
}

TEST_F(VLBeaconMessageTest, ResultsAreIgnoredFromCoolOffUntilExit) {
    use({rule("message", {{"minor", "*"}})}, {{"cooloff_period_minutes", 10}});
    filter({beacon(1)});
    filter({beacon(1)});
    EXPECT_EQ(answers, std::vector{false});
    phone().advance(700);
    filter({beacon(1), beacon(2)});
    EXPECT_EQ(contentRequests(), 1U);
    EXPECT_EQ(answers, std::vector{false});
    messages->didExitRegion();
    filter({beacon(2)});
    EXPECT_EQ(requestedMinors(), (std::vector{1, 2}));
}

TEST_F(VLBeaconMessageTest, BeaconOutOfRangeClearsTheCoolOffFlag) {
    use({rule("message", {{"minor", "*"}, {"alert_range", "near"}})}, {{"cooloff_period_minutes", 10}});
    filter({beacon(1)});
    filter({beacon(1), beacon(2, Far, 9)});
    EXPECT_EQ(answers, std::vector{false});
    EXPECT_FALSE(messages->isBeaconsInCooloff());
}

TEST_F(VLBeaconMessageTest, CoolOffsApplyToAllRegionsAndSurviveARestart) {
    use({rule("message", {{"minor", "*"}})}, {{"cooloff_period_minutes", 10}});
    filter({beacon(1)});
    messages = makeMessage();
    filter({beacon(1)});
    EXPECT_EQ(contentRequests(), 1U);
    useConfig(std::make_shared<VLBeaconsConfig>(settings));
    filter({beacon(1)});
    EXPECT_EQ(contentRequests(), 1U);
    EXPECT_TRUE(messages->isBeaconsInCooloff());
}

TEST_F(VLBeaconMessageTest, CoolOffIsStoredBeforeTheAnswer) {
    use({rule("message")}, {{"cooloff_period_minutes", 10}});
    filter({beacon()});
    EXPECT_EQ(settingsFile()["VL_COOLDOWN_TIME_KEY"], Value(Dictionary{{std::string(kUUID) + "_1_2", phone().now()}}));
}

TEST_F(VLBeaconMessageTest, HandlerMayBeEmpty) {
    use({rule("message", {{"alert_range", "near"}})});
    messages->filterBeaconsForContent({beacon(2, Far)}, nullptr);
    messages->filterBeaconsForContent({beacon()}, nullptr);
    answerContent();
    EXPECT_EQ(shown(), std::vector<std::string>{"Hello"});
}

TEST_F(VLBeaconMessageTest, HandlerIsCalledAfterDestruction) {
    use({rule("message")});
    filter({beacon()});
    messages.reset();
    answerContent();
    EXPECT_TRUE(shown().empty());
    EXPECT_EQ(answers, std::vector{true});
}

TEST_F(VLBeaconMessageTest, UnmatchedRuleRequestsNothing) {
    use({rule("message", {{"minor", 9}})});
    filter({beacon(1), beacon(2)});
    EXPECT_EQ(contentRequests(), 0U);
    EXPECT_EQ(answers, std::vector{false});
}

TEST_F(VLBeaconMessageTest, OnlyMinus1IsAnUnknownAccuracy) {
    const auto closest =
        VLBeaconMessage::getClosestBeaconArray({beacon(1, Near, 0.5), beacon(2, Near, -5), beacon(3, Near, -1)});
    EXPECT_EQ(minorsOf(closest), std::vector{2});
}

TEST_F(VLBeaconMessageTest, LimitAppliesToTheDefaultMessage) {
    use({rule("message", {{"default_message", "Welcome"}, {"message_count", 0}, {"time_period", 1}})});
    for (int i = 0; i < 2; ++i) {
        filter({beacon()});
        session().fail(kContentPath);
        phone().advance(1);
    }
    EXPECT_EQ(shown(), std::vector<std::string>{"Welcome"});
    EXPECT_FALSE(isContentAsked());
    EXPECT_EQ(loggedPart("Error getting beacon content from server: "), 1);
    EXPECT_EQ(answers, std::vector<bool>(2, true));
}

TEST_F(VLBeaconMessageTest, HandlesAnswersOnTheMainQueue) {
    use({rule("message")});
    std::vector<std::string> order;
    messages->filterBeaconsForContent({beacon()}, [&order](bool /*requested*/) {
        order.emplace_back(Platform::current().mainQueue()->isCurrent() ? "end" : "elsewhere");
    });
    onMainQueue([this, &order] {
        session().answer(kContentPath, 200, message());
        order.emplace_back("callback");
    });
    phone().settle();
    EXPECT_EQ(order, (std::vector<std::string>{"callback", "end"}));
}

}  // namespace

}  // namespace vorlane
