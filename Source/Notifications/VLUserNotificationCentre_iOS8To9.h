#pragma once

#include <memory>

#include "Notifications/VLUserNotificationCentre.h"

namespace vorlane {

class UIApplication;
class VLBackgroundRefreshHelper;
class VLSettings;

/// Platforms below 10, where the application object asks the user and reports the permissions. Any thread.
class VLUserNotificationCentre_iOS8To9 : public VLUserNotificationCentre,
                                         public std::enable_shared_from_this<VLUserNotificationCentre_iOS8To9> {
public:
    /// `init:settings:backgroundRefreshHelper:`
    VLUserNotificationCentre_iOS8To9(std::weak_ptr<UIApplication> application, std::shared_ptr<VLSettings> settings,
                                     std::shared_ptr<VLBackgroundRefreshHelper> backgroundRefreshHelper);

    /// Calls the handler with -1 (prompted) and then asks the user, both on the main queue; other threads wait for it.
    /// So prompts appear in the order of the requests. The host reports the user's answer.
    void requestNotificationAuthorisation(std::uint64_t options, AuthorisationHandler completionHandler) override;
    /// If nothing is allowed, the settings that were registered last show whether the user was ever asked.
    void getNotificationSettingsWithCompletionHandler(SettingsHandler completionHandler) override;
    bool isProvisionalAuthorisationSupported() const override { return false; }

    /// `VLAuthOptionsToUIUserNotificationType:` keeps badge, sound and alert.
    static std::uint64_t VLAuthOptionsToUIUserNotificationType(std::uint64_t options);

private:
    VLUserNotificationSettings currentSettings() const;
    bool hasUserDecided() const;

    // Fixed at construction.
    const std::weak_ptr<UIApplication> application_;
    const std::shared_ptr<VLSettings> settings_;
    const std::shared_ptr<VLBackgroundRefreshHelper> backgroundRefreshHelper_;
};

}  // namespace vorlane
