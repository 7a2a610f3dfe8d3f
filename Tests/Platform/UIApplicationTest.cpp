#include "Platform/UIApplication.h"

#include <gtest/gtest.h>

#include <limits>
#include <thread>

#include "Platform/NSNotificationCenter.h"
#include "Platform/NSURL.h"
#include "Platform/UIWindow.h"
#include "Public/VLValue.h"

namespace vorlane {

namespace {

class PlainApplication : public UIApplication {
public:
    using UIApplication::UIApplication;
    void registerForRemoteNotifications() override {}
    void setMinimumBackgroundFetchInterval(TimeInterval /*seconds*/) override {}
    using UIApplication::nextFireDate;
    using UIApplication::takeDue;

    std::vector<std::string> events;

protected:
    void backgroundTaskDidBegin(UIBackgroundTaskIdentifier, const std::string& name) override {
        events.push_back("begin " + name);
    }
    void backgroundTaskDidEnd(UIBackgroundTaskIdentifier, const std::string& name) override {
        events.push_back("end " + name);
    }
    void backgroundTaskDidExpire(UIBackgroundTaskIdentifier, const std::string& name) override {
        events.push_back("expired " + name);
    }
};

class UIApplicationTest : public ::testing::Test {
protected:
    std::shared_ptr<NSNotificationCenter> center = std::make_shared<NSNotificationCenter>();
    PlainApplication application{center};

