#pragma once

#include <functional>
#include <mutex>

#include "Platform/UNUserNotificationCenter.h"
#include "Public/VLExport.h"

namespace vorlane {

/// The notification centre of a host that asks the user itself, or that needs no permission: every request is granted
/// and every setting is enabled, but for car play. Handlers run on the main queue. Any thread.
///
/// For `LinuxPlatform::Options::userNotificationCenter`.
class VORLANE_EXPORT AlwaysAllowedUserNotificationCenter : public UNUserNotificationCenter {
public:
    void requestAuthorizationWithOptions(std::uint64_t options, AuthorizationHandler completionHandler) override;
    void getNotificationSettingsWithCompletionHandler(SettingsHandler completionHandler) override;
    void getNotificationCategoriesWithCompletionHandler(CategoriesHandler completionHandler) override;
    void setNotificationCategories(const Categories& categories) override;

private:
    std::mutex mutex_;
    // Guarded by mutex_.
    Categories categories_;
};

}  // namespace vorlane
