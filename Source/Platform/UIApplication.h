#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "Platform/UILocalNotification.h"
#include "Platform/UIUserNotificationSettings.h"
#include "Public/VLExport.h"
#include "Public/VLValue.h"

namespace vorlane {

class NSNotificationCenter;
class NSURL;
class UIWindow;

enum class UIApplicationState : std::int64_t { active = 0, inactive = 1, background = 2 };

inline constexpr const char* UIApplicationDidBecomeActiveNotification = "UIApplicationDidBecomeActiveNotification";
inline constexpr const char* UIApplicationWillResignActiveNotification = "UIApplicationWillResignActiveNotification";
inline constexpr const char* UIApplicationDidEnterBackgroundNotification =
    "UIApplicationDidEnterBackgroundNotification";
inline constexpr const char* UIApplicationWillEnterForegroundNotification =
    "UIApplicationWillEnterForegroundNotification";
inline constexpr const char* UIApplicationWillTerminateNotification = "UIApplicationWillTerminateNotification";

/// Launch options: the payload (a dictionary) of the remote notification that opened the application.
inline constexpr const char* UIApplicationLaunchOptionsRemoteNotificationKey =
    "UIApplicationLaunchOptionsRemoteNotificationKey";
/// Launch options: the local notification that opened the application, as `UILocalNotification::toDictionary()` gives
/// it.
inline constexpr const char* UIApplicationLaunchOptionsLocalNotificationKey =
    "UIApplicationLaunchOptionsLocalNotificationKey";

/// The URL of the application's page in the system settings.
inline constexpr const char* UIApplicationOpenSettingsURLString = "app-settings:";

/// What a background fetch brought.
enum class UIBackgroundFetchResult : std::uint64_t { newData = 0, noData = 1, failed = 2 };

/// Whether the application may be woken in the background: what `backgroundRefreshStatus()` gives.
inline constexpr std::int64_t UIBackgroundRefreshStatusRestricted = 0;
inline constexpr std::int64_t UIBackgroundRefreshStatusDenied = 1;
inline constexpr std::int64_t UIBackgroundRefreshStatusAvailable = 2;

using UIBackgroundTaskIdentifier = std::uint64_t;
inline constexpr UIBackgroundTaskIdentifier UIBackgroundTaskInvalid = 0;

/// The host application as the platform sees it. The host reports its state here; the library observes it.
class VORLANE_EXPORT UIApplication {
public:
    explicit UIApplication(std::shared_ptr<NSNotificationCenter> notificationCenter);
    virtual ~UIApplication();

    /// Inactive until the host reports otherwise. Any thread.
    UIApplicationState applicationState() const { return applicationState_; }

    /// Sets the state without telling anyone, for the state that an application is launched in. Main queue.
    void setApplicationState(UIApplicationState state) { applicationState_ = state; }

    /// The host reports a change of state: each sets the state, then posts the notification of its name. Main queue.
    void didBecomeActive();
    void willResignActive();
    virtual void didEnterBackground();
    virtual void willEnterForeground();
    /// Leaves the state as it is.
    void willTerminate();

    /// `beginBackgroundTaskWithName:expirationHandler:` asks for time to finish a piece of work after the application
    /// has left the foreground. Each task is ended once with `endBackgroundTask()`. The handler may be empty; it runs
    /// on the main queue if the time (180 seconds on Linux) runs out first, and ends the task. Any thread.
    UIBackgroundTaskIdentifier beginBackgroundTaskWithName(const std::string& name,
                                                           std::function<void()> expirationHandler);
    UIBackgroundTaskIdentifier beginBackgroundTaskWithExpirationHandler(std::function<void()> expirationHandler);

    /// An unknown identifier is ignored. Any thread.
    void endBackgroundTask(UIBackgroundTaskIdentifier identifier);

    /// Ends the background time: runs the expiration handler of every open task. Main queue.
    void expireBackgroundTasks();

    /// How long the application may still run in the background, in seconds; the largest number there is where nothing
    /// limits it. Main queue.
    virtual TimeInterval backgroundTimeRemaining() const;

    /// The names of the open tasks by identifier. Any thread.
    std::map<UIBackgroundTaskIdentifier, std::string> backgroundTasks() const;

    /// The window that the user looks at; null while the application has none. Main queue, as the one below.
    const std::shared_ptr<UIWindow>& keyWindow() const { return keyWindow_; }
    void setKeyWindow(std::shared_ptr<UIWindow> window);

