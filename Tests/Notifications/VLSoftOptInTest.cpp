// Soft opt-ins: their placements, their interval, and what follows them.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>

#include "Tests/Notifications/PermissionsTest.h"

namespace vorlane {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr double kStart = 1'700'000'000;

std::string tooRecentText(const std::string& placement, const std::string& permission, const std::string& interval,
                          const std::string& elapsed) {
    const std::string gap = "\n" + std::string(18, ' ');
    return "Soft opt-in will not be displayed because one was displayed too recently." + gap +
           "Placement: " + placement + gap + "Permission: " + permission + gap + "reprompt_interval: " + interval +
           gap + "Last Soft Opt-in displayed " + elapsed + " seconds ago.";
}

std::string retrievingText(const std::string& placement, const std::string& interval) {
    const std::string gap = "\n" + std::string(15, ' ');
    return "Retrieving soft opt-in interstitial with placement " + placement + "." + gap +
           "Next soft opt-in may be displayed in " + interval + " seconds." + gap +
           "Configure with reprompt_interval in remote VL permissions config.";
}

class VLSoftOptInTest : public PermissionsTest {
protected:
    explicit VLSoftOptInTest(SimulatedPhone::Options options = {}) : PermissionsTest(std::move(options)) {}

    /// A notification centre that reports a fixed status.
    class CentreWithStatus : public VLUserNotificationCentre {
    public:
        explicit CentreWithStatus(std::int64_t status) : status_(status) {}
        void requestNotificationAuthorisation(std::uint64_t /*options*/, AuthorisationHandler handler) override {
            handler(0, std::nullopt);
        }
        void getNotificationSettingsWithCompletionHandler(SettingsHandler completionHandler) override {
            onMainQueue([status = status_, handler = std::move(completionHandler)] {
                VLUserNotificationSettings settings;
                settings.authorisationStatus = status;
                handler(settings);
            });
        }
        bool isProvisionalAuthorisationSupported() const override { return false; }

