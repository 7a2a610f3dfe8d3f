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

class LinuxScheduledNotificationsTest : public TemporaryFolderTest {
protected:
    LinuxScheduledNotificationsTest() { start(); }

    /// A process: what an earlier one had in memory is gone.
    void start() {
        queue = std::make_shared<ClockedQueue>(clock);
        LinuxApplication::Callbacks callbacks;
        callbacks.deliverLocalNotification = [this](const UILocalNotification& notification) {
            delivered.push_back(*notification.alertBody);
            keptAtDelivery.push_back(keptBodies());
            if (whileDelivering) whileDelivering();
        };
        application =
            std::make_shared<LinuxApplication>(std::make_shared<NSNotificationCenter>(), queue, callbacks, clock);
        application->keepScheduledLocalNotifications(file());
    }

    std::string file() { return path("VLScheduledNotifications.plist"); }
    std::vector<std::string> keptBodies() {
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
    std::shared_ptr<ClockedQueue> queue;
    std::shared_ptr<LinuxApplication> application;
    std::vector<std::string> delivered;
    std::vector<std::vector<std::string>> keptAtDelivery;
    std::function<void()> whileDelivering;
};

using testing::ElementsAre;
using testing::IsEmpty;

TEST_F(LinuxScheduledNotificationsTest, ANotificationIsInTheFileAtOnceAndDeliveredAtItsDate) {
    schedule("a", 100);
    EXPECT_THAT(keptBodies(), ElementsAre("a"));
    queue->advance(99);
    EXPECT_THAT(delivered, IsEmpty());
    queue->advance(1);
    EXPECT_THAT(delivered, ElementsAre("a"));
    EXPECT_THAT(keptBodies(), IsEmpty());
    EXPECT_TRUE(application->scheduledLocalNotifications().empty());
}

TEST_F(LinuxScheduledNotificationsTest, OneWithoutADateIsDueAtOnceButNotWithinTheCall) {
    schedule("now", std::nullopt);
    EXPECT_THAT(delivered, IsEmpty());
    queue->advance(0);
    EXPECT_THAT(delivered, ElementsAre("now"));
}

TEST_F(LinuxScheduledNotificationsTest, OneOfAnEarlierProcessIsDeliveredByALaterOneWithAllItsFields) {
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

TEST_F(LinuxScheduledNotificationsTest, OneThatWasMissedIsDeliveredOnceWhenTheNextProcessStarts) {
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

TEST_F(LinuxScheduledNotificationsTest, ANotificationIsOutOfTheFileBeforeItIsDelivered) {
    schedule("b", 200);
    schedule("a", 100);
    queue->advance(200);
    EXPECT_THAT(delivered, ElementsAre("a", "b"));
    EXPECT_THAT(keptAtDelivery, ElementsAre(ElementsAre("b"), IsEmpty()));
}

TEST_F(LinuxScheduledNotificationsTest, AProcessThatIsKilledWhileItDeliversDoesNotHaveItDeliveredAgain) {
    schedule("a", 100);
    whileDelivering = [this] { start(); };
    const auto killed = application;
    const auto killedQueue = queue;
    killedQueue->advance(100);
    queue->advance(1000);
    EXPECT_THAT(delivered, ElementsAre("a"));
}

TEST_F(LinuxScheduledNotificationsTest, SeveralThatAreDueComeInTheOrderOfTheirDates) {
    schedule("c", 30);
    schedule("a", 10);
    schedule("b", 20);
    clock->time += 100;
    queue->advance(0);
    EXPECT_THAT(delivered, ElementsAre("a", "b", "c"));
}

TEST_F(LinuxScheduledNotificationsTest, ACancelledNotificationIsNeitherKeptNorDelivered) {
    const auto first = notification("a", 100);
    application->scheduleLocalNotification(first);
    schedule("b", 100);
    application->cancelLocalNotification(first);
    EXPECT_THAT(keptBodies(), ElementsAre("b"));
    application->cancelAllLocalNotifications();
    EXPECT_THAT(keptBodies(), IsEmpty());
    queue->advance(1000);
    EXPECT_THAT(delivered, IsEmpty());
}

TEST_F(LinuxScheduledNotificationsTest, OneOfAnEarlierProcessIsCancelledByItsFields) {
    const auto made = notification("a", 100);
    application->scheduleLocalNotification(made);
    start();
    application->cancelLocalNotification(made);
    EXPECT_THAT(keptBodies(), IsEmpty());
}

TEST_F(LinuxScheduledNotificationsTest, ADistantDateIsWaitedForAMinuteAtATime) {
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

TEST_F(LinuxScheduledNotificationsTest, AFileThatCannotBeReadIsSetAsideAndTheRestGoesOn) {
    const std::string junk = "no property list";
    NSFileManager::writeToFile({junk.begin(), junk.end()}, file());
    start();
    EXPECT_TRUE(NSFileManager::fileExistsAtPath(file() + ".corrupt"));
    schedule("a", 10);
    queue->advance(10);
    EXPECT_THAT(delivered, ElementsAre("a"));
}

TEST_F(LinuxScheduledNotificationsTest, WhatIsNoNotificationInTheFileIsLeftOut) {
    const Array entries{5, "text", Value(notification("a", 10).toDictionary()), Array{}};
    NSPropertyListSerialization::writeToFile({{"notifications", entries}}, file());
    start();
    queue->advance(10);
    EXPECT_THAT(delivered, ElementsAre("a"));
    NSPropertyListSerialization::writeToFile({{"notifications", "none"}}, file());
    start();
    EXPECT_TRUE(application->scheduledLocalNotifications().empty());
}

TEST_F(LinuxScheduledNotificationsTest, ADateThatIsNoNumberNeverComes) {
    auto never = notification("never", 10);
    never.fireDate = std::numeric_limits<double>::quiet_NaN();
    application->scheduleLocalNotification(never);
    schedule("a", 10);
    queue->advance(100'000);
    EXPECT_THAT(delivered, ElementsAre("a"));
}

TEST_F(LinuxScheduledNotificationsTest, BackgroundRefreshIsAvailableWhenTheHostAnswersForIt) {
    EXPECT_EQ(application->backgroundRefreshStatus(), 0);
    LinuxApplication::Callbacks callbacks;
    callbacks.setMinimumBackgroundFetchInterval = [](TimeInterval) {};
    const LinuxApplication fetching(std::make_shared<NSNotificationCenter>(), queue, callbacks);
    EXPECT_EQ(fetching.backgroundRefreshStatus(), 2);
}

TEST_F(LinuxScheduledNotificationsTest, ThePlatformDeliversWhatAnEarlierOneScheduled) {
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
    // Never run, the first one leaves it in the file; its end runs what is queued.
    run(true);
    run(false);
    run(false);
    EXPECT_THAT(delivered, ElementsAre("past"));
}

TEST_F(LinuxScheduledNotificationsTest, WithoutADesktopNobodyCanBeAsked) {
    QuietUserNotificationCenter center(queue);
    std::optional<NSError> refusal;
    bool isGranted = true;
    center.requestAuthorizationWithOptions(7, [&](bool granted, const auto& error) {
        isGranted = granted;
        refusal = error;
    });
    std::optional<UNNotificationSettings> settings;
    center.getNotificationSettingsWithCompletionHandler([&](const auto& told) { settings = told; });
    center.setNotificationCategories({{"own"}});
    UNUserNotificationCenter::Categories categories;
    center.getNotificationCategoriesWithCompletionHandler([&](const auto& told) { categories = told; });
    EXPECT_TRUE(isGranted);
    queue->advance(0);
    EXPECT_FALSE(isGranted);
    ASSERT_TRUE(refusal);
    EXPECT_EQ(refusal->domain(), UNErrorDomain);
    EXPECT_EQ(settings, UNNotificationSettings());
    EXPECT_THAT(categories, ElementsAre(UNNotificationCategory{"own"}));
}

TEST_F(LinuxScheduledNotificationsTest, ADateThatNeverComesDoesNotComeInALaterProcessEither) {
    for (const double date : {std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::infinity()}) {
        auto never = notification("never", 10);
        never.fireDate = date;
        application->scheduleLocalNotification(never);
        start();
        queue->advance(1000);
        EXPECT_THAT(delivered, IsEmpty());
    }
}

TEST_F(LinuxScheduledNotificationsTest, AWaitWhoseEndTheSetClockHasPassedIsNotReliedOn) {
    schedule("later", 50);
    // The clock is set forward by nearly an hour; the wait itself still takes its time.
    clock->time += 3000;
    schedule("soon", 1);
    EXPECT_LE(queue->delays.back(), 1);
}

TEST_F(LinuxScheduledNotificationsTest, OneThatIsDueAfterTheWaitUnderWayNeedsNoOther) {
    schedule("first", 10);
    const auto waits = queue->delays.size();
    for (int i = 0; i < 100; ++i) schedule("later", 20 + i);
    EXPECT_EQ(queue->delays.size(), waits);
    queue->advance(15);
    EXPECT_THAT(delivered, ElementsAre("first"));
    queue->advance(5);
    EXPECT_THAT(delivered, ElementsAre("first", "later"));
}

}  // namespace
}  // namespace vorlane
