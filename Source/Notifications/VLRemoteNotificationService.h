#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "Platform/NSError.h"
#include "Platform/NSNotificationCenter.h"
#include "Platform/UIApplication.h"
#include "Public/VLUserNotificationSettings.h"
#include "Public/VLValue.h"

namespace vorlane {

class VLBackgroundRefreshHelper;
class VLPayloadBuilder;
class VLSettings;
class VLURLBuilder;
class VLURLSession;
class VLUserNotificationCentre;

/// Keeps the service's record of this device's push token, and of what the user allows, in step with the platform;
/// takes the phash of a remote notification that opened the application. Called by the facade, the session service and
/// the notification centre.
///
/// Every handler runs once, on the main queue, after the call that took it has returned. Errors: those of the HTTP
/// layer. A failed registration is tried again with the next occasion, since what was registered last stays as it was.
class VLRemoteNotificationService : public std::enable_shared_from_this<VLRemoteNotificationService> {
public:
    using ErrorHandler = std::function<void(std::optional<NSError> error)>;
    /// Whether a registration (an unregistration) was done; and what went wrong.
    using OutcomeHandler = std::function<void(bool isDone, std::optional<NSError> error)>;
    using FetchHandler = std::function<void(UIBackgroundFetchResult result)>;

    /// What the service works with.
    struct Collaborators {
        std::shared_ptr<VLSettings> settings;
        std::shared_ptr<NSNotificationCenter> notificationCenter;
        std::weak_ptr<UIApplication> application;
        std::shared_ptr<VLURLSession> urlSession;
        std::shared_ptr<VLURLBuilder> urlBuilder;
        std::shared_ptr<VLPayloadBuilder> payloadBuilder;
        std::shared_ptr<VLUserNotificationCentre> vlUserNotificationCentre;
        std::shared_ptr<VLBackgroundRefreshHelper> backgroundRefreshHelper;
    };

    /// `initWithSettings:withNotificationCenter:withApplication:urlSession:urlBuilder:payloadBuilder:vlUserNotificationCentre:`
    /// `backgroundRefreshHelper:` makes a service that watches for the application's way to the foreground.
    static std::shared_ptr<VLRemoteNotificationService> serviceWith(Collaborators collaborators);
    ~VLRemoteNotificationService();

    /// `registerDeviceTokenData:completionHandler:` registers a token with the settings of this moment, changed or not.
    /// The handler may be empty.
    void registerDeviceTokenData(const Data& token, ErrorHandler completionHandler);

    /// `registerDeviceTokenIfNotificationSettingsChangedWithNotification:` does so one second later, when the
    /// platform's settings have settled.
    void registerDeviceTokenIfNotificationSettingsChangedWithNotification(const NSNotification& notification);
    /// `registerDeviceTokenIfNotificationSettingsChangedWithCompletionHandler:` registers the stored token when the
    /// settings of this moment are not those registered last. The handler may be empty.
    void registerDeviceTokenIfNotificationSettingsChangedWithCompletionHandler(OutcomeHandler completionHandler);
    /// `registerDeviceTokenIfNotificationSettingsChangedWithNewSettings:completionHandler:` does so for the given
    /// settings.
    void registerDeviceTokenIfNotificationSettingsChangedWithNewSettings(const VLUserNotificationSettings& newSettings,
                                                                         OutcomeHandler completionHandler);
    /// `registerDeviceTokenIfNotificationSettingsChangedForBackgroundFetch:`. The handler must not be empty.
    void registerDeviceTokenIfNotificationSettingsChangedForBackgroundFetch(FetchHandler completionHandler);

    /// `registerDeviceToken:notificationSettings:completionHandler:` sends a registration. The token is stored whatever
    /// comes of it, the settings only on success. The handler may be empty.
    void registerDeviceToken(const Data& token, const VLUserNotificationSettings& notificationSettings,
                             OutcomeHandler completionHandler);

    /// `unregisterDeviceWithCompletionHandler:` takes the stored token back and forgets it, also when that fails. The
    /// handler may be empty.
    void unregisterDeviceWithCompletionHandler(OutcomeHandler completionHandler);

    /// `application:didReceiveRemoteNotification:`. Main queue.
    void didReceiveRemoteNotification(const std::shared_ptr<UIApplication>& application, const Dictionary& userInfo);

    /// `didRegisterUserNotificationSettings:`, the answer of the user on platforms below 10.
    void didRegisterUserNotificationSettings(const UIUserNotificationSettings& settings);

    /// `deviceTokenToString:` gives two lower-case hexadecimal digits for each byte.
    static std::string deviceTokenToString(const Data& token);

private:
    explicit VLRemoteNotificationService(Collaborators collaborators);

    void observeForeground();
    void takePhash(const std::string& phash, const Dictionary& userInfo);
    VLUserNotificationSettings deniedSettings() const;
    Dictionary payloadWithBody(Dictionary body) const;

    // Fixed at construction.
    const Collaborators with_;
    NSNotificationCenter::Token foregroundObserver_ = 0;
};

}  // namespace vorlane
