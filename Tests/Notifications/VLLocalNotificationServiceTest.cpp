#include "Notifications/VLLocalNotificationService.h"

#include <gtest/gtest.h>

#include <limits>

#include "Categories/UILocalNotification+VLTimeToFire.h"
#include "Notifications/VLNotificationHelper.h"
#include "Platform/NSPropertyListSerialization.h"
#include "Tests/Notifications/FileReplacements.h"
#include "Tests/Notifications/NotificationsTest.h"

namespace vorlane {

namespace {

const std::string kDefaultSound = "UILocalNotificationDefaultSoundName";

class VLLocalNotificationServiceTest : public NotificationsTest {
protected:
    VLLocalNotificationServiceTest() {
        phone().simulatedDevice().setLocalTimeZone({"Europe/Oslo", 3600});
        settings->setNotificationSettings(allowed());
        application().setApplicationState(UIApplicationState::Active);
    }

    std::optional<UILocalNotification> schedule(std::optional<double> in,
                                                const std::optional<Dictionary>& metadata = std::nullopt,
                                                const std::optional<std::string>& campaign = "token") {
        const auto date = in ? std::optional<double>(phone().now() + *in) : std::nullopt;
        return service->scheduleLocalNotification("50% off!", 3, campaign, date, metadata, "Buy");
    }

    /// A notification that the library did not make.
    UILocalNotification foreign(std::optional<Dictionary> userInfo = std::nullopt) {
        UILocalNotification notification;
        notification.fireDate = phone().now() + 1000;
        notification.alertBody = "own";
        notification.userInfo = std::move(userInfo);
        application().scheduleLocalNotification(notification);
        return notification;
    }

    std::vector<RecordedRequest> splits() {
        phone().settle();
        return session().requests(urlBuilder->MDNURL().absoluteString());
    }
    void answerSplit(std::int64_t status, const std::string& body = {}) {
        phone().settle();
        session().answer(urlBuilder->MDNURL().absoluteString(), status, body);
        phone().settle();
    }
    std::vector<RecordedRequest> cancellations() {
        phone().settle();
        return session().requests("/phash/cancel");
    }
    std::vector<UILocalNotification> scheduled() { return application().scheduledLocalNotifications(); }
    std::size_t openTasks() { return application().backgroundTasks().size(); }

    Value splitBody(const std::string& phash = "") {
        return Dictionary{{"campaigntoken", "token"},
                          {"pushtext", "50%25%20off!"},
                          {"responsetype", "json"},
                          {"trackingid", "T"},
                          {"phash", phash}};
    }

    std::shared_ptr<VLLocalNotificationService> makeService(std::shared_ptr<UIApplication> scheduling) {
        return VLLocalNotificationService::serviceWith({.settings = settings,
                                                        .notificationHelper = std::make_shared<VLNotificationHelper>(
                                                            scheduling, phone().device(), phone().mainBundle()),
                                                        .application = scheduling,
                                                        .urlBuilder = urlBuilder,
                                                        .urlSession = urlSession,
                                                        .payloadBuilder = payloadBuilder,
                                                        .notificationCenter = phone().notificationCenter()});
    }

