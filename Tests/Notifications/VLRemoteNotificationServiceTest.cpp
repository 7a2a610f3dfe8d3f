#include "Notifications/VLRemoteNotificationService.h"

#include <gtest/gtest.h>

#include "Public/VLConstants.h"
#include "Public/VLErrorDomains.h"
#include "Tests/Notifications/NotificationsTest.h"
#include "Tracking/VLSessionService.h"

namespace vorlane {

namespace {

const Data kToken{0x00, 0xAB, 0x10};
const std::string kNoToken = "No device token found - skipping device token registration";

class VLRemoteNotificationServiceTest : public NotificationsTest {
protected:
    std::shared_ptr<VLRemoteNotificationService> makeService() {
        return VLRemoteNotificationService::serviceWith({.settings = settings,
                                                         .notificationCenter = phone().notificationCenter(),
                                                         .application = phone().application(),
                                                         .urlSession = urlSession,
                                                         .urlBuilder = urlBuilder,
                                                         .payloadBuilder = payloadBuilder,
                                                         .vlUserNotificationCentre = centre,
                                                         .backgroundRefreshHelper = refreshHelper});
    }

    std::vector<RecordedRequest> registrations() {
        phone().settle();
        return session().requests(urlBuilder->deviceRegistrationURL().absoluteString());
    }
    void answer(std::int64_t status) {
        phone().settle();
        session().answer(urlBuilder->deviceRegistrationURL().absoluteString(), status, "ok");
        phone().settle();
    }

    Value registration(const VLUserNotificationSettings& registered) {
        return merged({{"notification_settings.v2", Dictionary{{"ios", registered.toDictionary()}}},
                       {"devicetoken", "00ab10"},
                       {"platform", "iOS"},
                       {"type", "register"}},
                      basicFields(false));
    }

    /// What a handler received.
    struct Outcome {
        int calls = 0;
        bool isDone = false;
        std::optional<NSError> error = std::nullopt;
        bool isOnMainQueue = false;
    };
    VLRemoteNotificationService::OutcomeHandler keepIn(Outcome& outcome) {
        return [this, &outcome](bool isDone, std::optional<NSError> error) {
            outcome = {outcome.calls + 1, isDone, std::move(error), phone().mainQueue()->isCurrent()};
        };
    }

    void checkForChanges(Outcome& outcome) {
        service->registerDeviceTokenIfNotificationSettingsChangedWithCompletionHandler(keepIn(outcome));
        phone().settle();
    }

    std::optional<UIBackgroundFetchResult> fetched;
    void fetch() {
        service->registerDeviceTokenIfNotificationSettingsChangedForBackgroundFetch(
            [this](UIBackgroundFetchResult result) { fetched = result; });
        phone().settle();
    }

