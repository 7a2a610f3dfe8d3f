#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <vector>

#include "Platform/Linux/Application/LinuxApplication.h"
#include "Platform/Linux/Application/QuietUserNotificationCenter.h"
#include "Platform/Linux/LinuxPlatform.h"
#include "Platform/NSFileManager.h"
#include "Platform/NSNotificationCenter.h"
#include "Platform/NSPropertyListSerialization.h"
#include "Tests/Platform/Linux/Loop/ClockedQueue.h"
#include "Tests/Support/TemporaryFolderTest.h"

namespace vorlane {
namespace {

/// Drops delayed tasks while it is exhausted, like a process without a free descriptor for a timer.
class ExhaustibleQueue : public ClockedQueue {
public:
    using ClockedQueue::ClockedQueue;
    void postAfter(TimeInterval delay, std::function<void()> task) override {
        if (!isExhausted) ClockedQueue::postAfter(delay, std::move(task));
    }

    bool isExhausted = false;
};

class LinuxScheduledNotificationsTest : public TemporaryFolderTest {
protected:
    LinuxScheduledNotificationsTest() { start(); }

    /// Starts a new process, which shares only the file with the earlier one.
    void start() {
        queue = std::make_shared<ExhaustibleQueue>(clock);
        LinuxApplication::Callbacks callbacks;
        callbacks.deliverLocalNotification = [this](const UILocalNotification& notification) {
            delivered.push_back(*notification.alertBody);
            storedAtDelivery.push_back(storedBodies());
            if (whileDelivering) whileDelivering();
        };
        application =
            std::make_shared<LinuxApplication>(std::make_shared<NSNotificationCenter>(), queue, callbacks, clock);
        application->keepScheduledLocalNotifications(file());
    }

    std::string file() { return path("VLScheduledNotifications.plist"); }
    std::vector<std::string> storedBodies() {
        std::vector<std::string> bodies;
        const auto root = NSPropertyListSerialization::dictionaryWithContentsOfFile(file());
        if (!root) return bodies;
        for (const auto& entry : root->at("notifications")) bodies.push_back(entry.at("alertBody").get<std::string>());
        return bodies;
    }

    UILocalNotification notification(const std::string& body, std::optional<double> in) {
        UILocalNotification made;
        made.alertBody = body;
        if (in) made.fireDate = clock->time + *in;
        return made;
    }
    void schedule(const std::string& body, std::optional<double> in) {
        application->scheduleLocalNotification(notification(body, in));
    }

