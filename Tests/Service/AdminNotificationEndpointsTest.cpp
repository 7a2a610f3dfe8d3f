#include <string>

#include "Tests/Service/ServiceTest.h"

namespace vorlane::service {
namespace {

class AdminNotificationEndpointsTest : public ServiceTest {
protected:
    void registerDevice(const std::string& type = "register") const {
        expectOK(client().postJSON("/v1/device", {{"appkey", "K"},
                                                  {"trackingid", "T"},
                                                  {"device_id", "D"},
                                                  {"devicetoken", "00ff"},
                                                  {"platform", "iOS"},
                                                  {"type", type},
                                                  {"notification_settings.v2", {{"ios", {{"alert", "enabled"}}}}}}));
    }

    static Value wish(const Value& further = Value::object()) {
        Value body = {{"appKey", "K"}, {"deviceId", "D"}};
        body.update(further);
        return body;
    }

    ServiceAnswer compose(const Value& further) const { return client().postJSON("/_admin/pushes", wish(further)); }

    ServiceAnswer setCampaign(const Value& campaign) const { return client().put("/_admin/campaigns/c", campaign); }
};

TEST_F(AdminNotificationEndpointsTest, CampaignsAreListedUnchanged) {
    const Value campaign = {{"campaignId", 1},
                            {"templateId", "t"},
                            {"splits", {{{"splitId", "a"}, {"messageText", "x"}, {"sound", nullptr}}}},
                            {"filteredTrackingIds", {"T"}}};
    expectOK(setCampaign(campaign));
    expectOK(client().put("/_admin/campaigns/b", Value::object()));
    const auto campaigns = listOf("campaigns");
    ASSERT_EQ(campaigns.size(), 2u);
    auto expected = campaign;
    expected["token"] = "c";
    EXPECT_EQ(campaigns[1], expected);
    EXPECT_EQ(campaigns[0], Value({{"token", "b"},
                                   {"campaignId", nullptr},
                                   {"templateId", nullptr},
                                   {"splits", {{{"splitId", nullptr}, {"messageText", nullptr}, {"sound", nullptr}}}},
                                   {"filteredTrackingIds", Value::array()}}));
}

TEST_F(AdminNotificationEndpointsTest, CampaignsMayBeReplacedAndRemoved) {
    expectOK(setCampaign({{"campaignId", 1}}));
    expectOK(setCampaign({{"campaignId", 2}}));
    EXPECT_EQ(listOf("campaigns")[0]["campaignId"], 2);
    expectOK(client().del("/_admin/campaigns/c"));
    EXPECT_TRUE(listOf("campaigns").empty());
    expectError(client().del("/_admin/campaigns/c"), 404, "there is no such campaign");
}

TEST_F(AdminNotificationEndpointsTest, InvalidCampaignsAreRefused) {
    expectError(setCampaign({{"title", "x"}}), 400, "unknown name \"title\"");
    expectError(setCampaign({{"campaignId", true}}), 400, "\"campaignId\" is neither a string nor a number");
    expectError(setCampaign({{"splits", "a"}}), 400, "\"splits\" is not a list");
    expectError(setCampaign({{"splits", {"a"}}}), 400, "an element of \"splits\" is not an object");
    expectError(setCampaign({{"splits", {{{"text", "a"}}}}}), 400, "unknown name \"text\"");
    expectError(setCampaign({{"filteredTrackingIds", {1}}}), 400,
                "an element of \"filteredTrackingIds\" is not a string");
    EXPECT_TRUE(listOf("campaigns").empty());
}

TEST_F(AdminNotificationEndpointsTest, DevicesAreListedWithSettingsAndToken) {
    registerDevice();
    auto device = listOf("devices")[0];
    EXPECT_EQ(device["token"], "00ff");
    EXPECT_EQ(device["registered"], true);
    EXPECT_EQ(device["notificationSettings"], Value({{"ios", {{"alert", "enabled"}}}}));
    registerDevice("unregister");
    device = listOf("devices")[0];
    EXPECT_EQ(device["registered"], false);
}

TEST_F(AdminNotificationEndpointsTest, PushesAreComposedForADeviceAndListed) {
    registerDevice();
    const auto answer = compose({{"alert", "Hello"}, {"badge", 3}, {"data", {{"page", "offers"}}}});
    EXPECT_EQ(answer.status, 201);
    const auto json = answer.json();
    const auto phash = json["payload"]["p"];
    const Value payload = {
        {"aps", {{"alert", "Hello"}, {"sound", "default"}, {"badge", 3}}}, {"p", phash}, {"page", "offers"}};
    EXPECT_EQ(json, Value({{"token", "00ff"}, {"trackingId", "T"}, {"payload", payload}}));
    EXPECT_EQ(phash.get<std::string>().size(), 36u);
    const auto pushes = listOf("pushes", "?trackingId=T");
    ASSERT_EQ(pushes.size(), 1u);
    EXPECT_EQ(pushes[0], Value({{"number", 1},
                                {"time", pushes[0]["time"]},
                                {"appKey", "K"},
                                {"trackingId", "T"},
                                {"deviceId", "D"},
                                {"token", "00ff"},
                                {"phash", phash},
                                {"payload", payload}}));
    EXPECT_TRUE(listOf("pushes", "?appKey=other").empty());
}

TEST_F(AdminNotificationEndpointsTest, PushesMayBeSilentOrHaveAGivenPhash) {
    registerDevice();
    EXPECT_EQ(compose(Value::object()).json()["payload"], Value({{"aps", {{"content-available", 1}}}}));
    EXPECT_EQ(compose({{"alert", "x"}, {"phash", "mine"}, {"sound", "bell.wav"}}).json()["payload"],
              Value({{"aps", {{"alert", "x"}, {"sound", "bell.wav"}}}, {"p", "mine"}}));
}

TEST_F(AdminNotificationEndpointsTest, PushesToUnreachableDevicesAreRefused) {
    expectError(compose({{"alert", "x"}}), 404, "there is no such device");
    registerDevice();
    registerDevice("unregister");
    expectError(compose({{"alert", "x"}}), 409, "the device has no valid push token");
    EXPECT_TRUE(listOf("pushes").empty());
}

TEST_F(AdminNotificationEndpointsTest, InvalidPushesAreRefused) {
    registerDevice();
    expectError(compose({{"text", "x"}}), 400, "unknown name \"text\"");
    expectError(compose({{"alert", "x"}, {"badge", "1"}}), 400, "\"badge\" is not an integer");
    expectError(compose({{"data", 1}}), 400, "\"data\" is not an object");
    expectError(compose({{"data", {{"aps", 1}}}}), 400, "\"data\" has a \"aps\"");
    EXPECT_EQ(compose({{"alert", 1}}).status, 400);
    EXPECT_EQ(client().postJSON("/_admin/pushes", {{"appKey", "K"}}).status, 400);
    EXPECT_EQ(client().postJSON("/_admin/pushes", Value::array()).status, 400);
    EXPECT_TRUE(listOf("pushes").empty());
}

TEST_F(AdminNotificationEndpointsTest, ResetRemovesCampaignsAndPushes) {
    registerDevice();
    expectOK(setCampaign(Value::object()));
    compose({{"alert", "x"}});
    client().postJSON("/message/analytics",
                      {{"pushtext", "x"}, {"responsetype", "json"}, {"trackingid", "T"}, {"phash", ""}});
    client().postJSON("/K/T/phash/cancel", {{"cancellations", {Value::object()}}});
    for (const auto* name : {"campaigns", "pushes", "splits", "cancellations"})
        EXPECT_EQ(listOf(name).size(), 1u) << name;
    client().postJSON("/_admin/reset", Value::object());
    for (const auto* name : {"campaigns", "pushes", "splits", "cancellations"})
        EXPECT_TRUE(listOf(name).empty()) << name;
}

}  // namespace
}  // namespace vorlane::service
