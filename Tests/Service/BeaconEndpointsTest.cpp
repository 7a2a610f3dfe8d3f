#include <string>

#include "Tests/Service/ServiceTest.h"

namespace vorlane::service {
namespace {

constexpr const char* kUUID = "E2C56DB5-DFFB-48D2-B060-D0F5A71096E0";
constexpr const char* kOtherUUID = "F7826DA6-4FA2-4E98-8024-BC5B71E0893E";

class BeaconEndpointsTest : public ServiceTest {
protected:
    static Value beacon(const Value& major = 1, const Value& minor = 2, const std::string& uuid = kUUID) {
        return {{"uuid", uuid}, {"major", major}, {"minor", minor}};
    }

    void setContent(const std::string& major, const std::string& minor, const std::string& text,
                    const std::string& uuid = kUUID) const {
        expectOK(client().put("/_admin/beaconContent/K/" + uuid + "/" + major + "/" + minor, {{"pushtext", text}}));
    }

    ServiceAnswer ask(const Value& beacons, const Value& getContent = true) const {
        return client().postJSON(
            "/K/T/ibeacon",
            {{"getContent", getContent}, {"ibeacons", beacons}, {"contentType", "interstitial, local"}});
    }
    /// The text of the message for one beacon; empty without a message.
    std::string textFor(const Value& asked) const {
        const auto answer = ask(Value::array({asked}));
        EXPECT_EQ(answer.status, 200) << answer.body;
        const auto json = answer.json();
        return json.contains("message") ? json["message"]["pushtext"].get<std::string>() : "";
    }

