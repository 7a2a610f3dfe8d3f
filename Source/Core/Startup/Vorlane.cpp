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
#include "Platform/Internal/InstallObservers.h"
#include "Platform/Internal/ProcessWide.h"
#include "Public/VLValue.h"
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

/// The class-wide endpoint set. The one that the host sets before it installs its first platform is kept.
class EndpointSet {
public:
    /// Never destroyed: a late thread or a host's static object may still use it.
    static EndpointSet& shared() {
        static auto* const set = [] {
            observePlatformInstalls([](bool isFirst) { shared().platformInstalled(isFirst); });
            return new EndpointSet;
        }();
        return *set;
    }

    std::shared_ptr<VLURLs> urls() const {
        const std::lock_guard lock(mutex_);
        return urls_;
    }

    /// Returns false if the services have been made with another set.
    bool setURLs(std::shared_ptr<VLURLs> urls) {
        // The previous set is destroyed outside the lock.
        const std::lock_guard lock(mutex_);
        urls_.swap(urls);
        isHostsOwn_ = true;
        return !isInUse_;
    }

    /// The set for the services: the host's own or, without one, the production set.
    std::shared_ptr<VLURLs> use() {
        auto production = std::make_shared<VLURLsProduction>();
        const std::lock_guard lock(mutex_);
        isInUse_ = true;
        if (!urls_) {
            urls_ = std::move(production);
            isHostsOwn_ = false;
        }
        return urls_;
    }

private:
    EndpointSet() = default;

    void platformInstalled(bool isFirst) {
        std::shared_ptr<VLURLs> previous;
        const std::lock_guard lock(mutex_);
        isInUse_ = false;
        if (!isFirst || !isHostsOwn_) previous.swap(urls_);
    }

    mutable std::mutex mutex_;
    // Guarded by mutex_.
    std::shared_ptr<VLURLs> urls_;
    bool isHostsOwn_ = false;
    bool isInUse_ = false;
};

/// Drops the message, which the host has.
VLInboxService::MessageHandler errorOnly(Vorlane::ErrorHandler completionHandler) {
    if (!completionHandler) return nullptr;
    return [handler = std::move(completionHandler)](const std::shared_ptr<VLInboxMessage>& /*message*/,
                                                    std::optional<NSError> error) { handler(std::move(error)); };
}

constinit ProcessWide<Vorlane> sharedVorlane;

}  // namespace

Vorlane& Vorlane::sharedInstance() {
    return sharedVorlane.get([] { return std::unique_ptr<Vorlane>(new Vorlane); });
}

Vorlane::Vorlane() {
    bootstrap_ = VLBootstrap::bootstrapWithURLs(EndpointSet::shared().use());
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
                                           const VLOptionalDictionaryArgument& launchOptions,
                                           const VLSDKOptions& sdkOptions) {
    VLLog::sharedInstance().setLogLevel(sdkOptions.logLevel());
    sharedInstance().lifeCycleManager_->initialiseSDKWithApplication(application, launchOptions.dictionary(),
                                                                     sdkOptions);
}

void Vorlane::setURLs(std::shared_ptr<VLURLs> urls) {
    if (EndpointSet::shared().setURLs(std::move(urls))) return;
    logMessage(VLLogLevel::Warn,
               "setURLs() was called after the first use. The services keep the endpoint set they were made with.");
}

std::shared_ptr<VLURLs> Vorlane::getURLs() { return EndpointSet::shared().urls(); }

void Vorlane::setTrackingId(const VLOptionalStringArgument& trackingId) {
    sharedInstance().sessionService_->setTrackingID(trackingId.string());
}

std::string Vorlane::trackingId() { return sharedInstance().settings_->trackingId(); }

std::optional<std::string> Vorlane::appKey() { return sharedInstance().settings_->appKey(); }

std::string Vorlane::deviceId() { return sharedInstance().settings_->deviceId(); }

std::optional<Data> Vorlane::deviceToken() { return sharedInstance().settings_->deviceToken(); }

void Vorlane::setPhash(const VLOptionalStringArgument& phash) { sharedInstance().settings_->setPhash(phash.string()); }

std::optional<std::string> Vorlane::phash() { return sharedInstance().settings_->phash(); }

void Vorlane::registerEventWithType(const VLStringArgument& type, const VLOptionalStringArgument& label) {
    sharedInstance().eventService_->registerEventWithType(type.string(), label.string());
}

void Vorlane::registerEventWithType(const VLStringArgument& type, const VLOptionalStringArgument& label,
                                    const VLOptionalStringArgument& phash) {
    sharedInstance().eventService_->registerEventWithType(type.string(), label.string(), phash.string());
}

void Vorlane::registerEventWithType(const VLStringArgument& type, const VLDictionaryArgument& data) {
    sharedInstance().eventService_->registerEventWithType(type.string(), data.dictionary());
}

void Vorlane::registerEventWithType(const VLStringArgument& type, const VLDictionaryArgument& data,
                                    const VLOptionalStringArgument& phash) {
    sharedInstance().eventService_->registerEventWithType(type.string(), data.dictionary(), phash.string());
}

void Vorlane::getTag(const VLOptionalStringArgument& name, TagHandler completionHandler) {
    sharedInstance().tagsService_->getTag(name.string(), std::move(completionHandler));
}

void Vorlane::setTag(const VLOptionalStringArgument& name, const VLOptionalStringArgument& value, VLTagType type,
                     ErrorHandler completionHandler) {
    sharedInstance().tagsService_->setTag(name.string(), value.string(), type, std::move(completionHandler));
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

std::optional<UILocalNotification> Vorlane::scheduleLocalNotification(const VLStringArgument& text, std::int64_t badge,
                                                                      const VLOptionalStringArgument& campaign,
                                                                      std::optional<double> date,
                                                                      const VLOptionalDictionaryArgument& metadata,
                                                                      const VLOptionalStringArgument& action) {
    return sharedInstance().localNotificationService_->scheduleLocalNotification(
        text.string(), badge, campaign.string(), date, metadata.dictionary(), action.string());
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

void Vorlane::setContainer(const VLOptionalStringArgument& name, const VLOptionalStringArgument& version,
                           const VLOptionalStringArgument& vlSdkVersion) {
    const auto& settings = sharedInstance().settings_;
    settings->setContainerName(name.string());
    settings->setContainerVersion(version.string());
    settings->setContainerVlSdkVersion(vlSdkVersion.string());
}

void Vorlane::addCommonJsonData(Dictionary& json) {
    json["sid"] = settings_->sessionId();
    json["lv"] = settings_->libraryVersion();
    json["acit"] = settings_->appCleanInstallTime();
}

}  // namespace vorlane
