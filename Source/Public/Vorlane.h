#pragma once

/// The interface of the Vorlane SDK. An application includes this header, and `vorlane/Platform/Linux/LinuxPlatform.h`
/// to set up the platform.
///
/// **Vocabulary.** Names such as `UIApplication`, `NSError` and `CLLocationManager` follow the mobile platforms that
/// the service was first built for. Here they are ordinary C++ types, declared in `vorlane/Platform`. The doc comment
/// of an operation starts with its full labelled name, for example `registerEventWithType:label:`.
///
/// **The life of a program**, in ten lines:
///
///     auto platform = std::make_shared<LinuxPlatform>();         // 1. make the platform
///     Platform::install(platform);                               //    and install it before any use of Vorlane
///     auto application = platform->application();
///     auto options = VLSDKOptions::defaultOptions();
///     options.setAppKey("0123456789abcdef0123456789abcdef");     // 2. start the library, once
///     Vorlane::initialiseSDKWithApplication(application, std::nullopt, options);
///     application->didBecomeActive();                            // 3. report the application's states
///     Vorlane::registerEventWithType("Purchase", {{"drink", "coffee"}, {"cups", 2}});
///     platform->run();                                           // 4. run the main queue
///     Platform::shutdown();                                      // 5. stop every thread before the process ends
///
/// **Threads.** Call the operations from the main thread, the one that runs the main queue, unless the doc comment says
/// "Any thread". A completion handler may be empty. Each runs exactly once (an inbox handler may run more often), on
/// the main queue, after the call that received it has returned. No operation blocks on the network.
///
/// **Errors** are passed to the completion handler as an `NSError` with a domain and a code, and logged (`VLLog`). The
/// domains are in `VLErrorDomains.h` and `NSError.h`. "Errors of the request" are:
///
/// | Domain | Code | Cause |
/// |---|---|---|
/// | `NSURLErrorDomain` | an `NSURLError` | no connection, time-out after 10 seconds without progress, cancelled |
/// | `VLErrorDomainNetwork` | 1 | the answer is not HTTP |
/// | `VLErrorDomainNetwork` | HTTP status | the status is not in the range 200 to 299 |
///
/// and "errors of the answer" are `VLErrorDomainNetwork` code 0 for an empty answer and `NSCocoaErrorDomain` code 3840
/// for one that is not a JSON object. The only exceptions are `NSException`s for mistakes of the application itself.
///
/// **Parameters.** A `VLStringArgument` takes a string literal, `std::string` or `std::string_view`; a
/// `VLOptionalStringArgument` takes also `std::optional<std::string>`, `std::nullopt` and `nullptr`. A
/// `VLDictionaryArgument` takes a `Dictionary` or fields in braces. `Dictionary`, `Array` and `Value` are only declared
/// here: include `vorlane/VLValue.h` to make or read one.

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Platform/NSError.h"
#include "Platform/NSException.h"
#include "Platform/NSObject.h"
#include "Platform/NSURL.h"
#include "Platform/Platform.h"
#include "Platform/UIApplication.h"
#include "Platform/UILocalNotification.h"
#include "Platform/UIViewController.h"
#include "Public/VLConstants.h"
#include "Public/VLDeviceTokenHelper.h"
#include "Public/VLDictionaryArgument.h"
#include "Public/VLErrorDomains.h"
#include "Public/VLExport.h"
#include "Public/VLImage.h"
#include "Public/VLInboxMessage.h"
#include "Public/VLInterstitialPlacement.h"
#include "Public/VLInterstitialViewController.h"
#include "Public/VLLog.h"
#include "Public/VLLogger.h"
#include "Public/VLOptionalDictionaryArgument.h"
#include "Public/VLOptionalStringArgument.h"
#include "Public/VLPermissions.h"
#include "Public/VLSDKOptions.h"
#include "Public/VLStringArgument.h"
#include "Public/VLTagType.h"
#include "Public/VLTypes.h"
#include "Public/VLURLs.h"
#include "Public/VLURLsProduction.h"
#include "Public/VLUserNotificationSettings.h"

