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

/// The simulated phone's application object: remembers what it was told, tells an observer, and keeps scheduled local
/// notifications until the phone's clock reaches their date.
class SimulatedApplication : public UIApplication {
public:
    /// Names one notification object for those who speak with the phone; each time one is scheduled it is an object of
    /// its own.
    using Handle = std::uint64_t;

    /// Without a main queue nothing falls due, without a user nobody is asked.
    explicit SimulatedApplication(std::shared_ptr<NSNotificationCenter> notificationCenter,
                                  std::shared_ptr<SimulatedMainQueue> mainQueue = nullptr,
                                  std::shared_ptr<SimulatedUser> user = nullptr);

    /// Takes over the scheduled notifications that an earlier process left in the file, and keeps it up to date from
    /// now on. What was missed meanwhile fires when the main queue runs. Without this they are kept in memory.
    void keepScheduledLocalNotifications(const std::string& path);

    /// Always opened.
    bool openURL(const NSURL& url) override;
    void registerForRemoteNotifications() override;
    void setMinimumBackgroundFetchInterval(TimeInterval seconds) override;

    std::int64_t backgroundRefreshStatus() const override { return backgroundRefreshStatus_; }
    UIUserNotificationSettings currentUserNotificationSettings() const override { return userNotificationSettings_; }
    TimeInterval backgroundTimeRemaining() const override { return backgroundTimeRemaining_; }
    /// Asks the simulated user; the observer of answers is told what was settled. "Deny" allows nothing; after an
    /// error, or with no decision, everything stays as it was.
    void registerUserNotificationSettings(const UIUserNotificationSettings& settings) override;

    /// 180 seconds until it is set.
    void setBackgroundTimeRemaining(TimeInterval seconds) { backgroundTimeRemaining_ = seconds; }
    void setBackgroundRefreshStatus(std::int64_t status) { backgroundRefreshStatus_ = status; }
    void setUserNotificationTypes(std::uint64_t types) { userNotificationSettings_.types = types; }
    /// Called with the answer to `registerUserNotificationSettings()`, as a host's application delegate is.
    void setUserNotificationSettingsObserver(std::function<void(const UIUserNotificationSettings&)> observer) {
        userNotificationSettingsObserver_ = std::move(observer);
    }

    /// The scheduled notifications and the ones that fired, by handle; of each the newest last.
    std::map<Handle, UILocalNotification> scheduledByHandle() const;
    const std::map<Handle, UILocalNotification>& deliveredByHandle() const { return delivered_; }
    /// The handle of an object that somebody else holds: that of the newest object with its identity and its fields,
    /// else a new one.
    Handle handleOf(const UILocalNotification& notification);
    /// The object of a handle; nothing when there is none.
    std::optional<UILocalNotification> notificationWithHandle(Handle handle) const;
    /// The fields under their own names, absent ones as null, and the handle.
    static Dictionary notificationFields(Handle handle, const UILocalNotification& notification);

    /// How often a push token was asked for.
    int remoteNotificationRegistrations() const { return remoteNotificationRegistrations_; }
    std::vector<TimeInterval> backgroundFetchIntervals() const { return backgroundFetchIntervals_; }
    /// The URLs that were opened, in order.
    const std::vector<std::string>& openedURLs() const { return openedURLs_; }
    /// Every background task ever begun, by name, in order. Any thread.
    std::vector<std::string> begunBackgroundTasks() const;

    /// Called for everything the application object is told, with the event's name and its fields as the phone's
    /// protocol has them
    /// ("registerForRemoteNotifications", "backgroundTask" …). May be called on any thread; with no lock held.
    void setEventObserver(std::function<void(const std::string& event, const Dictionary& fields)> observer);

    /// Tells the observer of an event. Any thread.
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
    void store() const;
    void fireDue();

    // Fixed at construction.
    const std::shared_ptr<SimulatedMainQueue> mainQueue_;
    const std::shared_ptr<SimulatedUser> user_;
    // Main queue only.
    std::int64_t backgroundRefreshStatus_ = UIBackgroundRefreshStatusAvailable;
    TimeInterval backgroundTimeRemaining_ = 180;
    UIUserNotificationSettings userNotificationSettings_;
    std::function<void(const UIUserNotificationSettings&)> userNotificationSettingsObserver_;
    Handle newestHandle_ = 0;
    std::map<Handle, UILocalNotification> objects_;
    std::map<Handle, UILocalNotification> delivered_;
    /// What was scheduled under a number: its handle, and the wait for its date.
    struct Wait {
        Handle handle;
        std::uint64_t token;
    };
    std::map<std::uint64_t, Wait> waits_;
    // Empty: nothing is kept.
    std::string path_;
    int remoteNotificationRegistrations_ = 0;
    std::vector<TimeInterval> backgroundFetchIntervals_;
    std::vector<std::string> openedURLs_;

    mutable std::mutex mutex_;
    // Guarded by mutex_.
    std::vector<std::string> begunBackgroundTasks_;
    std::function<void(const std::string&, const Dictionary&)> eventObserver_;
};

}  // namespace vorlane
