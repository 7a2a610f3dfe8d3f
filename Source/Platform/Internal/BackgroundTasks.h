#pragma once

#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>

#include "Platform/UIApplication.h"
#include "Public/VLExport.h"

namespace vorlane {

/// The open background tasks of an application. Any thread; no lock is held while a handler runs or is destroyed.
class VORLANE_EXPORT BackgroundTasks {
public:
    struct Task {
        std::string name;
        std::function<void()> expirationHandler;
    };

    UIBackgroundTaskIdentifier begin(const std::string& name, std::function<void()> expirationHandler);

    /// Ends the task and returns its name, or `nullopt` if no open task has the identifier.
    std::optional<std::string> end(UIBackgroundTaskIdentifier identifier);

    /// Returns the task with its handler, which a second call no longer returns: it runs at most once. The task stays
    /// open. Returns `nullopt` if no open task has the identifier.
    std::optional<Task> takeForExpiry(UIBackgroundTaskIdentifier identifier);

    /// The names of the open tasks.
    std::map<UIBackgroundTaskIdentifier, std::string> names() const;

private:
    mutable std::mutex mutex_;
    // Guarded by mutex_.
    UIBackgroundTaskIdentifier nextIdentifier_ = 1;
    std::map<UIBackgroundTaskIdentifier, Task> tasks_;
};

}  // namespace vorlane
