#include "Platform/Linux/AlwaysAllowedUserNotificationCenter.h"

#include <utility>

#include "Platform/Platform.h"

namespace vorlane {

namespace {

constexpr std::int64_t kAuthorized = 2;
constexpr std::int64_t kEnabled = 2;
constexpr std::int64_t kBanner = 1;

UNNotificationSettings allowedSettings() {
    UNNotificationSettings settings;
    settings.authorizationStatus = kAuthorized;
    settings.soundSetting = settings.badgeSetting = settings.alertSetting = kEnabled;
    settings.notificationCenterSetting = settings.lockScreenSetting = kEnabled;
    settings.alertStyle = kBanner;
    return settings;
}

}  // namespace

void AlwaysAllowedUserNotificationCenter::requestAuthorizationWithOptions(std::uint64_t /*options*/,
                                                                          AuthorizationHandler completionHandler) {
    if (!completionHandler) return;
    onMainQueue([handler = std::move(completionHandler)] { handler(true, std::nullopt); });
}

void AlwaysAllowedUserNotificationCenter::getNotificationSettingsWithCompletionHandler(
    SettingsHandler completionHandler) {
    if (!completionHandler) return;
    onMainQueue([handler = std::move(completionHandler)] { handler(allowedSettings()); });
}

void AlwaysAllowedUserNotificationCenter::getNotificationCategoriesWithCompletionHandler(
    CategoriesHandler completionHandler) {
    if (!completionHandler) return;
    Categories categories;
    {
        const std::lock_guard lock(mutex_);
        categories = categories_;
    }
    onMainQueue([handler = std::move(completionHandler), categories = std::move(categories)] { handler(categories); });
}

void AlwaysAllowedUserNotificationCenter::setNotificationCategories(const Categories& categories) {
    const std::lock_guard lock(mutex_);
    categories_ = categories;
}

}  // namespace vorlane