    UILocalNotification schedule(const std::string& body, std::optional<double> date) {
        UILocalNotification notification;
        notification.alertBody = body;
        notification.fireDate = date;
        application.scheduleLocalNotification(notification);
        return notification;
    }
    std::string scheduledBodies() const {
        std::string bodies;
        for (const auto& notification : application.scheduledLocalNotifications()) bodies += *notification.alertBody;
        return bodies;
    }
    std::string nextBody(double time) {
        const auto due = application.takeDue(time);
        return due ? *due->notification.alertBody : "none";
    }
};

TEST_F(UIApplicationTest, TheKeyWindowIsNullAtFirst) {
    EXPECT_EQ(application.keyWindow(), nullptr);
    const auto window = std::make_shared<UIWindow>(nullptr);
    application.setKeyWindow(window);
    EXPECT_EQ(application.keyWindow(), window);
    application.setKeyWindow(nullptr);
    EXPECT_EQ(application.keyWindow(), nullptr);
}

TEST_F(UIApplicationTest, ADestroyedWindowIsNoLongerKey) {
    class Farewell : public UIViewController {
    public:
        explicit Farewell(UIApplication& application) : application_(application) {}
        ~Farewell() override { EXPECT_EQ(application_.keyWindow(), nullptr); }

    private:
        UIApplication& application_;
    };
    application.setKeyWindow(std::make_shared<UIWindow>(std::make_shared<Farewell>(application)));
    application.setKeyWindow(nullptr);
}

TEST_F(UIApplicationTest, ByDefaultNoURLIsOpened) {
    EXPECT_FALSE(application.openURL(*NSURL::URLWithString(UIApplicationOpenSettingsURLString)));
}

TEST_F(UIApplicationTest, AnApplicationIsInactiveAtFirst) {
    EXPECT_EQ(application.applicationState(), UIApplicationState::Inactive);
    EXPECT_EQ(static_cast<int>(UIApplicationState::Active), 0);
    EXPECT_EQ(static_cast<int>(UIApplicationState::Inactive), 1);
    EXPECT_EQ(static_cast<int>(UIApplicationState::Background), 2);
}

TEST_F(UIApplicationTest, EachReportSetsTheStateAndThenPosts) {
    std::vector<std::pair<std::string, UIApplicationState>> posted;
    for (const auto* name : {UIApplicationDidBecomeActiveNotification, UIApplicationWillResignActiveNotification,
                             UIApplicationDidEnterBackgroundNotification, UIApplicationWillEnterForegroundNotification,
                             UIApplicationWillTerminateNotification}) {
        center->addObserver(name, [&](const NSNotification& notification) {
            posted.emplace_back(notification.name, application.applicationState());
        });
    }
    application.didBecomeActive();
    application.willResignActive();
    application.didEnterBackground();
    application.willEnterForeground();
    application.willTerminate();
    application.setApplicationState(UIApplicationState::Background);
    application.willTerminate();
    const std::vector<std::pair<std::string, UIApplicationState>> expected = {
        {"UIApplicationDidBecomeActiveNotification", UIApplicationState::Active},
        {"UIApplicationWillResignActiveNotification", UIApplicationState::Inactive},
        {"UIApplicationDidEnterBackgroundNotification", UIApplicationState::Background},
        {"UIApplicationWillEnterForegroundNotification", UIApplicationState::Inactive},
        {"UIApplicationWillTerminateNotification", UIApplicationState::Inactive},
        {"UIApplicationWillTerminateNotification", UIApplicationState::Background}};
    EXPECT_EQ(posted, expected);
}

TEST_F(UIApplicationTest, BackgroundTasksAreListedUntilTheyEnd) {
    const auto first = application.beginBackgroundTaskWithName("first", nullptr);
    const auto second = application.beginBackgroundTaskWithExpirationHandler(nullptr);
    EXPECT_NE(first, UIBackgroundTaskInvalid);
    EXPECT_NE(first, second);
    EXPECT_EQ(application.backgroundTasks(),
              (std::map<UIBackgroundTaskIdentifier, std::string>{{first, "first"}, {second, ""}}));
    application.endBackgroundTask(first);
    application.endBackgroundTask(first);
    application.endBackgroundTask(UIBackgroundTaskInvalid);
    EXPECT_EQ(application.backgroundTasks().size(), 1U);
    EXPECT_EQ(application.events, (std::vector<std::string>{"begin first", "begin ", "end first"}));
}

TEST_F(UIApplicationTest, ExpiryRunsHandlersOnceAndEndsTasks) {
    int expired = 0;
    UIBackgroundTaskIdentifier own = 0;
    own = application.beginBackgroundTaskWithName("own", [&] {
        ++expired;
        application.endBackgroundTask(own);
    });
    application.beginBackgroundTaskWithName("lazy", [&] { ++expired; });
    application.beginBackgroundTaskWithName("bare", nullptr);
    application.expireBackgroundTasks();
    application.expireBackgroundTasks();
    EXPECT_EQ(expired, 2);
    EXPECT_TRUE(application.backgroundTasks().empty());
    EXPECT_EQ(application.events,
              (std::vector<std::string>{"begin own", "begin lazy", "begin bare", "expired own", "end own",
                                        "expired lazy", "end lazy", "expired bare", "end bare"}));
}

TEST_F(UIApplicationTest, ATaskBegunByAHandlerDoesNotExpire) {
    UIBackgroundTaskIdentifier begun = 0;
    application.beginBackgroundTaskWithName("first", [&] {
        begun = application.beginBackgroundTaskWithName("second", [] { ADD_FAILURE() << "expired"; });
    });
    application.expireBackgroundTasks();
    EXPECT_EQ(application.backgroundTasks(), (std::map<UIBackgroundTaskIdentifier, std::string>{{begun, "second"}}));
}

TEST_F(UIApplicationTest, TheHooksMayListTheTasks) {
    class AskingApplication : public PlainApplication {
    public:
        using PlainApplication::PlainApplication;
        std::vector<std::size_t> counts;

    protected:
        void backgroundTaskDidBegin(UIBackgroundTaskIdentifier, const std::string&) override { note(); }
        void backgroundTaskDidEnd(UIBackgroundTaskIdentifier, const std::string&) override { note(); }
        void backgroundTaskDidExpire(UIBackgroundTaskIdentifier, const std::string&) override { note(); }

    private:
        void note() { counts.push_back(backgroundTasks().size()); }
    };
    AskingApplication asking(center);
    asking.beginBackgroundTaskWithName("task", nullptr);
    asking.expireBackgroundTasks();
    EXPECT_EQ(asking.counts, (std::vector<std::size_t>{1, 1, 0}));
}

TEST_F(UIApplicationTest, ThreadsMayBeginAndEndTasksConcurrently) {
    class QuietApplication : public UIApplication {
    public:
        using UIApplication::UIApplication;
        void registerForRemoteNotifications() override {}
        void setMinimumBackgroundFetchInterval(TimeInterval /*seconds*/) override {}
    };
    QuietApplication quiet(center);
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&quiet] {
            for (int round = 0; round < 200; ++round) {
                quiet.endBackgroundTask(quiet.beginBackgroundTaskWithName("task", [] {}));
            }
        });
    }
    for (int round = 0; round < 50; ++round) quiet.expireBackgroundTasks();
    for (auto& thread : threads) thread.join();
    EXPECT_TRUE(quiet.backgroundTasks().empty());
}

