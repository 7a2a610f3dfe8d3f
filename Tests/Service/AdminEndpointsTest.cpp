#include <future>
#include <string>

#include "Tests/Service/ServiceTest.h"

namespace vorlane::service {
namespace {

class AdminEndpointsTest : public ServiceTest {
protected:
    void ask(const std::string& appKey, const std::string& trackingId = "T") const {
        EXPECT_EQ(client().get("/config/application/ios/" + appKey + "?trackingId=" + trackingId).status, 200);
    }

    /// Sends an admin request on a thread of its own.
    std::future<ServiceAnswer> askLater(const std::string& target) const {
        return std::async(std::launch::async, [this, target] { return client().get(target); });
    }
};

TEST_F(AdminEndpointsTest, FirstPageListsEveryEndpoint) {
    const auto answer = client().get("/");
    EXPECT_EQ(answer.status, 200);
    EXPECT_EQ(answer.headers.at("Content-Type"), "text/plain; charset=utf-8");
    for (const std::string text : {"/_admin/requests", "/_admin/faults", "/_admin/config/{appKey}", "sessionStart",
                                   "/0.8/register_app_event", "deviceRegistration"})
        EXPECT_NE(answer.body.find(text), std::string::npos) << text;
}

TEST_F(AdminEndpointsTest, HealthIsOK) { expectOK(client().get("/_admin/health")); }

TEST_F(AdminEndpointsTest, AdminRequestsAreNotRecorded) {
    client().get("/");
    client().get("/_admin/health");
    client().get("/_admin/tags");
    EXPECT_EQ(listOf("requests"), Value::array());
}

TEST_F(AdminEndpointsTest, RequestsAreRecordedCompletely) {
    const Value payload = {{"app_key", "K"}, {"tracking_id", "T"}, {"event_type", "e"}, {"event_label", "l"}};
    client().postForm("/0.8/register_app_event?app_key=K", payload);
    auto record = lastRecord();
    EXPECT_TRUE(record["time"].is_number_float());
    EXPECT_GT(record["time"].get<double>(), 1.5e9);
    EXPECT_EQ(record["headers"]["Content-Type"], "application/x-www-form-urlencoded");
    EXPECT_EQ(record["headers"]["Content-Length"], std::to_string(record["body"].get<std::string>().size()));
    EXPECT_FALSE(record["headers"].contains("REMOTE_ADDR"));
    EXPECT_TRUE(record["body"].get<std::string>().starts_with("payload=%7B%22app_key%22%3A%22K%22"));
    for (const char* key : {"time", "headers", "body"}) record.erase(key);
    EXPECT_EQ(record, Value({{"number", 1},
                             {"endpoint", "registerEvent"},
                             {"method", "POST"},
                             {"path", "/0.8/register_app_event"},
                             {"query", {{"app_key", "K"}}},
                             {"payload", payload},
                             {"appKey", "K"},
                             {"trackingId", "T"},
                             {"status", 200},
                             {"fault", nullptr}}));
}

TEST_F(AdminEndpointsTest, UnknownPathsAreNotFoundButRecorded) {
    expectError(client().get("/K/T/rich/other?stateHash=x&timezone=%252B600"), 404, "there is no such endpoint");
    const auto record = lastRecord();
    EXPECT_EQ(record["endpoint"], "unknown");
    EXPECT_EQ(record["path"], "/K/T/rich/other");
    EXPECT_EQ(record["query"], Value({{"stateHash", "x"}, {"timezone", "%2B600"}}));
    EXPECT_EQ(record["status"], 404);
}

TEST_F(AdminEndpointsTest, WrongMethodsAreAnsweredWithTheRightOnes) {
    const auto answer = client().get("/0.8/session");
    expectError(answer, 405, "the endpoint does not support this method");
    EXPECT_EQ(answer.headers.at("Allow"), "POST");
    EXPECT_EQ(client().options("/api/apps/K/tracking/T/tag/*").headers.at("Allow"), "DELETE, GET, POST");
    EXPECT_EQ(listOf("requests", "?status=405").size(), 2u);
}

TEST_F(AdminEndpointsTest, RequestsAreFiltered) {
    ask("K", "T");
    ask("K", "U");
    ask("L", "T");
    client().get("/other");
    client().del("/api/apps/K/tracking/T/tag/*");
    EXPECT_EQ(listOf("requests").size(), 5u);
    EXPECT_EQ(listOf("requests", "?endpoint=config").size(), 3u);
    EXPECT_EQ(listOf("requests", "?method=DELETE").size(), 1u);
    EXPECT_EQ(listOf("requests", "?path=/other").size(), 1u);
    EXPECT_EQ(listOf("requests", "?appKey=K").size(), 3u);
    EXPECT_EQ(listOf("requests", "?trackingId=T").size(), 3u);
    EXPECT_EQ(listOf("requests", "?appKey=K&trackingId=T&endpoint=config").size(), 1u);
    EXPECT_EQ(listOf("requests", "?status=404").size(), 1u);
    EXPECT_EQ(listOf("requests", "?since=3").size(), 2u);
    EXPECT_EQ(listOf("requests", "?since=5"), Value::array());
}

TEST_F(AdminEndpointsTest, InvalidQueriesAreRefused) {
    expectError(client().get("/_admin/requests?endpont=config"), 400, "unknown name \"endpont\"");
    expectError(client().get("/_admin/requests?since=x"), 400,
                "\"since\" is not a number from 0 to 9223372036854775807");
    expectError(client().get("/_admin/requests?waitFor=-1"), 400,
                "\"waitFor\" is not a number from 0 to 9223372036854775807");
    for (const std::string text : {"601", "-1", "nan", "inf", "1s", ""})
        expectError(client().get("/_admin/requests?timeout=" + text), 400, "\"timeout\" is not a number from 0 to 600");
    EXPECT_EQ(client().get("/_admin/tags?trackingid=T").status, 400);
    EXPECT_EQ(client().del("/_admin/faults?ids=1").status, 400);
}

TEST_F(AdminEndpointsTest, WaitingEndsWithEnoughRequests) {
    ask("K");
    auto waiting = askLater("/_admin/requests?endpoint=config&waitFor=3&timeout=600");
    client().get("/other");
    ask("K");
    ask("K");
    const auto answer = waiting.get().json();
    EXPECT_EQ(answer["complete"], true);
    ASSERT_EQ(answer["requests"].size(), 3u);
    EXPECT_EQ(answer["requests"][2]["number"], 4);
}

TEST_F(AdminEndpointsTest, WaitingForExistingRequestsEndsImmediately) {
    ask("K");
    const auto answer = client().get("/_admin/requests?waitFor=1&timeout=600").json();
    EXPECT_EQ(answer["complete"], true);
    EXPECT_EQ(answer["requests"].size(), 1u);
}

TEST_F(AdminEndpointsTest, WaitingReturnsExistingRequestsAtTheTimeout) {
    ask("K");
    const auto answer = client().get("/_admin/requests?waitFor=2&timeout=0.01").json();
    EXPECT_EQ(answer["complete"], false);
    EXPECT_EQ(answer["requests"].size(), 1u);
}

TEST_F(AdminEndpointsTest, WaitingMayBeLimitedToLaterRequests) {
    ask("K");
    auto waiting = askLater("/_admin/requests?since=1&waitFor=1&timeout=600");
    ask("L");
    const auto answer = waiting.get().json();
    ASSERT_EQ(answer["requests"].size(), 1u);
    EXPECT_EQ(answer["requests"][0]["appKey"], "L");
}

TEST_F(AdminEndpointsTest, WaitingDoesNotPreventShutdown) {
    auto waiting = askLater("/_admin/requests?waitFor=1&timeout=600");
    ask("K");  // there may be one thread at work now, or two
    auto second = askLater("/_admin/requests?waitFor=2&timeout=600");
    EXPECT_EQ(waiting.get().json()["complete"], true);
    stopServer();
    // Answered with the existing requests, cut off before that, or refused.
    const auto answer = second.get();
    EXPECT_TRUE(answer.status == 0 || answer.json()["complete"] == false);
}

TEST_F(AdminEndpointsTest, ClearingDoesNotReuseRequestNumbers) {
    ask("K");
    expectOK(client().del("/_admin/requests"));
    EXPECT_EQ(listOf("requests"), Value::array());
    ask("K");
    EXPECT_EQ(lastRecord()["number"], 2);
}

TEST_F(AdminEndpointsTest, ResetRemovesEverything) {
    client().postForm("/0.8/session", {{"app_key", "K"}, {"tracking_id", "T"}, {"device_id", "D"}});
    client().postForm("/0.8/register_app_event",
                      {{"app_key", "K"}, {"tracking_id", "T"}, {"event_type", "e"}, {"event_label", "l"}});
    client().postJSON("/api/apps/K/tracking/T", {{"name", "a"}, {"value", 1}});
    client().put("/_admin/config/K", {{"a", 1}});
    client().put("/_admin/regions/K/a", {{"latitude", 1}, {"longitude", 2}, {"radius", 3}});
    client().put("/_admin/geoContent/K/enter/a", {{"pushtext", "in"}});
    client().put("/_admin/beaconContent/K/*/*/*", {{"pushtext", "near"}});
    client().postJSON("/K/T/session/beacon/region/exit", {{"timestamp", "1"},
                                                          {"sessionId", "S"},
                                                          {"uuid", "E2C56DB5-DFFB-48D2-B060-D0F5A71096E0"},
                                                          {"major", "*"},
                                                          {"minor", "*"}});
    client().postJSON("/K/T/session/beacon", {{"timestamp", "2"}, {"beacons", Value::array()}});
    addFault({{"endpoint", "config"}, {"kind", "drop"}});
    expectOK(client().post("/_admin/reset", "", "text/plain"));
    for (const std::string name :
         {"requests", "faults", "sessions", "events", "tags", "devices", "beaconSessions", "beaconSummaries"})
        EXPECT_EQ(listOf(name), Value::array()) << name;
    for (const std::string name : {"regions", "geoContent", "beaconContent"})
        EXPECT_EQ(client().get("/_admin/" + name + "/K").json(), Value({{name, Value::array()}}));
    EXPECT_TRUE(client().get("/config/application/ios/K").json().contains("services"));
    EXPECT_TRUE(client().get("/api/apps/K/tracking/T/tag/a").json().contains("error"));
}

}  // namespace
}  // namespace vorlane::service
