#include "Simulator/Platform/SimulatedApplication.h"

#include <limits>
#include <utility>

#include "Platform/Clock.h"
#include "Platform/NSURL.h"
#include "Simulator/Platform/Internal/SimulatedMainQueue.h"
#include "Simulator/Platform/SimulatedUser.h"

namespace vorlane {

namespace {

Dictionary backgroundTaskFields(const char* action, UIBackgroundTaskIdentifier identifier, const std::string& name) {
    return {{"action", action}, {"name", name}, {"identifier", identifier}};
}

/// The field as a JSON value; null if it is absent.
Value valueOf(const auto& field) { return field ? Value(*field) : Value(); }

}  // namespace

SimulatedApplication::SimulatedApplication(std::shared_ptr<NSNotificationCenter> notificationCenter,
                                           std::shared_ptr<SimulatedMainQueue> mainQueue,
                                           std::shared_ptr<SimulatedUser> user)
    : UIApplication(std::move(notificationCenter)), mainQueue_(std::move(mainQueue)), user_(std::move(user)) {}

bool SimulatedApplication::openURL(const NSURL& url) {
    openedURLs_.push_back(url.absoluteString());
    tell("openURL", {{"url", url.absoluteString()}});
    return true;
}

void SimulatedApplication::registerForRemoteNotifications() {
    ++remoteNotificationRegistrations_;
    tell("registerForRemoteNotifications", {});
}

void SimulatedApplication::setMinimumBackgroundFetchInterval(TimeInterval seconds) {
    backgroundFetchIntervals_.push_back(seconds);
    tell("minimumBackgroundFetchInterval", {{"seconds", seconds}});
}

void SimulatedApplication::registerUserNotificationSettings(const UIUserNotificationSettings& settings) {
    Array identifiers;
    for (const auto& category : settings.categories) identifiers.emplace_back(category.identifier);
    userNotificationSettings_.categories = settings.categories;
    tell("categories", {{"identifiers", std::move(identifiers)}});
    if (!user_) return;
    user_->prompt("notifications", settings.types, [this, types = settings.types](SimulatedUser::Answer answer) {
        if (answer == SimulatedUser::Answer::Allow) userNotificationSettings_.types = types;
        if (answer == SimulatedUser::Answer::Deny) userNotificationSettings_.types = 0;
        if (userNotificationSettingsObserver_) userNotificationSettingsObserver_(userNotificationSettings_);
    });
}

std::map<SimulatedApplication::Handle, UILocalNotification> SimulatedApplication::scheduledByHandle() const {
    std::map<Handle, UILocalNotification> found;
    for (const auto& [number, notification] : scheduledEntries()) {
        found.emplace(waits_.at(number).handle, notification);
    }
    return found;
}

SimulatedApplication::Handle SimulatedApplication::handleOf(const UILocalNotification& notification) {
    for (auto entry = objects_.rbegin(); entry != objects_.rend(); ++entry) {
        if (entry->second.isSameAs(notification) && entry->second == notification) return entry->first;
    }
    objects_.emplace(++newestHandle_, notification);
    return newestHandle_;
}

std::optional<UILocalNotification> SimulatedApplication::notificationWithHandle(Handle handle) const {
    const auto found = objects_.find(handle);
    return found == objects_.end() ? std::nullopt : std::optional(found->second);
}

Dictionary SimulatedApplication::notificationFields(Handle handle, const UILocalNotification& notification) {
    return {{"handle", handle},
            {"fireDate", valueOf(notification.fireDate)},
            {"timeZone", valueOf(notification.timeZone)},
            {"alertBody", valueOf(notification.alertBody)},
            {"alertAction", valueOf(notification.alertAction)},
            {"soundName", valueOf(notification.soundName)},
            {"applicationIconBadgeNumber", notification.applicationIconBadgeNumber},
            {"userInfo", valueOf(notification.userInfo)}};
}

void SimulatedApplication::keepScheduledLocalNotifications(const std::string& path) {
    UIApplication::keepScheduledLocalNotifications(path);
    for (const auto& entry : scheduledEntries()) addObject(entry);
}

void SimulatedApplication::didScheduleLocalNotification(const ScheduledLocalNotification& entry) {
    const Handle handle = addObject(entry);
    tellOf("scheduled", handle, entry.notification);
}

/// Gives the notification a handle and waits for its fire date.
SimulatedApplication::Handle SimulatedApplication::addObject(const ScheduledLocalNotification& entry) {
    const Handle handle = ++newestHandle_;
    objects_.emplace(handle, entry.notification);
    waits_[entry.number] = {handle, 0};
    constexpr double kAlready = -std::numeric_limits<double>::infinity();
    const double date = entry.notification.fireDate.value_or(kAlready);
    if (mainQueue_ && date == date)
        waits_[entry.number].token = mainQueue_->postAt(date, SimulatedMainQueue::Kind::Phone, [this] { fireDue(); });
    return handle;
}

void SimulatedApplication::didCancelLocalNotifications(const std::vector<ScheduledLocalNotification>& entries) {
    for (const auto& entry : entries) {
        const auto found = waits_.extract(entry.number);
        if (mainQueue_) mainQueue_->cancel(found.mapped().token);
        tellOf("cancelled", found.mapped().handle, entry.notification);
    }
}

void SimulatedApplication::fireDue() {
    while (const auto due = takeDue(mainQueue_->now())) {
        const auto found = waits_.extract(due->number);
        mainQueue_->cancel(found.mapped().token);
        delivered_.emplace(found.mapped().handle, due->notification);
        tellOf("fired", found.mapped().handle, due->notification);
    }
}

void SimulatedApplication::tellOf(const char* event, Handle handle, const UILocalNotification& notification) {
    tell(event, {{"notification", notificationFields(handle, notification)}});
}

std::vector<std::string> SimulatedApplication::begunBackgroundTasks() const {
    const std::lock_guard lock(mutex_);
    return begunBackgroundTasks_;
}

void SimulatedApplication::setEventObserver(
    std::function<void(const std::string& event, const Dictionary& fields)> observer) {
    const std::lock_guard lock(mutex_);
    eventObserver_ = std::move(observer);
}

void SimulatedApplication::backgroundTaskDidBegin(UIBackgroundTaskIdentifier identifier, const std::string& name) {
    {
        const std::lock_guard lock(mutex_);
        begunBackgroundTasks_.push_back(name);
    }
    tell("backgroundTask", backgroundTaskFields("begin", identifier, name));
}

void SimulatedApplication::backgroundTaskDidEnd(UIBackgroundTaskIdentifier identifier, const std::string& name) {
    tell("backgroundTask", backgroundTaskFields("end", identifier, name));
}

void SimulatedApplication::backgroundTaskDidExpire(UIBackgroundTaskIdentifier identifier, const std::string& name) {
    tell("backgroundTask", backgroundTaskFields("expired", identifier, name));
}

void SimulatedApplication::tell(const std::string& event, Dictionary fields) {
    decltype(eventObserver_) observer;
    {
        const std::lock_guard lock(mutex_);
        observer = eventObserver_;
    }
    if (observer) observer(event, fields);
}

}  // namespace vorlane
