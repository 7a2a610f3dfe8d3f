#include "Notifications/VLUserNotificationCentre_iOS8To9.h"

#include <algorithm>
#include <utility>

#include "Core/Base/VLSettings.h"
#include "Notifications/VLAuthorisation.h"
#include "Notifications/VLBackgroundRefreshHelper.h"
#include "Platform/DispatchSemaphore.h"
#include "Platform/Platform.h"
#include "Platform/UIApplication.h"

namespace vorlane {

namespace {

constexpr std::int64_t kUnknown = -1, kDisabled = 1, kEnabled = 2;

}  // namespace

VLUserNotificationCentre_iOS8To9::VLUserNotificationCentre_iOS8To9(
    std::weak_ptr<UIApplication> application, std::shared_ptr<VLSettings> settings,
    std::shared_ptr<VLBackgroundRefreshHelper> backgroundRefreshHelper)
    : application_(std::move(application)),
      settings_(std::move(settings)),
      backgroundRefreshHelper_(std::move(backgroundRefreshHelper)) {}

void VLUserNotificationCentre_iOS8To9::requestNotificationAuthorisation(std::uint64_t options,
                                                                        AuthorisationHandler completionHandler) {
    if (!Platform::current().mainQueue()->isCurrent()) {
        const auto isAsked = Platform::current().makeSemaphore();
        onMainQueue([self = shared_from_this(), options, handler = std::move(completionHandler), isAsked] {
            self->requestNotificationAuthorisation(options, handler);
            isAsked->signal();
        });
        // Without this, a location prompt that is requested next on this thread would appear first.
        isAsked->wait();
        return;
    }
    const auto application = application_.lock();
    const UIUserNotificationCategory basic{VLBasicNotificationCategory};
    UIUserNotificationSettings wanted;
    if (application) wanted.categories = application->currentUserNotificationSettings().categories;
    if (std::ranges::find(wanted.categories, basic) == wanted.categories.end()) wanted.categories.push_back(basic);
    wanted.types = VLAuthOptionsToUIUserNotificationType(options);
    if (completionHandler) completionHandler(VLAuthorisation::Prompted, std::nullopt);
    if (application) application->registerUserNotificationSettings(wanted);
}

void VLUserNotificationCentre_iOS8To9::getNotificationSettingsWithCompletionHandler(SettingsHandler completionHandler) {
    onMainQueue([self = shared_from_this(), handler = std::move(completionHandler)] {
        if (handler) handler(self->currentSettings());
    });
}

VLUserNotificationSettings VLUserNotificationCentre_iOS8To9::currentSettings() const {
    const auto application = application_.lock();
    const auto types = application ? application->currentUserNotificationSettings().types : 0;
    const auto setting = [types](std::uint64_t type) { return (types & type) != 0 ? kEnabled : kDisabled; };
    VLUserNotificationSettings settings;
    if (types != 0) {
        settings.authorisationStatus = VLAuthorisation::Authorised;
        settings.sound = setting(UIUserNotificationTypeSound);
        settings.badge = setting(UIUserNotificationTypeBadge);
        settings.alertSetting = setting(UIUserNotificationTypeAlert);
    } else {
        const bool isDenied = hasUserDecided();
        settings.authorisationStatus = isDenied ? VLAuthorisation::Denied : VLAuthorisation::NotDetermined;
        settings.sound = settings.badge = settings.alertSetting = isDenied ? kDisabled : kUnknown;
    }
    settings.silentPush = backgroundRefreshHelper_->getUIKitBackgroundRefreshSetting();
    settings.notificationCentre = settings.lockScreen = settings.carPlay = settings.alertStyle = kUnknown;
    return settings;
}

/// Whether the settings that were registered last show that the user was asked, with any result.
bool VLUserNotificationCentre_iOS8To9::hasUserDecided() const {
    const auto stored = settings_->notificationSettings();
    if (!stored) return false;
    const auto status = stored->authorisationStatus;
    return status >= VLAuthorisation::Prompted && status <= VLAuthorisation::Provisional &&
           status != VLAuthorisation::NotDetermined;
}

std::uint64_t VLUserNotificationCentre_iOS8To9::VLAuthOptionsToUIUserNotificationType(std::uint64_t options) {
    return options & (UIUserNotificationTypeBadge | UIUserNotificationTypeSound | UIUserNotificationTypeAlert);
}

}  // namespace vorlane
