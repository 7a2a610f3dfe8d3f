#include "Platform/Linux/LinuxApplication.h"

#include <utility>

#include "Platform/DispatchQueue.h"

namespace vorlane {

LinuxApplication::LinuxApplication(std::shared_ptr<NSNotificationCenter> notificationCenter,
                                   std::weak_ptr<DispatchQueue> mainQueue, Callbacks callbacks)
    : UIApplication(std::move(notificationCenter)),
      mainQueue_(std::move(mainQueue)),
      callbacks_(std::move(callbacks)) {}

void LinuxApplication::didEnterBackground() {
    const std::uint64_t stay = ++stay_;
    UIApplication::didEnterBackground();
    if (const auto queue = mainQueue_.lock()) {
        queue->postAfter(kBackgroundTime, [weakSelf = weak_from_this(), stay] {
            if (const auto self = weakSelf.lock()) self->backgroundTimeEnded(stay);
        });
    }
}

void LinuxApplication::willEnterForeground() {
    ++stay_;
    UIApplication::willEnterForeground();
}

void LinuxApplication::backgroundTimeEnded(std::uint64_t stay) {
    if (stay != stay_ || applicationState() != UIApplicationState::background) return;
    expireBackgroundTasks();
}

void LinuxApplication::registerForRemoteNotifications() {
    if (callbacks_.registerForRemoteNotifications) callbacks_.registerForRemoteNotifications();
}

void LinuxApplication::setMinimumBackgroundFetchInterval(TimeInterval seconds) {
    if (callbacks_.setMinimumBackgroundFetchInterval) callbacks_.setMinimumBackgroundFetchInterval(seconds);
}

}  // namespace vorlane
