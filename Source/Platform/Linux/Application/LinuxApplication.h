#pragma once

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

/// The host application, as it reports itself: what it cannot do by itself goes to the host's callbacks.
///
/// What is scheduled stands in a file before anything else happens, so it outlives the process. A notification that is
/// due is taken out of the file first and delivered then: it is never delivered twice, however often the process is
/// killed around its date, and is lost only when the process dies in the instant between the two.
class LinuxApplication : public UIApplication, public std::enable_shared_from_this<LinuxApplication> {
public:
    /// What an application in the background has until its open tasks expire, in seconds.
    static constexpr TimeInterval kBackgroundTime = 180;

    /// What the host does for the application, on the main queue; each may be empty.
    struct Callbacks {
        std::function<void()> registerForRemoteNotifications;
        std::function<void(TimeInterval)> setMinimumBackgroundFetchInterval;
        std::function<void(const UILocalNotification&)> deliverLocalNotification = nullptr;
        std::function<void(const NSURL&)> openURL = nullptr;
    };

    /// The longest wait for a notification, in seconds, before the clock is looked at again: a machine that slept, or
    /// whose clock was set, is late by no more than that.
    static constexpr TimeInterval kLongestWait = 60;

    /// `mainQueue` measures the background time and wakes for notifications.
    LinuxApplication(std::shared_ptr<NSNotificationCenter> notificationCenter, std::weak_ptr<DispatchQueue> mainQueue,
                     Callbacks callbacks, std::shared_ptr<const Clock> clock = std::make_shared<LinuxClock>());

    /// Takes over what an earlier process left in the file, and keeps it up to date from now on. What was missed
    /// meanwhile is delivered on the main queue. A file that cannot be read is kept with the suffix ".corrupt".
    void keepScheduledLocalNotifications(const std::string& path);

    /// Also lets the background time run: unless the application comes back before its end, the tasks that are open
    /// then expire.
    void didEnterBackground() override;
    void willEnterForeground() override;
    /// What is left of the background time; the largest number there is while the application is not in the background.
    TimeInterval backgroundTimeRemaining() const override;

    /// True when the host opens URLs.
    bool openURL(const NSURL& url) override;
    void registerForRemoteNotifications() override;
    void setMinimumBackgroundFetchInterval(TimeInterval seconds) override;
    /// Available when the host answers for the background fetch.
    std::int64_t backgroundRefreshStatus() const override;

protected:
    void didScheduleLocalNotification(const ScheduledLocalNotification& entry) override;
    void didCancelLocalNotifications(const std::vector<ScheduledLocalNotification>& entries) override;

private:
    void backgroundTimeEnded(std::uint64_t stay);
    void writeScheduled() const;
    void waitForNext();
    void deliverDue();

    // Fixed at construction.
    const std::weak_ptr<DispatchQueue> mainQueue_;
    const Callbacks callbacks_;
    const std::shared_ptr<const Clock> clock_;
    // Main queue only. Counts the stays in the background, so that a time that ran out concerns its own stay alone.
    std::uint64_t stay_ = 0;
    // When the newest one began.
    double stayBegan_ = 0;
    // Counts the waits for notifications: only the newest one counts. When it ends by the clock; nothing: none is under
    // way.
    std::uint64_t wait_ = 0;
    std::optional<double> waitEnd_;
    // Empty: nothing is kept.
    std::string path_;
};

}  // namespace vorlane
