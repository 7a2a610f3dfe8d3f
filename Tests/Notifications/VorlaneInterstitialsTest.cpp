// Interstitials, permissions and links through the facade, from the launch on.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>

#include "Categories/NSCharacterSet+VLURLEncoding.h"
#include "Core/Startup/VLBootstrap.h"
#include "Network/VLURLActions.h"
#include "Notifications/VLInterstitialService.h"
#include "Notifications/VLPermissionService.h"
#include "Platform/UIWindow.h"
#include "Public/Vorlane.h"
#include "Simulator/Platform/SimulatedInterstitialViewController.h"
#include "Simulator/Platform/SimulatedLocationManager.h"
#include "Tests/Support/SimulatedPhoneTest.h"

namespace vorlane {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Interstitial = SimulatedInterstitialViewController;

const std::string kKey = "0123456789abcdef0123456789abcdef";
const std::string kPageAnswer = R"({"message":{"messagecontent":"%7B%22html%22%3A%22Welcome%22%7D","phash":"ph-9"}})";
const std::string kConfigPath = "/config/application/ios/";

class VorlaneInterstitialsTest : public SimulatedPhoneTest {
protected:
    explicit VorlaneInterstitialsTest(SimulatedPhone::Options options = {}) : SimulatedPhoneTest(std::move(options)) {
        application().setEventObserver([this](const std::string& event, const Dictionary& fields) {
            if (event == "prompt") prompts.push_back(fields.at("options").get<std::uint64_t>());
        });
    }

    SimulatedApplication& application() { return phone().simulatedApplication(); }
    std::shared_ptr<UIViewController> root() { return application().keyWindow()->rootViewController(); }

    void launch(const std::shared_ptr<NSObject>& appOpenInterstitial = nullptr, bool providesSettings = false) {
        auto options = VLSDKOptions::developmentOptions();
        options.setAppKey(kKey);
        options.setAppOpenInterstitial(appOpenInterstitial);
        options.setProvidesAppNotificationSettings(providesSettings);
        Vorlane::initialiseSDKWithApplication(phone().application(), std::nullopt, options);
        phone().settle();
    }
    void configure(const std::string& permissionConfig = "{}") {
        session().answer(kConfigPath, 200, R"({"configs":{"permission":)" + permissionConfig + "}}");
        phone().settle();
    }
    void becomeActive() {
        application().didBecomeActive();
        phone().settle();
    }
    void answerPlacement(const std::string& placement) {
        session().answer("/interstitial/" + placement, 200, kPageAnswer);
        phone().settle();
    }

    std::size_t interstitialRequests() { return session().requests("/interstitial/").size(); }

