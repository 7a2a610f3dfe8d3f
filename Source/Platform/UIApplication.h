#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Platform/UILocalNotification.h"
#include "Platform/UIUserNotificationSettings.h"
#include "Public/VLExport.h"
#include "Public/VLTypes.h"

namespace vorlane {

class BackgroundTasks;
class NSNotificationCenter;
class NSURL;
class ScheduledLocalNotifications;
class UIWindow;

enum class UIApplicationState : std::int64_t { Active = 0, Inactive = 1, Background = 2 };

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
/// Launch options: the local notification that opened the application, in the form of
/// `UILocalNotification::toDictionary()`.
inline constexpr const char* UIApplicationLaunchOptionsLocalNotificationKey =
    "UIApplicationLaunchOptionsLocalNotificationKey";

/// The URL of the application's page in the system settings.
inline constexpr const char* UIApplicationOpenSettingsURLString = "app-settings:";

/// The result of a background fetch.
enum class UIBackgroundFetchResult : std::uint64_t { NewData = 0, NoData = 1, Failed = 2 };

/// Whether the platform may wake the application in the background.
enum class UIBackgroundRefreshStatus : std::int64_t { Restricted = 0, Denied = 1, Available = 2 };

using UIBackgroundTaskIdentifier = std::uint64_t;
inline constexpr UIBackgroundTaskIdentifier UIBackgroundTaskInvalid = 0;

/// The host application as the platform sees it. The host reports its state here; the library observes it.
class VORLANE_EXPORT UIApplication {
public:
    /// An entry of the list of scheduled notifications. Numbers ascend in the order of scheduling.
    struct ScheduledLocalNotification {
        std::uint64_t number;
        UILocalNotification notification;
    };

    explicit UIApplication(std::shared_ptr<NSNotificationCenter> notificationCenter);
    virtual ~UIApplication();

    /// Inactive until the host reports otherwise. Any thread.
    UIApplicationState applicationState() const { return applicationState_; }

    /// Sets the state that the application is launched in. Posts no notification. Main queue.
    void setApplicationState(UIApplicationState state) { applicationState_ = state; }

    /// The host reports a change of state. Each of these sets the state and then posts the notification of its name.
    /// Main queue.
    void didBecomeActive();
    void willResignActive();
    virtual void didEnterBackground();
    virtual void willEnterForeground();
    /// Does not change the state.
    void willTerminate();

    /// `beginBackgroundTaskWithName:expirationHandler:` asks for time to finish work after the application has left the
    /// foreground. Each task must be ended with `endBackgroundTask()`. The handler may be empty. If the time runs out
    /// first (after 180 seconds on Linux), the handler runs on the main queue, and the task ends. Any thread.
    UIBackgroundTaskIdentifier beginBackgroundTaskWithName(const std::string& name,
                                                           std::function<void()> expirationHandler);
    UIBackgroundTaskIdentifier beginBackgroundTaskWithExpirationHandler(std::function<void()> expirationHandler);

    /// An unknown identifier is ignored. Any thread.
    void endBackgroundTask(UIBackgroundTaskIdentifier identifier);

    /// Runs the expiration handler of every open task, and ends each task that its handler has not ended. Main queue.
    void expireBackgroundTasks();

    /// The number of seconds that the application may still run in the background; the largest `TimeInterval` if there
    /// is no limit. Main queue.
    virtual TimeInterval backgroundTimeRemaining() const;

    /// The names of the open tasks by identifier. Any thread.
    std::map<UIBackgroundTaskIdentifier, std::string> backgroundTasks() const;

    /// The window that the user looks at, or null if the application has none. Main queue.
    const std::shared_ptr<UIWindow>& keyWindow() const { return keyWindow_; }
    void setKeyWindow(std::shared_ptr<UIWindow> window);

    /// `openURL:` opens a URL, for example `UIApplicationOpenSettingsURLString`, in the program that is responsible for
    /// it. Returns false if there is no such program. Main queue.
    virtual bool openURL(const NSURL& /*url*/) { return false; }

