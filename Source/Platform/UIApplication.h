#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "Public/VLExport.h"
#include "Public/VLValue.h"

namespace vorlane {

class NSNotificationCenter;

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
    /// on the main queue if the time runs out first, and ends the task. Any thread.
    UIBackgroundTaskIdentifier beginBackgroundTaskWithName(const std::string& name,
                                                           std::function<void()> expirationHandler);
    UIBackgroundTaskIdentifier beginBackgroundTaskWithExpirationHandler(std::function<void()> expirationHandler);

    /// An unknown identifier is ignored. Any thread.
    void endBackgroundTask(UIBackgroundTaskIdentifier identifier);

    /// Ends the background time: runs the expiration handler of every open task. Main queue.
    void expireBackgroundTasks();

    /// The names of the open tasks by identifier. Any thread.
    std::map<UIBackgroundTaskIdentifier, std::string> backgroundTasks() const;

    /// Asks the platform for a push token. Main queue.
    virtual void registerForRemoteNotifications() = 0;
    /// Asks the platform to wake the application for a background fetch, no more often than this. Main queue.
    virtual void setMinimumBackgroundFetchInterval(TimeInterval seconds) = 0;

protected:
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

    // Fixed at construction.
    const std::shared_ptr<NSNotificationCenter> notificationCenter_;
    std::atomic<UIApplicationState> applicationState_ = UIApplicationState::inactive;

    mutable std::mutex mutex_;
    // Guarded by mutex_.
    UIBackgroundTaskIdentifier nextIdentifier_ = 1;
    std::map<UIBackgroundTaskIdentifier, BackgroundTask> backgroundTasks_;
};

}  // namespace vorlane
