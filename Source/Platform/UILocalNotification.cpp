#include "Platform/UILocalNotification.h"

#include <fmt/format.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <limits>
#include <tuple>

#include "Public/VLValue.h"

namespace vorlane {

namespace {

void put(Dictionary& dictionary, const char* key, const auto& field) {
    if (field) dictionary[key] = *field;
}

std::optional<std::string> stringField(const Dictionary& dictionary, const char* key) {
    const auto found = dictionary.find(key);
    if (found == dictionary.end() || !found->second.is_string()) return std::nullopt;
    return found->second.get<std::string>();
}

const Value* numberField(const Dictionary& dictionary, const char* key) {
    const auto found = dictionary.find(key);
    return found != dictionary.end() && found->second.is_number() ? &found->second : nullptr;
}

/// Truncated and clamped to the range of 64 bits; 0 for NaN.
std::int64_t integerOf(const Value& number) {
    constexpr auto kLeast = std::numeric_limits<std::int64_t>::min();
    constexpr auto kMost = std::numeric_limits<std::int64_t>::max();
    if (number.is_number_unsigned()) {
        return static_cast<std::int64_t>(std::min(number.get<std::uint64_t>(), static_cast<std::uint64_t>(kMost)));
    }
    if (!number.is_number_float()) return number.get<std::int64_t>();
    const auto value = number.get<double>();
    if (std::isnan(value)) return 0;
    if (value <= static_cast<double>(kLeast)) return kLeast;
    return value < -static_cast<double>(kLeast) ? static_cast<std::int64_t>(value) : kMost;
}

std::uint64_t newIdentity() {
    static constinit std::atomic<std::uint64_t> last = 0;
    return ++last;
}

auto fieldsOf(const UILocalNotification& notification) {
    return std::tie(notification.fireDate, notification.timeZone, notification.alertBody, notification.alertAction,
                    notification.soundName, notification.applicationIconBadgeNumber, notification.userInfo);
}

}  // namespace

UILocalNotification::UILocalNotification() : identity_(newIdentity()) {}
UILocalNotification::UILocalNotification(const UILocalNotification&) = default;
UILocalNotification::UILocalNotification(UILocalNotification&&) noexcept = default;
UILocalNotification& UILocalNotification::operator=(const UILocalNotification&) = default;
UILocalNotification& UILocalNotification::operator=(UILocalNotification&&) noexcept = default;
UILocalNotification::~UILocalNotification() = default;

bool UILocalNotification::operator==(const UILocalNotification& other) const {
    return fieldsOf(*this) == fieldsOf(other);
}

Dictionary UILocalNotification::toDictionary() const {
    Dictionary dictionary{{"applicationIconBadgeNumber", applicationIconBadgeNumber}};
    put(dictionary, "fireDate", fireDate);
    put(dictionary, "timeZone", timeZone);
    put(dictionary, "alertBody", alertBody);
    put(dictionary, "alertAction", alertAction);
    put(dictionary, "soundName", soundName);
    put(dictionary, "userInfo", userInfo);
    return dictionary;
}

UILocalNotification UILocalNotification::fromDictionary(const Dictionary& dictionary) {
    UILocalNotification notification;
    notification.isReadBack_ = true;
    if (const auto* date = numberField(dictionary, "fireDate")) notification.fireDate = date->get<double>();
    notification.timeZone = stringField(dictionary, "timeZone");
    notification.alertBody = stringField(dictionary, "alertBody");
    notification.alertAction = stringField(dictionary, "alertAction");
    notification.soundName = stringField(dictionary, "soundName");
    if (const auto* badge = numberField(dictionary, "applicationIconBadgeNumber")) {
        notification.applicationIconBadgeNumber = integerOf(*badge);
    }
    const auto userInfo = dictionary.find("userInfo");
    if (userInfo != dictionary.end() && userInfo->second.is_object()) {
        notification.userInfo = userInfo->second.get_ref<const Dictionary&>();
    }
    return notification;
}

std::string UILocalNotification::description() const {
    return fmt::format("<UILocalNotification {}>",
                       Value(toDictionary()).dump(-1, ' ', false, Value::error_handler_t::replace));
}

}  // namespace vorlane
