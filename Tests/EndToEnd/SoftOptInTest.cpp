#include <string>
#include <vector>

#include "Tests/EndToEnd/InterstitialEndToEndTest.h"

namespace vorlane {

namespace {

constexpr const char* kTooRecent = "Soft opt-in will not be displayed because one was displayed too recently.";

class SoftOptInTest : public InterstitialEndToEndTest {
protected:
    SoftOptInTest() { startPhone(); }

    void start() {
        launch();
        phone->settle();
    }

    /// Taps a button: closes the interstitial and opens its link.
    Value tap(const std::string& link) {
        dismiss();
        return call("openVorlaneDeepLink:", {link});
    }
};

TEST_F(SoftOptInTest, AYesPromptsAndRegistersTheAnswer) {
    start();
    phone->perform({{"do", "token"}, {"hex", "00ff10"}});
    EXPECT_EQ(lastPayload("deviceRegistration")["notification_settings.v2"]["ios"]["authorisation"],
              Value("not_determined"));
    askForNotifications();
    ASSERT_EQ(lastLinks(), (std::vector<std::string>{"vorlane://notification-yes", "vorlane://notification-no"}));
    EXPECT_EQ(lastInterstitial()["phash"], Value("sample-notification-prompt"));
    EXPECT_EQ(countEvents("prompt"), 0U);

    EXPECT_EQ(tap(lastLinks()[0]), Value(true));
    ASSERT_EQ(countEvents("prompt"), 1U);
    EXPECT_EQ(phone->events("prompt")[0].at("kind"), Value("notifications"));
    EXPECT_EQ(phone->events("prompt")[0].at("options"), Value(15));
    EXPECT_EQ(service.requests("deviceRegistration").size(), 2U);
    EXPECT_EQ(lastPayload("deviceRegistration")["notification_settings.v2"]["ios"]["authorisation"],
              Value("authorised"));

    // No permission is left to ask for.
    advance(86400);
    askForNotifications();
    EXPECT_EQ(countEvents("interstitial"), 1U);
    EXPECT_EQ(requestedPlacements(), std::vector<std::string>{"Notification%20Prompt"});
}

TEST_F(SoftOptInTest, ANoShowsNoSystemPrompt) {
    start();
    askForNotifications();
    EXPECT_EQ(tap(lastLinks()[1]), Value(true));
    EXPECT_EQ(countEvents("prompt"), 0U);
}

TEST_F(SoftOptInTest, AfterARefusalTheSettingsPageIsShown) {
    phone->perform({{"do", "user"}, {"answers", Dictionary{{"notifications", "deny"}}}});
    start();
    askForNotifications();
    tap(lastLinks()[0]);
    EXPECT_EQ(countEvents("prompt"), 1U);
    advance(86400);
    askForNotifications();
    EXPECT_EQ(requestedPlacements(), (std::vector<std::string>{"Notification%20Prompt", "Notification%20Settings"}));
    EXPECT_EQ(lastInterstitial()["phash"], Value("sample-notification-settings"));
    ASSERT_EQ(lastLinks()[0], "vorlane://notification-settings-yes");
    EXPECT_EQ(tap(lastLinks()[0]), Value(true));
    EXPECT_EQ(countEvents("openURL"), 1U);
    EXPECT_EQ(countEvents("prompt"), 1U);
}

TEST_F(SoftOptInTest, ASecondSoftOptInIsRefusedFor1Day) {
    start();
    askForNotifications();
    dismiss();
    advance(86399);
    askForNotifications();
    EXPECT_EQ(countEvents("interstitial"), 1U);
    EXPECT_EQ(
        countLog(std::string(kTooRecent) + "\n                  Placement: Notification Prompt"
                                           "\n                  Permission: 0"
                                           "\n                  reprompt_interval: 86400"
                                           "\n                  Last Soft Opt-in displayed 86399.000000 seconds ago."),
        1);
    advance(1);
    askForNotifications();
    EXPECT_EQ(countEvents("interstitial"), 2U);
    EXPECT_EQ(countLog(kTooRecent), 1);
}

TEST_F(SoftOptInTest, LimitHoldsAcrossARestart) {
    configurePermissions({{"reprompt_interval", 3600}});
    start();
    askForNotifications();
    EXPECT_EQ(countEvents("interstitial"), 1U);
    EXPECT_EQ(phone->end(), 0);

    startPhone({"--clock", "virtual=1700003599"});
    start();
    askForNotifications();
    EXPECT_EQ(countEvents("interstitial"), 0U);
    EXPECT_EQ(countLog(kTooRecent), 1);
    advance(1);
    askForNotifications();
    EXPECT_EQ(countEvents("interstitial"), 1U);
}

TEST_F(SoftOptInTest, AnIntervalOf0RefusesNone) {
    configurePermissions({{"reprompt_interval", 0}});
    start();
    for (std::size_t count = 1; count <= 3; ++count) {
        askForNotifications();
        EXPECT_EQ(countEvents("interstitial"), count);
        dismiss();
    }
    EXPECT_EQ(countLog(kTooRecent), 0);
}

TEST_F(SoftOptInTest, FailedFetchesFallBackToTheSystemPrompt) {
    start();
    service.post("faults", Dictionary{{"endpoint", "interstitial"}, {"kind", "drop"}, {"count", 5}});
    askForNotifications();
    EXPECT_EQ(countEvents("interstitial"), 0U);
    ASSERT_EQ(countEvents("prompt"), 1U);
    EXPECT_EQ(phone->events("prompt")[0].at("options"), Value(15));
    service.remove("faults");
    phone->perform({{"do", "notificationSettings"}, {"set", Dictionary{{"authorizationStatus", 0}}}});
    askForNotifications();
    EXPECT_EQ(countLog(kTooRecent), 1);
    EXPECT_EQ(countEvents("prompt"), 1U);
}

TEST_F(SoftOptInTest, RemovedPlacementsShowNeitherPageNorPrompt) {
    service.remove(interstitial("Notification%20Prompt"));
    start();
    askForNotifications();
    EXPECT_EQ(countLog("No interstitial message content found for this tracking id."), 1);
    EXPECT_EQ(countEvents("interstitial") + countEvents("prompt"), 0U);
}

TEST_F(SoftOptInTest, RequestsBeforeTheLaunchWaitForTheConfiguration) {
    askForNotifications();
    call("askForPermission:", {0});
    EXPECT_EQ(countEvents("interstitial") + countEvents("prompt"), 0U);
    EXPECT_TRUE(service.requests().empty());
    start();
    EXPECT_EQ(countEvents("interstitial"), 1U);
    EXPECT_EQ(countEvents("prompt"), 1U);
}

TEST_F(SoftOptInTest, ProvisionalAuthorisationComesFirstIfConfigured) {
    configurePermissions({{"notification", Dictionary{{"provisional_authorisation", 1}}}});
    phone->perform({{"do", "user"}, {"answers", Dictionary{{"notifications", "later"}}}});
    start();
    askForNotifications();
    ASSERT_EQ(countEvents("prompt"), 1U);
    EXPECT_EQ(phone->events("prompt")[0].at("options"), Value(15 + 64));
    EXPECT_EQ(countEvents("interstitial"), 0U);

    phone->perform({{"do", "answer"}, {"prompt", "notifications"}, {"with", "allow"}});
    phone->settle();
    EXPECT_EQ(requestedPlacements(), std::vector<std::string>{"Notification%20Provisional%20Upgrade"});
    EXPECT_EQ(lastInterstitial()["phash"], Value("sample-notification-provisional-upgrade"));
    phone->perform({{"do", "user"}, {"answers", Dictionary{{"notifications", "allow"}}}});
    tap(lastLinks()[0]);
    ASSERT_EQ(countEvents("prompt"), 2U);
    EXPECT_EQ(phone->events("prompt")[1].at("options"), Value(15));
}

TEST_F(SoftOptInTest, OlderPlatformsAreNotAskedForProvisionalAuthorisation) {
    configurePermissions({{"notification", Dictionary{{"provisional_authorisation", true}}}});
    startPhone({"--os-version", "11.4"});
    start();
    EXPECT_EQ(countEvents("prompt"), 0U);
    askForNotifications();
    EXPECT_EQ(countEvents("interstitial"), 1U);
}

TEST_F(SoftOptInTest, EveryLinkOfEverySamplePageIsHandled) {
    start();
    const std::regex expression(R"re((?:href|action)="([^"]*)")re");
    std::size_t count = 0;
    const auto pages = service.get("interstitials/" + appKey());
    for (const auto& page : pages["interstitials"]) {
        const auto html = page["html"].get<std::string>();
        for (std::sregex_iterator match(html.begin(), html.end(), expression), end; match != end; ++match, ++count)
            EXPECT_EQ(call("openVorlaneDeepLink:", {(*match)[1].str()}), Value(true)) << (*match)[1];
    }
    EXPECT_GE(count, 14U);
}

TEST_F(SoftOptInTest, OtherLinksAreLeftToTheHost) {
    start();
    EXPECT_EQ(call("openVorlaneDeepLink:", {"https://vorlane.example/notification-yes"}), Value(false));
    EXPECT_EQ(call("openVorlaneDeepLink:", {"vorlane://Notification-Yes"}), Value(false));
    EXPECT_EQ(call("openVorlaneDeepLink:", {"vorlane://other"}), Value(false));
    EXPECT_EQ(countEvents("prompt"), 0U);
    EXPECT_EQ(call("openVorlaneDeepLink:", {"VORLANE://notification-yes/x?y=z"}), Value(true));
    EXPECT_EQ(countEvents("prompt"), 1U);
}

}  // namespace

}  // namespace vorlane
