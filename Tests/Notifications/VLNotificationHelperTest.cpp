#include "Notifications/VLNotificationHelper.h"

#include <gtest/gtest.h>

#include <fstream>

#include "Notifications/VLMessageContent.h"
#include "Platform/NSBundle.h"
#include "Tests/Notifications/NotificationsTest.h"

namespace vorlane {

namespace {

const std::string kPlatformSound = "UILocalNotificationDefaultSoundName";

class VLNotificationHelperTest : public NotificationsTest {
protected:
    VLNotificationHelperTest() {
        for (const auto* name : {"bell.wav", "bell.caf", "drum.caf"}) std::ofstream(documentsPath(name)).put('x');
    }

    std::string soundOf(const Value& content) {
        return helper.getNotificationSoundFromMessageData({{"messagecontent", content}});
    }
    std::optional<VLMessageContent> contentOf(const Dictionary& response) {
        return VLMessageContent::contentWithResponse(response, *settings, helper);
    }
    std::optional<VLMessageContent> contentWith(const std::string& key, const Value& value) {
        return contentOf({{"message", Dictionary{{"appkey", "K"}, {key, value}}}});
    }

    VLNotificationHelper helper{phone().application(), phone().device(),
                                std::make_shared<NSBundle>(Dictionary(), phone().documentsFolder())};
};

TEST_F(VLNotificationHelperTest, AShownNotificationIsScheduledForNow) {
    phone().simulatedDevice().setLocalTimeZone({"Europe/Oslo", 3600});
    helper.displayLocalNotification("Hello", "hash", "bell.wav", Dictionary{{"own", 1}});
    EXPECT_TRUE(application().scheduledLocalNotifications().empty());  // scheduled on the main queue
    phone().settle();
    ASSERT_EQ(application().deliveredByHandle().size(), 1U);
    UILocalNotification expected;
    expected.fireDate = phone().now();
    expected.timeZone = "Europe/Oslo";
    expected.alertBody = "Hello";
    expected.soundName = "bell.wav";
    expected.userInfo = Dictionary{{"own", 1}, {"p", "hash"}};
    EXPECT_EQ(application().deliveredByHandle().begin()->second, expected);
}

TEST_F(VLNotificationHelperTest, PhashAndMetadataAreOptional) {
    phone().simulatedDevice().setLocalTimeZone({"", 0});
    helper.displayLocalNotification("Hello", std::nullopt, "bell.wav", std::nullopt);
    phone().settle();
    const auto& shown = application().deliveredByHandle().begin()->second;
    EXPECT_EQ(shown.userInfo, Dictionary());
    EXPECT_EQ(shown.timeZone, std::nullopt);
}

TEST_F(VLNotificationHelperTest, BundledSoundsAreWavOrElseCaf) {
    EXPECT_EQ(soundOf(R"({"sound":"bell"})"), "bell.wav");
    EXPECT_EQ(soundOf(R"({"sound":"drum"})"), "drum.caf");
    EXPECT_EQ(soundOf("%7B%22sound%22%3A%22bell%22%7D"), "bell.wav");
}

TEST_F(VLNotificationHelperTest, AMissingSoundIsLoggedAndReplaced) {
    EXPECT_EQ(soundOf(R"({"sound":"none"})"), kPlatformSound);
    EXPECT_EQ(log().count("Notification sound with filename \"none\" in app bundle. Using default sound instead.",
                          VLLogLevel::Error),
              1);
}

TEST_F(VLNotificationHelperTest, WithoutANamedSoundTheDefaultPlays) {
    EXPECT_EQ(helper.getNotificationSoundFromMessageData({}), kPlatformSound);
    for (const auto& content :
         {Value(), Value(""), Value("%zz"), Value("[]"), Value("{"), Value("{}"), Value(R"({"sound":5})"), Value(7)}) {
        EXPECT_EQ(soundOf(content), kPlatformSound) << content;
    }
    EXPECT_TRUE(log().linesContaining("Notification sound").empty());
}

TEST_F(VLNotificationHelperTest, AMessageIsReadFieldByField) {
    const auto content = contentOf({{"message", Dictionary{{"appkey", "K"},
                                                           {"pushtext", "Hi%20you"},
                                                           {"phash", "hash"},
                                                           {"messagecontent", R"({"sound":"drum","own":[1]})"}}}});
    ASSERT_TRUE(content);
    EXPECT_EQ(content->pushText(), "Hi you");
    EXPECT_EQ(content->phash(), "hash");
    EXPECT_EQ(content->sound(), "drum.caf");
    EXPECT_EQ(content->metadata(), (Dictionary{{"sound", "drum"}, {"own", Array{1}}}));
}

TEST_F(VLNotificationHelperTest, AMessageMayBeEmpty) {
    const auto content = contentOf({{"message", Dictionary{{"appkey", "K"}}}});
    ASSERT_TRUE(content);
    EXPECT_EQ(content->pushText(), std::nullopt);
    EXPECT_EQ(content->phash(), std::nullopt);
    EXPECT_EQ(content->sound(), kPlatformSound);
    EXPECT_EQ(content->metadata(), Dictionary());
}

TEST_F(VLNotificationHelperTest, UndecodablePushTextIsKept) {
    EXPECT_EQ(contentWith("pushtext", "100%")->pushText(), "100%");
    EXPECT_EQ(contentWith("pushtext", 100)->pushText(), std::nullopt);
    EXPECT_EQ(contentWith("phash", 5)->phash(), std::nullopt);
}

TEST_F(VLNotificationHelperTest, UndecodableMetadataIsLogged) {
    EXPECT_EQ(contentWith("messagecontent", "%zz")->metadata(), Dictionary());
    const auto lines = log().linesContaining("Couldn't remove percent encoding on metadata");
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_EQ(lines[0].level, VLLogLevel::Error);
    EXPECT_EQ(lines[0].payload, Value("%zz"));
}

TEST_F(VLNotificationHelperTest, NonObjectMetadataIsLogged) {
    EXPECT_EQ(contentWith("messagecontent", "%5B1%5D")->metadata(), Dictionary());
    const auto lines = log().linesContaining("Couldn't parse metadata JSON into dictionary object");
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_EQ(lines[0].level, VLLogLevel::Error);
    EXPECT_EQ(lines[0].payload, Value("[1]"));
}

TEST_F(VLNotificationHelperTest, EmptyMetadataIsNotLogged) {
    EXPECT_EQ(contentWith("messagecontent", "")->metadata(), Dictionary());
    EXPECT_EQ(contentWith("messagecontent", Dictionary{{"a", 1}})->metadata(), Dictionary());
    EXPECT_TRUE(log().linesContaining("metadata").empty());
}

TEST_F(VLNotificationHelperTest, AMissingMessageIsLoggedTwice) {
    EXPECT_EQ(contentOf({{"other", 1}}), std::nullopt);
    EXPECT_EQ(log().count("Could not parse the message data: (null)", VLLogLevel::Debug), 1);
    const auto lines = log().linesContaining("No message template found in JSON payload");
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_EQ(lines[0].level, VLLogLevel::Debug);
    EXPECT_EQ(lines[0].payload, Value(Dictionary{{"other", 1}}));
}

TEST_F(VLNotificationHelperTest, AMessageForAnotherApplicationIsIgnored) {
    for (const auto& message : {Value(), Value("text"), Value(Array{1}), Value(Dictionary{}),
                                Value(Dictionary{{"appkey", "other"}}), Value(Dictionary{{"appkey", 5}})}) {
        EXPECT_FALSE(VLMessageContent::isTemplateMessageExist({{"message", message}}, *settings)) << message;
    }
    settings->setAppKey(std::nullopt);
    EXPECT_FALSE(VLMessageContent::isTemplateMessageExist({{"message", Dictionary{}}}, *settings));
    EXPECT_TRUE(log().linesContaining("Could not parse the message data").empty());
}

}  // namespace

}  // namespace vorlane
