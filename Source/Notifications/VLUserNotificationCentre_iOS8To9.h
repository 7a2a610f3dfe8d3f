#pragma once

#include <memory>

#include "Notifications/VLUserNotificationCentre.h"

namespace vorlane {

class UIApplication;
class VLBackgroundRefreshHelper;
class VLSettings;

/// Platforms below 10, where the application object asks the user and tells what is allowed. Any thread.
class VLUserNotificationCentre_iOS8To9 : public VLUserNotificationCentre,
                                         public std::enable_shared_from_this<VLUserNotificationCentre_iOS8To9> {
public:
    /// `init:settings:backgroundRefreshHelper:`
    VLUserNotificationCentre_iOS8To9(std::weak_ptr<UIApplication> application, std::shared_ptr<VLSettings> settings,
                                     std::shared_ptr<VLBackgroundRefreshHelper> backgroundRefreshHelper);

    /// Tells that the user is being prompted (-1): within the call on the main queue, where the user is asked. The
    /// answer arrives through the host.
    void requestNotificationAuthorisation(std::uint64_t options, AuthorisationHandler completionHandler) override;
    /// Where nothing is allowed, the settings registered last tell whether the user was ever asked.
    void getNotificationSettingsWithCompletionHandler(SettingsHandler completionHandler) override;
    bool isProvisionalAuthorisationSupported() const override { return false; }

    /// `VLAuthOptionsToUIUserNotificationType:` leaves badge, sound and alert.
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