TEST_F(UIApplicationTest, ATaskEndedByAHandlerDoesNotExpire) {
    UIBackgroundTaskIdentifier second = 0;
    bool secondExpired = false;
    application.beginBackgroundTaskWithName("first", [&] { application.endBackgroundTask(second); });
    second = application.beginBackgroundTaskWithName("second", [&] { secondExpired = true; });
    application.expireBackgroundTasks();
    EXPECT_FALSE(secondExpired);
}

TEST_F(UIApplicationTest, NotificationsAreListedInTheOrderOfScheduling) {
    schedule("c", 30);
    const auto a = schedule("a", 10);
    schedule("b", std::nullopt);
    EXPECT_EQ(scheduledBodies(), "cab");
    application.scheduleLocalNotification(a);
    EXPECT_EQ(scheduledBodies(), "caba");
}

TEST_F(UIApplicationTest, CancellingRemovesEveryCopy) {
    auto a = schedule("a", 10);
    schedule("b", 10);
    a.alertBody = "A";
    a.fireDate = 20;
    application.scheduleLocalNotification(a);
    application.cancelLocalNotification(a);
    EXPECT_EQ(scheduledBodies(), "b");
    EXPECT_EQ(application.nextFireDate(), 10);
}

TEST_F(UIApplicationTest, EqualFieldsAloneDoNotCancel) {
    UILocalNotification twin;
    twin.alertBody = "a";
    twin.fireDate = 10;
    schedule("a", 10);
    application.cancelLocalNotification(twin);
    EXPECT_EQ(scheduledBodies(), "a");
}

TEST_F(UIApplicationTest, AReadBackNotificationCancelsTheFirstEqual) {
    schedule("a", 10);
    const auto other = UILocalNotification::fromDictionary(schedule("b", 10).toDictionary());
    schedule("b", 10);
    application.cancelLocalNotification(other);
    EXPECT_EQ(scheduledBodies(), "ab");
    auto changed = other;
    changed.fireDate = 11;
    application.cancelLocalNotification(changed);
    changed.fireDate = 10;
    changed.alertAction = "x";
    application.cancelLocalNotification(changed);
    EXPECT_EQ(scheduledBodies(), "ab");
    application.cancelLocalNotification(other);
    EXPECT_EQ(scheduledBodies(), "a");
    application.cancelAllLocalNotifications();
    EXPECT_EQ(scheduledBodies(), "");
    EXPECT_EQ(application.nextFireDate(), std::nullopt);
}

TEST_F(UIApplicationTest, DueNotificationsAreOrderedByDate) {
    schedule("late", 30);
    schedule("first", 10);
    schedule("second", 10);
    schedule("always", std::nullopt);
    schedule("never", std::numeric_limits<double>::quiet_NaN());
    EXPECT_EQ(nextBody(10), "always");
    EXPECT_EQ(application.nextFireDate(), 10);
    EXPECT_EQ(nextBody(10), "first");
    EXPECT_EQ(nextBody(10), "second");
    EXPECT_EQ(nextBody(29.9), "none");
    EXPECT_EQ(nextBody(1e300), "late");
    EXPECT_EQ(nextBody(1e300), "none");
    EXPECT_EQ(scheduledBodies(), "never");
}

}  // namespace

}  // namespace vorlane
