#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <fstream>
#include <limits>

#include "Platform/NSBundle.h"
#include "Platform/NSError.h"
#include "Platform/NSException.h"
#include "Platform/UILocalNotification.h"
#include "Tests/Support/TemporaryFolderTest.h"

namespace vorlane {

namespace {

TEST(NSErrorTest, AnErrorHasADescription) {
    const NSError error("domain", -7, {{NSLocalizedDescriptionKey, "went wrong"}});
    EXPECT_EQ(error.localizedDescription(), "went wrong");
    EXPECT_EQ(error.description(), "Error Domain=domain Code=-7 \"went wrong\"");
}

TEST(NSErrorTest, AnErrorWithoutADescriptionNamesDomainAndCode) {
    for (const auto& userInfo : {Dictionary(), Dictionary{{NSLocalizedDescriptionKey, 5}}}) {
        const auto text = NSError("domain", 3, userInfo).localizedDescription();
        EXPECT_NE(text.find("domain"), std::string::npos);
        EXPECT_NE(text.find('3'), std::string::npos);
    }
}

TEST(NSErrorTest, ErrorsWithEqualMembersAreEqual) {
    const NSError error("d", 1, {{"a", 1}});
    EXPECT_EQ(error, NSError("d", 1, {{"a", 1}}));
    EXPECT_NE(error, NSError("d", 1));
    EXPECT_NE(error, NSError("d", 2, {{"a", 1}}));
    EXPECT_NE(error, NSError("e", 1, {{"a", 1}}));
}

TEST(NSExceptionTest, AnExceptionHasANameAndAReason) {
    const NSException exception("Name", "the reason");
    EXPECT_EQ(exception.name(), "Name");
    EXPECT_EQ(exception.reason(), "the reason");
    EXPECT_STREQ(exception.what(), "Name: the reason");
}

TEST(UILocalNotificationTest, ANotificationComesBackFromItsDictionary) {
    UILocalNotification notification;
    EXPECT_EQ(UILocalNotification::fromDictionary(notification.toDictionary()), notification);
    notification.fireDate = 1'700'000'000.5;
    notification.timeZone = "Europe/Oslo";
    notification.alertBody = "body";
    notification.alertAction = "View";
    notification.soundName = "sound.caf";
    notification.applicationIconBadgeNumber = -3;
    notification.userInfo = Dictionary{{"p", "hash"}};
    EXPECT_EQ(UILocalNotification::fromDictionary(notification.toDictionary()), notification);
    EXPECT_NE(notification.description().find("body"), std::string::npos);
    EXPECT_TRUE(notification.description().starts_with("<UILocalNotification"));
}

TEST(UILocalNotificationTest, FieldsOfAnotherKindAreAbsent) {
    EXPECT_EQ(UILocalNotification::fromDictionary({{"fireDate", "soon"},
                                                   {"timeZone", 1},
                                                   {"alertBody", nullptr},
                                                   {"alertAction", Array{}},
                                                   {"soundName", true},
                                                   {"applicationIconBadgeNumber", "3"},
                                                   {"userInfo", "none"}}),
              UILocalNotification());
}

TEST(UILocalNotificationTest, ABadgeBeyondTheRangeIsHeldToIt) {
    EXPECT_EQ(UILocalNotification::fromDictionary({{"applicationIconBadgeNumber", 1e300}}).applicationIconBadgeNumber,
              std::numeric_limits<std::int64_t>::max());
    EXPECT_EQ(UILocalNotification::fromDictionary({{"applicationIconBadgeNumber", -1e300}}).applicationIconBadgeNumber,
              std::numeric_limits<std::int64_t>::min());
    EXPECT_EQ(
        UILocalNotification::fromDictionary({{"applicationIconBadgeNumber", std::numeric_limits<std::uint64_t>::max()}})
            .applicationIconBadgeNumber,
        std::numeric_limits<std::int64_t>::max());
    EXPECT_EQ(
        UILocalNotification::fromDictionary({{"applicationIconBadgeNumber", std::nan("")}}).applicationIconBadgeNumber,
        0);
    EXPECT_EQ(UILocalNotification::fromDictionary({{"applicationIconBadgeNumber", 2.9}}).applicationIconBadgeNumber, 2);
}

class NSBundleTest : public TemporaryFolderTest {};

TEST_F(NSBundleTest, TheInfoDictionaryIsReadByKey) {
    const NSBundle bundle(Dictionary{{"CFBundleIdentifier", "example.app"}, {"number", 5}});
    EXPECT_EQ(bundle.bundleIdentifier(), "example.app");
    EXPECT_EQ(bundle.objectForInfoDictionaryKey("number"), Value(5));
    EXPECT_EQ(bundle.objectForInfoDictionaryKey("none"), std::nullopt);
    EXPECT_EQ(NSBundle(Dictionary{{"CFBundleIdentifier", 5}}).bundleIdentifier(), std::nullopt);
    EXPECT_EQ(NSBundle(Dictionary()).bundleIdentifier(), std::nullopt);
}

TEST_F(NSBundleTest, AResourceIsAFileInTheFolder) {
    std::filesystem::create_directories(path("resources/sounds.wav"));
    std::ofstream(path("resources/bell.wav")).put('x');
    std::ofstream(path("secret.wav")).put('x');
    const NSBundle bundle(Dictionary(), path("resources"));
    EXPECT_EQ(bundle.pathForResource("bell", "wav"), path("resources/bell.wav"));
    EXPECT_EQ(bundle.pathForResource("bell.wav", ""), path("resources/bell.wav"));
    for (const auto& name : {std::string("none"), std::string(), std::string("sounds"), std::string("../secret"),
                             std::string("a/../../secret"), path("secret"), std::string("bell\0", 5)}) {
        EXPECT_EQ(bundle.pathForResource(name, "wav"), std::nullopt) << name;
    }
    EXPECT_EQ(NSBundle(Dictionary()).pathForResource("bell", "wav"), std::nullopt);
}

}  // namespace

}  // namespace vorlane
