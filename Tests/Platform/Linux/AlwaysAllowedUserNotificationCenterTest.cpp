#include "Platform/Linux/AlwaysAllowedUserNotificationCenter.h"

#include <gtest/gtest.h>

#include <optional>

#include "Platform/Linux/LinuxPlatform.h"

namespace vorlane {
namespace {

class AlwaysAllowedUserNotificationCenterTest : public testing::Test {
protected:
    AlwaysAllowedUserNotificationCenterTest() { Platform::install(platform); }
    ~AlwaysAllowedUserNotificationCenterTest() override { Platform::install(nullptr); }

    const std::shared_ptr<AlwaysAllowedUserNotificationCenter> center =
        std::make_shared<AlwaysAllowedUserNotificationCenter>();
    const std::shared_ptr<LinuxPlatform> platform =
        std::make_shared<LinuxPlatform>(LinuxPlatform::Options{.userNotificationCenter = center});
};

TEST_F(AlwaysAllowedUserNotificationCenterTest, GrantsEveryRequestOnTheMainQueue) {
    std::optional<bool> isGranted;
    platform->userNotificationCenter()->requestAuthorizationWithOptions(7, [&](bool granted, const auto& error) {
        EXPECT_FALSE(error);
        EXPECT_TRUE(platform->mainQueue()->isCurrent());
        isGranted = granted;
    });
    EXPECT_EQ(isGranted, std::nullopt);
    platform->poll();
    EXPECT_EQ(isGranted, true);
}

TEST_F(AlwaysAllowedUserNotificationCenterTest, EnablesEverySettingButCarPlay) {
    std::optional<UNNotificationSettings> received;
    center->getNotificationSettingsWithCompletionHandler([&received](const auto& settings) { received = settings; });
    platform->poll();
    EXPECT_EQ(received, (UNNotificationSettings{2, 2, 2, 2, 2, 2, 0, 1}));
}

TEST_F(AlwaysAllowedUserNotificationCenterTest, KeepsTheCategories) {
    std::optional<UNUserNotificationCenter::Categories> received;
    center->setNotificationCategories({{"first"}, {"second"}});
    center->getNotificationCategoriesWithCompletionHandler(
        [&received](const auto& categories) { received = categories; });
    platform->poll();
    EXPECT_EQ(received, (UNUserNotificationCenter::Categories{{"first"}, {"second"}}));
}

TEST_F(AlwaysAllowedUserNotificationCenterTest, EmptyHandlersAreIgnored) {
    center->requestAuthorizationWithOptions(0, nullptr);
    center->getNotificationSettingsWithCompletionHandler(nullptr);
    center->getNotificationCategoriesWithCompletionHandler(nullptr);
    EXPECT_EQ(platform->poll(), 0U);
}

}  // namespace
}  // namespace vorlane
