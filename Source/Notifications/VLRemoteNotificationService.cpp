#include "Notifications/VLRemoteNotificationService.h"

#include <fmt/format.h>

#include <utility>

#include "Categories/NSDictionary+VLLookup.h"
#include "Categories/NSObject+VLClass.h"
#include "Core/Base/VLCompletion.h"
#include "Core/Base/VLSettings.h"
#include "Network/VLPayloadBuilder.h"
#include "Network/VLPayloadOptions.h"
#include "Network/VLURLBuilder.h"
#include "Network/VLURLSession.h"
#include "Notifications/VLBackgroundRefreshHelper.h"
#include "Notifications/VLUserNotificationCentre.h"
#include "Platform/Platform.h"
#include "Public/VLConstants.h"
#include "Public/VLLog.h"
#include "Public/Vorlane.h"

namespace vorlane {

namespace {

/// The platform's settings are read after the application has settled in the foreground.
constexpr TimeInterval kForegroundDelay = 1.0;

/// A notification without an alert is a silent push.
bool hasAlert(const Dictionary& userInfo) {
    const auto* aps = dictionaryForKey(userInfo, "aps");
    return aps && valueForKey(*aps, "alert");
}

UIBackgroundFetchResult fetchResult(bool didRegister, const std::optional<NSError>& error) {
    if (error) return UIBackgroundFetchResult::Failed;
    return didRegister ? UIBackgroundFetchResult::NewData : UIBackgroundFetchResult::NoData;
}

}  // namespace

std::shared_ptr<VLRemoteNotificationService> VLRemoteNotificationService::serviceWith(Collaborators collaborators) {
    const std::shared_ptr<VLRemoteNotificationService> service(
        new VLRemoteNotificationService(std::move(collaborators)));
    service->observeForeground();
    return service;
}

VLRemoteNotificationService::VLRemoteNotificationService(Collaborators collaborators)
    : collaborators_(std::move(collaborators)) {}

VLRemoteNotificationService::~VLRemoteNotificationService() {
    collaborators_.notificationCenter->removeObserver(foregroundObserver_);
}

void VLRemoteNotificationService::observeForeground() {
    foregroundObserver_ = collaborators_.notificationCenter->addObserver(
        UIApplicationWillEnterForegroundNotification,
        [weakSelf = weak_from_this()](const NSNotification& notification) {
            if (const auto self = weakSelf.lock()) {
                self->registerDeviceTokenIfNotificationSettingsChangedWithNotification(notification);
            }
        });
}

void VLRemoteNotificationService::registerDeviceTokenData(const Data& token, ErrorHandler completionHandler) {
    collaborators_.vlUserNotificationCentre->getNotificationSettingsWithCompletionHandler(
        [self = shared_from_this(), token,
         handler = std::move(completionHandler)](const VLUserNotificationSettings& settings) {
            OutcomeHandler outcome;
            if (handler) outcome = [handler](bool /*isDone*/, const std::optional<NSError>& error) { handler(error); };
            self->registerDeviceToken(token, settings, std::move(outcome));
        });
}

void VLRemoteNotificationService::registerDeviceTokenIfNotificationSettingsChangedWithNotification(
    const NSNotification& notification) {
    Platform::current().mainQueue()->postAfter(
        kForegroundDelay, [weakSelf = weak_from_this(), name = notification.name] {
            const auto self = weakSelf.lock();
            if (!self) return;
            logMessage(VLLogLevel::Debug, fmt::format("Register device triggered by NSNotification: {}", name));
            self->registerDeviceTokenIfNotificationSettingsChangedWithCompletionHandler(nullptr);
        });
}

void VLRemoteNotificationService::registerDeviceTokenIfNotificationSettingsChangedWithCompletionHandler(
    OutcomeHandler completionHandler) {
    collaborators_.vlUserNotificationCentre->getNotificationSettingsWithCompletionHandler(
        [self = shared_from_this(),
         handler = std::move(completionHandler)](const VLUserNotificationSettings& settings) {
            self->registerDeviceTokenIfNotificationSettingsChangedWithNewSettings(settings, handler);
        });
}

void VLRemoteNotificationService::registerDeviceTokenIfNotificationSettingsChangedWithNewSettings(
    const VLUserNotificationSettings& newSettings, OutcomeHandler completionHandler) {
    const auto token = collaborators_.settings->deviceToken();
    if (!token) {
        logMessage(VLLogLevel::Warn, "No device token found - skipping device token registration");
        return completeOnMainQueue(completionHandler, false, std::nullopt);
    }
    if (newSettings.isEqualToSettings(collaborators_.settings->notificationSettings())) {
        logMessage(VLLogLevel::Debug, "User notification settings are unchanged. No further work required");
        return completeOnMainQueue(completionHandler, false, std::nullopt);
    }
    logMessage(VLLogLevel::Info, "User notification settings have changed - registering new settings");
    registerDeviceToken(*token, newSettings, std::move(completionHandler));
}

void VLRemoteNotificationService::registerDeviceTokenIfNotificationSettingsChangedForBackgroundFetch(
    FetchHandler completionHandler) {
    registerDeviceTokenIfNotificationSettingsChangedWithCompletionHandler(
        [handler = std::move(completionHandler)](bool didRegister, const std::optional<NSError>& error) {
            if (handler) handler(fetchResult(didRegister, error));
        });
}

void VLRemoteNotificationService::registerDeviceToken(const Data& token,
                                                      const VLUserNotificationSettings& notificationSettings,
                                                      OutcomeHandler completionHandler) {
    const auto text = deviceTokenToString(token);
    Dictionary body{{"notification_settings.v2", Dictionary{{"ios", notificationSettings.toDictionary()}}}};
    collaborators_.settings->setDeviceToken(token);
    logMessage(VLLogLevel::Debug, fmt::format("Register device token: {}", text));
    body["devicetoken"] = text;
    body["platform"] = "iOS";
    body["type"] = "register";
    collaborators_.urlSession->POST(
        collaborators_.urlBuilder->deviceRegistrationURL(), payloadWithBody(std::move(body)), false,
        [settings = collaborators_.settings, notificationSettings, handler = std::move(completionHandler)](
            const std::optional<std::string>& /*text*/, std::int64_t /*status*/, const std::optional<NSError>& error) {
            if (error) {
                logMessage(VLLogLevel::Error, "Device token registration failed!");
            } else {
                settings->setNotificationSettings(notificationSettings);
            }
            completeOnMainQueue(handler, !error, error);
        });
}

void VLRemoteNotificationService::unregisterDeviceWithCompletionHandler(OutcomeHandler completionHandler) {
    const auto token = collaborators_.settings->deviceToken();
    if (!token) {
        logMessage(VLLogLevel::Warn, "Cannot unregister device because there is no device token to unregister");
        return completeOnMainQueue(completionHandler, false, std::nullopt);
    }
    auto payload =
        payloadWithBody({{"devicetoken", deviceTokenToString(*token)}, {"platform", "iOS"}, {"type", "unregister"}});
    collaborators_.urlSession->POST(
        collaborators_.urlBuilder->deviceRegistrationURL(), std::move(payload), false,
        [settings = collaborators_.settings, handler = std::move(completionHandler)](
            const std::optional<std::string>& /*text*/, std::int64_t /*status*/, const std::optional<NSError>& error) {
            // Intended: the token is also cleared if the request failed.
            settings->setDeviceToken(std::nullopt);
            completeOnMainQueue(handler, !error, error);
        });
}

Dictionary VLRemoteNotificationService::payloadWithBody(Dictionary body) const {
    return collaborators_.payloadBuilder->payloadWithOptions([&body](VLPayloadOptions& options) {
        options.body = std::move(body);
        options.includeBasicData = true;
        options.basicDataSeparator = 0;
    });
}

void VLRemoteNotificationService::didReceiveRemoteNotification(const std::shared_ptr<UIApplication>& /*application*/,
                                                               const Dictionary& userInfo) {
    if (!hasAlert(userInfo)) {
        logMessage(VLLogLevel::Info, "Silent push received and ignored", userInfo);
        return;
    }
    Vorlane::sharedInstance().setNotificationOpen(true);
    const auto* phash = valueForKey(userInfo, VL_NOTIFICATION_KEY_PHASH);
    if (!phash) {
        logMessage(VLLogLevel::Info, "Push notification received without a phash and ignored", userInfo);
    } else if (!phash->is_string()) {
        logMessage(VLLogLevel::Error,
                   fmt::format("Push notification contained a phash of an incorrect class type: {}."
                               "                           This notification will be ignored.",
                               vl_className(*phash)),
                   userInfo);
    } else {
        takePhash(phash->get_ref<const std::string&>(), userInfo);
    }
}

/// Stores the phash if the user opened the application with the notification.
void VLRemoteNotificationService::takePhash(const std::string& phash, const Dictionary& userInfo) {
    logMessage(VLLogLevel::Info, fmt::format("Vorlane notification received with phash: {}", phash), userInfo);
    const auto application = collaborators_.application.lock();
    if (application && application->applicationState() == UIApplicationState::Inactive) {
        logMessage(VLLogLevel::Info, fmt::format("Storing phash {}", phash));
        collaborators_.settings->setPhash(phash);
    } else {
        logMessage(VLLogLevel::Info, fmt::format("App is already in foreground - discarding phash {}", phash));
    }
}

void VLRemoteNotificationService::didRegisterUserNotificationSettings(const UIUserNotificationSettings& settings) {
    onMainQueue([weakSelf = weak_from_this(), types = settings.types] {
        const auto self = weakSelf.lock();
        if (!self) return;
        if (types == 0) {
            const auto denied = self->deniedSettings();
            logMessage(VLLogLevel::Debug,
                       "Register device with AuthorisationStatusDenied triggered by "
                       "didRegisterUserNotificationSettings");
            self->registerDeviceTokenIfNotificationSettingsChangedWithNewSettings(denied, nullptr);
        } else {
            logMessage(VLLogLevel::Debug, "Register device triggered by didRegisterUserNotificationSettings");
            self->registerDeviceTokenIfNotificationSettingsChangedWithCompletionHandler(nullptr);
        }
    });
}

VLUserNotificationSettings VLRemoteNotificationService::deniedSettings() const {
    constexpr std::int64_t kDenied = 1, kDisabled = 1, kUnknown = -1, kNoStyle = 0;
    const auto silentPush = collaborators_.backgroundRefreshHelper->getUIKitBackgroundRefreshSetting();
    return VLUserNotificationSettings::settingsWithAuthorisation(kDenied, kDisabled, kDisabled, kDisabled, silentPush,
                                                                 kUnknown, kUnknown, kUnknown, kNoStyle);
}

std::string VLRemoteNotificationService::deviceTokenToString(const Data& token) {
    std::string text;
    for (const auto byte : token) text += fmt::format("{:02x}", byte);
    return text;
}

}  // namespace vorlane
