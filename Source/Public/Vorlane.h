#pragma once

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
#include "Public/VLErrorDomains.h"
#include "Public/VLExport.h"
#include "Public/VLImage.h"
#include "Public/VLInboxMessage.h"
#include "Public/VLInterstitialPlacement.h"
#include "Public/VLInterstitialViewController.h"
#include "Public/VLLog.h"
#include "Public/VLLogger.h"
#include "Public/VLPermissions.h"
#include "Public/VLSDKOptions.h"
#include "Public/VLTagType.h"
#include "Public/VLURLs.h"
#include "Public/VLURLsProduction.h"
#include "Public/VLUserNotificationSettings.h"
#include "Public/VLValue.h"

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

/// The one class that an application talks to.
///
/// Start it once at launch with `initialiseSDKWithApplication()`, report the application's states to
/// `Platform::current().application()`, and call the class operations from the main thread. Nothing happens before the
/// first call: it makes the shared object, its services and the settings file. An operation called before start-up
/// works with the app key that an earlier run stored. Without one its requests name the key "(null)", and so does, for
/// as long as the process lives, the URL of all events once one of them was registered then.
///
/// Results arrive through completion handlers, which may be empty. Each runs exactly once (an inbox list may come more
/// than once), on the main queue, after the call that took it has returned. Failures are told there and in the log
/// (`VLLog`); the only exceptions thrown are `NSException`s for mistakes of the application itself.
class VORLANE_EXPORT Vorlane {
public:
    /// Nothing on success, else what went wrong.
    using ErrorHandler = std::function<void(std::optional<NSError> error)>;
    /// The value, or an error; neither when the service knows no value.
    using TagHandler = std::function<void(std::optional<std::string> value, std::optional<NSError> error)>;

    /// Whether it was done, and what went wrong. Neither when there was nothing to do.
    using OutcomeHandler = std::function<void(bool success, std::optional<NSError> error)>;
    using FetchHandler = std::function<void(UIBackgroundFetchResult result)>;
    using NotificationSettingsHandler = std::function<void(const VLUserNotificationSettings& settings)>;

    /// The list, newest first, and how many of its messages are unread.
    using InboxHandler =
        std::function<void(const std::vector<std::shared_ptr<VLInboxMessage>>& messages, std::size_t unreadCount)>;

    // Start-up.

    /// `initialiseSDKWithApplication:launchOptions:sdkOptions:` starts the library. Call it once, when the application
    /// launches.
    ///
    /// Sets the log's threshold, takes the app key from the options or the Info dictionary, observes the application's
    /// states, takes the phash of a notification that launched the application, asks for a push token, loads the remote
    /// configuration, and starts a session when the application is active already. `launchOptions` may hold what opened
    /// the application under `UIApplicationLaunchOptionsRemoteNotificationKey` or
    /// `UIApplicationLaunchOptionsLocalNotificationKey`; nothing when it was opened otherwise.
    /// Throws an `NSException` named "Missing / Invalid Project Key" unless the key has exactly 32 characters; then
    /// nothing but the threshold and the options has been set.
    static void initialiseSDKWithApplication(const std::shared_ptr<UIApplication>& application,
                                             const std::optional<Dictionary>& launchOptions,
                                             const VLSDKOptions& sdkOptions);

    /// `sharedInstance` is the one object of this class, made on first use.
    static Vorlane& sharedInstance();

    /// `setURLs:` sets the service's base URLs. Takes effect only before the first use of any other operation.
    static void setURLs(std::shared_ptr<VLURLs> urls);
    /// `getURLs` gives what was set last; the production set once the library was used, and nothing before.
    static std::shared_ptr<VLURLs> getURLs();

    // Identities.

    /// `setTrackingId:` changes the application's user and tells the service. Nothing or "" is ignored.
    static void setTrackingId(const std::optional<std::string>& trackingId);
    /// `trackingId` names the application's user; made when there is none yet.
    static std::string trackingId();
    /// `appKey` is the key that start-up accepted last; nothing before the first.
    static std::optional<std::string> appKey();
    /// `deviceId` names this installation; made when there is none yet.
    static std::string deviceId();
    /// `deviceToken` is the push token handed over last, whether or not the service took it; nothing when there is none
    /// or it was taken back.
    static std::optional<Data> deviceToken();
    /// `setPhash:` sets the hash of the notification that opened the application; nothing forgets it.
    static void setPhash(const std::optional<std::string>& phash);
    /// `phash` of the notification that opened the application in this session, of the inbox message that was opened
    /// last, or what `setPhash()` set; nothing when there is none.
    static std::optional<std::string> phash();

    // Events. Each is sent at once; an event sent while offline is lost. Any thread.

