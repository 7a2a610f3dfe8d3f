#include "Platform/UIApplication.h"

#include <utility>

#include "Platform/NSNotificationCenter.h"

namespace vorlane {

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

std::map<UIBackgroundTaskIdentifier, std::string> UIApplication::backgroundTasks() const {
    const std::lock_guard lock(mutex_);
    std::map<UIBackgroundTaskIdentifier, std::string> names;
    for (const auto& [identifier, task] : backgroundTasks_) names.emplace(identifier, task.name);
    return names;
}

}  // namespace vorlane
