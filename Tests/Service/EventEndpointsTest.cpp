#include "Tests/Service/ServiceTest.h"

namespace vorlane::service {
namespace {

constexpr const char* kTarget = "/0.8/register_app_event?app_key=K";

class EventEndpointsTest : public ServiceTest {
protected:
    static Value payloadWithLabel(const Value& label) {
        return {{"lv", "2.0.1"},      {"acit", "1"},  {"device_id", "D"},    {"sid", "S"},          {"app_key", "K"},
                {"tracking_id", "T"}, {"phash", "p"}, {"event_type", "buy"}, {"event_label", label}};
    }
};

TEST_F(EventEndpointsTest, EventsAreStoredCompletely) {
    expectOK(client().postForm(kTarget, payloadWithLabel("hat")));
    auto events = listOf("events");
    ASSERT_EQ(events.size(), 1u);
    EXPECT_TRUE(events[0]["time"].is_number_float());
    events[0].erase("time");
    EXPECT_EQ(events[0], Value({{"number", 1},
                                {"appKey", "K"},
                                {"trackingId", "T"},
                                {"deviceId", "D"},
                                {"sid", "S"},
                                {"type", "buy"},
                                {"label", "hat"},
                                {"phash", "p"},
                                {"payload", payloadWithLabel("hat")}}));
    EXPECT_EQ(lastRecord()["endpoint"], "registerEvent");
}

TEST_F(EventEndpointsTest, LabelsMayBeData) {
    const Value data = {{"price", 12.5}, {"tags", {"a", "b"}}, {"nothing", nullptr}, {"sub", {{"x", true}}}};
    expectOK(client().postForm(kTarget, payloadWithLabel(data)));
    EXPECT_EQ(listOf("events")[0]["label"], data);
}

TEST_F(EventEndpointsTest, LabelsMayBeEmptyButNotAbsent) {
    expectOK(client().postForm(kTarget, payloadWithLabel("")));
    expectError(client().postForm(kTarget, payloadWithLabel(12)), 400,
                "\"event_label\" is neither a string nor an object");
    auto without = payloadWithLabel("");
    without.erase("event_label");
    expectError(client().postForm(kTarget, without), 400, "\"event_label\" is neither a string nor an object");
    EXPECT_EQ(listOf("events").size(), 1u);
}

TEST_F(EventEndpointsTest, NumericLabelsStayStrings) {
    expectOK(client().postForm(kTarget, payloadWithLabel("0012")));
    EXPECT_EQ(listOf("events")[0]["label"], "0012");
}

TEST_F(EventEndpointsTest, EventsNeedATypeAndAUser) {
    for (const std::string key : {"event_type", "app_key", "tracking_id"}) {
        auto payload = payloadWithLabel("hat");
        payload.erase(key);
        expectError(client().postForm(kTarget, payload), 400, "\"" + key + "\" is missing, empty or not a string");
    }
    EXPECT_EQ(listOf("events"), Value::array());
}

TEST_F(EventEndpointsTest, ThePayloadsAppKeyTakesPrecedence) {
    expectOK(client().postForm("/0.8/register_app_event?app_key=OLD", payloadWithLabel("hat")));
    EXPECT_EQ(listOf("events")[0]["appKey"], "K");
    EXPECT_EQ(lastRecord()["appKey"], "K");
    EXPECT_EQ(lastRecord()["query"], Value({{"app_key", "OLD"}}));
}

TEST_F(EventEndpointsTest, EventsAreListedByAppAndUser) {
    client().postForm(kTarget, payloadWithLabel("1"));
    auto other = payloadWithLabel("2");
    other["tracking_id"] = "a b&c";
    client().postForm(kTarget, other);
    other["app_key"] = "K2";
    client().postForm(kTarget, other);
    EXPECT_EQ(listOf("events").size(), 3u);
    EXPECT_EQ(listOf("events", "?appKey=K").size(), 2u);
    EXPECT_EQ(listOf("events", "?trackingId=a+b%26c").size(), 2u);
    const auto both = listOf("events", "?appKey=K&trackingId=a%20b%26c");
    ASSERT_EQ(both.size(), 1u);
    EXPECT_EQ(both[0]["label"], "2");
    EXPECT_EQ(listOf("events", "?appKey=X"), Value::array());
}

TEST_F(EventEndpointsTest, StringsKeepUnusualCharacters) {
    const std::string label("a\0b\n\xC3\xA9\xF0\x9F\x98\x80'\"%_;--", 17);
    expectOK(client().postForm(kTarget, payloadWithLabel(label)));
    EXPECT_EQ(listOf("events")[0]["label"], label);
    EXPECT_EQ(listOf("events")[0]["payload"], payloadWithLabel(label));
}

}  // namespace
}  // namespace vorlane::service
