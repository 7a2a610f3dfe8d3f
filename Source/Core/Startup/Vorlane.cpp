#include "Public/Vorlane.h"

#include <mutex>
#include <utility>

#include "Core/Base/VLSettings.h"
#include "Core/Startup/VLBootstrap.h"
#include "Core/Startup/VLLifeCycleManager.h"
#include "Inbox/VLInboxService.h"
#include "Network/VLURLActions.h"
#include "Notifications/VLInterstitialService.h"
#include "Notifications/VLLocalNotificationService.h"
#include "Notifications/VLPermissionService.h"
#include "Notifications/VLRemoteNotificationService.h"
#include "Notifications/VLUserNotificationCentre.h"
#include "Platform/CLLocationManager.h"
#include "Platform/Internal/ProcessWide.h"
#include "Tracking/VLEventService.h"
#include "Tracking/VLSessionService.h"
#include "Tracking/VLTagsService.h"

namespace vorlane {

namespace {

constexpr const char* kNoFetchHandlerName = "Background fetch completion handler is nil";
constexpr const char* kNoFetchHandlerReason =
    "The background fetch completion handler cannot be nil."
    "                                               Ensure that a valid completionHandler block is passed to the"
    "                                               Vorlane.performFetchWithCompletionHandler() method.";

/// The class-wide endpoint set.
struct EndpointSet {
    std::mutex mutex;
    // Guarded by mutex.
    std::shared_ptr<VLURLs> urls;
};

/// Leaves the message out, which the host has.
VLInboxService::MessageHandler errorOnly(Vorlane::ErrorHandler completionHandler) {
    if (!completionHandler) return nullptr;
    return [handler = std::move(completionHandler)](const std::shared_ptr<VLInboxMessage>& /*message*/,
                                                    std::optional<NSError> error) { handler(std::move(error)); };
}

constinit ProcessWide<Vorlane> sharedVorlane;
constinit ProcessWide<EndpointSet> endpointSet;

}  // namespace

Vorlane& Vorlane::sharedInstance() {
    return sharedVorlane.get([] { return std::unique_ptr<Vorlane>(new Vorlane); });
}

Vorlane::Vorlane() {
    if (!getURLs()) setURLs(std::make_shared<VLURLsProduction>());
    bootstrap_ = VLBootstrap::bootstrapWithURLs(getURLs());
    settings_ = bootstrap_->getComponent<VLSettings>();
    interstitialService_ = bootstrap_->getComponent<VLInterstitialService>();
    tagsService_ = bootstrap_->getComponent<VLTagsService>();
    eventService_ = bootstrap_->getComponent<VLEventService>();
    localNotificationService_ = bootstrap_->getComponent<VLLocalNotificationService>();
    remoteNotificationService_ = bootstrap_->getComponent<VLRemoteNotificationService>();
    sessionService_ = bootstrap_->getComponent<VLSessionService>();
    permissionService_ = bootstrap_->getComponent<VLPermissionService>();
    inboxService_ = bootstrap_->getComponent<VLInboxService>();
    lifeCycleManager_ = bootstrap_->getComponent<VLLifeCycleManager>();
    vlUserNotificationCentre_ = bootstrap_->getComponent<VLUserNotificationCentre>();
    urlActions_ = bootstrap_->getComponent<VLURLActions>();
}

Vorlane::~Vorlane() = default;

void Vorlane::initialiseSDKWithApplication(const std::shared_ptr<UIApplication>& application,
                                           const std::optional<Dictionary>& launchOptions,
                                           const VLSDKOptions& sdkOptions) {
    VLLog::sharedInstance().setLogLevel(sdkOptions.logLevel());
    sharedInstance().lifeCycleManager_->initialiseSDKWithApplication(application, launchOptions, sdkOptions);
}

void Vorlane::setURLs(std::shared_ptr<VLURLs> urls) {
    auto& set = endpointSet.get();
    const std::lock_guard lock(set.mutex);
    // What was there before is let go of outside the lock.
    set.urls.swap(urls);
}

std::shared_ptr<VLURLs> Vorlane::getURLs() {
    auto& set = endpointSet.get();
    const std::lock_guard lock(set.mutex);
    return set.urls;
}

void Vorlane::setTrackingId(const std::optional<std::string>& trackingId) {
    sharedInstance().sessionService_->setTrackingID(trackingId);
}

std::string Vorlane::trackingId() { return sharedInstance().settings_->trackingId(); }

std::optional<std::string> Vorlane::appKey() { return sharedInstance().settings_->appKey(); }

std::string Vorlane::deviceId() { return sharedInstance().settings_->deviceId(); }

std::optional<Data> Vorlane::deviceToken() { return sharedInstance().settings_->deviceToken(); }

void Vorlane::setPhash(const std::optional<std::string>& phash) { sharedInstance().settings_->setPhash(phash); }

std::optional<std::string> Vorlane::phash() { return sharedInstance().settings_->phash(); }

void Vorlane::registerEventWithType(const std::string& type, const std::optional<std::string>& label) {
    sharedInstance().eventService_->registerEventWithType(type, label);
}

void Vorlane::registerEventWithType(const std::string& type, const std::optional<std::string>& label,
                                    const std::optional<std::string>& phash) {
    sharedInstance().eventService_->registerEventWithType(type, label, phash);
}

void Vorlane::registerEventWithType(const std::string& type, const Dictionary& data) {
    sharedInstance().eventService_->registerEventWithType(type, data);
}

void Vorlane::registerEventWithType(const std::string& type, const Dictionary& data,
                                    const std::optional<std::string>& phash) {
    sharedInstance().eventService_->registerEventWithType(type, data, phash);
}

void Vorlane::getTag(const std::optional<std::string>& name, TagHandler completionHandler) {
    sharedInstance().tagsService_->getTag(name, std::move(completionHandler));
}

void Vorlane::setTag(const std::optional<std::string>& name, const std::optional<std::string>& value, VLTagType type,
                     ErrorHandler completionHandler) {
    sharedInstance().tagsService_->setTag(name, value, type, std::move(completionHandler));
}

void Vorlane::batchSetTags(const Value& tags, ErrorHandler completionHandler) {
    sharedInstance().tagsService_->batchSetTags(tags, std::move(completionHandler));
}

void Vorlane::deleteAllTagsWithCompletionHandler(ErrorHandler completionHandler) {
    sharedInstance().tagsService_->deleteAllTagsWithCompletionHandler(std::move(completionHandler));
}

void Vorlane::didRegisterForRemoteNotificationsWithDeviceToken(const std::shared_ptr<UIApplication>& /*application*/,
                                                               const Data& deviceToken,
                                                               ErrorHandler completionHandler) {
    logMessage(VLLogLevel::Debug, "Register device triggered manually");
    sharedInstance().remoteNotificationService_->registerDeviceTokenData(deviceToken, std::move(completionHandler));
}

void Vorlane::unregisterFromRemoteNotificationsWithCompletionHandler(OutcomeHandler completionHandler) {
    sharedInstance().remoteNotificationService_->unregisterDeviceWithCompletionHandler(std::move(completionHandler));
}

void Vorlane::didReceiveRemoteNotification(const std::shared_ptr<UIApplication>& application,
                                           const Dictionary& userInfo) {
    sharedInstance().remoteNotificationService_->didReceiveRemoteNotification(application, userInfo);
}

void Vorlane::didRegisterUserNotificationSettings(const std::shared_ptr<UIApplication>& /*application*/,
                                                  const UIUserNotificationSettings& settings) {
    sharedInstance().remoteNotificationService_->didRegisterUserNotificationSettings(settings);
}

void Vorlane::performFetchWithCompletionHandler(const std::shared_ptr<UIApplication>& /*application*/,
                                                FetchHandler completionHandler) {
    if (!completionHandler) throw NSException(kNoFetchHandlerName, kNoFetchHandlerReason);
    logMessage(VLLogLevel::Debug, "Register device triggered by Vorlane.performFetchWithCompletionHandler()");
    sharedInstance().remoteNotificationService_->registerDeviceTokenIfNotificationSettingsChangedForBackgroundFetch(
        std::move(completionHandler));
}

void Vorlane::getNotificationSettingsWithCompletionHandler(NotificationSettingsHandler completionHandler) {
    sharedInstance().vlUserNotificationCentre_->getNotificationSettingsWithCompletionHandler(
        std::move(completionHandler));
}

std::optional<UILocalNotification> Vorlane::scheduleLocalNotification(const std::string& text, std::int64_t badge,
                                                                      const std::optional<std::string>& campaign,
                                                                      std::optional<double> date,
                                                                      const std::optional<Dictionary>& metadata,
                                                                      const std::optional<std::string>& action) {
    return sharedInstance().localNotificationService_->scheduleLocalNotification(text, badge, campaign, date, metadata,
                                                                                 action);
}

void Vorlane::cancelPendingLocalNotification(const UILocalNotification& notification) {
    sharedInstance().localNotificationService_->cancelPendingLocalNotification(notification);
}

void Vorlane::cancelAllPendingLocalNotifications() {
    sharedInstance().localNotificationService_->cancelAllPendingLocalNotifications();
}

void Vorlane::didReceiveLocalNotification(const std::shared_ptr<UIApplication>& application,
                                          const UILocalNotification& notification) {
    sharedInstance().localNotificationService_->didAcceptLocalNotification(application, notification);
}

void Vorlane::presentInterstitialWithPlacement(VLInterstitialPlacement placement,
                                               const std::shared_ptr<NSObject>& viewController, bool animated,
                                               OutcomeHandler completionHandler) {
    sharedInstance().interstitialService_->presentInterstitialWithPlacement(placement, viewController, animated,
                                                                            std::move(completionHandler));
}

bool Vorlane::openVorlaneDeepLink(const std::optional<NSURL>& url) {
    return sharedInstance().urlActions_->handleVorlaneActionURL(url);
}

void Vorlane::askForPermission(VLPermissions permission) {
    sharedInstance().permissionService_->queueSystemPromptForPermission(permission);
}

void Vorlane::askForPermission(VLPermissions permission, const std::shared_ptr<NSObject>& viewController) {
    sharedInstance().permissionService_->queueSoftOptInForPermission(permission, viewController);
}

std::int32_t Vorlane::locationAuthorisationStatus() {
    // The first call of any operation makes the facade.
    sharedInstance();
    return static_cast<std::int32_t>(Platform::current().locationManager()->authorizationStatus());
}

void Vorlane::getInboxMessagesWithCompletionHandler(InboxHandler completionHandler) {
    sharedInstance().inboxService_->getInboxMessagesWithCompletionHandler(std::move(completionHandler));
}

void Vorlane::openInboxMessage(const std::shared_ptr<VLInboxMessage>& message, ErrorHandler completionHandler) {
    sharedInstance().inboxService_->openInboxMessage(message, errorOnly(std::move(completionHandler)));
}

void Vorlane::deleteInboxMessage(const std::shared_ptr<VLInboxMessage>& message, ErrorHandler completionHandler) {
    sharedInstance().inboxService_->deleteInboxMessage(message, errorOnly(std::move(completionHandler)));
}

void Vorlane::setContainer(const std::optional<std::string>& name, const std::optional<std::string>& version,
                           const std::optional<std::string>& vlSdkVersion) {
    const auto& settings = sharedInstance().settings_;
    settings->setContainerName(name);
    settings->setContainerVersion(version);
    settings->setContainerVlSdkVersion(vlSdkVersion);
}

void Vorlane::addCommonJsonData(Dictionary& json) {
    json["sid"] = settings_->sessionId();
    json["lv"] = settings_->libraryVersion();
    json["acit"] = settings_->appCleanInstallTime();
}

}  // namespace vorlane
