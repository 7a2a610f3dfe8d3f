#include <gtest/gtest.h>
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <map>
#include <random>

#include "Platform/Linux/LinuxPlatform.h"
#include "Platform/NSPropertyListSerialization.h"
#include "Platform/UIApplication.h"
#include "Platform/UILocalNotification.h"
#include "Tests/Support/TemporaryFolderTest.h"

namespace vorlane {
namespace {

constexpr int kNotifications = 20;

/// Runs real processes on one folder and kills each of them; they report deliveries through a pipe.
class NotificationKillTest : public TemporaryFolderTest {
protected:
    NotificationKillTest() {
        EXPECT_EQ(pipe(delivered_.data()), 0);
        EXPECT_EQ(pipe(ready_.data()), 0);
    }
    ~NotificationKillTest() override {
        for (const int end : {delivered_[0], delivered_[1], ready_[0], ready_[1]}) ::close(end);
    }

    /// Starts a process that runs `work` on a platform in the folder, and then the main queue.
    template <class Work>
    pid_t start(Work work) {
        const pid_t process = fork();
        if (process == 0) {
            live(work);
            _exit(0);
        }
        return process;
    }

    template <class Work>
    void live(Work work) {
        LinuxPlatform::Options options;
        options.documentsFolder = path("documents");
        options.deliverLocalNotification = [this](const UILocalNotification& notification) {
            const auto number = static_cast<char>(notification.applicationIconBadgeNumber);
            if (::write(delivered_[1], &number, 1) != 1) _exit(1);
        };
        LinuxPlatform platform(options);
        work(platform);
        platform.runFor(3600);
    }

    static UILocalNotification notification(int number, double fireDate) {
        UILocalNotification made;
        made.alertBody = "due";
        made.fireDate = fireDate;
        made.applicationIconBadgeNumber = number;
        return made;
    }

    static void schedule(LinuxPlatform& platform, double seconds) {
        const double now = platform.clock().now();
        for (int i = 0; i < kNotifications; ++i) {
            platform.application()->scheduleLocalNotification(notification(i, now + seconds));
        }
    }

    /// Reports to the test that the process has reached this point.
    void reportReady() const { EXPECT_EQ(::write(ready_[1], "r", 1), 1); }
    void awaitReady() const {
        char byte = 0;
        EXPECT_EQ(::read(ready_[0], &byte, 1), 1);
    }

    /// Kills the process after the given time, or as soon as it has delivered enough.
    void killAfter(pid_t process, int milliseconds, int enough = kNotifications + 1) {
        takeDeliveries(milliseconds, enough);
        ::kill(process, SIGKILL);
        ::waitpid(process, nullptr, 0);
        takeDeliveries(0, enough + kNotifications);
    }

    void takeDeliveries(int milliseconds, int enough) {
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(milliseconds);
        while (total() < enough) {
            const auto left =
                std::chrono::duration_cast<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
            pollfd end{delivered_[0], POLLIN, 0};
            if (::poll(&end, 1, std::max(0, static_cast<int>(left.count()))) <= 0) return;
            char number = 0;
            if (::read(delivered_[0], &number, 1) == 1) ++deliveries_[number];
        }
    }

    int total() const {
        int count = 0;
        for (const auto& [number, times] : deliveries_) count += times;
        return count;
    }
    int mostDeliveriesOfOne() const {
        int most = 0;
        for (const auto& [number, times] : deliveries_) most = std::max(most, times);
        return most;
    }
    std::size_t storedCount() {
        const auto root =
            NSPropertyListSerialization::dictionaryWithContentsOfFile(path("documents/VLScheduledNotifications.plist"));
        return root && root->contains("notifications") ? root->at("notifications").size() : 0;
    }

    static void onlyOpen(LinuxPlatform& platform) { platform.application(); }

    std::mt19937 random_{20261121};

private:
    std::array<int, 2> delivered_{};
    std::array<int, 2> ready_{};
    std::map<char, int> deliveries_;
};

TEST_F(NotificationKillTest, AKilledProcessLeavesNotificationsToTheNext) {
    const pid_t first = start([this](LinuxPlatform& platform) {
        schedule(platform, 3600);
        reportReady();
    });
    awaitReady();
    killAfter(first, 0);
    ASSERT_EQ(storedCount(), static_cast<std::size_t>(kNotifications));

    // Moves the fire dates into the past, as if an hour had passed without a process.
    auto root =
        *NSPropertyListSerialization::dictionaryWithContentsOfFile(path("documents/VLScheduledNotifications.plist"));
    for (auto& entry : root["notifications"]) entry["fireDate"] = 1000.0;
    NSPropertyListSerialization::writeToFile(root, path("documents/VLScheduledNotifications.plist"));

    killAfter(start(onlyOpen), 60'000, kNotifications);
    EXPECT_EQ(total(), kNotifications);
    EXPECT_EQ(mostDeliveriesOfOne(), 1);
    EXPECT_EQ(storedCount(), 0U);
    killAfter(start(onlyOpen), 50);
    EXPECT_EQ(total(), kNotifications) << "again by a later process";
}

TEST_F(NotificationKillTest, AKillDuringSchedulingKeepsScheduledNotifications) {
    for (int round = 0; round < 10; ++round) {
        const auto before = storedCount();
        const pid_t process = start([this](LinuxPlatform& platform) {
            platform.application();
            reportReady();
            schedule(platform, 3600);
        });
        awaitReady();
        killAfter(process, static_cast<int>(random_() % 8));
        EXPECT_GE(storedCount(), before);
        EXPECT_LE(storedCount(), before + kNotifications);
    }
    EXPECT_EQ(total(), 0);
}

TEST_F(NotificationKillTest, RepeatedKillsNeverDeliverTwice) {
    const pid_t first = start([this](LinuxPlatform& platform) {
        schedule(platform, 0.02);
        reportReady();
    });
    awaitReady();
    killAfter(first, static_cast<int>(random_() % 30));
    int rounds = 0;
    while (storedCount() > 0 && ++rounds < 500) killAfter(start(onlyOpen), static_cast<int>(random_() % 10));
    EXPECT_EQ(storedCount(), 0U);
    EXPECT_EQ(mostDeliveriesOfOne(), 1);
    // Each kill loses at most the notification that was being delivered: it had left the file.
    EXPECT_GE(total(), kNotifications - rounds - 1);
    EXPECT_LE(total(), kNotifications);
}

}  // namespace
}  // namespace vorlane
