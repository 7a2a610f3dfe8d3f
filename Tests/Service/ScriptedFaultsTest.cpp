#include <chrono>
#include <future>
#include <string>

#include "Tests/Service/RawConnection.h"
#include "Tests/Service/ServiceTest.h"

namespace vorlane::service {
namespace {

constexpr const char* kConfig = "/config/application/ios/K";
constexpr const char* kConfigRequest = "GET /config/application/ios/K HTTP/1.1\r\nHost: h\r\n\r\n";
constexpr const char* kTags = "/api/apps/K/tracking/T";

class ScriptedFaultsTest : public ServiceTest {
protected:
    static Value tag() { return {{"name", "a"}, {"value", "1"}}; }

    /// The bytes of the answer to a configuration request, until the connection ends.
    std::string rawAnswer() const { return RawConnection(port()).send(kConfigRequest).end().receiveAll(); }
};

TEST_F(ScriptedFaultsTest, StatusReplacesTheAnswerAndStoresNothing) {
    addFault({{"endpoint", "updateTag"}, {"kind", "status"}, {"status", 503}});
    expectError(client().postJSON(kTags, tag()), 503, "a scripted fault");
    EXPECT_EQ(listOf("tags"), Value::array());
    const auto record = lastRecord();
    EXPECT_EQ(record["status"], 503);
    EXPECT_EQ(record["endpoint"], "updateTag");
    EXPECT_EQ(record["payload"], tag());
    EXPECT_EQ(record["fault"],
              Value({{"id", 1}, {"endpoint", "updateTag"}, {"kind", "status"}, {"status", 503}, {"applied", 1}}));
}

TEST_F(ScriptedFaultsTest, StatusMayHaveABody) {
    addFault({{"endpoint", "config"},
              {"kind", "status"},
              {"status", 400},
              {"body", "<html>"},
              {"contentType", "text/html"}});
    const auto answer = client().get(kConfig);
    EXPECT_EQ(answer.status, 400);
    EXPECT_EQ(answer.body, "<html>");
    EXPECT_EQ(answer.headers.at("Content-Type"), "text/html");
}

TEST_F(ScriptedFaultsTest, Status204HasNoBody) {
    addFault({{"endpoint", "config"}, {"kind", "status"}, {"status", 204}});
    const auto answer = client().get(kConfig);
    EXPECT_EQ(answer.status, 204);
    EXPECT_EQ(answer.body, "");
}

TEST_F(ScriptedFaultsTest, FaultsApplyAsOftenAsScripted) {
    addFault({{"endpoint", "config"}, {"kind", "status"}, {"status", 500}, {"count", 2}});
    EXPECT_EQ(client().get(kConfig).status, 500);
    EXPECT_EQ(listOf("faults")[0]["count"], 1);
    EXPECT_EQ(listOf("faults")[0]["applied"], 1);
    EXPECT_EQ(client().get(kConfig).status, 500);
    EXPECT_EQ(client().get(kConfig).status, 200);
    EXPECT_EQ(listOf("faults"), Value::array());
}

TEST_F(ScriptedFaultsTest, FaultsOfOneEndpointApplyInOrder) {
    addFault({{"endpoint", "config"}, {"kind", "status"}, {"status", 500}, {"count", 1}});
    addFault({{"endpoint", "*"}, {"kind", "status"}, {"status", 501}, {"count", 1}});
    addFault({{"endpoint", "config"}, {"kind", "status"}, {"status", 502}});
    EXPECT_EQ(client().get(kConfig).status, 500);
    EXPECT_EQ(client().get(kConfig).status, 501);
    EXPECT_EQ(client().get(kConfig).status, 502);
    EXPECT_EQ(client().get(kConfig).status, 502);
}

TEST_F(ScriptedFaultsTest, OtherEndpointsAreUnaffected) {
    addFault({{"endpoint", "config"}, {"kind", "drop"}});
    expectOK(client().postJSON(kTags, tag()));
    expectOK(client().get("/_admin/health"));
}

TEST_F(ScriptedFaultsTest, AStarMatchesEveryAppEndpoint) {
    addFault({{"endpoint", "*"}, {"kind", "status"}, {"status", 500}});
    EXPECT_EQ(client().get(kConfig).status, 500);
    EXPECT_EQ(client().get("/nowhere").status, 500);
    expectOK(client().get("/_admin/health"));
    EXPECT_EQ(client().get("/").status, 200);
}

TEST_F(ScriptedFaultsTest, DroppedRequestsReceiveAndStoreNothing) {
    addFault({{"endpoint", "config"}, {"kind", "drop"}, {"count", 2}});
    EXPECT_EQ(rawAnswer(), "");
    EXPECT_EQ(client().get(kConfig).status, 0);
    EXPECT_EQ(listOf("requests").size(), 2u);
    EXPECT_EQ(lastRecord()["status"], nullptr);
    EXPECT_EQ(lastRecord()["fault"]["kind"], "drop");
}

TEST_F(ScriptedFaultsTest, TruncatedAnswersAnnounceAllAndSendHalf) {
    const auto whole = client().get(kConfig).body;
    addFault({{"endpoint", "config"}, {"kind", "truncate"}});
    EXPECT_EQ(rawAnswer(), "HTTP/1.1 200 \r\nContent-Type: application/json\r\nContent-Length: " +
                               std::to_string(whole.size()) + "\r\n\r\n" + whole.substr(0, whole.size() / 2));
    EXPECT_EQ(client().get(kConfig).status, 0);
    EXPECT_EQ(lastRecord()["status"], 200);
}

TEST_F(ScriptedFaultsTest, TruncatedAnswersAreTheEndpoints) {
    addFault({{"endpoint", "updateTag"}, {"kind", "truncate"}});
    EXPECT_EQ(client().postJSON(kTags, tag()).status, 0);
    EXPECT_EQ(listOf("tags").size(), 1u);
}

TEST_F(ScriptedFaultsTest, GarbageIsNotHTTP) {
    addFault({{"endpoint", "config"}, {"kind", "garbage"}});
    const auto bytes = rawAnswer();
    EXPECT_FALSE(bytes.empty());
    EXPECT_FALSE(bytes.starts_with("HTTP"));
    EXPECT_EQ(client().get(kConfig).status, 0);
    EXPECT_EQ(lastRecord()["status"], nullptr);
}

TEST_F(ScriptedFaultsTest, GarbageMayBeSetInBytes) {
    addFault({{"endpoint", "config"}, {"kind", "garbage"}, {"bytes", "00ff0A"}});
    EXPECT_EQ(rawAnswer(), std::string("\x00\xff\n", 3));
}

TEST_F(ScriptedFaultsTest, GarbageWithAStatusIsNotJSON) {
    addFault({{"endpoint", "config"}, {"kind", "garbage"}, {"status", 200}});
    const auto answer = client().get(kConfig);
    EXPECT_EQ(answer.status, 200);
    EXPECT_EQ(answer.headers.at("Content-Type"), "application/json");
    EXPECT_TRUE(answer.json().is_discarded());
    EXPECT_EQ(lastRecord()["status"], 200);
}

TEST_F(ScriptedFaultsTest, BodyReplacesTheAnswer) {
    addFault({{"endpoint", "getTag"}, {"kind", "body"}, {"body", {{"value", {1, 2}}}}, {"count", 1}});
    EXPECT_EQ(client().get("/api/apps/K/tracking/T/tag/a").json(), Value({{"value", {1, 2}}}));
    addFault({{"endpoint", "getTag"}, {"kind", "body"}, {"body", ""}, {"count", 1}});
    const auto answer = client().get("/api/apps/K/tracking/T/tag/a");
    EXPECT_EQ(answer.status, 200);
    EXPECT_EQ(answer.body, "");
}

TEST_F(ScriptedFaultsTest, DelayedRequestsAreRecordedImmediately) {
    addFault({{"endpoint", "updateTag"}, {"kind", "delay"}, {"seconds", 600}});
    auto delayed = std::async(std::launch::async, [this] { return client().postJSON(kTags, tag()); });
    const auto records = client().get("/_admin/requests?waitFor=1&timeout=600").json()["requests"];
    ASSERT_EQ(records.size(), 1u);
    EXPECT_EQ(records[0]["fault"]["seconds"], 600);
    EXPECT_EQ(listOf("tags").size(), 1u);
    // The service ends without waiting for the delay; the request then has no answer.
    stopServer();
    EXPECT_EQ(delayed.get().status, 0);
}

TEST_F(ScriptedFaultsTest, DelaysEndWithTheUsualAnswer) {
    addFault({{"endpoint", "updateTag"}, {"kind", "delay"}, {"seconds", 0.02}});
    const auto begin = std::chrono::steady_clock::now();
    expectOK(client().postJSON(kTags, tag()));
    EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(20));
}

TEST_F(ScriptedFaultsTest, EveryFaultMayBeDelayed) {
    addFault({{"endpoint", "config"}, {"kind", "drop"}, {"seconds", 0.02}});
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_EQ(client().get(kConfig).status, 0);
    EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(20));
}

