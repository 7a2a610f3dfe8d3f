#pragma once

#include <cstdint>
#include <functional>
#include <memory>

#include "Platform/UIApplication.h"

namespace vorlane {

class DispatchQueue;

/// The host application, as it reports itself: what it cannot do by itself goes to the host's callbacks.
class LinuxApplication : public UIApplication, public std::enable_shared_from_this<LinuxApplication> {
public:
    /// What an application in the background has until its open tasks expire, in seconds.
    static constexpr TimeInterval kBackgroundTime = 180;

    /// What the host does for the application, on the main queue; each may be empty.
    struct Callbacks {
        std::function<void()> registerForRemoteNotifications;
        std::function<void(TimeInterval)> setMinimumBackgroundFetchInterval;
    };

    /// `mainQueue` measures the background time.
    LinuxApplication(std::shared_ptr<NSNotificationCenter> notificationCenter, std::weak_ptr<DispatchQueue> mainQueue,
                     Callbacks callbacks);

    /// Also lets the background time run: unless the application comes back before its end, the tasks that are open
    /// then expire.
    void didEnterBackground() override;
    void willEnterForeground() override;

    void registerForRemoteNotifications() override;
    void setMinimumBackgroundFetchInterval(TimeInterval seconds) override;

private:
    void backgroundTimeEnded(std::uint64_t stay);

    // Fixed at construction.
    const std::weak_ptr<DispatchQueue> mainQueue_;
    const Callbacks callbacks_;
    // Main queue only. Counts the stays in the background, so that a time that ran out concerns its own stay alone.
    std::uint64_t stay_ = 0;
};

}  // namespace vorlane