    /// `openURL:` hands a URL to whoever opens it, `UIApplicationOpenSettingsURLString` for one; false when nobody
    /// does. Main queue.
    virtual bool openURL(const NSURL& /*url*/) { return false; }

    /// Asks the platform for a push token. Main queue.
    virtual void registerForRemoteNotifications() = 0;
    /// Asks the platform to wake the application for a background fetch, no more often than this. Main queue.
    virtual void setMinimumBackgroundFetchInterval(TimeInterval seconds) = 0;

    /// One of the three values above. Main queue.
    virtual std::int64_t backgroundRefreshStatus() const { return UIBackgroundRefreshStatusRestricted; }

    /// What the user allows, on platforms below 10; nothing elsewhere. Main queue.
    virtual UIUserNotificationSettings currentUserNotificationSettings() const { return {}; }
    /// Asks the user, on platforms below 10. The answer arrives through the host. Main queue.
    virtual void registerUserNotificationSettings(const UIUserNotificationSettings&) {}

    /// `scheduleLocalNotification:` keeps a copy of the notification until it is due; one without a fire date is due at
    /// once. The same notification may be scheduled more than once. Main queue, as the three below.
    void scheduleLocalNotification(const UILocalNotification& notification);
    /// What is scheduled and not due yet, in the order of scheduling.
    std::vector<UILocalNotification> scheduledLocalNotifications() const;
    /// Cancels that notification, told by its identity. Where none has it, one whose fields are all equal, if either of
    /// the two was read back: what was made in this process is never taken for another. Ignored when nothing fits.
    void cancelLocalNotification(const UILocalNotification& notification);
    void cancelAllLocalNotifications();

protected:
    /// A notification with the number that tells it apart from every other one scheduled with this application.
    struct ScheduledLocalNotification {
        std::uint64_t number;
        UILocalNotification notification;
    };

    /// What is scheduled, by number.
    const std::map<std::uint64_t, UILocalNotification>& scheduled() const { return scheduled_; }
    /// Puts a notification on the list without telling anyone.
    ScheduledLocalNotification addScheduled(const UILocalNotification& notification);
    /// Takes the notification that is due first off the list; nothing when none is by that time.
    std::optional<ScheduledLocalNotification> takeDue(double time);
    /// When the first one is due; nothing when none is scheduled. One without a date has been due always.
    std::optional<double> nextFireDate() const;

    /// Puts on the list what `storeScheduled()` left in the file, without telling anyone. A file that cannot be read is
    /// kept with the suffix ".corrupt"; what is no notification in it is left out.
    void restoreScheduled(const std::string& path);
    /// Replaces the file, a property list, by the list as it is. A failure is silent.
    void storeScheduled(const std::string& path) const;

    /// Told after notifications were put on the list, or taken off it by being cancelled. Main queue.
    virtual void didScheduleLocalNotification(const ScheduledLocalNotification&) {}
    virtual void didCancelLocalNotifications(const std::vector<ScheduledLocalNotification>&) {}

    /// Told after a background task began, ended or expired, with no lock held. Any thread.
    virtual void backgroundTaskDidBegin(UIBackgroundTaskIdentifier, const std::string& /*name*/) {}
    virtual void backgroundTaskDidEnd(UIBackgroundTaskIdentifier, const std::string& /*name*/) {}
    virtual void backgroundTaskDidExpire(UIBackgroundTaskIdentifier, const std::string& /*name*/) {}

private:
    struct BackgroundTask {
        std::string name;
        std::function<void()> expirationHandler;
    };

    void change(UIApplicationState state, const char* notificationName);
    std::vector<std::uint64_t> numbersOf(const UILocalNotification& notification) const;
    ScheduledLocalNotification take(std::uint64_t number);

    // Fixed at construction.
    const std::shared_ptr<NSNotificationCenter> notificationCenter_;
    std::atomic<UIApplicationState> applicationState_ = UIApplicationState::inactive;

    // Main queue only.
    std::shared_ptr<UIWindow> keyWindow_;
    // Main queue only. The list by number, and the numbers by due time and by identity: no operation on one
    // notification walks through all of them.
    std::uint64_t newestNumber_ = 0;
    std::map<std::uint64_t, UILocalNotification> scheduled_;
    std::set<std::pair<double, std::uint64_t>> dueTimes_;
    std::unordered_multimap<std::uint64_t, std::uint64_t> identities_;

    mutable std::mutex mutex_;
    // Guarded by mutex_.
    UIBackgroundTaskIdentifier nextIdentifier_ = 1;
    std::map<UIBackgroundTaskIdentifier, BackgroundTask> backgroundTasks_;
};

}  // namespace vorlane