TEST_F(ScriptedFaultsTest, AddedFaultsAreReturnedAndListed) {
    const Value fault = {{"endpoint", "config"}, {"kind", "body"}, {"body", "x"}, {"contentType", "text/plain"},
                         {"seconds", 0.5},       {"status", 201},  {"count", 3}};
    auto expected = fault;
    expected["id"] = 1;
    expected["applied"] = 0;
    EXPECT_EQ(client().postJSON("/_admin/faults", fault).json(), expected);
    EXPECT_EQ(listOf("faults"), Value::array({expected}));
}

TEST_F(ScriptedFaultsTest, FaultsMayBeRemovedSinglyOrTogether) {
    for (const std::string endpoint : {"config", "config", "getTag", "*"})
        addFault({{"endpoint", endpoint}, {"kind", "drop"}});
    expectOK(client().del("/_admin/faults?id=4"));
    EXPECT_EQ(client().get("/_admin/faults").json()["faults"].size(), 3u);
    expectError(client().del("/_admin/faults?id=4"), 404, "there is no such fault");
    expectOK(client().del("/_admin/faults?endpoint=config"));
    EXPECT_EQ(listOf("faults").size(), 1u);
    EXPECT_EQ(listOf("faults")[0]["id"], 3);
    EXPECT_EQ(client().get(kConfig).status, 200);
    expectOK(client().del("/_admin/faults"));
    EXPECT_EQ(listOf("faults"), Value::array());
}

