#include "Platform/UIApplication.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "Platform/NSFileManager.h"
#include "Platform/NSNotificationCenter.h"
#include "Platform/NSPropertyListSerialization.h"
#include "Platform/UIWindow.h"

namespace vorlane {

namespace {

constexpr const char* kNotificationsKey = "notifications";

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
    didScheduleLocalNotification(addScheduled(notification));
}

std::vector<UILocalNotification> UIApplication::scheduledLocalNotifications() const {
    std::vector<UILocalNotification> notifications;
    notifications.reserve(scheduled_.size());
    for (const auto& [number, notification] : scheduled_) notifications.push_back(notification);
    return notifications;
}

void UIApplication::cancelLocalNotification(const UILocalNotification& notification) {
    std::vector<ScheduledLocalNotification> cancelled;
    for (const auto number : numbersOf(notification)) cancelled.push_back(take(number));
    if (!cancelled.empty()) didCancelLocalNotifications(cancelled);
}

void UIApplication::cancelAllLocalNotifications() {
    std::vector<ScheduledLocalNotification> cancelled;
    while (!scheduled_.empty()) cancelled.push_back(take(scheduled_.begin()->first));
    if (!cancelled.empty()) didCancelLocalNotifications(cancelled);
}

/// The numbers, ascending, under which that notification is scheduled; where it is not, that of one it may stand for.
std::vector<std::uint64_t> UIApplication::numbersOf(const UILocalNotification& notification) const {
    std::vector<std::uint64_t> numbers;
    const auto [first, end] = identities_.equal_range(notification.identity_);
    for (auto entry = first; entry != end; ++entry) numbers.push_back(entry->second);
    std::ranges::sort(numbers);
    if (!numbers.empty()) return numbers;
    // Read back in another way than from the list of this process: its fields, the date among them, tell which one is
    // meant.
    const double due = dueTime(notification);
    for (auto entry = dueTimes_.lower_bound({due, 0}); entry != dueTimes_.end() && entry->first == due; ++entry) {
        const auto& candidate = scheduled_.at(entry->second);
        const bool isReadBack = candidate.isReadBack_ || notification.isReadBack_;
        if (isReadBack && candidate == notification) return {entry->second};
    }
    return {};
}

UIApplication::ScheduledLocalNotification UIApplication::addScheduled(const UILocalNotification& notification) {
    const std::uint64_t number = ++newestNumber_;
    scheduled_.emplace_hint(scheduled_.end(), number, notification);
    dueTimes_.emplace(dueTime(notification), number);
    identities_.emplace(notification.identity_, number);
    return {number, notification};
}

UIApplication::ScheduledLocalNotification UIApplication::take(std::uint64_t number) {
    auto entry = scheduled_.extract(number);
    auto& notification = entry.mapped();
    dueTimes_.erase({dueTime(notification), number});
    const auto [first, end] = identities_.equal_range(notification.identity_);
    identities_.erase(std::find_if(first, end, [number](const auto& identity) { return identity.second == number; }));
    return {number, std::move(notification)};
}

std::optional<UIApplication::ScheduledLocalNotification> UIApplication::takeDue(double time) {
    if (dueTimes_.empty() || !(dueTimes_.begin()->first <= time)) return std::nullopt;
    return take(dueTimes_.begin()->second);
}

std::optional<double> UIApplication::nextFireDate() const {
    if (dueTimes_.empty()) return std::nullopt;
    return dueTimes_.begin()->first;
}

void UIApplication::restoreScheduled(const std::string& path) {
    const auto root = NSPropertyListSerialization::dictionaryWithContentsOfFile(path);
    if (!root && NSFileManager::fileExistsAtPath(path)) NSFileManager::moveItemAtPath(path, path + ".corrupt");
    const auto found = root ? root->find(kNotificationsKey) : Dictionary::const_iterator();
    if (!root || found == root->end() || !found->second.is_array()) return;
    for (const auto& entry : found->second) {
        const auto* fields = entry.get_ptr<const Dictionary*>();
        if (fields) addScheduled(UILocalNotification::fromDictionary(*fields));
    }
}

void UIApplication::storeScheduled(const std::string& path) const {
    Array notifications;
    notifications.reserve(scheduled_.size());
    for (const auto& [number, notification] : scheduled_) {
        // A property list holds no such date: without one it would be due at once in the next process.
        const bool neverComes = dueTime(notification) == std::numeric_limits<double>::infinity();
        if (!neverComes) notifications.emplace_back(notification.toDictionary());
    }
    NSPropertyListSerialization::writeToFile({{kNotificationsKey, std::move(notifications)}}, path);
}

std::map<UIBackgroundTaskIdentifier, std::string> UIApplication::backgroundTasks() const {
    const std::lock_guard lock(mutex_);
    std::map<UIBackgroundTaskIdentifier, std::string> names;
    for (const auto& [identifier, task] : backgroundTasks_) names.emplace(identifier, task.name);
    return names;
}

}  // namespace vorlane
