#include "Geo/VLGeoRegionContent.h"

#include <gtest/gtest.h>

#include <fstream>

#include "Platform/NSBundle.h"
#include "Tests/Geo/GeoTest.h"

namespace vorlane {

namespace {

class VLGeoRegionContentTest : public GeoTest {
protected:
    void answer(int status, const std::string& body) {
        content->displayNotificationForPlotwiseId(Value("S"), "enter");
        session().answer(kContentPath, status, body);
        phone().settle();
    }
    std::vector<UILocalNotification> shown() {
        std::vector<UILocalNotification> list;
        for (const auto& [handle, notification] : phone().simulatedApplication().deliveredByHandle()) {
            list.push_back(notification);
        }
        return list;
    }
};

TEST_F(VLGeoRegionContentTest, SendsSegmentTransitionAndDeviceData) {
    content->displayNotificationForPlotwiseId(Value("S"), "enter");
    const auto request = session().lastRequest();
    EXPECT_EQ(request.request.HTTPMethod, "POST");
    EXPECT_TRUE(request.request.URL.absoluteString().ends_with("/K/T/geo")) << request.request.URL.absoluteString();
    EXPECT_TRUE(request.header("Content-Type").value_or("").starts_with("application/json"));
    EXPECT_EQ(request.payload(), Value(Dictionary{{"getContent", true},
                                                  {"geoRegion", Dictionary{{"segmentId", "S"}, {"status", "enter"}}},
                                                  {"deviceData", payloadBuilder->deviceData()}}));
}

TEST_F(VLGeoRegionContentTest, SendsANumericSegmentAsANumber) {
    content->displayNotificationForPlotwiseId(Value(17), "exit");
    EXPECT_EQ(session().lastRequest().payload()["geoRegion"], Value(Dictionary{{"segmentId", 17}, {"status", "exit"}}));
    content->displayNotificationForPlotwiseId(Value(2.5), "exit");
    EXPECT_EQ(session().lastRequest().payload()["geoRegion"]["segmentId"], Value(2.5));
}

TEST_F(VLGeoRegionContentTest, SendsNothingWithoutASegment) {
    content->displayNotificationForPlotwiseId(std::nullopt, "enter");
    EXPECT_TRUE(session().requests().empty());
}

TEST_F(VLGeoRegionContentTest, ShowsTheMessageWithItsPhash) {
    answer(200,
           R"({"message":{"appkey":"K","pushtext":"Hi%20there","phash":"P","messagecontent":"{\"own\":[1,\"a\"]}"}})");
    ASSERT_EQ(shown().size(), 1U);
    const auto notification = shown().front();
    EXPECT_EQ(notification.alertBody, "Hi there");
    EXPECT_EQ(notification.fireDate, phone().now());
    EXPECT_EQ(notification.soundName, "UILocalNotificationDefaultSoundName");
    EXPECT_EQ(notification.userInfo, (Dictionary{{"own", Array{1, "a"}}, {"p", "P"}}));
}

TEST_F(VLGeoRegionContentTest, FailureShowsNothingAndIsNotRetried) {
    answer(500, R"({"message":{"appkey":"K","pushtext":"Hi"}})");
    answer(200, "");
    answer(200, "no JSON");
    answer(200, "[]");
    content->displayNotificationForPlotwiseId(Value("S"), "enter");
    session().fail(kContentPath);
    phone().settle();
    EXPECT_TRUE(shown().empty());
    EXPECT_EQ(session().requests().size(), 5U);
}

TEST_F(VLGeoRegionContentTest, AnswerWithoutAMessageShowsNothing) {
    for (const auto* body : {"{}", R"({"message":null})", R"({"message":"Hi"})", R"({"message":{"pushtext":"Hi"}})",
                             R"({"message":{"appkey":"another","pushtext":"Hi"}})"}) {
        answer(200, body);
    }
    EXPECT_TRUE(shown().empty());
    EXPECT_EQ(log().linesContaining("No message template found in JSON payload").size(), 5U);
}

TEST_F(VLGeoRegionContentTest, AnswerAfterDestructionShowsNothing) {
    content->displayNotificationForPlotwiseId(Value("S"), "enter");
    geo.reset();
    content.reset();
    session().answer(kContentPath, 200, R"({"message":{"appkey":"K","pushtext":"Hi"}})");
    phone().settle();
    EXPECT_TRUE(shown().empty());
}

TEST_F(VLGeoRegionContentTest, PassesTheSoundOn) {
    std::ofstream(documentsPath("bell.wav")).put('x');
    const auto ringing = std::make_shared<VLNotificationHelper>(
        phone().application(), phone().device(), std::make_shared<NSBundle>(Dictionary(), phone().documentsFolder()));
    content = std::make_shared<VLGeoRegionContent>(settings, phone().application(), ringing, urlBuilder, urlSession,
                                                   payloadBuilder);
    answer(200, R"({"message":{"appkey":"K","pushtext":"Hi","messagecontent":"{\"sound\":\"bell\"}"}})");
    ASSERT_EQ(shown().size(), 1U);
    EXPECT_EQ(shown().front().soundName, "bell.wav");
}

}  // namespace

}  // namespace vorlane
