#include "Platform/Linux/Application/LinuxApplication.h"

#include <algorithm>
#include <utility>

#include "Platform/DispatchQueue.h"

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

TimeInterval LinuxApplication::backgroundTimeRemaining() const {
    if (applicationState() != UIApplicationState::background) return UIApplication::backgroundTimeRemaining();
    return std::clamp(kBackgroundTime - (clock_->now() - stayBegan_), 0.0, kBackgroundTime);
}

void LinuxApplication::backgroundTimeEnded(std::uint64_t stay) {
    if (stay != stay_ || applicationState() != UIApplicationState::background) return;
    expireBackgroundTasks();
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

std::int64_t LinuxApplication::backgroundRefreshStatus() const {
    return callbacks_.setMinimumBackgroundFetchInterval ? UIBackgroundRefreshStatusAvailable
                                                        : UIBackgroundRefreshStatusRestricted;
}

void LinuxApplication::keepScheduledLocalNotifications(const std::string& path) {
    path_ = path;
    restoreScheduled(path);
    waitForNext();
}

void LinuxApplication::didScheduleLocalNotification(const ScheduledLocalNotification& /*entry*/) {
    writeScheduled();
    waitForNext();
}

void LinuxApplication::didCancelLocalNotifications(const std::vector<ScheduledLocalNotification>& /*entries*/) {
    writeScheduled();
    waitForNext();
}

void LinuxApplication::writeScheduled() const {
    if (!path_.empty()) storeScheduled(path_);
}

void LinuxApplication::waitForNext() {
    const auto next = nextFireDate();
    const auto queue = mainQueue_.lock();
    if (!next || !queue) return;
    const double now = clock_->now();
    const TimeInterval length = std::clamp(*next - now, 0.0, kLongestWait);
    // A wait that ends before is enough: whoever schedules many leaves no heap of waits behind.
    if (waitEnd_ && now < *waitEnd_ && *waitEnd_ <= now + length) return;
    waitEnd_ = now + length;
    queue->postAfter(length, [weakSelf = weak_from_this(), wait = ++wait_] {
        const auto self = weakSelf.lock();
        if (!self || self->wait_ != wait) return;
        self->waitEnd_.reset();
        self->deliverDue();
    });
}

void LinuxApplication::deliverDue() {
    while (const auto due = takeDue(clock_->now())) {
        // Out of the file first: killed from here on, the next process does not deliver it again. When the file cannot
        // be written it is delivered all the same; better twice than never.
        writeScheduled();
        if (callbacks_.deliverLocalNotification) callbacks_.deliverLocalNotification(due->notification);
    }
    waitForNext();
}

}  // namespace vorlane