TEST_F(ScriptedFaultsTest, InvalidFaultsAreRefused) {
    const auto expectRefusal = [this](const Value& fault, const std::string& text) {
        expectError(client().postJSON("/_admin/faults", fault), 400, text);
    };
    expectRefusal({{"kind", "drop"}}, "\"endpoint\" is missing, empty or not a string");
    expectRefusal({{"endpoint", "config"}}, "\"kind\" is missing, empty or not a string");
    expectRefusal({{"endpoint", "confg"}, {"kind", "drop"}}, "there is no endpoint \"confg\"");
    expectRefusal({{"endpoint", "health"}, {"kind", "drop"}}, "there is no endpoint \"health\"");
    expectRefusal({{"endpoint", "config"}, {"kind", "fire"}}, "there is no fault of kind \"fire\"");
    expectRefusal({{"endpoint", "config"}, {"kind", "status"}}, "a \"status\" fault needs a \"status\"");
    expectRefusal({{"endpoint", "config"}, {"kind", "delay"}}, "a \"delay\" fault needs \"seconds\"");
    expectRefusal({{"endpoint", "config"}, {"kind", "body"}}, "a \"body\" fault needs a \"body\" or \"bytes\"");
    for (const Value& status : {Value(199), Value(600), Value("500"), Value(500.5), Value(nullptr), Value(UINT64_MAX)})
        expectRefusal({{"endpoint", "config"}, {"kind", "status"}, {"status", status}},
                      "\"status\" is not an integer from 200 to 599");
    for (const Value& seconds : {Value(-1), Value(601), Value("1"), Value(true)})
        expectRefusal({{"endpoint", "config"}, {"kind", "delay"}, {"seconds", seconds}},
                      "\"seconds\" is not a number from 0 to 600");
    expectRefusal({{"endpoint", "config"}, {"kind", "drop"}, {"count", 0}},
                  "\"count\" is not an integer from 1 to 1000000000");
    for (const std::string bytes : {"0", "0g", "zz", "+1"})
        expectRefusal({{"endpoint", "config"}, {"kind", "garbage"}, {"bytes", bytes}}, "\"bytes\" is not hexadecimal");
    EXPECT_EQ(client().post("/_admin/faults", "[", "application/json").status, 400);
    EXPECT_EQ(listOf("faults"), Value::array());
}

}  // namespace
}  // namespace vorlane::service