namespace vorlane {

class VLBootstrap;
class VLEventService;
class VLInboxService;
class VLInterstitialService;
class VLLifeCycleManager;
class VLLocalNotificationService;
class VLPermissionService;
class VLRemoteNotificationService;
class VLSessionService;
class VLSettings;
class VLTagsService;
class VLURLActions;
class VLUserNotificationCentre;

/// The facade: every operation of the library is a static member function of this class.
///
/// The first call of any operation but `setURLs()` and `getURLs()` makes the shared object, its services and the
/// settings file. An operation that is called before start-up uses the app key that an earlier run has stored. Without
/// a stored key its requests carry the key "(null)"; if it is an event, the URL of all later events of this process
/// does, too.
class VORLANE_EXPORT Vorlane {
public:
    /// Receives `nullopt` on success, otherwise the error.
    using ErrorHandler = std::function<void(std::optional<NSError> error)>;
    /// Receives the value or an error. Both are `nullopt` if the service's answer has no value.
    using TagHandler = std::function<void(std::optional<std::string> value, std::optional<NSError> error)>;
    /// Receives whether the operation was done, and the error if it failed. `false` without an error means that there
    /// was nothing to do.
    using OutcomeHandler = std::function<void(bool success, std::optional<NSError> error)>;
    /// Receives `NewData`, `NoData` or `Failed`.
    using FetchHandler = std::function<void(UIBackgroundFetchResult result)>;
    /// Receives what the user allows.
    using NotificationSettingsHandler = std::function<void(const VLUserNotificationSettings& settings)>;
    /// Receives the list of messages, newest first, and the number of unread messages in it.
    using InboxHandler =
        std::function<void(const std::vector<std::shared_ptr<VLInboxMessage>>& messages, std::size_t unreadCount)>;

    // Start-up.

    /// `initialiseSDKWithApplication:launchOptions:sdkOptions:` starts the library. Call it once, at launch.
    ///
    /// It sets the log's threshold, checks the app key, observes the application's states, stores the phash of a
    /// notification that launched the application, asks for a push token, loads the remote configuration, and starts a
    /// session if the application is active already.
    ///
    /// The app key comes from `sdkOptions` or, if it is `nullopt` there, from "VL_App_Key" in the Info dictionary.
    /// `launchOptions` holds the notification that opened the application under
    /// `UIApplicationLaunchOptionsRemoteNotificationKey` or `UIApplicationLaunchOptionsLocalNotificationKey`; pass
    /// `std::nullopt` if there was none.
    ///
    /// Throws an `NSException` named "Missing / Invalid Project Key" unless the key has exactly 32 characters. In that
    /// case only the log's threshold and the options have been set.
    static void initialiseSDKWithApplication(const std::shared_ptr<UIApplication>& application,
                                             const VLOptionalDictionaryArgument& launchOptions,
                                             const VLSDKOptions& sdkOptions);

    /// `sharedInstance` returns the one object of this class, made on first use. Any thread.
    static Vorlane& sharedInstance();

    /// `setURLs:` sets the base URLs of the service, for example
    /// `VLURLsProduction::URLsWithOrigin(*NSURL::URLWithString("https://engage.example"))`. Any thread.
    ///
    /// Call it before every other operation: the services keep the set they were made with. A later call only changes
    /// what `getURLs()` returns, and logs a warning. Null restores the production set if the services have not been
    /// made.
    static void setURLs(std::shared_ptr<VLURLs> urls);
    /// `getURLs` returns the set passed to `setURLs()` last. Without one it returns the production set once the
    /// services have been made, and null before. Any thread.
    static std::shared_ptr<VLURLs> getURLs();

    // Identities.

    /// `setTrackingId:` changes the application's user and reports the change to the service. A new id ends the use of
    /// the previous one: later requests carry the new id, and the push token is registered again. `nullopt` and "" are
    /// ignored.
    ///
    /// The id becomes part of URL paths as it is: "/" separates path segments, and "../" removes the segment before it.
    /// Use an id without them.
    static void setTrackingId(const VLOptionalStringArgument& trackingId);
    /// `trackingId` returns the id of the application's user. An id is made on first use. Any thread.
    static std::string trackingId();
    /// `appKey` returns the key that start-up accepted last, in this or an earlier run, or `nullopt`. Any thread.
    static std::optional<std::string> appKey();
    /// `deviceId` returns the id of this installation. It is made on first use. Any thread.
    static std::string deviceId();
    /// `deviceToken` returns the push token that was registered last, even if the request failed. Returns `nullopt`
    /// before the first and after `unregisterFromRemoteNotificationsWithCompletionHandler()`. Any thread.
    static std::optional<Data> deviceToken();
    /// `setPhash:` sets the hash of the notification that opened the application. `nullopt` clears it. Any thread.
    static void setPhash(const VLOptionalStringArgument& phash);
    /// `phash` returns the hash of the notification that opened the application in this session, or of the inbox
    /// message opened last, or the one set by `setPhash()`, whichever came last. Returns `nullopt` without one. Any
    /// thread.
    static std::optional<std::string> phash();

