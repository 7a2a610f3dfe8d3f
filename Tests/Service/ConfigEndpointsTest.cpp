#include "Tests/Service/ServiceTest.h"

namespace vorlane::service {
namespace {

using ConfigEndpointsTest = ServiceTest;

TEST_F(ConfigEndpointsTest, EveryServiceIsOffByDefault) {
    const auto answer = client().get("/config/application/ios/K?sdkVersion=2.0.1&trackingId=T&deviceId=D");
    EXPECT_EQ(answer.status, 200);
    EXPECT_EQ(answer.headers.at("Content-Type"), "application/json");
    EXPECT_EQ(answer.json(), Value::parse(R"({
        "services": {"geo_regions": false, "beacon": false, "permission": false, "rich_inbox": false},
        "configs": {"rich_inbox": {"sync_time_limit_s": 30}}})"));
}

TEST_F(ConfigEndpointsTest, RequestsAreRecordedWithTheirQuery) {
    client().get("/config/application/ios/K?sdkVersion=2.0.1&trackingId=a%26b&deviceId=D");
    const auto record = lastRecord();
    EXPECT_EQ(record["endpoint"], "config");
    EXPECT_EQ(record["query"], Value({{"sdkVersion", "2.0.1"}, {"trackingId", "a&b"}, {"deviceId", "D"}}));
    EXPECT_EQ(record["appKey"], "K");
    EXPECT_EQ(record["trackingId"], "a&b");
}

TEST_F(ConfigEndpointsTest, DocumentsAreServedUnchangedToTheirApp) {
    const Value document = {{"services", {{"beacon", true}}}, {"more", {1, nullptr, "x"}}};
    const auto usual = client().get("/config/application/ios/L").json();
    expectOK(client().put("/_admin/config/K", document));
    EXPECT_EQ(client().get("/config/application/ios/K").json(), document);
    EXPECT_EQ(client().get("/_admin/config/K").json(), document);
    EXPECT_EQ(client().get("/config/application/ios/L").json(), usual);
}

TEST_F(ConfigEndpointsTest, DocumentsReplaceThePreviousDocument) {
    const auto usual = client().get("/_admin/config/K").json();
    client().put("/_admin/config/K", {{"a", 1}});
    client().put("/_admin/config/K", {{"b", 2}});
    EXPECT_EQ(client().get("/config/application/ios/K").json(), Value({{"b", 2}}));
    expectOK(client().del("/_admin/config/K"));
    EXPECT_EQ(client().get("/config/application/ios/K").json(), usual);
}

TEST_F(ConfigEndpointsTest, DocumentsMayBeEmpty) {
    client().put("/_admin/config/K", Value::object());
    EXPECT_EQ(client().get("/config/application/ios/K").body, "{}");
}

TEST_F(ConfigEndpointsTest, DocumentsMustBeObjects) {
    EXPECT_EQ(client().put("/_admin/config/K", {1, 2}).status, 400);
    EXPECT_EQ(client().put("/_admin/config/K", nullptr).status, 400);
    EXPECT_TRUE(client().get("/config/application/ios/K").json().contains("services"));
}

TEST_F(ConfigEndpointsTest, AppKeysAreDecoded) {
    client().put("/_admin/config/a%2Fb%20c", {{"a", 1}});
    EXPECT_EQ(client().get("/config/application/ios/a%2fb%20c").json(), Value({{"a", 1}}));
    EXPECT_EQ(lastRecord()["appKey"], "a/b c");
}

}  // namespace
}  // namespace vorlane::service
