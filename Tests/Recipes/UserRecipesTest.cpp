#include <filesystem>

#include "Tests/Recipes/RecipeTest.h"

namespace vorlane {

namespace {

using UserRecipesTest = RecipeTest;

TEST_F(UserRecipesTest, AnOptOutErasesAndTheNextStartIsNew) {
    start();
    const auto deviceId = Vorlane::deviceId();
    const auto trackingId = Vorlane::trackingId();
    Vorlane::didRegisterForRemoteNotificationsWithDeviceToken(platform->application(), {1, 2, 3}, nullptr);
    Vorlane::setTag("favourite_drink", "coffee", VLTagType::String, nullptr);
    ASSERT_TRUE(platform->runUntilIdle(10));
    ASSERT_TRUE(Vorlane::scheduleLocalNotification("Hello", 0, std::nullopt, platform->clock().now() + 3600,
                                                   std::nullopt, std::nullopt));
    ASSERT_EQ(store().tags({}).size(), 1U);

    Vorlane::cancelAllPendingLocalNotifications();
    Vorlane::deleteAllTagsWithCompletionHandler(nullptr);
    Vorlane::unregisterFromRemoteNotificationsWithCompletionHandler(nullptr);
    EXPECT_TRUE(platform->runUntilIdle(10));
    const auto documents = platform->documentsFolder();
    Platform::shutdown();
    std::filesystem::remove_all(documents);

    EXPECT_TRUE(store().tags({}).empty());
    EXPECT_TRUE(platform->application()->scheduledLocalNotifications().empty());
    Platform::install(nullptr);
    start();
    EXPECT_NE(Vorlane::deviceId(), deviceId);
    EXPECT_NE(Vorlane::trackingId(), trackingId);
    EXPECT_EQ(Vorlane::deviceToken(), std::nullopt);
}

TEST_F(UserRecipesTest, ALogoutChangesTheUserAndClearsThePhash) {
    start();
    Vorlane::setTrackingId("anna");
    Vorlane::setPhash("hash");
    ASSERT_TRUE(platform->runUntilIdle(10));

    Vorlane::setTrackingId("6a1f");
    Vorlane::setPhash(std::nullopt);
    Vorlane::registerEventWithType("Browse", "shoes");
    ASSERT_TRUE(platform->runUntilIdle(10));

    const auto events = store().events({});
    ASSERT_EQ(events.size(), 1U);
    EXPECT_EQ(events[0]["trackingId"], Value("6a1f"));
    EXPECT_EQ(Vorlane::phash(), std::nullopt);
}

}  // namespace

}  // namespace vorlane
