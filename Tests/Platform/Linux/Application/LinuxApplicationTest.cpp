#include "Platform/Linux/Application/LinuxApplication.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "Platform/DispatchQueue.h"
#include "Platform/NSNotificationCenter.h"
#include "Platform/NSURL.h"
#include "Tests/Platform/Linux/Loop/ClockedQueue.h"

namespace vorlane {
namespace {

/// Keeps delayed tasks until the test runs them.
class HeldQueue : public DispatchQueue {
public:
    void post(std::function<void()> task) override { postAfter(0, std::move(task)); }
    void postAfter(TimeInterval delay, std::function<void()> task) override {
        delays.push_back(delay);
        tasks_.push_back(std::move(task));
    }

    void runOldest() {
        const auto task = std::move(tasks_.front());
        tasks_.erase(tasks_.begin());
        task();
    }

    std::vector<TimeInterval> delays;

private:
    std::vector<std::function<void()>> tasks_;
};

class LinuxApplicationTest : public testing::Test {
protected:
    void beginTask() {
        application->beginBackgroundTaskWithName("task", [this] { ++expirations; });
    }

    int expirations = 0;
    int registrations = 0;
    std::vector<TimeInterval> fetchIntervals;
    std::shared_ptr<HeldQueue> queue = std::make_shared<HeldQueue>();
    std::shared_ptr<LinuxApplication> application = std::make_shared<LinuxApplication>(
        std::make_shared<NSNotificationCenter>(), queue,
        LinuxApplication::Callbacks{[this] { ++registrations; },
                                    [this](TimeInterval seconds) { fetchIntervals.push_back(seconds); }});
};

TEST_F(LinuxApplicationTest, PushRegistrationAndBackgroundFetchCallTheHost) {
    application->registerForRemoteNotifications();
    application->setMinimumBackgroundFetchInterval(600);
    EXPECT_EQ(registrations, 1);
    EXPECT_THAT(fetchIntervals, testing::ElementsAre(600));
}

TEST_F(LinuxApplicationTest, URLsAreOpenedByTheHost) {
    std::vector<std::string> opened;
    LinuxApplication opening(std::make_shared<NSNotificationCenter>(), queue,
                             {.registerForRemoteNotifications = nullptr,
                              .setMinimumBackgroundFetchInterval = nullptr,
                              .openURL = [&opened](const NSURL& url) { opened.push_back(url.absoluteString()); }});
    EXPECT_TRUE(opening.openURL(*NSURL::URLWithString(UIApplicationOpenSettingsURLString)));
    EXPECT_THAT(opened, testing::ElementsAre("app-settings:"));
    EXPECT_FALSE(application->openURL(*NSURL::URLWithString("https://vorlane.example/")));
}

TEST_F(LinuxApplicationTest, CallbacksMayBeEmpty) {
    LinuxApplication quiet(std::make_shared<NSNotificationCenter>(), queue, {});
    quiet.registerForRemoteNotifications();
    quiet.setMinimumBackgroundFetchInterval(600);
}

TEST_F(LinuxApplicationTest, TasksExpireAfter3MinutesInTheBackground) {
    application->didBecomeActive();
    beginTask();
    application->didEnterBackground();
    EXPECT_THAT(queue->delays, testing::ElementsAre(180));
    EXPECT_EQ(expirations, 0);
    queue->runOldest();
    EXPECT_EQ(expirations, 1);
    EXPECT_TRUE(application->backgroundTasks().empty());
}

TEST_F(LinuxApplicationTest, OnlyTheBackgroundLimitsTheTime) {
    const auto clock = std::make_shared<SetClock>();
    const auto clocked = std::make_shared<LinuxApplication>(std::make_shared<NSNotificationCenter>(), queue,
                                                            LinuxApplication::Callbacks{}, clock);
    constexpr double kUnlimited = std::numeric_limits<double>::max();
    EXPECT_EQ(clocked->backgroundTimeRemaining(), kUnlimited);
    clocked->didEnterBackground();
    EXPECT_EQ(clocked->backgroundTimeRemaining(), 180);
    clock->time += 100;
    EXPECT_EQ(clocked->backgroundTimeRemaining(), 80);
    clock->time += 100;
    EXPECT_EQ(clocked->backgroundTimeRemaining(), 0);
    clock->time -= 1000;
    EXPECT_EQ(clocked->backgroundTimeRemaining(), 180);
    clocked->willEnterForeground();
    EXPECT_EQ(clocked->backgroundTimeRemaining(), kUnlimited);
}

TEST_F(LinuxApplicationTest, AnEndedTaskDoesNotExpire) {
    const auto task = application->beginBackgroundTaskWithName("task", [this] { ++expirations; });
    application->didEnterBackground();
    application->endBackgroundTask(task);
    queue->runOldest();
    EXPECT_EQ(expirations, 0);
}

TEST_F(LinuxApplicationTest, EnteringTheForegroundKeepsTheTasks) {
    beginTask();
    application->didEnterBackground();
    application->willEnterForeground();
    queue->runOldest();
    EXPECT_EQ(expirations, 0);
    EXPECT_EQ(application->backgroundTasks().size(), 1U);
}

TEST_F(LinuxApplicationTest, BecomingActiveKeepsTheTasks) {
    beginTask();
    application->didEnterBackground();
    application->didBecomeActive();
    queue->runOldest();
    EXPECT_EQ(expirations, 0);
}

TEST_F(LinuxApplicationTest, EachStayHasItsWholeBackgroundTime) {
    application->didEnterBackground();
    application->willEnterForeground();
    beginTask();
    application->didEnterBackground();
    queue->runOldest();  // the end of the first stay
    EXPECT_EQ(expirations, 0);
    queue->runOldest();
    EXPECT_EQ(expirations, 1);
}

TEST_F(LinuxApplicationTest, ADestroyedApplicationExpiresNothing) {
    beginTask();
    application->didEnterBackground();
    application.reset();
    queue->runOldest();
    EXPECT_EQ(expirations, 0);
}

}  // namespace
}  // namespace vorlane