    std::vector<std::uint64_t> prompts;
    std::shared_ptr<Interstitial> interstitial = std::make_shared<Interstitial>();
};

TEST_F(VorlaneInterstitialsTest, NewOptionsHaveNoAppOpenInterstitial) {
    EXPECT_EQ(VLSDKOptions().appOpenInterstitial(), nullptr);
    EXPECT_EQ(VLSDKOptions::defaultOptions().appOpenInterstitial(), nullptr);
    EXPECT_EQ(VLSDKOptions::developmentOptions().appOpenInterstitial(), nullptr);
}

TEST_F(VorlaneInterstitialsTest, AnInterstitialIsFetchedAndShown) {
    int calls = 0;
    Vorlane::presentInterstitialWithPlacement(VLInterstitialPlacement::PlacementB, interstitial, true,
                                              [&calls](bool presented, const auto& error) {
                                                  ++calls;
                                                  EXPECT_TRUE(presented);
                                                  EXPECT_EQ(error, std::nullopt);
                                              });
    phone().settle();
    answerPlacement("Placement%20B");
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(root()->presentedViewController(), interstitial);
}

TEST_F(VorlaneInterstitialsTest, TheExportedConstantsHaveTheirValues) {
    EXPECT_STREQ(VLNotificationInterstitialWasDismissed, "VLNotificationInterstitialWasDismissed");
    EXPECT_EQ(static_cast<std::uint64_t>(VLPermissions::Notifications), 0U);
    EXPECT_EQ(static_cast<std::uint64_t>(VLPermissions::LocationAlways), 1U);
    EXPECT_EQ(static_cast<std::uint64_t>(VLPermissions::LocationWhenInUse), 2U);
}

TEST_F(VorlaneInterstitialsTest, BecomingActiveShowsTheAppOpenInterstitial) {
    launch(interstitial);
    EXPECT_EQ(interstitialRequests(), 0U);
    becomeActive();
    EXPECT_EQ(interstitialRequests(), 1U);
    answerPlacement("App%20Open");
    EXPECT_EQ(root()->presentedViewController(), interstitial);
    EXPECT_TRUE(interstitial->wasAnimated());
    EXPECT_EQ(interstitial->htmlContent(), VIEWPORT_META_TAG + std::string("Welcome"));
    EXPECT_EQ(interstitial->phash(), "ph-9");
}

TEST_F(VorlaneInterstitialsTest, WithoutAnAppOpenInterstitialNothingIsRequested) {
    launch();
    becomeActive();
    EXPECT_EQ(interstitialRequests(), 0U);
}

TEST_F(VorlaneInterstitialsTest, AnInterruptionIsNoAppOpen) {
    launch(interstitial);
    becomeActive();
    application().willResignActive();
    becomeActive();
    EXPECT_EQ(interstitialRequests(), 1U);
}

TEST_F(VorlaneInterstitialsTest, EachAppOpenRequestsButShowsOne) {
    launch(interstitial);
    for (std::size_t i = 1; i <= 3; ++i) {
        becomeActive();
        EXPECT_EQ(interstitialRequests(), i);
        answerPlacement("App%20Open");
        application().didEnterBackground();
    }
    EXPECT_EQ(interstitial->appearances(), 1);
    interstitial->close();
    becomeActive();
    answerPlacement("App%20Open");
    EXPECT_EQ(interstitial->appearances(), 2);
}

TEST_F(VorlaneInterstitialsTest, AnOpenedNotificationIsNotCovered) {
    launch(interstitial);
    Vorlane::didReceiveRemoteNotification(phone().application(),
                                          {{"p", "hash"}, {"aps", Dictionary{{"alert", "Hello"}}}});
    becomeActive();
    EXPECT_EQ(interstitialRequests(), 0U);
    EXPECT_FALSE(Vorlane::sharedInstance().isNotificationOpen());
    application().didEnterBackground();
    becomeActive();
    EXPECT_EQ(interstitialRequests(), 1U);
}

TEST_F(VorlaneInterstitialsTest, AnUnsuitableAppOpenInterstitialIsOnlyLogged) {
    launch(std::make_shared<UIViewController>());
    becomeActive();
    EXPECT_EQ(interstitialRequests(), 0U);
    EXPECT_EQ(log().linesContaining("Failed to present interstitial with placement App Open").size(), 1U);
}

TEST_F(VorlaneInterstitialsTest, ALaterStartUpReplacesTheAppOpenInterstitial) {
    launch(interstitial);
    launch();
    becomeActive();
    EXPECT_EQ(interstitialRequests(), 0U);
}

TEST_F(VorlaneInterstitialsTest, ARefusedStartUpKeepsTheAppOpenInterstitial) {
    launch(interstitial);
    auto options = VLSDKOptions::developmentOptions();
    options.setAppKey("short");
    EXPECT_THROW(Vorlane::initialiseSDKWithApplication(phone().application(), std::nullopt, options), NSException);
    becomeActive();
    EXPECT_EQ(interstitialRequests(), 1U);
}

TEST_F(VorlaneInterstitialsTest, WithoutAWindowNothingIsPresented) {
    application().setKeyWindow(nullptr);
    launch(interstitial);
    becomeActive();
    answerPlacement("App%20Open");
    std::vector<bool> presented;
    Vorlane::presentInterstitialWithPlacement(VLInterstitialPlacement::Feedback, interstitial, true,
                                              [&presented](bool isPresented, const auto& error) {
                                                  presented.push_back(isPresented);
                                                  EXPECT_EQ(error, std::nullopt);
                                              });
    phone().settle();
    answerPlacement("Feedback");
    EXPECT_THAT(presented, ElementsAre(false));
    EXPECT_EQ(interstitial->appearances(), 0);
}

TEST_F(VorlaneInterstitialsTest, PermissionsWaitForTheConfiguration) {
    launch();
    Vorlane::askForPermission(VLPermissions::Notifications);
    phone().settle();
    EXPECT_THAT(prompts, IsEmpty());
    configure();
    EXPECT_THAT(prompts, ElementsAre(15U));
    EXPECT_EQ(log().count("Starting permission service", VLLogLevel::Debug), 1);
}

TEST_F(VorlaneInterstitialsTest, WithoutAnyConfigurationPermissionsStayClosed) {
    launch();
    Vorlane::askForPermission(VLPermissions::Notifications);
    session().fail(kConfigPath);
    phone().settle();
    EXPECT_THAT(prompts, IsEmpty());
    EXPECT_TRUE(log().linesContaining("Starting permission service").empty());
}

TEST_F(VorlaneInterstitialsTest, ACachedConfigurationStartsPermissions) {
    launch();
    configure(R"({"reprompt_interval":0})");
    launch();
    session().fail(kConfigPath);
    phone().settle();
    EXPECT_EQ(log().count("Starting permission service", VLLogLevel::Debug), 2);
}

TEST_F(VorlaneInterstitialsTest, TheStartUpOptionsSetTheSettingsScreenOption) {
    launch(nullptr, true);
    configure(R"({"notification":{"provisional_authorisation":true}})");
    Vorlane::askForPermission(VLPermissions::Notifications);
    phone().settle();
    EXPECT_THAT(prompts, ElementsAre(111U, 47U));
}

TEST_F(VorlaneInterstitialsTest, TheLinkOfASoftOptInPrompts) {
    launch();
    configure();
    Vorlane::askForPermission(VLPermissions::Notifications, interstitial);
    phone().settle();
    answerPlacement("Notification%20Prompt");
    ASSERT_EQ(root()->presentedViewController(), interstitial);
    EXPECT_THAT(prompts, IsEmpty());
    EXPECT_TRUE(Vorlane::openVorlaneDeepLink(NSURL::URLWithString("vorlane://notification-yes")));
    interstitial->close();
    phone().settle();
    EXPECT_THAT(prompts, ElementsAre(15U));
}

TEST_F(VorlaneInterstitialsTest, TheSoftOptInIntervalSurvivesTheProcess) {
    launch();
    configure();
    Vorlane::askForPermission(VLPermissions::Notifications, interstitial);
    phone().settle();
    EXPECT_EQ(interstitialRequests(), 1U);
    const SimulatedPhone::Options sameFolder{.documentsFolder = phone().documentsFolder(),
                                             .virtualClock = phone().now() + 86399};
    const auto next = std::make_shared<SimulatedPhone>(sameFolder);
    Platform::shutdown();
    Platform::install(next);
    VLLog::sharedInstance().setLogLevel(VLLogLevel::Debug);
    auto options = VLSDKOptions::developmentOptions();
    options.setAppKey(kKey);
    next->session().alwaysAnswer(kConfigPath, 200, R"({"configs":{}})");
    Vorlane::initialiseSDKWithApplication(next->application(), std::nullopt, options);
    const auto requests = [&next] {
        Vorlane::askForPermission(VLPermissions::Notifications, std::make_shared<Interstitial>());
        next->settle();
        return next->session().requests("/interstitial/").size();
    };
    EXPECT_EQ(requests(), 0U);
    next->advance(1);
    EXPECT_EQ(requests(), 1U);
    Platform::shutdown();
}

TEST_F(VorlaneInterstitialsTest, ALocationPromptSetsTheStatus) {
    EXPECT_EQ(Vorlane::locationAuthorisationStatus(), 0);
    launch();
    configure();
    Vorlane::askForPermission(VLPermissions::LocationWhenInUse);
    phone().settle();
    EXPECT_EQ(Vorlane::locationAuthorisationStatus(), 4);
    phone().simulatedLocationManager().setAuthorizationStatus(CLAuthorizationStatus::NotDetermined);
    phone().simulatedUser().setAnswer("locationAlways", SimulatedUser::Answer::Deny);
    EXPECT_TRUE(Vorlane::openVorlaneDeepLink(NSURL::URLWithString("vorlane://location-yes")));
    phone().settle();
    EXPECT_EQ(Vorlane::locationAuthorisationStatus(), 2);
}

TEST_F(VorlaneInterstitialsTest, BothPromptsOfALinkAppearNotificationsFirst) {
    std::vector<std::string> kinds;
    application().setEventObserver([&kinds](const std::string& event, const Dictionary& fields) {
        if (event == "prompt") kinds.push_back(fields.at("kind").get<std::string>());
    });
    launch();
    configure();
    EXPECT_TRUE(Vorlane::openVorlaneDeepLink(NSURL::URLWithString("vorlane://notification-location-yes")));
    phone().settle();
    EXPECT_THAT(kinds, ElementsAre("notifications", "locationAlways"));
}

class VorlaneInterstitialsLegacyTest : public VorlaneInterstitialsTest {
protected:
    VorlaneInterstitialsLegacyTest() : VorlaneInterstitialsTest({.systemVersion = 9.0}) {}
};

TEST_F(VorlaneInterstitialsLegacyTest, BothPromptsOfALinkAppearNotificationsFirst) {
    std::vector<std::string> kinds;
    application().setEventObserver([&kinds](const std::string& event, const Dictionary& fields) {
        if (event == "prompt") kinds.push_back(fields.at("kind").get<std::string>());
    });
    launch();
    configure();
    EXPECT_TRUE(Vorlane::openVorlaneDeepLink(NSURL::URLWithString("vorlane://notification-location-yes")));
    phone().settle();
    EXPECT_THAT(kinds, ElementsAre("notifications", "locationAlways"));
}

TEST_F(VorlaneInterstitialsTest, OnlyVorlaneLinksOpenTheSettings) {
    launch();
    EXPECT_TRUE(Vorlane::openVorlaneDeepLink(NSURL::URLWithString("vorlane://location-settings-yes")));
    EXPECT_THAT(application().openedURLs(), ElementsAre("app-settings:"));
    EXPECT_FALSE(Vorlane::openVorlaneDeepLink(NSURL::URLWithString("https://vorlane.example/")));
    EXPECT_FALSE(Vorlane::openVorlaneDeepLink(std::nullopt));
    EXPECT_EQ(application().openedURLs().size(), 1U);
}

TEST_F(VorlaneInterstitialsTest, AShutdownEndsPendingSoftOptIns) {
    launch();
    configure();
    for (int i = 0; i < 20; ++i) Vorlane::askForPermission(VLPermissions::Notifications, interstitial);
    const auto start = std::chrono::steady_clock::now();
    Platform::shutdown();
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(2));
}

TEST_F(VorlaneInterstitialsTest, TheRegistryHasEachServiceOnce) {
    const auto bootstrap = VLBootstrap::bootstrapWithURLs(std::make_shared<VLURLsProduction>());
    EXPECT_NE(bootstrap->getComponent<VLURLActions>(), nullptr);
    EXPECT_EQ(bootstrap->getComponent<VLURLActions>(), bootstrap->getComponent<VLURLActions>());
    EXPECT_EQ(bootstrap->getComponent<VLPermissionService>(), bootstrap->getComponent<VLPermissionService>());
    EXPECT_EQ(bootstrap->getComponent<VLInterstitialService>(), bootstrap->getComponent<VLInterstitialService>());
    EXPECT_NE(bootstrap->createComponent<VLInterstitialService>(), bootstrap->getComponent<VLInterstitialService>());
}

}  // namespace

}  // namespace vorlane
