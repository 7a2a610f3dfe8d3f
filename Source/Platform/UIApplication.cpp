#include "Platform/UIApplication.h"

#include <limits>
#include <utility>

#include "Platform/Internal/BackgroundTasks.h"
#include "Platform/Internal/ScheduledLocalNotifications.h"
#include "Platform/NSNotificationCenter.h"
#include "Platform/UIWindow.h"

namespace vorlane {

UIApplication::UIApplication(std::shared_ptr<NSNotificationCenter> notificationCenter)
    : notificationCenter_(std::move(notificationCenter)),
      backgroundTasks_(std::make_unique<BackgroundTasks>()),
      scheduled_(std::make_unique<ScheduledLocalNotifications>()) {}

UIApplication::~UIApplication() = default;

void UIApplication::didBecomeActive() { change(UIApplicationState::Active, UIApplicationDidBecomeActiveNotification); }

void UIApplication::willResignActive() {
    change(UIApplicationState::Inactive, UIApplicationWillResignActiveNotification);
}

void UIApplication::didEnterBackground() {
    change(UIApplicationState::Background, UIApplicationDidEnterBackgroundNotification);
}

void UIApplication::willEnterForeground() {
    change(UIApplicationState::Inactive, UIApplicationWillEnterForegroundNotification);
}

void UIApplication::willTerminate() { change(applicationState(), UIApplicationWillTerminateNotification); }

void UIApplication::change(UIApplicationState state, const char* notificationName) {
    applicationState_ = state;
    notificationCenter_->postNotificationName(notificationName);
}

UIBackgroundTaskIdentifier UIApplication::beginBackgroundTaskWithName(const std::string& name,
                                                                      std::function<void()> expirationHandler) {
    const auto identifier = backgroundTasks_->begin(name, std::move(expirationHandler));
    backgroundTaskDidBegin(identifier, name);
    return identifier;
}

UIBackgroundTaskIdentifier UIApplication::beginBackgroundTaskWithExpirationHandler(
    std::function<void()> expirationHandler) {
    return beginBackgroundTaskWithName({}, std::move(expirationHandler));
}

void UIApplication::endBackgroundTask(UIBackgroundTaskIdentifier identifier) {
    if (const auto name = backgroundTasks_->end(identifier)) backgroundTaskDidEnd(identifier, *name);
}

void UIApplication::expireBackgroundTasks() {
    for (const auto& [identifier, name] : backgroundTasks()) {
        if (expireBackgroundTask(identifier)) endBackgroundTask(identifier);
    }
}

bool UIApplication::expireBackgroundTask(UIBackgroundTaskIdentifier identifier) {
    const auto task = backgroundTasks_->takeForExpiry(identifier);
    if (!task) return false;
    backgroundTaskDidExpire(identifier, task->name);
    if (task->expirationHandler) task->expirationHandler();
    return true;
}

std::map<UIBackgroundTaskIdentifier, std::string> UIApplication::backgroundTasks() const {
    return backgroundTasks_->names();
}

void UIApplication::setKeyWindow(std::shared_ptr<UIWindow> window) {
    // The old window is destroyed last: its view controllers may ask for the key window.
    keyWindow_.swap(window);
}

TimeInterval UIApplication::backgroundTimeRemaining() const { return std::numeric_limits<TimeInterval>::max(); }

void UIApplication::scheduleLocalNotification(const UILocalNotification& notification) {
    didScheduleLocalNotification(scheduled_->add(notification));
}

std::vector<UILocalNotification> UIApplication::scheduledLocalNotifications() const {
    return scheduled_->notifications();
}

void UIApplication::cancelLocalNotification(const UILocalNotification& notification) {
    const auto cancelled = scheduled_->remove(notification);
    if (!cancelled.empty()) didCancelLocalNotifications(cancelled);
}

void UIApplication::cancelAllLocalNotifications() {
    const auto cancelled = scheduled_->removeAll();
    if (!cancelled.empty()) didCancelLocalNotifications(cancelled);
}

void UIApplication::changeLocalNotificationsInOneStep(const std::function<void()>& changes) {
    const ScheduledLocalNotifications::Step step(*scheduled_);
    changes();
}

void UIApplication::keepScheduledLocalNotifications(const std::string& path) { scheduled_->keepInFile(path); }

std::vector<UIApplication::ScheduledLocalNotification> UIApplication::scheduledEntries() const {
    return scheduled_->entries();
}

std::optional<UIApplication::ScheduledLocalNotification> UIApplication::takeDue(double time) {
    return scheduled_->takeDue(time);
}

std::optional<double> UIApplication::nextFireDate() const { return scheduled_->nextFireDate(); }

}  // namespace vorlane
