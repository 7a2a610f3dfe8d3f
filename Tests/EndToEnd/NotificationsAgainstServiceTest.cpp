#include "Tests/EndToEnd/EndToEndTest.h"

namespace vorlane {

namespace {

/// A fixture with a phone whose user allows notifications and whose token is registered.
class NotificationsAgainstServiceTest : public EndToEndTest {
protected:
    NotificationsAgainstServiceTest() {
        startPhone();
        launch();
        allowNotifications();
        phone->perform({{"do", "token"}, {"hex", "00ab10"}});
        state("active");
        phone->settle();
    }

    void allowNotifications() {
        phone->perform(
            {{"do", "notificationSettings"},
             {"set", Dictionary{{"authorizationStatus", 2}, {"alertSetting", 2}, {"lockScreenSetting", 2}}}});
    }

    Value listOf(const std::string& name) const { return service.get(name)[name]; }
    Value scheduled() { return phone->perform({{"do", "query"}, {"what", "scheduledNotifications"}}); }
    double now() { return phone->perform({{"do", "query"}, {"what", "time"}}).get<double>(); }
    void advance(double seconds) {
        phone->perform({{"do", "advance"}, {"seconds", seconds}});
        phone->settle();
    }

    /// Schedules a notification that is due in `seconds`.
    void schedule(const std::string& text, double seconds, const Value& campaign = nullptr) {
        phone->call("scheduleLocalNotification:badge:campaign:date:metadata:action:",
                    {text, 1, campaign, now() + seconds, Dictionary{{"page", "offers"}}, nullptr});
        phone->settle();
    }

    void addFault(const Dictionary& fault) { service.post("faults", fault); }

