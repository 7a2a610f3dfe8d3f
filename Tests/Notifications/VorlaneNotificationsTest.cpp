#include <gtest/gtest.h>

#include "Core/Startup/VLBootstrap.h"
#include "Notifications/VLAuthorisationHelper.h"
#include "Notifications/VLLocalNotificationService.h"
#include "Notifications/VLRemoteNotificationService.h"
#include "Notifications/VLUserNotificationCentre_iOS10Plus.h"
#include "Notifications/VLUserNotificationCentre_iOS8To9.h"
#include "Public/Vorlane.h"
#include "Tests/Support/SimulatedPhoneTest.h"

namespace vorlane {

namespace {

const Data kFacadeToken{0x01, 0x02};

class VorlaneNotificationsTest : public SimulatedPhoneTest {
protected:
    explicit VorlaneNotificationsTest(SimulatedPhone::Options options = {}) : SimulatedPhoneTest(std::move(options)) {
        phone().simulatedUserNotificationCenter().setNotificationSettings({2, 2, 2, 2, 2, 2, 2, 1});
        session().alwaysAnswer("device", 200, "ok");
    }

    /// Registers the settings of the phone.
    void registerToken() {
        Vorlane::didRegisterForRemoteNotificationsWithDeviceToken(phone().application(), kFacadeToken, nullptr);
        phone().settle();
    }
};

TEST_F(VorlaneNotificationsTest, ATokenIsRegisteredAndUnregistered) {
    int calls = 0;
    Vorlane::didRegisterForRemoteNotificationsWithDeviceToken(phone().application(), kFacadeToken,
                                                              [&](const auto& error) {
                                                                  ++calls;
                                                                  EXPECT_EQ(error, std::nullopt);
                                                              });
    phone().settle();
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(Vorlane::deviceToken(), kFacadeToken);
    EXPECT_EQ(log().count("Register device triggered manually", VLLogLevel::Debug), 1);
    Vorlane::unregisterFromRemoteNotificationsWithCompletionHandler([&](bool success, const auto& error) {
        ++calls;
        EXPECT_TRUE(success);
        EXPECT_EQ(error, std::nullopt);
    });
    phone().settle();
    EXPECT_EQ(calls, 2);
    EXPECT_EQ(Vorlane::deviceToken(), std::nullopt);
}

TEST_F(VorlaneNotificationsTest, ANewTrackingIdRegistersTheTokenAgain) {
    registerToken();
    Vorlane::setTrackingId("anna");
    phone().settle();
    const auto payload = session().lastRequest("device").payload();
    EXPECT_EQ(payload["trackingid"], Value("anna"));
    EXPECT_EQ(payload["devicetoken"], Value("0102"));
}

TEST_F(VorlaneNotificationsTest, AFetchWithoutAHandlerThrowsFirst) {
    try {
        Vorlane::performFetchWithCompletionHandler(phone().application(), nullptr);
        FAIL();
    } catch (const NSException& exception) {
        EXPECT_EQ(exception.name(), "Background fetch completion handler is nil");
        EXPECT_EQ(exception.reason(), "The background fetch completion handler cannot be nil." + std::string(47, ' ') +
                                          "Ensure that a valid completionHandler block is passed to the" +
                                          std::string(47, ' ') + "Vorlane.performFetchWithCompletionHandler() method.");
    }
    EXPECT_TRUE(log().lines().empty());
}

TEST_F(VorlaneNotificationsTest, AFetchRegistersChangedSettings) {
    registerToken();
    std::vector<UIBackgroundFetchResult> results;
    const auto fetch = [&] {
        Vorlane::performFetchWithCompletionHandler(phone().application(),
                                                   [&](auto result) { results.push_back(result); });
        phone().settle();
    };
    fetch();
    phone().simulatedUserNotificationCenter().setNotificationSettings({1, 1, 1, 1, 1, 1, 1, 0});
    fetch();
    EXPECT_EQ(results, (std::vector{UIBackgroundFetchResult::NoData, UIBackgroundFetchResult::NewData}));
    EXPECT_EQ(
        log().count("Register device triggered by Vorlane.performFetchWithCompletionHandler()", VLLogLevel::Debug), 2);
}

TEST_F(VorlaneNotificationsTest, ANotificationIsOpenUntilBecomingActive) {
    Vorlane::initialiseSDKWithApplication(phone().application(), std::nullopt, [] {
        auto options = VLSDKOptions::developmentOptions();
        options.setAppKey("0123456789abcdef0123456789abcdef");
        return options;
    }());
    Vorlane::didReceiveRemoteNotification(phone().application(), {{"aps", Dictionary{{"alert", "Hi"}}}, {"p", "hash"}});
    EXPECT_TRUE(Vorlane::sharedInstance().isNotificationOpen());
    EXPECT_EQ(Vorlane::phash(), "hash");
    phone().simulatedApplication().didBecomeActive();
    EXPECT_FALSE(Vorlane::sharedInstance().isNotificationOpen());
    EXPECT_EQ(session().lastRequest("/0.8/session").payload()["phash"], Value("hash"));
}

TEST_F(VorlaneNotificationsTest, LocalNotificationsAreScheduledOpenedAndCancelled) {
    registerToken();
    const auto at = [this](double seconds) { return phone().now() + seconds; };
    const auto first = Vorlane::scheduleLocalNotification("a", 1, "c", at(1000), std::nullopt, std::nullopt);
    const auto second = Vorlane::scheduleLocalNotification("b", 1, "c", at(2000), std::nullopt, std::nullopt);
    ASSERT_TRUE(first && second);
    Vorlane::cancelPendingLocalNotification(*first);
    EXPECT_EQ(phone().application()->scheduledLocalNotifications(), std::vector{*second});
    Vorlane::cancelAllPendingLocalNotifications();
    EXPECT_TRUE(phone().application()->scheduledLocalNotifications().empty());
    UILocalNotification opened;
    opened.userInfo = Dictionary{{"p", "hash"}};
    Vorlane::didReceiveLocalNotification(phone().application(), opened);
    EXPECT_EQ(Vorlane::phash(), "hash");
}

TEST_F(VorlaneNotificationsTest, TheSettingsComeFromTheCentre) {
    std::optional<VLUserNotificationSettings> received;
    Vorlane::getNotificationSettingsWithCompletionHandler([&](const auto& settings) { received = settings; });
    EXPECT_FALSE(received);
    phone().settle();
    ASSERT_TRUE(received);
    EXPECT_TRUE(received->willNotificationsBeVisible());
}

TEST_F(VorlaneNotificationsTest, TheLegacyAnswerReachesTheService) {
    registerToken();
    Vorlane::didRegisterUserNotificationSettings(phone().application(), {});
    phone().settle();
    EXPECT_EQ(session().lastRequest("device").payload()["notification_settings.v2"]["ios"]["authorisation"],
              Value("denied"));
}

/// The registry on each generation of the platform.
class GenerationTest : public SimulatedPhoneTest, public ::testing::WithParamInterface<double> {
protected:
    GenerationTest() : SimulatedPhoneTest({.systemVersion = GetParam()}) {}