    private:
        const std::int64_t status_;
    };
};

TEST_F(VLSoftOptInTest, EachNotificationStatusHasItsPlacement) {
    const std::map<std::int64_t, Placements> expected = {{-2, {}},
                                                         {-1, {"Notification Settings"}},
                                                         {0, {"Notification Prompt"}},
                                                         {1, {"Notification Settings"}},
                                                         {2, {}},
                                                         {3, {"Notification Provisional Upgrade"}},
                                                         {4, {}}};
    for (const auto& [status, placements] : expected) {
        permissions = makeService(std::make_shared<CentreWithStatus>(status));
        start(R"({"reprompt_interval":0})");
        settings->setLastPermissionInterstitial(5);
        EXPECT_EQ(softOptIn(), placements) << status;
        EXPECT_EQ(settings->lastPermissionInterstitial(), placements.empty() ? 5 : kStart) << status;
    }
}

TEST_F(VLSoftOptInTest, EachPlatformStatusIsReadFromTheCentre) {
    start(R"({"reprompt_interval":0})");
    const std::map<std::int64_t, Placements> expected = {{0, {"Notification Prompt"}},
                                                         {1, {"Notification Settings"}},
                                                         {2, {}},
                                                         {3, {"Notification Provisional Upgrade"}}};
    for (const auto& [status, placements] : expected) {
        reportStatus(status);
        EXPECT_EQ(softOptIn(), placements) << status;
    }
}

TEST_F(VLSoftOptInTest, EachLocationStatusHasItsPlacements) {
    start(R"({"reprompt_interval":0})");
    struct Row {
        CLAuthorizationStatus status;
        Placements always;
        Placements inUse;
    };
    const Placements prompt{"Location Prompt"};
    const Placements settingsPage{"Location Settings"};
    const std::vector<Row> rows = {{CLAuthorizationStatus::NotDetermined, prompt, prompt},
                                   {CLAuthorizationStatus::Restricted, {}, {}},
                                   {CLAuthorizationStatus::Denied, settingsPage, settingsPage},
                                   {CLAuthorizationStatus::AuthorizedAlways, {}, {}},
                                   {CLAuthorizationStatus::AuthorizedWhenInUse, settingsPage, {}},
                                   {static_cast<CLAuthorizationStatus>(5), {}, {}},
                                   {static_cast<CLAuthorizationStatus>(-1), {}, {}}};
    for (const auto& row : rows) {
        locationManager->setStatus(row.status);
        const auto number = static_cast<std::int32_t>(row.status);
        EXPECT_EQ(softOptIn(VLPermissions::LocationAlways), row.always) << number;
        EXPECT_EQ(softOptIn(VLPermissions::LocationWhenInUse), row.inUse) << number;
    }
}

TEST_F(VLSoftOptInTest, TheInterstitialIsShownAnimated) {
    start();
    const auto interstitial = makeInterstitial(Interstitial::Metadata::Taken);
    permissions->queueSoftOptInForPermission(VLPermissions::Notifications, interstitial);
    phone().settle();
    answer(answerWithPage("May we?"));
    EXPECT_EQ(root()->presentedViewController(), interstitial);
    EXPECT_TRUE(interstitial->wasAnimated());
    EXPECT_THAT(prompts, IsEmpty());
    EXPECT_EQ(log().count(retrievingText("Notification Prompt", "86400"), VLLogLevel::Debug), 1);
}

TEST_F(VLSoftOptInTest, AQueuedSoftOptInWaitsForTheStart) {
    EXPECT_THAT(softOptIn(), IsEmpty());
    phone().advance(3600);
    EXPECT_EQ(settings->lastPermissionInterstitial(), 0);
    start();
    EXPECT_EQ(placementsAfter(0), Placements{"Notification Prompt"});
    EXPECT_EQ(settings->lastPermissionInterstitial(), kStart + 3600);
}

TEST_F(VLSoftOptInTest, SoftOptInsWithinADayAreRefused) {
    start();
    EXPECT_THAT(softOptIn(), ElementsAre("Notification Prompt"));
    answer(answerWithPage("May we?"));
    phone().advance(3600);
    log().clear();
    EXPECT_THAT(softOptIn(), IsEmpty());
    EXPECT_EQ(log().count(tooRecentText("Notification Prompt", "0", "86400", "3600.000000"), VLLogLevel::Warn), 1);
    EXPECT_EQ(log().linesContaining("Retrieving soft opt-in").size(), 0U);
    EXPECT_EQ(settings->lastPermissionInterstitial(), kStart);
    EXPECT_THAT(prompts, IsEmpty());
}

TEST_F(VLSoftOptInTest, TheIntervalEndsExactlyADayLater) {
    start();
    softOptIn();
    phone().advance(86399.5);
    EXPECT_THAT(softOptIn(VLPermissions::LocationWhenInUse), IsEmpty());
    EXPECT_EQ(log().count(tooRecentText("Location Prompt", "2", "86400", "86399.500000"), VLLogLevel::Warn), 1);
    phone().advance(0.5);
    EXPECT_THAT(softOptIn(VLPermissions::LocationAlways), ElementsAre("Location Prompt"));
    EXPECT_EQ(settings->lastPermissionInterstitial(), kStart + 86400);
    phone().advance(86401);
    EXPECT_THAT(softOptIn(), ElementsAre("Notification Prompt"));
}

TEST_F(VLSoftOptInTest, TheConfigurationSetsTheInterval) {
    start(R"({"reprompt_interval":"60"})");
    softOptIn();
    EXPECT_EQ(log().count(retrievingText("Notification Prompt", "60"), VLLogLevel::Debug), 1);
    phone().advance(59);
    EXPECT_THAT(softOptIn(VLPermissions::LocationAlways), IsEmpty());
    EXPECT_EQ(log().count(tooRecentText("Location Prompt", "1", "60", "59.000000"), VLLogLevel::Warn), 1);
    phone().advance(1);
    EXPECT_THAT(softOptIn(), ElementsAre("Notification Prompt"));
}

TEST_F(VLSoftOptInTest, AnIntervalOf0AllowsEverySoftOptIn) {
    start(R"({"reprompt_interval":0})");
    for (int i = 0; i < 3; ++i) EXPECT_THAT(softOptIn(), ElementsAre("Notification Prompt"));
    EXPECT_TRUE(log().linesContaining("too recently").empty());
}

TEST_F(VLSoftOptInTest, TheLimitSurvivesARestart) {
    start();
    softOptIn();
    permissions.reset();
    settings = std::make_shared<VLSettings>(phone().device());
    permissions = makeService();
    start();
    phone().advance(86399);
    EXPECT_THAT(softOptIn(), IsEmpty());
    phone().advance(1);
    EXPECT_THAT(softOptIn(), ElementsAre("Notification Prompt"));
}

TEST_F(VLSoftOptInTest, ASetBackClockRefusesUntilItCatchesUp) {
    start();
    softOptIn();
    phone().setClock(kStart - 1000);
    EXPECT_THAT(softOptIn(), IsEmpty());
    EXPECT_EQ(log().count(tooRecentText("Notification Prompt", "0", "86400", "-1000.000000"), VLLogLevel::Warn), 1);
}

TEST_F(VLSoftOptInTest, AnUnneededSoftOptInKeepsTheStoredTime) {
    start();
    reportStatus(2);
    EXPECT_THAT(softOptIn(), IsEmpty());
    EXPECT_EQ(settings->lastPermissionInterstitial(), 0);
    EXPECT_TRUE(log().linesContaining("soft opt-in").empty());
}

TEST_F(VLSoftOptInTest, AFailedFetchLeadsToTheSystemPrompt) {
    start(R"({"reprompt_interval":0})");
    softOptIn();
    session().fail("/interstitial/");
    phone().settle();
    EXPECT_THAT(prompts, ElementsAre(Prompt{"notifications", 15U}));
    softOptIn(VLPermissions::LocationAlways);
    session().fail("/interstitial/");
    phone().settle();
    softOptIn(VLPermissions::LocationWhenInUse);
    answer("corrupt", 500);
    EXPECT_THAT(locationManager->requests(), ElementsAre("locationAlways", "locationWhenInUse"));
}

TEST_F(VLSoftOptInTest, AFailedSoftOptInCountsForTheInterval) {
    start();
    softOptIn();
    EXPECT_EQ(settings->lastPermissionInterstitial(), kStart);
    session().fail("/interstitial/");
    phone().settle();
    EXPECT_THAT(softOptIn(VLPermissions::LocationAlways), IsEmpty());
}

TEST_F(VLSoftOptInTest, AnUnsuitableControllerLeadsToTheSystemPrompt) {
    start(R"({"reprompt_interval":0})");
    const std::vector<std::shared_ptr<NSObject>> unsuitable = {nullptr, std::make_shared<NSObject>(),
                                                               std::make_shared<UIViewController>()};
    for (const auto& object : unsuitable) {
        prompts.clear();
        permissions->queueSoftOptInForPermission(VLPermissions::Notifications, object);
        phone().settle();
        EXPECT_THAT(prompts, ElementsAre(Prompt{"notifications", 15U}));
        // The prompt has set the status; the next round needs it undecided.
        reportStatus(0);
    }
    EXPECT_TRUE(session().requests("/interstitial/").empty());
}

TEST_F(VLSoftOptInTest, UnreadableContentLeadsToTheSystemPrompt) {
    start();
    softOptIn();
    answer(answerWithContent("no JSON"));
    EXPECT_THAT(prompts, ElementsAre(Prompt{"notifications", 15U}));
}

TEST_F(VLSoftOptInTest, MissingContentOrWindowIsNoFailure) {
    start(R"({"reprompt_interval":0})");
    softOptIn();
    answer("{}");
    shown(makeInterstitial(), answerWithPage("something else"));
    softOptIn();
    answer(answerWithPage("May we?"));
    EXPECT_THAT(prompts, IsEmpty());
}

TEST_F(VLSoftOptInTest, APromptFollowsTheSoftOptInBeforeIt) {
    start();
    permissions->queueSoftOptInForPermission(VLPermissions::Notifications, makeInterstitial());
    permissions->queueSystemPromptForPermission(VLPermissions::LocationAlways);
    phone().settle();
    EXPECT_EQ(placementsAfter(0), Placements{"Notification Prompt"});
    EXPECT_THAT(locationManager->requests(), ElementsAre("locationAlways"));
}

TEST_F(VLSoftOptInTest, ARefusedControllerIsReleasedOnTheMainQueue) {
    class Leaving : public Interstitial {
    public:
        explicit Leaving(bool& wasOnMainQueue) : wasOnMainQueue_(wasOnMainQueue) {}
        ~Leaving() override { wasOnMainQueue_ = Platform::current().mainQueue()->isCurrent(); }

    private:
        bool& wasOnMainQueue_;
    };
    start();
    reportStatus(2);
    bool wasOnMainQueue = false;
    permissions->queueSoftOptInForPermission(VLPermissions::Notifications, std::make_shared<Leaving>(wasOnMainQueue));
    phone().settle();
    EXPECT_TRUE(wasOnMainQueue);
}

}  // namespace

}  // namespace vorlane
