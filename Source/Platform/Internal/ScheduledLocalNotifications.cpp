#include "Platform/Internal/ScheduledLocalNotifications.h"

#include <algorithm>
#include <limits>
#include <string_view>

#include "Platform/Internal/PropertyListFile.h"
#include "Platform/PropertyList/PropertyListElements.h"

namespace vorlane {

namespace {

constexpr const char* kNotificationsKey = "notifications";
constexpr double kInfinity = std::numeric_limits<double>::infinity();

double dueTime(const UILocalNotification& notification) {
    const double date = notification.fireDate.value_or(-kInfinity);
    return date == date ? date : kInfinity;
}

}  // namespace

ScheduledLocalNotifications::Step::Step(ScheduledLocalNotifications& list) : list_(list) { ++list_.openSteps_; }

ScheduledLocalNotifications::Step::~Step() {
    if (--list_.openSteps_ == 0 && list_.isWriteDue_) list_.didChange();
}

ScheduledLocalNotifications::ScheduledLocalNotifications() = default;

ScheduledLocalNotifications::~ScheduledLocalNotifications() = default;

void ScheduledLocalNotifications::keepInFile(const std::string& path) {
    file_ = std::make_unique<PropertyListFile>(path);
    const auto reading = file_->read();
    // What another process has scheduled is that process's to deliver, as long as it lives.
    if (file_->isOwned()) restore(reading.contents);
}

void ScheduledLocalNotifications::restore(const Value& root) {
    const auto list = root.find(kNotificationsKey);
    if (list == root.end() || !list->is_array()) return;
    for (const auto& element : *list) {
        const auto* fields = element.get_ptr<const Dictionary*>();
        if (fields) insert(UILocalNotification::fromDictionary(*fields));
    }
}

ScheduledLocalNotifications::Entry ScheduledLocalNotifications::add(const UILocalNotification& notification) {
    const auto number = insert(notification);
    didChange();
    return {number, notification};
}

std::vector<ScheduledLocalNotifications::Entry> ScheduledLocalNotifications::remove(
    const UILocalNotification& notification) {
    std::vector<Entry> removed;
    for (const auto number : numbersOf(notification)) removed.push_back(extract(number));
    if (!removed.empty()) didChange();
    return removed;
}

std::vector<ScheduledLocalNotifications::Entry> ScheduledLocalNotifications::removeAll() {
    std::vector<Entry> removed;
    removed.reserve(records_.size());
    while (!records_.empty()) removed.push_back(extract(records_.begin()->first));
    if (!removed.empty()) didChange();
    return removed;
}

std::optional<ScheduledLocalNotifications::Entry> ScheduledLocalNotifications::takeDue(double time) {
    if (dueTimes_.empty() || !(dueTimes_.begin()->first <= time)) return std::nullopt;
    auto due = extract(dueTimes_.begin()->second);
    didChange();
    return due;
}

std::optional<double> ScheduledLocalNotifications::nextFireDate() const {
    if (dueTimes_.empty()) return std::nullopt;
    return dueTimes_.begin()->first;
}

std::vector<ScheduledLocalNotifications::Entry> ScheduledLocalNotifications::entries() const {
    std::vector<Entry> entries;
    entries.reserve(records_.size());
    for (const auto& [number, record] : records_) entries.push_back({number, record.notification});
    return entries;
}

std::vector<UILocalNotification> ScheduledLocalNotifications::notifications() const {
    std::vector<UILocalNotification> notifications;
    notifications.reserve(records_.size());
    for (const auto& [number, record] : records_) notifications.push_back(record.notification);
    return notifications;
}

std::uint64_t ScheduledLocalNotifications::insert(const UILocalNotification& notification) {
    const std::uint64_t number = ++newestNumber_;
    records_.emplace_hint(records_.end(), number, Record{notification, {}});
    dueTimes_.emplace(dueTime(notification), number);
    identities_.emplace(notification.identity_, number);
    return number;
}

ScheduledLocalNotifications::Entry ScheduledLocalNotifications::extract(std::uint64_t number) {
    auto record = records_.extract(number);
    auto& notification = record.mapped().notification;
    dueTimes_.erase({dueTime(notification), number});
    const auto [first, end] = identities_.equal_range(notification.identity_);
    identities_.erase(std::find_if(first, end, [number](const auto& identity) { return identity.second == number; }));
    return {number, std::move(notification)};
}

/// The numbers, ascending, of the entries that `remove()` removes.
std::vector<std::uint64_t> ScheduledLocalNotifications::numbersOf(const UILocalNotification& notification) const {
    std::vector<std::uint64_t> numbers;
    const auto [first, end] = identities_.equal_range(notification.identity_);
    for (auto entry = first; entry != end; ++entry) numbers.push_back(entry->second);
    std::ranges::sort(numbers);
    if (!numbers.empty()) return numbers;
    const double due = dueTime(notification);
    for (auto entry = dueTimes_.lower_bound({due, 0}); entry != dueTimes_.end() && entry->first == due; ++entry) {
        const auto& candidate = records_.at(entry->second).notification;
        const bool isReadBack = candidate.isReadBack_ || notification.isReadBack_;
        if (isReadBack && candidate == notification) return {entry->second};
    }
    return {};
}

void ScheduledLocalNotifications::didChange() {
    isWriteDue_ = openSteps_ > 0;
    if (!isWriteDue_ && file_) write();
}

void ScheduledLocalNotifications::write() {
    if (PropertyListFile::Step::postpone(*file_, [this] { write(); })) return;
    if (const auto stored = file_->readAgain()) restore(*stored);
    std::vector<std::string_view> elements;
    elements.reserve(records_.size());
    for (const auto& [number, record] : records_) {
        // A property list cannot hold such a date; read back without it, the notification would be due at once.
        if (dueTime(record.notification) == kInfinity) continue;
        if (record.element.empty()) record.element = PropertyListElements::element(record.notification.toDictionary());
        elements.emplace_back(record.element);
    }
    file_->writeBytes(PropertyListElements::listOf(kNotificationsKey, elements));
}

}  // namespace vorlane