    std::shared_ptr<VLBootstrap> bootstrap = VLBootstrap::bootstrapWithURLs(std::make_shared<VLURLsProduction>());
};

TEST_P(GenerationTest, TheAdapterAndItsHelperFitThePlatform) {
    const auto helper = bootstrap->getComponent<VLAuthorisationHelper>();
    const auto centre = bootstrap->getComponent<VLUserNotificationCentre>();
    if (GetParam() < 10) {
        EXPECT_EQ(helper, nullptr);
        EXPECT_TRUE(std::dynamic_pointer_cast<VLUserNotificationCentre_iOS8To9>(centre));
    } else {
        ASSERT_TRUE(helper);
        EXPECT_EQ(helper->isProvisionalAuthorisationSupported(), GetParam() >= 12);
        EXPECT_TRUE(std::dynamic_pointer_cast<VLUserNotificationCentre_iOS10Plus>(centre));
        EXPECT_EQ(bootstrap->getComponent<UNUserNotificationCenter>(), Platform::current().userNotificationCenter());
    }
    EXPECT_EQ(centre->isProvisionalAuthorisationSupported(), GetParam() >= 12);
    EXPECT_TRUE(bootstrap->getComponent<VLLocalNotificationService>());
    EXPECT_EQ(bootstrap->getComponent<VLRemoteNotificationService>(),
              bootstrap->getComponent<VLRemoteNotificationService>());
}

TEST_P(GenerationTest, TheNotificationCentreExistsFrom10On) {
    if (GetParam() < 10) {
        EXPECT_THROW(bootstrap->getComponent<UNUserNotificationCenter>(), NSException);
    } else {
        EXPECT_TRUE(bootstrap->getComponent<UNUserNotificationCenter>());
    }
}

TEST_P(GenerationTest, TheLocalNotificationServiceHasNoCentre) {
    EXPECT_EQ(bootstrap->getComponent<VLLocalNotificationService>()->vlUserNotificationCentre(), nullptr);
}

INSTANTIATE_TEST_SUITE_P(Platforms, GenerationTest, ::testing::Values(9.0, 10.0, 11.4, 12.0, 13.1));

}  // namespace

}  // namespace vorlane
