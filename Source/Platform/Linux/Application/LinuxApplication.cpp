#include "Platform/Linux/Application/LinuxApplication.h"

#include <algorithm>
#include <utility>

#include "Platform/DispatchQueue.h"
#include "Platform/Internal/StorageFlusher.h"
#include "Platform/Platform.h"

namespace vorlane {

LinuxApplication::LinuxApplication(std::shared_ptr<NSNotificationCenter> notificationCenter,
                                   std::weak_ptr<DispatchQueue> mainQueue, Callbacks callbacks,
                                   std::shared_ptr<const Clock> clock)
    : UIApplication(std::move(notificationCenter)),
      mainQueue_(std::move(mainQueue)),
      callbacks_(std::move(callbacks)),
      clock_(std::move(clock)) {}

void LinuxApplication::didEnterBackground() {
    const std::uint64_t stay = ++stay_;
    stayBegan_ = clock_->now();
    waitForNext();
    UIApplication::didEnterBackground();
    keepRunningUntilStored();
    if (const auto queue = mainQueue_.lock()) {
        queue->postAfter(kBackgroundTime, [weakSelf = weak_from_this(), stay] {
            if (const auto self = weakSelf.lock()) self->backgroundTimeEnded(stay);
        });
    }
}

/// Holds a background task until the files that have changed so far are durable.
void LinuxApplication::keepRunningUntilStored() {
    auto& storage = Platform::current().storage();
    if (storage.isIdle()) return;
    const auto task = beginBackgroundTaskWithName("vorlane.storage", nullptr);
    storage.flush([weakSelf = weak_from_this(), task] {
        if (const auto self = weakSelf.lock()) self->endBackgroundTask(task);
    });
}

void LinuxApplication::willEnterForeground() {
    ++stay_;
    waitForNext();
    UIApplication::willEnterForeground();
}

TimeInterval LinuxApplication::backgroundTimeRemaining() const {
    if (applicationState() != UIApplicationState::Background) return UIApplication::backgroundTimeRemaining();
    return std::clamp(kBackgroundTime - (clock_->now() - stayBegan_), 0.0, kBackgroundTime);
}

void LinuxApplication::backgroundTimeEnded(std::uint64_t stay) {
    if (stay != stay_ || applicationState() != UIApplicationState::Background) return;
    expireBackgroundTasks();
}

void LinuxApplication::backgroundTaskDidEnd(UIBackgroundTaskIdentifier /*identifier*/, const std::string& /*name*/) {
    const auto queue = endOfTasksWatches_ > 0 ? mainQueue_.lock() : nullptr;
    if (queue) queue->post([] {});
}

bool LinuxApplication::openURL(const NSURL& url) {
    if (callbacks_.openURL) callbacks_.openURL(url);
    return callbacks_.openURL != nullptr;
}

void LinuxApplication::registerForRemoteNotifications() {
    if (callbacks_.registerForRemoteNotifications) callbacks_.registerForRemoteNotifications();
}

void LinuxApplication::setMinimumBackgroundFetchInterval(TimeInterval seconds) {
    if (callbacks_.setMinimumBackgroundFetchInterval) callbacks_.setMinimumBackgroundFetchInterval(seconds);
}

UIBackgroundRefreshStatus LinuxApplication::backgroundRefreshStatus() const {
    return callbacks_.setMinimumBackgroundFetchInterval ? UIBackgroundRefreshStatus::Available
                                                        : UIBackgroundRefreshStatus::Restricted;
}

void LinuxApplication::keepScheduledLocalNotifications(const std::string& path) {
    UIApplication::keepScheduledLocalNotifications(path);
    waitForNext();
}

void LinuxApplication::didScheduleLocalNotification(const ScheduledLocalNotification& /*entry*/) { waitForNext(); }

void LinuxApplication::didCancelLocalNotifications(const std::vector<ScheduledLocalNotification>& /*entries*/) {
    waitForNext();
}

void LinuxApplication::waitForNext() {
    const auto next = nextFireDate();
    const auto queue = mainQueue_.lock();
    if (!next || !queue) return;
    const double now = clock_->now();
    const TimeInterval length = std::clamp(*next - now, 0.0, kLongestWait);
    // A wait that ends earlier is sufficient: scheduling many notifications does not pile up waits.
    const auto current = wait_.lock();
    if (current && now < current->end && current->end <= now + length) return;
    const auto wait = std::make_shared<const Wait>(Wait{now + length});
    wait_ = wait;
    queue->postAfter(length, [weakSelf = weak_from_this(), wait] {
        if (const auto self = weakSelf.lock()) self->waitEnded(wait);
    });
}

void LinuxApplication::waitEnded(const std::shared_ptr<const Wait>& wait) {
    if (wait_.lock() != wait) return;
    wait_.reset();
    deliverDue();
}

void LinuxApplication::deliverDue() {
    // If the file cannot be written, the notification is delivered all the same: better twice than never.
    while (const auto due = takeDue(clock_->now())) {
        if (callbacks_.deliverLocalNotification) callbacks_.deliverLocalNotification(due->notification);
    }
    waitForNext();
}

}  // namespace vorlane