    // Events. Each is sent at once. An event whose request fails is lost. Any thread.

    /// `registerEventWithType:label:` sends an event. A label of `nullopt` is sent as "".
    static void registerEventWithType(const VLStringArgument& type, const VLOptionalStringArgument& label);
    /// `registerEventWithType:label:phash:` sends an event with a phash of its own in place of the stored one.
    /// `nullopt` stands for the stored one.
    static void registerEventWithType(const VLStringArgument& type, const VLOptionalStringArgument& label,
                                      const VLOptionalStringArgument& phash);
    /// `registerEventWithType:data:` sends an event with a dictionary in place of the label:
    /// `registerEventWithType("Purchase", {{"drink", "coffee"}, {"cups", 2}})`.
    static void registerEventWithType(const VLStringArgument& type, const VLDictionaryArgument& data);
    /// `registerEventWithType:data:phash:` sends an event with a dictionary and a phash of its own.
    static void registerEventWithType(const VLStringArgument& type, const VLDictionaryArgument& data,
                                      const VLOptionalStringArgument& phash);

    // Tags: named values that the service keeps for the current user. Any thread.

    /// `getTag:completionHandler:` reads one tag. A number is passed to the handler as its decimal text.
    ///
    /// Errors: `VLErrorDomainTag` code 0 for a name that is `nullopt` or empty, 1 for a user that the service does not
    /// know, 2 for a tag that does not exist; errors of the request and of the answer.
    static void getTag(const VLOptionalStringArgument& name, TagHandler completionHandler);
    /// `setTag:value:type:completionHandler:` sets one tag. A value of `nullopt` is left out of the request.
    ///
    /// Errors: `VLErrorDomainTag` code 0 for a name that is `nullopt` or empty; errors of the request. Throws an
    /// `NSException` named "Invalid Tag Type Exception" for a type outside the enumeration.
    static void setTag(const VLOptionalStringArgument& name, const VLOptionalStringArgument& value, VLTagType type,
                       ErrorHandler completionHandler);
    /// `batchSetTags:completionHandler:` sends a list of tags in one request. The list is sent as it is: an array of
    /// {"name", "value", "type"}, where the type is "string", "numeric" or "timestamp". Errors: errors of the request.
    static void batchSetTags(const Value& tags, ErrorHandler completionHandler);
    /// `deleteAllTagsWithCompletionHandler:` deletes every tag of the user. Errors: errors of the request.
    static void deleteAllTagsWithCompletionHandler(ErrorHandler completionHandler);

    // Push notifications. The host forwards the callbacks of its push transport.

    /// `application:didRegisterForRemoteNotificationsWithDeviceToken:completionHandler:` registers a push token and the
    /// user's notification settings with the service. The token is stored even if the request fails. Errors: errors of
    /// the request. Any thread.
    static void didRegisterForRemoteNotificationsWithDeviceToken(const std::shared_ptr<UIApplication>& application,
                                                                 const Data& deviceToken,
                                                                 ErrorHandler completionHandler);
    /// `unregisterFromRemoteNotificationsWithCompletionHandler:` unregisters the push token and deletes it, even if the
    /// request fails. The handler receives `false` without an error if there is no token. Errors: errors of the
    /// request. Any thread.
    static void unregisterFromRemoteNotificationsWithCompletionHandler(OutcomeHandler completionHandler);
    /// `application:didReceiveRemoteNotification:` reports a push notification, given its payload. If the application
    /// is inactive, the user has opened the notification: its phash is stored and sent with later requests. Otherwise
    /// the phash is ignored. A notification without an alert is ignored. Main queue.
    static void didReceiveRemoteNotification(const std::shared_ptr<UIApplication>& application,
                                             const Dictionary& userInfo);
    /// `application:didRegisterUserNotificationSettings:` reports the user's answer on platforms below 10.0.
    static void didRegisterUserNotificationSettings(const std::shared_ptr<UIApplication>& application,
                                                    const UIUserNotificationSettings& settings);
    /// `application:performFetchWithCompletionHandler:` registers the push token again if the user's notification
    /// settings have changed. The handler receives `NewData` if it was registered, `NoData` if nothing has changed, or
    /// `Failed`. Throws an `NSException` named "Background fetch completion handler is nil" for an empty handler.
    static void performFetchWithCompletionHandler(const std::shared_ptr<UIApplication>& application,
                                                  FetchHandler completionHandler);
    /// `getNotificationSettingsWithCompletionHandler:` reads what the user allows now. Any thread.
    static void getNotificationSettingsWithCompletionHandler(NotificationSettingsHandler completionHandler);

