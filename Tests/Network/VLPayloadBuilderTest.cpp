#include "Network/VLPayloadBuilder.h"

#include "Core/Base/VLSettings.h"
#include "Tests/Support/SimulatedPhoneTest.h"

namespace vorlane {
namespace {

class VLPayloadBuilderTest : public SimulatedPhoneTest {
protected:
    VLPayloadBuilderTest() {
        phone().simulatedDevice().setPreferredLanguages({"en-AU", "nb-NO"});
        phone().simulatedDevice().setLocalTimeZone({"Asia/Kolkata", 19800});
        settings->setAppKey("K");
        settings->setTrackingId("T");
        settings->setSessionId("S");
    }

    Dictionary expectedBasicData() const {
        return {{"lv", "2.0.1"},
                {"acit", settings->appCleanInstallTime()},
                {"device_id", settings->deviceId()},
                {"sid", "S"},
                {"appkey", "K"},
                {"trackingid", "T"},
                {"phash", ""}};
    }

    Dictionary expectedDeviceData() {
        return {{"language", "en-AU"},
                {"platform", "iOS"},
                {"os_name", phone().simulatedDevice().systemName()},
                {"os_version", phone().simulatedDevice().systemVersion()},
                {"manufacturer", "Apple"},
                {"type", phone().simulatedDevice().machine()},
                {"timezone", "+330"}};
    }

