#include "Platform/Linux/Application/QuietUserNotificationCenter.h"

#include <utility>

#include "Platform/DispatchQueue.h"

namespace vorlane {

QuietUserNotificationCenter::QuietUserNotificationCenter(std::weak_ptr<DispatchQueue> mainQueue)
    : mainQueue_(std::move(mainQueue)) {}

void QuietUserNotificationCenter::requestAuthorizationWithOptions(std::uint64_t /*options*/,
                                                                  AuthorizationHandler completionHandler) {
    post([handler = std::move(completionHandler)] {
        const NSError error(UNErrorDomain, UNErrorCodeNotificationsNotAllowed,
                            {{NSLocalizedDescriptionKey, "Notifications are not allowed for this application"}});
        if (handler) handler(false, error);
    });
}

void QuietUserNotificationCenter::getNotificationSettingsWithCompletionHandler(SettingsHandler completionHandler) {
    post([handler = std::move(completionHandler)] {
        if (handler) handler({});
    });
}

void QuietUserNotificationCenter::getNotificationCategoriesWithCompletionHandler(CategoriesHandler completionHandler) {
    Categories categories;
    {
        const std::lock_guard lock(mutex_);
        categories = categories_;
    }
    post([handler = std::move(completionHandler), categories] {
        if (handler) handler(categories);
    });
}

void QuietUserNotificationCenter::setNotificationCategories(const Categories& categories) {
    const std::lock_guard lock(mutex_);
    categories_ = categories;
}

void QuietUserNotificationCenter::post(std::function<void()> task) const {
    if (const auto queue = mainQueue_.lock()) queue->post(std::move(task));
}

}  // namespace vorlane
