#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Platform/Linux/Loop/LinuxClock.h"
#include "Platform/UIApplication.h"

namespace vorlane {

class DispatchQueue;

/// The host application as the host reports it. What it cannot do itself it passes to the host's callbacks.
///
/// Scheduled notifications are stored in a file before anything else happens, so they outlive the process. A
/// notification that is due is first removed from the file and then delivered: it is never delivered twice, and is lost
/// only if the process dies between the two.
class LinuxApplication : public UIApplication, public std::enable_shared_from_this<LinuxApplication> {
public:
    /// The number of seconds after which an application in the background has its open tasks expired.
    static constexpr TimeInterval kBackgroundTime = 180;

    /// What the host does for the application, on the main queue. Each may be empty.
    struct Callbacks {
        std::function<void()> registerForRemoteNotifications;
        std::function<void(TimeInterval)> setMinimumBackgroundFetchInterval;
        std::function<void(const UILocalNotification&)> deliverLocalNotification = nullptr;
        std::function<void(const NSURL&)> openURL = nullptr;
    };

    /// The longest time, in seconds, between two looks at the clock while notifications are scheduled. If the machine
    /// slept or its clock was set, a notification is late by no more than that.
    static constexpr TimeInterval kLongestWait = 60;

    /// While one exists, the main queue wakes at the end of each background task.
    class EndOfTasksWatch {
    public:
        explicit EndOfTasksWatch(LinuxApplication& application) : watches_(application.endOfTasksWatches_) {
            ++watches_;
        }
        ~EndOfTasksWatch() { --watches_; }
        EndOfTasksWatch(const EndOfTasksWatch&) = delete;
        EndOfTasksWatch& operator=(const EndOfTasksWatch&) = delete;

    private:
        std::atomic<int>& watches_;
    };

    /// `mainQueue` measures the background time and the time to the next notification.
    LinuxApplication(std::shared_ptr<NSNotificationCenter> notificationCenter, std::weak_ptr<DispatchQueue> mainQueue,
                     Callbacks callbacks, std::shared_ptr<const Clock> clock = std::make_shared<LinuxClock>());

    /// Takes over the scheduled notifications that an earlier process stored in the file, and keeps the file up to date
    /// from now on. Notifications that were missed in the meantime are delivered on the main queue. A file that cannot
    /// be read is kept with the suffix ".corrupt".
    void keepScheduledLocalNotifications(const std::string& path);

    /// Also starts the background time. When it has passed, the open tasks expire, unless the application has returned
    /// to the foreground.
    void didEnterBackground() override;
    void willEnterForeground() override;
    /// The rest of the background time; the largest `TimeInterval` while the application is not in the background.
    TimeInterval backgroundTimeRemaining() const override;

    /// Returns whether the host opens URLs.
    bool openURL(const NSURL& url) override;
    void registerForRemoteNotifications() override;
    void setMinimumBackgroundFetchInterval(TimeInterval seconds) override;
    /// Available if the host has a callback for background fetches, otherwise restricted.
    UIBackgroundRefreshStatus backgroundRefreshStatus() const override;

protected:
    void backgroundTaskDidEnd(UIBackgroundTaskIdentifier identifier, const std::string& name) override;
    void didScheduleLocalNotification(const ScheduledLocalNotification& entry) override;
    void didCancelLocalNotifications(const std::vector<ScheduledLocalNotification>& entries) override;

private:
    struct Wait {
        double end;
    };

    void keepRunningUntilStored();
    void backgroundTimeEnded(std::uint64_t stay);
    void waitForNext();
    void waitEnded(const std::shared_ptr<const Wait>& wait);
    void deliverDue();

    // Fixed at construction.
    const std::weak_ptr<DispatchQueue> mainQueue_;
    const Callbacks callbacks_;
    const std::shared_ptr<const Clock> clock_;
    std::atomic<int> endOfTasksWatches_ = 0;
    // Main queue only. Counts the stays in the background: the end of the background time concerns its own stay only.
    std::uint64_t stay_ = 0;
    // When the newest stay began.
    double stayBegan_ = 0;
    // The newest wait for a notification; others are ignored when they end. The queued task owns it: if the queue drops
    // the task, no wait is under way.
    std::weak_ptr<const Wait> wait_;
};

}  // namespace vorlane