    // Local notifications. Main queue.

    /// `scheduleLocalNotification:badge:campaign:date:metadata:action:` schedules a notification that the service can
    /// track. The service may replace the text or suppress the notification.
    ///
    /// `badge` is the number on the application's icon. `date` is in seconds since 1970; `nullopt` means now.
    /// `metadata` becomes part of the notification's user info. An action of `nullopt` or "" is shown as "View".
    ///
    /// Returns the scheduled notification, or `nullopt` without scheduling anything if the user's notification
    /// settings, as registered with the service last, do not let notifications be seen. To be visible, notifications
    /// need a user notification centre that allows them (`LinuxPlatform::Options::userNotificationCenter`) and settings
    /// registered together with a push token (`didRegisterForRemoteNotificationsWithDeviceToken()`).
    static std::optional<UILocalNotification> scheduleLocalNotification(const VLStringArgument& text,
                                                                        std::int64_t badge,
                                                                        const VLOptionalStringArgument& campaign,
                                                                        std::optional<double> date,
                                                                        const VLOptionalDictionaryArgument& metadata,
                                                                        const VLOptionalStringArgument& action);
    /// `cancelPendingLocalNotification:` cancels a notification that `scheduleLocalNotification()` returned, or one
    /// from `UIApplication::scheduledLocalNotifications()`.
    static void cancelPendingLocalNotification(const UILocalNotification& notification);
    /// `cancelAllPendingLocalNotifications` cancels every scheduled notification of the application, including those
    /// that the application scheduled itself.
    static void cancelAllPendingLocalNotifications();
    /// `application:didReceiveLocalNotification:` reports that the user opened a local notification. If the application
    /// is inactive, its phash is stored and sent with later requests.
    static void didReceiveLocalNotification(const std::shared_ptr<UIApplication>& application,
                                            const UILocalNotification& notification);

    // Interstitials and permissions.

    /// `presentInterstitialWithPlacement:viewController:animated:completionHandler:` fetches the page of a placement
    /// and presents `viewController` with it, over the topmost screen of the application's key window
    /// (`UIApplication::setKeyWindow()`). `viewController` is both a `UIViewController` and a
    /// `VLInterstitialViewController`. Any thread.
    ///
    /// The handler receives `true` if the page is on screen. It receives `false` without an error if the service has no
    /// page for the placement, if another interstitial is on screen, or without a key window.
    ///
    /// Errors: `VLErrorDomainInterstitial` code 0 for an invalid placement, 1 for a null view controller, 2 for an
    /// object that is not both classes; errors of the request and of the answer.
    static void presentInterstitialWithPlacement(VLInterstitialPlacement placement,
                                                 const std::shared_ptr<NSObject>& viewController, bool animated,
                                                 OutcomeHandler completionHandler);
    /// `openVorlaneDeepLink:` follows a link with the scheme "vorlane://", as the buttons of interstitials carry them:
    /// to a permission prompt or to the settings page. Returns false for any other link and for `nullopt`. Main queue.
    static bool openVorlaneDeepLink(const std::optional<NSURL>& url);

