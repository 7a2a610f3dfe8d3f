#pragma once

#include <memory>
#include <mutex>

#include "Platform/UNUserNotificationCenter.h"

namespace vorlane {

class DispatchQueue;

/// The notification centre of a process without a desktop: the user cannot be asked, and all settings keep their
/// defaults. Calls handlers on the main queue.
class QuietUserNotificationCenter : public UNUserNotificationCenter {
public:
    explicit QuietUserNotificationCenter(std::weak_ptr<DispatchQueue> mainQueue);

    /// Reports an error in `UNErrorDomain`.
    void requestAuthorizationWithOptions(std::uint64_t options, AuthorizationHandler completionHandler) override;
    void getNotificationSettingsWithCompletionHandler(SettingsHandler completionHandler) override;
    void getNotificationCategoriesWithCompletionHandler(CategoriesHandler completionHandler) override;
    void setNotificationCategories(const Categories& categories) override;

private:
    void post(std::function<void()> task) const;

    // Fixed at construction.
    const std::weak_ptr<DispatchQueue> mainQueue_;

    std::mutex mutex_;
    // Guarded by mutex_.
    Categories categories_;
};

}  // namespace vorlane