    /// Asks the platform for a push token. Main queue.
    virtual void registerForRemoteNotifications() = 0;
    /// Asks the platform to wake the application for background fetches, at most once in so many seconds. Main queue.
    virtual void setMinimumBackgroundFetchInterval(TimeInterval seconds) = 0;

    /// Main queue.
    virtual UIBackgroundRefreshStatus backgroundRefreshStatus() const { return UIBackgroundRefreshStatus::Restricted; }

    /// What the user allows, on platforms below 10; empty on later platforms. Main queue.
    virtual UIUserNotificationSettings currentUserNotificationSettings() const { return {}; }
    /// Asks the user, on platforms below 10. The host reports the answer. Main queue.
    virtual void registerUserNotificationSettings(const UIUserNotificationSettings&) {}

    /// `scheduleLocalNotification:` keeps a copy of the notification until its fire date. A notification without a fire
    /// date is due immediately. A notification may be scheduled more than once. Main queue.
    void scheduleLocalNotification(const UILocalNotification& notification);
    /// The notifications that are scheduled and not yet due, in the order of scheduling. Main queue.
    std::vector<UILocalNotification> scheduledLocalNotifications() const;
    /// Cancels every scheduled copy of the notification. If there is none, and either notification was read back from
    /// a dictionary, cancels the first one whose fields are all equal. Otherwise does nothing. Main queue.
    void cancelLocalNotification(const UILocalNotification& notification);
    /// Main queue.
    void cancelAllLocalNotifications();
    /// Runs `changes`, which may schedule and cancel notifications, and stores the list once afterwards: if the process
    /// is killed, the stored list is that before or that after all of the changes. May be nested. Main queue.
    void changeLocalNotificationsInOneStep(const std::function<void()>& changes);

protected:
    /// Adds the notifications in the file, a property list, to the list, without a call of the operations below. From
    /// then on each change of the list replaces the file before anything else happens; a failure to write is silent. A
    /// file that is no property list is kept with the suffix ".corrupt". Main queue.
    void keepScheduledLocalNotifications(const std::string& path);
    /// The list, in the order of scheduling. Main queue.
    std::vector<ScheduledLocalNotification> scheduledEntries() const;
    /// Removes the entry that is due first from the list, or returns `nullopt` if none is due at `time`. Main queue.
    std::optional<ScheduledLocalNotification> takeDue(double time);
    /// The fire date of the entry that is due first, or `nullopt` if nothing is scheduled; minus infinity for a
    /// notification without a fire date. Main queue.
    std::optional<double> nextFireDate() const;

    /// Called after a notification was added to the list, or after notifications were removed from it by being
    /// cancelled. Main queue.
    virtual void didScheduleLocalNotification(const ScheduledLocalNotification&) {}
    virtual void didCancelLocalNotifications(const std::vector<ScheduledLocalNotification>&) {}

    /// Runs the task's expiration handler, at most once, and leaves it to the handler to end the task. Returns false if
    /// no open task has the identifier. Main queue.
    bool expireBackgroundTask(UIBackgroundTaskIdentifier identifier);

    /// Called after a background task began, ended or expired, with no lock held. Any thread.
    virtual void backgroundTaskDidBegin(UIBackgroundTaskIdentifier, const std::string& /*name*/) {}
    virtual void backgroundTaskDidEnd(UIBackgroundTaskIdentifier, const std::string& /*name*/) {}
    virtual void backgroundTaskDidExpire(UIBackgroundTaskIdentifier, const std::string& /*name*/) {}

private:
    void change(UIApplicationState state, const char* notificationName);

    // Fixed at construction.
    const std::shared_ptr<NSNotificationCenter> notificationCenter_;
    const std::unique_ptr<BackgroundTasks> backgroundTasks_;
    std::atomic<UIApplicationState> applicationState_ = UIApplicationState::Inactive;

    // Main queue only.
    const std::unique_ptr<ScheduledLocalNotifications> scheduled_;
    std::shared_ptr<UIWindow> keyWindow_;
};

}  // namespace vorlane