    /// `askForPermission:` shows the system's prompt for a permission, once the remote configuration has been loaded.
    /// An unknown permission is ignored. Any thread.
    static void askForPermission(VLPermissions permission);
    /// `askForPermission:interstitialViewController:` shows an interstitial first (a soft opt-in), whose links lead to
    /// the system's prompt or to the settings page. `viewController` as in `presentInterstitialWithPlacement()`. Any
    /// thread.
    ///
    /// No interstitial is shown if the user allows the permission already, if location is restricted, or within the
    /// configured interval (one day) after the previous one. A provisional permission counts as not allowed. After a
    /// denial, and for "always" while only "when in use" is allowed, the page leads to the settings.
    ///
    /// An error, including a null or unsuitable view controller, leads to the system's prompt at once. If the service
    /// has no page, another interstitial is on screen, or there is no key window, nothing is shown.
    static void askForPermission(VLPermissions permission, const std::shared_ptr<NSObject>& viewController);

    // Location. The library requests positions, regions and beacons by itself, as the remote configuration says.

    /// `locationAuthorisationStatus` returns what the user allows: 0 not determined, 1 restricted, 2 denied, 3 always,
    /// 4 while the application is in use.
    static std::int32_t locationAuthorisationStatus();

    // The rich inbox of the current user. It works offline: what is read or deleted offline is reported to the service
    // at a later synchronisation. Any thread.

    /// `getInboxMessagesWithCompletionHandler:` reads the messages that have not expired. If the last synchronisation
    /// was less than 30 seconds ago (the remote configuration may change that), the stored messages are returned.
    /// Otherwise the inbox is synchronised first. The handler runs once, or once for each message that had to be
    /// fetched, with the whole list so far.
    static void getInboxMessagesWithCompletionHandler(InboxHandler completionHandler);
    /// `openInboxMessage:completionHandler:` marks a message as read, stores its phash, and reports both to the
    /// service. Errors: `VLErrorDomainInbox` code 0 if the database could not be changed, or for a null message, which
    /// is otherwise ignored.
    static void openInboxMessage(const std::shared_ptr<VLInboxMessage>& message, ErrorHandler completionHandler);
    /// `deleteInboxMessage:completionHandler:` deletes a message and reports that to the service. Errors:
    /// `VLErrorDomainInbox` code 0 if the database could not be changed, or for a null message, which is otherwise
    /// ignored.
    static void deleteInboxMessage(const std::shared_ptr<VLInboxMessage>& message, ErrorHandler completionHandler);

    // For libraries that wrap this one.

    /// `setContainer:withContainerVersion:withContainerVlSdkVersion:` sets the name of the wrapping library, its
    /// version and the version of its binding. The reported library version then contains name and version. `nullopt`
    /// removes a value. Any thread.
    static void setContainer(const VLOptionalStringArgument& name, const VLOptionalStringArgument& version,
                             const VLOptionalStringArgument& vlSdkVersion);

    /// `addCommonJsonData:` adds the session id ("sid"), the library version ("lv") and the installation time ("acit")
    /// to a request body. Any thread.
    void addCommonJsonData(Dictionary& json);

    /// Whether a push notification with an alert arrived, or a local notification was opened, since the application
    /// last became active. Any thread.
    bool isNotificationOpen() const { return isNotificationOpen_; }
    /// For the library's own use.
    void setNotificationOpen(bool isOpen) { isNotificationOpen_ = isOpen; }

    Vorlane(const Vorlane&) = delete;
    Vorlane& operator=(const Vorlane&) = delete;
    ~Vorlane();

private:
    Vorlane();

    std::atomic<bool> isNotificationOpen_ = false;
    // Fixed at construction.
    std::shared_ptr<VLBootstrap> bootstrap_;
    std::shared_ptr<VLSettings> settings_;
    std::shared_ptr<VLLifeCycleManager> lifeCycleManager_;
    std::shared_ptr<VLSessionService> sessionService_;
    std::shared_ptr<VLInterstitialService> interstitialService_;
    std::shared_ptr<VLTagsService> tagsService_;
    std::shared_ptr<VLEventService> eventService_;
    std::shared_ptr<VLLocalNotificationService> localNotificationService_;
    std::shared_ptr<VLRemoteNotificationService> remoteNotificationService_;
    std::shared_ptr<VLPermissionService> permissionService_;
    std::shared_ptr<VLURLActions> urlActions_;
    std::shared_ptr<VLInboxService> inboxService_;
    std::shared_ptr<VLUserNotificationCentre> vlUserNotificationCentre_;
};

}  // namespace vorlane