    static Value visit(const std::string& sessionId, const Value& timestamp) {
        return {{"timestamp", timestamp}, {"sessionId", sessionId}, {"uuid", kUUID}, {"major", "5"}, {"minor", "*"}};
    }
    ServiceAnswer enter(const Value& body) const { return client().postJSON("/K/T/session/beacon/region/entry", body); }
    ServiceAnswer leave(const Value& body) const { return client().postJSON("/K/T/session/beacon/region/exit", body); }
    ServiceAnswer summarise(const Value& body) const { return client().postJSON("/K/T/session/beacon", body); }
};

TEST_F(BeaconEndpointsTest, MessagesAreSentAsTemplates) {
    expectOK(client().put(std::string("/_admin/beaconContent/K/") + kUUID + "/1/2",
                          {{"pushtext", "Hi, you"}, {"phash", "hash"}, {"metadata", {{"a", 1}}}}));
    EXPECT_EQ(ask(Value::array({beacon()})).json(), Value({{"message",
                                                            {{"appkey", "K"},
                                                             {"pushtext", "Hi%2C%20you"},
                                                             {"phash", "hash"},
                                                             {"messagecontent", "%7B%22a%22%3A1%7D"}}}}));
}

TEST_F(BeaconEndpointsTest, AStarMatchesAnyValue) {
    setContent("1", "*", "major");
    EXPECT_EQ(textFor(beacon(1, 0)), "major");
    EXPECT_EQ(textFor(beacon(1, 65535)), "major");
    EXPECT_EQ(textFor(beacon(2, 0)), "");
    EXPECT_EQ(textFor(beacon(1, 0, kOtherUUID)), "");
}

TEST_F(BeaconEndpointsTest, TheMostExactPatternApplies) {
    setContent("*", "*", "all", "*");
    EXPECT_EQ(textFor(beacon()), "all");
    setContent("1", "2", "numbers", "*");
    EXPECT_EQ(textFor(beacon()), "numbers");
    setContent("*", "*", "uuid");
    EXPECT_EQ(textFor(beacon()), "uuid");
    setContent("*", "2", "minor");
    EXPECT_EQ(textFor(beacon()), "minor");
    setContent("1", "*", "major");
    EXPECT_EQ(textFor(beacon()), "major");
    setContent("1", "2", "exact");
    EXPECT_EQ(textFor(beacon()), "exact");
    EXPECT_EQ(textFor(beacon(9, 9)), "uuid");
    EXPECT_EQ(textFor(beacon(9, 9, kOtherUUID)), "all");
}

TEST_F(BeaconEndpointsTest, CaseAndNumberTypesDoNotMatter) {
    setContent("1", "2", "a", "e2c56db5-dffb-48d2-b060-d0f5a71096e0");
    EXPECT_EQ(textFor(beacon()), "a");
    EXPECT_EQ(textFor(beacon("1", "2", "e2C56db5-dffb-48d2-b060-d0f5a71096E0")), "a");
    EXPECT_EQ(textFor(beacon("01", "002")), "a");
}

TEST_F(BeaconEndpointsTest, TheFirstBeaconWithContentApplies) {
    setContent("2", "2", "second");
    setContent("3", "3", "third");
    EXPECT_EQ(ask({beacon(1, 1), beacon(2, 2), beacon(3, 3)}).json()["message"]["pushtext"], "second");
    expectOK(ask(Value::array()));
}

TEST_F(BeaconEndpointsTest, ContentIsSentOnlyOnRequest) {
    setContent("*", "*", "a");
    expectOK(ask(Value::array({beacon()}), false));
    expectOK(client().postJSON("/K/T/ibeacon", {{"ibeacons", Value::array({beacon()})}}));
    EXPECT_EQ(textFor(beacon()), "a");
    expectOK(client().postJSON("/L/T/ibeacon", {{"getContent", true}, {"ibeacons", Value::array({beacon()})}}));
}

TEST_F(BeaconEndpointsTest, ContentRequestsNeedBeacons) {
    const auto post = [this](const Value& body) { return client().postJSON("/K/T/ibeacon", body); };
    expectError(post({{"getContent", true}}), 400, "\"ibeacons\" is missing or not a list");
    expectError(ask(Value::array({5})), 400, "a beacon is not an object");
    expectError(ask(Value::array({beacon("*", 1)})), 400, "a beacon has no \"*\"");
    expectError(ask(Value::array({beacon(65536, 1)})), 400, "\"65536\" is not a number from 0 to 65535");
    expectError(ask(Value::array({beacon(1, -1)})), 400, "\"-1\" is not a number from 0 to 65535");
    expectError(ask(Value::array({beacon(1, 1.5)})), 400, "\"1.5\" is not a number from 0 to 65535");
    expectError(ask(Value::array({beacon(1, Value())})), 400, "\"minor\" is missing, empty or not a string");
    expectError(ask(Value::array({beacon(1, 2, "me")})), 400, "\"ME\" is not a UUID");
    expectError(ask(Value::array({beacon(1, 2, "G2C56DB5-DFFB-48D2-B060-D0F5A71096E0")})), 400,
                "\"G2C56DB5-DFFB-48D2-B060-D0F5A71096E0\" is not a UUID");
    expectError(ask(Value::array({beacon(1, 2, "E2C56DB5DFFB-48D2-B060-D0F5A71096E00")})), 400,
                "\"E2C56DB5DFFB-48D2-B060-D0F5A71096E00\" is not a UUID");
    EXPECT_EQ(lastRecord()["endpoint"], "beaconContent");
}

TEST_F(BeaconEndpointsTest, VisitsHaveAStartAndAnEnd) {
    expectOK(enter(visit("S", "1700000000123")));
    Value session = {{"number", 1},       {"appKey", "K"}, {"trackingId", "T"}, {"sessionId", "S"},
                     {"uuid", kUUID},     {"major", "5"},  {"minor", "*"},      {"startTime", 1700000000123},
                     {"endTime", nullptr}};
    EXPECT_EQ(listOf("beaconSessions"), Value::array({session}));
    expectOK(leave(visit("S", 1700000060456)));
    session["endTime"] = 1700000060456;
    EXPECT_EQ(listOf("beaconSessions"), Value::array({session}));
}

TEST_F(BeaconEndpointsTest, EndsWithoutAStartAreKept) {
    expectOK(leave(visit("S", "5")));
    ASSERT_EQ(listOf("beaconSessions").size(), 1u);
    EXPECT_EQ(listOf("beaconSessions")[0]["startTime"], nullptr);
    EXPECT_EQ(listOf("beaconSessions")[0]["endTime"], 5);
}

TEST_F(BeaconEndpointsTest, VisitsAreListedInOrderAndFiltered) {
    enter(visit("S1", "1"));
    enter(visit("S2", "2"));
    leave(visit("S1", "3"));
    client().postJSON("/L/T/session/beacon/region/entry", visit("S1", "4"));
    client().postJSON("/K/a/b/session/beacon/region/entry", visit("S3", "5"));
    EXPECT_EQ(listOf("beaconSessions").size(), 4u);
    EXPECT_EQ(listOf("beaconSessions", "?appKey=K").size(), 3u);
    EXPECT_EQ(listOf("beaconSessions", "?appKey=K&trackingId=a/b")[0]["sessionId"], "S3");
    const auto own = listOf("beaconSessions", "?trackingId=T&appKey=K");
    ASSERT_EQ(own.size(), 2u);
    EXPECT_EQ(own[0]["sessionId"], "S1");
    EXPECT_EQ(own[0]["endTime"], 3);
    EXPECT_EQ(own[1]["endTime"], nullptr);
    EXPECT_EQ(client().get("/_admin/beaconSessions?trackingid=T").status, 400);
}

TEST_F(BeaconEndpointsTest, VisitsNeedAllTheirFields) {
    const auto without = [](const std::string& key) {
        auto body = visit("S", "1");
        body.erase(key);
        return body;
    };
    for (const std::string key : {"sessionId", "uuid", "major", "minor", "timestamp"}) {
        expectError(enter(without(key)), 400, "\"" + key + "\" is missing, empty or not a string");
        expectError(leave(without(key)), 400, "\"" + key + "\" is missing, empty or not a string");
    }
    auto anywhere = visit("S", "1");
    anywhere["uuid"] = "*";
    expectError(enter(anywhere), 400, "\"*\" is not a UUID");
    for (const std::string text : {"now", "1.5", "-1", "99999999999999999999", " 1"})
        expectError(enter(visit("S", text)), 400, "\"timestamp\" is not a time in milliseconds");
    EXPECT_EQ(listOf("beaconSessions"), Value::array());
    EXPECT_EQ(listOf("requests", "?endpoint=beaconEntry").size(), 11u);
    EXPECT_EQ(listOf("requests", "?endpoint=beaconExit").size(), 5u);
}

TEST_F(BeaconEndpointsTest, SummariesAreStoredUnchanged) {
    const Value beacons = {{{"uuid", kUUID}, {"major", 5}, {"minor", 1}, {"proximity", "far"}},
                           {{"uuid", kUUID}, {"major", 5}, {"minor", 2}, {"proximity", "near"}}};
    expectOK(summarise({{"beacons", beacons}, {"timestamp", "1700000000123"}, {"sessionId", "S"}}));
    expectOK(summarise({{"beacons", Value::array()}, {"timestamp", "1700000000124"}}));
    auto summaries = listOf("beaconSummaries");
    ASSERT_EQ(summaries.size(), 2u);
    for (auto& summary : summaries) {
        EXPECT_GT(summary["time"].get<double>(), 1.5e9);
        summary.erase("time");
    }
    EXPECT_EQ(summaries, Value({{{"number", 1},
                                 {"appKey", "K"},
                                 {"trackingId", "T"},
                                 {"sessionId", "S"},
                                 {"timestamp", 1700000000123},
                                 {"beacons", beacons}},
                                {{"number", 2},
                                 {"appKey", "K"},
                                 {"trackingId", "T"},
                                 {"sessionId", nullptr},
                                 {"timestamp", 1700000000124},
                                 {"beacons", Value::array()}}}));
    EXPECT_EQ(listOf("beaconSummaries", "?appKey=L"), Value::array());
    EXPECT_EQ(listOf("beaconSummaries", "?trackingId=T").size(), 2u);
    EXPECT_EQ(client().get("/_admin/beaconSummaries?app=K").status, 400);
}

TEST_F(BeaconEndpointsTest, InvalidSummariesAreRefused) {
    expectError(summarise({{"timestamp", "1"}}), 400, "\"beacons\" is missing or not a list");
    expectError(summarise({{"beacons", Value::array()}}), 400, "\"timestamp\" is missing, empty or not a string");
    expectError(summarise({{"beacons", Value::array({beacon()})}, {"timestamp", "1"}}), 400,
                "\"proximity\" is missing, empty or not a string");
    expectError(summarise({{"beacons", Value::array({"near"})}, {"timestamp", "1"}}), 400, "a beacon is not an object");
    expectError(summarise({{"beacons", Value::array()}, {"timestamp", "1"}, {"sessionId", nullptr}}), 400,
                "\"sessionId\" is missing, empty or not a string");
    EXPECT_EQ(listOf("beaconSummaries"), Value::array());
    EXPECT_EQ(lastRecord()["endpoint"], "beaconSession");
}

TEST_F(BeaconEndpointsTest, ValidRequestsMakeTheirTrackingIdKnown) {
    const auto isKnown = [this] { return client().get("/api/apps/K/tracking/T/tag/x").json().contains("value"); };
    ask(Value::array({5}));
    enter(Value::object());
    leave(Value::object());
    summarise(Value::object());
    EXPECT_FALSE(isKnown());
    ask(Value::array({beacon()}));
    EXPECT_TRUE(isKnown());
}

TEST_F(BeaconEndpointsTest, FaultsApplyToEachEndpoint) {
    for (const std::string name : {"beaconContent", "beaconEntry", "beaconExit", "beaconSession"})
        addFault({{"endpoint", name}, {"kind", "status"}, {"status", 500}, {"count", 1}});
    const Value summary = {{"beacons", Value::array()}, {"timestamp", "1"}};
    EXPECT_EQ(ask(Value::array({beacon()})).status, 500);
    EXPECT_EQ(enter(visit("S", "1")).status, 500);
    EXPECT_EQ(leave(visit("S", "1")).status, 500);
    EXPECT_EQ(summarise(summary).status, 500);
    EXPECT_EQ(listOf("beaconSessions"), Value::array());
    EXPECT_EQ(listOf("beaconSummaries"), Value::array());
    expectOK(ask(Value::array({beacon()})));
    expectOK(enter(visit("S", "1")));
    expectOK(leave(visit("S", "1")));
    expectOK(summarise(summary));
}

TEST_F(BeaconEndpointsTest, ContentIsListedByItsPattern) {
    const auto list = [this] { return client().get("/_admin/beaconContent/K").json()["beaconContent"]; };
    EXPECT_EQ(list(), Value::array());
    setContent("2", "*", "b", "e2c56db5-dffb-48d2-b060-d0f5a71096e0");
    setContent("*", "*", "a", "*");
    const auto plain = [](const std::string& text) {
        return Value{{"pushtext", text}, {"phash", nullptr}, {"sound", nullptr}, {"metadata", Value::object()}};
    };
    EXPECT_EQ(list(), Value({{{"uuid", "*"}, {"major", "*"}, {"minor", "*"}, {"message", plain("a")}},
                             {{"uuid", kUUID}, {"major", "2"}, {"minor", "*"}, {"message", plain("b")}}}));
    setContent("2", "*", "c");
    EXPECT_EQ(list()[1]["message"]["pushtext"], "c");
    EXPECT_EQ(client().get("/_admin/beaconContent/L").json(), Value({{"beaconContent", Value::array()}}));
}

TEST_F(BeaconEndpointsTest, ContentMayBeRemovedSinglyOrTogether) {
    setContent("1", "1", "a");
    setContent("1", "*", "b");
    setContent("2", "2", "c");
    const std::string path = std::string("/_admin/beaconContent/K/") + kUUID;
    expectOK(client().del(path + "/1/1"));
    EXPECT_EQ(textFor(beacon(1, 1)), "b");
    expectError(client().del(path + "/1/1"), 404, "these beacons have no content of their own");
    expectOK(client().del("/_admin/beaconContent/K"));
    EXPECT_EQ(textFor(beacon(2, 2)), "");
}

TEST_F(BeaconEndpointsTest, ContentForInvalidPatternsIsRefused) {
    const Value message = {{"pushtext", "a"}};
    expectError(client().put("/_admin/beaconContent/K/me/1/2", message), 400, "\"ME\" is not a UUID");
    const std::string path = std::string("/_admin/beaconContent/K/") + kUUID;
    expectError(client().put(path + "/x/2", message), 400, "\"x\" is not a number from 0 to 65535");
    expectError(client().put(path + "/1/65536", message), 400, "\"65536\" is not a number from 0 to 65535");
    expectError(client().del(path + "/1/x"), 400, "\"x\" is not a number from 0 to 65535");
    expectError(client().put(path + "/1/2", Value::object()), 400, "\"pushtext\" is missing, empty or not a string");
    EXPECT_EQ(client().get("/_admin/beaconContent/K").json()["beaconContent"], Value::array());
}

}  // namespace
}  // namespace vorlane::service
