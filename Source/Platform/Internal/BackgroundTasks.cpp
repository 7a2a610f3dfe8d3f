#include "Platform/Internal/BackgroundTasks.h"

#include <utility>

namespace vorlane {

UIBackgroundTaskIdentifier BackgroundTasks::begin(const std::string& name, std::function<void()> expirationHandler) {
    const std::lock_guard lock(mutex_);
    const auto identifier = nextIdentifier_++;
    tasks_.emplace_hint(tasks_.end(), identifier, Task{name, std::move(expirationHandler)});
    return identifier;
}

std::optional<std::string> BackgroundTasks::end(UIBackgroundTaskIdentifier identifier) {
    Task ended;
    {
        const std::lock_guard lock(mutex_);
        const auto found = tasks_.find(identifier);
        if (found == tasks_.end()) return std::nullopt;
        ended = std::move(found->second);
        tasks_.erase(found);
    }
    return std::move(ended.name);
}

std::optional<BackgroundTasks::Task> BackgroundTasks::takeForExpiry(UIBackgroundTaskIdentifier identifier) {
    const std::lock_guard lock(mutex_);
    const auto found = tasks_.find(identifier);
    if (found == tasks_.end()) return std::nullopt;
    return Task{found->second.name, std::exchange(found->second.expirationHandler, nullptr)};
}

std::map<UIBackgroundTaskIdentifier, std::string> BackgroundTasks::names() const {
    const std::lock_guard lock(mutex_);
    std::map<UIBackgroundTaskIdentifier, std::string> names;
    for (const auto& [identifier, task] : tasks_) names.emplace_hint(names.end(), identifier, task.name);
    return names;
}

}  // namespace vorlane