    /// `registerEventWithType:label:`; no label is sent as "".
    static void registerEventWithType(const std::string& type, const std::optional<std::string>& label);
    /// `registerEventWithType:label:phash:`; the phash, when given, replaces the stored one in this event.
    static void registerEventWithType(const std::string& type, const std::optional<std::string>& label,
                                      const std::optional<std::string>& phash);
    /// `registerEventWithType:data:` sends a dictionary in place of the label.
    static void registerEventWithType(const std::string& type, const Dictionary& data);
    /// `registerEventWithType:data:phash:`
    static void registerEventWithType(const std::string& type, const Dictionary& data,
                                      const std::optional<std::string>& phash);

    // Tags: named values that the service keeps for the current user. Any thread.

    /// `getTag:completionHandler:` reads one tag; a number comes as its decimal text.
    /// Errors: `VLErrorDomainTag` 0 for a blank name, 1 for a user that the service does not know, 2 for a tag that
    /// does not exist; `VLErrorDomainNetwork`, `NSURLErrorDomain` and `NSCocoaErrorDomain` for a failed request or an
    /// unreadable answer.
    static void getTag(const std::optional<std::string>& name, TagHandler completionHandler);
    /// `setTag:value:type:completionHandler:` sets one tag; no value sends none.
    /// Errors: `VLErrorDomainTag` 0 for a blank name; those of a failed request. Throws an `NSException` named "Invalid
    /// Tag Type Exception" for a type outside the enumeration.
    static void setTag(const std::optional<std::string>& name, const std::optional<std::string>& value, VLTagType type,
                       ErrorHandler completionHandler);
    /// `batchSetTags:completionHandler:` sends the collection as it is, a list of {"name", "value", "type"} with the
    /// type as "string", "numeric" or "timestamp". Errors: those of a failed request.
    static void batchSetTags(const Value& tags, ErrorHandler completionHandler);
    /// `deleteAllTagsWithCompletionHandler:` deletes every tag of the user. Errors: those of a failed request.
    static void deleteAllTagsWithCompletionHandler(ErrorHandler completionHandler);

    // Push notifications. The host forwards what its platform tells it.

    /// `application:didRegisterForRemoteNotificationsWithDeviceToken:completionHandler:` registers a push token with
    /// the service, together with what the user allows. Errors: those of a failed request.
    static void didRegisterForRemoteNotificationsWithDeviceToken(const std::shared_ptr<UIApplication>& application,
                                                                 const Data& deviceToken,
                                                                 ErrorHandler completionHandler);
    /// `unregisterFromRemoteNotificationsWithCompletionHandler:` takes the token back and forgets it, also when the
    /// request fails. Without a token nothing was done. Errors: those of a failed request.
    static void unregisterFromRemoteNotificationsWithCompletionHandler(OutcomeHandler completionHandler);
    /// `application:didReceiveRemoteNotification:`: a push notification arrived. While the application is inactive, the
    /// user has opened it: its phash is told in what is sent from then on. Otherwise the phash is dropped. One without
    /// an alert is ignored. Main queue.
    static void didReceiveRemoteNotification(const std::shared_ptr<UIApplication>& application,
                                             const Dictionary& userInfo);
    /// `application:didRegisterUserNotificationSettings:`: the user's answer, on platforms below 10.
    static void didRegisterUserNotificationSettings(const std::shared_ptr<UIApplication>& application,
                                                    const UIUserNotificationSettings& settings);
    /// `application:performFetchWithCompletionHandler:` tells the service when the user's settings have changed. The
    /// handler gets new data (told), no data (nothing to tell) or failed. Throws an `NSException` named "Background
    /// fetch completion handler is nil" for an empty one.
    static void performFetchWithCompletionHandler(const std::shared_ptr<UIApplication>& application,
                                                  FetchHandler completionHandler);
    /// `getNotificationSettingsWithCompletionHandler:` tells what the user allows now.
    static void getNotificationSettingsWithCompletionHandler(NotificationSettingsHandler completionHandler);

    // Local notifications. Main queue.

    /// `scheduleLocalNotification:badge:campaign:date:metadata:action:` schedules a notification whose delivery the
    /// service can follow; the service may choose another text, or keep it from being shown. `date` in seconds since
    /// 1970, nothing for now; no action reads "View". Gives the notification that was built; nothing, and nothing is
    /// done, when notifications would not be visible by what was registered last.
    static std::optional<UILocalNotification> scheduleLocalNotification(const std::string& text, std::int64_t badge,
                                                                        const std::optional<std::string>& campaign,
                                                                        std::optional<double> date,
                                                                        const std::optional<Dictionary>& metadata,
                                                                        const std::optional<std::string>& action);
    /// `cancelPendingLocalNotification:` cancels what `scheduleLocalNotification()` gave, or what was read from the
    /// list of the scheduled ones.
    static void cancelPendingLocalNotification(const UILocalNotification& notification);
    /// `cancelAllPendingLocalNotifications` cancels every one of the application, also those that it scheduled by
    /// itself.
    static void cancelAllPendingLocalNotifications();
    /// `application:didReceiveLocalNotification:`: the user opened a local notification; while the application is
    /// inactive, its phash is told in what is sent from then on.
    static void didReceiveLocalNotification(const std::shared_ptr<UIApplication>& application,
                                            const UILocalNotification& notification);