    void relaunch() {
        EXPECT_EQ(phone->quit(), 0);
        startPhone();
        allowNotifications();
        launch();
        phone->settle();
    }
};

TEST_F(NotificationsAgainstServiceTest, RegistersTokenAndSettings) {
    const auto device = listOf("devices")[0];
    EXPECT_EQ(device["token"], "00ab10");
    EXPECT_EQ(device["registered"], true);
    EXPECT_EQ(device["notificationSettings"]["ios"]["authorisation"], "authorised");
    EXPECT_EQ(device["trackingId"], phone->call("trackingId"));
}

TEST_F(NotificationsAgainstServiceTest, ChangedSettingsAreRegisteredInTheForeground) {
    phone->perform({{"do", "notificationSettings"}, {"set", Dictionary{{"alertSetting", 1}}}});
    state("background");
    state("foreground");
    advance(1);
    EXPECT_EQ(listOf("devices")[0]["notificationSettings"]["ios"]["alert"], "disabled");
}

TEST_F(NotificationsAgainstServiceTest, UnregisteringRemovesTheToken) {
    phone->call("unregisterFromRemoteNotificationsWithCompletionHandler:");
    EXPECT_EQ(lastResult(), Value({true, nullptr}));
    EXPECT_EQ(listOf("devices")[0]["registered"], false);
}

TEST_F(NotificationsAgainstServiceTest, NewUsersKeepTheToken) {
    phone->call("setTrackingId:", {"somebody"});
    phone->settle();
    EXPECT_EQ(listOf("devices")[0]["trackingId"], "somebody");
    EXPECT_EQ(lastPayload("deviceRegistration")["trackingid"], "somebody");
}

TEST_F(NotificationsAgainstServiceTest, OpenedPushesAreReportedWithTheNextSession) {
    state("background");
    const auto push = service.post(
        "pushes", Dictionary{{"appKey", appKey()}, {"deviceId", phone->call("deviceId")}, {"alert", "Come back"}});
    state("foreground");
    phone->perform({{"do", "push"}, {"payload", push["payload"]}});
    state("active");
    EXPECT_EQ(lastPayload("sessionStart")["phash"], push["payload"]["p"]);
}

TEST_F(NotificationsAgainstServiceTest, NotificationsDueSoonShowTheServicesText) {
    service.put("campaigns/c", Value::parse(R"({"campaignId":7,"splits":[{"splitId":"a","messageText":"Hällo!"}]})"));
    schedule("Hello", 60, "c");
    const auto list = scheduled();
    ASSERT_EQ(list.size(), 1U);
    const auto phash = listOf("splits")[0]["phash"];
    EXPECT_EQ(list[0]["alertBody"], "Hällo!");
    EXPECT_EQ(list[0]["userInfo"],
              Value({{"page", "offers"},
                     {"vl_notification", true},
                     {"vl_campaign", "c"},
                     {"p", phash},
                     {"vl_data", {{"campaignid", 7}, {"absplitid", "a"}, {"campaigntoken", "c"}, {"phash", phash}}}}));
    advance(60);
    ASSERT_EQ(phone->events("fired").size(), 1U);
    phone->perform({{"do", "state"}, {"to", "inactive"}});
    phone->perform({{"do", "openNotification"}, {"handle", phone->events("fired")[0].at("notification").at("handle")}});
    EXPECT_EQ(phone->call("phash"), phash);
}

TEST_F(NotificationsAgainstServiceTest, ExcludedUsersSeeNoNotification) {
    service.put("campaigns/c", Dictionary{{"filteredTrackingIds", Value(Array{phone->call("trackingId")})}});
    schedule("Hello", 60, "c");
    EXPECT_TRUE(scheduled().empty());
    EXPECT_EQ(countLog("Local notification: will not be scheduled."), 1);
}

TEST_F(NotificationsAgainstServiceTest, FailedSplitsScheduleTheTextAndAreRetried) {
    addFault({{"endpoint", "MDN"}, {"kind", "status"}, {"status", 500}, {"count", 1}});
    schedule("Hello", 80);
    auto list = scheduled();
    ASSERT_EQ(list.size(), 1U);
    EXPECT_FALSE(list[0]["userInfo"].contains("p"));
    schedule("Another", 200);
    advance(30);
    list = scheduled();
    ASSERT_EQ(list.size(), 2U);
    EXPECT_TRUE(list[0]["userInfo"].contains("p") || list[1]["userInfo"].contains("p"));
}

TEST_F(NotificationsAgainstServiceTest, HostileAnswersKeepTheNotification) {
    for (const auto* kind : {"garbage", "drop", "truncate"}) {
        addFault({{"endpoint", "MDN"}, {"kind", kind}, {"count", 3}});
        schedule(kind, 80);
        const auto list = scheduled();
        ASSERT_EQ(list.size(), 1U) << kind;
        EXPECT_EQ(list[0]["alertBody"], kind);
        phone->call("cancelAllPendingLocalNotifications");
        phone->settle();
        service.remove("faults");
    }
}

TEST_F(NotificationsAgainstServiceTest, LeavingTheForegroundFetchesEveryPhash) {
    schedule("Tomorrow", 86400);
    schedule("Next week", 604800);
    EXPECT_TRUE(listOf("splits").empty());
    state("inactive");
    phone->settle();
    const auto list = scheduled();
    ASSERT_EQ(list.size(), 2U);
    for (const auto& notification : list) EXPECT_TRUE(notification["userInfo"].contains("p"));
}

TEST_F(NotificationsAgainstServiceTest, CancellingReturnsThePhash) {
    schedule("Soon", 60);
    const auto notification = scheduled()[0];
    phone->call("cancelPendingLocalNotification:", {notification["handle"]});
    phone->settle();
    EXPECT_TRUE(scheduled().empty());
    const auto cancellations = listOf("cancellations");
    ASSERT_EQ(cancellations.size(), 1U);
    EXPECT_EQ(cancellations[0]["record"], notification["userInfo"]["vl_data"]);
    EXPECT_TRUE(listOf("splits")[0]["cancelled"].is_number());
}

TEST_F(NotificationsAgainstServiceTest, CancellingAllReturnsEveryPhashInOneRequest) {
    schedule("One", 60);
    schedule("Two", 70);
    phone->call("cancelAllPendingLocalNotifications");
    phone->settle();
    EXPECT_TRUE(scheduled().empty());
    EXPECT_EQ(listOf("cancellations").size(), 2U);
    EXPECT_EQ(service.requests("cancelPhash").size(), 1U);
}

TEST_F(NotificationsAgainstServiceTest, NotificationsSurviveARestartAndShowOnce) {
    schedule("Later", 200);
    relaunch();
    ASSERT_EQ(scheduled().size(), 1U);
    EXPECT_FALSE(scheduled()[0]["userInfo"].contains("p"));
    state("inactive");
    phone->settle();
    ASSERT_EQ(scheduled().size(), 1U);
    EXPECT_TRUE(scheduled()[0]["userInfo"].contains("p"));
    advance(200);
    EXPECT_EQ(phone->events("fired").size(), 1U);
    relaunch();
    advance(300);
    EXPECT_TRUE(phone->events("fired").empty());
    EXPECT_TRUE(scheduled().empty());
}

TEST_F(NotificationsAgainstServiceTest, HostNotificationsFetchesAndLegacySettingsHaveCommands) {
    const auto own = [this](double in) {
        return phone->perform(
            {{"do", "schedulePlatform"}, {"notification", Dictionary{{"alertBody", "own"}, {"fireDate", now() + in}}}});
    };
    const auto first = own(10);
    EXPECT_EQ(scheduled(), Value(Array{first}));
    advance(10);
    EXPECT_EQ(phone->perform({{"do", "query"}, {"what", "deliveredNotifications"}}), Value(Array{first}));
    const auto second = own(10);
    phone->call("cancelAllPendingLocalNotifications");
    ASSERT_EQ(phone->events("cancelled").size(), 1U);
    EXPECT_EQ(phone->events("cancelled")[0].at("notification"), second);
    phone->perform({{"do", "performFetch"}});
    EXPECT_EQ(lastResult(), Value(Array{1}));
    EXPECT_EQ(phone->quit(), 0);
    startPhone({"--os-version", "9.0"});
    launch();
    for (const auto& [types, status] : {std::pair{7, "authorised"}, std::pair{0, "denied"}}) {
        phone->perform({{"do", "legacySettings"}, {"types", types}});
        phone->settle();
        EXPECT_EQ(listOf("devices")[0]["notificationSettings"]["ios"]["authorisation"], status);
    }
}

}  // namespace

}  // namespace vorlane
