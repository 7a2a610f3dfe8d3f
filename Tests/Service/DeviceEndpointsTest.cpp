#include "Tests/Service/ServiceTest.h"

namespace vorlane::service {
namespace {

class DeviceEndpointsTest : public ServiceTest {
protected:
    static Value registration() {
        return {{"lv", "2.0.1"},
                {"acit", "1"},
                {"device_id", "D"},
                {"sid", "S"},
                {"appkey", "K"},
                {"trackingid", "T"},
                {"phash", ""},
                {"devicetoken", "00ab10"},
                {"platform", "iOS"},
                {"type", "register"},
                {"notification_settings.v2", {{"ios", {{"alertStyle", 1}, {"sound", 2}}}}}};
    }

    static Value unregistration() {
        auto payload = registration();
        payload["type"] = "unregister";
        payload.erase("notification_settings.v2");
        return payload;
    }

    Value onlyDevice() const {
        auto devices = listOf("devices");
        EXPECT_EQ(devices.size(), 1u);
        auto device = devices.empty() ? Value() : devices[0];
        device.erase("time");
        return device;
    }
};

TEST_F(DeviceEndpointsTest, RegistrationsAreStored) {
    expectOK(client().postJSON("/v1/device", registration()));
    EXPECT_EQ(onlyDevice(), Value({{"appKey", "K"},
                                   {"deviceId", "D"},
                                   {"trackingId", "T"},
                                   {"prevTrackingId", nullptr},
                                   {"platform", "iOS"},
                                   {"device", nullptr},
                                   {"token", "00ab10"},
                                   {"registered", true},
                                   {"notificationSettings", registration()["notification_settings.v2"]}}));
    EXPECT_EQ(lastRecord()["endpoint"], "deviceRegistration");
    EXPECT_EQ(lastRecord()["payload"], registration());
}

TEST_F(DeviceEndpointsTest, UnregisteredDevicesAreKept) {
    client().postJSON("/v1/device", registration());
    expectOK(client().postJSON("/v1/device", unregistration()));
    EXPECT_EQ(onlyDevice()["registered"], false);
    EXPECT_EQ(onlyDevice()["token"], "00ab10");
    EXPECT_EQ(onlyDevice()["notificationSettings"], registration()["notification_settings.v2"]);
}

TEST_F(DeviceEndpointsTest, RegistrationsMoveTheTokenToTheNewUser) {
    client().postJSON("/v1/device", registration());
    auto second = registration();
    second["trackingid"] = "T2";
    second["devicetoken"] = "ff";
    second["notification_settings.v2"] = {{"ios", {{"alertStyle", 0}}}};
    expectOK(client().postJSON("/v1/device", second));
    EXPECT_EQ(onlyDevice()["trackingId"], "T2");
    EXPECT_EQ(onlyDevice()["token"], "ff");
    EXPECT_EQ(onlyDevice()["notificationSettings"], second["notification_settings.v2"]);
}

TEST_F(DeviceEndpointsTest, SessionsDoNotChangeTheRegistration) {
    client().postJSON("/v1/device", registration());
    client().postForm("/0.8/session",
                      {{"app_key", "K"}, {"tracking_id", "T"}, {"device_id", "D"}, {"device", {{"type", "x"}}}});
    EXPECT_EQ(onlyDevice()["registered"], true);
    EXPECT_EQ(onlyDevice()["token"], "00ab10");
    EXPECT_EQ(onlyDevice()["platform"], "iOS");
    EXPECT_EQ(onlyDevice()["device"], Value({{"type", "x"}}));
}

TEST_F(DeviceEndpointsTest, DevicesAreListedByAppAndUser) {
    client().postJSON("/v1/device", registration());
    auto other = registration();
    other["appkey"] = "K2";
    other["trackingid"] = "T2";
    client().postJSON("/v1/device", other);
    EXPECT_EQ(listOf("devices").size(), 2u);
    EXPECT_EQ(listOf("devices", "?appKey=K2")[0]["trackingId"], "T2");
    EXPECT_EQ(listOf("devices", "?trackingId=T")[0]["appKey"], "K");
}

TEST_F(DeviceEndpointsTest, RegistrationsNeedTheirFields) {
    for (const std::string key : {"appkey", "trackingid", "device_id", "devicetoken", "type"}) {
        auto payload = registration();
        payload.erase(key);
        expectError(client().postJSON("/v1/device", payload), 400, "\"" + key + "\" is missing, empty or not a string");
    }
    auto payload = registration();
    payload["type"] = "reregister";
    expectError(client().postJSON("/v1/device", payload), 400, "\"type\" is neither \"register\" nor \"unregister\"");
    EXPECT_EQ(listOf("devices"), Value::array());
    EXPECT_EQ(listOf("requests").size(), 6u);
}

TEST_F(DeviceEndpointsTest, InvalidJSONIsRefusedAndRecorded) {
    EXPECT_EQ(client().post("/v1/device", "{\"a\":", "application/json").status, 400);
    EXPECT_EQ(client().post("/v1/device", "", "application/json").status, 400);
    EXPECT_EQ(client().post("/v1/device", "{}", "text/plain").status, 400);
    EXPECT_EQ(client().post("/v1/device", registration().dump(), "application/json; charset=utf-8").status, 200);
    EXPECT_EQ(listOf("requests", "?status=400").size(), 3u);
}

}  // namespace
}  // namespace vorlane::service
