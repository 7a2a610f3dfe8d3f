#pragma once

#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include "Platform/UIApplication.h"

namespace vorlane {

/// The simulated phone's application object: does nothing but remember what it was told, and tell an observer.
class SimulatedApplication : public UIApplication {
public:
    using UIApplication::UIApplication;

    void registerForRemoteNotifications() override;
    void setMinimumBackgroundFetchInterval(TimeInterval seconds) override;

    /// How often a push token was asked for.
    int remoteNotificationRegistrations() const { return remoteNotificationRegistrations_; }
    std::vector<TimeInterval> backgroundFetchIntervals() const { return backgroundFetchIntervals_; }
    /// Every background task ever begun, by name, in order. Any thread.
    std::vector<std::string> begunBackgroundTasks() const;

    /// Called for everything the application object is told, with the event's name and its fields as the phone's
    /// protocol has them
    /// ("registerForRemoteNotifications", "backgroundTask" …). May be called on any thread; with no lock held.
    void setEventObserver(std::function<void(const std::string& event, const Dictionary& fields)> observer);

protected:
    void backgroundTaskDidBegin(UIBackgroundTaskIdentifier identifier, const std::string& name) override;
    void backgroundTaskDidEnd(UIBackgroundTaskIdentifier identifier, const std::string& name) override;
    void backgroundTaskDidExpire(UIBackgroundTaskIdentifier identifier, const std::string& name) override;

private:
    void tell(const std::string& event, Dictionary fields);

    // Main queue only.
    int remoteNotificationRegistrations_ = 0;
    std::vector<TimeInterval> backgroundFetchIntervals_;

    mutable std::mutex mutex_;
    // Guarded by mutex_.
    std::vector<std::string> begunBackgroundTasks_;
    std::function<void(const std::string&, const Dictionary&)> eventObserver_;
};

}  // namespace vorlane