    std::shared_ptr<VLRemoteNotificationService> service = makeService();
};

TEST_F(VLRemoteNotificationServiceTest, ATokenStringHasTwoDigitsPerByte) {
    EXPECT_EQ(VLRemoteNotificationService::deviceTokenToString(kToken), "00ab10");
    EXPECT_EQ(VLRemoteNotificationService::deviceTokenToString({}), "");
    EXPECT_EQ(VLRemoteNotificationService::deviceTokenToString({0xFF, 0x0F}), "ff0f");
}

TEST_F(VLRemoteNotificationServiceTest, ATokenIsRegisteredWithTheCurrentSettings) {
    service->registerDeviceTokenData(kToken, nullptr);
    const auto sent = registrations();
    ASSERT_EQ(sent.size(), 1U);
    EXPECT_EQ(sent[0].request.HTTPMethod, "POST");
    EXPECT_EQ(sent[0].header("Content-Type"), "application/json");
    EXPECT_EQ(sent[0].payload(), registration(allowed()));
    EXPECT_EQ(sent[0].payload()["notification_settings.v2"]["ios"], (Value{{"authorisation", "authorised"},
                                                                           {"sound", "enabled"},
                                                                           {"badge", "enabled"},
                                                                           {"alert", "enabled"},
                                                                           {"silent_push", "enabled"},
                                                                           {"notification_centre", "enabled"},
                                                                           {"lock_screen", "enabled"},
                                                                           {"carplay", "enabled"},
                                                                           {"alert_style", "banner"}}));
    EXPECT_EQ(log().count("Register device token: 00ab10", VLLogLevel::Debug), 1);
}

TEST_F(VLRemoteNotificationServiceTest, TheTokenIsStoredFirstTheSettingsLater) {
    service->registerDeviceTokenData(kToken, nullptr);
    phone().settle();
    EXPECT_EQ(settings->deviceToken(), kToken);
    EXPECT_EQ(settings->notificationSettings(), std::nullopt);
    answer(200);
    EXPECT_EQ(settings->notificationSettings(), allowed());
}

TEST_F(VLRemoteNotificationServiceTest, AHandlerReceivesNoErrorAfterASuccess) {
    int calls = 0;
    std::optional<NSError> received = NSError("none", 0);
    service->registerDeviceTokenData(kToken, [&](auto error) {
        ++calls;
        received = error;
        EXPECT_TRUE(phone().mainQueue()->isCurrent());
    });
    EXPECT_EQ(calls, 0);
    answer(204);
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(received, std::nullopt);
}

TEST_F(VLRemoteNotificationServiceTest, AFailedRegistrationKeepsTheStoredSettings) {
    auto before = allowed();
    before.sound = 1;
    settings->setNotificationSettings(before);
    std::optional<NSError> received;
    service->registerDeviceTokenData(kToken, [&](auto error) { received = error; });
    answer(500);
    ASSERT_TRUE(received);
    EXPECT_EQ(received->domain(), VLErrorDomainNetwork);
    EXPECT_EQ(received->code(), 500);
    EXPECT_EQ(settings->notificationSettings(), before);
    EXPECT_EQ(settings->deviceToken(), kToken);
    EXPECT_EQ(log().count("Device token registration failed!", VLLogLevel::Error), 1);
}

TEST_F(VLRemoteNotificationServiceTest, ATokenIsAlwaysRegistered) {
    settings->setNotificationSettings(allowed());
    service->registerDeviceTokenData(kToken, nullptr);
    EXPECT_EQ(registrations().size(), 1U);
}

TEST_F(VLRemoteNotificationServiceTest, ACheckWithoutATokenSendsNothing) {
    Outcome outcome;
    checkForChanges(outcome);
    EXPECT_TRUE(registrations().empty());
    EXPECT_EQ(outcome.calls, 1);
    EXPECT_FALSE(outcome.isDone);
    EXPECT_EQ(outcome.error, std::nullopt);
    EXPECT_TRUE(outcome.isOnMainQueue);
    EXPECT_EQ(log().count(kNoToken, VLLogLevel::Warn), 1);
}

TEST_F(VLRemoteNotificationServiceTest, AnUnchangedCheckSendsNothing) {
    settings->setDeviceToken(kToken);
    settings->setNotificationSettings(allowed());
    Outcome outcome;
    checkForChanges(outcome);
    EXPECT_TRUE(registrations().empty());
    EXPECT_EQ(outcome.calls, 1);
    EXPECT_FALSE(outcome.isDone);
    EXPECT_EQ(outcome.error, std::nullopt);
    EXPECT_EQ(log().count("User notification settings are unchanged. No further work required", VLLogLevel::Debug), 1);
}

TEST_F(VLRemoteNotificationServiceTest, OnTheFirstRunAnySettingsAreChanged) {
    settings->setDeviceToken(kToken);
    Outcome outcome;
    checkForChanges(outcome);
    EXPECT_EQ(outcome.calls, 0);
    ASSERT_EQ(registrations().size(), 1U);
    EXPECT_EQ(registrations()[0].payload(), registration(allowed()));
    EXPECT_EQ(log().count("User notification settings have changed - registering new settings", VLLogLevel::Info), 1);
    answer(200);
    EXPECT_EQ(outcome.calls, 1);
    EXPECT_TRUE(outcome.isDone);
    EXPECT_TRUE(outcome.isOnMainQueue);
}

TEST_F(VLRemoteNotificationServiceTest, OneChangedFieldIsAChange) {
    settings->setDeviceToken(kToken);
    auto before = allowed();
    before.carPlay = 0;
    settings->setNotificationSettings(before);
    service->registerDeviceTokenIfNotificationSettingsChangedWithCompletionHandler(nullptr);
    EXPECT_EQ(registrations().size(), 1U);
}

TEST_F(VLRemoteNotificationServiceTest, AFailedRegistrationIsRepeatedByTheNextCheck) {
    settings->setDeviceToken(kToken);
    Outcome outcome;
    checkForChanges(outcome);
    answer(503);
    EXPECT_FALSE(outcome.isDone);
    EXPECT_TRUE(outcome.error);
    checkForChanges(outcome);
    EXPECT_EQ(registrations().size(), 2U);
    answer(200);
    EXPECT_TRUE(outcome.isDone);
}

TEST_F(VLRemoteNotificationServiceTest, AFetchThatRegistersReportsNewData) {
    settings->setDeviceToken(kToken);
    fetch();
    EXPECT_EQ(fetched, std::nullopt);
    answer(200);
    EXPECT_EQ(fetched, UIBackgroundFetchResult::NewData);
    EXPECT_EQ(static_cast<int>(*fetched), 0);
}

TEST_F(VLRemoteNotificationServiceTest, AFetchWithoutChangesReportsNoData) {
    fetch();
    EXPECT_EQ(fetched, UIBackgroundFetchResult::NoData);
    EXPECT_EQ(static_cast<int>(*fetched), 1);
}

TEST_F(VLRemoteNotificationServiceTest, AFetchReportsAFailedRegistration) {
    settings->setDeviceToken(kToken);
    fetch();
    answer(500);
    EXPECT_EQ(fetched, UIBackgroundFetchResult::Failed);
    EXPECT_EQ(static_cast<int>(*fetched), 2);
}

TEST_F(VLRemoteNotificationServiceTest, SettingsAreCheckedOneSecondAfterEnteringForeground) {
    settings->setDeviceToken(kToken);
    application().willEnterForeground();
    phone().advance(0.9);
    EXPECT_TRUE(registrations().empty());
    phone().advance(0.1);
    EXPECT_EQ(registrations().size(), 1U);
    EXPECT_EQ(log().count("Register device triggered by NSNotification: UIApplicationWillEnterForegroundNotification",
                          VLLogLevel::Debug),
              1);
}

TEST_F(VLRemoteNotificationServiceTest, ADestroyedServiceStopsObserving) {
    settings->setDeviceToken(kToken);
    application().willEnterForeground();
    service.reset();
    application().willEnterForeground();
    phone().advance(2);
    EXPECT_TRUE(registrations().empty());
}

TEST_F(VLRemoteNotificationServiceTest, ARefusalIsRegisteredAsDenied) {
    settings->setDeviceToken(kToken);
    application().setBackgroundRefreshStatus(UIBackgroundRefreshStatus::Denied);
    service->didRegisterUserNotificationSettings({});
    EXPECT_TRUE(session().requests().empty());  // handled on the main queue
    ASSERT_EQ(registrations().size(), 1U);
    EXPECT_EQ(registrations()[0].payload(),
              registration(VLUserNotificationSettings::settingsWithAuthorisation(1, 1, 1, 1, 1, -1, -1, -1, 0)));
    EXPECT_EQ(log().count("Register device with AuthorisationStatusDenied triggered by "
                          "didRegisterUserNotificationSettings",
                          VLLogLevel::Debug),
              1);
}

TEST_F(VLRemoteNotificationServiceTest, APermissionIsRegisteredFromTheCentre) {
    settings->setDeviceToken(kToken);
    service->didRegisterUserNotificationSettings({.types = 4});
    ASSERT_EQ(registrations().size(), 1U);
    EXPECT_EQ(registrations()[0].payload(), registration(allowed()));
    EXPECT_EQ(log().count("Register device triggered by didRegisterUserNotificationSettings", VLLogLevel::Debug), 1);
}

TEST_F(VLRemoteNotificationServiceTest, UnregisteringSendsAndClearsTheToken) {
    settings->setDeviceToken(kToken);
    Outcome outcome;
    service->unregisterDeviceWithCompletionHandler(keepIn(outcome));
    ASSERT_EQ(registrations().size(), 1U);
    EXPECT_EQ(registrations()[0].request.HTTPMethod, "POST");
    EXPECT_EQ(registrations()[0].header("Content-Type"), "application/json");
    EXPECT_EQ(registrations()[0].payload(),
              merged({{"devicetoken", "00ab10"}, {"platform", "iOS"}, {"type", "unregister"}}, basicFields(false)));
    EXPECT_EQ(settings->deviceToken(), kToken);
    answer(200);
    EXPECT_EQ(settings->deviceToken(), std::nullopt);
    EXPECT_EQ(outcome.calls, 1);
    EXPECT_TRUE(outcome.isDone);
    EXPECT_EQ(outcome.error, std::nullopt);
    EXPECT_TRUE(outcome.isOnMainQueue);
}

TEST_F(VLRemoteNotificationServiceTest, AFailedUnregistrationClearsTheToken) {
    settings->setDeviceToken(kToken);
    Outcome outcome;
    service->unregisterDeviceWithCompletionHandler(keepIn(outcome));
    answer(500);
    EXPECT_EQ(settings->deviceToken(), std::nullopt);
    EXPECT_FALSE(outcome.isDone);
    ASSERT_TRUE(outcome.error);
    EXPECT_EQ(outcome.error->code(), 500);
}

TEST_F(VLRemoteNotificationServiceTest, WithoutATokenNothingIsUnregistered) {
    Outcome outcome;
    service->unregisterDeviceWithCompletionHandler(keepIn(outcome));
    EXPECT_EQ(outcome.calls, 0);
    EXPECT_TRUE(registrations().empty());
    EXPECT_EQ(outcome.calls, 1);
    EXPECT_FALSE(outcome.isDone);
    EXPECT_EQ(outcome.error, std::nullopt);
    EXPECT_EQ(log().count("Cannot unregister device because there is no device token to unregister", VLLogLevel::Warn),
              1);
}

TEST_F(VLRemoteNotificationServiceTest, HandlersMayBeEmpty) {
    service->unregisterDeviceWithCompletionHandler(nullptr);
    service->registerDeviceTokenData(kToken, nullptr);
    answer(200);
    service->unregisterDeviceWithCompletionHandler(nullptr);
    answer(200);
    EXPECT_EQ(settings->deviceToken(), std::nullopt);
}

// Incoming notifications.

Dictionary push(const Dictionary& fields) {
    Dictionary userInfo{{"aps", Dictionary{{"alert", "Hello"}}}};
    for (const auto& [key, value] : fields) userInfo[key] = value;
    return userInfo;
}

TEST_F(VLRemoteNotificationServiceTest, TheExportedKeysHaveTheirValues) {
    EXPECT_STREQ(VL_NOTIFICATION_KEY_PHASH, "p");
    EXPECT_STREQ(VL_NOTIFICATION_KEY_ACTION, "vl_ac");
    EXPECT_STREQ(VL_NOTIFICATION_ACTION_INBOX, "ri");
}

TEST_F(VLRemoteNotificationServiceTest, AnOpeningNotificationStoresItsPhash) {
    const auto userInfo = push({{"p", "hash"}});
    service->didReceiveRemoteNotification(phone().application(), userInfo);
    EXPECT_EQ(settings->phash(), "hash");
    EXPECT_TRUE(isNotificationOpen());
    const auto lines = log().linesContaining("Vorlane notification received with phash: hash");
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_EQ(lines[0].level, VLLogLevel::Info);
    EXPECT_EQ(lines[0].payload, Value(userInfo));
    EXPECT_EQ(log().count("Storing phash hash", VLLogLevel::Info), 1);
}

TEST_F(VLRemoteNotificationServiceTest, OnlyAnInactiveApplicationStoresThePhash) {
    settings->setPhash("earlier");
    for (const auto state : {UIApplicationState::Active, UIApplicationState::Background}) {
        Vorlane::sharedInstance().setNotificationOpen(false);
        application().setApplicationState(state);
        service->didReceiveRemoteNotification(phone().application(), push({{"p", "hash"}}));
        EXPECT_EQ(settings->phash(), "earlier");
        EXPECT_TRUE(isNotificationOpen());
    }
    EXPECT_EQ(log().count("App is already in foreground - discarding phash hash", VLLogLevel::Info), 2);
}

TEST_F(VLRemoteNotificationServiceTest, ASilentPushIsIgnored) {
    for (const auto& userInfo : {Dictionary{{"p", "hash"}}, Dictionary{{"p", "hash"}, {"aps", "alert"}},
                                 Dictionary{{"p", "hash"}, {"aps", Dictionary{{"badge", 1}}}}}) {
        service->didReceiveRemoteNotification(phone().application(), userInfo);
    }
    EXPECT_EQ(settings->phash(), std::nullopt);
    EXPECT_FALSE(isNotificationOpen());
    const auto lines = log().linesContaining("Silent push received and ignored");
    ASSERT_EQ(lines.size(), 3U);
    EXPECT_EQ(lines[0].level, VLLogLevel::Info);
    EXPECT_EQ(lines[0].payload, Value(Dictionary{{"p", "hash"}}));
}

TEST_F(VLRemoteNotificationServiceTest, ASilentPushKeepsNotificationOpen) {
    Vorlane::sharedInstance().setNotificationOpen(true);
    service->didReceiveRemoteNotification(phone().application(), {{"p", "hash"}});
    EXPECT_TRUE(isNotificationOpen());
}

TEST_F(VLRemoteNotificationServiceTest, ANullAlertIsAnAlert) {
    service->didReceiveRemoteNotification(phone().application(),
                                          {{"aps", Dictionary{{"alert", nullptr}}}, {"p", "hash"}});
    EXPECT_EQ(settings->phash(), "hash");
}

TEST_F(VLRemoteNotificationServiceTest, ANotificationWithoutAPhashOnlyCountsAsOpen) {
    service->didReceiveRemoteNotification(phone().application(), push({}));
    EXPECT_TRUE(isNotificationOpen());
    EXPECT_EQ(settings->phash(), std::nullopt);
    const auto lines = log().linesContaining("Push notification received without a phash and ignored");
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_EQ(lines[0].level, VLLogLevel::Info);
    EXPECT_EQ(lines[0].payload, Value(push({})));
}

TEST_F(VLRemoteNotificationServiceTest, ANonStringPhashIsLoggedWithItsClass) {
    const std::vector<std::pair<Value, std::string>> phashes = {{5, "NSNumber"},
                                                                {true, "NSNumber"},
                                                                {nullptr, "NSNull"},
                                                                {Array{1}, "NSArray"},
                                                                {Dictionary(), "NSDictionary"}};
    for (const auto& [phash, name] : phashes) {
        log().clear();
        Vorlane::sharedInstance().setNotificationOpen(false);
        service->didReceiveRemoteNotification(phone().application(), push({{"p", phash}}));
        const auto lines = log().linesContaining("Push notification contained a phash of an incorrect class type: ");
        ASSERT_EQ(lines.size(), 1U) << name;
        EXPECT_EQ(lines[0].message, "Push notification contained a phash of an incorrect class type: " + name +
                                        ".                           This notification will be ignored.");
        EXPECT_EQ(lines[0].level, VLLogLevel::Error);
        EXPECT_EQ(lines[0].payload, Value(push({{"p", phash}})));
        EXPECT_TRUE(isNotificationOpen()) << name;
    }
    EXPECT_EQ(settings->phash(), std::nullopt);
}

// Changes of the tracking id.

TEST_F(VLRemoteNotificationServiceTest, ANewTrackingIdRegistersTheTokenAgain) {
    VLSessionService sessions(settings, service, urlSession, urlBuilder, payloadBuilder, phone().mainBundle());
    settings->setDeviceToken(kToken);
    settings->setNotificationSettings(allowed());
    sessions.setTrackingID("anna");
    ASSERT_EQ(registrations().size(), 1U);
    EXPECT_EQ(registrations()[0].payload()["trackingid"], Value("anna"));
    EXPECT_EQ(registrations()[0].payload()["prev_tracking_id"], Value("T"));
    EXPECT_EQ(registrations()[0].payload()["devicetoken"], Value("00ab10"));
}

TEST_F(VLRemoteNotificationServiceTest, ANewTrackingIdStoresTheTokenAgain) {
    VLSessionService sessions(settings, service, urlSession, urlBuilder, payloadBuilder, phone().mainBundle());
    settings->setDeviceToken(kToken);
    sessions.setTrackingID("anna");
    settings->setDeviceToken(std::nullopt);  // the answer to an earlier unregistration
    EXPECT_EQ(registrations().size(), 1U);
    EXPECT_EQ(settings->deviceToken(), kToken);
}

TEST_F(VLRemoteNotificationServiceTest, OnlyANewTrackingIdWithATokenRegisters) {
    VLSessionService sessions(settings, service, urlSession, urlBuilder, payloadBuilder, phone().mainBundle());
    sessions.setTrackingID("anna");
    settings->setDeviceToken(Data());
    sessions.setTrackingID("otto");
    settings->setDeviceToken(kToken);
    sessions.setTrackingID("otto");  // no change
    EXPECT_TRUE(registrations().empty());
}

TEST_F(VLRemoteNotificationServiceTest, TheSettingsAreReadAfterTheDelay) {
    settings->setDeviceToken(kToken);
    settings->setNotificationSettings(allowed());
    application().willEnterForeground();
    phone().advance(0.5);
    center().setNotificationSettings({1, 1, 1, 1, 1, 1, 1, 0});
    phone().advance(0.5);
    ASSERT_EQ(registrations().size(), 1U);
    EXPECT_EQ(registrations()[0].payload(),
              registration(VLUserNotificationSettings::settingsWithAuthorisation(1, 1, 1, 1, 2, 1, 1, 1, 0)));
}

}  // namespace

}  // namespace vorlane
