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

/// Registers this device's push token and the user's notification settings with the server, and stores the phash of a
/// remote notification that opened the application. Called by the facade, the session service and the notification
/// centre.
///
/// Every handler runs once, on the main queue, after the call has returned. Errors: those of the HTTP layer. A failed
/// registration leaves the settings that were registered last unchanged, so the next check registers again.
class VLRemoteNotificationService : public std::enable_shared_from_this<VLRemoteNotificationService> {
public:
    using ErrorHandler = std::function<void(std::optional<NSError> error)>;
    /// Receives whether the device was registered or unregistered, and an error if the request failed.
    using OutcomeHandler = std::function<void(bool isDone, std::optional<NSError> error)>;
    using FetchHandler = std::function<void(UIBackgroundFetchResult result)>;

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
    /// `backgroundRefreshHelper:` makes a service that observes the application entering the foreground.
    static std::shared_ptr<VLRemoteNotificationService> serviceWith(Collaborators collaborators);
    ~VLRemoteNotificationService();

    /// `registerDeviceTokenData:completionHandler:` registers a token with the current settings, whether they have
    /// changed or not. The handler may be empty.
    void registerDeviceTokenData(const Data& token, ErrorHandler completionHandler);

    /// `registerDeviceTokenIfNotificationSettingsChangedWithNotification:` checks for changes one second later, when
    /// the platform's settings have settled.
    void registerDeviceTokenIfNotificationSettingsChangedWithNotification(const NSNotification& notification);
    /// `registerDeviceTokenIfNotificationSettingsChangedWithCompletionHandler:` registers the stored token if the
    /// current settings differ from those registered last. The handler may be empty.
    void registerDeviceTokenIfNotificationSettingsChangedWithCompletionHandler(OutcomeHandler completionHandler);
    /// `registerDeviceTokenIfNotificationSettingsChangedWithNewSettings:completionHandler:` does the same with the
    /// given settings.
    void registerDeviceTokenIfNotificationSettingsChangedWithNewSettings(const VLUserNotificationSettings& newSettings,
                                                                         OutcomeHandler completionHandler);
    /// `registerDeviceTokenIfNotificationSettingsChangedForBackgroundFetch:`. The handler must not be empty.
    void registerDeviceTokenIfNotificationSettingsChangedForBackgroundFetch(FetchHandler completionHandler);

    /// `registerDeviceToken:notificationSettings:completionHandler:` sends a registration. The token is stored before,
    /// the settings after the request has succeeded. The handler may be empty.
    void registerDeviceToken(const Data& token, const VLUserNotificationSettings& notificationSettings,
                             OutcomeHandler completionHandler);

    /// `unregisterDeviceWithCompletionHandler:` unregisters the stored token and clears it, even if the request fails.
    /// The handler may be empty.
    void unregisterDeviceWithCompletionHandler(OutcomeHandler completionHandler);

    /// `application:didReceiveRemoteNotification:`. Main queue.
    void didReceiveRemoteNotification(const std::shared_ptr<UIApplication>& application, const Dictionary& userInfo);

    /// `didRegisterUserNotificationSettings:` takes the user's answer on platforms below 10.
    void didRegisterUserNotificationSettings(const UIUserNotificationSettings& settings);

    /// `deviceTokenToString:` returns two lower-case hexadecimal digits for each byte.
    static std::string deviceTokenToString(const Data& token);

private:
    explicit VLRemoteNotificationService(Collaborators collaborators);

    void observeForeground();
    void takePhash(const std::string& phash, const Dictionary& userInfo);
    VLUserNotificationSettings deniedSettings() const;
    Dictionary payloadWithBody(Dictionary body) const;

    // Fixed at construction.
    const Collaborators collaborators_;
    NSNotificationCenter::Token foregroundObserver_ = 0;
};

}  // namespace vorlane
