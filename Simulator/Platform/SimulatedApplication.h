#pragma once

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "Platform/UIApplication.h"

namespace vorlane {

class SimulatedMainQueue;
class SimulatedUser;

/// The simulated phone's application object. Records what it is asked to do, reports it to an observer, and keeps
/// scheduled local notifications until the phone's clock reaches their fire date.
class SimulatedApplication : public UIApplication {
public:
    /// Identifies a notification object to a client of the phone. Each scheduling of a notification makes a new object.
    using Handle = std::uint64_t;

    /// Without a main queue no notification becomes due; without a user no prompt appears.
    explicit SimulatedApplication(std::shared_ptr<NSNotificationCenter> notificationCenter,
                                  std::shared_ptr<SimulatedMainQueue> mainQueue = nullptr,
                                  std::shared_ptr<SimulatedUser> user = nullptr);

    /// Takes over the scheduled notifications that an earlier process stored in the file, and keeps the file up to date
    /// from now on. Notifications that were missed in the meantime fire when the main queue runs. Without this call,
    /// scheduled notifications are kept in memory only.
    void keepScheduledLocalNotifications(const std::string& path);

    /// Records the URL and returns true.
    bool openURL(const NSURL& url) override;
    void registerForRemoteNotifications() override;
    void setMinimumBackgroundFetchInterval(TimeInterval seconds) override;

    UIBackgroundRefreshStatus backgroundRefreshStatus() const override { return backgroundRefreshStatus_; }
    UIUserNotificationSettings currentUserNotificationSettings() const override { return userNotificationSettings_; }
    TimeInterval backgroundTimeRemaining() const override { return backgroundTimeRemaining_; }
    /// Asks the simulated user and reports the resulting settings to the observer. "Deny" clears the allowed types; an
    /// error and a missing decision leave them as they are.
    void registerUserNotificationSettings(const UIUserNotificationSettings& settings) override;

    /// The default is 180 seconds.
    void setBackgroundTimeRemaining(TimeInterval seconds) { backgroundTimeRemaining_ = seconds; }
    void setBackgroundRefreshStatus(UIBackgroundRefreshStatus status) { backgroundRefreshStatus_ = status; }
    void setUserNotificationTypes(std::uint64_t types) { userNotificationSettings_.types = types; }
    /// Called with the result of `registerUserNotificationSettings()`, like the application delegate of a host.
    void setUserNotificationSettingsObserver(std::function<void(const UIUserNotificationSettings&)> observer) {
        userNotificationSettingsObserver_ = std::move(observer);
    }

    /// The scheduled notifications, and the delivered ones, by handle, oldest first.
    std::map<Handle, UILocalNotification> scheduledByHandle() const;
    const std::map<Handle, UILocalNotification>& deliveredByHandle() const { return delivered_; }
    /// The handle of a notification that a client holds: that of the newest object with its identity and fields, or a
    /// new one.
    Handle handleOf(const UILocalNotification& notification);
    /// The object of a handle, or `nullopt` for an unknown handle.
    std::optional<UILocalNotification> notificationWithHandle(Handle handle) const;
    /// The handle and the fields under their own names; null for an absent field.
    static Dictionary notificationFields(Handle handle, const UILocalNotification& notification);

    /// How often `registerForRemoteNotifications()` was called.
    int remoteNotificationRegistrations() const { return remoteNotificationRegistrations_; }
    std::vector<TimeInterval> backgroundFetchIntervals() const { return backgroundFetchIntervals_; }
    /// The URLs passed to `openURL()`, in order.
    const std::vector<std::string>& openedURLs() const { return openedURLs_; }
    /// The names of all background tasks that were begun, in order. Any thread.
    std::vector<std::string> begunBackgroundTasks() const;

    /// Called for everything that the application object is asked to do, with the name and the fields of the event in
    /// the phone's protocol (such as "registerForRemoteNotifications" and "backgroundTask"). Any thread, no lock held.
    void setEventObserver(std::function<void(const std::string& event, const Dictionary& fields)> observer);

    /// Reports an event to the observer. Any thread.
    void tell(const std::string& event, Dictionary fields);

protected:
    void didScheduleLocalNotification(const ScheduledLocalNotification& entry) override;
    void didCancelLocalNotifications(const std::vector<ScheduledLocalNotification>& entries) override;
    void backgroundTaskDidBegin(UIBackgroundTaskIdentifier identifier, const std::string& name) override;
    void backgroundTaskDidEnd(UIBackgroundTaskIdentifier identifier, const std::string& name) override;
    void backgroundTaskDidExpire(UIBackgroundTaskIdentifier identifier, const std::string& name) override;

private:
    void tellOf(const char* event, Handle handle, const UILocalNotification& notification);
    Handle addObject(const ScheduledLocalNotification& entry);
    void fireDue();

    // Fixed at construction.
    const std::shared_ptr<SimulatedMainQueue> mainQueue_;
    const std::shared_ptr<SimulatedUser> user_;
    // Main queue only.
    UIBackgroundRefreshStatus backgroundRefreshStatus_ = UIBackgroundRefreshStatus::Available;
    TimeInterval backgroundTimeRemaining_ = 180;
    UIUserNotificationSettings userNotificationSettings_;
    std::function<void(const UIUserNotificationSettings&)> userNotificationSettingsObserver_;
    Handle newestHandle_ = 0;
    std::map<Handle, UILocalNotification> objects_;
    std::map<Handle, UILocalNotification> delivered_;
    /// The handle of a list entry, and the wait for its fire date.
    struct Wait {
        Handle handle;
        std::uint64_t token;
    };
    std::map<std::uint64_t, Wait> waits_;
    int remoteNotificationRegistrations_ = 0;
    std::vector<TimeInterval> backgroundFetchIntervals_;
    std::vector<std::string> openedURLs_;

    mutable std::mutex mutex_;
    // Guarded by mutex_.
    std::vector<std::string> begunBackgroundTasks_;
    std::function<void(const std::string&, const Dictionary&)> eventObserver_;
};

}  // namespace vorlane