    std::shared_ptr<VLSettings> settings = std::make_shared<VLSettings>(phone().device());
    VLPayloadBuilder builder{phone().device(), settings};
};

TEST_F(VLPayloadBuilderTest, DefaultOptionsMakeAnEmptyPayload) {
    const VLPayloadOptions options;
    EXPECT_TRUE(options.body.empty());
    EXPECT_FALSE(options.includeBasicData);
    EXPECT_EQ(options.basicDataSeparator, 0u);
    EXPECT_FALSE(options.includeDeviceData);
    EXPECT_EQ(options.deviceDataKey, 0u);
    EXPECT_EQ(builder.payloadWithOptions([](VLPayloadOptions&) {}), Dictionary());
}

TEST_F(VLPayloadBuilderTest, AnEmptyConfigurationMakesAnEmptyPayload) {
    EXPECT_EQ(builder.payloadWithOptions({}), Dictionary());
}

TEST_F(VLPayloadBuilderTest, ConfigureRunsOncePerCallWithDefaultOptions) {
    int calls = 0;
    for (int i = 0; i < 2; ++i)
        builder.payloadWithOptions([&](VLPayloadOptions& options) {
            ++calls;
            EXPECT_FALSE(options.includeBasicData);
            EXPECT_TRUE(options.body.empty());
            options.includeBasicData = true;
            options.body = {{"a", 1}};
        });
    EXPECT_EQ(calls, 2);
}

TEST_F(VLPayloadBuilderTest, TheBasicFieldsAreComplete) {
    EXPECT_EQ(builder.payloadWithOptions([](VLPayloadOptions& options) { options.includeBasicData = true; }),
              expectedBasicData());
    EXPECT_EQ(builder.basicDataWithSeparator(0), expectedBasicData());
}

TEST_F(VLPayloadBuilderTest, Separator1SpellsTwoKeysInSnakeCase) {
    Dictionary expected = expectedBasicData();
    expected.erase("appkey");
    expected.erase("trackingid");
    expected["app_key"] = "K";
    expected["tracking_id"] = "T";
    EXPECT_EQ(builder.payloadWithOptions([](VLPayloadOptions& options) {
        options.includeBasicData = true;
        options.basicDataSeparator = 1;
    }),
              expected);
    EXPECT_EQ(builder.basicDataWithSeparator(1), expected);
}

TEST_F(VLPayloadBuilderTest, AnyOtherSeparatorIsTheSameAs0) {
    EXPECT_EQ(builder.basicDataWithSeparator(2), expectedBasicData());
}

TEST_F(VLPayloadBuilderTest, TheStoredPhashIsSent) {
    settings->setPhash("0123abcd");
    Dictionary expected = expectedBasicData();
    expected["phash"] = "0123abcd";
    EXPECT_EQ(builder.basicDataWithSeparator(0), expected);
}

TEST_F(VLPayloadBuilderTest, WithoutAPhashAnEmptyStringIsSent) {
    settings->setPhash(std::nullopt);
    EXPECT_EQ(builder.basicDataWithSeparator(0).at("phash"), Value(""));
    EXPECT_EQ(builder.basicDataWithSeparator(1).at("phash"), Value(""));
}

TEST_F(VLPayloadBuilderTest, ThePreviousTrackingIdIsSentWhileItIsSet) {
    settings->setPrevTrackingId("before");
    Dictionary expected = expectedBasicData();
    expected["prev_tracking_id"] = "before";
    EXPECT_EQ(builder.basicDataWithSeparator(0), expected);

    settings->setPrevTrackingId(std::nullopt);
    EXPECT_EQ(builder.basicDataWithSeparator(0), expectedBasicData());
}

TEST_F(VLPayloadBuilderTest, AMissingAppKeyIsLeftOut) {
    settings->setAppKey(std::nullopt);
    Dictionary expected = expectedBasicData();
    expected.erase("appkey");
    EXPECT_EQ(builder.basicDataWithSeparator(0), expected);
    EXPECT_FALSE(builder.basicDataWithSeparator(1).contains("app_key"));
}

TEST_F(VLPayloadBuilderTest, EveryCallReadsTheSettings) {
    builder.basicDataWithSeparator(0);
    settings->setSessionId("S2");
    settings->setTrackingId("T2");
    settings->setContainerName("N");
    settings->setContainerVersion("V");
    Dictionary expected = expectedBasicData();
    expected["sid"] = "S2";
    expected["trackingid"] = "T2";
    expected["lv"] = "2.0.1-N-V";
    EXPECT_EQ(builder.basicDataWithSeparator(0), expected);
}

TEST_F(VLPayloadBuilderTest, TheDeviceFieldsAreComplete) { EXPECT_EQ(builder.deviceData(), expectedDeviceData()); }

TEST_F(VLPayloadBuilderTest, ATimeZoneWestOfGreenwichHasAMinus) {
    phone().simulatedDevice().setLocalTimeZone({"America/New_York", -18000});
    EXPECT_EQ(builder.deviceData().at("timezone"), Value("-300"));
}

TEST_F(VLPayloadBuilderTest, AMissingLanguageIsLeftOut) {
    phone().simulatedDevice().setPreferredLanguages({});
    Dictionary expected = expectedDeviceData();
    expected.erase("language");
    EXPECT_EQ(builder.deviceData(), expected);
}

TEST_F(VLPayloadBuilderTest, DeviceDataKey0NestsTheFieldsUnderDevice) {
    EXPECT_EQ(builder.payloadWithOptions([](VLPayloadOptions& options) { options.includeDeviceData = true; }),
              (Dictionary{{"device", Value(expectedDeviceData())}}));
}

TEST_F(VLPayloadBuilderTest, DeviceDataKey1NestsTheFieldsUnderDeviceData) {
    EXPECT_EQ(builder.payloadWithOptions([](VLPayloadOptions& options) {
        options.includeDeviceData = true;
        options.deviceDataKey = 1;
    }),
              (Dictionary{{"deviceData", Value(expectedDeviceData())}}));
}

TEST_F(VLPayloadBuilderTest, AnyOtherDeviceDataKeyAddsNoDeviceFields) {
    EXPECT_EQ(builder.payloadWithOptions([](VLPayloadOptions& options) {
        options.includeDeviceData = true;
        options.deviceDataKey = 2;
    }),
              Dictionary());
}

TEST_F(VLPayloadBuilderTest, ADeviceDataKeyAloneAddsNothing) {
    EXPECT_EQ(builder.payloadWithOptions([](VLPayloadOptions& options) { options.deviceDataKey = 1; }), Dictionary());
}

TEST_F(VLPayloadBuilderTest, BasicDeviceAndOwnFieldsAreCombined) {
    Dictionary expected = expectedBasicData();
    expected["device"] = Value(expectedDeviceData());
    expected["own"] = {{"list", {1, 2.5, true, nullptr}}};
    EXPECT_EQ(builder.payloadWithOptions([](VLPayloadOptions& options) {
        options.includeBasicData = true;
        options.includeDeviceData = true;
        options.body = {{"own", {{"list", {1, 2.5, true, nullptr}}}}};
    }),
              expected);
}

TEST_F(VLPayloadBuilderTest, ABodyFieldReplacesABasicField) {
    Dictionary expected = expectedBasicData();
    expected["sid"] = "mine";
    EXPECT_EQ(builder.payloadWithOptions([](VLPayloadOptions& options) {
        options.includeBasicData = true;
        options.body = {{"sid", "mine"}};
    }),
              expected);
}

TEST_F(VLPayloadBuilderTest, ABodyFieldReplacesTheDeviceFields) {
    EXPECT_EQ(builder.payloadWithOptions([](VLPayloadOptions& options) {
        options.includeDeviceData = true;
        options.body = {{"device", nullptr}};
    }),
              (Dictionary{{"device", nullptr}}));
}

}  // namespace
}  // namespace vorlane
