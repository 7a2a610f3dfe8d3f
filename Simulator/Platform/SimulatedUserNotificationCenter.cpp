#include "Simulator/Platform/SimulatedUserNotificationCenter.h"

#include <utility>

#include "Platform/DispatchQueue.h"

namespace vorlane {

namespace {

using Answer = SimulatedUser::Answer;

constexpr std::uint64_t kProvisional = 64;

/// The settings of a user who has allowed or denied everything.
UNNotificationSettings settingsAllThe(std::int64_t status, std::int64_t setting, std::int64_t style) {
    return {status, setting, setting, setting, setting, setting, setting, style};
}

}  // namespace

SimulatedUserNotificationCenter::SimulatedUserNotificationCenter(std::shared_ptr<SimulatedUser> user,
                                                                 std::shared_ptr<DispatchQueue> mainQueue,
                                                                 std::shared_ptr<DispatchQueue> answerQueue, Tell tell)
    : user_(std::move(user)),
      mainQueue_(std::move(mainQueue)),
      answerQueue_(std::move(answerQueue)),
      tell_(std::move(tell)) {}

void SimulatedUserNotificationCenter::requestAuthorizationWithOptions(std::uint64_t options,
                                                                      AuthorizationHandler completionHandler) {
    // Prompts appear on the main thread only.
    mainQueue_->post([self = shared_from_this(), options, handler = std::move(completionHandler)] {
        self->user_->prompt("notifications", options,
                            [self, options, handler](Answer answer) { self->answered(answer, options, handler); });
    });
}

void SimulatedUserNotificationCenter::answered(Answer answer, std::uint64_t options,
                                               const AuthorizationHandler& handler) {
    if (answer == Answer::Allow) setNotificationSettings(settingsAllThe((options & kProvisional) != 0 ? 3 : 2, 2, 1));
    if (answer == Answer::Deny) setNotificationSettings(settingsAllThe(1, 1, 0));
    std::optional<NSError> error;
    if (answer == Answer::Error) {
        error = NSError(UNErrorDomain, UNErrorCodeNotificationsNotAllowed,
                        {{NSLocalizedDescriptionKey, "Notifications are not allowed for this application"}});
    }
    answerQueue_->post([handler, isGranted = answer == Answer::Allow, error] {
        if (handler) handler(isGranted, error);
    });
}

void SimulatedUserNotificationCenter::getNotificationSettingsWithCompletionHandler(SettingsHandler completionHandler) {
    answerQueue_->post([handler = std::move(completionHandler), settings = notificationSettings()] {
        if (handler) handler(settings);
    });
}

void SimulatedUserNotificationCenter::getNotificationCategoriesWithCompletionHandler(
    CategoriesHandler completionHandler) {
    answerQueue_->post([handler = std::move(completionHandler), categories = notificationCategories()] {
        if (handler) handler(categories);
    });
}

void SimulatedUserNotificationCenter::setNotificationCategories(const Categories& categories) {
    {
        const std::lock_guard lock(mutex_);
        categories_ = categories;
    }
    Array identifiers;
    for (const auto& category : categories) identifiers.emplace_back(category.identifier);
    tell_("categories", {{"identifiers", std::move(identifiers)}});
}

UNNotificationSettings SimulatedUserNotificationCenter::notificationSettings() const {
    const std::lock_guard lock(mutex_);
    return settings_;
}

void SimulatedUserNotificationCenter::setNotificationSettings(const UNNotificationSettings& settings) {
    const std::lock_guard lock(mutex_);
    settings_ = settings;
}

UNUserNotificationCenter::Categories SimulatedUserNotificationCenter::notificationCategories() const {
    const std::lock_guard lock(mutex_);
    return categories_;
}

}  // namespace vorlane
