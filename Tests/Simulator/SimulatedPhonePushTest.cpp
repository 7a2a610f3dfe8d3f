#include "Tests/Simulator/LaunchedPhoneTest.h"

namespace vorlane {

namespace {

using SimulatedPhonePushTest = LaunchedPhoneTest;

TEST_F(SimulatedPhonePushTest, OpenedPushesStartASessionWithTheirPhash) {
    launch();
    phone().simulatedApplication().didEnterBackground();
    phone().openPush({.alert = "Hello", .phash = "P"});
    EXPECT_EQ(phone().application()->applicationState(), UIApplicationState::Active);
    EXPECT_EQ(Vorlane::phash(), "P");
    EXPECT_EQ(session().lastRequest("/0.8/session").payload()["phash"], Value("P"));
}

TEST_F(SimulatedPhonePushTest, PushesMayBeOpenedWhileActive) {
    launch();
    phone().simulatedApplication().didBecomeActive();
    phone().openPush({.alert = "Hello", .phash = "P"});
    EXPECT_EQ(Vorlane::phash(), "P");
}

TEST_F(SimulatedPhonePushTest, ActiveApplicationsDiscardThePhash) {
    launch();
    phone().simulatedApplication().didBecomeActive();
    phone().receivePush({.alert = "Hello", .phash = "P"});
    EXPECT_EQ(Vorlane::phash(), std::nullopt);
    EXPECT_EQ(log().linesContaining("App is already in foreground - discarding phash P").size(), 1U);
}

TEST_F(SimulatedPhonePushTest, PushesWithoutAnAlertAreSilent) {
    launch();
    phone().receivePush({.phash = "P"});
    EXPECT_EQ(log().linesContaining("Silent push received and ignored").size(), 1U);
    EXPECT_EQ(Vorlane::phash(), std::nullopt);
}

TEST_F(SimulatedPhonePushTest, PushesMayLaunchTheApplication) {
    launch(SimulatedPush{.alert = "Hello", .phash = "P"}.launchOptions());
    EXPECT_EQ(Vorlane::phash(), "P");
}

TEST_F(SimulatedPhonePushTest, TheApplicationsCallbackReceivesThePayload) {
    launch();
    std::vector<Dictionary> received;
    phone().setRemoteNotificationHandler([&](const Dictionary& userInfo) { received.push_back(userInfo); });
    phone().receivePush(
        {.alert = "Hello", .phash = "P", .sound = "bell.wav", .badge = 3, .data = {{"order", Dictionary{{"id", 5}}}}});
    EXPECT_EQ(received,
              (std::vector<Dictionary>{{{"aps", Dictionary{{"alert", "Hello"}, {"sound", "bell.wav"}, {"badge", 3}}},
                                        {"p", "P"},
                                        {"order", Dictionary{{"id", 5}}}}}));
    EXPECT_EQ(Vorlane::phash(), std::nullopt);
}

}  // namespace

}  // namespace vorlane
