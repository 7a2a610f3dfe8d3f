#include "Platform/UIApplication.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "Platform/NSNotificationCenter.h"
#include "Platform/UIWindow.h"

namespace vorlane {

namespace {

/// A date that is no number never comes.
double dueTime(const UILocalNotification& notification) {
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    const double date = notification.fireDate.value_or(-kInfinity);
    return date == date ? date : kInfinity;
}

}  // namespace

UIApplication::UIApplication(std::shared_ptr<NSNotificationCenter> notificationCenter)
    : notificationCenter_(std::move(notificationCenter)) {}

UIApplication::~UIApplication() = default;

void UIApplication::didBecomeActive() { change(UIApplicationState::active, UIApplicationDidBecomeActiveNotification); }

void UIApplication::willResignActive() {
    change(UIApplicationState::inactive, UIApplicationWillResignActiveNotification);
}

void UIApplication::didEnterBackground() {
    change(UIApplicationState::background, UIApplicationDidEnterBackgroundNotification);
}

void UIApplication::willEnterForeground() {
    change(UIApplicationState::inactive, UIApplicationWillEnterForegroundNotification);
}

void UIApplication::willTerminate() { change(applicationState(), UIApplicationWillTerminateNotification); }

void UIApplication::change(UIApplicationState state, const char* notificationName) {
    applicationState_ = state;
    notificationCenter_->postNotificationName(notificationName);
}

UIBackgroundTaskIdentifier UIApplication::beginBackgroundTaskWithName(const std::string& name,
                                                                      std::function<void()> expirationHandler) {
    UIBackgroundTaskIdentifier identifier = UIBackgroundTaskInvalid;
    {
        const std::lock_guard lock(mutex_);
        identifier = nextIdentifier_++;
        backgroundTasks_.emplace_hint(backgroundTasks_.end(), identifier,
                                      BackgroundTask{name, std::move(expirationHandler)});
    }
    backgroundTaskDidBegin(identifier, name);
    return identifier;
}

UIBackgroundTaskIdentifier UIApplication::beginBackgroundTaskWithExpirationHandler(
    std::function<void()> expirationHandler) {
    return beginBackgroundTaskWithName({}, std::move(expirationHandler));
}

void UIApplication::endBackgroundTask(UIBackgroundTaskIdentifier identifier) {
    BackgroundTask ended;
    {
        const std::lock_guard lock(mutex_);
        const auto found = backgroundTasks_.find(identifier);
        if (found == backgroundTasks_.end()) return;
        ended = std::move(found->second);
        backgroundTasks_.erase(found);
    }
    backgroundTaskDidEnd(identifier, ended.name);
}

void UIApplication::expireBackgroundTasks() {
    for (const auto& [identifier, name] : backgroundTasks()) {
        std::function<void()> handler;
        {
            const std::lock_guard lock(mutex_);
            const auto found = backgroundTasks_.find(identifier);
            // Ended in the meantime, by the work itself or by another task's handler.
            if (found == backgroundTasks_.end()) continue;
            handler = std::exchange(found->second.expirationHandler, nullptr);
        }
        backgroundTaskDidExpire(identifier, name);
        if (handler) handler();
        endBackgroundTask(identifier);
    }
}

void UIApplication::setKeyWindow(std::shared_ptr<UIWindow> window) {
    // What was there before goes last: its screens may ask for the window.
    keyWindow_.swap(window);
}

TimeInterval UIApplication::backgroundTimeRemaining() const { return std::numeric_limits<TimeInterval>::max(); }

void UIApplication::scheduleLocalNotification(const UILocalNotification& notification) {
    // A copy, since whoever is told may change the list.
    const auto entry = addScheduled(notification);
    didScheduleLocalNotification(entry);
}

std::vector<UILocalNotification> UIApplication::scheduledLocalNotifications() const {
    std::vector<UILocalNotification> notifications;
    for (const auto& entry : scheduled_) notifications.push_back(entry.notification);
    return notifications;
}

void UIApplication::cancelLocalNotification(const UILocalNotification& notification) {
    std::vector<ScheduledLocalNotification> cancelled;
    std::erase_if(scheduled_, [&](const ScheduledLocalNotification& entry) {
        const bool isSame = entry.notification.isSameAs(notification);
        if (isSame) cancelled.push_back(entry);
        return isSame;
    });
    if (cancelled.empty()) {
        // Read back in another way than from the list of this process: its fields tell which one is meant.
        const auto equal = std::ranges::find(scheduled_, notification, &ScheduledLocalNotification::notification);
        if (equal == scheduled_.end()) return;
        cancelled.push_back(*equal);
        scheduled_.erase(equal);
    }
    didCancelLocalNotifications(cancelled);
}

void UIApplication::cancelAllLocalNotifications() {
    if (!scheduled_.empty()) didCancelLocalNotifications(std::exchange(scheduled_, {}));
}

const UIApplication::ScheduledLocalNotification& UIApplication::addScheduled(const UILocalNotification& notification) {
    scheduled_.push_back({++newestNumber_, notification});
    return scheduled_.back();
}

std::vector<UIApplication::ScheduledLocalNotification>::iterator UIApplication::firstDue() {
    return std::ranges::min_element(
        scheduled_, {}, [](const ScheduledLocalNotification& entry) { return dueTime(entry.notification); });
}

std::optional<UIApplication::ScheduledLocalNotification> UIApplication::takeDue(double time) {
    const auto first = firstDue();
    if (first == scheduled_.end() || !(dueTime(first->notification) <= time)) return std::nullopt;
    auto taken = std::move(*first);
    scheduled_.erase(first);
    return taken;
}

std::optional<double> UIApplication::nextFireDate() const {
    std::optional<double> next;
    for (const auto& entry : scheduled_) {
        if (const double due = dueTime(entry.notification); !next || due < *next) next = due;
    }
    return next;
}

std::map<UIBackgroundTaskIdentifier, std::string> UIApplication::backgroundTasks() const {
    const std::lock_guard lock(mutex_);
    std::map<UIBackgroundTaskIdentifier, std::string> names;
    for (const auto& [identifier, task] : backgroundTasks_) names.emplace(identifier, task.name);
    return names;
}

}  // namespace vorlane