    std::shared_ptr<SetClock> clock = std::make_shared<SetClock>();
    std::shared_ptr<ExhaustibleQueue> queue;
    std::shared_ptr<LinuxApplication> application;
    std::vector<std::string> delivered;
    std::vector<std::vector<std::string>> storedAtDelivery;
    std::function<void()> whileDelivering;
};

using testing::ElementsAre;
using testing::IsEmpty;

TEST_F(LinuxScheduledNotificationsTest, ANotificationIsStoredAtOnceAndDeliveredLater) {
    schedule("a", 100);
    EXPECT_THAT(storedBodies(), ElementsAre("a"));
    queue->advance(99);
    EXPECT_THAT(delivered, IsEmpty());
    queue->advance(1);
    EXPECT_THAT(delivered, ElementsAre("a"));
    EXPECT_THAT(storedBodies(), IsEmpty());
    EXPECT_TRUE(application->scheduledLocalNotifications().empty());
}

TEST_F(LinuxScheduledNotificationsTest, WithoutADateDeliveryFollowsTheCall) {
    schedule("now", std::nullopt);
    EXPECT_THAT(delivered, IsEmpty());
    queue->advance(0);
    EXPECT_THAT(delivered, ElementsAre("now"));
}

TEST_F(LinuxScheduledNotificationsTest, ALaterProcessDeliversWithAllFields) {
    auto made = notification("a", 100);
    made.timeZone = "Europe/Oslo";
    made.alertAction = "View";
    made.soundName = "bell.wav";
    made.applicationIconBadgeNumber = -2;
    made.userInfo = Dictionary{{"p", "h"}, {"vl_data", Dictionary{{"campaignid", 7}}}};
    application->scheduleLocalNotification(made);
    start();
    EXPECT_THAT(application->scheduledLocalNotifications(), ElementsAre(made));
    queue->advance(100);
    EXPECT_THAT(delivered, ElementsAre("a"));
}

TEST_F(LinuxScheduledNotificationsTest, AMissedNotificationIsDeliveredOnceAtStart) {
    schedule("later", 500);
    schedule("missed", 100);
    clock->time += 300;
    start();
    EXPECT_THAT(delivered, IsEmpty());
    queue->advance(0);
    EXPECT_THAT(delivered, ElementsAre("missed"));
    start();
    queue->advance(0);
    EXPECT_THAT(delivered, ElementsAre("missed"));
    queue->advance(200);
    EXPECT_THAT(delivered, ElementsAre("missed", "later"));
}

TEST_F(LinuxScheduledNotificationsTest, ANotificationLeavesTheFileBeforeDelivery) {
    schedule("b", 200);
    schedule("a", 100);
    queue->advance(200);
    EXPECT_THAT(delivered, ElementsAre("a", "b"));
    EXPECT_THAT(storedAtDelivery, ElementsAre(ElementsAre("b"), IsEmpty()));
}

TEST_F(LinuxScheduledNotificationsTest, AKillDuringDeliveryDoesNotRepeatIt) {
    schedule("a", 100);
    whileDelivering = [this] { start(); };
    const auto killed = application;
    const auto killedQueue = queue;
    killedQueue->advance(100);
    queue->advance(1000);
    EXPECT_THAT(delivered, ElementsAre("a"));
}

TEST_F(LinuxScheduledNotificationsTest, DueNotificationsAreDeliveredInOrder) {
    schedule("c", 30);
    schedule("a", 10);
    schedule("b", 20);
    clock->time += 100;
    queue->advance(0);
    EXPECT_THAT(delivered, ElementsAre("a", "b", "c"));
}

TEST_F(LinuxScheduledNotificationsTest, ACancelledNotificationIsNeitherStoredNorDelivered) {
    const auto first = notification("a", 100);
    application->scheduleLocalNotification(first);
    schedule("b", 100);
    application->cancelLocalNotification(first);
    EXPECT_THAT(storedBodies(), ElementsAre("b"));
    application->cancelAllLocalNotifications();
    EXPECT_THAT(storedBodies(), IsEmpty());
    queue->advance(1000);
    EXPECT_THAT(delivered, IsEmpty());
}

TEST_F(LinuxScheduledNotificationsTest, ARestoredNotificationIsCancelledByItsFields) {
    const auto made = notification("a", 100);
    application->scheduleLocalNotification(made);
    start();
    application->cancelLocalNotification(made);
    EXPECT_THAT(storedBodies(), IsEmpty());
}

TEST_F(LinuxScheduledNotificationsTest, AWaitLastsAtMostOneMinute) {
    schedule("a", 86'400);
    EXPECT_EQ(queue->delays.back(), 60);
    clock->time += 90'000;  // the machine slept
    queue->advance(0);
    EXPECT_THAT(delivered, ElementsAre("a"));
}

TEST_F(LinuxScheduledNotificationsTest, ADeliveryMayScheduleAnother) {
    schedule("a", 10);
    whileDelivering = [this] {
        if (delivered.size() == 1) schedule("b", 10);
    };
    queue->advance(30);
    EXPECT_THAT(delivered, ElementsAre("a", "b"));
}

TEST_F(LinuxScheduledNotificationsTest, AMalformedFileIsMovedAside) {
    const std::string junk = "no property list";
    NSFileManager::writeToFile({junk.begin(), junk.end()}, file());
    start();
    EXPECT_TRUE(NSFileManager::fileExistsAtPath(file() + ".corrupt"));
    schedule("a", 10);
    queue->advance(10);
    EXPECT_THAT(delivered, ElementsAre("a"));
}

TEST_F(LinuxScheduledNotificationsTest, InvalidElementsInTheFileAreSkipped) {
    const Array entries{5, "text", Value(notification("a", 10).toDictionary()), Array{}};
    NSPropertyListSerialization::writeToFile({{"notifications", entries}}, file());
    start();
    queue->advance(10);
    EXPECT_THAT(delivered, ElementsAre("a"));
    NSPropertyListSerialization::writeToFile({{"notifications", "none"}}, file());
    start();
    EXPECT_TRUE(application->scheduledLocalNotifications().empty());
}

TEST_F(LinuxScheduledNotificationsTest, AnInvalidDateNeverComes) {
    auto never = notification("never", 10);
    never.fireDate = std::numeric_limits<double>::quiet_NaN();
    application->scheduleLocalNotification(never);
    schedule("a", 10);
    queue->advance(100'000);
    EXPECT_THAT(delivered, ElementsAre("a"));
}

TEST_F(LinuxScheduledNotificationsTest, BackgroundRefreshIsAvailableWithACallback) {
    EXPECT_EQ(application->backgroundRefreshStatus(), UIBackgroundRefreshStatus::Restricted);
    LinuxApplication::Callbacks callbacks;
    callbacks.setMinimumBackgroundFetchInterval = [](TimeInterval) {};
    const LinuxApplication fetching(std::make_shared<NSNotificationCenter>(), queue, callbacks);
    EXPECT_EQ(fetching.backgroundRefreshStatus(), UIBackgroundRefreshStatus::Available);
}

TEST_F(LinuxScheduledNotificationsTest, ALaterPlatformDeliversStoredNotifications) {
    const auto run = [this](bool schedules) {
        LinuxPlatform::Options options;
        options.documentsFolder = path("documents");
        options.deliverLocalNotification = [this](const auto& notification) {
            delivered.push_back(*notification.alertBody);
        };
        LinuxPlatform platform(options);
        const auto app = platform.application();
        if (schedules) {
            app->scheduleLocalNotification(notification("past", 0));
        } else {
            platform.poll();
        }
    };
    // The first platform never runs its main queue, so the notification stays in the file.
    run(true);
    run(false);
    run(false);
    EXPECT_THAT(delivered, ElementsAre("past"));
}

TEST_F(LinuxScheduledNotificationsTest, WithoutADesktopPermissionIsRefused) {
    QuietUserNotificationCenter center(queue);
    std::optional<NSError> refusal;
    bool isGranted = true;
    center.requestAuthorizationWithOptions(7, [&](bool granted, const auto& error) {
        isGranted = granted;
        refusal = error;
    });
    std::optional<UNNotificationSettings> settings;
    center.getNotificationSettingsWithCompletionHandler([&](const auto& reported) { settings = reported; });
    center.setNotificationCategories({{"own"}});
    UNUserNotificationCenter::Categories categories;
    center.getNotificationCategoriesWithCompletionHandler([&](const auto& reported) { categories = reported; });
    EXPECT_TRUE(isGranted);
    queue->advance(0);
    EXPECT_FALSE(isGranted);
    ASSERT_TRUE(refusal);
    EXPECT_EQ(refusal->domain(), UNErrorDomain);
    EXPECT_EQ(settings, UNNotificationSettings());
    EXPECT_THAT(categories, ElementsAre(UNNotificationCategory{"own"}));
}

TEST_F(LinuxScheduledNotificationsTest, AnInvalidDateNeverComesInALaterProcess) {
    for (const double date : {std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity()}) {
        auto never = notification("never", 10);
        never.fireDate = date;
        application->scheduleLocalNotification(never);
        start();
        queue->advance(1000);
        EXPECT_THAT(delivered, IsEmpty());
    }
}

TEST_F(LinuxScheduledNotificationsTest, AWaitIsReplacedAfterTheClockWasSet) {
    schedule("later", 50);
    // The clock is set forward by nearly an hour, which does not shorten the wait.
    clock->time += 3000;
    schedule("soon", 1);
    EXPECT_LE(queue->delays.back(), 1);
}

TEST_F(LinuxScheduledNotificationsTest, ALaterNotificationNeedsNoNewWait) {
    schedule("first", 10);
    const auto waits = queue->delays.size();
    for (int i = 0; i < 100; ++i) schedule("later", 20 + i);
    EXPECT_EQ(queue->delays.size(), waits);
    queue->advance(15);
    EXPECT_THAT(delivered, ElementsAre("first"));
    queue->advance(5);
    EXPECT_THAT(delivered, ElementsAre("first", "later"));
}

TEST_F(LinuxScheduledNotificationsTest, ADroppedWaitIsReplacedByTheNextNotifications) {
    queue->isExhausted = true;
    schedule("a", 100);
    queue->isExhausted = false;
    schedule("b", 200);
    queue->advance(200);
    EXPECT_THAT(delivered, ElementsAre("a", "b"));
}

TEST_F(LinuxScheduledNotificationsTest, ADroppedWaitIsReplacedWhenTheForegroundChanges) {
    queue->isExhausted = true;
    schedule("a", 10);
    queue->isExhausted = false;
    application->didEnterBackground();
    queue->advance(10);
    EXPECT_THAT(delivered, ElementsAre("a"));
    queue->isExhausted = true;
    schedule("b", 10);
    queue->isExhausted = false;
    application->willEnterForeground();
    queue->advance(10);
    EXPECT_THAT(delivered, ElementsAre("a", "b"));
}

}  // namespace
}  // namespace vorlane
