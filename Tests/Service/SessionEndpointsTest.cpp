#include "Tests/Service/ServiceTest.h"

namespace vorlane::service {
namespace {

class SessionEndpointsTest : public ServiceTest {
protected:
    static Value payload() {
        return Value::parse(R"({"app_name": "Shop", "app_version": "1.2", "app_build": "34", "session_length": 12,
            "average_session_length": 9, "lit": "1500000000000", "platform": "iOS", "lv": "2.0.1",
            "acit": "1400000000000", "device_id": "D", "sid": "S", "app_key": "K", "tracking_id": "T", "phash": "p",
            "device": {"language": "en-AU", "os_name": "iOS", "os_version": "12.0", "manufacturer": "Apple",
                       "type": "x86_64", "timezone": "+600"}})");
    }

    static Value payloadWithout(const std::string& key) {
        auto rest = payload();
        rest.erase(key);
        return rest;
    }

    static Value movedPayload() {
        auto moved = payload();
        moved["tracking_id"] = "T2";
        moved["prev_tracking_id"] = "T";
        return moved;
    }
};

Value withoutTime(Value row) {
    EXPECT_TRUE(row["time"].is_number_float());
    row.erase("time");
    return row;
}

TEST_F(SessionEndpointsTest, SessionsAreStoredCompletely) {
    expectOK(client().postForm("/0.8/session", payload()));
    const auto sessions = listOf("sessions");
    ASSERT_EQ(sessions.size(), 1u);
    EXPECT_EQ(withoutTime(sessions[0]), Value({{"number", 1},
                                               {"kind", "start"},
                                               {"appKey", "K"},
                                               {"trackingId", "T"},
                                               {"deviceId", "D"},
                                               {"sid", "S"},
                                               {"sessionLength", 12},
                                               {"averageSessionLength", 9},
                                               {"phash", "p"},
                                               {"prevTrackingId", nullptr},
                                               {"payload", payload()}}));
}

TEST_F(SessionEndpointsTest, TheThreeRequestsAreDistinguished) {
    expectOK(client().postForm("/0.8/session", payload()));
    expectOK(client().postForm("/0.8/session/tracking_id", movedPayload()));
    expectOK(client().postForm("/0.8/session/end", movedPayload()));
    const auto sessions = listOf("sessions");
    ASSERT_EQ(sessions.size(), 3u);
    EXPECT_EQ(sessions[0]["kind"], "start");
    EXPECT_EQ(sessions[1]["kind"], "changeTrackingId");
    EXPECT_EQ(sessions[2]["kind"], "end");
    const auto records = listOf("requests");
    EXPECT_EQ(records[0]["endpoint"], "sessionStart");
    EXPECT_EQ(records[1]["endpoint"], "changeTrackingId");
    EXPECT_EQ(records[2]["endpoint"], "sessionEnd");
}

TEST_F(SessionEndpointsTest, SessionsUpdateTheirDevice) {
    client().postForm("/0.8/session", payload());
    const auto devices = listOf("devices");
    ASSERT_EQ(devices.size(), 1u);
    EXPECT_EQ(withoutTime(devices[0]), Value({{"appKey", "K"},
                                              {"deviceId", "D"},
                                              {"trackingId", "T"},
                                              {"prevTrackingId", nullptr},
                                              {"platform", "iOS"},
                                              {"device", payload()["device"]},
                                              {"token", nullptr},
                                              {"registered", false},
                                              {"notificationSettings", nullptr}}));
}

TEST_F(SessionEndpointsTest, ChangingTheTrackingIdMovesTheDevice) {
    client().postForm("/0.8/session", payload());
    client().postForm("/0.8/session/tracking_id", movedPayload());
    const auto devices = listOf("devices");
    ASSERT_EQ(devices.size(), 1u);
    EXPECT_EQ(devices[0]["trackingId"], "T2");
    EXPECT_EQ(devices[0]["prevTrackingId"], "T");
    EXPECT_EQ(listOf("sessions").back()["prevTrackingId"], "T");
}

TEST_F(SessionEndpointsTest, ChangesMakeBothTrackingIdsKnown) {
    client().postForm("/0.8/session/tracking_id", movedPayload());
    for (const std::string trackingId : {"T", "T2"}) {
        const auto answer = client().get("/api/apps/K/tracking/" + trackingId + "/tag/x");
        EXPECT_EQ(answer.json(), Value({{"value", nullptr}}));
    }
}

TEST_F(SessionEndpointsTest, ChangesNeedTheOldTrackingId) {
    expectError(client().postForm("/0.8/session/tracking_id", payload()), 400,
                "\"prev_tracking_id\" is missing, empty or not a string");
    EXPECT_EQ(listOf("sessions"), Value::array());
}

TEST_F(SessionEndpointsTest, SessionsNeedAUser) {
    for (const std::string key : {"app_key", "tracking_id", "device_id"}) {
        const auto text = "\"" + key + "\" is missing, empty or not a string";
        expectError(client().postForm("/0.8/session", payloadWithout(key)), 400, text);
        auto wrong = payload();
        wrong[key] = 5;
        expectError(client().postForm("/0.8/session", wrong), 400, text);
    }
    EXPECT_EQ(listOf("sessions"), Value::array());
    EXPECT_EQ(listOf("requests").size(), 6u);
}

TEST_F(SessionEndpointsTest, FormsWithoutAPayloadAreRefusedAndRecorded) {
    expectError(client().post("/0.8/session", "other=1", "application/x-www-form-urlencoded"), 400,
                "the form has no field \"payload\"");
    const auto record = lastRecord();
    EXPECT_EQ(record["status"], 400);
    EXPECT_EQ(record["body"], "other=1");
    EXPECT_EQ(record["payload"], nullptr);
}

TEST_F(SessionEndpointsTest, InvalidPayloadsAreRefusedAndRecorded) {
    for (const std::string text : {"%7B", "", "%5B%5D", "12", "%7B%22a%22%3A%22%FF%22%7D"}) {
        const auto answer = client().post("/0.8/session", "payload=" + text, "application/x-www-form-urlencoded");
        EXPECT_EQ(answer.status, 400) << text;
        EXPECT_EQ(lastRecord()["body"], "payload=" + text);
    }
    EXPECT_EQ(listOf("requests").size(), 5u);
}

TEST_F(SessionEndpointsTest, JSONBodiesAreNotForms) {
    expectError(client().postJSON("/0.8/session", payload()), 400,
                "the body is not of type application/x-www-form-urlencoded");
}

TEST_F(SessionEndpointsTest, LargeFormsAreAccepted) {
    auto large = payload();
    large["app_name"] = std::string(100'000, '"');
    expectOK(client().postForm("/0.8/session", large));
    EXPECT_EQ(listOf("sessions")[0]["payload"], large);
}

}  // namespace
}  // namespace vorlane::service