    // Interstitials and permissions.

    /// `presentInterstitialWithPlacement:viewController:animated:completionHandler:` fetches the page of a placement
    /// and shows it in `viewController`: a `UIViewController` that is a `VLInterstitialViewController` too. It is
    /// presented over the topmost screen of the application's key window, which the host sets with
    /// `UIApplication::setKeyWindow()`.
    ///
    /// The handler learns whether it is on screen; it is not, without an error, when the service has nothing to show,
    /// while another interstitial is on screen, or without a key window. Errors: `VLErrorDomainInterstitial` code 0 for
    /// an invalid placement, 1 for null, 2 for an unsuitable object; those of a failed request and of a page that
    /// cannot be read.
    static void presentInterstitialWithPlacement(VLInterstitialPlacement placement,
                                                 const std::shared_ptr<NSObject>& viewController, bool animated,
                                                 OutcomeHandler completionHandler);
    /// `openVorlaneDeepLink:` follows a link with the scheme "vorlane://", as the buttons of interstitials carry them:
    /// to a permission's prompt or the settings page. False for any other link. Main queue.
    static bool openVorlaneDeepLink(const std::optional<NSURL>& url);

    /// `askForPermission:` has the system ask the user, once the remote configuration is known. An unknown permission
    /// is ignored. Any thread.
    static void askForPermission(VLPermissions permission);
    /// `askForPermission:interstitialViewController:` asks with an interstitial first, whose links lead to the system's
    /// prompt or the settings page; shown in a view controller as `presentInterstitialWithPlacement()` takes it.
    /// Nothing is shown when the user allows it already (a provisional permission is asked to be made full; after a
    /// denial, and for when-in-use where always is asked for, the page leads to the settings), where location is
    /// restricted, or within the configured time (a day) after the last one. An error, a null or unsuitable view
    /// controller included, leads to the system's prompt at once; when the service has no page, another interstitial is
    /// on screen or there is no key window, nothing happens. Any thread.
    static void askForPermission(VLPermissions permission, const std::shared_ptr<NSObject>& viewController);

    // Location. The library asks for positions, regions and beacons by itself, as the service's configuration says.

    /// `locationAuthorisationStatus` is what the user allows, in the platform's own numbers: 0 not determined, 1
    /// restricted, 2 denied, 3 always, 4 while the application is in use.
    static std::int32_t locationAuthorisationStatus();

    // The rich inbox of the current user. Works offline, too; what was read or deleted meanwhile reaches the service at
    // a later synchronisation. Any thread.

    /// `getInboxMessagesWithCompletionHandler:` gives the messages that have not expired: as they are stored, when the
    /// last synchronisation was less than 30 seconds ago (or what the remote configuration says), else after another
    /// one. The handler runs at least once; when messages had to be fetched, once for each of them, with the whole list
    /// so far.
    static void getInboxMessagesWithCompletionHandler(InboxHandler completionHandler);
    /// `openInboxMessage:completionHandler:` marks the message as read, takes its phash over as that of what was opened
    /// last, and tells the service. Errors: `VLErrorDomainInbox` 0 when the database could not be changed, or for null,
    /// with which nothing else is done.
    static void openInboxMessage(const std::shared_ptr<VLInboxMessage>& message, ErrorHandler completionHandler);
    /// `deleteInboxMessage:completionHandler:` deletes the message for good and tells the service. Errors:
    /// `VLErrorDomainInbox` 0 when the database could not be changed, or for null, with which nothing else is done.
    static void deleteInboxMessage(const std::shared_ptr<VLInboxMessage>& message, ErrorHandler completionHandler);

    // For libraries that wrap this one.

    /// `setContainer:withContainerVersion:withContainerVlSdkVersion:` names the wrapping library, its version and the
    /// version of its binding; the reported library version then carries name and version. Nothing removes a value.
    static void setContainer(const std::optional<std::string>& name, const std::optional<std::string>& version,
                             const std::optional<std::string>& vlSdkVersion);

    /// `addCommonJsonData:` adds "sid", "lv" and "acit" to a request body under construction.
    void addCommonJsonData(Dictionary& json);

    /// Whether a push notification with an alert arrived, or a local one was opened, since the application last came
    /// back from the background. Any thread.
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