    std::shared_ptr<VLLocalNotificationService> service = makeService(phone().application());
};

TEST_F(VLLocalNotificationServiceTest, InvisibleNotificationsAreNotScheduled) {
    settings->setNotificationSettings(std::nullopt);
    EXPECT_EQ(schedule(1000), std::nullopt);
    auto hidden = allowed();
    hidden.lockScreen = hidden.notificationCentre = hidden.alertSetting = 1;
    settings->setNotificationSettings(hidden);
    EXPECT_EQ(schedule(0), std::nullopt);
    EXPECT_TRUE(splits().empty());
    EXPECT_TRUE(scheduled().empty());
    EXPECT_TRUE(log().linesContaining("Local notification").empty());
}

TEST_F(VLLocalNotificationServiceTest, ANotificationIsBuiltFieldByField) {
    UILocalNotification expected;
    expected.fireDate = phone().now() + 1000;
    expected.timeZone = "Europe/Oslo";
    expected.alertBody = "50% off!";
    expected.alertAction = "Buy";
    expected.soundName = kDefaultSound;
    expected.applicationIconBadgeNumber = 3;
    expected.userInfo = Dictionary{{"own", 1}, {"vl_notification", true}, {"vl_campaign", "token"}};
    EXPECT_EQ(schedule(1000, Dictionary{{"own", 1}}), expected);
    EXPECT_EQ(scheduled(), std::vector{expected});
}

TEST_F(VLLocalNotificationServiceTest, CampaignAndActionAreOptional) {
    const auto bare = service->scheduleLocalNotification("a", 0, std::nullopt, phone().now() + 500, std::nullopt, "");
    ASSERT_TRUE(bare);
    EXPECT_EQ(bare->userInfo, (Dictionary{{"vl_notification", true}}));
    EXPECT_EQ(bare->alertAction, "View");
    EXPECT_EQ(service->scheduleLocalNotification("a", 0, std::nullopt, phone().now() + 500, std::nullopt, std::nullopt)
                  ->alertAction,
              "View");
}

TEST_F(VLLocalNotificationServiceTest, WithoutADateTheSplitIsRequestedAtOnce) {
    settings->setPhash("opened");
    const auto built = schedule(std::nullopt);
    ASSERT_TRUE(built);
    EXPECT_EQ(built->fireDate, std::nullopt);
    ASSERT_EQ(splits().size(), 1U);
    EXPECT_EQ(splits()[0].request.HTTPMethod, "POST");
    EXPECT_EQ(splits()[0].header("Content-Type"), "application/json");
    EXPECT_EQ(splits()[0].payload(), splitBody("opened"));
    EXPECT_TRUE(scheduled().empty());
    EXPECT_TRUE(phone().timers().empty());
    EXPECT_EQ(log().count("Local notification: due in 0 seconds, get the phash now", VLLogLevel::Debug), 1);
}

TEST_F(VLLocalNotificationServiceTest, DueIn89SecondsASplitIsRequested) {
    schedule(89, std::nullopt, std::nullopt);
    ASSERT_EQ(splits().size(), 1U);
    EXPECT_FALSE(splits()[0].payload().contains("campaigntoken"));
    EXPECT_EQ(splits()[0].payload()["phash"], Value(""));
    EXPECT_TRUE(scheduled().empty());
    EXPECT_EQ(log().count("Local notification: due in 89 seconds, get the phash now", VLLogLevel::Debug), 1);
}

TEST_F(VLLocalNotificationServiceTest, DueIn90SecondsItIsScheduledUnchanged) {
    schedule(90);
    EXPECT_TRUE(splits().empty());
    EXPECT_EQ(scheduled().size(), 1U);
    EXPECT_EQ(phone().timers(), std::vector<double>{5});
    EXPECT_EQ(log().count("Local notification: due in 90 seconds, schedule but create phash later", VLLogLevel::Debug),
              1);
}

TEST_F(VLLocalNotificationServiceTest, InTheBackgroundEverySplitIsRequestedAtOnce) {
    application().setApplicationState(UIApplicationState::Background);
    schedule(100'000);
    EXPECT_EQ(splits().size(), 1U);
    EXPECT_TRUE(scheduled().empty());
}

TEST_F(VLLocalNotificationServiceTest, ASplitSetsPhashTextSoundAndRecord) {
    const auto built = schedule(89, Dictionary{{"own", 1}});
    const auto before = openTasks();
    answerSplit(200, R"({"phash":"h","messagetext":"Half%20price","campaignid":7,"splitid":"s","templateid":9})");
    auto expected = *built;
    expected.alertBody = "Half price";
    expected.userInfo = Dictionary{
        {"own", 1},
        {"vl_notification", true},
        {"vl_campaign", "token"},
        {"p", "h"},
        {"vl_data",
         Dictionary{
             {"campaignid", 7}, {"absplitid", "s"}, {"templateid", 9}, {"campaigntoken", "token"}, {"phash", "h"}}}};
    EXPECT_EQ(scheduled(), std::vector{expected});
    EXPECT_EQ(log().count("Local notification: retrieved split with message \"Half price\"", VLLogLevel::Debug), 1);
    EXPECT_EQ(before, 2U);  // of the notification and of the request
    EXPECT_EQ(openTasks(), 0U);
}

TEST_F(VLLocalNotificationServiceTest, WithoutAPhashANotificationStaysOutstanding) {
    schedule(89, std::nullopt, std::nullopt);
    answerSplit(200, R"({"campaignid":7,"phash":5})");
    ASSERT_EQ(scheduled().size(), 1U);
    EXPECT_EQ(scheduled()[0].alertBody, "50% off!");
    EXPECT_EQ(scheduled()[0].userInfo,
              (Dictionary{{"vl_notification", true}, {"vl_data", Dictionary{{"campaignid", 7}}}}));
    service->createPhashForOutstandingNotificationDueIn(1000);
    EXPECT_EQ(splits().size(), 2U);
    EXPECT_EQ(log().count("Local notification: retrieved split with message \"(null)\"", VLLogLevel::Debug), 1);
}

TEST_F(VLLocalNotificationServiceTest, UndecodableTextIsKept) {
    schedule(89);
    answerSplit(200, R"({"phash":"h","messagetext":"100%"})");
    EXPECT_EQ(scheduled().at(0).alertBody, "100%");
}

TEST_F(VLLocalNotificationServiceTest, AFilteredNotificationIsDropped) {
    schedule(89);
    answerSplit(204);
    EXPECT_TRUE(scheduled().empty());
    EXPECT_EQ(openTasks(), 0U);
    EXPECT_EQ(log().count("Local notification: will not be scheduled. This tracking ID has been filtered out.",
                          VLLogLevel::Debug),
              1);
}

TEST_F(VLLocalNotificationServiceTest, AScheduledNotificationMayBeFilteredOutLater) {
    schedule(65 + 60);
    phone().advance(60);
    application().willResignActive();
    answerSplit(204, "{}");
    EXPECT_TRUE(scheduled().empty());
}

TEST_F(VLLocalNotificationServiceTest, AFailedSplitSchedulesTheNotificationUnchanged) {
    const auto built = schedule(89);
    answerSplit(500);
    EXPECT_EQ(scheduled(), std::vector{*built});
    const auto lines =
        log().linesContaining("Local notification: schedule as is. Error retrieving split: Error Domain=");
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_EQ(lines[0].level, VLLogLevel::Debug);
    service->createPhashForOutstandingNotificationDueIn(1000);
    EXPECT_EQ(splits().size(), 2U);
}

TEST_F(VLLocalNotificationServiceTest, TheTimerIsForTheSoonestNotification) {
    schedule(5000);
    schedule(200);
    phone().advance(5);
    EXPECT_EQ(phone().timers(), std::vector<double>{135});
    EXPECT_EQ(
        log().count("Local notification: due to fire in 195 seconds, create phash in 135 seconds", VLLogLevel::Debug),
        1);
}

TEST_F(VLLocalNotificationServiceTest, APassSplitsOutstandingNotificationsThatAreDue) {
    schedule(90);
    schedule(200);
    foreign(Dictionary{{"p", "x"}, {"vl_notification", true}});
    foreign();
    phone().advance(5);
    // The pass of the first timer invalidates the second timer.
    EXPECT_EQ(log().count("Local notification: timer fired", VLLogLevel::Debug), 1);
    EXPECT_TRUE(splits().empty());  // none is due within 60 seconds yet
    EXPECT_EQ(log().count("Local notification: 2 outstanding without a phash", VLLogLevel::Debug), 1);
    EXPECT_EQ(
        log().count("Local notification: due to fire in 85 seconds, create phash in 25 seconds", VLLogLevel::Debug), 1);
    EXPECT_EQ(phone().timers(), std::vector<double>{25});
    phone().advance(25);
    EXPECT_EQ(splits().size(), 1U);
    EXPECT_EQ(openTasks(), 2U);  // of the pass and of the request
    answerSplit(200, R"({"phash":"h"})");
    EXPECT_EQ(openTasks(), 0U);
    EXPECT_EQ(log().count("Local notification: 1 outstanding without a phash", VLLogLevel::Debug), 1);
    EXPECT_EQ(phone().timers(), std::vector<double>{110});
}

TEST_F(VLLocalNotificationServiceTest, ARescheduledNotificationKeepsItsDate) {
    const auto built = schedule(90);
    application().willResignActive();
    answerSplit(200, R"({"phash":"h","messagetext":"new"})");
    ASSERT_EQ(scheduled().size(), 1U);
    EXPECT_EQ(scheduled()[0].fireDate, built->fireDate);
    EXPECT_EQ(scheduled()[0].alertBody, "new");
    EXPECT_EQ((*scheduled()[0].userInfo)["p"], Value("h"));
}

TEST_F(VLLocalNotificationServiceTest, SimultaneousPassesDoNotDuplicateANotification) {
    schedule(90);
    application().willResignActive();
    application().willTerminate();
    EXPECT_EQ(splits().size(), 2U);
    answerSplit(200, R"({"phash":"one"})");
    answerSplit(200, R"({"phash":"two"})");
    ASSERT_EQ(scheduled().size(), 1U);
    EXPECT_EQ((*scheduled()[0].userInfo)["p"], Value("two"));
}

TEST_F(VLLocalNotificationServiceTest, TheNextPassWaitsAtLeast10Seconds) {
    schedule(95);
    phone().advance(5);
    phone().setClock(phone().now() + 25);  // 65 seconds before it fires
    phone().advance(0);
    service->createPhashForOutstandingNotificationDueIn(60);
    phone().settle();
    EXPECT_EQ(
        log().count("Local notification: due to fire in 65 seconds, create phash in 5 seconds", VLLogLevel::Debug), 1);
    EXPECT_EQ(phone().timers(), std::vector<double>{10});
}

TEST_F(VLLocalNotificationServiceTest, WithoutOutstandingNotificationsNoTimerIsSet) {
    service->createPhashForOutstandingNotificationDueIn(60);
    phone().settle();
    EXPECT_TRUE(phone().timers().empty());
    EXPECT_EQ(openTasks(), 0U);
    EXPECT_EQ(log().count("Local notification: 0 outstanding without a phash", VLLogLevel::Debug), 1);
}

TEST_F(VLLocalNotificationServiceTest, LeavingTheForegroundSplitsAllOutstandingNotifications) {
    schedule(90);
    schedule(100'000);
    application().willResignActive();
    EXPECT_TRUE(phone().timers().size() == 1);  // the first timer was replaced without being invalidated
    EXPECT_EQ(splits().size(), 2U);
    EXPECT_EQ(
        log().count("Local notification: app moving to background, create all outstanding phashes", VLLogLevel::Debug),
        1);
}

TEST_F(VLLocalNotificationServiceTest, TerminationSplitsAllOutstandingNotifications) {
    schedule(100'000);
    application().willTerminate();
    EXPECT_TRUE(phone().timers().empty());
    EXPECT_EQ(splits().size(), 1U);
    EXPECT_EQ(log().count("Local notification: app terminating, create all outstanding phashes", VLLogLevel::Debug), 1);
}

TEST_F(VLLocalNotificationServiceTest, AnExpiredPassEndsItsTask) {
    schedule(100'000);
    application().willResignActive();
    EXPECT_EQ(openTasks(), 2U);  // of the pass and of the request
    application().expireBackgroundTasks();
    EXPECT_EQ(openTasks(), 0U);
}

TEST_F(VLLocalNotificationServiceTest, ADestroyedServiceStopsObserving) {
    schedule(1000);
    service.reset();
    application().willResignActive();
    phone().advance(10);
    EXPECT_TRUE(splits().empty());
}

// Opening.

TEST_F(VLLocalNotificationServiceTest, OpeningWhileInactiveStoresThePhash) {
    UILocalNotification notification;
    notification.userInfo = Dictionary{{"p", "hash"}};
    application().setApplicationState(UIApplicationState::Inactive);
    service->didAcceptLocalNotification(phone().application(), notification);
    EXPECT_EQ(settings->phash(), "hash");
    EXPECT_TRUE(isNotificationOpen());
    EXPECT_EQ(
        log().count("Local notification: user opened notification " + notification.description(), VLLogLevel::Debug),
        1);
}

TEST_F(VLLocalNotificationServiceTest, OpeningInOtherStatesStoresNoPhash) {
    UILocalNotification notification;
    notification.userInfo = Dictionary{{"p", "hash"}};
    settings->setPhash("earlier");
    for (const auto state : {UIApplicationState::Active, UIApplicationState::Background}) {
        Vorlane::sharedInstance().setNotificationOpen(false);
        application().setApplicationState(state);
        service->didAcceptLocalNotification(phone().application(), notification);
        EXPECT_EQ(settings->phash(), "earlier");
        EXPECT_TRUE(isNotificationOpen());
    }
}

TEST_F(VLLocalNotificationServiceTest, OnlyAStringPhashIsStored) {
    application().setApplicationState(UIApplicationState::Inactive);
    UILocalNotification notification;
    service->didAcceptLocalNotification(phone().application(), notification);
    for (const auto& phash : {Value(), Value(5)}) {
        notification.userInfo = Dictionary{{"p", phash}};
        service->didAcceptLocalNotification(phone().application(), notification);
    }
    EXPECT_EQ(settings->phash(), std::nullopt);
}

TEST_F(VLLocalNotificationServiceTest, WithoutAPhashTheEarlierOneStays) {
    settings->setPhash("earlier");
    application().setApplicationState(UIApplicationState::Inactive);
    UILocalNotification notification;
    service->didAcceptLocalNotification(phone().application(), notification);
    notification.userInfo = Dictionary{{"own", 1}};
    service->didAcceptLocalNotification(phone().application(), notification);
    EXPECT_EQ(settings->phash(), "earlier");
}

// Cancelling.

TEST_F(VLLocalNotificationServiceTest, CancellingATrackedNotificationReportsIt) {
    schedule(89);
    answerSplit(200, R"({"phash":"h","campaignid":7})");
    const auto device = payloadBuilder->deviceData();
    service->cancelPendingLocalNotification(scheduled().at(0));
    EXPECT_TRUE(scheduled().empty());
    ASSERT_EQ(cancellations().size(), 1U);
    EXPECT_EQ(cancellations()[0].request.HTTPMethod, "POST");
    EXPECT_EQ(cancellations()[0].header("Content-Type"), "application/json");
    const Dictionary record{{"campaignid", 7}, {"campaigntoken", "token"}, {"phash", "h"}};
    EXPECT_EQ(cancellations()[0].payload(),
              merged({{"cancellations", Array{Value(record)}}, {"deviceData", device}}, basicFields(false)));
}

TEST_F(VLLocalNotificationServiceTest, TheReturnedNotificationCancelsAfterItsSplit) {
    const auto built = schedule(1000);
    application().willResignActive();
    answerSplit(200, R"({"phash":"h","messagetext":"new"})");
    service->cancelPendingLocalNotification(*built);
    EXPECT_TRUE(scheduled().empty());
    EXPECT_TRUE(cancellations().empty());  // it has no phash itself
}

TEST_F(VLLocalNotificationServiceTest, AnUntrackedNotificationIsCancelledWithoutARequest) {
    const auto notification = foreign();
    service->cancelPendingLocalNotification(notification);
    EXPECT_TRUE(scheduled().empty());
    EXPECT_TRUE(cancellations().empty());
}

TEST_F(VLLocalNotificationServiceTest, AMissingRecordIsSentEmpty) {
    service->cancelPendingLocalNotification(foreign(Dictionary{{"p", "h"}, {"vl_data", "none"}}));
    ASSERT_EQ(cancellations().size(), 1U);
    EXPECT_EQ(cancellations()[0].payload()["cancellations"], Value(Array{Value(Dictionary())}));
}

TEST_F(VLLocalNotificationServiceTest, CancellingAllSendsTheTrackedRecords) {
    foreign(Dictionary{{"p", "a"}, {"vl_data", Dictionary{{"phash", "a"}}}});
    foreign();
    foreign(Dictionary{{"p", "b"}, {"vl_data", Dictionary{{"phash", "b"}}}});
    service->cancelAllPendingLocalNotifications();
    EXPECT_TRUE(scheduled().empty());
    ASSERT_EQ(cancellations().size(), 1U);
    EXPECT_EQ(cancellations()[0].payload()["cancellations"],
              Value(Array{Value(Dictionary{{"phash", "a"}}), Value(Dictionary{{"phash", "b"}})}));
}

TEST_F(VLLocalNotificationServiceTest, CancellingForeignNotificationsSendsNothing) {
    foreign();
    foreign(Dictionary{{"own", 1}});
    service->cancelAllPendingLocalNotifications();
    EXPECT_TRUE(scheduled().empty());
    EXPECT_TRUE(cancellations().empty());
    EXPECT_EQ(log().count("Local notification: no phashes to cancel", VLLogLevel::Debug), 1);
}

TEST_F(VLLocalNotificationServiceTest, CancellingNoneDoesNothing) {
    service->cancelAllPendingLocalNotifications();
    EXPECT_TRUE(cancellations().empty());
    EXPECT_TRUE(log().linesContaining("Local notification").empty());
}

TEST_F(VLLocalNotificationServiceTest, AFailedCancellationIsOnlyLogged) {
    service->cancelPendingLocalNotification(foreign(Dictionary{{"p", "a"}, {"vl_data", Dictionary{{"phash", "a"}}}}));
    session().answer("/phash/cancel", 500);
    phone().advance(3600);
    EXPECT_EQ(cancellations().size(), 1U);
    EXPECT_EQ(log().count(R"(Failed to cancel phashes for local notification(s): [{"phash":"a"}])", VLLogLevel::Debug),
              1);
}

TEST_F(VLLocalNotificationServiceTest, TheTimeToFireCountsFromNow) {
    UILocalNotification notification;
    EXPECT_EQ(timeToFire(notification), 0);
    notification.fireDate = phone().now() - 5;
    EXPECT_EQ(timeToFire(notification), -5);
}

TEST_F(VLLocalNotificationServiceTest, AnInvalidDateDoesNotStartASplit) {
    schedule(std::numeric_limits<double>::quiet_NaN());
    phone().advance(5);
    EXPECT_EQ(phone().timers(), std::vector<double>{10});
    EXPECT_TRUE(splits().empty());
}

TEST_F(VLLocalNotificationServiceTest, AnUnreadableAnswerSchedulesTheNotificationUnchanged) {
    for (const auto* body : {"", "garbage", "[]", "null", "7", "{\"phash\":\"h\""}) {
        log().clear();
        const auto built = schedule(89);
        answerSplit(200, body);
        EXPECT_EQ(scheduled(), std::vector{*built}) << body;
        EXPECT_EQ(openTasks(), 0U) << body;
        EXPECT_EQ(log().linesContaining("schedule as is. Error retrieving split: Error Domain=").size(), 1U) << body;
        application().cancelAllLocalNotifications();
    }
}

TEST_F(VLLocalNotificationServiceTest, SplitFieldsOfAnotherTypeAreAbsent) {
    schedule(89);
    answerSplit(200, R"({"phash":null,"messagetext":7,"campaignid":null,"splitid":[1],"templateid":{}})");
    const Dictionary record{
        {"campaignid", nullptr}, {"absplitid", Array{1}}, {"templateid", Dictionary()}, {"campaigntoken", "token"}};
    ASSERT_EQ(scheduled().size(), 1U);
    EXPECT_EQ(scheduled()[0].alertBody, "50% off!");
    EXPECT_EQ(scheduled()[0].userInfo,
              (Dictionary{{"vl_notification", true}, {"vl_campaign", "token"}, {"vl_data", record}}));
}

TEST_F(VLLocalNotificationServiceTest, ASplitCancelsBeforeItSchedulesTheCopy) {
    for (const auto status : {200, 500}) {
        schedule(1000);
        std::vector<std::string> events;
        application().setEventObserver([&events](const std::string& event, const Dictionary& /*fields*/) {
            if (event == "cancelled" || event == "scheduled") events.push_back(event);
        });
        application().willResignActive();
        answerSplit(status, R"({"phash":"h"})");
        application().setEventObserver(nullptr);
        EXPECT_EQ(events, (std::vector<std::string>{"cancelled", "scheduled"})) << status;
        application().cancelAllLocalNotifications();
        application().didBecomeActive();
    }
}

TEST_F(VLLocalNotificationServiceTest, ASecondPassReplacesTheStoredTask) {
    schedule(1000);
    application().willResignActive();
    application().willTerminate();
    answerSplit(200, R"({"phash":"one"})");
    answerSplit(200, R"({"phash":"two"})");
    EXPECT_EQ(openTasks(), 1U);
    application().expireBackgroundTasks();
    EXPECT_EQ(openTasks(), 0U);
}

/// An application that leaves it to the expiration handlers to end their tasks.
class UnforgivingApplication : public SimulatedApplication {
public:
    using SimulatedApplication::SimulatedApplication;

    void runExpirationHandlers() {
        for (const auto& [identifier, name] : backgroundTasks()) expireBackgroundTask(identifier);
    }
};

TEST_F(VLLocalNotificationServiceTest, AnExpirationHandlerEndsItsOwnTask) {
    const auto unforgiving = std::make_shared<UnforgivingApplication>(phone().notificationCenter());
    service = makeService(unforgiving);
    service->createPhashForOutstandingNotificationDueIn(60);
    service->createPhashForOutstandingNotificationDueIn(60);
    EXPECT_EQ(unforgiving->backgroundTasks().size(), 2U);
    unforgiving->runExpirationHandlers();
    EXPECT_TRUE(unforgiving->backgroundTasks().empty());
}

TEST_F(VLLocalNotificationServiceTest, ATaskExpiresAfterItsServiceIsGone) {
    const auto unforgiving = std::make_shared<UnforgivingApplication>(phone().notificationCenter());
    service = makeService(unforgiving);
    UILocalNotification outstanding;
    outstanding.fireDate = phone().now() + 1000;
    outstanding.userInfo = Dictionary{{"vl_notification", true}};
    unforgiving->scheduleLocalNotification(outstanding);
    service->createPhashForOutstandingNotificationDueIn(2000);
    phone().settle();
    service.reset();
    unforgiving->runExpirationHandlers();
    EXPECT_TRUE(unforgiving->backgroundTasks().empty());
}

TEST_F(VLLocalNotificationServiceTest, NoKillDuringAPassLosesANotification) {
    const auto file = phone().documentsFolder() + "/VLScheduledNotifications.plist";
    application().keepScheduledLocalNotifications(file);
    const std::vector<std::string> names = {"first", "second", "third"};
    for (const auto& name : names) schedule(1000, Dictionary{{"name", name}});
    std::vector<std::vector<std::string>> states;
    const FileReplacements replacements([&](const std::string& path) {
        if (path != file) return;
        const auto root = NSPropertyListSerialization::dictionaryWithContentsOfFile(path);
        ASSERT_TRUE(root);
        auto& state = states.emplace_back();
        for (const auto& entry : root->at("notifications")) {
            state.push_back(entry.at("userInfo").at("name").get<std::string>());
        }
        std::ranges::sort(state);
    });
    application().willResignActive();
    answerSplit(200, R"({"phash":"h"})");
    answerSplit(500);
    answerSplit(204);
    ASSERT_EQ(states.size(), 3U);
    EXPECT_EQ(states[0], names);
    EXPECT_EQ(states[1], names);
    EXPECT_EQ(states[2], (std::vector<std::string>{"first", "second"}));
}

TEST_F(VLLocalNotificationServiceTest, APassSkipsLaterAndTrackedNotifications) {
    schedule(100);
    schedule(100.5);
    foreign(Dictionary{{"vl_notification", true}, {"p", nullptr}});
    service->createPhashForOutstandingNotificationDueIn(100);
    EXPECT_EQ(splits().size(), 1U);
    service->createPhashForOutstandingNotificationDueIn(2000);
    EXPECT_EQ(splits().size(), 3U);
}

}  // namespace

}  // namespace vorlane
